// Lustre node of a module: inputs and outputs as the node's flows, every
// other wire and every BDD node a local, registers and memorised signals
// through "->pre", values as "<name>_val" flows. No arrays: node <id> is
// the local "<m>_node_<id>".

#include "model/module.h"

#include "data/data.h"
#include "model/module_bindings.h"
#include "support/text_out.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>
#include <vector>

namespace {

// A port's presence flow is left out when its variable is gone (-1) or
// was never given one (-2).
bool absent(long id)
{
    return id == -1 || id == -2;
}

// The clocks met in the equations, each once, in the order of their
// variables.
struct ClockOrder {
    Module* m;
    bool operator()(Signal* a, Signal* b) const
    {
        Bddexpressionwood* wood = m->getBddWood();
        long ia = a->getInitialOverBddId(m, wood), ib = b->getInitialOverBddId(m, wood);
        return ia != ib ? ia < ib : a < b;
    }
};

} // namespace

std::set<long> Module::get_really_used_wood_variables()
{
    if (wood == nullptr)
        return {};
    IndexSet all = wood->Set_of_index_used_variables();
    std::set<long> used(all.begin(), all.end());
    if (inputs != nullptr)
        for (Signal* s : *inputs) {
            long over = s->getOverBddId(this, wood);
            if (over >= 0 && !s->isPre())
                used.erase(over);
        }
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            long over = s->getInitialOverBddId(this, wood);
            long under = s->getInitialUnderBddId(this, wood);
            if (over != -1)
                used.erase(over);
            if (under != -1)
                used.erase(under);
        }
    return used;
}

void Module::LUSTRE_put(std::ostream& os, int)
{
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;

    // Constants without a value are the user's: they are not declared here.
    if (Compilation::GDataConstantTable != nullptr) {
        if (std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList())
            for (ConstantDecl* k : *constants)
                if (k != nullptr && k->getValueTable() != nullptr) {
                    k->LUSTRE_put(os, this);
                    os << "\n";
                }
        os << "\n";
    }

    // The flows of one side of the node, "; " between them.
    auto ports = [&](std::list<Signal*>* list, bool output, bool first) {
        if (list == nullptr)
            return;
        for (Signal* s : *list) {
            long over = output ? s->getInitialOverBddId(this, wood) : s->getOverBddId(this, wood);
            if (!absent(over)) {
                std::string var = wood->Name_var_by_index(over);
                os << (first ? "" : "; ") << var << ": bool";
                first = false;
                if (s->isValued(this))
                    os << "; " << var << "_val: " << s->getValueType(this);
            }
            if (!finalised) {
                long under = output ? s->getInitialUnderBddId(this, wood) : s->getUnderBddId(this, wood);
                if (under != -1) {
                    os << (first ? "" : "; ") << wood->Name_var_by_index(under) << ": bool";
                    first = false;
                }
            }
        }
    };

    os << "node " << name << "(";
    if (!finalised)
        os << " _s_SET" << name << ", _s_RESET" << name;
    if (inputs == nullptr || inputs->empty())
        os << (finalised ? "" : "; ") << "useless : bool";
    else
        ports(inputs, false, finalised);
    os << ")\n"
       << "     returns (";
    if (!finalised)
        os << "_s_RTL:bool" << name;
    ports(outputs, true, finalised);
    os << ");\n\n";

    os << "var\n";
    std::set<long> used = get_really_used_wood_variables();
    bool first = true;
    {
        text_out out(os);
        for (long index : used) {
            out << (first ? "" : ",\n") << "  " << wood->Name_var_by_index(index);
            first = false;
        }
        if (!first)
            out << ": bool;\n";
    }

    // One local per node that the equations write; the table's last id is
    // never declared.
    std::string n = name + "_node";
    long size = wood->my_bdd_manager()->Bdd_total_size();
    std::vector<int> reached(size > 0 ? size : 0, 0);
    wood->Lustre_writing_node_used(size, reached.data());
    {
        text_out out(os);
        for (long id = 0; id < size - 1; id++)
            if (reached[id])
                out << "  " << n << "_" << id << ": bool;\n";
    }

    if (locals != nullptr)
        for (Signal* s : *locals)
            if (s->isValued(this) && getBinding(s->getName(this)) == nullptr)
                os << "  " << wood->Name_var_by_index(s->getInitialOverBddId(this, wood)) << "_val:"
                   << s->getValueType(this) << ";\n";
    std::vector<memorizedSignal*> pres = formats::memorised(this);
    for (memorizedSignal* pair : pres)
        if (pair->getPre()->isValued(this))
            os << "  " << pair->getPre()->getOriginalName() << "_val:" << pair->getPre()->getValueType(this)
               << ";\n";

    os << "let\n\n";

    for (regclass* r : formats::registers(this))
        os << "  " << r->actual_var()->getOverName(this) << "= " << (r->is_initialy_true() ? "true" : "false")
           << "->pre(" << r->next_var()->getOverName(this) << ");\n";
    for (memorizedSignal* pair : pres) {
        Signal* pre = pair->getPre();
        // A local is read through its current occurrence.
        Signal* actual = pair->getActual();
        std::string source = actual->isLocal() ? wood->Name_var_by_index(actual->getOverBddId(this, wood))
                                               : actual->getOriginalName();
        os << "  " << pre->getOriginalName() << "= " << "false ->pre(" << source << ");\n";
        if (pre->isValued(this))
            os << "  " << pre->getOriginalName() << "_val= " << pair->getInitialValue() << "->pre(" << source
               << "_val);\n";
    }

    os << "\n"
       << "  " << "-- outputs computing\n";
    std::set<std::string> outputNames;
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            long over = s->getInitialOverBddId(this, wood);
            if (!absent(over))
                outputNames.insert(wood->Name_var_by_index(over));
        }
    LUSTRE_put_equation(os, n, outputNames);
    os << "\n"
       << "tel\n";
}

void Module::LUSTRE_put_equation(std::ostream& os, const std::string& n, const std::set<std::string>&)
{
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;
    std::set<Signal*, ClockOrder> clocks(ClockOrder{this});
    for (Bddexpression* e : wood->earliest_equations()) {
        long index = e->own_index();
        if (e->getAbstraction() != 0) {
            DataBinding* binding = abstractEquationBinding(this, index, true);
            os << "  " << e->my_bddname() << " = ";
            binding->getValue()->LUSTRE_put(os, this);
            os << ";\n";
            continue;
        }
        e->put_lustre_arrayless(os, n);
        os << "\n";
        DataBinding* binding = formats::clockedBinding(this, index);
        if (binding != nullptr && binding->getClock() != nullptr)
            clocks.insert(binding->getClock());
    }

    // One flow per clock: the value of the first of its bound signals that
    // holds, else the type's zero.
    for (Signal* clock : clocks) {
        std::string c = wood->Name_var_by_index(clock->getInitialOverBddId(this, wood));
        std::string zero = zero_lustre(clock->getValueType(this));
        os << "  " << c << "_val =\n"
           << "    if " << c << " then \n";
        if (std::list<DataBinding*>* bindings = getDataBindingByClock(clock))
            for (DataBinding* b : *bindings) {
                Signal* bound = b->getSignal();
                os << "      if " << wood->Name_var_by_index(bound->getInitialOverBddId(this, wood)) << " then ";
                b->getValue()->LUSTRE_put(os, this);
                os << "\n"
                   << "      else \n";
            }
        os << "      " << zero << "\n"
           << "    else " << zero << ";\n";
    }
}
