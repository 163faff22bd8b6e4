// The operators: exact shapes of their results, terminal cases, node
// access, the tests on handles and the reports of misuse.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "bdd/bddpp.h"
#include "tests/bdd/bdd_test_util.h"

using testing::ExitedWithCode;

namespace {

struct two_vars : testing::TestWithParam<bool> {
    bddpp_manager m;
    bdd a, b;
    void SetUp() override {
        m.plain_operators = GetParam();
        a = m.New_var_last("a");  // global id 2
        b = m.New_var_last("b");  // global id 3
    }
};

std::string path_name(const testing::TestParamInfo<bool>& info) {
    return info.param ? "Plain" : "Fast";
}

// Result of an operator: link, node's children and their links.
struct shape {
    int link;
    bdd_node* then_node;
    bdd_node* else_node;
    int else_link_type;
    long global_id;
    bool operator==(const shape& o) const {
        return link == o.link && then_node == o.then_node && else_node == o.else_node &&
               else_link_type == o.else_link_type && global_id == o.global_id;
    }
};
std::ostream& operator<<(std::ostream& out, const shape& s) {
    return out << s.link << " " << s.then_node << " " << s.else_node << " " << s.else_link_type << " #"
               << s.global_id;
}
shape shape_of(const bdd& r) {
    return {r.link_type(), r.node()->then_node, r.node()->else_node, r.node()->else_link_type,
            r.node()->global_id};
}

TEST_P(two_vars, ConnectivesOfTwoLiteralsHaveTheirExactShapes) {
    bdd_node* nb = b.node();
    bdd_node* one = m.one;
    struct {
        const char* what;
        std::function<bdd()> op;
        shape expected;
    } cases[] = {
        // then part b, else part zero.
        {"a and b", [&] { return m.Bdd_and(a, b); }, {1, nb, one, -1, 4}},
        // then part one, else part b.
        {"a or b", [&] { return m.Bdd_or(a, b); }, {1, one, nb, 1, 5}},
        // then part zero: its negation moves out to the handle.
        {"not a and b", [&] { return m.Bdd_and(m.Bdd_not(a), b); }, {-1, one, nb, -1, 6}},
        {"b and a", [&] { return m.Bdd_and(b, a); }, {1, nb, one, -1, 4}},
        {"a nand b", [&] { return m.Bdd_nand(a, b); }, {-1, nb, one, -1, 4}},
        {"a nor b", [&] { return m.Bdd_nor(a, b); }, {-1, one, nb, 1, 5}},
        // a implies b: not a or b, then part b, else part one.
        {"a implies b", [&] { return m.Bdd_implication(a, b); }, {1, nb, one, 1, 7}},
    };
    for (auto& c : cases) {
        SCOPED_TRACE(c.what);
        bdd r = c.op();
        ASSERT_NE(r.node(), nullptr);
        EXPECT_EQ(shape_of(r), c.expected);
        EXPECT_EQ(r.node()->id, 0);
    }
    EXPECT_EQ(m.next_global_id, 8) << "equal operands find their node again";
}

TEST_P(two_vars, XorMakesANodeOfTwoEqualChildrenWithOppositeLinks) {
    // a and not b (id 4), not a and b (id 5), then their or: both parts are
    // b, with opposite links, which still makes a node.
    bdd x = m.Bdd_xor(a, b);
    EXPECT_EQ(m.next_global_id, 7);
    EXPECT_EQ(shape_of(x), (shape{-1, b.node(), b.node(), -1, 6}));
    EXPECT_EQ(m.Bdd_and(a, m.Bdd_not(b)).node()->global_id, 4) << "the left conjunction is made first";
    EXPECT_EQ(m.Bdd_xnor(a, b), m.Bdd_not(x));
    EXPECT_EQ(m.Bdd_eq(a, b), m.Bdd_not(x));
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(m.Bdd_xor(a, a)));
    EXPECT_TRUE(m.Bdd_is_one_tautologic(m.Bdd_xnor(a, a)));
}

TEST_P(two_vars, IteComposesLeftToRight) {
    bdd c = m.New_var_last("c");  // global id 4
    // a and b (5), not a and c (6), their or (7).
    bdd r = m.Bdd_ite(a, b, c);
    EXPECT_EQ(shape_of(r), (shape{1, b.node(), c.node(), 1, 7}));
    EXPECT_EQ(m.Bdd_ite(1, 0L, b, c), r);
    EXPECT_EQ(m.Bdd_ite(-1, 0L, c, b), r);
    EXPECT_EQ(m.Bdd_ite(1, -1L, b, c), b) << "index -1 selects the terminal";
    EXPECT_EQ(m.Bdd_ite(-1, -1L, b, c), c);
    EXPECT_TRUE(m.Bdd_equiv(r, m.Bdd_or(m.Bdd_and(a, b), m.Bdd_and(m.Bdd_not(a), c))));
    EXPECT_TRUE(m.Bdd_imply(m.Bdd_and(a, b), r));
    EXPECT_FALSE(m.Bdd_imply(r, m.Bdd_and(a, b)));
    EXPECT_TRUE(m.Bdds_excl(m.Bdd_and(a, b), m.Bdd_not(b)));
    EXPECT_TRUE(m.Bdds_exclude(m.Bdd_and(a, b), m.Bdd_not(b)));
    EXPECT_FALSE(m.Bdds_excl(a, b));
}

