// The dependence graph, held twice: each equation's dependances (what it
// reads, upstream) and each variable's amont_table entry (who reads it,
// downstream). Walks go through both in ascending index order.

#include "wood/Bddexpression.h"
#include "wood/flat_graph.h"
#include "wood/support_rows.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <vector>

#include <iostream>

IndexSet set_union(const IndexSet& a, const IndexSet& b)
{
    IndexSet r = a;
    r.insert(b.begin(), b.end());
    return r;
}

IndexSet set_inter(const IndexSet& a, const IndexSet& b)
{
    IndexSet r;
    for (long x : a)
        if (b.count(x) != 0) r.insert(x);
    return r;
}

IndexSet set_priv(const IndexSet& a, const IndexSet& b)
{
    IndexSet r;
    for (long x : a)
        if (b.count(x) == 0) r.insert(x);
    return r;
}

IndexSet set_reencoding(const IndexSet& s, const long* table)
{
    IndexSet r;
    for (long x : s) r.insert(table[x]);
    return r;
}

std::ostream& put_set(std::ostream& out, const IndexSet& s)
{
    out << "{";
    bool first = true;
    for (long x : s) {
        if (!first) out << ",";
        out << x;
        first = false;
    }
    return out << "}";
}

namespace {

// The rebuild in rows of `Slot`: the dependances of each filled slot are
// refreshed and read once, in ascending reader order, then spread by
// variable with a counting sort, which keeps each reader list ascending.
// False, with no table written, when the rows outgrow `Slot`.
template <class Slot>
bool rebuild_rows(Bddexpressionwood& wood, std::vector<Slot>& deps_start, std::vector<Slot>& deps,
                  std::vector<Slot>& readers_start, std::vector<Slot>& readers)
{
    const long n = wood.nb_bdd_vars > 0 ? wood.nb_bdd_vars : 0;
    const std::size_t most = std::numeric_limits<Slot>::max();
    if ((std::size_t)n >= most) return false;
    deps_start.assign(n + 1, 0);
    deps.clear();
    deps.reserve(2 * n);
    readers_start.assign(n + 1, 0);
    std::vector<long> support;
    for (long i = 0; i < n; i++) {
        Bddexpression* e = wood.exp_table[i];
        if (e != nullptr) {
            // The support in hand is the new dependances: the set is
            // compared once, written only when it moved, and not read again.
            bool in_hand = e->abstraction == 0 && e->wood != nullptr &&
                           wood_rows::support_indexes(e->wood->bdd_manager, e->bdd_exp, support);
            if (in_hand) {
                if (!wood_rows::same_members(e->dependances, support))
                    e->dependances.assign(support.begin(), support.end());
            } else if (e->abstraction == 0) {
                e->internal_build_dependances();
            }
            auto add = [&](long d) {
                if (d >= 0 && d < n) {
                    readers_start[d + 1]++;
                    deps.push_back((Slot)d);
                }
            };
            if (in_hand)
                for (long d : support) add(d);
            else
                for (long d : e->dependances) add(d);
            if (deps.size() >= most) return false;
        }
        deps_start[i + 1] = (Slot)deps.size();
    }
    for (long d = 0; d < n; d++) readers_start[d + 1] += readers_start[d];
    readers.assign(deps.size(), 0);
    {
        std::vector<Slot> fill(readers_start.begin(), readers_start.end() - 1);
        for (long i = 0; i < n; i++)
            for (Slot k = deps_start[i]; k < deps_start[i + 1]; k++) readers[fill[deps[k]]++] = (Slot)i;
    }
    // A table entry is rewritten only where it differs: most of them come
    // out as they were.
    for (long d = 0; d < n; d++) {
        auto first = readers.begin() + readers_start[d];
        auto last = readers.begin() + readers_start[d + 1];
        IndexSet& table = wood.amont_table[d];
        if (table.size() == static_cast<std::size_t>(last - first) && std::equal(first, last, table.begin()))
            continue;
        table.assign(first, last);
    }
    return true;
}

} // namespace

