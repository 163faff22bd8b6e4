// Semantic actions of the ZK grammar: the data part into the global data
// tables, each module's declarations into its signal lists, and the leaves
// of conditions and value expressions.

#include "source/zk_parser.h"

#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "source/equationtable.h"
#include "source/expression.h"
#include "source/automaton.h"
#include "source/run.h"
#include "source/statement.h"
#include "source/zk_scanner.h"
#include "wood/Bddexpression.h"

#include <iostream>
#include <set>
#include <vector>

class_zk_parser* pzk_parser = nullptr;

class_zk_parser::class_zk_parser()
{
    pzk_parser = this;
    Compilation::ple_parser = this;
    install_expression_constructors();
}

int class_zk_parser::parse()
{
    pzk_parser = this;
    return zkparse();
}

int class_zk_parser::lineno() const { return scanner != nullptr ? scanner->lineno() : 0; }

int zklex() { return pzk_parser != nullptr && pzk_parser->scanner != nullptr ? pzk_parser->scanner->yylex() : 0; }

void zkerror(const char* text)
{
    int line = pzk_parser != nullptr ? pzk_parser->lineno() : 0;
    std::cerr << "PARSE ERROR at line " << line << ": " << text << std::endl;
}

void class_zk_parser::error(const std::string& text)
{
    Compilation::fatal("PARSE ERROR at line " + std::to_string(lineno()) + ": " + text + "\nAbortion ...");
}

// ---------------------------------------------------------------- data part

static DataTypeTable* types()
{
    if (Compilation::GDataTypeTable == nullptr)
        Compilation::GDataTypeTable = new DataTypeTable();
    return Compilation::GDataTypeTable;
}

static DataMethodTable* methods()
{
    if (Compilation::GDataMethodTable == nullptr)
        Compilation::GDataMethodTable = new DataMethodTable();
    return Compilation::GDataMethodTable;
}

static DataConstantTable* constants()
{
    if (Compilation::GDataConstantTable == nullptr)
        Compilation::GDataConstantTable = new DataConstantTable();
    return Compilation::GDataConstantTable;
}

void class_zk_parser::type_line(const std::string& name)
{
    if (types()->isDefined(name))
        error("type \"" + name + "\" declared twice");
    types()->addType(name);
}

void class_zk_parser::method_line(const std::string& returnType, const std::string& name,
                                  std::list<std::string>* argTypes)
{
    for (const std::string& t : *argTypes)
        if (!types()->isDefined(t))
            error("type \"" + t + "\" of an argument of method \"" + name + "\" is not declared");
    if (!types()->isDefined(returnType))
        error("type \"" + returnType + "\" of method \"" + name + "\" is not declared");
    methods()->addMethod(new MethodDecl(new std::string(returnType), new std::string(name), argTypes));
}

void class_zk_parser::constant_head(const std::string& type, const std::string& name)
{
    constant_type = type;
    constant_name = name;
}

static const char* languageName(int language)
{
    switch (language) {
    case TLanguage::VHDL: return "vhdl";
    case TLanguage::C: return "c";
    case TLanguage::CSHARP: return "csharp";
    case TLanguage::SMV: return "nusmv";
    case TLanguage::LUSTRE: return "lustre";
    case TLanguage::ESTEREL: return "esterel";
    default: return "default";
    }
}

void class_zk_parser::constant_assignment(std::map<int, DataExpr*>& values, int language, DataExpr* value)
{
    if (values.count(language) != 0)
        error(std::string("****error:constant: ") + constant_name + " has already a value for: " +
              languageName(language));
    values[language] = value;
}

void class_zk_parser::constant_line(std::map<int, DataExpr*>* values)
{
    if (!types()->isDefined(constant_type))
        error("type \"" + constant_type + "\" of constant \"" + constant_name + "\" is not declared");
    auto* decl = new ConstantDecl(constant_type, constant_name);
    if (values != nullptr) {
        for (auto& entry : *values) {
            // A compiled module carries a constant's values as literals.
            if (!entry.second->isDataValue())
                error("the value of constant \"" + constant_name + "\" is not a number, a real or a string");
            auto* v = static_cast<DataValue*>(entry.second);
            v->setType(constant_type);
            v->setConstDecl(decl);
        }
        decl->setValueTable(values);
    }
    constants()->addConstant(decl);
}

// ---------------------------------------------------------------- modules

