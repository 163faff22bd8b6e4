// Documentation of a module: state and interface by variable names, the
// memorisations, the definitions in the node form of the wood, the binding
// table with its evaluation trees, and the data tables. A listing for a
// reader; no tool reads it back.
//
// Line ends stand exactly where the listing has always had them: the
// memorisation lines, the lines of one binding and the evaluation table
// run on without one.

#include "model/module.h"

#include "data/data.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <list>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace {

void putJoined(std::ostream& os, const std::vector<std::string>& items, const char* separator)
{
    bool first = true;
    for (const std::string& item : items) {
        if (!first)
            os << separator;
        os << item;
        first = false;
    }
}

// Both wires of each signal, the under one too, as far as the wood holds
// them.
void addWires(Module* m, std::vector<std::string>& items, const std::list<Signal*>& signals)
{
    Bddexpressionwood* wood = m->getBddWood();
    for (Signal* s : signals) {
        if (s == nullptr)
            continue;
        long over = s->getOverBddId(m, wood);
        long under = s->getUnderBddId(m, wood);
        if (over != -1)
            items.push_back(wood->Name_var_by_index(over));
        if (under != -1)
            items.push_back(wood->Name_var_by_index(under));
    }
}

// "<title><control wires><wires>;" and a line end; nothing for an empty list.
void putInterface(Module* m, std::ostream& os, const char* title, std::list<Signal*>* signals,
                  std::vector<std::string> controls)
{
    if (signals == nullptr || signals->empty())
        return;
    if (m->getFinalised())
        controls.clear();
    addWires(m, controls, *signals);
    os << title;
    putJoined(os, controls, ", ");
    os << ";" << std::endl;
}

// Each bound value is shown through a copy, so that the evaluation indexes
// given out here stay out of the module.
void putBindingTable(Module* m, std::ostream& os)
{
    std::map<std::string, DataBinding*>* table = m->getDataTable();
    Bddexpressionwood* wood = m->getBddWood();
    std::list<DataExpr*> pending;
    int counter = 0;
    os << "Binding table" << std::endl;
    for (const auto& entry : *table) {
        DataBinding* b = entry.second;
        if (b == nullptr)
            continue;
        os << "presence du signal: \"" << entry.first << "\" declenche l'emission de : " << std::endl;
        if (b->getClock() != nullptr) {
            os << "  - value support signal : ";
            m->DEBUG_OneSignal_put(os, b->getClock());
        } else {
            os << "  - no value support signal ...";
        }
        os << "  - signal data: ";
        if (Signal* s = b->getSignal()) {
            s->print(os);
            for (SignalRef* ref : m->getSignalManager()->getAllSignalRef(s, wood))
                os << "      associated occurence: " << ref->getCurrentOccurrence() << ": " << ref->getCurrentName()
                   << " (" << ref->getOverBddId(wood) << ", " << ref->getUnderBddId(wood) << "): ";
        }
        os << "  - evaluation tree: " << counter;
        if (b->getValue() != nullptr) {
            DataExpr* copy = b->getValue()->duplicate();
            copy->setIndex(counter);
            pending.push_back(copy);
        }
        counter++;
    }
    // The list grows while it is walked: a tree queues the sub-trees that
    // it refers to.
    os << std::endl << "evaltable:";
    for (DataExpr* e : pending) {
        os << " index: " << e->getIndex() << ": ";
        e->DEBUG_put(os, m, &pending, &counter, 1);
        os << ";";
    }
}

} // namespace

void Module::DOC_put(std::ostream& os, int)
{
    if (wood == nullptr)
        return;
    std::vector<regclass*> regs = formats::registers(this);
    std::vector<memorizedSignal*> pres = formats::memorised(this);

    // Registers are named by the under wire of their actual variable.
    if (!regs.empty()) {
        std::vector<std::string> state;
        for (regclass* r : regs)
            state.push_back(r->actual_var()->getUnderName(this));
        os << "state ";
        putJoined(os, state, ", ");
        os << ";" << std::endl;
    }

    putInterface(this, os, "inputs ", inputs, {"_s_SET" + name, "_s_RESET" + name});
    putInterface(this, os, "outputs ", outputs, {"_s_RTL" + name});
    putInterface(this, os, "locals ", locals, {});

    // Written with no memorised signal as well.
    std::list<Signal*> preSignals;
    for (memorizedSignal* pair : pres)
        preSignals.push_back(pair->getPre());
    std::vector<std::string> preWires;
    addWires(this, preWires, preSignals);
    os << "pres ";
    putJoined(os, preWires, ", ");
    os << ";" << std::endl;

    if (!regs.empty()) {
        std::vector<std::string> initial;
        for (regclass* r : regs)
            initial.push_back((r->is_initialy_true() ? "" : "not ") + r->actual_var()->getUnderName(this));
        os << "initial ";
        putJoined(os, initial, " and ");
        os << ";" << std::endl;
        os << "transition" << std::endl;
        for (regclass* r : regs)
            os << r->actual_var()->getUnderName(this) << "' = " << r->next_var()->getUnderName(this) << ";"
               << std::endl;
    }

    if (!pres.empty()) {
        os << "memorisations" << std::endl;
        for (memorizedSignal* pair : pres) {
            std::string pre = pair->getPre()->getOverName(this);
            std::string actual = pair->getActual()->getOverName(this);
            os << "  " << pre << "= " << "false ->pre(" << actual << ");";
            if (pair->getPre()->isValued(this))
                os << "  " << pre << "_val= " << pair->getInitialValue() << "->pre(" << actual << "_val);";
        }
    }

    os << "definitions" << std::endl;
    wood->Put_doc(os, "node");

    if (data_table != nullptr)
        putBindingTable(this, os);

    formats::putDataTables(this, os);
}
