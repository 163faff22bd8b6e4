// The three declaration tables: types, methods and constants, with the
// texts each target gives them.
#include "data/data.h"

#include "context/compilation.h"
#include "context/messages.h"

#include <cstdlib>
#include <iostream>

// Out-of-class definitions, so that the codes can be bound to references
// (map keys, std::pair) without a link error.
const int TLanguage::VHDL;
const int TLanguage::C;
const int TLanguage::CSHARP;
const int TLanguage::SMV;
const int TLanguage::LUSTRE;
const int TLanguage::ESTEREL;
const int TLanguage::DEFAULT;

std::string zero_lustre(const std::string& type)
{
    if (type == "bool")
        return "false";
    if (type == "int")
        return "0";
    if (type == "real")
        return "0.0";
    return "zero_" + type;
}

std::string zero_vhdl(const std::string& type)
{
    if (type == "std_logic" || type == "bit")
        return "false";
    if (type == "int")
        return "0";
    if (type == "real")
        return "0.0";
    return "zero_" + type;
}

// ---------------------------------------------------------------- types

DataTypeTable::DataTypeTable() : typeTable(new std::map<std::string, int>) {}

void DataTypeTable::addType(const std::string& name)
{
    if (typeTable->count(name) != 0)
        return;
    int id = static_cast<int>(typeTable->size());
    (*typeTable)[name] = id;
    if (namesById.size() <= static_cast<size_t>(id))
        namesById.resize(id + 1);
    namesById[id] = name;
}

bool DataTypeTable::isDefined(const std::string& name) const { return typeTable->count(name) != 0; }

int DataTypeTable::getIndex(const std::string& name) const
{
    auto it = typeTable->find(name);
    return it == typeTable->end() ? -1 : it->second;
}

std::string DataTypeTable::getTypeById(int id) const
{
    if (id >= 0 && static_cast<size_t>(id) < namesById.size()) {
        auto it = typeTable->find(namesById[id]);
        if (it != typeTable->end() && it->second == id)
            return it->first;
    }
    // Entered through the map itself: the first name of that id.
    for (const auto& entry : *typeTable)
        if (entry.second == id)
            return entry.first;
    return "undefined";
}

void DataTypeTable::print(std::ostream& os, bool numbered) const
{
    os << "type:" << std::endl;
    int n = static_cast<int>(typeTable->size());
    for (int id = 0; id < n; id++) {
        os << "   ";
        if (numbered)
            os << id << ": ";
        os << getTypeById(id) << ";" << std::endl;
    }
    os << std::endl;
}

// The three declaration lists run on with no line end between entries.
void DataTypeTable::C_put(std::ostream& os) const
{
    for (const auto& entry : *typeTable)
        os << "extern const " << entry.first << " zero_" << entry.first << ";";
}

void DataTypeTable::CSharp_put(std::ostream& os) const
{
    for (const auto& entry : *typeTable)
        os << "public const " << entry.first << " zero_" << entry.first << ";";
}

void DataTypeTable::LUSTRE_put(std::ostream& os) const
{
    for (const auto& entry : *typeTable)
        os << "const " << entry.first << " " << zero_lustre(entry.first) << ";";
}

// -------------------------------------------------------------- methods

unsigned long MethodDecl::indexEpoch = 0;

MethodDecl::MethodDecl(std::string* returnType, std::string* name, std::list<std::string>* argTypes)
    : returnType(returnType != nullptr ? *returnType : std::string()),
      name(name != nullptr ? *name : std::string()), argTypes(argTypes), index(-1)
{
}

void MethodDecl::setIndex(int i)
{
    index = i;
    indexEpoch++;
}

bool MethodDecl::operator==(const MethodDecl& other) const
{
    return index == other.index && name == other.name && argTypes == other.argTypes;
}

bool MethodDecl::operator!=(const MethodDecl& other) const { return !(*this == other); }

static void putTypes(std::ostream& os, std::list<std::string>* types)
{
    if (types == nullptr)
        return;
    bool first = true;
    for (const std::string& t : *types) {
        if (!first)
            os << ", ";
        os << t;
        first = false;
    }
}

void MethodDecl::print(std::ostream& os) const
{
    os << returnType << " " << name << "(";
    putTypes(os, argTypes);
    os << ")";
}

