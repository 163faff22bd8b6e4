// Times (processor time of the build, after the set-up of the variables)
// the BDD package on three families of functions and, when the
// comparison library was found at configure time, the same families built
// with it. Each run goes in a child process of its own, so that its peak
// memory is its own.
//
//   bdd_bench                      the standard set
//   bdd_bench --quick              small sizes only
//   bdd_bench --repeat 3           each build three times, the least time kept,
//                                  and the median of the rounds' ratios
//   bdd_bench adder 16             one family, one size (to profile it)

#include "bdd/bddpp.h"
#include "bdd/bddpp_memory.h"
#include "bench/bench_families.h"
#include "bench/median.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

// Processor time of this process: the machine may be shared, and the
// engines are compared on the work they do, not on what they wait for.
double now() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

// Fractions of the assignments that make the node's function true and
// false. Both are kept, so that a complement link swaps them instead of
// subtracting from 1, which would lose small counts.
struct fractions {
    double t, f;
};

fractions node_fractions(bdd_node* n, const bdd_node* one,
                         std::unordered_map<bdd_node*, fractions>& memo) {
    if (n == one) return {1.0, 0.0};
    auto it = memo.find(n);
    if (it != memo.end()) return it->second;
    fractions t = node_fractions(n->then_node, one, memo);
    fractions e = node_fractions(n->else_node, one, memo);
    if (n->else_link_type == -1) std::swap(e.t, e.f);
    fractions r{0.5 * t.t + 0.5 * e.t, 0.5 * t.f + 0.5 * e.f};
    memo[n] = r;
    return r;
}

double solutions(bddpp_manager& m, const bdd& f) {
    std::unordered_map<bdd_node*, fractions> memo;
    fractions p = node_fractions(f.node(), m.one, memo);
    double share = f.link_type() == -1 ? p.f : p.t;
    return std::ldexp(share, static_cast<int>(m.variables_number));
}

// The set-up, untimed: the comparison library makes its table of a
// million nodes and its operator cache before the build; tarn makes
// present as much room for its nodes, which its tables take too.
constexpr std::size_t set_up_nodes = 1000000;

// The package never collects by itself; a program that builds big
// functions collects when its table has grown well past what was alive
// after the last collection, as a self-collecting package would.
struct collector {
    std::size_t threshold = 1u << 17;
    void operator()(bddpp_manager& m) {
        if (m.map->size() < threshold) return;
        m.Bdd_gc();
        threshold = std::max<std::size_t>(threshold, 2 * m.map->size());
    }
};

void finish(bddpp_manager& m, double t0, const std::vector<bdd>& results,
            const bdd& counted, bench_result* r) {
    r->seconds = now() - t0;
    r->result_nodes = 0;
    for (const bdd& f : results) r->result_nodes += m.Bdd_size(f) - 1;
    r->live_nodes = static_cast<long>(m.map->size());
    r->solutions = solutions(m, counted);
}

void tarn_parity(int n, bool plain, bench_result* r) {
    bdd_reserve_nodes(set_up_nodes);
    bddpp_manager m;
    m.plain_operators = plain;
    std::vector<bdd> x;
    for (int i = 0; i < n; ++i) x.push_back(m.New_var_last("x" + std::to_string(i)));
    double t0 = now();
    collector gc;
    bdd f = x[0];
    for (int i = 1; i < n; ++i) {
        f = m.Bdd_xor(f, x[i]);
        gc(m);
    }
    finish(m, t0, {f}, f, r);
}

void tarn_adder(int n, bench_result* r) {
    bdd_reserve_nodes(set_up_nodes);
    bddpp_manager m;
    std::vector<bdd> a, b;
    for (int i = 0; i < n; ++i) a.push_back(m.New_var_last("a" + std::to_string(i)));
    for (int i = 0; i < n; ++i) b.push_back(m.New_var_last("b" + std::to_string(i)));
    double t0 = now();
    collector gc;
    bdd carry = m.Bdd_zero();
    std::vector<bdd> outputs;
    for (int i = 0; i < n; ++i) {
        bdd half = m.Bdd_xor(a[i], b[i]);
        outputs.push_back(m.Bdd_xor(half, carry));
        bdd both = m.Bdd_and(a[i], b[i]);
        bdd pass = m.Bdd_and(carry, half);
        carry = m.Bdd_or(both, pass);
        gc(m);
    }
    outputs.push_back(carry);
    finish(m, t0, outputs, carry, r);
}

