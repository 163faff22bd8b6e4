// Diagrams carried into other managers (by index map, by name, into a
// copy) and deep diagrams: no walk may keep a call frame per variable.

#include "bdd/bddpp.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace {

// (a and c) or (b xor d) over the named variables of m.
bdd sample(bddpp_manager& m)
{
    bdd a = m.Bdd_var_by_name("a"), b = m.Bdd_var_by_name("b");
    bdd c = m.Bdd_var_by_name("c"), d = m.Bdd_var_by_name("d");
    bdd ac = m.Bdd_and(a, c);
    bdd bd = m.Bdd_xor(b, d);
    return m.Bdd_or(ac, bd);
}

// Runs body on a thread with a small stack, so that a walk recursing once
// per variable would overflow it.
void on_small_stack(std::function<void()> body)
{
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, 256 * 1024);
    pthread_t thread;
    auto run = [](void* p) -> void* {
        (*static_cast<std::function<void()>*>(p))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attr, run, &body), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
}

} // namespace

// The functions carried over are held to their truth tables by the
// differential tests; here the structure and the order of creation.
TEST(Isomorphe, SameNodesInACopyAndNewNamesInWalkOrder)
{
    bddpp_manager src;
    for (const char* n : {"a", "b", "c", "d"}) src.New_var_last(n);
    bdd f = sample(src);
    bddpp_manager copy(&src);
    bdd g = bddpp_manager::Bdd_isomorphe(&copy, &src, src.Bdd_not(f));
    EXPECT_EQ(g.manager_ref(), &copy);
    EXPECT_EQ(sample(copy), copy.Bdd_not(g)) << "the direct build finds the very nodes";
    long map[4] = {3, 2, 1, 0};
    EXPECT_EQ(bddpp_manager::Bdd_isomorphe(&copy, &src, src.Bdd_zero(), map), copy.Bdd_zero());
    bdd_node* n = bddpp_manager::Bdd_isomorphe(&copy, &src, f.node(), map);
    EXPECT_EQ(bddpp_manager::Bdd_isomorphe(&copy, &src, f, map), bdd(&copy, f.link_type(), n));

    bddpp_manager named;
    named.New_var_last("c");
    bddpp_manager::Bdd_isomorphe_by_name(&named, &src, f);
    EXPECT_EQ((std::vector<std::string>{named.Name_var_by_index(0), named.Name_var_by_index(1),
                                        named.Name_var_by_index(2), named.Name_var_by_index(3)}),
              (std::vector<std::string>{"c", "a", "b", "d"}));
}

// A conjunction of many variables is as deep as the order: none of the
// walks below may keep a call frame per level.
TEST(DeepInput, WalksDoNotUseTheCallStack)
{
    const long n = 20000;
    bddpp_manager m;
    std::vector<bdd> v;
    for (long i = 0; i < n; ++i) v.push_back(m.New_var_last("v" + std::to_string(i)));
    bdd f = m.Bdd_one();
    for (long i = n - 1; i >= 0; --i) f = m.Bdd_and(v[i], f);

    on_small_stack([&] {
        bdd e = m.Bdd_exist(f, v[n - 1]);
        EXPECT_FALSE(m.Bdd_depends_on(e, v[n - 1]));
        EXPECT_TRUE(m.Bdd_depends_on(e, v[n - 2]));

        bdd composed = m.Bdd_compose(f, v[n - 1], v[0]);
        EXPECT_EQ(composed, e);

        std::vector<long> identity(n);
        for (long i = 0; i < n; ++i) identity[i] = i;
        EXPECT_EQ(m.Bdd_replace_vars(f, identity.data()), f);
        EXPECT_EQ(m.Bdd_keep_first_variables(f, n), f);

        std::vector<int> literals(n, 2);
        EXPECT_TRUE(m.Bdd_OneSat(f.node(), 1, literals.data()));
        EXPECT_EQ(literals[n - 1], 1);
        EXPECT_EQ(m.Bdd_eval_for_literal(f, literals.data()), 1);
        literals[n / 2] = 2;
        EXPECT_EQ(m.Bdd_eval_for_literal(f, literals.data()), 2);
        EXPECT_EQ(m.Bdd_one_implicant(f), f);

        bddpp_manager copy(&m);
        bdd g = bddpp_manager::Bdd_isomorphe(&copy, &m, f);
        EXPECT_EQ(copy.Bdd_size(g), n + 1);
        bddpp_manager named;
        bdd h = bddpp_manager::Bdd_isomorphe_by_name(&named, &m, f);
        EXPECT_EQ(named.variables_number, n);
        EXPECT_EQ(named.Bdd_size(h), n + 1);

        // Two chains of alternating variables: their and, the or of their
        // negations, the support, the collection of all but the variables.
        bdd even = m.Bdd_one(), odd = m.Bdd_one();
        for (long i = n - 1; i >= 0; --i) {
            bdd& chain = i % 2 ? odd : even;
            chain = m.Bdd_and(v[i], chain);
        }
        bdd all = m.Bdd_and(even, odd);
        EXPECT_EQ(all, f);
        EXPECT_TRUE(m.Bdd_is_cube(all) && m.Bdd_is_correct(all));
        EXPECT_EQ(all.node()->depends().size(), static_cast<std::size_t>(n));
        EXPECT_EQ(m.Bdd_or(m.Bdd_not(even), m.Bdd_not(odd)), m.Bdd_not(all));

        std::ostringstream out;
        m.Bdd_global_clear_marks();
        m.Print_node_for_eval(" || ", " && ", "!", "", "", "", "0", ";", "t", out, f.node());
        m.Bdd_global_clear_marks();
        m.Print_node_for_eval_BLIF("", "", "t", out, f.node());
        std::list<bdd> functions{f};
        m.Print_bdds_list_by_nodes_list(out, functions);
        EXPECT_GT(out.str().size(), static_cast<std::size_t>(n));

        functions.clear();
        f = e = composed = even = odd = all = bdd();
        m.Bdd_gc();
        EXPECT_EQ(m.map->size(), static_cast<std::size_t>(n));
    });
}
