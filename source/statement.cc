#include "source/statement.h"

#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "source/data_values.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "source/source_errors.h"

#include <set>

std::map<std::string, int> Statement::numbers;

long Statement::made = 0;

Statement::Statement(const std::string& kind, Module* m, const std::string& prefix) : module(m)
{
    name = (prefix.empty() ? kind : prefix) + std::to_string(++numbers[kind]);
    if (++made > max_statements)
        Compilation::fatal("Error in module \"" + (m != nullptr ? m->getName() : std::string()) +
                           "\":\n more than " + std::to_string(max_statements) + " statements");
}

void Statement::resetNumbers()
{
    numbers.clear();
    made = 0;
}

Signal* Statement::getSet() const
{
    if (set == nullptr)
        throw StatementWireException("set");
    return set;
}

Signal* Statement::getReset() const
{
    if (reset == nullptr)
        throw StatementWireException("reset");
    return reset;
}

Signal* Statement::getRtl() const
{
    if (rtl == nullptr)
        throw StatementWireException("rtl");
    return rtl;
}

void Statement::complementary_check_syntax()
{
    for (Statement* s : sons())
        s->complementary_check_syntax();
}

void Statement::compile(Module* m, EquationTable* t)
{
    for (Statement* s : sons())
        s->compile(m, t);
    createEquations(m, t);
}

void Statement::callPert(EquationTable* t) { t->callPert(); }
void Statement::callPert(EquationTable* t, std::list<long>& ids) { t->callPert(ids); }

// Every name a statement may derive from its own; a user signal, the
// module's connexion signals or another statement may hold one of them.
static bool nameIsFree(Module* m, const std::string& name, int sons)
{
    SignalManager* manager = m->getSignalManager();
    for (int i = 1; i <= sons; i++)
        for (const std::string& derived : {Compilation::createACTIFName(name, i),
                                           Compilation::createACTIFPLUSName(name, i), Compilation::createRTLName(name, i)})
            if (manager->getSignalRefByName(derived) != nullptr)
                return false;
    for (const std::string& derived :
         {Compilation::createSETName(name), Compilation::createRESETName(name), Compilation::createRTLName(name),
          Compilation::createACTIFName(name), Compilation::createACTIFPLUSName(name),
          Compilation::createACTIFBISName(name), Compilation::createACTIFBISPLUSName(name), "VAL" + name, "COND" + name})
        if (manager->getSignalRefByName(derived) != nullptr)
            return false;
    return true;
}

static Signal* newWire(Module* m, const std::string& name)
{
    auto* s = new Signal(name, m, m->getBddWood());
    s->setWire();
    m->addWireSignal(s);
    return s;
}

void Statement::createWires(Module* m, EquationTable*, int sons)
{
    while (!nameIsFree(m, name, sons))
        name += "_";
    set = newWire(m, Compilation::createSETName(name));
    reset = newWire(m, Compilation::createRESETName(name));
    rtl = newWire(m, Compilation::createRTLName(name));
}

void Statement::createRegister(Module* m, EquationTable* t, const std::string& actualName,
                               const std::string& nextName, Signal*& actual, Signal*& next)
{
    actual = new Signal(actualName, m, m->getBddWood(), true);
    next = new Signal(nextName, m, m->getBddWood(), true);
    m->addWireSignal(actual);
    m->addWireSignal(next);
    m->addRegisterSignal(actual, next);
    t->createRegisterEquation(actual, m);
}

// ------------------------------------------------------------------ leaves

void Nothing::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    t->createEquation(rtl, set, m);
}

void Halt::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    t->createEquation(rtl, new FalseExpression(), m);
}

void Pause::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    createRegister(m, t, Compilation::createACTIFName(name), Compilation::createACTIFPLUSName(name), actif,
                   actifplus);
    t->createEquation(rtl, actif, m);
    t->createEquation(actifplus, new AndExpression(set, new NotExpression(reset)), m, true);
}

Emit::Emit(const std::string& kind, Module* m, const std::string& signalName, DataExpr* value)
    : Statement(kind, m), signalName(signalName), value(value)
{
}

Statement* Emit::duplicate(Module* m, EquationTable*)
{
    return new Emit(m, signalName, value != nullptr ? value->duplicate() : nullptr);
}

void Emit::checkEmission(const char* what)
{
    Signal* x = module->getOutputLocalSignal(signalName);
    std::string kind = x != nullptr && !x->isOutput() ? "local" : "output";
    std::string head = "Error in module \"" + module->getName() + "\":\n " + what + " of " + kind + " signal: \"" +
                       signalName;
    if (x == nullptr)
        Compilation::fatal(head + "\"  undefined !");
    bool valued = x->isValued(module);
    if (valued && value == nullptr)
        Compilation::fatal(head + "\" without value !");
    if (!valued && value != nullptr)
        Compilation::fatal(head + "\" with a value\n whereas this signal is declared pure!");
    if (value == nullptr)
        return;
    std::string declared = x->getValueType(module);
    settle_literals(value, declared, module);
    std::string given = value->getType(module);
    if (given != declared)
        Compilation::fatal(head + "\" with a value typed by : \"" + given +
                           "\"\n whereas this signal is declared with the type : \"" + declared + "\"");
}

