// Substitution on the production path: Bdd_compose_loc's walk on raw
// links, with the results of the positions remembered and the positions
// that cannot change skipped.
//
// What may be skipped follows from one fact: a walk that found every node
// it asked for in the unique table makes the same calls, finds the same
// nodes and makes none when it runs again, as long as nothing has left the
// table. So a position (link, node) whose cone holds no v, once its rebuild
// gave back that very position, gives it back again, and makes nothing on
// the way, until the table's next removal. Such positions carry a mark in
// the node (bdd_node::rebuilt, stamped with the table's removal count).

#include "bdd/bddpp.h"
#include "bdd/bdd_stamped_table.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

struct link_ref {
    int link;
    bdd_node* node;
    bool operator==(const link_ref& o) const { return link == o.link && node == o.node; }
};

// What a position gave: its result, and whether its cone is free of the
// substituted variable.
struct position_result {
    link_ref result;
    bool free;
};

struct position_home {
    std::size_t operator()(const link_ref& x) const {
        std::size_t h = reinterpret_cast<std::uintptr_t>(x.node) >> 4;
        h = (h ^ static_cast<std::size_t>(x.link > 0)) * 0x9E3779B97F4A7C15ull;
        return h ^ (h >> 29);
    }
};

// Results of the positions met by one substitution.
using position_table = stamped_table<link_ref, position_result, position_home>;

inline std::uint32_t link_bit(int link) { return link == 1 ? 1u : 2u; }

}  // namespace

