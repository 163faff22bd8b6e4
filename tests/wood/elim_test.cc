// The passes that take equations out of the wood, on small woods where the
// evaluator of the whole-wood tests says nothing (what stays, reports,
// quantifiers, loop breaking), and on chains as long as a big module's.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "context/compilation.h"
#include "tests/wood/wood_builder.h"

namespace {

const int OUT = Compilation::SOUTPUT;

std::string dump(const Bddexpressionwood& w)
{
    std::ostringstream out;
    out << w;
    return without_addresses(out.str());
}

} // namespace

// useless_local dissolves a local into its readers and leaves it unread;
// on a self-dependance, suppress_local reports and leaves the wood as it
// was, useless_local ends the run.
TEST(Locals, UselessLocalSubstitutesOrEndsOnASelfDependance)
{
    WoodBuilder u;
    u.vars({"i", "j", "l", "r"});
    u.eq("l", u.m()->Bdd_or(u.v("i"), u.v("j")));
    u.eq("r", u.m()->Bdd_not(u.v("l")));
    u.wood->useless_local(u.index("l"));
    EXPECT_NE(u.at("l"), nullptr);
    EXPECT_TRUE(u.readers("l").empty());
    EXPECT_EQ(u.at("r")->bdd_exp, u.m()->Bdd_not(u.m()->Bdd_or(u.v("i"), u.v("j"))));
    EXPECT_EQ(u.at("r")->dependances, (IndexSet{0, 1}));
    EXPECT_EQ(u.readers("i"), (IndexSet{3}));
    EXPECT_EQ(u.readers("j"), (IndexSet{3}));

    auto build = [](WoodBuilder& b) {
        b.vars({"x", "i", "z"});
        b.eq("x", b.m()->Bdd_and(b.v("x"), b.v("i")));
        b.eq("z", b.m()->Bdd_not(b.v("x")));
    };
    WoodBuilder b;
    build(b);
    std::string before = dump(*b.wood);
    std::string err = stderr_of([&] { b.wood->suppress_local(0); });
    EXPECT_EQ(err.rfind("ERROR: detected self-dependance about variable : 0 !!!\nin associated expression: (", 0), 0u);
    EXPECT_NE(err.find("\n\nin associated wood:\nwood Bddexpression statistics:"), std::string::npos);
    EXPECT_EQ(dump(*b.wood), before);
    EXPECT_EXIT(
        {
            WoodBuilder d;
            build(d);
            d.wood->useless_local(0);
        },
        testing::ExitedWithCode(1), "ERROR: detected self-dependance about variable : 0 !!!");
}

// What clean takes is held by the evaluator test.
TEST(Clean, ReportsMissingEquationsAndKeepsWhatItDrops)
{
    WoodBuilder b;
    b.vars({"lone_const", "i"});
    Bddexpression* lone = b.eq("lone_const", b.m()->Bdd_one());
    b.wood->exp_ids.insert(b.index("i")); // an id without its equation
    IndexSet none;
    EXPECT_EQ(stderr_of([&] { b.wood->clean(none); }),
              "Warning in Bddexpressionwood::clean():  Expression for id var 1 should be existed ...\n");
    EXPECT_EQ(b.at("lone_const"), nullptr);
    EXPECT_EQ(lone->name, "lone_const"); // dropped, not destroyed
}

