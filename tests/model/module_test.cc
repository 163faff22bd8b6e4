// The Module and Interface: look-ups by name and by variable, the lists
// that additions create, copies, bindings, and the refusals of misuse.

#include "model/interface.h"
#include "tests/module_builder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A module as the reader leaves it: original names plus a suffix as internal
// names, one signal that is both output and local, a data signal, a pre
// signal and the three connexion signals outside every list.
struct ReadModule : ::testing::Test {
    Module m{"m"};
    Bddexpressionwood* wood = m.getBddWood();
    Signal* make(const std::string& name) { return new Signal(name, name + "_k", &m, wood); }
    Signal *in = make("in"), *out = make("both"), *local = make("both"), *data = make("d"), *loc = make("l"),
           *actual = make("a"), *pre = make("pa");
    Signal *set = new Signal("SETm", &m, wood), *reset = new Signal("RESETm", &m, wood);

    void SetUp() override
    {
        in->setInput();
        out->setOutput();
        local->setLocal();
        data->setInput();
        data->setValue();
        loc->setLocal();
        m.addInputSignal(in);
        m.addOutputSignal(out);
        m.addLocalSignal(local);
        m.addLocalSignal(loc);
        m.addLocalSignal(actual);
        m.addDataSignal(data);
        m.addPreSignal(pre, actual, "0");
        m.setSet(set);
        m.setReset(reset);
    }
};

TEST_F(ReadModule, LookupByNameSearchesListsInOrder)
{
    struct Case {
        const char* name;
        Signal* (Module::*lookup)(const std::string&) const;
        Signal* expected;
    };
    const Case cases[] = {
        {"both", &Module::getSignal, out},  // output before local
        {"both", &Module::getLocalSignal, local},
        {"both", &Module::getOutputLocalSignal, out},
        {"l", &Module::getOutputLocalSignal, loc},
        {"in", &Module::getOutputLocalSignal, nullptr},
        {"d", &Module::getSignal, data},
        {"d", &Module::getInputSignal, nullptr},  // a data signal stays in its own list
        {"d", &Module::getDataSignal, data},
        {"in", &Module::getInputSignal, in},
        {"in_k", &Module::getSignal, nullptr},  // lists compare original names
        {"pa_k", &Module::getPreSignal, pre},   // pairs compare internal names
        {"pa", &Module::getPreSignal, nullptr},
        {"pa_k", &Module::getSignal, pre},
        {"in_k", &Module::getSignalFromInternalName, in},
        {"both_k", &Module::getSignalFromInternalName, out},
        {"l", &Module::getSignalFromInternalName, nullptr},
        {"SETm", &Module::getSignal, nullptr},  // connexions are in no list
        {"nothing", &Module::getSignal, nullptr},
    };
    for (const Case& c : cases)
        EXPECT_EQ((m.*c.lookup)(c.name), c.expected) << c.name;
    EXPECT_EQ(m.getSet(), set);
    EXPECT_EQ(m.getReset(), reset);
    EXPECT_EQ(m.getRtl(), nullptr);
}

TEST_F(ReadModule, LookupByVariable)
{
    long over = actual->getOverBddId(&m, wood);
    long under = actual->getUnderBddId(&m, wood);
    EXPECT_EQ(m.getOtherBddId(over, wood), under);
    EXPECT_EQ(m.getOtherBddId(under, wood), over);
    EXPECT_EQ(m.getSignalNameById(under, wood), "a_k");
    // getSignalById goes by the ref's internal name through getSignal, which
    // compares original names: with a suffix it finds only pre signals.
    EXPECT_EQ(m.getSignalById(over, wood), nullptr);
    EXPECT_EQ(m.getSignalById(pre->getUnderBddId(&m, wood), wood), pre);
    EXPECT_EQ(m.getSignalById(wood->Index_new_var_last("loose"), wood), nullptr);
    EXPECT_EQ(m.getSignalById(-1, wood), nullptr);
    EXPECT_EQ(m.getSignalById(999, wood), nullptr);
    Bddexpressionwood elsewhere;
    EXPECT_EQ(m.getSignalById(pre->getUnderBddId(&m, wood), &elsewhere), nullptr);
    // The table form finds what the scan finds, for every variable: the
    // first of two signals of one name, pre signals by internal name.
    m.addPreSignal(make("in"), loc, "0");
    const auto byName = m.signalsByName();
    for (long id = -1; id <= wood->my_bdd_manager()->variables_number; ++id) {
        EXPECT_EQ(m.getSignalById(id, wood, byName), m.getSignalById(id, wood)) << id;
        EXPECT_EQ(m.getSignalById(id, &elsewhere, byName), m.getSignalById(id, &elsewhere)) << id;
    }
    EXPECT_EQ(byName.at("both"), out);
    EXPECT_EQ(byName.at("in"), in);

    Module plain("p");
    Signal* s = new Signal("s", &plain, plain.getBddWood());
    plain.addOutputSignal(s);
    EXPECT_EQ(plain.getSignalById(1, plain.getBddWood()), s);
}

