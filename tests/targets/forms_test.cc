// The forms of the generators that neither the golden texts' modules nor
// the consumers' reach: an abstract equation without binding, valued
// signals and left-out registers in BLIF, and the documentation's binding
// table.
#include "tests/module_builder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// Marked finalised by hand, so that a text follows the equations as written.
struct TargetModule : ModuleBuilder {
    explicit TargetModule(const std::string& name = "m") : ModuleBuilder(name)
    {
        Compilation::forget_data_tables();
        m.setFinalised(1);
    }
};

// The data test has no binding: each generator that prints its value stops.
TEST(Forms, AbstractEquationWithoutBindingEndsTheRun)
{
    TargetModule t;
    Signal* x = t.input("x");
    Signal* o = t.output("o");
    Signal* v = t.valued(t.local("v"));
    t.eq(o, t.over(x));
    IndexSet deps{t.overId(x)};
    new Bddexpression(t.overId(v), t.wood, deps, "VALUE", 0, 0);
    t.date();
    std::ostringstream os;
    std::istringstream libs;
    const char* message = "abstract equation without bindind for:";
    EXPECT_EXIT(t.m.C_put_equation(os, "m_node", {}), testing::ExitedWithCode(1), message);
    EXPECT_EXIT(t.m.LUSTRE_put(os, 0), testing::ExitedWithCode(1), message);
    EXPECT_EXIT(t.m.VHDL_put(os, libs, 0), testing::ExitedWithCode(1), message);
    // The C# bean reports it and writes the rest.
    testing::internal::CaptureStderr();
    t.m.CSharp_put(os);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("***error: ") + message + "v\n");
    EXPECT_NE(os.str().find("FiresendEvent(format);\n        }\n"), std::string::npos) << os.str();
}

// An input's event is named by its variable, an output's by the signal's
// internal name, which the variable no longer matches here.
TEST(Forms, CSharpEventNames)
{
    TargetModule t;
    Signal* x = t.input("x");
    Signal* o = t.valued(t.output("o"));
    Signal* p = t.output("p");
    t.eq(o, t.over(x));
    t.eq(p, t.mgr->Bdd_not(t.over(x)));
    t.date();
    std::ostringstream os;
    t.m.CSharp_put(os);
    std::string text = os.str();
    EXPECT_NE(text.find("                if(evts[i].nameEvt == \"_s_x\")\n"), std::string::npos) << text;
    EXPECT_NE(text.find("           MyEvent evt0= new MyEvent( \"o\",\"integer\", Convert.ToString(o_val),"
                        "Convert.ToString(o));\n            outputEvts.Add(evt0);\n"
                        "            MyEvent evt1 = new MyEvent( \"p\", Convert.ToString(p));\n"),
              std::string::npos)
        << text;
}

TEST(Forms, BlifReportsValuedSignalsOnceEach)
{
    TargetModule t;
    Signal* v = t.valued(t.input("v"));
    Signal* w = t.valued(t.output("w"));
    Signal* p = t.valued(new Signal("p", &t.m, t.wood));
    t.m.addPreSignal(p, v, "0");
    t.eq(w, t.over(v));
    t.date();
    std::ostringstream os;
    testing::internal::CaptureStderr();
    t.m.BLIF_put(os, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: valued signal v is not supported in blif generation!\n"
                                                      "ERROR: valued signal w is not supported in blif generation!\n"
                                                      "ERROR: valued signal p is not supported in blif generation!\n");
    EXPECT_EQ(os.str(), ".model m\n.inputs _s_v\n.outputs _s_w\n.latch v_latch p 0\n.names v v_latch\n 1 1\n"
                        ".names _s_v _s_w\n1 1\n\n\n.end\n\n");
}

// The reader leaves a null register for an undeclared signal and a pair
// without actual signal; BLIF and C pass over them.
TEST(Forms, UndeclaredRegisterAndPairAreLeftOut)
{
    TargetModule t;
    Signal* o = t.output("o");
    t.eq(o, t.mgr->Bdd_one());
    t.m.addRegisterSignal(t.local("r"), t.local("n"), 0);
    t.m.getRegisterList()->push_back(nullptr);
    t.m.addPreSignal(new Signal("p", &t.m, t.wood), o, "");
    t.m.getPreSignalList()->push_back(new memorizedSignal(new Signal("q", &t.m, t.wood), nullptr, ""));
    t.date();
    std::ostringstream blif, c, h;
    t.m.BLIF_put(blif, 1);
    EXPECT_NE(blif.str().find(".latch _s_n _s_r 0 \n\n.latch o_latch p 0\n.names o o_latch\n 1 1\n.names"),
              std::string::npos)
        << blif.str();
    EXPECT_EQ(blif.str().find(" q "), std::string::npos) << blif.str();
    t.m.C_put(c, h);
    EXPECT_NE(c.str().find("  m_p= *o;\n\n}"), std::string::npos) << c.str();
    EXPECT_EQ(c.str().find("m_q"), std::string::npos) << c.str();
}

// A bound signal with two occurrences shows both; a binding without value
// still takes its evaluation number; the table hands its numbers to copies.
TEST(Forms, DocBindingTableShowsEveryOccurrenceAndLeavesTheValuesUnnumbered)
{
    TargetModule t;
    Signal* v = t.valued(t.input("v"));
    Signal* c = t.valued(t.local("c"));
    Signal* x = t.local("x");
    x->newOccurrence(t.wood, &t.m);
    Signal* y = t.local("y");
    t.date();
    DataExpr* value = new DataSignalValue(v);
    t.m.addSignalBinding(value, x, c);
    t.m.addBinding(new DataBinding(y, nullptr));
    std::ostringstream os;
    t.m.DOC_put(os, 0);
    std::string text = os.str();
    EXPECT_EQ(text.substr(text.find("Binding table")),
              "Binding table\n"
              "presence du signal: \"x\" declenche l'emission de : \n"
              "  - value support signal :  c: _s_c(2),_v_c(3)\n"
              "  - signal data: x"
              "      associated occurence: 0: x (4, 5): "
              "      associated occurence: 1: x_1 (6, 7): "
              "  - evaluation tree: 0"
              "presence du signal: \"y\" declenche l'emission de : \n"
              "  - no value support signal ...  - signal data: y      associated occurence: 0: y (8, 9): "
              "  - evaluation tree: 1\n"
              "evaltable: index: 0: _s_v_val;");
    EXPECT_FALSE(value->hasIndex());
}

} // namespace
