// `make install` and `make uninstall` into a scratch prefix: the executables
// and their manual pages land where PREFIX says, run, and go again.

#include "tests/tarn_process.h"

#include <unistd.h>

TEST(Install, ExecutablesAndManualPagesUnderThePrefix)
{
    scratch_dir s;
    const std::string make = "make -s -C '" TARN_SOURCE_DIR "' BUILD='" TARN_BINARY_DIR "' PREFIX=/usr DESTDIR='" +
                             s.path + "' ";
    ASSERT_EQ(std::system((make + "install > '" + s.path + "/make.txt' 2>&1").c_str()), 0)
        << read_file(s.path + "/make.txt");
    const std::string bin = s.path + "/usr/bin/tarn", page = s.path + "/usr/share/man/man1/tarn.1";
    ASSERT_EQ(access(bin.c_str(), X_OK), 0);
    tarn_output v = run_tarn_in(s.path, {"-v"});
    EXPECT_EQ(std::system(("'" + bin + "' -v > '" + s.path + "/v.txt'").c_str()), 0);
    EXPECT_EQ(read_file(s.path + "/v.txt"), v.out);
    std::string man = read_file(page);
    EXPECT_EQ(man.rfind(".TH TARN 1", 0), 0u) << man;
    EXPECT_NE(man.find("tarn \\- finaliser of compiled ZK modules"), std::string::npos) << man;
    EXPECT_NE(man.find("-no_suppress_wires"), std::string::npos) << man;

    ASSERT_EQ(std::system((make + "uninstall > /dev/null 2>&1").c_str()), 0);
    EXPECT_NE(access(bin.c_str(), F_OK), 0);
    EXPECT_NE(access(page.c_str(), F_OK), 0);
}
