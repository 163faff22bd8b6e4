// Equations and the wood: tables, learning, forgetting, lookups, copies.

#include <functional>

#include "model/compilation.h"
#include "tests/wood/wood_fixture.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(WoodTables, LengthIsTheSmallestPowerOfTwoAtLeastOne)
{
    const struct {
        int vars;
        long length;
    } cases[] = {{0, 1}, {1, 1}, {2, 2}, {3, 4}, {5, 8}, {16, 16}, {17, 32}};
    for (const auto& c : cases) {
        bddpp_manager* m = new bddpp_manager();
        for (int i = 0; i < c.vars; i++) m->New_var_last("v" + std::to_string(i));
        Bddexpressionwood wood(m);
        EXPECT_EQ(wood.Nb_bdd_vars(), c.vars);
        EXPECT_EQ(wood.Arrays_length(), c.length) << c.vars << " variables";
        EXPECT_EQ(wood.Nb_level(), 0);
    }
}

TEST(WoodTables, LearningBeyondTheMirroredVariablesGrowsTheTablesFirst)
{
    TestWood t;
    bdd x = t.var("x");
    // Variables made behind the wood's back are not mirrored yet.
    t.m().New_var_last("y");
    t.m().New_var_last("z");
    bdd a = t.m().New_var_last("a");
    EXPECT_EQ(t.wood.Nb_bdd_vars(), 1);
    Bddexpression* e = new Bddexpression("a", &t.wood, a, x, 0, 0);
    EXPECT_EQ(t.wood.Nb_bdd_vars(), 4);
    EXPECT_EQ(t.wood.Arrays_length(), 4);
    EXPECT_EQ(t.wood.exp_by_index(3), e);
    EXPECT_EQ(t.readers("x"), std::set<long>{3});
    EXPECT_EQ(t.wood.exp_ids, std::set<long>{3});
}

TEST(WoodLearning, ASecondEquationReplacesTheFirstAndUnlinksItsReads)
{
    TestWood t;
    bdd x = t.var("x"), y = t.var("y");
    Bddexpression* first = t.eq("a", x);
    Bddexpression* second = t.eq("a", y, 3, 0);
    EXPECT_EQ(t.at("a"), second);
    EXPECT_EQ(t.wood.exp_number(), 1);
    EXPECT_TRUE(t.readers("x").empty());
    EXPECT_EQ(t.readers("y"), t.ids({"a"}));
    EXPECT_EQ(t.wood.Nb_level(), 3); // a maximum, without the plus one of dating
    // The same object again changes nothing.
    t.wood.learn_expression(second);
    EXPECT_EQ(t.wood.exp_number(), 1);
    EXPECT_EQ(t.readers("y"), t.ids({"a"}));
    delete first; // left to the caller once replaced
}

TEST(WoodLearning, RefusalsAreReportedAndLearnNothing)
{
    TestWood t;
    t.var("x");
    const struct {
        std::function<void()> call;
        const char* text;
    } cases[] = {
        {[&] { t.wood.learn_expression(nullptr); },
         "INTERNAL ERROR in Bddexpressionwood::learn_expression():\nno expression !!!\n"},
        {[&] {
             Bddexpression free_standing;
             free_standing.bdd_var = t.m().Bdd_one();
             t.wood.learn_expression(&free_standing);
         },
         "INTERNAL ERROR in Bddexpressionwood::learn_expression():\nno left member in expression\n"},
    };
    for (const auto& c : cases) {
        CaptureStderr();
        c.call();
        EXPECT_EQ(GetCapturedStderr(), c.text);
        EXPECT_EQ(t.wood.exp_number(), 0);
    }
}

TEST(WoodLearning, ForgettingLeavesReadEquationsAlone)
{
    TestWood t;
    bdd x = t.var("x");
    Bddexpression* a = t.eq("a", x);
    t.eq("b", a->bdd_var, 0, 4);
    CaptureStderr();
    t.wood.forget_expression_by_bddid(t.idx("a"));
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(t.at("a"), a);

    t.wood.forget_expression_by_bddid(t.idx("b"));
    EXPECT_EQ(t.at("b"), nullptr);
    EXPECT_TRUE(t.readers("a").empty());
    EXPECT_EQ(t.wood.late_dates[t.idx("b")], 0);
    EXPECT_EQ(t.wood.exp_ids, t.ids({"a"}));

    CaptureStderr();
    t.wood.forget_expression_by_bddid(7);
    t.wood.absolute_forget_expression_by_bddid(-1);
    EXPECT_EQ(GetCapturedStderr(),
              "Error in Bddexpressionwood::forget_expression_by_bddid(): \n7 value not found ...\n"
              "Error in Bddexpressionwood::forget_expression_by_bddid(): \n-1 value not found ...\n");

    // The absolute form leaves the readers' table as it was.
    t.wood.absolute_forget_expression_by_bddid(t.idx("a"));
    EXPECT_EQ(t.at("a"), nullptr);
    EXPECT_EQ(t.readers("x"), t.ids({"a"}));
}

