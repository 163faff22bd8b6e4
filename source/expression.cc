// The four-valued expression family. Each operator computes its wires in
// the order its formula is written, operands left to right: the order in
// which BDD nodes are made fixes their ids in the generated text.

#include "source/expression.h"

#include "bdd/bddpp.h"
#include "wood/Bddexpression.h"

void install_expression_constructors()
{
    Expression::newOrExpression = [](Expression* a, Expression* b) -> Expression* { return new OrExpression(a, b); };
    Expression::newAndExpression = [](Expression* a, Expression* b) -> Expression* {
        return new AndExpression(a, b);
    };
}

static bddpp_manager* managerOf(Bddexpressionwood* wood) { return wood->my_bdd_manager(); }

// ---------------------------------------------------------------- constants

bdd TrueExpression::getOverBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_one(); }
bdd TrueExpression::getUnderBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_zero(); }
bdd FalseExpression::getOverBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_zero(); }
bdd FalseExpression::getUnderBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_one(); }
bdd BottomExpression::getOverBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_zero(); }
bdd BottomExpression::getUnderBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_zero(); }
bdd ErrorExpression::getOverBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_one(); }
bdd ErrorExpression::getUnderBdd(Module*, Bddexpressionwood* wood) { return managerOf(wood)->Bdd_one(); }

// True plus False is Error: plus gathers what is known.
Expression* TrueExpression::plus(Expression* e, Module*)
{
    if (e->isErrorExpr())
        return e;
    if (e->isFalseExpr())
        return new ErrorExpression();
    return this;
}

// True mult False is Bottom: mult keeps what both sides agree on.
Expression* TrueExpression::mult(Expression* e, Module*)
{
    if (e->isErrorExpr())
        return this;
    if (e->isFalseExpr())
        return new BottomExpression();
    return e;
}

Expression* FalseExpression::plus(Expression* e, Module*)
{
    if (e->isBottomExpr())
        return this;
    if (e->isTrueExpr())
        return new ErrorExpression();
    return e;
}

Expression* FalseExpression::mult(Expression* e, Module*)
{
    if (e->isBottomExpr())
        return e;
    if (e->isTrueExpr())
        return new BottomExpression();
    return this;
}

// ---------------------------------------------------------------- operators

bdd OperandReader::o(Expression* e) const
{
    return initial ? e->getInitialOverBdd(module, wood) : e->getOverBdd(module, wood);
}

bdd OperandReader::u(Expression* e) const
{
    return initial ? e->getInitialUnderBdd(module, wood) : e->getUnderBdd(module, wood);
}

bddpp_manager* OperandReader::manager() const { return managerOf(wood); }

bdd OrExpression::over(const OperandReader& r)
{
    bdd x = r.o(a);
    bdd y = r.o(b);
    return r.manager()->Bdd_or(x, y);
}

bdd OrExpression::under(const OperandReader& r)
{
    bdd x = r.u(a);
    bdd y = r.u(b);
    return r.manager()->Bdd_and(x, y);
}

bdd AndExpression::over(const OperandReader& r)
{
    bdd x = r.o(a);
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

bdd AndExpression::under(const OperandReader& r)
{
    bdd x = r.u(a);
    bdd y = r.u(b);
    return r.manager()->Bdd_or(x, y);
}

bdd NotExpression::over(const OperandReader& r) { return r.u(a); }
bdd NotExpression::under(const OperandReader& r) { return r.o(a); }

// (not o(a)) or (o(a) and u(a))
bdd NpExpression::over(const OperandReader& r)
{
    bddpp_manager* m = r.manager();
    bdd x = r.o(a);
    bdd left = m->Bdd_not(x);
    bdd y = r.u(a);
    bdd right = m->Bdd_and(x, y);
    return m->Bdd_or(left, right);
}

bdd NpExpression::under(const OperandReader& r) { return r.o(a); }

bdd ThenExpression::over(const OperandReader& r)
{
    bdd x = r.o(a);
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

bdd ThenExpression::under(const OperandReader& r)
{
    bdd x = r.o(a);
    bdd y = r.u(b);
    return r.manager()->Bdd_and(x, y);
}

bdd ElseExpression::over(const OperandReader& r)
{
    bdd x = r.manager()->Bdd_not(r.o(a));
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

bdd ElseExpression::under(const OperandReader& r)
{
    bdd x = r.manager()->Bdd_not(r.o(a));
    bdd y = r.u(b);
    return r.manager()->Bdd_and(x, y);
}

bdd DThenExpression::over(const OperandReader& r)
{
    bdd x = r.u(a);
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

bdd DThenExpression::under(const OperandReader& r)
{
    bdd x = r.u(a);
    bdd y = r.u(b);
    return r.manager()->Bdd_and(x, y);
}

bdd DElseExpression::over(const OperandReader& r)
{
    bdd x = r.manager()->Bdd_not(r.u(a));
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

bdd DElseExpression::under(const OperandReader& r)
{
    bdd x = r.manager()->Bdd_not(r.u(a));
    bdd y = r.u(b);
    return r.manager()->Bdd_and(x, y);
}

bdd CondExpression::over(const OperandReader& r)
{
    bdd x = r.o(a);
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

bdd CondExpression::under(const OperandReader& r)
{
    bdd x = r.u(a);
    bdd y = r.o(b);
    return r.manager()->Bdd_and(x, y);
}

// ---------------------------------------------------------------- rebuilding

Expression* OrExpression::buildCurrentExpression(EquationTable* t, Module* m)
{
    Expression* x = a->buildCurrentExpression(t, m);
    return new OrExpression(x, b->buildCurrentExpression(t, m));
}

Expression* AndExpression::buildCurrentExpression(EquationTable* t, Module* m)
{
    Expression* x = a->buildCurrentExpression(t, m);
    return new AndExpression(x, b->buildCurrentExpression(t, m));
}

Expression* NotExpression::buildCurrentExpression(EquationTable* t, Module* m)
{
    return new NotExpression(a->buildCurrentExpression(t, m));
}

Expression* NpExpression::buildCurrentExpression(EquationTable* t, Module* m)
{
    return new NpExpression(a->buildCurrentExpression(t, m));
}

// ---------------------------------------------------------------- printing

void OrExpression::print(std::ostream& os)
{
    os << "(";
    a->print(os);
    os << " + ";
    b->print(os);
    os << ")";
}

void AndExpression::print(std::ostream& os)
{
    os << "(";
    a->print(os);
    os << " * ";
    b->print(os);
    os << ")";
}

void NotExpression::print(std::ostream& os)
{
    os << "not ";
    a->print(os);
}

void NpExpression::print(std::ostream& os)
{
    os << "np ";
    a->print(os);
}

void RoutedExpression::print(std::ostream& os)
{
    os << head();
    a->print(os);
    os << ",";
    b->print(os);
    os << "))";
}
