// Definitions against uses in the NuSMV and Lustre files of fifty
// generated modules of growing size.
#include "smv_lustre_run.h"

TEST(NusmvLustreSweep, FiftyGeneratedModulesDefineWhatTheyRead)
{
    for (int seed = 100; seed < 150; ++seed)
        check_generated(seed, 40 + 12 * (seed - 100));
}
