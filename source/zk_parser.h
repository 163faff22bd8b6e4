#ifndef TARN_SOURCE_ZK_PARSER_H
#define TARN_SOURCE_ZK_PARSER_H

// Context of one parse of a ZK source text: the data part goes to the
// three global data tables, each module to a Module with its signals, its
// EquationTable and its statement tree. The grammar's actions and the
// scanner reach the parser through the global pzk_parser, which the
// constructor sets.

#include <list>
#include <map>
#include <initializer_list>
#include <string>
#include <unordered_map>
#include <vector>

class DataExpr;
class Expression;
class FlexLexer;
class Module;
class Signal;
class Statement;

class class_zk_parser {
public:
    FlexLexer* scanner = nullptr;
    std::list<Module*> modules;  // in file order
    Module* module = nullptr;    // the module being read

    class_zk_parser();

    // Runs zkparse on the attached scanner: 0 for success, 1 for a syntax
    // error (reported by zkerror), 2 when the parser's stack is exhausted.
    int parse();
    // Line of the scanner, for messages; 0 before a scanner is attached.
    int lineno() const;

    // ---- the data part ----
    void type_line(const std::string& name);
    // Argument types may be null (no argument).
    void method_line(const std::string& returnType, const std::string& name, std::list<std::string>* argTypes);
    // A constant's type and name, read before its values.
    void constant_head(const std::string& type, const std::string& name);
    // The constant of the head with its values: `values` maps a target
    // language to a value; null for an external constant.
    void constant_line(std::map<int, DataExpr*>* values);
    // A second value for one language is an error.
    void constant_assignment(std::map<int, DataExpr*>& values, int language, DataExpr* value);

    // ---- modules ----
    void begin_module(const std::string& name);
    void end_module(Statement* body);
    void declare_input(const std::string& name, const std::string* type);
    void declare_output(const std::string& name, const std::string* type);
    void declare_local(const std::string& name, const std::string* type);
    void declare_pre(const std::string& pre, const std::string& actual, const std::string* initial);

    // A "Run:" declaration of the module: instance, file (empty when none)
    // and module.
    void run_declaration(const std::string& instance, const std::string& file, const std::string& module);

    // ---- Mealy machines ----
    // The register `actual`, with its initial value (0 or 1) and the name
    // of its next value; both names are new in the module.
    void mealy_register(const std::string& actual, long initial, const std::string& next);
    // A name in a right part: a register, its next value, or a signal.
    Expression* mealy_operand(const std::string& name);
    // `left` := `right`: a register's next value, or an output or local,
    // with `value` its value for a valued one.
    void mealy_equation(const std::string& left, DataExpr* value, Expression* right);
    // The machine read so far; every register must have its next value.
    Statement* mealy_machine();

    // ---- expressions ----
    // A declared signal of the module, read in a condition.
    Expression* condition_signal(const std::string& name);
    // A literal, typed later by what it meets.
    DataExpr* literal(const std::string& text);
    // A constant of the data part.
    DataExpr* constant(const std::string& name);
    DataExpr* method_call(const std::string& name, std::list<DataExpr*>* arguments);
    DataExpr* binary(int op, DataExpr* left, DataExpr* right);
    DataExpr* unary(int op, DataExpr* operand);
    // The value of a valued signal: "$x" (also "#x" and "?x").
    DataExpr* signal_value(const std::string& name);

    // Nodes of conditions and value expressions deeper than this are
    // refused: every later walk of a tree is recursive.
    static constexpr int max_depth = 1000;
    // The depth of a node made by nest; 1 for a leaf (or null).
    int depth_of(const void* p) const
    {
        auto it = depths.find(p);
        return it == depths.end() ? 1 : it->second;
    }
    // `made`, one level above the deepest of `parts`.
    template <class T>
    T* nest(T* made, std::initializer_list<const void*> parts)
    {
        int d = 0;
        for (const void* p : parts)
            d = depth_of(p) > d ? depth_of(p) : d;
        if (d + 1 > max_depth)
            error("expression nested deeper than " + std::to_string(max_depth) + " levels");
        depths[made] = d + 1;
        return made;
    }

    // The count of a repeat or a wait: at most max_count.
    static constexpr long max_count = 1000;
    long count(long n);

    // Ends the process with "PARSE ERROR at line N: ", the text, and
    // "\nAbortion ...".
    [[noreturn]] void error(const std::string& text);

private:
    struct mealy_register_decl {
        Signal* actual;
        Signal* next;
        int initial;
    };
    std::vector<mealy_register_decl> mealy_registers;
    struct mealy_equation_decl {
        Signal* left;
        Statement* emission;
        Expression* right;
    };
    std::vector<mealy_equation_decl> mealy_equations;
    std::unordered_map<const void*, int> depths;
    std::string constant_type;
    std::string constant_name;
    Signal* new_signal(const std::string& name, const std::string* type);
    void check_new_name(const std::string& name);
};

extern class_zk_parser* pzk_parser;

int zkparse();
// The scanner's yylex on the current parser; 0 (end of text) without one.
int zklex();
// "PARSE ERROR at line N: text" on the error stream.
void zkerror(const char* text);

#endif
