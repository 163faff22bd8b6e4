// The C# bean read by Mono: every example and generated module compiled by
// mcs against the smallest stubs of its platform, run under mono on random
// event lists and compared reaction by reaction with the module's C; the
// texts mcs refuses, and the ways the bean departs from the C, each pinned
// on the smallest module that shows it.

#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#ifndef CSHARP_SWEEP
#define CSHARP_SWEEP 5
#endif

namespace {

using namespace c_reference;

// What the bean needs of its platform, and no more. An event list travels
// as blank-separated words "name" (or "name=value"); the answer as
// "name=presence" words.
const char* const platform_stubs = R"(using System;
using System.Collections.Generic;
namespace Trellis.Beans {
    public class BeanAttribute : Attribute { public string Category; }
}
namespace Trellis.Util {
    public class MyEvent {
        public string nameEvt, valPresenceEvt, evTypeValue, evtValeur;
        public MyEvent(string name, string presence) { nameEvt = name; valPresenceEvt = presence; }
        public MyEvent(string name, string type, string value, string presence) : this(name, presence)
        { evTypeValue = type; evtValeur = value; }
    }
    public class GrammaireA {
        public List<MyEvent> deserialize(string s) {
            var events = new List<MyEvent>();
            foreach (var word in s.Split(new[] {' '}, StringSplitOptions.RemoveEmptyEntries)) {
                var parts = word.Split('=');
                events.Add(new MyEvent(parts[0], "", parts.Length > 1 ? parts[1] : "", "True"));
            }
            return events;
        }
        public string serialize(List<MyEvent> events) {
            var words = new List<string>();
            foreach (var e in events) words.Add(e.nameEvt + "=" + e.valPresenceEvt);
            return string.Join(" ", words);
        }
    }
    public static class Logger { public static void Info(string text) {} }
}
)";

// One reaction per line of the standard input; the event list the bean
// fires, or an empty line when it fires none.
std::string driver_text(const std::string& module)
{
    return "using System;\nclass Driver {\n    static void Main() {\n        var bean = new GenEntree." + module +
           "();\n        string fired = \"\", line;\n        bean.SendEventList += text => fired = text;\n"
           "        while ((line = Console.ReadLine()) != null) {\n            fired = \"\";\n            bean." +
           module + "_automaton(line);\n            Console.WriteLine(fired);\n        }\n    }\n}\n";
}

// The error lines of mcs on the bean, the stubs and the driver, in its
// order; empty when it builds the program.
std::string mcs_errors(const scratch_dir& s, const std::string& module)
{
    s.write("stubs.cs", platform_stubs);
    s.write("driver.cs", driver_text(module));
    int status =
        run("cd '" + s.path + "' && mcs -out:" + module + ".exe " + module + ".cs stubs.cs driver.cs > mcs.txt 2>&1");
    std::istringstream lines(read_file(s.path + "/mcs.txt"));
    std::string line, errors;
    while (std::getline(lines, line))
        if (line.find(": error ") != std::string::npos)
            errors += line + "\n";
    EXPECT_EQ(status != 0, !errors.empty()) << read_file(s.path + "/mcs.txt");
    return errors;
}

// The bean on the trace, an event per present input in port order: per
// output, 1 where the bean fires it present.
port_values run_csharp(const scratch_dir& s, const std::string& module, const std::vector<c_port>& inputs,
                       const std::vector<c_port>& outputs, const trace& t)
{
    s.write("events.txt", reaction_lines(inputs, t));
    EXPECT_EQ(run("cd '" + s.path + "' && mono " + module + ".exe < events.txt > cs_out.txt 2> mono.txt"), 0)
        << read_file(s.path + "/mono.txt");
    port_values values;
    std::istringstream lines(read_file(s.path + "/cs_out.txt"));
    std::string line;
    for (const c_port& o : outputs)
        values[o.name].assign(t.size(), -1);
    for (std::size_t step = 0; step < t.size() && std::getline(lines, line); ++step)
        for (const c_port& o : outputs) {
            std::smatch m;
            if (std::regex_search(line, m, std::regex("(^| )" + o.name + "=(True|False)( |$)")))
                values[o.name][step] = m[2] == "True";
        }
    return values;
}

// The inputs as the bean sees them: of several events only the last one.
trace last_event_only(trace t)
{
    for (auto& step : t) {
        bool later = false;
        for (std::size_t i = step.size(); i-- > 0;) {
            if (later)
                step[i] = 0;
            later = later || step[i] != 0;
        }
    }
    return t;
}

