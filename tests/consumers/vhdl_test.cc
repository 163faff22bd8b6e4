// The VHDL that tarn writes, analysed, elaborated and simulated by ghdl in
// both forms (bit and std_logic), reaction by reaction against the C of
// the same module; and the known ways in which the text departs from the C
// or is refused by ghdl, each on the smallest module that shows it. The
// testbench resets the entity, then per reaction sets the inputs, gives a
// rising and a falling edge and prints the outputs.

#include "tests/consumers/c_reference.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#ifndef VHDL_SWEEP
#define VHDL_SWEEP 5
#endif

namespace {

using namespace c_reference;

// The libraries the generated text needs: std_logic for the Altera form,
// and the package of the user's types and methods when there is one.
std::string libs(bool altera, const std::string& package = "")
{
    std::string text;
    if (altera)
        text += "library ieee;\nuse ieee.std_logic_1164.all;\n";
    if (!package.empty())
        text += "use work." + package + ".all;\n";
    return text;
}

std::string bit_type(bool altera) { return altera ? "std_logic" : "bit"; }

// The testbench entity "tb": each signal is "tb_" and the port's name, a
// presence of the variant's bit type, a value an integer. One line per
// reaction, the outputs in order, a presence as 1, 0 or -1 for X.
std::string testbench(const std::string& module, bool altera, const std::string& package,
                      const std::vector<c_port>& inputs, const std::vector<c_port>& outputs, const trace& t)
{
    std::string bit = bit_type(altera);
    std::ostringstream tb;
    tb << libs(altera, package) << "use std.textio.all;\n"
       << "entity tb is\nend tb;\n\narchitecture bench of tb is\n"
       << "  signal tb_reset, tb_clk : " << bit << " := '0';\n";
    for (const std::vector<c_port>* list : {&inputs, &outputs})
        for (const c_port& p : *list)
            tb << "  signal tb_" << p.name << " : " << (p.valued ? "integer" : bit) << ";\n";
    tb << "begin\n  dut: entity work." << module << " port map (";
    for (const std::vector<c_port>* list : {&inputs, &outputs})
        for (const c_port& p : *list)
            tb << p.name << " => tb_" << p.name << ", ";
    tb << "reset => tb_reset, clk => tb_clk);\n"
       << "  run: process\n    variable l : line;\n  begin\n"
       << "    tb_reset <= '0';\n    wait for 5 ns;\n    tb_reset <= '1';\n    wait for 5 ns;\n";
    for (const auto& step : t) {
        for (std::size_t i = 0; i < inputs.size(); ++i)
            tb << "    tb_" << inputs[i].name << " <= "
               << (inputs[i].valued ? std::to_string(step[i]) : step[i] != 0 ? "'1'" : "'0'") << ";\n";
        tb << "    wait for 5 ns;\n    tb_clk <= '1';\n    wait for 5 ns;\n    tb_clk <= '0';\n    wait for 5 ns;\n";
        for (const c_port& p : outputs)
            if (!p.valued)
                tb << "    if tb_" << p.name << " = '1' then write(l, string'(\"1 \")); elsif tb_" << p.name
                   << " = '0' then write(l, string'(\"0 \")); else write(l, string'(\"-1 \")); end if;\n";
            else
                tb << "    write(l, integer'image(tb_" << p.name << ") & \" \");\n";
        tb << "    writeline(output, l);\n";
    }
    tb << "    wait;\n  end process;\nend bench;\n";
    return tb.str();
}

struct ghdl_run {
    int status;
    std::string messages;  // what ghdl wrote on both streams
    port_values outputs;   // per output, the printed value at each step (-1 for X)
};

// Analyses `files` (in order, in `dir`) into a work library of its own,
// elaborates the testbench and runs it. A failed analysis or elaboration
// stops there with its status and messages.
ghdl_run simulate(const std::string& dir, const std::string& work, const std::vector<std::string>& files,
                  const std::vector<c_port>& outputs, std::size_t reactions)
{
    std::string opts = " --workdir=" + work + " ", log = work + ".txt", sources;
    for (const std::string& f : files)
        sources += " " + f;
    int status = run("cd '" + dir + "' && mkdir -p " + work + " && ghdl -a" + opts + sources + " > " + log +
                     " 2>&1 && ghdl -e" + opts + "tb >> " + log + " 2>&1 && ghdl -r" + opts + "tb > " + work +
                     "_out.txt 2>> " + log);
    return {status, read_file(dir + "/" + log),
            read_values(read_file(dir + "/" + work + "_out.txt"), outputs, reactions)};
}

// ghdl's refusal of a text that reads undeclared signals: one message
// "<file>:<line>:<column>: no declaration for "<name>"" per reading, each
// followed by the line and a caret, naming all of `names` and only them.
void expect_undeclared(const ghdl_run& r, const std::string& file, const std::set<std::string>& names)
{
    EXPECT_NE(r.status, 0);
    std::set<std::string> named;
    std::istringstream lines(r.messages);
    std::string line;
    std::regex message(std::regex_replace(file, std::regex("\\."), "\\.") +
                       ":\\d+:\\d+: no declaration for \"(\\w+)\"");
    int count = 0;
    while (std::getline(lines, line)) {
        std::smatch m;
        if (count++ % 3 != 0)
            continue;  // the quoted line and its caret
        ASSERT_TRUE(std::regex_match(line, m, message)) << r.messages;
        named.insert(m[1]);
    }
    EXPECT_EQ(named, names) << r.messages;
}

// The same text with the missing declarations added after the starter's,
// so that the rest of it can still be simulated.
void declare(const std::string& path, const std::string& module, const std::set<std::string>& names,
             const std::string& bit)
{
    std::string text = read_file(path);
    std::string starter = "signal " + module + "_node_starter : " + bit + ";\n";
    std::size_t at = text.find(starter);
    ASSERT_NE(at, std::string::npos);
    std::string added;
    for (const std::string& n : names)
        added += "signal " + n + " : " + bit + ";\n";
    text.insert(at + starter.size(), added);
    std::ofstream(path) << text;
}

// The user's side of the valued modules: in C the type integer and its
// operations as the examples ship them, zero and the methods; in VHDL a
// package that vhdl_libs.inc brings in.
const char* const c_user_code = "const integer zero_integer = 0;\n"
                                "integer add_sat(integer a, integer b, integer l) { return a + b > l ? l : a + b; }\n"
                                "integer bump(integer a, integer b) { return a + b; }\n";
const char* const vhdl_user_package = R"(package zk_user is
  constant zero_integer : integer := 0;
  function add_sat(a, b, l : integer) return integer;
  function bump(a, b : integer) return integer;
end zk_user;
package body zk_user is
  function add_sat(a, b, l : integer) return integer is begin
    if a + b > l then return l; else return a + b; end if; end add_sat;
  function bump(a, b : integer) return integer is begin return a + b; end bump;
end zk_user;
)";

