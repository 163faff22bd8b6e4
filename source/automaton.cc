#include "source/automaton.h"

#include "context/compilation.h"
#include "context/messages.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "source/run.h"
#include "source/statement_control.h"
#include "wood/Bddexpression.h"

#include <algorithm>
#include <climits>
#include <iostream>
#include <utility>

namespace {

[[noreturn]] void abort_compilation(const std::string& text)
{
    Compilation::fatal(text + "\n\n   --> compilation process aborted ...");
}

// Conditions gathered for each emission, in the order first met, so that
// the equations come out the same on every run.
class Emissions {
public:
    explicit Emissions(bddpp_manager* b) : b(b) {}
    void add(Emit* e, const bdd& c)
    {
        for (auto& [emit, condition] : list)
            if (emit == e) {
                condition = b->Bdd_or(condition, c);
                return;
            }
        list.emplace_back(e, c);
    }
    void emit(Module* m, EquationTable* t)
    {
        for (auto& [e, condition] : list)
            e->emitWhen(m, t, new WiresExpression(condition, b->Bdd_zero()), false);
    }

private:
    bddpp_manager* b;
    std::vector<std::pair<Emit*, bdd>> list;
};

// The name free in the module: `base`, with "_" more while it is taken.
std::string free_name(Module* m, std::string base)
{
    while (m->getSignalManager()->getSignalRefByName(base) != nullptr)
        base += "_";
    return base;
}

} // namespace

bdd Transition::triggerable_bdd(Module* m)
{
    Bddexpressionwood* wood = m->getBddWood();
    bddpp_manager* b = wood->my_bdd_manager();
    if (trigger == nullptr)
        return b->Bdd_one();
    return b->Bdd_and(trigger->getInitialOverBdd(m, wood), b->Bdd_not(trigger->getInitialUnderBdd(m, wood)));
}

State* Automaton::state(const std::string& name) const
{
    for (State* s : states)
        if (s->getName() == name)
            return s;
    return nullptr;
}

void Automaton::complementary_check_syntax()
{
    for (State* s : states) {
        if (s->isFinal() && !s->getMooreActions().empty())
            abort_compilation("ERROR: The FINAL state: \"" + s->getName() +
                              "\" must not have one (or several) Moore action!");
        if (s->isFinal() && s->getRunModule() != nullptr)
            abort_compilation("ERROR: The FINAL state: \"" + s->getName() + "\" must not run a module!");
    }
    bool initial = false;
    for (Transition* t : transitions) {
        if (t->getTarget().empty())
            abort_compilation("PROBLEM DETECTED ABOUT FIRST STATE!!!");
        for (const std::string& name : {t->getSource(), t->getTarget()})
            if (!name.empty() && state(name) == nullptr)
                abort_compilation("ERROR: unknown state: \"" + name + "\" in a transition of module \"" +
                                  module->getName() + "\"");
        initial = initial || t->isInitial();
        if (!t->isInitial() && state(t->getSource())->isFinal())
            abort_compilation("ERROR: A transition beginning with the FINAL state: \"" + t->getSource() +
                              "\" is not supported!");
        if (!t->isInitial() && t->getType() == Transition::NORMAL_TERMINATION && t->hasTrigger())
            abort_compilation("ERROR: TRIGGER in the Normal Terminaison transition from \"" + t->getSource() +
                              "\" had been detected!");
    }
    if (!initial)
        abort_compilation("PROBLEM DETECTED ABOUT FIRST STATE!!!");
    for (State* s : states) {
        if (!s->isFinal())
            continue;
        bool entered = false;
        for (Transition* t : transitions)
            entered = entered || t->getTarget() == s->getName();
        if (!entered)
            abort_compilation("PROBLEM DETECTED ABOUT FINAL STATE!!!");
    }
    for (State* s : states) {
        for (Emit* e : s->getMooreActions())
            e->complementary_check_syntax();
        if (s->getRunModule() != nullptr)
            s->getRunModule()->complementary_check_syntax();
    }
    for (Transition* t : transitions) {
        for (Emit* e : t->getAction())
            e->complementary_check_syntax();
        if (t->getValueTrigger() != nullptr)
            checkValueCondition(module, t->getValueTrigger(), "a transition");
    }
}

