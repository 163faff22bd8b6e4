// The C and the BLIF read by real tools. For every pure module (the
// examples and a few generated ones) the C is compiled with gcc and run by
// a driver on random input traces, the BLIF is simulated over the same
// traces by yosys (a sequential satisfiability run with every input fixed
// at every step, which has exactly one model), and both must give the
// same outputs step by step; abc reads the same netlists. The valued
// examples run against the user files shipped beside them.

#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace c_reference;

// BLIF through yosys: ports absent from the trace (data signals, which
// the C does not take) are held at 0.
port_values run_blif(const scratch_dir& s, const std::string& module, const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs, const trace& t)
{
    std::string blif = read_file(s.path + "/" + module + ".blif");
    std::smatch m;
    std::vector<std::string> blif_inputs;
    if (std::regex_search(blif, m, std::regex("\\.inputs([^\\n]*)\\n"))) {
        std::istringstream names(m[1].str());
        std::string n;
        while (names >> n)
            blif_inputs.push_back(n);
    }
    std::ostringstream script;
    script << "read_blif " << module << ".blif; hierarchy -top " << module << "; sat -seq " << steps;
    for (int step = 0; step < steps; ++step)
        for (const std::string& n : blif_inputs) {
            int v = 0;
            for (std::size_t i = 0; i < inputs.size(); ++i)
                if (inputs[i] == n)
                    v = t[step][i];
            script << " -set-at " << step + 1 << " " << n << " " << v;
        }
    script << " -show-outputs";
    s.write("sim.ys", script.str() + "\n");
    EXPECT_EQ(run("cd '" + s.path + "' && yosys -s sim.ys > yosys.txt 2>&1"), 0) << read_file(s.path + "/yosys.txt");

    port_values values;
    for (const std::string& o : outputs)
        values[o].assign(steps, -1);
    std::istringstream lines(read_file(s.path + "/yosys.txt"));
    std::string line;
    std::regex row("\\s*(\\d+) \\\\(\\S+)\\s+(\\d+)\\s.*");
    while (std::getline(lines, line))
        if (std::regex_match(line, m, row)) {
            int step = std::stoi(m[1]) - 1;
            auto it = values.find(m[2]);
            if (it != values.end() && step >= 0 && step < steps)
                it->second[step] = std::stoi(m[3]);
        }
    return values;
}

// The module in `s` (zkcgen's when `equations` is not 0): its C against its
// BLIF on one random trace; the C's outputs.
port_values check(const scratch_dir& s, const std::string& name, unsigned trace_seed, long equations = 0, int seed = 0)
{
    SCOPED_TRACE(name);
    place_module(s, name, equations, seed);
    c_run r = run_with_c(s, name, {"-blif"}, trace_seed);
    EXPECT_FALSE(r.outputs.empty());
    if (have("yosys")) {
        EXPECT_EQ(run_blif(s, name, names(r.inputs), names(r.outputs), r.t), r.c) << "BLIF against the C";
    }
    // abc reads the same netlists; its statistics line shows it took the
    // whole model, and it would warn of a net that no cover drives.
    if (have("berkeley-abc")) {
        run("cd '" + s.path + "' && berkeley-abc -c 'read_blif " + name + ".blif; print_stats' > abc.txt 2>&1");
        std::string stats = read_file(s.path + "/abc.txt");
        EXPECT_NE(stats.find(name), std::string::npos) << stats;
        EXPECT_NE(stats.find("lat ="), std::string::npos) << stats;
        EXPECT_EQ(stats.find("non-driven"), std::string::npos) << stats;
    }
    EXPECT_GT(changes(r.c), 0);
    return r.c;
}

// A valued example's C, built with the user files shipped beside the
// examples (the header of the type integer and the example's
// definitions), on a random trace of `length` reactions.
c_run run_valued_example(const scratch_dir& s, const std::string& module, unsigned seed, std::size_t length)
{
    copy_example(s.path, module);
    std::string user = TARN_SOURCE_DIR "/examples/user";
    return run_with_c(s, module, {}, seed, "-I . -I '" + user + "' '" + user + "/" + module + "_user.c'", length);
}

} // namespace

