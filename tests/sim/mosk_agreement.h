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

// The example `name` (or zkcgen's module of `equations` and `seed`): its
// C and mosk on the same random trace, every output compared at every
// step. Returns how many times an output changed, so that a caller can
// tell a trace that moved nothing.
inline int agree(const std::string& name, long equations, int seed, unsigned trace_seed)
{
    SCOPED_TRACE(name);
    using namespace c_reference;
    scratch_dir s;
    place_module(s, name, equations, seed);
    c_run r = run_with_c(s, name, {}, trace_seed);
    s.write("reactions.txt", reaction_lines(names(r.inputs), r.t));
    tarn_output m = run_mosk_in(s.path, {name + ".zkc", "-input", "reactions.txt"});
    EXPECT_EQ(m.status, 0) << m.err;
    EXPECT_EQ(printed_outputs(m.out, names(r.outputs)), r.c) << "outputs per reaction, mosk against the C";
    return changes(r.c);
}

} // namespace mosk_agreement

#endif
