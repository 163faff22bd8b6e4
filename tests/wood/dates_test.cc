// The dependence graph and the dates: set helpers, walks in both directions,
// the coherence check, dates, sorts, cycle detection and critical paths; the
// fast passes against the literal ones and a model of the dates on random
// woods. (The reader rebuild and the used variables: the whole-wood tests; a
// long chain: elim_test.)

#include <algorithm>
#include <random>
#include <sstream>
#include <tuple>

#include "tests/wood/wood_builder.h"
#include "wood/flat_graph.h"

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

// The early dates of some equations, then the late dates of some variables.
std::vector<long> dates(WoodBuilder& t, std::initializer_list<const char*> early,
                        std::initializer_list<const char*> late)
{
    std::vector<long> r;
    for (const char* n : early) r.push_back(t.at(n)->getEarlyDate());
    for (const char* n : late) r.push_back(t.wood->late_dates[t.index(n)]);
    return r;
}

} // namespace

TEST(WoodSets, ReencodingMayMergeMembers)
{
    const long table[] = {-1, 7, 7, 0, 0, 3};
    EXPECT_EQ(set_reencoding(IndexSet{1, 2, 5}, table), (IndexSet{3, 7}));
    EXPECT_EQ(set_priv(IndexSet{2, 3, 5, 8}, IndexSet{1, 2, 5}), (IndexSet{3, 8}));
}

// x -> a -> b -> c, and a, y -> d.
struct Chain : WoodBuilder {
    Chain()
    {
        Bddexpression* a = eq("a", var("x"));
        Bddexpression* b = eq("b", a->bdd_var);
        eq("c", m()->Bdd_not(b->bdd_var));
        eq("d", m()->Bdd_and(a->bdd_var, var("y")));
    }
};

TEST(WoodDependences, WalksFollowBothDirectionsAndKeepTheAccumulator)
{
    Chain t;
    IndexSet empty, acc = {42}, with_b = t.ids({"b"});
    EXPECT_EQ(t.wood->down_dependances(t.index("x"), 1, empty), t.ids({"a", "b", "c", "d"}));
    EXPECT_EQ(t.wood->up_dependances(t.index("c"), 1, empty), t.ids({"b", "a", "x"}));
    EXPECT_EQ(t.wood->up_dependances(t.index("d"), 1, empty), t.ids({"a", "x", "y"}));
    EXPECT_EQ(t.wood->down_dependances(t.index("c"), 1, acc), acc); // nobody reads c
    EXPECT_EQ(t.wood->up_dependances(t.index("x"), 1, acc), acc);   // x has no equation
    // A member of the accumulator is not walked again.
    EXPECT_EQ(t.wood->down_dependances(t.index("a"), 1, with_b), t.ids({"b", "d"}));
}

// a = b, b = a, beside an input or not: the walks end by membership first,
// or, with the two variables only, at the depth limit on the second step;
// the dates climb until the level passes 2 x 2; the first fixed-point
// dating reports the cycle.
TEST(WoodDates, ATwoCycleEndsWalksAndDating)
{
    for (bool input : {true, false}) {
        WoodBuilder t;
        if (input)
            t.var("i");
        bdd a = t.var("a"), b = t.var("b");
        new Bddexpression("a", t.wood.get(), a, b, 0, 0);
        new Bddexpression("b", t.wood.get(), b, a, 0, 0);
        IndexSet empty;
        EXPECT_EQ(captured([&] {
                      EXPECT_EQ(t.wood->down_dependances(t.index("a"), 1, empty), t.ids({"a", "b"}));
                      EXPECT_EQ(t.wood->up_dependances(t.index("a"), 1, empty), t.ids({"a", "b"}));
                  }),
                  input ? "" : "WARNING in Bddexpressionwood::down_dependances():\n"
                               "   possible infinite recusion due to a signals cycle\n"
                               "WARNING in Bddexpressionwood::up_dependances():\n"
                               "   possible infinite recursion due to a signals cycle\n");
        if (input)
            continue;
        EXPECT_EQ(t.wood->compute_dates(), 5);
        EXPECT_EQ(dates(t, {"a", "b"}, {"a", "b"}), (std::vector<long>{4, 3, 2, 1}));
        EXPECT_EQ(t.wood->loop_detection(), (std::list<long>{0, 1}));
        Bddexpression* cycle[] = {t.at("a"), t.at("b")};
        CaptureStdout();
        EXPECT_EQ(PERT_original_version(2, cycle), -1);
        std::string report = GetCapturedStdout();
        EXPECT_EQ(report.rfind("CYCLE DE CAUSALITE SUR:\n", 0), 0u) << report;
        EXPECT_EQ(report.substr(report.size() - 2), "\n\n");
    }
}

