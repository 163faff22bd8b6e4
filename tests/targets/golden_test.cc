// Whole texts of every generator, as the command writes them for the worked
// module and a few bundled examples, against the files of golden/; and the
// order in which the driver announces them.
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string golden = TARN_SOURCE_DIR "/tests/targets/golden/";

// The first line where a text departs from its golden file, for a failure
// message that names the place instead of printing both files.
std::string first_difference(const std::string& got, const std::string& want)
{
    std::istringstream g(got), w(want);
    std::string a, b;
    for (int line = 1;; ++line) {
        bool more_a = static_cast<bool>(std::getline(g, a)), more_b = static_cast<bool>(std::getline(w, b));
        if (!more_a && !more_b)
            return "texts differ in their last line end";
        if (!more_a || !more_b || a != b)
            return "line " + std::to_string(line) + ":\n  written: " + (more_a ? a : "<end>") +
                   "\n  golden:  " + (more_b ? b : "<end>");
    }
}

std::string module_text(const std::string& name)
{
    return name == "m" ? std::string(worked_module_text)
                       : read_file(TARN_SOURCE_DIR "/examples/" + name + ".zkc");
}

// Each module with the options that make its files: one module per shape
// (the worked module; a register starting true and a memorised pair; valued
// signals, clocked bindings, methods and constants; a valued memorised
// output; no input).
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
        {"blink", {"-doc", "-qsr"}, {"blink.doc", "blink_encapsulated.qsr"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.module);
        scratch_dir s;
        s.write(std::string(c.module) + ".zkc", module_text(c.module));
        std::vector<std::string> args{std::string(c.module) + ".zkc"};
        args.insert(args.end(), c.options.begin(), c.options.end());
        tarn_output r = run_tarn_in(s.path, args);
        ASSERT_EQ(r.status, 0) << r.err;
        for (const std::string& f : c.files) {
            std::string written = read_file(s.path + "/" + f), expected = read_file(golden + f);
            EXPECT_FALSE(expected.empty()) << "no golden " << f;
            EXPECT_TRUE(written == expected) << f << " " << first_difference(written, expected);
        }
    }
}

// Every file of one run announced once, in the driver's order; the wires
// option changes no text.
TEST(GoldenTexts, AnnouncedInTheDriversOrder)
{
    scratch_dir s;
    s.write("m.zkc", worked_module_text);
    tarn_output r = run_tarn_in(s.path, {"m.zkc", "-qsr", "-doc", "-csharp", "-esterel", "-blif", "-nusmv",
                                         "-lustre", "-vhdl", "-c", "-systemc"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, r.out.find("compilation finished in ")),
              "generation of ./m.log\n"
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
              "generation of ./m_encapsulated.qsr\n");
    std::string smv = read_file(s.path + "/m.smv");
    r = run_tarn_in(s.path, {"m.zkc", "-nusmv", "-no_suppress_wires"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(read_file(s.path + "/m.smv"), smv);
}

} // namespace
