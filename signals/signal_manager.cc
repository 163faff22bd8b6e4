#include "signals/signal_manager.h"

#include "context/compilation.h"
#include "signals/signal.h"
#include "wood/Bddexpression.h"

#include <algorithm>

SignalScope* (*SignalScope::conversion)(Module*) = nullptr;

SignalScope* SignalScope::of(Module* m)
{
    // A non-null Module* exists only after a Module was built, and building
    // one installs the conversion.
    if (m == nullptr || conversion == nullptr)
        return nullptr;
    return conversion(m);
}

SignalManager* SignalScope::managerOf(Module* m, const std::string& where)
{
    return managerOf(m, where.c_str());
}

SignalManager* SignalScope::managerOf(Module* m, const char* where)
{
    SignalScope* scope = of(m);
    SignalManager* manager = scope != nullptr ? scope->getSignalManager() : nullptr;
    if (manager == nullptr)
        Compilation::IllegalOperationException(std::string(where) + ": no signal manager for the module");
    return manager;
}

// ---------------------------------------------------------------- SignalRef

SignalRef::SignalRef(std::string original, std::string internal, Module* m, Bddexpressionwood* wood)
    : internal_name(std::move(internal))
{
    if (original == internal_name)
        same_original = true;
    else
        original_name = std::move(original);
    enter(m, wood);
}

SignalRef::SignalRef(std::string original, std::string internal, std::string current, int occurrence, Module* m,
                     Bddexpressionwood* wood)
    : internal_name(std::move(internal)), current_name(current), occurrence(occurrence),
      occurrence_flag(true)
{
    if (original == internal_name)
        same_original = true;
    else
        original_name = std::move(original);
    enter(m, wood);
}

long SignalRef::computeId(Bddexpressionwood* wood, const std::string& name)
{
    return wood->Index_var_or_new_last(name);
}

long SignalRef::computeId_literal(Bddexpressionwood* wood, const std::string& name)
{
    long index = wood->Index_var_by_name(name);
    if (index < 0)
        index = wood->Index_new_var_last(name);
    return index;
}

void SignalRef::enter(Module* m, Bddexpressionwood* wood)
{
    SignalManager* manager = SignalScope::managerOf(m, "SignalRef::SignalRef");
    if (wood == nullptr)
        Compilation::IllegalOperationException("SignalRef::SignalRef: no wood for " + getCurrentName());
    // Over before under: the file format numbers a signal's wires in this
    // order.
    std::string wire;
    wire.reserve(getCurrentName().size() + 3);
    wire.append("_s_").append(getCurrentName());
    long over;
    long under;
    if (manager->defersWoodTables()) {
        bddpp_manager* variables = wood->my_bdd_manager();
        bool created = false;
        over = variables->Index_var_or_new_last(wire, created);
        wire[1] = 'v';
        under = variables->Index_var_or_new_last(wire, created);
    } else {
        over = computeId(wood, wire);
        wire[1] = 'v';
        under = computeId(wood, wire);
    }
    addBddIds(over, under, wood);
    manager->addSignalRef(this);
    manager->addSignalRefIdTable(over, under, this, wood);
}

void SignalRef::addBddIds(long over, long under, Bddexpressionwood* wood)
{
    if (!ids.insert(wood, std::make_pair(over, under)))
        Compilation::IllegalOperationException("SignalRef::addBddIds: wood already added" + getCurrentName());
}

long SignalRef::getOverBddId(Bddexpressionwood* wood) const
{
    const WoodPairs::Value* pair = ids.find(wood);
    if (pair == nullptr)
        Compilation::IllegalOperationException("SignalRef::getOverBddId:unknown wood" + getCurrentName());
    return pair->first;
}

long SignalRef::getUnderBddId(Bddexpressionwood* wood) const
{
    const WoodPairs::Value* pair = ids.find(wood);
    if (pair == nullptr)
        Compilation::IllegalOperationException("SignalRef::getUnderBddId:unknown wood" + getCurrentName());
    return pair->second;
}

void SignalRef::setOverBddId(long id, Bddexpressionwood* wood)
{
    WoodPairs::Value* pair = ids.find(wood);
    if (pair == nullptr)
        Compilation::IllegalOperationException("SignalRef::setOverBddId: wood not found");
    pair->first = id;
}

void SignalRef::setUnderBddId(long id, Bddexpressionwood* wood)
{
    WoodPairs::Value* pair = ids.find(wood);
    if (pair == nullptr)
        Compilation::IllegalOperationException("SignalRef::setUnderBddId: wood not found");
    pair->second = id;
}