void Automaton::check_determinism(Module* m, bddpp_manager* b)
{
    for (std::size_t i = 0; i < transitions.size(); i++)
        for (std::size_t j = i + 1; j < transitions.size(); j++) {
            Transition* x = transitions[i];
            Transition* y = transitions[j];
            if (x->getPriority() != y->getPriority())
                continue;
            bool init = x->isInitial() && y->isInitial();
            bool sibling = !x->isInitial() && !y->isInitial() && x->getSource() == y->getSource() &&
                           x->getType() == y->getType();
            if (!init && !sibling)
                continue;
            bdd both = b->Bdd_and(x->triggerable_bdd(m), y->triggerable_bdd(m));
            if (b->Bdd_is_zero_tautologic(both))
                continue;
            std::string details = "-> " + x->getTarget() + "\" and \"-> " + y->getTarget() + "\" when " +
                                  b->Print_sop_to_ESTEREL_String(both, 0);
            if (init)
                abort_compilation("ERROR: Non determinist automaton: Several possible Init transitions \"" + details);
            abort_compilation("ERROR: Non determinist automaton: Several possible transitions from state \"" +
                              x->getSource() + "\": \"" + details);
        }
}

void Automaton::priority_integration()
{
    // Initial transitions make one group, as the transitions of a state.
    std::vector<std::string> sources{""};
    for (State* s : states)
        sources.push_back(s->getName());
    auto rank = [](Transition* t) { return t->getPriority() < 0 ? INT_MAX : t->getPriority(); };
    for (const std::string& source : sources) {
        std::vector<Transition*> strong, weak;
        for (Transition* t : transitions) {
            if (t->getSource() != source)
                continue;
            if (t->isInitial() || t->getType() == Transition::WEAK)
                weak.push_back(t);
            else if (t->getType() == Transition::STRONG)
                strong.push_back(t);
        }
        for (auto* list : {&strong, &weak})
            std::stable_sort(list->begin(), list->end(),
                             [&](Transition* a, Transition* b) { return rank(a) < rank(b); });
        Expression* acc = new FalseExpression();
        for (auto* list : {&strong, &weak})
            for (Transition* t : *list) {
                if (t->getPriority() != 0) {
                    t->setTrigger(new AndExpression(t->getTrigger(), new NpExpression(acc)));
                    t->setPriority(0);
                }
                acc = new OrExpression(acc, t->getTrigger());
            }
    }
}

