// The compiled-module grammar: every form the file may take, what it
// leaves out, the syntax error texts and the log.

#include "tests/zkc/reader_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Module head shared by the cases that vary the later sections.
const std::string head = "module: m 0 0\nconnexion: SETm RESETm RTLm;\n";
const std::string empty_wood = "equation_def: 0 expressions: end:\n";

}  // namespace

TEST(ZkcGrammar, AcceptsEveryFormTheFileMayTake)
{
    struct {
        const char* what;
        std::string text;
    } cases[] = {
        {"only connexion and wood", head + empty_wood},
        {"typed signals in every list",
         "module: m 1 1 input: a b : int ; output: c:int d ; data_signal: e ; local: f g:bool ;"
         "connexion: S R T; " + empty_wood},
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
    };
    for (const auto& c : cases) {
        read_result r = read_zkc(c.text);
        EXPECT_EQ(r.status, 0) << c.what << "\n" << r.errors;
        EXPECT_EQ(r.errors, "") << c.what;
    }
}

// Every refusal is a syntax error; where the message is given, it names the
// line (comments and blank lines counted) and what the grammar expected.
TEST(ZkcGrammar, RejectsWhatTheFormatLeavesOut)
{
    struct {
        const char* what;
        std::string text;
        const char* message;
    } cases[] = {
        {"real number", head + "equation_def:\n0\n\n1.5",
         "line 6: syntax error, unexpected TOKEN_REAL, expecting TOKEN_EXPRESSION_DEF or TOKEN_NUMBER\n"},
        {"data without type", head + empty_wood + "data: method: end:", nullptr},
        {"binding without evaltable", head + empty_wood + "binding: end:\ndata:",
         "line 5: syntax error, unexpected TOKEN_DATA, expecting TOKEN_EVALTABLE\n"},
        {"evaltable without binding", head + empty_wood + "evaltable: end:", nullptr},
        {"constants before methods", head + empty_wood + "data: type: constant: method: end:", nullptr},
        {"anything after the last section", head + empty_wood + "data: type: end: x",
         "line 4: syntax error, unexpected TOKEN_IDENT, expecting end of file\n"},
        {"no connexion", "module: m 0 0 " + empty_wood, nullptr},
        {"no wood", head, nullptr},
        {"empty signal list", "module: m 0 0 input: ; connexion: S R T; " + empty_wood, nullptr},
        {"lone separator of a module without locals", "// header\nmodule: m 0 0\n;\nconnexion: S R T; " + empty_wood,
         "line 3: syntax error, unexpected TOKEN_SEP, expecting TOKEN_CONNEXION\n"},
        {"register section without lines", "module: m 0 0 register: connexion: S R T; " + empty_wood, nullptr},
        {"sections out of order", "module: m 0 0 output: o ; input: i ; connexion: S R T; " + empty_wood, nullptr},
        {"numeric initial value of a memorised signal",
         "module: m 0 0 output: o ; memorized: p o 0; connexion: S R T; " + empty_wood, nullptr},
        {"short node line", head + "equation_def: 1 0: -1:-3,1 expressions: end:", nullptr},
        {"missing end of the wood", head + "equation_def: 0 expressions:", nullptr},
    };
    for (const auto& c : cases) {
        read_result r = read_zkc(c.text);
        EXPECT_EQ(r.status, 1) << c.what;
        if (c.message != nullptr)
            EXPECT_EQ(r.errors, c.message) << c.what;
        else
            EXPECT_NE(r.errors.find("syntax error, unexpected"), std::string::npos) << c.what << "\n" << r.errors;
    }
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
