// Times the whole road, reader to every target, on generated modules of
// growing size, and sets it against what merely moving the same bytes
// costs.
//
//   road_bench                     1k, 10k, 100k and 1M equations
//   road_bench --quick             1k and 10k, and the small wide modules
//   road_bench --sizes N,N,...     the given sizes
//   road_bench --wide N,N,...      the given sizes of the wide family
//   road_bench --tarn PATH --zkcgen PATH --limit SECONDS --seed N
//   road_bench --repeat K          each run K times: the least wall time kept,
//                                  the median of the K printed beside it
//
// Each size: zkcgen writes the module into a scratch directory, then tarn
// runs on it twice, alone in a child process (no display), once with
// `-blif -c` and once with every target option; the wall time, processor
// time and peak resident memory of each run are its own, taken from wait4.
// The I/O floor of a run is a `cat` of the module to /dev/null plus writing
// as many bytes as that run wrote into a file. The exponent between two
// sizes is log(t2 / t1) / log(n2 / n1): 1 is linear. The nodes column is
// the size of the C's node array, which grows with the decision nodes the
// run creates; the time per node compares families of different shapes.
//
// The wide family (zkcgen --wide: one output, the or of many locals, each
// the and of two inputs of its own) creates nodes with the square of its
// locals, by the order the output fixes; its curve is printed apart. Its
// "all" curve leaves out -esterel: the Esterel text is a sum of products,
// and the under wire of the output, the and of n two-literal sums, has 2^n
// products in any such cover.
//
// The exit status is 0 only if every run finished with status 0 and wrote
// its files.

#include "bench/median.h"
#include "bench/road_bench_run.h"

#include <sched.h>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

long file_size(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
}

std::string directory_of_self()
{
    char buffer[4096];
    ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0)
        return ".";
    std::string path(buffer, static_cast<std::size_t>(n));
    std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string cpu_model()
{
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("model name", 0) == 0) {
            std::size_t colon = line.find(':');
            std::size_t start = colon == std::string::npos ? 0 : line.find_first_not_of(" \t", colon + 1);
            return start == std::string::npos ? line : line.substr(start);
        }
    return "unknown";
}

// What `nproc` prints: the processors this process may run on.
long usable_processors()
{
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0)
        return CPU_COUNT(&set);
    return sysconf(_SC_NPROCESSORS_ONLN);
}

// Last non-empty line of a small text file, for a failure's row.
std::string last_line(const std::string& path)
{
    std::ifstream in(path);
    std::string line, last;
    while (std::getline(in, line))
        if (!line.empty())
            last = line;
    return last;
}

void usage()
{
    std::fprintf(stderr,
                 "usage: road_bench [--quick] [--sizes N,N,...] [--wide N,N,...] [--tarn PATH] [--zkcgen PATH] "
                 "[--limit SECONDS] [--seed N] [--repeat K]\n");
}

// The option sets every module is run with.
const std::vector<std::string> blif_c = {"-blif", "-c"};
const std::vector<std::string> every_target = {"-doc",  "-esterel", "-lustre", "-nusmv",   "-blif",  "-c",
                                               "-csharp", "-vhdl", "-altera", "-systemc", "-qsr", "-valued_simul"};

// The files a run wrote beside <dir>/<name>.zkc: everything in the
// directory but the module, its log and the captured messages.
long written_bytes(const std::string& dir, const std::string& name, std::string& listed)
{
    long total = 0;
    listed.clear();
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string file = e->d_name;
            if (file.find(name) == std::string::npos || file == name + ".zkc" || file == name + ".zkc.log" ||
                file == name + ".err")
                continue;
            long size = file_size(dir + "/" + file);
            if (size > 0)
                total += size;
            listed += " " + file;
        }
        closedir(d);
    }
    return total;
}

void remove_written(const std::string& dir, const std::string& name)
{
    std::string listed;
    written_bytes(dir, name, listed);
    std::size_t at = 0;
    while (at < listed.size()) {
        std::size_t next = listed.find(' ', at + 1);
        std::string file = listed.substr(at + 1, next == std::string::npos ? std::string::npos : next - at - 1);
        std::remove((dir + "/" + file).c_str());
        at = next == std::string::npos ? listed.size() : next;
    }
}

// "int <name>_node[N];" in the C: the size of its node array, or -1.
long c_nodes(const std::string& c_file, const std::string& name)
{
    std::ifstream in(c_file);
    std::string line, key = "int " + name + "_node[";
    while (std::getline(in, line)) {
        std::size_t at = line.find(key);
        if (at != std::string::npos)
            return std::strtol(line.c_str() + at + key.size(), nullptr, 10);
    }
    return -1;
}

