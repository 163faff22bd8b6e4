#ifndef TARN_CONTEXT_COMPILATION_H
#define TARN_CONTEXT_COMPILATION_H

#include <list>
#include <map>
#include <ostream>
#include <string>

class Module;
class DataTypeTable;
class DataMethodTable;
class DataConstantTable;
class class_zk_parser;

// Modules by name, with the stream their messages go to.
class ModuleTable {
public:
    std::map<std::string, Module*> table;
    std::ostream* out = nullptr;

    ModuleTable(std::ostream* o = nullptr) : out(o) {}
    void add(Module* m);
    Module* get(std::string name);
};

// Process-wide context: wire status codes, global flags and tables, name
// builders and the fatal functions. No instances.
class Compilation {
public:
    // An odd code classifies an over (status) wire, an even code an under
    // (value) wire; pairs name a kind of signal.
    static constexpr int STAT = 1;
    static constexpr int VAL = 2;
    static constexpr int SINPUT = 3;
    static constexpr int VINPUT = 4;
    static constexpr int SOUTPUT = 5;
    static constexpr int VOUTPUT = 6;
    static constexpr int SREG = 7;
    static constexpr int VREG = 8;
    static constexpr int SWIRE = 9;
    static constexpr int VWIRE = 10;
    static constexpr int SCLOCK = 11;
    static constexpr int VCLOCK = 12;
    static constexpr int SUSEDPRE = 13;
    static constexpr int VUSEDPRE = 14;

    static int GDataConstIndex;
    static DataTypeTable* GDataTypeTable;
    static DataMethodTable* GDataMethodTable;
    static DataConstantTable* GDataConstantTable;
    // Empties the three data tables above, for a run that reads its data
    // part afresh (the tables of a previous run are left, not freed).
    static void forget_data_tables();
    static ModuleTable* ModTable;
    static ModuleTable* ZkcModTable;
    static std::string* EmptyString;
    static class_zk_parser* ple_parser;

    static bool VHDLALTERAFlag, BLIFFlag, CSHARPFlag, CFlag, SMVFlag,
        CheckOverKnowledgeFlag, ForgetLocalsNameFlag, KeepWiresFlag,
        VersionFlag, HelpFlag, SaveFlag, MainFlag, MoskFlag, ValuedSimulFlag,
        PureSimulFlag, DebugFlag;

    static bool isStatusType(int code) { return code % 2 != 0; }
    static bool isValueType(int code) { return code % 2 == 0; }

    static std::string createSETName(std::string s) { return "SET" + s; }
    static std::string createRESETName(std::string s) { return "RESET" + s; }
    static std::string createRTLName(std::string s) { return "RTL" + s; }
    // The register pairs of a statement of the source compiler: the actual
    // variable and the next one, and a second pair for a parallel.
    static std::string createACTIFName(std::string s) { return "ACTIF" + s; }
    static std::string createACTIFPLUSName(std::string s) { return "ACTIFPLUS" + s; }
    static std::string createACTIFBISName(std::string s) { return "ACTIFBIS" + s; }
    static std::string createACTIFBISPLUSName(std::string s) { return "ACTIFBISPLUS" + s; }
    // The same for the i-th son of an n-ary statement.
    static std::string createACTIFName(std::string s, int i) { return "ACTIF" + s + "_" + std::to_string(i); }
    static std::string createACTIFPLUSName(std::string s, int i) { return "ACTIFPLUS" + s + "_" + std::to_string(i); }
    static std::string createRTLName(std::string s, int i) { return "RTL" + s + "_" + std::to_string(i); }
    // "_s_x" and "_v_x" both give "x"; throws std::out_of_range when the
    // name is shorter than three characters.
    static std::string bddNameToSignalName(std::string bddName) { return bddName.substr(3); }

    // Fatal functions: show the text, write it on the error stream, exit 1.
    [[noreturn]] static void fatal(const std::string& text);
    // The end of every fatal path once its text is written: FatalHook, when
    // set, gets the text and may throw (a fuzzing harness does, to go on
    // with the next input); if it returns, or is not set, the process ends
    // with status 1.
    static void (*FatalHook)(const std::string& text);
    [[noreturn]] static void exitFailure(const std::string& text);
    [[noreturn]] static void ModulePertFailureException();
    [[noreturn]] static void IllegalOperationException(std::string s);
    [[noreturn]] static void AbstractMethodCallException(std::string s);
    [[noreturn]] static void AlreadyDefinedException(std::string s);
    [[noreturn]] static void ModuleUndefinedConstantException(std::string s);
    [[noreturn]] static void UndefinedMethodException(std::string s);
    [[noreturn]] static void UndefinedTypeException(std::string s);
    [[noreturn]] static void HashTableAddException(std::string table, std::string key);

    // Text of HashTableAddException, for callers and tests.
    static std::string hashTableAddText(const std::string& table, const std::string& key);

    // The compiled-module reader's entries for the source compiler (defined
    // with the reader). zkc_parse reads `file` with the authorised lists of
    // inputs and outputs (null or empty: any) and returns the module, or
    // null after "ERROR during loading file : " or "File: <file> does not
    // exist" on the error stream.
    static Module* zkc_parse(std::string& file, std::string& hierarchy, std::list<std::string>* inputs,
                             std::list<std::string>* outputs);
    // zkc_parse of the file getZkcFileName finds for `name`.
    static Module* createModuleFromZkcCode(std::string name, std::list<std::string>* inputs = nullptr,
                                          std::list<std::string>* outputs = nullptr);
    // First file of Module::CompilationFileList whose first line (at most
    // 256 characters) contains `module`; empty when none does.
    static std::string getZkcFileName(std::string module);
    // The number behind the module's name in that line; -1 when no file
    // matches.
    static int getReincarnateFromZkcFile(std::string module);
};

#endif
