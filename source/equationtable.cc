#include "source/equationtable.h"

#include "bdd/bddpp.h"
#include "data/data.h"
#include "context/compilation.h"
#include "signals/expression.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "source/source_errors.h"
#include "wood/Bddexpression.h"

#include <iostream>
#include <set>

long EquationTable::getPertLevel() const { return wood != nullptr ? wood->Nb_level() : 0; }

// e := e or f. The wood's own append runs its critical-path walks as a
// cycle watch; they enumerate every path, which the reconvergent branches
// of a body make exponential in number, and on a cycle they dissolve
// variables: the dating of callPert reports cycles instead. The nodes are
// made as the append makes them.
static void join(Bddexpression* e, const bdd& f)
{
    bdd joined = e->my_wood()->my_bdd_manager()->Bdd_or(f, e->my_bdd_exp());
    e->setBddExp(joined, e->getEarlyDate(), e->getLateDate());
}

// e := f, without the watch (see join).
static void replace(Bddexpression* e, const bdd& f) { e->setBddExp(f, e->getEarlyDate(), e->getLateDate()); }

Bddexpression* EquationTable::equationOf(long id) const
{
    if (id < 0 || id >= wood->Nb_bdd_vars())
        return nullptr;
    return wood->Exp_table()[id];
}

void EquationTable::createEquation(Signal* s, Expression* e, Module* m, bool initial)
{
    int overType = s->computeOverType();
    int underType = s->computeUnderType();
    bdd over = initial ? e->getInitialOverBdd(m, wood) : e->getOverBdd(m, wood);
    long overId = initial ? s->getInitialOverBddId(m, wood) : s->getOverBddId(m, wood);
    std::string name = s->getName(m, wood);
    new Bddexpression(name, wood, wood->Bdd_var_by_index(overId), over, 0, 0, overType);
    long underId = initial ? s->getInitialUnderBddId(m, wood) : s->getUnderBddId(m, wood);
    bdd under;
    if (s->isWire())
        under = wood->Bdd_not(wood->Bdd_var_by_index(overId));
    else
        under = initial ? e->getInitialUnderBdd(m, wood) : e->getUnderBdd(m, wood);
    new Bddexpression(name, wood, wood->Bdd_var_by_index(underId), under, 0, 0, underType);
}

// The wires of the signals s depends on, and of the carriers those signals
// clock: the value of s is computed after theirs. The readers' table learns
// the same edges, so that dating sees them.
void EquationTable::addDependences(Bddexpression* e, long id, Signal* s, Module* m)
{
    std::set<Signal*>& dependences = s->getDependenceSet();
    if (dependences.empty())
        return;
    auto depend = [&](long d) {
        if (d < 0 || d >= wood->Nb_bdd_vars())
            return;
        e->add_specific_var_dependance(d);
        wood->Amont_table()[d].insert(id);
    };
    for (Signal* d : dependences) {
        depend(d->getOverBddId(m, wood));
        std::map<std::string, DataBinding*>* table = m->getDataTable();
        if (table == nullptr) {
            std::cerr << "****error:" << "signal:" << s->getName(m) << "valued without data table for main module\n";
            continue;
        }
        for (auto& entry : *table) {
            DataBinding* b = entry.second;
            if (b->getClock() != nullptr && b->getClock()->getInternalName() == d->getInternalName())
                depend(b->getSignal()->getOverBddId(m, wood));
        }
    }
}

void EquationTable::createUnifyEquation(Signal* s, Expression* e, Module* m, bool initial)
{
    long overId = s->getOverBddId(m, wood);
    Bddexpression* over = equationOf(overId);
    if (over == nullptr) {
        std::cerr << "internal error 1 in createUnifyEquation()! about oid=" << overId << std::endl;
    } else {
        join(over, initial ? e->getInitialOverBdd(m, wood) : e->getOverBdd(m, wood));
        addDependences(over, overId, s, m);
    }
    long underId = s->getUnderBddId(m, wood);
    Bddexpression* under = equationOf(underId);
    if (under == nullptr) {
        std::cerr << "internal error 2 in createUnifyEquation()! about uid=" << underId << std::endl;
    } else {
        bdd contribution = initial ? e->getInitialUnderBdd(m, wood) : e->getUnderBdd(m, wood);
        if (!wood->my_bdd_manager()->Bdd_is_zero_tautologic(contribution))
            underSet.insert(s->getInternalName());
        join(under, contribution);
        addDependences(under, underId, s, m);
    }
}

void EquationTable::createRegisterEquation(Signal* s, Module* m)
{
    bdd left = s->getUnderBdd(m, wood);
    bdd right = wood->Bdd_not(s->getOverBdd(m, wood));
    new Bddexpression(s->getName(m, wood), wood, left, right, 0, 0, s->computeUnderType());
}

void EquationTable::createBottomEquation(Signal* s, Module* m)
{
    std::string name = s->getName(m, wood);
    new Bddexpression(name, wood, s->getOverBdd(m, wood), wood->Bdd_zero(), 0, 0, s->computeOverType());
    new Bddexpression(name, wood, s->getUnderBdd(m, wood), wood->Bdd_zero(), 0, 0, s->computeUnderType());
}

