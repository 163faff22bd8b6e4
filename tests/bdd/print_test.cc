// The printers that no generator reaches (the node printers of the targets
// are pinned by the targets' golden texts), as golden texts worked out by
// hand from the printing rules. Node numbers:
// the terminal is global id 1, variables take 2, 3, ... in creation order,
// and Bdd_and(a, b) makes node 4 (then b, else the terminal, inverse).

#include "bdd/bddpp.h"
#include "tests/bdd/bdd_test_util.h"

#include <gtest/gtest.h>

#include <list>
#include <sstream>
#include <string>

namespace {

struct TwoVariables {
    bddpp_manager m;
    bdd a = m.New_var_last("a");
    bdd b = m.New_var_last("b");
    bdd f = m.Bdd_and(a, b); // node 4
};

} // namespace

// A printed node stays printed until the marks are cleared, by the cone or
// all at once; clearing all at once many more times than a mark has values
// must keep both rules. The VHDL input lines name a variable's node.
TEST(NodePrinters, VhdlInputLinesAndMarksLastUntilCleared)
{
    TwoVariables t;
    auto print = [&] {
        std::ostringstream out;
        t.m.Print_node_for_eval_BLIF("", "", "n", out, t.f.node());
        return out.str();
    };
    const std::string whole = print();
    ASSERT_NE(whole.find(".names a n_3 n_1 n_4\n"), std::string::npos);
    EXPECT_EQ(print(), "");
    t.m.Bdd_clear_marks(t.f);
    EXPECT_EQ(print(), whole);
    for (int round = 0; round < 600; ++round) {
        t.m.Bdd_global_clear_marks();
        ASSERT_EQ(print(), whole) << "after clear " << round;
        ASSERT_EQ(print(), "") << "after clear " << round;
    }
    std::ostringstream vhdl;
    t.m.Print_node_for_eval_VHDL_reset_input("m_node", vhdl, "b");
    t.m.Print_node_for_eval_VHDL_input("s_", "_in", "m_node", vhdl, "b");
    EXPECT_EQ(vhdl.str(), "      m_node(3) <= '0';\n      m_node(3) <= s_b_in;\n");
}

TEST(NodeLists, NumberedOnceInListOrder)
{
    TwoVariables t;
    std::list<bdd> functions{t.a, t.f};
    std::ostringstream out;
    t.m.Print_bdds_list_by_nodes_list(out, functions);
    EXPECT_EQ(out.str(),
              "bdd_vars: \na,b;\nbdd_nodes: \n"
              "0: 0:1:1,-1\n"
              "1: -1:-3:-3,1\n"
              "2: 0:3:1,-1\n"
              "3: 1:1:1,-1\n");

    long map[2] = {6, 0};
    out.str("");
    t.m.Print_bdds_list_by_nodes_list(out, functions, map);
    EXPECT_EQ(out.str(),
              "4\n"
              "0: 6:1:1,-1\n"
              "1: -1:-3:-3,1\n"
              "2: 6:3:1,-1\n"
              "3: 0:1:1,-1\n");

    out.str("");
    t.m.Print_bdd_by_nodes_list(out, t.f);
    EXPECT_EQ(out.str(), "nombre de noeud trouves: 3\n0: 0:1:2,-1\n1: 1:2:2,-1\n2: -1:-3:-3,1\n");
}

TEST(StructureDump, NestedFormWithSharedNodesNamedOnce)
{
    TwoVariables t;
    std::ostringstream out;
    t.m.Print_bdd_structure(out, t.m.Bdd_not(t.f));
    EXPECT_EQ(out.str(),
              "not(\n"
              "     if a (node: 0,index: 0)\n"
              "       b (node: 1,index: 1)\n"
              "     else (not a)\n"
              "       not(\n"
              "           1 (node: 2,index: -1)\n"
              "          )\n"
              "   )\n");

    // h = a ? (b or x) : x with x = c and d: x is reached twice.
    FourVariables v;
    bdd x = v.m.Bdd_and(v.c, v.d);
    bdd h = v.m.Bdd_ite(v.a, v.m.Bdd_or(v.b, x), x);
    out.str("");
    v.m.Print_bdd_structure(out, h);
    EXPECT_EQ(out.str(),
              "if a (node: 0,index: 0)\n"
              "  if b (node: 1,index: 1)\n"
              "    1 (node: 2,index: -1)\n"
              "  else (not b)\n"
              "    if c (node: 3,index: 2)\n"
              "      d (node: 4,index: 3)\n"
              "    else (not c)\n"
              "      not(\n"
              "          1 (node: 2,index: -1)\n"
              "         )\n"
              "else (not a)\n"
              "  already found node: 3\n");
}

TEST(Statistics, MapInKeyOrderWithReferences)
{
    bddpp_manager m;
    bdd f;
    {
        bdd a = m.New_var_last("a");
        bdd b = m.New_var_last("b");
        f = m.Bdd_and(a, b);
    }
    std::ostringstream out;
    m.Bdd_stats(out);
    std::string text = out.str();
    ASSERT_EQ(text.rfind("BDD MANAGER statistics:\nmemory adress: ", 0), 0u);
    std::string rest = text.substr(text.find(" Version: 4.7\n") + 14);
    EXPECT_EQ(rest,
              "bdd constant number: 1\n"
              "-: 1 --> -1\n"
              "bdd variables number: 2\n"
              "Index (Id): name --> signature\n"
              "0(0): a --> 2097154\n"
              "1(1): b --> 2199025352706\n"
              "Map:\n"
              "global id: sign = var_index then_node else_node else_link_type (refs number)\n"
              "2: 2097154 = 0 1 1 inverse (0)\n"
              "a (node: 2,index: 0)\n"
              "-------------------------------------------\n"
              "4: 6291458 = 0 3 1 inverse (1)\n"
              "if a (node: 4,index: 0)\n"
              "  b (node: 3,index: 1)\n"
              "else (not a)\n"
              "  not(\n"
              "      1 (node: 1,index: -1)\n"
              "     )\n"
              "-------------------------------------------\n"
              "3: 2199025352706 = 1 1 1 inverse (1)\n"
              "b (node: 3,index: 1)\n"
              "-------------------------------------------\n"
              "Finaly:\n"
              "Map Nodes number: 3 --> useless: 1\n"
              "Global references number: 2\n"
              "number of garbage collector calls: 0\n"
              "----------------------------------------------\n");
}

