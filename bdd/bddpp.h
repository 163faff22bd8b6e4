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
#include <cstring>
#include <deque>
#include <iosfwd>
#include <list>
#include <map>
#include <set>

#include "bdd/bddpp_memory.h"
#include "support/grow_array.h"
#include "support/index_set.h"
#include <string>
#include <string_view>
#include <unordered_map>
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
    // What the unique table and the operators read comes first; the whole
    // node is 40 bytes: the manager is a 16-bit slot of the managers'
    // registry, and the cone's variables, once asked, and the numbers of
    // the numbering walks live in the manager.
    bdd_node* then_node;
    bdd_node* else_node;
    std::int32_t global_id; // serial number in the manager, never reused
    int id;              // decision variable; -1 terminal, -3 default-built
    int references;      // handles and parent nodes that point here
    // Links (bit 0 normal, bit 1 inverse) at which rebuilding the cone
    // node by node is known to give this very node and make none, above
    // the unique table's removal count; see compose_remembering.
    std::uint32_t rebuilt = 0;
    // 1 + the place of depends() in the manager's store; 0 until asked.
    mutable std::uint32_t depends_place = 0;
    int else_link_type : 8;   // 1 normal, -1 inverse
    unsigned mark : 8;        // scratch visit flag of the marking walks: see bddpp_manager::marked()
    unsigned manager_slot : 16; // 0: no manager

    // The manager that made the node; null for a default-built one.
    bddpp_manager* manager() const;

    // bdd_node_signature of the node's key: the children never change, so
    // it is worked out when asked.
    long signature() const { return bdd_node_signature(id, else_link_type, then_node, else_node); }

    // Default-built: no manager, signature and id -3, else link 1, null
    // children, zeros elsewhere.
    bdd_node();
    // Makes a node of m. For id >= 0 it checks the children's global ids
    // as the signature does and enters the node in m's unique table; for
    // id -1 (the terminal) it does neither. References start at 0; the
    // children's references are the caller's business.
    bdd_node(bddpp_manager* m, long id, int else_link_type, bdd_node* then_node,
             bdd_node* else_node, long global_id);
    // For id >= 0: takes one reference off both children.
    ~bdd_node();

    bdd_node(const bdd_node&) = delete;
    bdd_node& operator=(const bdd_node&) = delete;

    // Ids of all the variables of the cone at and below this node,
    // ascending; empty for the terminal. Worked out at the first question
    // and kept with the node (the cone below a node never changes).
    const std::vector<int>& depends() const;
    // Whether `v` is in depends().
    bool depends_on_id(long v) const;

    // Structural check of the whole cone; see bddpp_manager::Bdd_is_correct.
    bool is_correct() const;

    // Compares id, else_link_type, then_node and else_node.
    bool operator==(const bdd_node& other) const;

    // Nodes come from a pool of fixed-size blocks.
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;
    // Deletes the nodes in order, as `delete` would but for their
    // children's counts, which the collection has lowered already.
    static void delete_released(bdd_node* const* nodes, std::size_t count);

private:
    friend class bddpp_manager;
    friend class bdd_unique_table;
    struct not_integrated {};
    static unsigned slot_of(const bddpp_manager* m);
    // Gives the node's depends() set back to the manager's store.
    void release_depends();
    static constexpr long max_global_id = INT32_MAX;
    // Ends the process: a manager has made more nodes than a global id holds.
    [[noreturn]] static void too_many_nodes();
    // Leaves the entry in the unique table to the caller; the children are
    // real nodes of the manager.
    bdd_node(bddpp_manager* m, long id_, int else_link, bdd_node* then_n, bdd_node* else_n,
             long gid, not_integrated)
        : then_node(then_n), else_node(else_n), global_id(static_cast<std::int32_t>(gid)), id(static_cast<int>(id_)),
          references(0), else_link_type(else_link), mark(0), manager_slot(slot_of(m)) {
        if (gid > max_global_id) too_many_nodes();
        // A child with a negative global_id ends the process here, as its
        // signature would.
        if (then_n->global_id < 0 || else_n->global_id < 0) bdd_node_signature(id, else_link, then_n, else_n);
    }
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
    // The handle's slot in a VHDL node array: "not " for an inverse link,
    // prefix, "(", global_id, ")".
    std::string vhdl_node_name(const std::string& prefix) const;
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
#include <cstdio> // FILE, for the printf-style structure dumps
// ---- end printers ----

// The unique table: a hash table keyed on the whole of (id, else link,
// then node, else node), so that it holds any number of nodes without the
// collisions of the packed signature. Open addressing with linear probing;
// each slot keeps the key's hash beside the node, so a failed look-up
// seldom touches a node. Walks that are behaviour go through
// nodes_in_key_order(), whose order is that of the signature for global
// ids below 2^20.
class bdd_unique_table {
public:
    bdd_unique_table();
    ~bdd_unique_table();
    bdd_unique_table(const bdd_unique_table&) = delete;
    bdd_unique_table& operator=(const bdd_unique_table&) = delete;

