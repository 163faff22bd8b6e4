// Times the simulator on generated modules: the compilation of the
// finalised equations into the flat program, a million reactions of the
// engine on random inputs, and the whole reading of reaction lines and
// printing of output lines that the command does, all in processor time.
//
//   sim_bench                      100, 1000 and 10000 equations
//   sim_bench --sizes N,N,...      the given sizes
//   sim_bench --reactions N        reactions per size (default 1000000)
//
// zkcgen (beside this program in the build tree) writes each module; it
// is read and finalised as mosk does. The exit status is 0 when every
// size ran.

#include "context/compilation.h"
#include "model/module.h"
#include "sim/mosk_run.h"
#include "sim/reaction_engine.h"
#include "zkc/zkc_input.h"

#include <unistd.h>

#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Processor time of this process: the build machine is shared, and wall
// time there says more about the other jobs than about the simulator.
struct clock_type {
    using time_point = double;
    static double now()
    {
        timespec t;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
    }
};

double seconds_since(double start) { return clock_type::now() - start; }

std::string directory_of_self()
{
    char buffer[4096];
    ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0)
        return ".";
    std::string path(buffer, static_cast<std::size_t>(n));
    return path.substr(0, path.rfind('/'));
}

std::vector<long> parse_sizes(const std::string& text)
{
    std::vector<long> sizes;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ','))
        sizes.push_back(std::atol(item.c_str()));
    return sizes;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<long> sizes = {100, 1000, 10000};
    long reactions = 1000000;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--sizes" && i + 1 < argc)
            sizes = parse_sizes(argv[++i]);
        else if (a == "--reactions" && i + 1 < argc)
            reactions = std::atol(argv[++i]);
        else {
            std::cerr << "usage: sim_bench [--sizes N,N,...] [--reactions N]\n";
            return 1;
        }
    }
    std::string zkcgen = directory_of_self() + "/../tools/zkcgen";
    char dir_template[] = "/tmp/sim_bench_XXXXXX";
    if (mkdtemp(dir_template) == nullptr)
        return 1;
    std::string dir = dir_template;

    std::printf("%10s %8s %10s %12s %12s %14s %14s\n", "equations", "inputs", "steps", "compile ms", "reactions",
                "engine s", "command s");
    int status = 0;
    for (long n : sizes) {
        std::string name = "bench" + std::to_string(n);
        std::string file = dir + "/" + name + ".zkc";
        if (std::system((zkcgen + " " + std::to_string(n) + " 1 " + name + " > " + file).c_str()) != 0) {
            std::cerr << "sim_bench: zkcgen failed for " << n << "\n";
            status = 1;
            continue;
        }
        Compilation::forget_data_tables();
        std::string suffix;
        bool ok = false;
        std::cerr.setstate(std::ios::failbit);
        Module* module = parse(file, suffix, &ok);
        if (ok)
            Module::finalize(module, 0);
        std::cerr.clear();
        if (!ok) {
            std::cerr << "sim_bench: cannot read " << file << "\n";
            status = 1;
            continue;
        }

        auto start = clock_type::now();
        reaction_engine engine(module);
        double compile = seconds_since(start);

        // 1024 random input vectors, cycled.
        std::mt19937 rng(7);
        std::size_t inputs = engine.inputs().size();
        std::vector<std::vector<bool>> pattern(1024, std::vector<bool>(inputs));
        for (auto& p : pattern)
            for (std::size_t i = 0; i < inputs; ++i)
                p[i] = rng() % 2 != 0;
        std::vector<std::string> no_values(inputs);
        long seen = 0;
        start = clock_type::now();
        for (long r = 0; r < reactions; ++r) {
            engine.react(pattern[static_cast<std::size_t>(r) & 1023], no_values);
            seen += engine.is_present(engine.outputs().empty() ? -1 : engine.outputs()[0].var);
        }
        double run = seconds_since(start);

        // The command's loop on a tenth as many lines, scaled up.
        long lines = std::max(1L, reactions / 10);
        std::ostringstream text;
        for (long r = 0; r < lines; ++r) {
            const char* sep = "";
            for (std::size_t i = 0; i < inputs; ++i)
                if (pattern[static_cast<std::size_t>(r) & 1023][i]) {
                    text << sep << engine.inputs()[i].name;
                    sep = " ";
                }
            text << "\n";
        }
        engine.reset();
        std::istringstream in(text.str());
        std::ostringstream out, err;
        start = clock_type::now();
        mosk_simulate(engine, in, "bench", out, err, nullptr, false);
        double command = seconds_since(start) * static_cast<double>(reactions) / static_cast<double>(lines);

        std::printf("%10ld %8zu %10zu %12.1f %12ld %14.2f %14.2f\n", n, inputs, engine.step_count(),
                    compile * 1000.0, reactions, run, command);
        if (seen < 0)
            std::printf("%ld\n", seen);
    }
    std::system(("rm -rf '" + dir + "'").c_str());
    return status;
}
