// The production path of the operators against the plain recursion: the
// same random programs run in two managers must make the same nodes, in
// the same order, with the same links and counts; every function must have
// the truth table that the program asked for.

#include <gtest/gtest.h>

#include <bitset>
#include <functional>
#include <list>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "bdd/bddpp.h"
#include "support/index_set.h"
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
    // Only the bits of the variables there are change the value.
    const std::size_t mask = (std::size_t(1) << m.variables_number) - 1;
    for (std::size_t k = 0; k < t.size(); ++k) {
        if (k > mask) {
            t[k] = t[k & mask];
            continue;
        }
        for (long id = 0; id < m.variables_number; ++id)
            by_index[m.index_by_id[id]] = (k >> id) & 1;
        t[k] = eval_bdd(m, f, by_index);
    }
    return t;
}

// global id, id, then and else global ids, else link, references.
using node_view = std::tuple<long, long, long, long, int, int>;

std::vector<node_view> table_view(bddpp_manager& m) {
    std::vector<node_view> out;
    for (bdd_node* n : m.map->nodes_in_key_order())
        out.emplace_back(n->global_id, n->id, n->then_node->global_id, n->else_node->global_id,
                         int(n->else_link_type), int(n->references));
    return out;
}

// Both tables hold the same nodes, in the same order, and are well formed.
void expect_same_tables(bddpp_manager& plain, bddpp_manager& fast) {
    ASSERT_EQ(table_view(plain), table_view(fast));
    ASSERT_TRUE(plain.map->well_formed());
    ASSERT_TRUE(fast.map->well_formed());
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
        expect_same_tables(plain, fast);
    }

    void add_variable() {
        long n = plain.variables_number;
        std::string name = "v" + std::to_string(n);
        long where = n ? static_cast<long>(rng() % n) : 0;
        unsigned how = n ? rng() % 3 : 0;
        both([&](bddpp_manager& m, const std::vector<bdd>&) {
            return how == 0 ? m.New_var_last(name) : how == 1 ? m.New_var_before(where, name) : m.New_var_after(where, name);
        });
        truth.push_back(variable_table(n));
    }

    // Applies the same connective in both managers and records the truth
    // table it should have.
    void step() {
        using tables = const table&;
        using bdds = const bdd&;
        static const struct {
            bdd (*make)(bddpp_manager&, bdds, bdds, bdds);
            table (*truth)(tables, tables, tables);
        } connectives[] = {
            {[](bddpp_manager& m, bdds x, bdds y, bdds) { return m.Bdd_and(x, y); },
             [](tables x, tables y, tables) { return x & y; }},
            {[](bddpp_manager& m, bdds x, bdds y, bdds) { return m.Bdd_or(x, y); },
             [](tables x, tables y, tables) { return x | y; }},
            {[](bddpp_manager& m, bdds x, bdds y, bdds) { return m.Bdd_xor(x, y); },
             [](tables x, tables y, tables) { return x ^ y; }},
            {[](bddpp_manager& m, bdds x, bdds y, bdds z) { return m.Bdd_ite(x, y, z); },
             [](tables x, tables y, tables z) { return (x & y) | (~x & z); }},
            {[](bddpp_manager& m, bdds x, bdds y, bdds) { return m.Bdd_nor(x, y); },
             [](tables x, tables y, tables) { return ~(x | y); }},
            {[](bddpp_manager& m, bdds x, bdds y, bdds) { return m.Bdd_nand(m.Bdd_not(x), y); },
             [](tables x, tables y, tables) { return ~(~x & y); }},
            {[](bddpp_manager& m, bdds x, bdds y, bdds) { return m.Bdd_implication(x, y); },
             [](tables x, tables y, tables) { return ~x | y; }},
        };
        std::size_t i = pick(), j = pick(), k = pick();
        long index = pick_index();
        int link = rng() % 2 ? 1 : -1;
        table t, v = variable_table(plain.id_by_index[index]);
        std::size_t which = rng() % 10;
        if (which == 9) {
            // A satisfying cube, as the sum-of-products writers take them
            // one after the other.
            both([&](bddpp_manager& m, const std::vector<bdd>& b) { return m.Bdd_satisfy(b[i]); });
            t = table_of(plain, p.back());
        } else if (which < 7) {
            both([&](bddpp_manager& m, const std::vector<bdd>& b) { return connectives[which].make(m, b[i], b[j], b[k]); });
            t = connectives[which].truth(truth[i], truth[j], truth[k]);
        } else if (which == 7) {
            // Substitution walks paths; the production path remembers
            // shared positions. By a function, a literal of either sign or
            // a constant, as the local elimination substitutes.
            unsigned kind = rng() % 4;
            long w = pick_index();
            auto definition = [&](bddpp_manager& m, const std::vector<bdd>& b) {
                bdd literal = m.Bdd_var_by_index(w);
                return kind == 0 ? b[j] : kind == 1 ? (link == 1 ? literal : m.Bdd_not(literal))
                                                    : (link == 1 ? m.Bdd_one() : m.Bdd_zero());
            };
            both([&](bddpp_manager& m, const std::vector<bdd>& b) {
                return m.Bdd_compose(b[i], m.Bdd_var_by_index(index), definition(m, b));
            });
            table g = kind == 0 ? truth[j] : kind == 1 ? variable_table(plain.id_by_index[w]) : table().set();
            if (kind != 0 && link == -1) g = ~g;
            std::size_t bit = std::size_t(1) << plain.id_by_index[index];
            for (std::size_t a = 0; a < t.size(); ++a)
                t[a] = truth[i][g[a] ? (a | bit) : (a & ~bit)];
        } else {
            both([&](bddpp_manager& m, const std::vector<bdd>& b) { return m.Bdd_ite(link, index, b[j], b[k]); });
            if (link == -1) v = ~v;
            t = (v & truth[j]) | (~v & truth[k]);
        }
        truth.push_back(t);
    }

    // Drops about half of the functions and collects in both.
    void collect() {
        for (std::size_t n = 0; n < p.size(); ++n)
            if (rng() % 2) {
                replace(n, [](bddpp_manager& m, const std::vector<bdd>&) { return m.Bdd_var_by_index(0); });
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
            } else if (event == 2) {
                run.free_newest();
            } else if (event == 3) { // supports asked, as the dependence tables do
                std::size_t n = run.pick();
                run.p[n].node()->depends();
                run.f[n].node()->depends();
            } else {
                run.step();
            }
            run.expect_same("after a step");
            if (testing::Test::HasFatalFailure()) return;
        }
        EXPECT_EQ(run.plain.one->references, run.fast.one->references);
        for (std::size_t n = 0; n < run.p.size(); ++n) {
            ASSERT_EQ(table_of(run.fast, run.f[n]), run.truth[n]) << "function " << n;
            ASSERT_TRUE(run.fast.Bdd_is_correct(run.f[n]));
        }
        // Without handles a collection leaves the variables only.
        run.p.clear();
        run.f.clear();
        for (bddpp_manager* m : {&run.plain, &run.fast}) {
            m->Bdd_gc();
            EXPECT_EQ(m->map->size(), static_cast<std::size_t>(m->variables_number)) << "a reference is left";
        }
    }
}

