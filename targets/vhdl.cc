// VHDL target: one entity and its architecture, clocked on both edges.
// The rising edge samples the inputs into their slots of the node array
// and moves the state; concurrent assignments compute every BDD node into
// the array between the edges; the falling edge publishes the outputs.
// The Altera form only swaps "bit" for "std_logic".

#include "model/module.h"

#include "data/data.h"
#include "model/module_bindings.h"
#include "support/text_out.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace {

// One equation in the concurrent part. A variable whose value the process
// publishes (an output, or a local read through a memorised value) only
// gets a comment once its nodes are written; any other variable takes its
// value into its own slot.
class VhdlForm : public EquationForm {
public:
    VhdlForm(const std::string& array, const name_set& published, Bddexpression* e)
        : array(array), published(published), varSlot(bdd_node_global_id(e->my_bdd_var())),
          valueSlot(bdd_node_global_id(e->my_bdd_exp()))
    {
    }
    void copy(std::ostream& out, const std::string& var, const std::string&) const override
    {
        if (published.count(var) != 0)
            out << "      -- final output evaluation of " << var << " in process";
        else
            out << "      " << array << "(" << varSlot << ") <= " << array << "(" << valueSlot << ");";
    }
    void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const override
    {
        manager->Print_node_for_eval_VHDL(array, out, root);
    }
    void root(std::ostream& out, const std::string& var, long root, bool negated) const override
    {
        if (published.count(var) != 0)
            out << "      -- final output evaluation of " << var << " in process";
        else
            text_out(out) << "      " << array << "(" << varSlot << ") <= " << (negated ? "not " : "") << array << "("
                          << root << ");";
    }
private:
    const std::string& array;
    const name_set& published;
    long varSlot, valueSlot;
};

} // namespace

