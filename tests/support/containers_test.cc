// The small containers of the writers and of the tables by variable.

#include "support/grow_array.h"
#include "support/name_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

// The writers' name sets against the standard set, through growths and
// names that differ by a byte.
TEST(NameSet, AgreesWithTheStandardSet)
{
    std::mt19937 rng(7);
    name_set names;
    std::set<std::string> reference;
    for (int k = 0; k < 5000; ++k) {
        std::string name = "v" + std::to_string(rng() % 3000) + (rng() % 2 ? "_" : "");
        EXPECT_EQ(names.insert(name), reference.insert(name).second) << name;
    }
    EXPECT_EQ(names.size(), reference.size());
    for (int k = 0; k < 8000; ++k) {
        std::string name = "v" + std::to_string(k % 4000) + (k < 4000 ? "_" : "");
        EXPECT_EQ(names.count(name), reference.count(name)) << name;
    }
    EXPECT_EQ(names.count(""), 0u);
}

// Through the step where the array becomes a mapping of its own and the
// growths that move it: every value stays, new slots take the fill, a copy
// is a copy.
TEST(GrowArray, KeepsItsValuesThroughEveryGrowth)
{
    grow_array<long> a;
    std::vector<long> reference;
    std::mt19937 rng(3);
    while (reference.size() < 600000) {
        std::size_t n = reference.size() + 1 + rng() % 20000;
        long fill = static_cast<long>(rng() % 1000) - 500;
        a.resize(n, fill);
        reference.resize(n, fill);
        a[n / 2] = static_cast<long>(n);
        reference[n / 2] = static_cast<long>(n);
    }
    ASSERT_EQ(a.size(), reference.size());
    EXPECT_TRUE(std::equal(a.begin(), a.end(), reference.begin()));
    grow_array<long> b = a;
    a.resize(10, 0);
    a[3] = -1;
    EXPECT_EQ(b.size(), reference.size());
    EXPECT_TRUE(std::equal(b.begin(), b.end(), reference.begin()));
    EXPECT_EQ(a.size(), 10u);
    EXPECT_EQ(a[9], reference[9]);
    a.assign(300000, 7);
    EXPECT_EQ(a.size(), 300000u);
    EXPECT_EQ(std::count(a.begin(), a.end(), 7L), 300000);
}
