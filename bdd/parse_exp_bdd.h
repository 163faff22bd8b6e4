#ifndef TARN_BDD_PARSE_EXP_BDD_H
#define TARN_BDD_PARSE_EXP_BDD_H

// Reader of boolean expressions over the variables of one manager:
//
//   [<priority>] sum
//   sum     := sum or|xor|xnor product | product
//   product := product and factor | factor
//   factor  := ( sum ) | not factor | name | 0 | 1
//
// Words are separated by blanks where they would otherwise run together:
// "a.b" is one name, "a . b" a conjunction. A name that is no variable
// reads as false. bddpp_manager::Parse_expression is the entry point.

#include "bdd/bddpp.h"

#include <string>

class class_exp_bdd_parser {
public:
    bddpp_manager* manager;
    std::string text;  // the input not yet handed to the scanner
    std::string token; // the current word
    int priority;      // 0 unless the text starts with one
    bdd* expression;   // the result, owned

    // Becomes the parser that the scanner and the grammar actions serve.
    explicit class_exp_bdd_parser(bddpp_manager* manager);
    ~class_exp_bdd_parser();
    class_exp_bdd_parser(const class_exp_bdd_parser&) = delete;
    class_exp_bdd_parser& operator=(const class_exp_bdd_parser&) = delete;

    // 0 on success.
    int parse(const std::string& text);
    // A copy of the result; a null handle before a successful parse.
    bdd bddexpression() const;
    int prio() const { return priority; }
};

// The parser in use: one parse at a time.
extern class_exp_bdd_parser* pexp_bdd_parser;

// Generated scanner and parser.
int exp_bddparse();
int exp_bddlex();
void exp_bdderror(const char* message);
// Forgets whatever the scanner still held of an earlier text.
void exp_bdd_scanner_reset();

#endif
