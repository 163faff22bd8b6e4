// The simulator against the module's C: the same random trace given to
// both, reaction by reaction, for a bundled example or a generated module.
#ifndef TARN_TESTS_SIM_MOSK_AGREEMENT_H
#define TARN_TESTS_SIM_MOSK_AGREEMENT_H

#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace mosk_agreement {

inline const std::string mosk = TARN_BINARY_DIR "/sim/mosk";

inline tarn_output run_mosk_in(const std::string& dir, const std::vector<std::string>& args,
                               const std::string& reactions = "")
{
    return run_in(mosk, dir, args, reactions);
}

// The printed outputs as the C's driver gives them: per output, 1 where
// its name is on the step's line.
inline c_reference::port_values printed_outputs(const std::string& printed, const std::vector<std::string>& outputs)
{
    c_reference::port_values values;
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

// Writes the module into `s` (a copy of `source`, or zkcgen's module of
// `equations` and `seed` when `source` is empty), runs its C and mosk on
// the same random trace, and compares every output at every step. Returns
// how many times an output changed, so that a caller can tell a trace that
// moved nothing.
inline int agree(const std::string& name, const std::string& source, long equations, int seed, unsigned trace_seed)
{
    SCOPED_TRACE(name);
    using namespace c_reference;
    scratch_dir s;
    std::string file = s.path + "/" + name + ".zkc";
    if (!source.empty())
        EXPECT_EQ(run("cp '" + source + "' '" + file + "'"), 0);
    else
        generate_module(s.path, name, equations, seed);
    EXPECT_EQ(run_tarn_in(s.path, {name + ".zkc", "-c"}).status, 0);
    std::vector<std::string> inputs, outputs;
    if (!read_prototype(read_file(s.path + "/" + name + ".h"), name, inputs, outputs)) {
        ADD_FAILURE() << "no pure prototype in " << name << ".h";
        return 0;
    }
    trace t = random_trace(inputs.size(), trace_seed);
    port_values c = run_c(s, name, inputs, outputs, t);

    s.write("reactions.txt", c_reference::reaction_lines(inputs, t));
    tarn_output m = run_mosk_in(s.path, {name + ".zkc", "-input", "reactions.txt"});
    EXPECT_EQ(m.status, 0) << m.err;
    port_values simulated = printed_outputs(m.out, outputs);
    EXPECT_EQ(simulated, c) << "outputs per reaction, mosk against the C";
    return changes(c);
}

} // namespace mosk_agreement

#endif