    std::size_t size() const { return count; }
    // Grows by one at each removal of an entry (and so at each replacement):
    // what was found in the table stays found while it stays put.
    std::uint32_t removals() const { return removal_count; }
    bdd_node* find(long id, int else_link_type, bdd_node* then_node,
                   bdd_node* else_node) const;
    // find() that also gives the key's hash and, when it fails, the free
    // slot that ended the search, for insert_absent().
    bdd_node* find(long id, int else_link_type, bdd_node* then_node, bdd_node* else_node,
                   std::size_t& hash, std::size_t& free_slot) const {
        hash = hash_of(id, else_link_type, then_node, else_node);
        const std::size_t mask = capacity - 1;
        const std::uint64_t tag = tag_of(hash);
        for (std::size_t i = home(hash);; i = (i + 1) & mask) {
            const entry e = slots[i];
            if (!e.bits) {
                free_slot = i;
                return nullptr;
            }
            if ((e.bits & tag_bits) == tag) {
                bdd_node* n = e.node();
                if (n->then_node == then_node && n->else_node == else_node && n->id == id &&
                    n->else_link_type == else_link_type)
                    return n;
            }
        }
    }
    // Enters a node whose key find() failed to meet, the table unchanged
    // since.
    void insert_absent(bdd_node* node, std::size_t hash, std::size_t free_slot) {
        if (4 * (count + 1) > 3 * capacity) {
            insert_absent(node, hash);
            return;
        }
        slots[free_slot].bits = entry_of(node, hash).bits | distance_code((free_slot - home(hash)) & (capacity - 1));
        ++count;
    }
    // The same, the table changed or not since.
    void insert_absent(bdd_node* node, std::size_t hash);
    // Enters the node, replacing any node of the same key; true when it
    // replaced one.
    bool insert(bdd_node* node);
    // Removes the entry of the node's key, whatever node it points to;
    // false when there is none.
    bool erase(bdd_node* node);
    // Whether every entry holds its distance from its home, every slot
    // from its home to it is taken, and the count is that of the entries.
    bool well_formed() const;
    // Every node, in ascending (id, then global_id, else global_id,
    // else link bit) order.
    std::vector<bdd_node*> nodes_in_key_order() const;
    // Every node, in no particular order. f must not change the table.
    template <class F> void for_each(F f) const {
        for_each_entry([&f](const entry& e) { f(e.node()); });
    }

private:
    friend class bddpp_manager;
    // A node's address in the low 48 bits, bits 32 to 47 of its key's hash
    // above them; 0: free. A node is 8-aligned: the address's low 3 bits
    // hold the entry's distance from its home, 7 for 7 or more. So the home
    // of most entries is known without reading the node: moving entries
    // back after a removal reads none, and neither does growing a table of
    // 2^16 slots or more, whose next home bit is one of the stored hash
    // bits (a home is the top bits of the hash).
    struct entry {
        std::uint64_t bits;
        bdd_node* node() const { return reinterpret_cast<bdd_node*>(bits & address_bits); }
        std::size_t distance_code() const { return static_cast<std::size_t>(bits & distance_bits); }
    };
    static constexpr std::uint64_t distance_bits = 7;
    static constexpr std::uint64_t buried_bits = 1; // no node, a distance of 1
    static constexpr std::uint64_t address_bits = ((std::uint64_t(1) << 48) - 1) & ~distance_bits;
    static constexpr std::uint64_t tag_bits = ~((std::uint64_t(1) << 48) - 1);
    static std::uint64_t tag_of(std::size_t hash) {
        return (static_cast<std::uint64_t>(hash) << 16) & tag_bits;
    }
    static std::uint64_t distance_code(std::size_t distance) { return distance < 7 ? distance : 7; }
    // The home of the entry found at slot i.
    std::size_t home_at(std::size_t i, entry e) const {
        const std::size_t d = e.distance_code();
        if (d < 7) return (i - d) & (capacity - 1);
        return home(hash_of(e.node()));
    }
    // A collection's removals: bury() turns the entry that points to this
    // very node, whose key's home is given, into a place holder that
    // look-ups pass over (false when the node has no entry), and
    // clear_buried() then frees the held places in one pass over the slots,
    // moving the entries after them back. Nothing else may use the table
    // in between. The removals are counted by the caller, through
    // count_removals().
    bool bury(const bdd_node* node, std::size_t home_slot);
    void clear_buried();
    const entry* slot_address(std::size_t i) const { return slots + i; }
    // Empties slot i, moving later entries of its run back as their homes allow.
    void remove_at(std::size_t i);
    static entry entry_of(bdd_node* node, std::size_t hash) {
        const std::uint64_t address = reinterpret_cast<std::uintptr_t>(node);
        if (address & (tag_bits | distance_bits)) unplaceable_node();
        return entry{address | tag_of(hash)};
    }
    // Ends the process: a node's address does not fit an entry.
    [[noreturn]] static void unplaceable_node();
    static std::size_t hash_of(const bdd_node* n) {
        return hash_of(n->id, n->else_link_type, n->then_node, n->else_node);
    }
    static std::size_t hash_of(long id, int else_link_type, bdd_node* then_node,
                               bdd_node* else_node) {
        std::uint64_t h = static_cast<std::uint64_t>(id) * 0x9E3779B97F4A7C15ull;
        h += reinterpret_cast<std::uintptr_t>(then_node);
        h *= 0xC2B2AE3D27D4EB4Full;
        h += reinterpret_cast<std::uintptr_t>(else_node) + (else_link_type > 0);
        h *= 0x165667B19E3779F9ull;
        h ^= h >> 32;
        h *= 0x9E3779B97F4A7C15ull;
        return static_cast<std::size_t>(h);
    }
    std::size_t home(std::size_t hash) const { return hash >> shift; }
    void grow();
    // Puts the entry in the first free slot from its home on.
    void place(entry e, std::size_t home_slot) {
        const std::size_t mask = capacity - 1;
        std::size_t at = home_slot;
        while (slots[at].bits) at = (at + 1) & mask;
        slots[at].bits = (e.bits & ~distance_bits) | distance_code((at - home_slot) & mask);
    }
    // Every occupied slot in order, its node fetched some way ahead: a node
    // is met at random in memory, and f reads it.
    template <class F> void for_each_entry(F f) const {
        constexpr std::size_t ahead = 16; // capacity is 2^13 or more
        std::size_t i = 0;
        for (; i + ahead < capacity; ++i) {
            __builtin_prefetch(slots[i + ahead].node()); // a free slot's is harmless
            if (slots[i].bits) f(slots[i]);
        }
        for (; i < capacity; ++i)
            if (slots[i].bits) f(slots[i]);
    }
    entry* slots;
    std::size_t capacity; // a power of two, at most three quarters full
    std::size_t count;
    int shift;            // 64 - log2(capacity): a key's home is its hash's top bits
    std::uint32_t removal_count = 0;
    std::size_t buried = 0;
    void count_removals(std::size_t k);
};

