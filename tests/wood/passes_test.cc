// The whole-wood passes against their plain forms (written out here step by
// step, or the literal passes of the wood, or one call at a time) on random
// woods, some with tables put out of step with the equations in every way
// the passes must mend: readers nobody has, missing readers, dependances
// that no longer describe the right member, declared readers of abstract
// equations, exp_ids that disagree with the slots. Both sides must make the
// same equations, the same BDD nodes in the same order, the same tables,
// dates, texts and reports. And the eliminating passes against an
// evaluator of the equations.

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "context/compilation.h"
#include "tests/bdd/bdd_test_util.h"
#include "tests/wood/wood_builder.h"
#include "wood/flat_graph.h"

namespace {

// Builds the same random wood, then spoils it unless `exact`, in any number
// of managers: every call is made in the same order on each side. With
// `acyclic`, an equation reads only variables of lower index, spoilt or
// not; only the reader tables may then show a cycle.
// With hubs, a larger wood where half the reads go to its first three
// variables, each then read by a score of equations or more.
void build_spoilt(WoodBuilder& b, unsigned seed, bool acyclic = false, bool exact = false, bool hubs = false)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](long n) { return (long)(rng() % (unsigned long)n); };
    const long n = hubs ? 60 + pick(40) : 6 + pick(24);
    for (long k = 0; k < n; ++k)
        b.var("v" + std::to_string(k));
    bddpp_manager* m = b.m();
    const int types[] = {0, 0, int(Compilation::SOUTPUT), int(Compilation::SREG)};
    for (long k = 0; k < n; ++k) {
        long shape = pick(12);
        if (shape < 2 || (acyclic && k == 0))
            continue; // an input
        auto read = [&]() {
            if (hubs && k > 3 && pick(2) == 0)
                return pick(3);
            return acyclic ? pick(k) : pick(n);
        };
        bdd self = m->Bdd_var_by_index(k);
        if (shape == 2) {
            IndexSet deps{read()}, readers{pick(n), pick(n)};
            new Bddexpression(m->Id_var_by_bdd(self), b.wood.get(), &readers, &deps, "f", 0, 0);
            continue;
        }
        bdd f = shape == 3 ? (pick(2) ? m->Bdd_one() : m->Bdd_zero()) : m->Bdd_var_by_index(read());
        for (long t = shape < 6 ? 0 : 1 + pick(3); t > 0; --t) {
            bdd g = m->Bdd_var_by_index(read());
            if (pick(3) == 0)
                g = m->Bdd_not(g);
            f = pick(2) ? m->Bdd_and(f, g) : m->Bdd_or(f, g);
        }
        new Bddexpression("v" + std::to_string(k), b.wood.get(), self, f, pick(3), 0, types[pick(4)]);
    }
    Bddexpressionwood& w = *b.wood;
    if (exact)
        return;
    for (long k = 0; k < n; ++k) {
        switch (pick(9)) {
        case 0: // a reader that does not read
            w.amont_table[k].insert(pick(n));
            break;
        case 1: // a reader lost
            w.amont_table[k].clear();
            break;
        case 2: // a right member changed behind the tables' back
            if (Bddexpression* e = w.exp_table[k]; e != nullptr && e->abstraction == 0 && (!acyclic || k > 0))
                e->bdd_exp = m->Bdd_and(e->bdd_exp, m->Bdd_var_by_index(acyclic ? pick(k) : pick(n)));
            break;
        case 3: // a stale dependance
            if (Bddexpression* e = w.exp_table[k]; e != nullptr && (!acyclic || k > 0))
                e->dependances.insert(acyclic ? pick(k) : pick(n));
            break;
        case 4: // a slot that exp_ids does not list
            w.exp_ids.erase(k);
            break;
        case 5: // made abstract, its right member kept and grown unseen
            if (Bddexpression* e = w.exp_table[k]; e != nullptr && e->abstraction == 0 && k > 0) {
                e->bdd_exp = m->Bdd_or(e->bdd_exp, m->Bdd_var_by_index(pick(k)));
                e->setExpDef("g");
            }
            break;
        default:
            break;
        }
    }
    if (pick(3) == 0)
        w.exp_ids.insert(n + 5); // listed, past the tables
}

