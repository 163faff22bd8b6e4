// Traces of reactions written by hand, and their check on the C that
// tarn -c makes of a compiled module; runs of the built bram.
#ifndef TARN_TESTS_SOURCE_TRACE_CHECK_H
#define TARN_TESTS_SOURCE_TRACE_CHECK_H

#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

inline tarn_output run_bram_in(const std::string& dir, const std::vector<std::string>& args)
{
    return run_in(TARN_BINARY_DIR "/driver/bram", dir, args);
}

// bram on `source` written as `file` in `s`; and again in a fresh folder,
// where it must write the same modules byte for byte.
inline tarn_output bram_twice(const scratch_dir& s, const std::string& file, const std::string& source)
{
    scratch_dir again;
    s.write(file, source);
    again.write(file, source);
    tarn_output r = run_bram_in(s.path, {file});
    EXPECT_EQ(run_bram_in(again.path, {file}).status, r.status);
    std::vector<std::string> modules = files_with_suffix(s.path, ".zkc");
    EXPECT_EQ(modules, files_with_suffix(again.path, ".zkc"));
    for (const std::string& m : modules)
        EXPECT_EQ(read_file(s.path + "/" + m + ".zkc"), read_file(again.path + "/" + m + ".zkc")) << m;
    return r;
}

inline std::vector<std::string> words(const std::string& text)
{
    std::istringstream in(text);
    std::vector<std::string> w;
    for (std::string x; in >> x;)
        w.push_back(x);
    return w;
}

inline std::vector<int> numbers(const std::string& text)
{
    std::vector<int> n;
    for (const std::string& w : words(text))
        n.push_back(std::stoi(w));
    return n;
}

// A trace file: "in:" and "out:" name the ports (a value as port_val), each
// other line is "inputs : outputs" for one reaction, "run" starts a new run
// from reset, "#" a comment.
struct expected_run {
    c_reference::trace inputs, outputs;
};
struct trace_file {
    std::vector<std::string> in, out;
    std::vector<expected_run> runs{1};
};

inline trace_file parse_trace(const std::string& text)
{
    trace_file t;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        if (line.rfind("in:", 0) == 0)
            t.in = words(line.substr(3));
        else if (line.rfind("out:", 0) == 0)
            t.out = words(line.substr(4));
        else if (line == "run")
            t.runs.emplace_back();
        else {
            std::size_t colon = line.find(':');
            t.runs.back().inputs.push_back(numbers(line.substr(0, colon)));
            t.runs.back().outputs.push_back(numbers(line.substr(colon + 1)));
        }
    }
    return t;
}

// tarn -c on <module>.zkc of `s`, then the C, built with the user's C text
// `user` and the type headers of the folder `headers` when the module is
// valued, on every run of `expected`, each output compared reaction by
// reaction.
inline void expect_trace(const scratch_dir& s, const std::string& module, const trace_file& expected,
                         const std::string& user = "", const std::string& headers = "")
{
    using namespace c_reference;
    tarn_output t = run_tarn_in(s.path, {module + ".zkc", "-c"});
    ASSERT_EQ(t.status, 0) << t.err;
    // The file reads back with no message beyond the run's own.
    EXPECT_EQ(t.err, "parsing terminated\n");
    std::vector<c_port> inputs, outputs;
    ASSERT_TRUE(read_ports(read_file(s.path + "/" + module + ".h"), module, inputs, outputs));
    std::string more;
    if (!user.empty()) {
        s.write("user.c", user);
        for (const std::string& h : files_with_suffix(headers, ".h"))
            s.write(h + ".h", read_file(headers + "/" + h + ".h"));
        more = "user.c";
    }
    // The trace's ports in the reaction's order.
    std::vector<std::size_t> order;
    std::vector<std::string> names;
    for (const c_port& p : inputs) {
        auto at = std::find(expected.in.begin(), expected.in.end(), p.name);
        ASSERT_NE(at, expected.in.end()) << "input " << p.name << " is not in the trace";
        order.push_back(at - expected.in.begin());
    }
    for (const c_port& p : outputs)
        names.push_back(p.name);
    ASSERT_EQ(order.size(), expected.in.size());
    std::vector<std::string> want_out = expected.out;
    std::sort(names.begin(), names.end());
    std::sort(want_out.begin(), want_out.end());
    ASSERT_EQ(names, want_out);
    for (std::size_t r = 0; r < expected.runs.size(); ++r) {
        SCOPED_TRACE("run " + std::to_string(r + 1));
        const expected_run& run = expected.runs[r];
        trace in;
        for (const auto& step : run.inputs) {
            in.emplace_back();
            for (std::size_t i : order)
                in.back().push_back(step.at(i));
        }
        port_values got = run_c(s, module, inputs, outputs, in, more);
        for (std::size_t step = 0; step < run.outputs.size(); ++step)
            for (std::size_t o = 0; o < expected.out.size(); ++o)
                EXPECT_EQ(got[expected.out[o]][step], run.outputs[step][o])
                    << expected.out[o] << " at reaction " << step + 1;
    }
}

// Bad programs: each ends bram with status 1 and its message, and no file
// is written, not even of the good modules before the bad one.
struct rejection {
    const char* what;
    std::string source, message;
};

inline void expect_rejected(const std::vector<rejection>& cases)
{
    for (const rejection& c : cases) {
        SCOPED_TRACE(c.what);
        scratch_dir s;
        s.write("bad.zk", c.source);
        tarn_output r = run_bram_in(s.path, {"bad.zk"});
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_TRUE(files_with_suffix(s.path, ".zkc").empty());
        EXPECT_EQ(r.out, "");
    }
}

#endif
