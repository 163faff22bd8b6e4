// The module's binding table: values of data signals, with or without a
// clock.
#include "model/module.h"

#include "data/data.h"
#include "wood/Bddexpression.h"

#include <set>

template <typename T> static void append(std::list<T>*& l, T item)
{
    if (l == nullptr)
        l = new std::list<T>;
    l->push_back(item);
}

void Module::addBinding(DataBinding* b) { addBinding(b, wood); }

void Module::addBinding(DataBinding* b, Bddexpressionwood* w)
{
    if (b == nullptr || b->getSignal() == nullptr)
        Compilation::IllegalOperationException("Module::addBinding: binding without a signal in " + name);
    if (data_table == nullptr)
        data_table = new std::map<std::string, DataBinding*>;
    (*data_table)[b->getSignal()->getName(this, w)] = b;
}

void Module::addSignalBinding(DataExpr* value, Signal* s)
{
    if (s == nullptr)
        Compilation::IllegalOperationException("Module::addSignalBinding: no signal to bind in " + name);
    if (data_table == nullptr)
        data_table = new std::map<std::string, DataBinding*>;
    (*data_table)[s->getInternalName()] = new DataBinding(s, value);
    s->setValue();
    std::set<Signal*>* read = value != nullptr ? value->computeDependencySet() : nullptr;
    if (read == nullptr || wood == nullptr)
        return;
    IndexSet wires;
    for (Signal* r : *read) {
        if (r == nullptr)
            continue;
        wires.insert(r->getOverBddId(this, wood));
        wires.insert(r->getUnderBddId(this, wood));
    }
    long over = s->getOverBddId(this, wood);
    long under = s->getUnderBddId(this, wood);
    // The wood owns the equations it is given.
    new Bddexpression(over, wood, wires, "VALUE_SIGNAL", 0, 0);
    new Bddexpression(under, wood, wires, "VALUE_SIGNAL", 0, 0);
}

void Module::addSignalBinding(DataExpr* value, Signal* s, Signal* clock)
{
    if (s == nullptr)
        Compilation::IllegalOperationException("Module::addSignalBinding: no signal to bind in " + name);
    if (data_table == nullptr)
        data_table = new std::map<std::string, DataBinding*>;
    if (clock != nullptr)
        clock->setClock();
    (*data_table)[s->getInternalName()] = new DataBinding(s, value, clock);
    s->setValue();
}

DataBinding* Module::getBinding(const std::string& n) const
{
    if (data_table == nullptr)
        return nullptr;
    auto it = data_table->find(n);
    return it == data_table->end() ? nullptr : it->second;
}

void Module::removeBinding(const std::string& n)
{
    if (data_table != nullptr)
        data_table->erase(n);
}

static bool clockedBy(DataBinding* b, Signal* clock)
{
    return b != nullptr && b->getClock() != nullptr && clock != nullptr &&
           b->getClock()->getInternalName() == clock->getInternalName();
}

std::list<Signal*>* Module::getSignalBindingByClock(Signal* clock) const
{
    if (data_table == nullptr)
        return nullptr;
    auto* found = new std::list<Signal*>;
    for (const auto& entry : *data_table)
        if (clockedBy(entry.second, clock))
            found->push_back(entry.second->getSignal());
    return found;
}

std::list<DataBinding*>* Module::getDataBindingByClock(Signal* clock) const
{
    if (data_table == nullptr)
        return nullptr;
    std::list<DataBinding*>* found = nullptr;
    for (const auto& entry : *data_table)
        if (clockedBy(entry.second, clock))
            append(found, entry.second);
    return found;
}