// A few equations made abstract while keeping a right member that reads one
// more variable than their declared dependances; the reader tables are then
// rebuilt, so that they are exact for the passes.
long hide_abstract_members(WoodBuilder& b, unsigned seed)
{
    std::mt19937 rng(seed * 104729);
    Bddexpressionwood& w = *b.wood;
    long made = 0;
    for (long k = 1; k < w.nb_bdd_vars; ++k)
        if (Bddexpression* e = w.exp_table[k]; e != nullptr && e->abstraction == 0 && rng() % 4 == 0) {
            e->bdd_exp = b.m()->Bdd_or(e->bdd_exp, b.m()->Bdd_var_by_index(long(rng() % k)));
            e->setExpDef("g");
            ++made;
        }
    w.internal_global_build_dependances();
    return made;
}

// The tables and the texts.
std::string state_and_texts(WoodBuilder& b)
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

// The reader tables rebuilt as first written: all emptied, then every
// filled slot, ascending, rebuilds its dependances unless abstract and
// enters itself as a reader of each.
void rebuild_literal(Bddexpressionwood& w)
{
    for (long i = 0; i < w.nb_bdd_vars; ++i)
        w.amont_table[i].clear();
    for (long i = 0; i < w.nb_bdd_vars; ++i) {
        Bddexpression* e = w.exp_table[i];
        if (e == nullptr)
            continue;
        if (e->abstraction == 0)
            e->internal_build_dependances();
        for (long d : e->dependances)
            if (d >= 0 && d < w.nb_bdd_vars)
                w.amont_table[d].insert(i);
    }
}

// The restriction of every equation by a cube, as first written, and the
// sweeping propagation behind it.
void restrict_literal(Bddexpressionwood& w, const bdd& cube, std::list<int>& keep)
{
    for (long i : w.exp_ids) {
        Bddexpression* e = (i >= 0 && i < w.nb_bdd_vars) ? w.exp_table[i] : nullptr;
        if (e == nullptr || !Bddexpressionwood::bdd_initialised(e->bdd_exp))
            continue;
        IndexSet before = e->set_of_index_used_variables();
        e->bdd_exp = w.bdd_manager->Bdd_reduce(e->bdd_exp, cube);
        e->build_normal_dependances();
        IndexSet after = e->set_of_index_used_variables();
        for (long v : set_priv(after, before))
            w.amont_table[v].insert(i);
        for (long v : set_priv(before, after))
            w.amont_table[v].erase(i);
    }
    w.constants_propagation_literal(keep);
}

// One local eliminated as first written: in each round, one per
// dependance, every reader takes the right member in and trades the local
// for that dependance, all of them; a sweeping propagation follows.
void suppress_local_literal(Bddexpressionwood& w, long i)
{
    if (i < 0 || i >= w.nb_bdd_vars)
        return;
    Bddexpression* e = w.exp_table[i];
    if (e == nullptr || w.amont_table[i].empty() || e->dependances.empty())
        return;
    if (w.amont_table[i].count(i) != 0 || e->dependances.count(i) != 0) {
        w.report_self_dependance(i);
        return;
    }
    const IndexSet deps = e->dependances;
    for (long d : deps) {
        w.amont_table[d].erase(i);
        IndexSet orphans;
        const IndexSet readers = w.amont_table[i];
        for (long s : readers) {
            Bddexpression* r = (s >= 0 && s < w.nb_bdd_vars) ? w.exp_table[s] : nullptr;
            if (r == nullptr) {
                orphans.insert(s);
                continue;
            }
            if (Bddexpressionwood::bdd_initialised(r->bdd_exp) && Bddexpressionwood::bdd_initialised(e->bdd_exp))
                r->bdd_exp = w.bdd_manager->Bdd_compose(r->bdd_exp, e->bdd_var, e->bdd_exp);
            r->dependances.erase(i);
            r->dependances.insert(d);
        }
        if (!readers.empty()) {
            w.amont_table[d].insert(i);
            w.amont_table[d].insert(readers.begin(), readers.end());
        }
        for (long s : orphans)
            w.amont_table[i].erase(s);
    }
    delete e;
    w.exp_table[i] = nullptr;
    w.amont_table[i].clear();
    w.exp_ids.erase(i);
    std::list<int> none;
    w.constants_propagation_literal(none);
}

