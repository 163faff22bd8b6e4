// Generated modules through the built tarn -blif -c: what it says and the
// latches it writes, and the same texts from the plain operators. (The
// tools that read the outputs run in tests/consumers.)

#include "tests/scale/scale_support.h"

#include "bdd/bddpp.h"
#include "driver/tarn_run.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

long lines_starting(const std::string& text, const std::string& prefix)
{
    long n = 0;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        n += line.rfind(prefix, 0) == 0;
    return n;
}

// One run of tarn on 2,000 equations for the whole suite.
class Road : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dir = new scratch_dir;
        module = generate(*dir, 2000, 5);
        base = module.substr(0, module.size() - 4);
        status = run_shell("cd '" + dir->path + "' && env -u DISPLAY " + tarn_path + " '" + module + "' -blif -c > " +
                           dir->path + "/out 2> " + dir->path + "/err");
        errors = read_file(dir->path + "/err");
        output = read_file(dir->path + "/out");
    }
    static void TearDownTestSuite() { delete dir; }

    static scratch_dir* dir;
    static std::string module, base, errors, output;
    static int status;
};

scratch_dir* Road::dir = nullptr;
std::string Road::module, Road::base, Road::errors, Road::output;
int Road::status = -1;

} // namespace

TEST_F(Road, TarnFinishesAndWritesTheThreeFiles)
{
    ASSERT_FALSE(module.empty());
    ASSERT_EQ(status, 0) << errors;
    // The reader says nothing before its closing line; after it the
    // finalisation only names the registers it drops. Any other message
    // (a misuse reported by the engine, a refused signal) is a fault.
    ASSERT_EQ(errors.rfind("parsing terminated\n", 0), 0u) << errors;
    std::istringstream rest(errors.substr(19));
    for (std::string line; std::getline(rest, line);)
        EXPECT_EQ(line.rfind("detecting useless register ", 0), 0u) << line;
    EXPECT_NE(output.find("generation of " + base + ".blif\ngeneration of " + base + ".c\ngeneration of " + base +
                          ".h\ncompilation finished in "),
              std::string::npos)
        << output;

    zkc_sections z;
    std::string error;
    ASSERT_TRUE(read_sections(read_file(module), z, error)) << error;
    std::string blif = read_file(base + ".blif");
    EXPECT_EQ(lines_starting(blif, ".model"), 1);
    EXPECT_EQ(lines_starting(blif, ".end"), 1);
    EXPECT_GT(lines_starting(blif, ".names"), 0);
    // A latch for each register that the finalisation did not name as
    // useless, with its initial value, one for each memorised pair and one
    // for the boot register.
    std::map<std::string, std::string> latches;  // actual (or pre) -> init
    std::istringstream in(blif);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string keyword, next, actual, init;
        if (words >> keyword >> next >> actual >> init && keyword == ".latch")
            latches[actual] = init;
    }
    auto latch_of = [&](const std::string& name) {
        for (const auto& l : latches)
            if (l.first == name || (l.first.size() > name.size() &&
                                    l.first.compare(l.first.size() - name.size() - 1, std::string::npos, "_" + name) == 0))
                return l.second;
        return std::string("none");
    };
    std::size_t kept = 0;
    for (const std::vector<std::string>& r : z.registers) {
        bool useless = errors.find("detecting useless register " + r[1] + "\n") != std::string::npos;
        EXPECT_EQ(latch_of(r[1]), useless ? "none" : r[2]) << r[1];
        kept += !useless;
    }
    for (const std::vector<std::string>& m : z.memorized)
        EXPECT_EQ(latch_of(m[0]), "0") << m[0];
    EXPECT_EQ(latches.size(), kept + z.memorized.size() + 1);
    for (const std::string& input : z.inputs)
        EXPECT_NE(blif.find(input), std::string::npos) << input;
    EXPECT_GT(read_file(base + ".c").size(), 1000u);
    EXPECT_NE(read_file(base + ".h").find(z.name), std::string::npos);
}

// The whole road, every target, with the plain recursions of the
// decision-diagram operators and with the production ones (computed table,
// explicit stacks, remembered substitutions, joins made directly, covers
// walked along their cubes instead of tables of every variable): the same
// nodes in the same order, so the same texts. Ten thousand equations are where the
// substitutions of the clean-up meet nodes that are not the ones their key
// finds in the unique table.
TEST(RoadDifferential, PlainAndProductionOperatorsWriteTheSameTexts)
{
    scratch_dir fast, plain;
    std::string module = generate(fast, 10000, 3);
    ASSERT_FALSE(module.empty());
    std::string name = module.substr(fast.path.size() + 1, module.size() - fast.path.size() - 5);
    ASSERT_EQ(run_shell("cp '" + module + "' '" + plain.path + "/'"), 0);
    // Each run in a child of its own, as the program would make it, with
    // the managers' default chosen first.
    auto road = [&](const std::string& dir, bool plain_operators) {
        pid_t child = fork();
        if (child == 0) {
            bool moved = chdir(dir.c_str()) == 0;
            freopen("/dev/null", "w", stdout);
            freopen("/dev/null", "w", stderr);
            unsetenv("DISPLAY");
            bddpp_manager::plain_by_default() = plain_operators;
            tarn_flags flags;
            flags.docFlag = flags.lustreFlag = flags.esterelFlag = flags.nusmvFlag = flags.blifFlag = 1;
            flags.cFlag = flags.vhdlFlag = flags.systemcFlag = flags.csharpFlag = flags.qsrFlag = 1;
            flags.valuedSimulFlag = 1;
            _exit(moved ? tarn_run(name + ".zkc", flags) : 127);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    };
    ASSERT_EQ(road(fast.path, false), 0);
    ASSERT_EQ(road(plain.path, true), 0);
    for (std::string file : {".blif", ".c", ".h", ".strl", ".doc", ".lus", ".smv", ".vhd", ".cs", "_sc.cc",
                             "_encapsulated.qsr"}) {
        file = name + file;
        std::string a = read_file(fast.path + "/" + file);
        EXPECT_FALSE(a.empty()) << file;
        EXPECT_TRUE(a == read_file(plain.path + "/" + file)) << file << " differs";
    }
    EXPECT_TRUE(read_file(fast.path + "/mosk_" + name + ".cc") == read_file(plain.path + "/mosk_" + name + ".cc"));
}
