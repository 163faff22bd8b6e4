#include "model/module.h"

#include "wood/Bddexpression.h"

#include <cstdlib>

static std::string environmentOr(const char* name, const char* fallback)
{
    const char* value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string(fallback);
}

// The variable's name really is "/tmp": the simulator's directory comes from
// it, and "./" stands in when it is not set.
std::string Module::SimulationDir = environmentOr("/tmp", "./");
std::string Module::SimulationZkcDir = ".";
std::string Module::OutputDir = ".";
std::string Module::OutputFile = "";
std::list<std::string>* Module::CompilationFileList = nullptr;

void ModuleTable::add(Module* m)
{
    if (table.count(m->getName()) != 0)
        Compilation::HashTableAddException("", m->getName());
    table[m->getName()] = m;
}

void Module::installScope()
{
    SignalScope::install([](Module* m) -> SignalScope* { return m; });
}

Module::Module(std::string name)
    : name(std::move(name)), inputs(new std::list<Signal*>), outputs(new std::list<Signal*>),
      locals(new std::list<Signal*>), memorized(new std::list<memorizedSignal*>),
      data_signals(new std::list<Signal*>), registers(new std::list<regclass*>), wood(new Bddexpressionwood()),
      signal_manager(new SignalManager)
{
    installScope();
}

Module::Module(std::string name, std::list<Signal*>* inputs, std::list<Signal*>* outputs,
               std::list<Signal*>* locals, std::list<memorizedSignal*>* memorized,
               std::list<Signal*>* dataSignals, std::list<regclass*>* registers, std::list<Signal*>* connexions,
               Bddexpressionwood* wood)
    : name(std::move(name)), inputs(inputs), outputs(outputs), locals(locals), memorized(memorized),
      data_signals(dataSignals), registers(registers), wood(wood), signal_manager(new SignalManager)
{
    installScope();
    if (connexions != nullptr) {
        auto it = connexions->begin();
        if (it != connexions->end())
            set_signal = *it++;
        if (it != connexions->end())
            reset_signal = *it++;
        if (it != connexions->end())
            rtl_signal = *it;
    }
    if (registers != nullptr) {
        for (regclass* r : *registers) {
            if (r == nullptr || r->actual_var() == nullptr || r->next_var() == nullptr)
                Compilation::IllegalOperationException("Register not declared local!");
            r->actual_var()->setRegister();
            r->next_var()->setRegister();
        }
    }
}

long Module::getPertLevel() { return wood != nullptr ? wood->Nb_level() : 0; }

// ---------------------------------------------------------------- lookups

static Signal* byOriginalName(const std::list<Signal*>* l, const std::string& name)
{
    if (l == nullptr)
        return nullptr;
    for (Signal* s : *l)
        if (s != nullptr && s->getOriginalName() == name)
            return s;
    return nullptr;
}

static Signal* byInternalName(const std::list<Signal*>* l, const std::string& name)
{
    if (l == nullptr)
        return nullptr;
    for (Signal* s : *l)
        if (s != nullptr && s->getInternalName() == name)
            return s;
    return nullptr;
}

Signal* Module::getInputSignal(const std::string& n) const { return byOriginalName(inputs, n); }
Signal* Module::getOutputSignal(const std::string& n) const { return byOriginalName(outputs, n); }
Signal* Module::getLocalSignal(const std::string& n) const { return byOriginalName(locals, n); }
Signal* Module::getDataSignal(const std::string& n) const { return byOriginalName(data_signals, n); }

Signal* Module::getPreSignal(const std::string& n) const
{
    if (memorized == nullptr)
        return nullptr;
    for (memorizedSignal* pair : *memorized)
        if (pair != nullptr && pair->getPre() != nullptr && pair->getPre()->getInternalName() == n)
            return pair->getPre();
    return nullptr;
}

Signal* Module::getOutputLocalSignal(const std::string& n) const
{
    Signal* s = getOutputSignal(n);
    return s != nullptr ? s : getLocalSignal(n);
}

