// The four-valued expressions on the wires of a small module: each
// operator's pair, the simplifying joins, and the equation table's
// equations, joins and cycle report, and its dates.

#include "bdd/bddpp.h"
#include "model/module.h"
#include "signals/signal.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <iterator>
#include <utility>

namespace {

struct fixture {
    Module* m = new Module("m");
    Bddexpressionwood* wood = m->getBddWood();
    bddpp_manager* manager = wood->my_bdd_manager();
    EquationTable* table = new EquationTable("m", wood);
    Signal* x = new Signal("x", m, wood);

    fixture()
    {
        install_expression_constructors();
        x->setInput();
        m->addInputSignal(x);
    }
    bdd o(Expression* e) { return e->getOverBdd(m, wood); }
    bdd u(Expression* e) { return e->getUnderBdd(m, wood); }
    bool is(const bdd& f, const bdd& g) { return manager->Bdd_is_tautology(manager->Bdd_eq(f, g)); }
    // The pair of e as constants: 1, 0 or -1 for "not constant".
    std::pair<int, int> pair(Expression* e)
    {
        return {Bddexpressionwood::bdd_constant_value(o(e)), Bddexpressionwood::bdd_constant_value(u(e))};
    }
};

TEST(Expressions, PairsOfTheOperators)
{
    fixture f;
    Expression *T = new TrueExpression(), *F = new FalseExpression();
    Expression *B = new BottomExpression(), *E = new ErrorExpression();
    // np takes Bottom for absent; not leaves it.
    const struct {
        Expression* e;
        std::pair<int, int> pair;
    } cases[] = {
        {T, {1, 0}}, {F, {0, 1}}, {B, {0, 0}}, {E, {1, 1}},
        {new NpExpression(B), {1, 0}}, {new NpExpression(T), {0, 1}}, {new NpExpression(F), {1, 0}},
        {new NpExpression(E), {1, 1}}, {new NotExpression(B), {0, 0}}, {new NotExpression(T), {0, 1}},
        {new OrExpression(T, B), {1, 0}}, {new OrExpression(F, B), {0, 0}}, {new AndExpression(F, B), {0, 1}},
        {new AndExpression(T, B), {0, 0}}, {new ElseExpression(T, T), {0, 0}}, {new ElseExpression(F, T), {1, 0}},
        {new DThenExpression(F, T), {1, 0}}, {new DThenExpression(T, T), {0, 0}},
        {new DElseExpression(B, F), {0, 1}}, {new CondExpression(E, F), {0, 0}}, {new CondExpression(E, T), {1, 1}},
    };
    for (std::size_t k = 0; k < std::size(cases); ++k)
        EXPECT_EQ(f.pair(cases[k].e), cases[k].pair) << "case " << k;

    // On a signal: then routes the pair of b by the over wire of a.
    Expression* then = new ThenExpression(f.x, F);
    EXPECT_TRUE(f.is(f.o(then), f.manager->Bdd_zero()));
    EXPECT_TRUE(f.is(f.u(then), f.o(f.x)));
    Expression* dthen = new DThenExpression(f.x, T);
    EXPECT_TRUE(f.is(f.o(dthen), f.u(f.x)));
    // np of a signal: over is (not o) or (o and u).
    Expression* np = new NpExpression(f.x);
    bdd want = f.manager->Bdd_or(f.manager->Bdd_not(f.o(f.x)), f.manager->Bdd_and(f.o(f.x), f.u(f.x)));
    EXPECT_TRUE(f.is(f.o(np), want));
    EXPECT_TRUE(f.is(f.u(np), f.o(f.x)));
}

TEST(Expressions, JoinsBuildOnlyWhatTheyMust)
{
    fixture f;
    Expression *T = new TrueExpression(), *F = new FalseExpression();
    Expression *B = new BottomExpression(), *E = new ErrorExpression();
    EXPECT_TRUE(T->plus(F, f.m)->isErrorExpr());
    EXPECT_TRUE(T->mult(F, f.m)->isBottomExpr());
    EXPECT_TRUE(F->plus(T, f.m)->isErrorExpr());
    EXPECT_TRUE(F->mult(T, f.m)->isBottomExpr());
    // Bottom and Error give the other side back, for mult as for plus; any
    // other expression gives the receiver, the argument, or a new node.
    Expression* x = f.x;
    const struct {
        Expression* receiver;
        bool plus;
        Expression *argument, *result;
    } joins[] = {
        {T, true, B, T},  {T, false, E, T}, {F, true, B, F},  {F, false, B, B}, {F, false, x, F}, {B, false, x, x},
        {E, false, x, x}, {E, true, F, F},  {x, true, F, x},  {x, true, B, x},  {x, true, T, T},  {x, true, E, E},
        {x, false, B, B}, {x, false, F, F}, {x, false, E, x}, {x, false, T, x},
    };
    for (std::size_t k = 0; k < std::size(joins); ++k) {
        const auto& j = joins[k];
        EXPECT_EQ(j.plus ? j.receiver->plus(j.argument, f.m) : j.receiver->mult(j.argument, f.m), j.result)
            << "join " << k;
    }
    Expression* both = f.x->plus(f.x, f.m);
    EXPECT_NE(dynamic_cast<OrExpression*>(both), nullptr);
    EXPECT_NE(dynamic_cast<AndExpression*>(f.x->mult(f.x, f.m)), nullptr);
}

TEST(EquationTable, EquationsJoinsDatesAndCycles)
{
    fixture f;
    // A wire is two-valued by construction: under := not over.
    Signal* w = new Signal("w", f.m, f.wood);
    w->setWire();
    f.table->createEquation(w, new NotExpression(f.x), f.m);
    Bddexpression* wo = f.wood->exp_by_index(w->getOverBddId(f.m, f.wood));
    Bddexpression* wu = f.wood->exp_by_index(w->getUnderBddId(f.m, f.wood));
    ASSERT_NE(wo, nullptr);
    ASSERT_NE(wu, nullptr);
    EXPECT_TRUE(f.is(wo->my_bdd_exp(), f.u(f.x)));
    EXPECT_TRUE(f.is(wu->my_bdd_exp(), f.manager->Bdd_not(f.o(w))));
    EXPECT_EQ(wo->getUserType(), Compilation::SWIRE);
    EXPECT_EQ(wu->getUserType(), Compilation::VWIRE);

    // Another signal keeps the two rails of the expression; joins or them.
    Signal* out = new Signal("out", f.m, f.wood);
    out->setOutput();
    f.m->addOutputSignal(out);
    f.table->createBottomEquation(out, f.m);
    f.table->createUnifyEquation(out, new ThenExpression(w, new TrueExpression()), f.m, false);
    f.table->createUnifyEquation(out, new ThenExpression(f.x, new FalseExpression()), f.m, false);
    Bddexpression* oo = f.wood->exp_by_index(out->getOverBddId(f.m, f.wood));
    Bddexpression* ou = f.wood->exp_by_index(out->getUnderBddId(f.m, f.wood));
    EXPECT_TRUE(f.is(oo->my_bdd_exp(), f.o(w)));
    EXPECT_TRUE(f.is(ou->my_bdd_exp(), f.o(f.x)));
    EXPECT_EQ(oo->getUserType(), Compilation::SOUTPUT);
    EXPECT_EQ(ou->getUserType(), Compilation::VOUTPUT);
    // An occurrence the signal does not have: the fatal path, status 1.
    EXPECT_EXIT(f.table->createBottomEquation(out, f.m, 3), testing::ExitedWithCode(1),
                "Error: Illegal operation!\ncreateBottomEquation: no signalrefout");

    // Dated without a cycle (a table is dated once): what is read comes first.
    fixture g;
    Signal* p = new Signal("p", g.m, g.wood);
    Signal* q = new Signal("q", g.m, g.wood);
    p->setWire();
    q->setWire();
    g.table->createEquation(p, g.x, g.m);
    g.table->createEquation(q, new AndExpression(p, g.x), g.m);
    g.table->callPert();
    EXPECT_GT(g.table->getPertLevel(), 0);
    EXPECT_LT(g.wood->exp_by_index(p->getOverBddId(g.m, g.wood))->getEarlyDate(),
              g.wood->exp_by_index(q->getOverBddId(g.m, g.wood))->getEarlyDate());

    // Two wires that read each other: the module's report, status 1.
    Signal* a = new Signal("a", f.m, f.wood);
    Signal* b = new Signal("b", f.m, f.wood);
    a->setWire();
    b->setWire();
    f.table->createEquation(a, b, f.m);
    f.table->createEquation(b, a, f.m);
    EXPECT_EXIT(f.table->callPert(), testing::ExitedWithCode(1),
                "ERROR in Module `m': detecting variables in a dependance cycle:\n(.|\n)*_s_a(.|\n)*when sorting "
                "equations: \n   _s_a <- _s_b\n");
}

} // namespace
