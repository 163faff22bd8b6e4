#include "source/run.h"

#include "context/compilation.h"
#include "data/data.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "source/source_errors.h"
#include "wood/Bddexpression.h"
#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <fstream>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

std::list<Module*>* Run::FileModules = nullptr;

namespace {

std::map<Module*, std::vector<RunDeclaration>> declared;
// 1 while a module compiles, 2 once it has.
std::map<Module*, int> compiled;
// The called modules as their compiled text reads back, by module of the
// file or by file name.
std::map<Module*, Module*> read_from_source;
std::map<std::string, Module*> read_from_file;
std::vector<class_zkc_parser*> readers;  // every parser read_compiled made

[[noreturn]] void run_error(Module* m, const std::string& text)
{
    Compilation::fatal("Error in module \"" + m->getName() + "\":\n " + text + "\n Aborting ...");
}

// A compiled file's first line is "module: <name>  <reincarnate> <finalised>":
// with its blank the name cannot match a longer one.
std::string header_key(const std::string& module) { return "module: " + module + " "; }

struct Callee {
    Module* source = nullptr;  // a module of the file, or
    std::string file;          // the compiled file that holds it
    std::string module;
    std::string instance;      // the first part of the fresh names
};

// `name` is an instance of a "Run:" declaration, or a module: of the file
// unless a declaration gives it a file, else of the compilation files.
bool resolve(Module* caller, const std::string& name, Callee& c)
{
    const RunDeclaration* d = nullptr;
    for (const RunDeclaration& x : declared[caller])
        if (x.instance == name && d == nullptr)
            d = &x;
    for (const RunDeclaration& x : declared[caller])
        if (x.module == name && d == nullptr)
            d = &x;
    c.module = d != nullptr ? d->module : name;
    c.instance = d != nullptr ? d->instance : name;
    if (Run::FileModules != nullptr && (d == nullptr || d->file.empty()))
        for (Module* m : *Run::FileModules)
            if (m->getName() == c.module) {
                c.source = m;
                return true;
            }
    c.file = Compilation::getZkcFileName(header_key(c.module));
    return !c.file.empty();
}

// The compiled-module reader on a text; null when it does not parse.
Module* read_compiled(const std::string& text)
{
    std::istringstream in(text);
    static std::ofstream nowhere;  // the scanner echoes nothing a file may hold
    auto* parser = new class_zkc_parser();
    readers.push_back(parser);
    parser->scanner = new zkcFlexLexer(&in, &nowhere);
    std::fstream log;
    std::string suffix;
    if (parser->parse(log, 0, suffix) != 0)
        return nullptr;
    return parser->module;
}

// Whether every register line of a module read from a file named two of
// its locals: the reader keeps a hole for one that did not, which only the
// finaliser reports.
bool registers_whole(Module* m)
{
    if (std::list<regclass*>* registers = m->getRegisterList())
        for (regclass* r : *registers)
            if (r == nullptr || r->actual_var() == nullptr || r->next_var() == nullptr)
                return false;
    return true;
}

// The module a call links: read back from its compiled text once, and
// shared by every call (linking reads it and changes nothing in it).
Module* instance_of(Module* caller, const Callee& c)
{
    if (c.source != nullptr) {
        Module*& m = read_from_source[c.source];
        if (m == nullptr) {
            compile_source_module(c.source);
            std::ostringstream text;
            c.source->ZKC_put(text, 0, 0, 0);
            m = read_compiled(text.str());
            if (m == nullptr)
                run_error(caller, "Run of module \"" + c.module + "\": its compiled text does not read back");
        }
        return m;
    }
    Module*& m = read_from_file[c.file];
    if (m == nullptr) {
        std::ifstream in(c.file);
        std::stringstream text;
        text << in.rdbuf();
        m = read_compiled(text.str());
        if (m == nullptr || m->getName() != c.module || !registers_whole(m))
            run_error(caller, "Run of module \"" + c.module + "\": file \"" + c.file + "\" cannot be read");
    }
    return m;
}

std::string type_of(Signal* s, Module* m) { return s->isValued(m) ? s->getValueType(m) : std::string("pure"); }

} // namespace

void Run::declare(Module* m, const RunDeclaration& d) { declared[m].push_back(d); }

const std::vector<RunDeclaration>& Run::declarations(Module* m) { return declared[m]; }

std::vector<class_zkc_parser*> Run::forget()
{
    declared.clear();
    compiled.clear();
    read_from_source.clear();
    read_from_file.clear();
    FileModules = nullptr;
    return std::exchange(readers, {});
}

void compile_source_module(Module* m)
{
    int& state = compiled[m];
    if (state == 2)
        return;
    if (state == 1)
        Compilation::fatal("Error in module \"" + m->getName() + "\":\n it runs itself\n Aborting ...");
    state = 1;
    m->compile();
    state = 2;
}

