// What a user sees for every kind of bad input or failed output: the
// message, the exit status, no crash or hang, and no good file lost.

#include "driver/tarn_output.h"
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <chrono>
#include <csignal>
#include <random>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

std::string worked_with(const std::string& from, const std::string& to)
{
    std::string text = worked_module_text;
    std::string::size_type at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

struct bad_case {
    const char* kind;
    std::string text;
    int status;
    std::string err;  // the whole error stream, or with a leading '~' a part of it
};

std::string syntax(const std::string& line_and_error)
{
    return line_and_error + "\nERROR about loading file : ./in.zkc\nparsing terminated\n";
}

// Reader cases: a 0/1 (valued), b 2/3 (valued output), then S R T 4 to 9.
const std::string valued = "module: m 0 0 input: a : t ; output: b : t ; connexion: S R T; ";
const std::string empty_wood = "equation_def: 0 expressions: end: ";
const std::string illegal = "Error: Illegal operation!\n";

std::string with_bindings(const std::string& bindings, const std::string& evaluations)
{
    return valued + empty_wood + "binding: " + bindings + " end: evaltable: " + evaluations +
           " end: data: type: t; method: t f(t); constant: t z \"0\"; end:";
}

std::vector<bad_case> bad_cases()
{
    std::string text = worked_module_text;
    std::mt19937 rng(1);
    std::string noise(4000, ' ');
    for (char& c : noise)
        c = char(rng() % 256);
    std::string crlf;
    for (char c : text)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    std::string dated = worked_with("1 1 2:0,1", "-9223372036854775808 1 2:0,1");
    dated.replace(dated.find("1 1 4:2,1"), 9, "9223372036854775807 1 4:2,1");
    std::vector<bad_case> cases = {
        {"empty file", "", 1, syntax("line 1: syntax error, unexpected end of file, expecting TOKEN_MODULE")},
        {"real where a count stands", "module: m 0 0\nconnexion: S R T;\nequation_def: 1.5 expressions: end:\n", 1,
         syntax("line 3: syntax error, unexpected TOKEN_REAL, expecting TOKEN_NUMBER")},
        {"random bytes", noise, 1, "~ERROR about loading file : ./in.zkc\nparsing terminated\n"},
        {"NUL bytes", text.substr(0, 40) + std::string(3, '\0') + text.substr(40), 1,
         syntax("line 4: syntax error, unexpected TOKEN_IDENT, expecting TOKEN_CONNEXION")},
        {"CRLF line ends", crlf, 0, "parsing terminated\n"},
        {"id above every variable", worked_with("1 1 2:0,1,(6 )", "1 1 9223372036854775807:0,1,(6 )"), 1,
         "internal error in class_zkc_parser::bddexpression_convert(): no variable 9223372036854775807 at line 16\n"},
        {"negative id", worked_with("1 1 2:0,1,(6 )", "1 1 -2:0,1,(6 )"), 1,
         "internal error in class_zkc_parser::bddexpression_convert(): no variable -2 at line 16\n"},
        {"dates at the edges of a long", dated, 0, "parsing terminated\n"},
        {"undefined node", worked_with("0: 6:1:1,-1", "0: 6:7:1,-1"), 1,
         "internal error in parsed_nodes_class::build(): node 7 is not defined\n"},
        {"definition given twice", worked_with("1 1 5:2,-1,(0 )\n", "1 1 5:2,-1,(0 )\n1 1 5:2,1,(0 )\n"), 0,
         "parsing terminated\n"},
        {"10 MB name", worked_with("local: n r;", "local: n r " + std::string(10000000, 'q') + ";"), 0,
         "parsing terminated\n"},
        {"10 MB comment", "// " + std::string(10000000, 'c') + "\n" + text, 0, "parsing terminated\n"},
        // Found by the fuzzer: the cycle's report lists the wood's levels
        // up to a date read from the file, eleven digits long.
        {"cycle dated near the largest long",
         read_file(TARN_SOURCE_DIR "/tests/driver/inputs/cycle_dated_near_the_largest_long.zkc"), 1,
         "~      levels: 2 to 12147483647: no date\n"},
        // Found by the fuzzer: a cycle whose paths the critical-path walk
        // would enumerate for ever.
        {"cycle with more paths than can be walked",
         read_file(TARN_SOURCE_DIR "/tests/driver/inputs/cycle_with_many_paths.zkc"), 1,
         "~ERROR in Bddexpressionwood::up_critical_path(): more than 4000000 steps walked from variable 4: the "
         "module has a signals cycle\n"},
        {"binding of a variable no signal holds", with_bindings("(40, 41): value: 0;", "0: $0;"), 1,
         "~unknown data signal:40\n"},
        {"binding of a connexion signal", with_bindings("(4, 5): value: 0;", "0: $0;"), 1, "~unknown data signal:S\n"},
        {"evaluation line that does not exist", with_bindings("(2, 3): value: 3;", "0: $0;"), 1,
         "~" + illegal + "binding_declaration_parse::get_evalnode: node_not_found\n"},
        {"operation with three operands", with_bindings("(2, 3): value: 0;", "0: %%0(1, 1, 1); 1: $0;"), 1,
         "~" + illegal + "binding_declaration_parse::dataexpr: invalid_operator\n"},
        {"operation without operand", with_bindings("(2, 3): value: 0;", "0: %%5();"), 1,
         "~" + illegal + "binding_declaration_parse::dataexpr: invalid_operator\n"},
        {"signal value of no signal", with_bindings("(2, 3): value: 0;", "0: %%14(77, 78);"), 1,
         "~binding_declaration_parse::dataexpr: signal not found: 77\n"},
        {"signal value of a connexion signal", with_bindings("(2, 3): value: 0;", "0: %%14(6, 7);"), 1,
         "~binding_declaration_parse::dataexpr2: signal not found: R\n"},
        {"evaluation lines that read each other", with_bindings("(2, 3): value: 0;", "0: %%4(1); 1: %%4(0);"), 1,
         "~binding_declaration_parse::dataexpr: node 0 reads itself\n"},
        // "$" n in an argument list names evaluation line n.
        {"argument naming its own line", with_bindings("(2, 3): value: 1;", "1: %0($1, $0); 0: $0;"), 1,
         "~binding_declaration_parse::dataexpr: node 1 reads itself\n"},
        {"constant beyond the file's", with_bindings("(2, 3): value: 0;", "0: $5;"), 1,
         "~binding_declaration_parse::dataexpr: unknown constant: 5\n"},
        {"memorised pair of an undeclared signal",
         "module: m 0 0 local: l ; memorized: p ghost; connexion: S R T; " + empty_wood, 1,
         "~ undeclared signal \"ghost\" at line 1\n"},
        {"root node no line defines", valued + "equation_def: 2 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:", 1,
         "~internal error in class_zkc_parser::bddexpression_convert(): node 0 is not defined at line 1\n"},
        {"cycle in the node table",
         valued + "equation_def: 3 0: 0:1:2,-1 1: 2:0:2,-1 2: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:", 1,
         "~internal error in parsed_nodes_class::build(): node 0 is its own descendant\n"},
        {"node on a variable that does not exist",
         valued + "equation_def: 2 0: 50:1:1,-1 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:", 1,
         "~internal error in parsed_nodes_class::build(): no variable 50\n"},
        {"else link that is no link",
         valued + "equation_def: 2 0: 0:1:1,4294967297 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:", 1,
         "~internal error in parsed_nodes_class::build(): else link neither 1 nor -1 on variable 0\n"},
        {"register of an undeclared signal",
         "module: m 0 0 local: n ; register: n x 0; connexion: S R T; " + empty_wood, 1,
         "~register x not defined as local ...\nparsing terminated\n"},
    };
    // A valid module cut at every tenth of its length.
    for (int k = 1; k < 10; ++k)
        cases.push_back({"cut module", text.substr(0, text.size() * k / 10), 1, "~ERROR about loading file"});
    return cases;
}

} // namespace

