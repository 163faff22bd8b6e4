#include "context/compilation.h"

#include "context/messages.h"

#include <cstdlib>
#include <iostream>

int Compilation::GDataConstIndex = -1;
DataTypeTable* Compilation::GDataTypeTable = nullptr;
DataMethodTable* Compilation::GDataMethodTable = nullptr;
DataConstantTable* Compilation::GDataConstantTable = nullptr;
ModuleTable* Compilation::ModTable = nullptr;
ModuleTable* Compilation::ZkcModTable = new ModuleTable(&std::cout);
std::string* Compilation::EmptyString = new std::string();
class_zk_parser* Compilation::ple_parser = nullptr;

bool Compilation::VHDLALTERAFlag = false, Compilation::BLIFFlag = false,
     Compilation::CSHARPFlag = false, Compilation::CFlag = false,
     Compilation::SMVFlag = false, Compilation::CheckOverKnowledgeFlag = false,
     Compilation::ForgetLocalsNameFlag = false, Compilation::KeepWiresFlag = false,
     Compilation::VersionFlag = false, Compilation::HelpFlag = false,
     Compilation::SaveFlag = false, Compilation::MainFlag = false,
     Compilation::MoskFlag = false, Compilation::ValuedSimulFlag = false,
     Compilation::PureSimulFlag = false, Compilation::DebugFlag = false;

void Compilation::fatal(const std::string& text)
{
    fl_show_Salert(text);
    std::cerr << text << std::endl;
    exitFailure(text);
}

void (*Compilation::FatalHook)(const std::string& text) = nullptr;

void Compilation::forget_data_tables()
{
    GDataTypeTable = nullptr;
    GDataMethodTable = nullptr;
    GDataConstantTable = nullptr;
}

void Compilation::exitFailure(const std::string& text)
{
    if (FatalHook != nullptr)
        FatalHook(text);
    std::exit(1);
}

void Compilation::ModulePertFailureException() { fatal("Error: PERT failure ... "); }
void Compilation::IllegalOperationException(std::string s) { fatal("Error: Illegal operation!\n" + s); }
void Compilation::AbstractMethodCallException(std::string s) { fatal("Error: calling Abstract method: " + s); }
void Compilation::AlreadyDefinedException(std::string s) { fatal("Error: Already defined : " + s); }
void Compilation::ModuleUndefinedConstantException(std::string s) { fatal("Error: Undefined constant: " + s); }
void Compilation::UndefinedMethodException(std::string s) { fatal("Error: Undefined method: " + s); }
void Compilation::UndefinedTypeException(std::string s) { fatal("Error: Undefined type: " + s); }

std::string Compilation::hashTableAddText(const std::string& table, const std::string& key)
{
    std::string text = table.empty() ? "Exception in Hash Table:" : "Exception in Hash Table: " + table + ":";
    return text + " add:" + key + " is already defined";
}

void Compilation::HashTableAddException(std::string table, std::string key)
{
    fatal(hashTableAddText(table, key));
}

// ModuleTable::add and ModuleTable::get need the Module's name and live with
// the module (model/module.cc).

Module* ModuleTable::get(std::string name)
{
    auto it = table.find(name);
    return it == table.end() ? nullptr : it->second;
}
