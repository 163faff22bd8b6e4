#ifndef TARN_DATA_DATA_H
#define TARN_DATA_DATA_H

// User data of a module: declared types, methods and constants (three
// process-wide tables reached through Compilation), the typed value
// expressions that give valued signals their values, and the bindings that
// tie an expression to a signal.
//
// This layer sits below the module: it holds Module*, Signal* and
// Interface* only by pointer, and reaches a module's signal manager and wood
// through SignalScope. The little more it needs of a Module (its name, a
// signal by name) comes through DataExpr::moduleName and
// DataExpr::moduleSignal, which model/module_bindings.cc installs.

#include <functional>
#include <list>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

class Signal;
class Module;
class Interface;
class DataExpr;

// Target language codes; also the keys of a constant's value table.
class TLanguage {
public:
    static constexpr int VHDL = 0;
    static constexpr int C = 1;
    static constexpr int CSHARP = 2;
    static constexpr int SMV = 3;
    static constexpr int LUSTRE = 4;
    static constexpr int ESTEREL = 5;
    static constexpr int DEFAULT = 6;
};

// Zero value of a type in Lustre and in VHDL: the predefined types have a
// literal, any other type a user constant "zero_<T>".
std::string zero_lustre(const std::string& type);
std::string zero_vhdl(const std::string& type);

// ---------------------------------------------------------------- types

class DataTypeTable {
public:
    DataTypeTable();

    // Name to id; the map orders by name, the ids give the order of
    // declaration (0, 1, 2, ...).
    std::map<std::string, int>* getTypeTable() const { return typeTable; }

    // A known name is left alone; a new one takes the count of entries.
    void addType(const std::string& name);
    bool isDefined(const std::string& name) const;
    int getIndex(const std::string& name) const;  // -1 when unknown
    std::string getTypeById(int id) const;        // "undefined" when unknown

    void print(std::ostream& os, bool numbered) const;
    void C_put(std::ostream& os) const;
    void CSharp_put(std::ostream& os) const;
    void LUSTRE_put(std::ostream& os) const;

private:
    std::map<std::string, int>* typeTable;
    // Reverse index kept by addType; checked against the map before use, so
    // entries made through getTypeTable() are still found (by a scan).
    std::vector<std::string> namesById;
};

// -------------------------------------------------------------- methods

class MethodDecl {
public:
    // A null string pointer gives the empty string; the argument list is
    // held, not copied, and may be null.
    MethodDecl(std::string* returnType, std::string* name, std::list<std::string>* argTypes);

    const std::string& getReturnType() const { return returnType; }
    const std::string& getName() const { return name; }
    std::list<std::string>* getArgTypeList() const { return argTypes; }
    int getIndex() const { return index; }
    void setIndex(int i);

    // Same index, same name and the very same argument list object.
    bool operator==(const MethodDecl& other) const;
    bool operator!=(const MethodDecl& other) const;

    void print(std::ostream& os) const;
    void C_put(std::ostream& os) const;
    void CSharp_put(std::ostream& os) const;
    void LUSTRE_put(std::ostream& os) const;

    // Bumped by every setIndex, so that tables know when their id index
    // may be stale.
    static unsigned long indexEpoch;

private:
    std::string returnType;
    std::string name;
    std::list<std::string>* argTypes;
    int index;
};

std::ostream& operator<<(std::ostream& os, const MethodDecl& m);

class DataMethodTable {
public:
    DataMethodTable();

    std::list<MethodDecl*>* getMethodList() const { return methodList; }

    MethodDecl* getMethod(const std::string& name) const;  // null when absent
    int getMethodIndex(const std::string& name) const;     // -1 when absent
    MethodDecl* getMethodById(int id) const;               // null when absent
    // A name already present is fatal (no overloading); otherwise the
    // declaration gets the next index and goes to the end of the list.
    void addMethod(MethodDecl* decl);

