// Variable elimination: constants pushed through the graph, wires and
// locals substituted into their readers, isolated equations dropped,
// restriction and quantification of the whole wood, Shannon expansion and
// loop breaking.
//
// Every pass below walks its sets in ascending index order and creates BDD
// nodes in the order of that walk; global ids reach the generated text, so
// the order of the calls into the manager is behaviour.

#include "wood/Bddexpression.h"
#include "wood/flat_graph.h"
#include "wood/support_rows.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <vector>

bool Bddexpressionwood::bdd_initialised(const bdd& f)
{
    return f.manager_ref() != nullptr && f.node() != nullptr;
}

int Bddexpressionwood::bdd_constant_value(const bdd& f)
{
    if (!bdd_initialised(f) || f.node() != f.manager_ref()->Bdd_node_one())
        return -1;
    return f.link_type() == 1 ? 1 : 0;
}

namespace {

bool initialised(const bdd& f) { return Bddexpressionwood::bdd_initialised(f); }
int constant_value(const bdd& f) { return Bddexpressionwood::bdd_constant_value(f); }

bool kept_type(const std::list<int>& keep, int user_type)
{
    return std::find(keep.begin(), keep.end(), user_type) != keep.end();
}

// Equations that clean drops from the wood without destroying them stay
// reachable from here for the life of the process.
std::vector<Bddexpression*>& dropped_equations()
{
    static std::vector<Bddexpression*>* dropped = new std::vector<Bddexpression*>();
    return *dropped;
}

} // namespace

// ---------------------------------------------------------------- constants

bool Bddexpressionwood::constant_candidate(long i) const
{
    if (i < 0 || i >= nb_bdd_vars)
        return false;
    Bddexpression* e = exp_table[i];
    // The lookup in exp_ids, the dearest test, comes last.
    return e != nullptr && !amont_table[i].empty() && e->abstraction == 0 && constant_value(e->bdd_exp) >= 0 &&
           exp_ids.count(i) != 0;
}

// One step of the propagation on the constant equation i: its literal is
// fixed in every reader, it leaves the wood unless its type is kept, and
// nobody reads it any more. Readers that became constant are handed to
// `found`; `touched`, when given, learns every reader membership that may
// now disagree with the readers' dependances.
void Bddexpressionwood::propagate_one_constant(long i, const std::list<int>& keep,
                                               IndexSet& removed,
                                               std::vector<long>& found,
                                               Touched* touched)
{
    Bddexpression* e = exp_table[i];
    bdd literal = bdd_manager->Bdd_var_by_index(i);
    if (constant_value(e->bdd_exp) == 0)
        literal = bdd_manager->Bdd_not(literal);

    IndexSet stale;
    const IndexSet readers = amont_table[i];
    for (long s : readers) {
        if (touched)
            touched->add(s, i);
        Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
        if (r == nullptr) {
            stale.insert(s);
            continue;
        }
        if (r->abstraction != 0 || !initialised(r->bdd_exp))
            continue;
        if (touched)
            touched->add(s, r->dependances.begin(), r->dependances.end());
        r->bdd_exp = bdd_manager->Bdd_reduce(r->bdd_exp, literal);
        r->build_normal_dependances();
        if (constant_candidate(s))
            found.push_back(s);
    }
    for (long s : stale)
        amont_table[i].erase(s);

    if (!kept_type(keep, e->user_type)) {
        if (touched)
            touched->add(i, e->dependances.begin(), e->dependances.end());
        delete e;
        exp_table[i] = nullptr;
        removed.insert(i);
    }
    amont_table[i].clear();
}