void wood_rows::rebuild_reader_tables(Bddexpressionwood& wood, FlatGraph& g)
{
    // Readers declared by abstract constructors are lost here on purpose.
    g.valid = false;
    if (!rebuild_rows(wood, g.deps_start, g.deps, g.readers_start, g.readers)) {
        std::vector<long> deps_start, deps, readers_start, readers;
        rebuild_rows(wood, deps_start, deps, readers_start, readers);
        return;
    }
    // The tables are now exactly the dependances turned round.
    g.n = wood.nb_bdd_vars > 0 ? wood.nb_bdd_vars : 0;
    g.read.assign(g.n, 0);
    g.filled.assign(g.n, 0);
    for (long v = 0; v < g.n; v++) {
        g.read[v] = g.readers_start[v + 1] != g.readers_start[v] ? 1 : 0;
        g.filled[v] = wood.exp_table[v] != nullptr ? 1 : 0;
    }
    g.readers_in_range = true;
    g.readers_turn_deps = true;
    g.valid = true;
}

void Bddexpressionwood::internal_global_build_dependances()
{
    wood_rows::FlatGraph g;
    wood_rows::rebuild_reader_tables(*this, g);
}

// Both walks are the plain recursion "add each unseen neighbour, then walk
// from it one level deeper", threaded through one accumulating set; an
// explicit stack stands for the call stack so that a long chain cannot
// overflow it. The depth limit and its warning act exactly where the
// recursion's would.

IndexSet Bddexpressionwood::down_dependances(long index, long depth, IndexSet& acc)
{
    IndexSet result = acc;
    if (index < 0 || index >= nb_bdd_vars) return result;
    struct Frame {
        long depth;
        IndexSet::const_iterator it, end;
    };
    std::vector<Frame> stack;
    stack.push_back({depth, amont_table[index].begin(), amont_table[index].end()});
    while (!stack.empty()) {
        Frame& f = stack.back();
        if (f.it == f.end) {
            stack.pop_back();
            continue;
        }
        long s = *f.it++;
        long d = f.depth;
        if (!result.insert(s).second) continue;
        if (d < nb_bdd_vars) {
            if (s >= 0 && s < nb_bdd_vars)
                stack.push_back({d + 1, amont_table[s].begin(), amont_table[s].end()});
        } else {
            std::cerr << "WARNING in Bddexpressionwood::down_dependances():" << std::endl
                      << "   possible infinite recusion due to a signals cycle" << std::endl;
        }
    }
    return result;
}

IndexSet Bddexpressionwood::up_dependances(long index, long depth, IndexSet& acc)
{
    IndexSet result = acc;
    auto equation = [this](long i) -> const Bddexpression* {
        return i >= 0 && i < nb_bdd_vars ? exp_table[i] : nullptr;
    };
    const Bddexpression* top = equation(index);
    if (top == nullptr) return result;
    struct Frame {
        long depth;
        IndexSet::const_iterator it, end;
    };
    std::vector<Frame> stack;
    stack.push_back({depth, top->dependances.begin(), top->dependances.end()});
    while (!stack.empty()) {
        Frame& f = stack.back();
        if (f.it == f.end) {
            stack.pop_back();
            continue;
        }
        long s = *f.it++;
        long d = f.depth;
        if (!result.insert(s).second) continue;
        if (d < nb_bdd_vars) {
            const Bddexpression* e = equation(s);
            if (e != nullptr) stack.push_back({d + 1, e->dependances.begin(), e->dependances.end()});
        } else {
            std::cerr << "WARNING in Bddexpressionwood::up_dependances():" << std::endl
                      << "   possible infinite recursion due to a signals cycle" << std::endl;
        }
    }
    return result;
}

