/* Grammar of ZK source text: an LALR parser, zkparse.
 *
 * Actions reach the parse context through the global pzk_parser, as the
 * scanner does. Strings made by the scanner are owned by the action that
 * takes them.
 *
 * Priorities, lowest first: "||", then ">>", then a present, absent or if
 * without else, then "else". So ">>" binds tighter than "||", a dangling
 * else belongs to the nearest present, absent or if, and each branch of
 * these is one instruction: "present x emit a >> emit b" is the present,
 * then "emit b" (braces make a longer branch).
 *
 * Data expressions: or, nor, xor, then and, nand, then the comparisons,
 * then "+" "-", then "*" "/", then the prefix "-" and not. The boolean
 * right parts of a Mealy machine use the same priorities.
 *
 * Lists are left-recursive so that the parser stack grows with the
 * nesting of the text and not with its length; its limit is 10000, past
 * which the parse ends with "memory exhausted".
 *
 * One conflict is expected and resolved by shifting: right after
 * "module m:", a "{" opens the braced form of the module, "{ ... }", not
 * a braced first instruction of a body that "end" closes (a module with
 * an interface has no such doubt).
 *
 * "repeat n { p }" is n copies of p in sequence, "wait n e" n waits in
 * sequence.
 *
 * In a transition "initial->" is the source of an initial transition; a
 * missing arrow is a weak transition, as "->" is. A trigger is "[e]", a
 * priority in front ("2 [e]"), "other [e]" or "[value: d]"; "[ ]" or no
 * trigger at all is always true.
 */

%code requires {
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>
class Statement;
class Expression;
class DataExpr;
class Emit;
class State;
class Transition;
// A transition's trigger as written.
struct zk_trigger {
    long priority;        // -1: none written
    bool other;
    Expression* condition;  // null: none written
    DataExpr* value;        // "[value: d]"
};
}

%{
#include "data/data.h"
#include "model/module.h"
#include "source/automaton.h"
#include "source/expression.h"
#include "source/run.h"
#include "source/statement_control.h"
#include "source/zk_parser.h"

#include <cstdlib>

#define YYINITDEPTH 200
#define YYMAXDEPTH 10000

static long number_of(std::string* text)
{
    long n = std::strtol(text->c_str(), nullptr, 10);
    delete text;
    return n;
}
%}

%define api.prefix {zk}
%define parse.error verbose
%expect 1

%union {
    long number;
    std::string* text;
    std::list<std::string>* texts;
    Statement* statement;
    Expression* expression;
    DataExpr* data;
    std::list<DataExpr*>* datas;
    std::map<int, DataExpr*>* values;
    int language;
    std::vector<Emit*>* emits;
    zk_trigger* trigger;
    State* state;
    std::vector<State*>* states;
    Transition* transition;
    std::vector<Transition*>* transitions;
    std::vector<std::pair<std::string, std::string>>* renames;
}

