// Shared pieces of the generators.

#include "targets/formats.h"

#include "data/data.h"
#include "context/messages.h"
#include "wood/Bddexpression.h"

#include <iostream>

namespace formats {

bool absentOver(long id)
{
    return static_cast<unsigned long>(id) >= ~0UL - 1;
}

std::string varName(Module* m, long index)
{
    return m->getBddWood()->Name_var_by_index(index);
}

DataBinding* clockedBinding(Module* m, long index)
{
    if (m->getDataTable() == nullptr || m->getDataTable()->empty())
        return nullptr;
    SignalRef* ref = m->getSignalManager()->getSignalRefById(index, m->getBddWood());
    if (ref == nullptr)
        return nullptr;
    return m->getBinding(ref->getCurrentName());
}

std::string memorisedSource(Module* m, memorizedSignal* pair, const std::string& outputMark)
{
    Signal* actual = pair->getActual();
    if (actual->isLocal())
        return varName(m, actual->getInitialOverBddId(m, m->getBddWood()));
    return (actual->isOutput() ? outputMark : std::string()) + actual->getOriginalName();
}

std::vector<regclass*> registers(Module* m)
{
    std::vector<regclass*> result;
    if (m->getRegisterList() != nullptr)
        for (regclass* r : *m->getRegisterList())
            if (r != nullptr && r->actual_var() != nullptr && r->next_var() != nullptr)
                result.push_back(r);
    return result;
}

std::vector<memorizedSignal*> memorised(Module* m)
{
    std::vector<memorizedSignal*> result;
    if (m->getPreSignalList() != nullptr)
        for (memorizedSignal* pair : *m->getPreSignalList())
            if (pair != nullptr && pair->getPre() != nullptr && pair->getActual() != nullptr)
                result.push_back(pair);
    return result;
}

void putDataTables(Module* m, std::ostream& os)
{
    if (Compilation::GDataTypeTable != nullptr) {
        os << "data type:";
        if (std::map<std::string, int>* types = Compilation::GDataTypeTable->getTypeTable())
            for (const auto& type : *types)
                os << " " << type.first;
    }
    if (Compilation::GDataMethodTable != nullptr) {
        os << std::endl << "methods table:";
        Compilation::GDataMethodTable->C_put(os);
    }
    if (Compilation::GDataConstantTable != nullptr) {
        os << std::endl << "constants table: ";
        if (std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList())
            for (ConstantDecl* c : *constants)
                if (c != nullptr && c->getValueTable() == nullptr)
                    c->DEBUG_put(os, m);
    }
}

void warn(const std::string& text)
{
    fl_show_Smessages(text);
    std::cerr << text << std::endl;
}

void fail(const std::string& text)
{
    fl_show_Smessages(text);
    std::cerr << text << std::endl;
    Compilation::exitFailure(text);
}

} // namespace formats
