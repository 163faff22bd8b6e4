#include "source/data_values.h"

#include "data/data.h"
#include "context/compilation.h"

#include <map>

std::string known_type(DataExpr* e, Module* m)
{
    if (e == nullptr)
        return "";
    if (e->isDataValue())
        return e->getType();
    if (e->isDataBinaryOp()) {
        auto* op = static_cast<DataBinaryOp*>(e);
        std::string t = known_type(op->getLeft(), m);
        return t.empty() ? known_type(op->getRight(), m) : t;
    }
    if (e->isDataUnaryOp())
        return known_type(static_cast<DataUnaryOp*>(e)->getOperand(), m);
    return e->getType(m);
}

// A fresh constant "lit_<n>" for one literal.
static void make_constant(DataValue* v)
{
    if (Compilation::GDataConstantTable == nullptr)
        Compilation::GDataConstantTable = new DataConstantTable();
    DataConstantTable* table = Compilation::GDataConstantTable;
    std::string name;
    for (int n = static_cast<int>(table->getConstantList()->size());; n++) {
        name = "lit_" + std::to_string(n);
        if (!table->isAlreadyDefined(name))
            break;
    }
    auto* decl = new ConstantDecl(v->getType(), name);
    auto* values = new std::map<int, DataExpr*>;
    (*values)[TLanguage::DEFAULT] = new DataValue(v->getText(), v->getType(), decl);
    decl->setValueTable(values);
    table->addConstant(decl);
    v->setConstDecl(decl);
}

void settle_literals(DataExpr* e, const std::string& type, Module* m)
{
    if (e == nullptr)
        return;
    if (e->isDataValue()) {
        auto* v = static_cast<DataValue*>(e);
        if (v->getType().empty())
            v->setType(type);
        if (v->getConstDecl() == nullptr)
            make_constant(v);
        return;
    }
    if (e->isDataBinaryOp()) {
        auto* op = static_cast<DataBinaryOp*>(e);
        std::string t = known_type(op, m);
        if (t.empty())
            t = type;
        settle_literals(op->getLeft(), t, m);
        settle_literals(op->getRight(), t, m);
        return;
    }
    if (e->isDataUnaryOp()) {
        settle_literals(static_cast<DataUnaryOp*>(e)->getOperand(), type, m);
        return;
    }
    if (e->isDataMethod()) {
        auto* call = static_cast<DataMethodCall*>(e);
        MethodDecl* decl = Compilation::GDataMethodTable != nullptr
                               ? Compilation::GDataMethodTable->getMethodById(call->getMethodIndex())
                               : nullptr;
        std::list<std::string>* types = decl != nullptr ? decl->getArgTypeList() : nullptr;
        if (call->getArguments() == nullptr)
            return;
        auto t = types != nullptr ? types->begin() : std::list<std::string>::iterator();
        for (DataExpr* a : *call->getArguments()) {
            std::string at = types != nullptr && t != types->end() ? *t++ : type;
            settle_literals(a, at, m);
        }
    }
}
