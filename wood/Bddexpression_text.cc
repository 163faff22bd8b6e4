// Text forms of the wood for its developers and for the documentation:
// statistics, the stream forms of the wood and of one equation, the tree
// of what a variable depends on, and the readable equation lists. These
// texts appear inside fatal reports, so every word and blank stays as it
// is.

#include "wood/Bddexpression.h"
#include "support/text_out.h"

#include <map>
#include <sstream>
#include <utility>
#include <vector>

namespace {

bool initialised(const bdd& f) { return Bddexpressionwood::bdd_initialised(f); }

// The right member, or what stands for it, after " = ".
void put_right_member(std::ostream& out, const Bddexpression& e, bddpp_manager* m)
{
    if (initialised(e.bdd_exp)) {
        out << m->Print_sop_to_String(" + ", " * ", "!", "", e.bdd_exp, 1);
        if (e.abstraction != 0)
            out << "warning ABSTRACTION by " << e.exp_def << "()!";
    } else if (e.abstraction != 0) {
        out << e.exp_def << "()";
    } else {
        out << "--";
    }
}

// Everything of the stream form behind the name and the type.
void put_equation_body(std::ostream& out, const Bddexpression& e)
{
    if (e.wood == nullptr) {
        if (e.abstraction != 0)
            out << "- = " << e.exp_def << "()";
        return;
    }
    bddpp_manager* m = e.wood->bdd_manager;
    if (m != nullptr) {
        if (initialised(e.bdd_var))
            out << m->Name_var_by_bdd(e.bdd_var);
        else
            out << "-";
        out << " = ";
    } else {
        out << "- = ";
        m = e.bdd_exp.manager_ref();
    }
    put_right_member(out, e, m);
    out << "  weight: " << e.w << " usertype: " << e.user_type;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Bddexpression& e)
{
    out << "(" << (const void*)&e << ") <" << e.name << "> " << "[type:" << e.user_type << "]";
    put_equation_body(out, e);
    return out;
}

std::string Bddexpression::debug_in_string() const
{
    std::ostringstream out;
    out << "<" << name << "> ";
    put_equation_body(out, *this);
    return out.str();
}

void Bddexpressionwood::stat(std::ostream& out) const
{
    long manager_count = bdd_manager ? bdd_manager->variables_number : 0;
    out << "wood Bddexpression statistics:" << std::endl;
    out << "  - adress: " << (const void*)this << std::endl;
    out << "  - bbd variables number of the bdd manager: " << manager_count << std::endl;
    out << "  - variables number used : " << nb_bdd_vars << std::endl;
    if (manager_count != nb_bdd_vars)
        out << "INTERNAL ERROR: bdd variables number doesn't corresponding !!!" << std::endl;
    out << "  - arrays's length  : " << arrays_length << std::endl;
    out << "  - expression ids set ";
    put_set(out, exp_ids) << std::endl;
    out << "  - nb levels " << nb_level << std::endl;

    // Indices by date, gathered in one pass: a level lists its indices in
    // ascending order, as a pass per level would.
    std::map<long, std::pair<std::vector<long>, std::vector<long>>> by_level;
    for (long i = 0; i < nb_bdd_vars; ++i) {
        const Bddexpression* e = exp_table[i];
        if (e == nullptr)
            continue;
        if (e->early_date >= 0 && e->early_date <= nb_level)
            by_level[e->early_date].first.push_back(i);
        if (late_dates[i] >= 0 && late_dates[i] <= nb_level)
            by_level[late_dates[i]].second.push_back(i);
    }
    // Dates come from the file and may be anything up to the largest long:
    // a run of more than a million levels without any date is one line,
    // so that the listing ends.
    const long empty_run = 1000000;
    for (long level = 0; level <= nb_level; ++level) {
        auto next = by_level.lower_bound(level);
        long last_empty = next == by_level.end() ? nb_level : next->first - 1;
        if (last_empty - level >= empty_run) {
            out << "      levels: " << level << " to " << last_empty << ": no date" << std::endl;
            if (last_empty == nb_level)
                break;
            level = last_empty;
            continue;
        }
        out << "      level: " << level << std::endl;
        auto found = by_level.find(level);
        out << "        early date: ";
        if (found != by_level.end())
            for (long i : found->second.first)
                out << i << " ";
        out << std::endl;
        out << "        late date: ";
        if (found != by_level.end())
            for (long i : found->second.second)
                out << i << " ";
        out << std::endl;
    }
    out << std::endl;
    out << "   earliest date sorting:";
    for (long i : earliest_order())
        out << i << " ";
    out << std::endl << std::endl;
    out << "   latest date sorting:";
    for (long i : latest_sort())
        out << i << " ";
    out << std::endl << std::endl;
}

std::ostream& operator<<(std::ostream& out, const Bddexpressionwood& wood)
{
    wood.stat(out);
    out << "Equations list:" << std::endl;
    for (long i = 0; i < wood.nb_bdd_vars; ++i) {
        out << i << ": ";
        const Bddexpression* e = wood.exp_table[i];
        if (e != nullptr) {
            out << *e << " dates (" << e->early_date << "," << e->getLateDate() << ")"
                << " from vars ";
            put_set(out, e->dependances);
        } else {
            out << wood.bdd_manager->Name_var_by_index(i) << " = - dates (0," << wood.late_dates[i]
                << ")";
        }
        out << "  to vars ";
        put_set(out, wood.amont_table[i]) << std::endl;
    }
    return out;
}

// The walk up from var, depth first, without recursion: a stack of
// (variable, depth) popped in the order the recursive walk would visit.
// A variable met a second time, anywhere in the tree, is marked "-->" and
// not expanded again.
void Bddexpressionwood::stat_early_dep(std::ostream& out, long var)
{
    IndexSet visited;
    std::vector<std::pair<long, long>> stack;
    stack.emplace_back(var, 0);
    while (!stack.empty()) {
        long v = stack.back().first;
        long depth = stack.back().second;
        stack.pop_back();
        if (depth > 0) {
            for (long k = 0; k < depth; ++k)
                out << "   ";
            out << "| ";
        }
        std::string name = bdd_manager->Name_var_by_index(v);
        if (visited.count(v) != 0) {
            out << name << " (" << v << ") -->" << std::endl;
            continue;
        }
        out << name << " (" << v << ")" << std::endl;
        visited.insert(v);
        const Bddexpression* e = (v >= 0 && v < nb_bdd_vars) ? exp_table[v] : nullptr;
        if (e == nullptr)
            continue;
        for (auto it = e->dependances.rbegin(); it != e->dependances.rend(); ++it)
            stack.emplace_back(*it, depth + 1);
    }
}

// ------------------------------------------------------------ readable forms

void Bddexpression::put_basic_doc(std::ostream& out, int level)
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var) ||
        !initialised(bdd_exp))
        return;
    bddpp_manager* m = wood->bdd_manager;
    out << m->Name_var_by_bdd(bdd_var) << " = "
        << m->Print_sop_to_String(" or ", " and ", "not ", "", bdd_exp, level);
}