TEST(SumTexts, WordsConstantsAndLevels)
{
    FourVariables t;
    bddpp_manager& m = t.m;
    bdd zero = m.Bdd_zero(), one = m.Bdd_one();
    bdd na = m.Bdd_not(t.a);
    bdd a_nb = m.Bdd_and(t.a, m.Bdd_not(t.b));
    bdd two = m.Bdd_or(m.Bdd_and(t.a, t.b), m.Bdd_and(t.c, t.d));
    bdd a_or_b = m.Bdd_or(t.a, t.b);

    struct Case {
        std::string got, expected;
    };
    Case cases[] = {
        {m.Print_sop_to_String(" + ", ".", "!", "", zero, 0), "0"},
        {m.Print_sop_to_String(" + ", ".", "!", "", zero, 1), "0"},
        {m.Print_sop_to_String_pref_suff(" + ", ".", "!", "", one, "p_", "_s", 1), "1"},
        {m.Print_product_to_String_pref_suff(".", "!", "", na, "p_", ""), "!p_a"},
        {m.Print_product_to_String(" and ", "not(", ")", a_nb), "a and not(b)"},
        // Level 0 lists satisfying cubes; level 1 grows and prunes them.
        {m.Print_sop_to_String(" + ", ".", "!", "", a_or_b, 0), "a + !a.b"},
        {m.Print_sop_to_String(" + ", ".", "!", "", a_or_b, 1), "a + b"},
        {m.Print_sop_to_String(" + ", ".", "!", "", a_or_b, 2), "a + b"},
        {m.Print_sop_to_VHDL_String(zero, 1), "'0'"},
        {m.Print_sop_to_VHDL_String(one, 1), "'1'"},
        {m.Print_sop_to_VHDL_String(a_nb, 1), "a and not b"},
        {m.Print_sop_to_VHDL_String(two, 1), "(a and b) or (c and d)"},
        {m.Print_sop_to_ESTEREL_String(zero, 0), "not tick"},
        {m.Print_sop_to_ESTEREL_String(one, 0), "tick"},
        {m.Print_sop_to_ESTEREL_String(a_nb, 0), "a and not b"},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.expected);

    std::ostringstream out;
    m.Print_debug_bdd(out, a_or_b);
    out << "|";
    m.Print_cat_sop(" | ", " & ", "~", "", out, m.Bdd_and(t.a, m.Bdd_not(t.c)), "x", 0);
    out << "|";
    std::map<long, int> numbers{{0, 10}, {2, 3}, {3, 9}};
    m.Print_cat_product(out, m.Bdd_and(t.a, m.Bdd_not(t.c)), numbers, 5, true);
    out << "|";
    m.Print_cat_product(out, m.Bdd_and(t.a, m.Bdd_not(t.d)), numbers, 5, false);
    EXPECT_EQ(out.str(), "a + b|x[0] & ~x[2]|20,8|10,4");
}

TEST(SumTexts, TwoLevelTables)
{
    FourVariables t;
    bddpp_manager& m = t.m;
    bdd f = m.Bdd_and(t.a, m.Bdd_not(t.b));
    std::ostringstream out;
    m.PLA_print_pref_suff(out, t.d, f, "", "", ".names ", "\n", "\n", "\n", "", 0);
    m.PLA_print_pref_suff(out, t.d, m.Bdd_or(t.a, t.c), "s_", "", ".names ", "\n", "\n", "\n", " ", 1);
    m.PLA_print_pref_suff(out, t.d, m.Bdd_one(), "", "", ".names ", "\n", "\n", "\n", "", 0);
    m.BLIF_print(out, t.d, f, 0);
    EXPECT_EQ(out.str(),
              ".names a b d\n10 1\n"
              ".names s_a s_c s_d\n1 -  1\n- 1  1\n"
              ".names d\n1\n"
              ".names  a b d10 1");
}

TEST(PrintersDeathTest, MisuseEndsTheRun)
{
    bddpp_manager three;
    bdd a = three.New_var_last("a");
    three.New_var_last("b");
    three.New_var_last("c");
    std::list<bdd> cover;
    EXPECT_EXIT(three.Bdd_sop(a, cover, 3), ::testing::ExitedWithCode(1),
                "ERROR: call bddpp_manager::Bdd_and\\(\\) with null reference");
    bddpp_manager other;
    EXPECT_EXIT(three.Bdd_sop(other.Bdd_one(), cover, 0), ::testing::ExitedWithCode(1),
                "ERROR in bddpp_manager::Bdd_sop\\(\\):\n   bdd : .*, is not allocated");
    std::map<long, int> numbers{{0, 1}};
    std::ostringstream out;
    bdd not_c = three.Bdd_not(three.Bdd_var_by_index(2));
    EXPECT_EXIT(three.Print_cat_product(out, not_c, numbers, 0, false),
                ::testing::ExitedWithCode(1), "\\*\\*\\*\\*error:print_cat_product:2 is not a valid index \n");
}
