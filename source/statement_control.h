#ifndef TARN_SOURCE_STATEMENT_CONTROL_H
#define TARN_SOURCE_STATEMENT_CONTROL_H

// The statements with state or with concurrent sons: loops, waits,
// parallels, preemption, sustained emission, and the data test.

#include "source/statement.h"

// Restarts its body in the reaction it ends; never ends. A body that can
// end and start again in one reaction is compiled as two copies in
// sequence, so that one incarnation may end while the other starts.
class Loop : public Statement {
public:
    Loop(Module* m, Statement* body) : Statement("Loop", m), body(body) {}
    void compile(Module* m, EquationTable* t) override;
    void createEquations(Module* m, EquationTable* t) override;
    bool reincarnate() override { return body->reincarnate(); }
    std::vector<Statement*> sons() override { return {body}; }
    Statement* duplicate(Module* m, EquationTable* t) override { return new Loop(m, body->duplicate(m, t)); }

private:
    Statement* body;
};

// Ends in the first reaction after the one it starts in which its
// condition holds.
class Wait : public Statement {
public:
    Wait(Module* m, Expression* e) : Statement("Wait", m), e(e) {}
    void createEquations(Module* m, EquationTable* t) override;
    bool reincarnate() override { return false; }
    Statement* duplicate(Module* m, EquationTable*) override { return new Wait(m, e); }

private:
    Expression* e;
    Signal* actif = nullptr;
    Signal* actifplus = nullptr;
};

// Its sons at once; ends in the reaction the last of them ends. A chain
// of "||" is one Parallel whatever its grouping. Two sons have two
// registers, ACTIF (the left one has ended, not the right one yet) and
// ACTIFBIS (the reverse); n sons have one register each, true once that
// son has ended and until the whole ends.
class Parallel : public Statement {
public:
    Parallel(Module* m, std::vector<Statement*> sons) : Statement("Par", m), list(std::move(sons)) {}
    static Parallel* join(Module* m, Statement* l, Statement* r);
    void compile(Module* m, EquationTable* t) override;
    void createEquations(Module* m, EquationTable* t) override;
    bool isParallel() override { return true; }
    bool reincarnate() override;
    std::vector<Statement*> sons() override { return list; }
    Statement* duplicate(Module* m, EquationTable* t) override;

private:
    void createBinaryEquations(Module* m, EquationTable* t);
    void createNaryEquations(Module* m, EquationTable* t);
    std::vector<Statement*> list;
};

// Runs its body; from the reaction after its start, where the condition
// holds, the body is killed and the abort ends. A weak abort keeps what
// the body did in that reaction; a strong one takes back the body's
// emissions of that reaction.
class Abort : public Statement {
public:
    Abort(Module* m, Statement* body, Expression* e) : Abort("Abort", m, body, e) {}
    void createEquations(Module* m, EquationTable* t) override;
    bool reincarnate() override { return true; }
    std::vector<Statement*> sons() override { return {body}; }
    Statement* duplicate(Module* m, EquationTable* t) override { return new Abort(m, body->duplicate(m, t), e); }

protected:
    Abort(const std::string& kind, Module* m, Statement* body, Expression* e)
        : Statement(kind, m), body(body), e(e) {}
    Statement* body;
    Expression* e;
    Signal* actif = nullptr;
    Signal* actifplus = nullptr;
};

// The body writes its emissions to occurrences of their own (opened by
// EquationTable::pre before it is compiled, and closed by another after),
// and those are masked in the reaction of the preemption.
class StrongAbort : public Abort {
public:
    StrongAbort(Module* m, Statement* body, Expression* e) : Abort("StrongAbort", m, body, e) {}
    void compile(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable* t) override
    {
        return new StrongAbort(m, body->duplicate(m, t), e);
    }
};

// Emits its signal in every reaction until its condition holds, and ends
// then (in its first reaction as well).
class SustainUntil : public Emit {
public:
    SustainUntil(Module* m, const std::string& signalName, DataExpr* value, Expression* e)
        : Emit("Sustain", m, signalName, value), e(e) {}
    void createEquations(Module* m, EquationTable* t) override;
    bool reincarnate() override { return false; }
    Statement* duplicate(Module* m, EquationTable* t) override;

private:
    Expression* e;
    Signal* actif = nullptr;
    Signal* actifplus = nullptr;
};

// Makes its signal known absent in the reaction it starts; ends then.
class NoEmit : public Emit {
public:
    NoEmit(Module* m, const std::string& signalName) : Emit("NoEmit", m, signalName, nullptr) {}
    void createEquations(Module* m, EquationTable* t) override;
    void complementary_check_syntax() override;
    Statement* duplicate(Module* m, EquationTable*) override { return new NoEmit(m, signalName); }
};

// Chooses a branch by the value of a data expression in the reaction it
// starts: a local test signal, bound to the expression without clock,
// holds the value, and a present on it does the rest.
class If : public Present {
public:
    If(Module* m, DataExpr* value, Statement* t, Statement* f) : Present("If", m, nullptr, t, f), value(value) {}
    void complementary_check_syntax() override;
    void compile(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable* t) override;

private:
    DataExpr* value;
};

// A data expression read as a condition: its type must be known from
// what it reads ("the condition of <what> has no type" otherwise), and its
// literals take that type.
void checkValueCondition(Module* m, DataExpr* value, const std::string& what);
// The test signal of a data expression: a local named `name` (with "_"
// more while the name is taken), bound to the value without clock, present
// where the value holds.
Signal* valueTestSignal(Module* m, DataExpr* value, const std::string& name);

// n copies of a statement in sequence: repeat n times, and wait n times.
Statement* repeated(Module* m, Statement* s, long n);

#endif
