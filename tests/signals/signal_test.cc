// Signals and their wires: variable order, shared refs, kind codes,
// occurrences, registers and memorised pairs, the expression root, and
// the refusals of misuse.

#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

std::vector<long> toVector(const std::list<long>& l) { return std::vector<long>(l.begin(), l.end()); }

std::vector<std::string> variableNames(Bddexpressionwood* wood)
{
    std::vector<std::string> names;
    for (long i = 0; i < wood->Nb_bdd_vars(); i++)
        names.push_back(wood->Name_var_by_index(i));
    return names;
}

TEST(Signal, ExistingVariableOfTheNameIsReused)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
    wood->New_var_last("_v_x");
    Signal* x = new Signal("x", &m, wood);
    EXPECT_EQ(variableNames(wood), (std::vector<std::string>{"_v_x", "_s_x"}));
    EXPECT_EQ(x->getOverBddId(&m, wood), 1);
    EXPECT_EQ(x->getUnderBddId(&m, wood), 0);
}

TEST(Signal, KindCodesFollowFlagPriority)
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
    Module m("m");
    int n = 0;
    for (const Case& c : cases) {
        Signal* s = new Signal("k" + std::to_string(n++), &m, m.getBddWood());
        s->setInput(c.input);
        s->setOutput(c.output);
        if (c.reg)
            s->setRegister();
        s->setClock(c.clock);
        s->setWire(c.wire || c.reg);
        EXPECT_EQ(s->computeOverType(), c.over) << c.what;
        EXPECT_EQ(s->computeUnderType(), c.under) << c.what;
    }
    Signal* wired = new Signal("w", "w_i", &m, m.getBddWood(), true);
    EXPECT_TRUE(wired->isWire() && wired->isRegister() && wired->isWired());
}

TEST(Signal, AtSignInNamesIsKeptUntilReplaced)
{
    Module m("m");
    Signal* s = new Signal("a@b", "a@b@1", &m, m.getBddWood());
    EXPECT_EQ(s->getOverName(&m), "_s_a@b@1");
    s->ReplaceAtCharacterInAllNames("_");
    EXPECT_EQ(s->getOriginalName(), "a_b");
    EXPECT_EQ(s->getInternalName(), "a_b_1");
    EXPECT_EQ(Signal::generateName("base", "7"), "base_7");
}

TEST(Signal, OccurrencesGetTheirOwnWiresAtTheEnd)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
    Signal* x = new Signal("x", &m, wood);
    x->setLocal();
    x->setValueType("int", &m);
    Signal* y = new Signal("y", &m, wood);
    y->setOutput();

    EXPECT_EQ(x->newOccurrence(wood, &m), x);
    EXPECT_EQ(x->getCurrentOccurrence(wood), 1);
    EXPECT_EQ(x->getName(&m), "x_1");
    EXPECT_EQ((std::vector<long>{x->getOverBddId(&m, wood), x->getUnderBddId(&m, wood),
                                 x->getInitialOverBddId(&m, wood), x->getInitialUnderBddId(&m, wood)}),
              (std::vector<long>{4, 5, 0, 1}));
    EXPECT_EQ(variableNames(wood)[4] + " " + variableNames(wood)[5], "_s_x_1 _v_x_1");
    // The new occurrence inherits the value type.
    EXPECT_TRUE(x->isValued(&m));
    EXPECT_EQ(x->getValueType(&m), "int");

    x->newOccurrence(wood, &m);
    y->newOccurrence(wood, &m);
    EXPECT_EQ(toVector(x->getAllBddId(&m, wood)), (std::vector<long>{0, 1, 4, 5, 6, 7}));
    EXPECT_EQ(toVector(y->getAllBddId(&m, wood)), (std::vector<long>{2, 3, 8, 9}));

    SignalManager* manager = m.getSignalManager();
    SignalRef* second = manager->getSignalRefByOccurrence(x, 2);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->getCurrentName(), "x_2");
    EXPECT_TRUE(second->isOccurrence());
    EXPECT_FALSE(manager->getSignalRefByOccurrence(x, 0)->isOccurrence());
    std::vector<std::string> names;
    for (SignalRef* r : manager->getAllSignalRef(x, wood))
        names.push_back(r->getCurrentName());
    EXPECT_EQ(names, (std::vector<std::string>{"x", "x_1", "x_2"}));
    EXPECT_EQ(manager->getCurrentOccurrence(x, wood)->getCurrentName(), "x");
    EXPECT_EQ(manager->getSignalRefById(7, wood), second);
}

