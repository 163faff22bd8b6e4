#ifndef TARN_SIGNALS_EXPRESSION_H
#define TARN_SIGNALS_EXPRESSION_H

#include "bdd/bddpp.h"

#include <ostream>

class Module;
class Bddexpressionwood;
class EquationTable;

// Root of the four-valued boolean expressions. Every expression is read as a
// pair of BDDs, over and under: True (1, 0), False (0, 1), Bottom (0, 0),
// Error (1, 1). The constants and the operators live with the source
// compiler; this layer holds the root and Signal.
class Expression {
public:
    explicit Expression(bool wired = false) : wired(wired) {}
    virtual ~Expression() = default;

    bool isWired() const { return wired; }

    // The root has no BDDs: these four end the process.
    virtual bdd getOverBdd(Module* m, Bddexpressionwood* wood);
    virtual bdd getUnderBdd(Module* m, Bddexpressionwood* wood);
    virtual bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood);
    virtual bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood);
    virtual bool isBottomExpr() { return false; }
    virtual bool isErrorExpr() { return false; }
    virtual bool isTrueExpr() { return false; }
    virtual bool isFalseExpr() { return false; }
    virtual bool isSignalExpr() { return false; }
    // Joining: plus gathers knowledge (True plus False is Error), mult keeps
    // what both sides agree on. A node is built only when neither side
    // decides the result.
    virtual Expression* plus(Expression* e, Module* m);
    virtual Expression* mult(Expression* e, Module* m);
    virtual Expression* duplicate();
    virtual Expression* buildCurrentExpression(EquationTable* table, Module* m);
    virtual void print(std::ostream& os);
    virtual void printOverBdd(std::ostream& os, Module* m, Bddexpressionwood* wood);
    virtual void printUnderBdd(std::ostream& os, Module* m, Bddexpressionwood* wood);

    // The or and and nodes belong to the source compiler, which sits above
    // this layer; it installs their constructors here before it joins
    // expressions. Joining without them is a fatal error.
    static Expression* (*newOrExpression)(Expression* a, Expression* b);
    static Expression* (*newAndExpression)(Expression* a, Expression* b);

protected:
    bool wired;
};

#endif
