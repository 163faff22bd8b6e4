// The data tables (types, methods, constants: numbering, texts per target,
// refusals of double declarations), data expressions (types, type errors,
// every target form, operator texts, the simulator form, deep nesting) and
// data bindings (names per target, types from the signal refs, dependences,
// clocks, copies into another module).

#include "context/compilation.h"
#include "data/data.h"
#include "model/module_bindings.h"
#include "tests/module_builder.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

namespace {

std::string* str(const char* s) { return new std::string(s); }

std::string text(const std::function<void(std::ostream&)>& put)
{
    std::ostringstream os;
    put(os);
    return os.str();
}

std::map<int, DataExpr*>* values(std::initializer_list<std::pair<const int, const char*>> entries)
{
    auto* table = new std::map<int, DataExpr*>;
    for (const auto& e : entries)
        (*table)[e.first] = new DataValue(e.second, "int");
    return table;
}

// The global data tables as a reader leaves them: types int (0) and bool
// (1), the methods "int f(int)" (0) and "bool g()" (1), the external
// constant k (0) and z (1) with a C value.
struct DataTables : ::testing::Test {
    void SetUp() override
    {
        Compilation::GDataTypeTable = new DataTypeTable;
        Compilation::GDataTypeTable->addType("int");
        Compilation::GDataTypeTable->addType("bool");
        Compilation::GDataMethodTable = new DataMethodTable;
        Compilation::GDataMethodTable->addMethod(new MethodDecl(str("int"), str("f"), new std::list<std::string>{"int"}));
        Compilation::GDataMethodTable->addMethod(new MethodDecl(str("bool"), str("g"), nullptr));
        Compilation::GDataConstantTable = new DataConstantTable;
        Compilation::GDataConstantTable->addConstant(new ConstantDecl("int", "k"));
        Compilation::GDataConstantTable->addConstant(
            new ConstantDecl("int", "z", new std::map<int, DataExpr*>{{TLanguage::C, new DataValue("0", "int")}}));
    }

    static DataExpr* k() { return new DataConstant(0); }
    static DataExpr* lit(const char* text, const char* type = "int") { return new DataValue(text, type); }
    static DataExpr* f(DataExpr* arg) { return new DataMethodCall(0, new std::list<DataExpr*>{arg}); }

