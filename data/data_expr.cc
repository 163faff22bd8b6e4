// Value expressions: types, and their text in every target.
#include "data/data.h"
#include "data/data_internal.h"

#include "context/compilation.h"

#include <iostream>

std::string (*DataExpr::moduleName)(Module*) = [](Module*) { return std::string(); };
Signal* (*DataExpr::moduleSignal)(Module*, const std::string&) = [](Module*, const std::string&) -> Signal* {
    return nullptr;
};

const int DataExpr::Plus;
const int DataExpr::Minus;
const int DataExpr::Mult;
const int DataExpr::Div;
const int DataExpr::Uminus;
const int DataExpr::And;
const int DataExpr::Or;
const int DataExpr::Not;
const int DataExpr::Eq;
const int DataExpr::Neq;
const int DataExpr::Inf;
const int DataExpr::Infe;
const int DataExpr::Sup;
const int DataExpr::Supe;
const int DataExpr::SignalVal;
const int DataExpr::NbPredefOp;
const int DataExpr::Indexation;

int DataNesting::depth = 0;

DataNesting::DataNesting()
{
    // Deeper than any expression a module declares: only a cycle or a
    // damaged tree gets here, and the stack must not be the one to stop it.
    if (++depth > MaxDepth)
        Compilation::IllegalOperationException("DataExpr: expression nested too deeply (or cyclic)");
}

// ---------------------------------------------------------- operator texts

namespace {
const char* const kSymbolic[] = {" + ", " - ", " * ", " / ", " -", " && ", " | ",
                                 " !", " == ", " != ", " < ", " <= ", " > ", " >= "};
const char* const kWorded[] = {" + ", " - ", " * ", " / ", " -", " and ", " or ",
                               " not", " = ", " <> ", " < ", " <= ", " > ", " >= "};
const char* const kDebug[] = {" + ", " - ", " * ", " / ", " -", " and ", " or ",
                              " not", " == ", " <> ", " < ", " <= ", " > ", " >= "};

bool known(int op) { return op >= DataExpr::Plus && op <= DataExpr::Supe; }

std::string worded(int op, const char* who)
{
    if (!known(op))
        Compilation::IllegalOperationException(std::string(who) + ": invalid_operator");
    return kWorded[op];
}

bool comparison(int op) { return op >= DataExpr::Eq && op <= DataExpr::Supe; }

bool logical(int op) { return op == DataExpr::And || op == DataExpr::Or; }
} // namespace

// In C an arithmetic or comparing operator is a call of a user function
// named after the operand's type.
std::string DataExpr::C_opname(int op, const std::string& t)
{
    switch (op) {
    case Plus: return " add_" + t;
    case Minus: return " sub_" + t;
    case Mult: return " mult_" + t;
    case Div: return " div_" + t;
    case Uminus: return " neg_" + t;
    case And: return " && ";
    case Or: return " || ";
    case Not: return " !";
    case Eq: return " eq_" + t;
    case Neq: return " neq_" + t;
    case Inf: return " less_" + t;
    case Infe: return " lesseq_" + t;
    case Sup: return " sup_" + t;
    case Supe: return " supeq_" + t;
    }
    Compilation::IllegalOperationException("DataExpr::C_opname: invalid_operator");
}

std::string DataExpr::MOSK_opname(int op)
{
    if (!known(op))
        Compilation::IllegalOperationException("DataExpr::MOSK_opname: invalid_operator");
    return kSymbolic[op];
}

std::string DataExpr::CSharp_opname(int op)
{
    if (!known(op))
        Compilation::IllegalOperationException("DataExpr::CShap_opname: invalid_operator");
    return kSymbolic[op];
}

std::string DataExpr::LUSTRE_opname(int op) { return worded(op, "DataExpr::LUSTRE_opname"); }
std::string DataExpr::ESTEREL_opname(int op) { return worded(op, "DataExpr::ESTEREL_opname"); }
std::string DataExpr::VHDL_opname(int op) { return worded(op, "DataExpr::VHDL_opname"); }

std::string DataExpr::DEBUG_opname(int op)
{
    if (!known(op))
        Compilation::IllegalOperationException("in DataExpr::_opname():" + std::to_string(op) +
                                               " is an invalid_operator");
    return kDebug[op];
}

// ------------------------------------------------------------------ base

