// The production path of the operators against the plain recursion: the
// same random programs run in two managers must make the same nodes, in
// the same order, with the same links and counts; every function must have
// the truth table that the program asked for; and substitutions chained as
// the local elimination chains them must rebuild what is missing.

#include <gtest/gtest.h>

#include <bitset>
#include <functional>
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

bdd_node* node_of_global_id(bddpp_manager& m, long global_id) {
    bdd_node* found = nullptr;
    m.map->for_each([&](bdd_node* n) {
        if (n->global_id == global_id) found = n;
    });
    return found;
}

// One random program, run in both managers side by side.
struct twin_run {
    bddpp_manager plain, fast;
    std::vector<bdd> p, f;
    std::vector<table> truth;
    std::mt19937 rng;

    explicit twin_run(unsigned seed) : rng(seed) { plain.plain_operators = true; }

    std::size_t pick() { return rng() % p.size(); }
    long pick_index() { return static_cast<long>(rng() % plain.variables_number); }

    // The same construction in both managers, kept by position.
    using op = std::function<bdd(bddpp_manager&, const std::vector<bdd>&)>;
    void both(const op& make) {
        p.push_back(make(plain, p));
        f.push_back(make(fast, f));
    }
    void replace(std::size_t at, const op& make) {
        p[at] = make(plain, p);
        f[at] = make(fast, f);
    }
    // Takes the newest node out of both tables and frees it, as a
    // collection would, when nothing refers to it; false otherwise.
    bool free_newest() {
        long newest = plain.next_global_id - 1;
        bdd_node* a = node_of_global_id(plain, newest);
        bdd_node* b = node_of_global_id(fast, newest);
        if (!a || !b || a->references != 0 || b->references != 0 || plain.node_by_id[a->id] == a)
            return false;
        plain.Map_suppress(a);
        fast.Map_suppress(b);
        delete a;
        delete b;
        return true;
    }
    void expect_same(const char* what) {
        SCOPED_TRACE(what);
        ASSERT_EQ(plain.next_global_id, fast.next_global_id);
        for (std::size_t i = 0; i < p.size(); ++i) {
            ASSERT_EQ(p[i].link_type(), f[i].link_type()) << i;
            ASSERT_EQ(p[i].node()->global_id, f[i].node()->global_id) << i;
        }
        ASSERT_EQ(table_view(plain), table_view(fast));
    }

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

// One reader substituted as the elimination does it: r = r[v := d].
bdd substituted(bddpp_manager& m, const bdd& reader, long v_index, const bdd& definition) {
    return m.Bdd_compose(reader, m.Bdd_var_by_index(v_index), definition);
}

TEST(ComposeFast, EliminationChainsMakeThePlainNodes) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        twin_run t(seed);
        const int vars = 6 + static_cast<int>(seed % 6);
        for (int v = 0; v < vars; ++v) {
            std::string name = "v" + std::to_string(v);
            t.both([&](bddpp_manager& m, const std::vector<bdd>&) { return m.New_var_last(name); });
        }
        for (int s = 0; s < 200; ++s) {
            std::size_t i = t.pick(), j = t.pick();
            long v = t.pick_index();
            int link = t.rng() % 2 ? 1 : -1;
            switch (t.rng() % 10) {
                case 0: case 1: // a new reader
                    t.both([&](bddpp_manager& m, const std::vector<bdd>& x) {
                        return link == 1 ? m.Bdd_and(x[i], x[j]) : m.Bdd_xor(x[i], x[j]);
                    });
                    break;
                case 2: case 3: // by a general definition
                    t.replace(i, [&](bddpp_manager& m, const std::vector<bdd>& x) {
                        return substituted(m, x[i], v, x[j]);
                    });
                    break;
                case 4: { // by a literal, either sign
                    long w = t.pick_index();
                    t.replace(i, [&](bddpp_manager& m, const std::vector<bdd>& x) {
                        bdd lit = m.Bdd_var_by_index(w);
                        return substituted(m, x[i], v, link == 1 ? lit : m.Bdd_not(lit));
                    });
                    break;
                }
                case 5: // by a constant
                    t.replace(i, [&](bddpp_manager& m, const std::vector<bdd>& x) {
                        return substituted(m, x[i], v, link == 1 ? m.Bdd_one() : m.Bdd_zero());
                    });
                    break;
                case 6: // the same substitution twice more, then on the negation
                    for (int k = 0; k < 3; ++k)
                        t.replace(i, [&](bddpp_manager& m, const std::vector<bdd>& x) {
                            return substituted(m, k == 2 ? m.Bdd_not(x[i]) : x[i], v, x[j]);
                        });
                    break;
                case 7: // supports asked, as the dependence tables do
                    t.p[i].node()->depends();
                    t.f[i].node()->depends();
                    break;
                case 8: // a collection frees the nodes that rebuilds left behind
                    if (t.rng() % 4 == 0) {
                        t.p[j] = t.plain.Bdd_one();
                        t.f[j] = t.fast.Bdd_one();
                        t.plain.Bdd_gc();
                        t.fast.Bdd_gc();
                    }
                    break;
                default: // the newest node leaves the table
                    t.free_newest();
            }
            t.expect_same("after a step");
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

// The rounds of one elimination: the reader substituted, then its result
// substituted again, v being gone by then, so that it is only rebuilt.
// Positions whose rebuild was seen to be themselves are skipped in later
// rounds, so a removal from the table between rounds must make them count
// again. Readers and definitions are made of the variables a < b < c < d < e.
TEST(ComposeFast, LaterRoundsRebuildWhatIsMissing) {
    using build = std::function<bdd(bddpp_manager&, const std::vector<bdd>&)>;
    struct row {
        const char* name;
        build reader;
        long v;
        build definition;
        std::function<void(twin_run&)> between; // after the first round
    };
    auto nothing = [](twin_run&) {};
    auto a_free = [](bddpp_manager& m, const std::vector<bdd>& x) {
        bdd left = m.Bdd_xor(x[1], x[2]);
        bdd not_e = m.Bdd_not(x[4]);
        bdd right = m.Bdd_and(x[3], not_e);
        return m.Bdd_or(left, right);
    };
    auto b = [](bddpp_manager&, const std::vector<bdd>& x) { return x[1]; };
    const std::vector<row> rows = {
        {"a and c, c := b xor d", [](bddpp_manager& m, const std::vector<bdd>& x) { return m.Bdd_and(x[0], x[2]); },
         2, [](bddpp_manager& m, const std::vector<bdd>& x) { return m.Bdd_xor(x[1], x[3]); }, nothing},
        {"a or not c, c := not b", [](bddpp_manager& m, const std::vector<bdd>& x) {
             bdd not_c = m.Bdd_not(x[2]);
             return m.Bdd_or(x[0], not_c);
         }, 2, [](bddpp_manager& m, const std::vector<bdd>& x) { return m.Bdd_not(x[1]); }, nothing},
        {"b xor (a and d), b := c or d", [](bddpp_manager& m, const std::vector<bdd>& x) {
             bdd ad = m.Bdd_and(x[0], x[3]);
             return m.Bdd_xor(x[1], ad);
         }, 1, [](bddpp_manager& m, const std::vector<bdd>& x) { return m.Bdd_or(x[2], x[3]); }, nothing},
        {"ite(a, c, d), c := d", [](bddpp_manager& m, const std::vector<bdd>& x) { return m.Bdd_ite(x[0], x[2], x[3]); },
         2, [](bddpp_manager&, const std::vector<bdd>& x) { return x[3]; }, nothing},
        {"no a, then a collection", a_free, 0, b, [](twin_run& t) {
             t.plain.Bdd_gc();
             t.fast.Bdd_gc();
         }},
        {"no a, then the newest node out", a_free, 0, b, [](twin_run& t) { ASSERT_TRUE(t.free_newest()); }},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.name);
        twin_run t(1);
        for (const char* name : {"a", "b", "c", "d", "e"})
            t.both([&](bddpp_manager& m, const std::vector<bdd>&) { return m.New_var_last(name); });
        t.both(r.reader);
        t.both(r.definition);
        for (int round = 0; round < 3; ++round) {
            t.replace(5, [&](bddpp_manager& m, const std::vector<bdd>& x) { return substituted(m, x[5], r.v, x[6]); });
            t.expect_same("round");
            if (round == 0) r.between(t);
        }
    }
}

}  // namespace
