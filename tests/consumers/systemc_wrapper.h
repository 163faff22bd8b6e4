// The SystemC unit compiled with g++ against libsystemc and run inside
// sc_main: one wrapper, built once per test process, reacts on each rising
// edge of a clock through a small per-module adapter that calls
// <m>_automaton on the next line of a trace.
#ifndef TARN_TESTS_CONSUMERS_SYSTEMC_WRAPPER_H
#define TARN_TESTS_CONSUMERS_SYSTEMC_WRAPPER_H

#include "tests/consumers/c_reference.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace systemc_wrapper {

using namespace c_reference;

inline bool have_systemc() { return run("test -f /usr/include/systemc.h") == 0; }

// The SystemC side, the same for every module: a reactor sensitive to the
// clock's rising edge that stops the simulation at the end of the trace.
inline const char* wrapper_text = R"(#include <systemc.h>
#include <cstdio>

void sc_reset_module();
bool sc_react(std::FILE* in, std::FILE* out);

SC_MODULE(reactor)
{
    sc_in<bool> clk;
    std::FILE* in = nullptr;
    std::FILE* out = nullptr;
    SC_CTOR(reactor)
    {
        SC_METHOD(react);
        sensitive << clk.pos();
        dont_initialize();
    }
    void react()
    {
        if (!sc_react(in, out))
            sc_stop();
    }
};

int sc_main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;
    sc_clock clk("clk", 10, SC_NS);
    reactor r("r");
    r.clk(clk);
    r.in = std::fopen(argv[1], "r");
    r.out = std::fopen(argv[2], "w");
    if (r.in == nullptr || r.out == nullptr)
        return 2;
    sc_reset_module();
    sc_start();
    std::fclose(r.out);
    return 0;
}
)";

inline std::string wrapper_object() { return built_once("wrapper.cc", wrapper_text, "-c", "wrapper.o"); }

// The adapter of a module: one line of the trace per reaction, the
// outputs written on one line.
inline std::string adapter(const std::string& module, const std::vector<c_port>& inputs,
                           const std::vector<c_port>& outputs)
{
    return "#include <stdio.h>\n#include \"" + module + "_sc.h\"\nvoid sc_reset_module() { " + module +
           "_reset_automaton(); }\nbool sc_react(FILE* in, FILE* out)\n{\n" + reaction_code(module, inputs, outputs) +
           "  return true;\n}\n";
}

struct compiled {
    int status;
    std::string errors;
};

// g++ on <m>_sc.cc alone, in the C locale so that messages quote plainly.
inline compiled compile_unit(const scratch_dir& s, const std::string& module, const std::string& flags = "")
{
    int status = run("cd '" + s.path + "' && LC_ALL=C g++ " + flags + " -c " + module + "_sc.cc -o " + module +
                     "_sc.o 2> gxx.txt");
    return {status, read_file(s.path + "/gxx.txt")};
}

// The names g++ finds undeclared.
inline std::set<std::string> undeclared(const std::string& errors)
{
    std::set<std::string> names;
    std::smatch m;
    for (const std::string& e : error_messages(errors))
        if (std::regex_search(e, m, std::regex("'(\\w+)' was not declared in this scope")))
            names.insert(m[1]);
    return names;
}

// The nodes of an output's under wire read the output's pointer as an int.
// C only warns of it; C++ refuses the conversion, which -fpermissive turns
// back into a warning. True when that is the unit's only fault (and then
// its object is built with -fpermissive).
inline bool compile_with_known_fault(const scratch_dir& s, const std::string& module, bool* refused)
{
    compiled plain = compile_unit(s, module);
    *refused = plain.status != 0;
    if (plain.status == 0)
        return true;
    std::vector<std::string> messages = error_messages(plain.errors);
    EXPECT_FALSE(messages.empty()) << plain.errors;
    for (const std::string& e : messages)
        EXPECT_EQ(e, "invalid conversion from 'int*' to 'int' [-fpermissive]") << plain.errors;
    compiled permissive = compile_unit(s, module, "-fpermissive");
    EXPECT_EQ(permissive.status, 0) << permissive.errors;
    return permissive.status == 0 && !messages.empty();
}

