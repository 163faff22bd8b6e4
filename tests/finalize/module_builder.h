#ifndef TARN_TESTS_FINALIZE_MODULE_BUILDER_H
#define TARN_TESTS_FINALIZE_MODULE_BUILDER_H

// A module put together the way the compiled-module reader does it: signals
// in declaration order, equations over their wires, the connexion signals
// last, then dates and user types.

#include "model/module.h"
#include "wood/Bddexpression.h"

#include <string>

struct ModuleBuilder {
    Module m;
    Bddexpressionwood* wood;
    bddpp_manager* mgr;

    explicit ModuleBuilder(const std::string& name = "m")
        : m(name), wood(m.getBddWood()), mgr(wood->my_bdd_manager())
    {
    }

    Signal* input(const std::string& n)
    {
        Signal* s = new Signal(n, &m, wood);
        s->setInput();
        m.addInputSignal(s);
        return s;
    }
    Signal* output(const std::string& n)
    {
        Signal* s = new Signal(n, &m, wood);
        s->setOutput();
        m.addOutputSignal(s);
        return s;
    }
    Signal* local(const std::string& n)
    {
        Signal* s = new Signal(n, &m, wood);
        s->setLocal();
        m.addLocalSignal(s);
        return s;
    }
    void registerOf(Signal* actual, Signal* next, int initial)
    {
        actual->setRegister();
        next->setRegister();
        m.addRegisterSignal(actual, next, initial);
    }

    bdd over(Signal* s) { return s->getOverBdd(&m, wood); }
    bdd under(Signal* s) { return s->getUnderBdd(&m, wood); }
    long overId(Signal* s) { return s->getOverBddId(&m, wood); }
    long underId(Signal* s) { return s->getUnderBddId(&m, wood); }
    void eq(const bdd& var, const bdd& exp) { new Bddexpression(mgr->Name_var_by_bdd(var), wood, var, exp, 0, 0); }

    // Connexions, dates of locals then outputs, user types unless told not
    // to.
    void endOfReading(bool typeEquations = true)
    {
        const std::string& n = m.getName();
        Signal* set = new Signal("SET" + n, &m, wood);
        Signal* reset = new Signal("RESET" + n, &m, wood);
        Signal* rtl = new Signal("RTL" + n, &m, wood);
        for (Signal* s : {set, reset, rtl})
            s->setWire();
        m.setSet(set);
        m.setReset(reset);
        m.setRtl(rtl);
        std::list<long> ids;
        for (Signal* s : *m.getLocalSignalList())
            ids.splice(ids.end(), s->getAllBddId(&m, wood));
        for (Signal* s : *m.getOutputSignalList())
            ids.splice(ids.end(), s->getAllBddId(&m, wood));
        wood->compute_dates(ids);
        if (typeEquations)
            m.update_user_type();
    }

    Bddexpression* at(long index) { return index < wood->Nb_bdd_vars() ? wood->Exp_table()[index] : nullptr; }

    // f with every variable that has an equation replaced by the function of
    // that equation over the free variables (the wood must have no cycle).
    bdd flat(bdd f)
    {
        for (long d : mgr->set_of_index_depend_on(f)) {
            Bddexpression* e = at(d);
            if (e != nullptr && e->getAbstraction() == 0) {
                bdd inner = flat(e->my_bdd_exp());
                f = mgr->Bdd_compose(f, mgr->Bdd_var_by_index(d), inner);
            }
        }
        return f;
    }
    // The function that the wood finally computes for a wire, or the wire
    // itself when it is free.
    bdd wire(long index)
    {
        Bddexpression* e = at(index);
        return e != nullptr ? flat(e->my_bdd_exp()) : mgr->Bdd_var_by_index(index);
    }
};

#endif