    void print(std::ostream& os, bool numbered) const;
    void C_put(std::ostream& os) const;
    void CSharp_put(std::ostream& os) const;
    void LUSTRE_put(std::ostream& os) const;

private:
    std::list<MethodDecl*>* methodList;
    // Lookup indexes over methodList: first declaration of a name or id
    // wins, as a scan would find it. Rebuilt when the list changed behind
    // the table's back or an index was reset.
    mutable std::unordered_map<std::string, MethodDecl*> byName;
    mutable std::unordered_map<int, MethodDecl*> byId;
    mutable size_t indexedSize = 0;
    mutable unsigned long indexedEpoch = 0;
    void refresh() const;
};

// ------------------------------------------------------------ constants

class ConstantDecl {
public:
    // A null value table makes an external constant: its value is defined
    // by the user's code of each target.
    ConstantDecl(std::string type, std::string name, std::map<int, DataExpr*>* valueTable = nullptr);

    const std::string& getType() const { return type; }
    const std::string& getName() const { return name; }
    std::map<int, DataExpr*>* getValueTable() const { return valueTable; }
    void setValueTable(std::map<int, DataExpr*>* t) { valueTable = t; }
    int getConstantIndex() const { return constantIndex; }
    void setIndex(int i);
    int getEvalIndex() const { return evalIndex; }
    void setEvalIndex(int i) { evalIndex = i; }

    // The value for a language, falling back to TLanguage::DEFAULT; null
    // when neither is there or there is no table.
    DataExpr* getValue(int language) const;

    void C_put(std::ostream& os, Module* module);
    void CSharp_put(std::ostream& os, Module* module);
    void LUSTRE_put(std::ostream& os, Module* module);
    void VHDL_put(std::ostream& os, Module* module);
    void ESTEREL_put(std::ostream& os, Module* module);
    void DEBUG_put(std::ostream& os, Module* module);
    void print(std::ostream& os);
    // The constant line of a compiled-module file.
    void ZKC_put(std::ostream& os);

    static unsigned long indexEpoch;  // as MethodDecl::indexEpoch

private:
    std::string type;
    std::string name;
    std::map<int, DataExpr*>* valueTable;
    int constantIndex;
    int evalIndex;

    // Value for a target, or the fatal "no initial value" message naming
    // that target.
    DataExpr* requireValue(int language, const char* languageName);
};

class DataConstantTable {
public:
    DataConstantTable();

    std::list<ConstantDecl*>* getConstantList() const { return constantList; }

    ConstantDecl* getConstant(const std::string& name) const;  // null when absent
    int getConstantIndex(const std::string& name) const;       // -1 when absent
    ConstantDecl* getConstantById(int id) const;               // by constant index
    bool isAlreadyDefined(const std::string& name) const;
    // A name already present warns and is fatal. Otherwise an external
    // constant, or one whose values are all literals, takes the highest
    // constant index plus 1; one defined by another expression keeps its
    // index. Either way it goes to the end of the list.
    void addConstant(ConstantDecl* decl);

    void print(std::ostream& os, bool numbered) const;
    void C_put(std::ostream& os, Module* module) const;
    void CSharp_put(std::ostream& os, Module* module) const;
    void LUSTRE_put(std::ostream& os, Module* module) const;
    void ESTEREL_put(std::ostream& os, Module* module) const;
    void VHDL_put(std::ostream& os, Module* module) const;
    // "constant:" and the constant lines of a compiled-module file.
    void ZKC_put(std::ostream& os) const;

private:
    std::list<ConstantDecl*>* constantList;
    mutable std::unordered_map<std::string, ConstantDecl*> byName;
    mutable std::unordered_map<int, ConstantDecl*> byId;
    mutable int highestIndex = -1;
    mutable size_t indexedSize = 0;
    mutable unsigned long indexedEpoch = 0;
    void refresh() const;
};

// ---------------------------------------------------------- expressions

// Root of the typed value expressions. The type is computed on demand and
// kept; the index is the expression's line in the evaluation table of a
// compiled-module file.
class DataExpr {
public:
    // Operator codes. Indexation shares 0 with Plus and no printer knows it.
    static const int Plus = 0;
    static const int Minus = 1;
    static const int Mult = 2;
    static const int Div = 3;
    static const int Uminus = 4;
    static const int And = 5;
    static const int Or = 6;
    static const int Not = 7;
    static const int Eq = 8;
    static const int Neq = 9;
    static const int Inf = 10;
    static const int Infe = 11;
    static const int Sup = 12;
    static const int Supe = 13;
    static const int SignalVal = 14;
    static const int NbPredefOp = 15;
    static const int Indexation = 0;

