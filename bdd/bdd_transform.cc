// Transformations of functions: dependence, cofactors by a cube,
// quantification, substitution, associations, simplification and
// evaluation. None of them keeps a memo; they follow paths, and where they
// make nodes the order is that of the plain then-before-else recursion.

#include "bdd/bddpp.h"
#include "bdd/bdd_transform_walk.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <unordered_map>
#include <vector>

namespace {

// (link, node) position of the pair procedures.
struct Linked {
    int link;
    bdd_node* node;
};

// Walks a cube from its top node down its one non-terminal branch and
// hands each variable's index and value (1 or 0) to `set`.
template <class Set>
void for_each_literal(const bddpp_manager& m, int link, bdd_node* cube, Set set)
{
    for (bdd_node* n = cube;;) {
        long index = m.Node_index(n);
        if (n->then_node != m.one) {
            set(index, 1);
            n = n->then_node;
        } else if (n->else_node != m.one) {
            set(index, 0);
            link *= n->else_link_type;
            n = n->else_node;
        } else {
            set(index, link == 1 ? 1 : 0);
            return;
        }
    }
}

} // namespace

// ------------------------------------------------------------- dependence

bool bddpp_manager::Bdd_node_depends_on(bdd_node* f, bdd_node* v)
{
    if (f == nullptr || v == nullptr || f->manager_slot != registry_slot || v->manager_slot != registry_slot) {
        std::cerr << "Error in bddpp_manager::Bdd_node_depends_on():  bad Bdd manager or bdd(s) not initialized!"
                  << std::endl;
        return false;
    }
    if (f->id == v->id) return true;
    if (f == one) return false;
    return f->depends_on_id(v->id);
}

bool bddpp_manager::Bdd_depends_on(const bdd& f, const bdd& v)
{
    return Bdd_node_depends_on(f.node(), v.node());
}

bool bddpp_manager::Variable_awaited(const bdd& f, long index)
{
    if (index < 0 || index >= variables_number) return false;
    return Bdd_node_depends_on(f.node(), node_by_id[id_by_index[index]]);
}

bool bddpp_manager::Variable_true_awaited(const bdd& f, long index)
{
    if (!Variable_awaited(f, index)) return false;
    bdd literal = Bdd_var_by_index(index);
    return !Bdd_is_zero_tautologic(Bdd_cube_reduce(f, literal));
}

bool bddpp_manager::Variable_false_awaited(const bdd& f, long index)
{
    if (!Variable_awaited(f, index)) return false;
    bdd literal = Bdd_not(Bdd_var_by_index(index));
    return !Bdd_is_zero_tautologic(Bdd_cube_reduce(f, literal));
}

IndexSet bddpp_manager::set_of_id_depend_on(const bdd& f)
{
    if (f.manager_ref() != this) {
        // The index form's name is the one this report has always carried.
        std::cerr << "Warning: call  bddpp_manager::set_of_index_depend_on() with a bad manager" << std::endl;
        return {};
    }
    if (f.node() == nullptr) return {};
    const std::vector<int>& ids = f.node()->depends();
    return IndexSet(ids.begin(), ids.end());
}

IndexSet bddpp_manager::set_of_index_depend_on(const bdd& f)
{
    IndexSet indexes;
    for (long id : set_of_id_depend_on(f)) indexes.insert(index_by_id[id]);
    return indexes;
}

void bddpp_manager::Present_variables(const bdd& f, int* present)
{
    for (long i = 0; i < variables_number; ++i) present[i] = 0;
    for (long id : set_of_id_depend_on(f)) present[index_by_id[id]] = 1;
}

