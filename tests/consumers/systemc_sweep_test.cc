// The SystemC unit of sixty generated modules of growing size, each
// compiled with g++ against libsystemc and run inside sc_main on a random
// trace: every output that the unit defines equals the module's C.

#include "tests/consumers/systemc_wrapper.h"

#include <gtest/gtest.h>

namespace {

using namespace systemc_wrapper;

TEST(SystemCSweep, GeneratedModulesFollowTheirC)
{
    if (!have_systemc())
        GTEST_SKIP() << "libsystemc-dev is not installed";
    std::size_t compared = 0, undefined = 0, refused = 0;
    for (int seed = 1; seed <= 60; ++seed) {
        std::string name = "sweep" + std::to_string(seed);
        SCOPED_TRACE(name);
        scratch_dir s;
        long equations = 20 + 15 * seed;
        ASSERT_EQ(run(zkcgen + " " + std::to_string(equations) + " " + std::to_string(1000 + seed) + " " + name +
                      " > '" + s.path + "/" + name + ".zkc'"),
                  0);
        sc_run r = compare_with_c(s, name, 500 + seed);
        compared += r.compared;
        undefined += r.undefined_outputs.size();
        refused += r.refused;
        if (HasFailure())
            break;
    }
    EXPECT_GT(compared, 200u);
    EXPECT_LT(undefined, compared);
    std::cout << "outputs compared " << compared << ", left undefined by the unit " << undefined
              << ", units refused by plain g++ " << refused << std::endl;
}

} // namespace