void tarn_queens(int n, bench_result* r) {
    bdd_reserve_nodes(set_up_nodes);
    bddpp_manager m;
    std::vector<bdd> x;
    for (int i = 0; i < n * n; ++i) x.push_back(m.New_var_last("q" + std::to_string(i)));
    double t0 = now();
    collector gc;
    bdd queen = m.Bdd_one();
    for (int i = 0; i < n; ++i) {
        bdd row = m.Bdd_zero();
        for (int j = 0; j < n; ++j) row = m.Bdd_or(row, x[i * n + j]);
        queen = m.Bdd_and(queen, row);
    }
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            bdd free_of = m.Bdd_one();
            for (int k = 0; k < n; ++k)
                for (int l = 0; l < n; ++l) {
                    if (k == i && l == j) continue;
                    if (k == i || l == j || k - l == i - j || k + l == i + j)
                        free_of = m.Bdd_and(free_of, m.Bdd_not(x[k * n + l]));
                }
            bdd cell = m.Bdd_implication(x[i * n + j], free_of);
            queen = m.Bdd_and(queen, cell);
            gc(m);
        }
    }
    finish(m, t0, {queen}, queen, r);
}

struct run_report {
    bench_result result;
    long peak_kib;
    bool ok;
};

// Runs one build in a child process; its peak resident size is its own.
run_report run_isolated(const std::function<void(bench_result*)>& build) {
    run_report rep{};
    int fds[2];
    if (pipe(fds) != 0) return rep;
    std::fflush(stdout);
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        bench_result r{};
        build(&r);
        ssize_t w = write(fds[1], &r, sizeof r);
        _exit(w == static_cast<ssize_t>(sizeof r) ? 0 : 1);
    }
    close(fds[1]);
    ssize_t got = read(fds[0], &rep.result, sizeof rep.result);
    close(fds[0]);
    int status = 0;
    struct rusage usage {};
    wait4(pid, &status, 0, &usage);
    rep.ok = got == static_cast<ssize_t>(sizeof rep.result) && WIFEXITED(status) &&
             WEXITSTATUS(status) == 0;
    rep.peak_kib = usage.ru_maxrss;
    return rep;
}

// The ratios to the comparison builds are those of the best times; with
// more than one round, the median of the rounds' own ratios to the
// composed build follows.
void print_row(const char* family, int n, const char* engine, const run_report& rep,
               const run_report* reference, const run_report* composed, const std::vector<double>& round_ratios) {
    if (!rep.ok) {
        std::printf("%-8s %4d  %-7s  failed\n", family, n, engine);
        return;
    }
    std::printf("%-8s %4d  %-7s %10.4f %10ld %10ld %10ld %14.6g", family, n, engine,
                rep.result.seconds, rep.result.result_nodes, rep.result.live_nodes,
                rep.peak_kib, rep.result.solutions);
    for (const run_report* other : {reference, composed})
        if (other && other->ok && other->result.seconds > 0)
            std::printf("   x%.2f", rep.result.seconds / other->result.seconds);
        else if (other)
            std::printf("   %5s", "-");
    if (round_ratios.size() > 1) std::printf("   x%.2f", median_of(round_ratios));
    std::printf("\n");
}

struct family {
    const char* name;
    std::vector<int> sizes;
    std::function<void(int, bench_result*)> tarn;
    void (*buddy)(int, bench_result*);
};

// The comparison library's side, when it was found at configure time.
#ifdef TARN_HAVE_BUDDY
#define BUDDY(build) build
void set_buddy_decomposed(int on) { buddy_decomposed = on; }
#else
#define BUDDY(build) nullptr
void set_buddy_decomposed(int) {}
#endif

}  // namespace

// Keeps the faster of two runs of one build: the machine is shared, and
// a run is only ever slowed by it. A failed run stays failed.
void keep_best(run_report& best, const run_report& again, bool first) {
    if (first || (best.ok && (!again.ok || again.result.seconds < best.result.seconds))) best = again;
}

