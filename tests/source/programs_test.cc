// The ZK programs of programs/ through bram, tarn -c and gcc, run on the
// input traces written beside them; the files bram writes read back by
// tarn without a message; bram's output the same on every run; and the
// rejections of bad programs with their message, status 1 and no file.

#include "tests/source/trace_check.h"

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

const std::string programs = TARN_SOURCE_DIR "/tests/source/programs";

TEST(BramPrograms, RunAsTheirTracesSay)
{
    std::vector<std::string> sources = files_with_suffix(programs, ".zk");
    ASSERT_GE(sources.size(), 4u);
    int traces = 0;
    for (const std::string& source : sources) {
        SCOPED_TRACE(source);
        scratch_dir s;
        tarn_output b = bram_twice(s, source + ".zk", read_file(programs + "/" + source + ".zk"));
        ASSERT_EQ(b.status, 0) << b.err;
        EXPECT_EQ(b.err, "");
        for (const std::string& module : files_with_suffix(s.path, ".zkc")) {
            SCOPED_TRACE(module);
            EXPECT_NE(b.out.find("generation of ./" + module + ".zkc\n"), std::string::npos) << b.out;
            std::string trace_path = programs + "/" + module + ".trace";
            ASSERT_TRUE(exists(trace_path)) << "no trace for " << module;
            std::string user_path = programs + "/" + module + ".user.c";
            expect_trace(s, module, parse_trace(read_file(trace_path)), exists(user_path) ? read_file(user_path) : "",
                         TARN_SOURCE_DIR "/examples/user");
            traces++;
        }
    }
    EXPECT_GE(traces, 15);
}

const char* data_part = "data:\n"
                        "  Type: integer, real;\n"
                        "  Method: integer plus(integer, integer);\n"
                        "  Constant: integer one := 1; real half :c= \"0.5\" :vhdl= \"0.5\";\n"
                        "end data\n";

