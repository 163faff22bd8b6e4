// A generated module through the whole road, every target, with the plain
// operators and the production ones: what the run says, the latches of the
// BLIF, and the same texts both ways. (The tools that read the outputs run
// in tests/consumers.)

#include "tests/scale/scale_support.h"

#include "bdd/bddpp.h"
#include "driver/tarn_run.h"

#include <gtest/gtest.h>

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

} // namespace

// The whole road, every target, with the plain recursions of the
// decision-diagram operators and with the production ones (computed table,
// explicit stacks, remembered substitutions, joins made directly, covers
// walked along their cubes instead of tables of every variable): the same
// nodes in the same order, so the same texts and messages. Ten thousand
// equations are where the substitutions of the clean-up meet nodes that are
// not the ones their key finds in the unique table.
TEST(RoadDifferential, PlainAndProductionOperatorsWriteTheSameTexts)
{
    scratch_dir fast, plain;
    const std::string name = "g";
    std::string text = generate_module(fast.path, name, 10000, 3);
    ASSERT_FALSE(text.empty());
    plain.write(name + ".zkc", text);
    // Each run in a child of its own, as the program would make it, with
    // the managers' default chosen first.
    auto road = [&](const std::string& dir, bool plain_operators) {
        pid_t child = fork();
        if (child == 0) {
            bool moved = chdir(dir.c_str()) == 0;
            freopen("out.txt", "w", stdout);
            freopen("err.txt", "w", stderr);
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

    // The reader says nothing before its closing line; after it the
    // finalisation only names the registers it drops. Any other message
    // (a misuse reported by the engine, a refused signal) is a fault.
    const std::string errors = read_file(fast.path + "/err.txt"), output = read_file(fast.path + "/out.txt");
    EXPECT_EQ(read_file(plain.path + "/err.txt"), errors);
    ASSERT_EQ(errors.rfind("parsing terminated\n", 0), 0u) << errors;
    std::istringstream rest(errors.substr(19));
    for (std::string line; std::getline(rest, line);)
        EXPECT_EQ(line.rfind("detecting useless register ", 0), 0u) << line;
    EXPECT_NE(output.find("generation of ./g.blif\ngeneration of ./g.c\ngeneration of ./g.h\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("\ncompilation finished in "), std::string::npos) << output;

    // A latch for each register that the finalisation kept, one for each
    // memorised pair and one for the boot register. (Their behaviour is
    // the consumers' to check.)
    zkc_sections z;
    std::string error;
    ASSERT_TRUE(read_sections(text, z, error)) << error;
    std::string blif = read_file(fast.path + "/g.blif");
    EXPECT_EQ(lines_starting(blif, ".model"), 1);
    EXPECT_EQ(lines_starting(blif, ".end"), 1);
    long useless = lines_starting(errors, "detecting useless register ");
    EXPECT_EQ(lines_starting(blif, ".latch"), long(z.registers.size() + z.memorized.size() + 1) - useless);
}