// Values of every variable of an acyclic wood (equations read lower
// indexes) where the free variables (inputs, abstract equations and
// `forced`) take the bits of `inputs`.
std::vector<bool> evaluate(WoodBuilder& b, unsigned long long inputs, long forced = -1)
{
    Bddexpressionwood& w = *b.wood;
    std::vector<bool> value(w.nb_bdd_vars);
    for (long i = 0; i < w.nb_bdd_vars; ++i) {
        const Bddexpression* e = w.exp_table[i];
        if (e == nullptr || e->abstraction != 0 || i == forced)
            value[i] = (inputs >> (i % 64)) & 1;
        else
            value[i] = eval_bdd(*b.m(), e->bdd_exp, [&](long j) { return bool(value[j]); });
    }
    return value;
}

} // namespace

// The restriction alone against its literal rewrite, on spoilt woods; a run
// of restrictions against separate calls. A run started exact by the wire
// pass skips the whole-wood restriction of its first call; a run started
// without it makes the tables exact in its first call. The woods of a run:
// through the wire pass, whose new dates are checked against the walks
// (reading downwards only: on a cycle the walks may dissolve equations, or
// end the process on one that reads itself), or exact with abstract
// equations hiding a member.
TEST(WholeWoodPasses, RestrictionMatchesTheLiteralRewriteAloneOrInARun)
{
    long exact = 0, changed = 0, hidden = 0, redated = 0;
    for (unsigned seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const bool wires = seed % 3 == 1, spoilt = seed % 3 == 2;
        WoodBuilder slow, fast;
        build_spoilt(slow, seed, wires, seed % 3 == 0);
        build_spoilt(fast, seed, wires, seed % 3 == 0);
        if (seed % 3 == 0) {
            hidden += hide_abstract_members(slow, seed) > 0 ? 1 : 0;
            hide_abstract_members(fast, seed);
        }
        // Spoilt woods may list ids past the tables, which no text prints.
        auto snap = [&](WoodBuilder& w) { return seed % 3 != 0 ? tables_state(w) : state_and_texts(w); };
        Bddexpressionwood::ReductionRun run;
        if (wires) {
            std::list<int> kinds{int(Compilation::SOUTPUT), int(Compilation::SREG)};
            std::string slow_err = stderr_of([&] { slow.wood->suppress_wires(kinds); });
            ASSERT_EQ(slow_err, stderr_of([&] { fast.wood->suppress_wires(kinds, run); }));
            exact += run.exact ? 1 : 0;
            // Without a cycle the new dates come from one memoised pass; they
            // must be those of the walks from each equation.
            Bddexpressionwood& w = *slow.wood;
            for (long i = 0; i < w.nb_bdd_vars; ++i)
                if (const Bddexpression* e = w.exp_table[i]) {
                    ASSERT_EQ(e->early_date, w.up_critical_path_literal(i, 1, 1)) << i;
                    ASSERT_EQ(w.late_dates[i], w.down_critical_path_literal(i, 1, 0)) << i;
                    redated += e->early_date > 1 ? 1 : 0;
                }
        }
        std::string start = snap(slow);
        ASSERT_EQ(start, snap(fast));

        std::mt19937 rng(seed * 7927);
        long n = slow.wood->nb_bdd_vars;
        for (int step = 0; step < (spoilt ? 1 : 5); ++step) {
            // The kinds kept may change from one call to the next: a constant
            // kept by the first call leaves the wood in a later one.
            std::list<int> keep;
            if ((seed + step) % 2 == 0 || (step == 0 && !spoilt))
                keep = {int(Compilation::SOUTPUT), int(Compilation::SREG)};
            // One literal mostly, sometimes a cube of two; alone, sometimes
            // no cube at all.
            long a = long(rng() % n), b = long(rng() % n);
            bool neg_a = rng() % 2, neg_b = rng() % 2, two = rng() % 4 == 0 && b != a;
            bool no_cube = spoilt && rng() % 4 == 0;
            auto cube = [&](WoodBuilder& w) {
                bdd c = w.m()->Bdd_var_by_index(a), d = w.m()->Bdd_var_by_index(b);
                if (no_cube)
                    return w.m()->Bdd_or(c, d);
                c = neg_a ? w.m()->Bdd_not(c) : c;
                return two ? w.m()->Bdd_and(c, neg_b ? w.m()->Bdd_not(d) : d) : c;
            };
            std::string slow_err = stderr_of([&] {
                if (spoilt)
                    restrict_literal(*slow.wood, cube(slow), keep);
                else
                    slow.wood->reduce_expressions(cube(slow), keep);
            });
            ASSERT_EQ(slow_err, stderr_of([&] { fast.wood->reduce_expressions(cube(fast), keep, run); }))
                << "step " << step;
            std::string restricted = snap(slow);
            ASSERT_EQ(restricted, snap(fast)) << "step " << step;
            if (spoilt) {
                // The wire and local passes drop the prune that used to
                // follow the propagation: it must be a no-op there.
                fast.wood->prune_readers();
                ASSERT_EQ(restricted, tables_state(fast));
            }
        }
        changed += snap(slow) != start ? 1 : 0;
    }
    EXPECT_EQ(exact, 200);
    EXPECT_GT(redated, 1000);
    EXPECT_GT(changed, 550);
    EXPECT_GT(hidden, 100);
}