// A table by variable id or index whose length doubles with the number of
// variables: the slots past the last one written read as their default
// (an empty name, null, 0) without being stored. Memory follows the
// variables made, not the doubled length.
template <class T>
class variable_table {
public:
    std::size_t size() const { return length; }
    // Sets the length; slots not yet written read as the default.
    void resize(std::size_t n) {
        length = n;
        if (stored.size() > n) stored.resize(n, filler);
    }
    void assign(std::size_t n, const T& value) {
        stored.assign(stored.size() < n ? stored.size() : n, value);
        length = n;
        filler = value;
    }
    const T& operator[](std::size_t i) const { return i < stored.size() ? stored[i] : filler; }
    // Writable slot i (i below the length): the stored part grows to it.
    T& operator[](std::size_t i) {
        if (i >= stored.size()) {
            // An eighth more: the tables end at most that far above the
            // variables made (a half wasted a third of them).
            std::size_t want = stored.size() + stored.size() / 8;
            if (want > length) want = length;
            if (want < i + 1) want = i + 1;
            stored.resize(want, filler);
        }
        return stored[i];
    }
    // The stored slots: every one written so far, and at least those of the
    // variables made (the manager writes a variable's slots as it makes it).
    const T* data() const { return stored.data(); }
    const T* begin() const { return stored.begin(); }
    const T* end() const { return stored.end(); }

private:
    grow_array<T> stored;
    std::size_t length = 0;
    T filler = T();
};

// The variables' creation names: id k holds the k-th name entered, for
// good. The names lie end to end in one buffer and the look-up table holds
// ids only, so a name costs its characters and a few words.
class creation_names {
public:
    // The id of the name, or -1.
    long find(const std::string& name) const;
    // The id of the name, entering it under the next id when it is new
    // (second: whether it was entered).
    std::pair<long, bool> try_emplace(const std::string& name);
    // Starts the read of the slot where a look-up of the name begins.
    void prefetch(std::string_view name) const {
        if (slots.size != 0) __builtin_prefetch(&slots.data[home(hash32(name))]);
    }
    long size() const { return static_cast<long>(ends.size()); }
    // Starts the read of where the name of id ends (below size()).
    void prefetch_text_of(std::size_t id) const { __builtin_prefetch(&ends[id]); }
    // The name entered under id (below size()).
    std::string_view text_of(std::size_t id) const {
        std::size_t begin = id == 0 ? 0 : ends[id - 1];
        return std::string_view(chars.data() + begin, ends[id] - begin);
    }

private:
    // A slot: the id + 1 in the low half (0 when free), the low 32 bits of
    // the name's hash in the high half. A probe reads a name's text only
    // when the hashes agree, and growing works the homes out again from the
    // slots alone.
    static std::uint32_t hash32(std::string_view name) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
    }
    // The slot holding the name, or the free slot where it would go.
    std::size_t slot_of(std::string_view name, std::uint32_t hash) const;
    // A name's home is the top bits of its hash: when the table doubles,
    // the entries of a slot go to the two slots in its place, so that the
    // new table is written from the front as the old one is read.
    std::size_t home(std::uint32_t hash) const {
        return static_cast<std::size_t>((static_cast<std::uint64_t>(hash) << 32) >> (64 - bits));
    }
    void grow();
    // The slots, zeroed when made, in a block of the package's (a large
    // one is made present on the other processor, and goes to the nodes
    // once the table has doubled).
    struct slot_block {
        std::uint64_t* data = nullptr;
        std::size_t size = 0;
        slot_block() = default;
        explicit slot_block(std::size_t count);
        slot_block(const slot_block& other);
        slot_block& operator=(slot_block other) {
            std::swap(data, other.data);
            std::swap(size, other.size);
            return *this;
        }
        ~slot_block() { bdd_block_free(data); }
    };
    grow_array<char> chars;
    grow_array<std::uint32_t> ends; // by id: end of its name in chars
    slot_block slots; // at most three quarters full
    int bits = 0;     // log2 of the slots' count
};

