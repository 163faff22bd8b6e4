// C# target: a bean of the Trellis platform. One class holds the state in
// its fields; <m>_automaton is one reaction, fed a serialised event list
// and answering with one through the SendEventList delegate. The text is a
// fixed template: its blanks and its few C forms (the pointer marks of the
// output clocks) are part of what users of the bean compare against.

#include "model/module.h"

#include "data/data.h"
#include "model/module_bindings.h"
#include "support/text_out.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>

namespace {

// The value of a valued input, read from the event's text by type.
std::string valueFromEvent(const std::string& type)
{
    static const std::map<std::string, std::string> known = {
        {"int", "Convert.ToUInt32(evts[i].evtValeur ) "},
        {"float", "Convert.ToSingle(evts[i].evtValeur ) "},
        {"byte", " Convert.ToSByte(evts[i].evtValeur ) "},
        {"bool", " Convert.ToBoolean(evts[i].evtValeur ) "},
        {"long", " Convert.ToInt64(evts[i].evtValeur ) "},
        {"short", " Convert.ToInt16(evts[i].evtValeur ) "},
        {"string", "evts[i].evtValeur"},
    };
    auto it = known.find(type);
    return it != known.end() ? it->second : type + ".To(evts[i].evtValeur)";
}

const char* truth(bool b) { return b ? "true;" : "false;"; }

} // namespace

