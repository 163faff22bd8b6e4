// The VHDL file beyond its golden texts: the Altera form and the libraries,
// the post-pass on names, and the sections that examples do not reach.
#include "builder.h"

#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace {

const std::string golden = TARN_SOURCE_DIR "/tests/targets/golden/";

std::string vhdl_of(TargetModule& t, const std::string& libs = "", int altera = 0, bool withLibs = false)
{
    std::ostringstream os;
    std::istringstream in(libs);
    if (!withLibs)
        in.setstate(std::ios::failbit);
    t.m.VHDL_put(os, in, altera);
    return os.str();
}

std::string example(const scratch_dir& s, const std::string& name)
{
    EXPECT_EQ(std::system(("cp '" TARN_SOURCE_DIR "/examples/" + name + ".zkc' '" + s.path + "'").c_str()), 0);
    return name + ".zkc";
}

// The Altera form differs in the boolean type only; the libraries come
// first, line by line, from the working directory's file and not from the
// input's directory; both options together write one file.
TEST(Vhdl, AlteraFormAndTheLibrariesOfTheWorkingDirectory)
{
    scratch_dir s;
    std::string input = example(s, "sum");
    ASSERT_EQ(std::system(("mkdir '" + s.path + "/run'").c_str()), 0);
    s.write("vhdl_libs.inc", "-- beside the input, not read\n");
    s.write("run/vhdl_libs.inc", "library ieee;\nuse ieee.std_logic_1164.all;");
    tarn_output r = run_tarn_in(s.path + "/run", {"../sum.zkc", "-altera", "-vhdl", "-c"});
    ASSERT_EQ(r.status, 0) << r.err;
    std::string expected = std::regex_replace(read_file(golden + "sum.vhd"), std::regex("\\bbit\\b"), "std_logic");
    expected = std::regex_replace(expected, std::regex("-- no vhdl_libs.inc file found ...\n\n"),
                                  "library ieee;\nuse ieee.std_logic_1164.all;\n");
    EXPECT_EQ(read_file(s.path + "/sum.vhd"), expected);
    // In the driver's order, C before VHDL, one VHDL line.
    std::string lines = "generation of ../sum.log\ngeneration of ../sum.c\ngeneration of ../sum.h\n"
                        "generation of ../sum.vhd\ncompilation finished in ";
    EXPECT_EQ(r.out.substr(0, lines.size()), lines);
}

// Every "__" becomes "_X_" in the final file, comments included; the
// temporary file keeps the generator's text.
TEST(Vhdl, DoubleUnderscoresOnlyInTheTemporaryFile)
{
    scratch_dir s;
    std::string text = read_file(TARN_SOURCE_DIR "/examples/toggle.zkc");
    text = std::regex_replace(text, std::regex("toggle"), "tog__gle");
    text = std::regex_replace(text, std::regex("input: t ;"), "input: t__in ;");
    s.write("tog__gle.zkc", text);
    ASSERT_EQ(run_tarn_in(s.path, {"tog__gle.zkc", "-vhdl"}).status, 0);
    std::string tmp = read_file(s.path + "/tog__gle.vhd_tmp");
    std::string vhd = read_file(s.path + "/tog__gle.vhd");
    EXPECT_NE(tmp.find("from tog__gle Zinc Kernel"), std::string::npos) << tmp;
    EXPECT_NE(tmp.find("       t__in : in bit;\n"), std::string::npos) << tmp;
    EXPECT_EQ(vhd.find("__"), std::string::npos) << vhd;
    EXPECT_EQ(std::regex_replace(tmp, std::regex("__"), "_X_"), vhd);
    EXPECT_NE(vhd.find("signal v_s_tog_X_gle_boot : bit;\n"), std::string::npos) << vhd;
}

