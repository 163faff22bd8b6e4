// Modules put together the way the compiled-module reader does it: signals
// in declaration order, equations over their wires, and on request the
// connexion signals last, then dates and user types.
#ifndef TARN_TESTS_MODULE_BUILDER_H
#define TARN_TESTS_MODULE_BUILDER_H

#include "data/data.h"
#include "model/module.h"
#include "wood/Bddexpression.h"

#include <string>

struct ModuleBuilder {
    Module m;
    Bddexpressionwood* wood;
    bddpp_manager* mgr;

    explicit ModuleBuilder(const std::string& name = "m") : m(name), wood(m.getBddWood()), mgr(wood->my_bdd_manager())
    {
    }

    // kind: 'i' input, 'o' output, 'l' local.
    Signal* add(char kind, const std::string& n)
    {
        Signal* s = new Signal(n, &m, wood);
        if (kind == 'i')
            s->setInput(), m.addInputSignal(s);
        else if (kind == 'o')
            s->setOutput(), m.addOutputSignal(s);
        else
            s->setLocal(), m.addLocalSignal(s);
        return s;
    }
    Signal* input(const std::string& n) { return add('i', n); }
    Signal* output(const std::string& n) { return add('o', n); }
    Signal* local(const std::string& n) { return add('l', n); }
    Signal* valued(Signal* s)
    {
        s->setValueType("integer", &m);
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
    void eq(Signal* s, const bdd& exp) { eq(over(s), exp); }
    Bddexpression* at(long index) { return index < wood->Nb_bdd_vars() ? wood->Exp_table()[index] : nullptr; }
    void date() { wood->compute_dates(); }

    // Connexions, dates of locals then outputs, and user types.
    void endOfReading(bool typeEquations = true)
    {
        const std::string& n = m.getName();
        m.setSet(new Signal("SET" + n, &m, wood));
        m.setReset(new Signal("RESET" + n, &m, wood));
        m.setRtl(new Signal("RTL" + n, &m, wood));
        std::list<long> ids;
        for (std::list<Signal*>* l : {m.getLocalSignalList(), m.getOutputSignalList()})
            for (Signal* s : *l)
                ids.splice(ids.end(), s->getAllBddId(&m, wood));
        wood->compute_dates(ids);
        if (typeEquations)
            m.update_user_type();
    }

    // The function that the wood finally computes for a wire, over the free
    // variables (equations composed in; the wood must have no cycle).
    bdd wire(long index)
    {
        Bddexpression* e = at(index);
        return e != nullptr ? flat(e->my_bdd_exp()) : mgr->Bdd_var_by_index(index);
    }
    bdd flat(bdd f)
    {
        for (long d : mgr->set_of_index_depend_on(f))
            if (at(d) != nullptr && at(d)->getAbstraction() == 0)
                f = mgr->Bdd_compose(f, mgr->Bdd_var_by_index(d), wire(d));
        return f;
    }
};

#endif
