// The manager's name look-ups against their plain forms: after random
// creations anywhere in the order, renamings (also of free slots beyond the
// variables), passes over every name and copies of the manager, the indexed
// search of Rename_var finds what a scan of the names finds, and the
// one-look-up creation gives what Index_var_by_name then New_node_var_last
// gives.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

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

// Creations last, before and after any index, renamings and copies of the
// manager against a model of the order (ids by index), the creation names
// and the current names.
TEST(ManagerNames, OrderAndNamesFollowAModel)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 rng(seed);
        auto held = std::make_unique<bddpp_manager>();
        std::vector<long> order;              // ids by index
        std::vector<std::string> made, shown; // creation and current names by id
        for (int step = 0; step < 60; ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(step));
            const long n = static_cast<long>(order.size());
            std::string name = "n" + std::to_string(rng() % 40);
            long where = static_cast<long>(rng() % (n + 1));
            unsigned how = rng() % 5;
            if (how == 4) {
                // A copy takes the variables and their names, no other node.
                auto copy = [&] {
                    bdd f = held->Bdd_and(held->Bdd_var_by_name("n1"), held->Bdd_var_by_name("n2"));
                    return std::make_unique<bddpp_manager>(held.get());
                }();
                held = std::move(copy);
                ASSERT_EQ(held->map->size(), order.size());
            } else if (how == 3) {
                bddpp_manager& m = *held;
                std::string old_name = shown.empty() ? "x" : shown[rng() % shown.size()];
                auto current = [&](const std::string& s) { return std::find(shown.begin(), shown.end(), s); };
                if (current(name) == shown.end() && current(old_name) != shown.end())
                    *current(old_name) = name;
                testing::internal::CaptureStderr();
                m.Rename_var(name, old_name);
                testing::internal::GetCapturedStderr();
            } else {
                bddpp_manager& m = *held;
                bdd v;
                if (how == 0)
                    v = m.New_var_last(name);
                else if (where < n && step % 2)  // by the variable at the index
                    v = how == 1 ? m.New_var_before(m.Bdd_var_by_index(where), name)
                                 : m.New_var_after(m.Bdd_var_by_index(where), name);
                else
                    v = how == 1 ? m.New_var_before(where, name) : m.New_var_after(where - 1, name);
                if (how == 2 && where < n && step % 2)
                    ++where;
                auto known = std::find(made.begin(), made.end(), name);
                long id = known - made.begin();
                if (known == made.end()) {
                    made.push_back(name);
                    shown.push_back(name);
                    order.insert(how == 0 ? order.end() : order.begin() + where, id);
                }
                ASSERT_EQ(m.Bdd_if_id(v), id);
            }
            bddpp_manager& m = *held;
            ASSERT_EQ(m.variables_number, static_cast<long>(order.size()));
            ASSERT_GE(m.variables_capacity, m.variables_number);
            ASSERT_EQ(m.next_global_id, static_cast<long>(order.size()) + 2);
            for (long index = 0; index < m.variables_number; ++index) {
                long id = order[index];
                ASSERT_EQ(m.id_by_index[index], id);
                ASSERT_EQ(m.index_by_id[id], index);
                ASSERT_EQ(m.node_by_id[id]->global_id, id + 2);
                ASSERT_EQ(m.Name_var_by_index(index), shown[id]);
                ASSERT_EQ(m.Index_var_by_name(made[id]), index);
                ASSERT_EQ(m.Bdd_if_index(m.Bdd_var_by_name(made[id])), index);
            }
        }
    }
}

} // namespace
