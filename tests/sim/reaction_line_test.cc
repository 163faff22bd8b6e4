// What a reaction line may say: names of inputs, a value in parentheses
// on a valued one only, and the message for each way of getting it wrong.

#include "sim/reaction_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const reaction_line_reader reader("m", {{"a", false}, {"b", false}, {"x", true}});

struct outcome {
    bool ok;
    std::vector<bool> present;
    std::vector<std::string> values;
    std::string error;
};

outcome read(const std::string& line)
{
    outcome o;
    o.ok = reader.read(line, o.present, o.values, o.error);
    return o;
}

TEST(ReactionLine, NamesAndValuesInAnyOrderAndSpacing)
{
    outcome o = read("  x(12)\tb \r");
    ASSERT_TRUE(o.ok) << o.error;
    EXPECT_EQ(o.present, (std::vector<bool>{false, true, true}));
    EXPECT_EQ(o.values[2], "12");

    // An empty or blank line is a reaction without input.
    for (const char* empty : {"", "   ", "\t\r"}) {
        o = read(empty);
        ASSERT_TRUE(o.ok);
        EXPECT_EQ(o.present, (std::vector<bool>{false, false, false}));
    }

    // A value is any run of printable characters but blanks, parentheses
    // and commas; the reader does not judge its type.
    o = read("a x(-3.5e2)");
    ASSERT_TRUE(o.ok) << o.error;
    EXPECT_EQ(o.values[2], "-3.5e2");
}

TEST(ReactionLine, EachFaultHasItsMessage)
{
    const std::pair<const char*, const char*> faults[] = {
        {"a c", "'c' is not an input of m"},
        {"a(1)", "input 'a' is pure and takes no value"},
        {"x", "valued input 'x' needs a value, as x(12)"},
        {"a a", "input 'a' is given twice"},
        {"x(1) x(2)", "input 'x' is given twice"},
        {"x(1", "no ')' closes the value of 'x'"},
        {"x()", "empty value for 'x'"},
        {"x(1,2)", "',' in the value of 'x'"},
        {"x(1 2)", "' ' in the value of 'x'"},
        {"x((1))", "'(' in the value of 'x'"},
        {"x(1)b", "no blank after the value of 'x'"},
        {"(a)", "unexpected '(' where an input's name should stand"},
        {"a)", "unexpected ')' after 'a'"},
        {"x(\x01)", "byte 0x01 in the value of 'x'"},
        {"\xff", "'?' is not an input of m"},
    };
    for (const auto& f : faults) {
        outcome o = read(f.first);
        EXPECT_FALSE(o.ok) << f.first;
        EXPECT_EQ(o.error, f.second) << f.first;
    }
    // A long unknown name is cut in the message.
    outcome o = read(std::string(200, 'z'));
    EXPECT_EQ(o.error, "'" + std::string(40, 'z') + "...' is not an input of m");
}

} // namespace
