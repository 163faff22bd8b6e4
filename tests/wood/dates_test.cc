// Dates, sorts, cycle detection and critical paths; the fast passes against
// the literal ones on random woods; a long chain.

#include <random>
#include <sstream>

#include "tests/wood/wood_fixture.h"

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

namespace {

// Every dating entry point, fast and literal, so that each example runs
// through both.
struct Dating {
    const char* name;
    long (Bddexpressionwood::*full)();
    long (Bddexpressionwood::*incremental)(std::list<long>&);
    std::list<long> (Bddexpressionwood::*earliest)() const;
    std::list<long> (Bddexpressionwood::*latest)() const;
};
const Dating datings[] = {
    {"fast", &Bddexpressionwood::compute_dates, &Bddexpressionwood::compute_dates,
     &Bddexpressionwood::earliest_sort, &Bddexpressionwood::latest_sort},
    {"literal", &Bddexpressionwood::compute_dates_literal,
     &Bddexpressionwood::compute_dates_literal, &Bddexpressionwood::earliest_sort_literal,
     &Bddexpressionwood::latest_sort_literal},
};

long late(TestWood& t, const std::string& n) { return t.wood.late_dates[t.idx(n)]; }
long early(TestWood& t, const std::string& n) { return t.at(n)->getEarlyDate(); }

} // namespace

TEST(WoodDates, ExamplesGiveTheSameDatesThroughBothPasses)
{
    for (const Dating& dating : datings) {
        SCOPED_TRACE(dating.name);
        {
            TestWood t;
            EXPECT_EQ((t.wood.*dating.full)(), 0);
            EXPECT_TRUE((t.wood.*dating.earliest)().empty());
        }
        {
            TestWood t; // a = x
            t.eq("a", t.var("x"));
            EXPECT_EQ((t.wood.*dating.full)(), 2);
            EXPECT_EQ(early(t, "a"), 1);
            EXPECT_EQ(late(t, "x"), 1);
            EXPECT_EQ(late(t, "a"), 0);
        }
        {
            // c = b, b = a, a = x, made so that the indices run against the
            // chain: the order comes from the dates alone.
            TestWood t;
            bdd c = t.var("c"), b = t.var("b"), a = t.var("a"), x = t.var("x");
            new Bddexpression("c", &t.wood, c, b, 0, 0);
            new Bddexpression("b", &t.wood, b, a, 0, 0);
            new Bddexpression("a", &t.wood, a, x, 0, 0);
            EXPECT_EQ((t.wood.*dating.full)(), 4);
            EXPECT_EQ(early(t, "a"), 1);
            EXPECT_EQ(early(t, "b"), 2);
            EXPECT_EQ(early(t, "c"), 3);
            EXPECT_EQ((std::vector<long>{late(t, "x"), late(t, "a"), late(t, "b"), late(t, "c")}),
                      (std::vector<long>{3, 2, 1, 0}));
            EXPECT_EQ(t.names((t.wood.*dating.earliest)()), (std::vector<std::string>{"a", "b", "c"}));
            EXPECT_EQ(t.names((t.wood.*dating.latest)()), (std::vector<std::string>{"a", "b", "c"}));
            EXPECT_TRUE(t.wood.loop_detection().empty());

            // Dates stay until nb_level is cleared, whatever changes.
            t.at("c")->setBddExp(t.m().Bdd_and(b, x));
            new Bddexpression("d", &t.wood, t.var("d"), c, 0, 0);
            EXPECT_EQ((t.wood.*dating.full)(), 4);
            EXPECT_EQ(t.at("d")->getEarlyDate(), 0);
            std::list<long> none;
            EXPECT_EQ((t.wood.*dating.incremental)(none), 4);
            EXPECT_EQ(t.at("d")->getEarlyDate(), 0);
            // The incremental call places what the listed variables reach.
            std::list<long> ids = {t.idx("c")};
            EXPECT_EQ((t.wood.*dating.incremental)(ids), 5);
            EXPECT_EQ(t.at("d")->getEarlyDate(), 4);
            EXPECT_EQ(late(t, "c"), 0); // d is not listed, so nothing pushes from it
        }
        {
            // Equal dates come out in ascending index.
            TestWood t;
            bdd x = t.var("x");
            t.eq("q", x);
            t.eq("p", x);
            t.eq("r", t.m().Bdd_and(t.at("q")->bdd_var, t.at("p")->bdd_var));
            (t.wood.*dating.full)();
            EXPECT_EQ(t.names((t.wood.*dating.earliest)()), (std::vector<std::string>{"q", "p", "r"}));
            EXPECT_EQ(t.names((t.wood.*dating.latest)()), (std::vector<std::string>{"q", "p", "r"}));
        }
        {
            // a = b, b = a: the dates climb until the level passes 2 x 2.
            TestWood t;
            bdd a = t.var("a"), b = t.var("b");
            new Bddexpression("a", &t.wood, a, b, 0, 0);
            new Bddexpression("b", &t.wood, b, a, 0, 0);
            EXPECT_EQ((t.wood.*dating.full)(), 5);
            EXPECT_EQ(early(t, "a"), 4);
            EXPECT_EQ(early(t, "b"), 3);
            EXPECT_EQ(late(t, "a"), 2);
            EXPECT_EQ(late(t, "b"), 1);
            EXPECT_EQ(t.wood.loop_detection(), (std::list<long>{0, 1}));
        }
        {
            // Undated, the late sort lists the equations of late date 0.
            TestWood t;
            bdd x = t.var("x");
            t.eq("a", x);
            t.eq("b", t.at("a")->bdd_var);
            t.wood.late_dates[t.idx("a")] = 1;
            EXPECT_EQ(t.names((t.wood.*dating.latest)()), (std::vector<std::string>{"b"}));
        }
    }
}