DataExpr::DataExpr() : index(-1) {}
DataExpr::DataExpr(std::string type) : type(std::move(type)), index(-1) {}
DataExpr::~DataExpr() = default;

std::string DataExpr::getType(Module* module)
{
    if (type.empty())
        computeType(module);
    return type;
}

std::string DataExpr::getType() { return type; }
void DataExpr::computeType(Module*) { Compilation::AbstractMethodCallException("DataExpr::computeType()"); }
void DataExpr::setIndex(int i) { index = i; }
int DataExpr::getIndex() { return index; }
bool DataExpr::hasIndex() { return index != -1; }
bool DataExpr::isDataValue() { return false; }
bool DataExpr::isDataConstant() { return false; }
bool DataExpr::isDataMethod() { return false; }
bool DataExpr::isDataSignalValue() { return false; }
bool DataExpr::isDataBinaryOp() { return false; }
bool DataExpr::isDataUnaryOp() { return false; }
DataExpr* DataExpr::instanciate(Interface*, std::map<std::string, Signal*>*, Module*) { return duplicate(); }
void DataExpr::applyRenaming(std::map<std::string, std::string>*) {}
DataExpr* DataExpr::duplicate() { return new DataExpr(*this); }
void DataExpr::changeModule(Module*, Module*) {}
std::set<Signal*>* DataExpr::computeDependencySet() { return nullptr; }
void DataExpr::computeValueSignalDependencies(std::set<Signal*>&) {}
void DataExpr::print_debug(std::ostream&) {}

void DataExpr::ZKC_put(std::ostream&, long*, Module*, std::list<DataExpr*>*, int*, int)
{
    Compilation::AbstractMethodCallException("DataExpr::ZKC_put()");
}

void DataExpr::DEBUG_put(std::ostream&, Module*, std::list<DataExpr*>*, int*, int)
{
    Compilation::AbstractMethodCallException("DataExpr::DEBUG_put()");
}

void DataExpr::C_put(std::ostream&, Module*) { Compilation::AbstractMethodCallException("DataExpr::C_put()"); }

void DataExpr::CSharp_put(std::ostream&, Module*)
{
    Compilation::AbstractMethodCallException("DataExpr::CSharp_put()");
}

std::string DataExpr::MOSK_put(Module*, std::map<std::string, std::string>*,
                               const std::function<std::string(const std::string&)>&)
{
    Compilation::AbstractMethodCallException("DataExpr::MOSK_put()");
}

void DataExpr::LUSTRE_put(std::ostream&, Module*)
{
    Compilation::AbstractMethodCallException("DataExpr::LUSTRE_put()");
}

void DataExpr::ESTEREL_put(std::ostream&, Module*)
{
    Compilation::AbstractMethodCallException("DataExpr::ESTEREL_put()");
}

void DataExpr::VHDL_put(std::ostream&, Module*) { Compilation::AbstractMethodCallException("DataExpr::VHDL_put()"); }

void DataExpr::DEBUG_put(std::ostream&, Module*)
{
    Compilation::AbstractMethodCallException("DataExpr::DEBUG_put()");
}

void DataExpr::putReference(std::ostream& os, std::list<DataExpr*>* pending, int* counter)
{
    if (!hasIndex() && counter != nullptr) {
        setIndex((*counter)++);
        if (pending != nullptr)
            pending->push_back(this);
    }
    os << getIndex();
}

// Index of a type among the type lines of a compiled-module file, which
// lists the global table in id order.
static int typeLine(const std::string& t)
{
    return Compilation::GDataTypeTable != nullptr ? Compilation::GDataTypeTable->getIndex(t) : -1;
}

int DataNesting::predefCode(int op, const std::string& t) { return op + DataExpr::NbPredefOp * typeLine(t); }

// -------------------------------------------------------------- constant

DataConstant::DataConstant(int constantIndex) : constantIndex(constantIndex) {}

ConstantDecl* DataConstant::getDecl() const
{
    return Compilation::GDataConstantTable != nullptr ? Compilation::GDataConstantTable->getConstantById(constantIndex)
                                                       : nullptr;
}

std::string DataConstant::declName()
{
    ConstantDecl* decl = getDecl();
    if (decl == nullptr)
        Compilation::ModuleUndefinedConstantException(": constant_table");
    return decl->getName();
}

