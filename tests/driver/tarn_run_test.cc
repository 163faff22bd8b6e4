// The parts of the run that the command line cannot reach alone: name
// derivation corners and the VHDL post-pass on a place it cannot write.

#include "driver/tarn_run.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <sstream>

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
}

// The post-pass on names is pinned with the golden texts; a temporary
// file that cannot be written ends it without a report, the generator
// having run on the failed stream.
TEST(TarnRun, VhdlPostPassOnAPlaceThatCannotBeWrittenEndsSilently)
{
    scratch_dir s;
    std::ostringstream report;
    bool called = false;
    EXPECT_FALSE(tarn_vhdl_post_pass(
        s.path + "/no/such/dir/out.vhd", [&](std::ofstream&, std::ifstream&) { called = true; }, report));
    EXPECT_TRUE(called);
    EXPECT_EQ(report.str(), "");
    EXPECT_EQ(read_file(s.path + "/no/such/dir/out.vhd"), "");
}