// The reader rebuild against its literal form, on tables spoilt and with
// dependances past both ends; the redating after wire suppression takes the
// rows that the rebuild leaves instead of reading the sets again: they must
// be those rows. The used variables are the union of every equation's, with
// a report for each listed id without its equation; the sorts by date are
// those of the level scans, with dates below 0, past the levels, shared by
// many equations, and levels few and, past twice the variables, many.
TEST(WholeWoodPasses, RebuildUsedVariablesAndSortsMatchTheirPlainForms)
{
    long mended = 0, reported = 0, acyclic = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        WoodBuilder slow, fast;
        for (WoodBuilder* b : {&slow, &fast}) {
            build_spoilt(*b, seed, seed % 2 == 1);
            if (Bddexpression* e = b->wood->exp_table[0]; seed % 4 == 0 && e != nullptr)
                e->dependances.insert({-7, b->wood->nb_bdd_vars + 3});
        }
        Bddexpressionwood& w = *fast.wood;
        IndexSet expected;
        std::ostringstream reports;
        for (long id : w.exp_ids) {
            const Bddexpression* e = id >= 0 && id < w.nb_bdd_vars ? w.exp_table[id] : nullptr;
            if (e == nullptr) {
                reports << "internal error in Bddexpressionwood::Set_of_index_used_variables(): "
                           "expression not found!!!   about id:"
                        << id << "\n";
                continue;
            }
            IndexSet used = e->set_of_index_used_variables();
            expected.insert(used.begin(), used.end());
        }
        EXPECT_EQ(captured([&] { EXPECT_EQ(w.Set_of_index_used_variables(), expected); }), reports.str());
        reported += reports.str().empty() ? 0 : 1;

        std::string spoilt = tables_state(slow);
        ASSERT_EQ(spoilt, tables_state(fast));
        rebuild_literal(*slow.wood);
        wood_rows::FlatGraph kept, read;
        wood_rows::rebuild_reader_tables(w, kept);
        ASSERT_EQ(tables_state(slow), tables_state(fast));
        mended += tables_state(slow) != spoilt ? 1 : 0;
        ASSERT_TRUE(read.build(w) && kept.valid && read.readers_in_range);
        auto rows = [](const wood_rows::FlatGraph& g) {
            return std::make_tuple(g.n, g.deps_start, g.deps, g.readers_start, g.readers, g.read, g.filled);
        };
        EXPECT_TRUE(rows(kept) == rows(read));
        std::vector<long> up1, down1, up2, down2;
        bool memo = wood_rows::memo_critical_paths(w, kept, 1, up1, down1);
        ASSERT_EQ(memo, w.memo_critical_paths(1, up2, down2));
        EXPECT_EQ(up1, up2);
        EXPECT_EQ(down1, down2);
        acyclic += memo ? 1 : 0;
        // Exact tables: the check finds nothing, a second rebuild neither.
        EXPECT_EQ(captured([&] { w.coherence_dependances_check(std::cerr); }), "");
        std::string once = tables_state(fast);
        w.internal_global_build_dependances();
        ASSERT_EQ(once, tables_state(fast));

        std::mt19937 rng(seed * 613);
        long n = w.nb_bdd_vars;
        long levels = seed % 2 == 0 ? long(rng() % 6) : 2 * n + 60 + long(rng() % 10);
        for (long i = 0; i < n; ++i) {
            long spread = levels + 3;
            if (w.exp_table[i] != nullptr)
                w.exp_table[i]->early_date = long(rng() % spread) - 1;
            w.late_dates[i] = long(rng() % spread) - 1;
        }
        w.update_nb_level(levels);
        ASSERT_EQ(w.earliest_sort(), w.earliest_sort_literal());
        ASSERT_EQ(w.latest_sort(), w.latest_sort_literal());
    }
    EXPECT_GT(mended, 250);
    EXPECT_GT(reported, 50);
    EXPECT_GT(acyclic, 20);
    EXPECT_LT(acyclic, 280);
}

