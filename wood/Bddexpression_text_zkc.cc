// The wood in the compiled-module file (the current layout and the two
// older ones) and the dependence summary. `table` gives each variable
// index its number in the file, -1 for a variable the file does not carry.

#include "wood/Bddexpression.h"

#include <vector>

namespace {

bool initialised(const bdd& f) { return Bddexpressionwood::bdd_initialised(f); }

} // namespace

// "early late var:root,link" — the part both current layouts share.
void Bddexpression::put_zkc_2_0_4(std::ostream& out, long* table)
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var))
        return;
    long index = wood->bdd_manager->Bdd_if_index(bdd_var);
    out << early_date << " " << getLateDate() << " " << table[index] << ":";
    if (initialised(bdd_exp))
        out << wood->bdd_manager->incremental_id(bdd_exp.node()) << "," << bdd_exp.link_type();
    else
        out << -3 << "," << -3;
}

void Bddexpression::put_zkc(std::ostream& out, long* table)
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var))
        return;
    put_zkc_2_0_4(out, table);
    out << ",(";
    for (long d : dependances)
        out << table[d] << " ";
    out << ")";
}

void Bddexpression::put_zkc_0_3_0(std::ostream& out, long* table, int level)
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var) ||
        !initialised(bdd_exp))
        return;
    out << early_date << " " << getLateDate() << '\n';
    wood->bdd_manager->ZKC_print(out, table, bdd_var, bdd_exp, level);
}

// The equation as a Lustre definition, for the comments of the older
// layouts: "name = sum;" with the Lustre words.
void Bddexpression::put_lustre_compatibilite(std::ostream& out, int level)
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var)) {
        out << "   not defined!";
        return;
    }
    bddpp_manager* m = wood->bdd_manager;
    out << m->Name_var_by_bdd(bdd_var) << " = ";
    int value = Bddexpressionwood::bdd_constant_value(bdd_exp);
    if (!initialised(bdd_exp))
        out << exp_def << "()";
    else if (value >= 0)
        out << (value == 1 ? "true" : "false");
    else
        out << m->Print_sop_to_String(" or ", " and ", "not ", "", bdd_exp, level);
    out << ";";
}

void Bddexpressionwood::Put_zkc(std::ostream& out, long* table, int comments)
{
    std::list<bdd> roots;
    for (long i : exp_ids) {
        Bddexpression* e = (i < nb_bdd_vars) ? exp_table[i] : nullptr;
        // An abstract equation has no root to number.
        if (e != nullptr && table[i] != -1 && initialised(e->bdd_exp))
            roots.push_back(e->bdd_exp);
    }
    bdd_manager->Print_bdds_list_by_nodes_list(out, roots, table);
    out << "expressions:" << '\n';
    // The comments print nodes through an unmarked walk; the node list has
    // just marked every root's cone.
    if (comments != 0)
        bdd_manager->Bdd_global_clear_marks();
    for (long i : exp_ids) {
        Bddexpression* e = (i < nb_bdd_vars) ? exp_table[i] : nullptr;
        if (e == nullptr)
            continue;
        if (table[i] == -1) {
            if (comments != 0) {
                out << "// no generate expression about:" << i << ":";
                e->put_doc(out, "node");
                out << '\n' << '\n';
            }
            continue;
        }
        if (comments != 0) {
            out << "// expression " << i << ":";
            e->put_doc(out, "node");
            out << '\n';
        }
        e->put_zkc(out, table);
        out << '\n';
    }
}

// Comments of the older layouts, in the Lustre form.
static void put_old_comments(std::ostream& out, Bddexpression* e, long i, long number,
                             int comments)
{
    if (comments == 0)
        return;
    if (number == -1) {
        out << "// no generate expression about:" << i << ":";
        e->put_lustre_compatibilite(out, 1);
        out << '\n' << '\n';
    } else {
        out << "// expression " << i << ":";
        e->put_lustre_compatibilite(out, 1);
        out << '\n';
    }
}

void Bddexpressionwood::Put_zkc_2_0_4(std::ostream& out, long* table, int comments)
{
    std::list<bdd> roots;
    for (long i : exp_ids) {
        Bddexpression* e = (i < nb_bdd_vars) ? exp_table[i] : nullptr;
        // An abstract equation has no root to number.
        if (e != nullptr && table[i] != -1 && initialised(e->bdd_exp))
            roots.push_back(e->bdd_exp);
    }
    bdd_manager->Print_bdds_list_by_nodes_list(out, roots, table);
    out << "expressions:" << '\n';
    for (long i : exp_ids) {
        Bddexpression* e = (i < nb_bdd_vars) ? exp_table[i] : nullptr;
        if (e == nullptr)
            continue;
        put_old_comments(out, e, i, table[i], comments);
        if (table[i] == -1)
            continue;
        e->put_zkc_2_0_4(out, table);
        out << '\n';
    }
}

void Bddexpressionwood::Put_zkc_0_3_0(std::ostream& out, long* table, int level, int comments)
{
    for (long i : exp_ids) {
        Bddexpression* e = (i < nb_bdd_vars) ? exp_table[i] : nullptr;
        if (e == nullptr)
            continue;
        put_old_comments(out, e, i, table[i], comments);
        if (table[i] == -1)
            continue;
        e->put_zkc_0_3_0(out, table, level);
        out << '\n';
    }
}

// One line per carried variable: what it reads and what reads it, both
// restricted to `filter` and renumbered, with the two critical paths.
// `source`, when given, names the file every line points into.
void Bddexpressionwood::put_zka_lines(std::ostream& out, long* table, IndexSet& filter,
                                      const std::string* source)
{
    for (long i = 0; i < nb_bdd_vars; ++i) {
        IndexSet none_down, none_up;
        IndexSet down = down_dependances(i, 1, none_down);
        IndexSet up = up_dependances(i, 1, none_up);
        down = set_reencoding(set_inter(down, filter), table);
        up = set_reencoding(set_inter(up, filter), table);
        if (table[i] < 0)
            continue;
        out << table[i] << " : ";
        put_set(out, up) << ":" << up_critical_path(i, 1, 1) << ", ";
        put_set(out, down) << ":" << down_critical_path(i, 1, 0);
        if (source != nullptr) {
            out << "[\"" << *source << ".zkc:" << table[i] << "\"]";
        } else {
            Bddexpression* e = exp_table[i];
            if (e != nullptr && !e->exp_def.empty())
                out << "[\"" << e->exp_def << "\"]";
        }
        out << ";" << '\n';
    }
}

void Bddexpressionwood::Put_zka(std::ostream& out, long* table, IndexSet& filter, int)
{
    put_zka_lines(out, table, filter, nullptr);
}

void Bddexpressionwood::Put_zka(std::ostream& out, long* table, IndexSet& filter, int,
                                std::string source)
{
    put_zka_lines(out, table, filter, &source);
}
