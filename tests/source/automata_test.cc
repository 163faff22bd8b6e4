// Automata, modules linked by run and Mealy machines through bram (the
// same bytes on a second run), tarn -c and gcc on traces derived by hand;
// the state register's width; and the faults of such programs with their
// message, status 1 and no file.

#include "tests/source/trace_check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct traced {
    const char* what;
    std::string source;  // every module of it compiles
    std::string module;  // the one the trace is about
    std::string trace;   // as in the trace files of programs/
    std::string user = "";  // C of the user's data, for valued ports
};

const std::string integers = "data: Type: integer; Constant: integer one := 1; end data\n";
const std::string zero = "#include \"C_data_user_integer.h\"\nconst integer zero_integer = 0;\n";
// One reaction after it starts, each i gives o: i plus one, or i itself.
const std::string add = "module add: Input: i : integer; Output: o : integer; loop { wait i >> emit o($i + one) } end\n";
const std::string pass = "module pass: Input: i : integer; Output: o : integer; loop { wait i >> emit o($i) } end\n";

// A module that emits b in every reaction, and two that end one and two
// reactions after they start.
const std::string beat = "module beat: Output: b; loop { emit b >> pause } end\n";
const std::string once = "module once: Output: d; pause >> emit d end\n";
const std::string twice = "module twice: Output: d; pause >> pause >> emit d end\n";