// One curve of the table: a family run with one option set; the exponent
// needs the previous finished size of the same curve.
struct curve {
    std::string label;
    std::vector<std::string> options;
    long size = 0;
    double seconds = 0;
};

struct bench {
    std::string tarn, zkcgen, dir;
    double limit = 600;
    int repeat = 1;
    int failures = 0;
    bool keep = false;

    // Runs tarn on <dir>/<name>.zkc with the curve's options and prints
    // the row; the outputs are removed after.
    void run(curve& c, long n, const std::string& name)
    {
        std::string base = dir + "/" + name;
        std::string module = base + ".zkc";
        std::string errors = base + ".err";
        long in_bytes = file_size(module);
        std::vector<std::string> argv{tarn, module};
        argv.insert(argv.end(), c.options.begin(), c.options.end());
        // The machine is shared and a run is only ever slowed by it: of
        // several runs the fastest is the program's own time.
        // The median says what a user waits on such a machine.
        child_figures road = road_bench_run(argv, "", errors, limit);
        std::vector<double> walls{road.seconds};
        for (int again = 1; again < repeat && road.ok() && !road.timed_out; ++again) {
            remove_written(dir, name);
            child_figures next = road_bench_run(argv, "", errors, limit);
            walls.push_back(next.seconds);
            if (!next.ok() || next.timed_out || next.seconds < road.seconds)
                road = next;
        }
        std::string listed;
        long out_bytes = written_bytes(dir, name, listed);
        long nodes = c_nodes(base + ".c", name);
        if (road.timed_out || !road.ok() || nodes < 0) {
            std::printf("%-7s %10ld %11ld  %s%s\n", c.label.c_str(), n, in_bytes,
                        road.timed_out ? "timeout" : ("tarn failed: " + road_bench_describe(road)).c_str(),
                        nodes < 0 && road.ok() ? ", no C node array" : "");
            std::string said = last_line(errors);
            if (!said.empty())
                std::printf("%18s  stderr: %s\n", "", said.c_str());
            ++failures;
            keep = true;
            return;
        }

        // The floor, best of three: the small sizes are a few milliseconds
        // and one run is mostly the noise of process creation.
        double floor = -1;
        for (int round = 0; round < 3; ++round) {
            child_figures read = road_bench_run({"/bin/cat", module}, "/dev/null", "", limit);
            child_figures write = road_bench_write_floor(module, base + ".floor", out_bytes, limit);
            std::remove((base + ".floor").c_str());
            if (!read.ok() || !write.ok())
                continue;
            double total = read.seconds + write.seconds;
            if (floor < 0 || total < floor)
                floor = total;
        }

        char exponent[32] = "-";
        if (c.size > 0 && c.seconds > 0 && road.seconds > 0 && n != c.size)
            std::snprintf(exponent, sizeof exponent, "%.2f", road_bench_exponent(c.size, c.seconds, n, road.seconds));
        char ratio[32] = "-";
        if (floor > 0)
            std::snprintf(ratio, sizeof ratio, "%.1f", road.seconds / floor);
        std::printf("%-7s %10ld %11ld %11ld %9.3f %9.3f %9.3f %10.1f %9s %10.4f %8s %10ld %8.0f\n", c.label.c_str(),
                    n, in_bytes, out_bytes, road.seconds, median_of(walls), road.cpu_seconds,
                    road.peak_kib / 1024.0, exponent, floor, ratio, nodes,
                    road.cpu_seconds * 1e9 / static_cast<double>(nodes > 0 ? nodes : 1));
        std::fflush(stdout);
        c.size = n;
        c.seconds = road.seconds;
        remove_written(dir, name);
    }

    // zkcgen writes <dir>/<name>.zkc from its arguments.
    bool generate(const std::vector<std::string>& args, long n, const std::string& name)
    {
        std::string module = dir + "/" + name + ".zkc";
        std::string errors = dir + "/" + name + ".err";
        std::vector<std::string> argv{zkcgen};
        argv.insert(argv.end(), args.begin(), args.end());
        // The generator is not what is measured: it gets a limit of its own.
        child_figures gen = road_bench_run(argv, module, errors, limit > 3600 ? limit : 3600);
        if (gen.ok())
            return true;
        std::printf("%18ld  zkcgen failed (%s)\n", n, road_bench_describe(gen).c_str());
        std::remove(module.c_str());
        std::remove(errors.c_str());
        ++failures;
        return false;
    }

