// The dependence graph: set helpers, walks in both directions, the
// coherence check, rebuilding, and the relaxation steps.

#include <sstream>

#include "tests/wood/wood_fixture.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(WoodSets, HelpersAndSetForm)
{
    const IndexSet a = {1, 2, 5}, b = {2, 3, 5, 8};
    EXPECT_EQ(set_union(a, b), (IndexSet{1, 2, 3, 5, 8}));
    EXPECT_EQ(set_inter(a, b), (IndexSet{2, 5}));
    EXPECT_EQ(set_priv(b, a), (IndexSet{3, 8}));
    const long table[] = {-1, 7, 7, 0, 0, 3};
    EXPECT_EQ(set_reencoding(a, table), (IndexSet{3, 7})); // members may merge
    std::ostringstream out;
    put_set(put_set(put_set(out, b), {}), {4});
    EXPECT_EQ(out.str(), "{2,3,5,8}{}{4}");
}

// x -> a -> b -> c, and a, y -> d.
struct Chain : TestWood {
    Chain()
    {
        Bddexpression* a = eq("a", var("x"));
        Bddexpression* b = eq("b", a->bdd_var);
        eq("c", m().Bdd_not(b->bdd_var));
        eq("d", m().Bdd_and(a->bdd_var, var("y")));
    }
};

TEST(WoodDependences, WalksFollowBothDirectionsAndKeepTheAccumulator)
{
    Chain t;
    IndexSet empty, acc = {42}, with_b = t.ids({"b"});
    EXPECT_EQ(t.wood.down_dependances(t.idx("x"), 1, empty), t.ids({"a", "b", "c", "d"}));
    EXPECT_EQ(t.wood.up_dependances(t.idx("c"), 1, empty), t.ids({"b", "a", "x"}));
    EXPECT_EQ(t.wood.up_dependances(t.idx("d"), 1, empty), t.ids({"a", "x", "y"}));
    EXPECT_EQ(t.wood.down_dependances(t.idx("c"), 1, acc), acc); // nobody reads c
    EXPECT_EQ(t.wood.up_dependances(t.idx("x"), 1, acc), acc);   // x has no equation
    // A member of the accumulator is not walked again.
    EXPECT_EQ(t.wood.down_dependances(t.idx("a"), 1, with_b), t.ids({"b", "d"}));

    EXPECT_EQ(t.wood.Set_of_index_used_variables(), t.ids({"x", "y", "a", "b", "c", "d"}));
    t.wood.exp_ids.insert(t.idx("y"));
    CaptureStderr();
    EXPECT_EQ(t.wood.Set_of_index_used_variables(), t.ids({"x", "y", "a", "b", "c", "d"}));
    EXPECT_EQ(GetCapturedStderr(), "internal error in Bddexpressionwood::Set_of_index_used_variables(): "
                                   "expression not found!!!   about id:" +
                                       std::to_string(t.idx("y")) + "\n");
}

TEST(WoodDependences, CyclesEndByMembershipOrByTheDepthLimit)
{
    // a = b, b = a beside an input: membership stops the walk first.
    TestWood t;
    t.var("i");
    bdd a = t.var("a"), b = t.var("b");
    new Bddexpression("a", &t.wood, a, b, 0, 0);
    new Bddexpression("b", &t.wood, b, a, 0, 0);
    IndexSet empty;
    CaptureStderr();
    EXPECT_EQ(t.wood.down_dependances(t.idx("a"), 1, empty), t.ids({"a", "b"}));
    EXPECT_EQ(t.wood.up_dependances(t.idx("a"), 1, empty), t.ids({"a", "b"}));
    EXPECT_EQ(GetCapturedStderr(), "");

    // With two variables only, the second step is already at the limit.
    TestWood u;
    bdd p = u.var("p"), q = u.var("q");
    new Bddexpression("p", &u.wood, p, q, 0, 0);
    new Bddexpression("q", &u.wood, q, p, 0, 0);
    CaptureStderr();
    EXPECT_EQ(u.wood.down_dependances(u.idx("p"), 1, empty), u.ids({"p", "q"}));
    EXPECT_EQ(u.wood.up_dependances(u.idx("p"), 1, empty), u.ids({"p", "q"}));
    EXPECT_EQ(GetCapturedStderr(), "WARNING in Bddexpressionwood::down_dependances():\n"
                                   "   possible infinite recusion due to a signals cycle\n"
                                   "WARNING in Bddexpressionwood::up_dependances():\n"
                                   "   possible infinite recursion due to a signals cycle\n");
}

TEST(WoodDependences, CoherenceCheckAndRebuild)
{
    Chain t;
    long ix = t.idx("x"), ia = t.idx("a"), ib = t.idx("b"), id = t.idx("d");
    t.wood.amont_table[ix].insert(ib);
    t.wood.amont_table[ia].erase(id);
    std::ostringstream unused;
    CaptureStderr();
    t.wood.coherence_dependances_check(unused);
    std::ostringstream expected;
    expected << "incoherence sur table des amonts pour la variable " << ix << ": calcule: {" << ia
             << "} trouve{" << ia << "," << ib << "}\n"
             << "incoherence sur table des amonts pour la variable " << ia << ": calcule: {" << ib
             << "," << id << "} trouve{" << ib << "}\n";
    EXPECT_EQ(GetCapturedStderr(), expected.str());
    EXPECT_EQ(unused.str(), "");

    // Rebuilding follows the equations, and loses readers that only an
    // abstract constructor declared.
    long iv = t.wood.Index_new_var_last("v");
    IndexSet readers = t.ids({"c"}), deps = t.ids({"x"});
    new Bddexpression(iv, &t.wood, &readers, &deps, "f", 0, 0);
    EXPECT_EQ(t.readers("v"), t.ids({"c"}));
    t.wood.internal_global_build_dependances();
    EXPECT_TRUE(t.readers("v").empty());
    EXPECT_EQ(t.readers("x"), t.ids({"a", "v"}));
    CaptureStderr();
    t.wood.coherence_dependances_check(unused);
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(WoodDependences, RelaxationStepsPushDatesAndFlagOverflow)
{
    Chain t;
    const long n = t.wood.Nb_bdd_vars();
    Bddexpression& d = *t.at("d"); // reads a and y
    long ia = t.idx("a"), iy = t.idx("y"), idd = t.idx("d");
    std::vector<long> dates(n, 0);
    dates[ia] = 3;
    int overflow = 7;
    EXPECT_EQ(learn_upstream_dependance(n, dates.data(), d, &overflow), 1);
    EXPECT_EQ(learn_upstream_dependance(n, dates.data(), d, &overflow), 0);
    EXPECT_EQ(dates[idd], 4);
    EXPECT_EQ(overflow, 0);
    dates[idd] = 2 * n - 1;
    dates[iy] = 2 * n + 5;
    EXPECT_EQ(learn_downstream_dependance(n, dates.data(), d, &overflow), 1);
    EXPECT_EQ((std::vector<long>{dates[ia], dates[iy], overflow}), (std::vector<long>{2 * n, 2 * n + 5, 1}));
    CaptureStderr();
    EXPECT_EQ(learn_downstream_dependance(1, dates.data(), d, &overflow), 0);
    EXPECT_EQ(GetCapturedStderr(), "INTERNAL ERROR in learn_downstream_dependance()\n");
}
