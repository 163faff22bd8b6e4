// The fast passes against the literal ones on random woods: the same
// equations, the same BDD nodes in the same order (global ids), the same
// tables and dates, the same texts and the same reports.

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "context/compilation.h"
#include "tests/wood2/wood_builder.h"

namespace {

// Builds the same random wood in any number of managers: every call into
// a manager is made in the same order, so node ids agree.
// With `acyclic`, an equation reads only variables of lower index.
void build_random(WoodBuilder& b, unsigned seed, bool acyclic = false)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](long n) { return (long)(rng() % (unsigned long)n); };
    long n = 8 + pick(20);
    long k = 0;
    auto read = [&]() { return acyclic ? (k == 0 ? -1 : pick(k)) : pick(n); };
    for (long k = 0; k < n; ++k)
        b.var("v" + std::to_string(k));
    const int types[] = {0, 0, 0, int(Compilation::SOUTPUT), int(Compilation::VWIRE), int(Compilation::SREG)};
    for (k = 0; k < n; ++k) {
        if (pick(10) < 3)
            continue; // an input
        bdd self = b.m()->Bdd_var_by_index(k);
        int type = types[pick(6)];
        long shape = pick(20);
        if (acyclic && k == 0)
            shape = 1;
        if (shape == 0) {
            IndexSet deps{read()};
            new Bddexpression(b.m()->Id_var_by_bdd(self), b.wood.get(), deps, "f", 0, 0);
            continue;
        }
        bdd f;
        if (shape <= 2) {
            f = pick(2) ? b.m()->Bdd_one() : b.m()->Bdd_zero();
        } else if (shape <= 7) {
            long other = read();
            if (other == k && pick(4) != 0)
                other = (k + 1) % n; // self-reading equations stay rare
            f = b.m()->Bdd_var_by_index(other);
            if (pick(2))
                f = b.m()->Bdd_not(f);
        } else {
            f = b.m()->Bdd_var_by_index(read());
            for (long t = 1 + pick(3); t > 0; --t) {
                long other = read();
                if (other == k)
                    continue;
                bdd g = b.m()->Bdd_var_by_index(other);
                if (pick(3) == 0)
                    g = b.m()->Bdd_not(g);
                f = pick(2) ? b.m()->Bdd_and(f, g) : b.m()->Bdd_or(f, g);
            }
        }
        new Bddexpression("v" + std::to_string(k), b.wood.get(), self, f, pick(3), 0, type);
    }
}

// Everything a pass may change, in text: the tables and the texts.
std::string state(WoodBuilder& b)
{
    Bddexpressionwood& w = *b.wood;
    std::ostringstream out;
    out << tables_state(b);
    std::vector<long> table(w.nb_bdd_vars);
    for (long i = 0; i < w.nb_bdd_vars; ++i)
        table[i] = (i % 5 == 4) ? -1 : i;
    // Abstract equations have no root to number: the node list warns.
    testing::internal::CaptureStderr();
    w.Put_zkc(out, table.data(), 1);
    out << w;
    out << testing::internal::GetCapturedStderr();
    return without_addresses(out.str());
}

} // namespace

// The production elimination (the whole list at once, remembered
// positions, readers left out once a substitution returns them unchanged,
// the fast operators) against one suppress_local per variable with the
// plain operators, on woods that start with exact tables or as built.
TEST(Differential, SuppressLocalListMatchesPlainOneByOne)
{
    long eliminated = 0, reports = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        WoodBuilder slow, fast;
        slow.m()->plain_operators = true;
        build_random(slow, seed, seed % 4 == 1);
        build_random(fast, seed, seed % 4 == 1);
        if (seed % 2 == 0) {
            slow.wood->constants_propagation();
            fast.wood->constants_propagation();
        }
        std::mt19937 rng(seed * 7919);
        std::list<long> vars;
        for (long i = 0; i < slow.wood->nb_bdd_vars; ++i)
            if (rng() % 4 != 0)
                vars.push_back(i);
        if (seed % 3 == 0)
            vars.reverse();
        long before = slow.wood->exp_number();
        std::string slow_err = stderr_of([&] {
            for (long v : vars)
                slow.wood->suppress_local(v);
        });
        std::string fast_err = stderr_of([&] { fast.wood->suppress_local(vars); });
        ASSERT_EQ(slow_err, fast_err) << "seed " << seed;
        ASSERT_EQ(state(slow), state(fast)) << "seed " << seed;
        reports += slow_err.empty() ? 0 : 1;
        eliminated += before - slow.wood->exp_number();
    }
    // The woods did exercise the passes: equations went, reports came.
    EXPECT_GT(eliminated, 1000);
    EXPECT_GT(reports, 10);
}

TEST(Differential, RestrictionRunMatchesSeparateCalls)
{
    long changed = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        WoodBuilder slow, fast;
        build_random(slow, seed);
        build_random(fast, seed);
        // Printing creates nodes: both sides print at the same points.
        std::string start = state(slow);
        ASSERT_EQ(start, state(fast));
        std::mt19937 rng(seed * 104729);
        std::list<int> keep;
        if (seed % 2 == 0)
            keep = {int(Compilation::SOUTPUT), int(Compilation::SREG)};
        Bddexpressionwood::ReductionRun run;
        long n = slow.wood->nb_bdd_vars;
        for (int step = 0; step < 6; ++step) {
            // One literal mostly, sometimes a cube of two.
            long a = long(rng() % n), b = long(rng() % n);
            bool neg_a = rng() % 2, neg_b = rng() % 2, two = rng() % 4 == 0 && b != a;
            auto cube = [&](WoodBuilder& w) {
                bdd c = w.m()->Bdd_var_by_index(a), d = w.m()->Bdd_var_by_index(b);
                c = neg_a ? w.m()->Bdd_not(c) : c;
                return two ? w.m()->Bdd_and(c, neg_b ? w.m()->Bdd_not(d) : d) : c;
            };
            std::string slow_err = stderr_of([&] { slow.wood->reduce_expressions(cube(slow), keep); });
            std::string fast_err = stderr_of([&] { fast.wood->reduce_expressions(cube(fast), keep, run); });
            ASSERT_EQ(slow_err, fast_err) << "seed " << seed << " step " << step;
            ASSERT_EQ(state(slow), state(fast)) << "seed " << seed << " step " << step;
        }
        changed += state(slow) != start ? 1 : 0;
    }
    EXPECT_GT(changed, 200);
}

TEST(Differential, WireRedatingMatchesTheCriticalPathWalks)
{
    // Without a cycle the new dates come from one memoised pass; they must
    // be those of the walks from each equation.
    long redated = 0;
    for (unsigned seed = 1; seed <= 200; ++seed) {
        WoodBuilder b;
        build_random(b, seed, true);
        std::list<int> keep{int(Compilation::SOUTPUT)};
        b.wood->suppress_wires(keep);
        Bddexpressionwood& w = *b.wood;
        for (long i = 0; i < w.nb_bdd_vars; ++i) {
            Bddexpression* e = w.exp_table[i];
            if (e == nullptr)
                continue;
            ASSERT_EQ(e->early_date, w.up_critical_path_literal(i, 1, 1)) << seed << " " << i;
            ASSERT_EQ(w.late_dates[i], w.down_critical_path_literal(i, 1, 0)) << seed << " " << i;
            redated += e->early_date > 1 ? 1 : 0;
        }
    }
    EXPECT_GT(redated, 200);
}
