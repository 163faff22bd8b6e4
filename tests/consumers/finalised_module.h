// A module file read (and finalised) as tarn reads it before it writes a
// target, for the tests that check a text against the module's own facts.
#ifndef TARN_TESTS_CONSUMERS_FINALISED_MODULE_H
#define TARN_TESTS_CONSUMERS_FINALISED_MODULE_H

#include "bdd/bddpp.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "wood/Bddexpression.h"
#include "zkc/zkc_input.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

// The module, its messages kept off the test's output (the error stream in
// `errors` if given); null, and a failure, when the file cannot be read.
inline Module* read_module(const std::string& file, bool finalise, std::string* errors = nullptr)
{
    std::string suffix;
    bool ok = false;
    Compilation::forget_data_tables();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Module* module = parse(file, suffix, &ok);
    if (ok && module != nullptr && finalise)
        Module::finalize(module, 0);
    testing::internal::GetCapturedStdout();
    std::string err = testing::internal::GetCapturedStderr();
    if (errors != nullptr)
        *errors = err;
    if (!ok || module == nullptr) {
        ADD_FAILURE() << "not read: " << file << "\n" << err;
        return nullptr;
    }
    return module;
}

inline Module* finalised_module(const std::string& file) { return read_module(file, true); }

// What a test reads off the finalised module itself, to tell which outputs
// a target may leave apart from the C.
struct module_facts {
    // The outputs whose value reads, through the equations and the
    // registers, the presence of a memorised signal. The VHDL and the
    // SystemC unit never load that presence, so these outputs do not
    // follow the C.
    std::set<std::string> reading_pre;
    // The variables of the pure locals read by a memorised signal: the
    // finalisation drops such a local from the local list, so the VHDL
    // reads a signal that it never declares.
    std::set<std::string> undeclared;
};

inline module_facts facts_of(const std::string& file)
{
    module_facts facts;
    Module* module = finalised_module(file);
    if (module == nullptr)
        return facts;
    Bddexpressionwood* wood = module->getBddWood();
    bddpp_manager* m = wood->my_bdd_manager();
    std::set<long> pre;
    if (module->getPreSignalList() != nullptr)
        for (memorizedSignal* p : *module->getPreSignalList()) {
            pre.insert(p->getPre()->getOverBddId(module, wood));
            Signal* actual = p->getActual();
            std::list<Signal*>* locals = module->getLocalSignalList();
            if (actual->isLocal() &&
                (locals == nullptr || std::find(locals->begin(), locals->end(), actual) == locals->end()))
                facts.undeclared.insert(wood->Name_var_by_index(actual->getInitialOverBddId(module, wood)));
        }
    // A register's state is its next value of the reaction before.
    std::map<long, long> next_of;
    if (module->getRegisterList() != nullptr)
        for (regclass* r : *module->getRegisterList())
            next_of[r->actual_var()->getOverBddId(module, wood)] = r->next_var()->getOverBddId(module, wood);
    // Whether a memorised presence is reachable from `v`.
    auto reads = [&](long v) {
        std::set<long> seen{v};
        std::vector<long> todo{v};
        while (!todo.empty()) {
            long x = todo.back();
            todo.pop_back();
            if (pre.count(x) != 0)
                return true;
            std::vector<long> next;
            Bddexpression* e = x >= 0 && x < wood->Nb_bdd_vars() ? wood->Exp_table()[x] : nullptr;
            if (e != nullptr && e->getAbstraction() == 0 && Bddexpressionwood::bdd_initialised(e->my_bdd_exp()))
                for (long d : m->set_of_index_depend_on(e->my_bdd_exp()))
                    next.push_back(d);
            if (next_of.count(x) != 0)
                next.push_back(next_of[x]);
            for (long d : next)
                if (seen.insert(d).second)
                    todo.push_back(d);
        }
        return false;
    };
    for (Signal* s : *module->getOutputSignalList())
        if (reads(s->getOverBddId(module, wood)))
            facts.reading_pre.insert(s->getOriginalName());
    return facts;
}

#endif
