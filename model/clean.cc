// Passes around finalisation: typing equations by the kind of wire they
// define, and taking away what no output needs. The wood does the
// elimination; these passes say what it must keep and in what order.
#include "model/module.h"

#include "context/messages.h"
#include "wood/Bddexpression.h"

#include <iostream>
#include <vector>

[[noreturn]] static void passFault(const std::string& pass, const std::string& what)
{
    Compilation::IllegalOperationException("Module::" + pass + ": " + what);
}

std::list<int> Module::keptKinds(bool withPre)
{
    std::list<int> kinds{Compilation::SINPUT, Compilation::VINPUT, Compilation::SOUTPUT, Compilation::VOUTPUT,
                         Compilation::SREG,   Compilation::VREG,   Compilation::SCLOCK,  Compilation::VCLOCK};
    if (withPre) {
        kinds.push_back(Compilation::SUSEDPRE);
        kinds.push_back(Compilation::VUSEDPRE);
    }
    return kinds;
}

// Gives every existing equation of the signal's occurrence pairs the codes.
static void typePairs(Module* m, Bddexpressionwood* wood, Signal* s, int overType, int underType)
{
    std::list<long> ids = s->getAllBddId(m, wood);
    for (auto it = ids.begin(); it != ids.end();) {
        long o = *it++;
        if (it == ids.end())
            break;
        long u = *it++;
        if (o < 0)
            continue;
        if (Bddexpression* eo = wood->exp_by_index(o))
            eo->setUserType(overType);
        if (Bddexpression* eu = wood->exp_by_index(u))
            eu->setUserType(underType);
    }
}

void Module::update_user_type()
{
    if (wood == nullptr)
        return;
    if (outputs != nullptr) {
        for (Signal* s : *outputs) {
            if (s == nullptr)
                passFault("update_user_type", "null signal in the output list");
            // An output often has no under equation yet: finalize makes it.
            if (Bddexpression* e = wood->exp_by_bdd(s->getOverBdd(this, wood)))
                e->setUserType(Compilation::SOUTPUT);
            if (Bddexpression* e = wood->exp_by_bdd(s->getUnderBdd(this, wood)))
                e->setUserType(Compilation::VOUTPUT);
        }
    }
    if (locals != nullptr) {
        for (Signal* s : *locals) {
            if (s == nullptr)
                passFault("update_user_type", "null signal in the local list");
            if (s->isRegister())
                typePairs(this, wood, s, Compilation::SREG, Compilation::VREG);
            // After the register codes, so that a clock register ends as a
            // clock.
            if (s->isClock())
                typePairs(this, wood, s, Compilation::SCLOCK, Compilation::VCLOCK);
        }
    }
    if (memorized != nullptr) {
        for (memorizedSignal* pair : *memorized) {
            if (pair == nullptr || pair->getActual() == nullptr)
                passFault("update_user_type", "memorised pair of an undeclared signal");
            Signal* actual = pair->getActual();
            Bddexpression* eo = wood->exp_by_bdd(actual->getOverBdd(this, wood));
            if (eo != nullptr && eo->getUserType() != Compilation::SOUTPUT &&
                eo->getUserType() != Compilation::SINPUT)
                eo->setUserType(Compilation::SUSEDPRE);
            Bddexpression* eu = wood->exp_by_bdd(actual->getUnderBdd(this, wood));
            if (eu != nullptr && eu->getUserType() != Compilation::VOUTPUT &&
                eu->getUserType() != Compilation::VINPUT)
                eu->setUserType(Compilation::VUSEDPRE);
        }
    }
}

// The registers that are kept; the others fix their actual variable in the
// wood, through one run of restrictions.
static std::list<regclass*>* dropUselessRegisters(Module* m, Bddexpressionwood* wood,
                                                  std::list<regclass*>* registers,
                                                  Bddexpressionwood::ReductionRun& run)
{
    auto* kept = new std::list<regclass*>;
    for (regclass* r : *registers) {
        if (r == nullptr || r->next_var() == nullptr || r->actual_var() == nullptr)
            passFault("suppress_useless_registers", "register of an undeclared signal");
        long index = r->next_var()->getOverBddId(m, wood);
        Bddexpression* e = wood->exp_by_index(index);
        if (e == nullptr) {
            // The register is dropped with its missing equation.
            std::string text =
                "internal error 2 in Module::suppress_useless_registers() about index:" + std::to_string(index);
            fl_show_Smessages(text);
            std::cerr << text << std::endl;
            continue;
        }
        if (!wood->my_bdd_manager()->Bdd_is_tautology(e->my_bdd_exp(), r->is_initialy_true())) {
            kept->push_back(r);
            continue;
        }
        // The register never leaves its initial value: its actual variable
        // is that constant everywhere.
        std::cerr << "detecting useless register " << r->actual_var()->getInternalName() << std::endl;
        bdd actual = r->actual_var()->getOverBdd(m, wood);
        if (!Bddexpressionwood::bdd_initialised(actual)) {
            std::string text = "internal error 1 in Module::suppress_useless_registers(void)";
            fl_show_Smessages(text);
            std::cerr << text << std::endl;
            continue;
        }
        bdd literal = r->is_initialy_true() != 0 ? actual : wood->Bdd_not(actual);
        std::list<int> kinds = Module::keptKinds(false);
        wood->reduce_expressions(literal, kinds, run);
    }
    // The signals of a dropped register stay listed as locals, flagged
    // register, which is how clean_locals and finalize still treat them.
    return kept;
}

