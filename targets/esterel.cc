// Esterel target: one module whose body is a parallel of my_pre instances,
// one per register and memorised signal, beside a loop of present tests,
// one per equation, repeated each tick. Equations are sums of products
// over signal names, not node slots. The module my_pre (signals S and
// preS) is the user's.

#include "model/module.h"

#include "data/data.h"
#include "model/module_bindings.h"
#include "support/text_out.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>
#include <vector>

void Module::ESTEREL_put(std::ostream& os, int level)
{
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;

    os << "module " << name << ":\n";
    // Constants are declared without value, also when they have one.
    if (Compilation::GDataConstantTable != nullptr)
        if (std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList())
            for (ConstantDecl* k : *constants)
                if (k != nullptr && k->getValueTable() != nullptr) {
                    k->ESTEREL_put(os, this);
                    os << "\n";
                }
    os << "\n";

    // One statement per direction: "input a, b: T, c ;".
    auto putInterface = [&](std::list<Signal*>* signals, const char* keyword, const std::string& control) {
        bool first = true;
        if (!finalised) {
            os << keyword << control;
            first = false;
        } else if (signals != nullptr && !signals->empty()) {
            os << keyword;
        }
        if (signals != nullptr)
            for (Signal* s : *signals) {
                long over = s->getOverBddId(this, wood);
                if (formats::absentOver(over))
                    continue;
                os << (first ? "" : ", ") << wood->Name_var_by_index(over);
                first = false;
                if (s->isValued(this))
                    os << ": " << s->getValueType(this);
                if (!finalised) {
                    long under = s->getUnderBddId(this, wood);
                    if (under != -1)
                        os << ", " << wood->Name_var_by_index(under);
                }
            }
        os << " ;\n";
    };
    putInterface(inputs, "input ", "s_SET" + name + ", v_SET" + name + ", s_RESET" + name + ", v_RESET" + name);
    putInterface(outputs, "output ", "s_RTL" + name + ",v_RTL" + name);

    // Local signals: every variable of the wood that is no port.
    IndexSet used = wood->Set_of_index_used_variables();
    if (inputs != nullptr)
        for (Signal* s : *inputs)
            used.erase(s->getOverBddId(this, wood));
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            used.erase(s->getOverBddId(this, wood));
            used.erase(s->getUnderBddId(this, wood));
        }
    std::vector<long> localVars(used.begin(), used.end());
    if (!localVars.empty()) {
        os << "\n";
        bool first = true;
        for (long index : localVars) {
            os << (first ? "signal " : ",\n       ") << wood->Name_var_by_index(index);
            first = false;
            SignalRef* ref = signal_manager->getSignalRefById(index, wood);
            if (ref != nullptr && ref->isValued())
                os << ": " << ref->getType();
        }
        os << " in\n\n";
    }

    for (regclass* r : formats::registers(this)) {
        std::string actual = r->actual_var()->getOverName(this);
        os << "  [\n";
        if (r->is_initialy_true())
            os << "    emit " << actual << ";\n";
        os << "    run my_pre [signal " << r->next_var()->getOverName(this) << " / S, " << actual << " / preS]\n"
           << "  ]\n"
           << "  ||\n";
    }
    // A valued memorised signal is left to the user, marked in the text.
    std::vector<memorizedSignal*> pres = formats::memorised(this);
    for (memorizedSignal* pair : pres) {
        os << "  [\n"
           << "    run my_pre [signal " << pair->getPre()->getOriginalName() << " / S, "
           << pair->getActual()->getOriginalName() << " / preS]\n";
        if (pair->getPre()->isValued(this))
            os << "valued signal TO HANDLE!\n";
        os << "  ]\n"
           << "  ||\n";
    }
    if (!pres.empty())
        os << "\n";

    os << "  loop" << "  [" << "\n";
    std::set<std::string> outputNames;
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            long over = s->getOverBddId(this, wood);
            if (!formats::absentOver(over))
                outputNames.insert(wood->Name_var_by_index(over));
        }
    ESTEREL_put_equation(os, name + "_node", outputNames, level);
    // The loop's closing line has no line end of its own.
    os << "\n" << "  ]" << "  each tick";
    if (!localVars.empty())
        os << "end signal " << "\n";
    os << "end module" << "\n\n";
}

void Module::ESTEREL_put_equation(std::ostream& os, const std::string&, const std::set<std::string>&, int level)
{
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;
    bddpp_manager* manager = wood->my_bdd_manager();
    bool first = true;
    // Gathered in memory; flushed before a value writes to the stream itself.
    text_out out(os);
    for (Bddexpression* e : wood->earliest_equations()) {
        long index = e->own_index();
        std::string var = e->my_bddname();
        if (e->getAbstraction() != 0) {
            DataBinding* binding = abstractEquationBinding(this, index, true);
            out << "  " << var << " = ";
            out.flush();
            binding->getValue()->ESTEREL_put(os, this);
            out << ";\n";
        } else if (Bddexpressionwood::bdd_initialised(e->bdd_var) && Bddexpressionwood::bdd_initialised(e->bdd_exp)) {
            // A bound signal emits its clock with the value; an unbound
            // one emits itself, unless it is valued and so has no value
            // to emit.
            SignalRef* ref = signal_manager->getSignalRefById(index, wood);
            DataBinding* binding = formats::clockedBinding(this, index);
            bool clocked = binding != nullptr && binding->getClock() != nullptr;
            if (clocked || (binding == nullptr && (ref == nullptr || !ref->isValued()))) {
                if (!first)
                    out << "    ||\n";
                first = false;
                out << "    present [" << manager->Print_sop_to_ESTEREL_String(e->bdd_exp, level) << "] then\n"
                    << "      emit ";
                if (clocked) {
                    out << binding->getClock()->getInternalName() << "(";
                    out.flush();
                    binding->getValue()->ESTEREL_put(os, this);
                    out << ")";
                } else {
                    out << var;
                }
                out << "\n"
                    << "    end present\n";
            }
        }
        out << "\n";
    }
}