void Automaton::createEquations(Module* m, EquationTable* t)
{
    Bddexpressionwood* wood = m->getBddWood();
    bddpp_manager* b = wood->my_bdd_manager();
    createWires(m, t);

    // Triggers: a value becomes its test signal, none becomes True, and
    // "other" excludes the strong and weak triggers of its source.
    int index = 0;
    for (Transition* tr : transitions) {
        index++;
        if (tr->getValueTrigger() != nullptr)
            tr->setTrigger(valueTestSignal(m, tr->getValueTrigger(), "COND" + name + "_" + std::to_string(index)));
    }
    std::vector<Expression*> written;
    for (Transition* tr : transitions)
        written.push_back(tr->getTrigger() != nullptr ? tr->getTrigger() : new TrueExpression());
    for (std::size_t i = 0; i < transitions.size(); i++) {
        Transition* tr = transitions[i];
        Expression* trigger = written[i];
        if (tr->isOther()) {
            Expression* others = new FalseExpression();
            for (std::size_t j = 0; j < transitions.size(); j++) {
                Transition* x = transitions[j];
                if (!x->isOther() && x->getSource() == tr->getSource() && x->getType() != Transition::NORMAL_TERMINATION)
                    others = new OrExpression(others, written[j]);
            }
            trigger = new AndExpression(trigger, new NpExpression(others));
        }
        tr->setTrigger(trigger);
    }
    check_determinism(m, b);
    priority_integration();

    bdd start = b->Bdd_and(set->getOverBdd(m, wood), b->Bdd_not(set->getUnderBdd(m, wood)));
    bdd kill = b->Bdd_and(b->Bdd_and(reset->getOverBdd(m, wood), b->Bdd_not(reset->getUnderBdd(m, wood))),
                          b->Bdd_not(start));

    // Codes: 0 before the start (and after a kill), then the states in
    // order.
    int n = 0;
    for (State* s : states)
        s->setId(++n);
    int bits = 1;
    while ((1L << bits) <= n)
        bits++;
    std::vector<bdd> reg(bits), next(bits), setbit(bits, b->Bdd_zero()), clearbit(bits, b->Bdd_zero());
    std::vector<Signal*> nextSignal(bits);
    for (int i = 0; i < bits; i++) {
        Signal* actual;
        std::string r = free_name(m, "reg" + std::to_string(i) + m->getName());
        std::string rn = free_name(m, "reg" + std::to_string(i) + "next" + m->getName());
        createRegister(m, t, r, rn, actual, nextSignal[i]);
        reg[i] = actual->getOverBdd(m, wood);
        next[i] = nextSignal[i]->getOverBdd(m, wood);
    }
    auto minterm = [&](int code) { return b->Minterm(code, bits, reg.data()); };
    auto code = [&](int id, const bdd& c) {
        for (int i = 0; i < bits; i++) {
            bdd& side = ((id >> i) & 1) != 0 ? setbit[i] : clearbit[i];
            side = b->Bdd_or(side, c);
        }
    };

    std::map<std::string, bdd> strong, weak;
    for (State* s : states) {
        strong[s->getName()] = b->Bdd_zero();
        weak[s->getName()] = b->Bdd_zero();
    }
    for (Transition* tr : transitions) {
        if (tr->isInitial())
            continue;
        if (tr->getType() == Transition::STRONG)
            strong[tr->getSource()] = b->Bdd_or(strong[tr->getSource()], tr->triggerable_bdd(m));
        else if (tr->getType() == Transition::WEAK)
            weak[tr->getSource()] = b->Bdd_or(weak[tr->getSource()], tr->triggerable_bdd(m));
    }

    // The modules the states run; a strong transition leaving the state
    // takes back their emissions of that reaction. A state that one of its
    // own transitions enters again runs two copies of its module: the
    // re-entry kills the live copy and starts the other one afresh in the
    // same reaction, as a loop runs two copies of a body that can end and
    // start again at once. The register `live` says which copy runs. So
    // does a state that an initial transition enters and that a transition
    // leaves for a final state: the automaton ends there, and a loop around
    // it starts it again in the same reaction.
    // `done` remembers a module that ended in the reaction its state was
    // entered, so that the normal termination fires in the next reaction.
    auto nextEquation = [&](Signal* next, const bdd& f) {
        std::string nextName = next->getName(m, wood);
        new Bddexpression(nextName, wood, next->getOverBdd(m, wood), f, 0, 0, Compilation::SREG);
        new Bddexpression(nextName, wood, next->getUnderBdd(m, wood), b->Bdd_not(f), 0, 0, Compilation::VREG);
    };
    auto holds = [&](Signal* wire) {
        return b->Bdd_and(wire->getOverBdd(m, wood), b->Bdd_not(wire->getUnderBdd(m, wood)));
    };
    struct Running {
        std::vector<Run*> copies;
        Signal* live = nullptr;
        Signal* liveNext = nullptr;
        Signal* done = nullptr;
        Signal* doneNext = nullptr;
    };
    std::map<State*, Running> running;
    auto liveOf = [&](Running& r, std::size_t k) {
        if (r.live == nullptr)
            return b->Bdd_one();
        bdd l = r.live->getOverBdd(m, wood);
        return k == 1 ? l : b->Bdd_not(l);
    };
    // The module has ended in this reaction, in the copy that was running
    // before it.
    auto ended = [&](Running& r) {
        bdd e = b->Bdd_zero();
        for (std::size_t k = 0; k < r.copies.size(); k++)
            e = b->Bdd_or(e, b->Bdd_and(liveOf(r, k), holds(r.copies[k]->getRtl())));
        return e;
    };
    for (State* s : states) {
        Run* run = s->getRunModule();
        if (run == nullptr)
            continue;
        for (int type : {Transition::STRONG, Transition::WEAK}) {
            bdd gathered = b->Bdd_zero();
            for (Transition* tr : transitions) {
                if (tr->isInitial() || tr->getSource() != s->getName() || tr->getType() != type)
                    continue;
                bdd both = b->Bdd_and(gathered, tr->triggerable_bdd(m));
                if (!b->Bdd_is_zero_tautologic(both))
                    abort_compilation("Error: Multiple behaviors about state:\"" + s->getName() + "\" when " +
                                      b->Print_sop_to_ESTEREL_String(both, 0));
                gathered = b->Bdd_or(gathered, tr->triggerable_bdd(m));
            }
        }
        Running& r = running[s];
        r.copies.push_back(run);
        bool reentered = false, normal = false, initial = false, ends = false;
        for (Transition* tr : transitions) {
            if (tr->isInitial()) {
                initial = initial || tr->getTarget() == s->getName();
                continue;
            }
            if (tr->getSource() != s->getName())
                continue;
            reentered = reentered || tr->getTarget() == s->getName();
            normal = normal || tr->getType() == Transition::NORMAL_TERMINATION;
            ends = ends || (tr->getType() != Transition::NORMAL_TERMINATION && state(tr->getTarget())->isFinal());
        }
        reentered = reentered || (initial && ends);
        if (reentered) {
            r.copies.push_back(static_cast<Run*>(run->duplicate(m, t)));
            createRegister(m, t, free_name(m, "live" + name + "_" + s->getName()),
                           free_name(m, "livenext" + name + "_" + s->getName()), r.live, r.liveNext);
        }
        if (normal)
            createRegister(m, t, free_name(m, "done" + name + "_" + s->getName()),
                           free_name(m, "donenext" + name + "_" + s->getName()), r.done, r.doneNext);
        for (std::size_t k = 0; k < r.copies.size(); k++)
            r.copies[k]->compile_with_preemption(
                m, t, b->Bdd_and(b->Bdd_and(minterm(s->getId()), strong[s->getName()]), liveOf(r, k)));
    }

    Emissions emissions(b);
    std::map<State*, bdd> runStart;
    bdd leaving = b->Bdd_zero();
    bdd ending = b->Bdd_zero();
    for (Transition* tr : transitions) {
        State* target = state(tr->getTarget());
        bdd c;
        if (tr->isInitial()) {
            c = b->Bdd_and(start, tr->triggerable_bdd(m));
        } else {
            State* source = state(tr->getSource());
            bdd here = minterm(source->getId());
            bdd preempt = strong[source->getName()];
            switch (tr->getType()) {
            case Transition::STRONG:
                c = b->Bdd_and(here, tr->triggerable_bdd(m));
                break;
            case Transition::WEAK:
                c = b->Bdd_and(b->Bdd_and(here, tr->triggerable_bdd(m)), b->Bdd_not(preempt));
                break;
            case Transition::NORMAL_TERMINATION:
                if (source->getRunModule() == nullptr) {
                    std::string text = "Warning: No found Run module about state " + source->getName() +
                                       ": Normal Terminaison has no effect ...";
                    fl_show_Smessages(text);
                    std::cerr << text << std::endl;
                    c = b->Bdd_zero();
                } else {
                    Running& r = running[source];
                    bdd end = b->Bdd_or(ended(r), r.done->getOverBdd(m, wood));
                    c = b->Bdd_and(b->Bdd_and(here, end),
                                   b->Bdd_not(b->Bdd_or(preempt, weak[source->getName()])));
                }
                break;
            default: {
                std::string text = "Warning: Skipping TRANSITION " + tr->getSource() + " " + tr->getTarget() +
                                   ": unknown type ...";
                fl_show_Smessages(text);
                std::cerr << text << std::endl;
                c = b->Bdd_zero();
            }
            }
        }
        bdd change = tr->isInitial() ? c : b->Bdd_and(c, b->Bdd_not(start));
        leaving = b->Bdd_or(leaving, c);
        code(target->getId(), change);
        for (Emit* e : tr->getAction())
            emissions.add(e, c);
        for (Emit* e : target->getMooreActions())
            emissions.add(e, c);
        if (target->getRunModule() != nullptr) {
            bdd& started = runStart.emplace(target, b->Bdd_zero()).first->second;
            started = b->Bdd_or(started, c);
        }
        if (target->isFinal())
            ending = b->Bdd_or(ending, c);
    }

    // A kill clears every bit; before its start the automaton keeps code 0.
    for (int i = 0; i < bits; i++) {
        clearbit[i] = b->Bdd_or(b->Bdd_or(clearbit[i], kill), b->Bdd_and(minterm(0), b->Bdd_not(start)));
        setbit[i] = b->Bdd_and(setbit[i], b->Bdd_not(kill));
    }
    // A state that no transition leaves in this reaction keeps its code.
    for (State* s : states) {
        bdd here = minterm(s->getId());
        bdd stay = b->Bdd_and(b->Bdd_and(here, b->Bdd_not(b->Bdd_reduce(leaving, here))), b->Bdd_not(start));
        stay = b->Bdd_and(stay, b->Bdd_not(kill));
        code(s->getId(), stay);
    }
    for (int i = 0; i < bits; i++)
        nextEquation(nextSignal[i], b->Bdd_simplify2(setbit[i], clearbit[i]));
    for (State* s : states)
        for (Emit* e : s->getMooreActions())
            emissions.add(e, b->Minterm(s->getId(), bits, next.data()));

    // The runs start on entering their state and are killed on leaving it,
    // with the automaton, or when the automaton starts again while in the
    // state; on a re-entry the copy that was not running starts.
    for (State* s : states) {
        if (running.count(s) == 0)
            continue;
        Running& r = running[s];
        bdd here = minterm(s->getId());
        bdd killed = b->Bdd_and(here, b->Bdd_or(kill, start));
        for (Transition* tr : transitions)
            if (!tr->isInitial() && tr->getSource() == s->getName() && tr->getType() != Transition::NORMAL_TERMINATION)
                killed = b->Bdd_or(killed, b->Bdd_and(here, tr->triggerable_bdd(m)));
        bdd entered = runStart.count(s) != 0 ? runStart[s] : b->Bdd_zero();
        bdd endsAtOnce = b->Bdd_zero();
        for (std::size_t k = 0; k < r.copies.size(); k++) {
            Run* run = r.copies[k];
            bdd started = r.live == nullptr ? entered : b->Bdd_and(entered, b->Bdd_not(liveOf(r, k)));
            bdd stopped = b->Bdd_and(killed, liveOf(r, k));
            t->createEquation(run->getSet(), new WiresExpression(started, b->Bdd_not(started)), m);
            t->createEquation(run->getReset(), new WiresExpression(stopped, b->Bdd_not(stopped)), m);
            endsAtOnce = b->Bdd_or(endsAtOnce, b->Bdd_and(started, holds(run->getRtl())));
        }
        if (r.live != nullptr) {
            bdd live = r.live->getOverBdd(m, wood);
            nextEquation(r.liveNext, b->Bdd_or(b->Bdd_and(live, b->Bdd_not(entered)),
                                               b->Bdd_and(b->Bdd_not(live), entered)));
        }
        if (r.done != nullptr)
            nextEquation(r.doneNext, b->Bdd_and(endsAtOnce, b->Bdd_not(kill)));
    }
    t->createEquation(rtl, new WiresExpression(ending, b->Bdd_not(ending)), m);
    emissions.emit(m, t);
}

// ----------------------------------------------------------- Mealy machine

void MealyMachine::complementary_check_syntax()
{
    for (Equation& e : equations)
        if (e.emission != nullptr)
            e.emission->complementary_check_syntax();
}

void MealyMachine::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    for (Register& r : registers) {
        m->addWireSignal(r.actual);
        m->addWireSignal(r.next);
        m->addRegisterSignal(r.actual, r.next, r.initial);
        t->createRegisterEquation(r.actual, m);
    }
    for (Equation& e : equations) {
        if (e.left != nullptr)
            t->createEquation(e.left, e.right, m, true);
        else
            e.emission->emitWhen(m, t, e.right, true);
    }
    t->createEquation(rtl, new FalseExpression(), m);
}
