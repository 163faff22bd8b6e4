#include "model/interface.h"

#include "signals/signal.h"

static Signal* find(const std::map<std::string, Signal*>& table, const std::string& name)
{
    auto it = table.find(name);
    return it == table.end() ? nullptr : it->second;
}

void Interface::addInput(Signal* s) { inputs[s->getOriginalName()] = s; }
void Interface::addOutput(Signal* s) { outputs[s->getOriginalName()] = s; }
void Interface::addLocal(Signal* s) { locals[s->getOriginalName()] = s; }
void Interface::addData(Signal* s) { data[s->getOriginalName()] = s; }
void Interface::addRegister(regclass* r) { registers.push_back(r); }

Signal* Interface::getInputSignal(const std::string& name) const { return find(inputs, name); }
Signal* Interface::getOutputSignal(const std::string& name) const { return find(outputs, name); }
Signal* Interface::getLocalSignal(const std::string& name) const { return find(locals, name); }
Signal* Interface::getDataSignal(const std::string& name) const { return find(data, name); }

Signal* Interface::getSignal(const std::string& name) const
{
    Signal* s = getInputSignal(name);
    if (s == nullptr)
        s = getOutputSignal(name);
    if (s == nullptr)
        s = getLocalSignal(name);
    return s;
}

std::string Interface::getOriginalSignalName(const std::string& name) const
{
    Signal* s = getSignal(name);
    return s != nullptr ? s->getOriginalName() : std::string();
}
