// Data bindings and signal values: names per target, types from the
// signal refs, dependences, clocks, copies into another module.

#include "model/module_bindings.h"
#include "tests/data/data_tables.h"
#include "tests/module_builder.h"

#include <gtest/gtest.h>

namespace {

// A module with a valued input i (variables 0, 1), a valued output o (2, 3),
// a pure test input c (4, 5), a local l (6, 7) and a valued pre signal
// declared "pr" with internal name "pr_k" (8, 9), over the data tables.
struct BindingTest : DataTables {
    ModuleBuilder b;
    Module& m = b.m;
    Bddexpressionwood* wood = b.wood;
    Signal *i = b.input("i"), *o = b.output("o"), *c = b.input("c"), *l = b.local("l");
    Signal* pr = new Signal("pr", "pr_k", &m, wood);

    void SetUp() override
    {
        DataTables::SetUp();
        pr->setPre();
        for (Signal* s : {i, o, pr})
            s->setValueType("int", &m);
        m.addPreSignal(pr, i, "0");
    }

    DataExpr* read(Signal* s) { return new DataSignalValue(s); }
    std::string put(DataExpr* e, void (DataExpr::*form)(std::ostream&, Module*)) { return DataTables::put(e, form, &m); }
};

TEST_F(BindingTest, SignalValueNamesPerTarget)
{
    struct Case {
        Signal* BindingTest::*signal;
        const char *c, *csharp, *lustre, *vhdl;
    };
    // C names outputs and pre signals as declared and reads outputs through
    // their pointer; C# always takes the variable; the others name only pre
    // signals as declared.
    const Case cases[] = {
        {&BindingTest::i, "_s_i_val", "_s_i_val", "_s_i_val", "_s_i_locval"},
        {&BindingTest::o, "*o_val", " _s_o_val", "_s_o_val", "_s_o_locval"},
        {&BindingTest::pr, "pr_val", "_s_pr_k_val", "pr_val", "pr_locval"},
    };
    for (const Case& cs : cases) {
        DataSignalValue v(this->*cs.signal);
        EXPECT_EQ(put(&v, &DataExpr::C_put), cs.c);
        EXPECT_EQ(put(&v, &DataExpr::CSharp_put), cs.csharp);
        EXPECT_EQ(put(&v, &DataExpr::LUSTRE_put), cs.lustre);
        EXPECT_EQ(put(&v, &DataExpr::ESTEREL_put), cs.lustre);
        EXPECT_EQ(put(&v, &DataExpr::VHDL_put), cs.vhdl);
    }
    DataBinaryOp sum(DataExpr::Plus, read(o), k());
    EXPECT_EQ(put(&sum, &DataExpr::C_put), " add_int(*o_val,k)");
    EXPECT_EQ(sum.getType(&m), "int");
}

TEST_F(BindingTest, SignalValueTypeComesFromTheSignalRef)
{
    DataSignalValue pure(c);
    EXPECT_EXIT(pure.getType(&m), ::testing::ExitedWithCode(1), "signal not valued Error: Undefined type: c\n");
    DataSignalValue nothing(nullptr);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(nothing.getType(&m), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "abnormal null! Bound signal have to be defined about type=  and index= -1...\n");
}

TEST_F(BindingTest, DependenciesGatherEveryReadSignal)
{
    DataBinaryOp sum(DataExpr::Plus, read(i), f(read(o)));
    std::set<Signal*>* read1 = sum.computeDependencySet();
    ASSERT_NE(read1, nullptr);
    EXPECT_EQ(*read1, (std::set<Signal*>{i, o}));
    DataMethodCall call(0, new std::list<DataExpr*>{k(), read(o), read(i), read(o)});
    std::set<Signal*>* read2 = call.computeDependencySet();
    ASSERT_NE(read2, nullptr);
    EXPECT_EQ(*read2, (std::set<Signal*>{i, o}));
    DataBinaryOp constant(DataExpr::Plus, k(), new DataUnaryOp(DataExpr::Uminus, k()));
    EXPECT_EQ(constant.computeDependencySet(), nullptr);
    std::set<Signal*> gathered;
    DataUnaryOp neg(DataExpr::Uminus, new DataBinaryOp(DataExpr::Minus, k(), read(pr)));
    neg.computeValueSignalDependencies(gathered);
    EXPECT_EQ(gathered, (std::set<Signal*>{pr}));
}

// c is bound without a clock (its truth is the data test i < k); l is bound
// with the output clock o, which receives f(i) whenever l holds.
TEST_F(BindingTest, BindingsWithAndWithoutClock)
{
    std::ostringstream none;
    m.printBinding(none, nullptr);
    EXPECT_EQ(none.str(), "");
    EXPECT_TRUE(outputClockBindings(&m).empty());

    m.addSignalBinding(new DataBinaryOp(DataExpr::Inf, read(i), k()), c);
    m.addSignalBinding(f(read(i)), l, o);
    DataBinding* test = m.getBinding("c");
    DataBinding* clocked = m.getBinding("l");
    ASSERT_NE(test, nullptr);
    ASSERT_NE(clocked, nullptr);

    std::ostringstream debug;
    test->print_debug(debug);
    debug << "|";
    clocked->print_debug(debug);
    EXPECT_EQ(debug.str(), "signal:c pas de signal porteur (clock) associe ...     value: (i < k)|"
                           "signal:l signal porteur (clock):o     value: f(i)");

    auto clocks = outputClockBindings(&m);
    ASSERT_EQ(clocks.size(), 1u);
    EXPECT_EQ(clocks["o"], (std::list<DataBinding*>{clocked}));

    EXPECT_EQ(abstractEquationBinding(&m, c->getOverBddId(&m, wood), true), test);
    EXPECT_EQ(abstractEquationBinding(&m, 6, true), clocked);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(abstractEquationBinding(&m, 0, false), nullptr);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "***error: abstract equation without bindind for:i\n");
    EXPECT_EXIT(abstractEquationBinding(&m, 1, true), ::testing::ExitedWithCode(1),
                "abstract equation without bindind for:i");