// What one module gave: its trace, the outputs of its C and those of its
// VHDL, and how many outputs were compared.
struct module_run {
    trace t;
    port_values c, vhdl;
    module_facts facts;
    output_comparison compared;
};

// `module`.zkc in `s`: its C and its VHDL (the Altera form if asked),
// simulated on one random trace, with the user's side if the module is
// `valued`. The VHDL must follow the C on every output that does not read a
// memorised presence, those in `left_out` aside. A text that reads
// undeclared memorised locals must be refused by ghdl for them, and is
// then simulated with their declarations added.
module_run check(const scratch_dir& s, const std::string& module, unsigned trace_seed, bool altera,
                 bool valued = false, std::set<std::string> left_out = {})
{
    SCOPED_TRACE(module + (altera ? " (altera)" : ""));
    module_run r;
    std::vector<std::string> vhdl_files{module + ".vhd", "tb.vhd"};
    std::string package = valued ? "zk_user" : "";
    if (valued) {
        s.write("zk_user.vhd", vhdl_user_package);
        vhdl_files.insert(vhdl_files.begin(), "zk_user.vhd");
    }
    s.write("vhdl_libs.inc", libs(altera, package));
    c_run ran = run_with_c(s, module, {altera ? "-altera" : "-vhdl"}, trace_seed,
                           valued ? write_c_user(s, module, c_user_code) : "");
    if (ran.outputs.empty())
        return r;
    r.t = ran.t;
    r.c = ran.c;
    s.write("tb.vhd", testbench(module, altera, package, ran.inputs, ran.outputs, r.t));
    std::string bit = bit_type(altera);
    r.facts = facts_of(s.path + "/" + module + ".zkc");
    ghdl_run ghdl = simulate(s.path, bit, vhdl_files, ran.outputs, r.t.size());
    if (!r.facts.undeclared.empty()) {
        expect_undeclared(ghdl, module + ".vhd", r.facts.undeclared);
        declare(s.path + "/" + module + ".vhd", module, r.facts.undeclared, bit);
        ghdl = simulate(s.path, bit + "_declared", vhdl_files, ran.outputs, r.t.size());
    }
    EXPECT_EQ(ghdl.status, 0) << ghdl.messages;
    r.vhdl = ghdl.outputs;
    left_out.insert(r.facts.reading_pre.begin(), r.facts.reading_pre.end());
    r.compared = compare_with_c(ran.outputs, r.vhdl, r.c, left_out);
    return r;
}

} // namespace