    void finish_module(const std::string& name)
    {
        for (const char* suffix : {".zkc", ".zkc.log", ".err"})
            std::remove((dir + "/" + name + suffix).c_str());
    }
};

} // namespace

int main(int argc, char** argv)
{
    std::string self = directory_of_self();
    std::string tarn = self + "/../driver/tarn";
    std::string zkcgen = self + "/../tools/zkcgen";
    std::vector<long> sizes{1000, 10000, 100000, 1000000};
    std::vector<long> wide{250, 500, 1000, 2000};
    double limit = 600;
    std::string seed = "1";
    int repeat = 1;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        bool has_value = i + 1 < argc;
        bool good = true;
        if (a == "--quick") {
            sizes = {1000, 10000};
            wide = {100, 200};
        } else if (a == "--wide" && has_value)
            good = road_bench_sizes(argv[++i], wide);
        else if (a == "--sizes" && has_value)
            good = road_bench_sizes(argv[++i], sizes);
        else if (a == "--tarn" && has_value)
            tarn = argv[++i];
        else if (a == "--zkcgen" && has_value)
            zkcgen = argv[++i];
        else if (a == "--limit" && has_value)
            good = road_bench_seconds(argv[++i], limit);
        else if (a == "--seed" && has_value)
            good = road_bench_seed(argv[++i], seed);
        else if (a == "--repeat" && has_value) {
            char* end = nullptr;
            long k = std::strtol(argv[++i], &end, 10);
            good = *end == '\0' && k >= 1 && k <= 100;
            repeat = good ? static_cast<int>(k) : 1;
        }
        else
            good = false;
        if (!good) {
            usage();
            return 2;
        }
    }
    for (std::string* program : {&tarn, &zkcgen}) {
        if (access(program->c_str(), X_OK) != 0) {
            std::fprintf(stderr, "road_bench: %s: %s\n", program->c_str(), std::strerror(errno));
            return 2;
        }
        if (char* resolved = realpath(program->c_str(), nullptr)) {
            *program = resolved;
            std::free(resolved);
        }
    }
    char scratch_template[] = "/tmp/road_bench_XXXXXX";
    char* scratch = mkdtemp(scratch_template);
    if (scratch == nullptr) {
        std::perror("road_bench: mkdtemp");
        return 1;
    }
    bench b;
    b.tarn = tarn;
    b.zkcgen = zkcgen;
    b.dir = scratch;
    b.limit = limit;
    b.repeat = repeat;

    std::printf("road_bench: tarn on modules from zkcgen (seed %s), limit %g s, best of %d (median beside)\n", seed.c_str(),
                limit, repeat);
    std::printf("tarn:   %s\nzkcgen: %s\n", tarn.c_str(), zkcgen.c_str());
    std::printf("machine: nproc %ld, %s\n", usable_processors(), cpu_model().c_str());
    std::printf("curves: \"blif -c\" = -blif -c; \"all\" = every target option\n\n");
    std::printf("%-7s %10s %11s %11s %9s %9s %9s %10s %9s %10s %8s %10s %8s\n", "curve", "equations", "input (B)",
                "output (B)", "wall (s)", "median", "cpu (s)", "peak (MiB)", "exponent", "floor (s)", "x floor",
                "C nodes", "ns/node");
    std::fflush(stdout);

    curve small{"blif -c", blif_c}, all{"all", every_target};
    for (long n : sizes) {
        std::string name = "m" + std::to_string(n);
        if (!b.generate({std::to_string(n), seed, name}, n, name))
            continue;
        b.run(small, n, name);
        b.run(all, n, name);
        b.finish_module(name);
    }
    std::printf("\nwide family: one output reading n locals, each the and of two inputs (n locals, 2n + 2 "
                "equations);\n"
                "\"all -e\" = every target option but -esterel, whose sums of products are exponential here\n");
    std::vector<std::string> but_esterel;
    for (const std::string& option : every_target)
        if (option != "-esterel")
            but_esterel.push_back(option);
    curve wide_small{"blif -c", blif_c}, wide_all{"all -e", but_esterel};
    for (long n : wide) {
        std::string name = "w" + std::to_string(n);
        if (!b.generate({"--wide", std::to_string(n), name}, n, name))
            continue;
        b.run(wide_small, n, name);
        b.run(wide_all, n, name);
        b.finish_module(name);
    }
    if (b.keep)
        std::printf("\nthe modules and the messages of the failed runs are kept in %s\n", b.dir.c_str());
    else
        rmdir(b.dir.c_str());
    return b.failures == 0 ? 0 : 1;
}
