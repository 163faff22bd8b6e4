// Semantic actions of the compiled-module grammar, in the order of the file:
// header, signal lists, registers, memorised pairs, connexion signals, the
// node table and the equations, the data declarations and the end of file.
// Bindings and the evaluation table are in zkc_bindings.cc.
//
// Every action is linear in what it reads: signals are found through hash
// indexes kept beside the lists (with the lists' own first- or last-match
// rules), never by walking them.

#include "zkc/parse_supl.h"

#include "bdd/bddpp.h"
#include "data/data.h"
#include "context/compilation.h"
#include "context/messages.h"
#include "model/module.h"
#include "signals/signal.h"
#include "wood/Bddexpression.h"
#include "support/mapped_block.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <set>

// ------------------------------------------------------------ header and lists

void class_zkc_parser::module_header(const std::string& name, long reincarnate_number, long finalised_number)
{
    module = new Module(name);
    wood = module->getBddWood();
    if (wood != nullptr && module->getSignalManager() != nullptr)
        module->getSignalManager()->deferWoodTables(true);
    // Applied to the module at the end of the file.
    reincarnate = reincarnate_number != 0;
    finalised = finalised_number != 0;
}

void class_zkc_parser::append_signal(Signal* s) { signals.push_back(s); }

Signal* class_zkc_parser::declare_signal(const std::string& name, const std::string* type)
{
    if (current_list == nullptr)
        current_list = new std::list<Signal*>;
    Signal* s = new Signal(name, name + suffix, module, wood);
    if (type != nullptr)
        s->setValueType(*type, module);
    append_signal(s);
    current_list->push_back(s);
    return s;
}

void class_zkc_parser::check_authorised(std::list<Signal*>* l, std::list<std::string>* authorised, const char* kind)
{
    if (authorised == nullptr || authorised->empty())
        return;
    std::set<std::string> known(authorised->begin(), authorised->end());
    for (Signal* s : *l) {
        if (s->isValued(module) || known.count(s->getOriginalName()) != 0)
            continue;
        std::string text;
        if (module != nullptr)
            text = module->getName() + ":";
        text += std::string("PARSING ERROR: ") + kind + " signal \"" + s->getOriginalName() +
                "\" is unknown in main module!\n  --> authorised signals:\n";
        for (const std::string& a : *authorised)
            text += a + "\n";
        fl_show_Smessages(text);
        std::cerr << text;
        Compilation::exitFailure(text);
    }
}

std::list<Signal*>* class_zkc_parser::take_list()
{
    std::list<Signal*>* l = current_list != nullptr ? current_list : new std::list<Signal*>;
    current_list = nullptr;
    return l;
}

void class_zkc_parser::end_inputs()
{
    std::list<Signal*>* l = inputs = take_list();
    for (Signal* s : *l)
        s->setInput();
    check_authorised(l, authorised_inputs, "input");
}

void class_zkc_parser::end_outputs()
{
    std::list<Signal*>* l = outputs = take_list();
    for (Signal* s : *l)
        s->setOutput();
    check_authorised(l, authorised_outputs, "output");
}

void class_zkc_parser::end_data_signals()
{
    std::list<Signal*>* l = data_signals = take_list();
    for (Signal* s : *l) {
        s->setInput();
        s->setValue();
    }
}

void class_zkc_parser::end_locals()
{
    std::list<Signal*>* l = locals = take_list();
    for (Signal* s : *l)
        s->setLocal();
}

// -------------------------------------------------------------- registers

void class_zkc_parser::register_line(const std::string& next_name, const std::string& actual_name, long initial_number)
{
    // The signals read so far by internal name, the last of a name winning
    // as in a search to the end of the list. Built at the first register
    // line: no signal is declared between the register lines.
    if (by_internal_name.empty()) {
        by_internal_name.reserve(signals.size());
        for (Signal* s : signals)
            by_internal_name.assign(s);
    }
    Signal* next = by_internal_name.find(next_name + suffix);
    if (next != nullptr)
        next->setRegister();
    Signal* actual = by_internal_name.find(actual_name + suffix);
    if (actual != nullptr)
        actual->setRegister();
    // The number is taken as a 32-bit value: only above 1 is it refused.
    int initial = static_cast<int>(static_cast<std::int32_t>(initial_number));
    if (initial > 1) {
        std::string text = "Warning: Boolean value expected to initialize register value\n";
        fl_show_Smessages(text);
        std::cerr << text;
        initial = 0;
    }
    if (registers == nullptr)
        registers = new std::list<regclass*>;
    if (next != nullptr && actual != nullptr) {
        registers->push_back(new regclass(actual, next, initial));
    } else {
        std::cerr << "register " << actual_name << " not defined as local ..." << std::endl;
        registers->push_back(nullptr);
    }
}

