// Traces of reactions written by hand, and their check on the C that
// tarn -c makes of a compiled module.
#ifndef TARN_TESTS_SOURCE_TRACE_CHECK_H
#define TARN_TESTS_SOURCE_TRACE_CHECK_H

#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <dirent.h>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>

inline std::vector<std::string> files_with_suffix(const std::string& dir, const std::string& suffix)
{
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n.size() > suffix.size() && n.compare(n.size() - suffix.size(), suffix.size(), suffix) == 0)
                names.push_back(n.substr(0, n.size() - suffix.size()));
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

inline bool exists(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

inline std::vector<std::string> words(const std::string& text)
{
    std::istringstream in(text);
    std::vector<std::string> w;
    for (std::string x; in >> x;)
        w.push_back(x);
    return w;
}

// A trace file: "in:" and "out:" name the ports, each other line is
// "inputs : outputs" for one reaction, "run" starts a new run from reset,
// "#" a comment.
struct expected_run {
    c_reference::trace inputs;
    std::vector<std::vector<int>> outputs;
};
struct trace_file {
    std::vector<std::string> in, out;
    std::vector<expected_run> runs;
};

inline trace_file parse_trace(const std::string& text)
{
    trace_file t;
    std::istringstream lines(text);
    t.runs.emplace_back();
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        if (line.rfind("in:", 0) == 0) {
            t.in = words(line.substr(3));
        } else if (line.rfind("out:", 0) == 0) {
            t.out = words(line.substr(4));
        } else if (line == "run") {
            t.runs.emplace_back();
        } else {
            std::size_t colon = line.find(':');
            std::vector<int> in, out;
            for (auto& w : words(line.substr(0, colon)))
                in.push_back(std::stoi(w));
            for (auto& w : words(line.substr(colon + 1)))
                out.push_back(std::stoi(w));
            t.runs.back().inputs.push_back(in);
            t.runs.back().outputs.push_back(out);
        }
    }
    return t;
}

// Reorders one reaction's values from the trace's port order to the
// prototype's.
inline std::vector<int> reorder(const std::vector<int>& values, const std::vector<std::string>& from,
                         const std::vector<std::string>& to)
{
    std::vector<int> r;
    for (const std::string& name : to)
        for (std::size_t i = 0; i < from.size(); ++i)
            if (from[i] == name)
                r.push_back(values[i]);
    return r;
}

inline trace_file read_trace(const std::string& path) { return parse_trace(read_file(path)); }

// The reaction's parameters of a module with valued ports: type, whether
// it is an output (a pointer), and name, in order.
struct parameter {
    std::string type;
    bool output;
    std::string name;
};

inline std::vector<parameter> read_parameters(const std::string& header, const std::string& module)
{
    std::vector<parameter> params;
    std::string head = "extern void " + module + "_automaton(";
    std::size_t at = header.find(head);
    if (at == std::string::npos)
        return params;
    std::size_t close = header.find(')', at);
    std::stringstream list(header.substr(at + head.size(), close - at - head.size()));
    for (std::string p; std::getline(list, p, ',');) {
        std::smatch m;
        if (std::regex_match(p, m, std::regex("\\s*(\\w+)\\s*(\\*?)\\s*(\\w+)\\s*")))
            params.push_back({m[1], m[2] == "*", m[3]});
    }
    return params;
}

