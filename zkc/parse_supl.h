#ifndef TARN_ZKC_PARSE_SUPL_H
#define TARN_ZKC_PARSE_SUPL_H

// Context of one parse of a compiled-module (.zkc) file. The grammar actions
// and the scanner take no parameter: they reach the parser through the
// global pzkc_parser, which the constructor sets and which keeps pointing at
// the last parser built.

#include "bdd/bddpp_memory.h"
#include "signals/signal.h"
#include "signals/signal_name_index.h"

#include <fstream>
#include <list>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

class FlexLexer;
class Module;
class Signal;
class Bddexpressionwood;
class bddpp_manager;
class bdd_node;
class DataExpr;
class Expression;
class memorizedSignal;
class regclass;
class class_zkc_parser;

// One node line of the wood: the variable and the two children by file id.
// The node is built on demand, children first, with Bdd_ite.
class parsed_nodes_class {
public:
    parsed_nodes_class(long var, long then_id, long else_id, int else_link)
        : var_id(var), then_id(then_id), else_link_type(else_link), defined(true), else_id(else_id) {}
    // A slot of the table that no line has filled.
    parsed_nodes_class() = default;
    bool is_defined() const { return defined; }

    long get_var_id() const { return var_id; }
    long get_then_id() const { return then_id; }
    int get_else_link_type() const { return else_link_type; }
    long get_else_id() const { return else_id; }
    bdd_node* get_node() const { return node; }
    void set_var_id(long v) { var_id = v; }
    void set_then_id(long v) { then_id = v; }
    void set_else_link_type(int v) { else_link_type = v; }
    void set_else_id(long v) { else_id = v; }
    void set_node(bdd_node* n) { node = n; }

    // The node of this line in `manager`, children looked up in `parser`'s
    // table. Iterative: a chain of a million lines needs no deep stack. A
    // child that no line defines, a line that is its own descendant, a bad
    // variable or link ends the process with a message and status 1.
    bdd_node* build(bddpp_manager* manager, const class_zkc_parser& parser);

private:
    long var_id = 0;
    long then_id = 0;
    int else_link_type = 0;
    bool visiting = false;  // on the path of the current build
    bool defined = false;
    long else_id = 0;
    bdd_node* node = nullptr;
};

// The value of a pair of numbers in parentheses.
struct couplelong {
    long premier;
    long second;
    couplelong(long a, long b) : premier(a), second(b) {}
};

// One binding line: the bound signal's two variable numbers, its evaluation
// line and, when it has one, the clock's two numbers (-1 otherwise).
struct bindingparse {
    long instance_over_ident;
    long instance_under_ident;
    long eval_ident;
    long signal_over_ident;
    long signal_under_ident;
    bindingparse(long over, long under, long eval)
        : instance_over_ident(over), instance_under_ident(under), eval_ident(eval), signal_over_ident(-1),
          signal_under_ident(-1) {}
    bindingparse(long over, long under, long eval, long clock_over, long clock_under)
        : instance_over_ident(over), instance_under_ident(under), eval_ident(eval), signal_over_ident(clock_over),
          signal_under_ident(clock_under) {}
};

// One evaluation line.
struct evalnodeparse {
    static constexpr int CONSTANT = 0;
    static constexpr int LINK = 1;
    static constexpr int PREDEFINED = 2;
    static constexpr int METHOD = 3;

    long nodeident = -1;
    int nodetype = CONSTANT;
    long tableident = 0;  // constant index or linked line (types 0 and 1)
    long methodident = -1;  // method index or "%%" code (types 2 and 3)
    std::list<long> arguments;

    void set_arguments(const std::list<std::pair<long, bool>>& written);

    // "CONSTANTE", "LINK", "METHODE PREDEFINIE" or "METHODE EXTERNE".
    static const char* type_word(int type);
};
std::ostream& operator<<(std::ostream& os, const evalnodeparse& n);

// The binding and evaluation sections of one file, turned into the module's
// bindings once the whole file is read.
class binding_declaration_parse {
public:
    explicit binding_declaration_parse(class_zkc_parser* parser) : parser(parser) {}

    std::list<bindingparse> binding_list;
    std::list<evalnodeparse> evalnode_list;

    void add_evalnode(const evalnodeparse& n);
    // The first line of that ident; none raises
    // "binding_declaration_parse::get_evalnode: node_not_found".
    const evalnodeparse& get_evalnode(long id) const;
    // The value expression of an evaluation line. Links are followed
    // without recursion; a cycle or a table that would expand beyond any
    // file's size ends with a message and status 1.
    DataExpr* dataexpr(long id, Module* m);
    DataExpr* dataexpr(const evalnodeparse& n, Module* m);
    // Every binding line, in file order, into the module.
    void createbinding(Module* m);

private:
    class_zkc_parser* parser;
    std::unordered_map<long, const evalnodeparse*> by_ident;  // first line of each ident
    long expanded = 0;  // expression nodes made so far

    DataExpr* leaf_or_null(const evalnodeparse& n);
    DataExpr* combine(const evalnodeparse& n, std::vector<DataExpr*>& args, Module* m);
    Signal* signal_value_signal(long over, Module* m);
};

// An entry of the source compiler's trigger lists; not used by the reader.
struct trigger_class {
    int priority;
    Expression* expression;
};

