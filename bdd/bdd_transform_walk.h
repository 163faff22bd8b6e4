#ifndef TARN_BDD_BDD_TRANSFORM_WALK_H
#define TARN_BDD_BDD_TRANSFORM_WALK_H

// Walks shared by the transformations and the printers of bddpp_manager.
//
// The algorithms are plain recursions along paths (no memo): every node is
// visited once per path that reaches it, and the order in which results are
// joined is the order in which nodes get their global_id. A path is as long
// as the number of variables, so the recursions run on explicit stacks
// here, in exactly the order of the call-stack recursion they stand for.

#include "bdd/bddpp.h"

#include <utility>
#include <vector>

namespace bdd_walk {

// Post-order recursion over a binary structure.
//   leaf(N& x, R& r): true when x needs no split, with its result in r; it
//     may also rewrite x (to follow a branch that is forced) and answer
//     false for the new x. Called exactly once per visited position.
//   split(const N& x): the pair (then child, else child) of x.
//   join(const N& x, R then_result, R else_result): result of x.
// With then_first, the then child's whole subtree is done before the else
// child is visited; otherwise the else child goes first.
template <class N, class R, class Leaf, class Split, class Join>
R postorder(N root, Leaf leaf, Split split, Join join, bool then_first = true)
{
    struct Frame {
        N node;
        N second;
        R first_result;
        bool first_done;
    };
    std::vector<Frame> stack;
    N cur = std::move(root);
    R res{};
    for (;;) {
        while (!leaf(cur, res)) {
            std::pair<N, N> kids = split(cur);
            N first = then_first ? kids.first : kids.second;
            N second = then_first ? kids.second : kids.first;
            stack.push_back(Frame{cur, second, R{}, false});
            cur = first;
        }
        for (;;) {
            if (stack.empty()) return res;
            Frame& top = stack.back();
            if (!top.first_done) {
                top.first_result = res;
                top.first_done = true;
                cur = top.second;
                break;
            }
            N node = top.node;
            R first_result = top.first_result;
            stack.pop_back();
            if (then_first)
                res = join(node, first_result, res);
            else
                res = join(node, res, first_result);
        }
    }
}

// A variable's own node: both children the terminal, inverse else link.
inline bool is_own_node(const bdd_node* n, const bdd_node* terminal)
{
    return n->then_node == terminal && n->else_node == terminal && n->else_link_type == -1;
}

// The marking walk of the node printers: each unmarked node of the cone is
// marked when it is reached and handed to visit after its then and else
// cones (post-order). The terminal and the variables' own nodes are leaves:
// the walk does not go below them. A null or a marked node stops the walk.
// `marked` is the manager's mark value (bddpp_manager::marked()).
template <class Visit, class Entered>
void marked_postorder(bdd_node* root, const bdd_node* terminal, unsigned marked, Visit visit, Entered entered)
{
    std::vector<std::pair<bdd_node*, int>> stack;
    auto enter = [&](bdd_node* n) {
        if (n == nullptr || n->mark == marked) return;
        n->mark = marked;
        if (n == terminal || is_own_node(n, terminal)) {
            visit(n);
            return;
        }
        // Both children are read soon, the else one after the whole then
        // cone: their reads start together.
        __builtin_prefetch(n->then_node);
        __builtin_prefetch(n->else_node);
        entered(n);
        stack.push_back({n, 0});
    };
    enter(root);
    while (!stack.empty()) {
        bdd_node* n = stack.back().first;
        int stage = stack.back().second++;
        if (stage == 0)
            enter(n->then_node);
        else if (stage == 1)
            enter(n->else_node);
        else {
            stack.pop_back();
            visit(n);
        }
    }
}

// The same, where `entered` is told of an inner node as it is reached,
// before its cones are walked (to start reads that its visit will need).
template <class Visit>
void marked_postorder(bdd_node* root, const bdd_node* terminal, unsigned marked, Visit visit)
{
    marked_postorder(root, terminal, marked, visit, [](bdd_node*) {});
}

// Pre-order marking walk of the node lists: an unmarked node is handed to
// visit, marked, and its then cone is walked before its else cone.
template <class Visit>
void marked_preorder(bdd_node* root, unsigned marked, Visit visit)
{
    std::vector<bdd_node*> stack{root};
    while (!stack.empty()) {
        bdd_node* n = stack.back();
        stack.pop_back();
        if (n == nullptr || n->mark == marked) continue;
        visit(n);
        n->mark = marked;
        stack.push_back(n->else_node);
        stack.push_back(n->then_node);
    }
}

} // namespace bdd_walk

#endif