bool bddpp_manager::exists_common_variables(const bdd& f, const bdd& g)
{
    if (f.manager_ref() == this && g.manager_ref() == this && f.node() != nullptr && g.node() != nullptr) {
        // Both supports are sorted: one merge answers.
        const std::vector<int>& a = f.node()->depends();
        const std::vector<int>& b = g.node()->depends();
        for (auto i = a.begin(), j = b.begin(); i != a.end() && j != b.end();) {
            if (*i == *j) return true;
            if (*i < *j)
                ++i;
            else
                ++j;
        }
        return false;
    }
    IndexSet a = set_of_id_depend_on(f);
    IndexSet b = set_of_id_depend_on(g);
    for (long id : a)
        if (b.count(id)) return true;
    return false;
}

// ------------------------------------------------------- cofactor by a cube

bdd bddpp_manager::Bdd_cube_reduce(const bdd& f, const bdd& cube)
{
    int link = 1;
    bdd_node* n = Bdd_cube_reduce(f.link_type(), f.node(), cube.link_type(), cube.node(), link);
    return bdd(this, link, n);
}

bdd_node* bddpp_manager::Bdd_cube_reduce(int link, bdd_node* f, int cube_link, bdd_node* cube,
                                         int& result_link)
{
    if (f == nullptr) {
        std::cerr << "Error in Bdd_cube_reduce(): bdd has a Null pointer!" << std::endl;
        std::exit(1);
    }
    result_link = link;
    if (f == one) return f;
    if (cube == nullptr) {
        std::cerr << "Error in Bdd_cube_reduce(): assertion has a Null pointer!" << std::endl;
        std::exit(1);
    }
    if (cube == one) return f;
    // The table of literals is the manager's, all 2 between calls: only
    // the cube's own entries are written and put back, so a call costs the
    // cube and the walk, not the number of variables.
    if (cube_literals_busy) {
        std::vector<int> literals(variables_number > 0 ? variables_number : 1);
        Bdd_node_to_literals(cube_link, cube, literals.data());
        return Bdd_cube_reduce(link, f, literals.data(), result_link);
    }
    if (static_cast<long>(cube_literals.size()) < variables_number) cube_literals.resize(variables_number, 2);
    std::vector<long> written;
    for_each_literal(*this, cube_link, cube, [&](long index, int value) {
        written.push_back(index);
        cube_literals[index] = value;
    });
    cube_literals_busy = true;
    bdd_node* r = Bdd_cube_reduce(link, f, cube_literals.data(), result_link);
    cube_literals_busy = false;
    for (long index : written) cube_literals[index] = 2;
    return r;
}

// No test of the two results for equality: a variable above the cube's
// literals that stops mattering keeps a node with two equal children. The
// generated text depends on the global ids this gives, so it stays so.
bdd_node* bddpp_manager::Bdd_cube_reduce(int link, bdd_node* f, int* literals, int& result_link)
{
    Linked root{link, f};
    auto leaf = [&](Linked& x, Linked& r) {
        for (;;) {
            if (x.node == nullptr || x.node == one) {
                r = x;
                return true;
            }
            int l = literals[Node_index(x.node)];
            if (l == 2) return false;
            if (l == 1) {
                x.node = x.node->then_node;
            } else {
                x.link *= x.node->else_link_type;
                x.node = x.node->else_node;
            }
        }
    };
    auto split = [](const Linked& x) {
        return std::make_pair(Linked{x.link, x.node->then_node},
                              Linked{x.link * x.node->else_link_type, x.node->else_node});
    };
    auto join = [&](const Linked& x, Linked t, Linked e) {
        int l = 1;
        bdd_node* n = Find_or_create_bdd_node(Node_index(x.node), t.link, e.link, t.node, e.node, l);
        return Linked{l, n};
    };
    Linked r = bdd_walk::postorder<Linked, Linked>(root, leaf, split, join);
    result_link = r.link;
    return r.node;
}

void bddpp_manager::Bdd_node_to_literals(int link, bdd_node* f, int* literals)
{
    for (long i = 0; i < variables_number; ++i) literals[i] = 2;
    if (f == nullptr) {
        std::cerr << "Warning: bddpp_manager::Bdd_node_to_literals() call with a NULL bdd node !" << std::endl;
        return;
    }
    if (f == one) {
        if (link == 1) {
            std::cerr << "ERROR in  bddpp_manager::Bdd_node_to_literals() :" << std::endl
                      << "constant 1 is not a literal ..." << std::endl;
            std::exit(1);
        }
        return;
    }
    for_each_literal(*this, link, f, [literals](long index, int value) { literals[index] = value; });
}

