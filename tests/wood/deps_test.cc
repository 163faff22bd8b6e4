// The dependence graph: set helpers, walks in both directions, the
// coherence check, rebuilding, and the relaxation steps.

#include <sstream>

#include "tests/wood/wood_fixture.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(WoodSets, HelpersAndSetForm)
{
    const std::set<long> a = {1, 2, 5}, b = {2, 3, 5, 8}, none;
    EXPECT_EQ(set_union(a, b), (std::set<long>{1, 2, 3, 5, 8}));
    EXPECT_EQ(set_inter(a, b), (std::set<long>{2, 5}));
    EXPECT_EQ(set_priv(a, b), (std::set<long>{1}));
    EXPECT_EQ(set_priv(b, a), (std::set<long>{3, 8}));
    EXPECT_EQ(set_union(none, none), none);
    EXPECT_EQ(set_priv(none, a), none);
    // Re-encoding may merge members.
    const long table[] = {-1, 7, 7, 0, 0, 3, 0, 0, 9};
    EXPECT_EQ(set_reencoding(a, table), (std::set<long>{3, 7}));

    std::ostringstream out;
    put_set(out, b);
    put_set(out, none);
    put_set(out, {4});
    EXPECT_EQ(out.str(), "{2,3,5,8}{}{4}");
}

// x -> a -> b -> c, and a -> d: the readers' table and the dependances
// mirror each other, and both walks follow them.
struct Chain : TestWood {
    Chain()
    {
        bdd x = var("x");
        Bddexpression* a = eq("a", x);
        Bddexpression* b = eq("b", a->bdd_var);
        eq("c", m().Bdd_not(b->bdd_var));
        eq("d", m().Bdd_and(a->bdd_var, var("y")));
    }
};

TEST(WoodDependences, WalksFollowBothDirectionsAndKeepTheAccumulator)
{
    Chain t;
    std::set<long> empty;
    EXPECT_EQ(t.wood.down_dependances(t.idx("x"), 1, empty), t.ids({"a", "b", "c", "d"}));
    EXPECT_EQ(t.wood.down_dependances(t.idx("b"), 1, empty), t.ids({"c"}));
    EXPECT_EQ(t.wood.up_dependances(t.idx("c"), 1, empty), t.ids({"b", "a", "x"}));
    EXPECT_EQ(t.wood.up_dependances(t.idx("d"), 1, empty), t.ids({"a", "x", "y"}));

    std::set<long> acc = {42};
    EXPECT_EQ(t.wood.down_dependances(t.idx("c"), 1, acc), acc); // nobody reads c
    EXPECT_EQ(t.wood.up_dependances(t.idx("x"), 1, acc), acc);   // x has no equation
    std::set<long> with_b = t.ids({"b"});
    // A member of the accumulator is not walked again.
    EXPECT_EQ(t.wood.down_dependances(t.idx("a"), 1, with_b), t.ids({"b", "d"}));
    EXPECT_EQ(acc, std::set<long>{42}); // the argument itself is left alone

    EXPECT_EQ(t.wood.Set_of_index_used_variables(), t.ids({"x", "y", "a", "b", "c", "d"}));
}

TEST(WoodDependences, CyclesEndByMembershipOrByTheDepthLimit)
{
    // a = b, b = a beside an input: membership stops the walk first.
    TestWood t;
    t.var("i");
    bdd a = t.var("a"), b = t.var("b");
    new Bddexpression("a", &t.wood, a, b, 0, 0);
    new Bddexpression("b", &t.wood, b, a, 0, 0);
    std::set<long> empty;
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
    EXPECT_EQ(GetCapturedStderr(), "WARNING in Bddexpressionwood::down_dependances():\n"
                                   "   possible infinite recusion due to a signals cycle\n");
    CaptureStderr();
    EXPECT_EQ(u.wood.up_dependances(u.idx("p"), 1, empty), u.ids({"p", "q"}));
    EXPECT_EQ(GetCapturedStderr(), "WARNING in Bddexpressionwood::up_dependances():\n"
                                   "   possible infinite recursion due to a signals cycle\n");
}

