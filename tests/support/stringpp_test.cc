// The string helpers: conversions, checks, case, cutting, tokens,
// records, substitution, filters, file names, distance.

#include "support/Stringpp.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>

TEST(StringppConversion, DecimalReadsEveryCharacterArithmetically)
{
    EXPECT_EQ(Stoi(""), 0);
    EXPECT_EQ(Stoi("-12"), -12);
    EXPECT_EQ(Stoi("1a"), 59);  // 'a' counts as its code minus '0'
    EXPECT_EQ(Stol("-2147483648000"), -2147483648000L);
    EXPECT_EQ(Stoll("9000000000000000000"), 9000000000000000000LL);
    // Too long for the type: the value wraps around its width.
    EXPECT_EQ(Stoi("4294967297"), 1);
    EXPECT_EQ(Stoi("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Stoll("18446744073709551617"), 1);
    EXPECT_DOUBLE_EQ(Stod("  -1,5e2", ','), -150.0);
    EXPECT_DOUBLE_EQ(Stod("0.25"), 0.25);
}

TEST(StringppConversion, HexAndBinaryReadings)
{
    struct { const char* text; int value; } shex[] = {
        {"7f", 127}, {"80", -128}, {"f", -1}, {"A", -6}, {"ffffffff", -1}, {"8", -8}, {"0f", 15},
    };
    for (const auto& c : shex)
        EXPECT_EQ(Stoshex(c.text), c.value) << c.text;
    EXPECT_EQ(Stouhex("FF"), 255u);
    EXPECT_EQ(Stouhex("ff"), 255u);
    EXPECT_EQ(Stouhex("1G"), 16u);  // a non-digit shifts and adds nothing
    EXPECT_EQ(Stoubin("1011"), 11u);

    struct { const char* text; long value; } sbin[] = {
        {"1", -1}, {"0101", 5}, {"10", -2}, {"110", -2}, {"0", 0},
    };
    for (const auto& c : sbin)
        EXPECT_EQ(Stosbin(c.text), c.value) << c.text;

    EXPECT_EQ(Stoloruhex("0x1f", "0x"), 31);
    EXPECT_EQ(Stoloruhex("42", "0x"), 42);
    testing::internal::CaptureStderr();
    EXPECT_EQ(Stohex("42", "0x"), 42);
    EXPECT_EQ(Stohex("0x10", "0x"), 16);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Decimal Conversion 42\n");
}

TEST(StringppConversion, ToText)
{
    const std::pair<std::string, std::string> cases[] = {
        {hex1toS(0xab), "b"}, {hex2toS(255), "ff"}, {hex4toS(10), "000a"}, {hex8toS(-1), "ffffffff"},
        {bin8toS(5), "00000101"}, {unslongbyS(8), "10"}, {unslongbyS(0), "0"}, {dtoS(-1.5, 2), "-1.50"},
        {dtoS(3.0, 0), "3"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
}

TEST(StringppChecks, SyntaxChecks)
{
    const std::pair<bool, bool> checks[] = {
        {checkuint(""), false}, {checkint(""), false}, {checkint("-"), false}, {checkint("-5"), true},
        {checkint("5-"), false}, {checkhex(""), true}, {checkbin(""), true}, {checkbin("012"), false},
        {checkhexintel("1Fh"), true}, {checkhexintel("1FH"), false}, {checkhexintel("1gh"), false},
        {beginbynumber("1a"), true}, {beginbynumber(""), false}, {est_lc(','), true}, {est_lc('@'), true},
        {est_lc('-'), false}, {check_ISO_8859_1_alphabetical_letter('\xe9'), true},
        {check_ISO_8859_1_alphabetical_letter('\xd7'), false},  // multiplication sign
        {contains("abc", "bc"), true}, {contains_token("ab cd", "ab"), true}, {contains_token("cd ab", "ab"), true},
        {contains_token("abc", "ab"), false}, {contains_token("ab\xe9", "ab"), false},
        {contains_token("xab_", "ab"), true},
        // A token looks only behind the first occurrence.
        {contains_token("abc ab", "ab"), false},
    };
    for (std::size_t k = 0; k < std::size(checks); ++k) EXPECT_EQ(checks[k].first, checks[k].second) << k;

    struct { const char* text; char sep; bool ok; } doubles[] = {
        {"0", '.', true}, {"-0", '.', false}, {"-0.5", '.', true}, {"01", '.', false},
        {"1.5e-3", '.', true}, {"1.", '.', false}, {" 2,5", ',', true}, {"2.5", ',', false},
        {"", '.', false}, {"1e", '.', false}, {"12E4", '.', true}, {"1.5 ", '.', false},
    };
    for (const auto& c : doubles)
        EXPECT_EQ(checkdouble(c.text, c.sep), c.ok) << '"' << c.text << '"';

    struct { const char* text; bool plain; bool underscore; } names[] = {
        {"a", true, true}, {"1", false, false}, {"a_", false, false}, {"a_b1", true, true},
        {"_a", false, true}, {"_", false, false}, {"a-b", false, false},
    };
    for (const auto& c : names) {
        EXPECT_EQ(checkvarname(c.text), c.plain) << c.text;
        EXPECT_EQ(checkvarname_with_pre_underscore(c.text), c.underscore) << c.text;
    }
}

TEST(StringppCase, AccentsAreMappedOrDropped)
{
    EXPECT_EQ(downcase("AbC\xc9"), "abc\xc9");
    EXPECT_EQ(upcase("\xe9t\xe9 a"), "T A");  // shorter: high bytes dropped
    EXPECT_EQ(upcase_accent("\xe9t\xe9 \xe0 \xe7\xf4\xfc"), "ETE A CO");
    EXPECT_EQ(upcase_accent2("\xfc\xef\xf1\xc9\xdf\xff"), "UINESSY");
}

TEST(StringppCutting, PositionsAndBounds)
{
    const std::pair<std::string, std::string> cases[] = {
        {my_at("abcd", 1, 3), "bc"}, {my_at("abcd", 3, 9), "d"}, {my_at("abcd", 5, 9), ""},
        {my_before("abc", 10), "abc"}, {my_before("abc", 0), ""}, {my_after("abc", 1), "bc"},
        {my_after("abc", 3), ""}, {bdelete("ab"), ""}, {bdelete("abc"), "b"},
        {cancel_begin_end_spaces("   "), ""}, {cancel_begin_end_spaces("  a b "), "a b"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
    EXPECT_EQ(char_occurences("a.b.c", '.'), 2);
    EXPECT_EQ(find("abc", "x"), std::string::npos);
    EXPECT_EQ(find("abcbc", "bc"), 1u);
}

TEST(StringppTokens, NextStringtokenKinds)
{
    struct { const char* text; const char* word; const char* rest; } cases[] = {
        {"  a.b+c", "a.b", "+c"},
        {"-12.5x", "-12.5", "x"},
        {"-a", "-", "a"},
        {"   ", "", ""},
        {"+c", "+", "c"},
        {"x,y@z (", "x,y@z", " ("},
    };
    for (const auto& c : cases) {
        std::string rest = "unchanged";
        EXPECT_EQ(next_Stringtoken(c.text, ' ', &rest), c.word) << c.text;
        EXPECT_EQ(rest, c.rest) << c.text;
    }
    // The rest may be the very string being cut.
    std::string text = "and b";
    std::string word = next_Stringtoken(text, ' ', &text);
    EXPECT_EQ(word, "and");
    EXPECT_EQ(text, " b");
    EXPECT_EQ(next_Stringtoken(text, ' ', &text), "b");
    EXPECT_EQ(text, "");
}

TEST(StringppTokens, Records)
{
    std::string rest = "x";
    EXPECT_EQ(next_record("a:b:c", ':', rest), "a");
    EXPECT_EQ(rest, "b:c");
    EXPECT_EQ(next_record("abc", ':', rest), "abc");
    EXPECT_EQ(rest, "");

    char found = '?';
    EXPECT_EQ(next_record("ab;c,d", ",;", rest, found), "ab");
    EXPECT_EQ(found, ';');
    EXPECT_EQ(rest, "c,d");
    EXPECT_EQ(next_record("abc", ",;", rest, found), "abc");
    EXPECT_EQ(rest, "");

    EXPECT_EQ(last_record("a/b/c", '/', rest), "c");
    EXPECT_EQ(rest, "a/b");
    EXPECT_EQ(last_record("/c", '/', rest), "c");
    EXPECT_EQ(rest, "");
    std::string path = "x/y";
    EXPECT_EQ(last_record(path, '/', path), "y");
    EXPECT_EQ(path, "x");
}

TEST(StringppSubstitution, LeftToRightWithoutRescanning)
{
    const std::pair<std::string, std::string> cases[] = {
        {substitute_string("a___b", "__", "_X_"), "a_X__b"}, {substitute_string("aaa", "a", "aa"), "aaaaaa"},
        {substitute_string("abc", "", "x"), "abc"}, {substitute_char("a.b.c", '.', '_'), "a_b_c"},
        {substitute_char("a.b", '.', std::string("->")), "a->b"},
        {substitute_token("a ab a_b ba a.a", "a", "X"), "X ab a_b ba X.X"},
        {substitute_token("aa", "a", "X"), "aa"}, {clever_substitute_space("  a   b c ", '_'), "a_b_c"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
}

TEST(StringppFilters, RtfRowsSeeEarlierResults)
{
    EXPECT_EQ(latex_String_filter("a_b_c"), "a\\_b\\_c");
    EXPECT_EQ(rtf_String_filter("l'\xc3\xa9t\xc3\xa9"), "l\\'91\\'e9t\\'e9");
    EXPECT_EQ(rtf_String_filter("\xc3\xa0 \xc3\x97"), "\\'eO x");
    // The first row has already rewritten every quote when the last row
    // runs, so a typed "\'24" never reaches it.
    EXPECT_EQ(rtf_String_filter("\\'24"), "\\\\'9124");
    EXPECT_EQ(rtf_String_filter("\xe2\x80\x99\xe2\x80\x93"), "\\'27-");
}

TEST(StringppFileNames, SeparatorsAndExtensions)
{
    const std::pair<std::string, std::string> cases[] = {
        {extract_filename_path("a\\b/c.txt"), "a\\b"}, {extract_filename_name("a/b\\c.txt"), "c.txt"},
        {extract_filename_name("c.txt"), "c.txt"}, {extract_filename_path("c.txt"), ""},
        {supress_filename_extension("a/b.c.d"), "a/b.c"},
        {supress_filename_extension("dir.d/file"), "dir.d/file"},
        {relative_directory_path("/a/b", "/a/c/d"), "../c/d/"},
        {relative_directory_path("/a/b/", "/a/b"), ""}, {relative_directory_path("/a", "/a/./x/../y"), "y/"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
    EXPECT_FALSE(my_current_directory().empty());
}

TEST(StringppOther, Levenshtein)
{
    EXPECT_EQ(levenshtein("kitten", "sitting"), 3);
    EXPECT_EQ(levenshtein("", "abc"), 3);
    EXPECT_EQ(levenshtein("same", "same"), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(levenshtein(std::string(1000, 'a'), "a"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "chaines trop grandes!\n");
}
