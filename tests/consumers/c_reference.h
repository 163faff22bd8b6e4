// The module's C as the reference of every target's consumer test: the
// reaction's ports read off the header, random input traces, and the C
// compiled with gcc and run on a trace, one line of outputs per reaction.
#ifndef TARN_TESTS_CONSUMERS_C_REFERENCE_H
#define TARN_TESTS_CONSUMERS_C_REFERENCE_H

#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace c_reference {

inline const std::string tarn = TARN_BINARY_DIR "/driver/tarn";
inline constexpr int steps = 24;
// The nodes of an output's under wire read the output's pointer as an int:
// the generated text is so, and gcc only warns of it. Any other warning
// fails the build.
inline const std::string cflags = "-Werror -Wno-int-conversion";

using trace = std::vector<std::vector<int>>;         // step -> value per port
using port_values = std::map<std::string, std::vector<int>>; // port -> value per step

inline int run(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }

inline bool have(const char* tool) { return run(std::string("command -v ") + tool + " > /dev/null 2>&1") == 0; }

// The reaction's parameters as the header declares them: "int x" is an
// input, "int*x" an output. False when a parameter is of another type.
inline bool read_prototype(const std::string& header, const std::string& module, std::vector<std::string>& inputs,
                    std::vector<std::string>& outputs)
{
    std::string head = "extern void " + module + "_automaton(";
    std::size_t at = header.find(head);
    if (at == std::string::npos)
        return false;
    std::size_t close = header.find(')', at);
    std::stringstream params(header.substr(at + head.size(), close - at - head.size()));
    std::string p;
    while (std::getline(params, p, ',')) {
        std::smatch m;
        if (std::regex_match(p, m, std::regex("\\s*int\\s*\\*\\s*(\\w+)\\s*")))
            outputs.push_back(m[1]);
        else if (std::regex_match(p, m, std::regex("\\s*int\\s+(\\w+)\\s*")))
            inputs.push_back(m[1]);
        else
            return false;
    }
    return true;
}

inline trace random_trace(std::size_t ports, unsigned seed)
{
    std::mt19937 rng(seed);
    trace t(steps, std::vector<int>(ports));
    for (auto& step : t)
        for (int& v : step)
            v = int(rng() % 2);
    return t;
}

// Compiles the module's C with a driver that resets once and reacts once
// per line of inputs, printing the outputs.
inline port_values run_c(const scratch_dir& s, const std::string& module, const std::vector<std::string>& inputs,
                  const std::vector<std::string>& outputs, const trace& t)
{
    std::ofstream driver(s.path + "/driver.c");
    driver << "#include <stdio.h>\n#include \"" << module << ".h\"\nint main(void) {\n";
    driver << "  int in[" << inputs.size() + 1 << "], out[" << outputs.size() + 1 << "];\n";
    driver << "  " << module << "_reset_automaton();\n  for (;;) {\n";
    for (std::size_t i = 0; i < inputs.size(); ++i)
        driver << "    if (scanf(\"%d\", &in[" << i << "]) != 1) return 0;\n";
    if (inputs.empty())
        driver << "    int go; if (scanf(\"%d\", &go) != 1) return 0;\n";
    for (std::size_t o = 0; o < outputs.size(); ++o)
        driver << "    out[" << o << "] = 0;\n";
    driver << "    " << module << "_automaton(";
    for (std::size_t i = 0; i < inputs.size(); ++i)
        driver << (i ? ", " : "") << "in[" << i << "]";
    for (std::size_t o = 0; o < outputs.size(); ++o)
        driver << (o || !inputs.empty() ? ", " : "") << "&out[" << o << "]";
    driver << ");\n";
    for (std::size_t o = 0; o < outputs.size(); ++o)
        driver << "    printf(\"%d \", out[" << o << "] != 0);\n";
    driver << "    printf(\"\\n\");\n  }\n}\n";
    driver.close();

    std::string err = s.path + "/gcc.txt";
    EXPECT_EQ(run("cd '" + s.path + "' && gcc " + cflags + " -o driver driver.c " + module + ".c 2> gcc.txt"), 0)
        << read_file(err);
    std::ofstream in(s.path + "/trace.txt");
    for (const auto& step : t) {
        for (int v : step)
            in << v << " ";
        in << (inputs.empty() ? "1" : "") << "\n";
    }
    in.close();
    EXPECT_EQ(run("cd '" + s.path + "' && ./driver < trace.txt > c_out.txt"), 0);
    port_values values;
    std::istringstream lines(read_file(s.path + "/c_out.txt"));
    for (int step = 0; step < steps; ++step)
        for (const std::string& o : outputs) {
            int v = -1;
            lines >> v;
            values[o].push_back(v);
        }
    return values;
}

} // namespace c_reference

#endif
