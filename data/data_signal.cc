// Reads of another signal's value, and bindings of values to signals.
#include "data/data.h"
#include "data/data_internal.h"

#include "context/compilation.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"

#include <cstdlib>
#include <iostream>

static Bddexpressionwood* woodOf(Module* module)
{
    SignalScope* scope = SignalScope::of(module);
    Bddexpressionwood* wood = scope != nullptr ? scope->getBddWood() : nullptr;
    if (wood == nullptr)
        Compilation::IllegalOperationException("DataSignalValue: no wood for the module");
    return wood;
}

// ----------------------------------------------------------- signal value

DataSignalValue::DataSignalValue(Signal* signal) : signal(signal) {}

void DataSignalValue::computeType(Module* module)
{
    if (signal == nullptr) {
        std::cerr << "abnormal null! Bound signal have to be defined about type= " << type << " and index= " << index
                  << "..." << std::endl;
        return;
    }
    SignalScope* scope = SignalScope::of(module);
    SignalRef* ref = scope != nullptr ? signal->getSignalRef(scope->getSignalManager(), scope->getBddWood()) : nullptr;
    if (ref == nullptr) {
        std::cerr << "undefined signal ";
        Compilation::UndefinedTypeException(signal->getInternalName());
    }
    if (!ref->isValued()) {
        std::cerr << "signal not valued ";
        Compilation::UndefinedTypeException(signal->getInternalName());
    }
    type = ref->getType();
}

DataExpr* DataSignalValue::instanciate(Interface*, std::map<std::string, Signal*>* signals, Module*)
{
    auto* copy = new DataSignalValue(*this);
    if (signal != nullptr && signals != nullptr) {
        auto it = signals->find(signal->getOriginalName());
        if (it != signals->end() && it->second != nullptr)
            copy->signal = it->second;
    }
    return copy;
}

DataExpr* DataSignalValue::duplicate() { return new DataSignalValue(*this); }

void DataSignalValue::changeModule(Module*, Module* to)
{
    if (signal == nullptr)
        return;
    Signal* same = moduleSignal(to, signal->getInternalName());
    if (same != nullptr)
        signal = same;
}

std::set<Signal*>* DataSignalValue::computeDependencySet()
{
    return signal != nullptr ? new std::set<Signal*>{signal} : nullptr;
}

void DataSignalValue::computeValueSignalDependencies(std::set<Signal*>& signals)
{
    if (signal != nullptr)
        signals.insert(signal);
}

void DataSignalValue::print_debug(std::ostream& os)
{
    if (signal != nullptr)
        os << signal->getInternalName();
}

void DataSignalValue::ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                              int* counter, int top)
{
    if (!top) {
        putReference(os, pending, counter);
        return;
    }
    if (signal == nullptr)
        Compilation::IllegalOperationException("DataSignalValue::ZKC_put: no signal");
    Bddexpressionwood* wood = woodOf(module);
    long over = signal->getOverBddId(module, wood);
    long under = signal->getUnderBddId(module, wood);
    if (renumbering != nullptr) {
        over = over >= 0 ? renumbering[over] : over;
        under = under >= 0 ? renumbering[under] : under;
    }
    os << "%%" << DataNesting::predefCode(SignalVal, getType(module)) << "(" << over << ", " << under << ")";
}

void DataSignalValue::DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                                int top)
{
    if (top)
        DEBUG_put(os, module);
    else
        putReference(os, pending, counter);
}

// C reads an output through its pointer and names pre and output signals as
// declared; every other signal goes by the variable of its first occurrence.
void DataSignalValue::C_put(std::ostream& os, Module* module)
{
    if (signal == nullptr)
        return;
    if (signal->isOutput())
        os << "*";
    if (signal->isPre() || signal->isOutput())
        os << signal->getOriginalName();
    else {
        Bddexpressionwood* wood = woodOf(module);
        os << wood->Name_var_by_index(signal->getInitialOverBddId(module, wood));
    }
    os << "_val";
}

// The blank stands where C writes its pointer mark.
void DataSignalValue::CSharp_put(std::ostream& os, Module* module)
{
    if (signal == nullptr)
        return;
    if (signal->isOutput())
        os << " ";
    Bddexpressionwood* wood = woodOf(module);
    os << wood->Name_var_by_index(signal->getOverBddId(module, wood)) << "_val";
}

static std::string plainName(Signal* signal, Module* module)
{
    if (signal->isPre())
        return signal->getOriginalName();
    Bddexpressionwood* wood = woodOf(module);
    return wood->Name_var_by_index(signal->getInitialOverBddId(module, wood));
}

void DataSignalValue::LUSTRE_put(std::ostream& os, Module* module)
{
    if (signal != nullptr)
        os << plainName(signal, module) << "_val";
}

void DataSignalValue::ESTEREL_put(std::ostream& os, Module* module)
{
    if (signal != nullptr)
        os << plainName(signal, module) << "_val";
}

void DataSignalValue::VHDL_put(std::ostream& os, Module* module)
{
    if (signal != nullptr)
        os << plainName(signal, module) << "_locval";
}

void DataSignalValue::DEBUG_put(std::ostream& os, Module* module) { C_put(os, module); }

std::string DataSignalValue::MOSK_put(Module*, std::map<std::string, std::string>* values,
                                      const std::function<std::string(const std::string&)>&)
{
    if (signal == nullptr || values == nullptr)
        return "--";
    auto it = values->find(signal->getInternalName());
    return it == values->end() ? "--" : it->second;
}

// --------------------------------------------------------------- bindings

DataBinding::DataBinding(Signal* signal, DataExpr* value) : clock(nullptr), signal(signal), value(value) {}

DataBinding::DataBinding(Signal* signal, DataExpr* value, Signal* clock) : clock(clock), signal(signal), value(value)
{
}

DataBinding::DataBinding(DataBinding& other, Module* from, Module* to)
    : clock(nullptr), signal(nullptr), value(nullptr)
{
    if (other.signal != nullptr)
        signal = DataExpr::moduleSignal(to, other.signal->getInternalName());
    if (other.clock != nullptr)
        clock = DataExpr::moduleSignal(to, other.clock->getInternalName());
    if (other.value != nullptr) {
        value = other.value->duplicate();
        value->changeModule(from, to);
    }
}

void DataBinding::print_debug(std::ostream& os)
{
    os << "signal:" << (signal != nullptr ? signal->getInternalName() : std::string());
    if (clock != nullptr)
        os << " signal porteur (clock):" << clock->getInternalName();
    else
        os << " pas de signal porteur (clock) associe ...";
    os << "     value: ";
    if (value != nullptr)
        value->print_debug(os);
}

static Signal* inInterface(Signal* s, std::map<std::string, Signal*>* signals)
{
    auto it = signals != nullptr ? signals->find(s->getOriginalName()) : std::map<std::string, Signal*>::iterator();
    if (signals == nullptr || it == signals->end() || it->second == nullptr) {
        std::cerr << s->getOriginalName() << " not in interface:" << std::endl;
        std::exit(1);
    }
    return it->second;
}

DataBinding* DataBinding::instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module)
{
    Signal* s = signal != nullptr ? inInterface(signal, signals) : nullptr;
    Signal* c = clock != nullptr ? inInterface(clock, signals) : nullptr;
    DataExpr* v = value != nullptr ? value->instanciate(itf, signals, module) : nullptr;
    return new DataBinding(s, v, c);
}
