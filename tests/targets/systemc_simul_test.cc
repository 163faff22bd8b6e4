// The texts of the SystemC unit and of the simulator's data server, whole
// where they are short: frame, bindings by clock, the request dispatch
// written from the data tables.

#include "builder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

struct ScText {
    std::string code, header, traces;
};

ScText scput(TargetModule& t)
{
    std::ostringstream c, h;
    testing::internal::CaptureStderr();
    t.m.SYSTEMC_put(c, h);
    std::string traces = testing::internal::GetCapturedStderr();
    return {c.str(), h.str(), traces};
}

// The three tables installed for one generation, and taken away after it.
struct DataTables {
    DataTypeTable types;
    DataMethodTable methods;
    DataConstantTable constants;
    DataTables()
    {
        Compilation::GDataTypeTable = &types;
        Compilation::GDataMethodTable = &methods;
        Compilation::GDataConstantTable = &constants;
    }
    ~DataTables()
    {
        Compilation::GDataTypeTable = nullptr;
        Compilation::GDataMethodTable = nullptr;
        Compilation::GDataConstantTable = nullptr;
    }
    void method(const char* result, const char* name, std::list<std::string> args)
    {
        methods.addMethod(new MethodDecl(new std::string(result), new std::string(name),
                                         new std::list<std::string>(std::move(args))));
    }
};

TEST(SystemC, WholeUnitKeepsRegistersAndLeavesMemorisedSignalsUnset)
{
    TargetModule t;
    Signal* a = t.input("a");
    Signal* o = t.output("o");
    Signal* n = t.local("n");
    Signal* r = t.local("r");
    Signal* w = t.local("w");
    t.m.addRegisterSignal(r, n, 1);
    Signal* p = new Signal("p", &t.m, t.wood);
    t.m.addPreSignal(p, o, "");
    t.eq(o, t.over(r));
    t.eq(n, t.mgr->Bdd_not(t.over(a)));
    t.eq(w, t.over(p));
    t.date();
    ScText out = scput(t);
    std::string A = std::to_string(t.id(t.over(a)));
    EXPECT_EQ(out.header, "#ifndef m_H\n"
                          "#define m_H\n"
                          "extern void m_reset_automaton();\n"
                          "extern void m_automaton(int _s_a, int*_s_o);\n"
                          "#endif\n");
    EXPECT_EQ(out.code, "#include \"m_sc.h\"\n"
                        "#define false 0\n"
                        "#define true (!false)\n"
                        "\n"
                        "/* global state variables */\n"
                        "int _s_r;\n"
                        "\n"
                        "void m_reset_automaton(){\n"
                        "  _s_r= 1;\n"
                        "}\n"
                        "\n"
                        "void m_automaton(int _s_a, int*_s_o)\n"
                        "{\n"
                        "  int _s_n;\n"
                        "  int _s_w;\n"
                        // the pre signal is a local that nothing assigns
                        "  int _s_p;\n"
                        "  int m_node[" + std::to_string(t.mgr->Bdd_total_size()) + "];\n"
                        "  *_s_o= _s_r;\n"
                        "   m_node[" + A + "]= _s_a;\n"
                        "   _s_n= !m_node[" + A + "];\n"
                        "   _s_w= _s_p;\n"
                        "\n"
                        "  /* refresh registers */\n"
                        "  _s_r= _s_n;\n"
                        "}\n");
    EXPECT_EQ(out.traces, "");
}

TEST(SystemC, WithoutWoodOrStateTheFrameStillCloses)
{
    TargetModule t;
    t.input("a");
    t.m.setBddWood(nullptr);
    ScText out = scput(t);
    EXPECT_EQ(out.header, "#ifndef m_H\n#define m_H\n#endif\n");
    EXPECT_EQ(out.code, "#include \"m_sc.h\"\n#define false 0\n#define true (!false)\n\n");

    TargetModule u;
    u.eq(u.output("o"), u.mgr->Bdd_one());
    u.date();
    std::string code = scput(u).code;
    EXPECT_NE(code.find("#define true (!false)\n\nvoid m_reset_automaton(){\n}\n\nvoid m_automaton(int* _s_o)\n"),
              std::string::npos)
        << code;
    std::string end = "  *_s_o= m_node[" + u.one() + "];\n}\n";
    EXPECT_EQ(code.substr(code.size() - end.size()), end) << code;
}