// The propagation as a run of ascending sweeps repeated until one changes
// nothing, without the sweeps: a constant found behind the cursor would
// have been met by the next sweep, one found ahead of it by this one, so
// the equations are processed in exactly the order of the sweeps. Being a
// candidate cannot be lost before the equation's own turn: readers' tables
// only shrink by the entries of processed equations.
void Bddexpressionwood::propagate_constants(IndexSet current, const std::list<int>& keep,
                                            IndexSet& removed,
                                            Touched* touched)
{
    IndexSet next;
    std::vector<long> found;
    while (!current.empty()) {
        while (!current.empty()) {
            long i = *current.begin();
            current.erase(current.begin());
            if (!constant_candidate(i))
                continue;
            found.clear();
            propagate_one_constant(i, keep, removed, found, touched);
            for (long s : found) {
                if (s > i)
                    current.insert(s);
                else
                    next.insert(s);
            }
        }
        current.swap(next);
    }
}

// constants_propagation(keep), leaving in `g` the graph of the exact tables
// that its closing rebuild makes.
static void propagate_and_rebuild(Bddexpressionwood& wood, std::list<int>& keep,
                                  wood_rows::FlatGraph& g)
{
    // The candidates of constant_candidate, found along the slots: a scan
    // of the table costs far less than a walk of exp_ids, whose membership
    // is asked only of the few constant equations that have a reader.
    IndexSet candidates;
    for (long i = 0; i < wood.nb_bdd_vars; ++i) {
        Bddexpression* e = wood.exp_table[i];
        if (e == nullptr || e->abstraction != 0 || wood.amont_table[i].empty() ||
            constant_value(e->bdd_exp) < 0 || wood.exp_ids.count(i) == 0)
            continue;
        candidates.insert(candidates.end(), i);
    }
    IndexSet removed;
    wood.propagate_constants(std::move(candidates), keep, removed, nullptr);
    for (long i : removed)
        wood.exp_ids.erase(i);
    wood_rows::rebuild_reader_tables(wood, g);
}

void Bddexpressionwood::constants_propagation(std::list<int>& keep)
{
    wood_rows::FlatGraph g;
    propagate_and_rebuild(*this, keep, g);
}

void Bddexpressionwood::constants_propagation()
{
    std::list<int> keep;
    constants_propagation(keep);
}

void Bddexpressionwood::constants_propagation_literal(std::list<int>& keep)
{
    IndexSet removed;
    std::vector<long> found;
    bool changed = true;
    while (changed) {
        changed = false;
        for (long i : exp_ids) {
            if (!constant_candidate(i))
                continue;
            propagate_one_constant(i, keep, removed, found, nullptr);
            changed = true;
        }
    }
    for (long i : removed)
        exp_ids.erase(i);
    internal_global_build_dependances();
}

int Bddexpressionwood::global_tautology()
{
    constants_propagation();
    for (long i : exp_ids) {
        Bddexpression* e = (i < nb_bdd_vars) ? exp_table[i] : nullptr;
        if (e == nullptr)
            continue;
        if (constant_value(e->bdd_exp) < 0)
            return 0;
    }
    return 1;
}

// ------------------------------------------------------------------- wires

void Bddexpressionwood::prune_readers()
{
    for (long i = 0; i < nb_bdd_vars; ++i) {
        IndexSet& readers = amont_table[i];
        for (auto it = readers.begin(); it != readers.end();) {
            long s = *it;
            Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
            if (r == nullptr || r->dependances.count(i) == 0)
                it = readers.erase(it);
            else
                ++it;
        }
    }
}

