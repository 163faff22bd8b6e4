// The module's C as the reference of every target's consumer test: the
// reaction's ports read off the header, random input traces, and the C
// compiled with gcc and run on a trace, one line of outputs per reaction.
#ifndef TARN_TESTS_CONSUMERS_C_REFERENCE_H
#define TARN_TESTS_CONSUMERS_C_REFERENCE_H

#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace c_reference {

inline constexpr int steps = 24;
// The nodes of an output's under wire read the output's pointer as an int:
// the generated text is so, and gcc only warns of it. Any other warning
// fails the build.
inline const std::string cflags = "-Werror -Wno-int-conversion";

using trace = std::vector<std::vector<int>>;         // step -> value per port
using port_values = std::map<std::string, std::vector<int>>; // port -> value per step

// A parameter of the reaction: a presence ("int x", "int* x") or a value
// of the user's type ("integer x_val", "integer* x_val").
struct c_port {
    std::string name;
    bool valued = false;
    bool operator==(const c_port& o) const { return name == o.name && valued == o.valued; }
};

inline int run(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }

inline bool have(const char* tool) { return run(std::string("command -v ") + tool + " > /dev/null 2>&1") == 0; }

// `file` holding `source`, built by g++ with `options` into `product` once
// per test process, in a folder kept to the end: the product's path, or
// empty (and a failure) when g++ refuses it.
inline std::string built_once(const std::string& file, const std::string& source, const std::string& options,
                              const std::string& product)
{
    static std::map<std::string, std::string> built;
    static std::vector<std::unique_ptr<scratch_dir>> dirs;
    if (built.count(file) == 0) {
        dirs.push_back(std::make_unique<scratch_dir>());
        const scratch_dir& dir = *dirs.back();
        dir.write(file, source);
        bool ok = run("cd '" + dir.path + "' && g++ " + options + " " + file + " -o " + product + " 2> gxx.txt") == 0;
        if (!ok)
            ADD_FAILURE() << file << " does not build\n" << read_file(dir.path + "/gxx.txt");
        built[file] = ok ? dir.path + "/" + product : "";
    }
    return built[file];
}

// The reaction's parameters as the header declares them, pointers being
// outputs. False when a parameter is of another type.
inline bool read_ports(const std::string& header, const std::string& module, std::vector<c_port>& inputs,
                       std::vector<c_port>& outputs)
{
    std::string head = "extern void " + module + "_automaton(";
    std::size_t at = header.find(head);
    if (at == std::string::npos)
        return false;
    std::stringstream params(header.substr(at + head.size(), header.find(')', at) - at - head.size()));
    std::string p;
    std::smatch m;
    while (std::getline(params, p, ',')) {
        if (!std::regex_match(p, m, std::regex("\\s*(int|integer)\\s*(\\*?)\\s*(\\w+)\\s*")))
            return false;
        (m[2].length() != 0 ? outputs : inputs).push_back({m[3], m[1] == "integer"});
    }
    return true;
}

// The "error:" messages of gcc or g++, without their place.
inline std::vector<std::string> error_messages(const std::string& errors)
{
    std::vector<std::string> messages;
    std::istringstream lines(errors);
    std::string line;
    while (std::getline(lines, line)) {
        std::size_t at = line.find(" error: ");
        if (at != std::string::npos)
            messages.push_back(line.substr(at + 8));
    }
    return messages;
}

// Each step a presence of 0 or 1 and a value from 0 to 59.
inline trace random_trace(const std::vector<c_port>& inputs, unsigned seed, std::size_t length = steps)
{
    std::mt19937 rng(seed);
    trace t(length, std::vector<int>(inputs.size()));
    for (auto& step : t)
        for (std::size_t i = 0; i < inputs.size(); ++i)
            step[i] = int(rng() % (inputs[i].valued ? 60 : 2));
    return t;
}

// The trace as a reaction reads it: a line per reaction, a lone 1 when the
// module has no input.
inline std::string trace_text(const trace& t, bool no_inputs)
{
    std::string text;
    for (const auto& step : t) {
        for (int v : step)
            text += std::to_string(v) + " ";
        text += no_inputs ? "1\n" : "\n";
    }
    return text;
}

// The trace as the simulator and the C# bean read it: per reaction a line
// of the names of the inputs present.
inline std::string reaction_lines(const std::vector<c_port>& inputs, const trace& t)
{
    std::ostringstream lines;
    for (const auto& step : t) {
        const char* sep = "";
        for (std::size_t i = 0; i < inputs.size(); ++i)
            if (step[i] != 0) {
                lines << sep << inputs[i].name;
                sep = " ";
            }
        lines << "\n";
    }
    return lines.str();
}

// The statements, C and C++ alike, of one reaction read from the stream
// `in` and written to `out`: false (0) at the end of the trace. Before the
// reaction each presence is cleared and each value set to -1, so that what
// the reaction leaves there shows.
inline std::string reaction_code(const std::string& module, const std::vector<c_port>& inputs,
                                 const std::vector<c_port>& outputs)
{
    std::ostringstream r;
    std::string args, sep;
    for (const auto* list : {&inputs, &outputs})
        for (const c_port& p : *list) {
            r << "  " << (p.valued ? "integer" : "int") << " v_" << p.name << ";\n";
            args += sep + (list == &outputs ? "&v_" : "v_") + p.name;
            sep = ", ";
        }
    if (inputs.empty())
        r << "  int go; if (fscanf(in, \"%d\", &go) != 1) return 0;\n";
    for (const c_port& p : inputs)
        r << "  if (fscanf(in, \"%d\", &v_" << p.name << ") != 1) return 0;\n";
    for (const c_port& p : outputs)
        r << "  v_" << p.name << (p.valued ? " = -1;\n" : " = 0;\n");
    r << "  " << module << "_automaton(" << args << ");\n";
    for (const c_port& p : outputs)
        r << "  fprintf(out, \"%d \", v_" << p.name << (p.valued ? "" : " != 0") << ");\n";
    r << "  fprintf(out, \"\\n\");\n";
    return r.str();
}

