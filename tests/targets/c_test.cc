#include "builder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

struct CText {
    std::string code, header;
};

CText cput(TargetModule& t)
{
    std::ostringstream c, h;
    t.m.C_put(c, h);
    return {c.str(), h.str()};
}

std::string lineWith(const std::string& text, const std::string& part)
{
    size_t at = text.find(part);
    if (at == std::string::npos)
        return "<none>";
    size_t begin = text.rfind('\n', at);
    begin = begin == std::string::npos ? 0 : begin + 1;
    return text.substr(begin, text.find('\n', at) - begin);
}

TEST(C, WholeUnitWithRegisterAndMemorisedOutput)
{
    TargetModule t;
    Signal* a = t.input("a");
    Signal* o = t.output("o");
    Signal* n = t.local("n");
    Signal* r = t.local("r");
    t.m.addRegisterSignal(r, n, 1);
    t.m.addPreSignal(new Signal("p", &t.m, t.wood), o, "");
    t.eq(o, t.over(r));
    t.eq(n, t.mgr->Bdd_not(t.over(a)));
    t.date();
    CText out = cput(t);
    std::string A = std::to_string(t.id(t.over(a)));
    EXPECT_EQ(out.header, "#ifndef m_H\n"
                          "#define m_H\n"
                          "extern void m_reset_automaton();\n"
                          "extern void m_automaton(int _s_a, int*_s_o);\n"
                          "#endif\n");
    EXPECT_EQ(out.code, "#include \"m.h\"\n"
                        "#define false 0\n"
                        "#define true (!false)\n"
                        "\n"
                        "/* global state variables */\n"
                        "int _s_r;\n"
                        "\n"
                        "/* global pre variables */\n"
                        "int m_p;\n"
                        "\n"
                        "void m_reset_automaton(){\n"
                        "  /* global state variables initialisation */\n"
                        "  _s_r= 1;\n"
                        "  /* pre variables initialisation */\n"
                        "  m_p= 0;\n"
                        "\n"
                        "}\n"
                        "\n"
                        "void m_automaton(int _s_a, int*_s_o)\n"
                        "{\n"
                        "  int _s_n;\n"
                        "  int m_node[" + std::to_string(t.mgr->Bdd_total_size()) + "];\n"
                        "  int p= m_p;\n"
                        "\n"
                        "   /* outputs computing */\n"
                        "  *_s_o= _s_r;\n"
                        // a variable's own node needs no terminal
                        "   m_node[" + A + "]= _s_a;\n"
                        "   _s_n= !m_node[" + A + "];\n"
                        "\n"
                        "  /* refresh registers */\n"
                        "  _s_r= _s_n;\n"
                        "\n"
                        "  /* refresh global pre variables */\n"
                        "  m_p= *o;\n"
                        "\n"
                        "}\n"
                        "\n");
}

TEST(C, WithoutStateTheResetBodyIsEmpty)
{
    TargetModule t;
    t.eq(t.output("o"), t.mgr->Bdd_one());
    t.eq(t.local("f"), t.mgr->Bdd_zero());
    t.date();
    std::string code = cput(t).code;
    // True and false share the terminal's slot, computed once.
    std::string T = "m_node[" + t.one() + "]";
    EXPECT_NE(code.find("   /* outputs computing */\n   " + T + "= !0;\n  *_s_o= " + T + ";\n   _s_f= !" + T +
                        ";\n}\n\n"),
              std::string::npos)
        << code;
    EXPECT_NE(code.find("#define true (!false)\n\nvoid m_reset_automaton(){\n}\n\n"), std::string::npos) << code;
    EXPECT_EQ(code.find("/*  global"), std::string::npos);
    EXPECT_EQ(code.find("refresh"), std::string::npos) << code;
}

TEST(C, RegistersShareOneDeclarationAndRefreshAfterTheEquations)
{
    TargetModule t;
    Signal* o = t.output("o");
    Signal* r = t.local("r");
    Signal* n = t.local("n");
    Signal* r2 = t.local("r2");
    Signal* n2 = t.local("n2");
    t.m.addRegisterSignal(r, n, 0);
    t.m.addRegisterSignal(r2, n2, 1);
    t.eq(o, t.over(r2));
    t.eq(n, t.over(r2));
    t.eq(n2, t.over(r));
    t.date();
    std::string code = cput(t).code;
    EXPECT_NE(code.find("/* global state variables */\nint _s_r,\n    _s_r2;\n\nvoid m_reset_automaton(){\n"
                        "  /* global state variables initialisation */\n  _s_r= 0;\n  _s_r2= 1;\n}\n\n"),
              std::string::npos)
        << code;
    // Actual variables are state, not locals; next variables are locals.
    EXPECT_EQ(code.find("  int _s_r;"), std::string::npos) << code;
    EXPECT_NE(code.find("  int _s_n;\n  int _s_n2;\n"), std::string::npos) << code;
    EXPECT_NE(code.find("   _s_n2= _s_r;\n\n  /* refresh registers */\n  _s_r= _s_n;\n  _s_r2= _s_n2;\n\n}\n"),
              std::string::npos)
        << code;
}

