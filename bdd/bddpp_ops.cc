// The logic operators. Bdd_and and Bdd_or are the two pair procedures;
// every other connective is built on them.
//
// Two paths compute them, with the same results and the same node
// creation order (hence the same global ids):
// - the plain recursion, a direct call-stack recursion without memory,
//   taken when plain_operators is set;
// - the production path: the same depth-first then-before-else walk on an
//   explicit stack, with a computed table of finished pairs.
// The table cannot change the creation order: a pair met again was
// finished before, so the plain recursion would only find the nodes it
// made the first time. Or is worked out as the negated and of the negated
// operands, whose walk makes the very same nodes; and the and of (x, y)
// makes the same nodes as that of (y, x). So one table keyed on the
// unordered pair serves both operators.

#include "bdd/bddpp.h"
#include "bdd/bddpp_memory.h"

#include <cstdlib>
#include <iostream>

struct bddpp_manager::apply_frame {
    bdd_node* x;
    bdd_node* y;
    bdd_node* then_node; // result of the then part, once known
    long ix, iy;
    int link_x, link_y;
    int then_link;
    bool then_done;
};

struct bddpp_manager::computed_entry {
    std::uintptr_t a, b; // tagged operands, a <= b; a == 0 marks a free slot
    std::uintptr_t r;    // tagged result
};

namespace {

// A node pointer with the link in bit 0 (nodes are at least 8-aligned).
inline std::uintptr_t tag(int link, bdd_node* n) {
    return reinterpret_cast<std::uintptr_t>(n) | (link < 0 ? 1u : 0u);
}
inline bdd_node* untag_node(std::uintptr_t t) {
    return reinterpret_cast<bdd_node*>(t & ~std::uintptr_t(1));
}
inline int untag_link(std::uintptr_t t) { return (t & 1) ? -1 : 1; }

inline std::size_t computed_slot(std::uintptr_t a, std::uintptr_t b, std::size_t mask) {
    std::uint64_t h = (a * 0x9E3779B97F4A7C15ull + b) * 0xC2B2AE3D27D4EB4Full;
    h ^= h >> 29;
    return static_cast<std::size_t>(h >> 32) & mask;
}

constexpr std::size_t computed_initial = std::size_t(1) << 14;
constexpr std::size_t computed_max = std::size_t(1) << 17;

}  // namespace

// ------------------------------------------------------------ computed table

void bddpp_manager::computed_clear() {
    if (!computed || computed_used == 0) return;
    for (std::size_t i = 0; i < computed_size; ++i) computed[i] = computed_entry{0, 0, 0};
    computed_used = 0;
}

void bddpp_manager::computed_resize() {
    std::size_t want = computed_size ? computed_size : computed_initial;
    std::size_t nodes = map ? map->size() : 0;
    while (want < computed_max && want < nodes) want *= 2;
    if (want == computed_size) return;
    bdd_block_free(computed);
    computed = static_cast<computed_entry*>(bdd_block_alloc(want * sizeof(computed_entry)));
    computed_size = want;
    computed_used = 0;
}

void bddpp_manager::release_operator_tables() {
    bdd_block_free(computed);
    computed = nullptr;
    computed_size = computed_used = 0;
    delete apply_stack;
    apply_stack = nullptr;
}

std::size_t bddpp_manager::Computed_table_load() const { return computed_used; }

// ------------------------------------------------------------ pair procedures

void bddpp_manager::null_reference(bool is_or, bdd_node* x, bdd_node* y) {
    if (is_or) {
        std::cerr << "ERROR: call bddpp_manager::Bdd_or() with null reference" << std::endl;
    } else {
        std::cerr << "ERROR: call bddpp_manager::Bdd_and() with null reference" << std::endl
                  << "Bdd_and(" << static_cast<const void*>(x) << ","
                  << static_cast<const void*>(y) << ")" << std::endl;
    }
    std::exit(1);
}