Signal* Module::getSignal(const std::string& n) const
{
    Signal* s = getInputSignal(n);
    if (s == nullptr)
        s = getOutputSignal(n);
    if (s == nullptr)
        s = getDataSignal(n);
    if (s == nullptr)
        s = getLocalSignal(n);
    if (s == nullptr)
        s = getPreSignal(n);
    return s;
}

Signal* Module::getSignalFromInternalName(const std::string& n) const
{
    Signal* s = byInternalName(inputs, n);
    if (s == nullptr)
        s = byInternalName(outputs, n);
    if (s == nullptr)
        s = byInternalName(data_signals, n);
    if (s == nullptr)
        s = byInternalName(locals, n);
    if (s == nullptr)
        s = getPreSignal(n);
    return s;
}

std::unordered_map<std::string, Signal*> Module::signalsByName() const
{
    std::unordered_map<std::string, Signal*> byName;
    for (const std::list<Signal*>* l : {inputs, outputs, data_signals, locals})
        if (l != nullptr)
            for (Signal* s : *l)
                if (s != nullptr)
                    byName.emplace(s->getOriginalName(), s);
    if (memorized != nullptr)
        for (memorizedSignal* pair : *memorized)
            if (pair != nullptr && pair->getPre() != nullptr)
                byName.emplace(pair->getPre()->getInternalName(), pair->getPre());
    return byName;
}

Signal* Module::getSignalById(long id, Bddexpressionwood* w)
{
    SignalRef* ref = signal_manager->getSignalRefById(id, w);
    return ref != nullptr ? getSignal(ref->getInternalName()) : nullptr;
}

Signal* Module::getSignalById(long id, Bddexpressionwood* w, const std::unordered_map<std::string, Signal*>& byName)
{
    SignalRef* ref = signal_manager->getSignalRefById(id, w);
    if (ref == nullptr)
        return nullptr;
    auto found = byName.find(ref->getInternalName());
    return found != byName.end() ? found->second : nullptr;
}

std::string Module::getSignalNameById(long id, Bddexpressionwood* w)
{
    SignalRef* ref = signal_manager->getSignalRefById(id, w);
    if (ref == nullptr)
        Compilation::IllegalOperationException("Module::getSignalNameById: no signal reference for this bdd id: " +
                                               std::to_string(id));
    return ref->getCurrentName();
}

long Module::getOtherBddId(long id, Bddexpressionwood* w)
{
    SignalRef* ref = signal_manager->getSignalRefById(id, w);
    if (ref == nullptr)
        Compilation::IllegalOperationException("Module::getOtherBddId: no signal in table for this bdd id:" +
                                               std::to_string(id));
    long over = ref->getOverBddId(w);
    return over == id ? ref->getUnderBddId(w) : over;
}

// -------------------------------------------------------------- additions

template <typename T> static void append(std::list<T>*& l, T item)
{
    if (l == nullptr)
        l = new std::list<T>;
    l->push_back(item);
}

void Module::addRegisterDecl(const char* actual, int initial, const char* next)
{
    Signal* a = new Signal(actual, this, wood, true);
    Signal* n = new Signal(next, this, wood, true);
    a->setLocal();
    n->setLocal();
    append(locals, a);
    append(locals, n);
    append(registers, new regclass(a, n, initial));
}

void Module::addRegisterSignal(Signal* actual, Signal* next) { addRegisterSignal(actual, next, 0); }

void Module::addRegisterSignal(Signal* actual, Signal* next, int initial)
{
    append(registers, new regclass(actual, next, initial));
}

void Module::addPreSignal(Signal* pre, Signal* actual, std::string initial)
{
    append(memorized, new memorizedSignal(pre, actual, std::move(initial)));
}

void Module::addInputSignal(Signal* s) { append(inputs, s); }
void Module::addOutputSignal(Signal* s) { append(outputs, s); }
void Module::addDataSignal(Signal* s) { append(data_signals, s); }
void Module::addLocalSignal(Signal* s) { append(locals, s); }