TEST(BadInput, EachKindHasItsMessageAndStatus)
{
    for (const bad_case& c : bad_cases()) {
        scratch_dir s;
        s.write("in.zkc", c.text);
        tarn_output r = run_tarn_in(s.path, {"in.zkc", "-c"});
        SCOPED_TRACE(c.kind);
        EXPECT_EQ(r.status, c.status);
        if (c.err[0] == '~')
            EXPECT_NE(r.err.find(c.err.substr(1)), std::string::npos) << r.err;
        else
            EXPECT_EQ(r.err, c.err);
        EXPECT_EQ(exists(s.path + "/in.c"), c.status == 0);
        // A fatal error keeps the parser's trace of the lines read before it.
        if (c.kind == std::string("undefined node")) {
            EXPECT_NE(read_file(s.path + "/in.zkc.log"), "");
        }
    }
}

// A missing file, a directory, and "-v" once a batch run starts.
TEST(BadInput, PathsThatAreNoFileAreMissingFiles)
{
    scratch_dir s;
    ASSERT_EQ(mkdir((s.path + "/d.zkc").c_str(), 0755), 0);
    for (const char* name : {"none.zkc", "d.zkc", "-v"}) {
        tarn_output r = run_tarn_in(s.path, {name, "-c"});
        EXPECT_EQ(r.status, 1) << name;
        EXPECT_EQ(r.err, "FILE NOT FOUND !\nparsing terminated\n") << name;
        EXPECT_EQ(r.out, "") << name;
    }

    // Permissions do not stop the superuser; the case is for everyone else.
    s.write("locked.zkc", worked_module_text);
    chmod((s.path + "/locked.zkc").c_str(), 0);
    if (geteuid() != 0) {
        tarn_output locked = run_tarn_in(s.path, {"locked.zkc", "-c"});
        EXPECT_EQ(locked.status, 1);
        EXPECT_EQ(locked.err, "FILE NOT FOUND !\nparsing terminated\n");
    }
}

