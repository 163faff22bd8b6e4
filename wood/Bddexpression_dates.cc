// Dates and critical paths.
//
// The literal passes are the propagations as first written: raise a date
// and push it on, sweeping the variables in ascending index order; a cycle
// is ended only by the limits tied to the number of variables. They run on
// explicit stacks, frame for frame in the order the recursion would take,
// so that a long chain cannot overflow the call stack.
//
// The fast passes compute the same numbers by longest paths over a
// topological order. That is exact as long as the graph has no cycle and
// no limit would have acted; when either may happen they hand over to the
// literal passes, whose results on a cycle depend on the sweep order.

#include "wood/Bddexpression.h"
#include "context/compilation.h"
#include "wood/flat_graph.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <limits>
#include <unordered_map>

// The date after `date`. Dates come from files and may sit at the top of
// a long: there the next one wraps round to the bottom, as two's
// complement arithmetic does, without leaving the defined range.
static long later(long date)
{
    return date == std::numeric_limits<long>::max() ? std::numeric_limits<long>::min() : date + 1;
}

namespace wood_rows {

bool FlatGraph::build(const Bddexpressionwood& wood)
{
    valid = false;
    readers_turn_deps = false;
    n = wood.nb_bdd_vars > 0 ? wood.nb_bdd_vars : 0;
    if (n >= (long)std::numeric_limits<Slot>::max()) return false;
    deps_start.assign(n + 1, 0);
    readers_start.assign(n + 1, 0);
    read.assign(n, 0);
    deps.clear();
    readers.clear();
    deps.reserve(2 * n);
    readers.reserve(2 * n);
    readers_in_range = true;
    filled.assign(n, 0);
    for (long v = 0; v < n; v++) filled[v] = wood.exp_table[v] != nullptr ? 1 : 0;
    for (long v = 0; v < n; v++) {
        const IndexSet& amont = wood.amont_table[v];
        read[v] = amont.empty() ? 0 : 1;
        for (long s : amont) {
            if (s < 0 || s >= n) {
                readers_in_range = false;
                continue;
            }
            if (filled[s]) readers.push_back((Slot)s);
        }
        if (const Bddexpression* e = wood.exp_table[v])
            for (long d : e->dependances)
                if (d >= 0 && d < n) deps.push_back((Slot)d);
        if (deps.size() >= std::numeric_limits<Slot>::max() ||
            readers.size() >= std::numeric_limits<Slot>::max())
            return false;
        deps_start[v + 1] = (Slot)deps.size();
        readers_start[v + 1] = (Slot)readers.size();
    }
    valid = true;
    return true;
}

namespace {

using Slot = FlatGraph::Slot;

// Whether the readers' rows are the dependances' rows turned round, as
// vectors: every reader s of v reads v, each row of readers ascends
// strictly, and there are as many readers as dependances (a dependance
// listed twice then fails the count).
bool readers_are_deps_turned(const FlatGraph& g)
{
    if (g.readers_turn_deps) return true;
    if (g.readers.size() != g.deps.size()) return false;
    for (long v = 0; v < g.n; v++) {
        long previous = -1;
        for (Slot k = g.readers_start[v]; k < g.readers_start[v + 1]; k++) {
            const Slot s = g.readers[k];
            if ((long)s <= previous) return false;
            previous = s;
            const Slot* first = g.deps.data() + g.deps_start[s];
            const Slot* last = g.deps.data() + g.deps_start[s + 1];
            if (std::find(first, last, (Slot)v) == last) return false;
        }
    }
    return true;
}

// Kahn's order over both kinds of edge, for rows whose readers are not
// the dependances turned round.
bool order_by_indegree(const FlatGraph& g, std::vector<Slot>& order)
{
    const long n = g.n;
    // The equations that read each variable: the dependances turned round.
    std::vector<Slot> users_start(n + 1, 0), users(g.deps.size()), indegree(n, 0);
    for (Slot d : g.deps) users_start[d + 1]++;
    for (long v = 0; v < n; v++) users_start[v + 1] += users_start[v];
    {
        std::vector<Slot> fill(users_start.begin(), users_start.end() - 1);
        for (long i = 0; i < n; i++) {
            indegree[i] += g.deps_start[i + 1] - g.deps_start[i];
            for (Slot k = g.deps_start[i]; k < g.deps_start[i + 1]; k++) users[fill[g.deps[k]]++] = (Slot)i;
        }
    }
    for (Slot s : g.readers) indegree[s]++;
    order.reserve(n);
    for (long v = 0; v < n; v++)
        if (indegree[v] == 0) order.push_back((Slot)v);
    for (std::size_t k = 0; k < order.size(); k++) {
        Slot v = order[k];
        for (Slot e = g.readers_start[v]; e < g.readers_start[v + 1]; e++)
            if (--indegree[g.readers[e]] == 0) order.push_back(g.readers[e]);
        for (Slot e = users_start[v]; e < users_start[v + 1]; e++)
            if (--indegree[users[e]] == 0) order.push_back(users[e]);
    }
    return (long)order.size() == n;
}

// With readers that are the dependances turned round, the edges are the
// dependances alone: each variable in ascending order, after what it reads
// (depth first, on an explicit stack). Most equations read variables made
// before them, so the order stays close to the slots' own and the passes
// that follow it walk their arrays nearly in sequence.
bool order_by_depth(const FlatGraph& g, std::vector<Slot>& order)
{
    const long n = g.n;
    enum : char { unseen, open, done };
    std::vector<char> state(n, unseen);
    std::vector<std::pair<Slot, Slot>> stack; // slot, next dependance to take
    order.reserve(n);
    for (long root = 0; root < n; root++) {
        if (state[root] != unseen) continue;
        state[root] = open;
        stack.push_back({(Slot)root, g.deps_start[root]});
        while (!stack.empty()) {
            auto& top = stack.back();
            const Slot v = top.first;
            if (top.second == g.deps_start[v + 1]) {
                state[v] = done;
                order.push_back(v);
                stack.pop_back();
                continue;
            }
            const Slot d = g.deps[top.second++];
            if (state[d] == open) return false;
            if (state[d] == done) continue;
            state[d] = open;
            stack.push_back({d, g.deps_start[d]});
        }
    }
    return true;
}

} // namespace

bool flow_order(const FlatGraph& g, std::vector<FlatGraph::Slot>& order)
{
    order.clear();
    if (g.n <= 0) return true;
    if (readers_are_deps_turned(g)) return order_by_depth(g, order);
    return order_by_indegree(g, order);
}

} // namespace wood_rows

