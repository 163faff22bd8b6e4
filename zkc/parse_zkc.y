/* Grammar of compiled-module (.zkc) files: an LALR parser, zkcparse.
 *
 * Semantic values are a plain %union of a number, a string pointer and a list
 * pointer. Actions reach the parse context through the global pzkc_parser, as
 * the scanner does; nothing is passed to zkcparse. Strings made by the
 * scanner are owned by whichever action takes them.
 *
 * Every section is a named non-terminal, and each point where a reader must
 * act before the rest is read has a rule of its own: the node count
 * (node_count) before the node lines, the end of the register section
 * (registers_opt, also when empty) before the memorised lines, the "data:"
 * header (data_header) before the type lines. Lists are left-recursive, so
 * the parser stack does not grow with the length of a section; its initial
 * depth is 200 and its limit 10000, beyond which the parse ends with
 * "memory exhausted" and result 2.
 *
 * A syntax error is reported in the verbose form, "syntax error, unexpected
 * X, expecting Y or Z" with at most four alternatives, through zkcerror,
 * which puts "line N: " in front. There is no error rule: the first error
 * ends the parse with result 1.
 */

%code requires {
#include <list>
#include <map>
#include <string>
struct couplelong;
struct evalnodeparse;
}

%{
#include "data/data.h"
#include "zkc/parse_supl.h"

#define YYINITDEPTH 200
#define YYMAXDEPTH 10000
%}

%define api.prefix {zkc}
%define parse.error verbose

%union {
    long number;
    std::string* text;
    std::list<long>* numbers;
    std::list<std::pair<long, bool>>* arguments;  // number, written with "$"
    std::list<std::string>* texts;
    couplelong* pair;
    evalnodeparse* evaluation;
    std::map<int, std::string>* assignments;
    int language;
}

%token TOKEN_MODULE TOKEN_INPUTS TOKEN_OUTPUTS TOKEN_LOCALS TOKEN_DATA_SIGNAL
%token TOKEN_REGISTERS TOKEN_MEMORIZED TOKEN_CONNEXION TOKEN_EQUATION_DEF
%token TOKEN_EXPRESSION_DEF TOKEN_END TOKEN_BINDING TOKEN_EVALTABLE TOKEN_VALUE
%token TOKEN_CLOCK TOKEN_CONSTANT TOKEN_DATA TOKEN_ZKC_TYPE TOKEN_METHOD
%token TOKEN_DOUBLEPOURCENT TOKEN_POURCENT TOKEN_IMMEDIAT TOKEN_DEUX_POINTS
%token TOKEN_VIRGULE TOKEN_SEP TOKEN_POUVRANTE TOKEN_PFERMANTE TOKEN_EGAL
%token TOKEN_C_ASSIGN TOKEN_CSHARP_ASSIGN TOKEN_VHDL_ASSIGN TOKEN_LUSTRE_ASSIGN
%token TOKEN_ESTEREL_ASSIGN TOKEN_NUSMV_ASSIGN TOKEN_DEFAULT_ASSIGN
%token TOKEN_REAL
%token <number> TOKEN_NUMBER
%token <text> TOKEN_IDENT TOKEN_CHAINE_CARACTERES
%type <numbers> number_list
%type <arguments> evaluation_arguments evaluation_argument_list evaluation_argument
%type <text> memorized_initial
%type <pair> number_pair binding_clock
%type <evaluation> evaluation
%type <texts> method_arguments method_argument_list
%type <assignments> constant_assignments
%type <language> constant_language

%start zkc_file

%%

zkc_file
    : header inputs_opt outputs_opt data_signals_opt locals_opt registers_opt
      memorized_opt connexion equation_def bindings_opt data_opt
        {
            zkc_trace(1, 1, "definition finale");
            pzkc_parser->end_of_file();
        }
    ;

/* ---- header and signal lists ---- */

header
    : TOKEN_MODULE TOKEN_IDENT TOKEN_NUMBER TOKEN_NUMBER
        {
            zkc_trace(2, 1, "definition module " + *$2);
            pzkc_parser->module_header(*$2, $3, $4);
            delete $2;
        }
    ;