/* Each fixed word names its token in the messages of a syntax error. */
%token ZK_MODULE "module"
%token ZK_DATA "data:"
%token ZK_ENDDATA "end data"
%token ZK_METHOD "Method:"
%token ZK_TYPE "Type:"
%token ZK_INPUT "Input:"
%token ZK_OUTPUT "Output:"
%token ZK_LOCAL "Local:"
%token ZK_PRE "Pre:"
%token ZK_CONSTANT "Constant:"
%token ZK_RUN_DECL "Run:"
%token ZK_REG_DECL "Register:"
%token ZK_END "end"
%token ZK_PARALLEL "||"
%token ZK_NOTHING "nothing"
%token ZK_HALT "halt"
%token ZK_PRESENT "present"
%token ZK_ABSENT "absent"
%token ZK_IF "if"
%token ZK_ELSE "else"
%token ZK_LOOP "loop"
%token ZK_WHEN "when"
%token ZK_WAIT "wait"
%token ZK_EMIT "emit"
%token ZK_REPEAT "repeat"
%token ZK_NOEMIT "noemit"
%token ZK_SUSTAIN "sustain"
%token ZK_UNTIL "until"
%token ZK_WEAK "weak"
%token ZK_STRONG "strong"
%token ZK_ABORT "abort"
%token ZK_PAUSE "pause"
%token ZK_SEQUENCE ">>"
%token ZK_RUN "run"
%token ZK_ARROW "->"
%token ZK_STRONGARROW "strong->"
%token ZK_WEAKARROW "weak->"
%token ZK_NORMALTERMARROW "normalterm->"
%token ZK_BACKSLASH "\\"
%token ZK_AUTOMATON "automaton"
%token ZK_MEALY_MACHINE "Mealy Machine"
%token ZK_INIT "initial->"
%token ZK_FINAL "final"
%token ZK_OTHER "other"
%token ZK_GEOMETRY "geometry:"
%token ZK_STATE "state:"
%token ZK_TRANSITION "transition:"
%token ZK_AND "and"
%token ZK_OR "or"
%token ZK_NOT "not"
%token ZK_ABS "abs"
%token ZK_NAND "nand"
%token ZK_NOR "nor"
%token ZK_XOR "xor"
%token ZK_FF "FF"
%token ZK_TT "TT"
%token ZK_EQ_EG "=="
%token ZK_EQ_NEG "!="
%token ZK_EQ_INF "<"
%token ZK_EQ_INFE "<="
%token ZK_EQ_SUP ">"
%token ZK_EQ_SUPE ">="
%token ZK_ASSIGN ":="
%token ZK_C_ASSIGN ":c="
%token ZK_CSHARP_ASSIGN ":csharp="
%token ZK_VHDL_ASSIGN ":vhdl="
%token ZK_LUSTRE_ASSIGN ":lustre="
%token ZK_ESTEREL_ASSIGN ":esterel="
%token ZK_NUSMV_ASSIGN ":nusmv="
%token ZK_DEFAULT_ASSIGN ":default="
%token ZK_VALUE "value:"
%token ZK_IDPLUS
%token ZK_BADCHAR "character"
%token <number> ZK_SIGVAL "$"
%token <text> INTEGER "integer" REAL "real" STRING "string" ZK_ID "identifier"

%left ZK_PARALLEL
%left ZK_SEQUENCE
%precedence ZK_WITHOUTELSE
%precedence ZK_ELSE
%left ZK_OR ZK_NOR ZK_XOR
%left ZK_AND ZK_NAND
%nonassoc ZK_EQ_EG ZK_EQ_NEG ZK_EQ_INF ZK_EQ_INFE ZK_EQ_SUP ZK_EQ_SUPE
%left '+' '-'
%left '*' '/'
%precedence ZK_NOT ZK_ABS UMINUS

%type <text> ident type_name method_name constant_name module_name signal_name file_name variable
%type <text> opt_type_decl opt_const_decl
%type <texts> ident_list
%type <statement> module_body instruction operator parallel sequence present absent
%type <statement> if_inst loop repeat wait abort strongabort emit noemit sustain_until
%type <statement> nothing pause halt run automaton mealy_machine
%type <expression> quadrival_exp quadrival_term quadrival_factor quadrival_signal
%type <data> data_exp data_exp_not_basic basic_value const_expr method_call
%type <data> binary_func_call unary_func_call signal_value constant_value
%type <datas> data_exp_list
%type <values> assign_value_list
%type <language> assign_language
%type <emits> action valued_signal_list
%type <trigger> trigger
%type <state> state
%type <states> state_list
%type <transition> transition
%type <transitions> transition_def transition_list
%type <renames> opt_renaming renaming_list
%type <number> opt_final tpe
%type <text> state_name
%type <statement> opt_run
%type <expression> right_part

%start entry

%%

entry
    : data_part module_list
    | module_list
    ;

/* ---- the data part ---- */

data_part
    : ZK_DATA type_decl method_decl constant_decl ZK_ENDDATA
    ;