TEST(Consumers, PureExamplesAndGeneratedModulesAgreeInCAndBlif)
{
    for (const char* name : {"toggle", "shift", "watchdog"})
        check(scratch_dir(), name, 11);
    // blink has no input, which leaves the second line of its BLIF empty,
    // and two constant outputs, which C and BLIF must hold at every step.
    scratch_dir s;
    port_values blink = check(s, "blink", 11);
    std::string blif = read_file(s.path + "/blink.blif");
    EXPECT_EQ(blif.substr(0, 14), ".model blink\n\n");
    EXPECT_EQ(blink["on"], std::vector<int>(steps, 1));
    EXPECT_EQ(blink["off"], std::vector<int>(steps, 0));
    EXPECT_NE(blif.find(".names blink_node_1 off\n0 1\n"), std::string::npos);
    for (int seed = 1; seed <= 3; ++seed)
        check(scratch_dir(), "gen" + std::to_string(seed), 100 + seed, 150, seed);
    if (!have("yosys"))
        GTEST_SKIP() << "yosys is not installed: only the C was checked";
}

// A valued input, a valued output set through its clock by a binding and
// read back through its pre, a method and constants: the C compiles
// against a user header for the data type and follows the module's
// meaning, total = add_sat(pre total, inc, limit) whenever inc is present,
// the type's zero otherwise.
TEST(Consumers, ValuedExampleCompilesAgainstUserHeadersAndCounts)
{
    scratch_dir s;
    c_run r = run_valued_example(s, "sum", 5, 40);
    std::vector<int> total, value;
    int pre = 0;
    for (const auto& step : r.t) {
        total.push_back(step[0]);
        value.push_back(step[0] ? std::min(pre + step[1], 100) : 0);
        pre = value.back();
    }
    EXPECT_EQ(r.c["total"], total);
    EXPECT_EQ(r.c["total_val"], value);
    EXPECT_NE(std::find(value.begin(), value.end(), 100), value.end()) << "the saturation was reached";
}

// Tests decided from data by bindings without a clock (big, hot), a valued
// local fed by two clocked bindings and memorised (best), an output clock
// (peak) whose value calls a method on an external constant, and a constant
// whose C value differs from its default. The module reports each new
// maximum of the present samples as bump(sample, offset), and raises alarm
// on a present sample above the C threshold, 50 (7 everywhere else).
// A clocked value follows both equations of its bound signal, each guarded
// by its own variable: keep's over and under wires together hold in every
// reaction, so best is reloaded from pre_best after up has set it, and the
// maximum stays at its initial zero.
TEST(Consumers, ValuedTestsAndLocalClockFollowTheModule)
{
    scratch_dir s;
    c_run r = run_valued_example(s, "peak", 9, 60);
    const int best = 0;
    std::vector<int> alarm, peak, value;
    for (const auto& step : r.t) {
        int v = step[0] ? step[1] : 0; // an absent sample reads the zero of its type
        alarm.push_back(step[0] && v > 50);
        peak.push_back(step[0] && v > best);
        value.push_back(peak.back() ? v + 1000 : 0);
    }
    EXPECT_EQ(r.c["alarm"], alarm);
    EXPECT_EQ(r.c["peak"], peak);
    EXPECT_EQ(r.c["peak_val"], value);
    // Both branches of each decision must have been taken.
    for (const auto* taken : {&alarm, &peak}) {
        EXPECT_NE(std::count(taken->begin(), taken->end(), 1), 0);
        EXPECT_NE(std::count(taken->begin(), taken->end(), 0), 0);
    }
}

// accu binds its outputs themselves: a bound output is no parameter of the
// reaction, yet its equation still assigns it, so its C cannot compile by
// the generation rules. The shipped user files are not the cause.
TEST(Consumers, AccuCIsRefusedForItsBoundOutputsOnly)
{
    scratch_dir s;
    copy_example(s.path, "accu");
    ASSERT_EQ(run_tarn_in(s.path, {"accu.zkc", "-c"}).status, 0);
    EXPECT_NE(run("cd '" + s.path + "' && LC_ALL=C gcc " + cflags + " -I '" TARN_SOURCE_DIR
                  "/examples/user' -c accu.c 2> gcc.txt"),
              0);
    std::string errors = read_file(s.path + "/gcc.txt");
    EXPECT_EQ(error_messages(errors), (std::vector<std::string>{"'total_val' undeclared (first use in this function)",
                                                                "'level_val' undeclared (first use in this function)",
                                                                "'total' undeclared (first use in this function)",
                                                                "'level' undeclared (first use in this function)"}))
        << errors;
}
