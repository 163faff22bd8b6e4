// Golden texts of a small wood: statistics, stream forms, documentation,
// the compiled-module section and the dependance summary; equations without
// wood or right member.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "context/compilation.h"
#include "tests/wood/wood_builder.h"

// The small wood of these golden texts: inputs a, b (indices 0, 1);
// x = a and b (an output), y = not x; dated by compute_dates, so x has
// early date 1 and late date 1, y early 2 and late 0, a and b late 2.
// Node ids: terminal 1, a..y own nodes 2..5, the node of a and b is 6.
// The node printer takes a variable's own node as a leaf.
class SmallWoodText : public testing::Test {
protected:
    WoodBuilder b;
    std::string address(const void* p)
    {
        std::ostringstream out;
        out << p;
        return out.str();
    }
    void SetUp() override
    {
        b.vars({"a", "b", "x", "y"});
        b.eq("x", b.m()->Bdd_and(b.v("a"), b.v("b")), int(Compilation::SOUTPUT));
        b.eq("y", b.m()->Bdd_not(b.v("x")));
        b.wood->compute_dates();
    }
    std::string stat_text()
    {
        return "wood Bddexpression statistics:\n"
               "  - adress: " + address(b.wood.get()) + "\n"
               "  - bbd variables number of the bdd manager: 4\n"
               "  - variables number used : 4\n"
               "  - arrays's length  : 4\n"
               "  - expression ids set {2,3}\n"
               "  - nb levels 3\n"
               "      level: 0\n"
               "        early date: \n"
               "        late date: 3 \n"
               "      level: 1\n"
               "        early date: 2 \n"
               "        late date: 2 \n"
               "      level: 2\n"
               "        early date: 3 \n"
               "        late date: \n"
               "      level: 3\n"
               "        early date: \n"
               "        late date: \n"
               "\n"
               "   earliest date sorting:2 3 \n"
               "\n"
               "   latest date sorting:2 3 \n"
               "\n";
    }
};

TEST_F(SmallWoodText, StatAndStreamForms)
{
    std::ostringstream stat;
    b.wood->stat(stat);
    EXPECT_EQ(stat.str(), stat_text());

    std::ostringstream whole;
    whole << *b.wood;
    std::string x = address(b.at("x")), y = address(b.at("y"));
    EXPECT_EQ(whole.str(),
              stat_text() + "Equations list:\n"
                            "0: a = - dates (0,2)  to vars {2}\n"
                            "1: b = - dates (0,2)  to vars {2}\n"
                            "2: (" + x + ") <x> [type:5]x = a * b  weight: 1 usertype: 5 dates (1,1)"
                            " from vars {0,1}  to vars {3}\n"
                            "3: (" + y + ") <y> [type:0]y = !x  weight: 1 usertype: 0 dates (2,0)"
                            " from vars {2}  to vars {}\n");

    EXPECT_EQ(b.at("x")->debug_in_string(), "<x> x = a * b  weight: 1 usertype: 5");
}

TEST_F(SmallWoodText, EarlyDependanceTree)
{
    b.var("z");
    b.eq("z", b.m()->Bdd_or(b.v("a"), b.v("y")));
    std::ostringstream out;
    b.wood->stat_early_dep(out, b.index("z"));
    EXPECT_EQ(out.str(),
              "z (4)\n"
              "   | a (0)\n"
              "   | y (3)\n"
              "      | x (2)\n"
              "         | a (0) -->\n"
              "         | b (1)\n");
}

