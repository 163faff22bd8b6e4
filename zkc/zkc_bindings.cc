// Binding and evaluation lines of a compiled-module file, and their
// translation into the module's bindings once the whole file is read (the
// data declarations, which the evaluation lines index, come after them).

#include "zkc/parse_supl.h"

#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"

#include <unordered_set>

// The data layer walks value expressions recursively: no expression of a
// file is let grow deeper than this. Written expressions are a few levels
// deep.
static const std::size_t max_value_depth = 10000;

const char* evalnodeparse::type_word(int type)
{
    switch (type) {
    case CONSTANT:
        return "CONSTANTE";
    case LINK:
        return "LINK";
    case PREDEFINED:
        return "METHODE PREDEFINIE";
    case METHOD:
        return "METHODE EXTERNE";
    default:
        return "?";
    }
}

void evalnodeparse::set_arguments(const std::list<std::pair<long, bool>>& written)
{
    // A "$" mark on an argument is not kept: the number names an
    // evaluation line like any other, as the writer lays the table out.
    arguments.clear();
    for (const auto& written_argument : written)
        arguments.push_back(written_argument.first);
}

std::ostream& operator<<(std::ostream& os, const evalnodeparse& n)
{
    os << n.nodeident << ": " << evalnodeparse::type_word(n.nodetype) << " " << n.tableident << " "
       << n.methodident << " (";
    const char* separator = "";
    for (long a : n.arguments) {
        os << separator << a;
        separator = ", ";
    }
    return os << ")";
}

// ------------------------------------------------------------ grammar side

void class_zkc_parser::binding_line(const couplelong& signal, long eval, const couplelong* clock)
{
    if (bindings == nullptr)
        bindings = new binding_declaration_parse(this);
    if (clock != nullptr)
        bindings->binding_list.emplace_back(signal.premier, signal.second, eval, clock->premier, clock->second);
    else
        bindings->binding_list.emplace_back(signal.premier, signal.second, eval);
}

void class_zkc_parser::binding_section()
{
    if (bindings == nullptr)
        bindings = new binding_declaration_parse(this);
}

void class_zkc_parser::evaluation_line(evalnodeparse* n)
{
    if (bindings == nullptr)
        bindings = new binding_declaration_parse(this);
    bindings->add_evalnode(*n);
    delete n;
}

void binding_declaration_parse::add_evalnode(const evalnodeparse& n)
{
    evalnode_list.push_back(n);
    // The search of the list finds the first line of an ident.
    by_ident.emplace(n.nodeident, &evalnode_list.back());
}

const evalnodeparse& binding_declaration_parse::get_evalnode(long id) const
{
    auto it = by_ident.find(id);
    if (it == by_ident.end())
        Compilation::IllegalOperationException("binding_declaration_parse::get_evalnode: node_not_found");
    return *it->second;
}

// ----------------------------------------------------------- evaluations

Signal* binding_declaration_parse::signal_value_signal(long over, Module* m)
{
    SignalRef* ref = m->getSignalManager()->getSignalRefById(over, parser->wood);
    if (ref == nullptr)
        zkc_fatal("binding_declaration_parse::dataexpr: signal not found: " + std::to_string(over));
    Signal* s = parser->find_signal(ref->getOriginalName());
    if (s == nullptr)
        zkc_fatal("binding_declaration_parse::dataexpr2: signal not found: " + ref->getOriginalName());
    return s;
}

// The expression of a line that reads no other line, or null.
DataExpr* binding_declaration_parse::leaf_or_null(const evalnodeparse& n)
{
    if (n.nodetype == evalnodeparse::CONSTANT) {
        if (n.tableident < 0 || n.tableident >= static_cast<long>(parser->corres_constant.size()))
            zkc_fatal("binding_declaration_parse::dataexpr: unknown constant: " + std::to_string(n.tableident));
        return new DataConstant(parser->corres_constant[n.tableident]);
    }
    return nullptr;
}

// The expression of a line whose read lines are `args`, in their order.
DataExpr* binding_declaration_parse::combine(const evalnodeparse& n, std::vector<DataExpr*>& args, Module* m)
{
    switch (n.nodetype) {
    case evalnodeparse::LINK:
        return args.front();
    case evalnodeparse::METHOD: {
        if (n.methodident < 0 || n.methodident >= static_cast<long>(parser->corres_method.size()))
            zkc_fatal("binding_declaration_parse::dataexpr: unknown method: " + std::to_string(n.methodident));
        auto* list = new std::list<DataExpr*>(args.begin(), args.end());
        return new DataMethodCall(parser->corres_method[n.methodident], list);
    }
    case evalnodeparse::PREDEFINED: {
        long op = n.methodident % DataExpr::NbPredefOp;
        if (op == DataExpr::SignalVal)
            return new DataSignalValue(signal_value_signal(n.arguments.front(), m));
        if (args.size() == 2)
            return new DataBinaryOp(static_cast<int>(op), args[0], args[1]);
        return new DataUnaryOp(static_cast<int>(op), args[0]);
    }
    default:
        Compilation::IllegalOperationException("binding_declaration_parse::dataexpr: unknown_eval_type");
    }
}

