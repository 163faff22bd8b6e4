#ifndef TARN_BDD_BDDPP_H
#define TARN_BDD_BDDPP_H

// Reduced ordered binary decision diagrams with complement links.
//
// One bddpp_manager is one universe: its variables, its unique table of
// nodes and its single terminal node, which means true. A bdd is a value
// handle (manager, link type, node): link 1 reads the node's function as
// it is, link -1 its negation, link 0 marks a null handle. The link to a
// node's then child is always direct; a negation found there is moved
// out to the parent's handle, so a function and its negation share one
// node.
//
// Node creation order is behaviour: global_id values appear in generated
// text, and they are those of the plain depth-first then-before-else
// recursion of Bdd_and/Bdd_or, whatever the fast path does.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

class bddpp_manager;
class bdd_node;
class bdd;
class Tdd;

// Package version, "4.7".
const char* Bdd_version();

// The packed key of a node, as printed by the statistics: bit 0 the else
// link (1 for a normal link), bits 1.. the else child's global_id, bits 21..
// the then child's global_id, bits 41.. the variable id. Global ids from
// 2^20 on run into the next field, so two nodes can share a signature; the
// unique table does not key on it (see bdd_unique_table). For id -1 or -3
// the signature is the id. A child with a negative global_id ends the
// process with status 1.
long bdd_node_signature(long id, int else_link_type, bdd_node* then_node,
                        bdd_node* else_node);

// One decision node. Only bddpp_manager::Find_or_create_bdd_node and the
// variable constructors of the manager make nodes of a manager.
class bdd_node {
public:
    bddpp_manager* manager;
    long signature;
    long id;             // decision variable; -1 terminal, -3 default-built
    long incremental_id; // scratch number of Bdd_incremental_id walks
    long global_id;      // serial number in the manager, never reused
    long mark;           // scratch visit flag (0 or 1) of the marking walks
    int references;      // handles and parent nodes that point here
    int else_link_type;  // 1 normal, -1 inverse
    bdd_node* then_node;
    bdd_node* else_node;

    // Default-built: no manager, signature and id -3, else link 1, null
    // children, zeros elsewhere.
    bdd_node();
    // Makes a node of m. For id >= 0 it computes the signature and enters
    // the node in m's unique table; for id -1 (the terminal) it only sets
    // the signature. References start at 0; the children's references are
    // the caller's business.
    bdd_node(bddpp_manager* m, long id, int else_link_type, bdd_node* then_node,
             bdd_node* else_node, long global_id);
    // For id >= 0: takes one reference off both children.
    ~bdd_node();

    bdd_node(const bdd_node&) = delete;
    bdd_node& operator=(const bdd_node&) = delete;

    // Ids of all the variables of the cone at and below this node,
    // ascending; empty for the terminal. Worked out at the first question
    // and kept with the node (the cone below a node never changes).
    const std::vector<long>& depends() const;
    // Whether `v` is in depends().
    bool depends_on_id(long v) const;

    // Structural check of the whole cone; see bddpp_manager::Bdd_is_correct.
    bool is_correct() const;

    // Compares id, else_link_type, then_node and else_node.
    bool operator==(const bdd_node& other) const;

    // Nodes come from a pool of fixed-size blocks.
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;

private:
    friend class bddpp_manager;
    friend class bdd_unique_table;
    bdd_node* unique_next = nullptr;              // chain in the unique table
    mutable std::vector<long>* depends_ = nullptr; // null until asked for
    unsigned visit = 0;                           // epoch of the manager's own walks
};

// Value handle on a node. Copying adds a reference to the node, destroying
// takes one off. A handle must not outlive its manager.
class bdd {
public:
    bdd(); // null handle: no manager, link type 0, no node
    bdd(bddpp_manager* manager, int link_type, bdd_node* node);
    bdd(const bdd& other);
    bdd(bdd&& other) noexcept; // takes over the reference; leaves other null
    ~bdd();
    // Copies manager and link type; the reference moves only if the nodes
    // differ.
    bdd& operator=(const bdd& other);
    bdd& operator=(bdd&& other) noexcept;

    bddpp_manager* manager_ref() const { return manager_; }
    int link_type() const { return link_type_; }
    bdd_node* node() const { return node_; }

    // Same manager, same link type, same node.
    bool operator==(const bdd& other) const;
    bool operator!=(const bdd& other) const { return !(*this == other); }

    // ---- transformations ----
    // ---- end transformations ----

    // ---- printers ----
    // ---- end printers ----

private:
    bddpp_manager* manager_;
    int link_type_;
    bdd_node* node_;
};

// "adr manager= " manager ", link type =" type ", adr node= " node ", " and,
// with a node, "node signature: " signature.
std::ostream& operator<<(std::ostream& out, const bdd& f);

// global_id of the handle's node (-3 for a null handle) and its link type.
long bdd_node_global_id(const bdd& f);
int bdd_link_type(const bdd& f);

// ---- transformations ----
// ---- end transformations ----

// ---- printers ----
// ---- end printers ----