inputs_opt
    : %empty
    | TOKEN_INPUTS signal_list TOKEN_SEP
        {
            zkc_trace(3, 2, "definition liste inputs");
            pzkc_parser->end_inputs();
        }
    ;

outputs_opt
    : %empty
    | TOKEN_OUTPUTS signal_list TOKEN_SEP
        {
            zkc_trace(4, 2, "definition liste outputs");
            pzkc_parser->end_outputs();
        }
    ;

data_signals_opt
    : %empty
    | TOKEN_DATA_SIGNAL signal_list TOKEN_SEP
        {
            zkc_trace(5, 2, "definition liste data signals");
            pzkc_parser->end_data_signals();
        }
    ;

locals_opt
    : %empty
    | TOKEN_LOCALS signal_list TOKEN_SEP
        {
            zkc_trace(6, 2, "definition liste locals");
            pzkc_parser->end_locals();
        }
    ;

signal_list
    : signal_decl
    | signal_list signal_decl
    ;

signal_decl
    : TOKEN_IDENT
        {
            zkc_trace(7, 1, "ajout iol liste ", *$1);
            pzkc_parser->declare_signal(*$1, nullptr);
            delete $1;
        }
    | TOKEN_IDENT TOKEN_DEUX_POINTS TOKEN_IDENT
        {
            if (zkc_tracing()) zkc_trace(7, 2, "ajout iol liste " + *$1 + " : " + *$3);
            pzkc_parser->declare_signal(*$1, $3);
            delete $1;
            delete $3;
        }
    ;

/* ---- registers and memorised signals ---- */

registers_opt
    : %empty
        { pzkc_parser->end_registers(); }
    | TOKEN_REGISTERS register_lines
        {
            zkc_trace(8, 2, "definition liste registres");
            pzkc_parser->end_registers();
        }
    ;

register_lines
    : register_line
    | register_lines register_line
    ;

register_line
    : TOKEN_IDENT TOKEN_IDENT TOKEN_NUMBER TOKEN_SEP
        {
            zkc_trace(9, 1, "registre " + *$2);
            pzkc_parser->register_line(*$1, *$2, $3);
            delete $1;
            delete $2;
        }
    ;

memorized_opt
    : %empty
    | TOKEN_MEMORIZED memorized_lines
        { zkc_trace(10, 2, "definition liste memorises"); }
    ;

memorized_lines
    : memorized_line
    | memorized_lines memorized_line
    ;

memorized_line
    : TOKEN_IDENT TOKEN_IDENT memorized_initial TOKEN_SEP
        {
            zkc_trace(11, 1, "memorise " + *$1);
            pzkc_parser->memorized_line(*$1, *$2, $3 != nullptr ? *$3 : std::string());
            delete $1;
            delete $2;
            delete $3;
        }
    ;

memorized_initial
    : %empty
        { $$ = nullptr; }
    | TOKEN_IDENT
        { $$ = $1; }
    ;

connexion
    : TOKEN_CONNEXION TOKEN_IDENT TOKEN_IDENT TOKEN_IDENT TOKEN_SEP
        {
            zkc_trace(12, 1, "connexion " + *$2 + " " + *$3 + " " + *$4);
            pzkc_parser->connexion(*$2, *$3, *$4);
            delete $2;
            delete $3;
            delete $4;
        }
    ;

/* ---- the wood: node table, then one line per equation ---- */

equation_def
    : node_count node_lines TOKEN_EXPRESSION_DEF expression_lines TOKEN_END
        { zkc_trace(13, 1, "definition equations"); }
    ;

node_count
    : TOKEN_EQUATION_DEF TOKEN_NUMBER
        {
            zkc_trace(14, 1, "nombre de noeuds " + std::to_string($2));
            pzkc_parser->equation_count($2);
        }
    ;

node_lines
    : %empty
    | node_lines node_line
    ;

/* id ":" var ":" then ":" else "," link */
node_line
    : TOKEN_NUMBER TOKEN_DEUX_POINTS TOKEN_NUMBER TOKEN_DEUX_POINTS TOKEN_NUMBER
      TOKEN_DEUX_POINTS TOKEN_NUMBER TOKEN_VIRGULE TOKEN_NUMBER
        {
            zkc_trace(15, 1, "noeud ", $1);
            pzkc_parser->node_line($1, $3, $5, $7, $9);
        }
    ;