DataExpr* binding_declaration_parse::dataexpr(long id, Module* m) { return dataexpr(get_evalnode(id), m); }

DataExpr* binding_declaration_parse::dataexpr(const evalnodeparse& root, Module* m)
{
    // A well-formed table is a forest read once; a line read from many
    // places is expanded each time, as the writer expects, but only up to
    // a size no written file reaches.
    const long budget = 64 * static_cast<long>(evalnode_list.size() + binding_list.size()) + 1000000;

    struct frame {
        const evalnodeparse* node;
        std::vector<long> reads;  // lines read, in operand order
        std::size_t next;
        std::vector<DataExpr*> args;
    };
    std::vector<frame> path;
    std::unordered_set<const evalnodeparse*> on_path;

    // The checks that decide a line's form come before its operands are
    // read, as in a recursive descent.
    auto enter = [&](const evalnodeparse& n) {
        if (path.size() >= max_value_depth)
            zkc_fatal("binding_declaration_parse::dataexpr: evaluation deeper than " +
                      std::to_string(max_value_depth) + " at node " + std::to_string(n.nodeident));
        if (!on_path.insert(&n).second)
            zkc_fatal("binding_declaration_parse::dataexpr: node " + std::to_string(n.nodeident) +
                      " reads itself");
        if (++expanded > budget)
            zkc_fatal("binding_declaration_parse::dataexpr: evaluation table expands beyond " +
                      std::to_string(budget) + " nodes");
        frame f{&n, {}, 0, {}};
        switch (n.nodetype) {
        case evalnodeparse::CONSTANT:
            break;
        case evalnodeparse::LINK:
            f.reads.push_back(n.tableident);
            break;
        case evalnodeparse::METHOD:
            f.reads.assign(n.arguments.begin(), n.arguments.end());
            break;
        case evalnodeparse::PREDEFINED: {
            long op = n.methodident % DataExpr::NbPredefOp;
            if (op < 0 || n.arguments.empty() || (op != DataExpr::SignalVal && n.arguments.size() > 2))
                Compilation::IllegalOperationException("binding_declaration_parse::dataexpr: invalid_operator");
            // A signal value's numbers are variables, not lines.
            if (op != DataExpr::SignalVal) {
                f.reads.assign(n.arguments.begin(), n.arguments.end());
            }
            break;
        }
        default:
            Compilation::IllegalOperationException("binding_declaration_parse::dataexpr: unknown_eval_type");
        }
        path.push_back(std::move(f));
    };

    enter(root);
    while (true) {
        frame& top = path.back();
        if (top.next < top.reads.size()) {
            std::size_t k = top.next++;
            long id = top.reads[k];
            enter(get_evalnode(id));
            continue;
        }
        DataExpr* value = leaf_or_null(*top.node);
        if (value == nullptr)
            value = combine(*top.node, top.args, m);
        on_path.erase(top.node);
        path.pop_back();
        if (path.empty())
            return value;
        path.back().args.push_back(value);
    }
}

// -------------------------------------------------------------- bindings

void binding_declaration_parse::createbinding(Module* m)
{
    Bddexpressionwood* wood = parser->wood;
    SignalManager* manager = m->getSignalManager();
    for (const bindingparse& b : binding_list) {
        SignalRef* ref = manager->getSignalRefById(b.instance_over_ident, wood);
        if (ref == nullptr)
            zkc_fatal("unknown data signal:" + std::to_string(b.instance_over_ident));
        Signal* signal = parser->find_signal(ref->getOriginalName());
        if (signal == nullptr)
            zkc_fatal("unknown data signal:" + ref->getOriginalName());
        DataExpr* value = dataexpr(b.eval_ident, m);
        if (b.signal_over_ident != -1) {
            // Module::getSignalById: the ref's internal name, looked up as
            // getSignal looks up a name.
            SignalRef* clock_ref = manager->getSignalRefById(b.signal_over_ident, wood);
            Signal* clock = clock_ref != nullptr ? parser->find_signal(clock_ref->getInternalName()) : nullptr;
            if (clock != nullptr) {
                clock->setClock();
                m->addSignalBinding(value, signal, clock);
                continue;
            }
        }
        m->addSignalBinding(value, signal);
    }
}