void bddpp_manager::Bdd_to_literals(const bdd& f, int* literals)
{
    Bdd_node_to_literals(f.link_type(), f.node(), literals);
}

// ----------------------------------------------------------- quantification

bdd bddpp_manager::Bdd_exist(const bdd& f, const bdd& v)
{
    if (!(Bdd_is_var(v) || Bdd_is_negvar(v)) || !Bdd_depends_on(f, v)) return f;
    bdd positive = Bdd_cube_reduce(f, v);
    bdd negative = Bdd_cube_reduce(f, Bdd_not(v));
    return Bdd_or(positive, negative);
}

bdd bddpp_manager::Bdd_forall(const bdd& f, const bdd& v)
{
    if (!(Bdd_is_var(v) || Bdd_is_negvar(v)) || !Bdd_depends_on(f, v)) return f;
    bdd positive = Bdd_cube_reduce(f, v);
    bdd negative = Bdd_cube_reduce(f, Bdd_not(v));
    return Bdd_and(positive, negative);
}

// ------------------------------------------------------------- substitution

bdd bddpp_manager::Bdd_compose(const bdd& f, const bdd& v, const bdd& g)
{
    if (!Bdd_is_var(v)) {
        std::cerr << "Warning in bddpp_manager::Bdd_compose(): second parametre is not a variable!" << std::endl;
        return Bdd_zero();
    }
    return Bdd_compose_loc(f, v, g);
}

// Goes to the bottom of f whatever v's level: below v the nodes are only
// rebuilt, which finds them again in the unique table.
//
// The walk follows paths, so a shared position is met again; nothing is
// collected during the call, so a second meeting rebuilds from nodes that
// all exist and makes none. The production path remembers each position's
// result instead (the plain path does not), which changes no node and no
// id.
bdd bddpp_manager::Bdd_compose_loc(const bdd& f, const bdd& v, const bdd& g)
{
    long v_index = Node_index(v.node());
    bool memo = !plain_operators && f.manager_ref() == this;
    if (memo) return compose_remembering(f, v_index, g);
    std::unordered_map<const bdd_node*, bdd> done[2]; // by else-link parity of the position
    auto slot = [](const bdd& x) { return x.link_type() == 1 ? 0 : 1; };
    auto leaf = [&](bdd& x, bdd& r) {
        if (x.node() != nullptr && x.node() != one) {
            if (!memo) return false;
            auto known = done[slot(x)].find(x.node());
            if (known == done[slot(x)].end()) return false;
            r = known->second;
            return true;
        }
        r = x;
        return true;
    };
    auto split = [&](const bdd& x) { return std::make_pair(Bdd_then(x), Bdd_else(x)); };
    auto join = [&](const bdd& x, bdd t, bdd e) {
        long index = Node_index(x.node());
        bdd r = index == v_index ? Bdd_ite(g, t, e) : Bdd_ite(1, index, t, e);
        if (memo) done[slot(x)].emplace(x.node(), r);
        return r;
    };
    return bdd_walk::postorder<bdd, bdd>(f, leaf, split, join);
}

bdd bddpp_manager::Bdd_replace_vars(const bdd& f, long* index_map)
{
    auto leaf = [&](bdd& x, bdd& r) {
        if (x.node() != nullptr && x.node() != one) return false;
        r = x;
        return true;
    };
    auto split = [&](const bdd& x) { return std::make_pair(Bdd_then(x), Bdd_else(x)); };
    auto join = [&](const bdd& x, bdd t, bdd e) {
        bdd selector = Bdd_var_by_index(index_map[Node_index(x.node())]);
        return Bdd_ite(selector, t, e);
    };
    // The else part is replaced before the then part.
    return bdd_walk::postorder<bdd, bdd>(f, leaf, split, join, false);
}

