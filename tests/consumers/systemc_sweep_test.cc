// The SystemC unit of sixty generated modules of growing size, each
// compiled with g++ against libsystemc and run inside sc_main on a random
// trace: every output that the unit defines equals the module's C.

#include "tests/consumers/systemc_wrapper.h"

#include <gtest/gtest.h>

namespace {

TEST(SystemCSweep, GeneratedModulesFollowTheirC)
{
    if (!systemc_wrapper::have_systemc())
        GTEST_SKIP() << "libsystemc-dev is not installed";
    systemc_wrapper::sweep(60, 20, 15, 1000);
}

} // namespace