    DataExpr();
    explicit DataExpr(std::string type);
    DataExpr(const DataExpr& other) = default;
    virtual ~DataExpr();

    // The stored type, computed first when it is still empty.
    std::string getType(Module* module);
    void setType(std::string t) { type = t; }

    virtual std::string getType();
    virtual void computeType(Module* module);
    virtual void setIndex(int i);
    virtual int getIndex();
    virtual bool hasIndex();
    virtual bool isDataValue();
    virtual bool isDataConstant();
    virtual bool isDataMethod();
    virtual bool isDataSignalValue();
    virtual bool isDataBinaryOp();
    virtual bool isDataUnaryOp();
    // Linking of modules: a copy whose signals are those of the map (keyed
    // by original name); signals missing from it are kept.
    virtual DataExpr* instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module);
    virtual void applyRenaming(std::map<std::string, std::string>* renaming);
    virtual DataExpr* duplicate();
    virtual void changeModule(Module* from, Module* to);
    // Signals read by the expression; null when it reads none. The set is
    // new and belongs to the caller.
    virtual std::set<Signal*>* computeDependencySet();
    virtual void computeValueSignalDependencies(std::set<Signal*>& signals);
    virtual void print_debug(std::ostream& os);
    // Evaluation-table form. At the top of a line (top != 0) a node writes
    // itself; elsewhere it writes a reference to its own line, taking the
    // next index from *counter and joining `pending` if it had none yet.
    // Variable numbers go through `renumbering` when it is not null.
    virtual void ZKC_put(std::ostream& os, long* renumbering, Module* module,
                         std::list<DataExpr*>* pending, int* counter, int top);
    virtual void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                           int top);
    virtual void C_put(std::ostream& os, Module* module);
    virtual void CSharp_put(std::ostream& os, Module* module);
    // Simulator form: evaluates the expression by the requests of the data
    // server ("MC,...", "BOP,...", "UOP,...", "CONST,..."), handed to `ask`
    // one node at a time, operands first. Signal values come from `values`
    // by internal name; "--" marks what is not known.
    virtual std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                                 const std::function<std::string(const std::string&)>& ask);
    virtual void LUSTRE_put(std::ostream& os, Module* module);
    virtual void ESTEREL_put(std::ostream& os, Module* module);
    virtual void VHDL_put(std::ostream& os, Module* module);
    virtual void DEBUG_put(std::ostream& os, Module* module);

    static std::string C_opname(int op, const std::string& type);
    static std::string MOSK_opname(int op);
    static std::string CSharp_opname(int op);
    static std::string LUSTRE_opname(int op);
    static std::string ESTEREL_opname(int op);
    static std::string VHDL_opname(int op);
    static std::string DEBUG_opname(int op);

    // What the data layer reads of a Module beyond its SignalScope: its name
    // (for messages) and a signal by internal name, searched in the
    // module's lists. The module layer installs both; until then the name
    // is empty and the lookup finds nothing.
    static std::string (*moduleName)(Module*);
    static Signal* (*moduleSignal)(Module*, const std::string& internalName);

protected:
    std::string type;
    int index;

    // Reference to this node's evaluation line (see ZKC_put).
    void putReference(std::ostream& os, std::list<DataExpr*>* pending, int* counter);
};

class DataConstant : public DataExpr {
public:
    explicit DataConstant(int constantIndex);

    int getConstantIndex() const { return constantIndex; }
    // The declaration in the global table, or null.
    ConstantDecl* getDecl() const;

    void computeType(Module* module) override;
    // Also gives the declaration this evaluation index while it has none.
    void setIndex(int i) override;
    bool isDataConstant() override { return true; }
    DataExpr* duplicate() override;
    void print_debug(std::ostream& os) override;
    void ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                 int* counter, int top) override;
    void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                   int top) override;
    void C_put(std::ostream& os, Module* module) override;
    void CSharp_put(std::ostream& os, Module* module) override;
    std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                         const std::function<std::string(const std::string&)>& ask) override;
    void LUSTRE_put(std::ostream& os, Module* module) override;
    void ESTEREL_put(std::ostream& os, Module* module) override;
    void VHDL_put(std::ostream& os, Module* module) override;
    void DEBUG_put(std::ostream& os, Module* module) override;

