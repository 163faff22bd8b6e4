#ifndef TARN_MODEL_MODULE_H
#define TARN_MODEL_MODULE_H

#include "context/compilation.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "support/name_set.h"

#include <list>
#include <map>
#include <istream>
#include <ostream>
#include <string>
#include <unordered_map>

class Bddexpressionwood;
class EquationTable;
class Statement;
class DataBinding;
class DataExpr;

// A named set of signal lists over one wood of equations, with registers,
// memorised pairs and bindings. The reader fills it, finalize closes it and
// every generator walks it. Lists are held by pointer and may be null at any
// stage: callers test before they walk.
class Module : public SignalScope {
public:
    // Empty lists, a SignalManager and a new wood of its own.
    explicit Module(std::string name);
    // Takes the lists as given. The first three entries of `connexions` are
    // SET, RESET and RTL. A register with a null actual or next signal is a
    // fatal error; both signals of every register get setRegister.
    Module(std::string name, std::list<Signal*>* inputs, std::list<Signal*>* outputs, std::list<Signal*>* locals,
           std::list<memorizedSignal*>* memorized, std::list<Signal*>* dataSignals,
           std::list<regclass*>* registers, std::list<Signal*>* connexions, Bddexpressionwood* wood);
    // Deep copy over a copy of the wood: every listed signal, register,
    // memorised pair, connexion signal and binding is copied once, and the
    // copies keep the variable indexes of the originals. The equation table is
    // the source compiler's to attach.
    Module(Module& source);

    const std::string& getName() const { return name; }
    Statement* getStatement() const { return statement; }
    void setStatement(Statement* s) { statement = s; }

    std::list<Signal*>* getInputSignalList() const { return inputs; }
    std::list<Signal*>* getOutputSignalList() const { return outputs; }
    std::list<Signal*>* getLocalSignalList() const { return locals; }
    std::list<Signal*>* getDataSignalList() const { return data_signals; }
    std::list<memorizedSignal*>* getPreSignalList() override { return memorized; }
    std::list<regclass*>* getRegisterList() const { return registers; }
    // The reader swaps its own lists in; nothing is freed.
    void setInputSignalList(std::list<Signal*>* l) { inputs = l; }
    void setOutputSignalList(std::list<Signal*>* l) { outputs = l; }
    void setLocalSignalList(std::list<Signal*>* l) { locals = l; }
    void setDataSignalList(std::list<Signal*>* l) { data_signals = l; }
    void setPreSignalList(std::list<memorizedSignal*>* l) { memorized = l; }
    void setRegisterList(std::list<regclass*>* l) { registers = l; }

    // The source compiler's door to the wood; null unless it attaches one.
    EquationTable* getCompilation() const { return compilation; }
    void setCompilation(EquationTable* t) { compilation = t; }
    Bddexpressionwood* getBddWood() override { return wood; }
    void setBddWood(Bddexpressionwood* w) { wood = w; }
    SignalManager* getSignalManager() override { return signal_manager; }

    Signal* getSet() const { return set_signal; }
    Signal* getReset() const { return reset_signal; }
    Signal* getRtl() const { return rtl_signal; }
    void setSet(Signal* s) { set_signal = s; }
    void setReset(Signal* s) { reset_signal = s; }
    void setRtl(Signal* s) { rtl_signal = s; }

    bool getReincarnate() const { return reincarnate; }
    void setReincarnate(bool b) { reincarnate = b; }
    // 1 once finalize has run; generators then write the over wire alone.
    int getFinalised() const { return finalised; }
    void setFinalised(int f) { finalised = f; }
    int getCurrentInstance() const { return current_instance; }
    void setCurrentInstance(int i) { current_instance = i; }
    // Number of date levels of the wood, 0 without a wood.
    long getPertLevel();

    // Lookups by name; null when nothing matches. Lists compare original
    // names, the memorised pairs the internal name of their pre signal.
    Signal* getInputSignal(const std::string& name) const;
    Signal* getOutputSignal(const std::string& name) const;
    Signal* getLocalSignal(const std::string& name) const;
    Signal* getDataSignal(const std::string& name) const;
    Signal* getPreSignal(const std::string& name) const;
    // Outputs, then locals.
    Signal* getOutputLocalSignal(const std::string& name) const;
    // Inputs, outputs, data signals, locals, pre signals. The connexion
    // signals are in no list and are not found.
    Signal* getSignal(const std::string& name) const;
    // The same lists by internal name.
    Signal* getSignalFromInternalName(const std::string& name) const;

    // Every signal getSignal finds, under the name it finds it by, the
    // first one in getSignal's order: one lookup each for a walk over many
    // names, while the lists stay as they are.
    std::unordered_map<std::string, Signal*> signalsByName() const;