    // The text of `e` in one target's form, for the module `m`.
    static std::string put(DataExpr* e, void (DataExpr::*form)(std::ostream&, Module*), Module* m = nullptr)
    {
        return text([&](std::ostream& os) { (e->*form)(os, m); });
    }
};

TEST(DataTypeTable, IdsFollowDeclarationOrderAndTextsFollowNameOrder)
{
    DataTypeTable t;
    EXPECT_EQ(text([&](std::ostream& os) { t.print(os, true); }), "type:\n\n");
    for (const char* name : {"int", "bool", "int", "abc"})
        t.addType(name);
    EXPECT_EQ(t.getIndex("int"), 0);
    EXPECT_EQ(t.getIndex("bool"), 1);
    EXPECT_EQ(t.getIndex("abc"), 2);
    EXPECT_EQ(t.getIndex("real"), -1);
    EXPECT_TRUE(t.isDefined("abc"));
    EXPECT_FALSE(t.isDefined("real"));
    EXPECT_EQ(t.getTypeById(1), "bool");
    EXPECT_EQ(t.getTypeById(3), "undefined");
    EXPECT_EQ(t.getTypeById(-1), "undefined");

    EXPECT_EQ(text([&](std::ostream& os) { t.print(os, true); }), "type:\n   0: int;\n   1: bool;\n   2: abc;\n\n");
    EXPECT_EQ(text([&](std::ostream& os) { t.print(os, false); }), "type:\n   int;\n   bool;\n   abc;\n\n");
    EXPECT_EQ(text([&](std::ostream& os) { t.C_put(os); }),
              "extern const abc zero_abc;extern const bool zero_bool;extern const int zero_int;");
    EXPECT_EQ(text([&](std::ostream& os) { t.CSharp_put(os); }),
              "public const abc zero_abc;public const bool zero_bool;public const int zero_int;");
    EXPECT_EQ(text([&](std::ostream& os) { t.LUSTRE_put(os); }),
              "const abc zero_abc;const bool false;const int 0;");

    // A type entered through the map itself is still found by id.
    (*t.getTypeTable())["zz"] = 7;
    EXPECT_EQ(t.getTypeById(7), "zz");
}

TEST(DataTypeTable, ZeroValuesPerTarget)
{
    struct Case {
        const char* type;
        const char* lustre;
        const char* vhdl;
    };
    const Case cases[] = {
        {"bool", "false", "zero_bool"},      {"std_logic", "zero_std_logic", "false"},
        {"bit", "zero_bit", "false"},        {"int", "0", "0"},
        {"real", "0.0", "0.0"},              {"color", "zero_color", "zero_color"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(zero_lustre(c.type), c.lustre) << c.type;
        EXPECT_EQ(zero_vhdl(c.type), c.vhdl) << c.type;
    }
}

TEST(DataMethodTable, IndexesListsAndTexts)
{
    auto* args = new std::list<std::string>{"int", "bool"};
    auto* f = new MethodDecl(str("int"), str("f"), args);
    auto* g = new MethodDecl(str("int"), str("g"), nullptr);
    MethodDecl unnamed(nullptr, nullptr, nullptr);
    EXPECT_EQ(text([&](std::ostream& os) { os << unnamed; }), " ()");
    EXPECT_EQ(text([&](std::ostream& os) { f->C_put(os); }), "extern int f(int, bool);\n");
    EXPECT_EQ(text([&](std::ostream& os) { f->CSharp_put(os); }), "public int f(int, bool);\n");

    DataMethodTable t;
    t.addMethod(f);
    t.addMethod(g);
    EXPECT_EQ(f->getIndex(), 0);
    EXPECT_EQ(t.getMethodIndex("g"), 1);
    EXPECT_EQ(t.getMethodById(1), g);
    EXPECT_EQ(t.getMethod("h"), nullptr);
    EXPECT_EQ(t.getMethodIndex("h"), -1);
    EXPECT_EQ(text([&](std::ostream& os) { t.print(os, true); }), "method:\n   0: int f(int, bool);\n   1: int g();\n\n");
    // Each declaration ends its line and the table adds one more.
    EXPECT_EQ(text([&](std::ostream& os) { t.C_put(os); }), "extern int f(int, bool);\n\nextern int g();\n\n");
    EXPECT_EQ(text([&](std::ostream& os) { t.LUSTRE_put(os); }), "\n\n");

    // The next index follows the last declaration, not the highest.
    g->setIndex(5);
    f->setIndex(9);
    auto* h = new MethodDecl(str("bool"), str("h"), nullptr);
    t.addMethod(h);
    EXPECT_EQ(h->getIndex(), 6);
    EXPECT_EQ(t.getMethodById(5), g);
    EXPECT_EQ(t.getMethodById(0), nullptr);

    // Equality looks at index, name and the identity of the argument list.
    MethodDecl same(str("void"), str("f"), args);
    same.setIndex(9);
    MethodDecl copyOfArgs(str("int"), str("f"), new std::list<std::string>{"int", "bool"});
    copyOfArgs.setIndex(9);
    EXPECT_TRUE(same == *f);
    EXPECT_TRUE(copyOfArgs != *f);
}

TEST(DataConstantTable, OnlyExternalOrLiteralConstantsAreNumbered)
{
    DataConstantTable t;
    auto* a = new ConstantDecl("int", "a");
    auto* b = new ConstantDecl("int", "b", values({{TLanguage::C, "1"}}));
    auto* computedValues = new std::map<int, DataExpr*>{{TLanguage::DEFAULT, new DataMethodCall(0, nullptr)}};
    auto* c = new ConstantDecl("int", "c", computedValues);
    auto* d = new ConstantDecl("int", "d");
    for (ConstantDecl* decl : {a, b, c, d})
        t.addConstant(decl);
    EXPECT_EQ(a->getConstantIndex(), 0);
    EXPECT_EQ(b->getConstantIndex(), 1);
    EXPECT_EQ(c->getConstantIndex(), -1);
    EXPECT_EQ(d->getConstantIndex(), 2);
    EXPECT_EQ(t.getConstantById(2), d);
    EXPECT_EQ(t.getConstantIndex("c"), -1);
    EXPECT_TRUE(t.isAlreadyDefined("c"));
    EXPECT_EQ(t.getConstant("e"), nullptr);
    EXPECT_EQ(t.getConstantList()->size(), 4u);

    // The highest index counts, wherever it stands in the list.
    a->setIndex(10);
    auto* e = new ConstantDecl("int", "e");
    t.addConstant(e);
    EXPECT_EQ(e->getConstantIndex(), 11);
    EXPECT_EQ(t.getConstantById(10), a);
}

// A constant with a C and a default value, and an external one, in the
// debug, print and file forms. (Each target's declaration, the C value
// and the default's fallback, shows in the golden texts of peak and sum.)
TEST(ConstantDecl, DebugPrintAndFileForms)
{
    ConstantDecl z("int", "z", values({{TLanguage::C, "0"}, {TLanguage::DEFAULT, "zero"}}));
    ConstantDecl k("int", "k");
    EXPECT_EQ(text([&](std::ostream& os) { z.DEBUG_put(os, nullptr); }),
              "const int z:c=number:-1 (value=\"0\"):default=number:-1 (value=\"zero\");\n");
    EXPECT_EQ(text([&](std::ostream& os) { k.DEBUG_put(os, nullptr); }), "extern const int k;\n");
    EXPECT_EQ(text([&](std::ostream& os) { z.print(os); }), "int z value: C:0default:zero\n");
    ConstantDecl y("int", "y", values({{TLanguage::DEFAULT, "7"}}));
    EXPECT_EQ(text([&](std::ostream& os) { y.print(os); }), "int y value: 7\n");
    EXPECT_EQ(text([&](std::ostream& os) { k.print(os); }), "int k\n");
    EXPECT_EQ(text([&](std::ostream& os) { z.ZKC_put(os); }), "int z :c=  \"0\" :default=  \"zero\";\n");

    DataConstantTable t;
    t.addConstant(new ConstantDecl("int", "k"));
    t.addConstant(new ConstantDecl("int", "z", values({{TLanguage::VHDL, "0"}, {TLanguage::DEFAULT, "d"}})));
    EXPECT_EQ(text([&](std::ostream& os) { t.print(os, true); }),
              "constant:\n   0: int k\n   1: int z value: vhdl:0default:d\n\n");
    EXPECT_EQ(text([&](std::ostream& os) { t.C_put(os, nullptr); }), "extern const int k;\nconst int z = d;\n");
}

// A constant without a value for the target, a method overloaded, a
// constant declared twice: each ends the run with its message.
TEST(DataTablesDeathTest, MissingValuesAndDoubleDeclarationsEndTheRun)
{
    auto esterelOnly = [] { return new ConstantDecl("int", "w", values({{TLanguage::ESTEREL, "e"}})); };
    std::ostringstream os;
    EXPECT_EXIT(esterelOnly()->C_put(os, nullptr), ::testing::ExitedWithCode(1),
                "ERROR: no initial value provided for C language for the constant: \"w\"");
    EXPECT_EXIT(esterelOnly()->CSharp_put(os, nullptr), ::testing::ExitedWithCode(1),
                "ERROR: no initial value provided for CSharp language for the constant: \"w\"");
    EXPECT_EXIT(esterelOnly()->LUSTRE_put(os, nullptr), ::testing::ExitedWithCode(1),
                "ERROR: no initial value provided for LUSTRE language for the constant: \"w\"");
    EXPECT_EXIT(ConstantDecl("int", "x").VHDL_put(os, nullptr), ::testing::ExitedWithCode(1),
                "ERROR: no initial value provided for VHDL language for the constant: \"x\"");
    // Esterel has no label in the debug form.
    EXPECT_EXIT(esterelOnly()->DEBUG_put(os, nullptr), ::testing::ExitedWithCode(1),
                "internal error: ConstantDecl::DEBUG_put: constant w wrong target language specification");
    EXPECT_EXIT(ConstantDecl("int", "q", values({{9, "1"}})).print(os), ::testing::ExitedWithCode(1),
                "error:ConstantDecl:print: constant:q : wrong target language");

    DataMethodTable methods;
    methods.addMethod(new MethodDecl(str("int"), str("f"), nullptr));
    EXPECT_EXIT(methods.addMethod(new MethodDecl(str("bool"), str("f"), nullptr)), ::testing::ExitedWithCode(1),
                "Error: Already defined : f: overloading_of_method_not_yet_implemented");
    DataConstantTable constants;
    constants.addConstant(new ConstantDecl("int", "k"));
    EXPECT_EXIT(constants.addConstant(new ConstantDecl("bool", "k")), ::testing::ExitedWithCode(1),
                "Warning: constant k already defined!\nError: Already defined : k: constant");
}

struct DataExprTest : DataTables {
    // k + f(3) < -k
    static DataExpr* small() { return new DataBinaryOp(DataExpr::Inf, new DataBinaryOp(DataExpr::Plus, k(), f(lit("3"))), new DataUnaryOp(DataExpr::Uminus, k())); }
    // p and q or not p
    static DataExpr* logic()
    {
        return new DataBinaryOp(DataExpr::Or, new DataBinaryOp(DataExpr::And, lit("p", "bool"), lit("q", "bool")),
                                new DataUnaryOp(DataExpr::Not, lit("p", "bool")));
    }
};

TEST_F(DataExprTest, TypeOfNestedExpressions)
{
    auto* sum = new DataBinaryOp(DataExpr::Plus, k(), f(lit("3")));
    DataBinaryOp comparison(DataExpr::Inf, sum, new DataUnaryOp(DataExpr::Uminus, k()));
    // A comparison takes its left operand's type.
    EXPECT_EQ(comparison.getType(nullptr), "int");
    EXPECT_EQ(sum->getType(), "int");
    DataBinaryOp both(DataExpr::And, new DataMethodCall(1, nullptr), lit("p", "bool"));
    EXPECT_EQ(both.getType(nullptr), "bool");
    DataMethodCall call(0, nullptr);
    EXPECT_EQ(call.getType(), "");
    EXPECT_EQ(call.getType(nullptr), "int");
}

TEST_F(DataExprTest, TypeErrorIsReportedOnceAndOnlyShowsInTheType)
{
    auto* mixed = new DataBinaryOp(DataExpr::Plus, k(), lit("true", "bool"));
    DataBinaryOp outer(DataExpr::Mult, mixed, k());
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(outer.getType(nullptr), "?type_error?");
    EXPECT_EQ(outer.getType(nullptr), "?type_error?");
    EXPECT_EQ(mixed->getType(nullptr), "?type_error?");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "*** Type check error in binary operator: type: \"int\" differs from type: \"bool\" --> return "
              "\"?type_error?\"\n"
              "*** Type check error in binary operator: type: \"?type_error?\" differs from type: \"int\" --> return "
              "\"?type_error?\"\n");
}

TEST_F(DataExprTest, TypeFailuresEndTheRun)
{
    EXPECT_EXIT(DataValue("3", "").getType(nullptr), ::testing::ExitedWithCode(1), "Error: Undefined type: 3\n");
    EXPECT_EXIT(DataConstant(7).getType(nullptr), ::testing::ExitedWithCode(1), "Error: Undefined constant: constant: \n");
    EXPECT_EXIT(DataMethodCall(7, nullptr).getType(nullptr), ::testing::ExitedWithCode(1),
                "Error: Undefined method: method\n");
    EXPECT_EXIT(DataConstant(7).setIndex(0), ::testing::ExitedWithCode(1), "Error: Undefined constant: : constant_table");
}

TEST_F(DataExprTest, EveryTargetFormOfASmallExpression)
{
    struct Case {
        void (DataExpr::*form)(std::ostream&, Module*);
        const char* name;
        const char* comparison;
        const char* logical;
    };
    const Case cases[] = {
        {&DataExpr::C_put, "C", " less_int( add_int(k,f(3)), neg_int(k))", "p && q ||  !(p)"},
        {&DataExpr::CSharp_put, "C#", "((k + f(3)) <  -k)", "((p && q) |  !p)"},
        {&DataExpr::LUSTRE_put, "Lustre", "((k + f(3)) <  -k)", "((p and q) or  notp)"},
        {&DataExpr::ESTEREL_put, "Esterel", "((k + f(3)) <  -k)", "((p and q) or  notp)"},
        {&DataExpr::VHDL_put, "VHDL", "'1' when ((k + f(3)) <  -k) else '0'", "((p and q) or  notp)"},
        {&DataExpr::DEBUG_put, "debug", " < ( + (CONSTANT $0(k),f(number:-1 (value=\"3\"))), -(CONSTANT $0(k)))",
         "number:-1 (value=\"p\") and number:-1 (value=\"q\") or  not(number:-1 (value=\"p\"))"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(put(small(), c.form), c.comparison) << c.name;
        EXPECT_EQ(put(logic(), c.form), c.logical) << c.name;
    }
    // Arithmetic stays parenthesised in VHDL; only comparisons become bits.
    DataBinaryOp sum(DataExpr::Minus, k(), lit("1"));
    EXPECT_EQ(put(&sum, &DataExpr::VHDL_put), "(k - 1)");
    EXPECT_EQ(put(&sum, &DataExpr::C_put), " sub_int(k,1)");
    // A deep copy prints the same and shares no node.
    DataExpr* original = small();
    DataExpr* copy = original->duplicate();
    EXPECT_EQ(put(copy, &DataExpr::C_put), put(original, &DataExpr::C_put));
    EXPECT_NE(static_cast<DataBinaryOp*>(copy)->getLeft(), static_cast<DataBinaryOp*>(original)->getLeft());
}

TEST_F(DataExprTest, OperatorTextsPerFamily)
{
    struct Case {
        int op;
        const char *c, *symbolic, *worded, *debug;
    };
    const Case cases[] = {
        {DataExpr::Plus, " add_T", " + ", " + ", " + "},       {DataExpr::Minus, " sub_T", " - ", " - ", " - "},
        {DataExpr::Mult, " mult_T", " * ", " * ", " * "},      {DataExpr::Div, " div_T", " / ", " / ", " / "},
        {DataExpr::Uminus, " neg_T", " -", " -", " -"},        {DataExpr::And, " && ", " && ", " and ", " and "},
        {DataExpr::Or, " || ", " | ", " or ", " or "},         {DataExpr::Not, " !", " !", " not", " not"},
        {DataExpr::Eq, " eq_T", " == ", " = ", " == "},        {DataExpr::Neq, " neq_T", " != ", " <> ", " <> "},
        {DataExpr::Inf, " less_T", " < ", " < ", " < "},       {DataExpr::Infe, " lesseq_T", " <= ", " <= ", " <= "},
        {DataExpr::Sup, " sup_T", " > ", " > ", " > "},        {DataExpr::Supe, " supeq_T", " >= ", " >= ", " >= "},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(DataExpr::C_opname(c.op, "T"), c.c) << c.op;
        EXPECT_EQ(DataExpr::CSharp_opname(c.op), c.symbolic) << c.op;
        EXPECT_EQ(DataExpr::MOSK_opname(c.op), c.symbolic) << c.op;
        EXPECT_EQ(DataExpr::LUSTRE_opname(c.op), c.worded) << c.op;
        EXPECT_EQ(DataExpr::ESTEREL_opname(c.op), c.worded) << c.op;
        EXPECT_EQ(DataExpr::VHDL_opname(c.op), c.worded) << c.op;
        EXPECT_EQ(DataExpr::DEBUG_opname(c.op), c.debug) << c.op;
    }
    const int bad = DataExpr::SignalVal;
    EXPECT_EXIT(DataExpr::C_opname(bad, "T"), ::testing::ExitedWithCode(1), "DataExpr::C_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::CSharp_opname(bad), ::testing::ExitedWithCode(1), "DataExpr::CShap_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::MOSK_opname(-1), ::testing::ExitedWithCode(1), "DataExpr::MOSK_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::VHDL_opname(bad), ::testing::ExitedWithCode(1), "DataExpr::VHDL_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::DEBUG_opname(bad), ::testing::ExitedWithCode(1),
                "in DataExpr::_opname\\(\\):14 is an invalid_operator");
}

// The simulator form asks the data server for each node, operands first;
// a constant with a value needs no request.
TEST_F(DataExprTest, SimulatorFormAsksOperandsFirst)
{
    std::vector<std::string> asked;
    std::map<std::string, std::string> answers = {
        {"CONST,k,", "2"}, {"MC,f,3,", "5"}, {"BOP,2,int, + ,5,int,", "7"}, {"UOP, -,0,int,", "-0"}};
    auto ask = [&](const std::string& request) {
        asked.push_back(request);
        return answers.count(request) ? answers[request] : std::string("--");
    };
    DataBinaryOp sum(DataExpr::Plus, k(), f(lit("3")));
    EXPECT_EQ(sum.MOSK_put(nullptr, nullptr, ask), "7");
    EXPECT_EQ(asked, (std::vector<std::string>{"CONST,k,", "MC,f,3,", "BOP,2,int, + ,5,int,"}));
    asked.clear();
    DataUnaryOp negated(DataExpr::Uminus, new DataConstant(1));
    EXPECT_EQ(negated.MOSK_put(nullptr, nullptr, ask), "-0");
    EXPECT_EQ(asked, (std::vector<std::string>{"UOP, -,0,int,"}));
}

TEST_F(DataExprTest, DeepNestingEndsCleanly)
{
    auto chain = [](int depth) {
        DataExpr* e = lit("1");
        for (int i = 0; i < depth; i++)
            e = new DataUnaryOp(DataExpr::Uminus, e);
        return e;
    };
    std::string shallow = put(chain(1000), &DataExpr::CSharp_put);
    EXPECT_EQ(shallow.size(), 2 * 1000 + 1);
    EXPECT_EXIT(put(chain(100000), &DataExpr::C_put), ::testing::ExitedWithCode(1), "nested too deeply");
}

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
    EXPECT_EQ(text([&](std::ostream& os) { m.printBinding(os, nullptr); }), "");
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
    EXPECT_NE(text([&](std::ostream& os) { m.debugPrintBinding(os); }).find("evaltable:"), std::string::npos);
    EXPECT_FALSE(test->getValue()->hasIndex());

    // Variable numbers go through the renumbering; evaluation indexes are
    // handed out line by line, the binding lines first. A local signal's
    // line takes a copy of the value and the clock's first occurrence.
    long renumbering[10];
    for (long id = 0; id < 10; id++)
        renumbering[id] = id + 10;
    EXPECT_EQ(text([&](std::ostream& os) { m.printBinding(os, renumbering); }),
              "binding:\n"
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
    EXPECT_EQ(DataTables::put(copy.getValue(), &DataExpr::C_put, &other), " less_int(_s_i_val,k)");
}

} // namespace