// The variables' current names by id, as changes to the creation names: a
// slot never given another name than its variable's creation name holds
// nothing; another name of up to 15 characters lies in the slot itself
// (the writers read names by variable in no order of the table: one miss
// per name instead of two), a longer one, after its length, in one buffer
// of texts (renaming appends, the old text stays). A text handed out is
// good until the next give.
class current_names {
public:
    // Whether the slot holds a text of its own, and then the text.
    bool given(std::size_t id, std::string_view& text) const {
        if (id >= where.size()) return false;
        const slot& s = where[id];
        const unsigned tag = static_cast<unsigned char>(s.bytes[kInline]);
        if (tag != 0) {
            text = std::string_view(s.bytes, tag - 1);
            return true;
        }
        std::uint64_t at;
        std::memcpy(&at, s.bytes, sizeof at);
        if (at == 0) return false;
        std::uint32_t length;
        std::memcpy(&length, texts.data() + (at - 1), sizeof length);
        text = std::string_view(texts.data() + (at - 1) + sizeof length, length);
        return true;
    }
    // Starts the read of the slot of id.
    void prefetch(std::size_t id) const {
        if (id < where.size()) __builtin_prefetch(&where[id]);
    }
    // Gives the slot a text of its own.
    void give(std::size_t id, std::string_view name);
    // Back to the creation name.
    void forget(std::size_t id) {
        if (id < where.size()) where[id] = slot{};
    }

private:
    static constexpr std::size_t kInline = 15;
    // By id: all zero; or the characters and, last, 1 + their count; or,
    // with a last byte of zero, 1 + the place of the length in texts in
    // the first eight bytes.
    struct slot {
        char bytes[kInline + 1];
    };
    grow_array<slot> where;
    grow_array<char> texts;
};

class bddpp_manager {
public:
    long variables_number;
    long variables_capacity;  // size of the five tables by id or index
    long next_global_id;
    // The current name of a variable (id below variables_capacity; the
    // slots past variables_number that were never named read "").
    // Starts the reads of var_name(id) that miss the cache in a large
    // manager: the current name's slot and the creation name's end.
    void prefetch_var_name(long id) const {
        if (id < 0 || id >= variables_number) return;
        var_names.prefetch(static_cast<std::size_t>(id));
        if (id < id_by_name.size()) id_by_name.prefetch_text_of(static_cast<std::size_t>(id));
    }
    std::string_view var_name(long id) const {
        std::string_view text;
        if (var_names.given(static_cast<std::size_t>(id), text)) return text;
        return id < variables_number ? id_by_name.text_of(static_cast<std::size_t>(id)) : std::string_view();
    }
    variable_table<bdd_node*> node_by_id;  // the variable's own node, by id
    variable_table<long> index_by_id;
    variable_table<long> id_by_index;
    // The index of the variable of id `id` (below variables_number). While
    // every variable has been made last, the order is that of creation and
    // an index is its id: the table, which follows the variables, is then
    // not read (with a million variables a read of it misses the cache).
    long index_of_id(long id) const { return made_last_only ? id : index_by_id[id]; }
    bool indexes_are_ids() const { return made_last_only; }
    // The id of the variable at `index` (below variables_number), the same way.
    long id_of_index(long index) const { return made_last_only ? index : id_by_index[index]; }
    variable_table<bdd_node*> assoc;       // see Bdd_assoc_bdd_to_var
    bdd_unique_table* map;
    creation_names id_by_name; // renaming leaves it
    current_names var_names;   // written only by the manager's own functions
    long gc_calls;
    bdd_node* one; // the terminal, outside the unique table

    // The value of a node's mark that means "marked" since the last
    // Bdd_global_clear_marks: clearing them all moves to the next value
    // instead of visiting every node (only when the values run out are the
    // nodes' marks set back to 0). A mark of 0, or of an older value, is no
    // mark.
    unsigned marked() const { return mark_value; }