// New dates after wire suppression: one more than compute_dates would give
// for the early date, the late date itself for the late one. On a graph
// without a cycle both come from one memoised pass; a cycle takes the
// per-equation walks, which may dissolve equations as they go. The graph in
// rows is taken when it is at hand. True when the memoised pass did it,
// leaving the tables as they were.
static bool redate(Bddexpressionwood& wood, const wood_rows::FlatGraph* g)
{
    std::vector<long> up, down;
    bool memo = g != nullptr ? wood_rows::memo_critical_paths(wood, *g, 1, up, down)
                             : wood.memo_critical_paths(1, up, down);
    if (memo) {
        for (long i = 0; i < wood.nb_bdd_vars; ++i) {
            Bddexpression* e = wood.exp_table[i];
            if (e == nullptr)
                continue;
            e->early_date = 1 + up[i];
            e->setLateDate(down[i]);
        }
        return true;
    }
    // The walks may dissolve equations as they go: the table is read afresh.
    for (long i = 0; i < wood.nb_bdd_vars; ++i) {
        Bddexpression* e = wood.exp_table[i];
        if (e == nullptr)
            continue;
        long early = wood.up_critical_path(i, 1, 1);
        e = wood.exp_table[i];
        if (e == nullptr)
            continue;
        e->early_date = early;
        long late = wood.down_critical_path(i, 1, 0);
        e->setLateDate(late);
    }
    return false;
}

void Bddexpressionwood::redate_by_critical_paths()
{
    redate(*this, nullptr);
}

void Bddexpressionwood::suppress_wires(std::list<int>& keep)
{
    ReductionRun run;
    suppress_wires(keep, run);
}

// A run can start exact when the tables are: what the first restriction of
// a run would gather after making them exact is gathered here.
static void start_exact_run(Bddexpressionwood& wood, Bddexpressionwood::ReductionRun& run)
{
    run.exact = true;
    run.leftover.clear();
    run.abstract_with_bdd.clear();
    for (long i = 0; i < wood.nb_bdd_vars; ++i) {
        Bddexpression* e = wood.exp_table[i];
        if (e == nullptr)
            continue;
        bool constant = e->abstraction == 0 && !wood.amont_table[i].empty() && constant_value(e->bdd_exp) >= 0;
        bool abstract_with_bdd = e->abstraction != 0 && initialised(e->bdd_exp);
        if ((!constant && !abstract_with_bdd) || wood.exp_ids.count(i) == 0)
            continue;
        if (constant)
            run.leftover.insert(run.leftover.end(), i);
        if (abstract_with_bdd)
            run.abstract_with_bdd.insert(run.abstract_with_bdd.end(), i);
    }
}

void Bddexpressionwood::suppress_wires(std::list<int>& keep, ReductionRun& run)
{
    run = ReductionRun();
    std::vector<long> wire_readers;
    for (long i = 0; i < nb_bdd_vars; ++i) {
        Bddexpression* e = exp_table[i];
        // The cheap tests first: few equations are wires.
        if (e == nullptr || e->abstraction != 0 || e->dependances.size() != 1 || amont_table[i].empty() ||
            kept_type(keep, e->user_type))
            continue;
        bool abstract_reader = false;
        for (long s : amont_table[i]) {
            Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
            if (r != nullptr && r->abstraction != 0) {
                abstract_reader = true;
                break;
            }
        }
        if (abstract_reader)
            continue;

        long d = *e->dependances.begin();
        amont_table[d].erase(i);
        exp_ids.erase(i);
        IndexSet orphans;
        wire_readers.assign(amont_table[i].begin(), amont_table[i].end());
        for (long s : wire_readers) {
            Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
            if (r != nullptr) {
                if (initialised(r->bdd_exp) && initialised(e->bdd_exp))
                    r->bdd_exp = bdd_manager->Bdd_compose(r->bdd_exp, e->bdd_var, e->bdd_exp);
                r->dependances.erase(i);
                r->dependances.insert(d);
            } else {
                orphans.insert(s);
            }
        }
        // Every reader, filled or not, reads d instead; i already left it.
        amont_table[d].insert_ascending(wire_readers.data(), wire_readers.data() + wire_readers.size());
        for (long s : orphans)
            amont_table[i].erase(s);
        delete e;
        exp_table[i] = nullptr;
        amont_table[i].clear();
        late_dates[i] = 0;
    }

    // Constants go whatever their type: keep protects only from being a wire.
    // The propagation ends by rebuilding every reader entry from the
    // dependances, after which pruning the readers finds nothing to take.
    std::list<int> none;
    wood_rows::FlatGraph g;
    propagate_and_rebuild(*this, none, g);
    // Only the walks taken on a cycle may dissolve equations and leave the
    // tables out of step again.
    if (redate(*this, &g))
        start_exact_run(*this, run);
}