TEST(WoodDependences, CoherenceCheckReportsEveryDifferingVariable)
{
    Chain t;
    std::ostringstream unused;
    CaptureStderr();
    t.wood.coherence_dependances_check(unused);
    EXPECT_EQ(GetCapturedStderr(), "");

    long ix = t.idx("x"), ia = t.idx("a"), ib = t.idx("b"), id = t.idx("d");
    t.wood.amont_table[ix].insert(ib);
    t.wood.amont_table[ia].erase(id);
    CaptureStderr();
    t.wood.coherence_dependances_check(unused);
    std::ostringstream expected;
    expected << "incoherence sur table des amonts pour la variable " << ix << ": calcule: {" << ia
             << "} trouve{" << ia << "," << ib << "}\n"
             << "incoherence sur table des amonts pour la variable " << ia << ": calcule: {" << ib
             << "," << id << "} trouve{" << ib << "}\n";
    EXPECT_EQ(GetCapturedStderr(), expected.str());
    EXPECT_EQ(unused.str(), "");

    // Rebuilding from the equations makes the two agree again.
    t.wood.internal_global_build_dependances();
    CaptureStderr();
    t.wood.coherence_dependances_check(unused);
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(WoodDependences, RebuildingLosesDeclaredReaders)
{
    TestWood t;
    bdd x = t.var("x");
    t.eq("a", x);
    long iv = t.wood.Index_new_var_last("v");
    std::set<long> readers = t.ids({"a"}), deps = t.ids({"x"});
    new Bddexpression(iv, &t.wood, &readers, &deps, "f", 0, 0);
    EXPECT_EQ(t.readers("v"), t.ids({"a"}));
    t.wood.internal_global_build_dependances();
    EXPECT_TRUE(t.readers("v").empty());
    EXPECT_EQ(t.readers("x"), t.ids({"a", "v"})); // abstract dependances still count
}

TEST(WoodDependences, StaleIdsAreReportedByTheUsedVariables)
{
    Chain t;
    t.wood.exp_ids.insert(t.idx("y"));
    CaptureStderr();
    std::set<long> used = t.wood.Set_of_index_used_variables();
    EXPECT_EQ(GetCapturedStderr(),
              "internal error in Bddexpressionwood::Set_of_index_used_variables(): expression not "
              "found!!!   about id:" +
                  std::to_string(t.idx("y")) + "\n");
    EXPECT_EQ(used, t.ids({"x", "y", "a", "b", "c", "d"}));
}

TEST(WoodDependences, RelaxationStepsPushDatesAndFlagOverflow)
{
    Chain t;
    const long n = t.wood.Nb_bdd_vars(); // x a b c d y
    Bddexpression& d = *t.at("d");       // reads a and y
    long ia = t.idx("a"), iy = t.idx("y"), idd = t.idx("d");
    std::vector<long> dates(n, 0);
    dates[ia] = 3;
    int overflow = 7;
    EXPECT_EQ(learn_upstream_dependance(n, dates.data(), d, &overflow), 1);
    EXPECT_EQ(dates[idd], 4);
    EXPECT_EQ(overflow, 0);
    EXPECT_EQ(learn_upstream_dependance(n, dates.data(), d, &overflow), 0);

    // Downward: each read variable gets above the reader.
    dates.assign(n, 0);
    dates[idd] = 2 * n - 2;
    dates[iy] = 2 * n;
    EXPECT_EQ(learn_downstream_dependance(n, dates.data(), d, &overflow), 1);
    EXPECT_EQ(dates[ia], 2 * n - 1);
    EXPECT_EQ(dates[iy], 2 * n);
    EXPECT_EQ(overflow, 0);
    dates[idd] = 2 * n - 1;
    EXPECT_EQ(learn_downstream_dependance(n, dates.data(), d, &overflow), 1);
    EXPECT_EQ(dates[ia], 2 * n);
    EXPECT_EQ(overflow, 1); // twice the number of variables is too high

    Bddexpression loose;
    CaptureStderr();
    EXPECT_EQ(learn_upstream_dependance(n, dates.data(), loose, &overflow), 0);
    EXPECT_EQ(learn_downstream_dependance(1, dates.data(), d, &overflow), 0);
    EXPECT_EQ(GetCapturedStderr(), "INTERNAL ERROR in learn_upstream_dependance()\n"
                                   "INTERNAL ERROR in learn_downstream_dependance()\n");
}