TEST(SystemC, TypesAreTheUsersAndConstantsAreTraced)
{
    TargetModule t;
    t.eq(t.output("o"), t.mgr->Bdd_one());
    t.date();
    DataTables data;
    data.types.addType("integer");
    data.types.addType("bool_t");
    data.method("integer", "add", {"integer", "integer"});
    data.constants.addConstant(new ConstantDecl("integer", "limit"));
    data.constants.addConstant(new ConstantDecl(
        "integer", "zero", new std::map<int, DataExpr*>{{TLanguage::C, new DataValue("0", "integer")}}));
    ScText out = scput(t);
    EXPECT_EQ(out.header, "#ifndef m_H\n#define m_H\n"
                          "/* Following types should be defined in file \"m_typedecl.h\":\n"
                          "bool_t, integer;\n"
                          "*/\n"
                          "#include \"m_typedecl.h\"\n"
                          "extern const bool_t zero_bool_t;"
                          "extern const integer zero_integer;"
                          "extern integer add(integer, integer);\n\n"
                          "extern const integer limit;\n"
                          "extern void m_reset_automaton();\n"
                          "extern void m_automaton(int* _s_o);\n"
                          "#endif\n");
    std::string head = "#include \"m_sc.h\"\n#define false 0\n#define true (!false)\n\n"
                       "const integer zero = 0;\nvoid m_reset";
    EXPECT_EQ(out.code.substr(0, head.size()), head);
    EXPECT_EQ(out.traces, "limit\nzero\n");
}

// Bindings are handled after the equations: one test per clock, in the
// order in which the binding table first meets it, its bindings an else
// chain that ends in the clock type's zero.
TEST(SystemC, BindingsByClockAfterTheEquations)
{
    TargetModule t;
    Signal* x = t.valued(t.input("x"));
    Signal* k = t.valued(t.output("k"));
    Signal* c = t.valued(t.local("c"));
    Signal* s = t.local("s");
    Signal* s2 = t.local("s2");
    Signal* u = t.local("u");
    Signal* v = t.valued(t.local("v"));
    t.valued(t.local("l"));
    t.m.addSignalBinding(new DataValue("42", "integer"), s, k);
    t.m.addSignalBinding(new DataValue("45", "integer"), s2, k);
    t.m.addSignalBinding(new DataValue("43", "integer"), u, c);
    t.m.addSignalBinding(new DataSignalValue(x), v);
    t.eq(s, t.over(x));
    t.eq(s2, t.mgr->Bdd_not(t.over(x)));
    t.eq(u, t.over(x));
    t.eq(k, t.mgr->Bdd_one());
    t.eq(c, t.over(x));
    t.date();
    ScText out = scput(t);
    EXPECT_EQ(out.header.substr(out.header.find("extern void m_automaton")),
              "extern void m_automaton(int _s_x, integer _s_x_val, int*_s_k, integer* _s_k_val);\n#endif\n");
    std::string code = out.code;
    // A local whose value no binding computes starts at its type's zero;
    // the bound v gets no such line, and neither does an absent input.
    EXPECT_NE(code.find("  integer  _s_c_val = zero_integer;\n  integer  _s_l_val = zero_integer;\n  int m_node["),
              std::string::npos)
        << code;
    EXPECT_EQ(code.find("_s_v_val"), std::string::npos) << code;
    EXPECT_EQ(code.find("_s_x == 0"), std::string::npos) << code;
    // A binding without clock assigns the bound signal's under wire.
    EXPECT_NE(code.find("];\n//Data Handling\n//-------------\n_v_v = _s_x_val;\n  /* outputs computing */\n"),
              std::string::npos)
        << code;
    std::string clocks = "if (*_s_k)  {\n"
                         "  if (_s_s) {*_s_k_val = 42;}\n"
                         "   else\n"
                         "  if (_s_s2) {*_s_k_val = 45;}\n"
                         "   else { *_s_k_val = zero_integer;}\n"
                         "}\n"
                         "if (_s_c)  {\n"
                         "  if (_s_u) {_s_c_val = 43;}\n"
                         "   else { _s_c_val = zero_integer;}\n"
                         "}\n"
                         "}\n";
    ASSERT_GT(code.size(), clocks.size());
    EXPECT_EQ(code.substr(code.size() - clocks.size()), clocks) << code;
    // No value is assigned beside the equations.
    EXPECT_EQ(code.find("copy_"), std::string::npos) << code;
    EXPECT_LT(code.find("   _s_s= _s_x;"), code.find("if (*_s_k)"));
}