type_decl
    : %empty
    | ZK_TYPE type_name_list ';'
    ;

type_name_list
    : type_name
        { pzk_parser->type_line(*$1); delete $1; }
    | type_name_list ',' type_name
        { pzk_parser->type_line(*$3); delete $3; }
    ;

method_decl
    : %empty
    | ZK_METHOD method_decl_list
    ;

method_decl_list
    : method
    | method_decl_list method
    ;

method
    : type_name method_name '(' ident_list ')' ';'
        { pzk_parser->method_line(*$1, *$2, $4); delete $1; delete $2; }
    | type_name method_name '(' ')' ';'
        { pzk_parser->method_line(*$1, *$2, new std::list<std::string>); delete $1; delete $2; }
    ;

ident_list
    : ident
        { $$ = new std::list<std::string>{*$1}; delete $1; }
    | ident_list ',' ident
        { $1->push_back(*$3); delete $3; $$ = $1; }
    ;

constant_decl
    : %empty
    | ZK_CONSTANT ne_constant_decl_list
    ;

ne_constant_decl_list
    : constant
    | ne_constant_decl_list constant
    ;

/* The head names the constant for the messages of its value list. */
constant
    : constant_head ZK_ASSIGN constant_value ';'
        {
            std::map<int, DataExpr*>* values = nullptr;
            if ($3 != nullptr) {
                values = new std::map<int, DataExpr*>;
                pzk_parser->constant_assignment(*values, TLanguage::DEFAULT, $3);
            }
            pzk_parser->constant_line(values);
        }
    | constant_head assign_value_list ';'
        {
            std::map<int, DataExpr*>* values = $2;
            if (values->empty()) {
                delete values;
                values = nullptr;
            } else if (values->size() == 1 && values->count(TLanguage::DEFAULT) != 0) {
                pzk_parser->error("*****syntax error: constant declaration with only default target");
            }
            pzk_parser->constant_line(values);
        }
    ;

constant_head
    : type_name constant_name
        { pzk_parser->constant_head(*$1, *$2); delete $1; delete $2; }
    ;

assign_value_list
    : %empty
        { $$ = new std::map<int, DataExpr*>; }
    | assign_value_list assign_language basic_value
        {
            pzk_parser->constant_assignment(*$1, $2, $3);
            $$ = $1;
        }
    ;

assign_language
    : ZK_CSHARP_ASSIGN   { $$ = TLanguage::CSHARP; }
    | ZK_VHDL_ASSIGN     { $$ = TLanguage::VHDL; }
    | ZK_C_ASSIGN        { $$ = TLanguage::C; }
    | ZK_NUSMV_ASSIGN    { $$ = TLanguage::SMV; }
    | ZK_LUSTRE_ASSIGN   { $$ = TLanguage::LUSTRE; }
    | ZK_ESTEREL_ASSIGN  { $$ = TLanguage::ESTEREL; }
    | ZK_DEFAULT_ASSIGN  { $$ = TLanguage::DEFAULT; }
    ;

constant_value
    : %empty              { $$ = nullptr; }
    | data_exp_not_basic  { $$ = $1; }
    | basic_value         { $$ = $1; }
    ;

basic_value
    : INTEGER  { $$ = pzk_parser->literal(*$1); delete $1; }
    | REAL     { $$ = pzk_parser->literal(*$1); delete $1; }
    | STRING   { $$ = pzk_parser->literal(*$1); delete $1; }
    ;

type_name
    : ident
    ;

constant_name
    : ident
    ;

/* ---- modules ---- */

module_list
    : program
    | module_list program
    ;

program
    : ZK_MODULE module_name ':'
        { pzk_parser->begin_module(*$2); delete $2; }
      corps
    ;

corps
    : module_interface module_body ZK_END
        { pzk_parser->end_module($2); }
    | '{' module_interface module_body '}'
        { pzk_parser->end_module($3); }
    ;

module_interface
    : input_signal_list output_signal_list local_signal_list sigpre_signal_list run_decl_list
    ;