static std::list<Signal*>* or_empty(std::list<Signal*>* l) { return l != nullptr ? l : new std::list<Signal*>; }

void class_zkc_parser::end_registers()
{
    inputs = or_empty(inputs);
    outputs = or_empty(outputs);
    data_signals = or_empty(data_signals);
    locals = or_empty(locals);
    if (registers == nullptr)
        registers = new std::list<regclass*>;
    module->setInputSignalList(inputs);
    module->setOutputSignalList(outputs);
    module->setDataSignalList(data_signals);
    module->setLocalSignalList(locals);
    module->setRegisterList(registers);
    index_module_signals();
}

// Module::getSignal looks in inputs, outputs, data signals and locals by
// original name, first match first, then in the memorised pairs by the pre
// signal's internal name. The same answer from two hash maps.
void class_zkc_parser::index_module_signals()
{
    by_name.release();
    by_name.reserve(inputs->size() + outputs->size() + data_signals->size() + locals->size());
    for (std::list<Signal*>* l : {inputs, outputs, data_signals, locals})
        for (Signal* s : *l)
            by_name.insert(s);
}

Signal* class_zkc_parser::find_signal(const std::string& name) const
{
    Signal* s = by_name.find(name);
    return s != nullptr ? s : pre_by_internal_name.find(name);
}

// ------------------------------------------------------- memorised pairs

void class_zkc_parser::memorized_line(const std::string& pre_name, const std::string& actual_name,
                                      const std::string& initial)
{
    // Until the end of the file the module has no memorised pair: the pre
    // signal is looked for in the four lists only.
    Signal* pre = find_signal(pre_name);
    if (pre != nullptr) {
        pre->setPre();
        pre->setInput();
    } else {
        pre = new Signal(pre_name, pre_name + suffix, module, wood);
        pre->setPre();
        pre->setInput();
        append_signal(pre);
    }
    Signal* actual = find_signal(actual_name);
    if (actual != nullptr) {
        if (actual->isValued(module))
            pre->setValueType(actual->getValueType(module), module);
    } else {
        std::cerr << " undeclared signal \"" << actual_name << "\" at line " << lineno() << std::endl;
    }
    if (memorized == nullptr)
        memorized = new std::list<memorizedSignal*>;
    memorized->push_back(new memorizedSignal(pre, actual, initial));
}

// ------------------------------------------------------------- connexion

void class_zkc_parser::connexion(const std::string& set, const std::string& reset, const std::string& rtl)
{
    Signal* made[3];
    const std::string* names[3] = {&set, &reset, &rtl};
    for (int i = 0; i < 3; i++) {
        made[i] = new Signal(*names[i], module, wood);
        made[i]->setWire();
        append_signal(made[i]);
    }
    module->setSet(made[0]);
    module->setReset(made[1]);
    module->setRtl(made[2]);
}

// ------------------------------------------------------------ node table

void class_zkc_parser::wood_catch_up()
{
    if (module == nullptr || module->getSignalManager() == nullptr || !module->getSignalManager()->defersWoodTables())
        return;
    module->getSignalManager()->deferWoodTables(false);
    if (wood != nullptr)
        wood->update_bdd_vars();
}

namespace {

// The most node lines reserved ahead from the count a file announces.
constexpr long max_reserved_lines = 1L << 21;

} // namespace

void class_zkc_parser::equation_count(long count)
{
    wood_catch_up();
    node_count = count;
    parsed_nodes_table.clear();
    // Room for the announced lines at once (an absurd count gets a bounded
    // start and the table grows as lines come).
    parsed_nodes_table.reserve(static_cast<std::size_t>(count > 0 ? std::min(count, max_reserved_lines) : 0));
    // The lines fill it from the front at the pace of the scanner: its
    // pages are made present from the back on the other processor meanwhile.
    const std::size_t reserved = parsed_nodes_table.capacity() * sizeof(parsed_nodes_class);
    if (reserved >= (std::size_t(2) << 20)) make_present_soon(parsed_nodes_table.data(), reserved);
    sparse_nodes.clear();
}

