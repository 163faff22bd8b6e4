#ifndef TARN_MODEL_INTERFACE_H
#define TARN_MODEL_INTERFACE_H

#include <list>
#include <map>
#include <string>

class Signal;
class regclass;

// A module's signals by original name, for linking modules in the source
// compiler.
class Interface {
public:
    Interface() = default;

    // A name already present is replaced.
    void addInput(Signal* s);
    void addOutput(Signal* s);
    void addLocal(Signal* s);
    void addData(Signal* s);
    void addRegister(regclass* r);

    // Null when absent.
    Signal* getInputSignal(const std::string& name) const;
    Signal* getOutputSignal(const std::string& name) const;
    Signal* getLocalSignal(const std::string& name) const;
    Signal* getDataSignal(const std::string& name) const;
    // Inputs, outputs, locals, in that order.
    Signal* getSignal(const std::string& name) const;
    // The original name of the signal found by getSignal, or the empty
    // string.
    std::string getOriginalSignalName(const std::string& name) const;

    const std::list<regclass*>& getRegisterList() const { return registers; }

private:
    std::map<std::string, Signal*> inputs;
    std::map<std::string, Signal*> outputs;
    std::map<std::string, Signal*> locals;
    std::map<std::string, Signal*> data;
    std::list<regclass*> registers;
};

#endif
