// The compiled-module scanner: longest match, then the earlier row;
// comments and characters it cannot read.

#include "zkc/parse_supl.h"
#include "zkc/parse_zkc.hh"
#include "zkc/zkc_scanner.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

// One token as the parser sees it: code and, where there is one, value.
struct token {
    int code;
    std::string value;
    bool operator==(const token& o) const { return code == o.code && value == o.value; }
};

std::ostream& operator<<(std::ostream& out, const token& t) { return out << t.code << "'" << t.value << "'"; }

struct scan_result {
    std::vector<token> tokens;
    std::string echo;
};

scan_result scan(const std::string& text)
{
    std::istringstream in(text);
    std::ostringstream echo;
    zkcFlexLexer lexer(&in, &echo);
    scan_result r;
    for (int code; (code = lexer.yylex()) != 0;) {
        token t{code, ""};
        if (code == TOKEN_NUMBER)
            t.value = std::to_string(zkclval.number);
        else if (code == TOKEN_IDENT || code == TOKEN_CHAINE_CARACTERES)
            t.value = *zkclval.text;
        r.tokens.push_back(t);
    }
    r.echo = echo.str();
    return r;
}

token num(long v) { return {TOKEN_NUMBER, std::to_string(v)}; }
token id(const char* s) { return {TOKEN_IDENT, s}; }
token op(int code) { return {code, ""}; }

}  // namespace

TEST(ZkcScanner, LongestMatchThenEarlierRow)
{
    struct {
        const char* text;
        std::vector<token> tokens;
    } cases[] = {
        {"1.5", {op(TOKEN_REAL)}},
        {"-3.", {op(TOKEN_REAL)}},
        {"1e5", {id("1e5")}},
        {"12a", {id("12a")}},
        {"1.2.3", {id("1.2.3")}},
        {".5", {id(".5")}},
        {"a.b@c", {id("a.b@c")}},
        {"-12 7", {num(-12), num(7)}},
        {"end:x", {op(TOKEN_END), id("x")}},
        {"module module:", {id("module"), op(TOKEN_MODULE)}},
        {":c= :cx", {op(TOKEN_C_ASSIGN), op(TOKEN_DEUX_POINTS), id("cx")}},
        {":default=\"0\"", {op(TOKEN_DEFAULT_ASSIGN), {TOKEN_CHAINE_CARACTERES, "0"}}},
        {"%%%$", {op(TOKEN_DOUBLEPOURCENT), op(TOKEN_POURCENT), op(TOKEN_IMMEDIAT)}},
        {"\"a b\"", {{TOKEN_CHAINE_CARACTERES, "a b"}}},
        {"(1,-1);", {op(TOKEN_POUVRANTE), num(1), op(TOKEN_VIRGULE), num(-1), op(TOKEN_PFERMANTE), op(TOKEN_SEP)}},
        {"data_signal:type:method:", {op(TOKEN_DATA_SIGNAL), op(TOKEN_ZKC_TYPE), op(TOKEN_METHOD)}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(scan(c.text).tokens, c.tokens) << c.text;
}

TEST(ZkcScanner, CommentsAndUnknownCharacters)
{
    struct {
        const char* text;
        std::vector<token> tokens;
        const char* echo;
    } cases[] = {
        {"a // b ; c\nd", {id("a"), id("d")}, ""},
        {"a //b", {id("a"), id("b")}, "//"},      // no line end: no comment
        {"a#b", {id("a"), id("b")}, "#"},
        {"x\r\ny", {id("x"), id("y")}, "\r"},     // carriage return is no blank
        {"\"\" -", {}, "\"\"-"},                  // the empty string is no token
        {"\"a\nb\"", {id("a"), id("b")}, "\"\""},
        {"\xe9t\xe9", {id("t")}, "\xe9\xe9"},
    };
    for (const auto& c : cases) {
        scan_result r = scan(c.text);
        EXPECT_EQ(r.tokens, c.tokens) << c.text;
        EXPECT_EQ(r.echo, c.echo) << c.text;
    }
}