namespace {

using wood_rows::FlatGraph;
using wood_rows::flow_order;

bool initialised(const bdd& f) { return f.manager_ref() != nullptr && f.node() != nullptr; }

const Bddexpression* slot(const Bddexpressionwood& wood, long i)
{
    return i >= 0 && i < wood.nb_bdd_vars ? wood.exp_table[i] : nullptr;
}

// Whether every equation of the wood sits in its own slot, so that its late
// date as getLateDate reads it is late_dates of the slot.
bool equations_in_place(const Bddexpressionwood& wood)
{
    for (long i = 0; i < wood.nb_bdd_vars; i++) {
        const Bddexpression* e = wood.exp_table[i];
        if (e == nullptr) continue;
        if (e->wood != &wood || !initialised(e->bdd_var)) return false;
        if (wood.bdd_manager->Index_var_by_bdd(e->bdd_var) != i) return false;
    }
    return true;
}

// The dating of compute_dates() (ids null) or compute_dates(ids), by
// longest paths. Stores nothing and returns false when the literal pass
// must decide: a cycle, an index out of range, a negative late date to
// start from, or a level that reaches the limit of twice the number of
// variables, where the literal pass stops pushing.
template <class Ids>
bool fast_dates(Bddexpressionwood& wood, const Ids* ids)
{
    using Slot = FlatGraph::Slot;
    const long n = wood.nb_bdd_vars;
    FlatGraph g;
    if (!g.build(wood) || !g.readers_in_range) return false; // the literal pass reports it
    if (!equations_in_place(wood)) return false;
    std::vector<Slot> order;
    if (!flow_order(g, order)) return false;

    // Every variable is swept when no list is given.
    std::vector<char> listed;
    if (ids != nullptr) {
        listed.assign(n, 0);
        for (long id : *ids)
            if (id >= 0 && id < n) listed[id] = 1;
    }
    auto swept = [&listed, ids](Slot v) { return ids == nullptr || listed[v] != 0; };

    // The wood's own fields keep the starting dates until the end; the
    // early ones are copied too, so that the walk in data order reads
    // arrays instead of equations. A date only ever rises: one that was
    // pushed up at all ends above where it started.
    std::vector<long> early(n, 0), late(n, 0);
    std::vector<char> pushed_up(n, 0);
    for (long v = 0; v < n; v++) {
        if (const Bddexpression* e = wood.exp_table[v]) early[v] = e->early_date;
        if (ids != nullptr) {
            if (wood.late_dates[v] < 0) return false;
            late[v] = wood.late_dates[v];
        }
    }
    long level = wood.nb_level;
    auto raise_level = [&level](long date) {
        if (level <= date) level = later(date);
    };

    // Early dates: a variable pushes to its readers when it is swept or when
    // its date rose; in topological order its date is final by then.
    for (Slot v : order) {
        bool filled = g.filled[v] != 0;
        bool raised = filled && pushed_up[v];
        if (raised) raise_level(early[v]);
        if (!swept(v) && !raised) continue;
        if (!g.read[v]) {
            if (filled && swept(v)) raise_level(early[v]);
            continue;
        }
        long date = filled ? later(early[v]) : 1;
        for (Slot k = g.readers_start[v]; k < g.readers_start[v + 1]; k++) {
            Slot s = g.readers[k];
            if (early[s] < date) {
                early[s] = date;
                pushed_up[s] = 1;
            }
        }
    }
    // Late dates: readers come before what they read in reverse order.
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        Slot v = *it;
        long start = ids != nullptr ? wood.late_dates[v] : 0;
        if (late[v] > start) raise_level(late[v]);
        if (!g.filled[v]) continue;
        if (!swept(v) && late[v] == start) continue;
        long date = later(late[v]);
        for (Slot k = g.deps_start[v]; k < g.deps_start[v + 1]; k++) {
            Slot d = g.deps[k];
            if (late[d] < date) late[d] = date;
        }
    }
    if (level > 2 * n) return false;