private:
    int constantIndex;
    // The declaration's name; fatal when there is none.
    std::string declName();
};

// A literal. It has no type of its own: whoever makes it gives the type.
class DataValue : public DataExpr {
public:
    DataValue(std::string text, std::string type, ConstantDecl* decl = nullptr);

    const std::string& getText() const { return text; }
    ConstantDecl* getConstDecl() const { return decl; }
    void setConstDecl(ConstantDecl* d) { decl = d; }

    void computeType(Module* module) override;
    bool isDataValue() override { return true; }
    DataExpr* duplicate() override;
    void changeModule(Module* from, Module* to) override;
    void print_debug(std::ostream& os) override;
    void ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                 int* counter, int top) override;
    void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                   int top) override;
    void C_put(std::ostream& os, Module* module) override;
    void CSharp_put(std::ostream& os, Module* module) override;
    std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                         const std::function<std::string(const std::string&)>& ask) override;
    void LUSTRE_put(std::ostream& os, Module* module) override;
    void ESTEREL_put(std::ostream& os, Module* module) override;
    void VHDL_put(std::ostream& os, Module* module) override;
    void DEBUG_put(std::ostream& os, Module* module) override;

private:
    ConstantDecl* decl;
    std::string text;
};

class DataMethodCall : public DataExpr {
public:
    // The argument list is held, not copied; null means no argument.
    DataMethodCall(int methodIndex, std::list<DataExpr*>* arguments);

    int getMethodIndex() const { return methodIndex; }
    std::list<DataExpr*>* getArguments() const { return arguments; }

    void computeType(Module* module) override;
    bool isDataMethod() override { return true; }
    DataExpr* instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module) override;
    void applyRenaming(std::map<std::string, std::string>* renaming) override;
    DataExpr* duplicate() override;
    void changeModule(Module* from, Module* to) override;
    std::set<Signal*>* computeDependencySet() override;
    void computeValueSignalDependencies(std::set<Signal*>& signals) override;
    void print_debug(std::ostream& os) override;
    void ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                 int* counter, int top) override;
    void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                   int top) override;
    void C_put(std::ostream& os, Module* module) override;
    void CSharp_put(std::ostream& os, Module* module) override;
    std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                         const std::function<std::string(const std::string&)>& ask) override;
    void LUSTRE_put(std::ostream& os, Module* module) override;
    void ESTEREL_put(std::ostream& os, Module* module) override;
    void VHDL_put(std::ostream& os, Module* module) override;
    void DEBUG_put(std::ostream& os, Module* module) override;

private:
    int methodIndex;
    std::list<DataExpr*>* arguments;
    MethodDecl* requireDecl();
    // name "(" arguments by `put`, joined by ", " ")"
    void putCall(std::ostream& os, const std::function<void(DataExpr*)>& put);
};

class DataBinaryOp : public DataExpr {
public:
    DataBinaryOp(int op, DataExpr* left, DataExpr* right);

    int getOperator() const { return op; }
    DataExpr* getLeft() const { return left; }
    DataExpr* getRight() const { return right; }

    // Operands of different types give "?type_error?", reported once on
    // the error stream; nothing stops.
    void computeType(Module* module) override;
    bool isDataBinaryOp() override { return true; }
    DataExpr* instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module) override;
    void applyRenaming(std::map<std::string, std::string>* renaming) override;
    DataExpr* duplicate() override;
    void changeModule(Module* from, Module* to) override;
    std::set<Signal*>* computeDependencySet() override;
    void computeValueSignalDependencies(std::set<Signal*>& signals) override;
    void print_debug(std::ostream& os) override;
    void ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                 int* counter, int top) override;
    void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                   int top) override;
    void C_put(std::ostream& os, Module* module) override;
    void CSharp_put(std::ostream& os, Module* module) override;
    std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                         const std::function<std::string(const std::string&)>& ask) override;
    void LUSTRE_put(std::ostream& os, Module* module) override;
    void ESTEREL_put(std::ostream& os, Module* module) override;
    void VHDL_put(std::ostream& os, Module* module) override;
    void DEBUG_put(std::ostream& os, Module* module) override;