TEST(WoodLookups, ResultsAndMessages)
{
    TestWood t;
    bdd x = t.var("x");
    Bddexpression* a = t.eq("a", x);
    Bddexpression* b = t.eq("b", t.m().Bdd_not(x));
    Bddexpression* last = t.eq("c", x);
    long ia = t.idx("a"), ib = t.idx("b");
    const struct {
        std::function<std::string()> call;
        std::string result;
        std::string err;
    } cases[] = {
        {[&] { return std::to_string(t.wood.exp_by_index(ia) == a); }, "1", ""},
        {[&] { return std::to_string(t.wood.exp_by_index(0) == nullptr); }, "1", ""},
        {[&] { return std::to_string(t.wood.exp_by_index(9) == nullptr); }, "1",
         "ERROR in Bddexpressionwood::exp_by_index : id `9' not found!\n"},
        {[&] { return std::to_string(t.wood.exp_by_bdd(b->bdd_var) == b); }, "1", ""},
        {[&] { return std::to_string(t.wood.exp_by_bdd(t.m().Bdd_one()) == nullptr); }, "1",
         "ERROR in Bddexpressionwood::exp_by_bdd : bdd not found!\n"},
        {[&] { return std::to_string(t.wood.exp_by_bddname("b") == b); }, "1", ""},
        {[&] { return std::to_string(t.wood.exp_by_bddname("q") == nullptr); }, "1",
         "ERROR in Bddexpressionwood::exp_by_bddname : `q' not found!\n"},
        {[&] { return std::to_string(t.wood.exp_by_name("b") == b); }, "1", ""},
        // The scans by name never reach the last slot...
        {[&] { return std::to_string(t.wood.exp_by_name("c") == nullptr); }, "1",
         "ERROR in Bddexpressionwood::exp_by_name : `c' not found!\n"},
        // ... and give the index of the match plus one.
        {[&] { return std::to_string(t.wood.Index_exp_by_name("a")); }, std::to_string(ia + 1), ""},
        {[&] { return std::to_string(t.wood.Index_exp_by_name("c")); }, "-1",
         "ERROR in Bddexpressionwood::Index_exp_by_name : `c' not found!\n"},
        {[&] { return t.wood.Name_exp_by_index(ib); }, "b", ""},
        {[&] { return t.wood.Name_exp_by_index(-2); }, "",
         "ERROR: in Bddexpressionwood::Name_exp_by_index(): index -2 not found!\n"},
        {[&] { return t.wood.Name_exp_by_bdd(a->bdd_var); }, "a", ""},
        {[&] { return t.wood.Name_exp_by_bdd(x); }, "",
         "ERROR: in Bddexpressionwood::Name_exp_by_bdd(): bdd not found!\n"},
        {[&] { return t.wood.Bddname_exp_by_index(ib); }, "b", ""},
        {[&] { return t.wood.Bddname_exp_by_index(0); }, "",
         "ERROR: in Bddexpressionwood::Bddname_exp_by_index(): id 0 not found!\n"},
        {[&] { return t.wood.Bddname_exp_by_bdd(x); }, "x", ""},
        {[&] { return std::to_string(t.wood.exp(2) == last); }, "1", ""},
        {[&] { return std::to_string(t.wood.exp(3) == nullptr); }, "1",
         "ERROR in Bddexpressionwood::exp(): 3 bad number ...\npossible: {1,2,3}\n"},
    };
    for (const auto& c : cases) {
        CaptureStderr();
        std::string result = c.call();
        std::string err = GetCapturedStderr();
        EXPECT_EQ(result, c.result) << c.err;
        EXPECT_EQ(err, c.err) << c.result;
    }
}