void EquationTable::createBottomEquation(Signal* s, Module* m, int occurrence)
{
    SignalRef* ref = m->getSignalManager()->getSignalRefByOccurrence(s, occurrence);
    if (ref == nullptr || !ref->hasWood(wood))
        Compilation::IllegalOperationException("createBottomEquation: no signalref" + s->getInternalName());
    std::string name = ref->getCurrentName();
    new Bddexpression(name, wood, wood->Bdd_var_by_index(ref->getOverBddId(wood)), wood->Bdd_zero(), 0, 0,
                      s->computeOverType());
    new Bddexpression(name, wood, wood->Bdd_var_by_index(ref->getUnderBddId(wood)), wood->Bdd_zero(), 0, 0,
                      s->computeUnderType());
}

void EquationTable::replaceEquation(Signal* s, Signal* t, Module* m)
{
    std::string name = s->getName(m, wood);
    if (Bddexpression* e = equationOf(s->getOverBddId(m, wood)))
        replace(e, t->getOverBdd(m, wood));
    else
        new Bddexpression(name, wood, s->getOverBdd(m, wood), t->getOverBdd(m, wood), 0, 0, Compilation::STAT);
    if (Bddexpression* e = equationOf(s->getUnderBddId(m, wood)))
        replace(e, t->getUnderBdd(m, wood));
    else
        new Bddexpression(name, wood, s->getUnderBdd(m, wood), t->getUnderBdd(m, wood), 0, 0, Compilation::VAL);
}

void EquationTable::cond(Signal* s, Module* m)
{
    std::list<Signal*>* outputs = m->getOutputSignalList();
    if (outputs == nullptr)
        return;
    for (Signal* x : *outputs)
        for (long id : {x->getOverBddId(m, wood), x->getUnderBddId(m, wood)}) {
            if (id < 0 || id >= wood->Nb_bdd_vars())
                throw IllegalOperationException("EquationTable::id out of bounds");
            if (Bddexpression* e = equationOf(id))
                replace(e, wood->Bdd_and(s->getOverBdd(m, wood), e->my_bdd_exp()));
        }
}

void EquationTable::pre(Module* m)
{
    SignalManager* manager = m->getSignalManager();
    for (std::list<Signal*>* list : {m->getOutputSignalList(), m->getLocalSignalList()}) {
        if (list == nullptr)
            continue;
        for (Signal* s : *list) {
            if (s->isWire() || s->isValue() || !s->hasOccurrenceIn(wood) || s->getCurrentOccurrence(wood) < 0)
                continue;
            std::string next = s->getInternalName() + "_" + std::to_string(s->getCurrentOccurrence(wood) + 1);
            if (manager->getSignalRefByName(next) != nullptr || wood->Index_var_by_name("_s_" + next) >= 0)
                Compilation::fatal("Error in module \"" + m->getName() + "\":\n signal \"" + next +
                                   "\" meets an occurrence of \"" + s->getInternalName() + "\"");
            s->newOccurrence(wood, m);
            createBottomEquation(s, m, s->getCurrentOccurrence(wood));
            SignalRef* first = manager->getSignalRefByName(s->getInternalName());
            Bddexpression* over = first != nullptr ? equationOf(first->getOverBddId(wood)) : nullptr;
            Bddexpression* under = first != nullptr ? equationOf(first->getUnderBddId(wood)) : nullptr;
            if (over == nullptr)
                std::cerr << "undefined equation for over wire of :" << s->getInternalName() << std::endl;
            else
                join(over, s->getOverBdd(m, wood));
            if (under == nullptr)
                std::cerr << "undefined equation for under wire of :" << s->getInternalName() << std::endl;
            else
                join(under, s->getUnderBdd(m, wood));
        }
    }
}

void EquationTable::mask(long id, const bdd& mask)
{
    if (Bddexpression* e = equationOf(id))
        if (e->getAbstraction() == 0)
            replace(e, wood->Bdd_and(mask, e->my_bdd_exp()));
}

// ------------------------------------------------------------------- dates

std::string EquationTable::computeDependence(const std::list<long>& cycle) const
{
    std::set<long> members(cycle.begin(), cycle.end());
    std::string text;
    for (long i : cycle) {
        text += "   " + wood->Name_var_by_index(i) + " <-";
        if (Bddexpression* e = equationOf(i))
            for (long d : e->dependances)
                if (members.count(d) != 0)
                    text += " " + wood->Name_var_by_index(d);
        text += "\n";
    }
    return text;
}

void EquationTable::checkCycle()
{
    std::list<long> cycle = wood->loop_detection();
    if (cycle.empty())
        return;
    std::string text = "ERROR in Module `" + moduleName + "': detecting variables in a dependance cycle:\n";
    for (long i : cycle)
        text += "   " + wood->Name_var_by_index(i) + "\n";
    text += "when sorting equations: \n" + computeDependence(cycle);
    Compilation::fatal(text);
}

void EquationTable::callPert()
{
    if (wood->compute_dates() < 0)
        Compilation::ModulePertFailureException();
    checkCycle();
}

void EquationTable::callPert(std::list<long>& ids)
{
    if (wood->compute_dates(ids) < 0)
        Compilation::ModulePertFailureException();
    checkCycle();
}