input_signal_list
    : %empty
    | ZK_INPUT ne_input_signal_list ';'
    ;

ne_input_signal_list
    : input_signal
    | ne_input_signal_list ',' input_signal
    ;

input_signal
    : signal_name opt_type_decl
        { pzk_parser->declare_input(*$1, $2); delete $1; delete $2; }
    ;

output_signal_list
    : %empty
    | ZK_OUTPUT ne_output_signal_list ';'
    ;

ne_output_signal_list
    : output_signal
    | ne_output_signal_list ',' output_signal
    ;

output_signal
    : signal_name opt_type_decl
        { pzk_parser->declare_output(*$1, $2); delete $1; delete $2; }
    ;

local_signal_list
    : %empty
    | ZK_LOCAL ne_local_signal_list ';'
    ;

ne_local_signal_list
    : local_signal
    | ne_local_signal_list ',' local_signal
    ;

local_signal
    : signal_name opt_type_decl
        { pzk_parser->declare_local(*$1, $2); delete $1; delete $2; }
    ;

sigpre_signal_list
    : %empty
    | ZK_PRE ne_sigpre_signal_list ';'
    ;

ne_sigpre_signal_list
    : sigpre_signal
    | ne_sigpre_signal_list ',' sigpre_signal
    ;

sigpre_signal
    : signal_name ':' signal_name opt_const_decl
        { pzk_parser->declare_pre(*$1, *$3, $4); delete $1; delete $3; delete $4; }
    ;

opt_type_decl
    : %empty      { $$ = nullptr; }
    | ':' ident   { $$ = $2; }
    ;

opt_const_decl
    : %empty             { $$ = nullptr; }
    | ZK_SIGVAL ident    { $$ = $2; }
    ;

run_decl_list
    : %empty
    | ZK_RUN_DECL ne_run_decl_list ';'
    ;

ne_run_decl_list
    : run_decl
    | ne_run_decl_list ';' run_decl
    ;

run_decl
    : STRING ':' module_name
        { pzk_parser->run_declaration(*$1, "", *$3); delete $1; delete $3; }
    | STRING ':' file_name ':' module_name
        { pzk_parser->run_declaration(*$1, *$3, *$5); delete $1; delete $3; delete $5; }
    ;

file_name
    : ident
    ;

module_name
    : ident
    ;

module_body
    : instruction     { $$ = $1; }
    | automaton       { $$ = $1; }
    | mealy_machine   { $$ = $1; }
    | %empty          { $$ = nullptr; }
    ;

/* ---- instructions ---- */

instruction
    : operator                  { $$ = $1; }
    | parallel                  { $$ = $1; }
    | sequence                  { $$ = $1; }
    | '{' instruction '}'       { $$ = $2; }
    ;

operator
    : present        { $$ = $1; }
    | absent         { $$ = $1; }
    | if_inst        { $$ = $1; }
    | loop           { $$ = $1; }
    | sustain_until  { $$ = $1; }
    | wait           { $$ = $1; }
    | emit           { $$ = $1; }
    | noemit         { $$ = $1; }
    | abort          { $$ = $1; }
    | strongabort    { $$ = $1; }
    | nothing        { $$ = $1; }
    | pause          { $$ = $1; }
    | halt           { $$ = $1; }
    | run            { $$ = $1; }
    | repeat         { $$ = $1; }
    ;

parallel
    : instruction ZK_PARALLEL instruction
        { $$ = Parallel::join(pzk_parser->module, $1, $3); }
    ;

sequence
    : instruction ZK_SEQUENCE instruction
        { $$ = Sequence::join(pzk_parser->module, $1, $3); }
    ;

pause
    : ZK_PAUSE  { $$ = new Pause(pzk_parser->module); }
    ;

nothing
    : ZK_NOTHING  { $$ = new Nothing(pzk_parser->module); }
    ;

halt
    : ZK_HALT  { $$ = new Halt(pzk_parser->module); }
    ;