bdd bddpp_manager::Bdd_keep_first_variables(const bdd& f, long index)
{
    auto leaf = [&](bdd& x, bdd& r) {
        if (x.node() == nullptr || x.node() == one) {
            r = x;
            return true;
        }
        if (index > Node_index(x.node())) return false;
        // Everything at and below index counts as true.
        r = Bdd_one();
        return true;
    };
    auto split = [&](const bdd& x) { return std::make_pair(Bdd_then(x), Bdd_else(x)); };
    auto join = [&](const bdd& x, bdd t, bdd e) { return Bdd_ite(1, Node_index(x.node()), t, e); };
    return bdd_walk::postorder<bdd, bdd>(f, leaf, split, join);
}

// ------------------------------------------------------------- associations

void bddpp_manager::Bdd_assoc_bdd_to_var(const bdd& g, const bdd& v)
{
    if (!Bdd_is_var(v)) {
        if (v == g && Bdd_is_tautology(v)) return;
        std::cerr << "error in bddpp_manager::Bdd_assoc_bdd_to_var():" << std::endl
                  << "     second parameter is not a var !" << std::endl
                  << "replace from: " << v << " by expression: ";
        Print_sop("+", ".", "!", "", std::cerr, g, 1);
        std::cerr << std::endl;
        std::exit(1);
    }
    long i = Node_index(v.node());
    bdd h = g;
    for (long j = 0; j < variables_number; ++j) {
        if (!Variable_awaited(h, j) || assoc[j] == nullptr) continue;
        bdd definition(this, 1, assoc[j]);
        if (Variable_awaited(definition, j)) continue;
        bdd variable = Bdd_var_by_index(j);
        h = Bdd_compose(h, variable, definition);
    }
    // Only the node is kept: the link type of h is dropped.
    assoc[i] = h.node();
    if (Bdd_depends_on(h, v)) return;
    for (long j = 0; j < variables_number; ++j) {
        if (j == i || assoc[j] == nullptr) continue;
        bdd definition(this, 1, assoc[j]);
        if (!Bdd_depends_on(definition, v)) continue;
        assoc[j] = Bdd_compose(definition, v, h).node();
    }
}

bdd bddpp_manager::Bdd_follow_assoc(const bdd& f, int* self_index)
{
    *self_index = -1;
    if (Bdd_is_var(f)) {
        long i = Node_index(f.node());
        if (assoc[i] == nullptr) return f;
        bdd definition(this, 1, assoc[i]);
        if (Bdd_depends_on(definition, f)) *self_index = static_cast<int>(i);
        return definition;
    }
    bdd result = f;
    // The ids are those of f: variables that a composition brings in are
    // not followed.
    for (long id : set_of_id_depend_on(f)) {
        long i = index_by_id[id];
        if (assoc[i] == nullptr) continue;
        bdd definition(this, 1, assoc[i]);
        bdd variable = Bdd_var_by_index(i);
        if (Bdd_depends_on(definition, variable))
            *self_index = static_cast<int>(i);
        else
            result = Bdd_compose(result, variable, definition);
    }
    return result;
}

// ------------------------------------------------------------ simplification

bdd bddpp_manager::Bdd_simplify(const bdd& f, const bdd& care)
{
    if (Bdd_is_tautology(f)) return f;
    bdd r = f;
    for (long id : set_of_id_depend_on(f)) {
        bdd variable = Bdd_var_by_id(id);
        bdd e = Bdd_exist(r, variable);
        if (Bdds_excl(e, care)) r = e;
    }
    return r;
}

// Unlike Bdd_simplify, the numbers of the id set are bounded by the top
// index of f and read back as indexes; callers rely on this as it is.
bdd bddpp_manager::Bdd_simplify2(const bdd& f, const bdd& care)
{
    if (Bdd_is_tautology(f)) return f;
    long top = Node_index(f.node());
    bdd r = f;
    for (long n : set_of_id_depend_on(f)) {
        if (n >= top) continue;
        bdd variable = Bdd_var_by_index(n);
        bdd e = Bdd_exist(r, variable);
        if (Bdds_excl(e, care)) r = e;
    }
    return r;
}