    // Operators take the plain recursion of Bdd_and/Bdd_or (no computed
    // table, call-stack recursion) when set. Results and node creation
    // order are the same either way; this is there to compare them. A
    // manager starts plain when plain_by_default() is set (a test sets it
    // to compare whole runs).
    static bool& plain_by_default();
    bool plain_operators = plain_by_default();

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
    // Index_var_by_name, or the index of a new last variable of that name
    // (`created` then true), with one look-up.
    long Index_var_or_new_last(const std::string& name, bool& created);
    // Starts the memory reads of Index_var_or_new_last on the two names, in
    // that order, at once: the names' slots in the creation index and the
    // unique-table homes of the two next variables. Each read is a miss at
    // a random place of a large table; started together they overlap.
    void prefetch_new_variables(std::string_view first, std::string_view second) const;

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
    long Node_index(const bdd_node* node) const {
        if (!node || !node->manager_slot) return -3;
        if (node->id < 0) return node->id;
        if (node->id >= variables_number) return -3;
        return index_of_id(node->id);
    }

    // Renaming touches var_names only; id_by_name keeps the creation names.
    void Rename_var(const std::string& new_name, const std::string& old_name);
    void Change_name_by_index(long index, const std::string& name);
    void Change_name_by_id(long id, const std::string& name);
    void Replace_char_in_all_names(char from, char to);
    void No_begin_underscore_name();
    // The lowest id below variables_number whose current name is that one,
    // or -1: Rename_var's search, from the index and by a plain scan.
    long Lowest_id_named(const std::string& name) { return lowest_id_named(name); }
    long lowest_id_named_literal(const std::string& name) const;

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
    // Dependence. A literal array has one int per index: 1 true, 0 false,
    // 2 absent.
    bool Bdd_node_depends_on(bdd_node* f, bdd_node* v);
    bool Bdd_depends_on(const bdd& f, const bdd& v);
    bool Variable_awaited(const bdd& f, long index);
    bool Variable_true_awaited(const bdd& f, long index);
    bool Variable_false_awaited(const bdd& f, long index);
    IndexSet set_of_id_depend_on(const bdd& f);
    IndexSet set_of_index_depend_on(const bdd& f);
    void Present_variables(const bdd& f, int* present);
    bool exists_common_variables(const bdd& f, const bdd& g);

    // f with the literals of cube fixed. The last layer does not merge a
    // node whose two results are equal, so its result may not be canonical.
    bdd Bdd_cube_reduce(const bdd& f, const bdd& cube);
    bdd_node* Bdd_cube_reduce(int link, bdd_node* f, int cube_link, bdd_node* cube, int& result_link);
    bdd_node* Bdd_cube_reduce(int link, bdd_node* f, int* literals, int& result_link);
    void Bdd_node_to_literals(int link, bdd_node* f, int* literals);
    void Bdd_to_literals(const bdd& f, int* literals);

    // v is one literal (either sign); f itself when v is none or f does
    // not depend on it.
    bdd Bdd_exist(const bdd& f, const bdd& v);
    bdd Bdd_forall(const bdd& f, const bdd& v);
    // f with the positive variable v replaced by g.
    bdd Bdd_compose(const bdd& f, const bdd& v, const bdd& g);
    bdd Bdd_compose_loc(const bdd& f, const bdd& v, const bdd& g);
    // index_map[index in f] is the index that takes its place.
    bdd Bdd_replace_vars(const bdd& f, long* index_map);
    bdd Bdd_keep_first_variables(const bdd& f, long index);

    void Bdd_assoc_bdd_to_var(const bdd& g, const bdd& v);
    bdd Bdd_follow_assoc(const bdd& f, int* self_index);

    bdd Bdd_simplify(const bdd& f, const bdd& care);
    bdd Bdd_simplify2(const bdd& f, const bdd& care);
    bdd Bdd_simplify3(const bdd& f, const bdd& care);
    // Generalised cofactor of f by c.
    bdd Bdd_reduce(const bdd& f, const bdd& c);

    bdd Bdd_eval(const bdd& f, int* literals);
    // 1, 0, or 2 when the absent literals leave it open.
    int Bdd_eval_for_literal(const bdd& f, int* literals);

    bool Bdd_OneSat(bdd_node* f, int link, int* literals);
    bdd Bdd_satisfy(const bdd& f);
    // The literals of a cube other than one, by increasing index, as
    // Bdd_to_literals would set them (1 positive, 0 negative).
    void Cube_literal_list(const bdd& cube, std::vector<std::pair<long, int>>& literals);
    bdd Literals_to_bdd(int* literals);
    bdd Bdd_one_implicant(const bdd& f);

    // Functions of count variables vars[0 .. count-1]; bit i of a code is
    // the value of vars[i].
    bdd Minterm(int code, int count, bdd* vars);
    unsigned long Id_function_by_bdd(const bdd& f, int count, bdd* vars);
    bdd Bdd_function_by_id(unsigned long id, int count, bdd* vars);
    void Truth_table(const bdd& f, int count, bdd* vars, char* out);
    void Bdd_truth_table(const bdd& f, int count, bdd* vars, bdd* out);