// The result must never stand above both operands.
void bddpp_manager::self_check(bool is_or, int link_x, bdd_node* x, long ix, int link_y,
                               bdd_node* y, long iy, int link, bdd_node* result) {
    if (result == one) return;
    long r = Node_index(result);
    if (r == -1 || !(ix > r && iy > r)) return;
    std::ostream& err = std::cerr;
    if (is_or)
        err << "INTERNAL ERROR in Bdd_or(): result has an index (" << r
            << ") less than the operands (" << ix << ") and (" << iy << ")!" << std::endl;
    else
        err << "INTERNAL ERROR in Bdd_and(): result has an index (" << r
            << ") less than the operands (" << ix << " ) of x  and (" << iy
            << ") of y!" << std::endl;
    Bdd_global_clear_marks();
    long next = Bdd_incremental_id(x, 0);
    next = Bdd_incremental_id(y, next);
    Bdd_incremental_id(result, next);
    Bdd_clear_marks(x);
    Bdd_clear_marks(y);
    Bdd_clear_marks(result);
    err << std::endl << std::endl;
    err << "param1= " << (link_x == -1 ? "NOT" : "") << std::endl;
    Print_bdd_structure_loc(err, 5, x);
    if (!is_or && !x->is_correct()) err << "BE CAREFUL: x is not correct!" << std::endl << std::endl;
    err << "param2=" << (link_y == -1 ? "NOT" : "") << std::endl;
    Print_bdd_structure_loc(err, 5, y);
    if (!is_or && !y->is_correct()) err << "BE CAREFUL: y is not correct!" << std::endl << std::endl;
    err << "result=" << (link == -1 ? "NOT" : "") << std::endl;
    Print_bdd_structure_loc(err, 5, result);
    Bdd_stats(err);
    std::exit(1);
}

bdd_node* bddpp_manager::join(long index, int then_link, bdd_node* then_node,
                              int else_link, bdd_node* else_node, int& link) {
    if (then_node == else_node && then_link == else_link) {
        link = then_link;
        return then_node;
    }
    link = 1;
    return Find_or_create_bdd_node(index, then_link, else_link, then_node, else_node,
                                   link);
}

// The node of the key, found in the unique table or made there with the
// next global id; the children are real nodes of the manager, in order.
bdd_node* bddpp_manager::find_or_make(long id, int else_link_type, bdd_node* then_node, bdd_node* else_node) {
    std::size_t hash, free_slot;
    if (bdd_node* found = map->find(id, else_link_type, then_node, else_node, hash, free_slot))
        return found;
    bdd_node* node = new bdd_node(this, id, else_link_type, then_node, else_node,
                                  next_global_id, bdd_node::not_integrated{});
    map->insert_absent(node, hash, free_slot);
    next_global_id++;
    then_node->references++;
    else_node->references++;
    return node;
}

// join() for the production path: the steps of Find_or_create_bdd_node,
// with the table probed in place. Anything out of the ordinary (both
// children terminal, a child out of order) goes through the general
// procedure, which reports.
bdd_node* bddpp_manager::fast_join(long index, int then_link, bdd_node* then_node,
                                          int else_link, bdd_node* else_node, int& link) {
    if (then_node == else_node && then_link == else_link) {
        link = then_link;
        return then_node;
    }
    auto below = [&](const bdd_node* child) {
        return child == one || (child && child->manager_slot && child->id >= 0 &&
                                child->id < variables_number && index_of_id(child->id) > index);
    };
    if ((then_node == one && else_node == one) || index < 0 || index >= variables_number ||
        !below(then_node) || !below(else_node)) {
        link = 1;
        return Find_or_create_bdd_node(index, then_link, else_link, then_node, else_node,
                                       link);
    }
    link = then_link;
    return find_or_make(id_of_index(index), then_link * else_link, then_node, else_node);
}