bdd bddpp_manager::Bdd_simplify3(const bdd& f, const bdd& care)
{
    if (Bdd_is_tautology(f)) return f;
    std::list<bdd> primes;
    Bdd_prime_implicants(f, primes);
    bdd r = Bdd_zero();
    for (bdd p : primes) {
        for (long n : set_of_id_depend_on(p)) {
            bdd variable = Bdd_var_by_index(n);
            bdd e = Bdd_exist(p, variable);
            if (Bdds_excl(e, care)) p = e;
        }
        r = Bdd_or(r, p);
    }
    return r;
}

bdd bddpp_manager::Bdd_reduce(const bdd& f, const bdd& c)
{
    if (!exists_common_variables(f, c)) return f;
    if (Bdd_is_cube(c)) return Bdd_cube_reduce(f, c);
    bdd r = Bdd_one();
    bdd rest = c;
    while (!Bdd_is_zero_tautologic(rest)) {
        bdd s = Bdd_satisfy(rest);
        if (!Bdd_is_cube(s)) {
            std::cerr << "ERROR about !!!" << std::endl;
            Print_bdd_structure(std::cerr, s);
            std::exit(1);
        }
        bdd cofactor = Bdd_cube_reduce(f, s);
        r = Bdd_and(r, cofactor);
        bdd not_s = Bdd_not(s);
        rest = Bdd_and(rest, not_s);
    }
    return r;
}

// --------------------------------------------------------------- evaluation

bdd bddpp_manager::Bdd_eval(const bdd& f, int* literals)
{
    bdd r = f;
    for (long i = 0; i < variables_number; ++i) {
        if (literals[i] == 1) {
            bdd literal = Bdd_var_by_index(i);
            r = Bdd_cube_reduce(r, literal);
        } else if (literals[i] == 0) {
            bdd literal = Bdd_not(Bdd_var_by_index(i));
            r = Bdd_cube_reduce(r, literal);
        }
    }
    return r;
}

int bddpp_manager::Bdd_eval_for_literal(const bdd& f, int* literals)
{
    Linked root{f.link_type(), f.node()};
    auto leaf = [&](Linked& x, int& r) {
        for (;;) {
            bdd_node* n = x.node;
            long index = n == nullptr || !n->manager_slot ? -3 : Node_index(n);
            if (index == -1) {
                r = x.link == 1 ? 1 : 0;
                return true;
            }
            if (index < 0 || index >= variables_number) {
                std::cerr << "error in bddpp_manager::Bdd_eval(): unknown bdd type ..." << std::endl;
                std::exit(1);
            }
            int l = literals[index];
            if (l == 2) return false;
            if (l == 1) {
                x.node = n->then_node;
            } else {
                x.link *= n->else_link_type;
                x.node = n->else_node;
            }
        }
    };
    auto split = [](const Linked& x) {
        return std::make_pair(Linked{x.link, x.node->then_node},
                              Linked{x.link * x.node->else_link_type, x.node->else_node});
    };
    auto join = [](const Linked&, int t, int e) { return t == e ? t : 2; };
    return bdd_walk::postorder<Linked, int>(root, leaf, split, join);
}

// --------------------------------------------------------- satisfying cubes