// The examples, sum with a valued input and a valued output fed through its
// clock by a binding over the memorised value of the output (both
// compared), and generated modules of several sizes, in both forms: every
// text analysed and elaborated (or refused for its undeclared memorised
// locals only).
TEST(VhdlConsumer, ExamplesAndGeneratedModulesFollowTheC)
{
    if (!have("ghdl"))
        GTEST_SKIP() << "ghdl is not installed";
    for (std::string name : {"toggle", "shift", "watchdog", "sum"})
        for (bool altera : {false, true}) {
            scratch_dir s;
            copy_example(s.path, name);
            module_run r = check(s, name, name == "sum" ? 3 : 7, altera, name == "sum");
            if (name == "sum") {
                EXPECT_EQ(r.compared.compared, 2);
            }
            EXPECT_TRUE(r.compared.compared == 0 || r.compared.changes > 0) << name;
        }
    const long sizes[] = {20, 60, 150, 300, 600, 12, 900};
    output_comparison all;
    for (int seed = 1; seed <= VHDL_SWEEP; ++seed) {
        std::string name = "gen" + std::to_string(seed);
        scratch_dir s;
        generate_module(s.path, name, sizes[(seed - 1) % 7], seed);
        output_comparison r = check(s, name, 100 + seed, seed % 2 == 0).compared;
        all.compared += r.compared;
        all.changes += r.changes;
    }
    EXPECT_GT(all.compared, 2 * VHDL_SWEEP);
    EXPECT_GT(all.changes, 2 * VHDL_SWEEP);
}

// peak with a value for every constant in every language (its offset is
// the user's and has none, its threshold differs in C): tests decided from
// data, a valued local clock memorised, and an output clock.
//
// The C assigns a clocked value after each equation of the bound signal,
// over and under, each guarded by its own variable; the VHDL guards it by
// the bound signal's presence only. The local best is the clock of two
// bindings, up (a new maximum) and keep (not up): in the C the last one,
// keep, assigns it at every reaction, so best stays at its initial zero
// and every present sample above zero is a peak; in the VHDL best follows
// the maximum of the present samples, and a peak is a new maximum. alarm
// reads no clocked value and follows the C.
TEST(VhdlConsumer, ValuedTestsFollowTheCAndClockedValuesAreGuardedByPresence)
{
    if (!have("ghdl"))
        GTEST_SKIP() << "ghdl is not installed";
    for (bool altera : {false, true}) {
        scratch_dir s;
        copy_example(s.path, "peak");
        ASSERT_EQ(run("cd '" + s.path + "' && sed -e 's/^module: peak /module: peakv /' "
                      "-e 's/RESETpeak/RESETpeakv/; s/SETpeak/SETpeakv/; s/RTLpeak/RTLpeakv/' "
                      "-e 's/integer offset;/integer offset :default= \"1000\";/' "
                      "-e 's/:c= \"50\" :default= \"7\"/:default= \"7\"/' peak.zkc > peakv.zkc"),
                  0);
        module_run r = check(s, "peakv", 4, altera, true, {"peak", "peak_val"});
        ASSERT_EQ(r.t.size(), std::size_t(steps));
        // The C's side, best kept at zero, is pinned by the C's own test
        // of peak (Consumers.ValuedTestsAndLocalClockFollowTheModule).
        std::vector<int> vhdl_peak, vhdl_val;
        int best = 0;
        for (const auto& step : r.t) {
            vhdl_peak.push_back(step[0] && step[1] > best);
            vhdl_val.push_back(vhdl_peak.back() ? step[1] + 1000 : 0);
            if (vhdl_peak.back())
                best = step[1];
        }
        EXPECT_EQ(r.vhdl["peak"], vhdl_peak);
        EXPECT_EQ(r.vhdl["peak_val"], vhdl_val);
        EXPECT_NE(r.c["peak"], vhdl_peak);
    }
}

