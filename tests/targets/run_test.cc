// The command from a compiled-module file to the BLIF and C files: names,
// order of the announcements, and the texts that finalisation leaves
// predictable (a module without inputs whose one output is constant).
#include "tests/tarn_process.h"

namespace {

TEST(TarnRun, BlifAndCAreAnnouncedInOrderSourceBeforeHeader)
{
    scratch_dir dir;
    const std::string& d = dir.path;
    std::string input = dir.write("k.zkc", "module: k  0 0\noutput: o ;\n\nconnexion: SETk RESETk RTLk;\n\n"
                                           "equation_def:\n1\n0: -1:-3:-3,1\nexpressions:\n1 1 0:0,1,()\n"
                                           "1 1 1:0,-1,()\nend:\n");
    tarn_output run = run_tarn_in(d, {input, "-c", "-blif"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::string expected = "generation of " + d + "/k.log\n" + "generation of " + d + "/k.blif\n" +
                           "generation of " + d + "/k.c\n" + "generation of " + d + "/k.h\n" +
                           "compilation finished in ";
    EXPECT_EQ(run.out.substr(0, expected.size()), expected);

    std::string blif = read_file(d + "/k.blif");
    EXPECT_EQ(blif.substr(0, 21), ".model k\n\n.outputs o\n") << blif;
    EXPECT_EQ(blif.rfind("\n\n.end\n\n"), blif.size() - 8) << blif;

    // The output is constant true: it reads the terminal's slot.
    std::string terminal = blif.substr(0, blif.find("\n1\n\n"));
    terminal = terminal.substr(terminal.rfind(".names ") + 7);
    EXPECT_NE(blif.find(".names " + terminal + " o\n1 1\n\n"), std::string::npos) << blif;

    std::string h = read_file(d + "/k.h");
    EXPECT_EQ(h.substr(0, 23), "#ifndef k_H\n#define k_H");
    EXPECT_NE(h.find("extern void k_automaton(int* o);\n#endif\n"), std::string::npos) << h;
    std::string c = read_file(d + "/k.c");
    EXPECT_EQ(c.substr(0, 18), "#include \"k.h\"\n#de");
    std::string slot = "k_node[" + terminal.substr(terminal.rfind('_') + 1) + "]";
    EXPECT_NE(c.find("   " + slot + "= !0;\n"), std::string::npos) << c;
    EXPECT_NE(c.find("  *o= " + slot + ";\n"), std::string::npos) << c;
}

} // namespace