// The reference: the procedures as they read, on the call stack.
bdd_node* bddpp_manager::apply_plain(bool is_or, int link_x, bdd_node* x, int link_y,
                                     bdd_node* y, int& link) {
    if (!x || !y) null_reference(is_or, x, y);
    // The terminal cases; or's are and's with the constants swapped.
    int absorbing = is_or ? 1 : -1;
    if (x == one) {
        if (link_x == -absorbing) {
            link = link_y;
            return y;
        }
        link = absorbing;
        return one;
    }
    if (y == one) {
        if (link_y == -absorbing) {
            link = link_x;
            return x;
        }
        link = absorbing;
        return one;
    }
    if (x == y) {
        if (link_x == link_y) {
            link = link_x;
            return x;
        }
        link = absorbing;
        return one;
    }
    long ix = Node_index(x), iy = Node_index(y);
    int then_link, else_link;
    bdd_node *then_node, *else_node;
    long index;
    if (ix < iy) {
        index = ix;
        then_node = apply_plain(is_or, link_x, x->then_node, link_y, y, then_link);
        else_node = apply_plain(is_or, link_x * x->else_link_type, x->else_node, link_y, y,
                                else_link);
    } else if (ix == iy) {
        index = ix;
        then_node = apply_plain(is_or, link_x, x->then_node, link_y, y->then_node, then_link);
        else_node = apply_plain(is_or, link_x * x->else_link_type, x->else_node,
                                link_y * y->else_link_type, y->else_node, else_link);
    } else {
        index = iy;
        then_node = apply_plain(is_or, link_y, y->then_node, link_x, x, then_link);
        else_node = apply_plain(is_or, link_y * y->else_link_type, y->else_node, link_x, x,
                                else_link);
    }
    bdd_node* result = join(index, then_link, then_node, else_link, else_node, link);
    self_check(is_or, link_x, x, ix, link_y, y, iy, link, result);
    return result;
}

