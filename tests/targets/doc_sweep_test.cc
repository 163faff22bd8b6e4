// The documentation of many generated modules read back as definitions:
// every name read is defined, an input, a register or a memorised copy.

#include "doc_check.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

TEST(DocSweep, EveryNameReadIsDefinedInFiftyGeneratedModules)
{
    scratch_dir s;
    for (int k = 0; k < 50; ++k) {
        std::string name = "gen" + std::to_string(k);
        SCOPED_TRACE(name);
        // From a handful of equations to a few thousand, each size its seed.
        long equations = 5 + 61L * k;
        std::string zkc = s.path + "/" + name + ".zkc";
        generate_module(s.path, name, equations, 1000 + k);
        tarn_output r = run_tarn_in(s.path, {name + ".zkc", "-doc"});
        ASSERT_EQ(r.status, 0) << r.err;
        std::string text = read_file(s.path + "/" + name + ".doc");
        EXPECT_EQ(doc_check::faults(text, doc_check::data_signals(read_file(zkc))), std::vector<std::string>());
        std::remove(zkc.c_str());
        std::remove((s.path + "/" + name + ".doc").c_str());
    }
}
