// Closing a module for generation. As read, every signal is four-valued
// (over, under); after finalize each wire that stays has a definite
// equation, the module has a boot register of its own and the wood is dated.
// The order of the steps is behaviour: each one reads what the previous left.
#include "model/module.h"

#include "data/data.h"
#include "context/messages.h"
#include "wood/Bddexpression.h"

#include <iostream>
#include <vector>

// Where the module is not what a reader leaves, the process ends with a
// message rather than following a null pointer.
[[noreturn]] static void finalizeFault(const std::string& what)
{
    Compilation::IllegalOperationException("Module::finalize: " + what);
}

static Signal* listed(Signal* s, const char* list)
{
    if (s == nullptr)
        finalizeFault(std::string("null signal in the ") + list + " list");
    return s;
}

void Module::finalize(Module* module, int keepRtl)
{
    if (module == nullptr)
        finalizeFault("no module to finalise");
    module->finalize(keepRtl);
}

// The next variable of each register must be typed as a register, whatever
// the compiler made of it; a different type is reported and replaced.
static void retypeRegisterNext(Module* m, Bddexpressionwood* wood)
{
    std::list<regclass*>* registers = m->getRegisterList();
    if (registers == nullptr)
        return;
    for (regclass* r : *registers) {
        if (r == nullptr || r->next_var() == nullptr)
            finalizeFault("register of an undeclared signal");
        Signal* next = r->next_var();
        long over = next->getOverBddId(m, wood);
        Bddexpression* e = wood->exp_by_index(over);
        if (e == nullptr)
            finalizeFault("no over equation for the next variable " + next->getInternalName());
        if (e->getUserType() != Compilation::SREG) {
            std::cerr << " Warning: reaffectation " << over << ": " << next->getOverName(m) << " with SREG"
                      << std::endl;
            e->setUserType(Compilation::SREG);
        }
        long under = next->getUnderBddId(m, wood);
        e = wood->exp_by_index(under);
        if (e == nullptr)
            finalizeFault("no under equation for the next variable " + next->getInternalName());
        if (e->getUserType() != Compilation::VREG) {
            // No colon after "Warning" in this one: the two texts differ.
            std::cerr << " Warning reaffectation " << under << ": " << next->getUnderName(m) << " with VREG"
                      << std::endl;
            e->setUserType(Compilation::VREG);
        }
    }
}

// The valued signal of a clocked binding counts as an output of the reaction
// for every later pass. A wire without equation has nothing to type.
static void typeClockedBindings(Module* m, Bddexpressionwood* wood)
{
    std::map<std::string, DataBinding*>* table = m->getDataTable();
    if (table == nullptr)
        return;
    for (const auto& entry : *table) {
        DataBinding* b = entry.second;
        if (b == nullptr || b->getClock() == nullptr)
            continue;
        if (b->getSignal() == nullptr)
            finalizeFault("clocked binding without signal under " + entry.first);
        long over = b->getSignal()->getInitialOverBddId(m, wood);
        long under = b->getSignal()->getInitialUnderBddId(m, wood);
        Bddexpression* eo = wood->exp_by_index(over);
        if (eo != nullptr && eo->getUserType() != Compilation::SOUTPUT)
            eo->setUserType(Compilation::SOUTPUT);
        Bddexpression* eu = wood->exp_by_index(under);
        if (eu != nullptr && eu->getUserType() != Compilation::VOUTPUT)
            eu->setUserType(Compilation::VOUTPUT);
    }
}

// Generators name the over wire of an input, output or pre signal by the
// signal's declared name.
static void renameOverToDeclaredName(Module* m, Bddexpressionwood* wood, Signal* s)
{
    bdd over = s->getOverBdd(m, wood);
    std::string current = wood->Name_var_by_bdd(over);
    wood->my_bdd_manager()->Rename_var(s->getOriginalName(), current);
}