void Bddexpressionwood::suppress_wires()
{
    std::list<int> keep;
    suppress_wires(keep);
}

// ------------------------------------------------------------------ locals

void Bddexpressionwood::report_self_dependance(long i)
{
    std::cerr << "ERROR: detected self-dependance about variable : " << i << " !!!" << std::endl;
    std::cerr << "in associated expression: " << *exp_table[i] << std::endl << std::endl;
    std::cerr << "in associated wood:" << std::endl << *this << std::endl;
}

void Bddexpressionwood::suppress_locals(std::list<int>& keep)
{
    for (long i = 0; i < nb_bdd_vars; ++i) {
        Bddexpression* e = exp_table[i];
        if (e == nullptr || kept_type(keep, e->user_type) || amont_table[i].empty() ||
            e->dependances.empty())
            continue;
        const IndexSet deps = e->dependances;
        for (long d : deps) {
            amont_table[d].erase(i);
            IndexSet orphans;
            const IndexSet readers = amont_table[i];
            for (long s : readers) {
                Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
                if (r != nullptr) {
                    if (initialised(r->bdd_exp) && initialised(e->bdd_exp))
                        r->bdd_exp = bdd_manager->Bdd_compose(r->bdd_exp, e->bdd_var, e->bdd_exp);
                    r->dependances.erase(i);
                    r->dependances.insert(d);
                } else {
                    orphans.insert(s);
                }
                amont_table[d].erase(i);
                amont_table[d].insert(s);
            }
            for (long s : orphans)
                amont_table[i].erase(s);
        }
        delete exp_table[i];
        exp_table[i] = nullptr;
        amont_table[i].clear();
        exp_ids.erase(i);
    }
    std::list<int> none;
    constants_propagation(none);
    prune_readers();
}

void Bddexpressionwood::suppress_locals()
{
    std::list<int> keep;
    suppress_locals(keep);
}

void Bddexpressionwood::useless_local(long var)
{
    long i = var;
    if (i < 0 || i >= nb_bdd_vars)
        return;
    Bddexpression* e = exp_table[i];
    if (e == nullptr || amont_table[i].empty() || e->dependances.empty())
        return;
    if (e->abstraction == 0)
        e->build_normal_dependances();
    if (e->dependances.count(i) != 0) {
        report_self_dependance(i);
        std::exit(1);
    }
    const IndexSet deps = e->dependances;
    for (long d : deps) {
        amont_table[d].erase(i);
        IndexSet orphans;
        const IndexSet readers = amont_table[i];
        for (long s : readers) {
            Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
            if (r != nullptr) {
                if (initialised(e->bdd_exp) && initialised(r->bdd_exp)) {
                    r->bdd_exp = bdd_manager->Bdd_compose(r->bdd_exp, e->bdd_var, e->bdd_exp);
                    if (r->abstraction == 0)
                        r->build_normal_dependances();
                }
            } else {
                orphans.insert(s);
            }
            amont_table[d].erase(i);
            amont_table[d].insert(s);
        }
        for (long s : orphans)
            amont_table[i].erase(s);
    }
    amont_table[i].clear();
}

// ------------------------------------------------------------------- clean