    void Bdd_prime_implicants(const bdd& f, std::list<bdd>& list);
    void Bdd_essential_implicants(const bdd& f, std::list<bdd>& essential, std::list<bdd>& others);

    // The function that f (or node) is in src, built in dst: by the same
    // index, by index_map (index in src to index in dst), or by name (a
    // name missing in dst is made there, last in the order).
    static bdd_node* Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, bdd_node* node);
    static bdd Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, const bdd& f);
    static bdd_node* Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, bdd_node* node, long* index_map);
    static bdd Bdd_isomorphe(bddpp_manager* dst, bddpp_manager* src, const bdd& f, long* index_map);
    static bdd_node* Bdd_isomorphe_by_name(bddpp_manager* dst, bddpp_manager* src, bdd_node* node);
    static bdd Bdd_isomorphe_by_name(bddpp_manager* dst, bddpp_manager* src, const bdd& f);

    // Not implemented: messages only.
    bdd Bdd_swap_vars(const bdd& f, const bdd& a, const bdd& b);
    void Bdd_var_reorder();

    // A boolean expression read from text (bdd/parse_exp_bdd.h). The first
    // form also gives the optional "<priority>" prefix; the second refuses
    // one.
    bdd Parse_expression(std::string text, int& priority, int& error);
    bdd Parse_expression(std::string text, int& error);
    // ---- end transformations ----

    // ---- printers ----
    // Used by the operators' self-check report.
    void Print_bdd_structure_loc(std::ostream& out, int indent, bdd_node* node);
    void Bdd_stats(std::ostream& out);
    // Covers: cubes whose disjunction is f. Level 0 by satisfying cubes,
    // 1 with expansion and removal, 2 essential primes first, 3 a table of
    // hand-made covers of functions of the first four variables.
    void Bdd_sop(const bdd& f, std::list<bdd>& cover, int level);
    int Bdd_sop(const bdd& f, bdd* out, int level); // obsolete
    void Bdd_sop_0(const bdd& f, std::list<bdd>& cover);
    void Bdd_sop_1(const bdd& f, std::list<bdd>& cover);
    void Bdd_sop_2(const bdd& f, std::list<bdd>& cover);
    void Bdd_sop_2plus(const bdd& f, std::list<bdd>& cover);

    // Products and sums with the caller's operator words.
    std::string Print_product_to_String_pref_suff(const std::string& and_word, const std::string& not_open,
                                                  const std::string& not_close, const bdd& cube,
                                                  const std::string& prefix, const std::string& suffix);
    std::string Print_product_to_String(const std::string& and_word, const std::string& not_open,
                                        const std::string& not_close, const bdd& cube);
    void Print_product(const std::string& and_word, const std::string& not_open, const std::string& not_close,
                       std::ostream& out, const bdd& cube);
    void Print_product_pref_suff(const std::string& and_word, const std::string& not_open,
                                 const std::string& not_close, std::ostream& out, const bdd& cube,
                                 const std::string& prefix, const std::string& suffix);
    std::string Print_sop_to_String_pref_suff(const std::string& or_word, const std::string& and_word,
                                              const std::string& not_open, const std::string& not_close,
                                              const bdd& f, const std::string& prefix, const std::string& suffix,
                                              int level);
    std::string Print_sop_to_String(const std::string& or_word, const std::string& and_word,
                                    const std::string& not_open, const std::string& not_close, const bdd& f,
                                    int level);
    void Print_sop(const std::string& or_word, const std::string& and_word, const std::string& not_open,
                   const std::string& not_close, std::ostream& out, const bdd& f, int level);
    void Print_sop_pref_suff(const std::string& or_word, const std::string& and_word, const std::string& not_open,
                             const std::string& not_close, std::ostream& out, const bdd& f,
                             const std::string& prefix, const std::string& suffix, int level);
    void Print_debug_bdd(std::ostream& out, const bdd& f);
    std::string Print_sop_to_ESTEREL_String(const bdd& f, int level);
    std::string Print_sop_to_VHDL_String(const bdd& f, int level);
    // Variables written as array_name "[" index "]".
    void Print_cat_sop(const std::string& or_word, const std::string& and_word, const std::string& not_open,
                       const std::string& not_close, std::ostream& out, const bdd& f,
                       const std::string& array_name, int level);
    void Print_cat_product(const std::string& and_word, const std::string& not_open, const std::string& not_close,
                           std::ostream& out, const bdd& cube, const std::string& array_name);
    // Variables written as numbers taken from `numbers` by index.
    void Print_cat_product(std::ostream& out, const bdd& cube, std::map<long, int>& numbers, int offset,
                           bool doubled);

    // One assignment per node, post-order, named by global_id. Marks are
    // set and left set: the caller clears them, once per pass.
    void Print_node_for_eval(const std::string& or_word, const std::string& and_word, const std::string& not_open,
                             const std::string& not_close, const std::string& var_prefix,
                             const std::string& var_suffix, const std::string& one_word,
                             const std::string& line_end, const std::string& array_name, std::ostream& out,
                             bdd_node* node);
    void Print_node_for_eval(const std::string& or_word, const std::string& and_word, const std::string& not_open,
                             const std::string& not_close, const std::string& var_prefix,
                             const std::string& var_suffix, const std::string& one_word,
                             const std::string& line_end, const std::string& indent,
                             const std::string& array_name, std::ostream& out, bdd_node* node);
    void Print_node_for_eval_arrayless(const std::string& or_word, const std::string& and_word,
                                       const std::string& not_open, const std::string& not_close,
                                       const std::string& var_prefix, const std::string& var_suffix,
                                       const std::string& one_word, const std::string& line_end,
                                       const std::string& array_name, std::ostream& out, bdd_node* node);
    void Print_node_for_eval_arrayless(const std::string& or_word, const std::string& and_word,
                                       const std::string& not_open, const std::string& not_close,
                                       const std::string& var_prefix, const std::string& var_suffix,
                                       const std::string& one_word, const std::string& line_end,
                                       const std::string& indent, const std::string& array_name,
                                       std::ostream& out, bdd_node* node);
    void Print_node_for_eval_NUSMV(const std::string& var_prefix, const std::string& var_suffix,
                                   const std::string& line_start, const std::string& base, std::ostream& out,
                                   bdd_node* node);
    // The nodes that a node printer would write for `node` now: the same
    // walk, marking them, with used[global_id] set to 1 for each id below
    // `size`. Nothing is printed.
    void Node_for_eval_used(bdd_node* node, long size, int* used);
    void Print_node_for_eval_VHDL(const std::string& name, std::ostream& out, bdd_node* node);
    void Print_node_for_eval_BLIF(const std::string& spare, const std::string& suffix, const std::string& base,
                                  std::ostream& out, bdd_node* node);
    void Print_node_for_eval_VHDL_reset_input(const std::string& name, std::ostream& out,
                                              const std::string& var_name);
    void Print_node_for_eval_VHDL_input(const std::string& prefix, const std::string& suffix,
                                        const std::string& name, std::ostream& out, const std::string& var_name);

    // Node lists: "id: index:then:else,link" per node, numbered by
    // Bdd_incremental_id. The index_map forms write mapped indexes.
    void Print_bdd_node(std::ostream& out, bdd_node* node);
    void Print_bdd_node(std::ostream& out, bdd_node* node, long* index_map);
    void Print_bdd_node_with_adress(std::ostream& out, bdd_node* node);
    void Print_bdd_by_nodes_list_loc(std::ostream& out, bdd_node* node);
    void Print_bdd_by_nodes_list_loc(std::ostream& out, bdd_node* node, long* index_map);
    void Print_bdds_list_by_nodes_list(std::ostream& out, std::list<bdd>& functions);
    void Print_bdds_list_by_nodes_list(std::ostream& out, std::list<bdd>& functions, long* index_map);
    void Print_bdd_by_nodes_list(std::ostream& out, const bdd& f);
    void Print_bdd_by_nodes_list(std::ostream& out, const bdd& f, long* index_map);

    // Debug forms.
    void Print_bdd_structure(std::ostream& out, const bdd& f);
    void Print_bdd_structure(FILE* out, const bdd& f);
    void Print_bdd_structure_loc(FILE* out, int indent, bdd_node* node);
    void Print_bdd_global_structure_loc(std::ostream& out, int indent, bdd_node* node);
    void Print_bdd_global_structure_loc(FILE* out, int indent, bdd_node* node);
    void Print_structure_lines(std::ostream& out, int indent, bdd_node* node, bool global, const char* index_word);
    void debug_variables(std::ostream& out);
    void Print_Fixes_Points(std::ostream& out, const bdd& f);

    // Two-level tables: a header of the present variables and the output,
    // then one row per cube.
    void PLA_print_pref_suff(std::ostream& out, const bdd& out_var, const bdd& f, const std::string& var_prefix,
                             const std::string& var_suffix, const std::string& header_open,
                             const std::string& header_close, const std::string& row_separator,
                             const std::string& end_word, const std::string& literal_separator, int level);
    void PLA_print_pref_suff_with_renaming(std::ostream& out, long* index_map, const bdd& out_var, const bdd& f,
                                           const std::string& var_prefix, const std::string& var_suffix,
                                           const std::string& header_open, const std::string& header_close,
                                           const std::string& row_separator, const std::string& end_word,
                                           const std::string& literal_separator, int level);
    void PLA_print(std::ostream& out, long* index_map, const bdd& out_var, const bdd& f,
                   const std::string& var_prefix, const std::string& var_suffix, const std::string& header_open,
                   const std::string& header_close, const std::string& row_separator, const std::string& end_word,
                   const std::string& literal_separator, int level);
    void BLIF_print(std::ostream& out, const bdd& out_var, const bdd& f, int level);
    void ZKC_print(std::ostream& out, long* index_map, const bdd& out_var, const bdd& f, int level);
    // ---- end printers ----

