// The command from a compiled-module file to the BLIF and C files: names,
// order of the announcements, and the texts that finalisation leaves
// predictable (a module without inputs whose one output is constant).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

std::string slurp(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream all;
    all << in.rdbuf();
    return in ? all.str() : "<missing>";
}

struct TarnRun {
    std::string dir, out, err;
    int status = -1;

    explicit TarnRun(const std::string& options)
    {
        char pattern[] = "/tmp/tarn_targets_XXXXXX";
        dir = mkdtemp(pattern);
        std::ofstream(dir + "/k.zkc") << "module: k  0 0\n"
                                         "output: o ;\n"
                                         "\n"
                                         "connexion: SETk RESETk RTLk;\n"
                                         "\n"
                                         "equation_def:\n"
                                         "1\n"
                                         "0: -1:-3:-3,1\n"
                                         "expressions:\n"
                                         "1 1 0:0,1,()\n"
                                         "1 1 1:0,-1,()\n"
                                         "end:\n";
        std::string command = std::string(TARN_BINARY_DIR) + "/driver/tarn " + dir + "/k.zkc " + options + " >" +
                              dir + "/out 2>" + dir + "/err";
        status = std::system(command.c_str());
        out = slurp(dir + "/out");
        err = slurp(dir + "/err");
    }
    ~TarnRun() { std::system(("rm -rf " + dir).c_str()); }
};

TEST(TarnRun, BlifAndCAreAnnouncedInOrderSourceBeforeHeader)
{
    TarnRun run("-c -blif");
    ASSERT_EQ(run.status, 0) << run.err;
    std::string d = run.dir;
    std::string expected = "generation of " + d + "/k.log\n" + "generation of " + d + "/k.blif\n" +
                           "generation of " + d + "/k.c\n" + "generation of " + d + "/k.h\n" +
                           "compilation finished in ";
    EXPECT_EQ(run.out.substr(0, expected.size()), expected);

    std::string blif = slurp(d + "/k.blif");
    EXPECT_EQ(blif.substr(0, 21), ".model k\n\n.outputs o\n") << blif;
    EXPECT_EQ(blif.rfind("\n\n.end\n\n"), blif.size() - 8) << blif;

    // The output is constant true: it reads the terminal's slot.
    std::string terminal = blif.substr(0, blif.find("\n1\n\n"));
    terminal = terminal.substr(terminal.rfind(".names ") + 7);
    EXPECT_NE(blif.find(".names " + terminal + " o\n1 1\n\n"), std::string::npos) << blif;

    std::string h = slurp(d + "/k.h");
    EXPECT_EQ(h.substr(0, 23), "#ifndef k_H\n#define k_H");
    EXPECT_NE(h.find("extern void k_automaton(int* o);\n#endif\n"), std::string::npos) << h;
    std::string c = slurp(d + "/k.c");
    EXPECT_EQ(c.substr(0, 18), "#include \"k.h\"\n#de");
    std::string slot = "k_node[" + terminal.substr(terminal.rfind('_') + 1) + "]";
    EXPECT_NE(c.find("   " + slot + "= !0;\n"), std::string::npos) << c;
    EXPECT_NE(c.find("  *o= " + slot + ";\n"), std::string::npos) << c;
}

} // namespace