TEST(WoodDependences, CoherenceCheckNamesEachWrongReaderSet)
{
    Chain t;
    long ix = t.index("x"), ia = t.index("a"), ib = t.index("b"), id = t.index("d");
    t.wood->amont_table[ix].insert(ib);
    t.wood->amont_table[ia].erase(id);
    std::ostringstream unused;
    std::string err = captured([&] { t.wood->coherence_dependances_check(unused); });
    std::ostringstream expected;
    expected << "incoherence sur table des amonts pour la variable " << ix << ": calcule: {" << ia
             << "} trouve{" << ia << "," << ib << "}\n"
             << "incoherence sur table des amonts pour la variable " << ia << ": calcule: {" << ib
             << "," << id << "} trouve{" << ib << "}\n";
    EXPECT_EQ(err, expected.str());
    EXPECT_EQ(unused.str(), "");
}

// The dating of acyclic woods is held to a model by the differential test
// below; here what the model does not say.
TEST(WoodDates, EmptyAndStaleDates)
{
    WoodBuilder empty;
    EXPECT_EQ(empty.wood->compute_dates(), 0);

    // c = b, b = a, a = x, with indices against the chain. Dates stay until
    // nb_level is cleared, whatever changes; the incremental call places
    // what the listed variables reach.
    WoodBuilder t;
    bdd c = t.var("c"), b = t.var("b"), a = t.var("a"), x = t.var("x");
    new Bddexpression("c", t.wood.get(), c, b, 0, 0);
    new Bddexpression("b", t.wood.get(), b, a, 0, 0);
    new Bddexpression("a", t.wood.get(), a, x, 0, 0);
    EXPECT_EQ(t.wood->compute_dates(), 4);
    t.at("c")->setBddExp(t.m()->Bdd_and(b, x));
    new Bddexpression("d", t.wood.get(), t.var("d"), c, 0, 0);
    std::list<long> none, ids = {t.index("c")};
    EXPECT_EQ(t.wood->compute_dates(), 4);
    EXPECT_EQ(t.wood->compute_dates(none), 4);
    EXPECT_EQ(t.at("d")->getEarlyDate(), 0);
    EXPECT_EQ(t.wood->compute_dates(ids), 5);
    EXPECT_EQ(dates(t, {"d"}, {"c"}), (std::vector<long>{4, 0})); // d is not listed
}

