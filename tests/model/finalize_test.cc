// Finalisation and clean-up of whole modules: the closed equations, the
// boot register, retyping, dropped registers, dates and names.

#include "tests/bdd/bdd_test_util.h"
#include "tests/module_builder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

size_t count(const std::string& text, const std::string& part)
{
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        n++;
    return n;
}

// Module m: input i, output o, register of next n and actual r starting at
// 0, n = i, o = r; the output has no under equation.
struct WorkedExample : ModuleBuilder {
    Signal *i = input("i"), *o = output("o"), *n = local("n"), *r = local("r");
    explicit WorkedExample(bool typed = true)
    {
        registerOf(r, n, 0);
        eq(over(o), over(r));
        eq(over(n), over(i));
        eq(under(n), mgr->Bdd_not(over(i)));
        endOfReading(typed);
    }
};

TEST(Finalize, RegisterNextEquationsAreRetypedWithTheirTwoWarnings)
{
    WorkedExample w(false);
    std::string err = captured([&] { w.m.finalize(0); });
    EXPECT_EQ(count(err, " Warning: reaffectation 4: _s_n with SREG\n"), 1u) << err;
    EXPECT_EQ(count(err, " Warning reaffectation 5: _v_n with VREG\n"), 1u) << err;
    EXPECT_EQ(w.at(4)->getUserType(), int{Compilation::SREG});
}

enum Fn { NONE, A, NOT_A, ZERO, ONE, FREE };

// One row of the closing rules, for a signal x observed through two outputs
// that read its over and its under wire.
TEST(Finalize, OverAndUnderEquationsAreClosedByTheSummaryRules)
{
    struct Row {
        const char* what;
        bool output, reg;
        Fn overEq, underEq, overAfter, underAfter;
    } rows[] = {
        {"output, over only", true, false, A, NONE, A, NOT_A},
        {"output, both zero", true, false, ZERO, ZERO, ZERO, ONE},
        {"output, both, not complementary", true, false, A, A, A, A},
        {"output, under only", true, false, NONE, A, NOT_A, A},
        {"local, over only", false, false, A, NONE, A, NOT_A},
        {"local, both zero", false, false, ZERO, ZERO, ZERO, ZERO},
        {"local, both", false, false, A, A, A, A},
        {"local, under only", false, false, NONE, A, NOT_A, A},
        {"register local, under only", false, true, NONE, A, FREE, A},
    };
    for (const Row& row : rows) {
        ModuleBuilder b;
        Signal* a = b.input("a");
        Signal* x = row.output ? b.output("x") : nullptr;
        Signal *y = b.output("y"), *z = b.output("z");
        if (x == nullptr)
            x = b.local("x");
        if (row.reg)
            x->setRegister();
        bdd av = b.over(a);
        auto fn = [&](Fn f) {
            return f == A ? av : f == NOT_A ? b.mgr->Bdd_not(av) : f == ZERO ? b.mgr->Bdd_zero()
                   : f == ONE ? b.mgr->Bdd_one() : b.over(x);
        };
        if (row.overEq != NONE)
            b.eq(b.over(x), fn(row.overEq));
        if (row.underEq != NONE)
            b.eq(b.under(x), fn(row.underEq));
        b.eq(b.over(y), b.over(x));
        b.eq(b.over(z), b.under(x));
        b.endOfReading();

        std::string err = captured([&] { b.m.finalize(0); });
        bool warned = row.overEq == NONE && !row.reg;
        EXPECT_EQ(count(err, "***Warning: Finalize: no over expression and under expression for:_v_x!!!\n"
                             " => changing over equation ...\n\n"),
                  warned ? 1u : 0u)
            << row.what << "\n" << err;
        EXPECT_EQ(b.wire(b.overId(y)), fn(row.overAfter)) << row.what;
        EXPECT_EQ(b.wire(b.overId(z)), fn(row.underAfter)) << row.what;
    }
}

TEST(Finalize, AnOutputWarnsOncePerOccurrencePairAndItsCurrentOverWireTakesItsName)
{
    ModuleBuilder b;
    Signal* a = b.input("a");
    Signal* x = b.output("x");
    bdd av = b.over(a);
    b.eq(b.under(x), av);
    long over0 = b.overId(x);
    x->newOccurrence(b.wood, &b.m);
    b.eq(b.under(x), b.mgr->Bdd_not(av));
    b.endOfReading();

    std::string err = captured([&] { b.m.finalize(0); });
    EXPECT_EQ(count(err, "***Warning: Finalize:"), 2u) << err;
    EXPECT_EQ(count(err, "for:_v_x!!!"), 1u);
    EXPECT_EQ(count(err, "for:_v_x_1!!!"), 1u);
    EXPECT_EQ(b.wood->Name_var_by_index(b.overId(x)), "x");
    EXPECT_EQ(b.wood->Name_var_by_index(over0), "v_s_x");
}

