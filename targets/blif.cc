// BLIF netlist of a module: interface, latches for registers and memorised
// signals, one multiplexer cover per BDD node. Only presence is expressed:
// a valued signal is reported and its presence net kept, the file is
// still written to its end.

#include "model/module.h"

#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>

static void refuseValued(Signal* s)
{
    formats::warn("ERROR: valued signal " + s->getOriginalName() + " is not supported in blif generation!");
}

void Module::BLIF_put(std::ostream& os, int)
{
    if (wood == nullptr)
        formats::fail("ERROR in Module::BLIF_put(): no equationtable defined!");
    if (wood->my_bdd_manager() == nullptr)
        formats::fail("ERROR in Module::BLIF_put(): no bdd manager defined!");

    os << ".model " << name << "\n";

    // Inputs. A finalised module without inputs keeps the line, empty.
    if (!finalised)
        os << ".inputs" << " _s_SET" << name << " _s_RESET" << name;
    if (inputs != nullptr && !inputs->empty()) {
        if (finalised)
            os << ".inputs";
        auto putWires = [&](Signal* s) {
            long over = s->getOverBddId(this, wood);
            if (over != -1)
                os << " " << wood->Name_var_by_index(over);
            if (!finalised) {
                long under = s->getUnderBddId(this, wood);
                if (under != -1)
                    os << " " << wood->Name_var_by_index(under);
            }
        };
        for (Signal* s : *inputs) {
            putWires(s);
            if (s->isValued(this))
                refuseValued(s);
        }
        if (data_signals != nullptr)
            for (Signal* s : *data_signals)
                putWires(s);
    }
    os << "\n";

    // Outputs, by the reference of their internal name; none, nothing.
    if (!finalised)
        os << ".outputs" << " _s_RTL" << name;
    else if (outputs != nullptr && !outputs->empty())
        os << ".outputs";
    if (outputs != nullptr) {
        for (Signal* s : *outputs) {
            SignalRef* ref = signal_manager->getSignalRefByName(s->getInternalName());
            if (ref == nullptr)
                continue;
            os << " " << wood->Name_var_by_index(ref->getOverBddId(wood));
            if (!finalised)
                os << " " << wood->Name_var_by_index(ref->getUnderBddId(wood));
            if (ref->isValued())
                refuseValued(s);
        }
    }
    os << "\n";

    std::vector<regclass*> regs = formats::registers(this);
    if (!regs.empty()) {
        for (regclass* r : regs)
            os << ".latch " << r->next_var()->getOverName(this) << " " << r->actual_var()->getOverName(this) << " "
               << r->is_initialy_true() << " \n";
        os << "\n";
    }

    // A port cannot drive a latch directly: a buffer "<name>_latch" stands
    // between them. Memorised latches always start at 0.
    for (memorizedSignal* pair : formats::memorised(this)) {
        Signal* actual = pair->getActual();
        bool port = !actual->isLocal() && (actual->isInput() || actual->isOutput());
        os << ".latch " << formats::memorisedSource(this, pair, "") << (port ? "_latch" : "") << " "
           << pair->getPre()->getOriginalName() << " 0\n";
        if (port)
            os << ".names " << actual->getOriginalName() << " " << actual->getOriginalName() << "_latch\n"
               << " 1 1\n";
        if (pair->getPre()->isValued(this))
            refuseValued(pair->getPre());
    }

    wood->Put_blif(os, name + "_node");

    os << "\n.end\n\n";
}
