// The passes that take equations out of the wood (wires, constants, locals,
// clean, restriction, loop breaking) on small woods, and on chains as long
// as a big module's.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "context/compilation.h"
#include "tests/wood/wood_builder.h"

namespace {

std::string dump(const Bddexpressionwood& w)
{
    std::ostringstream out;
    out << w;
    return without_addresses(out.str());
}

} // namespace

TEST(SuppressWires, WireChainCollapsesIntoTheKeptReader)
{
    // x1 = x0, x2 = not x1, y = x2 and x3, with y the only kept type.
    WoodBuilder b;
    b.vars({"x0", "x1", "x2", "x3", "y"});
    b.eq("x1", b.v("x0"));
    b.eq("x2", b.m()->Bdd_not(b.v("x1")));
    b.eq("y", b.m()->Bdd_and(b.v("x2"), b.v("x3")), int(Compilation::SOUTPUT));
    std::list<int> keep{int(Compilation::SOUTPUT)};
    b.wood->suppress_wires(keep);

    EXPECT_EQ(b.wood->exp_ids, (IndexSet{4}));
    EXPECT_TRUE(b.at("x1") == nullptr && b.at("x2") == nullptr);
    bdd expected = b.m()->Bdd_and(b.m()->Bdd_not(b.v("x0")), b.v("x3"));
    EXPECT_TRUE(b.m()->Bdd_equiv(b.at("y")->bdd_exp, expected));
    EXPECT_EQ(b.at("y")->dependances, (IndexSet{0, 3}));
    EXPECT_EQ((std::vector<IndexSet>(b.wood->amont_table, b.wood->amont_table + 4)),
              (std::vector<IndexSet>{{4}, {}, {}, {4}}));
    // One more than compute_dates would give: the shift stays.
    EXPECT_EQ(b.at("y")->early_date, 2);
    EXPECT_EQ(b.wood->late_dates[4], 0);
}

TEST(SuppressWires, WhatStays)
{
    WoodBuilder b;
    b.vars({"i", "unread", "kept", "r1", "abs_src", "c", "r2"});
    // A wire nobody reads stays.
    b.eq("unread", b.v("i"));
    // A wire of a kept type stays.
    b.eq("kept", b.v("i"), int(Compilation::SWIRE));
    b.eq("r1", b.m()->Bdd_and(b.v("kept"), b.v("c")), int(Compilation::SOUTPUT));
    // A wire read by an abstract equation stays.
    b.eq("abs_src", b.m()->Bdd_not(b.v("i")));
    IndexSet deps{b.index("abs_src")};
    new Bddexpression(b.m()->Id_var_by_name("r2"), b.wood.get(), deps, "f", 0, 0);
    // A constant of a kept type that somebody reads goes all the same.
    b.eq("c", b.m()->Bdd_one(), int(Compilation::SWIRE));

    std::list<int> keep{int(Compilation::SWIRE), int(Compilation::SOUTPUT)};
    b.wood->suppress_wires(keep);

    EXPECT_NE(b.at("unread"), nullptr);
    EXPECT_NE(b.at("kept"), nullptr);
    EXPECT_NE(b.at("abs_src"), nullptr);
    EXPECT_EQ(b.at("c"), nullptr);
    EXPECT_EQ(b.at("r1")->bdd_exp, b.v("kept"));
    EXPECT_EQ(b.wood->amont_table[b.index("kept")], (IndexSet{b.index("r1")}));
    EXPECT_EQ(b.wood->amont_table[b.index("abs_src")], (IndexSet{b.index("r2")}));
}

