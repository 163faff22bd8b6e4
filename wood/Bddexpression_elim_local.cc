// Elimination of local variables one at a time.
//
// suppress_local(var) substitutes one equation into its readers and then
// runs a constants propagation over the whole wood and a rebuild of every
// dependence table. After the first such rebuild the tables are exact
// (every reader entry matches a dependance and the reverse), and a later
// elimination only disturbs the neighbourhood of the eliminated variable.
// suppress_local(list) uses that: it runs the first elimination as it
// stands, then keeps the tables exact by repairing only what each later
// elimination touched; handed a run of restrictions whose tables are exact,
// it repairs from the first elimination on. The equations, the BDD nodes
// created and their order, and every table come out as from the one-by-one
// calls.

#include "wood/Bddexpression.h"

#include <algorithm>
#include <iostream>
#include <iterator>

// Steps 1 to 4 of one elimination: the checks, the substitution into the
// readers and the removal of the equation. False when the wood was left
// alone. `touched` learns every (reader, variable) membership that may
// disagree with the reader's dependances afterwards.
bool Bddexpressionwood::substitute_local(long i, Touched* touched)
{
    if (i < 0 || i >= nb_bdd_vars)
        return false;
    Bddexpression* e = exp_table[i];
    if (e == nullptr || amont_table[i].empty() || e->dependances.empty())
        return false;
    if (amont_table[i].count(i) != 0 || e->dependances.count(i) != 0) {
        report_self_dependance(i);
        return false;
    }

    // e is no reader of itself, so its dependances stay as they are below.
    const IndexSet& deps = e->dependances;
    // A reader's own dependances are not noted: the substitution below
    // takes none of them out but i, and the repair reads them as they
    // stand before it rebuilds them.
    if (touched) {
        touched->add(i, deps.begin(), deps.end());
        for (long s : amont_table[i])
            touched->add(s, i);
    }

    // The readers are taken again for each dependance: one whose slot is
    // empty is dropped from them after its first round.
    //
    // Each reader is substituted once per dependance, but only the first
    // round can find the variable. A substitution handed an expression it
    // returned unchanged does the very same walk again over nodes that all
    // exist by now: it makes no node and returns the same expression. Such
    // readers are marked `settled` and skipped (not on the plain operators,
    // which keep every call).
    //
    // A reader's dependances become its old ones without i and with every
    // dependance of i. Those of a non-abstract reader are rebuilt from its
    // right member before anything but the notes above reads them again
    // (by the repair, or by the whole rebuild that follows a call without
    // notes), so only the others are written here.
    std::vector<long> readers;
    std::vector<long> removed;
    // Kept ascending, for the look-ups.
    std::vector<long> settled;
    const bool skip_settled = !bdd_manager->plain_operators;
    auto is_settled = [&settled](long s) { return std::binary_search(settled.begin(), settled.end(), s); };
    for (long d : deps) {
        amont_table[d].erase(i);
        readers.assign(amont_table[i].begin(), amont_table[i].end());
        removed.clear();
        for (long s : readers) {
            Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
            if (r != nullptr) {
                if (bdd_initialised(r->bdd_exp) && bdd_initialised(e->bdd_exp) &&
                    (!skip_settled || !is_settled(s))) {
                    bdd before = r->bdd_exp;
                    r->bdd_exp = bdd_manager->Bdd_compose(before, e->bdd_var, e->bdd_exp);
                    if (skip_settled && r->bdd_exp.node() == before.node() &&
                        r->bdd_exp.link_type() == before.link_type())
                        settled.insert(std::upper_bound(settled.begin(), settled.end(), s), s);
                }
                bool rebuilt = r->abstraction == 0 && r->wood != nullptr && r->wood->bdd_manager != nullptr;
                if (!rebuilt) {
                    r->dependances.erase(i);
                    r->dependances.insert(d);
                }
            } else {
                removed.push_back(s);
            }
        }
        // amont_table[d] regains i here; the rebuild that follows drops it.
        if (!readers.empty()) {
            IndexSet& into = amont_table[d];
            into.insert(i);
            into.insert_ascending(readers.data(), readers.data() + readers.size());
            if (touched) {
                touched->add(i, d);
                for (long s : readers)
                    touched->add(s, d);
            }
        }
        for (long s : removed)
            amont_table[i].erase(s);
    }

    delete e;
    exp_table[i] = nullptr;
    amont_table[i].clear();
    exp_ids.erase(i);
    return true;
}

void Bddexpressionwood::suppress_local(long var)
{
    if (!substitute_local(var, nullptr))
        return;
    std::list<int> none;
    // The propagation rebuilds the reader tables exactly: there is nothing
    // left to prune.
    constants_propagation(none);
}