const std::vector<traced> cases = {
    {"entered by the initial transition, kept while nothing leaves; four states need a third bit",
     "module ring: Input: t; Output: a, b, c, d;\n"
     "automaton state: A / a; state: B / b; state: C / c; state: D / d;\n"
     "transition: initial-> A; A [t] -> B; B [t] -> C; C [t] -> D; D [t] -> A;\nend\n",
     "ring",
     "in: t\nout: a b c d\n1 : 1 0 0 0\n1 : 0 1 0 0\n0 : 0 1 0 0\n1 : 0 0 1 0\n1 : 0 0 0 1\n1 : 1 0 0 0\n"},
    {"a and not a: deterministic; priorities and strong before weak decide overlaps",
     "module choose: Input: a, b; Output: x, y, z;\n"
     "automaton state: S; state: X / x; state: Y / y; state: Z / z;\n"
     "transition: initial-> S; S [a] -> X; S [not a] -> Y;\n"
     " X 2 [b] -> Y; X 1 [a] -> Z; Y [a] -> X; Y [b] strong-> Z;\nend\n",
     "choose",
     // S -a-> X; in X both a and b: priority 1 (a) wins: Z.
     "in: a b\nout: x y z\n0 0 : 0 0 0\n1 0 : 1 0 0\n1 1 : 0 0 1\n"
     // S -not a-> Y; in Y a and b: the strong one wins: Z.
     "run\nin: a b\nout: x y z\n0 0 : 0 0 0\n0 0 : 0 1 0\n1 1 : 0 0 1\n0 0 : 0 0 1\n"
     // X -b-> Y -a-> X.
     "run\nin: a b\nout: x y z\n0 0 : 0 0 0\n1 0 : 1 0 0\n0 1 : 0 1 0\n1 0 : 1 0 0\n"},
    {"other fires where no other transition of its state does",
     "module rest: Input: a, b; Output: x, y;\n"
     "automaton state: S; state: X / x; state: Y / y;\n"
     "transition: initial-> S; S [a] -> X; S other [b] -> Y; X [a] -> S; Y [a] -> S;\nend\n",
     "rest",
     "in: a b\nout: x y\n0 0 : 0 0\n1 1 : 1 0\n1 0 : 0 0\n0 1 : 0 1\n"},
    {"a transition's actions in its reaction only; a final state ends the automaton",
     "module ends: Input: a; Output: o, p;\n"
     "automaton state: S; state: F final;\n"
     "transition: initial-> / p S; S [a] / o -> F;\nend\n" +
         std::string("module host: Input: a; Output: o, p, done; run ends >> emit done end\n"),
     "host",
     "in: a\nout: o p done\n1 : 0 1 0\n0 : 0 0 0\n1 : 1 0 1\n1 : 0 0 0\n"},
    {"a kill clears the state: silent until restarted in the first state",
     "module two: Input: t; Output: a, b;\n"
     "automaton state: A / a; state: B / b; transition: initial-> A; A [t] -> B; B [t] -> A;\nend\n"
     "module killer: Input: t, k; Output: a, b;\n"
     " loop { weak abort { run two } when k >> pause }\nend\n",
     "killer",
     "in: t k\nout: a b\n0 0 : 1 0\n1 0 : 0 1\n0 1 : 0 0\n0 0 : 1 0\n0 0 : 1 0\n"},
    {"a state runs a module: a strong transition takes back its emissions, a weak one keeps them",
     beat + "module states: Input: s, w; Output: b, x, y;\n"
            "automaton state: R run beat; state: X / x; state: Y / y;\n"
            "transition: initial-> R; R [s] strong-> X; R [w] weak-> Y;\nend\n",
     "states",
     "in: s w\nout: b x y\n0 0 : 1 0 0\n0 0 : 1 0 0\n1 1 : 0 1 0\n0 0 : 0 1 0\n"
     "run\nin: s w\nout: b x y\n0 0 : 1 0 0\n0 1 : 1 0 1\n0 0 : 0 0 1\n"},
    {"a normal termination follows the end of the module its state runs",
     once + "module after: Output: d, q;\n"
            "automaton state: P run once; state: Q / q; transition: initial-> P; P normalterm-> Q;\nend\n",
     "after",
     "in:\nout: d q\n: 0 0\n: 1 1\n: 0 1\n"},
    {"a state entered again restarts its module: killed, then started afresh in the same reaction",
     twice + "module again: Input: s, w; Output: d;\n"
             "automaton state: P run twice; transition: initial-> P; P [s] strong-> P; P [w] weak-> P;\nend\n",
     "again",
     // Strong in reaction 2: d two reactions after, in 4.
     "in: s w\nout: d\n0 0 : 0\n1 0 : 0\n0 0 : 0\n0 0 : 1\n0 0 : 0\n"
     // Weak in reaction 3 keeps the old copy's d and starts the new one.
     "run\nin: s w\nout: d\n0 0 : 0\n0 0 : 0\n0 1 : 1\n0 0 : 0\n0 0 : 1\n"
     // Strong in reaction 3 takes it back.
     "run\nin: s w\nout: d\n0 0 : 0\n0 0 : 0\n1 0 : 0\n0 0 : 0\n0 0 : 1\n"},
    {"a loop starts again an automaton that ends from a running state: the modules under it start afresh",
     twice + "module inner: Output: d; automaton state: P run twice; transition: initial-> P;\nend\n"
             "module mid: Input: a; Output: d;\n"
             "automaton state: Q run inner; state: F final; transition: initial-> Q; Q [a] -> F;\nend\n"
             "module outer: Input: a; Output: d; loop { run mid } end\n",
     "outer",
     // Restarted in reaction 2: d two reactions after, in 4, not in 3.
     "in: a\nout: d\n0 : 0\n1 : 0\n0 : 0\n0 : 1\n0 : 0\n"},
    {"a normal termination back to its own state runs the module again",
     twice + "module rerun: Output: d;\n"
             "automaton state: P run twice; transition: initial-> P; P normalterm-> P;\nend\n",
     "rerun",
     "in:\nout: d\n: 0\n: 0\n: 1\n: 0\n: 1\n: 0\n: 1\n"},
    {"a module that ends in the reaction its state is entered: the normal termination follows in the next",
     "module now: Output: d; emit d end\n"
     "module quickly: Input: a; Output: d, q;\n"
     "automaton state: S; state: P run now; state: Q / q;\n"
     "transition: initial-> S; S [a] -> P; P normalterm-> Q;\nend\n",
     "quickly",
     "in: a\nout: d q\n0 : 0 0\n1 : 1 0\n0 : 0 1\n0 : 0 1\n"},
    {"one module run twice in parallel: each call has state of its own",
     "module second: Input: i; Output: t; loop { wait i >> wait i >> emit t } end\n"
     "module pair: Input: a, b; Output: ta, tb;\n run second [a\\i, ta\\t] || run second [b\\i, tb\\t]\nend\n",
     "pair",
     "in: a b\nout: ta tb\n0 0 : 0 0\n1 0 : 0 0\n1 1 : 1 0\n0 1 : 0 1\n1 0 : 0 0\n1 0 : 1 0\n"},
    {"a valued module run twice: each call reads its own input's value and gives its own output's",
     integers + add + "module sums: Input: a : integer, b : integer; Output: x : integer, y : integer;\n"
                      " run add [a\\i, x\\o] || run add [b\\i, y\\o]\nend\n",
     "sums",
     "in: a a_val b b_val\nout: x x_val y y_val\n"
     "1 5 1 7 : 0 0 0 0\n1 5 0 0 : 1 6 0 0\n0 0 1 -3 : 0 0 1 -2\n1 10 1 20 : 1 11 1 21\n0 0 0 0 : 0 0 0 0\n",
     zero},
    {"a called module's memorised output: each call sums its own input on its own output",
     integers + "module cnt: Input: i : integer; Output: o : integer; Pre: po : o;\n"
                " loop { emit o($po + $i) >> pause }\nend\n"
                "module sums2: Input: a : integer, b : integer; Output: x : integer, y : integer;\n"
                " run cnt [a\\i, x\\o] || run cnt [b\\i, y\\o]\nend\n",
     "sums2",
     "in: a a_val b b_val\nout: x x_val y y_val\n1 2 1 10 : 1 2 1 10\n1 3 0 0 : 1 5 1 10\n0 0 1 1 : 1 5 1 11\n",
     zero},
    {"values through a local between two calls and a pass-on module inside an automaton state",
     integers + add + pass +
         "module gate: Input: a : integer, go; Output: l : integer;\n"
         "automaton state: Idle; state: On run pass [a\\i, l\\o]; transition: initial-> Idle; Idle [go] -> On;\nend\n"
         "module chain: Input: a : integer, go; Output: x : integer; Local: l : integer;\n"
         " run gate || run add [l\\i, x\\o]\nend\n",
     "chain",
     // On from reaction 2; from reaction 3 pass hands a on to l, and add
     // gives l plus one in the same reaction.
     "in: a a_val go\nout: x x_val\n1 1 0 : 0 0\n1 2 1 : 0 0\n1 3 0 : 1 4\n1 4 0 : 1 5\n0 0 0 : 0 0\n",
     zero},
    {"a Mealy machine counts modulo 4",
     "module mod4: Input: tick; Output: b0, b1, wrap;\n"
     "Mealy Machine Register: r0 : 0 : n0, r1 : 0 : n1;\n"
     " n0 = r0 xor tick; n1 = r1 xor (r0 and tick); b0 = r0; b1 = r1; wrap = r0 and r1 and tick;\nend\n",
     "mod4",
     "in: tick\nout: b0 b1 wrap\n1 : 0 0 0\n1 : 1 0 0\n0 : 0 1 0\n1 : 0 1 0\n1 : 1 1 1\n1 : 0 0 0\n1 : 1 0 0\n"},
    {"Mealy operators, integers and a register that starts at 1",
     "module ops: Input: a, b; Output: n, r, x, z, w, k, p;\n"
     "Mealy Machine Register: q : 1 : qn;\n"
     " qn = not q; p = q; n = a nand b; r = a nor b; x = a xor b; z = not a; w = abs a; k = 1 or 0;\nend\n",
     "ops",
     "in: a b\nout: n r x z w k p\n0 0 : 1 1 0 1 0 1 1\n0 1 : 1 0 1 1 0 1 0\n1 0 : 1 0 1 0 1 1 1\n"
     "1 1 : 0 0 0 0 1 1 0\n"},
};