void MethodDecl::C_put(std::ostream& os) const
{
    os << "extern " << returnType << " " << name << "(";
    putTypes(os, argTypes);
    os << ");" << std::endl;
}

void MethodDecl::CSharp_put(std::ostream& os) const
{
    os << "public " << returnType << " " << name << "(";
    putTypes(os, argTypes);
    os << ");" << std::endl;
}

void MethodDecl::LUSTRE_put(std::ostream&) const {}

std::ostream& operator<<(std::ostream& os, const MethodDecl& m)
{
    m.print(os);
    return os;
}

DataMethodTable::DataMethodTable() : methodList(new std::list<MethodDecl*>) {}

void DataMethodTable::refresh() const
{
    if (indexedSize == methodList->size() && indexedEpoch == MethodDecl::indexEpoch)
        return;
    byName.clear();
    byId.clear();
    for (MethodDecl* m : *methodList) {
        if (m == nullptr)
            continue;
        byName.emplace(m->getName(), m);
        byId.emplace(m->getIndex(), m);
    }
    indexedSize = methodList->size();
    indexedEpoch = MethodDecl::indexEpoch;
}

MethodDecl* DataMethodTable::getMethod(const std::string& name) const
{
    refresh();
    auto it = byName.find(name);
    return it == byName.end() ? nullptr : it->second;
}

int DataMethodTable::getMethodIndex(const std::string& name) const
{
    MethodDecl* m = getMethod(name);
    return m == nullptr ? -1 : m->getIndex();
}

MethodDecl* DataMethodTable::getMethodById(int id) const
{
    refresh();
    auto it = byId.find(id);
    return it == byId.end() ? nullptr : it->second;
}

void DataMethodTable::addMethod(MethodDecl* decl)
{
    if (getMethod(decl->getName()) != nullptr)
        Compilation::AlreadyDefinedException(decl->getName() + ": overloading_of_method_not_yet_implemented");
    // The last declaration's index, not the highest one.
    int index = methodList->empty() || methodList->back() == nullptr ? 0 : methodList->back()->getIndex() + 1;
    decl->setIndex(index);
    methodList->push_back(decl);
    bool wasCurrent = indexedSize + 1 == methodList->size();
    if (wasCurrent) {
        byName.emplace(decl->getName(), decl);
        byId.emplace(index, decl);
        indexedSize = methodList->size();
        indexedEpoch = MethodDecl::indexEpoch;
    }
}

void DataMethodTable::print(std::ostream& os, bool numbered) const
{
    os << "method:" << std::endl;
    int n = static_cast<int>(methodList->size());
    for (int id = 0; id < n; id++) {
        MethodDecl* m = getMethodById(id);
        if (m == nullptr)
            continue;
        os << "   ";
        if (numbered)
            os << id << ": ";
        m->print(os);
        os << ";" << std::endl;
    }
    os << std::endl;
}

// Each declaration writes its own line end; the table adds one more.
void DataMethodTable::C_put(std::ostream& os) const
{
    for (MethodDecl* m : *methodList) {
        if (m != nullptr)
            m->C_put(os);
        os << std::endl;
    }
}

void DataMethodTable::CSharp_put(std::ostream& os) const
{
    for (MethodDecl* m : *methodList) {
        if (m != nullptr)
            m->CSharp_put(os);
        os << std::endl;
    }
}

void DataMethodTable::LUSTRE_put(std::ostream& os) const
{
    for (MethodDecl* m : *methodList) {
        if (m != nullptr)
            m->LUSTRE_put(os);
        os << std::endl;
    }
}

// ------------------------------------------------------------ constants

unsigned long ConstantDecl::indexEpoch = 0;

ConstantDecl::ConstantDecl(std::string type, std::string name, std::map<int, DataExpr*>* valueTable)
    : type(std::move(type)), name(std::move(name)), valueTable(valueTable), constantIndex(-1), evalIndex(-1)
{
}

void ConstantDecl::setIndex(int i)
{
    constantIndex = i;
    indexEpoch++;
}

DataExpr* ConstantDecl::getValue(int language) const
{
    if (valueTable == nullptr)
        return nullptr;
    auto it = valueTable->find(language);
    if (it == valueTable->end())
        it = valueTable->find(TLanguage::DEFAULT);
    return it == valueTable->end() ? nullptr : it->second;
}