// The module's C with the user's C text `user` and the type headers of
// the folder `headers`, run from reset on one trace of input parameters
// (in order); the outputs of each reaction by name. Every value is read
// and printed as an int.
inline c_reference::port_values run_valued(const scratch_dir& s, const std::string& module,
                                           const std::vector<parameter>& params, const c_reference::trace& t,
                                           const std::string& user, const std::string& headers)
{
    std::ofstream driver(s.path + "/driver.c");
    driver << "#include <stdio.h>\n#include \"" << module << ".h\"\nint main(void) {\n  " << module
           << "_reset_automaton();\n  for (;;) {\n";
    for (std::size_t i = 0; i < params.size(); ++i) {
        const parameter& p = params[i];
        driver << "    " << p.type << " p" << i << " = 0;\n";
        if (!p.output)
            driver << "    if (scanf(\"%d\", &p" << i << ") != 1) return 0;\n";
    }
    driver << "    " << module << "_automaton(";
    for (std::size_t i = 0; i < params.size(); ++i)
        driver << (i ? ", " : "") << (params[i].output ? "&p" : "p") << i;
    driver << ");\n";
    for (std::size_t i = 0; i < params.size(); ++i)
        if (params[i].output)
            driver << "    printf(\"%d \", (int)p" << i << ");\n";
    driver << "    printf(\"\\n\");\n  }\n}\n";
    driver.close();
    s.write("user.c", user);
    for (const std::string& type_header : files_with_suffix(headers, ".h"))
        s.write(type_header + ".h", read_file(headers + "/" + type_header + ".h"));
    EXPECT_EQ(c_reference::run("cd '" + s.path + "' && gcc -Werror -o driver driver.c user.c " + module +
                               ".c 2> gcc.txt"),
              0)
        << read_file(s.path + "/gcc.txt");
    std::ofstream in(s.path + "/trace.txt");
    for (const auto& step : t) {
        for (int v : step)
            in << v << " ";
        in << "\n";
    }
    in.close();
    EXPECT_EQ(c_reference::run("cd '" + s.path + "' && ./driver < trace.txt > c_out.txt"), 0);
    c_reference::port_values values;
    std::istringstream lines(read_file(s.path + "/c_out.txt"));
    for (std::size_t step = 0; step < t.size(); ++step)
        for (const parameter& p : params)
            if (p.output) {
                int v = -1;
                lines >> v;
                values[p.name].push_back(v);
            }
    return values;
}

// tarn -c on <module>.zkc of `s`, then the C on every run of `expected`,
// each output compared reaction by reaction. With a `user` C text the
// ports may be valued: a valued port is two parameters, its presence and
// its value (port_val), and the C is built with `user` and the type
// headers of `headers`.
inline void expect_trace(const scratch_dir& s, const std::string& module, const trace_file& expected,
                         const std::string& user = "", const std::string& headers = "")
{
    tarn_output t = run_tarn_in(s.path, {module + ".zkc", "-c"});
    ASSERT_EQ(t.status, 0) << t.err;
    // The file reads back with no message beyond the run's own.
    EXPECT_EQ(t.err, "parsing terminated\n");
    std::string header = read_file(s.path + "/" + module + ".h");
    std::vector<std::string> inputs, outputs;
    std::vector<parameter> params = read_parameters(header, module);
    if (!user.empty()) {
        for (const parameter& p : params)
            (p.output ? outputs : inputs).push_back(p.name);
    } else {
        ASSERT_TRUE(c_reference::read_prototype(header, module, inputs, outputs));
    }
    std::vector<std::string> sorted_in = inputs, sorted_out = outputs, want_in = expected.in, want_out = expected.out;
    std::sort(sorted_in.begin(), sorted_in.end());
    std::sort(want_in.begin(), want_in.end());
    std::sort(sorted_out.begin(), sorted_out.end());
    std::sort(want_out.begin(), want_out.end());
    ASSERT_EQ(sorted_in, want_in);
    ASSERT_EQ(sorted_out, want_out);
    for (std::size_t r = 0; r < expected.runs.size(); ++r) {
        SCOPED_TRACE("run " + std::to_string(r + 1));
        const expected_run& run = expected.runs[r];
        ASSERT_LE(run.inputs.size(), static_cast<std::size_t>(c_reference::steps));
        c_reference::trace in;
        for (const auto& step : run.inputs)
            in.push_back(reorder(step, expected.in, inputs));
        c_reference::port_values got = !user.empty() ? run_valued(s, module, params, in, user, headers)
                                                     : c_reference::run_c(s, module, inputs, outputs, in);
        for (std::size_t step = 0; step < run.outputs.size(); ++step)
            for (std::size_t o = 0; o < expected.out.size(); ++o)
                EXPECT_EQ(got[expected.out[o]][step], run.outputs[step][o])
                    << expected.out[o] << " at reaction " << step + 1;
    }
}

#endif