TEST(BramAutomata, RunAsTheirTracesSay)
{
    for (const traced& c : cases) {
        SCOPED_TRACE(c.what);
        scratch_dir s;
        tarn_output b = bram_twice(s, "p.zk", c.source);
        ASSERT_EQ(b.status, 0) << b.err;
        EXPECT_EQ(b.err, "");
        expect_trace(s, c.module, parse_trace(c.trace), c.user, TARN_SOURCE_DIR "/examples/user");
    }
}

// b bits for n states: the smallest b with 2^b above n (code 0 is "not
// started").
TEST(BramAutomata, StateRegisterWidth)
{
    auto states = [](int n) {
        std::string text = "module w: Input: t;\nautomaton";
        for (int i = 1; i <= n; i++)
            text += " state: S" + std::to_string(i) + ";";
        text += "\ntransition: initial-> S1;";
        for (int i = 1; i <= n; i++)
            text += " S" + std::to_string(i) + " [t] -> S" + std::to_string(i % n + 1) + ";";
        return text + "\nend\n";
    };
    for (auto [n, bits] : std::vector<std::pair<int, int>>{{1, 1}, {3, 2}, {4, 3}, {7, 3}, {8, 4}}) {
        SCOPED_TRACE(n);
        scratch_dir s;
        s.write("w.zk", states(n));
        ASSERT_EQ(run_bram_in(s.path, {"w.zk"}).status, 0);
        std::string zkc = read_file(s.path + "/w.zkc");
        EXPECT_NE(zkc.find("reg" + std::to_string(bits - 1) + "nextw reg" + std::to_string(bits - 1) + "w 0;"),
                  std::string::npos)
            << zkc;
        EXPECT_EQ(zkc.find("reg" + std::to_string(bits) + "nextw"), std::string::npos);
    }
}