// The constants' propagation itself: the restriction against its literal
// form (whole-wood tests) and the long chains below.
TEST(Reduce, QuantifiersAndPropositionsKeepTablesInStep)
{
    WoodBuilder b;
    b.vars({"c", "x", "y"});
    b.eq("x", b.v("c"), OUT);
    b.eq("y", b.m()->Bdd_or(b.v("x"), b.v("c")), OUT);
    EXPECT_EQ(b.wood->global_tautology(), 0);
    // exists c. c = 1, and y no longer reads x: both are constants that
    // nobody reads, which the propagation leaves.
    b.wood->reduce_expressions_when_var_forgotten_by_exist_op(b.index("c"));
    EXPECT_EQ(b.wood->global_tautology(), 1);
    EXPECT_TRUE(b.m()->Bdd_is_one_tautologic(b.at("x")->bdd_exp));
    EXPECT_TRUE(b.m()->Bdd_is_one_tautologic(b.at("y")->bdd_exp));
    EXPECT_TRUE(b.readers("x").empty());
    EXPECT_TRUE(b.at("y")->dependances.empty());

    WoodBuilder f;
    f.vars({"a", "c", "x"});
    f.eq("x", f.m()->Bdd_or(f.v("a"), f.v("c")));
    f.wood->reduce_expressions_when_var_forgotten_by_forall_op(f.index("c"));
    EXPECT_EQ(f.at("x")->bdd_exp, f.v("a"));
    EXPECT_TRUE(f.readers("c").empty());

    WoodBuilder p;
    p.vars({"i", "j", "x", "y"});
    EXPECT_EQ(p.wood->reduce_proposition_by_variable(), -1);
    EXPECT_TRUE(p.m()->Bdd_is_one_tautologic(p.wood->reduce_proposition_by_assertion()));
    p.eq("x", p.m()->Bdd_and(p.v("j"), p.v("i")));
    p.eq("y", p.m()->Bdd_not(p.v("x")));
    p.wood->compute_dates();
    EXPECT_EQ(p.wood->reduce_proposition_by_variable(), 0);
    // latest_sort puts x first; its one implicant is i and j.
    EXPECT_EQ(p.wood->reduce_proposition_by_assertion(), p.m()->Bdd_and(p.v("i"), p.v("j")));
}

TEST(Shannon, ExpandAndOutOfRange)
{
    WoodBuilder b;
    b.vars({"s", "a", "e"});
    Bddexpression* e = b.eq("e", b.m()->Bdd_xor(b.v("s"), b.v("a")));
    long p = 0, n = 0;
    e->Shannon_expand(99, p, n);
    EXPECT_EQ((std::vector<long>{p, n, b.m()->variables_number}), (std::vector<long>{-3, -3, 3}));

    e->Shannon_expand(b.index("s"), p, n);
    EXPECT_EQ(b.m()->Name_var_by_index(p), "e_s");
    EXPECT_EQ(b.m()->Name_var_by_index(n), "e_nots");
    EXPECT_EQ(b.wood->exp_table[p]->bdd_exp, b.m()->Bdd_not(b.v("a")));
    EXPECT_EQ(b.wood->exp_table[n]->bdd_exp, b.v("a"));
    EXPECT_EQ(e->bdd_exp, b.m()->Bdd_ite(b.v("s"), b.v("e_s"), b.v("e_nots")));
}

TEST(LoopBreaking, CycleThroughAFreeVariableFallsApart)
{
    // x = s ? y : i and y = s ? j : x: a cycle only on paper, since for
    // each value of s one side is cut.
    WoodBuilder b;
    b.vars({"s", "i", "j", "x", "y"});
    b.eq("x", b.m()->Bdd_ite(b.v("s"), b.v("y"), b.v("i")));
    b.eq("y", b.m()->Bdd_ite(b.v("s"), b.v("j"), b.v("x")));
    int flag = -1;
    EXPECT_EQ(b.wood->loop_breaking({0}, flag).size(), 4u);
    EXPECT_EQ(flag, 1);
    EXPECT_TRUE(b.wood->loop_detection().empty());

    WoodBuilder c;
    c.vars({"s", "x", "y"});
    c.eq("x", c.m()->Bdd_and(c.v("s"), c.v("y")));
    c.eq("y", c.v("x"));
    flag = -1;
    EXPECT_TRUE(c.wood->loop_breaking({}, flag).empty());
    EXPECT_EQ(flag, 0);
}