// The environment sets the over wire of an input; the under wire follows,
// so an input is only ever True or False.
static void closeInput(Module* m, Bddexpressionwood* wood, Signal* s)
{
    bdd under = s->getUnderBdd(m, wood);
    bdd over = s->getOverBdd(m, wood);
    bdd notOver = wood->Bdd_not(over);
    new Bddexpression(s->getInternalName(), wood, under, notOver, 0, 0, Compilation::VINPUT);
    renameOverToDeclaredName(m, wood, s);
}

static bool constantZero(Bddexpressionwood* wood, Bddexpression* e)
{
    return wood->my_bdd_manager()->Bdd_is_zero_tautologic(e->my_bdd_exp());
}

// Completes each occurrence pair of an output or a local: what nothing made
// True at the end of a reaction counts as False.
static void closePairs(Module* m, Bddexpressionwood* wood, Signal* s, bool output)
{
    std::list<long> ids = s->getAllBddId(m, wood);
    for (auto it = ids.begin(); it != ids.end();) {
        long o = *it++;
        if (it == ids.end())
            break;
        long u = *it++;
        if (o < 0)
            continue;
        Bddexpression* eo = wood->exp_by_index(o);
        Bddexpression* eu = wood->exp_by_index(u);
        bdd overVar = wood->Bdd_var_by_index(o);
        bdd underVar = wood->Bdd_var_by_index(u);
        if (eu == nullptr) {
            // With no over equation either, the over wire stays free.
            bdd notOver = wood->Bdd_not(overVar);
            new Bddexpression(s->getInternalName(), wood, underVar, notOver, 0, 0, s->computeUnderType());
        } else if (eo != nullptr) {
            // Bottom at every reaction: an output becomes False, a local
            // keeps (0, 0) and is left to the constants pass.
            bool bottom = constantZero(wood, eo) && constantZero(wood, eu);
            if (bottom && output)
                eu->setBddExp(wood->Bdd_one());
        } else if (output || !s->isRegister()) {
            std::string text = "***Warning: Finalize: no over expression and under expression for:" +
                               wood->Name_var_by_index(u) + "!!!\n => changing over equation ...\n";
            fl_show_Smessages(text);
            std::cerr << text << std::endl;
            // The over wire is defined from the under wire, and the equation
            // carries the signal's value code although it defines an over
            // wire.
            bdd notUnder = wood->Bdd_not(underVar);
            new Bddexpression(s->getInternalName(), wood, overVar, notUnder, 0, 0, s->computeUnderType());
        }
    }
}