    // Lookups by BDD variable index in a wood.
    Signal* getSignalById(long id, Bddexpressionwood* wood);
    // The same through a table of signalsByName().
    Signal* getSignalById(long id, Bddexpressionwood* wood, const std::unordered_map<std::string, Signal*>& byName);
    // The ref's current name; no ref is a fatal error.
    std::string getSignalNameById(long id, Bddexpressionwood* wood);
    // The other wire of the same ref; no ref is a fatal error.
    long getOtherBddId(long id, Bddexpressionwood* wood);

    // Additions; a null list is created first.
    void addRegisterDecl(const char* actual, int initial, const char* next);
    void addRegisterSignal(Signal* actual, Signal* next);
    void addRegisterSignal(Signal* actual, Signal* next, int initial);
    void addPreSignal(Signal* pre, Signal* actual, std::string initial);
    void addInputSignal(Signal* s);
    void addOutputSignal(Signal* s);
    void addDataSignal(Signal* s);
    void addLocalSignal(Signal* s);

    // Bindings, keyed by the bound signal's name. The table is null until the
    // first binding.
    std::map<std::string, DataBinding*>* getDataTable() const { return data_table; }
    // Under Signal::getName(this, wood); the form without a wood takes the
    // module's.
    void addBinding(DataBinding* b);
    void addBinding(DataBinding* b, Bddexpressionwood* wood);
    // Under the internal name. When the value reads signals, the over and
    // under variables of `s` get abstract "VALUE_SIGNAL" equations that depend
    // on the wires of those signals, so that the value is dated after them.
    void addSignalBinding(DataExpr* value, Signal* s);
    // With a clock: the clock gets setClock and no equation is made. `s` gets
    // setValue in both forms.
    void addSignalBinding(DataExpr* value, Signal* s, Signal* clock);
    DataBinding* getBinding(const std::string& name) const;
    void removeBinding(const std::string& name);
    // New lists, owned by the caller, of the bindings whose clock has the
    // internal name of `clock`. Null without a table; the signal list is
    // empty and the binding list null when nothing matches.
    std::list<Signal*>* getSignalBindingByClock(Signal* clock) const;
    std::list<DataBinding*>* getDataBindingByClock(Signal* clock) const;

    // ---- bindings ----
    // The compiled-module form of the binding table: the "binding:" lines and
    // the "evaltable:" they refer to; nothing without a table. Variable
    // numbers go through `renumbering` when it is not null.
    void printBinding(std::ostream& out, long* renumbering);
    // The same table in the form of the debug dump.
    void debugPrintBinding(std::ostream& out);
    // ---- end bindings ----

    // ---- finalisation ----
    // Closes the module for generation: definite over and under equations,
    // constants propagated, useless wires, locals and registers removed, a
    // boot register "<name>_boot" / "<name>bootplus" tying SET, the wood
    // cleaned to what must stay, final dates, and every variable name that
    // begins with "_" prefixed by "v". Meant to run once. With `keepRtl` not
    // zero the over wire of RTL stays.
    void finalize(int keepRtl);
    // The run's entry: a null module (nothing could be read) ends the process
    // with a message and status 1 instead of dereferencing it.
    static void finalize(Module* module, int keepRtl);
    // Classifies the equations of outputs, register and clock locals and the
    // actual signals of memorised pairs by Compilation status code.
    void update_user_type();
    // Unless Compilation::KeepWiresFlag: suppress_wires, then
    // suppress_useless_registers, then clean_locals.
    void clean();
    // Drops the registers whose next value is constantly their initial value
    // and fixes their actual variable to that constant everywhere.
    void suppress_useless_registers();
    // Substitutes every local that is neither register, valued nor clock into
    // its readers and unlists it.
    void clean_locals();
    void constants_propagation();
    // Adds the output "OverKnowledgeError", true when some output is Error.
    void check_over_knowledge();
    void loose_first_underscore_in_name_variables();
    // Status codes of the equations that the passes keep: inputs, outputs,
    // registers and clocks, and with `withPre` the actual signals of
    // memorised pairs, over before under, in this order.
    static std::list<int> keptKinds(bool withPre);
    // ---- end finalisation ----