DataExpr* ConstantDecl::requireValue(int language, const char* languageName)
{
    DataExpr* value = getValue(language);
    if (value == nullptr) {
        std::string text = std::string("ERROR: no initial value provided for ") + languageName +
                           " language for the constant: \"" + name + "\"";
        fl_show_Smessages(text);
        std::cerr << text << std::endl;
        std::exit(1);
    }
    return value;
}

// C writes " = " only once the value is found; the other targets write it
// first. Both orders show in what a failed run leaves in the file.
void ConstantDecl::C_put(std::ostream& os, Module* module)
{
    if (valueTable == nullptr)
        os << "extern ";
    os << "const " << type << " " << name;
    if (valueTable != nullptr) {
        DataExpr* value = requireValue(TLanguage::C, "C");
        os << " = ";
        value->C_put(os, module);
    }
    os << ";";
}

// An external constant comes out as "publicprivate const ...": users' C#
// relies on that text as it is.
void ConstantDecl::CSharp_put(std::ostream& os, Module* module)
{
    if (valueTable == nullptr)
        os << "public";
    os << "private const " << type << " " << name;
    if (valueTable != nullptr) {
        os << " = ";
        requireValue(TLanguage::CSHARP, "CSharp")->CSharp_put(os, module);
    }
    os << ";";
}

void ConstantDecl::LUSTRE_put(std::ostream& os, Module* module)
{
    os << "const " << " " << name << " = ";
    requireValue(TLanguage::LUSTRE, "LUSTRE")->LUSTRE_put(os, module);
    os << ";";
}

void ConstantDecl::VHDL_put(std::ostream& os, Module* module)
{
    os << "constant" << " " << name << " : " << type << " := ";
    requireValue(TLanguage::VHDL, "VHDL")->VHDL_put(os, module);
    os << ";";
}

void ConstantDecl::ESTEREL_put(std::ostream& os, Module*)
{
    os << "constant " << " " << name << ": " << type << ";";
}

void ConstantDecl::DEBUG_put(std::ostream& os, Module* module)
{
    if (valueTable == nullptr)
        os << "extern ";
    os << "const " << type << " " << name;
    if (valueTable != nullptr) {
        for (const auto& entry : *valueTable) {
            const char* label = nullptr;
            switch (entry.first) {
            case TLanguage::C: label = ":c="; break;
            case TLanguage::CSHARP: label = ":csharp="; break;
            case TLanguage::VHDL: label = ":vhdl="; break;
            case TLanguage::LUSTRE: label = ":lustre="; break;
            case TLanguage::SMV: label = ":nusmv="; break;
            case TLanguage::DEFAULT: label = ":default="; break;
            default:
                // Esterel has no label here either.
                std::cerr << "*****internal error: ConstantDecl::DEBUG_put: constant " << name
                          << " wrong target language specification\n";
                std::exit(1);
            }
            os << label;
            if (entry.second != nullptr)
                entry.second->DEBUG_put(os, module);
        }
    }
    os << ";" << std::endl;
}

void ConstantDecl::print(std::ostream& os)
{
    static const char* const labels[] = {"vhdl:", "C:", "C#:", "NuSmv:", "Lustre:", "Esterel:"};
    os << type << " " << name;
    if (valueTable != nullptr) {
        os << " value: ";
        for (const auto& entry : *valueTable) {
            if (entry.first >= TLanguage::VHDL && entry.first <= TLanguage::ESTEREL)
                os << labels[entry.first];
            else if (entry.first == TLanguage::DEFAULT) {
                if (valueTable->size() != 1)
                    os << "default:";
            } else {
                std::cerr << "****error:ConstantDecl:print: constant:" << name << " : wrong target language\n";
                std::exit(1);
            }
            if (entry.second != nullptr)
                entry.second->print_debug(os);
        }
    }
    os << std::endl;
}

void ConstantDecl::ZKC_put(std::ostream& os)
{
    static const char* const tokens[] = {" :vhdl= ",  " :c= ",       " :csharp= ", " :nusmv= ",
                                         " :lustre= ", " :esterel= ", " :default= "};
    os << type << " " << name;
    if (valueTable != nullptr) {
        for (const auto& entry : *valueTable) {
            if (entry.first < TLanguage::VHDL || entry.first > TLanguage::DEFAULT) {
                std::cerr << "****error:ConstantDecl:print: constant:" << name << "   wrong target language\n";
                std::exit(1);
            }
            os << tokens[entry.first];
            if (entry.second != nullptr && entry.second->isDataValue())
                os << " \"" << static_cast<DataValue*>(entry.second)->getText() << "\"";
        }
    }
    os << ";" << std::endl;
}

