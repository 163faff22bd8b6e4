#include "signals/signal.h"

#include "context/compilation.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"

#include <cstdlib>
#include <iostream>

Signal::Signal(std::string name, Module* m, Bddexpressionwood* wood)
    : internal_name(std::move(name)), same_original(true)
{
    init(m, wood);
}

Signal::Signal(std::string name, Module* m, Bddexpressionwood* wood, bool wire)
    : Expression(wire), internal_name(std::move(name)), same_original(true), wire(wire), register_flag(wire)
{
    init(m, wood);
}

Signal::Signal(std::string original, std::string internal, Module* m, Bddexpressionwood* wood)
    : internal_name(std::move(internal))
{
    keepOriginal(std::move(original));
    init(m, wood);
}

Signal::Signal(std::string original, std::string internal, Module* m, Bddexpressionwood* wood, bool wire)
    : Expression(wire), internal_name(std::move(internal)), wire(wire), register_flag(wire)
{
    keepOriginal(std::move(original));
    init(m, wood);
}

void Signal::keepOriginal(std::string original)
{
    if (original == internal_name)
        same_original = true;
    else
        original_name = std::move(original);
}

void Signal::init(Module* m, Bddexpressionwood* wood)
{
    current_occurrence[wood] = 0;
    SignalManager* manager = SignalScope::managerOf(m, "Signal::Signal");
    // Two signals of one internal name share the ref, and so their wires.
    manager->prefetchSignalRef(internal_name, wood);
    SignalRef* ref = manager->getSignalRefByName(internal_name);
    if (ref == nullptr)
        ref = new SignalRef(getOriginalName(), internal_name, m, wood);
    known_manager = manager;
    known_ref = ref;
}

SignalRef* Signal::initialRef(SignalManager* manager)
{
    if (manager == known_manager && known_ref != nullptr)
        return known_ref;
    SignalRef* ref = manager->getSignalRefByName(internal_name);
    // A ref not there yet may come later: only a found one is kept.
    if (ref != nullptr) {
        known_manager = manager;
        known_ref = ref;
    }
    return ref;
}

void Signal::setLocal()
{
    local = true;
    input = false;
    output = false;
}

void Signal::setRegister()
{
    register_flag = true;
    wire = true;
}

int Signal::getCurrentOccurrence(Bddexpressionwood* wood)
{
    const int* occ = current_occurrence.find(wood);
    if (occ == nullptr) {
        std::cerr << "Signal:getCurrentOccurrence: no current occurrence for the considered wood:" << wood
                  << "  for signal:" << internal_name << std::endl;
        std::exit(1);
    }
    return *occ;
}

SignalRef* Signal::refOfOccurrence(Module* m, Bddexpressionwood* wood, const char* where)
{
    if (current_occurrence.empty())
        Compilation::IllegalOperationException(std::string(where) + ": no current occurrence for this wood");
    SignalManager* manager = SignalScope::managerOf(m, where);
    // An unknown wood starts at occurrence 0.
    int occ = current_occurrence[wood];
    SignalRef* ref = occ == 0 ? initialRef(manager) : manager->getSignalRefByOccurrence(this, occ);
    if (ref == nullptr)
        Compilation::IllegalOperationException(std::string(where) + ": no ref for signal" + internal_name);
    return ref;
}

long Signal::getOverBddId(Module* m, Bddexpressionwood* wood)
{
    return refOfOccurrence(m, wood, "Signal::getOverBddId")->getOverBddId(wood);
}

long Signal::getUnderBddId(Module* m, Bddexpressionwood* wood)
{
    return refOfOccurrence(m, wood, "Signal::getUnderBddId")->getUnderBddId(wood);
}

long Signal::getInitialOverBddId(Module* m, Bddexpressionwood* wood)
{
    SignalRef* ref = initialRef(SignalScope::managerOf(m, "Signal::getInitialOverBddId"));
    if (ref == nullptr)
        Compilation::IllegalOperationException("Signal::getInitialOverBddId: no ref for signal" + internal_name);
    return ref->getOverBddId(wood);
}

long Signal::getInitialUnderBddId(Module* m, Bddexpressionwood* wood)
{
    SignalRef* ref = initialRef(SignalScope::managerOf(m, "Signal::getInitialUnderBddId"));
    if (ref == nullptr)
        Compilation::IllegalOperationException("Signal::getInitialUnderBddId: no ref for signal" + internal_name);
    return ref->getUnderBddId(wood);
}

std::list<long> Signal::getAllBddId(Module* m, Bddexpressionwood* wood)
{
    std::list<long> ids;
    eachBddId(m, wood, [&ids](long id) { ids.push_back(id); });
    return ids;
}

void Signal::appendAllBddId(Module* m, Bddexpressionwood* wood, std::vector<long>& ids)
{
    eachBddId(m, wood, [&ids](long id) { ids.push_back(id); });
}

