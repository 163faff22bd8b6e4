#ifndef TARN_SIGNALS_SIGNAL_MANAGER_H
#define TARN_SIGNALS_SIGNAL_MANAGER_H

#include "signals/signal_name_index.h"
#include "signals/wood_map.h"
#include "support/grow_array.h"
#include "support/rare_text.h"

#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class Module;
class Bddexpressionwood;
class Signal;
class SignalManager;
class memorizedSignal;

// A ref's variable pair (over, under) per wood.
using WoodPairs = WoodMap<std::pair<long, long>>;

// One occurrence of a signal: its variable pair in each wood where it has
// one. The current name (internal name, plus "_" and the occurrence when it
// is not 0) is its key in the SignalManager.
class SignalRef {
public:
    // Occurrence 0. Finds or creates the variables "_s_" and "_v_" + internal
    // name (over first) and enters the ref in the module's manager, by name
    // and at both variable indexes.
    SignalRef(std::string original, std::string internal, Module* m, Bddexpressionwood* wood);
    // A further occurrence, on the variables "_s_" and "_v_" + current name;
    // its occurrence flag is set.
    SignalRef(std::string original, std::string internal, std::string current, int occurrence, Module* m,
              Bddexpressionwood* wood);

    const std::string& getOriginalName() const { return same_original ? internal_name : original_name.str(); }
    const std::string& getInternalName() const { return internal_name; }
    const std::string& getCurrentName() const { return occurrence_flag ? current_name.str() : internal_name; }
    int getCurrentOccurrence() const { return occurrence; }
    bool isOccurrence() const { return occurrence_flag; }
    const std::string& getType() const { return type != nullptr ? *type : pureType(); }
    bool isValued() const { return valued; }
    void setIsValued(bool b) { valued = b; }
    // Sets the type and marks the ref valued.
    void setValueType(std::string t)
    {
        if (type == nullptr)
            type = std::make_unique<std::string>(std::move(t));
        else
            *type = std::move(t);
        valued = true;
    }

    bool hasWood(Bddexpressionwood* wood) const { return ids.find(wood) != nullptr; }
    // A wood already present is a fatal error.
    void addBddIds(long over, long under, Bddexpressionwood* wood);
    // An absent wood is a fatal error.
    long getOverBddId(Bddexpressionwood* wood) const;
    long getUnderBddId(Bddexpressionwood* wood) const;
    void setOverBddId(long id, Bddexpressionwood* wood);
    void setUnderBddId(long id, Bddexpressionwood* wood);
    void removeWood(Bddexpressionwood* wood) { ids.erase(wood); }

    // Index of the variable of that name in the wood, created at the end of
    // the order if the manager does not know the name.
    static long computeId(Bddexpressionwood* wood, const std::string& name);
    // The same by the two separate steps, look-up then creation.
    static long computeId_literal(Bddexpressionwood* wood, const std::string& name);

private:
    void enter(Module* m, Bddexpressionwood* wood);

    static const std::string& pureType();

    // Names are held once: the original only where it differs from the
    // internal name, the current one only for a further occurrence (for
    // occurrence 0 it is the internal name), the type only once set.
    rare_text original_name;
    std::string internal_name;
    rare_text current_name;
    int occurrence = 0;
    bool same_original = false;
    bool occurrence_flag = false;
    bool valued = false;
    std::unique_ptr<std::string> type;
    WoodPairs ids;
};

// The refs of one wood by variable index; null where no signal holds the
// variable.
class SignalRefTable {
public:
    explicit SignalRefTable(long size) { refs.resize(size > 0 ? size : 0, nullptr); }
    long size() const { return static_cast<long>(refs.size()); }
    void extend(long size)
    {
        if (size > this->size())
            refs.resize(size, nullptr);
    }
    SignalRef* get(long id) const { return id >= 0 && id < size() ? refs[id] : nullptr; }
    SignalRef*& slot(long id) { return refs[id]; }

private:
    grow_array<SignalRef*> refs;
};

// The refs of one module, by current name and by variable index per wood.
class SignalManager {
public:
    using RefIndex = NameIndex<SignalRef, &SignalRef::getCurrentName>;

    SignalManager() = default;

    SignalRef* getSignalRefByName(const std::string& name) const;
    // Starts, at once, the reads that a look-up of the name and then a new
    // reference of that name in the wood will make: its slot in the name
    // index and, where the wood's variables come first, those of its two
    // wires (see bddpp_manager::prefetch_new_variables).
    void prefetchSignalRef(const std::string& name, Bddexpressionwood* wood) const;
    SignalRef* getSignalRefById(long id, Bddexpressionwood* wood) const;
    // By internal name, plus "_" and occ when occ is not 0.
    SignalRef* getSignalRefByOccurrence(Signal* s, int occ) const;
    // Every ref of the signal's internal name that has the wood, in name
    // order.
    std::list<SignalRef*> getAllSignalRef(Signal* s, Bddexpressionwood* wood) const;
    // The first of getAllSignalRef, or null.
    SignalRef* getCurrentOccurrence(Signal* s, Bddexpressionwood* wood) const;

    // A name already present is a fatal error.
    void addSignalRef(SignalRef* ref);
    // Records the ref at both indexes; a slot already taken is a fatal error.
    void addSignalRefIdTable(long over, long under, SignalRef* ref, Bddexpressionwood* wood);
    // Grows the wood's table to the wood's number of variables.
    void extendIdTable(Bddexpressionwood* wood);
    // addBddIds, then addSignalRefIdTable.
    void extendSignalRef(long over, long under, SignalRef* ref, Bddexpressionwood* wood);
    // Copies every ref's pair, and the index table, of one wood to another.
    void duplicate(Bddexpressionwood* from, Bddexpressionwood* to);
    void deleteWood(Bddexpressionwood* wood);

    // While set, the variables of new refs are made in the wood's BDD
    // manager only, and the wood's own tables are left behind until the
    // wood's update_bdd_vars: a reader declaring many signals sizes them
    // once instead of doubling them on the way.
    void deferWoodTables(bool b) { defer_wood_tables = b; }
    bool defersWoodTables() const { return defer_wood_tables; }

    // Unordered: whoever needs an order sorts.
    const RefIndex& getSignalRefs() const { return refs; }

private:
    RefIndex refs;
    std::map<Bddexpressionwood*, SignalRefTable*> tables;
    bool defer_wood_tables = false;
};

// What a signal reads of the module that lists it. The module layer sits
// above the signals, so a Signal cannot convert a Module* itself: Module
// derives from this class and installs the conversion when it is built.
// Data expressions reach a module's SignalManager the same way.
class SignalScope {
public:
    virtual ~SignalScope() = default;
    virtual SignalManager* getSignalManager() = 0;
    // The module's own wood.
    virtual Bddexpressionwood* getBddWood() = 0;
    virtual std::list<memorizedSignal*>* getPreSignalList() = 0;

    // Null for a null module.
    static SignalScope* of(Module* m);
    // The module's manager; a null module or manager is a fatal error that
    // names `where`.
    static SignalManager* managerOf(Module* m, const std::string& where);
    static SignalManager* managerOf(Module* m, const char* where);
    static void install(SignalScope* (*convert)(Module*)) { conversion = convert; }

private:
    static SignalScope* (*conversion)(Module*);
};

#endif