    // ---- generators ----
    // Debug dump of the whole module: signals with their variable ids,
    // registers, memorised pairs, equations by early date, bindings and the
    // data tables. "end of debug put" goes to the error stream.
    void DEBUG_put(std::ostream& os);
    // " name: over(id),under(id)" and a line end.
    void DEBUG_OneSignal_put(std::ostream& os, Signal* s);
    // The compiled-module (.zkc) file; nothing without a wood. With
    // `forgetNames` not zero locals and register lines carry numbers in
    // place of names. The two other arguments do not change the layout.
    void ZKC_put(std::ostream& out, int, int, int forgetNames);
    // BLIF netlist. Valued signals are reported and their presence kept;
    // the int is not read.
    void BLIF_put(std::ostream& os, int suppressWires);
    // C code file `c` and its header `h`.
    void C_put(std::ostream& c, std::ostream& h);
    // The reaction's equations in earliest order over the node array
    // `nodeArray`, with value assignments of abstract and clocked bindings.
    // Names in `outputs` are assigned through their pointer.
    void C_put_equation(std::ostream& os, const std::string& nodeArray, const name_set& outputs);
    // VHDL entity and architecture; `libs` is copied in when it is good,
    // `altera` not 0 writes std_logic for bit.
    void VHDL_put(std::ostream& out, std::istream& libs, int altera);
    // NuSMV model: the module with its inputs and data signals as
    // parameters, and a main module that drives them. Neither int is read.
    void NUSMV_put(std::ostream& os, int, int);
    // One Lustre node; the int is not read.
    void LUSTRE_put(std::ostream& os, int);
    // The equations in earliest order over the locals "<n>_<id>", the values
    // of abstract equations, then one flow per clock of a clocked binding.
    void LUSTRE_put_equation(std::ostream& os, const std::string& n, const std::set<std::string>& outputs);
    // The variables of the wood that no port declares: every used variable
    // but the inputs' over wires (pre signals kept) and the outputs' wires.
    std::set<long> get_really_used_wood_variables();
    // Readable listing of the module: state, interface, memorisations, the
    // definitions in the NuSMV node form, bindings and data tables. The int
    // is not read. Nothing without a wood.
    void DOC_put(std::ostream& os, int);
    // The interface for the quasar tools: one item per input and output
    // wire with its type or ": pure". Nothing without a wood.
    void ENCAPSULATEDQSR_put(std::ostream& os);
    // Esterel module; the int goes to the sums of products of the equations.
    void ESTEREL_put(std::ostream& os, int level);
    // The equations as branches of a parallel, each a present test over a
    // sum of products; abstract equations as assignments.
    void ESTEREL_put_equation(std::ostream& os, const std::string& nodeArray, const std::set<std::string>& outputs,
                              int level);
    // C# component: one class whose reaction reads and writes serialised
    // event lists.
    void CSharp_put(std::ostream& os);
    // The reaction's equations in earliest order over the bool array
    // `nodeArray`, each led by `indent` blanks, with the values of abstract
    // equations and of clocks that are not outputs.
    void CSharp_put_equation(std::ostream& os, const std::string& nodeArray, int indent);
    // SystemC unit: the C unit's functions without memorised signals, values
    // assigned by binding after the equations; code file `c`, header `h`.
    void SYSTEMC_put(std::ostream& c, std::ostream& h);
    // The simulator's data server: a C++ program that links the user's data
    // functions, starts the simulator and answers its requests on a socket.
    void SIMUL_ZKC_put(std::ostream& os);
    // ---- end generators ----

    // ---- source compiler ----
    // Defined with the source compiler (source/), which alone calls them.
    // compile: createCompileEnv, the body statement's compile, then
    // connectExternalWires and sortCode; reincarnate takes the body's.
    void compile();
    // Types of the valued signals checked against the data section, the
    // connexion signals made, and Bottom equations for every output and
    // local so that each emission has an equation to join.
    void createCompileEnv();
    // Body's SET := SET, body's RESET := RESET, RTL := body's RTL.
    void connectExternalWires();
    // Dates the wood from the locals and outputs; a cycle is fatal.
    void sortCode();
    // A control wire of a statement: listed as a local.
    void addWireSignal(Signal* s)
    {
        s->setLocal();
        addLocalSignal(s);
    }
    // ---- end source compiler ----

    // Class-wide settings of the source compiler and the simulator.
    static std::string SimulationDir;
    static std::string SimulationZkcDir;
    static std::string OutputDir;
    static std::string OutputFile;
    static std::list<std::string>* CompilationFileList;

private:
    void installScope();

    std::string name;
    Statement* statement = nullptr;
    std::list<Signal*>* inputs = nullptr;
    std::list<Signal*>* outputs = nullptr;
    std::list<Signal*>* locals = nullptr;
    std::list<memorizedSignal*>* memorized = nullptr;
    std::list<Signal*>* data_signals = nullptr;
    std::list<regclass*>* registers = nullptr;
    EquationTable* compilation = nullptr;
    Bddexpressionwood* wood = nullptr;
    Signal* set_signal = nullptr;
    Signal* reset_signal = nullptr;
    Signal* rtl_signal = nullptr;
    bool reincarnate = false;
    int finalised = 0;
    int current_instance = -1;
    SignalManager* signal_manager = nullptr;
    std::map<std::string, DataBinding*>* data_table = nullptr;
};

#endif
