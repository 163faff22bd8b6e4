// Equations as target text: the one rule shared by every target that
// prints node by node, and the words of each target for it.
//
// Marks are cleared once per pass (earliest_equations) and never between
// equations: a node printer marks what it writes, so a node shared by two
// equations is written once, at the first one that needs it.

#include "wood/Bddexpression.h"
#include "support/text_out.h"

#include <ostream>

equation_walk Bddexpressionwood::earliest_equations()
{
    std::vector<Bddexpression*> result;
    if (bdd_manager == nullptr)
        return equation_walk(std::move(result));
    bdd_manager->Bdd_global_clear_marks();
    std::vector<long> order = earliest_order();
    result.reserve(order.size());
    for (long index : order) {
        if (index < 0 || index >= nb_bdd_vars)
            continue;
        if (Bddexpression* e = exp_table[index])
            result.push_back(e);
    }
    return equation_walk(std::move(result));
}

void equation_walk::iterator::fetch_ahead()
{
    // Four equations apart: the equation itself, then its nodes, then the
    // name slot of its variable.
    constexpr std::ptrdiff_t step = 4;
    const std::ptrdiff_t left = end_ - at_;
    const bool primed = primed_;
    primed_ = true;
    for (std::ptrdiff_t k = primed ? 3 * step : 0; k <= 3 * step && k < left; k++)
        __builtin_prefetch(at_[k]);
    for (std::ptrdiff_t k = primed ? 2 * step : 0; k <= 2 * step && k < left; k++) {
        const Bddexpression* e = at_[k];
        __builtin_prefetch(e->bdd_var.node());
        __builtin_prefetch(e->bdd_exp.node());
    }
    for (std::ptrdiff_t k = primed ? step : 0; k <= step && k < left; k++) {
        const Bddexpression* e = at_[k];
        const bdd_node* n = e->bdd_var.node();
        const bddpp_manager* m = e->bdd_var.manager_ref();
        if (n != nullptr && m != nullptr) m->prefetch_var_name(n->id);
    }
}

void Bddexpression::put_equation(std::ostream& out, const EquationForm& form)
{
    if (!Bddexpressionwood::bdd_initialised(bdd_var) || !Bddexpressionwood::bdd_initialised(bdd_exp))
        return;
    bddpp_manager* manager = bdd_exp.manager_ref();
    std::string var = manager->Name_var_by_bdd(bdd_var);
    if (manager->Bdd_is_var(bdd_exp)) {
        form.copy(out, var, manager->Name_var_by_bdd(bdd_exp));
        return;
    }
    form.nodes(out, manager, bdd_exp.node());
    form.root(out, var, bdd_node_global_id(bdd_exp), bdd_link_type(bdd_exp) != 1);
}