TEST(ConstantsPropagation, ConstantIsPushedIntoItsReaders)
{
    struct Case {
        int type_of_a;
        bool a_stays;
    };
    for (Case c : {Case{0, false}, Case{int(Compilation::SOUTPUT), true}}) {
        WoodBuilder b;
        b.vars({"a", "b", "c"});
        b.eq("a", b.m()->Bdd_one(), c.type_of_a);
        b.eq("b", b.m()->Bdd_and(b.v("a"), b.v("c")), int(Compilation::SOUTPUT));
        std::list<int> keep{int(Compilation::SOUTPUT)};
        b.wood->constants_propagation(keep);

        EXPECT_EQ(b.at("b")->bdd_exp, b.v("c")) << c.type_of_a;
        EXPECT_EQ(b.at("b")->dependances, (IndexSet{2}));
        EXPECT_EQ(b.at("a") != nullptr, c.a_stays);
        EXPECT_EQ(b.wood->exp_ids.count(0) != 0, c.a_stays);
        EXPECT_TRUE(b.wood->amont_table[0].empty());
        EXPECT_EQ(b.wood->amont_table[2], (IndexSet{1}));
    }
}

TEST(ConstantsPropagation, CascadeAgainstTheSweepOrder)
{
    // z (index 0) reads y, y reads x, x is false: each constant appears
    // behind the sweep's cursor, and all of them go.
    WoodBuilder b;
    b.vars({"z", "y", "x", "i"});
    b.eq("z", b.m()->Bdd_or(b.v("y"), b.v("i")), int(Compilation::SOUTPUT));
    b.eq("y", b.m()->Bdd_and(b.v("x"), b.v("i")));
    b.eq("x", b.m()->Bdd_zero());
    std::list<int> keep{int(Compilation::SOUTPUT)};
    b.wood->constants_propagation(keep);
    EXPECT_EQ(b.wood->exp_ids, (IndexSet{0}));
    EXPECT_EQ(b.at("z")->bdd_exp, b.v("i"));
    EXPECT_EQ(b.wood->global_tautology(), 0);
    b.wood->reduce_expressions(b.v("i"));
    EXPECT_EQ(b.wood->global_tautology(), 1);
}

TEST(SelfDependance, ReportedBySuppressLocalFatalInUselessLocal)
{
    auto build = [](WoodBuilder& b) {
        b.vars({"x", "i", "z"});
        b.eq("x", b.m()->Bdd_and(b.v("x"), b.v("i")));
        b.eq("z", b.m()->Bdd_not(b.v("x")));
    };
    WoodBuilder b;
    build(b);
    std::string before = dump(*b.wood);
    testing::internal::CaptureStderr();
    b.wood->suppress_local(0);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err.rfind("ERROR: detected self-dependance about variable : 0 !!!\n"
                        "in associated expression: (",
                        0),
              0u);
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

TEST(UselessLocal, DissolvesIntoReadersAndStaysUnread)
{
    WoodBuilder b;
    b.vars({"i", "j", "l", "r"});
    b.eq("l", b.m()->Bdd_or(b.v("i"), b.v("j")));
    b.eq("r", b.m()->Bdd_not(b.v("l")));
    b.wood->useless_local(b.index("l"));
    EXPECT_NE(b.at("l"), nullptr);
    EXPECT_TRUE(b.wood->amont_table[b.index("l")].empty());
    bdd expected = b.m()->Bdd_not(b.m()->Bdd_or(b.v("i"), b.v("j")));
    EXPECT_EQ(b.at("r")->bdd_exp, expected);
    EXPECT_EQ(b.at("r")->dependances, (IndexSet{0, 1}));
    EXPECT_EQ(b.wood->amont_table[0], (IndexSet{3}));
    EXPECT_EQ(b.wood->amont_table[1], (IndexSet{3}));
}

TEST(SuppressLocal, SubstitutesAndCleansTheTables)
{
    WoodBuilder b;
    b.vars({"i", "j", "l", "r", "s"});
    b.eq("l", b.m()->Bdd_and(b.v("i"), b.v("j")));
    b.eq("r", b.m()->Bdd_or(b.v("l"), b.v("j")));
    b.eq("s", b.m()->Bdd_not(b.v("l")));
    b.wood->suppress_local(b.index("l"));
    EXPECT_EQ(b.at("l"), nullptr);
    EXPECT_EQ(b.wood->exp_ids, (IndexSet{3, 4}));
    // r = (i and j) or j = j: the dependance on i is rebuilt away.
    EXPECT_EQ(b.at("r")->dependances, (IndexSet{1}));
    EXPECT_EQ(b.at("s")->dependances, (IndexSet{0, 1}));
    EXPECT_EQ(b.wood->amont_table[0], (IndexSet{4}));
    EXPECT_EQ(b.wood->amont_table[1], (IndexSet{3, 4}));
    EXPECT_TRUE(b.wood->amont_table[2].empty());
}