    for (long v = 0; v < n; v++) {
        if (Bddexpression* e = wood.exp_table[v]) e->early_date = early[v];
        wood.late_dates[v] = late[v];
    }
    wood.nb_level = level;
    return true;
}

// One turn of the sweep of compute_dates over variable i.
void sweep_one(Bddexpressionwood& wood, long i, const char* message)
{
    Bddexpression* e = wood.exp_table[i];
    if (wood.amont_table[i].empty()) {
        if (e == nullptr) return;
        if (wood.nb_level <= e->early_date) wood.nb_level = later(e->early_date);
    } else {
        for (long s : wood.amont_table[i]) {
            if (s >= wood.nb_bdd_vars) {
                std::cerr << message << s << ">= " << wood.nb_bdd_vars << std::endl;
                continue;
            }
            // Read afresh: on a cycle the propagation can come back here.
            wood.early_propagation(s, e != nullptr ? later(e->early_date) : 1);
        }
        if (e == nullptr) return;
    }
    IndexSet deps = e->dependances;
    for (long d : deps)
        if (d < wood.nb_bdd_vars) wood.late_propagation(d, later(e->getLateDate()));
}

} // namespace

// ------------------------------------------------------------ propagations

void Bddexpressionwood::early_propagation(long var, long date)
{
    struct Frame {
        long date;
        IndexSet::const_iterator it, end;
    };
    std::vector<Frame> stack;
    // The body of one call up to its loop; true when the loop is to run.
    auto enter = [this, &stack](long v, long d) {
        if (v < 0 || v >= nb_bdd_vars) return;
        Bddexpression* e = exp_table[v];
        if (e == nullptr || d <= e->early_date) return;
        e->early_date = d;
        if (nb_level <= d) nb_level = later(d);
        if (nb_level > 2 * nb_bdd_vars) return; // the only end round a cycle
        stack.push_back({d, amont_table[v].begin(), amont_table[v].end()});
    };
    enter(var, date);
    while (!stack.empty()) {
        Frame& f = stack.back();
        while (f.it != f.end && *f.it >= nb_bdd_vars) ++f.it;
        if (f.it == f.end) {
            stack.pop_back();
            continue;
        }
        long s = *f.it++;
        enter(s, later(f.date));
    }
}

