// The simulator against the module's C, reaction by reaction, on every
// pure bundled example and on generated modules; the command's lines,
// messages and statuses; the shape of the compiled program.

#include "model/module.h"
#include "sim/reaction_engine.h"
#include "tests/consumers/finalised_module.h"
#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#ifndef MOSK_SWEEP
#define MOSK_SWEEP 10
#endif

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace c_reference;

// The printed outputs as the C's driver gives them: per output, 1 where
// its name is on the step's line.
port_values printed_outputs(const std::string& printed, const std::vector<std::string>& outputs)
{
    port_values values;
    for (const std::string& o : outputs)
        values[o];
    std::istringstream lines(printed);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream names(line);
        std::vector<std::string> present;
        std::string n;
        while (names >> n)
            present.push_back(n.substr(0, n.find('(')));
        for (const std::string& o : outputs)
            values[o].push_back(std::find(present.begin(), present.end(), o) != present.end() ? 1 : 0);
    }
    return values;
}

// The example `name` (or zkcgen's module of `equations` and `seed`): its
// C and mosk on the same random trace, every output compared at every
// step. Returns how many times an output changed, so that a caller can
// tell a trace that moved nothing.
int agree(const std::string& name, long equations, int seed, unsigned trace_seed)
{
    SCOPED_TRACE(name);
    scratch_dir s;
    place_module(s, name, equations, seed);
    c_run r = run_with_c(s, name, {}, trace_seed);
    s.write("reactions.txt", reaction_lines(r.inputs, r.t));
    tarn_output m = run_mosk_in(s.path, {name + ".zkc", "-input", "reactions.txt"});
    EXPECT_EQ(m.status, 0) << m.err;
    EXPECT_EQ(printed_outputs(m.out, names(r.outputs)), r.c) << "outputs per reaction, mosk against the C";
    return changes(r.c);
}

TEST(MoskAgreesWithC, PureExamplesAndGeneratedModules)
{
    for (const char* name : {"toggle", "shift", "watchdog", "blink"}) {
        int changes = agree(name, 0, 0, 17);
        // blink's outputs are constant or a plain blink; the others must
        // have moved under the trace.
        EXPECT_GT(changes, 0) << name;
    }
    // Generated modules: ten here, a hundred and twenty of growing size in
    // the long sweep; most traces must move some output.
    int moved = 0;
    for (int seed = 1; seed <= MOSK_SWEEP && !HasFailure(); ++seed)
        moved += agree("gen" + std::to_string(seed), 40 + (37 * seed) % 600, seed, 1000 + seed) > 0;
    EXPECT_GE(moved, MOSK_SWEEP - MOSK_SWEEP / 10);
}

TEST(MoskCommand, OneLinePerReactionStopAtTheFirstBadLineAndRefusals)
{
    scratch_dir s;
    copy_example(s.path, "toggle");
    // toggle: q is the state, low at first, flipped by each t for the
    // next reaction. The last line needs no line end.
    tarn_output r = run_mosk_in(s.path, {"toggle.zkc"}, "t\n\nt\nt");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "\nq\nq\n\n");

    // The suffix may be left out, as with tarn; the reactions may come
    // from a file. The lines before a bad one are answered, nothing after
    // it, and the message names the file and the line.
    s.write("r.txt", "t\n\nt(1)\nt");
    r = run_mosk_in(s.path, {"toggle", "-input", "r.txt"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "\nq\n");
    EXPECT_NE(r.err.find("mosk: r.txt:3: input 't' is pure and takes no value\n"), std::string::npos) << r.err;

    r = run_mosk_in(s.path, {"toggle.zkc"}, "t\nt\nt q\nt\n");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "\nq\n");
    const std::string bad = "mosk: <stdin>:3: 'q' is not an input of toggle\n";
    EXPECT_EQ(r.err.substr(r.err.size() - std::min(r.err.size(), bad.size())), bad) << r.err;

    // What it cannot run, refused with status 1 before any reaction.
    struct refusal {
        std::vector<std::string> args;
        const char* message;
    };
    const refusal refusals[] = {
        {{"missing.zkc"}, "FILE NOT FOUND !"},
        {{}, "mosk: no module given"},
        {{"toggle.zkc", "-nope"}, "mosk: unknown option '-nope'"},
        {{"toggle.zkc", "-vcd"}, "mosk: option -vcd needs a value"},
        {{"toggle.zkc", "host"}, "one word too many"},
        {{"toggle.zkc", "localhost", "http"}, "mosk: the port 'http' is not a number"},
        {{"toggle.zkc", "-server", "nowhere"}, "mosk: -server wants <host>:<port>, not 'nowhere'"},
        {{"toggle.zkc", "-input", "absent.txt"}, "mosk: cannot read the reactions absent.txt"},
        {{"toggle.zkc", "-vcd", "no/such/dir.vcd"}, "mosk: cannot write the dump no/such/dir.vcd"},
    };
    for (const refusal& x : refusals) {
        r = run_mosk_in(s.path, x.args, "t\n");
        EXPECT_EQ(r.status, 1) << x.message;
        EXPECT_EQ(r.out, "") << x.message;
        EXPECT_NE(r.err.find(x.message), std::string::npos) << r.err;
    }
    tarn_output help = run_mosk_in(s.path, {"-h"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.find("usage: mosk <module>.zkc"), 0u);
}

// sum: total takes add_sat(pre total, inc, limit) through its clock, which
// waits for data. An absent total holds its type's zero, which sum does not
// define: the sum is unknown from then on, and a request on an unknown
// operand is answered unknown without asking the data server.
TEST(ReactionEngine, NoRequestOnAnUnknownOperand)
{
    scratch_dir s;
    copy_example(s.path, "sum");
    Module* sum = finalised_module(s.path + "/sum.zkc");
    ASSERT_NE(sum, nullptr);
    reaction_engine v(sum);
    std::vector<std::string> asked;
    v.set_data_source([&](const std::string& request) {
        asked.push_back(request);
        return std::string("7");
    });
    v.reset();
    v.react({true}, {"5"});
    EXPECT_EQ(asked, std::vector<std::string>{"MC,add_sat,0,5,100,"});
    v.react({false}, {""});
    v.react({true}, {"5"});
    EXPECT_EQ(v.value_of(v.outputs()[0]), "--");
    EXPECT_EQ(asked.size(), 1u);
}

} // namespace