void Emit::complementary_check_syntax() { checkEmission("Emission"); }

void Emit::emitWhen(Module* m, EquationTable* t, Expression* condition, bool initial)
{
    signal = m->getOutputLocalSignal(signalName);
    t->createUnifyEquation(signal, condition, m, initial);
    if (value == nullptr)
        return;
    // The carrier: present when this statement emits; its binding gives
    // the emitted signal the value then.
    carrier = new Signal("VAL" + name, m, m->getBddWood());
    carrier->setLocal();
    m->addLocalSignal(carrier);
    carrier->setValueType(signal->getValueType(m), m);
    t->createBottomEquation(carrier, m);
    m->addSignalBinding(value, carrier, signal);
    if (std::set<Signal*>* read = value->computeDependencySet())
        carrier->getDependenceSet().insert(read->begin(), read->end());
    t->createUnifyEquation(carrier, condition, m, initial);
}

void Emit::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    t->createEquation(rtl, set, m);
    emitWhen(m, t, new ThenExpression(rtl, new TrueExpression()), false);
}

// -------------------------------------------------------------- composites

Sequence* Sequence::join(Module* m, Statement* l, Statement* r)
{
    std::vector<Statement*> sons;
    for (Statement* s : {l, r}) {
        if (s->isSequence()) {
            std::vector<Statement*> inner = s->sons();
            sons.insert(sons.end(), inner.begin(), inner.end());
        } else {
            sons.push_back(s);
        }
    }
    return new Sequence(m, std::move(sons));
}

bool Sequence::reincarnate()
{
    for (Statement* s : list)
        if (!s->reincarnate())
            return false;
    return true;
}

void Sequence::createEquations(Module* m, EquationTable* t)
{
    createWires(m, t);
    Statement* before = nullptr;
    for (Statement* s : list) {
        if (before == nullptr)
            t->createEquation(s->getSet(), set, m);
        else
            t->createEquation(s->getSet(), before->getRtl(), m);
        before = s;
    }
    for (Statement* s : list)
        t->createEquation(s->getReset(), reset, m);
    t->createEquation(rtl, before->getRtl(), m);
}

Statement* Sequence::duplicate(Module* m, EquationTable* t)
{
    std::vector<Statement*> copies;
    for (Statement* s : list)
        copies.push_back(s->duplicate(m, t));
    return new Sequence(m, std::move(copies));
}

Statement* Present::duplicate(Module* m, EquationTable* table)
{
    return new Present(m, e, t->duplicate(m, table), f != nullptr ? f->duplicate(m, table) : nullptr);
}

Statement* Absent::duplicate(Module* m, EquationTable* table)
{
    return new Absent(m, e, t->duplicate(m, table), f != nullptr ? f->duplicate(m, table) : nullptr);
}

std::vector<Statement*> Present::sons()
{
    if (f == nullptr)
        return {t};
    return {t, f};
}

bool Present::reincarnate() { return f != nullptr ? t->reincarnate() || f->reincarnate() : t->reincarnate(); }

// Each branch is dated as soon as it is compiled, so that a cycle is
// reported in the branch that makes it.
void Present::compile(Module* m, EquationTable* table)
{
    t->compile(m, table);
    callPert(table);
    if (f != nullptr) {
        f->compile(m, table);
        callPert(table);
    }
    createEquations(m, table);
}

Expression* Present::thenCondition(Expression* s) { return new ThenExpression(e, s); }
Expression* Present::elseCondition(Expression* s) { return new ElseExpression(e, s); }
Expression* Absent::thenCondition(Expression* s) { return new DThenExpression(e, s); }
Expression* Absent::elseCondition(Expression* s) { return new DElseExpression(e, s); }

void Present::createEquations(Module* m, EquationTable* table)
{
    createWires(m, table);
    table->createEquation(t->getSet(), thenCondition(set), m, true);
    if (f != nullptr)
        table->createEquation(f->getSet(), elseCondition(set), m, true);
    table->createEquation(t->getReset(), reset, m, true);
    if (f != nullptr)
        table->createEquation(f->getReset(), reset, m, true);
    Expression* other = f != nullptr ? static_cast<Expression*>(f->getRtl()) : elseCondition(set);
    table->createEquation(rtl, new OrExpression(t->getRtl(), other), m, true);
}
