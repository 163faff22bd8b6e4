// The VHDL of many generated modules, of several sizes and seeds, against
// their C through ghdl: every text analysed and elaborated (or refused for
// its undeclared memorised locals only), every output that does not read a
// memorised presence equal to the C's at every reaction.

#include "tests/consumers/vhdl_bench.h"

#include <gtest/gtest.h>

TEST(VhdlSweep, GeneratedModulesFollowTheC)
{
    if (!vhdl_bench::have("ghdl"))
        GTEST_SKIP() << "ghdl is not installed";
    const long sizes[] = {12, 30, 80, 140, 260, 500, 900};
    int compared = 0, changes = 0;
    for (int seed = 1; seed <= 56; ++seed)
        vhdl_bench::check_generated(sizes[seed % 7], 1000 + seed, compared, changes);
    EXPECT_GT(compared, 100);
    EXPECT_GT(changes, 100);
}
