// The tarn program end to end: texts, exit status, files written or not;
// and the parts of the run that the command line cannot reach alone: name
// derivation corners and the VHDL post-pass on a place it cannot write;
// `make install` and `make uninstall` into a scratch prefix.

#include "driver/tarn_run.h"
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <regex>
#include <set>
#include <sstream>
#include <unistd.h>

namespace {

class TarnCommand : public ::testing::Test {
protected:
    scratch_dir scratch;
    const std::string& dir = scratch.path;

    void SetUp() override { scratch.write("m.zkc", worked_module_text); }
    tarn_output tarn(const std::vector<std::string>& args) { return run_tarn_in(dir, args); }

    // The directory holds exactly these names.
    bool only_files(std::set<std::string> names)
    {
        std::vector<std::string> seen = files_with_suffix(dir);
        return std::set<std::string>(seen.begin(), seen.end()) == names;
    }
};

}  // namespace

TEST_F(TarnCommand, HelpAndVersion)
{
    tarn_output h = tarn({"-h"});
    EXPECT_EQ(h.status, 0);
    EXPECT_EQ(h.err, "");
    EXPECT_EQ(h.out,
              "\n"
              "        TARN: BRAm Finalizer\n"
              "        auteur Q. Tessel & M. Varne , version 3.4.3-4\n\n"
              "   syntax:\n\n"
              "         tarn <filename> [no_suppress_wires]\n"
              "                         [-sc] [-doc] [-lustre] [-esterel] [-nusmv]\n"
              "                         [-valued_simul] [-blif] [-zkc] [-vhdl] [-altera] [-c] [-csharp ] [-qsr]\n\n"
              "         OR tarn -v\n\n"
              "         OR tarn -h\n\n"
              "   options:\n\n"
              "      -h : this help\n\n"
              "      -v : version of finaliser\n\n"
              "      -no_suppress_wires : deactivate control wires suppression\n\n"
              "      -doc : generate a documentation file \n\n"
              "      -lustre : generate a LUSTRE node\n\n"
              "      -esterel : generate an ESTEREL module\n\n"
              "      -nusmv : generate an NUSMV file\n\n"
              "      -blif : generate a file in blif format \n\n"
              "      -vhdl : generate a file in vhdl format\n\n"
              "      -altera : same as -vhdl option\n"
              "                more useful for the ALTERA synthetisers\n\n"
              "      -c : generate an automaton in c language\n"
              "           (generate an .h file too)\n\n"
              "      -valued_simul : generate a c++ user file for mosk simulator\n"
              "      -template_valued_simul : generate a c++ template user file for mosk simulator\n"
              "           (generate an .h file too)\n\n"
              "      -csharp : generate an automaton in c# language\n\n"
              "      -qsr : generate an encapsulated quasar file\n");

    tarn_output v = tarn({"-v"});
    EXPECT_EQ(v.status, 0);
    EXPECT_EQ(v.out, "TARN : BRAm Finaliser version  3.4.3-4\n");
    EXPECT_EQ(v.err, "");
}

TEST_F(TarnCommand, UnknownOptionStopsBeforeReading)
{
    // The banner's own spellings that the command refuses, and a file name
    // given after an option.
    for (const char* bad : {"-sc", "-zkc", "-template_valued_simul", "no_suppress_wires", "-C", "-c "}) {
        tarn_output r = tarn({"m.zkc", "-c", bad});
        EXPECT_EQ(r.status, 1) << bad;
        EXPECT_EQ(r.err, std::string("`") + bad + "' unknown option: try tarn -h to known the list ...\n\n");
        EXPECT_EQ(r.out, "");
    }
    tarn_output swapped = tarn({"-doc", "m.zkc"});
    EXPECT_EQ(swapped.status, 1);
    EXPECT_EQ(swapped.err, "`m.zkc' unknown option: try tarn -h to known the list ...\n\n");
    EXPECT_TRUE(only_files({"m.zkc"}));  // not even the log
}

TEST_F(TarnCommand, ValidFileWithoutTargetsThenEveryTargetInItsFixedOrder)
{
    tarn_output r = tarn({"m.zkc", "-no_suppress_wires"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "parsing terminated\n");
    EXPECT_EQ(r.out.rfind("generation of ./m.log\ncompilation finished in ", 0), 0u) << r.out;
    // The closing line: a number of seconds in the stream's default format.
    EXPECT_TRUE(std::regex_search(r.out, std::regex("\ncompilation finished in [0-9.e+-]+ seconds\n\n$"))) << r.out;
    // The log really written is the input's name plus ".log".
    EXPECT_TRUE(only_files({"m.zkc", "m.zkc.log"}));
    EXPECT_NE(read_file(dir + "/m.zkc.log").find("definition finale"), std::string::npos);

    r = tarn({"m.zkc", "-qsr", "-systemc", "-csharp", "-vhdl", "-altera", "-c", "-blif", "-nusmv",
             "-esterel", "-lustre", "-doc", "-valued_simul", "-c"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "parsing terminated\n");
    // Every target is written once, in the table's order, even with -c
    // given twice.
    EXPECT_EQ(r.out.rfind("generation of ./m.log\n"
                          "generation of ./mosk_m.cc\n"
                          "generation of ./m.doc\n"
                          "generation of ./m.strl\n"
                          "generation of ./m.lus\n"
                          "generation of ./m.smv\n"
                          "generation of ./m.blif\n"
                          "generation of ./m.c\n"
                          "generation of ./m.h\n"
                          "generation of ./m.cs\n"
                          "generation of ./m.vhd\n"
                          "generation of ./m_sc.cc\n"
                          "generation of ./m_sc.h\n"
                          "generation of ./m_encapsulated.qsr\n"
                          "compilation finished in ",
                          0),
              0u)
        << r.out;
    EXPECT_TRUE(only_files({"m.zkc", "m.zkc.log", "mosk_m.cc", "m.doc", "m.strl", "m.lus", "m.smv", "m.blif", "m.c",
                            "m.h", "m.cs", "m.vhd", "m.vhd_tmp", "m_sc.cc", "m_sc.h", "m_encapsulated.qsr"}));
}

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
        s.path + "/no/such/dir/out.vhd", [&](std::ostream&, std::ifstream&) { called = true; }, report));
    EXPECT_TRUE(called);
    EXPECT_EQ(report.str(), "");
    EXPECT_EQ(read_file(s.path + "/no/such/dir/out.vhd"), "");
}

// The executables and their manual pages land where PREFIX says, run, and
// go again.
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