expression_lines
    : %empty
    | expression_lines expression_line
    ;

/* early late var ":" root "," link "," "(" dependences ")" */
expression_line
    : TOKEN_NUMBER TOKEN_NUMBER TOKEN_NUMBER TOKEN_DEUX_POINTS TOKEN_NUMBER
      TOKEN_VIRGULE TOKEN_NUMBER TOKEN_VIRGULE
      TOKEN_POUVRANTE number_list TOKEN_PFERMANTE
        {
            zkc_trace(16, 1, "def expression bool ", $3);
            pzkc_parser->bddexpression_convert(pzkc_parser->wood, $1, $2, $3, $5, $7, $10);
            delete $10;
        }
    ;

number_list
    : %empty
        { $$ = new std::list<long>; }
    | number_list TOKEN_NUMBER
        {
            $1->push_back($2);
            $$ = $1;
        }
    ;

/* ---- bindings of values to signals ---- */

bindings_opt
    : %empty
    | binding_section evaltable_section
    ;

binding_section
    : TOKEN_BINDING binding_lines TOKEN_END
        {
            zkc_trace(17, 1, "definition bindings");
            pzkc_parser->binding_section();
        }
    ;

binding_lines
    : %empty
    | binding_lines binding_line
    ;

binding_line
    : number_pair TOKEN_DEUX_POINTS TOKEN_VALUE TOKEN_NUMBER binding_clock TOKEN_SEP
        {
            zkc_trace(18, 1, "binding valeur " + std::to_string($4));
            pzkc_parser->binding_line(*$1, $4, $5);
            delete $1;
            delete $5;
        }
    ;

binding_clock
    : %empty
        { $$ = nullptr; }
    | TOKEN_CLOCK number_pair
        { $$ = $2; }
    ;

number_pair
    : TOKEN_POUVRANTE TOKEN_NUMBER TOKEN_VIRGULE TOKEN_NUMBER TOKEN_PFERMANTE
        { $$ = new couplelong($2, $4); }
    ;

evaltable_section
    : TOKEN_EVALTABLE evaluation_lines TOKEN_END
        { zkc_trace(19, 1, "definition evaltable"); }
    ;

evaluation_lines
    : %empty
    | evaluation_lines evaluation_line
    ;

evaluation_line
    : TOKEN_NUMBER TOKEN_DEUX_POINTS evaluation TOKEN_SEP
        {
            zkc_trace(20, 1, "evaluation " + std::to_string($1));
            $3->nodeident = $1;
            pzkc_parser->evaluation_line($3);
        }
    ;

evaluation
    : TOKEN_IMMEDIAT TOKEN_NUMBER
        {
            zkc_trace(21, 1, "constante");
            $$ = new evalnodeparse;
            $$->nodetype = evalnodeparse::CONSTANT;
            $$->tableident = $2;
            $$->methodident = -1;
        }
    | TOKEN_NUMBER
        {
            zkc_trace(21, 2, "lien");
            $$ = new evalnodeparse;
            $$->nodetype = evalnodeparse::LINK;
            $$->tableident = $1;
            $$->methodident = -1;
        }
    | TOKEN_POURCENT TOKEN_NUMBER TOKEN_POUVRANTE evaluation_arguments TOKEN_PFERMANTE
        {
            zkc_trace(21, 3, "methode externe");
            $$ = new evalnodeparse;
            $$->nodetype = evalnodeparse::METHOD;
            $$->tableident = 0;
            $$->methodident = $2;
            $$->set_arguments(*$4);
            delete $4;
        }
    | TOKEN_DOUBLEPOURCENT TOKEN_NUMBER TOKEN_POUVRANTE evaluation_arguments TOKEN_PFERMANTE
        {
            zkc_trace(21, 4, "methode predefinie");
            $$ = new evalnodeparse;
            $$->nodetype = evalnodeparse::PREDEFINED;
            $$->tableident = 0;
            $$->methodident = $2;
            $$->set_arguments(*$4);
            delete $4;
        }
    ;