void Bddexpressionwood::late_propagation(long var, long date)
{
    struct Frame {
        long date;
        std::vector<long> deps; // private copy, as the walk always took
        std::size_t next;
    };
    std::vector<Frame> stack;
    auto enter = [this, &stack](long v, long d) {
        if (v < 0 || v >= nb_bdd_vars) return;
        if (late_dates[v] >= d && late_dates[v] != 0) return;
        late_dates[v] = d;
        if (nb_level <= d) nb_level = later(d);
        Bddexpression* e = exp_table[v];
        if (e == nullptr) return; // nothing upstream
        if (nb_level > 2 * nb_bdd_vars) return;
        stack.push_back({d, std::vector<long>(e->dependances.begin(), e->dependances.end()), 0});
    };
    enter(var, date);
    while (!stack.empty()) {
        Frame& f = stack.back();
        while (f.next < f.deps.size() && f.deps[f.next] >= nb_bdd_vars) f.next++;
        if (f.next == f.deps.size()) {
            stack.pop_back();
            continue;
        }
        long d = f.deps[f.next++];
        enter(d, later(f.date));
    }
}

// ------------------------------------------------------------------ dating

long Bddexpressionwood::compute_dates_literal()
{
    update_bdd_vars();
    if (nb_level != 0 || nb_bdd_vars < 1) return nb_level;
    for (long i = 0; i < nb_bdd_vars; i++) late_dates[i] = 0;
    for (long i = 0; i < nb_bdd_vars; i++)
        sweep_one(*this, i, "ERREUR dans compute_date(): nombre de variables trop grand :");
    return nb_level;
}

long Bddexpressionwood::compute_dates_literal(std::list<long>& ids)
{
    update_bdd_vars();
    if (nb_level < 1) {
        nb_level = compute_dates_literal();
        return nb_level;
    }
    for (long id : ids)
        if (id >= 0 && id < nb_bdd_vars)
            sweep_one(*this, id,
                      "ERREUR dans compute_date(list ident): numero de variables trop grand :");
    return nb_level;
}

long Bddexpressionwood::compute_dates()
{
    update_bdd_vars();
    if (nb_level != 0 || nb_bdd_vars < 1) return nb_level;
    if (fast_dates<std::list<long>>(*this, nullptr)) return nb_level;
    return compute_dates_literal();
}

long Bddexpressionwood::compute_dates(std::list<long>& ids)
{
    update_bdd_vars();
    if (nb_level < 1) {
        nb_level = compute_dates();
        return nb_level;
    }
    if (fast_dates(*this, &ids)) return nb_level;
    return compute_dates_literal(ids);
}

long Bddexpressionwood::compute_dates(const std::vector<long>& ids)
{
    update_bdd_vars();
    if (nb_level < 1) {
        nb_level = compute_dates();
        return nb_level;
    }
    if (fast_dates(*this, &ids)) return nb_level;
    std::list<long> listed(ids.begin(), ids.end());
    return compute_dates_literal(listed);
}

long PERT(Bddexpressionwood* wood) { return wood != nullptr ? wood->compute_dates() : 0; }

// ------------------------------------------------------------------- sorts

