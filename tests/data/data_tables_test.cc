// The data tables: types, methods and constants, their numbering, texts
// per target, and the refusals of double declarations.

#include "tests/data/data_tables.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace {

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

} // namespace