// The production elimination (the whole list at once, remembered
// positions, readers left out once a substitution returns them unchanged,
// dependances left to the repair, the fast operators) against the literal
// elimination of each variable in turn, or one suppress_local per
// variable, with the plain operators, on woods that start with exact
// tables or as built, or at the end of a run of restrictions, whose exact
// tables the list takes over from its first elimination on.
TEST(WholeWoodPasses, SuppressLocalListMatchesPlainOneByOne)
{
    long eliminated = 0, reports = 0, runs = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        WoodBuilder slow, fast;
        slow.m()->plain_operators = true;
        const bool hubs = seed % 10 == 7;
        build_spoilt(slow, seed, seed % 4 == 1, seed % 5 != 0, hubs);
        build_spoilt(fast, seed, seed % 4 == 1, seed % 5 != 0, hubs);
        if (seed % 3 == 1) {
            hide_abstract_members(slow, seed);
            hide_abstract_members(fast, seed);
        }
        if (seed % 2 == 0) {
            slow.wood->constants_propagation();
            fast.wood->constants_propagation();
        }
        const bool from_run = seed % 4 == 3;
        Bddexpressionwood::ReductionRun run;
        if (from_run) {
            // Two literals: the first call of the run makes the tables
            // exact over the whole wood, the second repairs them.
            std::list<int> keep{int(Compilation::SOUTPUT)};
            long n = slow.wood->nb_bdd_vars;
            for (long v : {long(seed % n), long(seed * 7 % n)}) {
                auto literal = [v, seed](WoodBuilder& w) {
                    bdd x = w.m()->Bdd_var_by_index(v);
                    return seed % 8 == 3 ? w.m()->Bdd_not(x) : x;
                };
                std::string slow_err = stderr_of([&] { slow.wood->reduce_expressions(literal(slow), keep); });
                ASSERT_EQ(slow_err, stderr_of([&] { fast.wood->reduce_expressions(literal(fast), keep, run); }));
            }
            ASSERT_TRUE(run.exact);
            ASSERT_EQ(state_and_texts(slow), state_and_texts(fast));
            ++runs;
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
                if (seed % 3 == 2)
                    slow.wood->suppress_local(v);
                else
                    suppress_local_literal(*slow.wood, v);
        });
        std::string fast_err = stderr_of([&] {
            if (from_run)
                fast.wood->suppress_local(vars, run);
            else
                fast.wood->suppress_local(vars);
        });
        ASSERT_EQ(slow_err, fast_err);
        ASSERT_EQ(state_and_texts(slow), state_and_texts(fast));
        EXPECT_FALSE(run.exact); // the list closes the run
        reports += slow_err.empty() ? 0 : 1;
        eliminated += before - slow.wood->exp_number();
    }
    // The woods did exercise the passes: equations went, reports came.
    EXPECT_GT(eliminated, 1000);
    EXPECT_GT(reports, 10);
    EXPECT_EQ(runs, 75);
}

