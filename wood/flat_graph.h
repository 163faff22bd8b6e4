#ifndef TARN_WOOD_FLAT_GRAPH_H
#define TARN_WOOD_FLAT_GRAPH_H

// The dependence graph of a wood in flat rows, for the passes that walk it
// whole: the sets are read once, every later pass walks plain arrays.

#include <cstdint>
#include <vector>

#include "wood/Bddexpression.h"

namespace wood_rows {

// The graph that every date follows, in the direction of the data: d -> i
// when equation i reads d, and v -> s when s, an equation, is a reader of v
// in amont_table. Only edges towards filled slots carry dates.
struct FlatGraph {
    using Slot = std::uint32_t;
    bool valid = false;
    long n = 0;
    // What each filled slot reads, within 0..n-1, ascending.
    std::vector<Slot> deps_start, deps;
    // The filled readers of each variable, ascending.
    std::vector<Slot> readers_start, readers;
    // Whether amont_table of the variable is not empty, filled or not.
    std::vector<char> read;
    // Whether the slot holds an equation; one byte a slot stays in cache
    // where the table of pointers would not.
    std::vector<char> filled;
    // Whether every amont_table entry is a variable index.
    bool readers_in_range = true;
    // Whether the readers are known to be exactly the dependances turned
    // round (rows built from the dependances alone).
    bool readers_turn_deps = false;

    // From the wood's sets; false when the wood is too large for the rows'
    // indices.
    bool build(const Bddexpressionwood& wood);
};

// A topological order of the graph; false when it has a cycle. Any such
// order gives the same longest paths, so the one taken is free.
bool flow_order(const FlatGraph& g, std::vector<FlatGraph::Slot>& order);

// Bddexpressionwood::memo_critical_paths over a graph already in rows,
// which must be the wood's as it stands.
bool memo_critical_paths(const Bddexpressionwood& wood, const FlatGraph& g, long depth,
                         std::vector<long>& up, std::vector<long>& down);

// internal_global_build_dependances, leaving in `g` the graph of the exact
// tables it made (not valid when the wood is too large for it).
void rebuild_reader_tables(Bddexpressionwood& wood, FlatGraph& g);

} // namespace wood_rows

#endif