present
    : ZK_PRESENT quadrival_exp instruction ZK_ELSE instruction
        { $$ = new Present(pzk_parser->module, $2, $3, $5); }
    | ZK_PRESENT quadrival_exp instruction %prec ZK_WITHOUTELSE
        { $$ = new Present(pzk_parser->module, $2, $3, nullptr); }
    ;

absent
    : ZK_ABSENT quadrival_exp instruction ZK_ELSE instruction
        { $$ = new Absent(pzk_parser->module, $2, $3, $5); }
    | ZK_ABSENT quadrival_exp instruction %prec ZK_WITHOUTELSE
        { $$ = new Absent(pzk_parser->module, $2, $3, nullptr); }
    ;

if_inst
    : ZK_IF data_exp instruction ZK_ELSE instruction
        { $$ = new If(pzk_parser->module, $2, $3, $5); }
    | ZK_IF data_exp instruction %prec ZK_WITHOUTELSE
        { $$ = new If(pzk_parser->module, $2, $3, nullptr); }
    ;

loop
    : ZK_LOOP '{' instruction '}'
        { $$ = new Loop(pzk_parser->module, $3); }
    ;

repeat
    : ZK_REPEAT INTEGER '{' instruction '}'
        { $$ = repeated(pzk_parser->module, $4, pzk_parser->count(number_of($2))); }
    ;

wait
    : ZK_WAIT quadrival_exp
        { $$ = new Wait(pzk_parser->module, $2); }
    | ZK_WAIT INTEGER quadrival_exp
        { $$ = repeated(pzk_parser->module, new Wait(pzk_parser->module, $3), pzk_parser->count(number_of($2))); }
    ;

abort
    : ZK_WEAK ZK_ABORT '{' instruction '}' ZK_WHEN quadrival_exp
        { $$ = new Abort(pzk_parser->module, $4, $7); }
    ;

strongabort
    : ZK_STRONG ZK_ABORT '{' instruction '}' ZK_WHEN quadrival_exp
        { $$ = new StrongAbort(pzk_parser->module, $4, $7); }
    ;

emit
    : ZK_EMIT signal_name
        { $$ = new Emit(pzk_parser->module, *$2, nullptr); delete $2; }
    | ZK_EMIT signal_name '(' data_exp ')'
        { $$ = new Emit(pzk_parser->module, *$2, $4); delete $2; }
    ;

noemit
    : ZK_NOEMIT signal_name
        { $$ = new NoEmit(pzk_parser->module, *$2); delete $2; }
    ;

sustain_until
    : ZK_SUSTAIN signal_name ZK_UNTIL quadrival_exp
        { $$ = new SustainUntil(pzk_parser->module, *$2, nullptr, $4); delete $2; }
    | ZK_SUSTAIN signal_name '(' data_exp ')' ZK_UNTIL quadrival_exp
        { $$ = new SustainUntil(pzk_parser->module, *$2, $4, $7); delete $2; }
    ;

run
    : ZK_RUN ZK_ID opt_renaming
        { $$ = new Run(pzk_parser->module, *$2, std::move(*$3)); delete $2; delete $3; }
    ;

opt_renaming
    : %empty
        { $$ = new std::vector<std::pair<std::string, std::string>>; }
    | '[' renaming_list ']'
        { $$ = $2; }
    ;

/* "a\x": the caller's signal a stands for x of the module run. */
renaming_list
    : signal_name ZK_BACKSLASH signal_name
        { $$ = new std::vector<std::pair<std::string, std::string>>{{*$1, *$3}}; delete $1; delete $3; }
    | renaming_list ',' signal_name ZK_BACKSLASH signal_name
        { $1->emplace_back(*$3, *$5); delete $3; delete $5; $$ = $1; }
    ;

/* ---- automata ---- */

automaton
    : ZK_AUTOMATON aut_geometry state_list transition_def
        {
            $$ = new Automaton(pzk_parser->module, std::move(*$3), std::move(*$4));
            delete $3;
            delete $4;
        }
    ;

