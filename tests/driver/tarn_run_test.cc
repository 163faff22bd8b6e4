// The parts of the run that the command line cannot reach alone: name
// derivation corners and the VHDL post-pass with a stand-in generator.

#include "driver/tarn_run.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <unistd.h>

TEST(TarnPaths, DerivedNames)
{
    struct {
        const char* input;
        const char* dir;
        const char* base;
    } cases[] = {
        {"/a/b/foo.zkc", "/a/b", "foo"},
        {"/foo.zkc", "", "foo"},
        {"foo.zkc.old", ".", "foo"},
        {"foo", ".", "foo"},
        {"a.zkc/b.zkc", ".", "a"},  // everything behind the first ".zkc" goes
        {"x/y.d/z", "x/y.d", "z"},
    };
    for (const auto& c : cases) {
        tarn_paths p = tarn_split_input_name(c.input);
        EXPECT_EQ(p.dir, c.dir) << c.input;
        EXPECT_EQ(p.base, c.base) << c.input;
    }
    tarn_paths root = tarn_split_input_name("/foo.zkc");
    EXPECT_EQ(root.path("/", ".zkc"), "/foo.zkc");
    EXPECT_EQ(root.path("/", ".c"), "/foo.c");
    tarn_paths here = tarn_split_input_name("foo");
    EXPECT_EQ(here.path("/mosk_", ".cc"), "./mosk_foo.cc");
    EXPECT_EQ(here.path("/", "_encapsulated.qsr"), "./foo_encapsulated.qsr");
}

// Runs each test in a fresh working directory: "vhdl_libs.inc" is looked
// for there, not beside the output.
class VhdlPostPass : public ::testing::Test {
protected:
    scratch_dir scratch;
    const std::string& dir = scratch.path;
    std::string old_cwd = [] {
        char buffer[4096];
        return std::string(getcwd(buffer, sizeof buffer) ? buffer : "/");
    }();

    void SetUp() override { ASSERT_EQ(chdir(dir.c_str()), 0); }
    void TearDown() override { ASSERT_EQ(chdir(old_cwd.c_str()), 0); }
};

TEST_F(VhdlPostPass, RewritesDoubleUnderscoresAndKeepsTheTemporaryFile)
{
    std::ofstream("vhdl_libs.inc") << "library ieee;\nuse ieee.std_logic_1164.all;\n";
    std::string vhd = dir + "/out.vhd";
    bool libs_seen_open = false;
    std::ostringstream report;
    bool done = tarn_vhdl_post_pass(
        vhd,
        [&](std::ofstream& tmp, std::ifstream& libs) {
            libs_seen_open = libs.is_open();
            tmp << libs.rdbuf();
            tmp << "signal a__b : std_logic;\nsignal c___d;\nend";  // no final line end
        },
        report);
    EXPECT_TRUE(done);
    EXPECT_TRUE(libs_seen_open);
    EXPECT_EQ(report.str(), "generation of " + vhd + "\n");
    EXPECT_EQ(read_file(vhd),
              "library ieee;\nuse ieee.std_logic_1164.all;\nsignal a_X_b : std_logic;\nsignal c_X__d;\nend\n");
    EXPECT_EQ(read_file(vhd + "_tmp"),
              "library ieee;\nuse ieee.std_logic_1164.all;\nsignal a__b : std_logic;\nsignal c___d;\nend");
}

TEST_F(VhdlPostPass, MissingLibsFileStillReachesTheGenerator)
{
    bool called = false, libs_good = true;
    std::ostringstream report;
    EXPECT_TRUE(tarn_vhdl_post_pass(
        "plain.vhd",
        [&](std::ofstream& tmp, std::ifstream& libs) {
            called = true;
            libs_good = libs.good();
            tmp << "x__\n";
        },
        report));
    EXPECT_TRUE(called);
    EXPECT_FALSE(libs_good);
    EXPECT_EQ(read_file("plain.vhd"), "x_X_\n");
    EXPECT_EQ(report.str(), "generation of plain.vhd\n");
}

TEST_F(VhdlPostPass, UnreadableTemporaryFileEndsSilently)
{
    std::ostringstream report;
    bool called = false;
    EXPECT_FALSE(tarn_vhdl_post_pass(
        dir + "/no/such/dir/out.vhd", [&](std::ofstream&, std::ifstream&) { called = true; }, report));
    EXPECT_TRUE(called);  // the generator runs on the failed stream
    EXPECT_EQ(report.str(), "");
    EXPECT_EQ(read_file(dir + "/no/such/dir/out.vhd"), "");
}
