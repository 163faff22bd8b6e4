// The source compiler's part of Module: from the declarations and the
// statement tree to the wood.

#include "bdd/bddpp.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "source/statement.h"
#include "wood/Bddexpression.h"
#include "data/data.h"

static void checkTypes(Module* m, std::list<Signal*>* signals, const char* kind)
{
    if (signals == nullptr)
        return;
    for (Signal* s : *signals) {
        if (!s->isValued(m))
            continue;
        std::string type = s->getValueType(m);
        if (Compilation::GDataTypeTable == nullptr || !Compilation::GDataTypeTable->isDefined(type))
            Compilation::fatal(std::string("ERROR about ") + kind + " signal \"" + s->getOriginalName() +
                               "\": type \"" + type + "\" is not defined in data section ...");
    }
}

void Module::createCompileEnv()
{
    checkTypes(this, inputs, "input valued");
    checkTypes(this, outputs, "output valued");
    checkTypes(this, locals, "local valued");
    checkTypes(this, data_signals, "data");
    if (memorized != nullptr)
        for (memorizedSignal* p : *memorized) {
            std::list<Signal*> pre{p->getPre()};
            checkTypes(this, &pre, "pre valued");
        }
    if (compilation == nullptr)
        compilation = new EquationTable(name, wood);
    Signal** connexions[] = {&set_signal, &reset_signal, &rtl_signal};
    std::string names[] = {Compilation::createSETName(name), Compilation::createRESETName(name),
                           Compilation::createRTLName(name)};
    for (int i = 0; i < 3; i++) {
        *connexions[i] = new Signal(names[i], this, wood);
        (*connexions[i])->setWire();
    }
    for (std::list<Signal*>* l : {outputs, locals})
        if (l != nullptr)
            for (Signal* s : *l)
                compilation->createBottomEquation(s, this);
}

void Module::connectExternalWires()
{
    compilation->createEquation(statement->getSet(), set_signal, this);
    compilation->createEquation(statement->getReset(), reset_signal, this);
    compilation->createEquation(rtl_signal, statement->getRtl(), this);
}

void Module::sortCode()
{
    std::list<long> ids;
    for (std::list<Signal*>* l : {locals, outputs})
        if (l != nullptr)
            for (Signal* s : *l)
                ids.splice(ids.end(), s->getAllBddId(this, wood));
    Statement::callPert(compilation, ids);
}

// An output or local whose under wire no statement set (no "noemit", no
// sustained absence) is absent in every reaction in which it is not
// emitted: the under wire of its occurrence 0 becomes the negation of its
// over wire, so that "absent" sees it. Signals whose under wire a
// statement did set keep their four values. An output's under wire is
// closed only where the body reads it: finalisation completes it
// otherwise, and generated code would read the output where it needs not.
static void closeUnderWires(Module* m, EquationTable* table)
{
    Bddexpressionwood* wood = m->getBddWood();
    bddpp_manager* manager = wood->my_bdd_manager();
    for (std::list<Signal*>* l : {m->getOutputSignalList(), m->getLocalSignalList()}) {
        if (l == nullptr)
            continue;
        for (Signal* s : *l) {
            if (s->isWire() || s->isValue() || table->underIsSet(s))
                continue;
            long under = s->getInitialUnderBddId(m, wood);
            Bddexpression* e = under >= 0 && under < wood->Nb_bdd_vars() ? wood->Exp_table()[under] : nullptr;
            if (e == nullptr || e->getAbstraction() != 0)
                continue;
            if (s->isOutput() && wood->Amont_table()[under].empty())
                continue;
            e->setBddExp(manager->Bdd_not(s->getInitialOverBdd(m, wood)), e->getEarlyDate(), e->getLateDate());
        }
    }
}

void Module::compile()
{
    install_expression_constructors();
    createCompileEnv();
    if (statement == nullptr)
        statement = new Nothing(this);
    statement->complementary_check_syntax();
    statement->compile(this, compilation);
    connectExternalWires();
    closeUnderWires(this, compilation);
    sortCode();
    reincarnate = statement->reincarnate();
}