void Module::VHDL_put(std::ostream& out, std::istream& libs, int altera)
{
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;
    bddpp_manager* manager = wood->my_bdd_manager();
    const std::string bit = altera != 0 ? "std_logic" : "bit";
    const std::string array = name + "_node";
    // The slot of a variable is the global id of its own node.
    auto slot = [&](long index) { return bdd_node_global_id(wood->Bdd_var_by_index(index)); };
    auto var = [&](long index) { return wood->Name_var_by_index(index); };
    auto present = [&](Signal* s) { return s->getOverBddId(this, wood) != -1; };
    auto overName = [&](Signal* s) { return var(s->getOverBddId(this, wood)); };
    // An input's slot is one past its under variable.
    auto inputSlot = [&](Signal* s) { return s->getUnderBddId(this, wood) + 1; };

    std::vector<Signal*> ins, outs, locs;
    if (inputs != nullptr)
        std::copy_if(inputs->begin(), inputs->end(), std::back_inserter(ins), present);
    if (outputs != nullptr)
        std::copy_if(outputs->begin(), outputs->end(), std::back_inserter(outs), present);
    if (locals != nullptr)
        std::copy_if(locals->begin(), locals->end(), std::back_inserter(locs), present);
    std::vector<regclass*> regs = formats::registers(this);
    std::vector<memorizedSignal*> pres = formats::memorised(this);
    Bddexpression** table = wood->Exp_table();
    const long nbVars = wood->Nb_bdd_vars();

    // Names whose value the process writes: the output ports, and the
    // locals read by a memorised value once the rising edge has met them.
    name_set published;

    out << "-- VHDL generation by TARN version " << "3.4.3" << "-4" << " from " << name
        << " Zinc Kernel compiled code\n\n";

    if (libs.good()) {
        std::string line;
        while (std::getline(libs, line))
            out << line << "\n";
    } else {
        out << "-- no vhdl_libs.inc file found ...\n\n";
    }

    // Entity.
    out << "entity " << name << " is\n"
        << "  port(\n";
    if (!finalised)
        out << "       s_SET" << name << " : in " << bit << ";\n"
            << "       s_RESET" << name << " : in " << bit << ";\n";
    for (Signal* s : ins) {
        out << "       " << s->getOriginalName() << " : in " << bit << ";\n";
        if (!finalised && s->getUnderBddId(this, wood) != -1)
            out << "       " << var(s->getUnderBddId(this, wood)) << " : in " << bit << ";\n";
        if (s->isValued(this))
            out << "       " << s->getOriginalName() << "_val : in " << s->getValueType(this) << ";\n";
    }
    out << "       reset : in " << bit << ";\n"
        << "       clk : in " << bit << ";\n";
    bool firstPort = true;
    auto port = [&](const std::string& text) {
        out << (firstPort ? "" : ";\n") << "       " << text;
        firstPort = false;
    };
    for (Signal* s : outs) {
        port(s->getOriginalName() + " : out " + bit);
        if (s->isValued(this))
            port(s->getOriginalName() + "_val : out " + s->getValueType(this));
        published.insert(s->getOriginalName());
    }
    out << "\n"
        << "     );\n"
        << "end " << name << ";\n\n";

    out << "architecture " << name << "_a of " << name << " is\n\n";
    out << "TYPE array_" << array << " IS ARRAY (" << manager->Bdd_total_size() << " downto 0) OF " << bit
        << " ;\n";
    if (Compilation::GDataConstantTable != nullptr) {
        Compilation::GDataConstantTable->VHDL_put(out, this);
        out << "\n";
    }

    // Signals.
    for (Signal* s : ins)
        if (s->isValued(this))
            out << "signal " << overName(s) << "_locval : " << s->getValueType(this) << ";\n";
    for (Signal* s : locs) {
        out << "signal " << overName(s) << " : " << bit << ";\n";
        if (s->isValued(this))
            out << "signal " << overName(s) << "_locval : " << s->getValueType(this) << ";\n";
    }
    for (Signal* s : outs)
        if (s->isValued(this))
            out << "signal " << overName(s) << "_locval : " << s->getValueType(this) << ";\n";
    for (memorizedSignal* pair : pres) {
        Signal* pre = pair->getPre();
        out << "signal " << pre->getOriginalName() << " : " << bit << ";\n";
        if (pre->isValued(this))
            out << "signal " << pre->getOriginalName() << "_locval : " << pre->getValueType(this) << ";\n";
    }
    out << "signal " << array << "_starter : " << bit << ";\n"
        << "signal " << array << " : array_" << array << ";\n\n";

    // Every variable with an equation whose name the process publishes.
    auto publishedEquations = [&](auto&& each) {
        for (long i = 0; i < nbVars; ++i)
            if (table[i] != nullptr && published.count(var(i)) != 0)
                each(i, table[i]);
    };

    out << "begin\n"
        << "-- state and output computation\n"
        << "process (reset,clk)\n"
        << "begin\n";

    // Reset.
    out << "  if (reset = '0') then\n";
    for (regclass* r : regs)
        out << "      " << r->actual_var()->getOverName(this) << " <= '" << (r->is_initialy_true() ? 1 : 0)
            << "';\n";
    for (memorizedSignal* pair : pres) {
        Signal* pre = pair->getPre();
        out << "      " << pre->getOriginalName() << " <= '0';\n";
        if (pre->isValued(this))
            out << "      " << pre->getOriginalName() << "_locval <= " << pair->getInitialValue() << ";\n";
    }
    for (Signal* s : ins) {
        out << "      " << array << "(" << inputSlot(s) << ") <= '0';\n";
        if (s->isValued(this))
            out << "      " << overName(s) << "_locval <= zero_" << s->getValueType(this) << ";\n";
    }
    publishedEquations([&](long i, Bddexpression*) { out << "      " << var(i) << " <= '0';\n"; });
    for (Signal* s : outs)
        if (s->isValued(this))
            out << "      " << s->getOriginalName() << "_val <= " << zero_vhdl(s->getValueType(this)) << ";\n";
    out << "      " << array << "_starter <= '1';\n";

    // Rising edge: the inputs are loaded on every edge, the state moves on
    // all but the first one after reset.
    auto loadInputs = [&]() {
        for (Signal* s : ins) {
            out << "        " << array << "(" << inputSlot(s) << ") <= " << s->getOriginalName() << ";\n";
            if (s->isValued(this))
                out << "        " << overName(s) << "_locval <= " << s->getOriginalName() << "_val;\n";
        }
    };
    out << "  elsif ( clk'event and clk='1') then\n"
        << "     if(" << array << "_starter = '1') then\n";
    loadInputs();
    out << "        " << array << "_starter <= '0';\n"
        << "     else\n";
    for (regclass* r : regs)
        out << "        " << r->actual_var()->getOverName(this) << " <= " << r->next_var()->getOverName(this) << ";\n";
    for (memorizedSignal* pair : pres) {
        Signal* pre = pair->getPre();
        Signal* actual = pair->getActual();
        std::string source;
        Bddexpression* e = nullptr;
        if (actual->isOutput() && !actual->isLocal()) {
            long over = actual->getOverBddId(this, wood);
            if (over >= 0 && over < nbVars)
                e = table[over];
        }
        if (e != nullptr && Bddexpressionwood::bdd_initialised(e->my_bdd_exp()))
            source = e->my_bdd_exp().vhdl_node_name(array);
        else
            source = formats::memorisedSource(this, pair, "");
        out << "        " << pre->getOriginalName() << " <= " << source << ";\n";
        if (pre->isValued(this)) {
            std::string source2 = actual->getOriginalName();
            if (actual->isLocal()) {
                source2 = var(actual->getOverBddId(this, wood));
                published.insert(source2);
            }
            out << "        " << pre->getOriginalName() << "_locval <= " << source2 << "_locval;\n";
        }
    }
    loadInputs();
    out << "     end if;\n";

    // Falling edge.
    out << "  elsif ( clk'event and clk='0') then\n"
        << "     if(" << array << "_starter = '0') then\n";
    publishedEquations([&](long i, Bddexpression* e) {
        out << "         " << var(i) << " <= " << e->my_bdd_exp().vhdl_node_name(array) << ";\n";
    });
    for (Signal* s : outs)
        if (s->isValued(this))
            out << "         " << s->getOriginalName() << "_val <= " << s->getOriginalName() << "_locval;\n";
    out << "     end if;\n"
        << "  end if;\n"
        << "end process;\n\n";

    // The concurrent part. Its text does not depend on the order of the
    // equations: they go by variable index, marks cleared once.
    out << "-- actualisation\n";
    manager->Bdd_global_clear_marks();
    for (long i = 0; i < nbVars; ++i) {
        Bddexpression* e = table[i];
        if (e == nullptr)
            continue;
        if (Bddexpressionwood::bdd_initialised(e->my_bdd_var()) &&
            Bddexpressionwood::bdd_initialised(e->my_bdd_exp()))
            e->put_equation(out, VhdlForm(array, published, e));
        out << "\n";
    }
    for (regclass* r : regs) {
        long next = r->next_var()->getInitialOverBddId(this, wood);
        long actual = r->actual_var()->getInitialOverBddId(this, wood);
        out << "      " << r->next_var()->getOverName(this) << " <= " << array << "(" << slot(next) << ");\n"
            << "      " << array << "(" << slot(actual) << ") <= " << r->actual_var()->getOverName(this) << ";\n";
    }

    // Values: abstract equations in earliest order, then one conditional
    // per clock over the bindings it receives.
    std::vector<Signal*> clocks;
    for (Bddexpression* e : wood->earliest_equations()) {
        long index = e->own_index();
        if (e->getAbstraction() != 0) {
            DataBinding* binding = abstractEquationBinding(this, index, true);
            out << "      " << array << "(" << slot(index) << ") <= ";
            binding->getValue()->VHDL_put(out, this);
            out << ";\n";
            continue;
        }
        DataBinding* binding = formats::clockedBinding(this, index);
        if (binding != nullptr && binding->getClock() != nullptr &&
            std::find(clocks.begin(), clocks.end(), binding->getClock()) == clocks.end())
            clocks.push_back(binding->getClock());
    }
    // Clocks in declaration order.
    std::sort(clocks.begin(), clocks.end(), [&](Signal* a, Signal* b) {
        return a->getInitialOverBddId(this, wood) < b->getInitialOverBddId(this, wood);
    });
    for (Signal* clock : clocks) {
        out << "      " << var(clock->getInitialOverBddId(this, wood)) << "_locval <=\n";
        if (std::list<DataBinding*>* bindings = getDataBindingByClock(clock))
            for (DataBinding* b : *bindings) {
                out << "         ";
                b->getValue()->VHDL_put(out, this);
                out << " when (" << array << "(" << slot(b->getSignal()->getInitialOverBddId(this, wood)) << ")"
                    << " = '1') else\n";
            }
        out << "           " << zero_vhdl(clock->getValueType(this)) << ";\n";
    }

    out << "end " << name << "_a;\n\n";
}