// An output that cannot be opened is not reported, as always; a write that
// fails keeps the previous file and ends the run with status 1. An output
// is written where it stands: through a link, with its permissions.
TEST(BadInput, OutputsThatCannotBeWritten)
{
    scratch_dir s;
    s.write("in.zkc", worked_module_text);
    s.write("in.c", "previous\n");
    chmod((s.path + "/in.c").c_str(), 0444);
    if (geteuid() != 0) {
        tarn_output r = run_tarn_in(s.path, {"in.zkc", "-c"});
        EXPECT_EQ(r.status, 0);
        EXPECT_NE(r.out.find("generation of ./in.c\n"), std::string::npos);
        EXPECT_EQ(read_file(s.path + "/in.c"), "previous\n");
    }

    {
        // A folder in the place of the source: not opened, the header is
        // written, both are announced and the run goes on.
        scratch_dir f;
        f.write("in.zkc", worked_module_text);
        ASSERT_EQ(mkdir((f.path + "/in.c").c_str(), 0755), 0);
        tarn_output r = run_tarn_in(f.path, {"in.zkc", "-c", "-blif"});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "parsing terminated\n");
        EXPECT_NE(r.out.find("generation of ./in.blif\ngeneration of ./in.c\ngeneration of ./in.h\ncompilation "
                             "finished in "),
                  std::string::npos)
            << r.out;
        EXPECT_NE(read_file(f.path + "/in.h"), "");
        EXPECT_FALSE(exists(f.path + "/in.c.part"));

        // A link stays a link, and the file behind it is written; a file
        // keeps its permissions.
        ASSERT_EQ(mkdir((f.path + "/elsewhere").c_str(), 0755), 0);
        f.write("elsewhere/target.h", "previous\n");
        std::remove((f.path + "/in.h").c_str());
        ASSERT_EQ(symlink("elsewhere/target.h", (f.path + "/in.h").c_str()), 0);
        f.write("in.blif", "previous\n");
        chmod((f.path + "/in.blif").c_str(), 0640);
        r = run_tarn_in(f.path, {"in.zkc", "-c", "-blif"});
        EXPECT_EQ(r.status, 0) << r.err;
        struct stat st;
        ASSERT_EQ(lstat((f.path + "/in.h").c_str(), &st), 0);
        EXPECT_TRUE(S_ISLNK(st.st_mode));
        EXPECT_NE(read_file(f.path + "/elsewhere/target.h").find("#"), std::string::npos);
        ASSERT_EQ(stat((f.path + "/in.blif").c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 07777, 0640u);
        EXPECT_NE(read_file(f.path + "/in.blif"), "previous\n");
    }

    std::string full = s.path + "/full";
    mkdir(full.c_str(), 0755);
    if (mount("tarn", full.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "no small file system can be mounted here (needs the superuser): full disk not tried";
    std::system(("'" TARN_BINARY_DIR "/tools/zkcgen' 300 > '" + full + "/big.zkc'").c_str());
    std::ofstream(full + "/big.c") << "previous\n";
    tarn_output r = run_tarn_in(full, {"big.zkc", "-blif", "-c"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("tarn: cannot write ./big.c: No space left on device; the previous file is kept\n"),
              std::string::npos)
        << r.err;
    EXPECT_EQ(read_file(full + "/big.c"), "previous\n");
    EXPECT_FALSE(exists(full + "/big.c.part"));
    umount(full.c_str());
}

// An interrupted run leaves the previous output whole and no companion
// file behind.
TEST(BadInput, InterruptedRunKeepsThePreviousOutput)
{
    scratch_dir s;
    // Large enough that the write lasts well beyond one look at the folder;
    // the instrumented build reads and finalises far more slowly.
#if defined(__SANITIZE_ADDRESS__)
    const char* size = "50000";
#else
    const char* size = "200000";
#endif
    std::system(("'" TARN_BINARY_DIR "/tools/zkcgen' " + std::string(size) + " > '" + s.path + "/big.zkc'").c_str());
    s.write("big.blif", "previous\n");
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (chdir(s.path.c_str()) == 0) {
            freopen("/dev/null", "w", stdout);
            freopen("/dev/null", "w", stderr);
            execl(TARN_BINARY_DIR "/driver/tarn", "tarn", "big.zkc", "-blif", static_cast<char*>(nullptr));
        }
        _exit(127);
    }
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(300);
    while (!exists(s.path + "/big.blif.part") && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    bool writing = exists(s.path + "/big.blif.part");
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(writing) << "the output was never written beside its place";
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
    EXPECT_EQ(read_file(s.path + "/big.blif"), "previous\n");
    EXPECT_FALSE(exists(s.path + "/big.blif.part"));
}

// An error that ends the run while an output is half written exits without
// unwinding: the companion goes all the same.
TEST(BadInput, ExitInTheMiddleOfAnOutputKeepsThePreviousOne)
{
    scratch_dir s;
    s.write("out.c", "previous\n");
    EXPECT_EXIT(
        {
            tarn_output_file out(s.path + "/out.c");
            out.stream() << "half of it" << std::flush;
            if (!exists(s.path + "/out.c.part")) std::exit(2);
            std::exit(1);
        },
        ::testing::ExitedWithCode(1), "");
    EXPECT_FALSE(exists(s.path + "/out.c.part"));
    EXPECT_EQ(read_file(s.path + "/out.c"), "previous\n");
}
