// The compiled-module grammar: every form the file may take, what it
// leaves out, the syntax error texts and the log.

#include "tests/worked_module.h"
#include "tests/zkc/reader_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Module head shared by the cases that vary the later sections.
const std::string head = "module: m 0 0\nconnexion: SETm RESETm RTLm;\n";
const std::string empty_wood = "equation_def: 0 expressions: end:\n";

const char* const register_module = worked_module_text;

}  // namespace

TEST(ZkcGrammar, AcceptsEveryFormTheFileMayTake)
{
    struct {
        const char* what;
        std::string text;
    } cases[] = {
        {"register module", register_module},
        {"only connexion and wood", head + empty_wood},
        {"typed signals in every list",
         "module: m 1 1 input: a b : int ; output: c:int d ; data_signal: e ; local: f g:bool ;"
         "connexion: S R T; " + empty_wood},
        {"memorised lines with and without initial value",
         "module: m 0 0 output: o:int ; local: l ; memorized: p o zero; q l ; connexion: S R T; " + empty_wood},
        {"abstract equation and empty dependences",
         head + "equation_def: 1 0: -1:-3:-3,1 expressions: 2 3 4:-3,-3,(0 1 ) 1 1 5:0,-1,() end:"},
        {"bindings with every evaluation form",
         "module: m 0 0 input: a : t ; output: b : t c : t ; connexion: S R T; " + empty_wood +
             "binding: (2, 3): value: 0; (4, 5): value: 1 clock: (0, 1); end:\n"
             "evaltable: 0: $0; 1: %0(2, $0); 2: %%14(0, 1); 3: 2; 4: %%5(); end:\n"
             "data: type: t; method: t f(t, t); constant: t zero \"0\"; t one \"1\"; end:"},
        {"empty binding and evaluation tables", head + empty_wood + "binding: end: evaltable: end:"},
        {"types only", head + empty_wood + "data: type: end:"},
        {"empty method and constant sections", head + empty_wood + "data: type: method: constant: end:"},
        {"full data section",
         head + empty_wood +
             "data: type: integer; bool;\n"
             "method: integer add(integer, integer); bool ready();\n"
             "constant: integer zero :vhdl= \"0\" :c= \"0\" :csharp= \"0\" :nusmv= \"0\" :lustre= \"0\""
             " :esterel= \"0\" :default= \"0\"; integer limit \"100\"; integer ext;\n"
             "end:"},
        {"bindings then data", head + empty_wood + "binding: end: evaltable: end: data: type: t; end:"},
        {"identifier that looks like a number", "module: m 0 0 input: 1e5 ; connexion: S R T;" + empty_wood},
        {"comments as the writer puts them",
         head + "equation_def: 1 0: -1:-3:-3,1 expressions:\n// expression 0:node 1\n1 1 0:0,1,() end:\n"},
        {"stray character between tokens", head + "equation_def: 0 # expressions: end:"},
        {"empty string, echoed like any stray character",
         head + empty_wood + "data: type: constant: t c \"\"; end:"},
    };
    for (const auto& c : cases) {
        read_result r = read_zkc(c.text);
        EXPECT_EQ(r.status, 0) << c.what << "\n" << r.errors;
        EXPECT_EQ(r.errors, "") << c.what;
    }
}

TEST(ZkcGrammar, RejectsWhatTheFormatLeavesOut)
{
    struct {
        const char* what;
        std::string text;
    } cases[] = {
        {"real number", head + "equation_def: 1.5 expressions: end:"},
        {"data without type", head + empty_wood + "data: method: end:"},
        {"binding without evaltable", head + empty_wood + "binding: end:"},
        {"evaltable without binding", head + empty_wood + "evaltable: end:"},
        {"constants before methods", head + empty_wood + "data: type: constant: method: end:"},
        {"anything after the last section", head + empty_wood + "data: type: end: x"},
        {"no connexion", "module: m 0 0 " + empty_wood},
        {"no wood", head},
        {"empty signal list", "module: m 0 0 input: ; connexion: S R T; " + empty_wood},
        {"lone separator of a module without locals", "module: m 0 0 ;\nconnexion: S R T; " + empty_wood},
        {"register section without lines", "module: m 0 0 register: connexion: S R T; " + empty_wood},
        {"sections out of order", "module: m 0 0 output: o ; input: i ; connexion: S R T; " + empty_wood},
        {"numeric initial value of a memorised signal",
         "module: m 0 0 output: o ; memorized: p o 0; connexion: S R T; " + empty_wood},
        {"short node line", head + "equation_def: 1 0: -1:-3,1 expressions: end:"},
        {"missing end of the wood", head + "equation_def: 0 expressions:"},
        {"empty file", ""},
    };
    for (const auto& c : cases) {
        read_result r = read_zkc(c.text);
        EXPECT_EQ(r.status, 1) << c.what;
        EXPECT_NE(r.errors.find("syntax error, unexpected"), std::string::npos) << c.what << "\n" << r.errors;
    }
}

TEST(ZkcGrammar, SyntaxErrorNamesLineAndAlternatives)
{
    struct {
        std::string text;
        const char* message;
    } cases[] = {
        {head + "equation_def:\n0\n\n1.5", "line 6: syntax error, unexpected TOKEN_REAL, expecting TOKEN_EXPRESSION_DEF or TOKEN_NUMBER\n"},
        {"// header\nmodule: m 0 0\n;", "line 3: syntax error, unexpected TOKEN_SEP, expecting TOKEN_CONNEXION\n"},
        {head + empty_wood + "binding: end:\ndata:",
         "line 5: syntax error, unexpected TOKEN_DATA, expecting TOKEN_EVALTABLE\n"},
        {head + empty_wood + "data: type: end: x",
         "line 4: syntax error, unexpected TOKEN_IDENT, expecting end of file\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(read_zkc(c.text).errors, c.message);
}

TEST(ZkcGrammar, LogHoldsEchoAndTraceOnlyAtLevelOne)
{
    std::string text = head + "equation_def: 0 # expressions: end:";
    read_result traced = read_zkc(text, "", 1);
    EXPECT_NE(traced.log.find('#'), std::string::npos);
    EXPECT_NE(traced.log.find("2 --> definition module m\n"), std::string::npos);
    EXPECT_NE(traced.log.find("--> definition finale\n"), std::string::npos);

    read_result quiet = read_zkc(text);
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.log, "#");
}

TEST(ZkcGrammar, LongSectionsDoNotExhaustTheStack)
{
    // Far more lines than the parser stack's limit of 10000 entries.
    std::string text = "module: m 0 0 input:";
    for (int i = 0; i < 30000; ++i)
        text += " s" + std::to_string(i);
    text += " ; connexion: S R T; equation_def: 30000\n";
    for (int i = 0; i < 30000; ++i)
        text += std::to_string(i) + ": -1:-3:-3,1\n";
    text += "expressions: 1 1 0:0,1,(";
    for (int i = 0; i < 30000; ++i)
        text += std::to_string(i) + " ";
    text += ") end:";
    read_result r = read_zkc(text);
    EXPECT_EQ(r.status, 0) << r.errors.substr(0, 200);
}
