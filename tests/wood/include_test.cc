// A wood included into another: by renaming table or by suffix, with its
// own manager or the target's, and the renamings that are missing.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "context/compilation.h"
#include "tests/wood/wood_builder.h"

namespace {

// Target: p, q = not p, dated (nb_level 2).
void build_target(WoodBuilder& t)
{
    t.var("p");
    t.var("q");
    t.eq("q", t.m()->Bdd_not(t.v("p")));
    t.wood->compute_dates();
}

// An instance sharing the target's manager: i, w = not i of early date
// `early`.
std::unique_ptr<Bddexpressionwood> shared_instance(WoodBuilder& t, long early)
{
    std::unique_ptr<Bddexpressionwood> inst(new Bddexpressionwood(t.m()));
    inst->set_common_bdd_manager(1);
    bdd i = inst->New_var_last("i");
    bdd w = inst->New_var_last("w");
    new Bddexpression("w", inst.get(), w, t.m()->Bdd_not(i), early, 0, 0);
    return inst;
}

} // namespace

TEST(IncludeWoodInstance, OtherManagerAddsVariablesAndTakesTheGreaterLevel)
{
    WoodBuilder t;
    build_target(t);
    WoodBuilder inst;
    inst.vars({"i", "o", "w", "v"});
    inst.eq("o", inst.m()->Bdd_and(inst.v("i"), inst.v("w")), int(Compilation::SOUTPUT));
    inst.eq("w", inst.m()->Bdd_not(inst.v("i")));
    IndexSet deps{0};
    Bddexpression* abs = new Bddexpression(3, inst.wood.get(), deps, "value", 0, 0);
    abs->setUserType(Compilation::VOUTPUT);
    inst.wood->compute_dates();
    inst.wood->update_nb_level(5);

    std::map<std::string, std::string> renaming{
        {"i", "m_i"}, {"o", "m_o"}, {"w", "m_w"}, {"v", "m_v"}};
    EXPECT_EQ(captured([&] { t.wood->Include_wood_instance(*inst.wood, renaming); }), "");

    EXPECT_EQ(t.m()->variables_number, 6);
    EXPECT_EQ(t.index("m_i"), 2);
    EXPECT_EQ(t.index("m_v"), 5);
    EXPECT_EQ(t.wood->exp_ids, (IndexSet{1, 3, 4, 5}));
    Bddexpression* o = t.at("m_o");
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->name, "m_o");
    EXPECT_EQ(o->user_type, int(Compilation::SOUTPUT));
    EXPECT_TRUE(t.m()->Bdd_equiv(o->bdd_exp, t.m()->Bdd_and(t.v("m_i"), t.v("m_w"))));
    EXPECT_TRUE(t.m()->Bdd_equiv(t.at("m_w")->bdd_exp, t.m()->Bdd_not(t.v("m_i"))));
    Bddexpression* v = t.at("m_v");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->abstraction, 1);
    EXPECT_EQ(v->exp_def, "value");
    EXPECT_EQ(v->user_type, int(Compilation::VOUTPUT));
    EXPECT_EQ(v->dependances, (IndexSet{2}));
    EXPECT_EQ(t.wood->amont_table[2], (IndexSet{3, 4, 5}));
    // i is read but has no equation: its late date comes along all the same.
    EXPECT_EQ(t.wood->late_dates[2], 2);
    EXPECT_EQ(t.wood->late_dates[4], 1);
    EXPECT_EQ(t.wood->Nb_level(), 5);

    // An empty instance adds nothing; the level is still the greater one.
    WoodBuilder empty;
    empty.wood->update_nb_level(7);
    t.wood->Include_wood_instance(*empty.wood, renaming);
    EXPECT_EQ(t.m()->variables_number, 6);
    EXPECT_EQ(t.wood->Nb_level(), 7);
}

// With a shared manager: by suffix, or by a renaming that misses an input
// (a warning) or a left member (the end of the run).
TEST(IncludeWoodInstance, SharedManager)
{
    WoodBuilder t;
    build_target(t);
    std::unique_ptr<Bddexpressionwood> inst = shared_instance(t, 1);
    std::string suffix = "_1";
    EXPECT_EQ(captured([&] { t.wood->Include_wood_instance(*inst, suffix); }),
              "WOOD A INTEGRER avec meme Bdd_manager \n");
    EXPECT_EQ(t.m()->Name_var_by_index(4), "i_1");
    EXPECT_EQ(t.m()->Name_var_by_index(5), "w_1");
    Bddexpression* e = t.wood->exp_table[5];
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->name, "w_1");
    EXPECT_EQ(e->bdd_exp, t.m()->Bdd_not(t.v("i_1")));
    EXPECT_EQ(e->early_date, 1);
    // The instance counts the new variables as well.
    EXPECT_EQ(inst->Nb_bdd_vars(), 6);

    auto include = [](WoodBuilder& r, std::map<std::string, std::string> renaming) {
        build_target(r);
        r.wood->Include_wood_instance(*shared_instance(r, 0), renaming);
    };
    WoodBuilder r;
    EXPECT_EQ(captured([&] { include(r, {{"w", "n_w"}}); }),
              "WOOD A INTEGRER avec meme Bdd_manager \nWarning: no renaming for : i\n");
    EXPECT_NE(r.at("n_w"), nullptr);
    EXPECT_EXIT(
        {
            WoodBuilder d;
            include(d, {{"i", "n_i"}});
        },
        testing::ExitedWithCode(1), "Error: no renaming for : w");
}
