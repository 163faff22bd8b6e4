// Encapsulated file: the interface of a module as a black box for the
// quasar tools. Only inputs and outputs have content; the other sections
// are part of the format and stay empty.

#include "model/module.h"

#include "wood/Bddexpression.h"

#include <list>
#include <ostream>

namespace {

// One item per wire, ",\n" between items, a line end after the last.
struct Items {
    std::ostream& os;
    bool first = true;

    void add(const std::string& name, const std::string& type)
    {
        if (!first)
            os << "," << "\n";
        os << name << ": " << type;
        first = false;
    }
    void end()
    {
        if (!first)
            os << "\n";
    }
};

void putSignals(Module* m, std::ostream& os, std::list<Signal*>* signals)
{
    Items items{os};
    Bddexpressionwood* wood = m->getBddWood();
    if (signals != nullptr)
        for (Signal* s : *signals) {
            if (s == nullptr)
                continue;
            long over = s->getOverBddId(m, wood);
            if (over == -1)
                continue;
            items.add(wood->Name_var_by_index(over), s->isValued(m) ? s->getValueType(m) : "pure");
            if (!m->getFinalised())
                items.add(wood->Name_var_by_index(s->getUnderBddId(m, wood)), "pure");
        }
    items.end();
}

void putEmpty(std::ostream& os, const char* title) { os << title << "\n" << ";\n\n"; }

} // namespace

void Module::ENCAPSULATEDQSR_put(std::ostream& os)
{
    if (wood == nullptr)
        return;
    os << "Name: " << name << ": zinc_kernel_model:;\n";
    putEmpty(os, "Type:");

    os << "Input:\n";
    if (!finalised)
        os << " _s_SET" << name << ", _s_RESET" << name;
    putSignals(this, os, inputs);
    os << ";\n\n";

    putEmpty(os, "Sensor:");

    os << "Output:\n";
    if (!finalised)
        os << "_s_RTL" << name;
    putSignals(this, os, outputs);
    os << ";\n\n";

    for (const char* title : {"Local:", "Variable:", "Run:", "Function:", "Constant:", "Action:", "Encapsulation:"})
        putEmpty(os, title);
}
