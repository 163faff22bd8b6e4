// Substitution on the production path against the plain walk. Chains of
// substitutions as local elimination makes them (many readers, constant,
// literal and general definitions, the same reader substituted again),
// with collections, support queries and nodes taken out of the unique
// table in between, must make the same nodes in the same order in a plain
// and a production manager.

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "bdd/bddpp.h"

namespace {

struct node_view {
    long global_id, id, then_id, else_id;
    int else_link_type, references;
    bool operator==(const node_view& o) const {
        return global_id == o.global_id && id == o.id && then_id == o.then_id && else_id == o.else_id &&
               else_link_type == o.else_link_type && references == o.references;
    }
};

std::vector<node_view> table_view(bddpp_manager& m) {
    std::vector<node_view> out;
    for (bdd_node* n : m.map->nodes_in_key_order())
        out.push_back({n->global_id, n->id, n->then_node->global_id, n->else_node->global_id,
                       n->else_link_type, n->references});
    return out;
}

bdd_node* node_of_global_id(bddpp_manager& m, long global_id) {
    bdd_node* found = nullptr;
    m.map->for_each([&](bdd_node* n) {
        if (n->global_id == global_id) found = n;
    });
    return found;
}

// The same program in two managers; functions are kept by position.
struct twins {
    bddpp_manager plain, fast;
    std::vector<bdd> p, f;
    std::mt19937 rng;

    explicit twins(unsigned seed) : rng(seed) {
        plain.plain_operators = true;
        fast.plain_operators = false;
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
    using op = std::function<bdd(bddpp_manager&, const std::vector<bdd>&)>;
    void both(const op& make) {
        p.push_back(make(plain, p));
        f.push_back(make(fast, f));
    }
    void replace(std::size_t at, const op& make) {
        p[at] = make(plain, p);
        f[at] = make(fast, f);
    }
    std::size_t pick() { return rng() % p.size(); }
    long pick_index() { return static_cast<long>(rng() % plain.variables_number); }

    void expect_same(const char* what) {
        SCOPED_TRACE(what);
        ASSERT_EQ(plain.next_global_id, fast.next_global_id);
        for (std::size_t i = 0; i < p.size(); ++i) {
            ASSERT_EQ(p[i].link_type(), f[i].link_type()) << i;
            ASSERT_EQ(p[i].node()->global_id, f[i].node()->global_id) << i;
        }
        ASSERT_EQ(table_view(plain), table_view(fast));
    }
};

// One reader substituted as the elimination does it: r = r[v := d].
bdd substituted(bddpp_manager& m, const bdd& reader, long v_index, const bdd& definition) {
    return m.Bdd_compose(reader, m.Bdd_var_by_index(v_index), definition);
}

TEST(ComposeFast, EliminationChainsMakeThePlainNodes) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        twins t(seed);
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
        std::function<void(twins&)> between; // after the first round
    };
    auto nothing = [](twins&) {};
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
        {"no a, then a collection", a_free, 0, b, [](twins& t) {
             t.plain.Bdd_gc();
             t.fast.Bdd_gc();
         }},
        {"no a, then the newest node out", a_free, 0, b, [](twins& t) { ASSERT_TRUE(t.free_newest()); }},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.name);
        twins t(1);
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