// A chain a1 = x, a2 = a1, ... as long as a big module's: nothing in the
// dating, the walks or the passes may recurse along it, and the fast local
// elimination must not sweep the wood once per variable.
class LongChain : public testing::Test {
protected:
    static constexpr long n = 1000000;
    WoodBuilder b;
    void SetUp() override
    {
        b.var("x");
        for (long k = 1; k <= n; ++k)
            b.var("a" + std::to_string(k));
        for (long k = 1; k <= n; ++k)
            new Bddexpression("a" + std::to_string(k), b.wood.get(), b.m()->Bdd_var_by_index(k),
                              b.m()->Bdd_var_by_index(k - 1), 0, 0, 0);
    }
    void expect_only_last_left()
    {
        EXPECT_EQ(b.wood->exp_ids, (IndexSet{n}));
        EXPECT_EQ(b.wood->exp_table[n]->bdd_exp, b.v("x"));
        EXPECT_EQ(b.wood->amont_table[0], (IndexSet{n}));
    }
};

TEST_F(LongChain, DatesSortsAndWalks)
{
    Bddexpressionwood& wood = *b.wood;
    EXPECT_EQ(wood.compute_dates(), n + 1);
    EXPECT_EQ(wood.exp_table[n]->getEarlyDate(), n);
    EXPECT_EQ((std::vector<long>{wood.late_dates[0], wood.late_dates[1]}), (std::vector<long>{n, n - 1}));
    std::list<long> order = wood.earliest_sort();
    ASSERT_EQ((long)order.size(), n);
    EXPECT_EQ((std::vector<long>{order.front(), order.back(), wood.latest_sort().front()}),
              (std::vector<long>{1, n, 1}));
    EXPECT_TRUE(wood.loop_detection().empty());
    std::vector<long> up, down;
    EXPECT_TRUE(wood.memo_critical_paths(1, up, down));
    EXPECT_EQ((std::vector<long>{up[n], down[0]}), (std::vector<long>{n, n}));
    EXPECT_EQ(wood.down_critical_path(0, 1, 0), n);
    EXPECT_EQ(wood.up_critical_path(n, 1, 1), n + 1);
    IndexSet empty;
    EXPECT_EQ((long)wood.up_dependances(n, 1, empty).size(), n);

    // The literal early propagation on a chain is linear: it runs too.
    wood.update_nb_level(0);
    for (long k = 1; k <= n; k++)
        wood.exp_table[k]->early_date = 0;
    wood.early_propagation(1, 1);
    EXPECT_EQ(wood.exp_table[n]->getEarlyDate(), n);
    EXPECT_EQ(wood.Nb_level(), n + 1);
}

TEST_F(LongChain, SuppressWires)
{
    b.wood->suppress_wires();
    expect_only_last_left();
    EXPECT_EQ(b.wood->exp_table[n]->early_date, 2);
}

TEST_F(LongChain, SuppressLocalList)
{
    std::list<long> vars;
    for (long k = 1; k <= n; ++k)
        vars.push_back(k);
    b.wood->suppress_local(vars);
    expect_only_last_left();
}

// Constants along chains in both directions: forward c(k) reads c(k-1) with
// c0 false, reverse c(k) reads c(k+1) with c(n) false, so that every sweep
// would free one equation. The size stays moderate: each restriction by a
// literal costs the manager a table as long as its variables.
TEST(ConstantsChain, BothDirectionsEmptyInOnePass)
{
    const long n = 20000;
    for (bool reverse : {false, true}) {
        WoodBuilder r;
        for (long k = 0; k <= n; ++k)
            r.var("c" + std::to_string(k));
        for (long k = 0; k <= n; ++k) {
            long src = reverse ? k + 1 : k - 1;
            bdd f = (src < 0 || src > n) ? r.m()->Bdd_zero() : r.m()->Bdd_var_by_index(src);
            new Bddexpression("c", r.wood.get(), r.m()->Bdd_var_by_index(k), f, 0, 0, 0);
        }
        r.wood->constants_propagation();
        long last = reverse ? 0 : n;
        EXPECT_EQ(r.wood->exp_ids, (IndexSet{last})) << reverse;
        EXPECT_TRUE(r.m()->Bdd_is_zero_tautologic(r.wood->exp_table[last]->bdd_exp));
    }
}
