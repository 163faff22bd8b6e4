// The VHDL of a module simulated by ghdl beside its C: a testbench that
// resets the entity, then per reaction sets the inputs, gives a rising and
// a falling edge and prints the outputs; the outputs of the module's C on
// the same trace are the reference.
#ifndef TARN_TESTS_CONSUMERS_VHDL_BENCH_H
#define TARN_TESTS_CONSUMERS_VHDL_BENCH_H

#include "tests/consumers/c_reference.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vhdl_bench {

using namespace c_reference;

// The libraries the generated text needs: std_logic for the Altera form,
// and the package of the user's types and methods when there is one.
inline std::string libs(bool altera, const std::string& package = "")
{
    std::string text;
    if (altera)
        text += "library ieee;\nuse ieee.std_logic_1164.all;\n";
    if (!package.empty())
        text += "use work." + package + ".all;\n";
    return text;
}

inline std::string bit_type(bool altera) { return altera ? "std_logic" : "bit"; }

// The testbench entity "tb": each signal is "tb_" and the port's name, a
// presence of the variant's bit type, a value an integer. One line per
// reaction, the outputs in order, a presence as 1, 0 or -1 for X.
inline std::string testbench(const std::string& module, bool altera, const std::string& package,
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
inline ghdl_run simulate(const std::string& dir, const std::string& work, const std::vector<std::string>& files,
                         const std::vector<c_port>& outputs, std::size_t reactions)
{
    ghdl_run r{0, "", {}};
    std::string opts = " --workdir=" + work + " ";
    std::string cd = "cd '" + dir + "' && mkdir -p " + work + " && ";
    std::string analyse = "ghdl -a" + opts;
    for (const std::string& f : files)
        analyse += " " + f;
    r.status = run(cd + analyse + " > " + work + ".txt 2>&1");
    if (r.status == 0)
        r.status = run(cd + "ghdl -e" + opts + "tb >> " + work + ".txt 2>&1");
    r.messages = read_file(dir + "/" + work + ".txt");
    if (r.status != 0)
        return r;
    r.status = run(cd + "ghdl -r" + opts + "tb > " + work + "_out.txt 2>> " + work + ".txt");
    r.messages = read_file(dir + "/" + work + ".txt");
    r.outputs = read_values(read_file(dir + "/" + work + "_out.txt"), outputs, reactions);
    return r;
}

// ghdl's refusal of a text that reads undeclared signals: one message
// "<file>:<line>:<column>: no declaration for "<name>"" per reading, each
// followed by the line and a caret, naming all of `names` and only them.
inline void expect_undeclared(const ghdl_run& r, const std::string& file, const std::set<std::string>& names)
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
inline void declare(const std::string& path, const std::string& module, const std::set<std::string>& names,
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

// The user's side of a valued module: the header of its type and its
// code in C, and the package "zk_user" that brings both to the VHDL.
struct user_side {
    std::string c_header, c_code, vhdl_package;
};

// What one module gave: its trace, the outputs of its C and those of its
// VHDL.
struct module_run {
    trace t;
    port_values c, vhdl;
    module_facts facts;
    ghdl_run ghdl;
    int compared = 0;  // outputs compared
    int changes = 0;   // changes of their values along the trace
};

// `module`.zkc in `s`: its C and its VHDL (the Altera form if asked),
// simulated on one random trace, with the user's side if the module is
// valued. The VHDL must follow the C on every output that does not read a
// memorised presence, those in `left_out` aside. A text that reads
// undeclared memorised locals must be refused by ghdl for them, and is
// then simulated with their declarations added.
inline module_run check(const scratch_dir& s, const std::string& module, unsigned trace_seed, bool altera,
                        const user_side* user = nullptr, const std::set<std::string>& left_out = {})
{
    SCOPED_TRACE(module + (altera ? " (altera)" : ""));
    module_run r;
    std::vector<std::string> vhdl_files{module + ".vhd", "tb.vhd"};
    std::string package, c_files;
    if (user != nullptr) {
        package = "zk_user";
        s.write("zk_user.vhd", user->vhdl_package);
        s.write("C_data_user_integer.h", user->c_header);
        s.write("user.c", "#include \"" + module + ".h\"\n" + user->c_code);
        vhdl_files.insert(vhdl_files.begin(), "zk_user.vhd");
        c_files = "user.c";
    }
    s.write("vhdl_libs.inc", libs(altera, package));
    c_run ran = run_with_c(s, module, {altera ? "-altera" : "-vhdl"}, trace_seed, c_files);
    const std::vector<c_port>&inputs = ran.inputs, &outputs = ran.outputs;
    if (outputs.empty())
        return r;
    r.t = ran.t;
    r.c = ran.c;
    s.write("tb.vhd", testbench(module, altera, package, inputs, outputs, r.t));
    std::string bit = bit_type(altera);
    r.facts = facts_of(s.path + "/" + module + ".zkc");
    r.ghdl = simulate(s.path, bit, vhdl_files, outputs, r.t.size());
    if (!r.facts.undeclared.empty()) {
        expect_undeclared(r.ghdl, module + ".vhd", r.facts.undeclared);
        declare(s.path + "/" + module + ".vhd", module, r.facts.undeclared, bit);
        r.ghdl = simulate(s.path, bit + "_declared", vhdl_files, outputs, r.t.size());
    }
    EXPECT_EQ(r.ghdl.status, 0) << r.ghdl.messages;
    r.vhdl = r.ghdl.outputs;
    for (const c_port& o : outputs)
        if (r.facts.reading_pre.count(o.name) == 0 && left_out.count(o.name) == 0) {
            EXPECT_EQ(r.vhdl[o.name], r.c[o.name]) << "output " << o.name;
            ++r.compared;
            r.changes += changes({{o.name, r.c[o.name]}});
        }
    return r;
}

} // namespace vhdl_bench

#endif
