#ifndef TARN_SOURCE_EQUATIONTABLE_H
#define TARN_SOURCE_EQUATIONTABLE_H

// The source compiler's door to a module's wood: it turns an Expression on
// a Signal into over and under equations, joins the contributions of
// several statements to one signal, and dates the wood, reporting a
// causality cycle as an error of the module.

#include <list>
#include <set>
#include <string>

#include "bdd/bddpp.h"
#include "signals/signal.h"

class Bddexpression;
class Bddexpressionwood;
class Expression;
class Module;
class Signal;

class EquationTable {
public:
    EquationTable(std::string moduleName, Bddexpressionwood* wood) : moduleName(std::move(moduleName)), wood(wood) {}

    Bddexpressionwood* getBddexpressionWood() const { return wood; }
    const std::string& getModuleName() const { return moduleName; }
    long getPertLevel() const;

    // s := e. With `initial` the left member and the operands are those of
    // occurrence 0. A wire gets under := not over at once; any other signal
    // keeps the two rails of e apart.
    void createEquation(Signal* s, Expression* e, Module* m, bool initial = false);
    // Ors e into the equations s already has (an emission among others).
    // A missing equation is reported on the error stream and skipped. The
    // over and under equations also depend on the signals of s's
    // dependence set and on the carriers those signals clock.
    void createUnifyEquation(Signal* s, Expression* e, Module* m, bool initial);
    // Whether some contribution to the under wire of s was not the
    // constant zero (a "noemit", a sustained absence).
    bool underIsSet(Signal* s) const { return underSet.count(s->getInternalName()) != 0; }
    // under := not over on the actual variable of a register.
    void createRegisterEquation(Signal* s, Module* m);
    // over := 0 and under := 0.
    void createBottomEquation(Signal* s, Module* m);
    // The same on the ref of an occurrence; none is a fatal error.
    void createBottomEquation(Signal* s, Module* m, int occurrence);
    // s's equations take t's wires (new equations where s has none).
    void replaceEquation(Signal* s, Signal* t, Module* m);
    // Masks every equation of the outputs of m with the over wire of s.
    void cond(Signal* s, Module* m);
    // A new occurrence of every output and local (wires, registers and
    // the carriers and test signals of bindings aside) that has one in the wood, at Bottom, which occurrence 0 comes
    // to read. A user signal that already holds the name of the new
    // occurrence is a fatal error.
    void pre(Module* m);
    // The equation of variable `id`, if any, takes `mask` and its right
    // member.
    void mask(long id, const bdd& mask);

    // Dates the wood; a date failure is fatal, and a cycle is the error of
    // the module: its variables and their dependences in the cycle.
    void callPert();
    // The same, dating incrementally from the given variables.
    void callPert(std::list<long>& ids);
    // "   <variable> <- <variables it reads among them>" per variable.
    std::string computeDependence(const std::list<long>& cycle) const;

private:
    void checkCycle();
    // The equation of variable `id`, or null.
    Bddexpression* equationOf(long id) const;
    void addDependences(Bddexpression* e, long id, Signal* s, Module* m);

    std::string moduleName;
    Bddexpressionwood* wood;
    std::set<std::string> underSet;
};

#endif
