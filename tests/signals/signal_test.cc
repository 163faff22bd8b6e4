// Signals and their wires: variable order, shared refs, kind codes,
// occurrences, registers and memorised pairs, and the refusals of misuse.

#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

struct Signals : ::testing::Test {
    Module m{"m"};
    Bddexpressionwood* wood = m.getBddWood();
};
using SignalsDeathTest = Signals;

std::vector<std::string> variableNames(Bddexpressionwood* wood)
{
    std::vector<std::string> names;
    for (long i = 0; i < wood->Nb_bdd_vars(); i++)
        names.push_back(wood->Name_var_by_index(i));
    return names;
}

TEST_F(Signals, KindCodesFollowFlagPriority)
{
    struct Case {
        const char* what;
        bool input, output, reg, clock, wire;
        int over, under;
    };
    const Case cases[] = {
        {"none", false, false, false, false, false, Compilation::STAT, Compilation::VAL},
        {"input", true, false, false, false, false, Compilation::SINPUT, Compilation::VINPUT},
        {"input and output", true, true, false, false, false, Compilation::SINPUT, Compilation::VINPUT},
        {"output and register", false, true, true, false, false, Compilation::SOUTPUT, Compilation::VOUTPUT},
        {"register (wire too)", false, false, true, true, false, Compilation::SREG, Compilation::VREG},
        {"clock and wire", false, false, false, true, true, Compilation::SCLOCK, Compilation::VCLOCK},
        {"wire", false, false, false, false, true, Compilation::SWIRE, Compilation::VWIRE},
    };
    int n = 0;
    for (const Case& c : cases) {
        Signal* s = new Signal("k" + std::to_string(n++), &m, wood);
        s->setInput(c.input);
        s->setOutput(c.output);
        if (c.reg)
            s->setRegister();
        s->setClock(c.clock);
        s->setWire(c.wire || c.reg);
        EXPECT_EQ(s->computeOverType(), c.over) << c.what;
        EXPECT_EQ(s->computeUnderType(), c.under) << c.what;
    }
    Signal* wired = new Signal("w", "w_i", &m, wood, true);
    EXPECT_TRUE(wired->isWire() && wired->isRegister() && wired->isWired());
}

// A variable of the name already there is reused; an "@" stays in names
// until replaced; an absent signal has no wire; only the valued actual of
// a memorised pair is used with its pre.
TEST_F(Signals, NamesWiresAndPairs)
{
    wood->New_var_last("_v_x");
    Signal* x = new Signal("x", &m, wood);
    EXPECT_EQ(variableNames(wood), (std::vector<std::string>{"_v_x", "_s_x"}));
    EXPECT_EQ(x->getOverBddId(&m, wood), 1);
    EXPECT_EQ(x->getUnderBddId(&m, wood), 0);

    Signal* at = new Signal("a@b", "a@b@1", &m, wood);
    EXPECT_EQ(at->getOverName(&m), "_s_a@b@1");
    at->ReplaceAtCharacterInAllNames("_");
    EXPECT_EQ(at->getOriginalName(), "a_b");
    EXPECT_EQ(at->getInternalName(), "a_b_1");
    EXPECT_EQ(Signal::generateName("base", "7"), "base_7");

    Signal* s = new Signal("s", &m, wood);
    s->setLocal();
    s->setCurrentOccurrence(wood, -1);
    EXPECT_TRUE(s->getAllBddId(&m, wood).empty());

    Signal* actual = new Signal("a", &m, wood);
    Signal* pre = new Signal("pa", &m, wood);
    Signal* other = new Signal("o", &m, wood);
    other->setValueType("int", &m);
    m.addPreSignal(pre, actual, "0");
    EXPECT_FALSE(actual->usedwithPre(&m));
    actual->setValueType("int", &m);
    EXPECT_TRUE(actual->usedwithPre(&m));
    EXPECT_FALSE(pre->usedwithPre(&m));
    EXPECT_FALSE(other->usedwithPre(&m));
}

