#ifndef TARN_SOURCE_AUTOMATON_H
#define TARN_SOURCE_AUTOMATON_H

// Automata and Mealy machines. An automaton is compiled into a state
// register of b bits, b the smallest number with 2^b above the number of
// its states (code 0 is "not started"), and equations computed directly on
// BDDs. A Mealy machine is a list of equations over registers and signals.

#include "bdd/bddpp.h"
#include "source/statement.h"

#include <map>
#include <string>
#include <vector>

class Emit;
class Run;

class State {
public:
    State(const std::string& name, bool final, Run* run, std::vector<Emit*> moore)
        : name(name), final(final), run(run), moore(std::move(moore)) {}
    const std::string& getName() const { return name; }
    int getId() const { return id; }
    void setId(int i) { id = i; }
    bool isFinal() const { return final; }
    Run* getRunModule() const { return run; }
    // Emitted in every reaction that ends in the state.
    const std::vector<Emit*>& getMooreActions() const { return moore; }

private:
    std::string name;
    bool final;
    Run* run;
    std::vector<Emit*> moore;
    int id = 0;
};

class Transition {
public:
    static constexpr int STRONG = 1;
    static constexpr int WEAK = 2;
    static constexpr int NORMAL_TERMINATION = 3;

    // `source` empty for an initial transition. `trigger` null when none
    // is written (always true); `value` a data expression whose value is
    // the trigger (then `trigger` is null); `other`: fires where no other
    // strong or weak transition of the source does. `priority` -1 when
    // none is written.
    Transition(const std::string& source, const std::string& target, int type, Expression* trigger, DataExpr* value,
               bool other, int priority, std::vector<Emit*> actions)
        : source(source), target(target), type(type), trigger(trigger), value(value), other(other),
          priority(priority), actions(std::move(actions)) {}

    int getType() const { return type; }
    Expression* getTrigger() const { return trigger; }
    void setTrigger(Expression* e) { trigger = e; }
    DataExpr* getValueTrigger() const { return value; }
    bool isOther() const { return other; }
    bool hasTrigger() const { return trigger != nullptr || value != nullptr; }
    const std::vector<Emit*>& getAction() const { return actions; }
    const std::string& getSource() const { return source; }
    const std::string& getTarget() const { return target; }
    bool isInitial() const { return source.empty(); }
    int getPriority() const { return priority; }
    void setPriority(int p) { priority = p; }
    // The trigger known to be True: o(trigger) and not u(trigger).
    bdd triggerable_bdd(Module* m);

private:
    std::string source, target;
    int type;
    Expression* trigger;
    DataExpr* value;
    bool other;
    int priority;
    std::vector<Emit*> actions;
};

class Automaton : public Statement {
public:
    Automaton(Module* m, std::vector<State*> states, std::vector<Transition*> transitions)
        : Statement("Automaton", m), states(std::move(states)), transitions(std::move(transitions)) {}

    // Final states with Moore actions or a run, transitions leaving a final
    // state, normal terminations with a trigger, unknown states, no initial
    // transition, a final state no transition enters; then the actions,
    // the runs and the value triggers. Each ends the process.
    void complementary_check_syntax() override;
    void createEquations(Module* m, EquationTable* t) override;
    bool isAutomaton() override { return true; }
    bool reincarnate() override { return false; }
    Statement* duplicate(Module* m, EquationTable*) override { return new Automaton(m, states, transitions); }

    void priority_integration();
    void check_determinism(Module* m, bddpp_manager* manager);

private:
    State* state(const std::string& name) const;
    std::vector<State*> states;
    std::vector<Transition*> transitions;
};

// Registers, each with an initial value and the name of its next value,
// and equations that give every next value and some outputs or locals.
class MealyMachine : public Statement {
public:
    struct Register {
        Signal* actual;
        Signal* next;
        int initial;
    };
    struct Equation {
        Signal* left;        // a register's next value, or
        Emit* emission;      // an output or local (with its value)
        Expression* right;
    };
    MealyMachine(Module* m, std::vector<Register> registers, std::vector<Equation> equations)
        : Statement("Mealy", m), registers(std::move(registers)), equations(std::move(equations)) {}

    void complementary_check_syntax() override;
    void createEquations(Module* m, EquationTable* t) override;
    bool reincarnate() override { return false; }
    Statement* duplicate(Module* m, EquationTable*) override { return new MealyMachine(m, registers, equations); }

private:
    std::vector<Register> registers;
    std::vector<Equation> equations;
};

#endif