std::list<long> Bddexpressionwood::earliest_sort_literal() const
{
    std::list<long> result;
    for (long level = 0; level <= nb_level; level++)
        for (long i = 0; i < nb_bdd_vars; i++)
            if (exp_table[i] != nullptr && exp_table[i]->early_date == level) result.push_back(i);
    return result;
}

std::list<long> Bddexpressionwood::latest_sort_literal() const
{
    std::list<long> result;
    for (long level = nb_level; level >= 0; level--)
        for (long i = 0; i < nb_bdd_vars; i++)
            if (exp_table[i] != nullptr && late_dates[i] == level) result.push_back(i);
    return result;
}

namespace {

// The slots of the filled equations whose date is within 0..levels, by
// date (ascending or descending) and ascending index within a date: the
// orders of the level-by-level scans, by one counting pass. A vector: list
// cells for half a million equations would stay in the small-object heap
// after the writers have walked them.
template <class DateOf>
std::vector<long> sorted_by_date(const Bddexpressionwood& wood, long levels, bool descending, DateOf date_of)
{
    if (levels < 0) return {};
    // Dates come from files too: a count per level is taken only when the
    // levels are not many more than the variables; else a stable sort on
    // the date gives the same list.
    if (levels > 2 * wood.nb_bdd_vars + 64) {
        std::vector<std::pair<long, long>> keyed;
        for (long i = 0; i < wood.nb_bdd_vars; i++) {
            if (wood.exp_table[i] == nullptr) continue;
            long date = date_of(i);
            if (date >= 0 && date <= levels) keyed.push_back({descending ? levels - date : date, i});
        }
        std::stable_sort(keyed.begin(), keyed.end(),
                         [](const std::pair<long, long>& a, const std::pair<long, long>& b) {
                             return a.first < b.first;
                         });
        std::vector<long> result;
        result.reserve(keyed.size());
        for (const auto& k : keyed) result.push_back(k.second);
        return result;
    }
    std::vector<long> count(levels + 2, 0);
    for (long i = 0; i < wood.nb_bdd_vars; i++) {
        if (wood.exp_table[i] == nullptr) continue;
        long date = date_of(i);
        if (date < 0 || date > levels) continue;
        count[(descending ? levels - date : date) + 1]++;
    }
    for (long k = 0; k <= levels; k++) count[k + 1] += count[k];
    std::vector<long> placed(count[levels + 1]);
    for (long i = 0; i < wood.nb_bdd_vars; i++) {
        if (wood.exp_table[i] == nullptr) continue;
        long date = date_of(i);
        if (date < 0 || date > levels) continue;
        placed[count[descending ? levels - date : date]++] = i;
    }
    return placed;
}

} // namespace

std::vector<long> Bddexpressionwood::earliest_order() const
{
    return sorted_by_date(*this, nb_level, false, [this](long i) { return exp_table[i]->early_date; });
}

std::list<long> Bddexpressionwood::earliest_sort() const
{
    std::vector<long> order = earliest_order();
    return std::list<long>(order.begin(), order.end());
}

std::list<long> Bddexpressionwood::latest_sort() const
{
    std::vector<long> order = sorted_by_date(*this, nb_level, true, [this](long i) { return late_dates[i]; });
    return std::list<long>(order.begin(), order.end());
}

std::list<long> Bddexpressionwood::loop_detection()
{
    std::list<long> result;
    if (nb_level == 0) compute_dates();
    // Without a cycle no date can pass the number of variables.
    if (nb_bdd_vars >= nb_level || nb_bdd_vars < 1) return result;
    for (long i = 0; i < nb_bdd_vars; i++) {
        const Bddexpression* e = exp_table[i];
        if (e == nullptr) continue;
        if (e->early_date > nb_bdd_vars || late_dates[i] > nb_bdd_vars) result.push_back(i);
    }
    return result;
}

// --------------------------------------------------------- critical paths
//
// up:   m(v) = max(w(v), w(v) + m(d)) over the filled dependances d,
//       and the call returns base + m(var);
// down: m(v) = max(0, w(s) + m(s)) over the filled readers s.
// Both enumerate every path when taken literally.

