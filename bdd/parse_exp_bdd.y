/* Grammar of boolean expressions over the variables of a manager. NOT
   binds tightest, then AND; OR, XOR and XNOR share the lowest level; all
   binary operators associate to the left. Each action frees the handles of
   its operands. */

%define api.prefix {exp_bdd}

%code requires {
#include "bdd/bddpp.h"
#include <string>
}

%code {
#include "bdd/parse_exp_bdd.h"
#include "support/Stringpp.h"

#include <iostream>

#define YYINITDEPTH 200
#define YYMAXDEPTH 10000

namespace {

bddpp_manager* manager() { return pexp_bdd_parser->manager; }

} // namespace
}

%union {
    bdd* function;
    int number;
    std::string* word;
}

/* The numbers are part of the interface: 262 is a binary operator that no
   word produces, 263 is not used. */
%token EXP_OR 258 EXP_AND 259 EXP_XOR 260 EXP_XNOR 261 EXP_REDUCE 262 EXP_UNUSED 263
%token EXP_NOT 264 EXP_LPAR 265 EXP_RPAR 266 EXP_LANGLE 267 EXP_RANGLE 268
%token <word> EXP_NAME 269
%token EXP_ZERO 270 EXP_ONE 271

%type <function> prefixed sum product factor name
%type <number> prefix value

%destructor { delete $$; } <function> <word>

%%

expression
    : prefixed
        {
            delete pexp_bdd_parser->expression;
            pexp_bdd_parser->expression = $1;
        }
    ;

prefixed
    : prefix sum
        {
            pexp_bdd_parser->priority = $1;
            $$ = $2;
        }
    ;

prefix
    : %empty { $$ = 0; }
    | EXP_LANGLE value EXP_RANGLE { $$ = $2; }
    ;

value
    : EXP_ZERO
        {
            std::cerr << "parsing error in expression: " << "\"0\"" << " is not a correct priority value ..."
                      << std::endl;
            YYERROR;
        }
    | EXP_ONE { $$ = 1; }
    | EXP_NAME
        {
            std::string word = *$1;
            delete $1;
            if (word == "other" || word == "default") {
                $$ = -1;
            } else if (checkuint(word)) {
                $$ = static_cast<int>(Stol(word));
            } else {
                std::cerr << "parsing error in expression: name " << "\"" << word << "\""
                          << " is not a correct priority value ..." << std::endl;
                YYERROR;
            }
        }
    ;

sum
    : sum EXP_OR product
        {
            $$ = new bdd(manager()->Bdd_or(*$1, *$3));
            delete $1;
            delete $3;
        }
    | sum EXP_XOR product
        {
            $$ = new bdd(manager()->Bdd_xor(*$1, *$3));
            delete $1;
            delete $3;
        }
    | sum EXP_XNOR product
        {
            $$ = new bdd(manager()->Bdd_xnor(*$1, *$3));
            delete $1;
            delete $3;
        }
    | product
    ;

product
    : product EXP_AND factor
        {
            $$ = new bdd(manager()->Bdd_and(*$1, *$3));
            delete $1;
            delete $3;
        }
    | factor EXP_REDUCE factor
        {
            $$ = new bdd(manager()->Bdd_reduce(*$1, *$3));
            delete $1;
            delete $3;
        }
    | factor
    ;

factor
    : EXP_LPAR sum EXP_RPAR { $$ = $2; }
    | EXP_NOT factor
        {
            $$ = new bdd(manager()->Bdd_not(*$2));
            delete $2;
        }
    | name
    | EXP_ZERO { $$ = new bdd(manager()->Bdd_zero()); }
    | EXP_ONE { $$ = new bdd(manager()->Bdd_one()); }
    ;

/* Index_var_by_name answers -1, never -3, for an unknown name: such a name
   goes on to Bdd_var_by_name and reads as false. */
name
    : EXP_NAME
        {
            std::string word = *$1;
            delete $1;
            if (manager()->Index_var_by_name(word) == -3) {
                std::cerr << "parsing error in expression: name " << word << " not identificated ..." << std::endl;
                YYERROR;
            }
            $$ = new bdd(manager()->Bdd_var_by_name(word));
        }
    ;

%%

void exp_bdderror(const char* message)
{
    std::cerr << message << std::endl;
}