// A register of actual r and next n, read by the output o = r or a.
TEST(Finalize, ARegisterThatNeverChangesIsDroppedAndReadAsItsConstant)
{
    struct {
        int initial, next;
        bool dropped;
    } rows[] = {{0, 0, true}, {1, 1, true}, {0, 1, false}, {1, 0, false}};
    for (auto& row : rows) {
        ModuleBuilder b;
        Signal *a = b.input("a"), *o = b.output("o"), *n = b.local("n"), *r = b.local("r");
        b.registerOf(r, n, row.initial);
        bdd nextValue = row.next ? b.mgr->Bdd_one() : b.mgr->Bdd_zero();
        b.eq(b.over(n), nextValue);
        b.eq(b.under(n), b.mgr->Bdd_not(nextValue));
        b.eq(b.over(o), b.mgr->Bdd_or(b.over(r), b.over(a)));
        b.endOfReading();

        std::string err = captured([&] { b.m.finalize(0); });
        std::string label = std::to_string(row.initial) + "/" + std::to_string(row.next);
        EXPECT_EQ(count(err, "detecting useless register r\n"), row.dropped ? 1u : 0u) << label;
        bdd rv = b.mgr->Bdd_var_by_index(b.overId(r)), av = b.mgr->Bdd_var_by_index(b.overId(a));
        bdd expected = !row.dropped ? b.mgr->Bdd_or(rv, av) : row.initial ? b.mgr->Bdd_one() : av;
        EXPECT_EQ(b.wire(b.overId(o)), expected) << label;
        std::list<regclass*>* regs = b.m.getRegisterList();
        EXPECT_EQ(regs->size(), row.dropped ? 1u : 2u) << label;
        EXPECT_EQ(regs->back()->actual_var()->getInternalName(), "m_boot");
        EXPECT_TRUE(b.m.getLocalSignal("r") != nullptr) << "a dropped register's signals stay listed";
    }
}

// The valued local of a clocked binding counts as an output: its wires are
// not substituted away, and it and its clock stay listed.
TEST(Finalize, AClockedValueIsKeptAsAnOutput)
{
    ModuleBuilder b;
    Signal *a = b.input("a"), *y = b.output("y"), *v = b.local("v"), *c = b.local("c");
    v->setValueType("int", &b.m);
    b.m.addSignalBinding(new DataValue("3", "int"), v, c);
    b.eq(b.over(v), b.over(a));
    b.eq(b.under(v), b.mgr->Bdd_not(b.over(a)));
    b.eq(b.over(y), b.over(v));
    b.endOfReading();
    b.m.finalize(0);
    Bddexpression *vo = b.at(b.overId(v)), *vu = b.at(b.underId(v));
    ASSERT_TRUE(vo != nullptr && vu != nullptr);
    EXPECT_EQ(vo->getUserType(), int{Compilation::SOUTPUT});
    EXPECT_EQ(vu->getUserType(), int{Compilation::VOUTPUT});
    EXPECT_EQ(b.at(b.overId(y))->my_bdd_exp(), b.over(v));
    EXPECT_EQ(b.m.getLocalSignal("v"), v);
    EXPECT_EQ(b.m.getLocalSignal("c"), c);
}

TEST(FinalizeDeath, MissingObjectsEndWithAMessageAndStatusOne)
{
    EXPECT_EXIT(Module::finalize(nullptr, 0), testing::ExitedWithCode(1), "no module to finalise");
    struct {
        void (*breakIt)(WorkedExample&);
        const char* message;
    } cases[] = {
        {[](WorkedExample& w) { w.m.setBddWood(nullptr); }, "module m has no wood"},
        {[](WorkedExample& w) { w.m.getRegisterList()->push_back(nullptr); }, "register of an undeclared signal"},
        {[](WorkedExample& w) { w.m.addPreSignal(new Signal("p", &w.m, w.wood), nullptr, ""); },
         "memorised pair of an undeclared signal"},
    };
    for (auto& c : cases)
        EXPECT_EXIT(
            {
                WorkedExample w;
                c.breakIt(w);
                w.m.finalize(0);
            },
            testing::ExitedWithCode(1), c.message);
}

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

// The keep-wires flag leaves the wood alone. clean_locals hands the wood
// all its locals at once; the result must be that of one suppress_local
// per wire in list order, node for node.
TEST(Clean, KeepWiresFlagOrLocalsGoneAsSingleEliminationsWouldTakeThem)
{
    Chain kept;
    Compilation::KeepWiresFlag = true;
    kept.m.clean();
    Compilation::KeepWiresFlag = false;
    EXPECT_EQ(kept.wood->exp_number(), 5);
    EXPECT_EQ(kept.m.getLocalSignalList()->size(), 2u);

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

TEST(DebugPut, ListsOnlyWhatTheModuleHas)
{
    ModuleBuilder b;
    b.input("a");
    // A wire without variable takes the mark in place of its name and id.
    Signal* half = b.input("h");
    half->getSignalRef(b.m.getSignalManager(), b.wood)->setUnderBddId(-1, b.wood);
    Signal* gone = new Signal("g", &b.m, b.wood);
    gone->setCurrentOccurrence(b.wood, -1);
    std::ostringstream os;
    EXPECT_EQ(captured([&] {
                  b.m.DEBUG_put(os);
                  b.m.DEBUG_OneSignal_put(os, gone);
              }),
              "end of debug put\n");
    EXPECT_EQ(os.str(), "inputs:\n a: _s_a(0),_v_a(1)\n h: _s_h(2),?\nSET: \nRESET: \nRTL: \nEarly date: 0\n\n\n"
                        " g_-1: ?,?\n");

    b.m.setBddWood(nullptr);
    os.str("");
    EXPECT_EQ(captured([&] { b.m.DEBUG_put(os); }), "end of debug put\n");
    EXPECT_EQ(os.str(), "inputs:\n a:  ???\n h:  ???\nSET: \nRESET: \nRTL: \n");
}

}  // namespace
