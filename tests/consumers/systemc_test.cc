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

std::string wrapper_object() { return built_once("wrapper.cc", wrapper_text, "-c", "wrapper.o"); }

// The adapter of a module: one line of the trace per reaction, the
// outputs written on one line.
std::string adapter(const std::string& module, const std::vector<c_port>& inputs,
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
compiled compile_unit(const scratch_dir& s, const std::string& module, const std::string& flags = "")
{
    int status = run("cd '" + s.path + "' && LC_ALL=C g++ " + flags + " -c " + module + "_sc.cc -o " + module +
                     "_sc.o 2> gxx.txt");
    return {status, read_file(s.path + "/gxx.txt")};
}

// The names g++ finds undeclared.
std::set<std::string> undeclared(const std::string& errors)
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

// Links the unit's object, the adapter and the wrapper, and runs the
// simulation on `trace_text`; the lines written by the adapter.
std::string simulate(const scratch_dir& s, const std::string& module, const std::string& adapter,
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
sc_run compare_with_c(const scratch_dir& s, const std::string& module, unsigned trace_seed)
{
    sc_run result;
    c_run c = run_with_c(s, module, {"-systemc"}, trace_seed);
    std::vector<c_port> sc_inputs, sc_outputs;
    EXPECT_TRUE(read_ports(read_file(s.path + "/" + module + "_sc.h"), module, sc_inputs, sc_outputs));
    EXPECT_EQ(sc_inputs, c.inputs);
    EXPECT_EQ(sc_outputs, c.outputs);
    if (!compile_with_known_fault(s, module, &result.refused))
        return result;
    std::string printed =
        simulate(s, module, adapter(module, c.inputs, c.outputs), trace_text(c.t, c.inputs.empty()));
    port_values sc = read_values(printed, c.outputs, c.t.size());
    std::set<std::string> unset = facts_of(s.path + "/" + module + ".zkc").reading_pre;
    for (const std::string& o : names(c.outputs)) {
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
void sweep(int count, long first, long growth, int seed_base)
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

struct example_case {
    const char* name;
    bool refused;                       // g++ refuses the literal text
    std::set<std::string> undefined;    // outputs that read a memorised signal
};

TEST(SystemCConsumer, ExamplesAndGeneratedModulesFollowTheirCWhereDefined)
{
    if (!have_systemc())
        GTEST_SKIP() << "libsystemc-dev is not installed";
    // toggle and watchdog read an output's pointer in the node of its under
    // wire; blink's w is pre n and shift's q reads pre d, which this unit
    // declares and never loads.
    const example_case cases[] = {
        {"toggle", true, {}},
        {"blink", false, {"w"}},
        {"shift", false, {"q"}},
        {"watchdog", true, {}},
    };
    for (const example_case& x : cases) {
        SCOPED_TRACE(x.name);
        scratch_dir s;
        copy_example(s.path, x.name);
        sc_run r = compare_with_c(s, x.name, 21);
        EXPECT_EQ(r.refused, x.refused);
        EXPECT_EQ(r.undefined_outputs, x.undefined);
    }
    sweep(SYSTEMC_SWEEP, 20, 15, 0);
}

// Valued examples keep their memorised values in the pre copies that this
// unit never declares, and accu binds its outputs, which are then
// no parameters though their equations assign them: g++ finds exactly
// those names undeclared.
TEST(SystemCConsumer, ValuedExamplesReadWhatTheUnitNeverDeclares)
{
    const struct {
        const char* module;
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
        ASSERT_EQ(run_tarn_in(s.path, {std::string(x.module) + ".zkc", "-systemc"}).status, 0);
        s.write(std::string(x.module) + "_typedecl.h", "typedef int integer;\n#define sup_integer(a, b) ((a) > (b))\n");
        compiled c = compile_unit(s, x.module);
        EXPECT_NE(c.status, 0);
        EXPECT_EQ(undeclared(c.errors), x.undeclared) << c.errors;
        EXPECT_EQ(error_messages(c.errors).size(), x.undeclared.size()) << c.errors;
    }
}

// A valued input, a valued output whose clock has one or two bindings (a
// method call on the input's value, a constant), no memorised signal:
// y = x or z; y_val = twice(x_val) when x, else k when z and the second
// binding is there.
std::string twice_zkc(bool second_binding)
{
    return std::string(R"(module: twice 0 0
input: x : integer z ;
output: y : integer ;
local: f1 f2 ;
connexion: SETtwice RESETtwice RTLtwice;
equation_def:
5
0: 0:1:2,1
1: -1:-3:-3,1
2: 2:1:1,-1
3: 0:1:1,-1
4: 0:1:2,-1
expressions:
1 1 4:0,1,(0 2 )
1 1 5:0,-1,(0 2 )
1 1 6:3,1,(0 )
1 1 7:3,-1,(0 )
1 1 8:4,-1,(0 2 )
1 1 9:4,1,(0 2 )
end:
binding:
   (6, 7): value: 0 clock: (4, 5);
)") + (second_binding ? "   (8, 9): value: 1 clock: (4, 5);\n" : "") +
           R"(end:
evaltable:
   0: %0(2);
   1: $0;
   2: %%14(0, 1);
end:
data:
type:
integer;
method:
integer twice(integer);
constant:
integer k :c= "7" :default= "7";
end:
)";
}

struct valued_step {
    int x, xv, z; // inputs
    int cy, cv;   // the C's output and value
    int sy, sv;   // the SystemC unit's
};

// The module's C and SystemC unit, both run on one random trace; an
// output's value is -1 before each reaction, so that what the reaction
// leaves there shows.
std::vector<valued_step> run_twice(bool second_binding)
{
    std::vector<valued_step> result;
    scratch_dir s;
    s.write("twice.zkc", twice_zkc(second_binding));
    const char* user = "const integer zero_integer = 0;\ninteger twice(integer v) { return 2 * v; }\n";
    s.write("twice_typedecl.h", "typedef int integer;\n");
    s.write("C_data_user_integer.h", read_file(TARN_SOURCE_DIR "/examples/user/C_data_user_integer.h"));
    s.write("user_sc.cc", std::string("#include \"twice_sc.h\"\n") + user);
    s.write("user.c", std::string("#include \"twice.h\"\n") + user);
    c_run r = run_with_c(s, "twice", {"-systemc"}, 3, "user.c", 40);
    // Each constant's name is traced on the error stream.
    EXPECT_NE(r.made.err.find("\nk\n"), std::string::npos) << r.made.err;
    compiled unit = compile_unit(s, "twice");
    EXPECT_EQ(unit.status, 0) << unit.errors;
    port_values sc = read_values(
        simulate(s, "twice", adapter("twice", r.inputs, r.outputs), trace_text(r.t, false), "user_sc.cc"), r.outputs,
        r.t.size());
    for (std::size_t k = 0; k < r.t.size(); ++k)
        result.push_back({r.t[k][0], r.t[k][1], r.t[k][2], r.c["y"][k], r.c["y_val"][k], sc["y"][k], sc["y_val"][k]});
    return result;
}

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
        int absent = 0, differ = 0;
        for (const valued_step& v : run_twice(second)) {
            EXPECT_EQ(v.cy, v.x || v.z);
            EXPECT_EQ(v.sy, v.cy);
            if (v.cy) {
                EXPECT_EQ(v.cv, second ? 7 : 2 * (v.x ? v.xv : 0));
                EXPECT_EQ(v.sv, v.x ? 2 * v.xv : second ? 7 : 0);
                differ += v.sv != v.cv;
            } else {
                EXPECT_EQ(v.cv, 0);
                EXPECT_EQ(v.sv, -1);
                ++absent;
            }
        }
        EXPECT_GT(absent, 5);
        if (second) {
            EXPECT_GT(differ, 5);
        }
    }
}

} // namespace