namespace {

// The literal walks enumerate every path, which on a signals cycle grows
// with the power of the cycle's branching: past this many steps from one
// call, the run ends with a message instead of going on for ever.
const long critical_path_steps = 4000000;

void count_critical_path_step(long& steps, long var, const char* walk)
{
    if (++steps > critical_path_steps)
        Compilation::fatal(std::string("ERROR in Bddexpressionwood::") + walk + "(): more than " +
                           std::to_string(critical_path_steps) + " steps walked from variable " +
                           std::to_string(var) + ": the module has a signals cycle");
}

} // namespace

long Bddexpressionwood::up_critical_path_literal(long var, long depth, long base)
{
    struct Frame {
        long base;
        long depth;
        long w;
        long m;
        std::vector<long> deps;
        std::size_t next;
    };
    std::vector<Frame> stack;
    long result = 0;
    bool have_result = false;
    long steps = 0;
    auto enter = [this, &stack, &result, &have_result, &steps, var](long v, long d, long b) {
        count_critical_path_step(steps, var, "up_critical_path");
        const Bddexpression* e = slot(*this, v);
        if (e == nullptr) {
            result = b;
            have_result = true;
            return;
        }
        std::vector<long> deps(e->dependances.begin(), e->dependances.end());
        long w = e->w;
        // A path this long can only be a cycle: dissolve the variable into
        // its readers, and go on over the copy.
        if (d >= nb_bdd_vars) useless_local(v);
        stack.push_back({b, d, w, w, std::move(deps), 0});
    };
    enter(var, depth, base);
    while (!stack.empty()) {
        if (have_result) {
            have_result = false;
            Frame& parent = stack.back();
            if (result > parent.m) parent.m = result;
        }
        Frame& f = stack.back();
        while (f.next < f.deps.size() && slot(*this, f.deps[f.next]) == nullptr) f.next++;
        if (f.next == f.deps.size()) {
            result = f.base + f.m;
            have_result = true;
            stack.pop_back();
            continue;
        }
        long d = f.deps[f.next++];
        enter(d, f.depth + 1, f.w);
    }
    return result;
}

long Bddexpressionwood::down_critical_path_literal(long var, long depth, long base) const
{
    struct Frame {
        long base;
        long depth;
        long m;
        IndexSet::const_iterator it, end;
    };
    if (var < 0 || var >= nb_bdd_vars) return base;
    std::vector<Frame> stack;
    long steps = 0;
    stack.push_back({base, depth, 0, amont_table[var].begin(), amont_table[var].end()});
    long result = 0;
    bool have_result = false;
    while (!stack.empty()) {
        if (have_result) {
            have_result = false;
            if (result > stack.back().m) stack.back().m = result;
        }
        Frame& f = stack.back();
        if (f.it == f.end) {
            result = f.base + f.m;
            have_result = true;
            stack.pop_back();
            continue;
        }
        long s = *f.it++;
        const Bddexpression* e = slot(*this, s);
        if (e == nullptr) continue;
        if (f.depth >= nb_bdd_vars) {
            std::cerr << "WARNING in Bddexpressionwood::down_critical_path():" << std::endl
                      << "   possible infinite recursion due to a signals cycle" << std::endl;
            continue;
        }
        long d = f.depth + 1;
        count_critical_path_step(steps, var, "down_critical_path");
        stack.push_back({e->w, d, 0, amont_table[s].begin(), amont_table[s].end()});
    }
    return result;
}