// The unique table: a hash table keyed on the whole of (id, else link,
// then node, else node), so that it holds any number of nodes without the
// collisions of the packed signature. Walks that are behaviour go through
// nodes_in_key_order(), whose order is that of the signature for global
// ids below 2^20.
class bdd_unique_table {
public:
    bdd_unique_table();
    ~bdd_unique_table();
    bdd_unique_table(const bdd_unique_table&) = delete;
    bdd_unique_table& operator=(const bdd_unique_table&) = delete;

    std::size_t size() const { return count; }
    bdd_node* find(long id, int else_link_type, bdd_node* then_node,
                   bdd_node* else_node) const;
    // Enters the node, replacing any node of the same key.
    void insert(bdd_node* node);
    // Removes the entry of the node's key, whatever node it points to;
    // false when there is none.
    bool erase(bdd_node* node);
    // Every node, in ascending (id, then global_id, else global_id,
    // else link bit) order.
    std::vector<bdd_node*> nodes_in_key_order() const;
    // Every node, in no particular order.
    template <class F> void for_each(F f) const {
        for (std::size_t b = 0; b < bucket_count; ++b)
            for (bdd_node* n = buckets[b]; n; n = n->unique_next) f(n);
    }

private:
    std::size_t slot(long id, int else_link_type, bdd_node* then_node,
                     bdd_node* else_node) const;
    void grow();
    bdd_node** buckets;
    std::size_t bucket_count;
    std::size_t count;
};

class bddpp_manager {
public:
    long variables_number;
    long variables_capacity;  // size of the five tables by id or index
    long next_global_id;
    std::vector<std::string> var_names; // by id
    std::vector<bdd_node*> node_by_id;  // the variable's own node, by id
    std::vector<long> index_by_id;
    std::vector<long> id_by_index;
    std::vector<bdd_node*> assoc;       // see Bdd_assoc_bdd_to_var
    bdd_unique_table* map;
    std::map<std::string, long> id_by_name; // creation names; renaming leaves it
    long gc_calls;
    bdd_node* one; // the terminal, outside the unique table

    // Operators take the plain recursion of Bdd_and/Bdd_or (no computed
    // table, call-stack recursion) when set. Results and node creation
    // order are the same either way; this is there to compare them.
    bool plain_operators = false;

    bddpp_manager();
    // Same variables (names, ids, order) as source, fresh nodes: the
    // terminal, then one node per variable in id order (global_id = id + 2).
    explicit bddpp_manager(bddpp_manager* source);
    ~bddpp_manager();
    bddpp_manager(const bddpp_manager&) = delete;
    bddpp_manager& operator=(const bddpp_manager&) = delete;

    static const char* Bdd_version();
    long Bdd_total_size() const { return next_global_id; }

    // ---------------------------------------------------------------- variables
    // All of them return the existing variable when the name is known.
    bdd_node* New_node_var_last(const std::string& name);
    bdd_node* New_node_var_before(long index, const std::string& name);
    bdd_node* New_node_var_after(long index, const std::string& name);
    bdd New_var_last(const std::string& name);
    bdd New_var_before(long index, const std::string& name);
    bdd New_var_before(const bdd& f, const std::string& name);
    bdd New_var_after(long index, const std::string& name);
    bdd New_var_after(const bdd& f, const std::string& name);

    bdd Bdd_var_by_id(long id);
    bdd Bdd_var_by_index(long index);
    bdd Bdd_var_by_name(const std::string& name);
    long Id_var_by_name(const std::string& name) const;
    long Index_var_by_name(const std::string& name) const;
    std::string Name_var_by_id(long id) const;
    std::string Name_var_by_index(long index) const;
    std::string Name_var_by_bdd(const bdd& f);
    long Id_var_by_bdd(const bdd& f);
    long Bdd_if_id(const bdd& f);
    long Index_var_by_bdd(const bdd& f);
    long Bdd_if_index(const bdd& f);

    // Index of a node: -3 without node or manager, the id itself when it is
    // negative (-1 for the terminal), else index_by_id[id].
    long Node_index(const bdd_node* node) const;

    // Renaming touches var_names only; id_by_name keeps the creation names.
    void Rename_var(const std::string& new_name, const std::string& old_name);
    void Change_name_by_index(long index, const std::string& name);
    void Change_name_by_id(long id, const std::string& name);
    void Replace_char_in_all_names(char from, char to);
    void No_begin_underscore_name();

    // Leftovers of an older reference scheme.
    bdd Bdd_dup(const bdd& f);
    void Bdd_free(const bdd& f);

    // ------------------------------------------------------------ unique table
    // The only way to make a decision node; see the implementation for the
    // steps. `link` holds the caller's link on entry and the result's link
    // on return.
    bdd_node* Find_or_create_bdd_node(long index, int then_link, int else_link,
                                      bdd_node* then_node, bdd_node* else_node,
                                      int& link);
    void Map_integrate(bdd_node* node);
    void Map_suppress(bdd_node* node);