// Slots written in a branch that failed stay written: the cube may carry
// literals off the path that was kept, which only makes it smaller.
namespace {

// The depth-first search for a path to one, then side first; `set` is told
// each literal as the walk takes it.
template <class Set>
bool one_sat_walk(const bddpp_manager& m, bdd_node* f, int link, Set set)
{
    std::vector<Linked> tried_then; // nodes whose then side is being tried
    bdd_node* n = f;
    int l = link;
    for (;;) {
        if (n == nullptr) {
            std::cerr << "ERROR: call bddpp_manager::Bdd_OneSat() with null reference" << std::endl;
            std::exit(1);
        }
        if (n == m.one) {
            if (l == 1) return true;
            if (tried_then.empty()) return false;
            Linked back = tried_then.back();
            tried_then.pop_back();
            set(m.Node_index(back.node), 0);
            l = back.link * back.node->else_link_type;
            n = back.node->else_node;
            continue;
        }
        set(m.Node_index(n), 1);
        tried_then.push_back(Linked{l, n});
        n = n->then_node;
    }
}

} // namespace

// Slots written in a branch that failed stay written: the cube may carry
// literals off the path that was kept, which only makes it smaller.
bool bddpp_manager::Bdd_OneSat(bdd_node* f, int link, int* literals)
{
    return one_sat_walk(*this, f, link, [literals](long index, int value) { literals[index] = value; });
}

// The conjunctions are made by increasing index, as Literals_to_bdd makes
// them; the plain form goes through the whole table.
bdd bddpp_manager::Bdd_satisfy(const bdd& f)
{
    if (plain_operators) {
        std::vector<int> literals(variables_number > 0 ? variables_number : 1, 2);
        Bdd_OneSat(f.node(), f.link_type(), literals.data());
        return Literals_to_bdd(literals.data());
    }
    if (static_cast<long>(satisfy_literals.size()) < variables_number)
        satisfy_literals.resize(static_cast<std::size_t>(variables_number), 2);
    satisfy_written.clear();
    one_sat_walk(*this, f.node(), f.link_type(), [this](long index, int value) {
        if (satisfy_literals[index] == 2) satisfy_written.push_back(index);
        satisfy_literals[index] = value;
    });
    std::sort(satisfy_written.begin(), satisfy_written.end());
    // The conjunction of the literals by increasing index, each literal
    // below the cube so far: the and of the two rebuilds the cube's path
    // from its end up, one join a level, which is what is done here
    // without the operator's frames and table.
    int link = 1;
    bdd_node* r = one;
    for (long i : satisfy_written) {
        const int literal = satisfy_literals[i] == 0 ? -1 : 1;
        satisfy_literals[i] = 2;
        r = cube_and_below(link, r, literal, node_by_id[id_of_index(i)], link);
    }
    return bdd(this, link, r);
}

bdd_node* bddpp_manager::cube_and_below(int link_c, bdd_node* c, int link_y, bdd_node* y, int& link)
{
    // The path of the cube, top first: at each node one side is false.
    std::vector<std::pair<int, bdd_node*>>& path = cube_path;
    path.clear();
    int l = link_c;
    bdd_node* n = c;
    while (n != one) {
        path.emplace_back(l, n);
        const int else_l = l * n->else_link_type;
        if (n->then_node == one && l == -1) {
            l = else_l;
            n = n->else_node;
        } else if (n->else_node == one && else_l == -1) {
            n = n->then_node;
        } else {
            return Bdd_and(link_c, c, link_y, y, link);
        }
    }
    int rl = l == 1 ? link_y : -1;
    bdd_node* rn = l == 1 ? y : one;
    for (auto it = path.rbegin(); it != path.rend(); ++it) {
        bdd_node* x = it->second;
        const bool then_false = x->then_node == one && it->first == -1;
        int joined;
        if (then_false)
            rn = fast_join(Node_index(x), -1, one, rl, rn, joined);
        else
            rn = fast_join(Node_index(x), rl, rn, -1, one, joined);
        rl = joined;
    }
    link = rl;
    return rn;
}

void bddpp_manager::Cube_literal_list(const bdd& cube, std::vector<std::pair<long, int>>& literals)
{
    literals.clear();
    for_each_literal(*this, cube.link_type(), cube.node(),
                     [&literals](long index, int value) { literals.emplace_back(index, value); });
}

