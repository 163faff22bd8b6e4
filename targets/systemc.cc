// SystemC target: the C unit's reset and reaction functions, to be wrapped
// in a SystemC model by the user. It keeps no memorised signal and handles
// values by binding after the equations, not beside them: a binding without
// clock assigns the bound signal's under variable, and every clock gets one
// test whose branches are its bindings, ending in the type's zero.

#include "model/module.h"

#include "data/data.h"
#include "targets/c_frame.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <algorithm>
#include <ostream>

namespace {

// The equations in earliest order, each through the C node printer; an
// abstract equation gets no case of its own (its empty text and a line end).
void put_equations(Module* m, std::ostream& c, const std::string& nodeArray, const name_set& outputs)
{
    for (Bddexpression* e : m->getBddWood()->earliest_equations()) {
        e->put_c(c, nodeArray, outputs);
        c << "\n";
    }
}

// The bindings of one clock, in the order the binding table gives them.
struct ClockBindings {
    Signal* clock;
    std::vector<DataBinding*> bindings;
};

} // namespace

void Module::SYSTEMC_put(std::ostream& c, std::ostream& h)
{
    c << "#include \"" << name << "_sc.h\"\n"
      << "#define false 0\n"
      << "#define true (!false)\n"
      << "\n";

    h << "#ifndef " << name << "_H\n"
      << "#define " << name << "_H\n";
    if (Compilation::GDataTypeTable != nullptr) {
        h << "/* Following types should be defined in file " << "\"" << name << "_typedecl.h\":\n";
        bool first = true;
        if (std::map<std::string, int>* types = Compilation::GDataTypeTable->getTypeTable())
            for (const auto& type : *types) {
                h << (first ? "" : ", ") << type.first;
                first = false;
            }
        h << ";\n"
          << "*/\n"
          << "#include \"" << name << "_typedecl.h\"\n";
        Compilation::GDataTypeTable->C_put(h);
    }
    cframe::put_methods(h);
    cframe::put_constants(this, c, h, true);

    if (wood == nullptr || wood->my_bdd_manager() == nullptr) {
        h << "#endif\n";
        return;
    }

    std::vector<regclass*> regs = formats::registers(this);
    cframe::put_state(this, c, regs);
    c << "void " << name << "_reset_automaton()" << "{\n";
    cframe::put_register_resets(this, c, regs);
    c << "}\n\n";

    cframe::Parameters params = cframe::parameters(this, cframe::Dialect::systemc);
    h << "extern void " << name << "_reset_automaton();\n"
      << "extern void " << name << "_automaton(" << params.header << ");\n";
    c << "void " << name << "_automaton(" << params.code << ")\n"
      << "{\n";

    // Pre signals are not interface: their variables are plain locals here.
    cframe::put_locals(this, c, cframe::local_variables(this, regs, {}, cframe::Dialect::systemc));
    for (Signal* s : cframe::unbound_valued_locals(this)) {
        std::string type = s->getValueType(this);
        c << "  " << type << "  " << wood->Name_var_by_index(s->getInitialOverBddId(this, wood)) << "_val"
          << " = zero_" << type << ";\n";
    }
    std::string nodeArray = cframe::put_node_array(this, c);

    if (data_table == nullptr) {
        put_equations(this, c, nodeArray, params.outputNames);
    } else {
        c << "//Data Handling\n"
          << "//-------------\n";
        std::vector<ClockBindings> clocks;
        for (const auto& entry : *data_table) {
            DataBinding* b = entry.second;
            if (b == nullptr || b->getSignal() == nullptr || b->getValue() == nullptr)
                continue;
            if (b->getClock() == nullptr) {
                long under = b->getSignal()->getUnderBddId(this, wood);
                if (under == -1)
                    continue;
                c << wood->Name_var_by_index(under) << " = ";
                b->getValue()->C_put(c, this);
                c << ";\n";
                continue;
            }
            if (b->getSignal()->getOverBddId(this, wood) == -1)
                continue;
            auto same = std::find_if(clocks.begin(), clocks.end(), [&](const ClockBindings& k) {
                return k.clock->getInternalName() == b->getClock()->getInternalName();
            });
            if (same == clocks.end())
                clocks.push_back({b->getClock(), {b}});
            else
                same->bindings.push_back(b);
        }

        c << "  " << "/* outputs computing */\n";
        put_equations(this, c, nodeArray, params.outputNames);
        for (const ClockBindings& k : clocks) {
            long over = k.clock->getOverBddId(this, wood);
            if (over == -1)
                continue;
            std::string mark = k.clock->isOutput() ? "*" : "";
            std::string clock = wood->Name_var_by_index(over);
            c << "if (" << mark << clock << ")  {\n";
            bool first = true;
            for (DataBinding* b : k.bindings) {
                if (!first)
                    c << "   else\n";
                first = false;
                c << "  if (" << wood->Name_var_by_index(b->getSignal()->getOverBddId(this, wood)) << ") {" << mark
                  << clock << "_val = ";
                b->getValue()->C_put(c, this);
                c << ";}\n";
            }
            c << "   else { " << mark << clock << "_val = " << "zero_" << k.clock->getValueType(this) << ";}\n"
              << "}\n";
        }
    }

    if (!regs.empty()) {
        c << "\n  " << "/* refresh registers */\n";
        cframe::put_register_refresh(this, c, regs);
    }
    c << "}\n";
    h << "#endif\n";
}
