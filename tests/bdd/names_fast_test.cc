// Rename_var's search before any pass rewrites every name, when creation
// names answer without a full index: random creations anywhere in the
// order, renamings (also of free slots beyond the variables) and copies of
// the manager, checked against a scan of the names at every step.

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

TEST(ManagerNamesFast, CreationNamesAndRenamingsAgreeWithTheScan)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 rng(seed);
        auto m = std::make_unique<bddpp_manager>();
        std::unique_ptr<bddpp_manager> copy;
        auto name = [&rng] { return "n" + std::to_string(rng() % 16); };
        for (int step = 0; step < 150; ++step) {
            long n = m->variables_number;
            switch (rng() % 6) {
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
            default:
                // The copy carries the renamed variables on; the old one is
                // dropped so that the copy lives on alone.
                if (rng() % 4 == 0) {
                    copy = std::make_unique<bddpp_manager>(m.get());
                    m = std::move(copy);
                }
                break;
            }
            expectSearchesAgree(*m, rng, "seed " + std::to_string(seed) + " step " + std::to_string(step));
        }
        // After a pass over every name the full index takes over.
        m->No_begin_underscore_name();
        m->Rename_var("_x", m->Name_var_by_id(0));
        expectSearchesAgree(*m, rng, "seed " + std::to_string(seed) + " after the pass");
    }
}

} // namespace
