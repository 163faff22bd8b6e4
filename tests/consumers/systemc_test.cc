// The SystemC unit as g++ and libsystemc take it: every bundled example and
// five generated modules compile (or fail exactly as their text says) and,
// run inside sc_main on random traces, give the outputs of the module's C
// wherever the unit defines them; a valued module follows its C value for
// value.

#include "tests/consumers/systemc_wrapper.h"

#include <gtest/gtest.h>

#ifndef SYSTEMC_SWEEP
#define SYSTEMC_SWEEP 5
#endif

namespace {

using namespace systemc_wrapper;

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