TEST(WoodDates, TheFirstFixedPointDating)
{
    WoodBuilder t;
    bdd x = t.var("x");
    t.eq("a", x);
    t.eq("b", t.at("a")->bdd_var);
    t.eq("c", t.m()->Bdd_and(x, t.at("b")->bdd_var));
    Bddexpression* exps[] = {t.at("c"), t.at("b"), t.at("a")};
    EXPECT_EQ(PERT_original_version(3, exps), 4);
    EXPECT_EQ(dates(t, {"a", "c"}, {"a", "c"}), (std::vector<long>{1, 3, 2, 0}));

    std::vector<long> ea = {3, 5, 4}, la = {1, 1, 9};
    EXPECT_EQ(normalise_min_min(3, ea.data(), la.data()), 8);
    EXPECT_EQ(ea, (std::vector<long>{0, 2, 1}));
    EXPECT_EQ(la, (std::vector<long>{0, 0, 8}));
    long levels[] = {3, 0};
    CaptureStdout();
    affiche_level(2, t.m(), levels);
    EXPECT_EQ(GetCapturedStdout(), "x:3 a:0 \n");

    // Its relaxation steps, c reading x and b: a step that changes nothing
    // says so, and the flag rises (and falls again) with dates past twice
    // the variables.
    const long n = t.wood->Nb_bdd_vars();
    long ix = t.index("x"), ib = t.index("b"), ic = t.index("c");
    std::vector<long> d(n, 0);
    d[ix] = 3;
    int overflow = 7;
    EXPECT_EQ(learn_upstream_dependance(n, d.data(), *t.at("c"), &overflow), 1);
    EXPECT_EQ(learn_upstream_dependance(n, d.data(), *t.at("c"), &overflow), 0);
    EXPECT_EQ((std::vector<long>{d[ic], overflow}), (std::vector<long>{4, 0}));
    d[ic] = 2 * n - 1;
    d[ib] = 2 * n + 5;
    EXPECT_EQ(learn_downstream_dependance(n, d.data(), *t.at("c"), &overflow), 1);
    EXPECT_EQ((std::vector<long>{d[ix], d[ib], overflow}), (std::vector<long>{2 * n, 2 * n + 5, 1}));
    EXPECT_EQ(captured([&] { EXPECT_EQ(learn_downstream_dependance(1, d.data(), *t.at("c"), &overflow), 0); }),
              "INTERNAL ERROR in learn_downstream_dependance()\n");
}

// ------------------------------------------------------------ differential

namespace {

// A random wood: inputs without equation, equations reading one to three
// variables, a few abstract ones with declared readers, random starting
// dates. With `acyclic`, equations read only variables earlier in a random
// permutation, so that index order and data order differ.
void random_wood(WoodBuilder& t, std::mt19937& rng, int n, bool acyclic)
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
            IndexSet deps, readers;
            for (int k = 0; k < reads; k++) deps.insert(acyclic ? pick(r) : pick(n));
            if (r + 1 < n) readers.insert(perm[std::uniform_int_distribution<int>(r + 1, n - 1)(rng)]);
            new Bddexpression((long)v, t.wood.get(), &readers, &deps, "f", e0, 0);
            continue;
        }
        bdd f = vars[acyclic ? pick(r) : pick(n)];
        for (int k = 1; k < reads; k++) {
            bdd g = vars[acyclic ? pick(r) : pick(n)];
            f = k % 2 ? t.m()->Bdd_and(f, g) : t.m()->Bdd_or(f, t.m()->Bdd_not(g));
        }
        if (t.m()->Bdd_is_tautology(f)) f = vars[perm[0]];
        new Bddexpression("v" + std::to_string(v), t.wood.get(), vars[v], f, e0, 0);
    }
    t.wood->update_nb_level(0); // the starting dates stay; dating is due
}

// The levels with the messages of the dating, the early and late dates,
// the two sorts and the loops.
using Snapshot = std::tuple<std::pair<long, std::string>, std::vector<long>, std::vector<long>, std::list<long>,
                            std::list<long>, std::list<long>>;

Snapshot snapshot(Bddexpressionwood& w, const std::pair<long, std::string>& level, bool fast)
{
    std::vector<long> early, late;
    for (long i = 0; i < w.Nb_bdd_vars(); i++) {
        early.push_back(w.exp_table[i] ? w.exp_table[i]->early_date : -99);
        late.push_back(w.late_dates[i]);
    }
    return {level, early, late, fast ? w.earliest_sort() : w.earliest_sort_literal(),
            fast ? w.latest_sort() : w.latest_sort_literal(), w.loop_detection()};
}

// A value and what its computation wrote on the error stream.
template <class F> std::pair<long, std::string> reported(F f)
{
    long v = 0;
    std::string err = captured([&] { v = f(); });
    return {v, err};
}