static void clean_wood(Bddexpressionwood& wood, const IndexSet& keep)
{
    for (auto it = wood.exp_ids.begin(); it != wood.exp_ids.end();) {
        long i = *it;
        if (i >= wood.nb_bdd_vars)
            break;
        Bddexpression* e = i >= 0 ? wood.exp_table[i] : nullptr;
        if (e == nullptr) {
            std::cerr << "Warning in Bddexpressionwood::clean():"
                      << "  Expression for id var " << i << " should be existed ..." << std::endl;
            ++it;
            continue;
        }
        // Kept or not, only an isolated equation can go: the lookup in
        // `keep` is left to those.
        if (wood.amont_table[i].empty() && e->dependances.empty() && keep.count(i) == 0) {
            dropped_equations().push_back(e);
            wood.exp_table[i] = nullptr;
            it = wood.exp_ids.erase(it);
            continue;
        }
        ++it;
    }
}

void Bddexpressionwood::clean(std::list<long>& keep)
{
    IndexSet kept(keep.begin(), keep.end());
    clean_wood(*this, kept);
}

void Bddexpressionwood::clean(IndexSet& keep)
{
    clean_wood(*this, keep);
}

// --------------------------------------------------- restriction, quantifiers

// Whether the dependances of e are the support of its right member as
// build_normal_dependances would make them, so that a rebuild keeps them.
static bool support_is_current(const Bddexpressionwood& wood, const Bddexpression& e)
{
    static std::vector<long> indexes;
    return e.abstraction == 0 && e.wood == &wood &&
           wood_rows::support_indexes(wood.bdd_manager, e.bdd_exp, indexes) &&
           wood_rows::same_members(e.dependances, indexes);
}

// `unchanged(f)` may tell that op gives f back as it is, creating no node:
// an equation so left whose dependances are already its support has
// nothing to change, and is passed by without the copies of its sets.
template <class Op, class Unchanged>
static void rewrite_all(Bddexpressionwood& wood, Op op, Unchanged unchanged)
{
    for (long i : wood.exp_ids) {
        Bddexpression* e = (i >= 0 && i < wood.nb_bdd_vars) ? wood.exp_table[i] : nullptr;
        if (e == nullptr || !initialised(e->bdd_exp))
            continue;
        if (unchanged(e->bdd_exp) && support_is_current(wood, *e)) {
            wood.update_bdd_vars(); // as the rebuild of the dependances does
            continue;
        }
        IndexSet before = e->set_of_index_used_variables();
        e->bdd_exp = op(e->bdd_exp);
        e->build_normal_dependances();
        IndexSet after = e->set_of_index_used_variables();
        if (before == after)
            continue;
        for (long v : set_priv(after, before))
            wood.amont_table[v].insert(i);
        for (long v : set_priv(before, after))
            wood.amont_table[v].erase(i);
    }
}

void Bddexpressionwood::reduce_expressions(bdd cube, std::list<int>& keep)
{
    bddpp_manager* m = bdd_manager;
    // A restriction by a cube that shares no variable with f is f itself.
    bool plain = initialised(cube) && cube.manager_ref() == m;
    rewrite_all(
        *this, [m, &cube](const bdd& f) { return m->Bdd_reduce(f, cube); },
        [m, &cube, plain](const bdd& f) {
            return plain && f.manager_ref() == m && !m->exists_common_variables(f, cube);
        });
    constants_propagation(keep);
}