void DataConstant::computeType(Module* module)
{
    ConstantDecl* decl = getDecl();
    if (decl == nullptr)
        Compilation::ModuleUndefinedConstantException("constant: " + moduleName(module));
    type = decl->getType();
}

void DataConstant::setIndex(int i)
{
    index = i;
    ConstantDecl* decl = getDecl();
    if (decl == nullptr)
        Compilation::ModuleUndefinedConstantException(": constant_table");
    if (decl->getEvalIndex() == -1 || decl->getEvalIndex() == -2)
        decl->setEvalIndex(i);
}

DataExpr* DataConstant::duplicate() { return new DataConstant(*this); }

void DataConstant::print_debug(std::ostream& os)
{
    ConstantDecl* decl = getDecl();
    if (decl != nullptr)
        os << decl->getName();
    else
        os << "$" << constantIndex;
}

void DataConstant::ZKC_put(std::ostream& os, long*, Module*, std::list<DataExpr*>* pending, int* counter, int top)
{
    if (top)
        os << "$" << constantIndex;
    else
        putReference(os, pending, counter);
}

void DataConstant::DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                             int top)
{
    if (top)
        DEBUG_put(os, module);
    else
        putReference(os, pending, counter);
}

void DataConstant::C_put(std::ostream& os, Module*) { os << declName(); }
void DataConstant::CSharp_put(std::ostream& os, Module*) { os << declName(); }
void DataConstant::LUSTRE_put(std::ostream& os, Module*) { os << declName(); }
void DataConstant::ESTEREL_put(std::ostream& os, Module*) { os << declName(); }
void DataConstant::VHDL_put(std::ostream& os, Module*) { os << declName(); }

// The server knows external constants only; one with values is evaluated
// from the value the C code would use.
std::string DataConstant::MOSK_put(Module* module, std::map<std::string, std::string>* values,
                                   const std::function<std::string(const std::string&)>& ask)
{
    ConstantDecl* decl = getDecl();
    if (decl == nullptr)
        return "--";
    DataExpr* value = decl->getValue(TLanguage::C);
    if (value != nullptr) {
        DataNesting nest;
        return value->MOSK_put(module, values, ask);
    }
    return ask("CONST," + decl->getName() + ",");
}

void DataConstant::DEBUG_put(std::ostream& os, Module*)
{
    ConstantDecl* decl = getDecl();
    if (decl == nullptr)
        os << "ERROR: should be a constant declaration ... : " << constantIndex;
    else
        os << "CONSTANT " << "$" << constantIndex << "(" << decl->getName() << ")";
}

// ----------------------------------------------------------------- value

DataValue::DataValue(std::string text, std::string type, ConstantDecl* decl)
    : DataExpr(std::move(type)), decl(decl), text(std::move(text))
{
}

void DataValue::computeType(Module*) { Compilation::UndefinedTypeException(text); }
DataExpr* DataValue::duplicate() { return new DataValue(*this); }

void DataValue::changeModule(Module*, Module*)
{
    if (decl != nullptr && Compilation::GDataConstantTable != nullptr) {
        ConstantDecl* same = Compilation::GDataConstantTable->getConstant(decl->getName());
        if (same != nullptr)
            decl = same;
    }
}

void DataValue::print_debug(std::ostream& os) { os << text; }

void DataValue::ZKC_put(std::ostream& os, long*, Module*, std::list<DataExpr*>* pending, int* counter, int top)
{
    if (top)
        os << "$" << (decl != nullptr ? decl->getConstantIndex() : -1);
    else
        putReference(os, pending, counter);
}

void DataValue::DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter, int top)
{
    if (top)
        DEBUG_put(os, module);
    else
        putReference(os, pending, counter);
}

void DataValue::C_put(std::ostream& os, Module*) { os << text; }
void DataValue::CSharp_put(std::ostream& os, Module*) { os << text; }
void DataValue::LUSTRE_put(std::ostream& os, Module*) { os << text; }
void DataValue::ESTEREL_put(std::ostream& os, Module*) { os << text; }
void DataValue::VHDL_put(std::ostream& os, Module*) { os << text; }

std::string DataValue::MOSK_put(Module*, std::map<std::string, std::string>*,
                                const std::function<std::string(const std::string&)>&)
{
    return text;
}