// The dates of an acyclic wood from its starting early dates: an equation
// no earlier than one past the early date of what it reads (inputs 0), a
// variable one past the latest late date of its readers (none 0), the
// levels one past the latest date.
void expect_model_dates(Bddexpressionwood& w, long levels, const std::vector<long>& start)
{
    const long n = w.Nb_bdd_vars();
    std::vector<long> early(start), late(n, 0);
    for (long round = 0; round < n; round++)
        for (long i = 0; i < n; i++) {
            for (long r : w.amont_table[i])
                if (w.exp_table[r] != nullptr) early[r] = std::max(early[r], (w.exp_table[i] ? early[i] : 0) + 1);
            if (const Bddexpression* e = w.exp_table[i])
                for (long d : e->dependances) late[d] = std::max(late[d], late[i] + 1);
        }
    long top = 0;
    for (long i = 0; i < n; i++) {
        if (w.exp_table[i] != nullptr) {
            EXPECT_EQ(w.exp_table[i]->early_date, early[i]) << i;
            top = std::max(top, early[i]);
        }
        EXPECT_EQ(w.late_dates[i], late[i]) << i;
        top = std::max(top, late[i]);
    }
    EXPECT_EQ(levels, top + 1);
}

} // namespace

TEST(WoodDifferential, FastAndLiteralPassesAgreeOnRandomWoods)
{
    for (int round = 0; round < 300; round++) {
        const unsigned seed = 1000 + round;
        const int n = 3 + round % 40;
        const bool acyclic = round % 3 != 0;
        SCOPED_TRACE("seed " + std::to_string(seed) + (acyclic ? " acyclic" : " cyclic"));
        WoodBuilder fast, literal;
        std::mt19937 rng_f(seed), rng_l(seed);
        random_wood(fast, rng_f, n, acyclic);
        random_wood(literal, rng_l, n, acyclic);
        std::vector<long> start(n, 0);
        for (long i = 0; i < n; i++)
            if (fast.wood->exp_table[i] != nullptr) start[i] = fast.wood->exp_table[i]->early_date;
        auto lf = reported([&] { return fast.wood->compute_dates(); });
        auto ll = reported([&] { return literal.wood->compute_dates_literal(); });
        ASSERT_TRUE(snapshot(*fast.wood, lf, true) == snapshot(*literal.wood, ll, false));
        if (acyclic) expect_model_dates(*fast.wood, lf.first, start);
        if (HasFailure()) return;

        // More equations on new variables, then the incremental call from
        // some of the variables that they read and from themselves.
        std::mt19937 more(seed * 7);
        std::list<long> ids;
        for (int k = 0; k < 4; k++) {
            int a = std::uniform_int_distribution<int>(0, n - 1)(more);
            int b = std::uniform_int_distribution<int>(0, n - 1)(more);
            std::string name = "w" + std::to_string(k);
            for (WoodBuilder* t : {&fast, &literal}) {
                bdd f = t->m()->Bdd_or(t->wood->Bdd_var_by_index(a), t->wood->Bdd_var_by_index(b));
                new Bddexpression(name, t->wood.get(), t->var(name), f, 0, 0);
            }
            ids.push_back(a);
            ids.push_back(fast.index(name));
        }
        lf = reported([&] { return fast.wood->compute_dates(ids); });
        ll = reported([&] { return literal.wood->compute_dates_literal(ids); });
        ASSERT_TRUE(snapshot(*fast.wood, lf, true) == snapshot(*literal.wood, ll, false));

        // Critical paths: the down walk never changes the wood; the up walk
        // may dissolve a variable on a cycle, so it is compared only where
        // there is none. On a cycle the literal walk enumerates every path
        // up to the depth limit, which only a small wood can afford.
        if (!acyclic && n > 9) continue;
        std::vector<long> up, down;
        bool memo = fast.wood->memo_critical_paths(1, up, down);
        EXPECT_TRUE(memo || !acyclic);
        for (long i = 0; i < fast.wood->Nb_bdd_vars(); i++) {
            auto dl = reported([&] { return literal.wood->down_critical_path_literal(i, 1, 0); });
            ASSERT_EQ(reported([&] { return fast.wood->down_critical_path(i, 1, 0); }), dl) << i;
            if (memo) {
                ASSERT_EQ(down[i], dl.first) << i;
            }
            if (!acyclic || fast.wood->exp_table[i] == nullptr) continue;
            long ul = literal.wood->up_critical_path_literal(i, 1, 1);
            ASSERT_EQ(fast.wood->up_critical_path(i, 1, 1), ul) << i;
            ASSERT_EQ(1 + up[i], ul) << i;
            ASSERT_EQ(fast.wood->up_critical_path(i, 0, 3), literal.wood->up_critical_path_literal(i, 0, 3));
        }
    }
}