TEST_P(two_vars, NodeAccessFollowsTheLinks) {
    bdd f = m.Bdd_and(m.Bdd_not(a), b);  // (-1, node: then one, else b inverse)
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(m.Bdd_then(f)));
    EXPECT_EQ(m.Bdd_else(f), b);
    EXPECT_EQ(m.Bdd_if(f), a);
    EXPECT_EQ(m.Bdd_if(m.Bdd_not(b)), b);

    testing::internal::CaptureStderr();
    bdd none = m.Bdd_if(m.Bdd_one());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\ncalling bddpp_manager::Bdd_if() with bdd index= -1 :out of range!\n");
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(none));

    EXPECT_EXIT(m.Bdd_then(m.Bdd_zero()), ExitedWithCode(1),
                literal_pattern("ERROR in Bdd_then(): calling with a tautologic function!"));
    EXPECT_EXIT(m.Bdd_else(m.Bdd_one()), ExitedWithCode(1),
                literal_pattern("ERROR in Bdd_else(): calling with a tautologic function!"));
}

TEST_P(two_vars, TestsOnHandles) {
    bdd c = m.New_var_last("c");
    bdd one = m.Bdd_one(), zero = m.Bdd_zero();
    bdd na = m.Bdd_not(a);
    bdd cube = m.Bdd_and(m.Bdd_and(a, m.Bdd_not(b)), c);
    bdd no_cube = m.Bdd_or(a, b);
    struct {
        const char* what;
        bdd f;
        bool is_one, is_zero, tautology, is_var, is_negvar, is_cube;
    } cases[] = {
        {"one", one, true, false, true, false, false, true},
        {"zero", zero, false, true, true, false, false, true},
        {"a", a, false, false, false, true, false, true},
        {"not a", na, false, false, false, false, true, true},
        {"a and not b and c", cube, false, false, false, false, false, true},
        {"not (a and not b and c)", m.Bdd_not(cube), false, false, false, false, false,
         false},
        {"not a and not b", m.Bdd_nor(a, b), false, false, false, false, false, true},
        {"a or b", no_cube, false, false, false, false, false, false},
        {"null", bdd(), false, false, false, false, false, false},
    };
    for (auto& t : cases) {
        SCOPED_TRACE(t.what);
        EXPECT_EQ(m.Bdd_is_one_tautologic(t.f), t.is_one);
        EXPECT_EQ(m.Bdd_is_zero_tautologic(t.f), t.is_zero);
        EXPECT_EQ(m.Bdd_is_tautology(t.f), t.tautology);
        EXPECT_EQ(m.Bdd_is_tautology(t.f, 1), t.is_one);
        EXPECT_EQ(m.Bdd_is_tautology(t.f, 0), t.is_zero);
        EXPECT_EQ(m.Bdd_is_var(t.f), t.is_var);
        EXPECT_EQ(m.Bdd_is_negvar(t.f), t.is_negvar);
        EXPECT_EQ(m.Bdd_is_cube(t.f), t.is_cube);
    }
    bdd other = m.Bdd_and(a, b);
    EXPECT_TRUE(other == m.Bdd_and(b, a));
    EXPECT_TRUE(other != m.Bdd_not(other));
    EXPECT_TRUE(*other.node() == *m.Bdd_and(a, b).node());
    EXPECT_FALSE(*other.node() == *m.Bdd_or(a, b).node());
}

TEST_P(two_vars, NullOperandsEndTheProcess) {
    EXPECT_EXIT(m.Bdd_and(bdd(), a), ExitedWithCode(1),
                literal_pattern("ERROR: call bddpp_manager::Bdd_and() with null reference\n"
                                "Bdd_and(0,") +
                    "0x[0-9a-f]+\\)");
    EXPECT_EXIT(m.Bdd_or(a, bdd()), ExitedWithCode(1),
                literal_pattern("ERROR: call bddpp_manager::Bdd_or() with null reference\n") +
                    "$");
    EXPECT_EXIT(m.Bdd_ite(1, 7L, a, b), ExitedWithCode(1),
                literal_pattern("ERROR: abnormal index in bddpp_manager::Bdd_ite()\n"
                                "ERROR: call bddpp_manager::Bdd_and() with null reference\n"));
    EXPECT_EXIT(m.Bdd_xor(a, bdd()), ExitedWithCode(1), "with null reference");
}

// A node on b whose two children are a's own node breaks the order: the
// and and the or of it with c come out on a, above both operands.
TEST_P(two_vars, SelfCheckStopsOnAResultAboveItsOperands) {
    bdd c = m.New_var_last("c");
    bdd_node* broken = new bdd_node(&m, 1, 1, a.node(), a.node(), m.next_global_id++);
    bdd f(&m, 1, broken);
    EXPECT_EXIT(m.Bdd_and(f, c), ExitedWithCode(1),
                literal_pattern("INTERNAL ERROR in Bdd_and(): result has an index (0) less "
                                "than the operands (1 ) of x  and (2) of y!\n\n\nparam1= \n"));
    EXPECT_EXIT(m.Bdd_or(m.Bdd_not(f), c), ExitedWithCode(1),
                literal_pattern("INTERNAL ERROR in Bdd_or(): result has an index (0) less "
                                "than the operands (1) and (2)!\n\n\nparam1= NOT\n"));
}

INSTANTIATE_TEST_SUITE_P(BddOperators, two_vars, testing::Values(false, true), path_name);

}  // namespace