void DataValue::DEBUG_put(std::ostream& os, Module*)
{
    os << "number:" << index << " (value=\"" << text << "\")";
}

// ----------------------------------------------------------- method call

DataMethodCall::DataMethodCall(int methodIndex, std::list<DataExpr*>* arguments)
    : methodIndex(methodIndex), arguments(arguments)
{
}

MethodDecl* DataMethodCall::requireDecl()
{
    MethodDecl* decl = Compilation::GDataMethodTable != nullptr
                           ? Compilation::GDataMethodTable->getMethodById(methodIndex)
                           : nullptr;
    if (decl == nullptr)
        Compilation::UndefinedMethodException("method");
    return decl;
}

void DataMethodCall::computeType(Module*) { type = requireDecl()->getReturnType(); }

DataExpr* DataMethodCall::instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module)
{
    DataNesting nest;
    std::list<DataExpr*>* args = nullptr;
    if (arguments != nullptr) {
        args = new std::list<DataExpr*>;
        for (DataExpr* a : *arguments)
            args->push_back(a != nullptr ? a->instanciate(itf, signals, module) : nullptr);
    }
    auto* copy = new DataMethodCall(methodIndex, args);
    copy->type = type;
    return copy;
}

void DataMethodCall::applyRenaming(std::map<std::string, std::string>* renaming)
{
    DataNesting nest;
    if (arguments != nullptr)
        for (DataExpr* a : *arguments)
            if (a != nullptr)
                a->applyRenaming(renaming);
}

DataExpr* DataMethodCall::duplicate()
{
    DataNesting nest;
    auto* copy = new DataMethodCall(*this);
    if (arguments != nullptr) {
        copy->arguments = new std::list<DataExpr*>;
        for (DataExpr* a : *arguments)
            copy->arguments->push_back(a != nullptr ? a->duplicate() : nullptr);
    }
    return copy;
}

void DataMethodCall::changeModule(Module* from, Module* to)
{
    DataNesting nest;
    if (arguments != nullptr)
        for (DataExpr* a : *arguments)
            if (a != nullptr)
                a->changeModule(from, to);
}

std::set<Signal*>* DataMethodCall::computeDependencySet()
{
    DataNesting nest;
    std::set<Signal*>* all = nullptr;
    if (arguments == nullptr)
        return nullptr;
    for (DataExpr* a : *arguments) {
        std::set<Signal*>* some = a != nullptr ? a->computeDependencySet() : nullptr;
        if (all == nullptr)
            all = some;
        else if (some != nullptr) {
            all->insert(some->begin(), some->end());
            delete some;
        }
    }
    return all;
}

void DataMethodCall::computeValueSignalDependencies(std::set<Signal*>& signals)
{
    DataNesting nest;
    if (arguments != nullptr)
        for (DataExpr* a : *arguments)
            if (a != nullptr)
                a->computeValueSignalDependencies(signals);
}

void DataMethodCall::putCall(std::ostream& os, const std::function<void(DataExpr*)>& put)
{
    DataNesting nest;
    os << requireDecl()->getName() << "(";
    if (arguments != nullptr) {
        bool first = true;
        for (DataExpr* a : *arguments) {
            if (!first)
                os << ", ";
            if (a != nullptr)
                put(a);
            first = false;
        }
    }
    os << ")";
}

void DataMethodCall::print_debug(std::ostream& os)
{
    putCall(os, [&](DataExpr* a) { a->print_debug(os); });
}

void DataMethodCall::ZKC_put(std::ostream& os, long*, Module*, std::list<DataExpr*>* pending, int* counter,
                             int top)
{
    if (!top) {
        putReference(os, pending, counter);
        return;
    }
    os << "%" << methodIndex << "(";
    if (arguments != nullptr) {
        bool first = true;
        for (DataExpr* a : *arguments) {
            if (!first)
                os << ", ";
            if (a != nullptr)
                a->ZKC_put(os, nullptr, nullptr, pending, counter, 0);
            first = false;
        }
    }
    os << ")";
}

void DataMethodCall::DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                               int top)
{
    if (!top)
        putReference(os, pending, counter);
    else
        putCall(os, [&](DataExpr* a) { a->DEBUG_put(os, module, pending, counter, 0); });
}

void DataMethodCall::C_put(std::ostream& os, Module* module)
{
    putCall(os, [&](DataExpr* a) { a->C_put(os, module); });
}