bdd bddpp_manager::Literals_to_bdd(int* literals)
{
    bdd r = Bdd_one();
    for (long i = 0; i < variables_number; ++i) {
        if (literals[i] == 1) {
            bdd literal = Bdd_var_by_index(i);
            r = Bdd_and(r, literal);
        } else if (literals[i] == 0) {
            bdd literal = Bdd_not(Bdd_var_by_index(i));
            r = Bdd_and(r, literal);
        }
    }
    return r;
}

// At a real choice the side with fewer variables is taken, the then side on
// a tie. The conjunctions are made on the way back up, innermost first.
bdd bddpp_manager::Bdd_one_implicant(const bdd& f)
{
    if (f.manager_ref() != this || f.node() == nullptr) {
        std::cerr << "ERROR in bddpp_manager::Bdd_one_implicant():" << std::endl
                  << "   bdd : " << f << ", is not allocated or associated with a bad BDD manager..." << std::endl;
        std::exit(1);
    }
    std::vector<bdd> literals; // the literal of each level, outermost first
    bdd cur = f;
    bdd r;
    for (;;) {
        if (Bdd_is_zero_tautologic(cur)) {
            r = Bdd_zero();
            break;
        }
        if (Bdd_is_one_tautologic(cur)) {
            r = Bdd_one();
            break;
        }
        if (Bdd_is_var(cur)) {
            r = Bdd_if(cur);
            break;
        }
        bdd x = Bdd_if(cur);
        if (Bdd_is_negvar(cur)) {
            r = Bdd_not(x);
            break;
        }
        bdd t = Bdd_then(cur);
        bdd e = Bdd_else(cur);
        if (Bdd_is_one_tautologic(t)) {
            r = x;
            break;
        }
        if (Bdd_is_zero_tautologic(t)) {
            literals.push_back(Bdd_not(x));
            cur = e;
            continue;
        }
        if (Bdd_is_one_tautologic(e)) {
            r = Bdd_not(x);
            break;
        }
        if (Bdd_is_zero_tautologic(e) || t.node()->depends().size() <= e.node()->depends().size()) {
            literals.push_back(x);
            cur = t;
        } else {
            literals.push_back(Bdd_not(x));
            cur = e;
        }
    }
    for (auto it = literals.rbegin(); it != literals.rend(); ++it) r = Bdd_and(*it, r);
    return r;
}

// ------------------------------------------------- functions of a few variables

bdd bddpp_manager::Minterm(int code, int count, bdd* vars)
{
    if (code < 0) return Bdd_zero();
    bdd r = Bdd_one();
    for (int i = 0; i < count; ++i) {
        if ((code >> i) & 1) {
            r = Bdd_and(r, vars[i]);
        } else {
            bdd negation = Bdd_not(vars[i]);
            r = Bdd_and(r, negation);
        }
    }
    return r;
}

unsigned long bddpp_manager::Id_function_by_bdd(const bdd& f, int count, bdd* vars)
{
    if (count < 0 || count > 6) {
        std::cerr << "In bddpp_manager::Id_function_by_bdd(): number of variables (" << count
                  << ") too big! avorted ..." << std::endl;
        return 0;
    }
    unsigned long id = 0;
    for (int k = 0; k < (1 << count); ++k) {
        bdd minterm = Minterm(k, count, vars);
        if (Bdd_imply(minterm, f)) id |= 1UL << k;
    }
    return id;
}

bdd bddpp_manager::Bdd_function_by_id(unsigned long id, int count, bdd* vars)
{
    bdd r = Bdd_zero();
    for (int k = 0; k < 64 && (id >> k) != 0; ++k) {
        if (!((id >> k) & 1)) continue;
        bdd minterm = Minterm(k, count, vars);
        r = Bdd_or(r, minterm);
    }
    return r;
}

void bddpp_manager::Truth_table(const bdd& f, int count, bdd* vars, char* out)
{
    for (long k = 0; k < (1L << count); ++k) {
        bdd minterm = Minterm(static_cast<int>(k), count, vars);
        bdd value = Bdd_reduce(f, minterm);
        out[k] = Bdd_is_one_tautologic(value) ? '1' : Bdd_is_zero_tautologic(value) ? '0' : '?';
    }
}

