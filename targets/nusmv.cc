// NuSMV model of a module: a MODULE named after it whose parameters are
// the inputs and data signals, registers as state variables, every other
// wire a definition; and a MODULE main that drives those parameters freely.
// Only presence is modelled: an abstract equation has no definition, so a
// data test reads as an unconstrained name.

#include "model/module.h"

#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>
#include <string>
#include <vector>

void Module::NUSMV_put(std::ostream& os, int, int)
{
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;
    // The parameters: the over wire of each input, then of each data
    // signal; a module that is not finalised adds the under wires and leads
    // with the under wires of SET and RESET.
    std::vector<std::string> controls;
    if (!finalised)
        for (Signal* s : {set_signal, reset_signal})
            if (s != nullptr) {
                long under = s->getUnderBddId(this, wood);
                if (under != -1)
                    controls.push_back(wood->Name_var_by_index(under));
            }
    std::vector<std::string> items;
    for (std::list<Signal*>* list : {inputs, data_signals}) {
        if (list == nullptr)
            continue;
        for (Signal* s : *list) {
            long over = s->getOverBddId(this, wood);
            if (over != -1)
                items.push_back(wood->Name_var_by_index(over));
            if (!finalised) {
                long under = s->getUnderBddId(this, wood);
                if (under != -1)
                    items.push_back(wood->Name_var_by_index(under));
            }
        }
    }
    std::string parameters;
    for (const std::vector<std::string>* names : {&controls, &items})
        for (const std::string& item : *names)
            parameters += (parameters.empty() ? "" : ", ") + item;

    std::vector<regclass*> regs = formats::registers(this);

    os << "MODULE " << name << "(" << parameters << ")\n";
    os << "VAR\n";
    for (regclass* r : regs)
        os << r->actual_var()->getOverName(this) << ": boolean;\n";
    os << "ASSIGN\n";
    for (regclass* r : regs)
        os << "init(" << r->actual_var()->getOverName(this) << ") := "
           << (r->is_initialy_true() ? " TRUE;" : "FALSE;") << "\n";
    os << "DEFINE\n";
    for (Bddexpression* e : wood->indexed_equations()) {
        if (e->getAbstraction() != 0)
            continue;
        e->put_nusmv(os);
        os << "\n";
    }
    os << "ASSIGN\n";
    for (regclass* r : regs)
        os << "next(" << r->actual_var()->getOverName(this) << ") := " << r->next_var()->getOverName(this) << ";\n";
    os << "\n\n";

    os << "MODULE  main\n";
    os << "VAR\n";
    for (const std::vector<std::string>* names : {&controls, &items})
        for (const std::string& item : *names)
            os << item << ": boolean;\n";
    os << "m" << name << ": " << name << "(" << parameters << ");\n";
    os << "ASSIGN\n";
    for (const std::vector<std::string>* names : {&controls, &items})
        for (const std::string& item : *names)
            os << item << ":= {FALSE, TRUE};\n";
}