TEST(WoodEquations, ChangingTheRightMemberRelinksTheReaders)
{
    TestWood t;
    bdd x = t.var("x"), y = t.var("y"), z = t.var("z");
    Bddexpression* a = t.eq("a", x);
    a->setBddExp(t.m().Bdd_and(y, z));
    EXPECT_EQ(a->dependances, t.ids({"y", "z"}));
    EXPECT_TRUE(t.readers("x").empty());
    EXPECT_EQ(t.readers("y"), t.ids({"a"}));
    EXPECT_EQ(t.readers("z"), t.ids({"a"}));

    a->append_or_exp(x);
    EXPECT_EQ(a->dependances, t.ids({"x", "y", "z"}));
    EXPECT_EQ(t.readers("x"), t.ids({"a"}));

    bdd before = a->bdd_exp;
    a->append_not_exp();
    EXPECT_EQ(a->bdd_exp, t.m().Bdd_not(before));
    EXPECT_EQ(a->dependances, t.ids({"x", "y", "z"}));
    t.wood.append_not_expression(t.idx("a"));
    EXPECT_EQ(a->bdd_exp, before);

    a->setBddExp(y, 4, 6);
    EXPECT_EQ(a->dependances, t.ids({"y"}));
    EXPECT_TRUE(t.readers("z").empty());
    EXPECT_EQ(a->getEarlyDate(), 4);
    EXPECT_EQ(a->getLateDate(), 6);
}

TEST(WoodEquations, MisuseWithOrWithoutAWoodIsRefusedWithItsText)
{
    TestWood t;
    bdd x = t.var("x");
    Bddexpression* in_wood = t.eq("a", x);
    Bddexpression loose;
    const struct {
        std::function<void()> call;
        const char* text;
    } cases[] = {
        {[&] { loose.setBddExp(x); }, "In Bddexpression::setBddExp(): \n   no wood defined! Aborted  ...\n"},
        {[&] { loose.append_or_exp(x); },
         "In Bddexpression::append_or_exp(): \n   no wood defined! Aborted  ...\n"},
        // The and operation reports with the or operation's text.
        {[&] { loose.append_and_exp(x); },
         "In Bddexpression::append_or_exp(): \n   no wood defined! Aborted  ...\n"},
        {[&] { loose.append_not_exp(); },
         "In Bddexpression::append_not_exp(): \n   no wood defined! Aborted  ...\n"},
        {[&] { loose.setLateDate(3); }, "internal error in Bddexpression::setLateDate(): no wood found!\n"},
        {[&] { in_wood->setBddVar(&t.m(), x); },
         "In Bddexpression::setBddVar(bddpp_manager *, bdd): \n   wood already defined! Aborted  ...\n"},
        {[&] { in_wood->setBddExp(&t.m(), t.m().Bdd_zero()); },
         "In Bddexpression::setBddExp(bddpp_manager *, bdd): \n   wood already defined! Aborted  ...\n"
         "   use only Bddexpression::setBddExp(bdd) !!!\n"},
    };
    for (const auto& c : cases) {
        CaptureStderr();
        c.call();
        EXPECT_EQ(GetCapturedStderr(), c.text);
    }
    EXPECT_EQ(in_wood->bdd_exp, x);
    EXPECT_EQ(loose.getAbstraction(), 1);

    // Without a wood, the manager forms do the work.
    loose.setBddVar(&t.m(), t.var("l"));
    loose.setBddExp(&t.m(), t.m().Bdd_or(x, t.var("k")));
    EXPECT_EQ(loose.getAbstraction(), 0);
    EXPECT_EQ(loose.dependances, t.ids({"x", "k"}));
}

TEST(WoodEquations, AbstractEquationsKeepTheirSetsAndDeclareReaders)
{
    TestWood t;
    bdd x = t.var("x");
    Bddexpression* a = t.eq("a", x);
    long ia = t.idx("a");
    std::set<long> declared = {ia};
    std::set<long> deps = {0};
    long iv = t.wood.Index_new_var_last("v");
    Bddexpression* v = new Bddexpression(iv, &t.wood, &declared, &deps, "f", 2, 1);
    EXPECT_EQ(v->name, "v");
    EXPECT_EQ(v->getAbstraction(), 1);
    EXPECT_EQ(v->getExpDef(), "f");
    EXPECT_EQ(t.readers("v"), std::set<long>{ia});
    EXPECT_EQ(t.readers("x"), (std::set<long>{ia, iv}));
    EXPECT_EQ(v->getLateDate(), 1);

    // Growth rebuilds the BDD equations' sets and keeps the abstract one's.
    a->dependances.clear();
    v->add_specific_var_dependance(ia);
    for (int i = 0; i < 20; i++) t.var("g" + std::to_string(i));
    EXPECT_EQ(t.wood.Arrays_length(), 32);
    EXPECT_EQ(a->dependances, t.ids({"x"}));
    EXPECT_EQ(v->dependances, (std::set<long>{0, ia}));

    // A definition text makes the eight-argument form abstract.
    bdd w = t.var("w");
    Bddexpression* d = new Bddexpression("w", &t.wood, w, x, "VALUE_SIGNAL", 0, 0, Compilation::VOUTPUT);
    EXPECT_EQ(d->getAbstraction(), 1);
    EXPECT_TRUE(d->dependances.empty());
    EXPECT_EQ(d->getUserType(), int(Compilation::VOUTPUT));
    EXPECT_EQ(t.at("w"), d);
}