aut_geometry
    : pair_geometry
    ;

pair_geometry
    : %empty
    | ZK_GEOMETRY real_pair
    ;

real_pair
    : ZK_EQ_INF REAL ',' REAL ZK_EQ_SUP        { delete $2; delete $4; }
    | ZK_EQ_INF INTEGER ',' REAL ZK_EQ_SUP     { delete $2; delete $4; }
    | ZK_EQ_INF REAL ',' INTEGER ZK_EQ_SUP     { delete $2; delete $4; }
    | ZK_EQ_INF INTEGER ',' INTEGER ZK_EQ_SUP  { delete $2; delete $4; }
    ;

state_list
    : state
        { $$ = new std::vector<State*>{$1}; }
    | state_list state
        {
            for (State* s : *$1)
                if (s->getName() == $2->getName())
                    pzk_parser->error("ERROR: two states or more have the same name: " + s->getName());
            $1->push_back($2);
            $$ = $1;
        }
    ;

state
    : ZK_STATE ZK_ID opt_final opt_run action opt_geometry ';'
        {
            $$ = new State(*$2, $3 != 0, static_cast<Run*>($4), std::move(*$5));
            delete $2;
            delete $5;
        }
    ;

opt_geometry
    : %empty
    | ZK_GEOMETRY real_pair REAL  { delete $3; }
    ;

opt_run
    : %empty  { $$ = nullptr; }
    | run     { $$ = $1; }
    ;

transition_def
    : ZK_TRANSITION transition_list  { $$ = $2; }
    ;

transition_list
    : transition
        { $$ = new std::vector<Transition*>{$1}; }
    | transition_list transition
        { $1->push_back($2); $$ = $1; }
    ;

transition
    : state_name trigger action tpe state_name trans_geometry ';'
        {
            $$ = new Transition(*$1, *$5, $4, $2->condition, $2->value, $2->other, static_cast<int>($2->priority),
                                std::move(*$3));
            delete $1;
            delete $2;
            delete $3;
            delete $5;
        }
    ;

/* The empty name stands for the initial pseudo-state. */
state_name
    : ZK_INIT  { $$ = new std::string(); }
    | ZK_ID    { $$ = $1; }
    ;

opt_final
    : %empty    { $$ = 0; }
    | ZK_FINAL  { $$ = 1; }
    ;

tpe
    : %empty              { $$ = Transition::WEAK; }
    | ZK_ARROW            { $$ = Transition::WEAK; }
    | ZK_STRONGARROW      { $$ = Transition::STRONG; }
    | ZK_WEAKARROW        { $$ = Transition::WEAK; }
    | ZK_NORMALTERMARROW  { $$ = Transition::NORMAL_TERMINATION; }
    ;

trigger
    : %empty
        { $$ = new zk_trigger{-1, false, nullptr, nullptr}; }
    | '[' ']'
        { $$ = new zk_trigger{-1, false, nullptr, nullptr}; }
    | INTEGER '[' ']'
        { $$ = new zk_trigger{pzk_parser->count(number_of($1)), false, nullptr, nullptr}; }
    | ZK_OTHER '[' ']'
        { $$ = new zk_trigger{-1, true, nullptr, nullptr}; }
    | '[' quadrival_exp ']'
        { $$ = new zk_trigger{-1, false, $2, nullptr}; }
    | INTEGER '[' quadrival_exp ']'
        { $$ = new zk_trigger{pzk_parser->count(number_of($1)), false, $3, nullptr}; }
    | ZK_OTHER '[' quadrival_exp ']'
        { $$ = new zk_trigger{-1, true, $3, nullptr}; }
    | '[' ZK_VALUE data_exp ']'
        { $$ = new zk_trigger{-1, false, nullptr, $3}; }
    | INTEGER '[' ZK_VALUE data_exp ']'
        { $$ = new zk_trigger{pzk_parser->count(number_of($1)), false, nullptr, $4}; }
    | ZK_OTHER '[' ZK_VALUE data_exp ']'
        { $$ = new zk_trigger{-1, true, nullptr, $4}; }
    ;

