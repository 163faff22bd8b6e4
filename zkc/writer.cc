// Module::ZKC_put: the compiled-module file of a module, read back by the
// parser of this folder.
//
// Variables are renumbered in the order the file mentions them, which is
// the order in which the reader creates them again: inputs, outputs, data
// signals, locals (with the further occurrences of outputs), pre signals,
// the three connexion signals. The node table, the expressions and the
// bindings then speak of those numbers.

#include "bdd/bddpp.h"
#include "data/data.h"
#include "context/compilation.h"
#include "context/messages.h"
#include "model/module.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"

#include <algorithm>
#include <iostream>
#include <list>
#include <string>
#include <vector>

namespace {

class zkc_writer {
public:
    zkc_writer(Module* m, std::ostream& o, int forget)
        : module(m), out(o), wood(m->getBddWood()), forgetNames(forget),
          table(static_cast<std::size_t>(std::max(wood->bdd_manager->variables_number, wood->nb_bdd_vars)), -1) {}

    void write() {
        out << "module: " << module->getName() << "  " << (module->getReincarnate() ? 1 : 0) << " "
            << module->getFinalised() << std::endl;
        declared_list("input:", module->getInputSignalList(), true);
        outputs();
        declared_list("data_signal:", module->getDataSignalList(), false);
        locals();
        registers();
        memorised();
        connexion();
        out << "equation_def:" << std::endl;
        wood->Put_zkc(out, table.data(), Compilation::DebugFlag);
        out << "end:" << std::endl << std::endl;
        module->printBinding(out, table.data());
        data_tables();
    }

private:
    Module* module;
    std::ostream& out;
    Bddexpressionwood* wood;
    int forgetNames;
    std::vector<long> table;  // variable index -> number in the file
    long counter = 0;

    void number(long id) {
        if (id >= 0 && id < static_cast<long>(table.size()))
            table[static_cast<std::size_t>(id)] = counter;
        counter++;
    }

    long renumbered(long id) const {
        return id >= 0 && id < static_cast<long>(table.size()) ? table[static_cast<std::size_t>(id)] : -1;
    }

    void require_ref(Signal* s) {
        if (s->getSignalRef(module->getSignalManager(), wood) != nullptr)
            return;
        std::string text = s->getOriginalName() + " has no signal reference!";
        fl_show_Smessages(text);
        std::cerr << text << std::endl;
        Compilation::exitFailure(text);
    }

    void declared_list(const char* keyword, std::list<Signal*>* list, bool typed) {
        if (list == nullptr || list->empty())
            return;
        out << keyword;
        for (Signal* s : *list) {
            require_ref(s);
            out << " " << s->getOriginalName();
            if (typed && s->isValued(module))
                out << " : " << s->getValueType(module);
            number(s->getOverBddId(module, wood));
            number(s->getUnderBddId(module, wood));
        }
        out << " ;" << std::endl;
    }

    // The first occurrence of each output is declared here; the others go
    // with the locals.
    void outputs() {
        std::list<Signal*>* list = module->getOutputSignalList();
        if (list == nullptr || list->empty())
            return;
        out << "output:";
        for (Signal* s : *list) {
            require_ref(s);
            out << " " << s->getOriginalName();
            if (s->isValued(module))
                out << " : " << s->getValueType(module);
            std::list<long> ids = s->getAllBddId(module, wood);
            auto id = ids.begin();
            number(id != ids.end() ? *id++ : -1);
            number(id != ids.end() ? *id : -1);
        }
        out << " ;" << std::endl;
    }

    // One declaration per occurrence pair, under the occurrence's current
    // name, or a number in its place when names are forgotten.
    void occurrence(long over, long under) {
        SignalRef* ref = module->getSignalManager()->getSignalRefById(over, wood);
        number(over);
        number(under);
        if (forgetNames != 0) {
            out << "  V" << counter - 2;
            return;
        }
        out << " " << (ref != nullptr ? ref->getCurrentName() : std::string("?"));
        if (ref != nullptr && ref->isValued())
            out << " : " << ref->getType();
    }

