// Inputs the reader refuses: each ends the run with its message and
// status 1, none crashes.

#include "tests/zkc/reader_support.h"

#include "context/compilation.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <list>
#include <string>

namespace {

// a 0/1 (valued), b 2/3 (valued output), then S R T 4 to 9.
const std::string valued = "module: m 0 0 input: a : t ; output: b : t ; connexion: S R T; ";
const std::string empty_wood = "equation_def: 0 expressions: end: ";
const std::string data = " data: type: t; method: t f(t); constant: t z \"0\"; end:";

std::string with_bindings(const std::string& bindings, const std::string& evaluations)
{
    return valued + empty_wood + "binding: " + bindings + " end: evaltable: " + evaluations + " end:" + data;
}

const std::string illegal = "Error: Illegal operation!\n";

}  // namespace

// Every case ends the run with status 1 after its message; none may crash.
// Syntax errors belong to the command tests.
TEST(ReaderErrors, FatalCasesEndWithTheirMessage)
{
    struct {
        const char* what;
        std::string text;
        std::string message;  // the end of the error stream
    } cases[] = {
        {"binding of a variable no signal holds", with_bindings("(40, 41): value: 0;", "0: $0;"),
         "unknown data signal:40\n"},
        {"binding of a connexion signal", with_bindings("(4, 5): value: 0;", "0: $0;"), "unknown data signal:S\n"},
        {"evaluation line that does not exist", with_bindings("(2, 3): value: 3;", "0: $0;"),
         illegal + "binding_declaration_parse::get_evalnode: node_not_found\n"},
        {"operation with three operands", with_bindings("(2, 3): value: 0;", "0: %%0(1, 1, 1); 1: $0;"),
         illegal + "binding_declaration_parse::dataexpr: invalid_operator\n"},
        {"operation without operand", with_bindings("(2, 3): value: 0;", "0: %%5();"),
         illegal + "binding_declaration_parse::dataexpr: invalid_operator\n"},
        {"signal value of no signal", with_bindings("(2, 3): value: 0;", "0: %%14(77, 78);"),
         "binding_declaration_parse::dataexpr: signal not found: 77\n"},
        {"signal value of a connexion signal", with_bindings("(2, 3): value: 0;", "0: %%14(6, 7);"),
         "binding_declaration_parse::dataexpr2: signal not found: R\n"},
        {"evaluation lines that read each other", with_bindings("(2, 3): value: 0;", "0: %%4(1); 1: %%4(0);"),
         "binding_declaration_parse::dataexpr: node 0 reads itself\n"},
        {"constant beyond the file's", with_bindings("(2, 3): value: 0;", "0: $5;"),
         "binding_declaration_parse::dataexpr: unknown constant: 5\n"},
        {"memorised pair of an undeclared signal",
         "module: m 0 0 local: l ; memorized: p ghost; connexion: S R T; " + empty_wood,
         " undeclared signal \"ghost\" at line 1\n"},
        {"root node no line defines", valued + "equation_def: 2 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:",
         "internal error in class_zkc_parser::bddexpression_convert(): node 0 is not defined at line 1\n"},
        {"child node no line defines",
         valued + "equation_def: 3 0: 0:2:1,-1 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:",
         "internal error in parsed_nodes_class::build(): node 2 is not defined\n"},
        {"cycle in the node table",
         valued + "equation_def: 3 0: 0:1:2,-1 1: 2:0:2,-1 2: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:",
         "internal error in parsed_nodes_class::build(): node 0 is its own descendant\n"},
        {"node on a variable that does not exist",
         valued + "equation_def: 2 0: 50:1:1,-1 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:",
         "internal error in parsed_nodes_class::build(): no variable 50\n"},
        {"else link that is no link",
         valued + "equation_def: 2 0: 0:1:1,4294967297 1: -1:-3:-3,1 expressions: 1 1 2:0,1,() end:",
         "internal error in parsed_nodes_class::build(): else link neither 1 nor -1 on variable 0\n"},
        {"equation of a variable that does not exist",
         valued + "equation_def: 1 0: -1:-3:-3,1 expressions: 1 1 10:0,1,() end:",
         "internal error in class_zkc_parser::bddexpression_convert(): no variable 10 at line 1\n"},
    };
    for (const auto& c : cases) {
        run_result r = run_tarn(c.text);
        EXPECT_EQ(r.status, 1) << c.what << "\n" << r.errors;
        std::string tail = r.errors.substr(r.errors.size() > c.message.size() ? r.errors.size() - c.message.size() : 0);
        if (c.message.rfind(" undeclared", 0) == 0)
            EXPECT_EQ(r.errors.rfind(c.message, 0), 0u) << c.what << "\n" << r.errors;
        else
            EXPECT_EQ(tail, c.message) << c.what << "\n" << r.errors;
    }
}

TEST(ReaderErrors, RegisterOfAnUndeclaredSignalEndsInFinalisationWithoutCrash)
{
    run_result r = run_tarn("module: m 0 0 local: n ; register: n x 0; connexion: S R T; " + empty_wood);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.errors.rfind("register x not defined as local ...\nparsing terminated\n", 0), 0u) << r.errors;
}

TEST(ReaderErrors, AuthorisedListsRejectUnknownPureSignals)
{
    std::string file = testing::TempDir() + "reader_authorised.zkc";
    {
        std::ofstream(file) << "module: top 0 0 input: a v : int b ; output: o ; connexion: S R T; " << empty_wood;
    }
    std::list<std::string> inputs{"a", "c"};
    std::list<std::string> outputs{"o"};
    std::list<std::string> none;
    std::string hierarchy;
    // Valued signals need no authorisation; an empty list authorises all.
    EXPECT_EXIT(Compilation::zkc_parse(file, hierarchy, &inputs, &outputs), testing::ExitedWithCode(1),
                "^top:PARSING ERROR: input signal \"b\" is unknown in main module!\n  --> authorised signals:\na\nc\n$");
    std::list<std::string> other{"p"};
    EXPECT_EXIT(Compilation::zkc_parse(file, hierarchy, &none, &other), testing::ExitedWithCode(1),
                "PARSING ERROR: output signal \"o\" is unknown");
    testing::internal::CaptureStderr();
    EXPECT_NE(Compilation::zkc_parse(file, hierarchy, &none, nullptr), nullptr);
    std::string missing = file + ".none";
    EXPECT_EQ(Compilation::zkc_parse(missing, hierarchy, nullptr, nullptr), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "File: " + missing + " does not exist\n");
    std::remove(file.c_str());
    std::remove((file + ".log").c_str());
}