// A module compiled before, found by a "Run:" declaration or beside the
// source, and its reincarnation read from its file: a loop of a module
// that ends at once is refused as a cycle.
TEST(BramAutomata, RunOfACompiledModule)
{
    scratch_dir s;
    s.write("lib.zk", "module blink: Input: i; Output: o; loop { wait i >> emit o } end\n"
                      "module quick: Output: o; emit o end\n");
    ASSERT_EQ(run_bram_in(s.path, {"lib.zk"}).status, 0);
    std::remove((s.path + "/lib.zk").c_str());
    s.write("main.zk", "module main: Input: a; Output: x;\n Run: \"left\" : blink : blink;\n run left [a\\i, x\\o]\nend\n");
    tarn_output b = run_bram_in(s.path, {"main.zk"});
    ASSERT_EQ(b.status, 0) << b.err;
    expect_trace(s, "main", parse_trace("in: a\nout: x\n1 : 0\n1 : 1\n0 : 0\n1 : 1\n"));

    s.write("beside.zk", "module beside: Output: o; loop { run quick } end\n");
    tarn_output loop = run_bram_in(s.path, {"beside.zk"});
    EXPECT_EQ(loop.status, 1);
    EXPECT_NE(loop.err.find("detecting variables in a dependance cycle"), std::string::npos) << loop.err;
}

