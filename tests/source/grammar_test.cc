// The scanner's words, comments and identifiers, and the parser's
// priorities as the statement trees show them.

#include "model/module.h"
#include "source/statement.h"
#include "source/zk_parser.h"
#include "source/zk_scanner.h"
#include "source/parse_zk.hh"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

std::vector<int> tokens(const std::string& text)
{
    std::istringstream in(text);
    std::ostringstream echo;
    zkFlexLexer lexer(&in, &echo);
    std::vector<int> t;
    for (int k; (k = lexer.yylex()) != 0;)
        t.push_back(k);
    return t;
}

TEST(Scanner, WordsCommentsAndIdentifiers)
{
    using v = std::vector<int>;
    EXPECT_EQ(tokens("module modules Input: Input :"), v({ZK_MODULE, ZK_ID, ZK_INPUT, ZK_ID, ':'}));
    EXPECT_EQ(tokens("end data end  data end"), v({ZK_ENDDATA, ZK_END, ZK_ID, ZK_END}));
    EXPECT_EQ(tokens("& and | or ~ not || >> > >= ->"),
              v({ZK_AND, ZK_AND, ZK_OR, ZK_OR, ZK_NOT, ZK_NOT, ZK_PARALLEL, ZK_SEQUENCE, ZK_EQ_SUP, ZK_EQ_SUPE,
                 ZK_ARROW}));
    EXPECT_EQ(tokens("strong strong-> weak-> initial-> Mealy Machine Mealy\tMachine"),
              v({ZK_STRONG, ZK_STRONGARROW, ZK_WEAKARROW, ZK_INIT, ZK_MEALY_MACHINE, ZK_ID, ZK_ID}));
    EXPECT_EQ(tokens(":= :c= :csharp= :default= : $ # ?"),
              v({ZK_ASSIGN, ZK_C_ASSIGN, ZK_CSHARP_ASSIGN, ZK_DEFAULT_ASSIGN, ':', ZK_SIGVAL, ZK_SIGVAL, ZK_SIGVAL}));
    EXPECT_EQ(tokens("emit ;; a comment emit\nx -- another\n12 1.5 \"s t\""), v({ZK_EMIT, ZK_ID, INTEGER, REAL, STRING}));
    // An identifier starts with a letter; "_" and digits follow.
    EXPECT_EQ(tokens("a_1 _a 1a"), v({ZK_ID, '_', ZK_ID, INTEGER, ZK_ID}));
    // A NUL or a byte beyond ASCII is no end of text.
    EXPECT_EQ(tokens(std::string("a\0b", 3)), v({ZK_ID, ZK_BADCHAR, ZK_ID}));
    EXPECT_EQ(tokens("a\xe9"), v({ZK_ID, ZK_BADCHAR}));
}

Statement* body_of(const std::string& text)
{
    std::istringstream in(text);
    auto* parser = new class_zk_parser();
    auto* lexer = new zkFlexLexer(&in, &std::cerr);
    parser->scanner = lexer;
    EXPECT_EQ(parser->parse(), 0) << text;
    return parser->modules.empty() ? nullptr : parser->modules.back()->getStatement();
}

const char* head = "module m: Input: a; Output: o, p, q;\n";

TEST(Parser, PrioritiesAndTheDanglingElse)
{
    // The else belongs to the nearest present. (That a branch is one
    // instruction, and the empty and braced bodies, the programs' traces show.)
    Statement* s = body_of(std::string(head) + "present a present a emit o else emit p end");
    ASSERT_EQ(s->getName().rfind("Present", 0), 0u);
    ASSERT_EQ(s->sons().size(), 1u);
    EXPECT_EQ(s->sons()[0]->sons().size(), 2u);

    // A chain of sequences is one flat list, grouped or not.
    s = body_of(std::string(head) + "emit o >> { emit p >> emit q } >> pause >> emit o end");
    ASSERT_TRUE(s->isSequence());
    EXPECT_EQ(s->sons().size(), 5u);
}

} // namespace
