// IndexSet against std::set<long> on random operation sequences: after every
// step both hold the same members in the same order, forwards and
// backwards, across the three storages (inline, flat array, chunks).

#include "support/index_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <set>
#include <vector>

namespace {

using Model = std::set<long>;

void expect_same(const IndexSet& s, const Model& m)
{
    ASSERT_EQ(s.size(), m.size());
    ASSERT_EQ(s.empty(), m.empty());
    ASSERT_TRUE(std::equal(m.begin(), m.end(), s.begin(), s.end()));
    ASSERT_TRUE(std::equal(m.rbegin(), m.rend(), s.rbegin(), s.rend()));
    ASSERT_EQ(std::distance(s.begin(), s.end()), (long)m.size());
}

// The same member, or both at the end.
void expect_same_at(const IndexSet& s, IndexSet::const_iterator si, const Model& m, Model::const_iterator mi)
{
    ASSERT_EQ(si == s.end(), mi == m.end());
    if (mi != m.end()) {
        ASSERT_EQ(*si, *mi);
    }
}

struct Scenario {
    const char* name;
    long range;     // values drawn from [-2, range)
    int inserts;    // weights of the operations
    int erases;
    int steps;
    bool ascending; // inserts mostly at the end, as the tables are built
    int prefill;    // random members inserted first
};

const Scenario kScenarios[] = {
    {"tiny sets around the inline pair", 5, 3, 2, 400, false, 0},
    {"flat arrays", 120, 3, 2, 3000, false, 0},
    {"growing past the flat array", 4000, 4, 1, 12000, false, 0},
    {"shrinking chunked sets", 3000, 1, 4, 12000, false, 2500},
    {"ascending builds with hints", 1000000, 5, 1, 9000, true, 0},
};

TEST(IndexSetFast, RandomOperationsMatchStdSet)
{
    for (const Scenario& sc : kScenarios) {
        SCOPED_TRACE(sc.name);
        std::mt19937_64 rng(12345);
        std::uniform_int_distribution<long> value(-2, sc.range - 1);
        std::uniform_int_distribution<int> op(0, sc.inserts + sc.erases + 5);
        IndexSet s;
        Model m;
        long next_up = 0;
        std::size_t peak = 0;
        for (int k = 0; k < sc.prefill; k++) {
            long x = value(rng);
            s.insert(x);
            m.insert(x);
        }
        for (int step = 0; step < sc.steps; step++) {
            long x = value(rng);
            int o = op(rng);
            if (o < sc.inserts) {
                if (sc.ascending) {
                    x = next_up += 1 + (long)(rng() % 3);
                    s.insert(s.end(), x);
                } else {
                    auto r = s.insert(x);
                    ASSERT_EQ(r.second, m.insert(x).second);
                    ASSERT_EQ(*r.first, x);
                    continue;
                }
                m.insert(x);
            } else if (o < sc.inserts + sc.erases) {
                // Erase by value half the time, else by iterator, checking
                // the member that follows.
                if (o % 2 == 0 || m.empty()) {
                    ASSERT_EQ(s.erase(x), m.erase(x));
                } else {
                    auto mi = m.lower_bound(x);
                    if (mi == m.end()) mi = m.begin();
                    auto si = s.find(*mi);
                    ASSERT_TRUE(si != s.end());
                    si = s.erase(si);
                    mi = m.erase(mi);
                    expect_same_at(s, si, m, mi);
                }
            } else if (o == sc.inserts + sc.erases) {
                ASSERT_EQ(s.count(x), m.count(x));
                expect_same_at(s, s.lower_bound(x), m, m.lower_bound(x));
                expect_same_at(s, s.upper_bound(x), m, m.upper_bound(x));
            } else if (o == sc.inserts + sc.erases + 1) {
                // Copies, moves and swaps carry the members whatever the
                // storage of either side.
                IndexSet copy(s);
                IndexSet other{x, x + 7};
                other = copy;
                expect_same(other, m);
                IndexSet moved(std::move(copy));
                s.swap(moved);
                expect_same(s, m);
                ASSERT_TRUE(moved == s && !(moved < s) && !(s < moved));
            } else if (o == sc.inserts + sc.erases + 2) {
                // A range insertion from unsorted input, or an assignment
                // of most of the members and one more out of order.
                std::vector<long> more{x, x - 3, x + 5, x};
                if (step % 3 == 1) {
                    // An ascending run without repeats, members and others
                    // mixed, merged at once.
                    std::vector<long> run;
                    long length = 1 + (long)(rng() % 60);
                    for (long y = x - 2 * (long)(rng() % 40); (long)run.size() < length; y += 1 + (long)(rng() % 4))
                        run.push_back(y);
                    s.insert_ascending(run.data(), run.data() + run.size());
                    m.insert(run.begin(), run.end());
                    more.clear();
                }
                if (step % 40 == 0) {
                    more.clear();
                    for (long y : m)
                        if ((y - x) % 7 != 0) more.push_back(y);
                    more.push_back(x);
                    s.assign(more.begin(), more.end());
                    m.clear();
                }
                s.insert(more.begin(), more.end());
                m.insert(more.begin(), more.end());
            } else if (o == sc.inserts + sc.erases + 3 && step % 31 == 0) {
                // A range erase, of everything now and then, or a clear.
                long y = step % 3 ? x + (long)(rng() % 300) : sc.range;
                if (step % 5 == 0) {
                    s.clear();
                    m.clear();
                } else {
                    auto si = s.erase(step % 3 ? s.lower_bound(x) : s.begin(), s.lower_bound(y));
                    auto mi = m.erase(step % 3 ? m.lower_bound(x) : m.begin(), m.lower_bound(y));
                    expect_same_at(s, si, m, mi);
                }
            }
            SCOPED_TRACE(step);
            expect_same(s, m);
            if (HasFatalFailure()) return;
            peak = std::max(peak, s.size());
        }
        // The large scenarios must have gone through the chunks.
        if (sc.range >= 3000) {
            EXPECT_GT(peak, 2u * IndexSet::kChunk);
        }
    }
}

} // namespace
