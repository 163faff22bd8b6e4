// Bindings as the compiled-module writer, the debug dump and the generators
// read them.
#include "model/module_bindings.h"

#include "model/module.h"
#include "wood/Bddexpression.h"

#include <cstdlib>
#include <iostream>

namespace {
// What the data layer reads of a module; it sits below Module and cannot
// ask by itself.
struct InstallModuleAccess {
    InstallModuleAccess()
    {
        DataExpr::moduleName = [](Module* m) { return m != nullptr ? m->getName() : std::string(); };
        DataExpr::moduleSignal = [](Module* m, const std::string& internal) -> Signal* {
            return m != nullptr ? m->getSignalFromInternalName(internal) : nullptr;
        };
    }
} installModuleAccess;

long renumbered(long* renumbering, long id) { return renumbering != nullptr && id >= 0 ? renumbering[id] : id; }
} // namespace

// Every binding line gives its expression the next evaluation index; the
// sub-expressions that the table then meets take the indexes after them,
// in the order in which the lines are written.
void Module::printBinding(std::ostream& out, long* renumbering)
{
    std::map<std::string, DataBinding*>* table = getDataTable();
    if (table == nullptr)
        return;
    Bddexpressionwood* w = getBddWood();
    std::list<DataExpr*> pending;
    int counter = 0;

    auto line = [&](long over, long under, DataExpr* value, Signal* clock, bool initialClock) {
        out << "   (" << renumbered(renumbering, over) << ", " << renumbered(renumbering, under) << "): "
            << "value: " << counter;
        if (value != nullptr) {
            value->setIndex(counter);
            pending.push_back(value);
        }
        counter++;
        if (clock != nullptr) {
            long clockOver = initialClock ? clock->getInitialOverBddId(this, w) : clock->getOverBddId(this, w);
            long clockUnder = initialClock ? clock->getInitialUnderBddId(this, w) : clock->getUnderBddId(this, w);
            out << " clock: (" << renumbered(renumbering, clockOver) << ", " << renumbered(renumbering, clockUnder)
                << ")";
        }
        out << ";" << std::endl;
    };

    out << "binding:" << std::endl;
    for (const auto& entry : *table) {
        DataBinding* b = entry.second;
        if (b == nullptr || b->getSignal() == nullptr)
            continue;
        Signal* s = b->getSignal();
        if (!s->isLocal() && !s->isWire() && !s->isOutput()) {
            long over = s->getOverBddId(this, w);
            long under = s->getUnderBddId(this, w);
            line(over, under, b->getValue(), b->getClock(), false);
            continue;
        }
        // One line per occurrence, each with its own copy of the value.
        std::list<long> ids = s->getAllBddId(this, w);
        for (auto it = ids.begin(); it != ids.end();) {
            long over = *it++;
            if (it == ids.end())
                break;
            long under = *it++;
            DataExpr* copy = b->getValue() != nullptr ? b->getValue()->duplicate() : nullptr;
            line(over, under, copy, b->getClock(), true);
        }
    }
    out << "end:" << std::endl << std::endl << "evaltable:" << std::endl;
    // The list grows while it is walked: each line queues the
    // sub-expressions it refers to.
    for (DataExpr* e : pending) {
        out << "   " << e->getIndex() << ": ";
        e->ZKC_put(out, renumbering, this, &pending, &counter, 1);
        out << ";" << std::endl;
    }
    out << "end:" << std::endl << std::endl;
}

// Works on copies of the values, so that the evaluation indexes it hands
// out do not leak into a later compiled-module file.
void Module::debugPrintBinding(std::ostream& out)
{
    std::map<std::string, DataBinding*>* table = getDataTable();
    if (table == nullptr)
        return;
    Bddexpressionwood* w = getBddWood();
    std::list<DataExpr*> pending;
    int counter = 0;
    out << "binding:" << std::endl;
    for (const auto& entry : *table) {
        DataBinding* b = entry.second;
        if (b == nullptr)
            continue;
        out << "   " << entry.first << ": ";
        b->print_debug(out);
        if (b->getValue() != nullptr) {
            DataExpr* copy = b->getValue()->duplicate();
            copy->setIndex(counter++);
            pending.push_back(copy);
            out << " eval: " << copy->getIndex();
        }
        if (w != nullptr && b->getSignal() != nullptr)
            out << " (" << b->getSignal()->getOverBddId(this, w) << ", " << b->getSignal()->getUnderBddId(this, w)
                << ")";
        out << ";" << std::endl;
    }
    out << "end:" << std::endl << std::endl << "evaltable:" << std::endl;
    for (DataExpr* e : pending) {
        out << "   " << e->getIndex() << ": ";
        e->DEBUG_put(out, this, &pending, &counter, 1);
        out << ";" << std::endl;
    }
    out << "end:" << std::endl << std::endl;
}

DataBinding* abstractEquationBinding(Module* module, long index, bool fatal)
{
    std::string name = module->getSignalNameById(index, module->getBddWood());
    DataBinding* b = module->getBinding(name);
    if (b == nullptr) {
        std::cerr << "***error: abstract equation without bindind for:" << name << std::endl;
        if (fatal)
            std::exit(1);
    }
    return b;
}

std::map<std::string, std::list<DataBinding*>> outputClockBindings(Module* module)
{
    std::map<std::string, std::list<DataBinding*>> clocks;
    std::map<std::string, DataBinding*>* table = module->getDataTable();
    if (table == nullptr)
        return clocks;
    for (const auto& entry : *table) {
        DataBinding* b = entry.second;
        if (b != nullptr && b->getClock() != nullptr && b->getClock()->isOutput())
            clocks[b->getClock()->getInternalName()].push_back(b);
    }
    return clocks;
}
