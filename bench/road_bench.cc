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
// `tarn <module> -blif -c` runs alone in a child process (no display), and
// its wall time and peak resident memory are taken. The I/O floor of the
// same size is a `cat` of the module to /dev/null plus a `cat` writing as
// many bytes as tarn wrote. The exponent between two sizes is
// log(t2 / t1) / log(n2 / n1): 1 is linear.

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct run_figures {
    bool ok = false;
    bool timed_out = false;
    int status = -1;
    double seconds = 0;
    long peak_kb = 0;
};

double wall_now()
{
    using clock = std::chrono::steady_clock;
    return std::chrono::duration<double>(clock::now().time_since_epoch()).count();
}

// Runs argv in a child with stdin from /dev/null and stdout to `out`
// (or /dev/null), stderr to /dev/null; kills it after `limit` seconds.
run_figures run_child(const std::vector<std::string>& argv, const std::string& out, double limit)
{
    run_figures f;
    double start = wall_now();
    pid_t pid = fork();
    if (pid < 0) {
        std::perror("road_bench: fork");
        return f;
    }
    if (pid == 0) {
        unsetenv("DISPLAY");
        int in = open("/dev/null", O_RDONLY);
        int o = out.empty() ? open("/dev/null", O_WRONLY)
                            : open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int e = open("/dev/null", O_WRONLY);
        if (in < 0 || o < 0 || e < 0)
            _exit(127);
        dup2(in, 0);
        dup2(o, 1);
        dup2(e, 2);
        std::vector<char*> args;
        for (const std::string& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    for (;;) {
        pid_t done = wait4(pid, &status, WNOHANG, &usage);
        if (done == pid)
            break;
        if (done < 0) {
            std::perror("road_bench: wait4");
            return f;
        }
        if (wall_now() - start > limit) {
            kill(pid, SIGKILL);
            wait4(pid, &status, 0, &usage);
            f.timed_out = true;
            break;
        }
        usleep(2000);
    }
    f.seconds = wall_now() - start;
    f.peak_kb = usage.ru_maxrss;
    f.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    f.ok = !f.timed_out && f.status == 0;
    return f;
}

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
            return colon == std::string::npos ? line : line.substr(colon + 2);
        }
    return "unknown";
}

std::vector<long> parse_sizes(const std::string& text)
{
    std::vector<long> sizes;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ','))
        if (!item.empty())
            sizes.push_back(std::atol(item.c_str()));
    return sizes;
}

void usage()
{
    std::fprintf(stderr, "usage: road_bench [--quick] [--sizes N,N,...] [--tarn PATH] [--zkcgen PATH] "
                         "[--limit SECONDS] [--seed N]\n");
}

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
        if (a == "--quick")
            sizes = {1000, 10000};
        else if (a == "--sizes" && has_value)
            sizes = parse_sizes(argv[++i]);
        else if (a == "--tarn" && has_value)
            tarn = argv[++i];
        else if (a == "--zkcgen" && has_value)
            zkcgen = argv[++i];
        else if (a == "--limit" && has_value)
            limit = std::atof(argv[++i]);
        else if (a == "--seed" && has_value)
            seed = argv[++i];
        else {
            usage();
            return 2;
        }
    }
    if (sizes.empty()) {
        usage();
        return 2;
    }

    char scratch_template[] = "/tmp/road_bench_XXXXXX";
    char* scratch = mkdtemp(scratch_template);
    if (scratch == nullptr) {
        std::perror("road_bench: mkdtemp");
        return 1;
    }
    std::string dir = scratch;

    std::printf("road_bench: tarn <module> -blif -c on generated modules (seed %s)\n", seed.c_str());
    std::printf("machine: %ld cores, %s\n", sysconf(_SC_NPROCESSORS_ONLN), cpu_model().c_str());
    std::printf("%10s %12s %12s %10s %12s %10s %9s %9s\n", "equations", "input (B)", "output (B)",
                "time (s)", "peak (MB)", "exponent", "floor (s)", "ratio");

    int failures = 0;
    double previous_time = 0;
    long previous_size = 0;
    for (long n : sizes) {
        std::string base = dir + "/m" + std::to_string(n);
        std::string module = base + ".zkc";
        run_figures gen = run_child({zkcgen, std::to_string(n), seed}, module, limit);
        if (!gen.ok) {
            std::printf("%10ld  zkcgen failed (status %d)\n", n, gen.status);
            ++failures;
            continue;
        }
        run_figures road = run_child({tarn, module, "-blif", "-c"}, "", limit);
        long in_bytes = file_size(module);
        long out_bytes = 0;
        bool files = true;
        for (const char* suffix : {".blif", ".c", ".h"}) {
            long size = file_size(base + suffix);
            files = files && size > 0;
            out_bytes += size > 0 ? size : 0;
        }
        if (road.timed_out) {
            std::printf("%10ld %12ld %12s %10s  timeout after %.0f s\n", n, in_bytes, "-", "-", limit);
            ++failures;
            continue;
        }
        if (!road.ok || !files) {
            std::printf("%10ld %12ld  tarn failed (status %d%s)\n", n, in_bytes, road.status,
                        files ? "" : ", outputs missing");
            ++failures;
            continue;
        }

        // The floor: read the input, and write as many bytes as tarn wrote
        // (the input repeated, cut to size).
        std::string copy = dir + "/floor.out";
        run_figures read = run_child({"/bin/cat", module}, "", limit);
        std::string inputs;
        for (long written = 0; written < out_bytes; written += in_bytes)
            inputs += " '" + module + "'";
        run_figures write = run_child(
            {"/bin/sh", "-c", "cat" + inputs + " | head -c " + std::to_string(out_bytes) + " > '" + copy + "'"}, "",
            limit);
        std::remove(copy.c_str());
        double floor = read.seconds + write.seconds;

        char exponent[32] = "-";
        if (previous_size > 0 && previous_time > 0 && road.seconds > 0)
            std::snprintf(exponent, sizeof exponent, "%.2f",
                          std::log(road.seconds / previous_time) / std::log(double(n) / previous_size));
        std::printf("%10ld %12ld %12ld %10.2f %12.1f %10s %9.3f %9.0f\n", n, in_bytes, out_bytes, road.seconds,
                    road.peak_kb / 1024.0, exponent, floor, floor > 0 ? road.seconds / floor : 0.0);
        std::fflush(stdout);
        previous_time = road.seconds;
        previous_size = n;
        for (const char* suffix : {".zkc", ".blif", ".c", ".h", ".zkc.log"})
            std::remove((base + suffix).c_str());
    }
    rmdir(dir.c_str());
    return failures == 0 ? 0 : 1;
}