// The flow order on rows made by hand: readers that are the dependances
// turned round, or the same number of reader edges moved elsewhere. The
// order takes every slot once, puts each dependance before its reader and
// each variable before its readers, and is refused exactly when the edges
// of both kinds close a cycle.
TEST(FlowOrder, FollowsBothKindsOfEdgeAndRefusesACycle)
{
    using Slot = wood_rows::FlatGraph::Slot;
    int refused = 0, moved = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        std::mt19937 rng(seed);
        const long n = 2 + seed % 9;
        std::vector<std::vector<Slot>> reads(n), readers(n);
        for (long i = 0; i < n; i++)
            for (long d = 0; d < n; d++)
                if (rng() % 4 == 0 && (seed % 3 == 0 || d < i)) reads[i].push_back((Slot)d);
        for (long i = 0; i < n; i++)
            for (Slot d : reads[i]) readers[d].push_back((Slot)i);
        if (seed % 2 == 0) {
            // One reader edge moved to another pair, the count kept.
            std::vector<long> with;
            for (long v = 0; v < n; v++)
                if (!readers[v].empty()) with.push_back(v);
            if (!with.empty()) {
                auto& row = readers[with[rng() % with.size()]];
                row.erase(row.begin() + rng() % row.size());
                auto& other = readers[rng() % n];
                Slot s = Slot(rng() % n);
                if (std::find(other.begin(), other.end(), s) == other.end()) other.push_back(s);
                else row.push_back(s), std::sort(row.begin(), row.end());
                std::sort(other.begin(), other.end());
                moved++;
            }
        }
        wood_rows::FlatGraph g;
        g.n = n;
        g.valid = true;
        g.deps_start.assign(1, 0);
        g.readers_start.assign(1, 0);
        for (long v = 0; v < n; v++) {
            g.deps.insert(g.deps.end(), reads[v].begin(), reads[v].end());
            g.readers.insert(g.readers.end(), readers[v].begin(), readers[v].end());
            g.deps_start.push_back((Slot)g.deps.size());
            g.readers_start.push_back((Slot)g.readers.size());
            g.read.push_back(readers[v].empty() ? 0 : 1);
            g.filled.push_back(1);
        }
        // Every edge, by either row; a cycle is what repeated removal of
        // the slots without a remaining predecessor cannot empty.
        std::vector<std::pair<long, long>> edges;
        for (long i = 0; i < n; i++)
            for (Slot d : reads[i]) edges.push_back({d, i});
        for (long v = 0; v < n; v++)
            for (Slot s : readers[v]) edges.push_back({v, s});
        std::vector<char> gone(n, 0);
        for (bool progress = true; progress;) {
            progress = false;
            for (long v = 0; v < n; v++) {
                if (gone[v]) continue;
                bool free = std::none_of(edges.begin(), edges.end(),
                                         [&](const std::pair<long, long>& e) { return e.second == v && !gone[e.first]; });
                if (free) gone[v] = 1, progress = true;
            }
        }
        const bool cyclic = std::count(gone.begin(), gone.end(), 0) != 0;
        std::vector<Slot> order;
        ASSERT_EQ(wood_rows::flow_order(g, order), !cyclic) << seed;
        if (cyclic) {
            refused++;
            continue;
        }
        ASSERT_EQ((long)order.size(), n) << seed;
        std::vector<long> place(n, -1);
        for (long k = 0; k < n; k++) {
            ASSERT_EQ(place[order[k]], -1) << seed;
            place[order[k]] = k;
        }
        for (const auto& e : edges) EXPECT_LT(place[e.first], place[e.second]) << seed;
    }
    EXPECT_GT(refused, 40);
    EXPECT_GT(moved, 150);
}
