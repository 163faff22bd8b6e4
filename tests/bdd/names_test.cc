// The manager's name look-ups against their plain forms: random variable
// creations and renamings, after which the indexed search of Rename_var
// must find what a scan of the names finds, and the one-look-up creation
// must give what Index_var_by_name followed by New_node_var_last gives.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "bdd/bddpp.h"

namespace {

std::string random_name(std::mt19937& rng)
{
    // Few names, so that renamings collide and names come back.
    return "n" + std::to_string(rng() % 24);
}

TEST(ManagerNames, IndexedSearchFindsWhatTheScanFinds)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 rng(seed);
        bddpp_manager m;
        for (int step = 0; step < 120; ++step) {
            switch (rng() % 4) {
            case 0:
                m.New_var_last(random_name(rng));
                break;
            case 1:
                m.Rename_var(random_name(rng), random_name(rng));
                break;
            case 2:
                // Also names free slots beyond variables_number.
                m.Change_name_by_id(static_cast<long>(rng() % (m.variables_capacity + 1)), random_name(rng));
                break;
            default:
                if (rng() % 8 == 0)
                    m.Replace_char_in_all_names('1', '2');
                break;
            }
            std::string probe = rng() % 10 == 0 ? std::string() : random_name(rng);
            ASSERT_EQ(m.Lowest_id_named(probe), m.lowest_id_named_literal(probe))
                << "seed " << seed << " step " << step << " name " << probe;
        }
    }
}

TEST(ManagerNames, OneLookUpCreationMatchesTheTwoSteps)
{
    std::mt19937 rng(7);
    bddpp_manager fast;
    bddpp_manager plain;
    for (int step = 0; step < 400; ++step) {
        std::string name = "v" + std::to_string(rng() % 150);
        if (step % 50 == 0) {
            // A renamed variable still answers to its creation name.
            fast.Rename_var("r" + std::to_string(step), name);
            plain.Rename_var("r" + std::to_string(step), name);
        }
        bool created = false;
        long got = fast.Index_var_or_new_last(name, created);
        long want = plain.Index_var_by_name(name);
        bool made = want < 0;
        if (made)
            want = plain.Node_index(plain.New_node_var_last(name));
        ASSERT_EQ(got, want) << name;
        ASSERT_EQ(created, made) << name;
        ASSERT_EQ(fast.variables_number, plain.variables_number);
        ASSERT_EQ(fast.variables_capacity, plain.variables_capacity);
        ASSERT_EQ(fast.next_global_id, plain.next_global_id);
    }
    for (long id = 0; id < plain.variables_capacity; ++id)
        ASSERT_EQ(fast.Name_var_by_id(id), plain.Name_var_by_id(id));
}

} // namespace
