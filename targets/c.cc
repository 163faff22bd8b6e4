// C target: a header and a code file for one module, not reentrant. The
// state lies in file-scope variables; one call of <m>_automaton is one
// reaction, inputs by value, outputs through pointers. The frame pieces
// that the SystemC unit shares are in namespace cframe (targets/c_frame.h).

#include "model/module.h"

#include "data/data.h"
#include "model/module_bindings.h"
#include "support/text_out.h"
#include "targets/c_frame.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <iostream>
#include <ostream>
#include <sstream>

namespace cframe {

namespace {

// The parameter list goes to both files; they differ in the blanks behind a
// later input's comma.
struct ParameterText {
    std::ostringstream code, header;
    bool first = true;

    void presence(const std::string& type, const std::string& name, const char* codeSep, const char* headerSep)
    {
        if (first) {
            code << type << " " << name;
            header << type << " " << name;
            first = false;
            return;
        }
        code << codeSep << name;
        header << headerSep << name;
    }
    void value(const std::string& text)
    {
        code << text;
        header << text;
    }
};

long outputOver(Module* m, Signal* s, Dialect dialect)
{
    return dialect == Dialect::c ? s->getInitialOverBddId(m, m->getBddWood())
                                     : s->getOverBddId(m, m->getBddWood());
}

long outputUnder(Module* m, Signal* s, Dialect dialect)
{
    return dialect == Dialect::c ? s->getInitialUnderBddId(m, m->getBddWood())
                                     : s->getUnderBddId(m, m->getBddWood());
}

// A port without variable leaves no trace.
bool absent(long over, Dialect dialect)
{
    return dialect == Dialect::c ? over == -1 : formats::absentOver(over);
}

} // namespace

void put_methods(std::ostream& h)
{
    if (Compilation::GDataMethodTable != nullptr)
        Compilation::GDataMethodTable->C_put(h);
}

void put_constants(Module* m, std::ostream& c, std::ostream& h, bool trace)
{
    if (Compilation::GDataConstantTable == nullptr)
        return;
    std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList();
    if (constants == nullptr)
        return;
    for (ConstantDecl* k : *constants) {
        if (k == nullptr)
            continue;
        if (trace)
            std::cerr << k->getName() << std::endl;
        std::ostream& os = k->getValueTable() == nullptr ? h : c;
        k->C_put(os, m);
        os << "\n";
    }
}

void put_state(Module* m, std::ostream& c, const std::vector<regclass*>& regs)
{
    if (regs.empty())
        return;
    c << "/* global state variables */\n"
      << "int ";
    bool first = true;
    for (regclass* r : regs) {
        c << (first ? "" : ",\n    ") << r->actual_var()->getOverName(m);
        first = false;
    }
    c << ";\n\n";
}

void put_register_resets(Module* m, std::ostream& c, const std::vector<regclass*>& regs)
{
    for (regclass* r : regs)
        c << "  " << r->actual_var()->getOverName(m) << "= " << (r->is_initialy_true() ? 1 : 0) << ";\n";
}

void put_register_refresh(Module* m, std::ostream& c, const std::vector<regclass*>& regs)
{
    for (regclass* r : regs)
        c << "  " << r->actual_var()->getOverName(m) << "= " << r->next_var()->getOverName(m) << ";\n";
}

Parameters parameters(Module* m, Dialect dialect)
{
    Bddexpressionwood* wood = m->getBddWood();
    bool finalised = m->getFinalised() != 0;
    ParameterText text;
    Parameters result;
    if (m->getInputSignalList() != nullptr)
        for (Signal* s : *m->getInputSignalList()) {
            long over = s->getOverBddId(m, wood);
            if (absent(over, dialect) || m->getBinding(s->getOriginalName()) != nullptr)
                continue;
            std::string var = wood->Name_var_by_index(over);
            text.presence("int", var, ", int ", ", int  ");
            if (s->isValued(m))
                text.value(", " + s->getValueType(m) + " " + var + "_val");
            if (!finalised) {
                long under = s->getUnderBddId(m, wood);
                if (under != -1)
                    text.presence("int", wood->Name_var_by_index(under), ", int ", ", int  ");
            }
        }
    if (m->getOutputSignalList() != nullptr)
        for (Signal* s : *m->getOutputSignalList()) {
            long over = outputOver(m, s, dialect);
            if (absent(over, dialect) || m->getBinding(s->getOriginalName()) != nullptr)
                continue;
            std::string var = wood->Name_var_by_index(over);
            text.presence("int*", var, ", int*", ", int*");
            if (s->isValued(m))
                text.value(", " + s->getValueType(m) + "* " + var + "_val");
            result.outputNames.insert(var);
            if (!finalised) {
                long under = outputUnder(m, s, dialect);
                if (under != -1) {
                    std::string uvar = wood->Name_var_by_index(under);
                    text.presence("int*", uvar, ", int*", ", int*");
                    result.outputNames.insert(uvar);
                }
            }
        }
    result.code = text.code.str();
    result.header = text.header.str();
    return result;
}

IndexSet local_variables(Module* m, const std::vector<regclass*>& regs, const std::vector<memorizedSignal*>& pres,
                         Dialect dialect)
{
    Bddexpressionwood* wood = m->getBddWood();
    IndexSet used = wood->Set_of_index_used_variables();
    if (m->getInputSignalList() != nullptr)
        for (Signal* s : *m->getInputSignalList())
            if (s->getOverBddId(m, wood) != -1)
                used.erase(s->getInitialOverBddId(m, wood));
    for (memorizedSignal* pair : pres)
        if (pair->getPre()->getOverBddId(m, wood) != -1)
            used.erase(pair->getPre()->getInitialOverBddId(m, wood));
    for (regclass* r : regs)
        used.erase(r->actual_var()->getOverBddId(m, wood));
    if (m->getOutputSignalList() != nullptr)
        for (Signal* s : *m->getOutputSignalList()) {
            used.erase(outputOver(m, s, dialect));
            if (m->getFinalised() == 0)
                used.erase(outputUnder(m, s, dialect));
        }
    return used;
}

void put_locals(Module* m, std::ostream& c, const IndexSet& variables)
{
    text_out out(c);
    for (long index : variables)
        out << "  int " << m->getBddWood()->Name_var_by_index(index) << ";\n";
}

std::vector<Signal*> unbound_valued_locals(Module* m)
{
    std::vector<Signal*> result;
    if (m->getLocalSignalList() != nullptr)
        for (Signal* s : *m->getLocalSignalList())
            if (s->isValued(m) && m->getBinding(s->getName(m)) == nullptr)
                result.push_back(s);
    return result;
}

std::string put_node_array(Module* m, std::ostream& c)
{
    std::string nodeArray = m->getName() + "_node";
    c << "  int " << nodeArray << "[" << m->getBddWood()->my_bdd_manager()->Bdd_total_size() << "];\n";
    return nodeArray;
}

} // namespace cframe