void class_zk_parser::begin_module(const std::string& name)
{
    for (Module* m : modules)
        if (m->getName() == name)
            error("module \"" + name + "\" defined twice");
    module = new Module(name);
    module->setCompilation(new EquationTable(name, module->getBddWood()));
    modules.push_back(module);
    Statement::resetNumbers();
}

void class_zk_parser::end_module(Statement* body) { module->setStatement(body); }

// A user name must not meet a name the compiler or the finaliser makes for
// the module itself.
void class_zk_parser::check_new_name(const std::string& name)
{
    if (module->getSignal(name) != nullptr)
        error("signal \"" + name + "\" declared twice in module \"" + module->getName() + "\"");
    const std::string& m = module->getName();
    for (const std::string& reserved : {Compilation::createSETName(m), Compilation::createRESETName(m),
                                        Compilation::createRTLName(m), m + "_boot", m + "bootplus"})
        if (name == reserved)
            error("signal name \"" + name + "\" is reserved in module \"" + m + "\"");
}

Signal* class_zk_parser::new_signal(const std::string& name, const std::string* type)
{
    check_new_name(name);
    auto* s = new Signal(name, module, module->getBddWood());
    if (type != nullptr)
        s->setValueType(*type, module);
    return s;
}

void class_zk_parser::declare_input(const std::string& name, const std::string* type)
{
    Signal* s = new_signal(name, type);
    s->setInput();
    module->addInputSignal(s);
}

void class_zk_parser::declare_output(const std::string& name, const std::string* type)
{
    Signal* s = new_signal(name, type);
    s->setOutput();
    module->addOutputSignal(s);
}

void class_zk_parser::declare_local(const std::string& name, const std::string* type)
{
    Signal* s = new_signal(name, type);
    s->setLocal();
    module->addLocalSignal(s);
}

// The pre signal is in no list: it is found through its memorised pair.
void class_zk_parser::declare_pre(const std::string& pre, const std::string& actual, const std::string* initial)
{
    Signal* a = module->getSignal(actual);
    if (a == nullptr || a->isPre())
        error("pre signal \"" + pre + "\" of the undeclared signal \"" + actual + "\"");
    Signal* p = new_signal(pre, nullptr);
    p->setPre();
    p->setInput();
    std::string value;
    if (a->isValued(module)) {
        std::string type = a->getValueType(module);
        p->setValueType(type, module);
        value = "zero_" + type;
        if (initial != nullptr) {
            ConstantDecl* c = constants()->getConstant(*initial);
            if (c == nullptr)
                error("initial value \"" + *initial + "\" of pre signal \"" + pre + "\" is no constant");
            if (c->getType() != type)
                error("initial value \"" + *initial + "\" of pre signal \"" + pre + "\" is of type \"" +
                      c->getType() + "\", not \"" + type + "\"");
            value = *initial;
        }
    } else if (initial != nullptr) {
        error("pre signal \"" + pre + "\" of the pure signal \"" + actual + "\" takes no initial value");
    }
    module->addPreSignal(p, a, value);
}

void class_zk_parser::run_declaration(const std::string& instance, const std::string& file, const std::string& name)
{
    for (const RunDeclaration& d : Run::declarations(module))
        if (d.instance == instance)
            error("instance \"" + instance + "\" declared twice in module \"" + module->getName() + "\"");
    Run::declare(module, {instance, file, name});
}

// ----------------------------------------------------------- Mealy machines

void class_zk_parser::mealy_register(const std::string& actual, long initial, const std::string& next)
{
    if (initial != 0 && initial != 1)
        error("register \"" + actual + "\" starts at 0 or 1, not " + std::to_string(initial));
    for (const std::string& name : {actual, next}) {
        check_new_name(name);
        for (const mealy_register_decl& r : mealy_registers)
            if (r.actual->getOriginalName() == name || r.next->getOriginalName() == name)
                error("register name \"" + name + "\" declared twice");
    }
    if (actual == next)
        error("register \"" + actual + "\" is its own next value");
    // Made now, so that right parts read them; listed when the machine
    // compiles, after the module's own signals have their equations.
    Signal* a = new Signal(actual, module, module->getBddWood(), true);
    Signal* n = new Signal(next, module, module->getBddWood(), true);
    mealy_registers.push_back({a, n, static_cast<int>(initial)});
}

Expression* class_zk_parser::mealy_operand(const std::string& name)
{
    for (const mealy_register_decl& r : mealy_registers) {
        if (r.actual->getOriginalName() == name)
            return r.actual;
        if (r.next->getOriginalName() == name)
            return r.next;
    }
    return condition_signal(name);
}