namespace {

// Memoised critical path over the part of the graph that `var` reaches in
// one direction (up: filled dependances; down: filled readers). `m` gets
// the value of the formula above for var and `height` the number of edges
// of the longest path from var. Returns false on a cycle in that part.
bool memo_path(const Bddexpressionwood& wood, long var, bool up, long& m, long& height)
{
    auto next_of = [&wood, up](long v, std::vector<long>& out) {
        out.clear();
        if (up) {
            const Bddexpression* e = slot(wood, v);
            if (e == nullptr) return;
            for (long d : e->dependances)
                if (slot(wood, d) != nullptr) out.push_back(d);
        } else {
            for (long s : wood.amont_table[v])
                if (slot(wood, s) != nullptr) out.push_back(s);
        }
    };
    // 0 unseen, 1 on the walk, 2 done.
    std::unordered_map<long, char> state;
    std::unordered_map<long, std::pair<long, long>> value; // m, height
    struct Frame {
        long v;
        std::vector<long> next;
        std::size_t k;
    };
    std::vector<Frame> stack;
    stack.push_back({var, {}, 0});
    next_of(var, stack.back().next);
    state[var] = 1;
    while (!stack.empty()) {
        Frame& f = stack.back();
        if (f.k < f.next.size()) {
            long u = f.next[f.k++];
            char& st = state[u];
            if (st == 1) return false;
            if (st == 2) continue;
            st = 1;
            stack.push_back({u, {}, 0});
            next_of(u, stack.back().next);
            continue;
        }
        long v = f.v;
        long best = 0, h = 0;
        long w = 0;
        if (up) w = slot(wood, v)->w;
        bool any = false;
        for (long u : f.next) {
            const auto& mu = value[u];
            long candidate = up ? w + mu.first : slot(wood, u)->w + mu.first;
            if (!any || candidate > best) best = candidate;
            any = true;
            if (mu.second + 1 > h) h = mu.second + 1;
        }
        long mv = up ? (any && best > w ? best : w) : (any && best > 0 ? best : 0);
        value[v] = {mv, h};
        state[v] = 2;
        stack.pop_back();
    }
    m = value[var].first;
    height = value[var].second;
    return true;
}

} // namespace

long Bddexpressionwood::up_critical_path(long var, long depth, long base)
{
    if (slot(*this, var) == nullptr) return base;
    long m = 0, height = 0;
    // The depth limit acts on a node reached at depth nb_bdd_vars or more.
    if (memo_path(*this, var, true, m, height) && depth + height < nb_bdd_vars) return base + m;
    return up_critical_path_literal(var, depth, base);
}

long Bddexpressionwood::down_critical_path(long var, long depth, long base) const
{
    if (var < 0 || var >= nb_bdd_vars) return base;
    long m = 0, height = 0;
    // The warning needs a filled reader of a node at depth nb_bdd_vars.
    if (memo_path(*this, var, false, m, height) && depth + height <= nb_bdd_vars) return base + m;
    return down_critical_path_literal(var, depth, base);
}

bool Bddexpressionwood::memo_critical_paths(long depth, std::vector<long>& up,
                                            std::vector<long>& down) const
{
    FlatGraph g;
    return g.build(*this) && wood_rows::memo_critical_paths(*this, g, depth, up, down);
}

bool wood_rows::memo_critical_paths(const Bddexpressionwood& wood, const FlatGraph& g, long depth,
                                    std::vector<long>& up, std::vector<long>& down)
{
    using Slot = FlatGraph::Slot;
    const long n = wood.nb_bdd_vars;
    std::vector<Slot> order;
    if (!g.valid || g.n != n || !flow_order(g, order)) return false;
    // The weights in an array, read in index order: the walks in data
    // order then touch no equation.
    std::vector<long> weight(n, 0);
    for (long v = 0; v < n; v++)
        if (const Bddexpression* e = wood.exp_table[v]) weight[v] = e->w;
    // Heights stay below n, which fits a slot.
    std::vector<long> up_m(n, 0), down_m(n, 0);
    std::vector<Slot> up_h(n, 0), down_h(n, 0);
    // What an equation reads comes before it in the order.
    for (Slot v : order) {
        if (!g.filled[v]) continue;
        long w = weight[v];
        long m = w, h = 0;
        for (Slot k = g.deps_start[v]; k < g.deps_start[v + 1]; k++) {
            Slot d = g.deps[k];
            if (!g.filled[d]) continue;
            m = std::max(m, w + up_m[d]);
            h = std::max(h, (long)up_h[d] + 1);
        }
        up_m[v] = m;
        up_h[v] = (Slot)h;
        if (depth + h >= n) return false;
    }
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        Slot v = *it;
        long m = 0, h = 0;
        for (Slot k = g.readers_start[v]; k < g.readers_start[v + 1]; k++) {
            Slot s = g.readers[k];
            m = std::max(m, weight[s] + down_m[s]);
            h = std::max(h, (long)down_h[s] + 1);
        }
        down_m[v] = m;
        down_h[v] = (Slot)h;
        if (depth + h > n) return false;
    }
    up.swap(up_m);
    down.swap(down_m);
    return true;
}