TEST(Clean, KeepRules)
{
    WoodBuilder b;
    b.vars({"read_const", "reader", "kept_const", "lone_const", "lone_eq", "i"});
    b.eq("read_const", b.m()->Bdd_one());
    b.eq("reader", b.m()->Bdd_and(b.v("read_const"), b.v("i")));
    b.eq("kept_const", b.m()->Bdd_zero());
    Bddexpression* lone = b.eq("lone_const", b.m()->Bdd_one());
    b.eq("lone_eq", b.v("i"));
    // An id without its equation is reported and passed by.
    b.wood->exp_ids.insert(b.index("i"));

    std::list<long> keep{b.index("kept_const")};
    testing::internal::CaptureStderr();
    b.wood->clean(keep);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning in Bddexpressionwood::clean():  Expression for id var 5 should be existed ...\n");
    for (const char* n : {"read_const", "kept_const", "lone_eq"})
        EXPECT_NE(b.at(n), nullptr) << n;
    EXPECT_EQ(b.at("lone_const"), nullptr);
    EXPECT_EQ(b.wood->exp_ids, (IndexSet{0, 1, 2, 4, 5}));
    // Dropped, not destroyed.
    EXPECT_EQ(lone->name, "lone_const");

    IndexSet none;
    b.wood->exp_ids.erase(5);
    b.wood->clean(none);
    EXPECT_EQ(b.at("kept_const"), nullptr);
}

TEST(Reduce, CubeAndQuantifiersKeepTablesInStep)
{
    WoodBuilder b;
    b.vars({"a", "c", "x", "y"});
    b.eq("x", b.m()->Bdd_and(b.v("a"), b.v("c")), int(Compilation::SOUTPUT));
    b.eq("y", b.m()->Bdd_or(b.v("x"), b.v("c")), int(Compilation::SOUTPUT));
    b.wood->reduce_expressions(b.v("a"));
    EXPECT_EQ(b.at("x")->bdd_exp, b.v("c"));
    EXPECT_TRUE(b.wood->amont_table[0].empty());

    b.wood->reduce_expressions_when_var_forgotten_by_exist_op(b.index("c"));
    // exists c. c = 1, and y no longer reads x: both are constants that
    // nobody reads, which the propagation leaves.
    EXPECT_TRUE(b.m()->Bdd_is_one_tautologic(b.at("x")->bdd_exp));
    EXPECT_TRUE(b.m()->Bdd_is_one_tautologic(b.at("y")->bdd_exp));
    EXPECT_TRUE(b.wood->amont_table[b.index("x")].empty());
    EXPECT_TRUE(b.at("y")->dependances.empty());

    WoodBuilder f;
    f.vars({"a", "c", "x"});
    f.eq("x", f.m()->Bdd_or(f.v("a"), f.v("c")));
    f.wood->reduce_expressions_when_var_forgotten_by_forall_op(f.index("c"));
    EXPECT_EQ(f.at("x")->bdd_exp, f.v("a"));
    EXPECT_EQ(f.wood->amont_table[1], IndexSet());
}

TEST(Propositions, VariableAndAssertion)
{
    WoodBuilder b;
    b.vars({"i", "j", "x", "y"});
    EXPECT_EQ(b.wood->reduce_proposition_by_variable(), -1);
    EXPECT_TRUE(b.m()->Bdd_is_one_tautologic(b.wood->reduce_proposition_by_assertion()));
    b.eq("x", b.m()->Bdd_and(b.v("j"), b.v("i")));
    b.eq("y", b.m()->Bdd_not(b.v("x")));
    b.wood->compute_dates();
    EXPECT_EQ(b.wood->reduce_proposition_by_variable(), 0);
    bdd cube = b.wood->reduce_proposition_by_assertion();
    // latest_sort puts x first; its one implicant is i and j.
    EXPECT_EQ(cube, b.m()->Bdd_and(b.v("i"), b.v("j")));
}