// With exact tables an equation outside the readers of the cube's
// variables has a support disjoint from the cube, so the restriction gives
// it back unchanged without creating a node, and its tables do not move;
// only abstract equations may hold a BDD that their dependances do not
// describe. After the rewrite the tables are exact again, the candidates
// of the propagation are the previous ones plus what the rewrite touched,
// and the rebuild that ends the propagation is the repair of what it
// touched.
void Bddexpressionwood::reduce_expressions(bdd cube, std::list<int>& keep, ReductionRun& run)
{
    if (!run.exact) {
        reduce_expressions(cube, keep);
        run.exact = true;
        run.leftover.clear();
        run.abstract_with_bdd.clear();
        for (long i : exp_ids) {
            if (constant_candidate(i))
                run.leftover.insert(i);
            Bddexpression* e = (i >= 0 && i < nb_bdd_vars) ? exp_table[i] : nullptr;
            if (e != nullptr && e->abstraction != 0 && initialised(e->bdd_exp))
                run.abstract_with_bdd.insert(i);
        }
        return;
    }

    IndexSet rewritten = run.abstract_with_bdd;
    if (initialised(cube))
        for (long v : bdd_manager->set_of_index_depend_on(cube))
            if (v >= 0 && v < nb_bdd_vars)
                rewritten.insert(amont_table[v].begin(), amont_table[v].end());

    // The own index counts among the used variables, so the rewrite's
    // bookkeeping misses a reader entry an equation holds on itself; the
    // repair at the end settles every membership of the rewritten ones.
    Touched touched;
    IndexSet candidates = run.leftover;
    for (long i : rewritten) {
        Bddexpression* e = (i >= 0 && i < nb_bdd_vars) ? exp_table[i] : nullptr;
        if (e == nullptr || exp_ids.count(i) == 0 || !initialised(e->bdd_exp))
            continue;
        IndexSet before = e->set_of_index_used_variables();
        e->bdd_exp = bdd_manager->Bdd_reduce(e->bdd_exp, cube);
        e->build_normal_dependances();
        IndexSet after = e->set_of_index_used_variables();
        candidates.insert(i);
        touched.add(i, before.begin(), before.end());
        if (before == after)
            continue;
        for (long v : set_priv(after, before)) {
            amont_table[v].insert(i);
            candidates.insert(v);
        }
        for (long v : set_priv(before, after))
            amont_table[v].erase(i);
    }
    for (auto it = candidates.begin(); it != candidates.end();)
        it = constant_candidate(*it) ? std::next(it) : candidates.erase(it);

    IndexSet removed;
    propagate_constants(candidates, keep, removed, &touched);
    for (long i : removed) {
        exp_ids.erase(i);
        run.abstract_with_bdd.erase(i);
    }
    run.leftover = repair_readers(touched);
}

void Bddexpressionwood::reduce_expressions(bdd cube)
{
    std::list<int> keep;
    reduce_expressions(cube, keep);
}

void Bddexpressionwood::reduce_expressions_when_var_forgotten_by_exist_op(long var)
{
    bddpp_manager* m = bdd_manager;
    bdd v = m->Bdd_var_by_index(var);
    rewrite_all(
        *this, [m, &v](const bdd& f) { return m->Bdd_exist(f, v); }, [](const bdd&) { return false; });
    constants_propagation();
}

void Bddexpressionwood::reduce_expressions_when_var_forgotten_by_forall_op(long var)
{
    bddpp_manager* m = bdd_manager;
    bdd v = m->Bdd_var_by_index(var);
    rewrite_all(
        *this, [m, &v](const bdd& f) { return m->Bdd_forall(f, v); }, [](const bdd&) { return false; });
    constants_propagation();
}

// The first equation by (early date, index) with readers and dependances,
// among dates 0 to nb_level: the order of a walk level by level.
long Bddexpressionwood::reduce_proposition_by_variable()
{
    long best = -1;
    for (long i = 0; i < nb_bdd_vars; ++i) {
        Bddexpression* e = exp_table[i];
        if (e == nullptr || amont_table[i].empty() || e->dependances.empty())
            continue;
        if (e->early_date < 0 || e->early_date > nb_level)
            continue;
        if (best < 0 || e->early_date < exp_table[best]->early_date)
            best = i;
    }
    return best < 0 ? -1 : *exp_table[best]->dependances.begin();
}

// An uninitialised right member (an abstract equation) is passed by: it
// has no implicant to give.
bdd Bddexpressionwood::reduce_proposition_by_assertion()
{
    for (long i : latest_sort()) {
        Bddexpression* e = exp_table[i];
        if (e == nullptr || !initialised(e->bdd_exp) || constant_value(e->bdd_exp) >= 0)
            continue;
        return bdd_manager->Bdd_one_implicant(e->bdd_exp);
    }
    return bdd_manager->Bdd_one();
}

