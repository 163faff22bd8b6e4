// The measuring half of road_bench: how a child's end is reported, the
// limit, what the child sees, the floor's copy and the size list.

#include "bench/road_bench_run.h"
#include "tests/scale/scale_support.h"

#include <gtest/gtest.h>

#include <cstdlib>

TEST(RoadBenchRun, ReportsHowTheChildEnded)
{
    struct row {
        std::vector<std::string> argv;
        double limit;
        int status, signal;
        const char* described;
    };
    const row rows[] = {
        {{"/bin/sh", "-c", "exit 0"}, 60, 0, 0, "status 0"},
        {{"/bin/sh", "-c", "exit 3"}, 60, 3, 0, "status 3"},
        {{"/bin/sh", "-c", "kill -TERM $$"}, 60, -1, 15, "signal 15"},
        {{"/nonexistent/program"}, 60, 127, 0, "status 127"},
        {{"/bin/sleep", "30"}, 0.2, -1, 9, "timeout"},  // killed, not waited for
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.argv.back());
        child_figures f = road_bench_run(r.argv, "", "", r.limit);
        EXPECT_EQ(f.ok(), r.status == 0);
        EXPECT_EQ(f.status, r.status);
        EXPECT_EQ(f.signal, r.signal);
        EXPECT_EQ(road_bench_describe(f), r.described);
        EXPECT_LT(f.seconds, 20.0);
    }
}

TEST(RoadBenchRun, TheChildHasNoDisplayAndItsStreamsGoWhereAsked)
{
    scratch s;
    setenv("DISPLAY", ":99", 1);
    child_figures f = road_bench_run({"/bin/sh", "-c", "echo \"[$DISPLAY]\"; read x && echo read; echo oops >&2"},
                                     s.dir + "/out", s.dir + "/err", 60);
    unsetenv("DISPLAY");
    ASSERT_TRUE(f.ok()) << road_bench_describe(f);
    EXPECT_EQ(slurp(s.dir + "/out"), "[]\n");  // and standard input is empty
    EXPECT_EQ(slurp(s.dir + "/err"), "oops\n");
}

TEST(RoadBenchRun, PeakMemoryIsTheChildsOwn)
{
    // dd reads 64 MiB of zeros into one buffer of that size.
    child_figures big = road_bench_run({"/bin/dd", "if=/dev/zero", "of=/dev/null", "bs=64M", "count=1"}, "", "", 60);
    child_figures small = road_bench_run({"/bin/true"}, "", "", 60);
    ASSERT_TRUE(big.ok() && small.ok());
    EXPECT_GT(big.peak_kib, 64 * 1024);
    EXPECT_GT(small.peak_kib, 0);
    EXPECT_LT(small.peak_kib, 32 * 1024);
    EXPECT_LE(small.cpu_seconds, small.seconds + 0.05);
}

TEST(RoadBenchRun, WriteFloorRepeatsTheSourceToTheExactSize)
{
    scratch s;
    ASSERT_EQ(run_shell("printf abcdefg > " + s.dir + "/source; : > " + s.dir + "/empty"), 0);
    for (long bytes : {0L, 3L, 7L, 20L, 300000L}) {
        ASSERT_TRUE(road_bench_write_floor(s.dir + "/source", s.dir + "/copy", bytes, 60).ok());
        std::string copy = slurp(s.dir + "/copy");
        ASSERT_EQ(static_cast<long>(copy.size()), bytes);
        for (std::size_t k = 0; k < copy.size(); ++k)
            ASSERT_EQ(copy[k], "abcdefg"[k % 7]) << bytes << " at " << k;
    }
    EXPECT_EQ(road_bench_write_floor(s.dir + "/empty", s.dir + "/copy", 10, 60).status, 1);
    EXPECT_EQ(road_bench_write_floor(s.dir + "/missing", s.dir + "/copy", 10, 60).status, 1);
}

TEST(RoadBenchArguments, SizesAndLimit)
{
    const std::pair<const char*, std::vector<long>> rows[] = {
        {"1000", {1000}}, {"1000,10000,30000", {1000, 10000, 30000}}, {"", {}}, {"1000,", {}}, {",1000", {}},
        {"1k", {}},       {"0", {}},  {"-5", {}}, {"10 ,20", {}}, {"99999999999999999999", {}},
    };
    for (const auto& r : rows) {
        std::vector<long> sizes{7};
        EXPECT_EQ(road_bench_sizes(r.first, sizes), !r.second.empty()) << r.first;
        EXPECT_EQ(sizes, r.second.empty() ? std::vector<long>{7} : r.second) << r.first;
    }
    double limit = 42;
    EXPECT_TRUE(road_bench_seconds("0.5", limit));
    EXPECT_EQ(limit, 0.5);
    for (const char* bad : {"0", "-1", "", "5s", "inf", "nan"})
        EXPECT_FALSE(road_bench_seconds(bad, limit)) << bad;
    EXPECT_EQ(limit, 0.5);
}
