#include "source/statement_control.h"

#include "bdd/bddpp.h"
#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "source/data_values.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "wood/Bddexpression.h"

#include <map>

static Expression* and_(Expression* a, Expression* b) { return new AndExpression(a, b); }
static Expression* or_(Expression* a, Expression* b) { return new OrExpression(a, b); }
static Expression* not_(Expression* a) { return new NotExpression(a); }

// ------------------------------------------------------------------ loop

void Loop::compile(Module* m, EquationTable* t)
{
    if (body->reincarnate()) {
        Statement* copy = body->duplicate(m, t);
        body = Sequence::reentry(m, body, copy);
    }
    body->compile(m, t);
    createEquations(m, t);
}

void Loop::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    t->createEquation(body->getSet(), or_(set, body->getRtl()), m);
    t->createEquation(body->getReset(), reset, m);
    t->createEquation(rtl, new FalseExpression(), m);
}

// ------------------------------------------------------------------ wait

void Wait::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    createRegister(m, t, Compilation::createACTIFName(name), Compilation::createACTIFPLUSName(name), actif,
                   actifplus);
    t->createEquation(rtl, and_(actif, e), m, true);
    t->createEquation(actifplus, or_(and_(set, not_(reset)), and_(and_(actif, not_(reset)), new NpExpression(e))), m,
                      true);
}

Statement* repeated(Module* m, Statement* s, long n)
{
    if (n <= 0)
        return new Nothing(m);
    if (n == 1)
        return s;
    std::vector<Statement*> copies{s};
    for (long i = 1; i < n; i++)
        copies.push_back(s->duplicate(m, nullptr));
    return new Sequence(m, std::move(copies));
}

// -------------------------------------------------------------- parallel

Parallel* Parallel::join(Module* m, Statement* l, Statement* r)
{
    std::vector<Statement*> sons;
    for (Statement* s : {l, r}) {
        if (s->isParallel()) {
            std::vector<Statement*> inner = s->sons();
            sons.insert(sons.end(), inner.begin(), inner.end());
        } else {
            sons.push_back(s);
        }
    }
    return new Parallel(m, std::move(sons));
}

bool Parallel::reincarnate()
{
    for (Statement* s : list)
        if (s->reincarnate())
            return true;
    return false;
}

Statement* Parallel::duplicate(Module* m, EquationTable* t)
{
    std::vector<Statement*> copies;
    for (Statement* s : list)
        copies.push_back(s->duplicate(m, t));
    return new Parallel(m, std::move(copies));
}

// Each branch is dated as soon as it is compiled, so that a cycle is
// reported in the branch that makes it.
void Parallel::compile(Module* m, EquationTable* t)
{
    for (Statement* s : list) {
        s->compile(m, t);
        callPert(t);
    }
    createEquations(m, t);
}

void Parallel::createEquations(Module* m, EquationTable* t)
{
    if (list.size() == 2)
        createBinaryEquations(m, t);
    else
        createNaryEquations(m, t);
}

void Parallel::createBinaryEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    Signal *a, *aplus, *b, *bplus;
    createRegister(m, t, Compilation::createACTIFName(name), Compilation::createACTIFPLUSName(name), a, aplus);
    createRegister(m, t, Compilation::createACTIFBISName(name), Compilation::createACTIFBISPLUSName(name), b, bplus);
    Statement* l = list[0];
    Statement* r = list[1];
    t->createEquation(l->getSet(), set, m);
    t->createEquation(r->getSet(), set, m);
    t->createEquation(l->getReset(), reset, m);
    t->createEquation(r->getReset(), reset, m);
    Expression* tl = l->getRtl();
    Expression* tr = r->getRtl();
    t->createEquation(rtl,
                      or_(and_(and_(and_(not_(a), not_(b)), tr), tl),
                          or_(and_(and_(tr, not_(b)), a), and_(and_(tl, not_(a)), b))),
                      m);
    t->createEquation(aplus,
                      or_(and_(and_(a, not_(tr)), not_(reset)), and_(and_(and_(not_(tr), not_(reset)), tl), not_(b))),
                      m);
    t->createEquation(bplus,
                      or_(and_(and_(b, not_(tl)), not_(reset)), and_(and_(and_(tr, not_(reset)), not_(tl)), not_(a))),
                      m);
}

// Son i has the register D_i, true once it has ended and until the whole
// ends, and the wire F_i := D_i or T(i): the whole ends when every F_i
// holds, and D_i+ := F_i and not T and not R.
void Parallel::createNaryEquations(Module* m, EquationTable* t)
{
    int n = static_cast<int>(list.size());
    createWires(m, t, n);
    std::vector<Signal*> done(n), next(n), finished(n);
    for (int i = 0; i < n; i++) {
        createRegister(m, t, Compilation::createACTIFName(name, i + 1), Compilation::createACTIFPLUSName(name, i + 1),
                       done[i], next[i]);
        finished[i] = new Signal(Compilation::createRTLName(name, i + 1), m, m->getBddWood());
        finished[i]->setWire();
        m->addWireSignal(finished[i]);
        t->createEquation(list[i]->getSet(), set, m);
        t->createEquation(list[i]->getReset(), reset, m);
        t->createEquation(finished[i], or_(done[i], list[i]->getRtl()), m);
    }
    Expression* all = finished[0];
    for (int i = 1; i < n; i++)
        all = and_(all, finished[i]);
    t->createEquation(rtl, all, m);
    for (int i = 0; i < n; i++)
        t->createEquation(next[i], and_(and_(finished[i], not_(rtl)), not_(reset)), m);
}

// ----------------------------------------------------------------- abort