// A valued memorised signal whose actual is a local: the local becomes a
// published name from the rising edge on, so the reset leaves it alone,
// the falling edge assigns it and its equation is a comment.
TEST(Vhdl, ValuedMemorisedLocalIsPublishedByTheProcess)
{
    TargetModule t;
    Signal* a = t.input("a");
    Signal* b = t.valued(t.local("b"));
    Signal* p = t.valued(new Signal("p", &t.m, t.wood));
    t.m.addPreSignal(p, b, "zero_integer");
    t.eq(b, t.mgr->Bdd_and(t.over(a), t.over(b)));
    t.date();
    std::string text = vhdl_of(t);
    std::string A = std::to_string(t.id(t.over(a)));
    std::string B = std::to_string(t.id(t.over(b)));
    std::string root = std::to_string(t.id(t.at(t.overId(b))->my_bdd_exp()));
    EXPECT_NE(text.find("signal _s_b : bit;\nsignal _s_b_locval : integer;\n"
                        "signal p : bit;\nsignal p_locval : integer;\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("  if (reset = '0') then\n"
                        "      p <= '0';\n"
                        "      p_locval <= zero_integer;\n"
                        "      m_node(" + A + ") <= '0';\n"
                        "      m_node_starter <= '1';\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("        p <= _s_b;\n        p_locval <= _s_b_locval;\n"), std::string::npos) << text;
    EXPECT_NE(text.find("     if(m_node_starter = '0') then\n"
                        "         _s_b <= m_node(" + root + ");\n"
                        "     end if;\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("      -- final output evaluation of _s_b in process\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("m_node(" + B + ") <="), std::string::npos) << text;
}

// The ports and signals of a module the sibling compiler did not finalise,
// plain copies into slots by variable index, and no register or memorised
// section when there is none. Its output variable is not named as its
// port, so nothing publishes it: the equation fills the output's slot.
TEST(Vhdl, PortsOfAModuleNotFinalisedAndAPlainCopy)
{
    TargetModule t;
    t.m.setFinalised(0);
    Signal* a = t.input("a");
    Signal* o = t.output("o");
    Signal* l = t.local("l");
    t.eq(l, t.over(a));
    t.eq(o, t.over(l));
    t.date();
    std::string text = vhdl_of(t, "library ieee;\nuse ieee.std_logic_1164.all;\n", 1, true);
    std::string head = "-- VHDL generation by TARN version 3.4.3-4 from m Zinc Kernel compiled code\n\n"
                       "library ieee;\nuse ieee.std_logic_1164.all;\n"
                       "entity m is\n  port(\n"
                       "       s_SETm : in std_logic;\n"
                       "       s_RESETm : in std_logic;\n"
                       "       a : in std_logic;\n"
                       "       _v_a : in std_logic;\n"
                       "       reset : in std_logic;\n"
                       "       clk : in std_logic;\n"
                       "       o : out std_logic\n"
                       "     );\n"
                       "end m;\n\n";
    EXPECT_EQ(text.substr(0, head.size()), head);
    auto slot = [&](Signal* s) { return "m_node(" + std::to_string(t.id(t.over(s))) + ")"; };
    EXPECT_NE(text.find("-- actualisation\n      " + slot(o) + " <= " + slot(l) + ";\n      " + slot(l) + " <= " +
                        slot(a) + ";\nend m_a;\n\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("     if(m_node_starter = '0') then\n     end if;\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("_locval"), std::string::npos) << text;
    EXPECT_NE(text.find("  if (reset = '0') then\n      m_node("), std::string::npos) << text;
}

TEST(Vhdl, WithoutWoodNothingIsWritten)
{
    TargetModule t;
    t.input("a");
    t.m.setBddWood(nullptr);
    EXPECT_EQ(vhdl_of(t, "library ieee;\n", 0, true), "");
}

TEST(Vhdl, AnAbstractEquationWithoutBindingStopsTheGeneration)
{
    TargetModule t;
    Signal* o = t.output("o");
    Signal* c = t.local("c");
    t.eq(o, t.over(c));
    t.eq(c, t.mgr->Bdd_one());
    t.at(t.overId(c))->setExpDef("x > 1");
    t.date();
    EXPECT_EXIT(vhdl_of(t), ::testing::ExitedWithCode(1), "abstract equation without bindind for:");
}

} // namespace