TEST(WoodTables, InsertingAVariableShiftsEverySlotAbove)
{
    TestWood t;
    bdd x = t.var("x");
    Bddexpression* a = t.eq("a", x, 0, 5);
    Bddexpression* b = t.eq("b", a->bdd_var);
    bdd n = t.wood.New_var_before_by_index(1, "n"); // between x and a
    EXPECT_EQ(t.idx("n"), 1);
    EXPECT_EQ(t.wood.exp_table[1], nullptr);
    EXPECT_EQ(t.wood.exp_table[2], a);
    EXPECT_EQ(t.wood.exp_table[3], b);
    EXPECT_EQ(t.wood.exp_ids, (std::set<long>{2, 3}));
    EXPECT_EQ(t.readers("x"), std::set<long>{2});
    EXPECT_EQ(t.readers("a"), std::set<long>{3});
    EXPECT_EQ(b->dependances, std::set<long>{2});
    EXPECT_EQ(t.wood.late_dates[2], 5);

    // A name that exists makes no variable, which the wood reports.
    CaptureStderr();
    t.wood.New_var_after_by_index(0, "a");
    EXPECT_EQ(GetCapturedStderr(),
              "Internal error in update_bdd_vars(nouv_index):\nawaited 5 variables, found: 4\n");
    EXPECT_EQ(t.wood.Nb_bdd_vars(), 4);
}

TEST(WoodEquations, EqualityNeedsDifferentDefinitions)
{
    TestWood t;
    bdd x = t.var("x");
    Bddexpression* a = t.eq("a", x);
    Bddexpression copy(*a);
    EXPECT_FALSE(copy == *a); // same definition text: not equal, on purpose
    EXPECT_FALSE(copy != *a);
    copy.exp_def = "other";
    EXPECT_TRUE(copy == *a);
    EXPECT_TRUE(copy != *a);
    copy.w = 2;
    EXPECT_FALSE(copy == *a);
}

TEST(WoodCopies, ADeepCopyHasItsOwnManagerAndTheSameGraph)
{
    TestWood t;
    bdd x = t.var("x"), y = t.var("y");
    Bddexpression* a = t.eq("a", t.m().Bdd_and(x, y), 1, 1);
    t.eq("b", t.m().Bdd_not(a->bdd_var), 2, 0);
    t.wood.update_nb_level(3);

    Bddexpressionwood copy(&t.wood);
    ASSERT_NE(copy.bdd_manager, t.wood.bdd_manager);
    EXPECT_EQ(copy.exp_ids, t.wood.exp_ids);
    EXPECT_EQ(copy.Nb_level(), 3);
    for (long i = 0; i < t.wood.Nb_bdd_vars(); i++) {
        EXPECT_EQ(copy.amont_table[i], t.wood.amont_table[i]);
        EXPECT_EQ(copy.late_dates[i], t.wood.late_dates[i]);
        if (t.wood.exp_table[i] == nullptr) continue;
        Bddexpression* e = copy.exp_table[i];
        ASSERT_NE(e, nullptr);
        EXPECT_EQ(e->wood, &copy);
        EXPECT_EQ(e->bdd_exp.manager_ref(), copy.bdd_manager);
        EXPECT_EQ(e->my_bddname(), t.wood.exp_table[i]->name);
        EXPECT_EQ(copy.bdd_manager->set_of_index_depend_on(e->bdd_exp), e->dependances);
    }
    // The copy lives on its own.
    copy.forget_expression_by_bddid(copy.Index_var_by_name("b"));
    EXPECT_NE(t.at("b"), nullptr);

    Bddexpressionwood shell(static_cast<Bddexpressionwood*>(nullptr));
    EXPECT_EQ(shell.my_bdd_manager(), nullptr);
    EXPECT_EQ(shell.exp_number(), 0);
}