// The collection's removal of the freed nodes' entries in one pass against
// the plain collection's erasure node by node, on tables that grow past
// 2^16 slots (where growing reads no node) and hold runs long enough for
// entries seven and more slots from their homes. Both managers build with
// the production path; only the collection differs. A node entered by hand
// in place of another of its key makes the displaced one, once freed,
// erase the newcomer's entry.
TEST(BddDifferential, CollectionOfLargeTablesRemovesWhatErasingOneByOneDoes) {
    bddpp_manager plain, fast;
    struct side {
        bddpp_manager& m;
        std::vector<bdd> a, b, kept;
        bdd carry;
        bdd_node* twin = nullptr;
        bdd twin_handle;
    };
    side sides[2] = {{plain, {}, {}, {}, bdd(), nullptr, bdd()}, {fast, {}, {}, {}, bdd(), nullptr, bdd()}};
    constexpr int bits = 13;
    std::mt19937 rng(7);
    auto collect = [&](const char* what) {
        SCOPED_TRACE(what);
        plain.plain_operators = true;
        plain.Bdd_gc();
        plain.plain_operators = false;
        fast.Bdd_gc();
        expect_same_tables(plain, fast);
    };
    for (side& s : sides) {
        for (int i = 0; i < bits; ++i) s.a.push_back(s.m.New_var_last("a" + std::to_string(i)));
        for (int i = 0; i < bits; ++i) s.b.push_back(s.m.New_var_last("b" + std::to_string(i)));
        s.carry = s.m.Bdd_zero();
    }
    std::size_t largest = 0;
    for (int i = 0; i < bits; ++i) {
        bool keep = rng() % 3 != 0;
        for (side& s : sides) {
            bddpp_manager& m = s.m;
            bdd half = m.Bdd_xor(s.a[i], s.b[i]);
            bdd sum = m.Bdd_xor(half, s.carry);
            if (keep) s.kept.push_back(sum);
            s.carry = m.Bdd_or(m.Bdd_and(s.a[i], s.b[i]), m.Bdd_and(s.carry, half));
            if (i == 6) {
                // The twin of a node below the carry's, held; the carry's
                // node still points to the node it displaced.
                bdd_node* n = s.carry.node()->then_node;
                ASSERT_TRUE(n != m.one && m.node_by_id[n->id] != n);
                s.twin = new bdd_node(&m, n->id, n->else_link_type, n->then_node, n->else_node, m.next_global_id++);
                s.twin->then_node->references++;
                s.twin->else_node->references++;
                s.twin_handle = bdd(&m, 1, s.twin);
                s.kept.push_back(m.Bdd_and(s.carry, s.a[bits - 1]));
            }
        }
        largest = std::max(largest, fast.map->size());
        ASSERT_TRUE(fast.map->well_formed());
        if (i == 3 || i == 11) {
            // Some kept sums go too.
            std::size_t k = rng() % sides[0].kept.size();
            for (side& s : sides) s.kept.erase(s.kept.begin() + static_cast<long>(k));
            collect("after a step");
            if (HasFatalFailure()) return;
        }
    }
    EXPECT_GT(largest, std::size_t(3) << 14) << "the table reached 2^16 slots";
    EXPECT_GT(fast.map->size(), std::size_t(sides[1].a.size() * 2));
    for (side& s : sides) {
        s.kept.clear();
        s.carry = bdd();
    }
    collect("without handles but the twin");
    if (HasFatalFailure()) return;
    for (side& s : sides) {
        // The twin lost its entry to the displaced node's erasure.
        EXPECT_EQ(s.m.map->find(s.twin->id, s.twin->else_link_type, s.twin->then_node, s.twin->else_node), nullptr);
        s.twin_handle = bdd();
        delete s.twin;
    }
    collect("without any handle");
    EXPECT_EQ(fast.map->size(), static_cast<std::size_t>(2 * bits));
}