// The module's C and its bean (the example when `zkc` is empty), which mcs
// compiles into a program; the reaction's presences as the C header
// declares them.
void build_both(const scratch_dir& s, const std::string& module, const std::string& zkc, std::vector<c_port>& inputs,
                std::vector<c_port>& outputs)
{
    place_module(s, module, zkc);
    tarn_output r = run_tarn_in(s.path, {module + ".zkc", "-c", "-csharp"});
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(mcs_errors(s, module), "");
    ASSERT_TRUE(read_ports(read_file(s.path + "/" + module + ".h"), module, inputs, outputs));
}

// Compiles the bean and checks it against the C on random traces.
void expect_reacts_like_c(const std::string& module, const std::string& zkc, unsigned seed)
{
    SCOPED_TRACE(module);
    scratch_dir s;
    std::vector<c_port> inputs, outputs;
    build_both(s, module, zkc, inputs, outputs);
    for (unsigned k = 0; k < 2; ++k) {
        trace t = last_event_only(random_trace(inputs, seed * 31 + k));
        EXPECT_EQ(run_csharp(s, module, inputs, outputs, t), run_c(s, module, inputs, outputs, t)) << "trace " << k;
    }
}

void require_tools()
{
    ASSERT_TRUE(have("mcs") && have("mono")) << "mcs and mono are installed by scripts/install-deps";
}

TEST(CSharpConsumer, TextsCompileOrFailAsTheySay)
{
    require_tools();
    // An external constant comes out as "publicprivate const" (accu's
    // limit); a user type is no C# type; the loop counter "i" of the event
    // loop hides an input named "i". toggle compiles in
    // PureModulesReactLikeTheirC.
    const std::string head = "connexion: SETm RESETm RTLm;\nequation_def:\n2\n0: 0:1:1,-1\n1: -1:-3:-3,1\n";
    const std::string no_integer = "error CS0246: The type or namespace name `integer' could not be found. Are you "
                                   "missing an assembly reference?\n";
    const struct {
        std::string what, module, zkc, errors; // the example when zkc is empty
    } rows[] = {
        {"accu", "accu", "",
         "accu.cs(23,27): error CS1519: Unexpected symbol `const' in class, struct, or interface member declaration\n"
         "accu.cs(23,42): error CS0145: A const field requires a value to be provided\n"},
        {"blink", "blink", "", ""},
        {"shift", "shift", "", ""},
        {"sum", "sum", "", "sum.cs(22,23): " + no_integer + "sum.cs(23,23): " + no_integer},
        {"watchdog", "watchdog", "", ""},
        {"worked", "m", worked_module_text,
         "m.cs(52,21): error CS0136: A local variable named `i' cannot be declared in this scope because it would "
         "give a different meaning to `i', which is already used in a `parent or current' scope to denote something "
         "else\n"},
        // The smallest modules whose literal C# mcs refuses.
        {"an int input is read by Convert.ToUInt32", "m",
         "module: m 0 0 input: x : int ; output: o ;\n" + head + "expressions:\n1 1 2:0,1,(0 )\nend:\n"
             "data: type: int; end:\n",
         "m.cs(53,38): error CS0266: Cannot implicitly convert type `uint' to `int'. An explicit conversion exists "
         "(are you missing a cast?)\n"},
        {"a byte input is read by Convert.ToSByte", "m",
         "module: m 0 0 input: x : byte ; output: o ;\n" + head + "expressions:\n1 1 2:0,1,(0 )\nend:\n"
             "data: type: byte; end:\n",
         "m.cs(53,39): error CS0266: Cannot implicitly convert type `sbyte' to `byte'. An explicit conversion "
         "exists (are you missing a cast?)\n"},
        // The pointer forms of the output clock, and the presence of the
        // bound local, which finalisation removed.
        {"an output clock", "m",
         "module: m 0 0 input: a : long ; output: y : long ; local: f ;\n" + head +
             "expressions:\n1 1 2:0,1,(0 )\n1 1 4:0,1,(0 )\nend:\n"
             "binding: (4, 5): value: 0 clock: (2, 3); end: evaltable: 0: %%14(0, 1); end:\n"
             "data: type: long; end:\n",
         "m.cs(83,16): error CS0214: Pointers and fixed size buffers may only be used in an unsafe context\n"
         "m.cs(83,16): error CS0193: The * or -> operator must be applied to a pointer\n"
         "m.cs(85,24): error CS0103: The name `v_s_f' does not exist in the current context\n"
         "m.cs(85,32): error CS0214: Pointers and fixed size buffers may only be used in an unsafe context\n"
         "m.cs(85,32): error CS0193: The * or -> operator must be applied to a pointer\n"
         "m.cs(86,24): error CS0214: Pointers and fixed size buffers may only be used in an unsafe context\n"
         "m.cs(86,24): error CS0193: The * or -> operator must be applied to a pointer\n"},
        // The guard reads the local clock's presence before its equation.
        {"a local clock computed after its bound signal", "m",
         "module: m 0 0 input: a : long ; output: f ; local: c : long ;\n" + head +
             "expressions:\n1 1 2:0,1,(0 )\n1 1 4:0,1,(0 )\nend:\n"
             "binding: (2, 3): value: 0 clock: (4, 5); end: evaltable: 0: %%14(0, 1); end:\n"
             "data: type: long; end:\n",
         "m.cs(77,8): error CS0165: Use of unassigned local variable `v_s_c'\n"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.what);
        scratch_dir s;
        place_module(s, r.module, r.zkc);
        tarn_output out = run_tarn_in(s.path, {r.module + ".zkc", "-csharp"});
        ASSERT_EQ(out.status, 0) << out.err;
        EXPECT_EQ(mcs_errors(s, r.module), r.errors);
    }
}