TEST_F(SmallWoodText, DocumentationAndEquationsWithoutWoodOrRightMember)
{
    std::ostringstream basic;
    b.wood->Put_basic_doc(basic, 1);
    EXPECT_EQ(basic.str(), "x = a and b;\ny = not x;\n");

    // The whole wood's form is held by the documentation target's texts.
    // Constants and plain variables have no node lines.
    b.vars({"t", "u", "v"});
    b.eq("t", b.m()->Bdd_zero());
    b.eq("u", b.v("a"));
    std::ostringstream small;
    b.at("t")->put_doc(small, "n");
    b.at("u")->put_doc(small, "n");
    Bddexpression loose;
    loose.put_doc(small, "n");
    EXPECT_EQ(small.str(), "t   = false;u   = a;   not defined!");
    loose.name = "f";
    loose.exp_def = "g";
    std::ostringstream out;
    out << loose;
    EXPECT_EQ(without_addresses(out.str()), "(@) <f> [type:0]- = g()");

    IndexSet deps{0};
    new Bddexpression(b.index("v"), b.wood.get(), deps, "value_of", 3, 0);
    EXPECT_EQ(b.at("v")->debug_in_string(), "<v> v = value_of()  weight: 1 usertype: 0");
    // The compiled-module line of an abstract equation: no root, its
    // dependances renumbered.
    long table[7] = {10, -1, -1, -1, -1, -1, 14};
    std::ostringstream line;
    b.at("v")->put_zkc(line, table);
    EXPECT_EQ(line.str(), "3 0 14:-3,-3,(10 )");
}

TEST_F(SmallWoodText, CompiledModuleSection)
{
    long table[4] = {0, 1, 2, 3};
    std::ostringstream plain;
    b.wood->Put_zkc(plain, table, 0);
    const std::string nodes = "4\n"
                              "0: 0:1:2,-1\n"
                              "1: 1:2:2,-1\n"
                              "2: -1:-3:-3,1\n"
                              "3: 2:2:2,-1\n";
    EXPECT_EQ(plain.str(), nodes + "expressions:\n"
                                   "1 1 2:0,1,(0 1 )\n"
                                   "2 0 3:3,-1,(2 )\n");

    // y left out of the file: its root is not listed, and only the
    // commented form mentions it.
    long partial[4] = {0, 1, 2, -1};
    std::ostringstream silent;
    b.wood->Put_zkc(silent, partial, 0);
    EXPECT_EQ(silent.str(), "3\n"
                            "0: 0:1:2,-1\n"
                            "1: 1:2:2,-1\n"
                            "2: -1:-3:-3,1\n"
                            "expressions:\n"
                            "1 1 2:0,1,(0 1 )\n");

    std::ostringstream commented;
    b.wood->Put_zkc(commented, partial, 1);
    std::string text = commented.str();
    EXPECT_EQ(text.substr(text.find("expressions:")),
              "expressions:\n"
              "// expression 2:   node_3:= b;\n"
              "   node_1:= TRUE;\n"
              "   node_6:= a & node_3 | !a & !node_1;\n"
              "x   = node_6;\n"
              "1 1 2:0,1,(0 1 )\n"
              "// no generate expression about:3:   node_4:= x;\n"
              "y   = !node_4;\n"
              "\n");

    // The older layout: the same nodes, lines without dependances.
    std::ostringstream old;
    b.wood->Put_zkc_2_0_4(old, table, 0);
    EXPECT_EQ(old.str(), nodes + "expressions:\n"
                                 "1 1 2:0,1\n"
                                 "2 0 3:3,-1\n");
}

TEST_F(SmallWoodText, DependanceSummary)
{
    long table[4] = {0, 1, 2, 3};
    IndexSet all{0, 1, 2, 3};
    std::ostringstream out;
    b.wood->Put_zka(out, table, all, 0);
    EXPECT_EQ(out.str(),
              "0 : {}:1, {2,3}:2;\n"
              "1 : {}:1, {2,3}:2;\n"
              "2 : {0,1}:2, {3}:1;\n"
              "3 : {0,1,2}:3, {}:0;\n");

    // Filtered and renumbered, a variable without number left out, and
    // every line pointing into the named file.
    long renumber[4] = {7, -1, 8, 9};
    IndexSet some{0, 3};
    std::ostringstream named;
    b.wood->Put_zka(named, renumber, some, 0, "m");
    EXPECT_EQ(named.str(),
              "7 : {}:1, {9}:2[\"m.zkc:7\"];\n"
              "8 : {7}:2, {9}:1[\"m.zkc:8\"];\n"
              "9 : {7}:3, {}:0[\"m.zkc:9\"];\n");
}