void Bddexpressionwood::Put_basic_doc(std::ostream& out, int level)
{
    for (long i : earliest_order()) {
        exp_table[i]->put_basic_doc(out, level);
        out << ";" << std::endl;
    }
}

// Node lines go through the NuSMV node printer, which prints a node only
// while it is unmarked: the caller clears the marks, and equations printed
// in a row share their nodes.
void Bddexpression::put_doc(std::ostream& out, std::string prefix)
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var)) {
        out << "   not defined!";
        return;
    }
    bddpp_manager* m = wood->bdd_manager;
    std::string left = m->Name_var_by_bdd(bdd_var) + "   ";
    if (!initialised(bdd_exp)) {
        out << left << "= ???";
        return;
    }
    int value = Bddexpressionwood::bdd_constant_value(bdd_exp);
    if (value >= 0) {
        out << left << (value == 1 ? "= true;" : "= false;");
        return;
    }
    if (m->Bdd_is_var(bdd_exp)) {
        out << left << "= " << m->Name_var_by_bdd(bdd_exp) << ";";
        return;
    }
    m->Print_node_for_eval_NUSMV("", "", "   ", prefix, out, bdd_exp.node());
    text_out(out) << left << (bdd_exp.link_type() == 1 ? "= " : "= !") << prefix << "_" << bdd_exp.node()->global_id
                  << ";";
}

void Bddexpressionwood::Put_doc(std::ostream& out, std::string prefix)
{
    if (bdd_manager != nullptr)
        bdd_manager->Bdd_global_clear_marks();
    for (long i : earliest_order()) {
        exp_table[i]->put_doc(out, prefix);
        out << '\n';
    }
}