void DataMethodCall::CSharp_put(std::ostream& os, Module* module)
{
    putCall(os, [&](DataExpr* a) { a->CSharp_put(os, module); });
}

void DataMethodCall::LUSTRE_put(std::ostream& os, Module* module)
{
    putCall(os, [&](DataExpr* a) { a->LUSTRE_put(os, module); });
}

void DataMethodCall::ESTEREL_put(std::ostream& os, Module* module)
{
    putCall(os, [&](DataExpr* a) { a->ESTEREL_put(os, module); });
}

void DataMethodCall::VHDL_put(std::ostream& os, Module* module)
{
    putCall(os, [&](DataExpr* a) { a->VHDL_put(os, module); });
}

void DataMethodCall::DEBUG_put(std::ostream& os, Module* module)
{
    putCall(os, [&](DataExpr* a) { a->DEBUG_put(os, module); });
}

std::string DataMethodCall::MOSK_put(Module* module, std::map<std::string, std::string>* values,
                                     const std::function<std::string(const std::string&)>& ask)
{
    DataNesting nest;
    std::string request = "MC," + requireDecl()->getName() + ",";
    if (arguments != nullptr)
        for (DataExpr* a : *arguments)
            request += (a != nullptr ? a->MOSK_put(module, values, ask) : std::string("--")) + ",";
    return ask(request);
}

// ------------------------------------------------------------ binary op

DataBinaryOp::DataBinaryOp(int op, DataExpr* left, DataExpr* right) : op(op), left(left), right(right) {}

// A mismatch is not fatal: it only shows in the type, and since the type
// is kept, it is reported once.
void DataBinaryOp::computeType(Module* module)
{
    DataNesting nest;
    std::string l = left != nullptr ? left->getType(module) : std::string();
    std::string r = right != nullptr ? right->getType(module) : std::string();
    if (l != r) {
        std::cerr << "*** Type check error in binary operator: " << "type: \"" << l << "\" differs from type: \""
                  << r << "\" --> return \"?type_error?\"" << std::endl;
        type = "?type_error?";
    } else
        type = l;
}

DataExpr* DataBinaryOp::instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module)
{
    DataNesting nest;
    DataExpr* l = left != nullptr ? left->instanciate(itf, signals, module) : nullptr;
    DataExpr* r = right != nullptr ? right->instanciate(itf, signals, module) : nullptr;
    auto* copy = new DataBinaryOp(op, l, r);
    copy->type = type;
    return copy;
}

void DataBinaryOp::applyRenaming(std::map<std::string, std::string>* renaming)
{
    DataNesting nest;
    if (left != nullptr)
        left->applyRenaming(renaming);
    if (right != nullptr)
        right->applyRenaming(renaming);
}

DataExpr* DataBinaryOp::duplicate()
{
    DataNesting nest;
    auto* copy = new DataBinaryOp(*this);
    copy->left = left != nullptr ? left->duplicate() : nullptr;
    copy->right = right != nullptr ? right->duplicate() : nullptr;
    return copy;
}

void DataBinaryOp::changeModule(Module* from, Module* to)
{
    DataNesting nest;
    if (left != nullptr)
        left->changeModule(from, to);
    if (right != nullptr)
        right->changeModule(from, to);
}

std::set<Signal*>* DataBinaryOp::computeDependencySet()
{
    DataNesting nest;
    std::set<Signal*>* l = left != nullptr ? left->computeDependencySet() : nullptr;
    std::set<Signal*>* r = right != nullptr ? right->computeDependencySet() : nullptr;
    if (l == nullptr)
        return r;
    if (r != nullptr) {
        l->insert(r->begin(), r->end());
        delete r;
    }
    return l;
}

void DataBinaryOp::computeValueSignalDependencies(std::set<Signal*>& signals)
{
    DataNesting nest;
    if (left != nullptr)
        left->computeValueSignalDependencies(signals);
    if (right != nullptr)
        right->computeValueSignalDependencies(signals);
}

void DataBinaryOp::print_debug(std::ostream& os)
{
    DataNesting nest;
    os << "(";
    if (left != nullptr)
        left->print_debug(os);
    os << DEBUG_opname(op);
    if (right != nullptr)
        right->print_debug(os);
    os << ")";
}

