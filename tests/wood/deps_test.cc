// The dependence graph: set helpers, walks in both directions, the
// coherence check and the relaxation steps. The reader rebuild and the
// used variables are held to their plain forms in the whole-wood tests.

#include <sstream>

#include "tests/wood/wood_builder.h"

TEST(WoodSets, ReencodingMayMergeMembers)
{
    const long table[] = {-1, 7, 7, 0, 0, 3};
    EXPECT_EQ(set_reencoding(IndexSet{1, 2, 5}, table), (IndexSet{3, 7}));
    EXPECT_EQ(set_priv(IndexSet{2, 3, 5, 8}, IndexSet{1, 2, 5}), (IndexSet{3, 8}));
}

// x -> a -> b -> c, and a, y -> d.
struct Chain : WoodBuilder {
    Chain()
    {
        Bddexpression* a = eq("a", var("x"));
        Bddexpression* b = eq("b", a->bdd_var);
        eq("c", m()->Bdd_not(b->bdd_var));
        eq("d", m()->Bdd_and(a->bdd_var, var("y")));
    }
};

TEST(WoodDependences, WalksFollowBothDirectionsAndKeepTheAccumulator)
{
    Chain t;
    IndexSet empty, acc = {42}, with_b = t.ids({"b"});
    EXPECT_EQ(t.wood->down_dependances(t.index("x"), 1, empty), t.ids({"a", "b", "c", "d"}));
    EXPECT_EQ(t.wood->up_dependances(t.index("c"), 1, empty), t.ids({"b", "a", "x"}));
    EXPECT_EQ(t.wood->up_dependances(t.index("d"), 1, empty), t.ids({"a", "x", "y"}));
    EXPECT_EQ(t.wood->down_dependances(t.index("c"), 1, acc), acc); // nobody reads c
    EXPECT_EQ(t.wood->up_dependances(t.index("x"), 1, acc), acc);   // x has no equation
    // A member of the accumulator is not walked again.
    EXPECT_EQ(t.wood->down_dependances(t.index("a"), 1, with_b), t.ids({"b", "d"}));
}

TEST(WoodDependences, CyclesEndByMembershipOrByTheDepthLimit)
{
    // a = b, b = a beside an input: membership stops the walk first. With
    // the two variables only, the second step is already at the limit.
    for (bool input : {true, false}) {
        WoodBuilder t;
        if (input)
            t.var("i");
        bdd a = t.var("a"), b = t.var("b");
        new Bddexpression("a", t.wood.get(), a, b, 0, 0);
        new Bddexpression("b", t.wood.get(), b, a, 0, 0);
        IndexSet empty;
        EXPECT_EQ(captured([&] {
                      EXPECT_EQ(t.wood->down_dependances(t.index("a"), 1, empty), t.ids({"a", "b"}));
                      EXPECT_EQ(t.wood->up_dependances(t.index("a"), 1, empty), t.ids({"a", "b"}));
                  }),
                  input ? "" : "WARNING in Bddexpressionwood::down_dependances():\n"
                               "   possible infinite recusion due to a signals cycle\n"
                               "WARNING in Bddexpressionwood::up_dependances():\n"
                               "   possible infinite recursion due to a signals cycle\n");
    }
}

TEST(WoodDependences, CoherenceCheckNamesEachWrongReaderSet)
{
    Chain t;
    long ix = t.index("x"), ia = t.index("a"), ib = t.index("b"), id = t.index("d");
    t.wood->amont_table[ix].insert(ib);
    t.wood->amont_table[ia].erase(id);
    std::ostringstream unused;
    std::string err = captured([&] { t.wood->coherence_dependances_check(unused); });
    std::ostringstream expected;
    expected << "incoherence sur table des amonts pour la variable " << ix << ": calcule: {" << ia
             << "} trouve{" << ia << "," << ib << "}\n"
             << "incoherence sur table des amonts pour la variable " << ia << ": calcule: {" << ib
             << "," << id << "} trouve{" << ib << "}\n";
    EXPECT_EQ(err, expected.str());
    EXPECT_EQ(unused.str(), "");
}

TEST(WoodDependences, RelaxationStepsPushDatesAndFlagOverflow)
{
    Chain t;
    const long n = t.wood->Nb_bdd_vars();
    Bddexpression& d = *t.at("d"); // reads a and y
    long ia = t.index("a"), iy = t.index("y"), idd = t.index("d");
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
    EXPECT_EQ(captured([&] { EXPECT_EQ(learn_downstream_dependance(1, dates.data(), d, &overflow), 0); }),
              "INTERNAL ERROR in learn_downstream_dependance()\n");
}