    static void pairs(const std::list<long>& ids, bool skip_first, void (zkc_writer::*f)(long, long),
                      zkc_writer* self) {
        auto id = ids.begin();
        if (skip_first) {
            for (int k = 0; k < 2 && id != ids.end(); ++k)
                ++id;
        }
        while (id != ids.end()) {
            long over = *id++;
            if (id == ids.end())
                break;
            long under = *id++;
            (self->*f)(over, under);
        }
    }

    void locals() {
        std::list<Signal*>* list = module->getLocalSignalList();
        if (list != nullptr && !list->empty()) {
            out << "local:";
            for (Signal* s : *list) {
                require_ref(s);
                pairs(s->getAllBddId(module, wood), false, &zkc_writer::occurrence, this);
            }
        }
        if (std::list<Signal*>* outs = module->getOutputSignalList())
            for (Signal* s : *outs)
                pairs(s->getAllBddId(module, wood), true, &zkc_writer::occurrence, this);
        // Written even without a "local:" header: a module with no local
        // at all thus gets a lone ";".
        out << ";" << std::endl;
    }

    void registers() {
        std::list<regclass*>* list = module->getRegisterList();
        if (list == nullptr || list->empty())
            return;
        out << "register:" << std::endl;
        for (regclass* r : *list) {
            if (forgetNames != 0) {
                for (Signal* s : {r->next_var(), r->actual_var()}) {
                    if (s != nullptr)
                        out << " V" << renumbered(s->getOverBddId(module, wood));
                    else
                        out << "? ";
                }
                out << " " << (r->is_initialy_true() ? "1" : "0") << ";" << std::endl;
            } else {
                out << *r << std::endl;
            }
        }
        out << std::endl;
    }

    void memorised() {
        std::list<memorizedSignal*>* list = module->getPreSignalList();
        if (list == nullptr || list->empty())
            return;
        out << "memorized:" << std::endl;
        for (memorizedSignal* p : *list) {
            Signal* pre = p->getPre();
            Signal* actual = p->getActual();
            out << (pre != nullptr ? pre->getInternalName() : std::string("?")) << " "
                << (actual != nullptr ? actual->getInternalName() : std::string("?")) << " "
                << p->getInitialValue() << ";" << std::endl;
            if (pre != nullptr) {
                number(pre->getOverBddId(module, wood));
                number(pre->getUnderBddId(module, wood));
            }
        }
        out << std::endl;
    }

    void connexion() {
        out << "connexion: ";
        const char* separator = "";
        for (Signal* s : {module->getSet(), module->getReset(), module->getRtl()}) {
            out << separator << (s != nullptr ? s->getInternalName() : std::string("?"));
            separator = " ";
        }
        out << ";" << std::endl << std::endl;
        for (Signal* s : {module->getSet(), module->getReset(), module->getRtl()}) {
            if (s == nullptr)
                continue;
            number(s->getOverBddId(module, wood));
            number(s->getUnderBddId(module, wood));
        }
    }

    void data_tables() {
        DataTypeTable* types = Compilation::GDataTypeTable;
        DataMethodTable* methods = Compilation::GDataMethodTable;
        DataConstantTable* constants = Compilation::GDataConstantTable;
        if (types == nullptr && methods == nullptr && constants == nullptr)
            return;
        out << "data:" << std::endl;
        if (types != nullptr)
            types->print(out, false);
        if (methods != nullptr)
            methods->print(out, false);
        if (constants != nullptr)
            constants->ZKC_put(out);
        out << "end:" << std::endl << std::endl;
    }
};

}  // namespace

void Module::ZKC_put(std::ostream& out, int, int, int forgetNames)
{
    if (getBddWood() == nullptr)
        return;
    zkc_writer(this, out, forgetNames).write();
}