TEST(Shannon, ExpandAndOutOfRange)
{
    WoodBuilder b;
    b.vars({"s", "a", "e"});
    Bddexpression* e = b.eq("e", b.m()->Bdd_xor(b.v("s"), b.v("a")));
    long p = 0, n = 0;
    long vars = b.m()->variables_number;
    e->Shannon_expand(99, p, n);
    EXPECT_EQ(p, -3);
    EXPECT_EQ(n, -3);
    EXPECT_EQ(b.m()->variables_number, vars);

    e->Shannon_expand(b.index("s"), p, n);
    EXPECT_EQ(b.m()->Name_var_by_index(p), "e_s");
    EXPECT_EQ(b.m()->Name_var_by_index(n), "e_nots");
    EXPECT_EQ(b.wood->exp_table[p]->bdd_exp, b.m()->Bdd_not(b.v("a")));
    EXPECT_EQ(b.wood->exp_table[n]->bdd_exp, b.v("a"));
    bdd split = b.m()->Bdd_ite(b.v("s"), b.v("e_s"), b.v("e_nots"));
    EXPECT_EQ(e->bdd_exp, split);
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
    IndexSet made = b.wood->loop_breaking({0}, flag);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(made.size(), 4u);
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
    static constexpr long length = 1000000;
    WoodBuilder b;
    void SetUp() override
    {
        b.var("x");
        for (long k = 1; k <= length; ++k)
            b.var("a" + std::to_string(k));
        b.eq("a1", b.v("x"));
        bdd prev = b.v("a1");
        for (long k = 2; k <= length; ++k) {
            bdd cur = b.m()->Bdd_var_by_index(k);
            new Bddexpression("a" + std::to_string(k), b.wood.get(), cur, prev, 0, 0, 0);
            prev = cur;
        }
    }
    void expect_only_last_left()
    {
        EXPECT_EQ(b.wood->exp_ids, (IndexSet{length}));
        EXPECT_EQ(b.wood->exp_table[length]->bdd_exp, b.v("x"));
        EXPECT_EQ(b.wood->amont_table[0], (IndexSet{length}));
    }
};

TEST_F(LongChain, DatesSortsAndWalks)
{
    const long n = length;
    Bddexpressionwood& wood = *b.wood;
    EXPECT_EQ(wood.compute_dates(), n + 1);
    EXPECT_EQ(wood.exp_table[n]->getEarlyDate(), n);
    EXPECT_EQ((std::vector<long>{wood.late_dates[0], wood.late_dates[1]}), (std::vector<long>{n, n - 1}));
    std::list<long> order = wood.earliest_sort();
    ASSERT_EQ((long)order.size(), n);
    EXPECT_EQ(order.front(), 1);
    EXPECT_EQ(order.back(), n);
    EXPECT_EQ(wood.latest_sort().front(), 1);
    EXPECT_TRUE(wood.loop_detection().empty());
    std::vector<long> up, down;
    EXPECT_TRUE(wood.memo_critical_paths(1, up, down));
    EXPECT_EQ(up[n], n);
    EXPECT_EQ(down[0], n);
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
    EXPECT_EQ(b.wood->exp_table[length]->early_date, 2);
}

TEST_F(LongChain, SuppressLocalList)
{
    std::list<long> vars;
    for (long k = 1; k <= length; ++k)
        vars.push_back(k);
    b.wood->suppress_local(vars);
    expect_only_last_left();
}

// Constants along chains in both directions. The size stays moderate:
// each restriction by a literal costs the manager a table as long as its
// variables, which is not what is under test here.
TEST(ConstantsChain, BothDirectionsEmptyInOnePass)
{
    const long n = 20000;
    for (bool reverse : {false, true}) {
        WoodBuilder r;
        for (long k = 0; k <= n; ++k)
            r.var("c" + std::to_string(k));
        // Forward: c(k) reads c(k-1), c0 false. Reverse: c(k) reads
        // c(k+1), c(n) false, so every sweep would free one equation.
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