void Module::CSharp_put(std::ostream& os)
{
    os << " using System; \n"
       << " using Trellis.Beans; \n"
       << " using System.Collections.Generic; \n"
       << " using System.Threading; \n"
       << "using Trellis.Util;\n"
       << "\n"
       << " namespace GenEntree\n"
       << " \n"
       << "{\n"
       << "    [Bean(Category=\"" << name << "\")]\n"
       << "     public class " << name << "\n"
       << "     \n"
       << "{\n"
       << "        private byte zero_byte = 0 ;\n"
       << "        private int zero_int = 0 ;\n"
       << "        private float zero_float = 0;\n"
       << "        private long zero_long = 0;\n"
       << "        private short zero_short = 0;\n"
       << "        private string zero_string =\"\";\n"
       << "        private bool zero_bool = false;\n"
       << "        // private constants:\n";
    if (Compilation::GDataConstantTable != nullptr)
        if (std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList())
            for (ConstantDecl* k : *constants)
                if (k != nullptr) {
                    os << "        ";
                    k->CSharp_put(os, this);
                    os << "\n";
                }

    // Without a wood the class is left open.
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;

    std::vector<regclass*> regs = formats::registers(this);
    if (!regs.empty()) {
        os << "        /* global state variables */\n";
        for (regclass* r : regs)
            os << "        bool  " << r->actual_var()->getOverName(this) << " = " << truth(r->is_initialy_true())
               << "\n";
    }
    os << "        private void " << name << "_reset_automaton(";
    if (!finalised)
        os << " bool _s_SET" << name << ", bool _s_RESET" << name;
    os << ")\n"
       << "        {\n";
    for (regclass* r : regs)
        os << "            " << r->actual_var()->getOverName(this) << "= " << truth(r->is_initialy_true()) << "\n";
    os << "        }\n";

    os << "        public void " << name << "_automaton(string s)\n"
       << "        {\n";

    // Locals: every variable of the wood but the registers' state, which
    // lives in fields. Interface and register wires start false; an under
    // wire never does.
    std::set<std::string> stateNames;
    for (regclass* r : regs)
        stateNames.insert(r->actual_var()->getOverName(this));
    std::unordered_map<std::string, Signal*> byName = signalsByName();
    {
        text_out out(os);
        for (long index : wood->Set_of_index_used_variables()) {
            std::string var = wood->Name_var_by_index(index);
            bool under = var.compare(0, 4, "v_v_") == 0;
            bool over = var.compare(0, 4, "v_s_") == 0;
            if (over && stateNames.count(var) != 0)
                continue;
            out << "            bool " << var;
            Signal* s = getSignalById(index, wood, byName);
            if (!under && s != nullptr && (s->isInput() || s->isOutput() || s->isRegister()))
                out << "  =  false";
            out << ";\n";
        }
    }

    // Values start at their type's zero.
    auto zeroValue = [&](Signal* s, const std::string& sep, long id) {
        if (id == -1)
            return;
        std::string type = s->getValueType(this);
        os << "            " << type << sep << wood->Name_var_by_index(id) << "_val" << (sep == " " ? " " : "")
           << " = zero_" << type << ";\n";
    };
    if (inputs != nullptr)
        for (Signal* s : *inputs) {
            long over = s->getOverBddId(this, wood);
            if (!s->isValue() && !formats::absentOver(over) && s->isValued(this))
                zeroValue(s, " ", over);
        }
    if (outputs != nullptr)
        for (Signal* s : *outputs) {
            long over = s->getOverBddId(this, wood);
            if (!formats::absentOver(over) && getBinding(s->getOriginalName()) == nullptr && s->isValued(this))
                zeroValue(s, " ", over);
        }
    if (locals != nullptr)
        for (Signal* s : *locals)
            if (s->isValued(this)) {
                zeroValue(s, "  ", s->getUnderBddId(this, wood));
                zeroValue(s, "  ", s->getOverBddId(this, wood));
            }

    std::string nodeArray = name + "_node";
    os << "            bool[]  " << nodeArray << "  =  new bool[" << wood->my_bdd_manager()->Bdd_total_size()
       << "];\n";

    os << "/*-----------------------partie evt/input_signals-----------------------------------------*/\n"
       << "            GrammaireA GA = new GrammaireA();\n"
       << "             List<MyEvent> evts =  new List<MyEvent>(255);\n"
       << "            evts= GA.deserialize(s);\n"
       << "            foreach (MyEvent evtL in evts)\n"
       << "                {\n"
       << "                    Logger.Info(\"alarmDeserialize: \" + evtL.nameEvt + \" \" + evtL.valPresenceEvt + \" \""
          " + evtL.evTypeValue + \" \" + evtL.evtValeur);\n"
       << "                }\n";
    // Each event sets or clears every input: after the loop an input is
    // present only if the last event of the list carries its name.
    if (inputs != nullptr && !inputs->empty()) {
        os << "            for(int i = 0; i<evts.Count;i++)\n"
           << "           {\n";
        for (Signal* s : *inputs) {
            long over = s->getOverBddId(this, wood);
            if (formats::absentOver(over) || getBinding(s->getOriginalName()) != nullptr)
                continue;
            std::string var = wood->Name_var_by_index(over);
            os << "                if(evts[i].nameEvt == \"" << var << "\")\n"
               << "                {\n"
               << "                     " << var << "= true;\n";
            if (s->isValued(this))
                os << "                     " << var << "_val = " << valueFromEvent(s->getValueType(this)) << ";\n";
            os << "                }\n"
               << "                else\n"
               << "                {\n"
               << "                   " << var << "= false;\n"
               << "                }\n";
        }
        os << "            }\n";
    }

    std::map<std::string, std::list<DataBinding*>> outputClocks = outputClockBindings(this);
    os << "  " << " /* outputs computing */\n";
    CSharp_put_equation(os, nodeArray, 12);

    // An output clock takes the value of its first bound signal present,
    // else its type's zero. These lines keep the C pointer forms.
    for (const auto& entry : outputClocks) {
        if (entry.second.empty())
            continue;
        Signal* clock = entry.second.front()->getClock();
        std::string var = wood->Name_var_by_index(clock->getInitialOverBddId(this, wood));
        os << "           if (*" << var << ")\n"
           << "              {\n";
        bool first = true;
        for (DataBinding* b : entry.second) {
            os << (first ? "                  " : "                  else") << " if ("
               << b->getSignal()->getOverName(this) << ") {" << "*" << var << "_val = ";
            b->getValue()->C_put(os, this);
            os << ";}\n";
            first = false;
        }
        os << "                else { " << "*" << var << "_val = " << "zero_" << clock->getValueType(this) << ";}\n"
           << "              }\n";
    }

    if (!regs.empty()) {
        os << "\n"
           << "         " << "/* refresh registers */\n";
        for (regclass* r : regs)
            os << "           " << r->actual_var()->getOverName(this) << "= " << r->next_var()->getOverName(this)
               << ";\n";
    }

    os << "            /*-----------------------partie evt/outputs_signals-----------------------------------------*/\n"
       << "           List<MyEvent> outputEvts = new List<MyEvent>(255);   \n";
    // An output's event, its value and its presence are named by the
    // signal's internal name, not by its variable.
    if (outputs != nullptr && !outputs->empty()) {
        int k = 0;
        for (Signal* s : *outputs) {
            long over = s->getOverBddId(this, wood);
            if (formats::absentOver(over))
                continue;
            const std::string& var = s->getInternalName();
            if (s->isValued(this))
                os << "           MyEvent evt" << k << "= new MyEvent( " << "\"" << var << "\"" << "," << "\""
                   << s->getValueType(this) << "\"" << "," << " Convert.ToString(" << var << "_val)" << ","
                   << "Convert.ToString(" << var << "));\n";
            else
                os << "            MyEvent evt" << k << " = new MyEvent( " << "\"" << var << "\"" << ","
                   << " Convert.ToString(" << var << "));\n";
            os << "            outputEvts.Add(evt" << k << ");\n";
            ++k;
        }
        os << "            string format =\"\";\n"
           << "            format = GA.serialize(outputEvts);\n"
           << "            FiresendEvent(format);\n";
    }
    os << "        }\n";

    os << "        /*-----------Delegate Methods & Events-------------------*/\n"
       << "        public delegate void StringValueEventHandler(string evt );\n"
       << "        public event StringValueEventHandler" << " " << "SendEventList;\n"
       << "       private void FiresendEvent(string evtFormat)\n"
       << "       {\n"
       << "            if(" << "SendEventList" << " != null" << ")\n"
       << "            { \n"
       << "                SendEventList" << "(evtFormat);\n"
       << "           }\n"
       << "        }\n"
       << "    }\n"
       << "}\n";
}