parsed_nodes_class* class_zkc_parser::parsed_node(long id) const
{
    if (id < 0)
        return nullptr;
    if (id < static_cast<long>(parsed_nodes_table.size()))
        return parsed_nodes_table[id].is_defined() ? const_cast<parsed_nodes_class*>(&parsed_nodes_table[id]) : nullptr;
    auto it = sparse_nodes.find(id);
    return it != sparse_nodes.end() ? it->second : nullptr;
}

void class_zkc_parser::node_line(long id, long var, long then_id, long else_id, long link)
{
    if (id < 0 || id >= node_count) {
        std::cerr << "detecting bad indice about parsed_nodes_table[]! skipping ..." << std::endl;
        return;
    }
    // A link other than 1 or -1 is kept as 0, which the build refuses,
    // rather than cut to an int that might read as a valid one.
    int else_link = link == 1 || link == -1 ? static_cast<int>(link) : 0;
    parsed_nodes_class line(var, then_id, else_id, else_link);
    long size = static_cast<long>(parsed_nodes_table.size());
    // Files number their lines from 0 upward: the table grows with them. An
    // id far ahead of the lines read goes to the map instead of a huge table.
    if (id < size) {
        parsed_nodes_table[id] = line;
    } else if (id <= 2 * size + 1024) {
        parsed_nodes_table.resize(id + 1);
        parsed_nodes_table[id] = line;
    } else {
        auto& slot = sparse_nodes[id];
        delete slot;
        slot = new parsed_nodes_class(line);
    }
}

bdd_node* parsed_nodes_class::build(bddpp_manager* manager, const class_zkc_parser& parser)
{
    if (node != nullptr)
        return node;
    if (var_id == -1) {
        node = manager->Bdd_node_one();
        return node;
    }
    // Depth-first, then child before else child, each line built once: the
    // stack is the path from this line, so meeting a line that is on it
    // again is a cycle.
    std::vector<parsed_nodes_class*> path{this};
    visiting = true;
    while (!path.empty()) {
        parsed_nodes_class* n = path.back();
        parsed_nodes_class* pending = nullptr;
        bdd_node* children[2] = {nullptr, nullptr};
        long ids[2] = {n->then_id, n->else_id};
        for (int k = 0; k < 2 && pending == nullptr; k++) {
            parsed_nodes_class* child = parser.parsed_node(ids[k]);
            if (child == nullptr)
                zkc_fatal("internal error in parsed_nodes_class::build(): node " + std::to_string(ids[k]) +
                          " is not defined");
            if (child->node != nullptr) {
                children[k] = child->node;
            } else if (child->var_id == -1) {
                child->node = manager->Bdd_node_one();
                children[k] = child->node;
            } else if (child->visiting) {
                zkc_fatal("internal error in parsed_nodes_class::build(): node " + std::to_string(ids[k]) +
                          " is its own descendant");
            } else {
                pending = child;
            }
        }
        if (pending != nullptr) {
            pending->visiting = true;
            path.push_back(pending);
            continue;
        }
        if (n->var_id < 0 || n->var_id >= manager->variables_number)
            zkc_fatal("internal error in parsed_nodes_class::build(): no variable " + std::to_string(n->var_id));
        if (n->else_link_type != 1 && n->else_link_type != -1)
            zkc_fatal("internal error in parsed_nodes_class::build(): else link neither 1 nor -1 on variable " +
                      std::to_string(n->var_id));
        bdd then_handle(manager, 1, children[0]);
        bdd else_handle(manager, n->else_link_type, children[1]);
        bdd result = manager->Bdd_ite(1, n->var_id, then_handle, else_handle);
        if (result.link_type() != 1)
            zkc_fatal("internal error in parsed_nodes_class::build()");
        // The table holds the node beyond the handle's life.
        result.node()->references++;
        n->node = result.node();
        n->visiting = false;
        path.pop_back();
    }
    return node;
}

// ------------------------------------------------------------- equations

