// Carrying functions from one manager to another: by the same index, by an
// index map, or by variable name. Like the rest of the package they walk
// paths without a memo, so a node is rebuilt once per path, and found again
// in the unique table after the first time.

#include "bdd/bddpp.h"
#include "bdd/bdd_transform_walk.h"

#include <iostream>

namespace {

std::pair<bdd_node*, bdd_node*> children(bdd_node* n)
{
    return std::make_pair(n->then_node, n->else_node);
}

// Joins the images of a node whose variable does not stand above both of
// them in the target: the function is rebuilt with the operators, and the
// result keeps one reference that nothing takes off.
bdd_node* join_by_operators(bddpp_manager* dst, const bdd& var, bdd_node* then_image, int else_link,
                            bdd_node* else_image, int& link)
{
    bdd then_handle(dst, 1, then_image);
    bdd else_handle(dst, else_link, else_image);
    bdd not_var = dst->Bdd_not(var);
    bdd low = dst->Bdd_and(not_var, else_handle);
    bdd high = dst->Bdd_and(var, then_handle);
    bdd r = dst->Bdd_or(low, high);
    r.node()->references += 1;
    link = r.link_type();
    return r.node();
}

} // namespace

bdd_node* bddpp_manager::Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, bdd_node* node)
{
    if (dst == nullptr || src == nullptr) return dst == nullptr ? nullptr : dst->one;
    auto leaf = [&](bdd_node*& n, bdd_node*& r) {
        if (n != nullptr && n != src->one) return false;
        r = n == nullptr ? nullptr : dst->one;
        return true;
    };
    auto join = [&](bdd_node* n, bdd_node* t, bdd_node* e) {
        int link = 1;
        bdd_node* r = dst->Find_or_create_bdd_node(src->Node_index(n), 1, n->else_link_type, t, e, link);
        if (link != 1) std::cerr << "erreur inattendue dans Bdd_isomorphe() avec correspondance!" << std::endl;
        return r;
    };
    return bdd_walk::postorder<bdd_node*, bdd_node*>(node, leaf, children, join);
}

bdd bddpp_manager::Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, const bdd& f)
{
    bdd_node* n = Bdd_isomorphe(dst, src, f.node());
    return bdd(dst, f.link_type(), n);
}

bdd_node* bddpp_manager::Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, bdd_node* node, long* index_map)
{
    if (dst == nullptr || src == nullptr) return dst == nullptr ? nullptr : dst->one;
    auto leaf = [&](bdd_node*& n, bdd_node*& r) {
        if (n != nullptr && n != src->one) return false;
        r = n == nullptr ? nullptr : dst->one;
        return true;
    };
    auto join = [&](bdd_node* n, bdd_node* t, bdd_node* e) {
        long target = index_map[src->Node_index(n)];
        int link = 1;
        bdd_node* r;
        // A terminal image reads as index -1 and so never passes this test.
        if (target < dst->Node_index(t) && target < dst->Node_index(e)) {
            r = dst->Find_or_create_bdd_node(target, 1, n->else_link_type, t, e, link);
        } else {
            bdd var = dst->Bdd_var_by_index(target);
            r = join_by_operators(dst, var, t, n->else_link_type, e, link);
        }
        if (link != 1) std::cerr << "erreur inattendue dans Bdd_isomorphe() avec correspondance!" << std::endl;
        return r;
    };
    return bdd_walk::postorder<bdd_node*, bdd_node*>(node, leaf, children, join);
}

// Each level first runs the node form on its own node, for the nodes and
// references that run leaves behind, then builds its image again with the
// operators from the images of its two cofactors.
bdd bddpp_manager::Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, const bdd& f, long* index_map)
{
    auto leaf = [&](bdd& x, bdd& r) {
        if (x.node() != nullptr && dst != nullptr && src != nullptr)
            Bdd_isomorphe(dst, src, x.node(), index_map);
        if (x.node() == nullptr || dst == nullptr || src == nullptr) {
            std::cerr << "ERROR: Bad call of Bdd_isomorphe() !" << std::endl;
            r = dst == nullptr ? bdd() : dst->Bdd_zero();
            return true;
        }
        if (x.node() != src->one) return false;
        r = x.link_type() == 1 ? dst->Bdd_one() : dst->Bdd_zero();
        return true;
    };
    auto split = [&](const bdd& x) { return std::make_pair(src->Bdd_then(x), src->Bdd_else(x)); };
    auto join = [&](const bdd& x, bdd t, bdd e) {
        bdd var = dst->Bdd_var_by_index(index_map[src->Node_index(x.node())]);
        bdd not_var = dst->Bdd_not(var);
        bdd low = dst->Bdd_and(not_var, e);
        bdd high = dst->Bdd_and(var, t);
        return dst->Bdd_or(low, high);
    };
    return bdd_walk::postorder<bdd, bdd>(f, leaf, split, join);
}

// Variables are matched by name; a name missing in dst is made there, at
// the end of the order, when its node is first reached (before its
// children).
bdd_node* bddpp_manager::Bdd_isomorphe_by_name(bddpp_manager* dst, bddpp_manager* src, bdd_node* node)
{
    if (dst == nullptr || src == nullptr) return dst == nullptr ? nullptr : dst->one;
    auto target_id = [&](bdd_node* n) {
        std::string name = src->Name_var_by_id(n->id);
        long id = dst->Id_var_by_name(name);
        if (id < 0) id = dst->New_node_var_last(name)->id;
        return id;
    };
    auto leaf = [&](bdd_node*& n, bdd_node*& r) {
        if (n == nullptr || n == src->one) {
            r = n == nullptr ? nullptr : dst->one;
            return true;
        }
        target_id(n);
        return false;
    };
    auto join = [&](bdd_node* n, bdd_node* t, bdd_node* e) {
        long id = target_id(n);
        int link = 1;
        bdd_node* r;
        // Ids, not indexes, are compared; a terminal image has id -1.
        if (id < t->id && id < e->id) {
            r = dst->Find_or_create_bdd_node(dst->index_by_id[id], 1, n->else_link_type, t, e, link);
        } else {
            bdd var = dst->Bdd_var_by_id(id);
            r = join_by_operators(dst, var, t, n->else_link_type, e, link);
        }
        if (link != 1) std::cerr << "erreur inattendue dans Bdd_isomorphe_by_name() !" << std::endl;
        return r;
    };
    return bdd_walk::postorder<bdd_node*, bdd_node*>(node, leaf, children, join);
}

bdd bddpp_manager::Bdd_isomorphe_by_name(bddpp_manager* dst, bddpp_manager* src, const bdd& f)
{
    bdd_node* n = Bdd_isomorphe_by_name(dst, src, f.node());
    return bdd(dst, f.link_type(), n);
}