action
    : %empty                   { $$ = new std::vector<Emit*>; }
    | '/' valued_signal_list   { $$ = $2; }
    ;

trans_geometry
    : pair_geometry
    ;

valued_signal_list
    : signal_name
        { $$ = new std::vector<Emit*>{new Emit(pzk_parser->module, *$1, nullptr)}; delete $1; }
    | signal_name '(' data_exp ')'
        { $$ = new std::vector<Emit*>{new Emit(pzk_parser->module, *$1, $3)}; delete $1; }
    | valued_signal_list ',' signal_name
        { $1->push_back(new Emit(pzk_parser->module, *$3, nullptr)); delete $3; $$ = $1; }
    | valued_signal_list ',' signal_name '(' data_exp ')'
        { $1->push_back(new Emit(pzk_parser->module, *$3, $5)); delete $3; $$ = $1; }
    ;

/* ---- conditions ---- */

quadrival_exp
    : quadrival_exp ZK_OR quadrival_term  { $$ = pzk_parser->nest(new OrExpression($1, $3), {$1, $3}); }
    | quadrival_term                      { $$ = $1; }
    ;

quadrival_term
    : quadrival_term ZK_AND quadrival_factor  { $$ = pzk_parser->nest(new AndExpression($1, $3), {$1, $3}); }
    | quadrival_factor                        { $$ = $1; }
    ;

/* "abs e" closes e: a Bottom counts as False. */
quadrival_factor
    : '(' quadrival_exp ')'         { $$ = $2; }
    | ZK_NOT quadrival_factor       { $$ = pzk_parser->nest(new NotExpression($2), {$2}); }
    | ZK_ABS quadrival_factor       { $$ = pzk_parser->nest(new NotExpression(new NpExpression($2)), {$2}); }
    | quadrival_signal              { $$ = $1; }
    | '~'                           { $$ = new BottomExpression(); }
    | ZK_FF                         { $$ = new FalseExpression(); }
    | ZK_TT                         { $$ = new TrueExpression(); }
    ;

quadrival_signal
    : signal_name
        { $$ = pzk_parser->condition_signal(*$1); delete $1; }
    ;

signal_name
    : ident
    ;

/* ---- Mealy machines ---- */

mealy_machine
    : ZK_MEALY_MACHINE register_decl_list equation_decl_list
        { $$ = pzk_parser->mealy_machine(); }
    ;

register_decl_list
    : %empty
    | ZK_REG_DECL ne_register_list ';'
    ;

ne_register_list
    : reg
    | ne_register_list ',' reg
    ;

/* "r : 0 : rn": the register r, its initial value, the name of its
   next value. */
reg
    : ident ':' INTEGER ':' ident
        { pzk_parser->mealy_register(*$1, number_of($3), *$5); delete $1; delete $5; }
    ;

equation_decl_list
    : equation ';'
    | equation_decl_list equation ';'
    ;

equation
    : variable '=' right_part
        { pzk_parser->mealy_equation(*$1, nullptr, $3); delete $1; }
    | variable '(' data_exp ')' '=' right_part
        { pzk_parser->mealy_equation(*$1, $3, $6); delete $1; }
    ;

variable
    : ident
    ;

/* An integer is False for 0 and True otherwise; "abs e" closes e as in
   conditions. */