void class_zkc_parser::bddexpression_convert(Bddexpressionwood* w, long early, long late, long var, long root,
                                             long link, std::list<long>* dependences)
{
    bddpp_manager* manager = w != nullptr ? w->my_bdd_manager() : nullptr;
    if (manager == nullptr)
        zkc_fatal("internal error in class_zkc_parser::bddexpression_convert(): no bdd manager !");
    if (var < 0 || var >= manager->variables_number)
        zkc_fatal("internal error in class_zkc_parser::bddexpression_convert(): no variable " + std::to_string(var) +
                  " at line " + std::to_string(lineno()));
    if (root != -3) {
        parsed_nodes_class* line = parsed_node(root);
        if (line == nullptr)
            zkc_fatal("internal error in class_zkc_parser::bddexpression_convert(): node " + std::to_string(root) +
                      " is not defined at line " + std::to_string(lineno()));
        if (link != 1 && link != -1)
            zkc_fatal("internal error in class_zkc_parser::bddexpression_convert(): bad link " +
                      std::to_string(link) + " at line " + std::to_string(lineno()));
        std::string name = manager->Name_var_by_index(var);
        bdd left = manager->Bdd_var_by_index(var);
        bdd_node* right_node = line->build(manager, *this);
        bdd right(manager, static_cast<int>(link), right_node);
        new Bddexpression(name, w, left, right, early, late);
        return;
    }
    // Abstract: the list is all that is known of the right member. A number
    // that names no variable cannot be read by anything and is left out.
    IndexSet deps;
    if (dependences != nullptr)
        for (long d : *dependences)
            if (d >= 0 && d < manager->variables_number)
                deps.insert(d);
    new Bddexpression(var, w, deps, "VALUE_SIGNAL", early, late);
}

// ------------------------------------------------------ data declarations

void class_zkc_parser::type_line(const std::string& name)
{
    if (Compilation::GDataTypeTable == nullptr)
        Compilation::GDataTypeTable = new DataTypeTable();
    DataTypeTable* table = Compilation::GDataTypeTable;
    int index = table->getIndex(name);
    if (index < 0) {
        table->addType(name);
        index = static_cast<int>(table->getTypeTable()->size()) - 1;
    }
    corres_type.push_back(index);
    type_count++;
}

void class_zkc_parser::method_line(std::string* return_type, std::string* name, std::list<std::string>* arg_types)
{
    if (Compilation::GDataMethodTable == nullptr)
        Compilation::GDataMethodTable = new DataMethodTable();
    DataMethodTable* table = Compilation::GDataMethodTable;
    int index = table->getMethodIndex(*name);
    if (index < 0) {
        table->addMethod(new MethodDecl(return_type, name, arg_types));
        index = static_cast<int>(table->getMethodList()->size()) - 1;
    }
    corres_method.push_back(index);
    method_count++;
}

void class_zkc_parser::constant_line(const std::string& type, const std::string& name, const std::string* plain,
                                     std::map<int, std::string>* assignments)
{
    if (Compilation::GDataConstantTable == nullptr)
        Compilation::GDataConstantTable = new DataConstantTable();
    DataConstantTable* table = Compilation::GDataConstantTable;
    int index = table->getConstantIndex(name);
    if (table->getConstant(name) == nullptr) {
        auto* decl = new ConstantDecl(type, name);
        if (plain != nullptr) {
            auto* values = new std::map<int, DataExpr*>;
            (*values)[TLanguage::DEFAULT] = new DataValue(*plain, type, decl);
            decl->setValueTable(values);
        } else if (assignments != nullptr && !assignments->empty()) {
            auto* values = new std::map<int, DataExpr*>;
            for (auto& [language, text] : *assignments)
                (*values)[language] = new DataValue(text, type, decl);
            decl->setValueTable(values);
        }
        table->addConstant(decl);
        index = static_cast<int>(table->getConstantList()->size()) - 1;
    }
    corres_constant.push_back(index);
    constant_count++;
}

// ----------------------------------------------------------- end of file

void class_zkc_parser::end_of_file()
{
    wood_catch_up();
    if (memorized == nullptr)
        memorized = new std::list<memorizedSignal*>;
    module->setPreSignalList(memorized);
    for (memorizedSignal* pair : *memorized)
        if (pair->getPre() != nullptr)
            pre_by_internal_name.insert(pair->getPre());
    module->setReincarnate(reincarnate);
    module->setFinalised(finalised ? 1 : 0);
    if (bindings != nullptr)
        bindings->createbinding(module);
    std::vector<long> ids;
    for (std::list<Signal*>* l : {module->getLocalSignalList(), module->getOutputSignalList()}) {
        if (l == nullptr)
            continue;
        for (Signal* s : *l)
            s->appendAllBddId(module, wood, ids);
    }
    wood->compute_dates(ids);
    module->update_user_type();
}
