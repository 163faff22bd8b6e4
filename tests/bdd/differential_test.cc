// The production path of the operators against the plain recursion: the
// same random programs run in two managers must make the same nodes, in
// the same order, with the same links and counts; and every function must
// have the truth table that the program asked for.

#include <gtest/gtest.h>

#include <bitset>
#include <random>
#include <string>
#include <vector>

#include "bdd/bddpp.h"
#include "tests/bdd/bdd_test_util.h"

namespace {

constexpr int max_vars = 10;
using table = std::bitset<1 << max_vars>;  // bit k: the value under assignment k

// Assignment k gives the variable of id v the value of bit v of k.
table variable_table(long id) {
    table t;
    for (std::size_t k = 0; k < t.size(); ++k) t[k] = (k >> id) & 1;
    return t;
}

table table_of(bddpp_manager& m, const bdd& f) {
    table t;
    std::vector<bool> by_index(m.variables_number);
    for (std::size_t k = 0; k < t.size(); ++k) {
        for (long id = 0; id < m.variables_number; ++id)
            by_index[m.index_by_id[id]] = (k >> id) & 1;
        t[k] = eval_bdd(m, f, by_index);
    }
    return t;
}

struct node_view {
    long global_id, id, then_id, else_id;
    int else_link_type, references;
    bool operator==(const node_view& o) const {
        return global_id == o.global_id && id == o.id && then_id == o.then_id &&
               else_id == o.else_id && else_link_type == o.else_link_type &&
               references == o.references;
    }
};

std::vector<node_view> table_view(bddpp_manager& m) {
    std::vector<node_view> out;
    for (bdd_node* n : m.map->nodes_in_key_order())
        out.push_back({n->global_id, n->id, n->then_node->global_id,
                       n->else_node->global_id, n->else_link_type, n->references});
    return out;
}

// One random program, run in both managers side by side.
struct twin_run {
    bddpp_manager plain, fast;
    std::vector<bdd> p, f;
    std::vector<table> truth;
    std::mt19937 rng;

    explicit twin_run(unsigned seed) : rng(seed) { plain.plain_operators = true; }

    std::size_t pick() { return rng() % p.size(); }

    void add_variable() {
        std::string name = "v" + std::to_string(plain.variables_number);
        long n = plain.variables_number;
        long where = n ? static_cast<long>(rng() % n) : 0;
        switch (n ? rng() % 3 : 0) {
            case 0:
                p.push_back(plain.New_var_last(name));
                f.push_back(fast.New_var_last(name));
                break;
            case 1:
                p.push_back(plain.New_var_before(where, name));
                f.push_back(fast.New_var_before(where, name));
                break;
            default:
                p.push_back(plain.New_var_after(where, name));
                f.push_back(fast.New_var_after(where, name));
                break;
        }
        truth.push_back(variable_table(n));
    }

    // Applies the same connective in both managers and records the truth
    // table it should have.
    void step() {
        std::size_t i = pick(), j = pick(), k = pick();
        bdd rp, rf;
        table t;
        switch (rng() % 9) {
            case 0:
                rp = plain.Bdd_and(p[i], p[j]);
                rf = fast.Bdd_and(f[i], f[j]);
                t = truth[i] & truth[j];
                break;
            case 1:
                rp = plain.Bdd_or(p[i], p[j]);
                rf = fast.Bdd_or(f[i], f[j]);
                t = truth[i] | truth[j];
                break;
            case 2:
                rp = plain.Bdd_xor(p[i], p[j]);
                rf = fast.Bdd_xor(f[i], f[j]);
                t = truth[i] ^ truth[j];
                break;
            case 3:
                rp = plain.Bdd_ite(p[i], p[j], p[k]);
                rf = fast.Bdd_ite(f[i], f[j], f[k]);
                t = (truth[i] & truth[j]) | (~truth[i] & truth[k]);
                break;
            case 4:
                rp = plain.Bdd_nor(p[i], p[j]);
                rf = fast.Bdd_nor(f[i], f[j]);
                t = ~(truth[i] | truth[j]);
                break;
            case 5:
                rp = plain.Bdd_nand(plain.Bdd_not(p[i]), p[j]);
                rf = fast.Bdd_nand(fast.Bdd_not(f[i]), f[j]);
                t = ~(~truth[i] & truth[j]);
                break;
            case 6:
                rp = plain.Bdd_implication(p[i], p[j]);
                rf = fast.Bdd_implication(f[i], f[j]);
                t = ~truth[i] | truth[j];
                break;
            case 7: {
                // Substitution walks paths; the production path remembers
                // shared positions.
                long index = static_cast<long>(rng() % plain.variables_number);
                rp = plain.Bdd_compose(p[i], plain.Bdd_var_by_index(index), p[j]);
                rf = fast.Bdd_compose(f[i], fast.Bdd_var_by_index(index), f[j]);
                long id = plain.id_by_index[index];
                for (std::size_t a = 0; a < t.size(); ++a) {
                    std::size_t b = truth[j][a] ? (a | (std::size_t(1) << id)) : (a & ~(std::size_t(1) << id));
                    t[a] = truth[i][b];
                }
                break;
            }
            default: {
                long index = static_cast<long>(rng() % plain.variables_number);
                int link = rng() % 2 ? 1 : -1;
                rp = plain.Bdd_ite(link, index, p[j], p[k]);
                rf = fast.Bdd_ite(link, index, f[j], f[k]);
                table v = variable_table(plain.id_by_index[index]);
                if (link == -1) v = ~v;
                t = (v & truth[j]) | (~v & truth[k]);
            }
        }
        p.push_back(rp);
        f.push_back(rf);
        truth.push_back(t);
    }