class class_zkc_parser {
public:
    long offset = 0;  // added to the under id of a clock-free binding
    int trace_level = 0;
    std::ostream* log = nullptr;  // trace and scanner output
    FlexLexer* scanner = nullptr;
    Module* module = nullptr;  // the result, made by the header's action
    std::string suffix;  // added to every signal's internal name
    std::string hierarchy;
    Bddexpressionwood* wood = nullptr;
    std::vector<Signal*> signals;  // each signal made so far, in file order
    std::list<std::string>* authorised_inputs = nullptr;
    std::list<std::string>* authorised_outputs = nullptr;
    long node_count = 0;  // the number after "equation_def:"
    // Tables by file index. They grow on demand; the node table is checked
    // against node_count, the count the file announces. Ids far beyond the
    // lines read so far go to a map, so a large announced count costs
    // nothing. The node lines lie in one block, given back whole once the
    // equations are built.
    // Its block goes to the node pool after the parse.
    std::vector<parsed_nodes_class, bdd_block_allocator<parsed_nodes_class>> parsed_nodes_table;
    std::unordered_map<long, parsed_nodes_class*> sparse_nodes;
    int method_count = 0;
    std::vector<int> corres_method;
    int type_count = 0;
    std::vector<int> corres_type;
    int constant_count = 0;
    std::vector<int> corres_constant;

    // Lists of the file, in the order of their sections.
    std::list<Signal*>* inputs = nullptr;
    std::list<Signal*>* outputs = nullptr;
    std::list<Signal*>* data_signals = nullptr;
    std::list<Signal*>* locals = nullptr;
    std::list<regclass*>* registers = nullptr;
    std::list<memorizedSignal*>* memorized = nullptr;
    binding_declaration_parse* bindings = nullptr;  // null without "binding:"
    bool reincarnate = false;
    bool finalised = false;

    class_zkc_parser();

    // Runs zkcparse on the attached scanner with the given log and trace
    // level (1 turns the trace on). Returns zkcparse's result: 0 for
    // success, 1 for a syntax error, 2 when the parser's stack is exhausted.
    int parse(std::ostream& log, int level, std::string& suffix);
    int parse(std::ostream& log, int level, std::string& suffix, std::string& hierarchy);

    // Line of the scanner, for messages; 0 before a scanner is attached.
    int lineno() const;

    // ---- semantic actions, in the order of the file ----
    void module_header(const std::string& name, long reincarnate, long finalised);
    // A signal of the list being read; `type` null for a pure signal.
    Signal* declare_signal(const std::string& name, const std::string* type);
    // The flags of each list, and the authorised-list checks.
    void end_inputs();
    void end_outputs();
    void end_data_signals();
    void end_locals();
    void register_line(const std::string& next, const std::string& actual, long initial);
    // Installs the module's lists; the memorised lines see them.
    void end_registers();
    void memorized_line(const std::string& pre, const std::string& actual, const std::string& initial);
    void connexion(const std::string& set, const std::string& reset, const std::string& rtl);
    void equation_count(long count);
    // The wood's tables catch up with the variables that the declarations
    // made; from then on every new variable updates them at once.
    void wood_catch_up();
    // Drops the node lines and the name indexes of the reading, which the
    // module does not use.
    void release_parse_tables();
    void node_line(long id, long var, long then_id, long else_id, long link);
    void bddexpression_convert(Bddexpressionwood* wood, long early, long late, long var, long root, long link,
                               std::list<long>* dependences);
    void binding_line(const couplelong& signal, long eval, const couplelong* clock);
    // "binding:" was read, even with no line behind it.
    void binding_section();
    void evaluation_line(evalnodeparse* n);
    void type_line(const std::string& name);
    void method_line(std::string* return_type, std::string* name, std::list<std::string>* arg_types);
    void constant_line(const std::string& type, const std::string& name, const std::string* plain,
                       std::map<int, std::string>* assignments);
    void end_of_file();

    // The line of that file id, null when no line defined it.
    parsed_nodes_class* parsed_node(long id) const;
    // The signal Module::getSignal would give for `name` once the lists are
    // installed, without walking them.
    Signal* find_signal(const std::string& name) const;

private:
    void append_signal(Signal* s);
    void index_module_signals();
    void check_authorised(std::list<Signal*>* l, std::list<std::string>* authorised, const char* kind);

    std::list<Signal*>* take_list();

    std::list<Signal*>* current_list = nullptr;  // receives declare_signal
    NameIndex<Signal, &Signal::getInternalName> by_internal_name;  // last signal of each internal name
    NameIndex<Signal, &Signal::getOriginalName> by_name;  // Module::getSignal over the four lists
    NameIndex<Signal, &Signal::getInternalName> pre_by_internal_name;  // then the memorised pairs
};

extern class_zkc_parser* pzkc_parser;

int zkcparse();
// The scanner's yylex on the current parser; 0 (end of file) without one.
int zkclex();
// "line N: text" on the error stream, N being the scanner's line.
void zkcerror(const char* text);
// Writes "rule[,alternative] --> text" and a line end to the log when level
// is 1. The log is flushed at the end of the parse, not at each line.
void zkc_debuger_law(int rule, int alternative, const char* text, int level, std::ostream& log);
// zkc_debuger_law on the current parser's log and level.
void zkc_trace(int rule, int alternative, const std::string& text);
// zkc_trace of head followed by tail, or by the number in decimal, for the
// lines met once per declaration, node or equation: no text is put
// together first.
void zkc_trace(int rule, int alternative, std::string_view head, std::string_view tail);
void zkc_trace(int rule, int alternative, std::string_view head, long number);
// Whether zkc_trace writes anything: the lines met once per declaration,
// node or equation build their text only then.
bool zkc_tracing();
// Ends the read of a file that cannot be used: the text on the error stream,
// then status 1 through Compilation's fatal path (which a harness may
// intercept).
[[noreturn]] void zkc_fatal(const std::string& text);

#endif
