#ifndef TARN_SOURCE_EXPRESSION_H
#define TARN_SOURCE_EXPRESSION_H

// The four-valued expressions of the source compiler beyond the root and
// Signal: constants, and operators over one or two operands. Every tree is
// read twice, once for the over and once for the under wire. Trees share
// their subtrees; no node owns what it points to.

#include "signals/expression.h"
#include "signals/signal.h"

#include <ostream>

class bddpp_manager;

// Installs the or and and nodes as the constructors that Expression::plus
// and Expression::mult use. Idempotent.
void install_expression_constructors();

// ---------------------------------------------------------------- constants

class TrueExpression : public Expression {
public:
    bdd getOverBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getUnderBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood) override { return getOverBdd(m, wood); }
    bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood) override { return getUnderBdd(m, wood); }
    bool isTrueExpr() override { return true; }
    Expression* plus(Expression* e, Module* m) override;
    Expression* mult(Expression* e, Module* m) override;
    Expression* duplicate() override { return new TrueExpression(); }
    void print(std::ostream& os) override { os << " 1 "; }
};

class FalseExpression : public Expression {
public:
    bdd getOverBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getUnderBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood) override { return getOverBdd(m, wood); }
    bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood) override { return getUnderBdd(m, wood); }
    bool isFalseExpr() override { return true; }
    Expression* plus(Expression* e, Module* m) override;
    Expression* mult(Expression* e, Module* m) override;
    Expression* duplicate() override { return new FalseExpression(); }
    void print(std::ostream& os) override { os << " 0 "; }
};

// Bottom and Error join by giving back the other side, for plus and mult
// alike: that asymmetry is wanted.
class BottomExpression : public Expression {
public:
    bdd getOverBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getUnderBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood) override { return getOverBdd(m, wood); }
    bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood) override { return getUnderBdd(m, wood); }
    bool isBottomExpr() override { return true; }
    Expression* plus(Expression* e, Module*) override { return e; }
    Expression* mult(Expression* e, Module*) override { return e; }
    Expression* duplicate() override { return new BottomExpression(); }
    void print(std::ostream& os) override { os << " bottom "; }
};

class ErrorExpression : public Expression {
public:
    bdd getOverBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getUnderBdd(Module* m, Bddexpressionwood* wood) override;
    bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood) override { return getOverBdd(m, wood); }
    bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood) override { return getUnderBdd(m, wood); }
    bool isErrorExpr() override { return true; }
    Expression* plus(Expression* e, Module*) override { return e; }
    Expression* mult(Expression* e, Module*) override { return e; }
    Expression* duplicate() override { return new ErrorExpression(); }
    void print(std::ostream& os) override { os << " error "; }
};

// Two wires already computed as functions of the wood's variables: the
// conditions an automaton or a linked module builds on BDDs directly.
class WiresExpression : public Expression {
public:
    WiresExpression(const bdd& over, const bdd& under) : o(over), u(under) {}
    bdd getOverBdd(Module*, Bddexpressionwood*) override { return o; }
    bdd getUnderBdd(Module*, Bddexpressionwood*) override { return u; }
    bdd getInitialOverBdd(Module*, Bddexpressionwood*) override { return o; }
    bdd getInitialUnderBdd(Module*, Bddexpressionwood*) override { return u; }
    Expression* duplicate() override { return new WiresExpression(o, u); }
    void print(std::ostream& os) override { os << " wires "; }

private:
    bdd o;
    bdd u;
};

// ---------------------------------------------------------------- operators

// How an operator reads its operands: the current occurrence of every
// signal, or occurrence 0.
struct OperandReader {
    Module* module;
    Bddexpressionwood* wood;
    bool initial;

    bdd o(Expression* e) const;
    bdd u(Expression* e) const;
    bddpp_manager* manager() const;
};