// Substitutes every local that is neither register, valued nor clock into
// its readers and unlists it; with a run, the wood goes on from the tables
// the run left.
static void eliminateLocals(Module* m, Bddexpressionwood* wood, std::list<Signal*>*& locals,
                            Bddexpressionwood::ReductionRun* run)
{
    if (locals == nullptr || wood == nullptr)
        return;
    auto* kept = new std::list<Signal*>;
    // Over then under of each eliminated local, in list order: the wood
    // eliminates them one after the other as single calls would. A vector,
    // not a list: list cells would stay in the small-object heap after the
    // run (28 MiB at a million equations); the pages reserved past the
    // last written are never touched.
    std::vector<long> eliminated;
    eliminated.reserve(2 * locals->size());
    for (Signal* s : *locals) {
        if (s == nullptr)
            passFault("clean_locals", "null signal in the local list");
        if (s->isRegister() || s->isValued(m) || s->isClock()) {
            kept->push_back(s);
            continue;
        }
        eliminated.push_back(s->getOverBddId(m, wood));
        eliminated.push_back(s->getUnderBddId(m, wood));
    }
    Bddexpressionwood::ReductionRun fresh;
    wood->suppress_local(eliminated, run != nullptr ? *run : fresh);
    // The old list is left alive: whoever swapped it in may still hold it.
    locals = kept;
}

void Module::clean()
{
    if (wood == nullptr || Compilation::KeepWiresFlag)
        return;
    std::list<int> kinds = keptKinds(true);
    // The wire pass leaves the tables exact, which the restrictions of the
    // useless registers would otherwise first make so over the whole wood,
    // and so would the elimination of the locals after them.
    Bddexpressionwood::ReductionRun run;
    wood->suppress_wires(kinds, run);
    if (registers != nullptr)
        registers = dropUselessRegisters(this, wood, registers, run);
    eliminateLocals(this, wood, locals, &run);
}

void Module::suppress_useless_registers()
{
    if (wood == nullptr || registers == nullptr)
        return;
    Bddexpressionwood::ReductionRun run;
    registers = dropUselessRegisters(this, wood, registers, run);
}

void Module::clean_locals()
{
    eliminateLocals(this, wood, locals, nullptr);
}

void Module::constants_propagation()
{
    if (wood == nullptr)
        return;
    std::list<int> kinds = keptKinds(false);
    wood->constants_propagation(kinds);
}

void Module::check_over_knowledge()
{
    if (wood == nullptr)
        return;
    bddpp_manager* manager = wood->my_bdd_manager();
    bdd error = wood->Bdd_zero();
    if (outputs != nullptr) {
        for (Signal* s : *outputs) {
            if (s == nullptr)
                passFault("check_over_knowledge", "null signal in the output list");
            std::list<long> ids = s->getAllBddId(this, wood);
            for (auto it = ids.begin(); it != ids.end();) {
                long o = *it++;
                if (it == ids.end())
                    break;
                long u = *it++;
                Bddexpression* eo = o >= 0 ? wood->exp_by_index(o) : nullptr;
                Bddexpression* eu = u >= 0 ? wood->exp_by_index(u) : nullptr;
                // An abstract member has no function to join.
                if (eo == nullptr || eu == nullptr || !Bddexpressionwood::bdd_initialised(eo->my_bdd_exp()) ||
                    !Bddexpressionwood::bdd_initialised(eu->my_bdd_exp()))
                    continue;
                bdd both = manager->Bdd_and(eo->my_bdd_exp(), eu->my_bdd_exp());
                error = manager->Bdd_or(error, both);
            }
        }
    }
    Signal* flag = new Signal("OverKnowledgeError", this, wood);
    flag->setOutput();
    addOutputSignal(flag);
    bdd over = flag->getOverBdd(this, wood);
    new Bddexpression(flag->getInternalName(), wood, over, error, 0, 0, Compilation::VOUTPUT);
    bdd under = flag->getUnderBdd(this, wood);
    bdd noError = wood->Bdd_not(error);
    new Bddexpression(flag->getInternalName(), wood, under, noError, 0, 0, Compilation::VOUTPUT);
}

void Module::loose_first_underscore_in_name_variables()
{
    if (wood != nullptr && wood->my_bdd_manager() != nullptr)
        wood->my_bdd_manager()->No_begin_underscore_name();
}
