// The SystemC unit as g++ and libsystemc take it: every bundled example and
// five generated modules compile (or fail exactly as their text says) and,
// run inside sc_main on random traces, give the outputs of the module's C
// wherever the unit defines them; a valued module follows its C value for
// value. One wrapper, built once per test process, reacts on each rising
// edge of a clock through a small per-module adapter that calls
// <m>_automaton on the next line of a trace.

#include "tests/consumers/c_reference.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

#ifndef SYSTEMC_SWEEP
#define SYSTEMC_SWEEP 5
#endif

namespace {

using namespace c_reference;

bool have_systemc() { return run("test -f /usr/include/systemc.h") == 0; }

// The SystemC side, the same for every module: a reactor sensitive to the
// clock's rising edge that stops the simulation at the end of the trace.
const char* wrapper_text = R"(#include <systemc.h>
#include <cstdio>
void sc_reset_module();
bool sc_react(std::FILE* in, std::FILE* out);
SC_MODULE(reactor)
{
    sc_in<bool> clk;
    std::FILE *in = nullptr, *out = nullptr;
    SC_CTOR(reactor) { SC_METHOD(react); sensitive << clk.pos(); dont_initialize(); }
    void react() { if (!sc_react(in, out)) sc_stop(); }
};
int sc_main(int argc, char* argv[])
{
    sc_clock clk("clk", 10, SC_NS);
    reactor r("r");
    r.clk(clk);
    r.in = argc == 3 ? std::fopen(argv[1], "r") : nullptr;
    r.out = argc == 3 ? std::fopen(argv[2], "w") : nullptr;
    if (r.in == nullptr || r.out == nullptr)
        return 2;
    sc_reset_module();
    sc_start();
    std::fclose(r.out);
    return 0;
}
)";

struct compiled {
    int status;
    std::string errors;
};

// g++ on <m>_sc.cc alone, in the C locale so that messages quote plainly.
compiled compile_unit(const scratch_dir& s, const std::string& module, const std::string& flags = "")
{
    int status = run("cd '" + s.path + "' && LC_ALL=C g++ " + flags + " -c " + module + "_sc.cc -o " + module +
                     "_sc.o 2> gxx.txt");
    return {status, read_file(s.path + "/gxx.txt")};
}

// The nodes of an output's under wire read the output's pointer as an int.
// C only warns of it; C++ refuses the conversion, which -fpermissive turns
// back into a warning. True when that is the unit's only fault (and then
// its object is built with -fpermissive).
bool compile_with_known_fault(const scratch_dir& s, const std::string& module, bool* refused)
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

// Links the unit's object, an adapter that calls <m>_automaton on each
// line of the trace and writes the outputs on one line, and the wrapper;
// runs the simulation on the trace of `c`: the outputs at each step.
port_values simulate(const scratch_dir& s, const std::string& module, const c_run& c,
                     const std::string& user_files = "")
{
    std::string wrapper = built_once("wrapper.cc", wrapper_text, "-c", "wrapper.o");
    s.write("adapter.cc", "#include <stdio.h>\n#include \"" + module + "_sc.h\"\nvoid sc_reset_module() { " + module +
                              "_reset_automaton(); }\nbool sc_react(FILE* in, FILE* out)\n{\n" +
                              reaction_code(module, c.inputs, c.outputs) + "  return true;\n}\n");
    s.write("sc_trace.txt", trace_text(c.t, c.inputs.empty()));
    int built = wrapper.empty() ? 1
                                : run("cd '" + s.path + "' && LC_ALL=C g++ -o sc_sim adapter.cc " + module + "_sc.o " +
                                      user_files + " '" + wrapper + "' -lsystemc 2> link.txt");
    EXPECT_EQ(built, 0) << read_file(s.path + "/link.txt");
    if (built == 0) {
        EXPECT_EQ(run("cd '" + s.path + "' && SYSTEMC_DISABLE_COPYRIGHT_MESSAGE=1 timeout 30 ./sc_sim sc_trace.txt "
                      "sc_out.txt > sc_log.txt 2>&1"),
                  0)
            << read_file(s.path + "/sc_log.txt");
    }
    return read_values(read_file(s.path + "/sc_out.txt"), c.outputs, c.t.size());
}