void Module::CSharp_put_equation(std::ostream& os, const std::string& nodeArray, int indent)
{
    if (wood == nullptr)
        return;
    std::string lead(indent > 0 ? indent : 0, ' ');
    for (Bddexpression* e : wood->earliest_equations()) {
        long index = e->own_index();
        std::string var = e->my_bddname();
        if (e->getAbstraction() != 0) {
            // The assignment ends without a line end; a missing binding is
            // reported and the equation left out.
            os << lead;
            if (DataBinding* binding = abstractEquationBinding(this, index, false)) {
                os << var << " = ";
                binding->getValue()->CSharp_put(os, this);
                os << ";";
            }
            continue;
        }
        e->put_csharp(os, nodeArray, indent);
        os << "\n\n";
        // A clock that is no output takes the value when the bound signal
        // holds and its type's zero otherwise, in its own presence only.
        DataBinding* binding = formats::clockedBinding(this, index);
        if (binding == nullptr || binding->getClock() == nullptr || binding->getClock()->isOutput())
            continue;
        Signal* clock = binding->getClock();
        std::string c = clock->getOverName(this);
        os << "   if (" << c << ") \n"
           << "      {\n"
           << "          if (" << var << ") \n"
           << "            {\n"
           << "               " << c << "_val = ";
        binding->getValue()->C_put(os, this);
        os << ";\n"
           << "            }\n"
           << "         else\n"
           << "            {\n"
           << "               " << c << "_val = " << "zero_" << clock->getValueType(this) << ";\n"
           << "            }\n"
           << "         }\n";
    }
}