private:
    friend class bdd_node;
    struct apply_frame;
    struct computed_entry;
    void make_tables(long capacity);
    // A collection's lists, kept from one collection to the next, in the
    // package's blocks: their pages are written once, not at each
    // collection, and a list's block left by its growth holds nodes.
    using gc_list = std::vector<bdd_node*, bdd_block_allocator<bdd_node*>>;
    gc_list gc_work, gc_freed, gc_outside;
    std::vector<std::size_t, bdd_block_allocator<std::size_t>> gc_homes;
    template <class Collectable>
    void collect_in_one_sweep(gc_list& work, Collectable collectable);
    bdd_node* new_variable(const std::string& name, long index, bool last);
    bdd_node* add_variable(const std::string& name, long index, bool last);
    bdd_node* apply(bool is_or, int link_x, bdd_node* x, int link_y, bdd_node* y,
                    int& link);
    bdd_node* apply_plain(bool is_or, int link_x, bdd_node* x, int link_y,
                          bdd_node* y, int& link);
    bdd_node* join(long index, int then_link, bdd_node* then_node, int else_link,
                   bdd_node* else_node, int& link);
    bdd_node* find_or_make(long id, int else_link_type, bdd_node* then_node, bdd_node* else_node);
    bdd_node* fast_join(long index, int then_link, bdd_node* then_node, int else_link,
                        bdd_node* else_node, int& link);
    bool ite_above_branches(long index, const bdd& g, const bdd& h, bdd& result);
    // Starts the read of the unique-table home of the node a join of variable
    // id over those branches looks for.
    void prefetch_join(long id, int then_link, bdd_node* then_node, int else_link, bdd_node* else_node) const {
        __builtin_prefetch(
            &map->slots[map->home(bdd_unique_table::hash_of(id, then_link * else_link, then_node, else_node))]);
    }
    bdd compose_remembering(const bdd& f, long v_index, const bdd& g);
    void self_check(bool is_or, int link_x, bdd_node* x, long ix, int link_y,
                    bdd_node* y, long iy, int link, bdd_node* result);
    [[noreturn]] void null_reference(bool is_or, bdd_node* x, bdd_node* y);
    void computed_clear();
    void computed_resize();
    void release_operator_tables();
    void set_var_name(long id, const std::string& name);
    void drop_names_index();
    long lowest_id_named(const std::string& name);

    // Current names to the ids holding them, for Rename_var's lookups;
    // built on its first use, kept by set_var_name, dropped by the passes
    // that rewrite every name.
    struct name_holders {
        long lowest;
        std::vector<long> others; // descending
    };
    void index_name(const std::string& name, long id);
    void unindex_name(const std::string& name, long id);
    std::unordered_map<std::string, name_holders> ids_by_current_name;
    bool names_indexed = false;
    // Until a pass rewrites every name, a variable keeps its creation name
    // unless renamed since, and the index holds the renamed ones only.
    bool names_from_creation = true;
    // Bdd_cube_reduce's table of literals by index: 2 everywhere between calls.
    std::vector<int> cube_literals;
    bool cube_literals_busy = false;
    // Bdd_satisfy's table of literals by index, 2 everywhere between calls,
    // and the indices a call wrote: a call costs the path it walks, not
    // the number of variables.
    std::vector<int> satisfy_literals;
    std::vector<long> satisfy_written;
    std::vector<std::pair<int, bdd_node*>> cube_path;
    // The and of a cube (c, link_c) and a literal (y, link_y) whose index
    // lies below every node of the cube, making the nodes the apply would
    // make, in its order; any other c goes through the apply.
    bdd_node* cube_and_below(int link_c, bdd_node* c, int link_y, bdd_node* y, int& link);

    std::vector<apply_frame>* apply_stack = nullptr;
    computed_entry* computed = nullptr;
    std::size_t computed_size = 0;
    std::size_t computed_used = 0;
    unsigned mark_value = 1; // see marked()
    bool made_last_only = true; // no variable made before another: see index_of_id

    // The managers alive, by the slot their nodes hold; slot 0 is none.
    static bddpp_manager* registry[1 << 16];
    unsigned registry_slot = 0;
    void enter_registry();
    // The nodes' depends() sets, by bdd_node::depends_place - 1; a freed
    // node's place is reused.
    std::deque<std::vector<int>> depends_store;
    std::vector<std::uint32_t> depends_free;
    const std::vector<int>* known_depends(const bdd_node* n) const {
        return n->depends_place ? &depends_store[n->depends_place - 1] : nullptr;
    }

public:
    // The number the last Bdd_incremental_id walk gave the node, by its
    // global id (global ids are never reused); 0 for a node no walk reached.
    long incremental_id(const bdd_node* n) const {
        auto g = static_cast<std::size_t>(n->global_id);
        return n->global_id >= 0 && g < incremental_ids.size() ? incremental_ids[g] : 0;
    }

private:
    std::vector<std::int32_t> incremental_ids;
};

inline unsigned bdd_node::slot_of(const bddpp_manager* m) { return m ? m->registry_slot : 0; }
inline bddpp_manager* bdd_node::manager() const { return bddpp_manager::registry[manager_slot]; }

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