// f with the variable of id v fixed to `value`.
table cofactor(const table& t, long id, bool value) {
    table r;
    std::size_t bit = std::size_t(1) << id;
    for (std::size_t k = 0; k < r.size(); ++k) r[k] = t[value ? (k | bit) : (k & ~bit)];
    return r;
}

// A cube: its points are exactly those between the meet and the join of
// its points.
bool is_cube(const table& t) {
    std::size_t lo = t.size() - 1, hi = 0;
    for (std::size_t k = 0; k < t.size(); ++k)
        if (t[k]) {
            lo &= k;
            hi |= k;
        }
    for (std::size_t z = 0; z < t.size(); ++z)
        if (((z & lo) == lo && (z | hi) == hi) != t[z]) return false;
    return true;
}

// The tests on handles, node access, supports, quantifiers, restrictions,
// renamings, truth tables, implicants and covers, transport into other
// managers, and the comparisons, on
// the functions of random programs over six variables, against their truth
// tables, on both paths; and canonicity.
TEST(BddDifferential, OperationsAgreeWithTruthTables) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        twin_run run(seed);
        for (int v = 0; v < 6; ++v) run.add_variable();
        for (int s = 0; s < 60; ++s) run.step();
        for (bool plain : {false, true}) {
            bddpp_manager& m = plain ? run.plain : run.fast;
            const std::vector<bdd>& fs = plain ? run.p : run.f;
            const long vars = m.variables_number;
            // Managers to carry the functions into: a copy, one of the
            // reversed order by an index map, one by name that lacks them.
            bddpp_manager copy(&m), reversed, named;
            long reverse[6];
            for (long j = 0; j < 6; ++j) {
                reversed.New_var_last("r" + std::to_string(j));
                reverse[j] = 5 - j;
            }
            // Equal functions are equal handles, whatever the way a
            // function was reached: the reduced form is canonical.
            for (std::size_t a = 0; a < fs.size(); ++a)
                for (std::size_t b = a + 1; b < fs.size(); ++b) {
                    ASSERT_EQ(fs[a] == fs[b], run.truth[a] == run.truth[b]) << a << " " << b;
                    ASSERT_EQ(fs[a].node() == fs[b].node(), fs[a] == fs[b] || run.truth[a] == ~run.truth[b]);
                }
            for (std::size_t n = 0; n < fs.size(); ++n) {
                SCOPED_TRACE("function " + std::to_string(n));
                const bdd& f = fs[n];
                const table& t = run.truth[n];
                const table& u = run.truth[(n * 7 + seed) % fs.size()];
                const bdd& g = fs[(n * 7 + seed) % fs.size()];
                EXPECT_EQ(m.Bdd_is_one_tautologic(f), t.all());
                EXPECT_EQ(m.Bdd_is_zero_tautologic(f), t.none());
                EXPECT_EQ(m.Bdd_is_tautology(f), t.all() || t.none());
                EXPECT_TRUE(m.Bdd_is_tautology(f, 1) == t.all() && m.Bdd_is_tautology(f, 0) == t.none());
                EXPECT_EQ(m.Bdd_is_cube(f), is_cube(t));
                bool var = false, negvar = false;
                IndexSet support, support_ids, common;
                std::vector<int> present(vars);
                m.Present_variables(f, present.data());
                for (long id = 0; id < vars; ++id) {
                    var |= t == variable_table(id);
                    negvar |= t == ~variable_table(id);
                    if (cofactor(t, id, 0) != cofactor(t, id, 1)) {
                        support.insert(m.index_by_id[id]);
                        support_ids.insert(id);
                        if (cofactor(u, id, 0) != cofactor(u, id, 1)) common.insert(id);
                    }
                }
                EXPECT_EQ(m.Bdd_is_var(f), var);
                EXPECT_EQ(m.Bdd_is_negvar(f), negvar);
                EXPECT_EQ(m.set_of_index_depend_on(f), support);
                EXPECT_EQ(m.set_of_id_depend_on(f), support_ids);
                for (long i = 0; i < vars; ++i) EXPECT_EQ(present[i], support.count(i)) << i;
                EXPECT_EQ(m.exists_common_variables(f, g), !common.empty());
                EXPECT_EQ(m.Bdd_equiv(f, g), t == u);
                EXPECT_EQ(m.Bdd_imply(f, g), (t & ~u).none());
                EXPECT_EQ(m.Bdds_excl(f, g), (t & u).none());
                EXPECT_EQ(m.Bdds_exclude(f, g), (t & u).none());
                if (!support.empty()) {
                    long top = m.id_by_index[*support.begin()];
                    EXPECT_EQ(m.Bdd_if(f), m.Bdd_var_by_index(*support.begin()));
                    EXPECT_EQ(table_of(m, m.Bdd_then(f)), cofactor(t, top, 1));
                    EXPECT_EQ(table_of(m, m.Bdd_else(f)), cofactor(t, top, 0));
                }
                long index = static_cast<long>((n + seed) % vars), id = m.id_by_index[index];
                bdd x = m.Bdd_var_by_index(index), nx = m.Bdd_not(x);
                table t0 = cofactor(t, id, 0), t1 = cofactor(t, id, 1);
                EXPECT_EQ(m.Bdd_depends_on(f, x), t0 != t1);
                EXPECT_EQ(m.Variable_awaited(f, index), t0 != t1);
                EXPECT_EQ(m.Variable_true_awaited(f, index), t0 != t1 && t1.any());
                EXPECT_EQ(m.Variable_false_awaited(f, index), t0 != t1 && t0.any());
                EXPECT_EQ(table_of(m, m.Bdd_exist(f, x)), t0 | t1);
                EXPECT_EQ(table_of(m, m.Bdd_exist(f, nx)), t0 | t1);
                EXPECT_EQ(table_of(m, m.Bdd_forall(f, x)), t0 & t1);
                EXPECT_EQ(table_of(m, m.Bdd_cube_reduce(f, x)), t1);
                EXPECT_EQ(table_of(m, m.Bdd_cube_reduce(f, nx)), t0);

                // Restriction by the cube x and not y, as a cube, as literals
                // and as a care set; x and y fixed, the rest open.
                long y_index = (index + 1) % vars, y = m.id_by_index[y_index];
                bdd cube = m.Bdd_and(x, m.Bdd_not(m.Bdd_var_by_index(y_index)));
                table fixed = cofactor(t1, y, 0);
                std::vector<int> literals(vars, 2);
                literals[index] = 1;
                literals[y_index] = 0;
                EXPECT_EQ(table_of(m, m.Bdd_reduce(f, cube)), fixed);
                EXPECT_EQ(table_of(m, m.Bdd_eval(f, literals.data())), fixed);
                EXPECT_EQ(m.Bdd_eval_for_literal(f, literals.data()), fixed.all() ? 1 : fixed.none() ? 0 : 2);
                bdd care = m.Bdd_or(x, m.Bdd_var_by_index(y_index));
                EXPECT_EQ(table_of(m, care) & table_of(m, m.Bdd_reduce(f, care)) & ~t, table());
                // Below index 2 everything counts as true; variable j takes
                // the place of variable j + 1.
                table kept = t;
                for (long i = 2; i < vars; ++i)
                    kept = cofactor(kept, m.id_by_index[i], 0) | cofactor(kept, m.id_by_index[i], 1);
                EXPECT_EQ(table_of(m, m.Bdd_keep_first_variables(f, 2)), kept);
                std::vector<long> map(vars);
                table replaced;
                for (long j = 0; j < vars; ++j) map[j] = (j + 1) % vars;
                for (std::size_t k = 0; k < replaced.size(); ++k) {
                    std::size_t p = 0;
                    for (long j = 0; j < vars; ++j)
                        p |= ((k >> m.id_by_index[map[j]]) & 1) << m.id_by_index[j];
                    replaced[k] = t[p];
                }
                EXPECT_EQ(table_of(m, m.Bdd_replace_vars(f, map.data())), replaced);
                bdd by_id[6];
                for (long j = 0; j < 6; ++j) by_id[j] = m.Bdd_var_by_index(m.index_by_id[j]);
                unsigned long id_of_f = (t & table(~0ULL)).to_ullong();
                char chars[64];
                m.Truth_table(f, 6, by_id, chars);
                EXPECT_EQ(m.Id_function_by_bdd(f, 6, by_id), id_of_f);
                EXPECT_EQ(m.Bdd_function_by_id(id_of_f, 6, by_id), f);
                for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(chars[k], t[k] ? '1' : '0');
                bdd in_copy[6], in_reversed[6], in_named[6];
                bdd g1 = bddpp_manager::Bdd_isomorphe(&copy, &m, f);
                bdd g2 = bddpp_manager::Bdd_isomorphe(&reversed, &m, f, reverse);
                bdd g3 = bddpp_manager::Bdd_isomorphe_by_name(&named, &m, f);
                for (long j = 0; j < 6; ++j) {
                    in_copy[j] = copy.Bdd_var_by_index(m.index_by_id[j]);
                    in_reversed[j] = reversed.Bdd_var_by_index(5 - m.index_by_id[j]);
                    in_named[j] = named.New_var_last(m.Name_var_by_id(j));
                }
                EXPECT_EQ(copy.Id_function_by_bdd(g1, 6, in_copy), id_of_f);
                EXPECT_EQ(reversed.Id_function_by_bdd(g2, 6, in_reversed), id_of_f);
                EXPECT_EQ(named.Id_function_by_bdd(g3, 6, in_named), id_of_f);

                // Cubes and covers: inside f, and all of f where a cover.
                if (t.any()) {
                    for (const bdd& c : {m.Bdd_satisfy(f), m.Bdd_one_implicant(f)}) {
                        EXPECT_TRUE(is_cube(table_of(m, c)) && table_of(m, c).any());
                        EXPECT_TRUE((table_of(m, c) & ~t).none());
                    }
                }
                std::list<bdd> primes;
                m.Bdd_prime_implicants(f, primes);
                table joined;
                for (const bdd& p : primes) {
                    table pt = table_of(m, p);
                    joined |= pt;
                    EXPECT_TRUE(is_cube(pt) && (pt & ~t).none());
                    for (long i = 0; i < vars && t.any() && !t.all(); ++i) {
                        bdd x = m.Bdd_var_by_index(i);
                        EXPECT_TRUE(!m.Bdd_depends_on(p, x) || (table_of(m, m.Bdd_exist(p, x)) & ~t).any()) << "prime grows";
                    }
                    for (const bdd& q : primes)
                        EXPECT_TRUE(&p == &q || (pt & ~table_of(m, q)).any()) << "one prime implies another";
                }
                EXPECT_EQ(joined, t);
                for (int level = 0; level <= 3; ++level) {
                    std::list<bdd> cover;
                    m.Bdd_sop(f, cover, level);
                    table covered;
                    for (const bdd& c : cover) {
                        EXPECT_TRUE(is_cube(table_of(m, c)));
                        covered |= table_of(m, c);
                    }
                    EXPECT_EQ(covered, t) << "level " << level;
                }
                // Simplification keeps f and stays apart from the care set.
                bdd outside = m.Bdd_and(m.Bdd_not(f), care);
                for (bdd r : {m.Bdd_simplify(f, outside), m.Bdd_simplify3(f, outside)})
                    EXPECT_TRUE((t & ~table_of(m, r)).none() && (table_of(m, r) & table_of(m, outside)).none());
                if (HasFailure()) return;
            }
        }
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