void Run::complementary_check_syntax()
{
    Callee c;
    if (!resolve(module, callee, c))
        run_error(module, "Run of module: \"" + callee + "\"  undefined !");
    if (c.source == module)
        run_error(module, "Run of module \"" + c.module + "\" inside itself");
    // The interface as the source declares it, or as the file holds it.
    Module* called = c.source != nullptr ? c.source : instance_of(module, c);
    std::string head = "Run of module \"" + c.module + "\": ";
    std::map<std::string, std::string> actual;  // called module's name -> caller's
    for (auto& [a, x] : renaming) {
        if (called->getInputSignal(x) == nullptr && called->getOutputSignal(x) == nullptr &&
            called->getDataSignal(x) == nullptr)
            run_error(module, head + "signal \"" + x + "\" is neither an input nor an output of \"" + c.module + "\"");
        if (!actual.emplace(x, a).second)
            run_error(module, head + "signal \"" + x + "\" renamed twice");
    }
    // Inputs and data signals read the caller's signal; outputs drive it.
    // A valued signal meets a signal of the same type; a data signal, which
    // may have no type written, at least a valued one.
    std::list<Signal*>* lists[] = {called->getInputSignalList(), called->getDataSignalList(),
                                   called->getOutputSignalList()};
    for (int k = 0; k < 3; k++) {
        if (lists[k] == nullptr)
            continue;
        for (Signal* x : *lists[k]) {
            auto found = actual.find(x->getOriginalName());
            std::string name = found != actual.end() ? found->second : x->getOriginalName();
            Signal* a = module->getSignal(name);
            if (a == nullptr)
                run_error(module, head + "signal \"" + name + "\"  undefined !");
            if (k == 2 && (a->isInput() || a->isPre()))
                run_error(module, head + "output \"" + x->getOriginalName() + "\" meets the input signal \"" +
                                      name + "\"");
            std::string given = type_of(a, module), declared_type = type_of(x, called);
            bool untyped_data = k == 1 && declared_type == "pure";
            if (untyped_data ? given == "pure" : given != declared_type)
                run_error(module, head + "signal \"" + name + "\" typed by : \"" + given + "\"\n whereas \"" +
                                      x->getOriginalName() + "\" is declared with the type : \"" +
                                      (untyped_data ? std::string("a value") : declared_type) + "\"");
        }
    }
}

bool Run::reincarnate()
{
    Callee c;
    if (!resolve(module, callee, c))
        throw IllegalOperationException("ex1:Run module undefined: " + callee);
    if (c.source != nullptr) {
        Statement* body = c.source->getStatement();
        return body == nullptr || body->reincarnate();
    }
    int r = Compilation::getReincarnateFromZkcFile(header_key(c.module));
    if (r < 0)
        throw IllegalOperationException("ex2:Run module undefined: " + callee);
    return r != 0;
}

void Run::createEquations(Module* m, EquationTable* t)
{
    compile_with_preemption(m, t, m->getBddWood()->my_bdd_manager()->Bdd_zero());
}

