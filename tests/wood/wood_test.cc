// Equations and the wood: tables, learning, forgetting, lookups, copies.

#include <functional>

#include "tests/wood/wood_builder.h"

namespace {

// Runs each call and compares what it wrote on the error stream.
void expect_reports(const std::vector<std::pair<std::function<void()>, std::string>>& cases)
{
    for (const auto& c : cases)
        EXPECT_EQ(captured(c.first), c.second);
}

} // namespace

TEST(WoodTables, LengthIsThePowerOfTwoThatHoldsTheManagersVariables)
{
    const std::pair<int, long> cases[] = {{0, 1}, {1, 1}, {2, 2}, {3, 4}, {16, 16}, {17, 32}};
    for (const auto& c : cases) {
        bddpp_manager* m = new bddpp_manager();
        for (int i = 0; i < c.first; i++) m->New_var_last("v" + std::to_string(i));
        Bddexpressionwood wood(m);
        EXPECT_EQ(wood.Nb_bdd_vars(), c.first);
        EXPECT_EQ(wood.Arrays_length(), c.second) << c.first << " variables";
    }
}

TEST(WoodLearning, ReplacingGrowingAndRelearning)
{
    WoodBuilder t;
    bdd x = t.var("x");
    // Variables made behind the wood's back are mirrored when an equation
    // needs them.
    bdd y = t.m()->New_var_last("y");
    bdd a = t.m()->New_var_last("a");
    Bddexpression* first = new Bddexpression("a", t.wood.get(), a, x, 0, 0);
    EXPECT_EQ(t.wood->Nb_bdd_vars(), 3);
    EXPECT_EQ(t.wood->Arrays_length(), 4);
    EXPECT_EQ(t.readers("x"), t.ids({"a"}));

    Bddexpression* second = new Bddexpression("a", t.wood.get(), a, y, 3, 0);
    EXPECT_EQ(t.at("a"), second);
    EXPECT_EQ(t.wood->exp_number(), 1);
    EXPECT_TRUE(t.readers("x").empty());
    EXPECT_EQ(t.readers("y"), t.ids({"a"}));
    EXPECT_EQ(t.wood->Nb_level(), 3); // a maximum, without the plus one of dating
    t.wood->learn_expression(second);
    EXPECT_EQ(t.readers("y"), t.ids({"a"}));
    delete first; // the wood lets go of a replaced equation

    Bddexpression constant_left;
    constant_left.bdd_var = t.m()->Bdd_one();
    expect_reports({
        {[&] { t.wood->learn_expression(nullptr); },
         "INTERNAL ERROR in Bddexpressionwood::learn_expression():\nno expression !!!\n"},
        {[&] { t.wood->learn_expression(&constant_left); },
         "INTERNAL ERROR in Bddexpressionwood::learn_expression():\nno left member in expression\n"},
    });
    EXPECT_EQ(t.wood->exp_number(), 1);
}

TEST(WoodLearning, ForgettingLeavesReadEquationsAlone)
{
    WoodBuilder t;
    Bddexpression* a = t.eq("a", t.var("x"));
    t.eq("b", a->bdd_var, 0, 0, 4);
    expect_reports({
        {[&] { t.wood->forget_expression_by_bddid(t.index("a")); }, ""},
        {[&] { t.wood->forget_expression_by_bddid(7); },
         "Error in Bddexpressionwood::forget_expression_by_bddid(): \n7 value not found ...\n"},
        {[&] { t.wood->absolute_forget_expression_by_bddid(-1); },
         "Error in Bddexpressionwood::forget_expression_by_bddid(): \n-1 value not found ...\n"},
    });
    EXPECT_EQ(t.at("a"), a);

    t.wood->forget_expression_by_bddid(t.index("b"));
    EXPECT_EQ(t.at("b"), nullptr);
    EXPECT_TRUE(t.readers("a").empty());
    EXPECT_EQ(t.wood->late_dates[t.index("b")], 0);
    EXPECT_EQ(t.wood->exp_ids, t.ids({"a"}));
    // The absolute form leaves the readers' table as it was.
    t.wood->absolute_forget_expression_by_bddid(t.index("a"));
    EXPECT_EQ(t.at("a"), nullptr);
    EXPECT_EQ(t.readers("x"), t.ids({"a"}));
}