TEST(Module, ListConstructorAndAdditionsFillTheLists)
{
    Bddexpressionwood* wood = new Bddexpressionwood();
    Module m("m", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, wood);
    EXPECT_EQ(m.getBddWood(), wood);
    EXPECT_EQ(m.getLocalSignalList(), nullptr);

    m.addRegisterDecl("r", 1, "rplus");
    ASSERT_NE(m.getLocalSignalList(), nullptr);
    ASSERT_EQ(m.getLocalSignalList()->size(), 2u);
    Signal* r = m.getLocalSignalList()->front();
    Signal* next = m.getLocalSignalList()->back();
    EXPECT_EQ(r->getInternalName(), "r");
    EXPECT_EQ(next->getInternalName(), "rplus");
    for (Signal* s : {r, next})
        EXPECT_TRUE(s->isWire() && s->isRegister() && s->isLocal()) << s->getInternalName();
    ASSERT_EQ(m.getRegisterList()->size(), 1u);
    EXPECT_TRUE(*m.getRegisterList()->front() == regclass(r, next, 1));
    EXPECT_EQ(r->getOverBddId(&m, wood), 0);
    EXPECT_EQ(next->getOverBddId(&m, wood), 2);

    m.addRegisterSignal(next, r);
    EXPECT_TRUE(*m.getRegisterList()->back() == regclass(next, r, 0));
    m.addPreSignal(r, next, "1");
    ASSERT_NE(m.getPreSignalList(), nullptr);
    EXPECT_EQ(m.getPreSignalList()->front()->getInitialValue(), "1");

    // The list constructor takes the connexions and flags the registers.
    Signal *a = new Signal("a", &m, wood), *n = new Signal("n", &m, wood);
    Signal *s = new Signal("S", &m, wood), *re = new Signal("R", &m, wood), *t = new Signal("T", &m, wood);
    auto* regs = new std::list<regclass*>{new regclass(a, n, 0)};
    auto* connexions = new std::list<Signal*>{s, re, t};
    auto* locals = new std::list<Signal*>{a, n};
    Module listed("l", nullptr, nullptr, locals, nullptr, nullptr, regs, connexions, wood);
    EXPECT_EQ((std::vector<Signal*>{listed.getSet(), listed.getReset(), listed.getRtl()}),
              (std::vector<Signal*>{s, re, t}));
    EXPECT_EQ(listed.getLocalSignalList(), locals);
    EXPECT_TRUE(a->isRegister() && a->isWire() && n->isRegister() && n->isWire());
}