// A pure module already in `s` (file <module>.zkc): its C and its SystemC
// unit written by tarn, both run on one random trace; every output that
// reads no memorised presence (which the unit never loads) must equal the
// C's at every step. Whether plain g++ refused the unit, and the outputs
// left out.
output_comparison check(const scratch_dir& s, const std::string& module, unsigned trace_seed, bool* refused,
                        std::set<std::string>* left_out)
{
    c_run c = run_with_c(s, module, {"-systemc"}, trace_seed);
    std::vector<c_port> sc_inputs, sc_outputs;
    EXPECT_TRUE(read_ports(read_file(s.path + "/" + module + "_sc.h"), module, sc_inputs, sc_outputs));
    EXPECT_EQ(sc_inputs, c.inputs);
    EXPECT_EQ(sc_outputs, c.outputs);
    if (!compile_with_known_fault(s, module, refused))
        return {};
    *left_out = facts_of(s.path + "/" + module + ".zkc").reading_pre;
    return compare_with_c(c.outputs, simulate(s, module, c), c.c, *left_out);
}

} // namespace

// toggle and watchdog read an output's pointer in the node of its under
// wire; blink's w is pre n and shift's q reads pre d, which this unit
// declares and never loads. Then generated modules of growing sizes, where
// most outputs read no memorised signal: the comparison is not empty.
TEST(SystemCConsumer, ExamplesAndGeneratedModulesFollowTheirCWhereDefined)
{
    if (!have_systemc())
        GTEST_SKIP() << "libsystemc-dev is not installed";
    const struct {
        const char* name;
        bool refused;                    // g++ refuses the literal text
        std::set<std::string> left_out;  // outputs that read a memorised signal
    } cases[] = {{"toggle", true, {}}, {"blink", false, {"w"}}, {"shift", false, {"q"}}, {"watchdog", true, {}}};
    for (const auto& x : cases) {
        SCOPED_TRACE(x.name);
        scratch_dir s;
        copy_example(s.path, x.name);
        bool refused = false;
        std::set<std::string> left_out;
        check(s, x.name, 21, &refused, &left_out);
        EXPECT_EQ(refused, x.refused);
        EXPECT_EQ(left_out, x.left_out);
    }
    std::size_t compared = 0, left = 0;
    for (int k = 1; k <= SYSTEMC_SWEEP && !testing::Test::HasFailure(); ++k) {
        std::string name = "gen" + std::to_string(k);
        SCOPED_TRACE(name);
        scratch_dir s;
        generate_module(s.path, name, 20 + k * 15, k);
        bool refused = false;
        std::set<std::string> left_out;
        compared += check(s, name, 200 + k, &refused, &left_out).compared;
        left += left_out.size();
    }
    EXPECT_GT(compared, 2 * std::size_t(SYSTEMC_SWEEP));
    EXPECT_LT(left, compared);
}

// Valued examples keep their memorised values in the pre copies that this
// unit never declares, and accu binds its outputs, which are then
// no parameters though their equations assign them: g++ finds exactly
// those names undeclared.
TEST(SystemCConsumer, ValuedExamplesReadWhatTheUnitNeverDeclares)
{
    const struct {
        std::string module;
        std::set<std::string> undeclared;
    } cases[] = {
        {"peak", {"pre_best_val"}},
        {"sum", {"pre_total_val"}},
        {"accu", {"total", "level", "pre_total_val"}},
    };
    for (const auto& x : cases) {
        SCOPED_TRACE(x.module);
        scratch_dir s;
        copy_example(s.path, x.module);
        ASSERT_EQ(run_tarn_in(s.path, {x.module + ".zkc", "-systemc"}).status, 0);
        s.write(x.module + "_typedecl.h", "typedef int integer;\n#define sup_integer(a, b) ((a) > (b))\n");
        compiled c = compile_unit(s, x.module);
        EXPECT_NE(c.status, 0);
        std::set<std::string> undeclared;
        std::smatch m;
        for (const std::string& e : error_messages(c.errors))
            if (std::regex_search(e, m, std::regex("'(\\w+)' was not declared in this scope")))
                undeclared.insert(m[1]);
        EXPECT_EQ(undeclared, x.undeclared) << c.errors;
        EXPECT_EQ(error_messages(c.errors).size(), x.undeclared.size()) << c.errors;
    }
}

