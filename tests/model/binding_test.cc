// The module's bindings: which get equations, the look-ups by clock, and
// the keys by occurrence.

#include "data/data.h"
#include "model/module.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct Bindings : ::testing::Test {
    Module m{"m"};
    Bddexpressionwood* wood = m.getBddWood();
    Signal* a = new Signal("a", &m, wood);
    Signal* b = new Signal("b", &m, wood);
    Signal* s = new Signal("s", &m, wood);
    Signal* clock = new Signal("c", &m, wood);
    Signal* other = new Signal("d", &m, wood);
};

// Only a value that reads signals and has no clock gets equations, the
// abstract ones on both wires that date it after what it reads.
TEST_F(Bindings, OnlyAnUnclockedValueReadingSignalsGetsEquations)
{
    EXPECT_EQ(m.getSignalBindingByClock(clock), nullptr);  // no table yet
    m.addSignalBinding(new DataValue("3", "int"), other);
    m.addSignalBinding(new DataSignalValue(a), b, clock);
    EXPECT_TRUE(clock->isClock() && b->isValue() && !a->isClock());
    EXPECT_EQ(m.getBinding("b")->getClock(), clock);
    EXPECT_EQ(wood->exp_number(), 0);

    m.addSignalBinding(new DataBinaryOp(DataExpr::Plus, new DataSignalValue(b), new DataSignalValue(a)), s);
    EXPECT_TRUE(s->isValue());
    for (long wire : {s->getOverBddId(&m, wood), s->getUnderBddId(&m, wood)}) {
        Bddexpression* e = wood->exp_by_index(wire);
        ASSERT_NE(e, nullptr) << wire;
        EXPECT_EQ(e->getAbstraction(), 1);
        EXPECT_EQ(e->getExpDef(), "VALUE_SIGNAL");
        EXPECT_EQ(e->set_of_var_dependances(), (IndexSet{0, 1, 2, 3}));
    }
    EXPECT_EQ(wood->exp_number(), 2);
}

TEST_F(Bindings, ByClockComparesInternalNamesInTableOrder)
{
    m.addSignalBinding(new DataValue("1", "int"), s, clock);
    m.addSignalBinding(new DataValue("2", "int"), a, clock);
    m.addSignalBinding(new DataValue("3", "int"), b, other);
    m.addSignalBinding(new DataValue("4", "int"), other);
    // Another object of the clock's internal name counts as the same clock.
    Signal* sameClock = new Signal("alias", "c", &m, wood);

    std::list<Signal*>* signals = m.getSignalBindingByClock(sameClock);
    ASSERT_NE(signals, nullptr);
    EXPECT_EQ(std::vector<Signal*>(signals->begin(), signals->end()), (std::vector<Signal*>{a, s}));
    std::list<DataBinding*>* bindings = m.getDataBindingByClock(clock);
    ASSERT_NE(bindings, nullptr);
    ASSERT_EQ(bindings->size(), 2u);
    EXPECT_EQ(bindings->front(), m.getBinding("a"));

    std::list<Signal*>* none = m.getSignalBindingByClock(s);
    ASSERT_NE(none, nullptr);
    EXPECT_TRUE(none->empty());
    EXPECT_EQ(m.getDataBindingByClock(s), nullptr);
}

TEST_F(Bindings, AddBindingKeysByTheCurrentOccurrence)
{
    s->setLocal();
    s->newOccurrence(wood, &m);
    DataBinding* current = new DataBinding(s, new DataValue("1", "int"));
    m.addBinding(current);
    EXPECT_EQ(m.getBinding("s_1"), current);
    EXPECT_EQ(m.getBinding("s"), nullptr);

    Bddexpressionwood elsewhere;
    s->setCurrentOccurrence(&elsewhere, 0);
    DataBinding* first = new DataBinding(s, new DataValue("2", "int"));
    m.addBinding(first, &elsewhere);
    EXPECT_EQ(m.getBinding("s"), first);

    m.removeBinding("s_1");
    m.removeBinding("absent");
    EXPECT_EQ(m.getBinding("s_1"), nullptr);
    EXPECT_EQ(m.getBinding("s"), first);
}

}  // namespace