void DataBinaryOp::ZKC_put(std::ostream& os, long*, Module* module, std::list<DataExpr*>* pending, int* counter,
                           int top)
{
    if (!top) {
        putReference(os, pending, counter);
        return;
    }
    os << "%%" << DataNesting::predefCode(op, getType(module)) << "(";
    if (left != nullptr)
        left->ZKC_put(os, nullptr, module, pending, counter, 0);
    os << ", ";
    if (right != nullptr)
        right->ZKC_put(os, nullptr, module, pending, counter, 0);
    os << ")";
}

void DataBinaryOp::DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                             int top)
{
    if (!top) {
        putReference(os, pending, counter);
        return;
    }
    std::string name = DEBUG_opname(op);
    if (logical(op)) {
        if (left != nullptr)
            left->DEBUG_put(os, module, pending, counter, 0);
        os << name;
        if (right != nullptr)
            right->DEBUG_put(os, module, pending, counter, 0);
    } else {
        os << name << "(";
        if (left != nullptr)
            left->DEBUG_put(os, module, pending, counter, 0);
        os << ",";
        if (right != nullptr)
            right->DEBUG_put(os, module, pending, counter, 0);
        os << ")";
    }
}

// And and Or are C's own operators; everything else calls the user's
// function of the left operand's type, op(left,right).
void DataBinaryOp::C_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    std::string t = left != nullptr ? left->getType(module) : std::string();
    std::string name = C_opname(op, t);
    if (logical(op)) {
        if (left != nullptr)
            left->C_put(os, module);
        os << name;
        if (right != nullptr)
            right->C_put(os, module);
    } else {
        os << name << "(";
        if (left != nullptr)
            left->C_put(os, module);
        os << ",";
        if (right != nullptr)
            right->C_put(os, module);
        os << ")";
    }
}

// "(" left op right ")": the form of every target but C.
static void putInfix(std::ostream& os, Module* module, DataExpr* left, const std::string& name, DataExpr* right,
                     void (DataExpr::*form)(std::ostream&, Module*))
{
    os << "(";
    if (left != nullptr)
        (left->*form)(os, module);
    os << name;
    if (right != nullptr)
        (right->*form)(os, module);
    os << ")";
}

void DataBinaryOp::CSharp_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putInfix(os, module, left, CSharp_opname(op), right, &DataExpr::CSharp_put);
}

void DataBinaryOp::LUSTRE_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putInfix(os, module, left, LUSTRE_opname(op), right, &DataExpr::LUSTRE_put);
}

void DataBinaryOp::ESTEREL_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putInfix(os, module, left, ESTEREL_opname(op), right, &DataExpr::ESTEREL_put);
}

// A comparison becomes a bit, "'1' when (...) else '0'": as an operand of
// another operator that is not legal VHDL, and it is written so all the
// same.
void DataBinaryOp::VHDL_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    std::string name = VHDL_opname(op);
    if (comparison(op))
        os << "'1' when ";
    putInfix(os, module, left, name, right, &DataExpr::VHDL_put);
    if (comparison(op))
        os << " else '0'";
}

void DataBinaryOp::DEBUG_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    std::string name = DEBUG_opname(op);
    if (logical(op)) {
        if (left != nullptr)
            left->DEBUG_put(os, module);
        os << name;
        if (right != nullptr)
            right->DEBUG_put(os, module);
    } else {
        os << name << "(";
        if (left != nullptr)
            left->DEBUG_put(os, module);
        os << ",";
        if (right != nullptr)
            right->DEBUG_put(os, module);
        os << ")";
    }
}

// Operands first, left before right: each is a request of its own.
std::string DataBinaryOp::MOSK_put(Module* module, std::map<std::string, std::string>* values,
                                   const std::function<std::string(const std::string&)>& ask)
{
    DataNesting nest;
    std::string name = MOSK_opname(op);
    std::string lv = left != nullptr ? left->MOSK_put(module, values, ask) : std::string("--");
    std::string lt = left != nullptr ? left->getType(module) : std::string();
    std::string rv = right != nullptr ? right->MOSK_put(module, values, ask) : std::string("--");
    std::string rt = right != nullptr ? right->getType(module) : std::string();
    return ask("BOP," + lv + "," + lt + "," + name + "," + rv + "," + rt + ",");
}

// ------------------------------------------------------------- unary op