// The production path, on and-form links: or(f, g) = not and(not f, not g).
bdd_node* bddpp_manager::apply(bool is_or, int link_x, bdd_node* x, int link_y,
                               bdd_node* y, int& link) {
    const int sign = is_or ? -1 : 1;
    if (!apply_stack) apply_stack = new std::vector<apply_frame>;
    if (!computed || (map->size() > computed_size && computed_size < computed_max))
        computed_resize();
    std::vector<apply_frame>& stack = *apply_stack;
    stack.clear();
    const std::size_t mask = computed_size - 1;

    int lx = link_x * sign, ly = link_y * sign;
    bdd_node *cx = x, *cy = y; // the pending call
    int rl = 0;
    bdd_node* rn = nullptr; // the last result
    for (;;) {
        // Call (lx, cx, ly, cy): settle it at once, or open a frame.
        if (!cx || !cy) null_reference(is_or, cx, cy);
        bool settled = true;
        if (cx == one) {
            if (lx == 1) rl = ly, rn = cy;
            else rl = -1, rn = one;
        } else if (cy == one) {
            if (ly == 1) rl = lx, rn = cx;
            else rl = -1, rn = one;
        } else if (cx == cy) {
            if (lx == ly) rl = lx, rn = cx;
            else rl = -1, rn = one;
        } else {
            std::uintptr_t a = tag(lx, cx), b = tag(ly, cy);
            if (a > b) std::swap(a, b);
            const computed_entry& e = computed[computed_slot(a, b, mask)];
            if (e.a == a && e.b == b) {
                rl = untag_link(e.r);
                rn = untag_node(e.r);
            } else {
                settled = false;
            }
        }
        if (!settled) {
            apply_frame f;
            f.x = cx;
            f.y = cy;
            f.link_x = lx;
            f.link_y = ly;
            f.ix = Node_index(cx);
            f.iy = Node_index(cy);
            f.then_done = false;
            f.then_node = nullptr;
            f.then_link = 0;
            stack.push_back(f);
            // The else pair is known now and asked for only after the whole
            // then part: its table slot can be fetched meanwhile.
            std::uintptr_t ea, eb;
            if (f.ix < f.iy) {
                cx = f.x->then_node;
                ea = tag(f.link_x * f.x->else_link_type, f.x->else_node);
                eb = tag(f.link_y, f.y);
            } else if (f.ix == f.iy) {
                cx = f.x->then_node;
                cy = f.y->then_node;
                ea = tag(f.link_x * f.x->else_link_type, f.x->else_node);
                eb = tag(f.link_y * f.y->else_link_type, f.y->else_node);
            } else {
                cx = f.y->then_node;
                lx = f.link_y;
                cy = f.x;
                ly = f.link_x;
                ea = tag(f.link_y * f.y->else_link_type, f.y->else_node);
                eb = tag(f.link_x, f.x);
            }
            if (ea > eb) std::swap(ea, eb);
            __builtin_prefetch(&computed[computed_slot(ea, eb, mask)]);
            continue;
        }
        // Return (rl, rn) to the frames waiting for it.
        for (;;) {
            if (stack.empty()) {
                link = rl * sign;
                return rn;
            }
            apply_frame& f = stack.back();
            if (!f.then_done) {
                f.then_done = true;
                f.then_link = rl;
                f.then_node = rn;
                if (f.ix < f.iy) {
                    lx = f.link_x * f.x->else_link_type;
                    cx = f.x->else_node;
                    ly = f.link_y;
                    cy = f.y;
                } else if (f.ix == f.iy) {
                    lx = f.link_x * f.x->else_link_type;
                    cx = f.x->else_node;
                    ly = f.link_y * f.y->else_link_type;
                    cy = f.y->else_node;
                } else {
                    lx = f.link_y * f.y->else_link_type;
                    cx = f.y->else_node;
                    ly = f.link_x;
                    cy = f.x;
                }
                break;
            }
            long index = f.ix < f.iy ? f.ix : f.iy;
            int result_link;
            bdd_node* result = fast_join(index, f.then_link, f.then_node, rl, rn, result_link);
            if (result != one && !(result && result->manager_slot && result->id >= 0 &&
                                   result->id < variables_number &&
                                   index_of_id(result->id) >= index))
                self_check(is_or, f.link_x * sign, f.x, f.ix, f.link_y * sign, f.y, f.iy,
                           result_link * sign, result);
            std::uintptr_t a = tag(f.link_x, f.x), b = tag(f.link_y, f.y);
            if (a > b) std::swap(a, b);
            computed_entry& e = computed[computed_slot(a, b, mask)];
            if (e.a == 0) computed_used++;
            e.a = a;
            e.b = b;
            e.r = tag(result_link, result);
            rl = result_link;
            rn = result;
            stack.pop_back();
        }
    }
}

bool& bddpp_manager::plain_by_default() {
    static bool plain = false;
    return plain;
}

bdd_node* bddpp_manager::Bdd_and(int link_x, bdd_node* x, int link_y, bdd_node* y,
                                 int& link) {
    if (plain_operators) return apply_plain(false, link_x, x, link_y, y, link);
    return apply(false, link_x, x, link_y, y, link);
}

bdd_node* bddpp_manager::Bdd_or(int link_x, bdd_node* x, int link_y, bdd_node* y,
                                int& link) {
    if (plain_operators) return apply_plain(true, link_x, x, link_y, y, link);
    return apply(true, link_x, x, link_y, y, link);
}

// ------------------------------------------------------------------ handles

bdd bddpp_manager::Bdd_one() { return bdd(this, 1, one); }
bdd bddpp_manager::Bdd_zero() { return bdd(this, -1, one); }

bdd bddpp_manager::Bdd_not(const bdd& f) {
    return bdd(f.manager_ref(), -f.link_type(), f.node());
}

bdd bddpp_manager::Bdd_and(const bdd& f, const bdd& g) {
    int link = 1;
    bdd_node* n = Bdd_and(f.link_type(), f.node(), g.link_type(), g.node(), link);
    return bdd(this, link, n);
}

bdd bddpp_manager::Bdd_or(const bdd& f, const bdd& g) {
    int link = 1;
    bdd_node* n = Bdd_or(f.link_type(), f.node(), g.link_type(), g.node(), link);
    return bdd(this, link, n);
}

