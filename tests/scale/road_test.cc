// A modest generated module through the built tarn -blif -c, and its
// outputs through the tools that consume them.

#include "tests/scale/scale_support.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// Count of lines of `text` that begin with `prefix`.
long lines_starting(const std::string& text, const std::string& prefix)
{
    long n = 0;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        n += line.rfind(prefix, 0) == 0 ? 1 : 0;
    return n;
}

class Road : public testing::Test {
protected:
    // One run for the whole suite: tarn on 2,000 equations.
    static void SetUpTestSuite()
    {
        dir = new scratch;
        module = generate(*dir, 2000, 5);
        base = module.substr(0, module.size() - 4);
        std::string err = dir->dir + "/tarn.err";
        std::string out = dir->dir + "/tarn.out";
        status = run_shell("cd '" + dir->dir + "' && env -u DISPLAY " + tarn_path + " '" + module +
                           "' -blif -c > " + out + " 2> " + err);
        errors = slurp(err);
        output = slurp(out);
    }
    static void TearDownTestSuite() { delete dir; }

    static scratch* dir;
    static std::string module, base, errors, output;
    static int status;
};

scratch* Road::dir = nullptr;
std::string Road::module, Road::base, Road::errors, Road::output;
int Road::status = -1;

} // namespace

TEST_F(Road, TarnFinishesAndWritesTheThreeFiles)
{
    ASSERT_FALSE(module.empty());
    ASSERT_EQ(status, 0) << errors;
    // The reader says nothing before its closing line; after it, the
    // finalisation only names the registers it drops. Any other message
    // (a misuse reported by the engine, a refused signal) is a fault.
    ASSERT_EQ(errors.rfind("parsing terminated\n", 0), 0u) << errors;
    std::istringstream rest(errors.substr(19));
    std::string line;
    while (std::getline(rest, line))
        EXPECT_EQ(line.rfind("detecting useless register ", 0), 0u) << line;
    EXPECT_NE(output.find("generation of " + base + ".blif\n"), std::string::npos) << output;
    EXPECT_NE(output.find("generation of " + base + ".c\ngeneration of " + base + ".h\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("compilation finished in "), std::string::npos) << output;

    zkc_sections z;
    std::string error;
    ASSERT_TRUE(read_sections(slurp(module), z, error)) << error;
    std::string blif = slurp(base + ".blif");
    ASSERT_FALSE(blif.empty());
    EXPECT_EQ(lines_starting(blif, ".model"), 1);
    EXPECT_EQ(lines_starting(blif, ".end"), 1);
    // Every register of the module is a latch (the boot register is one more).
    EXPECT_GE(lines_starting(blif, ".latch"), static_cast<long>(z.registers.size()));
    EXPECT_GT(lines_starting(blif, ".names"), 0);
    for (const std::string& input : z.inputs)
        EXPECT_NE(blif.find(input), std::string::npos) << input;
    EXPECT_FALSE(slurp(base + ".c").empty());
    EXPECT_NE(slurp(base + ".h").find(z.name), std::string::npos);
}

TEST_F(Road, GeneratedCCompiles)
{
    ASSERT_EQ(status, 0) << errors;
    if (!tool_present("gcc"))
        GTEST_SKIP() << "gcc is not installed";
    std::string err = dir->dir + "/gcc.err";
    EXPECT_EQ(run_shell("cd '" + dir->dir + "' && gcc -c -Wno-int-conversion -o road.o '" + base + ".c' 2> " + err), 0)
        << slurp(err);
}

TEST_F(Road, GeneratedBlifIsReadByYosys)
{
    ASSERT_EQ(status, 0) << errors;
    if (!tool_present("yosys"))
        GTEST_SKIP() << "yosys is not installed";
    std::string log = dir->dir + "/yosys.log";
    EXPECT_EQ(run_shell("yosys -q -p 'read_blif " + base + ".blif; hierarchy -auto-top; check -assert' > " + log +
                        " 2>&1"),
              0)
        << slurp(log);
}