void Module::C_put(std::ostream& c, std::ostream& h)
{
    h << "#ifndef " << name << "_H\n"
      << "#define " << name << "_H\n";
    if (Compilation::GDataTypeTable != nullptr) {
        if (std::map<std::string, int>* types = Compilation::GDataTypeTable->getTypeTable())
            for (const auto& type : *types)
                h << "#include \"C_data_user_" << type.first << ".h\"\n";
        Compilation::GDataTypeTable->C_put(h);
    }
    cframe::put_methods(h);

    c << "#include \"" << name << ".h\"\n"
      << "#define false 0\n"
      << "#define true (!false)\n"
      << "\n";
    cframe::put_constants(this, c, h, false);

    if (wood == nullptr || wood->my_bdd_manager() == nullptr) {
        h << "#endif\n";
        return;
    }

    std::vector<regclass*> regs = formats::registers(this);
    std::vector<memorizedSignal*> pres = formats::memorised(this);
    bool hasRegisters = !regs.empty();
    bool hasPre = !pres.empty();

    cframe::put_state(this, c, regs);
    if (hasPre) {
        c << "/* global pre variables */\n";
        for (memorizedSignal* pair : pres) {
            Signal* pre = pair->getPre();
            c << "int " << name << "_" << pre->getOriginalName() << ";\n";
            if (pre->isValued(this))
                c << pre->getValueType(this) << " " << name << "_" << pre->getOriginalName() << "_val;\n";
        }
        c << "\n";
    }

    // Reset.
    c << "void " << name << "_reset_automaton()" << "{\n";
    if (hasRegisters) {
        c << "  /* global state variables initialisation */\n";
        cframe::put_register_resets(this, c, regs);
    }
    if (hasPre) {
        c << "  /* pre variables initialisation */\n";
        for (memorizedSignal* pair : pres) {
            Signal* pre = pair->getPre();
            c << "  " << name << "_" << pre->getOriginalName() << "= 0;\n";
            if (pre->isValued(this) && pre->getInitialOverBddId(this, wood) != -1) {
                std::string type = pre->getValueType(this);
                c << "  " << name << "_" << pre->getOriginalName() << "_val = copy_" << type << "("
                  << pair->getInitialValue() << ");\n";
            }
        }
        c << "\n";
    }
    c << "}\n\n";

    cframe::Parameters params = cframe::parameters(this, cframe::Dialect::c);
    h << "extern void " << name << "_reset_automaton();\n"
      << "extern void " << name << "_automaton(" << params.header << ");\n"
      << "#endif\n";

    c << "void " << name << "_automaton(" << params.code << ")\n"
      << "{\n";

    cframe::put_locals(this, c, cframe::local_variables(this, regs, pres, cframe::Dialect::c));
    for (Signal* s : cframe::unbound_valued_locals(this)) {
        std::string type = s->getValueType(this);
        c << "  " << type << " " << wood->Name_var_by_index(s->getInitialOverBddId(this, wood)) << "_val = copy_"
          << type << "(zero_" << type << ");\n";
    }

    std::string nodeArray = cframe::put_node_array(this, c);

    if (outputs != nullptr)
        for (Signal* s : *outputs)
            if (s->isValued(this)) {
                std::string type = s->getValueType(this);
                c << "  *" << wood->Name_var_by_index(s->getInitialOverBddId(this, wood)) << "_val = copy_" << type
                  << "(zero_" << type << ");\n";
            }

    if (hasPre) {
        for (memorizedSignal* pair : pres) {
            Signal* pre = pair->getPre();
            const std::string& p = pre->getOriginalName();
            c << "  int " << p << "= " << name << "_" << p << ";\n";
            if (pre->isValued(this)) {
                std::string type = pre->getValueType(this);
                c << "  " << type << " " << p << "_val= copy_" << type << "(" << name << "_" << p << "_val);\n";
            }
            c << "\n";
        }
    }

    // An absent valued input reads as its type's zero.
    if (inputs != nullptr)
        for (Signal* s : *inputs) {
            long over = s->getOverBddId(this, wood);
            if (over == -1 || getBinding(s->getOriginalName()) != nullptr || !s->isValued(this))
                continue;
            std::string type = s->getValueType(this);
            auto zeroBlock = [&](const char* open, long id) {
                std::string var = wood->Name_var_by_index(id);
                c << open << var << " == 0)\n"
                  << "     {\n"
                  << "          " << var << "_val= copy_" << type << "(zero_" << type << ");\n"
                  << "     }\n";
            };
            zeroBlock("  if (", over);
            if (!finalised) {
                long under = s->getUnderBddId(this, wood);
                if (under != -1)
                    zeroBlock("  if(", under);
            }
        }

    c << "  " << " /* outputs computing */\n";
    C_put_equation(c, nodeArray, params.outputNames);

    // An output clock that did not fire carries its type's zero.
    for (const auto& entry : outputClockBindings(this)) {
        if (entry.second.empty())
            continue;
        Signal* clock = entry.second.front()->getClock();
        std::string var = wood->Name_var_by_index(clock->getInitialOverBddId(this, wood));
        std::string type = clock->getValueType(this);
        c << "   if (! *" << var << ")\n"
          << "   {\n"
          << "      *" << var << "_val = copy_" << type << "(zero_" << type << ");\n"
          << "   }\n";
    }

    if (hasRegisters) {
        c << "\n  /* refresh registers */\n";
        cframe::put_register_refresh(this, c, regs);
        c << "\n";
    }
    if (hasPre) {
        c << "  /* refresh global pre variables */\n";
        for (memorizedSignal* pair : pres) {
            Signal* pre = pair->getPre();
            std::string source = formats::memorisedSource(this, pair, "*");
            c << "  " << name << "_" << pre->getOriginalName() << "= " << source << ";\n";
            if (pre->isValued(this)) {
                std::string type = pre->getValueType(this);
                c << "  " << name << "_" << pre->getOriginalName() << "_val= copy_" << type << "(" << source
                  << "_val);\n";
            }
        }
        c << "\n";
    }
    c << "}\n\n";
}