TEST(C, WithoutWoodTheHeaderStillCloses)
{
    TargetModule t;
    t.input("a");
    t.m.setBddWood(nullptr);
    CText out = cput(t);
    EXPECT_EQ(out.header, "#ifndef m_H\n#define m_H\n#endif\n");
    EXPECT_EQ(out.code, "#include \"m.h\"\n#define false 0\n#define true (!false)\n\n");
}

TEST(C, DataDeclarationsSplitBetweenHeaderAndCode)
{
    TargetModule t;
    t.eq(t.output("o"), t.mgr->Bdd_one());
    t.date();
    DataTypeTable types;
    types.addType("integer");
    types.addType("bool_t");
    DataMethodTable methods;
    methods.addMethod(new MethodDecl(new std::string("integer"), new std::string("add"),
                                     new std::list<std::string>{"integer", "integer"}));
    DataConstantTable constants;
    constants.addConstant(new ConstantDecl("integer", "limit"));
    constants.addConstant(new ConstantDecl(
        "integer", "zero", new std::map<int, DataExpr*>{{TLanguage::C, new DataValue("0", "integer")}}));
    Compilation::GDataTypeTable = &types;
    Compilation::GDataMethodTable = &methods;
    Compilation::GDataConstantTable = &constants;
    CText out = cput(t);
    Compilation::GDataTypeTable = nullptr;
    Compilation::GDataMethodTable = nullptr;
    Compilation::GDataConstantTable = nullptr;
    EXPECT_EQ(out.header, "#ifndef m_H\n#define m_H\n"
                          "#include \"C_data_user_bool_t.h\"\n"
                          "#include \"C_data_user_integer.h\"\n"
                          // The zero declarations end no line.
                          "extern const bool_t zero_bool_t;extern const integer zero_integer;"
                          "extern integer add(integer, integer);\n\n"
                          "extern const integer limit;\n"
                          "extern void m_reset_automaton();\n"
                          "extern void m_automaton(int* _s_o);\n"
                          "#endif\n");
    std::string head = "#include \"m.h\"\n#define false 0\n#define true (!false)\n\n"
                       "const integer zero = 0;\nvoid m_reset";
    EXPECT_EQ(out.code.substr(0, head.size()), head);
}

// Inputs: name, valued, bound under its declared name. Outputs the same.
struct Port {
    char kind;
    const char* name;
    bool valued;
    bool bound;
};

struct ParameterCase {
    std::vector<Port> ports;
    const char* code;
    const char* header;
};

TEST(C, ParameterListsOfCodeAndHeader)
{
    const ParameterCase cases[] = {
        {{{'i', "a", false, false}, {'i', "b", false, false}, {'o', "o", false, false}, {'o', "p", false, false}},
         "int _s_a, int _s_b, int*_s_o, int*_s_p",
         "int _s_a, int  _s_b, int*_s_o, int*_s_p"},
        {{{'o', "o", false, false}, {'o', "p", false, false}}, "int* _s_o, int*_s_p", "int* _s_o, int*_s_p"},
        {{{'i', "a", true, false}, {'i', "b", false, false}, {'o', "o", true, false}},
         "int _s_a, integer _s_a_val, int _s_b, int*_s_o, integer* _s_o_val",
         "int _s_a, integer _s_a_val, int  _s_b, int*_s_o, integer* _s_o_val"},
        // A bound port is computed inside: the next one takes the first place.
        {{{'i', "a", false, true}, {'i', "b", false, false}, {'o', "o", false, true}, {'o', "p", false, false}},
         "int _s_b, int*_s_p",
         "int _s_b, int*_s_p"},
    };
    for (const ParameterCase& pc : cases) {
        TargetModule t;
        for (const Port& port : pc.ports) {
            Signal* s = port.kind == 'i' ? t.input(port.name) : t.output(port.name);
            if (port.valued)
                t.valued(s);
            if (port.bound)
                t.m.addSignalBinding(new DataValue("7", "integer"), s);
        }
        t.date();
        CText out = cput(t);
        EXPECT_EQ(lineWith(out.code, "void m_automaton("), std::string("void m_automaton(") + pc.code + ")");
        EXPECT_EQ(lineWith(out.header, "extern void m_automaton("),
                  std::string("extern void m_automaton(") + pc.header + ");");
    }
}