// Links the unit's object, the adapter and the wrapper, and runs the
// simulation on `trace_text`; the lines written by the adapter.
inline std::string simulate(const scratch_dir& s, const std::string& module, const std::string& adapter,
                            const std::string& trace_text, const std::string& user_files = "")
{
    std::string wrapper = wrapper_object();
    if (wrapper.empty())
        return "";
    s.write("adapter.cc", adapter);
    s.write("sc_trace.txt", trace_text);
    int built = run("cd '" + s.path + "' && LC_ALL=C g++ -o sc_sim adapter.cc " + module + "_sc.o " + user_files +
                    " '" + wrapper + "' -lsystemc 2> link.txt");
    EXPECT_EQ(built, 0) << read_file(s.path + "/link.txt");
    if (built != 0)
        return "";
    int status = run("cd '" + s.path +
                     "' && SYSTEMC_DISABLE_COPYRIGHT_MESSAGE=1 timeout 30 ./sc_sim sc_trace.txt sc_out.txt"
                     " > sc_log.txt 2>&1");
    EXPECT_EQ(status, 0) << read_file(s.path + "/sc_log.txt");
    return read_file(s.path + "/sc_out.txt");
}

struct sc_run {
    std::set<std::string> undefined_outputs; // outputs left out of the comparison
    std::size_t compared = 0;                // outputs compared with the C
    bool refused = false;                    // plain g++ refused the unit
};

// A pure module already in `s` (file <module>.zkc): its C and its SystemC
// unit written by tarn, both run on one random trace; every output that
// reads no memorised presence (which the unit never loads) must equal the
// C's at every step.
inline sc_run compare_with_c(const scratch_dir& s, const std::string& module, unsigned trace_seed)
{
    sc_run result;
    c_run c = run_with_c(s, module, {"-systemc"}, trace_seed);
    std::vector<std::string> inputs = names(c.inputs), outputs = names(c.outputs), sc_inputs, sc_outputs;
    EXPECT_TRUE(read_prototype(read_file(s.path + "/" + module + "_sc.h"), module, sc_inputs, sc_outputs));
    EXPECT_EQ(sc_inputs, inputs);
    EXPECT_EQ(sc_outputs, outputs);
    if (!compile_with_known_fault(s, module, &result.refused))
        return result;
    port_values sc = read_values(simulate(s, module, adapter(module, c.inputs, c.outputs), trace_text(c.t, inputs.empty())),
                                 c.outputs, c.t.size());
    std::set<std::string> unset = facts_of(s.path + "/" + module + ".zkc").reading_pre;
    for (const std::string& o : outputs) {
        if (unset.count(o) != 0) {
            result.undefined_outputs.insert(o);
            continue;
        }
        EXPECT_EQ(sc[o], c.c[o]) << "output " << o;
        ++result.compared;
    }
    return result;
}

// `count` generated modules, the k-th (from 1) of `first + k * growth`
// equations, each compared with its C on its own trace.
inline void sweep(int count, long first, long growth, int seed_base)
{
    std::size_t compared = 0, undefined = 0;
    for (int k = 1; k <= count; ++k) {
        std::string name = "gen" + std::to_string(seed_base + k);
        SCOPED_TRACE(name);
        scratch_dir s;
        place_module(s, name, first + k * growth, seed_base + k);
        sc_run r = compare_with_c(s, name, 200 + seed_base + k);
        compared += r.compared;
        undefined += r.undefined_outputs.size();
        if (testing::Test::HasFailure())
            return;
    }
    // Most outputs read no memorised signal: the comparison is not empty.
    EXPECT_GT(compared, 2 * std::size_t(count));
    EXPECT_LT(undefined, compared);
}

} // namespace systemc_wrapper

#endif
