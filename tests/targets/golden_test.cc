// Whole texts of every generator, as the command writes them for the worked
// module and a few bundled examples, against the files of golden/; and the
// VHDL's Altera form, libraries and post-pass on names against them, and
// the temporary file a VHDL run leaves when it stops.
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace {

const std::string golden = TARN_SOURCE_DIR "/tests/targets/golden/";

// Each module with the options that make its files: one module per shape
// (the worked module; a register starting true and a memorised pair; valued
// signals, clocked bindings, methods and constants; a valued memorised
// output; no input; a generated module).
TEST(GoldenTexts, EveryGeneratorOnTheWorkedModuleAndExamples)
{
    struct {
        const char* module;
        std::vector<std::string> options, files;
    } cases[] = {
        {"m", {"-nusmv", "-lustre", "-esterel", "-csharp", "-doc", "-qsr", "-c", "-blif", "-systemc"},
         {"m.smv", "m.lus", "m.strl", "m.cs", "m.doc", "m_encapsulated.qsr", "m.c", "m.h", "m.blif", "m_sc.cc",
          "m_sc.h"}},
        {"shift", {"-nusmv", "-lustre", "-esterel", "-c", "-blif"},
         {"shift.smv", "shift.lus", "shift.strl", "shift.c", "shift.h", "shift.blif"}},
        {"peak", {"-nusmv", "-lustre", "-esterel", "-csharp", "-doc", "-qsr", "-c", "-systemc", "-valued_simul"},
         {"peak.smv", "peak.lus", "peak.strl", "peak.cs", "peak.doc", "peak_encapsulated.qsr", "peak.c", "peak.h",
          "peak_sc.cc", "peak_sc.h", "mosk_peak.cc"}},
        {"sum", {"-esterel", "-csharp", "-vhdl", "-c"}, {"sum.strl", "sum.cs", "sum.vhd", "sum.c", "sum.h"}},
        {"toggle", {"-vhdl", "-blif"}, {"toggle.vhd", "toggle.blif"}},
        // zkcgen's module: many registers, memorised pairs and shared nodes.
        {"gen", {"-nusmv", "-lustre", "-doc", "-esterel"}, {"gen.smv", "gen.lus", "gen.doc", "gen.strl"}},
        // The wires option changes no text.
        {"m", {"-nusmv", "-no_suppress_wires"}, {"m.smv"}},
        {"blink", {"-doc", "-qsr"}, {"blink.doc", "blink_encapsulated.qsr"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.module);
        scratch_dir s;
        if (c.module == std::string("m"))
            s.write("m.zkc", worked_module_text);
        else if (c.module == std::string("gen"))
            generate_module(s.path, "gen", 150, 1);
        else
            copy_example(s.path, c.module);
        std::vector<std::string> args{std::string(c.module) + ".zkc"};
        args.insert(args.end(), c.options.begin(), c.options.end());
        tarn_output r = run_tarn_in(s.path, args);
        ASSERT_EQ(r.status, 0) << r.err;
        for (const std::string& f : c.files) {
            std::string written = read_file(s.path + "/" + f), expected = read_file(golden + f);
            EXPECT_FALSE(expected.empty()) << "no golden " << f;
            EXPECT_EQ(written, expected) << f;
        }
    }
}

// The Altera form differs in the boolean type only; the libraries come
// first, line by line, from the working directory's file and not from the
// input's directory; both options together write one file.
TEST(Vhdl, AlteraFormAndTheLibrariesOfTheWorkingDirectory)
{
    scratch_dir s;
    copy_example(s.path, "sum");
    ASSERT_EQ(std::system(("mkdir '" + s.path + "/run'").c_str()), 0);
    s.write("vhdl_libs.inc", "-- beside the input, not read\n");
    s.write("run/vhdl_libs.inc", "library ieee;\nuse ieee.std_logic_1164.all;");
    tarn_output r = run_tarn_in(s.path + "/run", {"../sum.zkc", "-altera", "-vhdl", "-c"});
    ASSERT_EQ(r.status, 0) << r.err;
    std::string expected = std::regex_replace(read_file(golden + "sum.vhd"), std::regex("\\bbit\\b"), "std_logic");
    expected = std::regex_replace(expected, std::regex("-- no vhdl_libs.inc file found ...\n\n"),
                                  "library ieee;\nuse ieee.std_logic_1164.all;\n");
    EXPECT_EQ(read_file(s.path + "/sum.vhd"), expected);
    // In the driver's order, C before VHDL, one VHDL line.
    std::string lines = "generation of ../sum.log\ngeneration of ../sum.c\ngeneration of ../sum.h\n"
                        "generation of ../sum.vhd\ncompilation finished in ";
    EXPECT_EQ(r.out.substr(0, lines.size()), lines);
}

// Every "__" becomes "_X_" in the final file, comments included; the
// temporary file keeps the generator's text. Without a value for VHDL a
// constant stops the generation before the post-pass: the temporary file
// stays as far as it got (the message ends the process before the last
// constant's line is flushed), and no VHDL file is written.
TEST(Vhdl, TheTemporaryFileKeepsTheGeneratorsText)
{
    scratch_dir s;
    std::string text = read_file(TARN_SOURCE_DIR "/examples/toggle.zkc");
    text = std::regex_replace(text, std::regex("toggle"), "tog__gle");
    text = std::regex_replace(text, std::regex("input: t ;"), "input: t__in ;");
    s.write("tog__gle.zkc", text);
    ASSERT_EQ(run_tarn_in(s.path, {"tog__gle.zkc", "-vhdl"}).status, 0);
    std::string tmp = read_file(s.path + "/tog__gle.vhd_tmp");
    std::string vhd = read_file(s.path + "/tog__gle.vhd");
    EXPECT_NE(tmp.find("from tog__gle Zinc Kernel"), std::string::npos) << tmp;
    EXPECT_NE(tmp.find("       t__in : in bit;\n"), std::string::npos) << tmp;
    EXPECT_EQ(vhd.find("__"), std::string::npos) << vhd;
    EXPECT_EQ(std::regex_replace(tmp, std::regex("__"), "_X_"), vhd);
    EXPECT_NE(vhd.find("signal v_s_tog_X_gle_boot : bit;\n"), std::string::npos) << vhd;

    const struct {
        std::string module, constant, last_line;
    } stops[] = {{"accu", "limit", "constant zero : integer := 0;\n"},
                 {"peak", "offset", "constant threshold : integer := 7;\n"}};
    for (const auto& c : stops) {
        copy_example(s.path, c.module);
        tarn_output r = run_tarn_in(s.path, {c.module + ".zkc", "-vhdl"});
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find("ERROR: no initial value provided for VHDL language for the constant: \"" + c.constant +
                             "\"\n"),
                  std::string::npos)
            << r.err;
        EXPECT_EQ(r.out.find(".vhd"), std::string::npos) << r.out;
        EXPECT_FALSE(exists(s.path + "/" + c.module + ".vhd"));
        tmp = read_file(s.path + "/" + c.module + ".vhd_tmp");
        EXPECT_EQ(tmp.substr(tmp.size() - std::min(tmp.size(), c.last_line.size())), c.last_line) << tmp;
    }
}

} // namespace