TEST(WoodLookups, ResultsAndMessages)
{
    WoodBuilder t;
    bdd x = t.var("x");
    Bddexpression* a = t.eq("a", x);
    Bddexpression* b = t.eq("b", t.m()->Bdd_not(x));
    Bddexpression* last = t.eq("c", x);
    long ia = t.index("a"), ib = t.index("b");
    // The result of a call, and what it wrote on the error stream.
    auto expect = [](auto call, auto result, const std::string& err) {
        decltype(call()) got{};
        EXPECT_EQ(captured([&] { got = call(); }), err);
        EXPECT_EQ(got, result) << err;
    };
    Bddexpression* none = nullptr;
    expect([&] { return t.wood->exp_by_index(ia); }, a, "");
    expect([&] { return t.wood->exp_by_index(0); }, none, "");
    expect([&] { return t.wood->exp_by_index(9); }, none,
           "ERROR in Bddexpressionwood::exp_by_index : id `9' not found!\n");
    expect([&] { return t.wood->exp_by_bdd(b->bdd_var); }, b, "");
    expect([&] { return t.wood->exp_by_bdd(t.m()->Bdd_one()); }, none,
           "ERROR in Bddexpressionwood::exp_by_bdd : bdd not found!\n");
    expect([&] { return t.wood->exp_by_bddname("b"); }, b, "");
    expect([&] { return t.wood->exp_by_bddname("q"); }, none,
           "ERROR in Bddexpressionwood::exp_by_bddname : `q' not found!\n");
    expect([&] { return t.wood->exp_by_name("b"); }, b, "");
    // The scans by name never reach the last slot...
    expect([&] { return t.wood->exp_by_name("c"); }, none,
           "ERROR in Bddexpressionwood::exp_by_name : `c' not found!\n");
    // ... and give the index of the match plus one.
    expect([&] { return t.wood->Index_exp_by_name("a"); }, ia + 1, "");
    expect([&] { return t.wood->Index_exp_by_name("c"); }, -1L,
           "ERROR in Bddexpressionwood::Index_exp_by_name : `c' not found!\n");
    const std::string nothing;
    expect([&] { return t.wood->Name_exp_by_index(ib); }, std::string("b"), "");
    expect([&] { return t.wood->Name_exp_by_index(-2); }, nothing,
           "ERROR: in Bddexpressionwood::Name_exp_by_index(): index -2 not found!\n");
    expect([&] { return t.wood->Name_exp_by_bdd(a->bdd_var); }, std::string("a"), "");
    expect([&] { return t.wood->Name_exp_by_bdd(x); }, nothing,
           "ERROR: in Bddexpressionwood::Name_exp_by_bdd(): bdd not found!\n");
    expect([&] { return t.wood->Bddname_exp_by_index(ib); }, std::string("b"), "");
    expect([&] { return t.wood->Bddname_exp_by_index(0); }, nothing,
           "ERROR: in Bddexpressionwood::Bddname_exp_by_index(): id 0 not found!\n");
    expect([&] { return t.wood->Bddname_exp_by_bdd(x); }, std::string("x"), "");
    expect([&] { return t.wood->exp(2); }, last, "");
    expect([&] { return t.wood->exp(3); }, none,
           "ERROR in Bddexpressionwood::exp(): 3 bad number ...\npossible: {1,2,3}\n");
}

TEST(WoodEquations, ChangingTheRightMemberRelinksTheReaders)
{
    WoodBuilder t;
    bdd x = t.var("x"), y = t.var("y"), z = t.var("z");
    Bddexpression* a = t.eq("a", x);
    a->setBddExp(t.m()->Bdd_and(y, z));
    EXPECT_EQ(a->dependances, t.ids({"y", "z"}));
    EXPECT_TRUE(t.readers("x").empty());
    EXPECT_EQ(t.readers("z"), t.ids({"a"}));
    a->append_or_exp(x);
    EXPECT_EQ(t.readers("x"), t.ids({"a"}));

    bdd before = a->bdd_exp;
    a->append_not_exp();
    EXPECT_EQ(a->bdd_exp, t.m()->Bdd_not(before));
    EXPECT_EQ(a->dependances, t.ids({"x", "y", "z"}));

    a->setBddExp(y, 4, 6);
    EXPECT_TRUE(t.readers("z").empty());
    EXPECT_EQ(a->getEarlyDate(), 4);
    EXPECT_EQ(a->getLateDate(), 6);
}