TEST(Signal, InputsHaveNoOccurrenceAndAnAbsentSignalNoWire)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
    Signal* in = new Signal("i", &m, wood);
    in->setInput();
    EXPECT_EQ(in->newOccurrence(wood, &m), in);
    EXPECT_EQ(in->getCurrentOccurrence(wood), 0);
    EXPECT_EQ(wood->Nb_bdd_vars(), 2);
    Signal* s = new Signal("s", &m, wood);
    s->setLocal();
    s->setCurrentOccurrence(wood, -1);
    EXPECT_TRUE(s->getAllBddId(&m, wood).empty());
}

TEST(Signal, UsedWithPreNeedsAValuedActualOfAPair)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
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

TEST(SignalManager, DuplicateAndDeleteWood)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
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
TEST(Registers, EqualityAndFileLayout)
{
    Module m("m");
    Signal* r = new Signal("r", &m, m.getBddWood());
    Signal* n = new Signal("n", &m, m.getBddWood());
    regclass a(r, n, 1);
    EXPECT_TRUE(a == regclass(r, n, 1) && a != regclass(r, n, 0) && a != regclass(n, n, 1) && a != regclass(r, r, 1));
    std::ostringstream text;
    text << regclass(r, n, 1) << "|" << regclass(r, nullptr, 0) << "|" << memorizedSignal(n, r, "3") << "|"
         << memorizedSignal(n, nullptr, "");
    EXPECT_EQ(text.str(), "n r 1;|? r 0;|n r 3;|n ? ;");
}

// Stand-ins for the source compiler's constants, enough to drive the root's
// joining table.
struct Constant : Expression {
    char kind;
    explicit Constant(char k) : kind(k) {}
    bool isTrueExpr() override { return kind == 'T'; }
    bool isFalseExpr() override { return kind == 'F'; }
    bool isBottomExpr() override { return kind == 'B'; }
    bool isErrorExpr() override { return kind == 'E'; }
};

Expression* lastA = nullptr;
Expression* lastB = nullptr;
Expression* joined(Expression* a, Expression* b)
{
    lastA = a;
    lastB = b;
    return new Constant('J');
}

TEST(Expression, RootJoinsOnlyWhenNeitherSideDecides)
{
    Expression::newOrExpression = joined;
    Expression::newAndExpression = joined;
    Constant self('x'), t('T'), f('F'), b('B'), e('E'), other('y');
    EXPECT_EQ(self.plus(&b, nullptr), &self);
    EXPECT_EQ(self.plus(&f, nullptr), &self);
    EXPECT_EQ(self.plus(&e, nullptr), &e);
    EXPECT_EQ(self.plus(&t, nullptr), &t);
    EXPECT_EQ(self.mult(&b, nullptr), &b);
    EXPECT_EQ(self.mult(&f, nullptr), &f);
    EXPECT_EQ(self.mult(&e, nullptr), &self);
    EXPECT_EQ(self.mult(&t, nullptr), &self);
    Expression* j = self.plus(&other, nullptr);
    EXPECT_EQ(static_cast<Constant*>(j)->kind, 'J');
    EXPECT_EQ(lastA, &self);
    EXPECT_EQ(lastB, &other);
    Expression::newOrExpression = nullptr;
    Expression::newAndExpression = nullptr;
}

using SignalDeathTest = ::testing::Test;

TEST(SignalDeathTest, MisuseEndsWithItsMessage)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
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
}

TEST(SignalDeathTest, SecondOccurrenceRefInTheSameWoodIsRefused)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
    Signal* x = new Signal("x", &m, wood);
    x->setLocal();
    new Signal("x_1", &m, wood);  // takes the name of x's first occurrence
    EXPECT_EXIT(x->newOccurrence(wood, &m), ::testing::ExitedWithCode(1),
                "Signal::newOccurrence: signal ref already exits for the current woodx");
}

}  // namespace