// Lines of values, one per reaction, a value per output: -1 where one is
// missing.
inline port_values read_values(const std::string& text, const std::vector<c_port>& outputs, std::size_t reactions)
{
    port_values values;
    for (const c_port& o : outputs)
        values[o.name].assign(reactions, -1);
    std::istringstream lines(text);
    std::string line;
    for (std::size_t step = 0; step < reactions && std::getline(lines, line); ++step) {
        std::istringstream fields(line);
        for (const c_port& o : outputs)
            fields >> values[o.name][step];
    }
    return values;
}

// How many times the outputs changed from one reaction to the next: a
// comparison on a trace that moved nothing says little.
inline int changes(const port_values& values)
{
    int n = 0;
    for (const auto& o : values)
        for (std::size_t step = 1; step < o.second.size(); ++step)
            n += o.second[step] != o.second[step - 1];
    return n;
}

// Compiles the module's C (with `more`, further files or options for gcc)
// with a driver that resets once and reacts once per line of the trace.
inline port_values run_c(const scratch_dir& s, const std::string& module, const std::vector<c_port>& inputs,
                         const std::vector<c_port>& outputs, const trace& t, const std::string& more = "")
{
    s.write("driver.c", "#include <stdio.h>\n#include \"" + module + ".h\"\nstatic int react(FILE* in, FILE* out)\n{\n" +
                            reaction_code(module, inputs, outputs) + "  return 1;\n}\nint main(void)\n{\n  " + module +
                            "_reset_automaton();\n  while (react(stdin, stdout))\n    ;\n  return 0;\n}\n");
    EXPECT_EQ(run("cd '" + s.path + "' && gcc " + cflags + " -o driver driver.c " + module + ".c " + more +
                  " 2> gcc.txt"),
              0)
        << read_file(s.path + "/gcc.txt");
    s.write("trace.txt", trace_text(t, inputs.empty()));
    EXPECT_EQ(run("cd '" + s.path + "' && ./driver < trace.txt > c_out.txt"), 0);
    return read_values(read_file(s.path + "/c_out.txt"), outputs, t.size());
}

inline std::vector<std::string> names(const std::vector<c_port>& ports)
{
    std::vector<std::string> n;
    for (const c_port& p : ports)
        n.push_back(p.name);
    return n;
}

// The bundled example `name` in `s`, or zkcgen's module of that name when
// `equations` is not 0.
inline void place_module(const scratch_dir& s, const std::string& name, long equations = 0, int seed = 0)
{
    if (equations == 0)
        copy_example(s.path, name);
    else
        generate_module(s.path, name, equations, seed);
}

// <name>.zkc in `s` holding `text`, or the bundled example when it is empty.
inline void place_module(const scratch_dir& s, const std::string& name, const std::string& text)
{
    if (text.empty())
        copy_example(s.path, name);
    else
        s.write(name + ".zkc", text);
}

// The C side of a module over the type integer: the type's header as the
// examples ship it, and `code` in user.c, whose name is returned.
inline std::string write_c_user(const scratch_dir& s, const std::string& module, const std::string& code)
{
    s.write("C_data_user_integer.h", read_file(TARN_SOURCE_DIR "/examples/user/C_data_user_integer.h"));
    s.write("user.c", "#include \"" + module + ".h\"\n" + code);
    return "user.c";
}

// The first input of `t` one reaction late: what "pre" of it gives.
inline std::vector<int> first_input_delayed(const trace& t)
{
    std::vector<int> late(t.size());
    for (std::size_t step = 1; step < t.size(); ++step)
        late[step] = t[step - 1][0];
    return late;
}

// Each output outside `skip` as a target gave it against the C's; the
// outputs compared and the changes of their C values along the trace.
struct output_comparison {
    int compared = 0, changes = 0;
};

inline output_comparison compare_with_c(const std::vector<c_port>& outputs, const port_values& target,
                                        const port_values& c, const std::set<std::string>& skip = {})
{
    output_comparison r;
    for (const c_port& o : outputs)
        if (skip.count(o.name) == 0) {
            EXPECT_EQ(target.at(o.name), c.at(o.name)) << "output " << o.name;
            ++r.compared;
            r.changes += changes({{o.name, c.at(o.name)}});
        }
    return r;
}

// tarn run on <module>.zkc of `s` for its C and `options`, then the C
// (built with `more`) on a random trace of `length` reactions: what tarn
// said, the reaction's ports, the trace and the C's outputs.
struct c_run {
    tarn_output made;
    std::vector<c_port> inputs, outputs;
    trace t;
    port_values c;
};

inline c_run run_with_c(const scratch_dir& s, const std::string& module, const std::vector<std::string>& options,
                        unsigned trace_seed, const std::string& more = "", std::size_t length = steps)
{
    c_run r;
    std::vector<std::string> args{module + ".zkc", "-c"};
    args.insert(args.end(), options.begin(), options.end());
    r.made = run_tarn_in(s.path, args);
    EXPECT_EQ(r.made.status, 0) << r.made.err;
    if (r.made.status != 0 || !read_ports(read_file(s.path + "/" + module + ".h"), module, r.inputs, r.outputs)) {
        ADD_FAILURE() << "no reaction in " << module << ".h";
        return r;
    }
    r.t = random_trace(r.inputs, trace_seed, length);
    r.c = run_c(s, module, r.inputs, r.outputs, r.t, more);
    return r;
}

} // namespace c_reference

#endif
