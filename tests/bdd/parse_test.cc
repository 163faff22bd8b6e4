// The boolean expression parser: precedence, words, priorities, the
// refusals with their texts, and nesting against the parser's stack.

#include "bdd/bddpp.h"
#include "bdd/parse_exp_bdd.h"
#include "tests/bdd/bdd_test_util.h"

#include <gtest/gtest.h>

#include <string>

TEST(ParseExpression, PrecedenceAndWords)
{
    FourVariables v;
    bddpp_manager& m = v.m;
    bdd a = v.a, b = v.b, c = v.c;
    struct Case {
        const char* text;
        bdd expected;
        int priority;
    };
    const Case cases[] = {
        {"a and not b or c", m.Bdd_or(m.Bdd_and(a, m.Bdd_not(b)), c), 0},
        {"a or b and c", m.Bdd_or(a, m.Bdd_and(b, c)), 0},
        {"a xor b or c", m.Bdd_or(m.Bdd_xor(a, b), c), 0},
        {"a or b xor c", m.Bdd_xor(m.Bdd_or(a, b), c), 0},
        {"a xnor b and c", m.Bdd_xnor(a, m.Bdd_and(b, c)), 0},
        {"not a and b", m.Bdd_and(m.Bdd_not(a), b), 0},
        {"NOT ( a OR b ) AND c", m.Bdd_and(m.Bdd_not(m.Bdd_or(a, b)), c), 0},
        {"! ~a", a, 0},
        {"a . b", m.Bdd_and(a, b), 0},
        {"a&b|~c", m.Bdd_or(m.Bdd_and(a, b), m.Bdd_not(c)), 0},
        {"a + b XOR c", m.Bdd_xor(m.Bdd_or(a, b), c), 0},
        // Only round parentheses are counted before parsing; the grammar
        // takes either kind on either side.
        {"[a or b) and (c]", m.Bdd_and(m.Bdd_or(a, b), c), 0},
        {"1 and a", a, 0},
        {"0 or a", a, 0},
        // Word characters run names together: these are unknown names.
        {"a.b", m.Bdd_zero(), 0},
        {"a,b or c", c, 0},
        {"-3", m.Bdd_zero(), 0},
        {"  a   ", a, 0},
        {"<2> a", a, 2},
        {"<default> a or b", m.Bdd_or(a, b), -1},
        {"<other> a", a, -1},
        {"<1> b", b, 1},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.text);
        int priority = 99, error = 99;
        bdd r;
        EXPECT_EQ(captured([&] { r = m.Parse_expression(k.text, priority, error); }), "");
        EXPECT_EQ(error, 0);
        EXPECT_EQ(priority, k.priority);
        EXPECT_EQ(r, k.expected);
    }
}

TEST(ParseExpression, RefusalsAndTheirMessages)
{
    FourVariables v;
    bddpp_manager& m = v.m;
    struct Case {
        const char* text;
        bool parser_ran; // error is written only when the parser ran
        const char* message;
    };
    const Case cases[] = {
        {"", false, ""},
        {"a/b", false, "PARSING ERROR about expression: \"a/b\": / char detection!\n"},
        {"(a", false, "PARSING ERROR about expression: \"(a\": bad parenthesing!\n"},
        {"a)) or ((b", true, "syntax error\nPARSING ERROR about expression: \"a)) or ((b\"\n"},
        {"[a", true, "syntax error\nPARSING ERROR about expression: \"[a\"\n"},
        {"not", true, "syntax error\nPARSING ERROR about expression: \"not\"\n"},
        {"a b", true, "syntax error\nPARSING ERROR about expression: \"a b\"\n"},
        {"<0> a", true,
         "parsing error in expression: \"0\" is not a correct priority value ...\n"
         "PARSING ERROR about expression: \"<0> a\"\n"},
        {"<x1> a", true,
         "parsing error in expression: name \"x1\" is not a correct priority value ...\n"
         "PARSING ERROR about expression: \"<x1> a\"\n"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.text);
        int priority = 99, error = 99;
        bdd r;
        EXPECT_EQ(captured([&] { r = m.Parse_expression(k.text, priority, error); }), k.message);
        EXPECT_TRUE(m.Bdd_is_zero_tautologic(r));
        EXPECT_EQ(priority, 0);
        if (k.parser_ran)
            EXPECT_NE(error, 0);
        else
            EXPECT_EQ(error, 99);
    }

    // The short form refuses a priority; a failed parse leaves nothing
    // behind for the next one.
    int error = 99;
    EXPECT_EQ(captured([&] { EXPECT_TRUE(m.Bdd_is_zero_tautologic(m.Parse_expression("<2> a", error))); }),
              "PARSING ERROR about expression: \"<2> a\": unknown symbols '<' and '>' \n");
    EXPECT_EQ(error, 0);
    error = 99;
    EXPECT_EQ(m.Parse_expression("a or c", error), m.Bdd_or(v.a, v.c));
    EXPECT_EQ(error, 0);
}

TEST(ParseExpression, DeepNestingExhaustsTheStackLimit)
{
    FourVariables v;
    std::string text = std::string(20000, '[') + "a" + std::string(20000, ']');
    int error = 0;
    bdd r;
    std::string message = captured([&] { r = v.m.Parse_expression(text, error); });
    EXPECT_EQ(message.rfind("memory exhausted\nPARSING ERROR about expression: ", 0), 0u);
    EXPECT_NE(error, 0);
    EXPECT_TRUE(v.m.Bdd_is_zero_tautologic(r));

    std::string fits = std::string(3000, '(') + "not b" + std::string(3000, ')');
    EXPECT_EQ(v.m.Parse_expression(fits, error), v.m.Bdd_not(v.b));
    EXPECT_EQ(error, 0);
}