void Module::C_put_equation(std::ostream& os, const std::string& nodeArray, const name_set& outputs)
{
    if (wood == nullptr)
        return;
    // Without data no equation has a clock to feed.
    const bool data = getDataTable() != nullptr && !getDataTable()->empty();
    for (Bddexpression* e : wood->earliest_equations()) {
        if (e->getAbstraction() != 0) {
            DataBinding* binding = abstractEquationBinding(this, e->own_index(), true);
            os << "  " << e->my_bddname() << " = ";
            binding->getValue()->C_put(os, this);
            os << ";\n";
            continue;
        }
        e->put_c(os, nodeArray, outputs);
        os.put('\n');
        // A clock receives the value after each equation that its bound
        // signal keeps, guarded by that equation's variable.
        DataBinding* binding = data ? formats::clockedBinding(this, e->own_index()) : nullptr;
        if (binding == nullptr || binding->getClock() == nullptr)
            continue;
        Signal* clock = binding->getClock();
        std::string type = binding->getSignal()->getValueType(this);
        os << "   if (" << e->my_bddname() << ") \n"
           << "   {\n"
           << "         " << (clock->isOutput() ? "*" : "")
           << wood->Name_var_by_index(clock->getInitialOverBddId(this, wood)) << "_val = copy_" << type << "(";
        binding->getValue()->C_put(os, this);
        os << ");\n"
           << "   }\n";
    }
}