// ------------------------------------------------ the first fixed-point dating

long normalise_min_min(long n, long* a, long* b)
{
    if (n < 1) return 0;
    long min_a = *std::min_element(a, a + n);
    long min_b = *std::min_element(b, b + n);
    long greatest = 0; // both arrays are at least 0 once shifted
    for (long i = 0; i < n; i++) {
        a[i] -= min_a;
        b[i] -= min_b;
        if (a[i] > greatest) greatest = a[i];
        if (b[i] > greatest) greatest = b[i];
    }
    return greatest;
}

void affiche_level(long n, bddpp_manager* manager, long* dates)
{
    for (long i = 0; i < n; i++) std::cout << manager->Name_var_by_index(i) << ":" << dates[i] << " ";
    std::cout << std::endl;
}

long PERT_original_version(long n, Bddexpression** exps)
{
    if (n < 1) return 0;
    const Bddexpressionwood* wood = exps[0] != nullptr ? exps[0]->wood : nullptr;
    long count = wood != nullptr && wood->bdd_manager != nullptr ? wood->bdd_manager->variables_number : 0;
    std::vector<long> early(count > 0 ? count : 0, 0), late(count > 0 ? count : 0, 0);
    std::vector<long> index(n, -1);
    for (long i = 0; i < n; i++) {
        long v = exps[i] != nullptr ? exps[i]->own_index() : -1;
        if (v < 0 || v >= count) continue;
        index[i] = v;
        early[v] = exps[i]->early_date;
        late[v] = exps[i]->getLateDate();
    }
    // A change ends the sweep at once; the next sweep starts from the first
    // equation again.
    auto sweeps = [n, exps, count](long* dates, bool up) {
        int overflow = 0;
        for (;;) {
            bool changed = false;
            for (long i = 0; i < n && !changed; i++)
                if (exps[i] != nullptr)
                    changed = (up ? learn_upstream_dependance(count, dates, *exps[i], &overflow)
                                  : learn_downstream_dependance(count, dates, *exps[i], &overflow)) != 0;
            if (!changed || overflow) return overflow;
        }
    };
    int overflow_up = sweeps(early.data(), true);
    int overflow_down = sweeps(late.data(), false);
    if (overflow_down || overflow_up) {
        // A member of a cycle is pushed both ways; what merely hangs on one
        // is pushed one way only and stays out of the report.
        std::cout << "CYCLE DE CAUSALITE SUR:" << std::endl;
        for (long i = 0; i < n; i++) {
            long v = index[i];
            if (v >= 0 && early[v] >= count && late[v] >= count) std::cout << *exps[i] << std::endl;
        }
        std::cout << std::endl;
        return -1;
    }
    long levels = count == 0 ? 1 : normalise_min_min(count, early.data(), late.data()) + 1;
    for (long i = 0; i < n; i++) {
        long v = index[i];
        if (v < 0) continue;
        exps[i]->early_date = early[v];
        exps[i]->setLateDate(late[v]);
    }
    return levels;
}

long PERT_original_version(long n, Bddexpression* exps)
{
    std::vector<Bddexpression*> pointers;
    for (long i = 0; i < n; i++) pointers.push_back(&exps[i]);
    return PERT_original_version(n, pointers.data());
}