evaluation_arguments
    : %empty
        { $$ = new std::list<std::pair<long, bool>>; }
    | evaluation_argument_list
        { $$ = $1; }
    ;

evaluation_argument_list
    : evaluation_argument
        { $$ = $1; }
    | evaluation_argument_list TOKEN_VIRGULE evaluation_argument
        {
            $1->splice($1->end(), *$3);
            delete $3;
            $$ = $1;
        }
    ;

/* A "$" argument names an evaluation line like any other; the mark is kept
   beside it (see evalnodeparse). */
evaluation_argument
    : TOKEN_NUMBER
        { $$ = new std::list<std::pair<long, bool>>{{$1, false}}; }
    | TOKEN_IMMEDIAT TOKEN_NUMBER
        { $$ = new std::list<std::pair<long, bool>>{{$2, true}}; }
    ;

/* ---- user data declarations ---- */

data_opt
    : %empty
    | data_header type_lines methods_opt constants_opt TOKEN_END
        { zkc_trace(22, 2, "definition data"); }
    ;

data_header
    : TOKEN_DATA TOKEN_ZKC_TYPE
    ;

type_lines
    : %empty
    | type_lines type_line
    ;

type_line
    : TOKEN_IDENT TOKEN_SEP
        {
            zkc_trace(23, 1, "type " + *$1);
            pzkc_parser->type_line(*$1);
            delete $1;
        }
    ;

methods_opt
    : %empty
    | TOKEN_METHOD method_lines
    ;

method_lines
    : %empty
    | method_lines method_line
    ;

/* return type, name, argument types */
method_line
    : TOKEN_IDENT TOKEN_IDENT TOKEN_POUVRANTE method_arguments TOKEN_PFERMANTE TOKEN_SEP
        {
            zkc_trace(24, 1, "methode " + *$2);
            pzkc_parser->method_line($1, $2, $4);
        }
    ;

method_arguments
    : %empty
        { $$ = new std::list<std::string>; }
    | method_argument_list
        { $$ = $1; }
    ;

method_argument_list
    : TOKEN_IDENT
        {
            $$ = new std::list<std::string>{*$1};
            delete $1;
        }
    | method_argument_list TOKEN_VIRGULE TOKEN_IDENT
        {
            $1->push_back(*$3);
            delete $3;
            $$ = $1;
        }
    ;

constants_opt
    : %empty
    | TOKEN_CONSTANT constant_lines
    ;

constant_lines
    : %empty
    | constant_lines constant_line
    ;

/* type, name, then one plain string or zero or more assignments */
constant_line
    : TOKEN_IDENT TOKEN_IDENT TOKEN_CHAINE_CARACTERES TOKEN_SEP
        {
            zkc_trace(25, 1, "constante " + *$2);
            pzkc_parser->constant_line(*$1, *$2, $3, nullptr);
            delete $1;
            delete $2;
            delete $3;
        }
    | TOKEN_IDENT TOKEN_IDENT constant_assignments TOKEN_SEP
        {
            zkc_trace(25, 2, "constante " + *$2);
            pzkc_parser->constant_line(*$1, *$2, nullptr, $3);
            delete $1;
            delete $2;
            delete $3;
        }
    ;

/* A language given twice keeps its last text. */
constant_assignments
    : %empty
        { $$ = new std::map<int, std::string>; }
    | constant_assignments constant_language TOKEN_CHAINE_CARACTERES
        {
            (*$1)[$2] = *$3;
            delete $3;
            $$ = $1;
        }
    ;

constant_language
    : TOKEN_C_ASSIGN
        { $$ = TLanguage::C; }
    | TOKEN_CSHARP_ASSIGN
        { $$ = TLanguage::CSHARP; }
    | TOKEN_VHDL_ASSIGN
        { $$ = TLanguage::VHDL; }
    | TOKEN_LUSTRE_ASSIGN
        { $$ = TLanguage::LUSTRE; }
    | TOKEN_ESTEREL_ASSIGN
        { $$ = TLanguage::ESTEREL; }
    | TOKEN_NUSMV_ASSIGN
        { $$ = TLanguage::SMV; }
    | TOKEN_DEFAULT_ASSIGN
        { $$ = TLanguage::DEFAULT; }
    ;

%%