// The known departures of the text, on the smallest modules that show
// them. blink: "on" is a reserved word of VHDL, refused where the port
// list declares it. quiet: without outputs the port list ends on the ";"
// of clk. cmp: a comparison is a conditional expression of type bit, and
// as the operand of another operator cannot be parsed; t = (a > one) or
// (a < one).
TEST(VhdlConsumer, KnownDeparturesAreRefused)
{
    if (!have("ghdl"))
        GTEST_SKIP() << "ghdl is not installed";
    const struct {
        std::string module, text; // the example when the text is empty
        const char* message;      // the first message: its line, the quoted source, the caret
    } cases[] = {
        {"blink", "",
         "blink.vhd:10:8: interface declaration expected\n"
         "       on : out bit;\n"
         "       ^\n"},
        {"quiet",
         "module: quiet 0 0 input: a ; connexion: SETquiet RESETquiet RTLquiet;\n"
         "equation_def:\n1\n0: -1:-3:-3,1\nexpressions:\nend:\n",
         "quiet.vhd:9:20: extra ';' at end of interface list\n"
         "       clk : in bit;\n"
         "                   ^\n"},
        {"cmp",
         "module: cmp 0 0 input: a : integer ; output: q ; local: t : integer ; connexion: SETcmp RESETcmp RTLcmp;\n"
         "equation_def:\n2\n0: 4:1:1,-1\n1: -1:-3:-3,1\n"
         "expressions:\n1 1 2:0,1,(4 )\n1 1 3:0,-1,(4 )\n1 1 4:-3,-3,(0 1 )\n1 1 5:-3,-3,(0 1 )\nend:\n"
         "binding: (4, 5): value: 3; end:\n"
         "evaltable: 0: %%14(0, 1); 1: %%12(0, 2); 2: $0; 3: %%6(1, 4); 4: %%10(0, 2); end:\n"
         "data: type: integer; constant: integer one :default= \"1\"; end:\n",
         "cmp.vhd:67:27: '=>' is expected instead of 'when'\n"
         "      cmp_node(6) <= ('1' when (a_locval > one) else '0' or '1' when (a_locval < one) else '0');\n"
         "                          ^\n"},
    };
    for (const auto& x : cases) {
        SCOPED_TRACE(x.module);
        scratch_dir s;
        place_module(s, x.module, x.text);
        std::vector<std::string> files{x.module + ".vhd", "tb.vhd"};
        if (x.module == "cmp") {
            s.write("vhdl_libs.inc", libs(false, "zk_user"));
            s.write("zk_user.vhd", vhdl_user_package);
            files.insert(files.begin(), "zk_user.vhd");
        }
        ASSERT_EQ(run_tarn_in(s.path, {x.module + ".zkc", "-vhdl"}).status, 0);
        s.write("tb.vhd", "entity tb is\nend tb;\narchitecture bench of tb is\nbegin\nend bench;\n");
        ghdl_run r = simulate(s.path, "bit", files, {}, 0);
        EXPECT_NE(r.status, 0);
        std::istringstream lines(r.messages);
        std::string first, line;
        for (int k = 0; k < 3 && std::getline(lines, line); ++k)
            first += line + "\n";
        EXPECT_EQ(first, x.message);
    }
}

// A pure local read by a memorised signal is no longer listed once the
// module is finalised: the text reads it undeclared. Declared by hand, the
// text runs, and shows the other departure: the presence of a memorised
// signal never reaches the node array, so q = pre m (m following the input
// a) stays at the array's initial value where the C follows a one reaction
// late.
TEST(VhdlConsumer, AMemorisedLocalIsUndeclaredAndAPresenceNeverLoaded)
{
    if (!have("ghdl"))
        GTEST_SKIP() << "ghdl is not installed";
    for (bool altera : {false, true}) {
        scratch_dir s;
        s.write("mem.zkc", "module: mem 0 0 input: a ; output: q ; local: m ; memorized: p m ;\n"
                           "connexion: SETmem RESETmem RTLmem;\n"
                           "equation_def:\n3\n0: 0:1:1,-1\n1: -1:-3:-3,1\n2: 6:1:1,-1\n"
                           "expressions:\n1 1 2:2,1,(6 )\n1 1 3:2,-1,(6 )\n1 1 4:0,1,(0 )\n1 1 5:0,-1,(0 )\nend:\n");
        module_run r = check(s, "mem", 5, altera);
        EXPECT_EQ(r.facts.undeclared, std::set<std::string>{"v_s_m"});
        EXPECT_EQ(r.facts.reading_pre, std::set<std::string>{"q"});
        EXPECT_EQ(r.c["q"], first_input_delayed(r.t));
        // bit starts at '0'; std_logic at 'U', printed -1.
        EXPECT_EQ(r.vhdl["q"], std::vector<int>(steps, altera ? -1 : 0));
    }
}