const std::string& SignalRef::pureType()
{
    static const std::string pure = "pure";
    return pure;
}

// ------------------------------------------------------------ SignalManager

SignalRef* SignalManager::getSignalRefByName(const std::string& name) const
{
    return refs.find(name);
}

void SignalManager::prefetchSignalRef(const std::string& name, Bddexpressionwood* wood) const
{
    refs.prefetch(name);
    if (!defer_wood_tables || wood == nullptr)
        return;
    std::string over;
    over.reserve(name.size() + 3);
    over.append("_s_").append(name);
    std::string under = over;
    under[1] = 'v';
    wood->my_bdd_manager()->prefetch_new_variables(over, under);
}

SignalRef* SignalManager::getSignalRefById(long id, Bddexpressionwood* wood) const
{
    auto it = tables.find(wood);
    return it == tables.end() ? nullptr : it->second->get(id);
}

SignalRef* SignalManager::getSignalRefByOccurrence(Signal* s, int occ) const
{
    if (occ == 0)
        return getSignalRefByName(s->getInternalName());
    std::string name = s->getInternalName();
    name += '_';
    name += std::to_string(occ);
    return getSignalRefByName(name);
}

std::list<SignalRef*> SignalManager::getAllSignalRef(Signal* s, Bddexpressionwood* wood) const
{
    std::vector<SignalRef*> found;
    refs.for_each([&](SignalRef* ref) {
        if (ref->getInternalName() == s->getInternalName() && ref->hasWood(wood))
            found.push_back(ref);
    });
    // The table is hashed; the answer goes by name, the keys being unique.
    std::sort(found.begin(), found.end(),
              [](const SignalRef* a, const SignalRef* b) { return a->getCurrentName() < b->getCurrentName(); });
    return std::list<SignalRef*>(found.begin(), found.end());
}

SignalRef* SignalManager::getCurrentOccurrence(Signal* s, Bddexpressionwood* wood) const
{
    std::list<SignalRef*> all = getAllSignalRef(s, wood);
    return all.empty() ? nullptr : all.front();
}

void SignalManager::addSignalRef(SignalRef* ref)
{
    if (refs.insert(ref) != nullptr)
        Compilation::HashTableAddException("SignalManager::addSignalRef", ref->getCurrentName());
}

void SignalManager::extendIdTable(Bddexpressionwood* wood)
{
    auto it = tables.find(wood);
    if (it == tables.end())
        tables[wood] = new SignalRefTable(wood->Nb_bdd_vars());
    else
        it->second->extend(wood->Nb_bdd_vars());
}

void SignalManager::addSignalRefIdTable(long over, long under, SignalRef* ref, Bddexpressionwood* wood)
{
    extendIdTable(wood);
    SignalRefTable* table = tables[wood];
    // A variable that the manager had before the wood caught up with it can
    // lie beyond Nb_bdd_vars; the table must hold it all the same.
    table->extend(std::max(over, under) + 1);
    if (over >= 0) {
        if (table->get(over) != nullptr)
            Compilation::IllegalOperationException("addSignalRef (excep1) " + ref->getCurrentName());
        table->slot(over) = ref;
    }
    if (under >= 0) {
        if (table->get(under) != nullptr)
            Compilation::IllegalOperationException("addSignalRef (excep2)" + ref->getCurrentName());
        table->slot(under) = ref;
    }
}

void SignalManager::extendSignalRef(long over, long under, SignalRef* ref, Bddexpressionwood* wood)
{
    ref->addBddIds(over, under, wood);
    addSignalRefIdTable(over, under, ref, wood);
}

void SignalManager::duplicate(Bddexpressionwood* from, Bddexpressionwood* to)
{
    refs.for_each([&](SignalRef* ref) {
        if (ref->hasWood(from) && !ref->hasWood(to))
            ref->addBddIds(ref->getOverBddId(from), ref->getUnderBddId(from), to);
    });
    auto it = tables.find(from);
    if (it != tables.end() && tables.count(to) == 0)
        tables[to] = new SignalRefTable(*it->second);
}

void SignalManager::deleteWood(Bddexpressionwood* wood)
{
    refs.for_each([wood](SignalRef* ref) { ref->removeWood(wood); });
    auto it = tables.find(wood);
    if (it != tables.end()) {
        delete it->second;
        tables.erase(it);
    }
}