TEST(WoodEquations, MisuseIsRefusedWithItsText)
{
    WoodBuilder t;
    bdd x = t.var("x");
    Bddexpression* in_wood = t.eq("a", x);
    Bddexpression loose;
    const std::string no_wood = "   no wood defined! Aborted  ...\n";
    expect_reports({
        {[&] { loose.setBddExp(x); }, "In Bddexpression::setBddExp(): \n" + no_wood},
        // The and operation reports with the or operation's text.
        {[&] { loose.append_and_exp(x); }, "In Bddexpression::append_or_exp(): \n" + no_wood},
        {[&] { loose.append_not_exp(); }, "In Bddexpression::append_not_exp(): \n" + no_wood},
        {[&] { loose.setLateDate(3); },
         "internal error in Bddexpression::setLateDate(): no wood found!\n"},
        {[&] { in_wood->setBddExp(t.m(), t.m()->Bdd_zero()); },
         "In Bddexpression::setBddExp(bddpp_manager *, bdd): \n   wood already defined! Aborted  "
         "...\n   use only Bddexpression::setBddExp(bdd) !!!\n"},
    });
    EXPECT_EQ(in_wood->bdd_exp, x);
    // Equal only if the definition texts differ: kept as it always was.
    Bddexpression copy(*in_wood);
    EXPECT_FALSE(copy == *in_wood);
    copy.exp_def = "other";
    EXPECT_TRUE(copy == *in_wood);
}

TEST(WoodEquations, AbstractEquationsKeepTheirSetsAndDeclareReaders)
{
    WoodBuilder t;
    Bddexpression* a = t.eq("a", t.var("x"));
    long ia = t.index("a");
    IndexSet declared = {ia}, deps = {0};
    long iv = t.wood->Index_new_var_last("v");
    Bddexpression* v = new Bddexpression(iv, t.wood.get(), &declared, &deps, "f", 2, 1);
    EXPECT_EQ(t.readers("v"), IndexSet{ia});
    EXPECT_EQ(t.readers("x"), (IndexSet{ia, iv}));
    EXPECT_EQ(v->getLateDate(), 1);

    // Growth rebuilds the BDD equations' sets and keeps the abstract one's.
    a->dependances.clear();
    v->add_specific_var_dependance(ia);
    for (int i = 0; i < 20; i++) t.var("g" + std::to_string(i));
    EXPECT_EQ(t.wood->Arrays_length(), 32);
    EXPECT_EQ(a->dependances, t.ids({"x"}));
    EXPECT_EQ(v->dependances, (IndexSet{0, ia}));
}

TEST(WoodTables, InsertingAVariableShiftsEverySlotAbove)
{
    WoodBuilder t;
    Bddexpression* a = t.eq("a", t.var("x"), 0, 0, 5);
    Bddexpression* b = t.eq("b", a->bdd_var);
    t.wood->New_var_before_by_index(1, "n"); // between x and a
    EXPECT_EQ(t.index("n"), 1);
    EXPECT_EQ((std::vector<Bddexpression*>(t.wood->exp_table + 1, t.wood->exp_table + 4)),
              (std::vector<Bddexpression*>{nullptr, a, b}));
    EXPECT_EQ(t.wood->exp_ids, (IndexSet{2, 3}));
    EXPECT_EQ(t.readers("x"), IndexSet{2});
    EXPECT_EQ(t.readers("a"), IndexSet{3});
    EXPECT_EQ(b->dependances, IndexSet{2});
    EXPECT_EQ(t.wood->late_dates[2], 5);
    // A known name makes no variable, which the wood reports.
    expect_reports({{[&] { t.wood->New_var_after_by_index(0, "a"); },
                     "Internal error in update_bdd_vars(nouv_index):\nawaited 5 variables, found: 4\n"}});
}

TEST(WoodCopies, ADeepCopyHasItsOwnManagerAndTheSameGraph)
{
    WoodBuilder t;
    Bddexpression* a = t.eq("a", t.m()->Bdd_and(t.var("x"), t.var("y")), 0, 1, 1);
    t.eq("b", t.m()->Bdd_not(a->bdd_var), 0, 2, 0);
    Bddexpressionwood copy(t.wood.get());
    ASSERT_NE(copy.bdd_manager, t.wood->bdd_manager);
    EXPECT_EQ(copy.exp_ids, t.wood->exp_ids);
    for (long i = 0; i < t.wood->Nb_bdd_vars(); i++) {
        EXPECT_EQ(copy.amont_table[i], t.wood->amont_table[i]);
        EXPECT_EQ(copy.late_dates[i], t.wood->late_dates[i]);
        if (Bddexpression* e = copy.exp_table[i]) {
            EXPECT_EQ(e->wood, &copy);
            EXPECT_EQ(copy.bdd_manager->set_of_index_depend_on(e->bdd_exp), e->dependances);
        }
    }
    copy.forget_expression_by_bddid(copy.Index_var_by_name("b"));
    EXPECT_NE(t.at("b"), nullptr);
    // A shared manager is shared by the copy, and so are the functions.
    t.wood->set_common_bdd_manager(1);
    Bddexpressionwood shared(*t.wood);
    EXPECT_EQ(shared.bdd_manager, t.wood->bdd_manager);
    EXPECT_EQ(shared.exp_table[t.index("a")]->bdd_exp, a->bdd_exp);
    t.wood->set_common_bdd_manager(0); // the original still owns it
}