void Abort::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    createRegister(m, t, Compilation::createACTIFName(name), Compilation::createACTIFPLUSName(name), actif,
                   actifplus);
    t->createEquation(body->getSet(), set, m);
    t->createEquation(body->getReset(), or_(and_(and_(not_(reset), e), actif), reset), m, true);
    t->createEquation(rtl, or_(body->getRtl(), and_(e, actif)), m, true);
    t->createEquation(actifplus,
                      and_(not_(reset), and_(or_(and_(actif, new NpExpression(e)), set), not_(body->getRtl()))), m,
                      true);
}

// Outputs and locals that carry emissions: no wire, no register.
static std::vector<Signal*> emitted(Module* m)
{
    std::vector<Signal*> signals;
    for (std::list<Signal*>* l : {m->getOutputSignalList(), m->getLocalSignalList()})
        if (l != nullptr)
            for (Signal* s : *l)
                if (!s->isWire() && !s->isRegister())
                    signals.push_back(s);
    return signals;
}

void StrongAbort::compile(Module* m, EquationTable* t)
{
    Bddexpressionwood* wood = m->getBddWood();
    // The body's emissions go to occurrences of their own.
    std::map<Signal*, int> before;
    for (Signal* s : emitted(m))
        before[s] = s->getCurrentOccurrence(wood);
    t->pre(m);
    body->compile(m, t);
    createEquations(m, t);
    // m := u(e) or not o(e) or not o(A): false in the reaction of the
    // preemption.
    bddpp_manager* manager = wood->my_bdd_manager();
    bdd mask = manager->Bdd_or(manager->Bdd_or(e->getInitialUnderBdd(m, wood),
                                               manager->Bdd_not(e->getInitialOverBdd(m, wood))),
                               manager->Bdd_not(actif->getOverBdd(m, wood)));
    if (!manager->Bdd_is_one_tautologic(mask)) {
        for (Signal* s : emitted(m)) {
            // A signal the body made itself (a carrier) is the body's in
            // every occurrence.
            auto found = before.find(s);
            int first = found != before.end() ? found->second + 1 : 0;
            std::list<long> ids = s->getAllBddId(m, wood);
            int occurrence = 0;
            for (auto id = ids.begin(); id != ids.end(); ++occurrence) {
                long over = *id++;
                long under = id != ids.end() ? *id++ : -1;
                if (occurrence < first)
                    continue;
                t->mask(over, mask);
                t->mask(under, mask);
            }
        }
    }
    // What follows the abort writes to occurrences the mask does not touch.
    t->pre(m);
}

// -------------------------------------------------------------- sustain

Statement* SustainUntil::duplicate(Module* m, EquationTable*)
{
    return new SustainUntil(m, signalName, value != nullptr ? value->duplicate() : nullptr, e);
}

void SustainUntil::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    createRegister(m, t, Compilation::createACTIFName(name), Compilation::createACTIFPLUSName(name), actif,
                   actifplus);
    t->createEquation(actifplus,
                      and_(or_(and_(set, not_(reset)), and_(actif, not_(reset))), new NpExpression(e)), m, true);
    t->createEquation(rtl, and_(or_(actif, set), e), m, true);
    emitWhen(m, t, and_(or_(actif, set), new NpExpression(e)), true);
}

// ---------------------------------------------------------------- noemit

void NoEmit::complementary_check_syntax()
{
    Signal* x = module->getOutputLocalSignal(signalName);
    if (x == nullptr)
        Compilation::fatal("Error in module \"" + module->getName() + "\":\n Emission of output signal: \"" +
                           signalName + "\"  undefined !");
}

void NoEmit::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    t->createEquation(rtl, set, m);
    signal = m->getOutputLocalSignal(signalName);
    t->createUnifyEquation(signal, new ThenExpression(rtl, new FalseExpression()), m, true);
}

// -------------------------------------------------------------------- if

Statement* If::duplicate(Module* m, EquationTable* table)
{
    return new If(m, value->duplicate(), t->duplicate(m, table), f != nullptr ? f->duplicate(m, table) : nullptr);
}

void checkValueCondition(Module* m, DataExpr* value, const std::string& what)
{
    std::string type = known_type(value, m);
    if (type.empty())
        Compilation::fatal("Error in module \"" + m->getName() + "\":\n the condition of " + what +
                           " has no type: it reads literals only");
    settle_literals(value, type, m);
}

Signal* valueTestSignal(Module* m, DataExpr* value, const std::string& name)
{
    Bddexpressionwood* wood = m->getBddWood();
    std::string test = name;
    while (m->getSignalManager()->getSignalRefByName(test) != nullptr)
        test += "_";
    auto* c = new Signal(test, m, wood);
    c->setLocal();
    m->addLocalSignal(c);
    c->setValueType(value->getType(m), m);
    m->addSignalBinding(value, c);
    // A value that reads no signal gets its abstract equations here.
    for (long id : {c->getOverBddId(m, wood), c->getUnderBddId(m, wood)})
        if (id >= wood->Nb_bdd_vars() || wood->Exp_table()[id] == nullptr) {
            IndexSet none;
            new Bddexpression(id, wood, none, "VALUE_SIGNAL", 0, 0);
        }
    return c;
}

void If::complementary_check_syntax()
{
    checkValueCondition(module, value, "an if");
    Statement::complementary_check_syntax();
}

// The test signal is made before the branches are compiled: they may be
// dated before the if's own equations exist.
void If::compile(Module* m, EquationTable* table)
{
    e = valueTestSignal(m, value, "COND" + name);
    Present::compile(m, table);
}