// The walk of Bdd_compose_loc: the same positions, in the same order,
// joined by the same procedures, but on raw links with the results of the
// positions in a reused table. Off v, with both results at or below the
// position's variable, the if-then-else is Bdd_ite's: its two conjunctions
// and their disjunction are joins (none when both results are constants,
// whose disjunction is settled at once). The disjunction is not taken to be
// the position itself: a node need not be the one its key finds in the
// unique table.
//
// Skipped without a visit, with the position itself as result:
// - a variable's own node off v, whose rebuild joins nothing;
// - a position marked rebuilt whose cone cannot hold v: it lies below v,
//   or its node already knows its support and v is not in it.
bdd bddpp_manager::compose_remembering(const bdd& f, long v_index, const bdd& g)
{
    struct frame {
        link_ref x;
        link_ref then_result;
        long index;
        bool then_done;
        bool then_free;
    };
    auto at_or_below = [&](const bdd_node* n, long index) {
        return n == one || (n && n->manager_slot == registry_slot && n->id >= 0 && n->id < variables_number &&
                            index_of_id(n->id) > index);
    };
    const long v_id = v_index >= 0 && v_index < variables_number ? id_of_index(v_index) : -1;
    const std::uint32_t stamp = (map->removals() & 0x3FFFFFFFu) << 2;
    auto known_rebuilt = [&](const link_ref& x, long index) {
        std::uint32_t r = x.node->rebuilt;
        if ((r & ~3u) != stamp || !(r & link_bit(x.link))) return false;
        if (index > v_index) return true;
        const std::vector<int>* support = known_depends(x.node);
        return support && !std::binary_search(support->begin(), support->end(), v_id);
    };
    // Whether rebuilding the position gives it back and makes nothing, as
    // far as the marks tell: a constant, a variable's own node, or a mark.
    auto rebuilds_to_itself = [&](const link_ref& x) {
        bdd_node* n = x.node;
        if (n == one) return true;
        if (n->then_node == one && n->else_node == one && n->else_link_type == -1 && n->id >= 0 &&
            n->id < variables_number && node_by_id[n->id] == n)
            return true;
        return (n->rebuilt & ~3u) == stamp && (n->rebuilt & link_bit(x.link));
    };
    auto mark_rebuilt = [&](const link_ref& x) {
        std::uint32_t r = x.node->rebuilt;
        if ((r & ~3u) != stamp) r = stamp;
        x.node->rebuilt = r | link_bit(x.link);
    };

    // The substituted function when it is a node of this manager, and its
    // variable's index when it is a literal.
    bdd_node* const g_node =
        g.node() && g.node() != one && g.node()->manager_slot == registry_slot && g.link_type() != 0 ? g.node() : nullptr;
    long g_literal = -1;
    if (g_node && g_node->then_node == one && g_node->else_node == one && g_node->else_link_type == -1 &&
        g_node->id >= 0 && g_node->id < variables_number && node_by_id[g_node->id] == g_node)
        g_literal = index_of_id(g_node->id);
    // ite(x, t, e), or ite(not x, t, e) when `negative`, for the variable x
    // of `index` above both t and e, as Bdd_ite makes it: the conjunction
    // with t, that with e, in that order, each a join unless its branch is a
    // constant, then their disjunction. That meets a constant or the other
    // side at each split but the first, so it is the join of x over the
    // branches (of not x when negative), and with both branches constants
    // it makes nothing.
    auto ite_literal = [&](long index, const link_ref& t, const link_ref& e, bool negative) {
        if (t.node == one && e.node == one) {
            if (t.link == e.link) return link_ref{t.link, one};
            return link_ref{negative ? -t.link : t.link, node_by_id[id_of_index(index)]};
        }
        // The three joins, in their order; their table slots are fetched
        // together first, as the keys are all known.
        struct join_args {
            int then_link;
            bdd_node* then_node;
            int else_link;
            bdd_node* else_node;
        };
        join_args joins[3];
        int count = 0;
        const link_ref& first = negative ? e : t;
        const link_ref& second = negative ? t : e;
        if (t.node != one)
            joins[count++] = negative ? join_args{-1, one, t.link, t.node} : join_args{t.link, t.node, -1, one};
        if (e.node != one)
            joins[count++] = negative ? join_args{e.link, e.node, -1, one} : join_args{-1, one, e.link, e.node};
        joins[count++] = join_args{first.link, first.node, second.link, second.node};
        const long id = id_of_index(index);
        for (int k = 0; k < count; ++k)
            prefetch_join(id, joins[k].then_link, joins[k].then_node, joins[k].else_link, joins[k].else_node);
        int link = 1;
        bdd_node* n = nullptr;
        for (int k = 0; k < count; ++k)
            n = fast_join(index, joins[k].then_link, joins[k].then_node, joins[k].else_link, joins[k].else_node,
                          link);
        const link_ref r{link, n};
        // A node that the last join made or found under its own key, over
        // branches that rebuild to themselves: its rebuild is the ite on its
        // variable over those branches, the very joins just made (in the
        // other order when negative), so it gives r back and makes nothing.
        if (n && n != one && n->id == id && n->then_node == first.node && n->else_node == second.node &&
            link == first.link && link * n->else_link_type == second.link && rebuilds_to_itself(first) &&
            rebuilds_to_itself(second))
            mark_rebuilt(r);
        return r;
    };

    // A root marked rebuilt above v is skipped too once its support shows
    // no v; the support is the one the dependence tables ask for.
    if (f.node() && f.node() != one && f.manager_ref() == this && v_id >= 0) {
        link_ref root{f.link_type(), f.node()};
        long index = Node_index(root.node);
        if (index >= 0 && index < v_index && rebuilds_to_itself(root)) {
            const std::vector<int>& support = root.node->depends();
            if (!std::binary_search(support.begin(), support.end(), v_id)) return f;
        }
    }

    static std::vector<frame> stack;
    static position_table done;
    stack.clear();
    done.start();
    link_ref cur{f.link_type(), f.node()};
    link_ref res{};
    bool res_free = true;
    for (;;) {
        for (;;) {
            bdd_node* n = cur.node;
            if (n == nullptr || n == one) {
                res = cur;
                res_free = true;
                break;
            }
            long index = Node_index(n);
            if (index != v_index && index >= 0) {
                bool own = n->then_node == one && n->else_node == one && n->else_link_type == -1 &&
                           node_by_id[n->id] == n;
                if (own || known_rebuilt(cur, index)) {
                    res = cur;
                    res_free = true;
                    break;
                }
            }
            if (const position_result* known = done.find(cur)) {
                res = known->result;
                res_free = known->free;
                break;
            }
            stack.push_back(frame{cur, link_ref{}, index, false, false});
            cur = link_ref{cur.link, n->then_node};
        }
        for (;;) {
            if (stack.empty()) return bdd(this, res.link, res.node);
            frame& top = stack.back();
            if (!top.then_done) {
                top.then_done = true;
                top.then_result = res;
                top.then_free = res_free;
                cur = link_ref{top.x.link * top.x.node->else_link_type, top.x.node->else_node};
                break;
            }
            const link_ref x = top.x;
            const link_ref t = top.then_result;
            const link_ref e = res;
            const long index = top.index;
            const bool free = top.then_free && res_free && index != v_index;
            stack.pop_back();
            link_ref r;
            if (index != v_index && index >= 0 && index < variables_number && at_or_below(t.node, index) &&
                at_or_below(e.node, index)) {
                r = ite_literal(index, t, e, false);
            } else if (index == v_index && g_node && t.node == one && e.node == one) {
                // g and true or not g and false, and so on: each conjunction
                // and the disjunction meet a constant or g twice at once.
                r = t.link == e.link ? link_ref{t.link, one} : link_ref{t.link * g.link_type(), g_node};
            } else if (index == v_index && g_literal >= 0 && at_or_below(t.node, g_literal) &&
                       at_or_below(e.node, g_literal)) {
                r = ite_literal(g_literal, t, e, g.link_type() == -1);
            } else {
                bdd then_part(this, t.link, t.node);
                bdd else_part(this, e.link, e.node);
                bdd joined = index == v_index ? Bdd_ite(g, then_part, else_part)
                                              : Bdd_ite(1, index, then_part, else_part);
                r = link_ref{joined.link_type(), joined.node()};
            }
            if (free && r == x) mark_rebuilt(x);
            done.insert(x, position_result{r, free});
            res = r;
            res_free = free;
        }
    }
}
