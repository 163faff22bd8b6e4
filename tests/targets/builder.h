// Modules put together the way the compiled-module reader does it, then
// marked finalised by hand so that the text of a generator can be derived
// from the equations as written, without the finalisation passes.
#ifndef TARN_TESTS_TARGETS_BUILDER_H
#define TARN_TESTS_TARGETS_BUILDER_H

#include "data/data.h"
#include "model/module.h"
#include "wood/Bddexpression.h"

#include <string>

struct TargetModule {
    Module m;
    Bddexpressionwood* wood;
    bddpp_manager* mgr;

    explicit TargetModule(const std::string& name = "m") : m(name), wood(m.getBddWood()), mgr(wood->my_bdd_manager())
    {
        Compilation::GDataTypeTable = nullptr;
        Compilation::GDataMethodTable = nullptr;
        Compilation::GDataConstantTable = nullptr;
        m.setFinalised(1);
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
    Signal* valued(Signal* s)
    {
        s->setValueType("integer", &m);
        return s;
    }

    bdd over(Signal* s) { return s->getOverBdd(&m, wood); }
    long overId(Signal* s) { return s->getOverBddId(&m, wood); }
    void eq(Signal* s, const bdd& exp)
    {
        bdd var = over(s);
        new Bddexpression(mgr->Name_var_by_bdd(var), wood, var, exp, 0, 0);
    }
    void date() { wood->compute_dates(); }
    // Global id of the node of a function, the name of its net or slot.
    long id(const bdd& f) { return bdd_node_global_id(f); }
    std::string one() { return std::to_string(id(mgr->Bdd_one())); }
};

#endif
