#include "tests/finalize/module_builder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(UpdateUserType, CodesFollowTheSignalsRole)
{
    ModuleBuilder b;
    Signal *a = b.input("a"), *o = b.output("o"), *both = b.local("both"), *act = b.local("act");
    Signal* pre = b.local("pre");
    both->setRegister();
    both->setClock();
    b.m.addPreSignal(pre, act, "");
    bdd av = b.over(a);
    for (Signal* s : {o, both, act}) {
        b.eq(b.over(s), av);
        b.eq(b.under(s), b.mgr->Bdd_not(av));
    }
    b.endOfReading();
    struct {
        Signal* s;
        int over, under;
    } rows[] = {{o, Compilation::SOUTPUT, Compilation::VOUTPUT},
                {both, Compilation::SCLOCK, Compilation::VCLOCK},  // clock wins over register
                {act, Compilation::SUSEDPRE, Compilation::VUSEDPRE}};
    for (auto& row : rows) {
        EXPECT_EQ(b.at(b.overId(row.s))->getUserType(), row.over) << row.s->getInternalName();
        EXPECT_EQ(b.at(b.underId(row.s))->getUserType(), row.under) << row.s->getInternalName();
    }

    // The actual signal of a memorised pair that is an output keeps its codes.
    b.m.addPreSignal(pre, o, "");
    b.m.update_user_type();
    EXPECT_EQ(b.at(b.overId(o))->getUserType(), int{Compilation::SOUTPUT});
}

// a -> w1 = a -> w2 = not w1 -> o = w2 and b, through two plain locals.
struct Chain : ModuleBuilder {
    Signal *a = input("a"), *bb = input("b"), *o = output("o"), *w1 = local("w1"), *w2 = local("w2");
    Chain()
    {
        eq(over(w1), over(a));
        eq(under(w1), mgr->Bdd_not(over(a)));
        eq(over(w2), mgr->Bdd_not(over(w1)));
        eq(under(w2), over(w1));
        eq(over(o), mgr->Bdd_and(over(w2), over(bb)));
        endOfReading();
    }
};

TEST(Clean, KeepWiresFlagLeavesTheWoodAlone)
{
    Chain c;
    Compilation::KeepWiresFlag = true;
    c.m.clean();
    Compilation::KeepWiresFlag = false;
    EXPECT_EQ(c.wood->exp_number(), 5);
    EXPECT_EQ(c.m.getLocalSignalList()->size(), 2u);

    c.m.clean();
    EXPECT_TRUE(c.m.getLocalSignalList()->empty());
    // The wires that were read are substituted; unread ones stay.
    EXPECT_EQ(c.wood->exp_ids, (std::set<long>{c.overId(c.o), c.underId(c.w1), c.underId(c.w2)}));
    bdd expected = c.mgr->Bdd_and(c.mgr->Bdd_not(c.over(c.a)), c.over(c.bb));
    EXPECT_EQ(c.wire(c.overId(c.o)), expected);
}

// clean_locals hands the wood all its locals at once; the result must be
// that of one suppress_local per wire in list order, node for node.
TEST(Clean, LocalsGoAsSingleEliminationsWouldTakeThem)
{
    Chain batched, single;
    batched.m.clean_locals();
    for (Signal* s : {single.w1, single.w2}) {
        single.wood->suppress_local(single.overId(s));
        single.wood->suppress_local(single.underId(s));
    }
    ASSERT_EQ(batched.wood->exp_ids, single.wood->exp_ids);
    for (long id : batched.wood->exp_ids) {
        bdd x = batched.at(id)->my_bdd_exp(), y = single.at(id)->my_bdd_exp();
        EXPECT_EQ(bdd_node_global_id(x), bdd_node_global_id(y)) << id;
        EXPECT_EQ(bdd_link_type(x), bdd_link_type(y)) << id;
    }
}

TEST(CheckOverKnowledge, FlagsTheReactionsWhereAnOutputIsError)
{
    ModuleBuilder b;
    Signal *a = b.input("a"), *c = b.input("c"), *x = b.output("x"), *y = b.output("y");
    bdd av = b.over(a), cv = b.over(c);
    b.eq(b.over(x), av);
    b.eq(b.under(x), b.mgr->Bdd_and(av, cv));
    b.eq(b.over(y), cv);  // no under equation: not counted
    b.endOfReading();
    b.m.check_over_knowledge();
    Signal* flag = b.m.getOutputSignal("OverKnowledgeError");
    ASSERT_NE(flag, nullptr);
    EXPECT_TRUE(flag->isOutput());
    EXPECT_EQ(b.at(b.overId(flag))->my_bdd_exp(), b.mgr->Bdd_and(av, cv));
    EXPECT_EQ(b.at(b.underId(flag))->my_bdd_exp(), b.mgr->Bdd_not(b.mgr->Bdd_and(av, cv)));
    EXPECT_EQ(b.at(b.underId(flag))->getUserType(), int{Compilation::VOUTPUT});
}

TEST(DebugPut, ListsOnlyWhatTheModuleHas)
{
    ModuleBuilder b;
    b.input("a");
    Signal* gone = new Signal("g", &b.m, b.wood);
    gone->setCurrentOccurrence(b.wood, -1);
    std::ostringstream os;
    testing::internal::CaptureStderr();
    b.m.DEBUG_put(os);
    b.m.DEBUG_OneSignal_put(os, gone);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "end of debug put\n");
    EXPECT_EQ(os.str(), "inputs:\n a: _s_a(0),_v_a(1)\nSET: \nRESET: \nRTL: \nEarly date: 0\n\n\n"
                        " g_-1: ?,?\n");

    b.m.setBddWood(nullptr);
    os.str("");
    testing::internal::CaptureStderr();
    b.m.DEBUG_put(os);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "end of debug put\n");
    EXPECT_EQ(os.str(), "inputs:\n a:  ???\nSET: \nRESET: \nRTL: \n");
}

}  // namespace