TEST(C, ValuedPortsAndMemorisedValue)
{
    TargetModule t;
    Signal* a = t.valued(t.input("a"));
    Signal* o = t.valued(t.output("o"));
    Signal* l = t.valued(t.local("l"));
    Signal* p = t.valued(new Signal("p", &t.m, t.wood));
    t.m.addPreSignal(p, l, "zero");
    Signal* q = new Signal("q", &t.m, t.wood);
    t.m.addPreSignal(q, t.local("r"), "0");
    t.eq(o, t.over(a));
    t.eq(l, t.over(a));
    t.date();
    std::string code = cput(t).code;
    for (const char* line : {
             "integer m_p_val;\n",
             "  m_p_val = copy_integer(zero);\n",
             "  integer _s_l_val = copy_integer(zero_integer);\n",
             "  *_s_o_val = copy_integer(zero_integer);\n",
             // An empty line after each memorised load.
             "  int p= m_p;\n  integer p_val= copy_integer(m_p_val);\n\n  int q= m_q;\n\n",
             "  if (_s_a == 0)\n     {\n          _s_a_val= copy_integer(zero_integer);\n     }\n",
             "  m_p= _s_l;\n  m_p_val= copy_integer(_s_l_val);\n",
         })
        EXPECT_NE(code.find(line), std::string::npos) << line << "\nin\n" << code;
    // Zero values come before the equations, refreshes after them.
    EXPECT_LT(code.find("if (_s_a == 0)"), code.find("outputs computing"));
    EXPECT_GT(code.find("m_p= _s_l;"), code.find("outputs computing"));
}

TEST(C, ClockedAndAbstractBindings)
{
    TargetModule t;
    Signal* x = t.input("x");
    Signal* k = t.valued(t.output("k"));
    Signal* c = t.valued(t.local("c"));
    // The bound signals carry the type of the value they hand on.
    Signal* s = t.valued(t.local("s"));
    Signal* u = t.valued(t.local("u"));
    Signal* v = t.valued(t.local("v"));
    Signal* s2 = t.valued(t.local("s2"));
    t.m.addSignalBinding(new DataValue("42", "integer"), s, k);
    t.m.addSignalBinding(new DataValue("45", "integer"), s2, k);
    t.eq(s2, t.mgr->Bdd_not(t.over(x)));
    t.m.addSignalBinding(new DataValue("43", "integer"), u, c);
    t.m.addSignalBinding(new DataValue("44", "integer"), v);
    t.eq(s, t.over(x));
    t.eq(u, t.over(x));
    // The under wire of s has an equation too: the value follows it as
    // well, guarded by that wire.
    bdd sUnder = s->getUnderBdd(&t.m, t.wood);
    new Bddexpression(t.mgr->Name_var_by_bdd(sUnder), t.wood, sUnder, t.mgr->Bdd_not(t.over(x)), 0, 0);
    IndexSet deps{t.overId(x)};
    new Bddexpression(t.overId(v), t.wood, deps, "VALUE", 0, 0);
    t.date();
    std::ostringstream os;
    t.m.C_put_equation(os, "m_node", {"_s_k"});
    std::string text = os.str();
    EXPECT_NE(text.find("   _s_s= _s_x;\n   if (_s_s) \n   {\n         *_s_k_val = copy_integer(42);\n   }\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("   _s_u= _s_x;\n   if (_s_u) \n   {\n         _s_c_val = copy_integer(43);\n   }\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("  _s_v = 44;\n"), std::string::npos) << text;
    EXPECT_NE(text.find("   _v_s= !m_node[2];\n   if (_v_s) \n   {\n         *_s_k_val = copy_integer(42);\n   }\n"),
              std::string::npos)
        << text;
    // The value of v is dated after x, whose node is then already known.
    EXPECT_LT(text.find("_s_s= _s_x"), text.find("_s_v = 44"));

    std::string code = cput(t).code;
    EXPECT_NE(code.find("   if (! *_s_k)\n   {\n      *_s_k_val = copy_integer(zero_integer);\n   }\n"),
              std::string::npos)
        << code;
    EXPECT_EQ(code.find("if (! *_s_c)"), std::string::npos) << code;
    // Two bindings on one output clock: two guarded values, one zeroing.
    EXPECT_NE(code.find("   if (_s_s2) \n   {\n         *_s_k_val = copy_integer(45);\n   }\n"), std::string::npos)
        << code;
    EXPECT_EQ(code.find("if (! *_s_k)"), code.rfind("if (! *_s_k)"));
}

TEST(C, AbstractEquationWithoutBindingEndsTheRun)
{
    TargetModule t;
    Signal* x = t.input("x");
    Signal* v = t.valued(t.local("v"));
    IndexSet deps{t.overId(x)};
    new Bddexpression(t.overId(v), t.wood, deps, "VALUE", 0, 0);
    t.date();
    std::ostringstream os;
    EXPECT_EXIT(t.m.C_put_equation(os, "m_node", {}), testing::ExitedWithCode(1),
                "abstract equation without bindind for:");
}

} // namespace
