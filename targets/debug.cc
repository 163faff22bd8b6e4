// The debug dump: the whole state of a module, for the developer. No
// command-line option writes it; tests and the documentation output use it.
#include "model/module.h"

#include "data/data.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <iostream>

// Stands for a wire that the signal does not have in the wood.
static const char* const NO_WIRE = "?";

void Module::DEBUG_OneSignal_put(std::ostream& os, Signal* s)
{
    if (s == nullptr) {
        os << " " << NO_WIRE << std::endl;
        return;
    }
    if (wood == nullptr) {
        os << " " << s->getInternalName() << ": " << " ???" << std::endl;
        return;
    }
    // As Signal::getName, without ending the process for a signal that has
    // no entry for the wood (it then stands at occurrence 0).
    int occurrence = s->hasOccurrenceIn(wood) ? s->getCurrentOccurrence(wood) : 0;
    os << " " << s->getInternalName();
    if (occurrence != 0)
        os << "_" << occurrence;
    os << ": ";
    SignalRef* ref = occurrence >= 0 ? signal_manager->getSignalRefByOccurrence(s, occurrence) : nullptr;
    if (ref == nullptr || !ref->hasWood(wood)) {
        os << NO_WIRE << "," << NO_WIRE << std::endl;
        return;
    }
    // A wire numbered -1 has no variable: the mark stands for it alone.
    auto wire = [&](long id) {
        if (id == -1)
            os << NO_WIRE;
        else
            os << wood->Name_var_by_index(id) << "(" << id << ")";
    };
    wire(ref->getOverBddId(wood));
    os << ",";
    wire(ref->getUnderBddId(wood));
    os << std::endl;
}

static void putSignalList(Module* m, std::ostream& os, const char* title, std::list<Signal*>* signals)
{
    if (signals == nullptr || signals->empty())
        return;
    os << title << std::endl;
    for (Signal* s : *signals)
        m->DEBUG_OneSignal_put(os, s);
}

static void putConnexion(std::ostream& os, const char* title, Signal* s)
{
    os << title;
    if (s != nullptr)
        s->print(os);
    os << std::endl;
}

void Module::DEBUG_put(std::ostream& os)
{
    putSignalList(this, os, "inputs:", inputs);
    putSignalList(this, os, "outputs:", outputs);
    putSignalList(this, os, "data signals:", data_signals);
    putSignalList(this, os, "locals:", locals);
    if (registers != nullptr && !registers->empty()) {
        os << "registers:" << std::endl;
        for (regclass* r : *registers) {
            if (r != nullptr)
                os << *r;
            else
                os << NO_WIRE;
            os << std::endl;
        }
    }
    if (memorized != nullptr && !memorized->empty()) {
        os << "memorized signal" << std::endl;
        for (memorizedSignal* pair : *memorized) {
            if (pair != nullptr)
                os << *pair;
            else
                os << NO_WIRE;
            os << std::endl;
        }
    }
    putConnexion(os, "SET: ", set_signal);
    putConnexion(os, "RESET: ", reset_signal);
    putConnexion(os, "RTL: ", rtl_signal);

    if (wood == nullptr) {
        std::cerr << "end of debug put\n";
        return;
    }
    // Equations dated above the number of levels are not shown.
    long levels = getPertLevel();
    Bddexpression** table = wood->Exp_table();
    for (long date = 0; date <= levels; date++) {
        os << "Early date: " << date << std::endl;
        for (long i = 0; i < wood->Nb_bdd_vars(); i++) {
            Bddexpression* e = table[i];
            if (e == nullptr || e->getEarlyDate() != date)
                continue;
            os << i << ": " << *e << "  dates (" << e->getEarlyDate() << "," << e->getLateDate() << ")"
               << " aval ";
            put_set(os, e->set_of_var_dependances());
            os << std::endl;
        }
    }
    os << std::endl << std::endl;
    debugPrintBinding(os);

    formats::putDataTables(this, os);
    std::cerr << "end of debug put\n";
}