std::vector<long>& Bddexpressionwood::Touched::list_of(long reader)
{
    // Notes come in runs for one reader: the last one is tried first.
    if (last_ < used_ && entries_[last_].reader == reader)
        return entries_[last_].vars;
    constexpr std::size_t few = 16;
    if (used_ <= few) {
        for (std::size_t k = 0; k < used_; ++k)
            if (entries_[k].reader == reader) {
                last_ = k;
                return entries_[k].vars;
            }
    } else {
        auto found = where_.find(reader);
        if (found != where_.end()) {
            last_ = found->second;
            return entries_[last_].vars;
        }
    }
    if (used_ == entries_.size())
        entries_.emplace_back();
    Entry& entry = entries_[used_];
    entry.reader = reader;
    entry.vars.clear();
    last_ = used_++;
    if (used_ == few + 1) {
        for (std::size_t k = 0; k < used_; ++k)
            where_.emplace(entries_[k].reader, k);
    } else if (used_ > few + 1) {
        where_.emplace(reader, last_);
    }
    return entry.vars;
}

void Bddexpressionwood::Touched::clear()
{
    used_ = 0;
    last_ = 0;
    // A fresh index rather than a cleared one: clearing visits every
    // bucket, and most eliminations never make one.
    if (!where_.empty())
        std::unordered_map<long, std::size_t>().swap(where_);
}

const std::vector<Bddexpressionwood::Touched::Entry*>& Bddexpressionwood::Touched::sorted()
{
    order_.clear();
    for (std::size_t k = 0; k < used_; ++k) {
        std::vector<long>& vars = entries_[k].vars;
        std::sort(vars.begin(), vars.end());
        vars.erase(std::unique(vars.begin(), vars.end()), vars.end());
        order_.push_back(&entries_[k]);
    }
    std::sort(order_.begin(), order_.end(), [](const Entry* a, const Entry* b) { return a->reader < b->reader; });
    return order_;
}

// Makes the reader tables exact again for the memberships in `touched`,
// as the full rebuild would: dependances of a non-abstract equation come
// from its BDD, a reader entry exists exactly for each dependance of a
// filled slot. Returns the constant equations that gained a reader, which
// the next propagation has to take.
//
// The dependances a filled reader holds before its rebuild count among its
// touched variables: every pass notes the members it takes out of them,
// not those it leaves.
IndexSet Bddexpressionwood::repair_readers(Touched& touched)
{
    IndexSet gained;
    static std::vector<long> was;
    for (const Touched::Entry* entry : touched.sorted()) {
        long s = entry->reader;
        const std::vector<long>& noted = entry->vars;
        Bddexpression* r = (s >= 0 && s < nb_bdd_vars) ? exp_table[s] : nullptr;
        const std::vector<long>* touched_vars = &noted;
        if (r != nullptr) {
            was.clear();
            std::set_union(noted.begin(), noted.end(), r->dependances.begin(), r->dependances.end(),
                           std::back_inserter(was));
            touched_vars = &was;
            if (r->abstraction == 0)
                r->internal_build_dependances();
        }
        // Every member of the touched ones and of the dependances, each
        // once, in one merge of the two ascending runs.
        static const IndexSet none;
        const IndexSet& deps = r != nullptr ? r->dependances : none;
        auto t = touched_vars->begin(), t_end = touched_vars->end();
        auto d = deps.begin(), d_end = deps.end();
        while (t != t_end || d != d_end) {
            long x;
            bool read;
            if (d == d_end || (t != t_end && *t < *d)) {
                // Below every dependance not yet passed: no dependance.
                x = *t++;
                read = false;
            } else {
                x = *d++;
                read = true;
                if (t != t_end && *t == x)
                    ++t;
            }
            if (x < 0 || x >= nb_bdd_vars)
                continue;
            if (read) {
                if (amont_table[x].insert(s).second)
                    gained.insert(x);
            } else {
                amont_table[x].erase(s);
            }
        }
    }
    IndexSet leftover;
    for (long x : gained)
        if (constant_candidate(x))
            leftover.insert(x);
    return leftover;
}

void Bddexpressionwood::suppress_local(std::list<long>& vars)
{
    ReductionRun run;
    suppress_local(vars, run);
}

void Bddexpressionwood::suppress_local(std::list<long>& vars, ReductionRun& run)
{
    suppress_local(std::vector<long>(vars.begin(), vars.end()), run);
}

void Bddexpressionwood::suppress_local(const std::vector<long>& vars, ReductionRun& run)
{
    std::list<int> none;
    bool exact = run.exact;
    IndexSet leftover = std::move(run.leftover);
    run = ReductionRun();
    Touched touched;
    for (long v : vars) {
        if (!exact) {
            if (!substitute_local(v, nullptr))
                continue;
            constants_propagation(none);
            exact = true;
            for (long i : exp_ids)
                if (constant_candidate(i))
                    leftover.insert(i);
            continue;
        }

        // With exact tables, a constant equation can gain a reader entry
        // only as a dependance of v, and an equation can turn constant
        // only as a reader of v.
        IndexSet near;
        if (v >= 0 && v < nb_bdd_vars && exp_table[v] != nullptr) {
            near = amont_table[v];
            near.insert(exp_table[v]->dependances.begin(), exp_table[v]->dependances.end());
        }
        touched.clear();
        if (!substitute_local(v, &touched))
            continue;
        IndexSet candidates = leftover;
        for (long s : near)
            if (constant_candidate(s))
                candidates.insert(s);
        IndexSet removed;
        propagate_constants(candidates, none, removed, &touched);
        for (long i : removed)
            exp_ids.erase(i);
        leftover = repair_readers(touched);
    }
}