bdd bddpp_manager::Bdd_nand(const bdd& f, const bdd& g) { return Bdd_not(Bdd_and(f, g)); }
bdd bddpp_manager::Bdd_nor(const bdd& f, const bdd& g) { return Bdd_not(Bdd_or(f, g)); }

// The operands of a composed connective are computed left to right into
// locals: which one runs first decides which nodes get the smaller ids.
bdd bddpp_manager::Bdd_xor(const bdd& f, const bdd& g) {
    bdd not_g = Bdd_not(g);
    bdd left = Bdd_and(f, not_g);
    bdd not_f = Bdd_not(f);
    bdd right = Bdd_and(not_f, g);
    return Bdd_or(left, right);
}

bdd bddpp_manager::Bdd_xnor(const bdd& f, const bdd& g) { return Bdd_not(Bdd_xor(f, g)); }
bdd bddpp_manager::Bdd_eq(const bdd& f, const bdd& g) { return Bdd_xnor(f, g); }

bdd bddpp_manager::Bdd_implication(const bdd& f, const bdd& g) {
    bdd not_f = Bdd_not(f);
    return Bdd_or(not_f, g);
}

bdd bddpp_manager::Bdd_ite(const bdd& f, const bdd& g, const bdd& h) {
    bdd left = Bdd_and(f, g);
    bdd not_f = Bdd_not(f);
    bdd right = Bdd_and(not_f, h);
    return Bdd_or(left, right);
}

// ite(x, g, h) for a positive literal x above both branches, on the
// production path. The two conjunctions are settled at once by the pair
// procedure (one side is terminal after the first split), so their nodes
// are joined here directly, in the order and with the links the pair
// procedure gives them, and so is the disjunction unless both branches
// are constants.
bool bddpp_manager::ite_above_branches(long index, const bdd& g, const bdd& h, bdd& result) {
    auto strictly_below = [&](const bdd& x) {
        const bdd_node* n = x.node();
        return x.manager_ref() == this &&
               (n == one || (n && n->manager_slot == registry_slot && n->id >= 0 && n->id < variables_number &&
                             index_of_id(n->id) > index));
    };
    if (!strictly_below(g) || !strictly_below(h)) return false;
    bdd_node* x = node_by_id[id_of_index(index)];
    // The joins' keys are all known: their table slots are fetched together.
    const long id = id_of_index(index);
    if (g.node() != one) prefetch_join(id, g.link_type(), g.node(), -1, one);
    if (h.node() != one) prefetch_join(id, -1, one, h.link_type(), h.node());
    if (g.node() != one || h.node() != one) prefetch_join(id, g.link_type(), g.node(), h.link_type(), h.node());
    bdd left;
    if (g.node() == one) {
        left = g.link_type() == 1 ? bdd(this, 1, x) : Bdd_zero();
    } else {
        int link = 1;
        bdd_node* n = fast_join(index, g.link_type(), g.node(), -1, one, link);
        left = bdd(this, link, n);
    }
    bdd right;
    if (h.node() == one) {
        right = h.link_type() == 1 ? bdd(this, -1, x) : Bdd_zero();
    } else {
        int link = 1;
        bdd_node* n = fast_join(index, -1, one, h.link_type(), h.node(), link);
        right = bdd(this, link, n);
    }
    if (g.node() != one || h.node() != one) {
        // The disjunction splits both operands on x and meets a terminal on
        // each side at once: it only joins x over g and h. With one branch
        // a constant, either that conjunction is false and the disjunction
        // is the other one (the very node this join finds), or it is x and
        // the disjunction joins x over true and the other branch.
        int link = 1;
        bdd_node* n = fast_join(index, g.link_type(), g.node(), h.link_type(), h.node(), link);
        result = bdd(this, link, n);
        return true;
    }
    result = Bdd_or(left, right);
    return true;
}