template <class Put>
void Signal::eachBddId(Module* m, Bddexpressionwood* wood, Put put)
{
    if (!local && !wire && !output)
        Compilation::IllegalOperationException("Signal::getAllBddId" + internal_name);
    int c = getCurrentOccurrence(wood);
    if (c == -1)
        return;
    if (c == 0) {
        // getOverBddId then getUnderBddId, on one look-up of the ref.
        SignalRef* ref = refOfOccurrence(m, wood, "Signal::getOverBddId");
        put(ref->getOverBddId(wood));
        put(ref->getUnderBddId(wood));
        return;
    }
    SignalManager* manager = SignalScope::managerOf(m, "Signal::getAllBddId");
    for (int k = 0; k <= c; k++) {
        SignalRef* ref = k == 0 ? initialRef(manager) : manager->getSignalRefByOccurrence(this, k);
        if (ref == nullptr)
            Compilation::IllegalOperationException(" Signal::getAllBddId: Unknown Signal Ref" + internal_name);
        put(ref->getOverBddId(wood));
        put(ref->getUnderBddId(wood));
    }
}

static Bddexpressionwood* moduleWood(Module* m, const char* where)
{
    SignalScope* scope = SignalScope::of(m);
    Bddexpressionwood* wood = scope != nullptr ? scope->getBddWood() : nullptr;
    if (wood == nullptr)
        Compilation::IllegalOperationException(std::string(where) + ": no wood for the module");
    return wood;
}

std::string Signal::getOverName(Module* m)
{
    Bddexpressionwood* wood = moduleWood(m, "Signal::getOverName");
    return wood->Name_var_by_index(getOverBddId(m, wood));
}

std::string Signal::getUnderName(Module* m)
{
    Bddexpressionwood* wood = moduleWood(m, "Signal::getUnderName");
    return wood->Name_var_by_index(getUnderBddId(m, wood));
}

std::string Signal::getName(Module*, Bddexpressionwood* wood)
{
    int occ = getCurrentOccurrence(wood);
    return occ == 0 ? internal_name : internal_name + "_" + std::to_string(occ);
}

std::string Signal::getName(Module* m) { return getName(m, moduleWood(m, "Signal::getName")); }

SignalRef* Signal::getSignalRef(SignalManager* manager, Bddexpressionwood* wood)
{
    if (manager == nullptr)
        return nullptr;
    int occ = getCurrentOccurrence(wood);
    return occ == 0 ? initialRef(manager) : manager->getSignalRefByOccurrence(this, occ);
}

bool Signal::isValued(Module* m) { return isValued(m, moduleWood(m, "Signal::isValued")); }

bool Signal::isValued(Module* m, Bddexpressionwood* wood)
{
    SignalRef* ref = getSignalRef(SignalScope::managerOf(m, "Signal::isValued"), wood);
    if (ref == nullptr)
        Compilation::IllegalOperationException("Signal::isValued: no ref for signal" + internal_name);
    return ref->isValued();
}

std::string Signal::getValueType(Module* m) { return getValueType(m, moduleWood(m, "Signal::getValueType")); }

std::string Signal::getValueType(Module* m, Bddexpressionwood* wood)
{
    SignalRef* ref = getSignalRef(SignalScope::managerOf(m, "Signal::getValueType"), wood);
    if (ref == nullptr)
        Compilation::IllegalOperationException("Signal::getValueType: no ref for signal" + internal_name);
    return ref->getType();
}

void Signal::setValueType(std::string type, Module* m)
{
    setValueType(std::move(type), m, moduleWood(m, "Signal::setValueType"));
}

void Signal::setValueType(std::string type, Module* m, Bddexpressionwood* wood)
{
    SignalRef* ref = getSignalRef(SignalScope::managerOf(m, "Signal::setValueType"), wood);
    if (ref == nullptr)
        Compilation::IllegalOperationException("Signal::setValueType: no ref for signal" + internal_name);
    ref->setValueType(std::move(type));
}

bool Signal::usedwithPre(Module* m)
{
    SignalScope* scope = SignalScope::of(m);
    std::list<memorizedSignal*>* pairs = scope != nullptr ? scope->getPreSignalList() : nullptr;
    if (pairs == nullptr)
        return false;
    for (memorizedSignal* pair : *pairs)
        if (pair != nullptr && pair->getActual() == this)
            return isValued(m);
    return false;
}

int Signal::computeOverType() const
{
    if (input)
        return Compilation::SINPUT;
    if (output)
        return Compilation::SOUTPUT;
    if (register_flag)
        return Compilation::SREG;
    if (clock)
        return Compilation::SCLOCK;
    if (wire)
        return Compilation::SWIRE;
    return Compilation::STAT;
}