namespace {

// Each node is a multiplexer cover; nets are prefix "_" global_id.
class BlifForm : public EquationForm {
public:
    explicit BlifForm(const std::string& prefix) : prefix(prefix) {}
    void copy(std::ostream& out, const std::string& var, const std::string& x) const override
    {
        text_out(out) << ".names " << x << " " << var << "\n1 1\n";
    }
    void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const override
    {
        manager->Print_node_for_eval_BLIF("", "", prefix, out, root);
    }
    void root(std::ostream& out, const std::string& var, long root, bool negated) const override
    {
        text_out(out) << ".names " << prefix << "_" << root << " " << var << "\n" << (negated ? "0 1" : "1 1") << "\n";
    }

private:
    const std::string& prefix;
};

// C statements over one node array; outputs are reached through their
// pointer, hence the "*" in the place of the third blank.
class CForm : public EquationForm {
public:
    CForm(const std::string& array, const name_set& outputs) : array(array), outputs(outputs) {}
    void copy(std::ostream& out, const std::string& var, const std::string& x) const override
    {
        text_out(out) << lead(var) << var << "= " << x << ";";
    }
    void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const override
    {
        manager->Print_node_for_eval(" || ", " && ", "!", "", "", "", "0", ";", "   ", array, out, root);
    }
    void root(std::ostream& out, const std::string& var, long root, bool negated) const override
    {
        text_out(out) << lead(var) << var << "= " << (negated ? "!" : "") << array << "[" << root << "];";
    }

private:
    const char* lead(const std::string& var) const
    {
        return outputs.count(var) != 0 ? "  *" : "   ";
    }
    const std::string& array;
    const name_set& outputs;
};

// C# statements over one bool array; the true terminal is "!false". The
// nodes are led by `indent`, the plain copy and the root by nothing: the
// caller's lead stands before the first line.
class CSharpForm : public EquationForm {
public:
    CSharpForm(const std::string& array, const std::string& indent) : array(array), indent(indent) {}
    void copy(std::ostream& out, const std::string& var, const std::string& x) const override
    {
        text_out(out) << var << "= " << x << ";";
    }
    void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const override
    {
        manager->Print_node_for_eval(" || ", " && ", "!", "", "", "", "false", ";", indent, array, out, root);
    }
    void root(std::ostream& out, const std::string& var, long root, bool negated) const override
    {
        text_out(out) << var << "= " << (negated ? "!" : "") << array << "[" << root << "];";
    }

private:
    const std::string& array;
    const std::string& indent;
};

// NuSMV definitions; node lines have no blank before ":=", the
// equation's line has.
class NusmvForm : public EquationForm {
public:
    void copy(std::ostream& out, const std::string& var, const std::string& x) const override
    {
        text_out(out) << "   " << var << " := " << x << ";";
    }
    void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const override
    {
        manager->Print_node_for_eval_NUSMV("", "", "   ", "node", out, root);
    }
    void root(std::ostream& out, const std::string& var, long root, bool negated) const override
    {
        text_out(out) << "   " << var << " := " << (negated ? "!" : "") << "node_" << root << ";";
    }
};

// Lustre equations over one local per node, "<n>_<id>".
class LustreForm : public EquationForm {
public:
    explicit LustreForm(const std::string& n) : n(n) {}
    void copy(std::ostream& out, const std::string& var, const std::string& x) const override
    {
        text_out(out) << "   " << var << "= " << x << ";";
    }
    void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const override
    {
        manager->Print_node_for_eval_arrayless(" or ", " and ", "not ", "", "", "", "false", ";", "   ", n, out,
                                               root);
    }
    void root(std::ostream& out, const std::string& var, long root, bool negated) const override
    {
        text_out(out) << "   " << var << "= " << (negated ? "not " : "") << n << "_" << root << ";";
    }

private:
    const std::string& n;
};

} // namespace

void Bddexpression::put_nusmv(std::ostream& out)
{
    put_equation(out, NusmvForm());
}

void Bddexpression::put_lustre_arrayless(std::ostream& out, const std::string& n)
{
    put_equation(out, LustreForm(n));
}

void Bddexpression::put_blif(std::ostream& out, const std::string& prefix)
{
    put_equation(out, BlifForm(prefix));
}

void Bddexpression::put_c(std::ostream& out, const std::string& array, const name_set& outputs)
{
    put_equation(out, CForm(array, outputs));
}

void Bddexpression::put_csharp(std::ostream& out, const std::string& array, int indent)
{
    std::string lead(indent > 0 ? indent : 0, ' ');
    out << lead;
    put_equation(out, CSharpForm(array, lead));
}

void Bddexpressionwood::Put_blif(std::ostream& out, const std::string& prefix)
{
    for (Bddexpression* e : earliest_equations()) {
        e->put_blif(out, prefix);
        out.put('\n');
    }
}

std::vector<Bddexpression*> Bddexpressionwood::indexed_equations()
{
    std::vector<Bddexpression*> result;
    if (bdd_manager == nullptr)
        return result;
    bdd_manager->Bdd_global_clear_marks();
    for (long index = 0; index < nb_bdd_vars; index++)
        if (Bddexpression* e = exp_table[index])
            result.push_back(e);
    return result;
}

void Bddexpressionwood::Lustre_writing_node_used(long size, int* used)
{
    if (bdd_manager == nullptr)
        return;
    bdd_manager->Bdd_global_clear_marks();
    for (long index : exp_ids) {
        Bddexpression* e = index >= 0 && index < nb_bdd_vars ? exp_table[index] : nullptr;
        // What put_equation would print: both members initialised, a right
        // member that is no plain variable.
        if (e == nullptr || e->getAbstraction() != 0 || !bdd_initialised(e->bdd_var) ||
            !bdd_initialised(e->bdd_exp) || bdd_manager->Bdd_is_var(e->bdd_exp))
            continue;
        bdd_manager->Node_for_eval_used(e->bdd_exp.node(), size, used);
    }
    bdd_manager->Bdd_global_clear_marks();
}