right_part
    : ident                          { $$ = pzk_parser->mealy_operand(*$1); delete $1; }
    | right_part ZK_AND right_part   { $$ = pzk_parser->nest(new AndExpression($1, $3), {$1, $3}); }
    | right_part ZK_OR right_part    { $$ = pzk_parser->nest(new OrExpression($1, $3), {$1, $3}); }
    | right_part ZK_NOR right_part
        { $$ = pzk_parser->nest(new NotExpression(new OrExpression($1, $3)), {$1, $3}); }
    | right_part ZK_XOR right_part
        {
            $$ = pzk_parser->nest(new OrExpression(new AndExpression($1, new NotExpression($3)),
                                                   new AndExpression(new NotExpression($1), $3)),
                                  {$1, $3});
        }
    | right_part ZK_NAND right_part
        { $$ = pzk_parser->nest(new NotExpression(new AndExpression($1, $3)), {$1, $3}); }
    | ZK_NOT right_part              { $$ = pzk_parser->nest(new NotExpression($2), {$2}); }
    | ZK_ABS right_part
        { $$ = pzk_parser->nest(new NotExpression(new NpExpression($2)), {$2}); }
    | INTEGER
        {
            long n = number_of($1);
            $$ = n != 0 ? static_cast<Expression*>(new TrueExpression()) : new FalseExpression();
        }
    | '(' right_part ')'             { $$ = $2; }
    ;

ident
    : ZK_ID
    ;

/* ---- data expressions ---- */

data_exp
    : data_exp_not_basic     { $$ = $1; }
    | basic_value            { $$ = $1; }
    | '(' data_exp ')'       { $$ = $2; }
    ;

data_exp_not_basic
    : const_expr        { $$ = $1; }
    | method_call       { $$ = $1; }
    | binary_func_call  { $$ = $1; }
    | unary_func_call   { $$ = $1; }
    | signal_value      { $$ = $1; }
    ;

const_expr
    : ident
        { $$ = pzk_parser->constant(*$1); delete $1; }
    ;

method_call
    : method_name '(' ')'
        { $$ = pzk_parser->method_call(*$1, nullptr); delete $1; }
    | method_name '(' data_exp_list ')'
        { $$ = pzk_parser->method_call(*$1, $3); delete $1; }
    ;

method_name
    : ident
    | method_name '.' ident
        { *$1 += "." + *$3; delete $3; $$ = $1; }
    ;

data_exp_list
    : data_exp
        { $$ = new std::list<DataExpr*>{$1}; }
    | data_exp_list ',' data_exp
        { $1->push_back($3); $$ = $1; }
    ;

binary_func_call
    : data_exp '+' data_exp         { $$ = pzk_parser->binary(DataExpr::Plus, $1, $3); }
    | data_exp '-' data_exp         { $$ = pzk_parser->binary(DataExpr::Minus, $1, $3); }
    | data_exp '*' data_exp         { $$ = pzk_parser->binary(DataExpr::Mult, $1, $3); }
    | data_exp '/' data_exp         { $$ = pzk_parser->binary(DataExpr::Div, $1, $3); }
    | data_exp ZK_AND data_exp      { $$ = pzk_parser->binary(DataExpr::And, $1, $3); }
    | data_exp ZK_OR data_exp       { $$ = pzk_parser->binary(DataExpr::Or, $1, $3); }
    | data_exp ZK_EQ_EG data_exp    { $$ = pzk_parser->binary(DataExpr::Eq, $1, $3); }
    | data_exp ZK_EQ_NEG data_exp   { $$ = pzk_parser->binary(DataExpr::Neq, $1, $3); }
    | data_exp ZK_EQ_INF data_exp   { $$ = pzk_parser->binary(DataExpr::Inf, $1, $3); }
    | data_exp ZK_EQ_INFE data_exp  { $$ = pzk_parser->binary(DataExpr::Infe, $1, $3); }
    | data_exp ZK_EQ_SUP data_exp   { $$ = pzk_parser->binary(DataExpr::Sup, $1, $3); }
    | data_exp ZK_EQ_SUPE data_exp  { $$ = pzk_parser->binary(DataExpr::Supe, $1, $3); }
    ;

unary_func_call
    : '-' data_exp %prec UMINUS     { $$ = pzk_parser->unary(DataExpr::Uminus, $2); }
    | ZK_NOT data_exp               { $$ = pzk_parser->unary(DataExpr::Not, $2); }
    ;

signal_value
    : ZK_SIGVAL signal_name
        { $$ = pzk_parser->signal_value(*$2); delete $2; }
    ;

%%