int Signal::computeUnderType() const
{
    if (input)
        return Compilation::VINPUT;
    if (output)
        return Compilation::VOUTPUT;
    if (register_flag)
        return Compilation::VREG;
    if (clock)
        return Compilation::VCLOCK;
    if (wire)
        return Compilation::VWIRE;
    return Compilation::VAL;
}

static void replaceAt(std::string& name, const std::string& by)
{
    std::string out;
    for (char ch : name) {
        if (ch == '@')
            out += by;
        else
            out += ch;
    }
    name = out;
}

void Signal::ReplaceAtCharacterInAllNames(std::string c)
{
    if (!same_original) {
        std::string original = original_name;
        replaceAt(original, c);
        original_name = original;
    }
    replaceAt(internal_name, c);
    // The kept ref was found by the old name.
    known_manager = nullptr;
    known_ref = nullptr;
}

Signal* Signal::newOccurrence(Bddexpressionwood* wood, Module* m)
{
    if (!local && !output)
        return this;
    SignalManager* manager = SignalScope::managerOf(m, "Signal::newOccurrence");
    int previous = getCurrentOccurrence(wood);
    int occ = previous + 1;
    std::string current = internal_name + "_" + std::to_string(occ);
    current_occurrence[wood] = occ;
    SignalRef* ref = manager->getSignalRefByName(current);
    if (ref == nullptr) {
        ref = new SignalRef(getOriginalName(), internal_name, current, occ, m, wood);
        SignalRef* before =
            previous == 0 ? initialRef(manager) : manager->getSignalRefByOccurrence(this, previous);
        if (before != nullptr && before->isValued())
            ref->setValueType(before->getType());
        return this;
    }
    if (ref->hasWood(wood))
        Compilation::IllegalOperationException(
            "Signal::newOccurrence: signal ref already exits for the current wood" + internal_name);
    long over = SignalRef::computeId(wood, "_s_" + current);
    long under = SignalRef::computeId(wood, "_v_" + current);
    manager->extendSignalRef(over, under, ref, wood);
    return this;
}

static void copyType(const SignalRef* from, SignalRef* to)
{
    if (from == nullptr || to == nullptr)
        return;
    if (from->isValued())
        to->setValueType(from->getType());
}

Signal* Signal::copyInto(Module* from, Bddexpressionwood* fromWood, Module* to, Bddexpressionwood* toWood)
{
    Signal* copy = new Signal(getOriginalName(), internal_name, to, toWood);
    copy->wired = wired;
    copy->local = local;
    copy->input = input;
    copy->output = output;
    copy->wire = wire;
    copy->register_flag = register_flag;
    copy->clock = clock;
    copy->value = value;
    copy->pre = pre;
    copy->number = number;
    const int* from_occ = current_occurrence.find(fromWood);
    int occ = from_occ != nullptr ? *from_occ : 0;
    copy->current_occurrence[toWood] = occ;

    SignalManager* source = SignalScope::managerOf(from, "Signal::copyInto");
    SignalManager* target = SignalScope::managerOf(to, "Signal::copyInto");
    copyType(source->getSignalRefByName(internal_name), target->getSignalRefByName(internal_name));
    for (int k = 1; k <= occ; k++) {
        SignalRef* original = source->getSignalRefByOccurrence(this, k);
        if (original == nullptr || target->getSignalRefByName(original->getCurrentName()) != nullptr)
            continue;
        SignalRef* ref =
            new SignalRef(getOriginalName(), internal_name, original->getCurrentName(), k, to, toWood);
        copyType(original, ref);
    }
    return copy;
}

bdd Signal::getOverBdd(Module* m, Bddexpressionwood* wood) { return wood->Bdd_var_by_index(getOverBddId(m, wood)); }

bdd Signal::getUnderBdd(Module* m, Bddexpressionwood* wood) { return wood->Bdd_var_by_index(getUnderBddId(m, wood)); }

bdd Signal::getInitialOverBdd(Module* m, Bddexpressionwood* wood)
{
    return wood->Bdd_var_by_index(getInitialOverBddId(m, wood));
}

bdd Signal::getInitialUnderBdd(Module* m, Bddexpressionwood* wood)
{
    return wood->Bdd_var_by_index(getInitialUnderBddId(m, wood));
}

void Signal::print(std::ostream& os) { os << internal_name; }

std::ostream& operator<<(std::ostream& os, const memorizedSignal& m)
{
    os << (m.getPre() != nullptr ? m.getPre()->getInternalName() : std::string("?")) << " "
       << (m.getActual() != nullptr ? m.getActual()->getInternalName() : std::string("?")) << " "
       << m.getInitialValue() << ";";
    return os;
}

std::ostream& operator<<(std::ostream& os, const regclass& r)
{
    os << (r.next_var() != nullptr ? r.next_var()->getInternalName() : std::string("?")) << " "
       << (r.actual_var() != nullptr ? r.actual_var()->getInternalName() : std::string("?")) << " "
       << (r.is_initialy_true() ? "1" : "0") << ";";
    return os;
}
