#ifndef TARN_SIGNALS_SIGNAL_H
#define TARN_SIGNALS_SIGNAL_H

#include "signals/expression.h"
#include "signals/wood_map.h"

#include "support/rare_text.h"

#include <list>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

class Module;
class Bddexpressionwood;
class EquationTable;
class SignalManager;
class SignalRef;

// The current occurrence of a signal per wood; entries are never removed.
using OccurrenceTable = WoodMap<int>;

// A named wire pair of a module, possibly valued. The BDD variables belong
// to the SignalRef of each occurrence, kept by the module's SignalManager;
// two Signal objects of one internal name share their refs, hence their
// wires.
class Signal : public Expression {
public:
    // Each constructor finds the module's SignalRef of the internal name, or
    // creates it, which adds the variables "_s_" and "_v_" + internal name at
    // the end of the order (over first) unless the manager has them already.
    // The occurrence table starts with the wood's entry at 0.
    Signal(std::string name, Module* m, Bddexpressionwood* wood);
    // With `wire` true the signal is flagged wire and register.
    Signal(std::string name, Module* m, Bddexpressionwood* wood, bool wire);
    Signal(std::string original, std::string internal, Module* m, Bddexpressionwood* wood);
    Signal(std::string original, std::string internal, Module* m, Bddexpressionwood* wood, bool wire);

    const std::string& getOriginalName() const { return same_original ? internal_name : original_name.str(); }
    const std::string& getInternalName() const { return internal_name; }

    bool isLocal() const { return local; }
    bool isInput() const { return input; }
    bool isOutput() const { return output; }
    bool isWire() const { return wire; }
    bool isRegister() const { return register_flag; }
    bool isClock() const { return clock; }
    bool isValue() const { return value; }
    bool isPre() const { return pre; }
    // A signal moves from list to list only through setLocal, which clears
    // the input and output flags.
    void setLocal();
    void setInput(bool b = true) { input = b; }
    void setOutput(bool b = true) { output = b; }
    void setWire(bool b = true) { wire = b; }
    // Sets the wire flag too.
    void setRegister();
    void setClock(bool b = true) { clock = b; }
    void setValue(bool b = true) { value = b; }
    void setPre(bool b = true) { pre = b; }

    // Variable indexes in a wood: of the current occurrence, and of
    // occurrence 0 (found by internal name).
    long getOverBddId(Module* m, Bddexpressionwood* wood);
    long getUnderBddId(Module* m, Bddexpressionwood* wood);
    long getInitialOverBddId(Module* m, Bddexpressionwood* wood);
    long getInitialUnderBddId(Module* m, Bddexpressionwood* wood);
    // Over, under, over, under, ... of every occurrence up to the current
    // one. Only for local, wire and output signals.
    std::list<long> getAllBddId(Module* m, Bddexpressionwood* wood);
    // The same ids, appended to `ids`.
    void appendAllBddId(Module* m, Bddexpressionwood* wood, std::vector<long>& ids);
    // Names of the current occurrence's variables in the module's own wood.
    std::string getOverName(Module* m);
    std::string getUnderName(Module* m);
    // Internal name, plus "_" and the occurrence when it is not 0.
    std::string getName(Module* m, Bddexpressionwood* wood);
    std::string getName(Module* m);
    SignalRef* getSignalRef(SignalManager* manager, Bddexpressionwood* wood);
    // The entry of the wood; a wood with no entry ends the process.
    int getCurrentOccurrence(Bddexpressionwood* wood);
    bool hasOccurrenceIn(Bddexpressionwood* wood) const { return current_occurrence.count(wood) != 0; }
    void setCurrentOccurrence(Bddexpressionwood* wood, int occurrence) { current_occurrence[wood] = occurrence; }

    bool isValued(Module* m);
    bool isValued(Module* m, Bddexpressionwood* wood);
    std::string getValueType(Module* m);
    std::string getValueType(Module* m, Bddexpressionwood* wood);
    // Sets the ref's type and marks it valued.
    void setValueType(std::string type, Module* m);
    void setValueType(std::string type, Module* m, Bddexpressionwood* wood);
    // True when the signal is the actual signal of one of the module's
    // memorised pairs and is valued.
    bool usedwithPre(Module* m);