// Valued programs: bram and tarn agree on the file, with its bindings,
// literals made constants, the data tables, value triggers and valued
// Mealy equations. So on the two incarnations of a loop's body that can
// end and start again in one reaction: their sequence is "S_" and the
// next number of the sequences, after the copy's own.
TEST(BramPrograms, ValuedModulesReadBack)
{
    const std::string integers = "data: Type: integer; end data\n";
    const struct {
        std::string source, module;
        std::vector<std::string> parts;
    } cases[] = {
        {std::string(data_part) + "module valued:\n  Input: i : integer, go;\n  Output: v : integer, w : integer;\n"
                                  "  Local: l : integer;\n  Pre: pv : v $one;\n"
                                  "  emit v(plus($i, 2)) >> emit l($pv + one) >> present go emit w($l * 3)\nend\n",
         "valued", {"binding:", "integer lit_2 :default=  \"2\";", "pv v one;"}},
        {integers + "module vt: Input: v : integer; Output: o;\n"
                    "automaton state: S; state: T / o; transition: initial-> S; S [value: $v > 2] -> T;\nend\n",
         "vt", {"binding:"}},
        {integers + "module vm: Input: a, v : integer; Output: w : integer;\nMealy Machine w($v + 1) = a;\nend\n",
         "vm", {"binding:"}},
        {"module lp: Input: a; Output: o;\nloop { weak abort { pause >> emit o } when a }\nend\n", "lp",
         {"SETSeq1", "SETSeq2", "SETS_3", "RTLS_3"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.module);
        scratch_dir s;
        s.write("v.zk", c.source);
        tarn_output b = run_bram_in(s.path, {"v.zk"});
        ASSERT_EQ(b.status, 0) << b.err;
        std::string zkc = read_file(s.path + "/" + c.module + ".zkc");
        for (const std::string& part : c.parts)
            EXPECT_NE(zkc.find(part), std::string::npos) << part << "\n" << zkc;
        tarn_output t = run_tarn_in(s.path, {c.module + ".zkc", "-c"});
        EXPECT_EQ(t.status, 0) << t.err;
        EXPECT_EQ(t.err, "parsing terminated\n");
    }
}

TEST(BramPrograms, RejectionsSayWhyAndLeaveNoFile)
{
    std::string good = "module good: Output: o; emit o end\n";
    std::vector<rejection> cases = {
        {"syntax error", good + "module m:\n  Output: o;\n  emit o >>\nend\n",
         "PARSE ERROR at line 5: syntax error, unexpected end"},
        {"bad character", good + "module m: Output: o; emit o % end\n", "PARSE ERROR at line 2: syntax error"},
        {"undeclared condition", good + "module m: Output: o;\n present z emit o end\n",
         "PARSE ERROR at line 3: undeclared signal \"z\" in module \"m\"\nAbortion ..."},
        {"undeclared emission", good + "module m: Output: o; emit z end\n",
         "Error in module \"m\":\n Emission of output signal: \"z\"  undefined !"},
        {"input emitted", good + "module m: Input: a; emit a end\n",
         "Emission of output signal: \"a\"  undefined !"},
        {"pure given a value", std::string(data_part) + good + "module m: Output: o; Local: l; emit l(1) end\n",
         "Error in module \"m\":\n Emission of local signal: \"l\" with a value\n whereas this signal is declared "
         "pure!"},
        {"valued without value", std::string(data_part) + good + "module m: Output: v : integer; emit v end\n",
         "Emission of output signal: \"v\" without value !"},
        {"type mismatch", std::string(data_part) + good + "module m: Output: v : integer; emit v(half) end\n",
         "Emission of output signal: \"v\" with a value typed by : \"real\"\n whereas this signal is declared "
         "with the type : \"integer\""},
        {"undefined type", good + "module m: Input: i : foo; nothing end\n",
         "ERROR about input valued signal \"i\": type \"foo\" is not defined in data section ..."},
        {"duplicated signal", good + "module m: Input: a; Output: a; nothing end\n",
         "signal \"a\" declared twice in module \"m\""},
        {"reserved name", good + "module m: Output: SETm; nothing end\n", "signal name \"SETm\" is reserved"},
        {"duplicated module", good + good, "module \"good\" defined twice"},
        {"only default target", "data: Type: t; Constant: t c :default= \"0\"; end data\n" + good,
         "*****syntax error: constant declaration with only default target"},
        {"two values for c", "data: Type: t; Constant: t c :c= \"0\" :c= \"1\"; end data\n" + good,
         "****error:constant: c has already a value for: c"},
        {"constant by expression", "data: Type: t; Constant: t a := 1; t b := a; end data\n" + good,
         "the value of constant \"b\" is not a number, a real or a string"},
        {"undefined constant", std::string(data_part) + good + "module m: Output: v : integer; emit v(two) end\n",
         "undefined constant \"two\""},
        {"pure value read", std::string(data_part) + good +
                                "module m: Input: a; Output: v : integer; emit v($a) end\n",
         "value of the pure signal \"a\""},
        {"instantaneous loop", good + "module m: Input: a; Output: o; loop { present a pause } end\n",
         "ERROR in Module `m': detecting variables in a dependance cycle:\n"},
        {"causality cycle", good + "module m: Output: o; Local: l; present l emit o else emit l end\n",
         "ERROR in Module `m': detecting variables in a dependance cycle:\n"},
        {"absence cycle", good + "module m: Output: o; Local: l; absent l emit l end\n",
         "when sorting equations: \n"},
        {"repeat too many", good + "module m: Output: o; repeat 5000 { pause } end\n", "count 5000 above 1000"},
        {"if on literals", good + "module m: Output: o; if 1 < 2 emit o end\n",
         "the condition of an if has no type"},
        {"deep condition", good + "module m: Input: a; Output: o; present a" + [] {
             std::string s;
             for (int i = 0; i < 1200; i++)
                 s += " or a";
             return s;
         }() + " emit o end\n",
         "expression nested deeper than 1000 levels"},
    };
    expect_rejected(cases);
}

TEST(BramPrograms, CommandLine)
{
    scratch_dir s;
    tarn_output h = run_bram_in(s.path, {"-h"});
    EXPECT_EQ(h.status, 0);
    EXPECT_NE(h.out.find("bram [-o <directory>] <filename>.zk"), std::string::npos);
    tarn_output v = run_bram_in(s.path, {"-v"});
    EXPECT_EQ(v.status, 0);
    EXPECT_EQ(v.out, "BRAM : ZK source compiler version  3.4.3-4\n");
    // The faults of the command line: status 1 and a message.
    const std::pair<std::vector<std::string>, std::string> faults[] = {
        {{"-x", "a.zk"}, "`-x' unknown option: try bram -h to know the list ...\n\n"},
        {{"nowhere.zk"}, "bram: nowhere.zk: file not found\n"},
        {{}, "bram: no input file: try bram -h ...\n\n"},
    };
    for (const auto& [args, message] : faults) {
        tarn_output r = run_bram_in(s.path, args);
        EXPECT_EQ(r.status, 1) << message;
        EXPECT_EQ(r.err, message);
    }

    // -o writes in the directory given, and only there.
    s.write("m.zk", "module m: Output: o; emit o end\nmodule n: { nothing }\n");
    mkdir((s.path + "/out").c_str(), 0755);
    tarn_output o = run_bram_in(s.path, {"-o", "out", "m.zk"});
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "generation of out/m.zkc\ngeneration of out/n.zkc\n");
    EXPECT_TRUE(exists(s.path + "/out/m.zkc"));
    EXPECT_FALSE(exists(s.path + "/m.zkc"));

    // A compiled module beside the source whose register line names no
    // local: the run that links it stops on the file, without a crash.
    s.write("sub.zkc", "module: sub  0 0\ninput: i ;\noutput: o ;\nlocal: n r;\nregister:\nn q 0;\n\n"
                       "connexion: SETsub RESETsub RTLsub;\n\nequation_def:\n3\n0: 6:1:1,-1\n1: -1:-3:-3,1\n"
                       "2: 0:1:1,-1\nexpressions:\n1 1 2:0,1,(6 )\n1 1 4:2,1,(0 )\n1 1 5:2,-1,(0 )\nend:\n");
    s.write("top.zk", "module top: Input: a; Output: b; run sub [a\\i, b\\o] end\n");
    tarn_output linked = run_bram_in(s.path, {"top.zk"});
    EXPECT_EQ(linked.status, 1);
    EXPECT_EQ(linked.err, "register q not defined as local ...\nError in module \"top\":\n Run of module \"sub\": file "
                          "\"./sub.zkc\" cannot be read\n Aborting ...\n");
}

} // namespace
