// The expression root that Signal derives from.
#include "signals/expression.h"

#include "context/compilation.h"
#include "wood/Bddexpression.h"

Expression* (*Expression::newOrExpression)(Expression*, Expression*) = nullptr;
Expression* (*Expression::newAndExpression)(Expression*, Expression*) = nullptr;

bdd Expression::getOverBdd(Module*, Bddexpressionwood*)
{
    Compilation::AbstractMethodCallException("Expression::getOverBdd()");
}

bdd Expression::getUnderBdd(Module*, Bddexpressionwood*)
{
    Compilation::AbstractMethodCallException("Expression::getUnderBdd()");
}

bdd Expression::getInitialOverBdd(Module*, Bddexpressionwood*)
{
    Compilation::AbstractMethodCallException("Expression::getInitialOverBdd()");
}

bdd Expression::getInitialUnderBdd(Module*, Bddexpressionwood*)
{
    Compilation::AbstractMethodCallException("Expression::getInitialUnderBdd()");
}

Expression* Expression::plus(Expression* e, Module*)
{
    if (e->isBottomExpr() || e->isFalseExpr())
        return this;
    if (e->isErrorExpr() || e->isTrueExpr())
        return e;
    if (newOrExpression == nullptr)
        Compilation::IllegalOperationException("Expression::plus: no or expression available");
    return newOrExpression(this, e);
}

Expression* Expression::mult(Expression* e, Module*)
{
    if (e->isBottomExpr() || e->isFalseExpr())
        return e;
    if (e->isErrorExpr() || e->isTrueExpr())
        return this;
    if (newAndExpression == nullptr)
        Compilation::IllegalOperationException("Expression::mult: no and expression available");
    return newAndExpression(this, e);
}

Expression* Expression::duplicate()
{
    Compilation::IllegalOperationException("abnormal use of expression::duplicate() ...");
}

Expression* Expression::buildCurrentExpression(EquationTable*, Module*) { return this; }

void Expression::print(std::ostream&) {}

// Debug form: the sum of products of the manager's debug printer.
static void printBdd(std::ostream& os, Bddexpressionwood* wood, const bdd& f)
{
    if (wood != nullptr && wood->my_bdd_manager() != nullptr)
        wood->my_bdd_manager()->Print_debug_bdd(os, f);
}

void Expression::printOverBdd(std::ostream& os, Module* m, Bddexpressionwood* wood)
{
    printBdd(os, wood, getOverBdd(m, wood));
}

void Expression::printUnderBdd(std::ostream& os, Module* m, Bddexpressionwood* wood)
{
    printBdd(os, wood, getUnderBdd(m, wood));
}