// The passes that take equations out (wires, constants, locals, restriction
// by a literal, isolated equations) against an evaluator: on random acyclic
// woods, every equation left has the value it had before under random
// inputs (under the restriction's literal for the restriction), the tables
// are those that a rebuild makes. What stays: unread equations; for the
// wires, what an abstract equation reads or is of a kept type, constants
// aside; for the constants, what is of a kept type. What goes: the
// constants read, unless of a kept type, and the isolated equations not
// listed; nobody reads a local asked for any more.
TEST(WholeWoodPasses, PassesKeepTheValuesOfTheEvaluator)
{
    const std::list<int> keeps[] = {{}, {int(Compilation::SOUTPUT)}, {int(Compilation::SOUTPUT), int(Compilation::SREG)}};
    long removed = 0;
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        WoodBuilder b;
        build_spoilt(b, seed, true, true);
        Bddexpressionwood& w = *b.wood;
        w.internal_global_build_dependances(); // drops the declared readers
        const long n = w.nb_bdd_vars;
        std::mt19937_64 rng(seed * 4049);
        std::list<int> keep = keeps[seed % 3];
        const int pass = seed % 5;
        const long literal = long(rng() % n);
        const bool positive = rng() % 2;
        std::list<long> locals;
        std::vector<bool> had(n), kept(n), listed(n), local(n), unread(n), read_constant(n), abstract_reader(n), isolated(n);
        for (long i = 0; i < n; ++i) {
            const Bddexpression* e = w.exp_table[i];
            had[i] = e != nullptr;
            unread[i] = had[i] && w.amont_table[i].empty();
            read_constant[i] = had[i] && !unread[i] && e->abstraction == 0 && Bddexpressionwood::bdd_constant_value(e->bdd_exp) >= 0;
            for (long r : w.amont_table[i])
                abstract_reader[i] = abstract_reader[i] || (w.exp_table[r] != nullptr && w.exp_table[r]->abstraction != 0);
            kept[i] = e != nullptr && std::find(keep.begin(), keep.end(), e->user_type) != keep.end();
            isolated[i] = unread[i] && e->dependances.empty();
            if ((listed[i] = rng() % 3 == 0)) {
                locals.push_back(i);
                local[i] = e != nullptr && e->abstraction == 0 && !w.amont_table[i].empty() && !e->dependances.empty();
            }
        }
        std::vector<unsigned long long> inputs;
        std::vector<std::vector<bool>> before;
        for (int k = 0; k < 16; ++k) {
            unsigned long long in = rng();
            if (pass == 3)
                in = positive ? in | (1ull << literal % 64) : in & ~(1ull << literal % 64);
            inputs.push_back(in);
            before.push_back(evaluate(b, in, pass == 3 ? literal : -1));
        }
        std::string err = stderr_of([&] {
            if (pass == 0)
                w.suppress_wires(keep);
            else if (pass == 1)
                w.constants_propagation(keep);
            else if (pass == 2)
                w.suppress_local(locals);
            else if (pass == 4)
                w.clean(locals); // kept if listed
            else if (pass == 3)
                w.reduce_expressions(positive ? b.m()->Bdd_var_by_index(literal)
                                              : b.m()->Bdd_not(b.m()->Bdd_var_by_index(literal)),
                                     keep);
        });
        EXPECT_EQ(err, "");
        for (int k = 0; k < 16; ++k) {
            std::vector<bool> after = evaluate(b, inputs[k]);
            for (long i = 0; i < n; ++i)
                if (w.exp_table[i] != nullptr && w.exp_table[i]->abstraction == 0 && i != literal) {
                    ASSERT_EQ(after[i], before[k][i]) << "pass " << pass << " variable " << i;
                }
        }
        for (long i = 0; i < n; ++i) {
            removed += had[i] && w.exp_table[i] == nullptr ? 1 : 0;
            bool constant = true; // as far as the samples tell
            for (int k = 1; k < 16; ++k) constant = constant && before[k][i] == before[0][i];
            if (pass == 4) {
                EXPECT_EQ(w.exp_table[i] == nullptr, !had[i] || (isolated[i] && !listed[i])) << "clean " << i;
            } else if (had[i] && (unread[i] || (pass == 0 && !constant && (abstract_reader[i] || kept[i])) || (pass == 1 && kept[i]))) {
                EXPECT_NE(w.exp_table[i], nullptr) << "pass " << pass << " took " << i;
            }
            if ((pass == 0 || (pass == 1 && !kept[i])) && read_constant[i]) {
                EXPECT_EQ(w.exp_table[i], nullptr) << "pass " << pass << " left the read constant " << i;
            }
            if (pass == 2 && local[i] && w.exp_table[i] != nullptr) {
                EXPECT_TRUE(w.amont_table[i].empty()) << "local left read " << i;
            }
        }
        std::string state = tables_state(b);
        w.internal_global_build_dependances();
        ASSERT_EQ(state, tables_state(b));
    }
    EXPECT_GT(removed, 1000);
}
