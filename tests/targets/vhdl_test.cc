// The VHDL text: two examples whole as the command writes them (through
// the post-pass), the Altera form and the libraries, the driver's handling
// of the file, and the sections that finalised examples do not reach.
#include "builder.h"

#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace {

// A register, no valued signal, no constant: the reset, the two edges and
// the register's two lines after the equations.
const char* const toggle_vhd =
    "-- VHDL generation by TARN version 3.4.3-4 from toggle Zinc Kernel compiled code\n"
    "\n"
    "-- no vhdl_libs.inc file found ...\n"
    "\n"
    "entity toggle is\n"
    "  port(\n"
    "       t : in bit;\n"
    "       reset : in bit;\n"
    "       clk : in bit;\n"
    "       q : out bit\n"
    "     );\n"
    "end toggle;\n"
    "\n"
    "architecture toggle_a of toggle is\n"
    "\n"
    "TYPE array_toggle_node IS ARRAY (23 downto 0) OF bit ;\n"
    "signal v_s_n : bit;\n"
    "signal v_s_r : bit;\n"
    "signal v_s_toggle_boot : bit;\n"
    "signal v_s_togglebootplus : bit;\n"
    "signal toggle_node_starter : bit;\n"
    "signal toggle_node : array_toggle_node;\n"
    "\n"
    "begin\n"
    "-- state and output computation\n"
    "process (reset,clk)\n"
    "begin\n"
    "  if (reset = '0') then\n"
    "      v_s_r <= '0';\n"
    "      v_s_toggle_boot <= '1';\n"
    "      toggle_node(2) <= '0';\n"
    "      q <= '0';\n"
    "      toggle_node_starter <= '1';\n"
    "  elsif ( clk'event and clk='1') then\n"
    "     if(toggle_node_starter = '1') then\n"
    "        toggle_node(2) <= t;\n"
    "        toggle_node_starter <= '0';\n"
    "     else\n"
    "        v_s_r <= v_s_n;\n"
    "        v_s_toggle_boot <= v_s_togglebootplus;\n"
    "        toggle_node(2) <= t;\n"
    "     end if;\n"
    "  elsif ( clk'event and clk='0') then\n"
    "     if(toggle_node_starter = '0') then\n"
    "         q <= toggle_node(8);\n"
    "     end if;\n"
    "  end if;\n"
    "end process;\n"
    "\n"
    "-- actualisation\n"
    "      toggle_node(3) <= not toggle_node(2);\n"
    "      -- final output evaluation of q in process\n"
    "      toggle_node(5) <= not toggle_node(4);\n"
    "      toggle_node(18) <= (toggle_node(2) and toggle_node(8)) or (not toggle_node(2) and not toggle_node(8));\n"
    "      toggle_node(6) <= not toggle_node(18);\n"
    "      toggle_node(7) <= toggle_node(18);\n"
    "      toggle_node(9) <= not toggle_node(8);\n"
    "      toggle_node(10) <= toggle_node(19);\n"
    "      toggle_node(11) <= not toggle_node(10);\n"
    "      toggle_node(1) <= '1';\n"
    "      toggle_node(21) <= not toggle_node(1);\n"
    "      toggle_node(22) <= toggle_node(1);\n"
    "      v_s_n <= toggle_node(6);\n"
    "      toggle_node(8) <= v_s_r;\n"
    "      v_s_togglebootplus <= toggle_node(21);\n"
    "      toggle_node(19) <= v_s_toggle_boot;\n"
    "end toggle_a;\n"
    "\n";

// A valued input, a valued output that is its own memorised actual and
// the clock of a binding, constants.
const char* const sum_vhd =
    "-- VHDL generation by TARN version 3.4.3-4 from sum Zinc Kernel compiled code\n"
    "\n"
    "-- no vhdl_libs.inc file found ...\n"
    "\n"
    "entity sum is\n"
    "  port(\n"
    "       inc : in bit;\n"
    "       inc_val : in integer;\n"
    "       reset : in bit;\n"
    "       clk : in bit;\n"
    "       total : out bit;\n"
    "       total_val : out integer\n"
    "     );\n"
    "end sum;\n"
    "\n"
    "architecture sum_a of sum is\n"
    "\n"
    "TYPE array_sum_node IS ARRAY (20 downto 0) OF bit ;\n"
    "constant zero : integer := 0;\n"
    "constant limit : integer := 100;\n"
    "\n"
    "signal inc_locval : integer;\n"
    "signal v_s_sum_boot : bit;\n"
    "signal v_s_sumbootplus : bit;\n"
    "signal total_locval : integer;\n"
    "signal pre_total : bit;\n"
    "signal pre_total_locval : integer;\n"
    "signal sum_node_starter : bit;\n"
    "signal sum_node : array_sum_node;\n"
    "\n"
    "begin\n"
    "-- state and output computation\n"
    "process (reset,clk)\n"
    "begin\n"
    "  if (reset = '0') then\n"
    "      v_s_sum_boot <= '1';\n"
    "      pre_total <= '0';\n"
    "      pre_total_locval <= zero;\n"
    "      sum_node(2) <= '0';\n"
    "      inc_locval <= zero_integer;\n"
    "      total <= '0';\n"
    "      total_val <= zero_integer;\n"
    "      sum_node_starter <= '1';\n"
    "  elsif ( clk'event and clk='1') then\n"
    "     if(sum_node_starter = '1') then\n"
    "        sum_node(2) <= inc;\n"
    "        inc_locval <= inc_val;\n"
    "        sum_node_starter <= '0';\n"
    "     else\n"
    "        v_s_sum_boot <= v_s_sumbootplus;\n"
    "        pre_total <= sum_node(2);\n"
    "        pre_total_locval <= total_locval;\n"
    "        sum_node(2) <= inc;\n"
    "        inc_locval <= inc_val;\n"
    "     end if;\n"
    "  elsif ( clk'event and clk='0') then\n"
    "     if(sum_node_starter = '0') then\n"
    "         total <= sum_node(2);\n"
    "         total_val <= total_locval;\n"
    "     end if;\n"
    "  end if;\n"
    "end process;\n"
    "\n"
    "-- actualisation\n"
    "      sum_node(3) <= not sum_node(2);\n"
    "      -- final output evaluation of total in process\n"
    "      sum_node(5) <= not sum_node(2);\n"
    "      sum_node(6) <= sum_node(2);\n"
    "      sum_node(7) <= not sum_node(2);\n"
    "      sum_node(9) <= not sum_node(8);\n"
    "      sum_node(10) <= sum_node(16);\n"
    "      sum_node(11) <= not sum_node(10);\n"
    "      sum_node(1) <= '1';\n"
    "      sum_node(18) <= not sum_node(1);\n"
    "      sum_node(19) <= sum_node(1);\n"
    "      v_s_sumbootplus <= sum_node(18);\n"
    "      sum_node(16) <= v_s_sum_boot;\n"
    "      total_locval <=\n"
    "         add_sat(pre_total_locval, inc_locval, limit) when (sum_node(6) = '1') else\n"
    "           zero_integer;\n"
    "end sum_a;\n"
    "\n";

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

TEST(Vhdl, ExamplesWholeAsTheCommandWritesThem)
{
    for (const auto& c : {std::make_pair("toggle", toggle_vhd), std::make_pair("sum", sum_vhd)}) {
        scratch_dir s;
        tarn_output r = run_tarn_in(s.path, {example(s, c.first), "-vhdl"});
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(read_file(s.path + "/" + c.first + ".vhd"), c.second);
    }
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
    std::string expected = std::regex_replace(sum_vhd, std::regex("\\bbit\\b"), "std_logic");
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