TEST(BramAutomata, FaultsSayWhyAndLeaveNoFile)
{
    const std::string closing = "\n\n   --> compilation process aborted ...";
    const std::string good = "module good: Output: o; emit o end\n";
    auto automaton = [&](const std::string& states, const std::string& transitions) {
        return good + "module m: Input: a, b; Output: o;\nautomaton " + states + "\ntransition: " + transitions +
               "\nend\n";
    };
    std::vector<rejection> cases = {
        {"overlapping triggers at equal priority",
         automaton("state: S; state: A; state: B;", "initial-> S; S [a] -> A; S [b] -> B;"),
         "ERROR: Non determinist automaton: Several possible transitions from state \"S\""},
        {"overlapping initial transitions", automaton("state: A; state: B;", "initial-> [a] A; initial-> B;"),
         "ERROR: Non determinist automaton: Several possible Init transitions \""},
        {"two states of one name", automaton("state: S; state: S;", "initial-> S;"),
         "ERROR: two states or more have the same name: S"},
        {"final state with a Moore action", automaton("state: S; state: F final / o;", "initial-> S; S [a] -> F;"),
         "ERROR: The FINAL state: \"F\" must not have one (or several) Moore action!" + closing},
        {"final state running a module", automaton("state: S; state: F final run good;", "initial-> S; S -> F;"),
         "ERROR: The FINAL state: \"F\" must not run a module!" + closing},
        {"transition leaving a final state", automaton("state: F final; state: S;", "initial-> F; F [a] -> S;"),
         "ERROR: A transition beginning with the FINAL state: \"F\" is not supported!" + closing},
        {"triggered normal termination", automaton("state: S run good; state: T;", "initial-> S; S [a] normalterm-> T;"),
         "ERROR: TRIGGER in the Normal Terminaison transition from \"S\" had been detected!" + closing},
        {"no initial transition", automaton("state: S; state: T;", "S [a] -> T;"),
         "PROBLEM DETECTED ABOUT FIRST STATE!!!" + closing},
        {"final state never entered", automaton("state: S; state: F final;", "initial-> S;"),
         "PROBLEM DETECTED ABOUT FINAL STATE!!!" + closing},
        {"unknown state", automaton("state: S;", "initial-> S; S [a] -> T;"), "ERROR: unknown state: \"T\""},
        {"action on an input", automaton("state: S;", "initial-> / a S;"),
         "Emission of output signal: \"a\"  undefined !"},
        {"run of no module", good + "module m: Output: o; run nowhere end\n",
         "Error in module \"m\":\n Run of module: \"nowhere\"  undefined !\n Aborting ..."},
        {"run renames a signal the module lacks", good + "module m: Output: o; run good [o\\p] end\n",
         "Run of module \"good\": signal \"p\" is neither an input nor an output of \"good\"\n Aborting ..."},
        {"run meets an undeclared signal", good + "module m: Output: x; run good end\n",
         "Run of module \"good\": signal \"o\"  undefined !\n Aborting ..."},
        {"run drives an input", good + "module m: Input: o; Output: x; run good end\n",
         "Run of module \"good\": output \"o\" meets the input signal \"o\"\n Aborting ..."},
        {"run with another type",
         "data: Type: integer; end data\nmodule v: Output: o : integer; emit o(1) end\n"
         "module m: Output: o; run v end\n",
         "Run of module \"v\": signal \"o\" typed by : \"pure\"\n whereas \"o\" is declared with the type : "
         "\"integer\"\n Aborting ..."},
        {"modules that run each other", "module p: Output: o; run q end\nmodule q: Output: o; run p end\n",
         "it runs itself\n Aborting ..."},
        {"register without next equation", good + "module m: Output: o; Mealy Machine Register: r : 0 : rn; o = r;\nend\n",
         "no equation gives \"rn\", the next value of register \"r\""},
        {"register starting at 2", good + "module m: Output: o; Mealy Machine Register: r : 2 : rn; rn = r;\nend\n",
         "register \"r\" starts at 0 or 1, not 2"},
        {"equation given twice", good + "module m: Input: a; Output: o; Mealy Machine o = a; o = not a;\nend\n",
         "\"o\" defined twice in the Mealy machine"},
        {"Mealy machine emitting an input", good + "module m: Input: a; Mealy Machine a = 1;\nend\n",
         "Emission of output signal: \"a\"  undefined !"},
    };
    expect_rejected(cases);
}

} // namespace
