// Times the whole road, reader to BLIF and C, on generated modules of
// growing size, and sets it against what merely moving the same bytes
// costs.
//
//   road_bench                     1k, 10k, 100k and 1M equations
//   road_bench --quick             1k and 10k
//   road_bench --sizes N,N,...     the given sizes
//   road_bench --tarn PATH --zkcgen PATH --limit SECONDS --seed N
//
// Each size: zkcgen writes the module into a scratch directory, then
// `tarn <module> -blif -c` runs alone in a child process (no display); its
// wall time, processor time and peak resident memory are its own, taken
// from wait4. The I/O floor of the same size is a `cat` of the module to
// /dev/null plus writing as many bytes as tarn wrote into a file. The
// exponent between two sizes is log(t2 / t1) / log(n2 / n1): 1 is linear.
//
// The exit status is 0 only if tarn finished with status 0 and wrote its
// three files for every size.

#include "bench/road_bench_run.h"

#include <sched.h>
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
                 "usage: road_bench [--quick] [--sizes N,N,...] [--tarn PATH] [--zkcgen PATH] "
                 "[--limit SECONDS] [--seed N]\n");
}

// One row of the table; the exponent needs the previous finished size.
struct finished {
    long size = 0;
    double seconds = 0;
};

} // namespace

int main(int argc, char** argv)
{
    std::string self = directory_of_self();
    std::string tarn = self + "/../driver/tarn";
    std::string zkcgen = self + "/../tools/zkcgen";
    std::vector<long> sizes{1000, 10000, 100000, 1000000};
    double limit = 600;
    std::string seed = "1";
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        bool has_value = i + 1 < argc;
        bool good = true;
        if (a == "--quick")
            sizes = {1000, 10000};
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
    const double generation_limit = limit > 3600 ? limit : 3600;

    char scratch_template[] = "/tmp/road_bench_XXXXXX";
    char* scratch = mkdtemp(scratch_template);
    if (scratch == nullptr) {
        std::perror("road_bench: mkdtemp");
        return 1;
    }
    std::string dir = scratch;

    std::printf("road_bench: tarn <module> -blif -c on modules from zkcgen (seed %s), limit %g s\n",
                seed.c_str(), limit);
    std::printf("tarn:   %s\nzkcgen: %s\n", tarn.c_str(), zkcgen.c_str());
    std::printf("machine: nproc %ld, %s\n\n", usable_processors(), cpu_model().c_str());
    std::printf("%10s %11s %11s %9s %9s %10s %9s %10s %8s\n", "equations", "input (B)", "output (B)", "wall (s)",
                "cpu (s)", "peak (MiB)", "exponent", "floor (s)", "x floor");
    std::fflush(stdout);

    int failures = 0;
    bool keep = false;
    finished previous;
    for (long n : sizes) {
        std::string base = dir + "/m" + std::to_string(n);
        std::string module = base + ".zkc";
        std::string errors = base + ".err";
        // The generator is not what is measured: it gets a limit of its own.
        child_figures gen = road_bench_run({zkcgen, std::to_string(n), seed}, module, errors, generation_limit);
        if (!gen.ok()) {
            std::printf("%10ld  zkcgen failed (%s)\n", n, road_bench_describe(gen).c_str());
            std::remove(module.c_str());
            std::remove(errors.c_str());
            ++failures;
            continue;
        }
        long in_bytes = file_size(module);
        child_figures road = road_bench_run({tarn, module, "-blif", "-c"}, "", errors, limit);
        long out_bytes = 0;
        std::string missing;
        for (const char* suffix : {".blif", ".c", ".h"}) {
            long size = file_size(base + suffix);
            if (size <= 0)
                missing += std::string(missing.empty() ? "" : ", ") + suffix;
            out_bytes += size > 0 ? size : 0;
        }
        if (road.timed_out) {
            std::printf("%10ld %11ld %11s %9s %9s %10s  timeout after %g s\n", n, in_bytes, "-", "-", "-", "-",
                        limit);
            ++failures;
            keep = true;
            continue;
        }
        if (!road.ok() || !missing.empty()) {
            std::printf("%10ld %11ld  tarn failed: %s%s%s\n", n, in_bytes, road_bench_describe(road).c_str(),
                        missing.empty() ? "" : ", no output ", missing.c_str());
            std::string said = last_line(errors);
            if (!said.empty())
                std::printf("%10s  stderr: %s\n", "", said.c_str());
            ++failures;
            keep = true;
            continue;
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
        if (previous.size > 0 && previous.seconds > 0 && road.seconds > 0 && n != previous.size)
            std::snprintf(exponent, sizeof exponent, "%.2f",
                          road_bench_exponent(previous.size, previous.seconds, n, road.seconds));
        char ratio[32] = "-";
        if (floor > 0)
            std::snprintf(ratio, sizeof ratio, "%.1f", road.seconds / floor);
        std::printf("%10ld %11ld %11ld %9.3f %9.3f %10.1f %9s %10.4f %8s\n", n, in_bytes, out_bytes, road.seconds,
                    road.cpu_seconds, road.peak_kib / 1024.0, exponent, floor, ratio);
        std::fflush(stdout);
        previous = {n, road.seconds};
        for (const char* suffix : {".zkc", ".blif", ".c", ".h", ".zkc.log", ".err"})
            std::remove((base + suffix).c_str());
    }
    if (keep)
        std::printf("\nthe modules and the messages of the failed sizes are kept in %s\n", dir.c_str());
    else
        rmdir(dir.c_str());
    return failures == 0 ? 0 : 1;
}