// A valued input, a valued output whose clock has one or two bindings (a
// method call on the input's value, a constant), no memorised signal:
// y = x or z; y_val = twice(x_val) when x, else k when z and the second
// binding is there. Both run on one random trace, an output's value being
// -1 before each reaction so that what the reaction leaves there shows.
//
// With one binding the value of the clock is the C's value for value
// wherever the clock is present. With two bindings on one clock this unit
// takes the first whose bound signal is present (the chain of its clock
// test), whereas the C assigns after both equations of each bound signal,
// each guarded by its own variable, so that the last binding of the
// reaction always wins. Where the clock is absent C writes the type's
// zero and this unit leaves the value untouched.
TEST(SystemCConsumer, ValuedModuleFollowsItsCUnlessTwoBindingsShareAClock)
{
    if (!have_systemc())
        GTEST_SKIP() << "libsystemc-dev is not installed";
    for (bool second : {false, true}) {
        SCOPED_TRACE(second ? "two bindings" : "one binding");
        scratch_dir s;
        s.write("twice.zkc",
                "module: twice 0 0 input: x : integer z ; output: y : integer ; local: f1 f2 ;\n"
                "connexion: SETtwice RESETtwice RTLtwice;\n"
                "equation_def:\n5\n0: 0:1:2,1\n1: -1:-3:-3,1\n2: 2:1:1,-1\n3: 0:1:1,-1\n4: 0:1:2,-1\n"
                "expressions:\n1 1 4:0,1,(0 2 )\n1 1 5:0,-1,(0 2 )\n1 1 6:3,1,(0 )\n1 1 7:3,-1,(0 )\n"
                "1 1 8:4,-1,(0 2 )\n1 1 9:4,1,(0 2 )\nend:\nbinding: (6, 7): value: 0 clock: (4, 5);\n" +
                    std::string(second ? "(8, 9): value: 1 clock: (4, 5);\n" : "") +
                    "end: evaltable: 0: %0(2); 1: $0; 2: %%14(0, 1); end:\n"
                    "data: type: integer; method: integer twice(integer);\n"
                    "constant: integer k :c= \"7\" :default= \"7\"; end:\n");
        const std::string user = "const integer zero_integer = 0;\ninteger twice(integer v) { return 2 * v; }\n";
        s.write("twice_typedecl.h", "typedef int integer;\n");
        s.write("user_sc.cc", "#include \"twice_sc.h\"\n" + user);
        c_run r = run_with_c(s, "twice", {"-systemc"}, 3, write_c_user(s, "twice", user), 40);
        // Each constant's name is traced on the error stream.
        EXPECT_NE(r.made.err.find("\nk\n"), std::string::npos) << r.made.err;
        compiled unit = compile_unit(s, "twice");
        EXPECT_EQ(unit.status, 0) << unit.errors;
        port_values sc = simulate(s, "twice", r, "user_sc.cc");
        int absent = 0, differ = 0;
        for (std::size_t k = 0; k < r.t.size(); ++k) {
            int x = r.t[k][0], xv = r.t[k][1], z = r.t[k][2], cy = r.c["y"][k], cv = r.c["y_val"][k];
            EXPECT_EQ(cy, x || z);
            EXPECT_EQ(sc["y"][k], cy);
            if (cy) {
                EXPECT_EQ(cv, second ? 7 : 2 * (x ? xv : 0));
                EXPECT_EQ(sc["y_val"][k], x ? 2 * xv : second ? 7 : 0);
                differ += sc["y_val"][k] != cv;
            } else {
                EXPECT_EQ(cv, 0);
                EXPECT_EQ(sc["y_val"][k], -1);
                ++absent;
            }
        }
        EXPECT_GT(absent, 5);
        EXPECT_TRUE(!second || differ > 5) << differ;
    }
}
