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
#include <string>
}

%{
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

%start zkc_file

%%

zkc_file
    : header inputs_opt outputs_opt data_signals_opt locals_opt registers_opt
      memorized_opt connexion equation_def bindings_opt data_opt
        { zkc_trace(1, 1, "definition finale"); }
    ;

/* ---- header and signal lists ---- */

header
    : TOKEN_MODULE TOKEN_IDENT TOKEN_NUMBER TOKEN_NUMBER
        { zkc_trace(2, 1, "definition module " + *$2); }
    ;

inputs_opt
    : %empty
    | TOKEN_INPUTS signal_list TOKEN_SEP
        { zkc_trace(3, 2, "definition liste inputs"); }
    ;

outputs_opt
    : %empty
    | TOKEN_OUTPUTS signal_list TOKEN_SEP
        { zkc_trace(4, 2, "definition liste outputs"); }
    ;

data_signals_opt
    : %empty
    | TOKEN_DATA_SIGNAL signal_list TOKEN_SEP
        { zkc_trace(5, 2, "definition liste data signals"); }
    ;

locals_opt
    : %empty
    | TOKEN_LOCALS signal_list TOKEN_SEP
        { zkc_trace(6, 2, "definition liste locals"); }
    ;

signal_list
    : signal_decl
    | signal_list signal_decl
    ;

signal_decl
    : TOKEN_IDENT
        { zkc_trace(7, 1, "ajout iol liste " + *$1); }
    | TOKEN_IDENT TOKEN_DEUX_POINTS TOKEN_IDENT
        { zkc_trace(7, 2, "ajout iol liste " + *$1 + " : " + *$3); }
    ;

/* ---- registers and memorised signals ---- */

registers_opt
    : %empty
    | TOKEN_REGISTERS register_lines
        { zkc_trace(8, 2, "definition liste registres"); }
    ;

register_lines
    : register_line
    | register_lines register_line
    ;

register_line
    : TOKEN_IDENT TOKEN_IDENT TOKEN_NUMBER TOKEN_SEP
        { zkc_trace(9, 1, "registre " + *$2); }
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
        { zkc_trace(11, 1, "memorise " + *$1); }
    ;

memorized_initial
    : %empty
    | TOKEN_IDENT
    ;

connexion
    : TOKEN_CONNEXION TOKEN_IDENT TOKEN_IDENT TOKEN_IDENT TOKEN_SEP
        { zkc_trace(12, 1, "connexion " + *$2 + " " + *$3 + " " + *$4); }
    ;

/* ---- the wood: node table, then one line per equation ---- */

equation_def
    : node_count node_lines TOKEN_EXPRESSION_DEF expression_lines TOKEN_END
        { zkc_trace(13, 1, "definition equations"); }
    ;

node_count
    : TOKEN_EQUATION_DEF TOKEN_NUMBER
        { zkc_trace(14, 1, "nombre de noeuds " + std::to_string($2)); }
    ;

node_lines
    : %empty
    | node_lines node_line
    ;

/* id ":" var ":" then ":" else "," link */
node_line
    : TOKEN_NUMBER TOKEN_DEUX_POINTS TOKEN_NUMBER TOKEN_DEUX_POINTS TOKEN_NUMBER
      TOKEN_DEUX_POINTS TOKEN_NUMBER TOKEN_VIRGULE TOKEN_NUMBER
        { zkc_trace(15, 1, "noeud " + std::to_string($1)); }
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
        { zkc_trace(16, 1, "def expression bool " + std::to_string($3)); }
    ;

number_list
    : %empty
    | number_list TOKEN_NUMBER
    ;

/* ---- bindings of values to signals ---- */

bindings_opt
    : %empty
    | binding_section evaltable_section
    ;

binding_section
    : TOKEN_BINDING binding_lines TOKEN_END
        { zkc_trace(17, 1, "definition bindings"); }
    ;

binding_lines
    : %empty
    | binding_lines binding_line
    ;

binding_line
    : number_pair TOKEN_DEUX_POINTS TOKEN_VALUE TOKEN_NUMBER binding_clock TOKEN_SEP
        { zkc_trace(18, 1, "binding valeur " + std::to_string($4)); }
    ;

binding_clock
    : %empty
    | TOKEN_CLOCK number_pair
    ;

number_pair
    : TOKEN_POUVRANTE TOKEN_NUMBER TOKEN_VIRGULE TOKEN_NUMBER TOKEN_PFERMANTE
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
        { zkc_trace(20, 1, "evaluation " + std::to_string($1)); }
    ;

evaluation
    : TOKEN_IMMEDIAT TOKEN_NUMBER
        { zkc_trace(21, 1, "constante"); }
    | TOKEN_NUMBER
        { zkc_trace(21, 2, "lien"); }
    | TOKEN_POURCENT TOKEN_NUMBER TOKEN_POUVRANTE evaluation_arguments TOKEN_PFERMANTE
        { zkc_trace(21, 3, "methode externe"); }
    | TOKEN_DOUBLEPOURCENT TOKEN_NUMBER TOKEN_POUVRANTE evaluation_arguments TOKEN_PFERMANTE
        { zkc_trace(21, 4, "methode predefinie"); }
    ;

evaluation_arguments
    : %empty
    | evaluation_argument_list
    ;

evaluation_argument_list
    : evaluation_argument
    | evaluation_argument_list TOKEN_VIRGULE evaluation_argument
    ;

evaluation_argument
    : TOKEN_NUMBER
    | TOKEN_IMMEDIAT TOKEN_NUMBER
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
        { zkc_trace(23, 1, "type " + *$1); }
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
        { zkc_trace(24, 1, "methode " + *$2); }
    ;

method_arguments
    : %empty
    | method_argument_list
    ;

method_argument_list
    : TOKEN_IDENT
    | method_argument_list TOKEN_VIRGULE TOKEN_IDENT
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
    : TOKEN_IDENT TOKEN_IDENT constant_value TOKEN_SEP
        { zkc_trace(25, 1, "constante " + *$2); }
    ;

constant_value
    : TOKEN_CHAINE_CARACTERES
    | constant_assignments
    ;

constant_assignments
    : %empty
    | constant_assignments constant_assignment
    ;

constant_assignment
    : constant_language TOKEN_CHAINE_CARACTERES
    ;

constant_language
    : TOKEN_C_ASSIGN
    | TOKEN_CSHARP_ASSIGN
    | TOKEN_VHDL_ASSIGN
    | TOKEN_LUSTRE_ASSIGN
    | TOKEN_ESTEREL_ASSIGN
    | TOKEN_NUSMV_ASSIGN
    | TOKEN_DEFAULT_ASSIGN
    ;

%%