TEST(Module, CopyKeepsVariablesAndSharesNoSignal)
{
    ModuleBuilder b;
    Module& m = b.m;
    Bddexpressionwood* wood = b.wood;
    Signal *in = b.input("i"), *out = b.output("o"), *r = b.local("r"), *n = b.local("n");
    out->setValueType("int", &m);
    b.registerOf(r, n, 1);
    Signal* pre = new Signal("po", &m, wood);
    m.addPreSignal(pre, out, "0");
    m.setSet(new Signal("SETm", &m, wood));
    out->newOccurrence(wood, &m);
    new Bddexpression("o", wood, out->getInitialOverBdd(&m, wood), in->getOverBdd(&m, wood), 0, 0);

    Module copy(m);
    Bddexpressionwood* cw = copy.getBddWood();
    ASSERT_NE(cw, wood);
    EXPECT_EQ(cw->Nb_bdd_vars(), wood->Nb_bdd_vars());
    Signal* cout = copy.getOutputSignal("o");
    ASSERT_NE(cout, nullptr);
    EXPECT_NE(cout, out);
    EXPECT_TRUE(cout->isOutput());
    EXPECT_EQ(cout->getAllBddId(&copy, cw), out->getAllBddId(&m, wood));
    EXPECT_EQ(cout->getName(&copy), "o_1");
    EXPECT_EQ(cout->getValueType(&copy), "int");
    EXPECT_EQ(copy.getSignalNameById(cout->getOverBddId(&copy, cw), cw), "o_1");
    ASSERT_NE(cw->exp_by_index(out->getInitialOverBddId(&m, wood)), nullptr);

    regclass* reg = copy.getRegisterList()->front();
    EXPECT_EQ(*reg, regclass(copy.getLocalSignal("r"), copy.getLocalSignal("n"), 1));
    EXPECT_TRUE(reg->actual_var()->isRegister());
    EXPECT_EQ(copy.getPreSignalList()->front()->getActual(), cout);
    EXPECT_EQ(copy.getPreSignal("po"), copy.getPreSignalList()->front()->getPre());
    EXPECT_NE(copy.getPreSignal("po"), pre);
    ASSERT_NE(copy.getSet(), nullptr);
    EXPECT_EQ(copy.getSet()->getOverBddId(&copy, cw), m.getSet()->getOverBddId(&m, wood));

    copy.addLocalSignal(cout);
    EXPECT_EQ(m.getLocalSignalList()->size(), 2u);
}

// A missing ref, a register of a missing signal, a second module of one
// name: each ends the run with its message.
TEST(ModuleDeathTest, MissingObjectsAndDoubleNamesEndWithTheirMessage)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
    long loose = wood->Index_new_var_last("loose");
    EXPECT_EXIT(m.getSignalNameById(loose, wood), ::testing::ExitedWithCode(1),
                "Module::getSignalNameById: no signal reference for this bdd id: 0");
    EXPECT_EXIT(m.getOtherBddId(12, wood), ::testing::ExitedWithCode(1),
                "Module::getOtherBddId: no signal in table for this bdd id:12");

    Signal* a = new Signal("a", &m, wood);
    auto* regs = new std::list<regclass*>{new regclass(a, nullptr, 0)};
    EXPECT_EXIT(Module("r", nullptr, nullptr, nullptr, nullptr, nullptr, regs, nullptr, wood),
                ::testing::ExitedWithCode(1), "Error: Illegal operation!\nRegister not declared local!");

    ModuleTable table;
    Module* first = new Module("twice");
    table.add(first);
    EXPECT_EQ(table.get("twice"), first);
    EXPECT_EQ(table.get("other"), nullptr);
    EXPECT_EXIT(table.add(new Module("twice")), ::testing::ExitedWithCode(1),
                "Exception in Hash Table: add:twice is already defined");
}

TEST(Interface, SearchesInputsOutputsLocalsInOrder)
{
    Module m("m");
    Bddexpressionwood* wood = m.getBddWood();
    Signal* in = new Signal("x", "x_in", &m, wood);
    Signal* out = new Signal("x", "x_out", &m, wood);
    Signal* loc = new Signal("y", "y_loc", &m, wood);
    Signal* data = new Signal("z", &m, wood);
    Interface face;
    face.addLocal(loc);
    face.addOutput(out);
    face.addInput(in);
    face.addData(data);
    EXPECT_EQ(face.getSignal("x"), in);
    EXPECT_EQ(face.getOutputSignal("x"), out);
    EXPECT_EQ(face.getSignal("y"), loc);
    EXPECT_EQ(face.getSignal("z"), nullptr);  // data signals are not searched
    EXPECT_EQ(face.getDataSignal("z"), data);
    EXPECT_EQ(face.getSignal("x_in"), nullptr);
    EXPECT_EQ(face.getOriginalSignalName("y"), "y");
    EXPECT_EQ(face.getOriginalSignalName("none"), "");
}

// The bindings: which get equations, the look-ups by clock, and the keys by
// occurrence.
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
