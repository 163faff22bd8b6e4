// The SystemC unit and the simulator's data server beyond their golden
// texts: the frame without wood or state, the user's types, and the
// operator dispatch of a boolean type.

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
