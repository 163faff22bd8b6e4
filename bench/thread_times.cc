// Loaded into a run (LD_PRELOAD), prints at its end the wall time, the
// processor time of the thread that ends the run (the program's own
// thread) and of the whole process, and the peak resident set: what the
// filler thread takes off the run's own thread shows as the difference.
//
//   LD_PRELOAD=build/bench/libthread_times.so build/driver/tarn m.zkc -blif -c

#include <sys/resource.h>

#include <cstdio>
#include <ctime>

namespace {

timespec started;

double seconds(const timeval& t) { return t.tv_sec + t.tv_usec * 1e-6; }

__attribute__((constructor)) void start() { clock_gettime(CLOCK_MONOTONIC, &started); }

__attribute__((destructor)) void report()
{
    rusage own {}, all {};
    getrusage(RUSAGE_THREAD, &own);
    getrusage(RUSAGE_SELF, &all);
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    double wall = (now.tv_sec - started.tv_sec) + (now.tv_nsec - started.tv_nsec) * 1e-9;
    std::fprintf(stderr,
                 "thread_times: wall %.2f s; own thread user %.2f s system %.2f s; "
                 "process user %.2f s system %.2f s; peak %ld MiB\n",
                 wall, seconds(own.ru_utime), seconds(own.ru_stime), seconds(all.ru_utime),
                 seconds(all.ru_stime), all.ru_maxrss / 1024);
}

}  // namespace