// An operator's two wires as functions of its operands' wires; the four
// getters of the root all come down to these two.
class OperatorExpression : public Expression {
public:
    bdd getOverBdd(Module* m, Bddexpressionwood* wood) override { return over({m, wood, false}); }
    bdd getUnderBdd(Module* m, Bddexpressionwood* wood) override { return under({m, wood, false}); }
    bdd getInitialOverBdd(Module* m, Bddexpressionwood* wood) override { return over({m, wood, true}); }
    bdd getInitialUnderBdd(Module* m, Bddexpressionwood* wood) override { return under({m, wood, true}); }

protected:
    virtual bdd over(const OperandReader& r) = 0;
    virtual bdd under(const OperandReader& r) = 0;
};

class BinaryExpression : public OperatorExpression {
public:
    BinaryExpression(Expression* a, Expression* b) : a(a), b(b) {}
    Expression* getLeft() const { return a; }
    Expression* getRight() const { return b; }

protected:
    Expression* a;
    Expression* b;
};

class OrExpression : public BinaryExpression {
public:
    using BinaryExpression::BinaryExpression;
    Expression* duplicate() override { return new OrExpression(a->duplicate(), b->duplicate()); }
    Expression* buildCurrentExpression(EquationTable* t, Module* m) override;
    void print(std::ostream& os) override;

protected:
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

class AndExpression : public BinaryExpression {
public:
    using BinaryExpression::BinaryExpression;
    Expression* duplicate() override { return new AndExpression(a->duplicate(), b->duplicate()); }
    Expression* buildCurrentExpression(EquationTable* t, Module* m) override;
    void print(std::ostream& os) override;

protected:
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

// Swaps the two wires: Bottom stays Bottom.
class NotExpression : public OperatorExpression {
public:
    explicit NotExpression(Expression* a) : a(a) {}
    Expression* duplicate() override { return new NotExpression(a->duplicate()); }
    Expression* buildCurrentExpression(EquationTable* t, Module* m) override;
    void print(std::ostream& os) override;

protected:
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
    Expression* a;
};

// A negation that takes Bottom for absent: True and False swap, Bottom
// gives True, Error stays Error.
class NpExpression : public OperatorExpression {
public:
    explicit NpExpression(Expression* a) : a(a) {}
    Expression* duplicate() override { return new NpExpression(a->duplicate()); }
    Expression* buildCurrentExpression(EquationTable* t, Module* m) override;
    void print(std::ostream& os) override;

protected:
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
    Expression* a;
};

// The two-operand forms that route the pair of b by a wire of a. Their
// name is their printed head.
class RoutedExpression : public OperatorExpression {
public:
    RoutedExpression(Expression* a, Expression* b) : a(a), b(b) {}
    void print(std::ostream& os) override;

protected:
    virtual const char* head() const = 0;
    Expression* a;
    Expression* b;
};

// The pair of b where a can be taken as true.
class ThenExpression : public RoutedExpression {
public:
    using RoutedExpression::RoutedExpression;
    Expression* duplicate() override { return new ThenExpression(a->duplicate(), b->duplicate()); }

protected:
    const char* head() const override { return "(SET_then("; }
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

// The pair of b where a cannot be taken as true.
class ElseExpression : public RoutedExpression {
public:
    using RoutedExpression::RoutedExpression;
    Expression* duplicate() override { return new ElseExpression(a->duplicate(), b->duplicate()); }

protected:
    const char* head() const override { return "(SET_else("; }
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

// The pair of b where a can be taken as false.
class DThenExpression : public RoutedExpression {
public:
    using RoutedExpression::RoutedExpression;
    Expression* duplicate() override { return new DThenExpression(a->duplicate(), b->duplicate()); }

protected:
    const char* head() const override { return "(SET_dthen("; }
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

// The pair of b where a cannot be taken as false.
class DElseExpression : public RoutedExpression {
public:
    using RoutedExpression::RoutedExpression;
    Expression* duplicate() override { return new DElseExpression(a->duplicate(), b->duplicate()); }

protected:
    const char* head() const override { return "(SET_delse("; }
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

// The pair of a masked by the over wire of b.
class CondExpression : public RoutedExpression {
public:
    using RoutedExpression::RoutedExpression;
    Expression* duplicate() override { return new CondExpression(a->duplicate(), b->duplicate()); }

protected:
    const char* head() const override { return "(Cond("; }
    bdd over(const OperandReader& r) override;
    bdd under(const OperandReader& r) override;
};

#endif
