#ifndef TARN_ZKC_PARSE_SUPL_H
#define TARN_ZKC_PARSE_SUPL_H

// Context of one parse of a compiled-module (.zkc) file. The grammar actions
// and the scanner take no parameter: they reach the parser through the
// global pzkc_parser, which the constructor sets and which keeps pointing at
// the last parser built.

#include <fstream>
#include <list>
#include <ostream>
#include <string>
#include <vector>

class FlexLexer;
class Module;
class Signal;
class Bddexpressionwood;
class parsed_nodes_class;

class class_zkc_parser {
public:
    long offset = 0;  // added to the under id of a clock-free binding
    int trace_level = 0;
    std::fstream* log = nullptr;  // trace and scanner output
    FlexLexer* scanner = nullptr;
    Module* module = nullptr;  // the result, made by the header's action
    std::string suffix;  // added to every signal's internal name
    std::string hierarchy;
    Bddexpressionwood* wood = nullptr;
    std::list<Signal*> signals;  // each signal made so far, in file order
    std::list<std::string>* authorised_inputs = nullptr;
    std::list<std::string>* authorised_outputs = nullptr;
    long node_count = 0;  // the number after "equation_def:"
    // Tables by file index. They grow on demand; the node table is checked
    // against node_count, the count the file announces.
    std::vector<parsed_nodes_class*> parsed_nodes_table;
    int method_count = 0;
    std::vector<int> corres_method;
    int type_count = 0;
    std::vector<int> corres_type;
    int constant_count = 0;
    std::vector<int> corres_constant;

    class_zkc_parser();

    // Runs zkcparse on the attached scanner with the given log and trace
    // level (1 turns the trace on). Returns zkcparse's result: 0 for
    // success, 1 for a syntax error, 2 when the parser's stack is exhausted.
    int parse(std::fstream& log, int level, std::string& suffix);
    int parse(std::fstream& log, int level, std::string& suffix, std::string& hierarchy);

    // Line of the scanner, for messages; 0 before a scanner is attached.
    int lineno() const;
};

extern class_zkc_parser* pzkc_parser;

int zkcparse();
// The scanner's yylex on the current parser; 0 (end of file) without one.
int zkclex();
// "line N: text" on the error stream, N being the scanner's line.
void zkcerror(const char* text);
// Writes "rule[,alternative] --> text" to the log when level is 1.
void zkc_debuger_law(int rule, int alternative, const char* text, int level, std::ostream& log);
// zkc_debuger_law on the current parser's log and level.
void zkc_trace(int rule, int alternative, const std::string& text);

#endif
