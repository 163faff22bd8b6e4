// The C unit beyond its golden texts: the frame without state or wood,
// the parameter lists of bound and valued ports, and the refusal of an
// abstract equation without binding.
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

TEST(C, WithoutWoodTheHeaderStillCloses)
{
    TargetModule t;
    t.input("a");
    t.m.setBddWood(nullptr);
    CText out = cput(t);
    EXPECT_EQ(out.header, "#ifndef m_H\n#define m_H\n#endif\n");
    EXPECT_EQ(out.code, "#include \"m.h\"\n#define false 0\n#define true (!false)\n\n");
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