private:
    int op;
    DataExpr* left;
    DataExpr* right;
};

class DataUnaryOp : public DataExpr {
public:
    DataUnaryOp(int op, DataExpr* operand);

    int getOperator() const { return op; }
    DataExpr* getOperand() const { return operand; }

    void computeType(Module* module) override;
    bool isDataUnaryOp() override { return true; }
    DataExpr* instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module) override;
    void applyRenaming(std::map<std::string, std::string>* renaming) override;
    DataExpr* duplicate() override;
    void changeModule(Module* from, Module* to) override;
    std::set<Signal*>* computeDependencySet() override;
    void computeValueSignalDependencies(std::set<Signal*>& signals) override;
    void print_debug(std::ostream& os) override;
    void ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                 int* counter, int top) override;
    void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                   int top) override;
    void C_put(std::ostream& os, Module* module) override;
    void CSharp_put(std::ostream& os, Module* module) override;
    std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                         const std::function<std::string(const std::string&)>& ask) override;
    void LUSTRE_put(std::ostream& os, Module* module) override;
    void ESTEREL_put(std::ostream& os, Module* module) override;
    void VHDL_put(std::ostream& os, Module* module) override;
    void DEBUG_put(std::ostream& os, Module* module) override;

private:
    int op;
    DataExpr* operand;
};

// The value of another signal, read through the module's signal manager.
class DataSignalValue : public DataExpr {
public:
    explicit DataSignalValue(Signal* signal);

    Signal* getSignal() const { return signal; }
    void setSignal(Signal* s) { signal = s; }

    void computeType(Module* module) override;
    bool isDataSignalValue() override { return true; }
    DataExpr* instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module) override;
    DataExpr* duplicate() override;
    void changeModule(Module* from, Module* to) override;
    std::set<Signal*>* computeDependencySet() override;
    void computeValueSignalDependencies(std::set<Signal*>& signals) override;
    void print_debug(std::ostream& os) override;
    void ZKC_put(std::ostream& os, long* renumbering, Module* module, std::list<DataExpr*>* pending,
                 int* counter, int top) override;
    void DEBUG_put(std::ostream& os, Module* module, std::list<DataExpr*>* pending, int* counter,
                   int top) override;
    void C_put(std::ostream& os, Module* module) override;
    void CSharp_put(std::ostream& os, Module* module) override;
    std::string MOSK_put(Module* module, std::map<std::string, std::string>* values,
                         const std::function<std::string(const std::string&)>& ask) override;
    void LUSTRE_put(std::ostream& os, Module* module) override;
    void ESTEREL_put(std::ostream& os, Module* module) override;
    void VHDL_put(std::ostream& os, Module* module) override;
    void DEBUG_put(std::ostream& os, Module* module) override;

private:
    Signal* signal;
};

// ------------------------------------------------------------- bindings

// The clock (value support signal) receives the value whenever the bound
// signal holds; with no clock the value defines the bound signal itself.
class DataBinding {
public:
    DataBinding(Signal* signal, DataExpr* value);
    DataBinding(Signal* signal, DataExpr* value, Signal* clock);
    // Copy into module `to`: the signals of the same internal names there,
    // and a duplicate of the value moved from `from` to `to`.
    DataBinding(DataBinding& other, Module* from, Module* to);

    Signal* getClock() const { return clock; }
    Signal* getSignal() const { return signal; }
    DataExpr* getValue() const { return value; }
    void setClock(Signal* c) { clock = c; }
    void setSignal(Signal* s) { signal = s; }
    void setValue(DataExpr* v) { value = v; }

    void print_debug(std::ostream& os);
    // The same binding over the signals of a linked instance, looked up by
    // original name in `signals`; a missing one is fatal.
    DataBinding* instanciate(Interface* itf, std::map<std::string, Signal*>* signals, Module* module);

private:
    Signal* clock;
    Signal* signal;
    DataExpr* value;
};

#endif