void Module::finalize(int keepRtl)
{
    finalised = 1;

    if (wood != nullptr) {
        retypeRegisterNext(this, wood);
        typeClockedBindings(this, wood);
        if (inputs != nullptr)
            for (Signal* s : *inputs)
                closeInput(this, wood, listed(s, "input"));
        if (data_signals != nullptr)
            for (Signal* s : *data_signals)
                closeInput(this, wood, listed(s, "data signal"));
        if (memorized != nullptr) {
            for (memorizedSignal* pair : *memorized) {
                if (pair == nullptr || pair->getPre() == nullptr)
                    finalizeFault("memorised pair without pre signal");
                closeInput(this, wood, pair->getPre());
            }
        }
        if (outputs != nullptr) {
            for (Signal* s : *outputs) {
                closePairs(this, wood, listed(s, "output"), true);
                renameOverToDeclaredName(this, wood, s);
            }
        }
        if (locals != nullptr)
            for (Signal* s : *locals)
                closePairs(this, wood, listed(s, "local"), false);
        std::list<int> kinds = keptKinds(true);
        wood->constants_propagation(kinds);
        clean();
    }

    if (wood == nullptr)
        finalizeFault("module " + name + " has no wood");

    // Every finalised module gets its own boot register, true in the first
    // reaction only (initial 1, next constantly 0).
    Signal* boot = new Signal(name + "_boot", this, wood, true);
    Signal* bootplus = new Signal(name + "bootplus", this, wood, true);
    addRegisterSignal(boot, bootplus, 1);
    addLocalSignal(boot);
    addLocalSignal(bootplus);

    // These two names carry no module name, so they find nothing unless the
    // module's name is empty; the boot wires stay by the register rule below.
    std::list<long> keep;
    keep.push_back(wood->Index_var_by_name("_s_boot"));
    keep.push_back(wood->Index_var_by_name("_s_bootplus"));

    if (set_signal == nullptr || reset_signal == nullptr)
        finalizeFault("module " + name + " has no SET or RESET signal");
    // SET is true in the first reaction only, RESET never; RTL stays free.
    std::string setName = set_signal->getInternalName();
    bdd setOver = set_signal->getOverBdd(this, wood);
    bdd bootOver = boot->getOverBdd(this, wood);
    new Bddexpression(setName, wood, setOver, bootOver, 0, 0);
    bdd setUnder = set_signal->getUnderBdd(this, wood);
    bdd notSetOver = wood->Bdd_not(setOver);
    new Bddexpression(setName, wood, setUnder, notSetOver, 0, 0);
    std::string resetName = reset_signal->getInternalName();
    bdd resetOver = reset_signal->getOverBdd(this, wood);
    bdd zero = wood->Bdd_zero();
    new Bddexpression(resetName, wood, resetOver, zero, 0, 0);
    bdd resetUnder = reset_signal->getUnderBdd(this, wood);
    bdd one = wood->Bdd_one();
    new Bddexpression(resetName, wood, resetUnder, one, 0, 0);
    bdd bootplusOver = bootplus->getOverBdd(this, wood);
    new Bddexpression("_s_bootplus", wood, bootplusOver, zero, 0, 0);
    bdd bootplusUnder = bootplus->getUnderBdd(this, wood);
    new Bddexpression("_v_bootplus", wood, bootplusUnder, one, 0, 0);

    // What must stay, in this order.
    if (inputs != nullptr)
        for (Signal* s : *inputs)
            keep.push_back(s->getOverBddId(this, wood));
    if (outputs != nullptr)
        for (Signal* s : *outputs)
            keep.push_back(s->getInitialOverBddId(this, wood));
    if (data_table != nullptr) {
        for (const auto& entry : *data_table) {
            DataBinding* b = entry.second;
            if (b == nullptr || b->getClock() == nullptr)
                continue;
            keep.push_back(b->getClock()->getInitialOverBddId(this, wood));
            keep.push_back(b->getSignal()->getInitialOverBddId(this, wood));
        }
    }
    for (Signal* s : *locals) {
        if (listed(s, "local")->isRegister()) {
            keep.push_back(s->getOverBddId(this, wood));
            keep.push_back(s->getUnderBddId(this, wood));
        }
    }
    if (keepRtl != 0) {
        if (rtl_signal == nullptr)
            finalizeFault("module " + name + " has no RTL signal");
        keep.push_back(rtl_signal->getOverBddId(this, wood));
    }
    if (memorized != nullptr) {
        for (memorizedSignal* pair : *memorized) {
            if (pair->getActual() == nullptr)
                finalizeFault("memorised pair of an undeclared signal");
            keep.push_back(pair->getActual()->getOverBddId(this, wood));
        }
    }
    wood->clean(keep);

    // Dates read from the file stay; the equations added here take their
    // place from the signals that read them.
    std::vector<long> dated;
    dated.reserve(2 * (locals->size() + (outputs != nullptr ? outputs->size() : 0)));
    for (Signal* s : *locals)
        s->appendAllBddId(this, wood, dated);
    if (outputs != nullptr)
        for (Signal* s : *outputs)
            s->appendAllBddId(this, wood, dated);
    wood->compute_dates(dated);

    loose_first_underscore_in_name_variables();
}
