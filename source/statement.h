#ifndef TARN_SOURCE_STATEMENT_H
#define TARN_SOURCE_STATEMENT_H

// The statement tree of a module body. Every statement is a box with
// three control wires: SET (it starts in this reaction), RESET (it is
// killed in this reaction) and RTL (it ends in this reaction). A statement
// with state adds a register: the wire ACTIF, true in a reaction in which
// it is active, and ACTIFPLUS, its value for the next reaction. Compiling
// a statement compiles its sons, then writes its own equations into the
// module's wood through the EquationTable; its parent then ties the sons'
// SET and RESET to its own wires.

#include <list>
#include <map>
#include <string>
#include <vector>

class DataExpr;
class EquationTable;
class Expression;
class Module;
class Signal;

class Statement {
public:
    // The name is the kind followed by the kind's running number in the
    // module (see resetNumbers); `prefix`, when given, stands in front of
    // the number in place of the kind.
    Statement(const std::string& kind, Module* m, const std::string& prefix = "");
    virtual ~Statement() = default;

    const std::string& getName() const { return name; }
    Module* getModule() const { return module; }
    // Throw StatementWireException before createWires made them.
    Signal* getSet() const;
    Signal* getReset() const;
    Signal* getRtl() const;

    virtual void createEquations(Module* m, EquationTable* t) = 0;
    // Checks against the module's interface that the compiler cannot make
    // while parsing; a violation ends the process with its message.
    // Composites check their sons.
    virtual void complementary_check_syntax();
    // The sons' compile, then createEquations.
    virtual void compile(Module* m, EquationTable* t);
    virtual bool isAutomaton() { return false; }
    virtual bool isParallel() { return false; }
    virtual bool isSequence() { return false; }
    // Whether the statement can end and start again in one reaction.
    virtual bool reincarnate() = 0;
    // The sons, in order; empty for a leaf.
    virtual std::vector<Statement*> sons() { return {}; }
    // A fresh copy of the tree, with names of its own, not compiled.
    virtual Statement* duplicate(Module* m, EquationTable* t) = 0;

    // Dates the wood and reports a causality cycle.
    static void callPert(EquationTable* t);
    static void callPert(EquationTable* t, std::list<long>& ids);

    // Running numbers start again at 1 for each module.
    static void resetNumbers();
    // Statements made in the module so far; past a bound the program is
    // refused, since copies (loop re-entry, repeat) multiply them.
    static constexpr long max_statements = 100000;

protected:
    // SET, RESET and RTL made from the name, flagged wires and listed as
    // locals. A name whose wires would meet a signal that already exists
    // takes a "_" more until none does; `sons` counts the wires of the
    // sons of an n-ary statement among the names to check.
    void createWires(Module* m, EquationTable* t, int sons = 0);
    // A register pair made from `actualName` and `nextName`, both wires
    // and registers listed as locals, the register entered with initial
    // value 0, and the actual variable's under equation.
    void createRegister(Module* m, EquationTable* t, const std::string& actualName, const std::string& nextName,
                        Signal*& actual, Signal*& next);

    std::string name;
    Module* module;
    Signal* set = nullptr;
    Signal* reset = nullptr;
    Signal* rtl = nullptr;

private:
    static std::map<std::string, int> numbers;
    static long made;
};

// -------------------------------------------------------------- leaves

// Ends in the reaction it starts.
class Nothing : public Statement {
public:
    explicit Nothing(Module* m) : Statement("Nothing", m) {}
    void createEquations(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable*) override { return new Nothing(m); }
    bool reincarnate() override { return true; }
};

// Never ends.
class Halt : public Statement {
public:
    explicit Halt(Module* m) : Statement("Halt", m) {}
    void createEquations(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable*) override { return new Halt(m); }
    bool reincarnate() override { return false; }
};

