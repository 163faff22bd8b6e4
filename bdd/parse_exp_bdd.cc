// Parse_expression and the parser object that the generated scanner and
// grammar (parse_exp_bdd.l, parse_exp_bdd.y) work on.

#include "bdd/parse_exp_bdd.h"

#include "support/Stringpp.h"

#include <iostream>

class_exp_bdd_parser* pexp_bdd_parser = nullptr;

class_exp_bdd_parser::class_exp_bdd_parser(bddpp_manager* m)
    : manager(m), priority(0), expression(nullptr)
{
    pexp_bdd_parser = this;
}

class_exp_bdd_parser::~class_exp_bdd_parser()
{
    delete expression;
    if (pexp_bdd_parser == this) pexp_bdd_parser = nullptr;
}

int class_exp_bdd_parser::parse(const std::string& input)
{
    pexp_bdd_parser = this;
    text = input;
    token.clear();
    exp_bdd_scanner_reset();
    return exp_bddparse();
}

bdd class_exp_bdd_parser::bddexpression() const
{
    return expression == nullptr ? bdd() : *expression;
}

namespace {

void report(const std::string& text, const char* ending)
{
    std::cerr << "PARSING ERROR about expression: " << "\"" << text << "\"" << ending << std::endl;
}

} // namespace

bdd bddpp_manager::Parse_expression(std::string text, int& priority, int& error)
{
    bdd result;
    priority = 0;
    if (text.empty()) return Bdd_zero();
    if (text.find('/') != std::string::npos) {
        report(text, ": / char detection!");
        return Bdd_zero();
    }
    // Square brackets are not counted: "[a or b)" is a sum.
    if (char_occurences(text, '(') != char_occurences(text, ')')) {
        report(text, ": bad parenthesing!");
        return Bdd_zero();
    }
    class_exp_bdd_parser parser(this);
    error = parser.parse(text);
    if (error != 0) {
        report(text, "");
        return Bdd_zero();
    }
    result = parser.bddexpression();
    priority = parser.prio();
    return result;
}

bdd bddpp_manager::Parse_expression(std::string text, int& error)
{
    int priority = 0;
    bdd result = Parse_expression(text, priority, error);
    if (priority != 0) {
        report(text, ": unknown symbols '<' and '>' ");
        return Bdd_zero();
    }
    return result;
}