TEST_F(Signals, ManagerDuplicatesAndDeletesWoods)
{
    Signal* a = new Signal("a", &m, wood);
    Signal* b = new Signal("b", &m, wood);
    SignalManager* manager = m.getSignalManager();
    Bddexpressionwood copy;
    manager->duplicate(wood, &copy);
    EXPECT_EQ(b->getOverBddId(&m, &copy), 2);
    EXPECT_EQ(manager->getSignalRefById(3, &copy), manager->getSignalRefByName("b"));
    manager->deleteWood(wood);
    EXPECT_FALSE(manager->getSignalRefByName("a")->hasWood(wood));
    EXPECT_EQ(manager->getSignalRefById(0, wood), nullptr);
    EXPECT_EQ(a->getUnderBddId(&m, &copy), 1);
}

// Registers compare on all three fields (the other tests lean on it) and
// print in the file's layout, unknown signals as "?".
TEST_F(Signals, RegistersCompareOnAllFieldsAndPrintInTheFileLayout)
{
    Signal* r = new Signal("r", &m, wood);
    Signal* n = new Signal("n", &m, wood);
    regclass a(r, n, 1);
    EXPECT_TRUE(a == regclass(r, n, 1) && a != regclass(r, n, 0) && a != regclass(n, n, 1) && a != regclass(r, r, 1));
    std::ostringstream text;
    text << regclass(r, n, 1) << "|" << regclass(r, nullptr, 0) << "|" << memorizedSignal(n, r, "3") << "|"
         << memorizedSignal(n, nullptr, "");
    EXPECT_EQ(text.str(), "n r 1;|? r 0;|n r 3;|n ? ;");
}

TEST_F(SignalsDeathTest, MisuseEndsWithItsMessage)
{
    Signal* in = new Signal("in", &m, wood);
    in->setInput();
    EXPECT_EXIT(in->getAllBddId(&m, wood), ::testing::ExitedWithCode(1),
                "Error: Illegal operation!\nSignal::getAllBddIdin");
    Bddexpressionwood other;
    EXPECT_EXIT(in->getCurrentOccurrence(&other), ::testing::ExitedWithCode(1),
                "Signal:getCurrentOccurrence: no current occurrence for the considered wood:.*  for signal:in");
    EXPECT_EXIT(new SignalRef("in", "in", &m, wood), ::testing::ExitedWithCode(1),
                "Exception in Hash Table: SignalManager::addSignalRef: add:in is already defined");
    SignalRef* ref = m.getSignalManager()->getSignalRefByName("in");
    EXPECT_EXIT(ref->addBddIds(5, 6, wood), ::testing::ExitedWithCode(1),
                "SignalRef::addBddIds: wood already addedin");
    EXPECT_EXIT(ref->getOverBddId(&other), ::testing::ExitedWithCode(1), "SignalRef::getOverBddId:unknown woodin");
    EXPECT_EXIT(ref->setOverBddId(1, &other), ::testing::ExitedWithCode(1), "SignalRef::setOverBddId: wood not found");
    EXPECT_EXIT(m.getSignalManager()->addSignalRefIdTable(0, 9, ref, wood), ::testing::ExitedWithCode(1),
                "addSignalRef \\(excep1\\) in");
    EXPECT_EXIT(m.getSignalManager()->addSignalRefIdTable(9, 1, ref, wood), ::testing::ExitedWithCode(1),
                "addSignalRef \\(excep2\\)in");
    Expression root;
    EXPECT_EXIT(root.getOverBdd(&m, wood), ::testing::ExitedWithCode(1),
                "Error: calling Abstract method: Expression::getOverBdd\\(\\)");
    EXPECT_EXIT(root.duplicate(), ::testing::ExitedWithCode(1), "abnormal use of expression::duplicate\\(\\) ...");

    // A second occurrence's ref in the same wood.
    Signal* x = new Signal("x", &m, wood);
    x->setLocal();
    new Signal("x_1", &m, wood);  // takes the name of x's first occurrence
    EXPECT_EXIT(x->newOccurrence(wood, &m), ::testing::ExitedWithCode(1),
                "Signal::newOccurrence: signal ref already exits for the current woodx");
}

}  // namespace