    int computeOverType() const;
    int computeUnderType() const;
    static std::string generateName(const std::string& base, const std::string& suffix) { return base + "_" + suffix; }
    void ReplaceAtCharacterInAllNames(std::string c);

    // A new occurrence of a local or output signal in the wood, with its own
    // variable pair; any other signal is returned unchanged.
    Signal* newOccurrence(Bddexpressionwood* wood, Module* m);

    // A copy of this signal in module `to`, whose wood `toWood` is a copy of
    // `fromWood`: same names, flags and current occurrence, and the refs of
    // every occurrence with their types, on the variables of the same names.
    Signal* copyInto(Module* from, Bddexpressionwood* fromWood, Module* to, Bddexpressionwood* toWood);

    // Source compiler's bookkeeping, untouched here.
    long getNumber() const { return number; }
    void setNumber(long n) { number = n; }
    std::set<Signal*>& getDependenceSet()
    {
        if (dependences == nullptr)
            dependences = std::make_unique<std::set<Signal*>>();
        return *dependences;
    }

    bdd getOverBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getUnderBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood) override;
    bool isSignalExpr() override { return true; }
    // Signals are shared by the trees that read them, never copied.
    Expression* duplicate() override { return this; }
    Expression* buildCurrentExpression(EquationTable*, Module*) override { return this; }
    void print(std::ostream& os) override;

private:
    void init(Module* m, Bddexpressionwood* wood);
    void keepOriginal(std::string original);
    SignalRef* refOfOccurrence(Module* m, Bddexpressionwood* wood, const char* where);
    // getAllBddId's ids, in its order, each handed to `put`.
    template <class Put> void eachBddId(Module* m, Bddexpressionwood* wood, Put put);
    // The manager's ref of the internal name, or null. Refs are never taken
    // out of a manager and their names never change, so a ref once found
    // stays the answer for that manager: the last one found is kept.
    SignalRef* initialRef(SignalManager* manager);

    // The original name is held only where it differs from the internal
    // one.
    rare_text original_name;
    std::string internal_name;
    bool same_original = false;
    bool local = false;
    bool input = false;
    bool output = false;
    bool wire = false;
    bool register_flag = false;
    bool clock = false;
    bool value = false;
    bool pre = false;
    OccurrenceTable current_occurrence;
    SignalManager* known_manager = nullptr;
    SignalRef* known_ref = nullptr;
    long number = 0;
    std::unique_ptr<std::set<Signal*>> dependences;
};

// A memorised pair: `pre` holds the value that `actual` had at the previous
// reaction, `initial` at the first.
class memorizedSignal {
public:
    memorizedSignal(Signal* pre, Signal* actual, std::string initial)
        : pre(pre), actual(actual), initial(std::move(initial)) {}
    Signal* getPre() const { return pre; }
    Signal* getActual() const { return actual; }
    const std::string& getInitialValue() const { return initial; }

private:
    Signal* pre;
    Signal* actual;
    std::string initial;
};

// The compiled-module form: pre, " ", actual, " ", initial, ";" with internal
// names; a missing signal shows as "?".
std::ostream& operator<<(std::ostream& os, const memorizedSignal& m);

// A register: `next` is the value that `actual` takes at the next reaction.
class regclass {
public:
    regclass(Signal* actual, Signal* next, int initial) : actual(actual), next(next), initial(initial) {}
    Signal* actual_var() const { return actual; }
    Signal* next_var() const { return next; }
    int is_initialy_true() const { return initial; }
    void actual_var(Signal* s) { actual = s; }
    void next_var(Signal* s) { next = s; }
    void is_initialy_true(int v) { initial = v; }
    bool operator==(const regclass& o) const { return actual == o.actual && next == o.next && initial == o.initial; }
    bool operator!=(const regclass& o) const { return !(*this == o); }

private:
    Signal* actual;
    Signal* next;
    int initial;
};

// The compiled-module form: next, " ", actual, " ", "1" or "0", ";" with
// internal names; a missing signal shows as "?".
std::ostream& operator<<(std::ostream& os, const regclass& r);

#endif