void Run::compile_with_preemption(Module* m, EquationTable* t, const bdd& preemption)
{
    createWires(m, t);
    Callee c;
    if (!resolve(m, callee, c))
        throw IllegalOperationException("ex1:Run module undefined: " + callee);
    Module* called = instance_of(m, c);
    Bddexpressionwood* wood = m->getBddWood();
    Bddexpressionwood* from = called->getBddWood();
    bddpp_manager* manager = wood->my_bdd_manager();

    // The fresh names of this call: "<name>_<instance>_<n>", n the first
    // number for which no name of the call is taken.
    std::vector<Signal*> own;  // the called module's signals that get one
    for (std::list<Signal*>* l : {called->getOutputSignalList(), called->getLocalSignalList()})
        if (l != nullptr)
            own.insert(own.end(), l->begin(), l->end());
    std::vector<memorizedSignal*> pres;
    if (std::list<memorizedSignal*>* l = called->getPreSignalList())
        for (memorizedSignal* p : *l)
            if (p->getPre() != nullptr)
                pres.push_back(p);
    std::string tag;
    for (int n = 1;; n++) {
        tag = "_" + c.instance + "_" + std::to_string(n);
        bool free = true;
        for (Signal* s : own)
            if (m->getSignalManager()->getSignalRefByName(s->getInternalName() + tag) != nullptr)
                free = false;
        for (memorizedSignal* p : pres)
            if (m->getSignalManager()->getSignalRefByName(p->getPre()->getInternalName() + tag) != nullptr)
                free = false;
        if (free)
            break;
    }

    std::map<std::string, std::string> names;  // variable of the called wood -> of the caller's
    auto link = [&](Signal* x, Signal* target, bool initial) {
        long over = initial ? target->getInitialOverBddId(m, wood) : target->getOverBddId(m, wood);
        long under = initial ? target->getInitialUnderBddId(m, wood) : target->getUnderBddId(m, wood);
        names[from->Name_var_by_index(x->getOverBddId(called, from))] = wood->Name_var_by_index(over);
        names[from->Name_var_by_index(x->getUnderBddId(called, from))] = wood->Name_var_by_index(under);
    };
    std::map<std::string, std::string> actual;
    for (auto& [a, x] : renaming)
        actual[x] = a;
    auto actual_of = [&](Signal* x) {
        auto found = actual.find(x->getOriginalName());
        return m->getSignal(found != actual.end() ? found->second : x->getOriginalName());
    };
    std::map<Signal*, Signal*> fresh;
    for (Signal* x : own) {
        auto* s = new Signal(x->getInternalName() + tag, m, wood);
        // Wires: the called module closed their wires already.
        s->setWire();
        m->addWireSignal(s);
        if (x->isValued(called))
            s->setValueType(x->getValueType(called), m);
        fresh[x] = s;
        link(x, s, false);
    }
    for (std::list<Signal*>* inputs : {called->getInputSignalList(), called->getDataSignalList()})
        if (inputs != nullptr)
            for (Signal* x : *inputs)
                link(x, actual_of(x), true);
    link(called->getSet(), set, false);
    link(called->getReset(), reset, false);
    link(called->getRtl(), rtl, false);
    if (std::list<regclass*>* registers = called->getRegisterList())
        for (regclass* r : *registers)
            m->addRegisterSignal(fresh[r->actual_var()], fresh[r->next_var()], r->is_initialy_true());
    // The signals the called module's values read or bind, by its names:
    // its interface is the caller's signals, the rest this call's own.
    std::map<std::string, Signal*> valued;
    for (std::list<Signal*>* l :
         {called->getInputSignalList(), called->getDataSignalList(), called->getOutputSignalList()})
        if (l != nullptr)
            for (Signal* x : *l)
                valued[x->getOriginalName()] = actual_of(x);
    if (std::list<Signal*>* locals = called->getLocalSignalList())
        for (Signal* x : *locals)
            valued[x->getOriginalName()] = fresh[x];
    // A memorised pair of the called module memorises the signal its
    // actual one became: the caller's for an interface signal, whose value
    // the caller's signal carries. The pre signal, as any, is in no list.
    for (memorizedSignal* p : pres) {
        auto* pre = new Signal(p->getPre()->getInternalName() + tag, m, wood);
        pre->setPre();
        pre->setInput();
        link(p->getPre(), pre, false);
        if (p->getPre()->isValued(called))
            pre->setValueType(p->getPre()->getValueType(called), m);
        valued[p->getPre()->getOriginalName()] = pre;
        Signal* of = p->getActual();
        Signal* target = of == nullptr ? nullptr : of->isInput() || of->isOutput() ? actual_of(of) : fresh[of];
        m->addPreSignal(pre, target, p->getInitialValue());
    }
    // Anything else the called wood names stays its own.
    bddpp_manager* source = from->my_bdd_manager();
    for (long i = 0; i < source->variables_number; i++) {
        std::string& target = names[source->Name_var_by_index(i)];
        if (target.empty())
            target = source->Name_var_by_index(i) + tag;
    }
    wood->Include_wood_instance(*from, names);
    // Its values: each binding over this call's signals. A value an output
    // carries is the caller's signal's value.
    if (std::map<std::string, DataBinding*>* table = called->getDataTable())
        for (auto& entry : *table) {
            DataBinding* b = entry.second->instanciate(nullptr, &valued, m);
            m->addSignalBinding(b->getValue(), b->getSignal(), b->getClock());
        }

    // The called module's emissions join the caller's signals.
    bdd kept = manager->Bdd_not(preemption);
    if (std::list<Signal*>* outputs = called->getOutputSignalList())
        for (Signal* x : *outputs) {
            Signal* s = fresh[x];
            bdd over = manager->Bdd_and(kept, s->getOverBdd(m, wood));
            bdd under = manager->Bdd_zero();
            long u = s->getUnderBddId(m, wood);
            Bddexpression* e = u < wood->Nb_bdd_vars() ? wood->Exp_table()[u] : nullptr;
            if (e != nullptr && !manager->Bdd_is_zero_tautologic(e->my_bdd_exp()))
                under = manager->Bdd_and(kept, s->getUnderBdd(m, wood));
            t->createUnifyEquation(actual_of(x), new WiresExpression(over, under), m, false);
        }
}
