// C target: a header and a code file for one module, not reentrant. The
// state lies in file-scope variables; one call of <m>_automaton is one
// reaction, inputs by value, outputs through pointers.

#include "model/module.h"

#include "data/data.h"
#include "model/module_bindings.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>
#include <sstream>

namespace {

// The parameter list of <m>_automaton goes to both files; they differ in
// the blanks behind a later input's comma.
struct Parameters {
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

} // namespace

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
    if (Compilation::GDataMethodTable != nullptr)
        Compilation::GDataMethodTable->C_put(h);

    c << "#include \"" << name << ".h\"\n"
      << "#define false 0\n"
      << "#define true (!false)\n"
      << "\n";
    // External constants are the user's: declared in the header only.
    if (Compilation::GDataConstantTable != nullptr)
        if (std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList())
            for (ConstantDecl* k : *constants) {
                if (k == nullptr)
                    continue;
                std::ostream& os = k->getValueTable() == nullptr ? h : c;
                k->C_put(os, this);
                os << "\n";
            }

    if (wood == nullptr || wood->my_bdd_manager() == nullptr) {
        h << "#endif\n";
        return;
    }

    std::vector<regclass*> regs = formats::registers(this);
    std::vector<memorizedSignal*> pres = formats::memorised(this);
    bool hasRegisters = !regs.empty();
    bool hasPre = !pres.empty();

    if (hasRegisters) {
        // One declaration, a name per line aligned under the first.
        c << "/* global state variables */\n"
          << "int ";
        bool first = true;
        for (regclass* r : regs) {
            c << (first ? "" : ",\n    ") << r->actual_var()->getOverName(this);
            first = false;
        }
        c << ";\n\n";
    }
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
        for (regclass* r : regs)
            c << "  " << r->actual_var()->getOverName(this) << "= " << (r->is_initialy_true() ? 1 : 0) << ";\n";
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

    // Parameters: inputs, then outputs; a bound port is computed inside.
    Parameters params;
    std::set<std::string> outputNames;
    if (inputs != nullptr)
        for (Signal* s : *inputs) {
            long over = s->getOverBddId(this, wood);
            if (over == -1 || getBinding(s->getOriginalName()) != nullptr)
                continue;
            std::string var = wood->Name_var_by_index(over);
            params.presence("int", var, ", int ", ", int  ");
            if (s->isValued(this))
                params.value(", " + s->getValueType(this) + " " + var + "_val");
            if (!finalised) {
                long under = s->getUnderBddId(this, wood);
                if (under != -1)
                    params.presence("int", wood->Name_var_by_index(under), ", int ", ", int  ");
            }
        }
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            long over = s->getInitialOverBddId(this, wood);
            if (over == -1 || getBinding(s->getOriginalName()) != nullptr)
                continue;
            std::string var = wood->Name_var_by_index(over);
            params.presence("int*", var, ", int*", ", int*");
            if (s->isValued(this))
                params.value(", " + s->getValueType(this) + "* " + var + "_val");
            outputNames.insert(var);
            if (!finalised) {
                long under = s->getInitialUnderBddId(this, wood);
                if (under != -1) {
                    std::string uvar = wood->Name_var_by_index(under);
                    params.presence("int*", uvar, ", int*", ", int*");
                    outputNames.insert(uvar);
                }
            }
        }

    h << "extern void " << name << "_reset_automaton();\n"
      << "extern void " << name << "_automaton(" << params.header.str() << ");\n"
      << "#endif\n";

    c << "void " << name << "_automaton(" << params.code.str() << ")\n"
      << "{\n";

    // Locals: every variable of the wood that no parameter, pre copy or
    // state variable already declares.
    IndexSet locals_used = wood->Set_of_index_used_variables();
    if (inputs != nullptr)
        for (Signal* s : *inputs)
            if (s->getOverBddId(this, wood) != -1)
                locals_used.erase(s->getInitialOverBddId(this, wood));
    for (memorizedSignal* pair : pres)
            if (pair->getPre()->getOverBddId(this, wood) != -1)
                locals_used.erase(pair->getPre()->getInitialOverBddId(this, wood));
    for (regclass* r : regs)
            locals_used.erase(r->actual_var()->getOverBddId(this, wood));
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            locals_used.erase(s->getInitialOverBddId(this, wood));
            if (!finalised)
                locals_used.erase(s->getInitialUnderBddId(this, wood));
        }
    for (long index : locals_used)
        c << "  int " << wood->Name_var_by_index(index) << ";\n";

    if (locals != nullptr)
        for (Signal* s : *locals)
            if (s->isValued(this) && getBinding(s->getName(this)) == nullptr) {
                std::string type = s->getValueType(this);
                c << "  " << type << " " << wood->Name_var_by_index(s->getInitialOverBddId(this, wood))
                  << "_val = copy_" << type << "(zero_" << type << ");\n";
            }

    std::string nodeArray = name + "_node";
    c << "  int " << nodeArray << "[" << wood->my_bdd_manager()->Bdd_total_size() << "];\n";

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
    C_put_equation(c, nodeArray, outputNames);

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
        for (regclass* r : regs)
            c << "  " << r->actual_var()->getOverName(this) << "= " << r->next_var()->getOverName(this) << ";\n";
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

void Module::C_put_equation(std::ostream& os, const std::string& nodeArray, const std::set<std::string>& outputs)
{
    if (wood == nullptr)
        return;
    for (Bddexpression* e : wood->earliest_equations()) {
        long index = e->own_index();
        std::string var = e->my_bddname();
        if (e->getAbstraction() != 0) {
            DataBinding* binding = abstractEquationBinding(this, index, true);
            os << "  " << var << " = ";
            binding->getValue()->C_put(os, this);
            os << ";\n";
            continue;
        }
        e->put_c(os, nodeArray, outputs);
        os << "\n";
        // A clock receives the value after each equation that its bound
        // signal keeps, guarded by that equation's variable.
        DataBinding* binding = formats::clockedBinding(this, index);
        if (binding == nullptr || binding->getClock() == nullptr)
            continue;
        Signal* clock = binding->getClock();
        std::string type = binding->getSignal()->getValueType(this);
        os << "   if (" << var << ") \n"
           << "   {\n"
           << "         " << (clock->isOutput() ? "*" : "")
           << wood->Name_var_by_index(clock->getInitialOverBddId(this, wood)) << "_val = copy_" << type << "(";
        binding->getValue()->C_put(os, this);
        os << ");\n"
           << "   }\n";
    }
}
