#include "builder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

std::string blif(TargetModule& t)
{
    std::ostringstream os;
    t.m.BLIF_put(os, 1);
    return os.str();
}

TEST(Blif, NoInputsLeavesAnEmptySecondLineAndConstantsUseTheTerminal)
{
    TargetModule t;
    Signal* o = t.output("o");
    Signal* a = t.local("a");
    // A data signal is listed only behind inputs, so not here.
    t.m.addDataSignal(new Signal("d", &t.m, t.wood));
    t.eq(o, t.mgr->Bdd_one());
    t.eq(a, t.mgr->Bdd_zero());
    t.date();
    std::string T = "m_node_" + t.one();
    EXPECT_EQ(blif(t), ".model m\n"
                       "\n"
                       ".outputs _s_o\n"
                       ".names " + T + "\n1\n\n"
                       ".names " + T + " _s_o\n1 1\n"
                       "\n"
                       ".names " + T + " _s_a\n0 1\n"
                       "\n"
                       "\n.end\n\n");
}

TEST(Blif, SharedNodeIsWrittenOnceAndAPlainVariableIsABuffer)
{
    TargetModule t;
    Signal* x = t.input("x");
    Signal* y = t.input("y");
    t.m.addDataSignal(new Signal("d", &t.m, t.wood));
    Signal* o = t.output("o");
    Signal* p = t.output("p");
    Signal* q = t.local("q");
    bdd both = t.mgr->Bdd_and(t.over(x), t.over(y));
    bdd neither = t.mgr->Bdd_not(both);
    t.eq(o, both);
    t.eq(p, neither);
    t.eq(q, t.over(x));
    t.date();
    std::string T = "m_node_" + t.one();
    std::string Y = "m_node_" + std::to_string(t.id(t.over(y)));
    std::string R = "m_node_" + std::to_string(t.id(both));
    EXPECT_EQ(blif(t), ".model m\n"
                       ".inputs _s_x _s_y _s_d\n"
                       ".outputs _s_o _s_p\n"
                       // then child (a variable's own node, which stands
                       // alone), else child, then the node
                       ".names _s_y " + Y + "\n1 1\n\n"
                       ".names " + T + "\n1\n\n"
                       ".names _s_x " + Y + " " + T + " " + R + "\n11- 1\n0-0 1\n\n"
                       ".names " + R + " _s_o\n1 1\n\n"
                       ".names " + R + " _s_p\n0 1\n\n"
                       ".names _s_x _s_q\n1 1\n\n"
                       "\n.end\n\n");
}

TEST(Blif, ValuedSignalsAreReportedOnceEachAndTheFileIsComplete)
{
    TargetModule t;
    Signal* v = t.valued(t.input("v"));
    Signal* w = t.valued(t.output("w"));
    Signal* p = t.valued(new Signal("p", &t.m, t.wood));
    t.m.addPreSignal(p, v, "0");
    t.eq(w, t.over(v));
    t.date();
    testing::internal::CaptureStderr();
    std::string text = blif(t);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, "ERROR: valued signal v is not supported in blif generation!\n"
                   "ERROR: valued signal w is not supported in blif generation!\n"
                   "ERROR: valued signal p is not supported in blif generation!\n");
    EXPECT_EQ(text, ".model m\n"
                    ".inputs _s_v\n"
                    ".outputs _s_w\n"
                    ".latch v_latch p 0\n"
                    ".names v v_latch\n"
                    " 1 1\n"
                    ".names _s_v _s_w\n1 1\n\n"
                    "\n.end\n\n");
}

TEST(Blif, RegistersAndMemorisedLatches)
{
    TargetModule t;
    Signal* o = t.output("o");
    Signal* r = t.local("r");
    Signal* n = t.local("n");
    Signal* r2 = t.local("r2");
    Signal* n2 = t.local("n2");
    Signal* l = t.local("l");
    t.m.addRegisterSignal(r, n, 1);
    t.m.addRegisterSignal(r2, n2, 0);
    t.m.addPreSignal(new Signal("p", &t.m, t.wood), l, "");
    t.m.addPreSignal(new Signal("q", &t.m, t.wood), o, "");
    t.date();
    EXPECT_EQ(blif(t), ".model m\n"
                       "\n"
                       ".outputs _s_o\n"
                       ".latch _s_n _s_r 1 \n"
                       ".latch _s_n2 _s_r2 0 \n"
                       "\n"
                       ".latch _s_l p 0\n"
                       ".latch o_latch q 0\n"
                       ".names o o_latch\n"
                       " 1 1\n"
                       "\n.end\n\n");
}

TEST(Blif, NoWoodEndsTheRunWithStatusOne)
{
    TargetModule t;
    t.m.setBddWood(nullptr);
    std::ostringstream os;
    EXPECT_EXIT(t.m.BLIF_put(os, 0), testing::ExitedWithCode(1),
                "ERROR in Module::BLIF_put\\(\\): no equationtable defined!");
}

} // namespace

namespace {

// The reader leaves a null register for an undeclared signal and a pair
// without actual signal; generation passes over them.
TEST(Blif, UndeclaredRegisterAndPairAreLeftOut)
{
    TargetModule t;
    Signal* o = t.output("o");
    t.eq(o, t.mgr->Bdd_one());
    t.m.addRegisterSignal(t.local("r"), t.local("n"), 0);
    t.m.getRegisterList()->push_back(nullptr);
    t.m.addPreSignal(new Signal("p", &t.m, t.wood), o, "");
    t.m.getPreSignalList()->push_back(new memorizedSignal(new Signal("q", &t.m, t.wood), nullptr, ""));
    t.date();
    std::string text = blif(t);
    EXPECT_NE(text.find(".latch _s_n _s_r 0 \n\n.latch o_latch p 0\n.names o o_latch\n 1 1\n.names"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find(" q "), std::string::npos) << text;
    std::ostringstream c, h;
    t.m.C_put(c, h);
    EXPECT_NE(c.str().find("  m_p= *o;\n\n}"), std::string::npos) << c.str();
    EXPECT_EQ(c.str().find("m_q"), std::string::npos) << c.str();
}

} // namespace