DataConstantTable::DataConstantTable() : constantList(new std::list<ConstantDecl*>) {}

void DataConstantTable::refresh() const
{
    if (indexedSize == constantList->size() && indexedEpoch == ConstantDecl::indexEpoch)
        return;
    byName.clear();
    byId.clear();
    highestIndex = -1;
    for (ConstantDecl* c : *constantList) {
        if (c == nullptr)
            continue;
        byName.emplace(c->getName(), c);
        byId.emplace(c->getConstantIndex(), c);
        if (c->getConstantIndex() > highestIndex)
            highestIndex = c->getConstantIndex();
    }
    indexedSize = constantList->size();
    indexedEpoch = ConstantDecl::indexEpoch;
}

ConstantDecl* DataConstantTable::getConstant(const std::string& name) const
{
    refresh();
    auto it = byName.find(name);
    return it == byName.end() ? nullptr : it->second;
}

int DataConstantTable::getConstantIndex(const std::string& name) const
{
    ConstantDecl* c = getConstant(name);
    return c == nullptr ? -1 : c->getConstantIndex();
}

ConstantDecl* DataConstantTable::getConstantById(int id) const
{
    refresh();
    auto it = byId.find(id);
    return it == byId.end() ? nullptr : it->second;
}

bool DataConstantTable::isAlreadyDefined(const std::string& name) const { return getConstant(name) != nullptr; }

void DataConstantTable::addConstant(ConstantDecl* decl)
{
    if (isAlreadyDefined(decl->getName())) {
        std::cerr << "Warning: constant " << decl->getName() << " already defined!" << std::endl;
        Compilation::AlreadyDefinedException(decl->getName() + ": constant");
    }
    refresh();
    bool numbered = true;
    if (decl->getValueTable() != nullptr)
        for (const auto& entry : *decl->getValueTable())
            if (entry.second == nullptr || !entry.second->isDataValue())
                numbered = false;
    if (numbered)
        decl->setIndex(highestIndex + 1);
    constantList->push_back(decl);
    byName.emplace(decl->getName(), decl);
    byId.emplace(decl->getConstantIndex(), decl);
    if (decl->getConstantIndex() > highestIndex)
        highestIndex = decl->getConstantIndex();
    indexedSize = constantList->size();
    indexedEpoch = ConstantDecl::indexEpoch;
}

void DataConstantTable::print(std::ostream& os, bool numbered) const
{
    os << "constant:" << std::endl;
    int n = static_cast<int>(constantList->size());
    for (int id = 0; id < n; id++) {
        ConstantDecl* c = getConstantById(id);
        if (c == nullptr)
            continue;
        os << "   ";
        if (numbered)
            os << id << ": ";
        c->print(os);
    }
    os << std::endl;
}

void DataConstantTable::C_put(std::ostream& os, Module* module) const
{
    for (ConstantDecl* c : *constantList) {
        if (c != nullptr)
            c->C_put(os, module);
        os << std::endl;
    }
}

void DataConstantTable::CSharp_put(std::ostream& os, Module* module) const
{
    for (ConstantDecl* c : *constantList) {
        if (c != nullptr)
            c->CSharp_put(os, module);
        os << std::endl;
    }
}

void DataConstantTable::LUSTRE_put(std::ostream& os, Module* module) const
{
    for (ConstantDecl* c : *constantList) {
        if (c != nullptr)
            c->LUSTRE_put(os, module);
        os << std::endl;
    }
}

void DataConstantTable::ESTEREL_put(std::ostream& os, Module* module) const
{
    for (ConstantDecl* c : *constantList) {
        if (c != nullptr)
            c->ESTEREL_put(os, module);
        os << std::endl;
    }
}

void DataConstantTable::VHDL_put(std::ostream& os, Module* module) const
{
    for (ConstantDecl* c : *constantList) {
        if (c != nullptr)
            c->VHDL_put(os, module);
        os << std::endl;
    }
}

void DataConstantTable::ZKC_put(std::ostream& os) const
{
    os << "constant:" << std::endl;
    for (ConstantDecl* c : *constantList)
        if (c != nullptr)
            c->ZKC_put(os);
}
