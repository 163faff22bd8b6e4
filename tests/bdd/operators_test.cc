// The operators' corners that the truth-table differential does not reach:
// terminal cases, null handles and the reports of misuse.

#include <gtest/gtest.h>

#include <string>

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

// The results themselves are held to truth tables by the differential
// tests; here the corners they do not reach.
TEST_P(two_vars, CornersOfIteNodeAccessAndHandleTests) {
    bdd c = m.New_var_last("c");
    EXPECT_EQ(m.Bdd_ite(-1, 0L, c, b), m.Bdd_ite(a, b, c));
    EXPECT_EQ(m.Bdd_ite(1, -1L, b, c), b) << "index -1 selects the terminal";
    EXPECT_EQ(m.Bdd_ite(-1, -1L, b, c), c);
    EXPECT_EQ(m.Bdd_if(m.Bdd_not(b)), b);
    bdd none;
    EXPECT_FALSE(m.Bdd_is_one_tautologic(none) || m.Bdd_is_zero_tautologic(none) || m.Bdd_is_tautology(none) ||
                 m.Bdd_is_var(none) || m.Bdd_is_negvar(none) || m.Bdd_is_cube(none));
    EXPECT_TRUE(*m.Bdd_and(a, b).node() == *m.Bdd_and(b, a).node());
    EXPECT_FALSE(*m.Bdd_and(a, b).node() == *m.Bdd_or(a, b).node());

    bdd top;
    EXPECT_EQ(captured([&] { top = m.Bdd_if(m.Bdd_one()); }),
              "\ncalling bddpp_manager::Bdd_if() with bdd index= -1 :out of range!\n");
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(top));
    EXPECT_EXIT(m.Bdd_then(m.Bdd_zero()), ExitedWithCode(1),
                literal_pattern("ERROR in Bdd_then(): calling with a tautologic function!"));
    EXPECT_EXIT(m.Bdd_else(m.Bdd_one()), ExitedWithCode(1),
                literal_pattern("ERROR in Bdd_else(): calling with a tautologic function!"));
}

// Creation order fixes the ids in generated texts: the conjunctions of xor
// and ite are made left first, then their disjunction.
TEST_P(two_vars, CompositeConnectivesMakeTheirNodesLeftFirst) {
    bdd c = m.New_var_last("c");          // global id 4
    EXPECT_EQ(m.Bdd_xor(a, b).node()->global_id, 7);
    EXPECT_EQ(m.Bdd_and(a, m.Bdd_not(b)).node()->global_id, 5);
    EXPECT_EQ(m.Bdd_ite(a, b, c).node()->global_id, 10);
    EXPECT_EQ(m.Bdd_and(a, b).node()->global_id, 8);
    EXPECT_EQ(m.next_global_id, 11);
}

TEST_P(two_vars, NullOperandsAndResultsAboveTheOperandsEndTheProcess) {
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

    // A node on b whose two children are a's own node breaks the order: the
    // and and the or of it with c come out on a, above both operands.
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