void Bddexpressionwood::coherence_dependances_check(std::ostream&) const
{
    std::vector<IndexSet> computed(nb_bdd_vars > 0 ? nb_bdd_vars : 0);
    for (long i = 0; i < nb_bdd_vars; i++) {
        const Bddexpression* e = exp_table[i];
        if (e == nullptr) continue;
        for (long d : e->dependances)
            if (d >= 0 && d < nb_bdd_vars) computed[d].insert(i);
    }
    for (long i = 0; i < nb_bdd_vars; i++) {
        if (computed[i] == amont_table[i]) continue;
        std::cerr << "incoherence sur table des amonts pour la variable " << i << ": calcule: ";
        put_set(std::cerr, computed[i]) << " trouve";
        put_set(std::cerr, amont_table[i]) << std::endl;
    }
}

IndexSet Bddexpressionwood::Set_of_index_used_variables() const
{
    // The union of every equation's used variables, marked in a byte table
    // instead of merged set into set; what falls outside the table (a left
    // member the manager numbers -1, say) is gathered aside.
    const long n = nb_bdd_vars > 0 ? nb_bdd_vars : 0;
    std::vector<char> marked(n, 0);
    std::vector<long> outside;
    auto mark = [&](long v) {
        if (v >= 0 && v < n)
            marked[v] = 1;
        else
            outside.push_back(v);
    };
    for (long id : exp_ids) {
        const Bddexpression* e = id >= 0 && id < nb_bdd_vars ? exp_table[id] : nullptr;
        if (e == nullptr) {
            std::cerr << "internal error in Bddexpressionwood::Set_of_index_used_variables(): "
                         "expression not found!!!"
                      << "   about id:" << id << std::endl;
            continue;
        }
        for (long d : e->dependances) mark(d);
        if (e->wood != nullptr && e->wood->bdd_manager != nullptr && e->bdd_var.manager_ref() != nullptr &&
            e->bdd_var.node() != nullptr)
            mark(e->own_index());
    }
    std::vector<long> inside;
    for (long v = 0; v < n; v++)
        if (marked[v]) inside.push_back(v);
    std::sort(outside.begin(), outside.end());
    std::vector<long> all;
    all.reserve(inside.size() + outside.size());
    std::merge(outside.begin(), outside.end(), inside.begin(), inside.end(), std::back_inserter(all));
    return IndexSet(all.begin(), all.end());
}

// One relaxation step of the fixed-point dating; `push_up` tells the
// direction. The overflow flag rises when a new date reaches twice the
// number of variables, a height that no acyclic graph gives.
static int learn_dependance(long nvars, long* dates, Bddexpression& e, int* overflow,
                            bool push_up, const char* message)
{
    *overflow = 0;
    long i = -3;
    bddpp_manager* m = e.wood != nullptr && e.wood->bdd_manager != nullptr
                           ? e.wood->bdd_manager
                           : e.bdd_var.manager_ref();
    if (m != nullptr) i = m->Bdd_if_index(e.bdd_var);
    if (i < 0 || i >= nvars) {
        std::cerr << message << std::endl;
        return 0;
    }
    int changed = 0;
    IndexSet deps = e.dependances;
    for (long d : deps) {
        if (d < 0 || d >= nvars) continue;
        long& from = push_up ? dates[d] : dates[i];
        long& to = push_up ? dates[i] : dates[d];
        if (to <= from) {
            to = from + 1;
            changed = 1;
            if (*overflow != 1 && to >= 2 * nvars) *overflow = 1;
        }
    }
    return changed;
}

int learn_upstream_dependance(long nvars, long* dates, Bddexpression& e, int* overflow)
{
    return learn_dependance(nvars, dates, e, overflow, true,
                            "INTERNAL ERROR in learn_upstream_dependance()");
}

int learn_downstream_dependance(long nvars, long* dates, Bddexpression& e, int* overflow)
{
    return learn_dependance(nvars, dates, e, overflow, false,
                            "INTERNAL ERROR in learn_downstream_dependance()");
}
