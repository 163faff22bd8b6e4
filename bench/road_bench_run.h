#ifndef TARN_BENCH_ROAD_BENCH_RUN_H
#define TARN_BENCH_ROAD_BENCH_RUN_H

// The measuring half of road_bench: children run alone, timed and bounded,
// and the small parsers and sums of its command line and table.

#include <string>
#include <vector>

// What one child cost and how it ended. The times are wall-clock and
// processor (user + system) seconds of that child alone; the peak is its
// maximum resident set in KiB.
struct child_figures {
    bool started = false;   // fork (and the child's redirections) succeeded
    bool timed_out = false; // killed at the limit
    int status = -1;        // exit status when it exited, else -1
    int signal = 0;         // the signal that ended it, else 0
    double seconds = 0;
    double cpu_seconds = 0;
    long peak_kib = 0;

    bool ok() const { return started && !timed_out && status == 0; }
};

// Runs argv[0] (a path, not searched for) with argv, DISPLAY removed from
// its environment, standard input from /dev/null, standard output to
// `out` and standard error to `err` (each truncated; "" is /dev/null).
// A child still running after `limit` seconds is killed with SIGKILL and
// reported as timed out. A program that cannot be executed ends with 127.
child_figures road_bench_run(const std::vector<std::string>& argv, const std::string& out, const std::string& err,
                             double limit);

// The writing half of the I/O floor: a child copies `source` into `target`
// over and over, in blocks as cat moves them, until exactly `bytes` bytes
// are written. A source that is empty while bytes are asked for is a
// failure (status 1).
child_figures road_bench_write_floor(const std::string& source, const std::string& target, long bytes,
                                     double limit);

// "1000,10000,30000" into sizes; each item a positive decimal integer, at
// least one item. On a malformed text `sizes` is left as it was.
bool road_bench_sizes(const std::string& text, std::vector<long>& sizes);

// A positive number of seconds, such as "600" or "0.5".
bool road_bench_seconds(const std::string& text, double& seconds);

// A seed for zkcgen: a non-empty run of decimal digits, kept as text.
bool road_bench_seed(const std::string& text, std::string& seed);

// Growth exponent between (n1, t1) and (n2, t2): log(t2/t1) / log(n2/n1).
double road_bench_exponent(long n1, double t1, long n2, double t2);

// "status 3", "signal 11", "timeout", "not started": how a child ended.
std::string road_bench_describe(const child_figures& f);

#endif