void bddpp_manager::Bdd_truth_table(const bdd& f, int count, bdd* vars, bdd* out)
{
    for (long k = 0; k < (1L << count); ++k) {
        bdd minterm = Minterm(static_cast<int>(k), count, vars);
        out[k] = Bdd_reduce(f, minterm);
    }
}

// --------------------------------------------------------------- implicants

void Tdd::Bdd_implicants_loc(bdd cube, std::list<bdd>& list)
{
    struct Frame {
        Tdd* tdd;
        bdd cube;
        int stage; // next branch: 0 then, 1 else, 2 don't care
    };
    auto at_leaf = [&](Tdd* t, const bdd& c) {
        bdd_node* n = t->variable.node();
        if (n == nullptr || n != t->manager->one) return false;
        if (t->variable.link_type() != 1) return true; // zero leaf: nothing
        for (bdd& e : list) {
            if (t->manager->Bdd_imply(e, c)) {
                e = c;
                return true;
            }
        }
        list.push_back(c);
        return true;
    };
    if (manager == nullptr || at_leaf(this, cube)) return;
    std::vector<Frame> stack;
    stack.push_back(Frame{this, cube, 0});
    while (!stack.empty()) {
        Frame& top = stack.back();
        Tdd* t = top.tdd;
        int stage = top.stage++;
        if (stage == 3) {
            stack.pop_back();
            continue;
        }
        bddpp_manager* m = t->manager;
        Tdd* child;
        bdd c;
        if (stage == 0) {
            child = t->then_tdd;
            c = m->Bdd_and(top.cube, t->variable);
        } else if (stage == 1) {
            child = t->else_tdd;
            bdd negation = m->Bdd_not(t->variable);
            c = m->Bdd_and(top.cube, negation);
        } else {
            child = t->dont_care_tdd;
            c = top.cube;
        }
        if (child == nullptr || at_leaf(child, c)) continue;
        stack.push_back(Frame{child, c, 0});
    }
}

void Tdd::Bdd_prime_implicants(std::list<bdd>& list)
{
    if (manager == nullptr) return;
    std::list<bdd> work;
    Bdd_implicants_loc(manager->Bdd_one(), work);
    for (auto i = work.begin(); i != work.end(); ++i) {
        auto j = i;
        for (++j; j != work.end(); ++j)
            if (manager->Bdd_imply(*j, *i)) *j = manager->Bdd_zero();
    }
    for (const bdd& p : work)
        if (!manager->Bdd_is_zero_tautologic(p)) list.push_back(p);
}

void bddpp_manager::Bdd_prime_implicants(const bdd& f, std::list<bdd>& list)
{
    list.clear();
    if (Bdd_is_tautology(f)) {
        list.push_back(f);
        return;
    }
    Tdd tree(this, f);
    tree.Bdd_prime_implicants(list);
}

void bddpp_manager::Bdd_essential_implicants(const bdd& f, std::list<bdd>& essential, std::list<bdd>& others)
{
    std::list<bdd> primes;
    Bdd_prime_implicants(f, primes);
    for (auto p = primes.begin(); p != primes.end(); ++p) {
        bdd rest = Bdd_zero();
        for (auto q = primes.begin(); q != primes.end(); ++q)
            if (q != p) rest = Bdd_or(rest, *q);
        if (Bdd_equiv(rest, f))
            others.push_back(*p);
        else
            essential.push_back(*p);
    }
}

// -------------------------------------------------------------------- stubs

bdd bddpp_manager::Bdd_swap_vars(const bdd& f, const bdd& a, const bdd& b)
{
    std::cerr << "bddpp_manager::Bdd_swap_vars(bdd f) A FAIRE" << std::endl;
    return Bdd_zero();
}

void bddpp_manager::Bdd_var_reorder()
{
    std::cerr << "bddpp_manager::Bdd_var_reorder(void) A FAIRE" << std::endl;
}