// Ends in the reaction after the one it starts.
class Pause : public Statement {
public:
    explicit Pause(Module* m) : Statement("Pause", m) {}
    void createEquations(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable*) override { return new Pause(m); }
    bool reincarnate() override { return false; }

protected:
    Signal* actif = nullptr;
    Signal* actifplus = nullptr;
};

// Makes a signal present in the reaction it starts, and ends then. A
// valued emission also makes a carrier: a local signal present in the
// same reactions, bound to the value with the emitted signal as clock.
class Emit : public Statement {
public:
    // `value` null for a pure emission.
    Emit(Module* m, const std::string& signalName, DataExpr* value) : Emit("Emit", m, signalName, value) {}
    void createEquations(Module* m, EquationTable* t) override;
    void complementary_check_syntax() override;
    Statement* duplicate(Module* m, EquationTable* t) override;
    bool reincarnate() override { return true; }

    const std::string& getSignalName() const { return signalName; }
    // The signal's equations take `condition`; a valued emission makes
    // its carrier with the same condition. Automata and Mealy machines
    // emit through it, once per action, without compiling the statement.
    void emitWhen(Module* m, EquationTable* t, Expression* condition, bool initial);

protected:
    Emit(const std::string& kind, Module* m, const std::string& signalName, DataExpr* value);
    // The checks of an emission of `value` (null: pure) on the signal.
    void checkEmission(const char* what);

    std::string signalName;
    DataExpr* value;
    Signal* signal = nullptr;
    Signal* carrier = nullptr;
};

// --------------------------------------------------------- composites

// Its sons one after the other: each starts in the reaction the one
// before ends. A chain of ">>" is one Sequence whatever its grouping, so
// that a long chain is a flat list and not a deep tree.
class Sequence : public Statement {
public:
    Sequence(Module* m, std::vector<Statement*> sons) : Statement("Seq", m), list(std::move(sons)) {}
    // The two incarnations of a loop's body: named "S_" and the next
    // number of the sequences.
    static Sequence* reentry(Module* m, Statement* body, Statement* copy)
    {
        return new Sequence(m, {body, copy}, "S_");
    }
    // l then r, taking in the sons of either that is a Sequence itself.
    static Sequence* join(Module* m, Statement* l, Statement* r);
    void createEquations(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable* t) override;
    bool isSequence() override { return true; }
    bool reincarnate() override;
    std::vector<Statement*> sons() override { return list; }

protected:
    Sequence(Module* m, std::vector<Statement*> sons, const std::string& prefix)
        : Statement("Seq", m, prefix), list(std::move(sons)) {}
    std::vector<Statement*> list;
};

// Starts its then branch where the condition can be taken as true in the
// reaction it starts, its else branch (or ends at once) otherwise. The
// dual, Absent, goes by the condition's under wire: the then branch where
// the condition can be taken as false.
class Present : public Statement {
public:
    // `f` null when there is no else branch.
    Present(Module* m, Expression* e, Statement* t, Statement* f) : Present("Present", m, e, t, f) {}
    void compile(Module* m, EquationTable* t) override;
    Statement* duplicate(Module* m, EquationTable* t) override;
    void createEquations(Module* m, EquationTable* t) override;
    bool reincarnate() override;
    std::vector<Statement*> sons() override;

protected:
    Present(const std::string& kind, Module* m, Expression* e, Statement* t, Statement* f)
        : Statement(kind, m), e(e), t(t), f(f) {}
    // The condition's routing to each branch.
    virtual Expression* thenCondition(Expression* s);
    virtual Expression* elseCondition(Expression* s);

    Expression* e;
    Statement* t;
    Statement* f;
};

class Absent : public Present {
public:
    Absent(Module* m, Expression* e, Statement* t, Statement* f) : Present("Absent", m, e, t, f) {}
    Statement* duplicate(Module* m, EquationTable* t) override;

protected:
    Expression* thenCondition(Expression* s) override;
    Expression* elseCondition(Expression* s) override;
};

#endif