int main(int argc, char** argv) {
    bool quick = false;
    bool tarn_only = false; // for profiling the engine alone
    int repeat = 1;
    const char* only = nullptr;
    int only_size = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            quick = true;
        } else if (std::strcmp(argv[i], "--tarn-only") == 0) {
            tarn_only = true;
        } else if (std::strcmp(argv[i], "--repeat") == 0 && i + 1 < argc) {
            repeat = std::max(1, std::atoi(argv[++i]));
        } else if (only == nullptr && argv[i][0] != '-') {
            only = argv[i];
        } else if (only != nullptr && only_size == 0 && std::atoi(argv[i]) > 0) {
            only_size = std::atoi(argv[i]);
        } else {
            std::fprintf(stderr, "usage: bdd_bench [--quick] [--tarn-only] [--repeat K] [family [size]]\n");
            return 2;
        }
    }
    std::vector<family> families = {
        {"parity", quick ? std::vector<int>{200} : std::vector<int>{1000, 2000},
         [](int n, bench_result* r) { tarn_parity(n, false, r); }, BUDDY(buddy_parity)},
        {"adder", quick ? std::vector<int>{10} : std::vector<int>{14, 16, 18},
         [](int n, bench_result* r) { tarn_adder(n, r); }, BUDDY(buddy_adder)},
        {"queens", quick ? std::vector<int>{6} : std::vector<int>{8, 9, 10},
         [](int n, bench_result* r) { tarn_queens(n, r); }, BUDDY(buddy_queens)},
    };
    // Two comparison builds: the library with its own exclusive-or, and
    // the library made to compose it as tarn must (the fair comparison of
    // the two engines). The ratios are tarn's time over each.
    std::printf("%-8s %4s  %-7s %10s %10s %10s %10s %14s   %s\n", "family", "n", "engine",
                "seconds", "result", "live", "peak KiB", "solutions",
                "tarn vs buddy, vs buddy composed, median of rounds vs composed");
    bool found = only == nullptr;
    for (const family& f : families) {
        if (only != nullptr && std::strcmp(only, f.name) != 0) continue;
        found = true;
        std::vector<int> sizes = only_size > 0 ? std::vector<int>{only_size} : f.sizes;
        for (int n : sizes) {
            // The engines take turns, so that a slower minute of the
            // machine falls on all of them rather than on one.
            run_report ours{}, theirs{}, composed{};
            // Each round's own ratio to the composed build: a round lasts
            // seconds, the machine's slow and fast spells last minutes.
            std::vector<double> round_ratios;
            for (int i = 0; i < repeat; ++i) {
                run_report mine = run_isolated([&](bench_result* r) { f.tarn(n, r); });
                keep_best(ours, mine, i == 0);
                if (!f.buddy || tarn_only) continue;
                keep_best(theirs, run_isolated([&](bench_result* r) { f.buddy(n, r); }), i == 0);
                run_report fair = run_isolated([&](bench_result* r) {
                    set_buddy_decomposed(1);
                    f.buddy(n, r);
                });
                keep_best(composed, fair, i == 0);
                if (mine.ok && fair.ok && fair.result.seconds > 0)
                    round_ratios.push_back(mine.result.seconds / fair.result.seconds);
            }
            const bool compared = f.buddy && !tarn_only;
            print_row(f.name, n, "tarn", ours, compared ? &theirs : nullptr, compared ? &composed : nullptr,
                      round_ratios);
            if (compared) {
                print_row(f.name, n, "buddy", theirs, nullptr, nullptr, {});
                print_row(f.name, n, "bdy-cmp", composed, nullptr, nullptr, {});
            }
        }
    }
    if (!found) {
        std::fprintf(stderr, "bdd_bench: no family %s (parity, adder, queens)\n", only);
        return 2;
    }
    if (only != nullptr) return 0;
    // The plain recursion follows every path: parity doubles its work with
    // each variable.
    for (int n : quick ? std::vector<int>{12} : std::vector<int>{16, 18, 20}) {
        run_report plain = run_isolated([&](bench_result* r) { tarn_parity(n, true, r); });
        print_row("parity", n, "plain", plain, nullptr, nullptr, {});
    }
    return 0;
}