    // The debug form hands its indexes to copies only.
    std::ostringstream dump;
    m.debugPrintBinding(dump);
    EXPECT_NE(dump.str().find("evaltable:"), std::string::npos);
    EXPECT_FALSE(test->getValue()->hasIndex());

    // Variable numbers go through the renumbering; evaluation indexes are
    // handed out line by line, the binding lines first. A local signal's
    // line takes a copy of the value and the clock's first occurrence.
    long renumbering[10];
    for (long id = 0; id < 10; id++)
        renumbering[id] = id + 10;
    std::ostringstream zkc;
    m.printBinding(zkc, renumbering);
    EXPECT_EQ(zkc.str(), "binding:\n"
                         "   (14, 15): value: 0;\n"
                         "   (16, 17): value: 1 clock: (12, 13);\n"
                         "end:\n"
                         "\n"
                         "evaltable:\n"
                         "   0: %%10(2, 3);\n"
                         "   1: %0(4);\n"
                         "   2: %%14(10, 11);\n"
                         "   3: $0;\n"
                         "   4: %%14(10, 11);\n"
                         "end:\n"
                         "\n");
    EXPECT_EQ(test->getValue()->getIndex(), 0);
    EXPECT_FALSE(clocked->getValue()->hasIndex());
    EXPECT_EQ(Compilation::GDataConstantTable->getConstantById(0)->getEvalIndex(), 3);
}

TEST_F(BindingTest, CopyIntoAnotherModuleFollowsInternalNames)
{
    Module other("n");
    Bddexpressionwood* w = other.getBddWood();
    Signal* c2 = new Signal("c", &other, w);
    Signal* i2 = new Signal("i", &other, w);
    c2->setInput();
    i2->setInput();
    i2->setValueType("int", &other);
    other.addInputSignal(c2);
    other.addInputSignal(i2);
    DataBinding original(c, new DataBinaryOp(DataExpr::Inf, read(i), k()));
    DataBinding copy(original, &m, &other);
    EXPECT_EQ(copy.getSignal(), c2);
    EXPECT_EQ(copy.getClock(), nullptr);
    ASSERT_NE(copy.getValue(), original.getValue());
    std::set<Signal*>* reads = copy.getValue()->computeDependencySet();
    ASSERT_NE(reads, nullptr);
    EXPECT_EQ(*reads, (std::set<Signal*>{i2}));
    std::ostringstream os;
    copy.getValue()->C_put(os, &other);
    EXPECT_EQ(os.str(), " less_int(_s_i_val,k)");
}

} // namespace
