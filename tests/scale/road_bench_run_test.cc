// The measuring half of road_bench: how a child's end is reported, that a
// child past its limit is killed, what the child sees, the I/O floor's
// copy, and the parsers of the command line.

#include "bench/road_bench_run.h"
#include "tests/scale/scale_support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

TEST(RoadBenchRun, ReportsHowTheChildEnded)
{
    struct row {
        std::vector<std::string> argv;
        bool ok;
        int status;
        int signal;
        const char* described;
    };
    const row rows[] = {
        {{"/bin/sh", "-c", "exit 0"}, true, 0, 0, "status 0"},
        {{"/bin/sh", "-c", "exit 3"}, false, 3, 0, "status 3"},
        {{"/bin/sh", "-c", "kill -SEGV $$"}, false, -1, 11, "signal 11"},
        {{"/nonexistent/program"}, false, 127, 0, "status 127"},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.argv.back());
        child_figures f = road_bench_run(r.argv, "", "", 60);
        EXPECT_TRUE(f.started);
        EXPECT_FALSE(f.timed_out);
        EXPECT_EQ(f.ok(), r.ok);
        EXPECT_EQ(f.status, r.status);
        EXPECT_EQ(f.signal, r.signal);
        EXPECT_EQ(road_bench_describe(f), r.described);
    }
}

TEST(RoadBenchRun, KillsAChildPastItsLimit)
{
    child_figures f = road_bench_run({"/bin/sleep", "30"}, "", "", 0.2);
    EXPECT_TRUE(f.started);
    EXPECT_TRUE(f.timed_out);
    EXPECT_FALSE(f.ok());
    EXPECT_EQ(f.signal, 9);
    EXPECT_EQ(road_bench_describe(f), "timeout");
    // Killed at the limit, not left to finish its 30 seconds.
    EXPECT_GE(f.seconds, 0.2);
    EXPECT_LT(f.seconds, 20.0);
}

TEST(RoadBenchRun, TheChildHasNoDisplayAndItsStreamsGoWhereAsked)
{
    scratch s;
    setenv("DISPLAY", ":99", 1);
    child_figures f = road_bench_run({"/bin/sh", "-c", "echo \"[$DISPLAY]\"; read x && echo read; echo oops >&2"},
                                     s.dir + "/out", s.dir + "/err", 60);
    unsetenv("DISPLAY");
    ASSERT_TRUE(f.ok()) << road_bench_describe(f);
    // Standard input is /dev/null: the read finds end of file at once.
    EXPECT_EQ(slurp(s.dir + "/out"), "[]\n");
    EXPECT_EQ(slurp(s.dir + "/err"), "oops\n");
}

TEST(RoadBenchRun, PeakMemoryAndProcessorTimeAreTheChildsOwn)
{
    // dd reads 64 MiB of zeros into one buffer of that size, touching it.
    child_figures big = road_bench_run({"/bin/dd", "if=/dev/zero", "of=/dev/null", "bs=64M", "count=1"}, "", "", 60);
    child_figures small = road_bench_run({"/bin/true"}, "", "", 60);
    ASSERT_TRUE(big.ok()) << road_bench_describe(big);
    ASSERT_TRUE(small.ok()) << road_bench_describe(small);
    EXPECT_GT(big.peak_kib, 64 * 1024);
    EXPECT_GT(small.peak_kib, 0);
    EXPECT_LT(small.peak_kib, 32 * 1024);
    EXPECT_LE(small.cpu_seconds, small.seconds + 0.05);
}

TEST(RoadBenchRun, WriteFloorRepeatsTheSourceToTheExactSize)
{
    scratch s;
    std::string source = s.dir + "/source";
    ASSERT_EQ(run_shell("printf 'abcdefg' > " + source), 0);
    for (long bytes : {0L, 3L, 7L, 20L, 300000L}) {
        SCOPED_TRACE(bytes);
        child_figures f = road_bench_write_floor(source, s.dir + "/copy", bytes, 60);
        ASSERT_TRUE(f.ok()) << road_bench_describe(f);
        std::string copy = slurp(s.dir + "/copy");
        ASSERT_EQ(static_cast<long>(copy.size()), bytes);
        for (std::size_t k = 0; k < copy.size(); ++k)
            ASSERT_EQ(copy[k], "abcdefg"[k % 7]) << k;
    }
    ASSERT_EQ(run_shell(": > " + s.dir + "/empty"), 0);
    EXPECT_EQ(road_bench_write_floor(s.dir + "/empty", s.dir + "/copy", 10, 60).status, 1);
    EXPECT_EQ(road_bench_write_floor(s.dir + "/missing", s.dir + "/copy", 10, 60).status, 1);
}

TEST(RoadBenchArguments, Sizes)
{
    struct row {
        const char* text;
        bool good;
        std::vector<long> sizes;
    };
    const row rows[] = {
        {"1000", true, {1000}},
        {"1000,10000,30000", true, {1000, 10000, 30000}},
        {"5,5", true, {5, 5}},
        {"", false, {}},
        {"1000,", false, {}},
        {",1000", false, {}},
        {"1k", false, {}},
        {"0", false, {}},
        {"-5", false, {}},
        {"10 ,20", false, {}},
        {"99999999999999999999", false, {}},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        std::vector<long> sizes{7};
        EXPECT_EQ(road_bench_sizes(r.text, sizes), r.good);
        EXPECT_EQ(sizes, r.good ? r.sizes : std::vector<long>{7});
    }
}

TEST(RoadBenchArguments, LimitAndSeed)
{
    struct row {
        const char* text;
        bool good;
        double value;
    };
    const row limits[] = {{"600", true, 600}, {"0.5", true, 0.5}, {"0", false, 0},  {"-1", false, 0},
                          {"", false, 0},     {"5s", false, 0},   {"inf", false, 0}, {"nan", false, 0}};
    for (const row& r : limits) {
        SCOPED_TRACE(r.text);
        double limit = 42;
        EXPECT_EQ(road_bench_seconds(r.text, limit), r.good);
        EXPECT_EQ(limit, r.good ? r.value : 42);
    }
    std::string seed = "1";
    EXPECT_TRUE(road_bench_seed("12345", seed));
    EXPECT_EQ(seed, "12345");
    for (const char* bad : {"", "-1", "1.5", "x", "12345678901234567890"}) {
        EXPECT_FALSE(road_bench_seed(bad, seed)) << bad;
        EXPECT_EQ(seed, "12345");
    }
}

TEST(RoadBenchArguments, GrowthExponent)
{
    EXPECT_NEAR(road_bench_exponent(1000, 1.0, 10000, 10.0), 1.0, 1e-12);
    EXPECT_NEAR(road_bench_exponent(1000, 1.0, 10000, 100.0), 2.0, 1e-12);
    EXPECT_NEAR(road_bench_exponent(10000, 2.0, 30000, 2.0), 0.0, 1e-12);
    EXPECT_NEAR(road_bench_exponent(1000, 0.05, 4000, 0.4), 1.5, 1e-12);
}