    // Frees every node that no handle and no live node reaches, but the
    // variables' own nodes; empties the computed table.
    void Bdd_gc();

    // ------------------------------------------------------------------ marks
    void Bdd_clear_marks(bdd_node* node);
    void Bdd_clear_marks(const bdd& f);
    void Bdd_global_clear_marks();
    long Bdd_incremental_id(bdd_node* node, long next);
    long Bdd_node_size(bdd_node* node);
    long Bdd_size(const bdd& f);

    bool Bdd_is_correct(const bdd& f);

    // -------------------------------------------------------------- operators
    bdd Bdd_one();
    bdd Bdd_zero();
    bdd_node* Bdd_node_one() const { return one; }
    bdd Bdd_not(const bdd& f);

    bdd Bdd_and(const bdd& f, const bdd& g);
    bdd Bdd_or(const bdd& f, const bdd& g);
    // The two pair procedures; `link` receives the result's link.
    bdd_node* Bdd_and(int link_x, bdd_node* x, int link_y, bdd_node* y, int& link);
    bdd_node* Bdd_or(int link_x, bdd_node* x, int link_y, bdd_node* y, int& link);

    bdd Bdd_nand(const bdd& f, const bdd& g);
    bdd Bdd_nor(const bdd& f, const bdd& g);
    bdd Bdd_xor(const bdd& f, const bdd& g);
    bdd Bdd_xnor(const bdd& f, const bdd& g);
    bdd Bdd_eq(const bdd& f, const bdd& g);
    bdd Bdd_implication(const bdd& f, const bdd& g);
    bdd Bdd_ite(const bdd& f, const bdd& g, const bdd& h);
    bdd Bdd_ite(int link, long index, const bdd& g, const bdd& h);
    bool Bdd_equiv(const bdd& f, const bdd& g);
    bool Bdd_imply(const bdd& f, const bdd& g);
    bool Bdds_excl(const bdd& f, const bdd& g);
    bool Bdds_exclude(const bdd& f, const bdd& g);

    bdd Bdd_then(const bdd& f);
    bdd Bdd_else(const bdd& f);
    bdd Bdd_if(const bdd& f);

    bool Bdd_is_one_tautologic(const bdd& f);
    bool Bdd_is_zero_tautologic(const bdd& f);
    bool Bdd_is_tautology(const bdd& f);
    bool Bdd_is_tautology(const bdd& f, int value);
    bool Bdd_is_var(const bdd& f);
    bool Bdd_is_negvar(const bdd& f);
    bool Bdd_is_cube(const bdd& f);

    // Number of entries of the computed table of Bdd_and/Bdd_or in use
    // (0 after Bdd_gc or with plain_operators).
    std::size_t Computed_table_load() const;

    // ---- transformations ----
    // ---- end transformations ----

    // ---- printers ----
    // Used by the operators' self-check report.
    void Print_bdd_structure_loc(std::ostream& out, int indent, bdd_node* node);
    void Bdd_stats(std::ostream& out);
    // ---- end printers ----

private:
    friend class bdd_node;
    struct apply_frame;
    struct computed_entry;
    void make_tables(long capacity);
    bdd_node* new_variable(const std::string& name, long index, bool last);
    bdd_node* apply(bool is_or, int link_x, bdd_node* x, int link_y, bdd_node* y,
                    int& link);
    bdd_node* apply_plain(bool is_or, int link_x, bdd_node* x, int link_y,
                          bdd_node* y, int& link);
    bdd_node* join(long index, int then_link, bdd_node* then_node, int else_link,
                   bdd_node* else_node, int& link);
    void self_check(bool is_or, int link_x, bdd_node* x, long ix, int link_y,
                    bdd_node* y, long iy, int link, bdd_node* result);
    [[noreturn]] void null_reference(bool is_or, bdd_node* x, bdd_node* y);
    void computed_clear();
    void computed_resize();
    void release_operator_tables();
    unsigned next_visit();

    std::vector<apply_frame>* apply_stack = nullptr;
    computed_entry* computed = nullptr;
    std::size_t computed_size = 0;
    std::size_t computed_used = 0;
    unsigned visit_epoch = 0;
};

// Ternary decision tree of a function: then, else and don't-care (the
// conjunction of both cofactors) below each variable. Owns its children.
class Tdd {
public:
    bddpp_manager* manager;
    bdd variable; // the top variable, or the function itself at a leaf
    Tdd* then_tdd;
    Tdd* else_tdd;
    Tdd* dont_care_tdd;

    Tdd(bddpp_manager* manager, bdd f);
    ~Tdd();
    Tdd(const Tdd&) = delete;
    Tdd& operator=(const Tdd&) = delete;

    void Print_bdd_structure(std::ostream& out, int indent = 0) const;

    // ---- transformations ----
    void Bdd_implicants_loc(bdd cube, std::list<bdd>& list);
    void Bdd_prime_implicants(std::list<bdd>& list);
    // ---- end transformations ----

private:
    explicit Tdd(bddpp_manager* manager); // an empty tree node, filled by its parent
};

#endif
