// Deep copy of a module, for the source compiler's instances.
#include "model/module.h"

#include "data/data.h"
#include "wood/Bddexpression.h"

namespace {

// Copies each signal once, so that a signal listed twice, or shared by a
// register and a list, stays one object in the copy.
struct SignalCopier {
    Module& from;
    Module& to;
    std::map<Signal*, Signal*> copies;

    Signal* operator()(Signal* s)
    {
        if (s == nullptr)
            return nullptr;
        auto it = copies.find(s);
        if (it != copies.end())
            return it->second;
        Signal* c = s->copyInto(&from, from.getBddWood(), &to, to.getBddWood());
        copies[s] = c;
        return c;
    }

    std::list<Signal*>* list(const std::list<Signal*>* l)
    {
        if (l == nullptr)
            return nullptr;
        auto* result = new std::list<Signal*>;
        for (Signal* s : *l)
            result->push_back((*this)(s));
        return result;
    }
};

}  // namespace

Module::Module(Module& source)
    : name(source.name), statement(source.statement), reincarnate(source.reincarnate), finalised(source.finalised),
      current_instance(source.current_instance), signal_manager(new SignalManager)
{
    installScope();
    if (source.wood == nullptr)
        Compilation::IllegalOperationException("Module::Module(Module&): no wood to copy in " + name);
    wood = new Bddexpressionwood(source.wood);

    SignalCopier copy{source, *this, {}};
    inputs = copy.list(source.inputs);
    outputs = copy.list(source.outputs);
    data_signals = copy.list(source.data_signals);
    locals = copy.list(source.locals);
    if (source.memorized != nullptr) {
        memorized = new std::list<memorizedSignal*>;
        for (memorizedSignal* pair : *source.memorized)
            memorized->push_back(pair == nullptr ? nullptr
                                                 : new memorizedSignal(copy(pair->getPre()), copy(pair->getActual()),
                                                                       pair->getInitialValue()));
    }
    if (source.registers != nullptr) {
        registers = new std::list<regclass*>;
        for (regclass* r : *source.registers)
            registers->push_back(r == nullptr ? nullptr
                                              : new regclass(copy(r->actual_var()), copy(r->next_var()),
                                                             r->is_initialy_true()));
    }
    set_signal = copy(source.set_signal);
    reset_signal = copy(source.reset_signal);
    rtl_signal = copy(source.rtl_signal);

    // The source compiler's dependence sets point at signals of the source.
    for (auto& entry : copy.copies) {
        std::set<Signal*> mapped;
        for (Signal* d : entry.first->getDependenceSet()) {
            auto it = copy.copies.find(d);
            mapped.insert(it != copy.copies.end() ? it->second : d);
        }
        entry.second->getDependenceSet() = mapped;
    }

    if (source.data_table != nullptr) {
        data_table = new std::map<std::string, DataBinding*>;
        for (const auto& entry : *source.data_table)
            (*data_table)[entry.first] = new DataBinding(*entry.second, &source, this);
    }
}