DataUnaryOp::DataUnaryOp(int op, DataExpr* operand) : op(op), operand(operand) {}

void DataUnaryOp::computeType(Module* module)
{
    DataNesting nest;
    if (operand != nullptr)
        type = operand->getType(module);
}

DataExpr* DataUnaryOp::instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module)
{
    DataNesting nest;
    auto* copy = new DataUnaryOp(op, operand != nullptr ? operand->instanciate(itf, signals, module) : nullptr);
    copy->type = type;
    return copy;
}

void DataUnaryOp::applyRenaming(std::map<std::string, std::string>* renaming)
{
    DataNesting nest;
    if (operand != nullptr)
        operand->applyRenaming(renaming);
}

DataExpr* DataUnaryOp::duplicate()
{
    DataNesting nest;
    auto* copy = new DataUnaryOp(*this);
    copy->operand = operand != nullptr ? operand->duplicate() : nullptr;
    return copy;
}

void DataUnaryOp::changeModule(Module* from, Module* to)
{
    DataNesting nest;
    if (operand != nullptr)
        operand->changeModule(from, to);
}

std::set<Signal*>* DataUnaryOp::computeDependencySet()
{
    DataNesting nest;
    return operand != nullptr ? operand->computeDependencySet() : nullptr;
}

void DataUnaryOp::computeValueSignalDependencies(std::set<Signal*>& signals)
{
    DataNesting nest;
    if (operand != nullptr)
        operand->computeValueSignalDependencies(signals);
}

void DataUnaryOp::print_debug(std::ostream& os)
{
    DataNesting nest;
    os << DEBUG_opname(op);
    if (operand != nullptr)
        operand->print_debug(os);
}

void DataUnaryOp::ZKC_put(std::ostream& os, long*, Module* module, std::list<DataExpr*>* pending, int* counter,
                          int top)
{
    if (!top) {
        putReference(os, pending, counter);
        return;
    }
    os << "%%" << DataNesting::predefCode(op, getType(module)) << "(";
    if (operand != nullptr)
        operand->ZKC_put(os, nullptr, module, pending, counter, 0);
    os << ")";
}

void DataUnaryOp::DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                            int top)
{
    if (!top) {
        putReference(os, pending, counter);
        return;
    }
    os << DEBUG_opname(op) << "(";
    if (operand != nullptr)
        operand->DEBUG_put(os, module, pending, counter, 0);
    os << ")";
}

// " neg_T(x)" and " !(x)": the blank in front belongs to the name.
void DataUnaryOp::C_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    std::string t = operand != nullptr ? operand->getType(module) : std::string();
    os << C_opname(op, t) << "(";
    if (operand != nullptr)
        operand->C_put(os, module);
    os << ")";
}

// op operand, with no parentheses: the form of every target but C.
static void putPrefix(std::ostream& os, Module* module, const std::string& name, DataExpr* operand,
                      void (DataExpr::*form)(std::ostream&, Module*))
{
    os << name;
    if (operand != nullptr)
        (operand->*form)(os, module);
}

void DataUnaryOp::CSharp_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putPrefix(os, module, CSharp_opname(op), operand, &DataExpr::CSharp_put);
}

void DataUnaryOp::LUSTRE_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putPrefix(os, module, LUSTRE_opname(op), operand, &DataExpr::LUSTRE_put);
}

void DataUnaryOp::ESTEREL_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putPrefix(os, module, ESTEREL_opname(op), operand, &DataExpr::ESTEREL_put);
}

void DataUnaryOp::VHDL_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    putPrefix(os, module, VHDL_opname(op), operand, &DataExpr::VHDL_put);
}

void DataUnaryOp::DEBUG_put(std::ostream& os, Module* module)
{
    DataNesting nest;
    os << DEBUG_opname(op) << "(";
    if (operand != nullptr)
        operand->DEBUG_put(os, module);
    os << ")";
}

std::string DataUnaryOp::MOSK_put(Module* module, std::map<std::string, std::string>* values,
                                  const std::function<std::string(const std::string&)>& ask)
{
    DataNesting nest;
    std::string name = MOSK_opname(op);
    std::string v = operand != nullptr ? operand->MOSK_put(module, values, ask) : std::string("--");
    std::string t = operand != nullptr ? operand->getType(module) : std::string();
    return ask("UOP," + name + "," + v + "," + t + ",");
}
