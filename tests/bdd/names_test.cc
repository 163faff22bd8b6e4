// The manager's order and names against a model (ids by index, creation
// names, current names, table capacity): after random creations anywhere
// in the order, one-look-up creations, renamings (also of free slots beyond
// the variables), passes over every name and copies of the manager, with
// names on both sides of the length kept in a slot itself, every
// look-up agrees with the model and the indexed search of Rename_var finds
// what a scan of the names finds.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bdd/bddpp.h"

namespace {

// Sixteen names; the upper half from 14 to 18 characters, about the length
// up to which a current name is kept in its slot rather than in the texts.
std::string name_of(unsigned k)
{
    std::string name = "n" + std::to_string(k);
    if (k >= 8) name += std::string(12 + k % 4, '_');
    return name;
}

void expectSearchesAgree(bddpp_manager& m, std::mt19937& rng)
{
    for (int k = 0; k < 4; ++k) {
        std::string probe = k == 0 ? std::string() : name_of(rng() % 16);
        ASSERT_EQ(m.Lowest_id_named(probe), m.lowest_id_named_literal(probe)) << "name " << probe;
    }
}

TEST(ManagerNames, OrderAndNamesFollowAModel)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 rng(seed);
        auto held = std::make_unique<bddpp_manager>();
        std::vector<long> order;              // ids by index
        std::vector<std::string> made, shown; // creation and current names by id
        long capacity = held->variables_capacity;
        for (int step = 0; step < 150; ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(step));
            const long n = static_cast<long>(order.size());
            // Few names, so that renamings collide and names come back.
            std::string name = name_of(rng() % 16);
            long where = static_cast<long>(rng() % (n + 1));
            unsigned how = rng() % 9;
            auto current = [&](const std::string& s) { return std::find(shown.begin(), shown.end(), s); };
            if (how == 8 && rng() % 4 == 0) {
                // A copy takes the variables and their names, no other node.
                auto copy = [&] {
                    bdd f = held->Bdd_and(held->Bdd_var_by_name("n1"), held->Bdd_var_by_name("n2"));
                    return std::make_unique<bddpp_manager>(held.get());
                }();
                held = std::move(copy);
                capacity = held->variables_capacity;
                ASSERT_EQ(held->map->size(), order.size());
            } else if (how == 7 && rng() % 8 == 0) {
                // A pass over every name: the full index takes over.
                held->Replace_char_in_all_names('1', '2');
                for (std::string& s : shown) std::replace(s.begin(), s.end(), '1', '2');
            } else if (how == 6) {
                long id = static_cast<long>(rng() % (capacity + 1));
                held->Change_name_by_id(id, name);
                if (id < n) shown[id] = name;
            } else if (how == 5) {
                std::string old_name = shown.empty() ? "x" : shown[rng() % shown.size()];
                if (current(name) == shown.end() && current(old_name) != shown.end())
                    *current(old_name) = name;
                testing::internal::CaptureStderr();
                held->Rename_var(name, old_name);
                testing::internal::GetCapturedStderr();
            } else if (how < 5) {
                bddpp_manager& m = *held;
                auto known = std::find(made.begin(), made.end(), name);
                long id = known - made.begin();
                if (how != 4 || known == made.end())
                    capacity *= n >= capacity ? 2 : 1; // doubled before the look-up
                long got;
                if (how == 4) { // the one-look-up creation
                    bool created = false;
                    got = m.Index_var_or_new_last(name, created);
                    ASSERT_EQ(created, known == made.end());
                } else {
                    bdd v;
                    if (how == 0 || how == 3)
                        v = m.New_var_last(name);
                    else if (where < n && step % 2) // by the variable at the index
                        v = how == 1 ? m.New_var_before(m.Bdd_var_by_index(where), name)
                                     : m.New_var_after(m.Bdd_var_by_index(where), name);
                    else
                        v = how == 1 ? m.New_var_before(where, name) : m.New_var_after(where - 1, name);
                    if (how == 2 && where < n && step % 2)
                        ++where;
                    ASSERT_EQ(m.Bdd_if_id(v), id);
                    got = m.Bdd_if_index(v);
                }
                if (known == made.end()) {
                    made.push_back(name);
                    shown.push_back(name);
                    order.insert(how == 1 || how == 2 ? order.begin() + where : order.end(), id);
                }
                ASSERT_EQ(order[got], id);
            }
            bddpp_manager& m = *held;
            ASSERT_EQ(m.variables_number, static_cast<long>(order.size()));
            ASSERT_EQ(m.variables_capacity, capacity);
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
            expectSearchesAgree(m, rng);
        }
        held->No_begin_underscore_name();
        held->Rename_var("_x", held->Name_var_by_id(0));
        expectSearchesAgree(*held, rng);
    }
}

} // namespace