// ---------------------------------------------------- Shannon, loop breaking

void Bddexpression::Shannon_expand(long var, long& positive, long& negative)
{
    positive = -3;
    negative = -3;
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_exp) || var < 0 ||
        var >= wood->bdd_manager->variables_number)
        return;
    bddpp_manager* m = wood->bdd_manager;
    bdd x = m->Bdd_var_by_id(var);
    std::string v = m->Name_var_by_bdd(x);
    bdd pos_var = wood->New_var_last(name + "_" + v);
    bdd neg_var = wood->New_var_last(name + "_not" + v);
    bdd not_x = m->Bdd_not(x);
    bdd pos_exp = m->Bdd_cube_reduce(bdd_exp, x);
    bdd neg_exp = m->Bdd_cube_reduce(bdd_exp, not_x);
    new Bddexpression(wood, pos_var, pos_exp, 0, 0);
    new Bddexpression(wood, neg_var, neg_exp, 0, 0);
    bdd split = m->Bdd_ite(x, pos_var, neg_var);
    setBddExp(split, 0, 0);
    positive = m->Bdd_if_index(pos_var);
    negative = m->Bdd_if_index(neg_var);
}

IndexSet Bddexpressionwood::loop_breaking(IndexSet candidates, int& flag)
{
    IndexSet result;
    IndexSet done;
    for (long v = 0; v < nb_bdd_vars; ++v)
        if (candidates.count(v) == 0)
            done.insert(v);
    nb_level = 0;
    std::list<long> loop = loop_detection();
    flag = 1;
    while (!loop.empty() && flag == 1) {
        std::vector<long> count(nb_bdd_vars, 0);
        for (long c : loop) {
            Bddexpression* e = exp_table[c];
            if (e == nullptr)
                continue;
            for (long d : e->dependances)
                if (d >= 0 && d < nb_bdd_vars)
                    ++count[d];
        }
        long pick = -1;
        for (long v = 0; v < nb_bdd_vars; ++v) {
            if (done.count(v) != 0 || count[v] <= 0)
                continue;
            Bddexpression* e = exp_table[v];
            if (e != nullptr && !e->dependances.empty())
                continue;
            if (pick < 0 || count[v] > count[pick])
                pick = v;
        }
        if (pick < 0) {
            flag = 0;
            break;
        }
        done.insert(pick);
        long m = bdd_manager->variables_number;
        std::vector<long> positive_map(m), negative_map(m);
        for (long k = 0; k < m; ++k)
            positive_map[k] = negative_map[k] = k;
        for (long c : loop) {
            Bddexpression* e = (c < nb_bdd_vars) ? exp_table[c] : nullptr;
            if (e == nullptr)
                continue;
            long p = -3, n = -3;
            e->Shannon_expand(pick, p, n);
            if (p >= 0) {
                positive_map[c] = p;
                done.insert(p);
                result.insert(p);
            }
            if (n >= 0) {
                negative_map[c] = n;
                done.insert(n);
                result.insert(n);
            }
        }
        for (long k = m; k < nb_bdd_vars; k += 2) {
            Bddexpression* e = exp_table[k];
            if (e != nullptr && initialised(e->bdd_exp)) {
                bdd f = bdd_manager->Bdd_replace_vars(e->bdd_exp, positive_map.data());
                e->setBddExp(f, 0, 0);
            }
            if (k + 1 >= nb_bdd_vars)
                break;
            e = exp_table[k + 1];
            if (e != nullptr && initialised(e->bdd_exp)) {
                bdd f = bdd_manager->Bdd_replace_vars(e->bdd_exp, negative_map.data());
                e->setBddExp(f, 0, 0);
            }
        }
        nb_level = 0;
        loop = loop_detection();
    }
    return result;
}
