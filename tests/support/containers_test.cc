// The small containers of the writers and of the tables by variable, and
// the mapped blocks under them.

#include "support/grow_array.h"
#include "support/mapped_block.h"
#include "support/name_set.h"

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <random>
#include <thread>
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

// Pages of a block, by residence.
static std::size_t resident_pages(void* block, std::size_t bytes)
{
    std::vector<unsigned char> in(bytes / 4096);
    if (mincore(block, bytes, in.data()) != 0) return 0;
    return static_cast<std::size_t>(std::count_if(in.begin(), in.end(), [](unsigned char c) { return c & 1; }));
}

// The filler makes the pages of a range present, whole pages from either
// end, while its owner writes it, and changes nothing in it; a block given
// back before its turn, and more requests than the queue holds, are taken
// in stride.
TEST(MappedBlock, PagesMadePresentKeepWhatTheyHold)
{
#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif
    const std::size_t bytes = std::size_t(8) << 20;
    char* block = static_cast<char*>(map_aligned(bytes, std::size_t(2) << 20));
    ASSERT_NE(block, nullptr);
    if (madvise(block + bytes - 4096, 4096, MADV_POPULATE_WRITE) != 0 && errno == EINVAL)
        GTEST_SKIP() << "this kernel cannot make pages present ahead";
    std::memset(block, 0x5a, 4096);
    make_present_soon(block + 100, bytes - 200);
    for (int k = 0; k < 40; ++k) {
        char* gone = static_cast<char*>(map_aligned(1 << 20, 4096));
        ASSERT_NE(gone, nullptr);
        make_present_soon(gone, 1 << 20);
        munmap(gone, 1 << 20);
    }
    std::memset(block + bytes / 2, 0x3c, 4096);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (resident_pages(block, bytes) < bytes / 4096 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(resident_pages(block, bytes), bytes / 4096);
    for (std::size_t at = 0; at < bytes; ++at) {
        char want = at < 4096 ? 0x5a : at >= bytes / 2 && at < bytes / 2 + 4096 ? 0x3c : 0;
        if (block[at] != want) {
            ADD_FAILURE() << "byte " << at << " changed";
            break;
        }
    }
    munmap(block, bytes);
}