TEST(WoodDates, SortsLeaveOutDatesBeyondTheLevels)
{
    TestWood t;
    bdd x = t.var("x");
    t.eq("a", x);
    t.eq("b", x);
    t.eq("c", x);
    t.at("a")->early_date = 2;
    t.at("b")->early_date = 9;
    t.at("c")->early_date = -1;
    t.wood.late_dates[t.idx("b")] = 2;
    t.wood.late_dates[t.idx("c")] = 7;
    t.wood.update_nb_level(2);
    EXPECT_EQ(t.names(t.wood.earliest_sort()), (std::vector<std::string>{"a"}));
    EXPECT_EQ(t.wood.earliest_sort(), t.wood.earliest_sort_literal());
    EXPECT_EQ(t.names(t.wood.latest_sort()), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(t.wood.latest_sort(), t.wood.latest_sort_literal());
    t.wood.update_nb_level(-1);
    EXPECT_TRUE(t.wood.earliest_sort().empty());
    EXPECT_TRUE(t.wood.latest_sort().empty());
}

TEST(WoodCriticalPaths, CountEquationsAlongTheLongestChain)
{
    // x -> a -> b -> d and x -> c -> d.
    TestWood t;
    bdd x = t.var("x");
    t.eq("a", x);
    t.eq("b", t.at("a")->bdd_var);
    t.eq("c", t.m().Bdd_not(x));
    t.eq("d", t.m().Bdd_or(t.at("b")->bdd_var, t.at("c")->bdd_var));
    t.wood.compute_dates();
    for (const char* n : {"a", "b", "c", "d"}) {
        SCOPED_TRACE(n);
        long i = t.idx(n);
        // One more than the early date, and the late date itself.
        EXPECT_EQ(t.wood.up_critical_path(i, 1, 1), early(t, n) + 1);
        EXPECT_EQ(t.wood.up_critical_path_literal(i, 1, 1), early(t, n) + 1);
        EXPECT_EQ(t.wood.down_critical_path(i, 1, 0), late(t, n));
        EXPECT_EQ(t.wood.down_critical_path_literal(i, 1, 0), late(t, n));
    }
    EXPECT_EQ(t.wood.down_critical_path(t.idx("x"), 1, 0), 3);
    EXPECT_EQ(t.wood.up_critical_path(t.idx("x"), 1, 7), 7); // no equation
    // Weights count as they are.
    t.at("c")->setW(5);
    EXPECT_EQ(t.wood.up_critical_path(t.idx("d"), 0, 0), 6);
    EXPECT_EQ(t.wood.down_critical_path(t.idx("x"), 0, 0), 6);
    std::vector<long> up, down;
    ASSERT_TRUE(t.wood.memo_critical_paths(1, up, down));
    EXPECT_EQ(up[t.idx("d")], 6);
    EXPECT_EQ(down[t.idx("x")], 6);
}

TEST(WoodCriticalPaths, TheDownWalkWarnsAtTheDepthLimitOfACycle)
{
    TestWood t;
    bdd a = t.var("a"), b = t.var("b");
    new Bddexpression("a", &t.wood, a, b, 0, 0);
    new Bddexpression("b", &t.wood, b, a, 0, 0);
    std::vector<long> up, down;
    EXPECT_FALSE(t.wood.memo_critical_paths(1, up, down));
    CaptureStderr();
    // a (depth 1) -> b (depth 2 = the limit): b's reader a is not walked.
    EXPECT_EQ(t.wood.down_critical_path(t.idx("a"), 1, 0), 1);
    EXPECT_EQ(GetCapturedStderr(), "WARNING in Bddexpressionwood::down_critical_path():\n"
                                   "   possible infinite recursion due to a signals cycle\n");
}

TEST(WoodDates, TheFirstFixedPointDating)
{
    TestWood t;
    bdd x = t.var("x");
    t.eq("a", x, 0, 0);
    t.eq("b", t.at("a")->bdd_var);
    t.eq("c", t.m().Bdd_and(x, t.at("b")->bdd_var));
    Bddexpression* exps[] = {t.at("c"), t.at("b"), t.at("a")};
    EXPECT_EQ(PERT_original_version(3, exps), 4);
    EXPECT_EQ(early(t, "a"), 1);
    EXPECT_EQ(early(t, "c"), 3);
    EXPECT_EQ(late(t, "a"), 2);
    EXPECT_EQ(late(t, "c"), 0);
    Bddexpression* none[] = {nullptr};
    EXPECT_EQ(PERT_original_version(0, none), 0);

    TestWood u;
    bdd p = u.var("p"), q = u.var("q");
    new Bddexpression("p", &u.wood, p, q, 0, 0);
    new Bddexpression("q", &u.wood, q, p, 0, 0);
    Bddexpression* cycle[] = {u.at("p"), u.at("q")};
    CaptureStdout();
    EXPECT_EQ(PERT_original_version(2, cycle), -1);
    std::string report = GetCapturedStdout();
    EXPECT_EQ(report.rfind("CYCLE DE CAUSALITE SUR:\n", 0), 0u) << report;
    EXPECT_EQ(report.substr(report.size() - 2), "\n\n");
}

TEST(WoodDates, NormalisingAndPrintingLevels)
{
    const struct {
        std::vector<long> a, b;
        long result;
        std::vector<long> a_after, b_after;
    } cases[] = {
        {{3, 5, 4}, {1, 1, 9}, 8, {0, 2, 1}, {0, 0, 8}},
        {{-2, 0}, {4, 4}, 2, {0, 2}, {0, 0}},
        {{7}, {7}, 0, {0}, {0}},
    };
    for (auto c : cases) {
        EXPECT_EQ(normalise_min_min((long)c.a.size(), c.a.data(), c.b.data()), c.result);
        EXPECT_EQ(c.a, c.a_after);
        EXPECT_EQ(c.b, c.b_after);
    }
    EXPECT_EQ(normalise_min_min(0, nullptr, nullptr), 0);

    TestWood t;
    t.var("x");
    t.var("y");
    long dates[] = {3, 0};
    CaptureStdout();
    affiche_level(2, t.wood.bdd_manager, dates);
    EXPECT_EQ(GetCapturedStdout(), "x:3 y:0 \n");
}

// ------------------------------------------------------------ differential

namespace {

// A random wood: inputs without equation, equations reading one to three
// variables, a few abstract ones with declared readers, random starting
// dates. With `acyclic`, equations read only variables earlier in a random
// permutation, so that index order and data order differ.
void random_wood(TestWood& t, std::mt19937& rng, int n, bool acyclic)
{
    std::vector<bdd> vars;
    for (int i = 0; i < n; i++) vars.push_back(t.var("v" + std::to_string(i)));
    std::vector<int> perm(n);
    for (int i = 0; i < n; i++) perm[i] = i;
    std::shuffle(perm.begin(), perm.end(), rng);
    auto pick = [&](int rank) { return perm[std::uniform_int_distribution<int>(0, rank - 1)(rng)]; };
    int inputs = 1 + n / 5;
    for (int r = inputs; r < n; r++) {
        int v = perm[r];
        int reads = std::uniform_int_distribution<int>(1, 3)(rng);
        long e0 = std::uniform_int_distribution<int>(0, 3)(rng) == 0 ? 2 : 0;
        if (std::uniform_int_distribution<int>(0, 9)(rng) == 0) {
            std::set<long> deps, readers;
            for (int k = 0; k < reads; k++) deps.insert(acyclic ? pick(r) : pick(n));
            if (r + 1 < n) readers.insert(perm[std::uniform_int_distribution<int>(r + 1, n - 1)(rng)]);
            new Bddexpression((long)v, &t.wood, &readers, &deps, "f", e0, 0);
            continue;
        }
        bdd f = vars[acyclic ? pick(r) : pick(n)];
        for (int k = 1; k < reads; k++) {
            bdd g = vars[acyclic ? pick(r) : pick(n)];
            f = k % 2 ? t.m().Bdd_and(f, g) : t.m().Bdd_or(f, t.m().Bdd_not(g));
        }
        if (t.m().Bdd_is_tautology(f)) f = vars[perm[0]];
        new Bddexpression("v" + std::to_string(v), &t.wood, vars[v], f, e0, 0);
    }
    t.wood.update_nb_level(0); // the starting dates stay; dating is due
}

struct Snapshot {
    long level;
    std::vector<long> early, late;
    std::list<long> earliest, latest, loops;
    std::string err;
    bool operator==(const Snapshot& o) const
    {
        return level == o.level && early == o.early && late == o.late && earliest == o.earliest &&
               latest == o.latest && loops == o.loops && err == o.err;
    }
};

Snapshot snapshot(Bddexpressionwood& w, long level, bool fast, const std::string& err)
{
    Snapshot s{level, {}, {}, {}, {}, {}, err};
    for (long i = 0; i < w.Nb_bdd_vars(); i++) {
        s.early.push_back(w.exp_table[i] ? w.exp_table[i]->early_date : -99);
        s.late.push_back(w.late_dates[i]);
    }
    s.earliest = fast ? w.earliest_sort() : w.earliest_sort_literal();
    s.latest = fast ? w.latest_sort() : w.latest_sort_literal();
    s.loops = w.loop_detection();
    return s;
}

} // namespace

TEST(WoodDifferential, FastAndLiteralPassesAgreeOnRandomWoods)
{
    for (int round = 0; round < 300; round++) {
        const unsigned seed = 1000 + round;
        const int n = 3 + round % 40;
        const bool acyclic = round % 3 != 0;
        SCOPED_TRACE("seed " + std::to_string(seed) + (acyclic ? " acyclic" : " cyclic"));
        TestWood fast, literal;
        std::mt19937 rng_f(seed), rng_l(seed);
        random_wood(fast, rng_f, n, acyclic);
        random_wood(literal, rng_l, n, acyclic);

        CaptureStderr();
        long lf = fast.wood.compute_dates();
        std::string ef = GetCapturedStderr();
        CaptureStderr();
        long ll = literal.wood.compute_dates_literal();
        std::string el = GetCapturedStderr();
        ASSERT_TRUE(snapshot(fast.wood, lf, true, ef) == snapshot(literal.wood, ll, false, el));

        // More equations on new variables, then the incremental call from
        // every variable that they read and from some others.
        std::mt19937 more(seed * 7);
        std::list<long> ids;
        for (int k = 0; k < 4; k++) {
            int a = std::uniform_int_distribution<int>(0, n - 1)(more);
            int b = std::uniform_int_distribution<int>(0, n - 1)(more);
            std::string name = "w" + std::to_string(k);
            for (TestWood* t : {&fast, &literal}) {
                bdd f = t->m().Bdd_or(t->wood.Bdd_var_by_index(a), t->wood.Bdd_var_by_index(b));
                new Bddexpression(name, &t->wood, t->var(name), f, 0, 0);
            }
            ids.push_back(a);
            ids.push_back(fast.idx(name));
        }
        CaptureStderr();
        lf = fast.wood.compute_dates(ids);
        ef = GetCapturedStderr();
        CaptureStderr();
        ll = literal.wood.compute_dates_literal(ids);
        el = GetCapturedStderr();
        ASSERT_TRUE(snapshot(fast.wood, lf, true, ef) == snapshot(literal.wood, ll, false, el));

        // Critical paths: the down walk never changes the wood; the up walk
        // may dissolve a variable on a cycle, so it is compared only where
        // there is none. On a cycle the literal walk enumerates every path
        // up to the depth limit, which only a small wood can afford.
        if (!acyclic && n > 9) continue;
        std::vector<long> up, down;
        bool memo = fast.wood.memo_critical_paths(1, up, down);
        if (acyclic) EXPECT_TRUE(memo);
        for (long i = 0; i < fast.wood.Nb_bdd_vars(); i++) {
            CaptureStderr();
            long df = fast.wood.down_critical_path(i, 1, 0);
            std::string wf = GetCapturedStderr();
            CaptureStderr();
            long dl = literal.wood.down_critical_path_literal(i, 1, 0);
            std::string wl = GetCapturedStderr();
            ASSERT_EQ(df, dl) << i;
            ASSERT_EQ(wf, wl) << i;
            if (memo) ASSERT_EQ(down[i], dl) << i;
            if (!acyclic || fast.wood.exp_table[i] == nullptr) continue;
            long ul = literal.wood.up_critical_path_literal(i, 1, 1);
            ASSERT_EQ(fast.wood.up_critical_path(i, 1, 1), ul) << i;
            ASSERT_EQ(fast.wood.up_critical_path(i, 0, 3), literal.wood.up_critical_path_literal(i, 0, 3));
            ASSERT_EQ(1 + up[i], ul) << i;
        }
    }
}

TEST(WoodScale, AMillionEquationChainIsDatedAndSorted)
{
    const long n = 1000000;
    bddpp_manager* m = new bddpp_manager();
    m->New_var_last("x");
    for (long k = 1; k <= n; k++) m->New_var_last("a" + std::to_string(k));
    Bddexpressionwood wood(m);
    for (long k = 1; k <= n; k++)
        new Bddexpression(m->Name_var_by_index(k), &wood, m->Bdd_var_by_index(k),
                          m->Bdd_var_by_index(k - 1), 0, 0);
    EXPECT_EQ(wood.compute_dates(), n + 1);
    EXPECT_EQ(wood.exp_table[n]->getEarlyDate(), n);
    EXPECT_EQ(wood.late_dates[0], n);
    EXPECT_EQ(wood.late_dates[1], n - 1);
    std::list<long> order = wood.earliest_sort();
    ASSERT_EQ((long)order.size(), n);
    EXPECT_EQ(order.front(), 1);
    EXPECT_EQ(order.back(), n);
    std::list<long> late_order = wood.latest_sort();
    EXPECT_EQ(late_order.front(), 1);
    EXPECT_TRUE(wood.loop_detection().empty());
    std::vector<long> up, down;
    EXPECT_TRUE(wood.memo_critical_paths(1, up, down));
    EXPECT_EQ(up[n], n);
    EXPECT_EQ(down[0], n);
    EXPECT_EQ(wood.down_critical_path(0, 1, 0), n);
    EXPECT_EQ(wood.up_critical_path(n, 1, 1), n + 1);
    std::set<long> empty;
    EXPECT_EQ((long)wood.up_dependances(n, 1, empty).size(), n);

    // The literal early propagation on a chain is linear: it runs too.
    wood.update_nb_level(0);
    for (long k = 1; k <= n; k++) wood.exp_table[k]->early_date = 0;
    wood.early_propagation(1, 1);
    EXPECT_EQ(wood.exp_table[n]->getEarlyDate(), n);
    EXPECT_EQ(wood.Nb_level(), n + 1);
}
