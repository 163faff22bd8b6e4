// The simulator against the module's C over a hundred and twenty generated
// modules of growing size, reaction by reaction on random traces.

#include "tests/sim/mosk_agreement.h"

#include <gtest/gtest.h>

#include <string>

TEST(MoskSweep, HundredsOfGeneratedModulesAgreeWithTheirC)
{
    int moved = 0;
    for (int seed = 1; seed <= 120; ++seed) {
        long equations = 20 + (seed * 37) % 600;
        moved += mosk_agreement::agree("sweep" + std::to_string(seed), "", equations, seed, 7000 + seed) > 0;
        if (HasFailure())
            break;
    }
    EXPECT_GE(moved, 110) << "most traces must move some output";
}