    // Drops about half of the functions and collects in both.
    void collect() {
        for (std::size_t n = 0; n < p.size(); ++n)
            if (rng() % 2) {
                p[n] = plain.Bdd_var_by_index(0);
                f[n] = fast.Bdd_var_by_index(0);
                truth[n] = variable_table(plain.id_by_index[0]);
            }
        plain.Bdd_gc();
        fast.Bdd_gc();
    }
};

TEST(BddDifferential, FastPathMakesTheNodesOfThePlainRecursion) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        twin_run run(seed);
        for (int v = 0; v < 4; ++v) run.add_variable();
        for (int s = 0; s < 120; ++s) {
            unsigned event = run.rng() % 40;
            if (event == 0 && run.plain.variables_number < max_vars) {
                run.add_variable();
            } else if (event == 1) {
                run.collect();
            } else {
                run.step();
            }
            const bdd& rp = run.p.back();
            const bdd& rf = run.f.back();
            ASSERT_EQ(rp.link_type(), rf.link_type());
            ASSERT_EQ(rp.node()->global_id, rf.node()->global_id);
            ASSERT_EQ(run.plain.next_global_id, run.fast.next_global_id);
        }
        EXPECT_EQ(table_view(run.plain), table_view(run.fast));
        EXPECT_EQ(run.plain.one->references, run.fast.one->references);
        for (std::size_t n = 0; n < run.p.size(); ++n) {
            ASSERT_EQ(table_of(run.fast, run.f[n]), run.truth[n]) << "function " << n;
            ASSERT_TRUE(run.fast.Bdd_is_correct(run.f[n]));
        }
    }
}

// Equal functions are equal handles: the reduced form is canonical on
// both paths, whatever the way a function was reached.
TEST(BddDifferential, EqualTruthTablesGiveEqualHandles) {
    twin_run run(99);
    for (int v = 0; v < 6; ++v) run.add_variable();
    for (int s = 0; s < 300; ++s) run.step();
    for (std::size_t a = 0; a < run.f.size(); ++a)
        for (std::size_t b = a + 1; b < run.f.size(); ++b) {
            bool same = run.truth[a] == run.truth[b];
            ASSERT_EQ(run.f[a] == run.f[b], same) << a << " " << b;
            ASSERT_EQ(run.p[a] == run.p[b], same) << a << " " << b;
            bool negated = run.truth[a] == ~run.truth[b];
            ASSERT_EQ(run.f[a].node() == run.f[b].node(), same || negated);
        }
}

// A node put in the table by hand in place of another of the same key is
// what the plain recursion finds from then on; the production path must
// not answer with the displaced node from its memory of finished pairs.
TEST(BddDifferential, TableChangesOutsideTheOperatorsAreSeen) {
    bddpp_manager m;
    bdd a = m.New_var_last("a");
    bdd b = m.New_var_last("b");
    bdd first = m.Bdd_and(a, b);
    ASSERT_GT(m.Computed_table_load(), 0u);
    bdd_node* twin = new bdd_node(&m, first.node()->id, first.node()->else_link_type,
                                  first.node()->then_node, first.node()->else_node,
                                  m.next_global_id++);
    EXPECT_EQ(m.Computed_table_load(), 0u);
    EXPECT_EQ(m.Bdd_and(a, b).node(), twin);
    m.plain_operators = true;
    EXPECT_EQ(m.Bdd_and(a, b).node(), twin);
    m.plain_operators = false;

    m.Map_suppress(twin);
    EXPECT_EQ(m.Computed_table_load(), 0u);
    bdd again = m.Bdd_and(a, b);
    EXPECT_NE(again.node(), twin);
    EXPECT_NE(again.node(), first.node());
    EXPECT_EQ(again.node()->global_id, m.next_global_id - 1);

    // Both displaced nodes are out of the table, so the manager would not
    // free them.
    bdd_node* displaced = first.node();
    first = bdd();
    delete displaced;
    delete twin;
}

}  // namespace
