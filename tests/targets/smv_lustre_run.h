// The built tarn asked for the NuSMV and Lustre files of one module, and
// the definition checks run over them; shared by the sample of generated
// modules and the long sweep.
#ifndef TARN_TESTS_TARGETS_SMV_LUSTRE_RUN_H
#define TARN_TESTS_TARGETS_SMV_LUSTRE_RUN_H

#include "smv_lustre_check.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

const std::string smv_lustre_examples = TARN_SOURCE_DIR "/examples/";

struct both_texts {
    std::string smv, lus;
};

inline both_texts generate_both(const std::string& name, const std::string& zkc)
{
    scratch_dir dir;
    dir.write(name + ".zkc", zkc);
    tarn_output run = run_tarn_in(dir.path, {name + ".zkc", "-nusmv", "-lustre"});
    EXPECT_EQ(run.status, 0) << run.err;
    return {read_file(dir.path + "/" + name + ".smv"), read_file(dir.path + "/" + name + ".lus")};
}

// The rules of the text that the module needed; every other fault fails.
inline std::set<std::string> check_both(const std::string& name, const std::string& zkc)
{
    both_texts t = generate_both(name, zkc);
    zkc_facts facts = read_zkc_facts(zkc);
    check_result smv = check_nusmv(t.smv, facts), lus = check_lustre(t.lus, facts);
    for (const auto& fault : smv.faults)
        ADD_FAILURE() << "NuSMV: " << fault << "\n" << t.smv;
    for (const auto& fault : lus.faults)
        ADD_FAILURE() << "Lustre: " << fault << "\n" << t.lus;
    std::set<std::string> rules = smv.rules;
    rules.insert(lus.rules.begin(), lus.rules.end());
    return rules;
}

inline void check_generated(int seed, long equations)
{
    std::string name = "gen" + std::to_string(seed);
    SCOPED_TRACE(name);
    scratch_dir dir;
    std::string zkc = generate_module(dir.path, name, equations, seed);
    ASSERT_FALSE(zkc.empty());
    std::set<std::string> rules = check_both(name, zkc);
    // A pure module leaves only its memorised pairs, its outputs' under
    // wires and the table's last node undefined.
    for (const auto& r : rules)
        EXPECT_TRUE(r == smv_lustre_rule::memorised || r == smv_lustre_rule::output_under ||
                    r == smv_lustre_rule::last_node)
            << r;
}

#endif
