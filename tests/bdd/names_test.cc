// The manager's name look-ups against their plain forms: after random
// creations anywhere in the order, renamings (also of free slots beyond the
// variables), passes over every name and copies of the manager, the indexed
// search of Rename_var finds what a scan of the names finds, and the
// one-look-up creation gives what Index_var_by_name then New_node_var_last
// gives.

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "bdd/bddpp.h"

namespace {

void expectSearchesAgree(bddpp_manager& m, std::mt19937& rng, const std::string& where)
{
    for (int k = 0; k < 4; ++k) {
        std::string probe = k == 0 ? std::string() : "n" + std::to_string(rng() % 16);
        ASSERT_EQ(m.Lowest_id_named(probe), m.lowest_id_named_literal(probe)) << where << " name " << probe;
    }
}

TEST(ManagerNames, IndexedSearchFindsWhatTheScanFinds)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 rng(seed);
        auto m = std::make_unique<bddpp_manager>();
        // Few names, so that renamings collide and names come back.
        auto name = [&rng] { return "n" + std::to_string(rng() % 16); };
        for (int step = 0; step < 150; ++step) {
            long n = m->variables_number;
            switch (rng() % 7) {
            case 0:
                m->New_var_last(name());
                break;
            case 1:
                m->New_var_before(static_cast<long>(rng() % (n + 1)), name());
                break;
            case 2:
                m->New_var_after(static_cast<long>(rng() % (n + 1)) - 1, name());
                break;
            case 3:
                m->Rename_var(name(), name());
                break;
            case 4:
                m->Change_name_by_id(static_cast<long>(rng() % (m->variables_capacity + 1)), name());
                break;
            case 5:
                // A pass over every name: the full index takes over.
                if (rng() % 8 == 0)
                    m->Replace_char_in_all_names('1', '2');
                break;
            default:
                // The copy carries the renamed variables on and lives on
                // alone.
                if (rng() % 4 == 0)
                    m = std::make_unique<bddpp_manager>(m.get());
                break;
            }
            expectSearchesAgree(*m, rng, "seed " + std::to_string(seed) + " step " + std::to_string(step));
        }
        m->No_begin_underscore_name();
        m->Rename_var("_x", m->Name_var_by_id(0));
        expectSearchesAgree(*m, rng, "seed " + std::to_string(seed) + " after the pass");
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