bdd bddpp_manager::Bdd_ite(int link, long index, const bdd& g, const bdd& h) {
    if (!plain_operators && link == 1 && index >= 0 && index < variables_number) {
        bdd result;
        if (ite_above_branches(index, g, h, result)) return result;
    }
    bdd_node* selector = nullptr;
    if (index == -1) {
        selector = one;
    } else if (index < 0 || index >= variables_number) {
        std::cerr << "ERROR: abnormal index in bddpp_manager::Bdd_ite()" << std::endl;
    } else {
        selector = node_by_id[id_by_index[index]];
    }
    return Bdd_ite(bdd(this, link, selector), g, h);
}

bool bddpp_manager::Bdd_equiv(const bdd& f, const bdd& g) {
    return Bdd_is_one_tautologic(Bdd_xnor(f, g));
}

bool bddpp_manager::Bdd_imply(const bdd& f, const bdd& g) {
    return Bdd_is_one_tautologic(Bdd_implication(f, g));
}

bool bddpp_manager::Bdds_excl(const bdd& f, const bdd& g) {
    return Bdd_is_zero_tautologic(Bdd_and(f, g));
}

bool bddpp_manager::Bdds_exclude(const bdd& f, const bdd& g) { return Bdds_excl(f, g); }

// ---------------------------------------------------------------- node access

bdd bddpp_manager::Bdd_then(const bdd& f) {
    if (!f.node() || f.node() == one) {
        std::cerr << "ERROR in Bdd_then(): calling with a tautologic function!" << std::endl;
        std::exit(1);
    }
    return bdd(this, f.link_type(), f.node()->then_node);
}

bdd bddpp_manager::Bdd_else(const bdd& f) {
    if (!f.node() || f.node() == one) {
        std::cerr << "ERROR in Bdd_else(): calling with a tautologic function!" << std::endl;
        std::exit(1);
    }
    return bdd(this, f.link_type() * f.node()->else_link_type, f.node()->else_node);
}

bdd bddpp_manager::Bdd_if(const bdd& f) {
    bdd_node* n = f.node();
    if (!n || n->id < 0 || n->id >= variables_number) {
        std::cerr << std::endl
                  << "calling bddpp_manager::Bdd_if() with bdd index= " << Node_index(n)
                  << " :out of range!" << std::endl;
        return Bdd_zero();
    }
    return bdd(this, 1, node_by_id[n->id]);
}

// ---------------------------------------------------------------------- tests

bool bddpp_manager::Bdd_is_one_tautologic(const bdd& f) {
    return f.link_type() == 1 && f.node() == one;
}

bool bddpp_manager::Bdd_is_zero_tautologic(const bdd& f) {
    return f.link_type() == -1 && f.node() == one;
}

bool bddpp_manager::Bdd_is_tautology(const bdd& f) { return f.node() == one; }

bool bddpp_manager::Bdd_is_tautology(const bdd& f, int value) {
    return f.node() == one && f.link_type() == (value ? 1 : -1);
}

namespace {
bool own_variable_node(const bdd_node* n, const bdd_node* one) {
    return n && n->then_node == one && n->else_node == one && n->else_link_type == -1;
}
}  // namespace

bool bddpp_manager::Bdd_is_var(const bdd& f) {
    return own_variable_node(f.node(), one) && f.link_type() == 1;
}

bool bddpp_manager::Bdd_is_negvar(const bdd& f) {
    return own_variable_node(f.node(), one) && f.link_type() == -1;
}

// A cube has one path to true: at each node one side is zero and the walk
// goes on along the other.
bool bddpp_manager::Bdd_is_cube(const bdd& f) {
    int link = f.link_type();
    bdd_node* n = f.node();
    while (n && n != one) {
        bool then_zero = link == -1 && n->then_node == one;
        int else_link = link * n->else_link_type;
        bool else_zero = else_link == -1 && n->else_node == one;
        if (then_zero) {
            link = else_link;
            n = n->else_node;
        } else if (else_zero) {
            n = n->then_node;
        } else {
            return false;
        }
    }
    return n == one;
}