TEST(CSharpConsumer, PureModulesReactLikeTheirC)
{
    require_tools();
    expect_reacts_like_c("toggle", "", 1);
    for (int k = 0; k < CSHARP_SWEEP; ++k) {
        std::string name = "g" + std::to_string(k);
        std::string zkc = generate_module(scratch_dir().path, name, 8 + (k * 37) % 118, 100 + k);
        // A pure module whose C# is compared must have no memorised pair.
        ASSERT_EQ(zkc.find("memorized:"), std::string::npos);
        expect_reacts_like_c(name, zkc, k);
        if (k % 5 != 4)
            continue;
        // Larger modules hold memorised pairs: compiled, not compared (see
        // MemorisedSignalIsNeverLoadedAndTheLastEventCounts).
        name = "p" + std::to_string(k);
        zkc = generate_module(scratch_dir().path, name, 130 + 3 * k, 100 + k);
        ASSERT_NE(zkc.find("memorized:"), std::string::npos);
        SCOPED_TRACE(name);
        std::vector<c_port> inputs, outputs;
        build_both(scratch_dir(), name, zkc, inputs, outputs);
    }
}

// The bean's departures from the C, each on the smallest module. It
// declares a memorised signal's pre as a local that starts false and never
// loads it: "o = pre a" stays false, where the C is a one-step delay. Each
// event sets or clears every input: of two inputs sent in one reaction
// only the last is present.
TEST(CSharpConsumer, MemorisedSignalIsNeverLoadedAndTheLastEventCounts)
{
    require_tools();
    const std::string head = "connexion: SETm RESETm RTLm;\nequation_def:\n";
    trace one = random_trace(std::vector<c_port>(1), 5), both(steps, std::vector<int>{1, 1});
    const struct {
        std::string zkc;
        trace t;
        std::vector<int> c, cs;
    } rows[] = {
        {"module: m 0 0 input: a ; output: o ; memorized: p a ;\n" + head +
             "2\n0: 4:1:1,-1\n1: -1:-3:-3,1\nexpressions:\n1 1 2:0,1,(4 )\nend:\n",
         one, first_input_delayed(one), std::vector<int>(steps, 0)},
        {"module: m 0 0 input: a b ; output: o ;\n" + head +
             "3\n0: 0:2:1,-1\n1: -1:-3:-3,1\n2: 2:1:1,-1\nexpressions:\n1 1 4:0,1,(0 2 )\nend:\n",
         both, std::vector<int>(steps, 1), std::vector<int>(steps, 0)},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.zkc);
        scratch_dir s;
        std::vector<c_port> inputs, outputs;
        build_both(s, "m", r.zkc, inputs, outputs);
        ASSERT_EQ(names(outputs), std::vector<std::string>{"o"});
        EXPECT_EQ(run_c(s, "m", inputs, outputs, r.t)["o"], r.c);
        EXPECT_EQ(run_csharp(s, "m", inputs, outputs, r.t)["o"], r.cs);
    }
}

} // namespace