// ------------------------------------------------------------ data server

std::string simulput(TargetModule& t)
{
    std::ostringstream os;
    t.m.SIMUL_ZKC_put(os);
    return os.str();
}

std::string between(const std::string& text, const std::string& from, const std::string& to)
{
    size_t begin = text.find(from);
    if (begin == std::string::npos)
        return "<no " + from + ">";
    size_t end = text.find(to, begin);
    return text.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
}

TEST(DataServer, HeadAndTypeFunctionsFromTheTypeTable)
{
    TargetModule t("acc");
    DataTables data;
    data.types.addType("integer");
    data.types.addType("bool");
    Compilation::GDataMethodTable = nullptr;
    Compilation::GDataConstantTable = nullptr;
    std::string text = simulput(t);
    EXPECT_EQ(between(text, "#include <iostream>", "/* string to bool"),
              "#include <iostream>\n"
              "#include <vector>\n"
              "#include <string>\n"
              "#include <sys/ioctl.h>\n"
              "#include \"mosk_data_user_bool.h\"\n"
              "#include \"mosk_data_user_integer.h\"\n"
              "\n"
              "#define application \"acc.zkc\"\n"
              "using namespace std;\n"
              "\n"
              "/* TYPE RELATED FUNCTIONS  */\n"
              "/*=======================*/\n"
              "\n"
              "/* Check Type */ \n"
              "bool check_type (string type, string arg)\n"
              "{\n"
              "   bool result=false;\n"
              "   if (type ==  \"bool\")\n"
              "   {\n"
              "      result=check_bool(arg);\n"
              "   }\n"
              "   if (type ==  \"integer\")\n"
              "   {\n"
              "      result=check_integer(arg);\n"
              "   }\n"
              "   return result; \n"
              "}\n"
              "\n");
    EXPECT_EQ(between(text, "/* string to bool", "string binop_minus"),
              "/* string to bool conversion */\n"
              "bool string_to_bool (string s)\n"
              "{\n"
              "   return s == \"true\";\n"
              "}\n"
              "\n"
              "/* Binary Operators */ \n"
              "string binop_plus (string type, string arg1, string arg2)\n"
              "{\n"
              "   string result=string(\"--\");\n"
              "   if (type ==  \"bool\")\n"
              "   {\n"
              "      result= bool_to_string(string_to_bool(arg1) + string_to_bool(arg2));\n"
              "   }\n"
              "   if (type ==  \"integer\")\n"
              "   {\n"
              "      result= integer_to_string(string_to_integer(arg1) + string_to_integer(arg2));\n"
              "   }\n"
              "   return result;\n"
              "}\n"
              "\n");
    for (const char* line : {"      result= integer_to_string(string_to_integer(arg1) / string_to_integer(arg2));\n",
                             "bool binop_notequal (string type, string arg1, string arg2)\n{\n   bool result=false;\n",
                             "      result=  string_to_integer(arg1) ==  string_to_integer(arg2);\n",
                             "      result=  string_to_integer(arg1) !=  string_to_integer(arg2);\n",
                             "      result= string_to_integer(arg1) <  string_to_integer(arg2);\n",
                             "      result= string_to_integer(arg1) >=  string_to_integer(arg2);\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
    // No method or constant table: no section for them; empty tables
    // give empty sections.
    EXPECT_EQ(text.find("METHOD CALL"), std::string::npos);
    EXPECT_EQ(text.find("//CONSTANTS"), std::string::npos);
    Compilation::GDataMethodTable = &data.methods;
    Compilation::GDataConstantTable = &data.constants;
    text = simulput(t);
    EXPECT_NE(text.find("   //  METHOD CALL\n   if (v[0] == \"MC\")\n   {\n   }\n   //BINARY OP\n"), std::string::npos);
    EXPECT_NE(text.find("   //CONSTANTS\n   if (v[0] == \"CONST\")\n   {\n   }\n   return data;\n"),
              std::string::npos);
}

TEST(DataServer, MethodAndConstantDispatch)
{
    TargetModule t;
    DataTables data;
    data.types.addType("integer");
    data.method("integer", "clip", {"integer", "real", "integer"});
    data.method("real", "seed", {});
    data.constants.addConstant(new ConstantDecl("integer", "limit"));
    data.constants.addConstant(new ConstantDecl(
        "integer", "zero", new std::map<int, DataExpr*>{{TLanguage::C, new DataValue("0", "integer")}}));
    data.constants.addConstant(new ConstantDecl("real", "scale"));
    std::string text = simulput(t);
    // The longest method reads up to v[4]: every request has fields enough.
    EXPECT_EQ(between(text, "   while (v.size()", "   //BINARY OP"),
              "   while (v.size() < 6)\n"
              "      v.push_back(string(\"\"));\n"
              "   //  METHOD CALL\n"
              "   if (v[0] == \"MC\")\n"
              "   {\n"
              "      if (v[1] == \"clip\")\n"
              "      { \n"
              "         if (check_integer(v[2]) && check_real(v[3]) && check_integer(v[4]))\n"
              "            data = integer_to_string(clip(string_to_integer(v[2]), string_to_real(v[3]), "
              "string_to_integer(v[4])));\n"
              "            else\n"
              "                 data = string(\"--\");\n"
              "      }\n"
              "      if (v[1] == \"seed\")\n"
              "      { \n"
              "        data = real_to_string(seed());\n"
              "      }\n"
              "   }\n");
    EXPECT_EQ(between(text, "   //CONSTANTS", "\n}\n"),
              "   //CONSTANTS\n"
              "   if (v[0] == \"CONST\")\n"
              "   {\n"
              "      if (v[1] == \"limit\")\n"
              "       {\n"
              "           data = integer_to_string(limit);\n"
              "       }\n"
              "      if (v[1] == \"scale\")\n"
              "       {\n"
              "           data = real_to_string(scale);\n"
              "       }\n"
              "   }\n"
              "   return data;");

    data.method("integer", "wide", {"integer", "integer", "integer", "integer", "integer", "integer"});
    EXPECT_NE(simulput(t).find("   while (v.size() < 8)\n"), std::string::npos);
}

TEST(DataServer, OperatorDispatchOnTheSimulatorsOperatorTexts)
{
    TargetModule t;
    std::string text = simulput(t);
    // Without types every check fails: the type functions are empty.
    EXPECT_NE(text.find("bool check_type (string type, string arg)\n{\n   bool result=false;\n   return result; \n}\n"),
              std::string::npos);
    std::string binary = between(text, "   //BINARY OP", "   //UNARY OP");
    for (const char* branch : {
             "         if (v[3] == \" + \")\n            data = binop_plus(v[2], v[1], v[4]);\n",
             "         else if (v[3] == \" && \")\n"
             "            data = (string_to_bool(v[2]) && string_to_bool(v[4])) ? string(\"true\") : "
             "string(\"false\");\n",
             "         else if (v[3] == \" | \")\n"
             "            data = (string_to_bool(v[1]) | string_to_bool(v[4])) ? string(\"true\") : "
             "string(\"false\");\n",
         })
        EXPECT_NE(binary.find(branch), std::string::npos) << branch << "\nin\n" << binary;
    // Every operator text of a request has its branch, in code order.
    size_t at = 0;
    for (int op : {DataExpr::Plus, DataExpr::Minus, DataExpr::Mult, DataExpr::Div, DataExpr::And, DataExpr::Or,
                   DataExpr::Eq, DataExpr::Neq, DataExpr::Inf, DataExpr::Infe, DataExpr::Sup, DataExpr::Supe}) {
        size_t next = binary.find("(v[3] == \"" + DataExpr::MOSK_opname(op) + "\")", at);
        EXPECT_NE(next, std::string::npos) << op;
        at = next;
    }
    EXPECT_EQ(between(text, "   //UNARY OP", "   return data;"),
              "   //UNARY OP\n"
              "   if (v[0] == \"UOP\")\n"
              "   {\n"
              "      if (check_type(v[3], v[2]))\n"
              "      {\n"
              "         if (v[1] == \" -\")\n"
              "            data = string(\" -\") + v[2];\n"
              "         else if (v[1] == \" !\")\n"
              "            data = string_to_bool(v[2]) ? string(\"false\") : string(\"true\");\n"
              "         else\n"
              "         {\n"
              "            cerr << \"Error: SIMUL_ZKC:unknown unary operator\" << endl;\n"
              "            data = string(\"--\");\n"
              "         }\n"
              "      }\n"
              "      else\n"
              "         data = string(\"--\");\n"
              "   }\n");
}

} // namespace