void class_zk_parser::mealy_equation(const std::string& left, DataExpr* value, Expression* right)
{
    for (const mealy_equation_decl& e : mealy_equations) {
        std::string defined = e.left != nullptr ? e.left->getOriginalName()
                                                : static_cast<Emit*>(e.emission)->getSignalName();
        if (defined == left)
            error("\"" + left + "\" defined twice in the Mealy machine");
    }
    for (const mealy_register_decl& r : mealy_registers) {
        if (r.actual->getOriginalName() == left)
            error("register \"" + left + "\" takes its value from \"" + r.next->getOriginalName() + "\"");
        if (r.next->getOriginalName() == left) {
            if (value != nullptr)
                error("the next value \"" + left + "\" of a register takes no data value");
            mealy_equations.push_back({r.next, nullptr, right});
            return;
        }
    }
    // The checks of an emission come with the statement's.
    mealy_equations.push_back({nullptr, new Emit(module, left, value), right});
}

Statement* class_zk_parser::mealy_machine()
{
    std::vector<MealyMachine::Register> registers;
    for (const mealy_register_decl& r : mealy_registers) {
        bool given = false;
        for (const mealy_equation_decl& e : mealy_equations)
            given = given || e.left == r.next;
        if (!given)
            error("no equation gives \"" + r.next->getOriginalName() + "\", the next value of register \"" +
                  r.actual->getOriginalName() + "\"");
        registers.push_back({r.actual, r.next, r.initial});
    }
    std::vector<MealyMachine::Equation> equations;
    for (const mealy_equation_decl& e : mealy_equations)
        equations.push_back({e.left, static_cast<Emit*>(e.emission), e.right});
    mealy_registers.clear();
    mealy_equations.clear();
    return new MealyMachine(module, std::move(registers), std::move(equations));
}

// ------------------------------------------------------------- expressions

Expression* class_zk_parser::condition_signal(const std::string& name)
{
    Signal* s = module != nullptr ? module->getSignal(name) : nullptr;
    if (s == nullptr)
        error("undeclared signal \"" + name + "\" in module \"" + (module != nullptr ? module->getName() : "") +
              "\"");
    return s;
}

DataExpr* class_zk_parser::literal(const std::string& text) { return new DataValue(text, ""); }

DataExpr* class_zk_parser::constant(const std::string& name)
{
    ConstantDecl* c = Compilation::GDataConstantTable != nullptr ? constants()->getConstant(name) : nullptr;
    if (c == nullptr)
        error("undefined constant \"" + name + "\"");
    return new DataConstant(c->getConstantIndex());
}

DataExpr* class_zk_parser::method_call(const std::string& name, std::list<DataExpr*>* arguments)
{
    MethodDecl* decl = Compilation::GDataMethodTable != nullptr ? methods()->getMethod(name) : nullptr;
    if (decl == nullptr)
        error("undefined method \"" + name + "\"");
    std::size_t expected = decl->getArgTypeList() != nullptr ? decl->getArgTypeList()->size() : 0;
    std::size_t given = arguments != nullptr ? arguments->size() : 0;
    if (expected != given)
        error("method \"" + name + "\" takes " + std::to_string(expected) + " arguments, not " +
              std::to_string(given));
    auto* call = new DataMethodCall(decl->getIndex(), arguments);
    const void* deepest = nullptr;
    if (arguments != nullptr)
        for (DataExpr* a : *arguments)
            if (deepest == nullptr || depth_of(a) > depth_of(deepest))
                deepest = a;
    return nest(call, {deepest});
}

DataExpr* class_zk_parser::binary(int op, DataExpr* left, DataExpr* right)
{
    return nest(new DataBinaryOp(op, left, right), {left, right});
}

DataExpr* class_zk_parser::unary(int op, DataExpr* operand) { return nest(new DataUnaryOp(op, operand), {operand}); }

DataExpr* class_zk_parser::signal_value(const std::string& name)
{
    if (module == nullptr)
        error("value of signal \"" + name + "\" outside a module");
    Signal* s = module->getSignal(name);
    if (s == nullptr)
        error("undeclared signal \"" + name + "\" in module \"" + module->getName() + "\"");
    if (!s->isValued(module))
        error("value of the pure signal \"" + name + "\"");
    return new DataSignalValue(s);
}

long class_zk_parser::count(long n)
{
    if (n > max_count)
        error("count " + std::to_string(n) + " above " + std::to_string(max_count));
    return n;
}
