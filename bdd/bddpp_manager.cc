// The manager: variables and their names, the unique table's entry point,
// garbage collection, marks and the ternary decision tree.

#include "bdd/bddpp.h"
#include "support/Stringpp.h"
#include "support/mapped_block.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <unordered_set>

// ------------------------------------------------------------------ lifecycle

// The capacity is the one the doubling gives, whatever room the vectors
// were reserved: what lies between variables_number and the capacity reads
// as it always did (empty names, id 0).
void bddpp_manager::make_tables(long capacity) {
    variables_capacity = capacity;
    node_by_id.resize(capacity);
    index_by_id.resize(capacity);
    id_by_index.resize(capacity);
    assoc.resize(capacity);
}

bddpp_manager* bddpp_manager::registry[1 << 16];

// The lowest free slot; all of them taken ends the process.
void bddpp_manager::enter_registry() {
    for (unsigned slot = 1; slot < (1u << 16); ++slot) {
        if (!registry[slot]) {
            registry[slot] = this;
            registry_slot = slot;
            return;
        }
    }
    std::cerr << "too many decision diagram managers at once (65535)" << std::endl;
    std::exit(1);
}

bddpp_manager::bddpp_manager()
    : variables_number(0), variables_capacity(0), next_global_id(2), map(nullptr),
      gc_calls(0), one(nullptr) {
    enter_registry();
    make_tables(16);
    map = new bdd_unique_table;
    one = new bdd_node(this, -1, 1, nullptr, nullptr, 1);
    one->references = 1;
}

bddpp_manager::bddpp_manager(bddpp_manager* source)
    : variables_number(source->variables_number),
      variables_capacity(source->variables_capacity), next_global_id(2),
      index_by_id(source->index_by_id), id_by_index(source->id_by_index), map(nullptr),
      id_by_name(source->id_by_name), var_names(source->var_names), gc_calls(0), one(nullptr) {
    made_last_only = source->made_last_only;
    enter_registry();
    node_by_id.assign(variables_capacity, nullptr);
    assoc.assign(variables_capacity, nullptr);
    // The renamed variables' index goes with the names; a full index is
    // rebuilt on demand.
    names_from_creation = source->names_from_creation;
    if (names_from_creation) ids_by_current_name = source->ids_by_current_name;
    map = new bdd_unique_table;
    one = new bdd_node(this, -1, 1, nullptr, nullptr, 1);
    one->references = 1;
    for (long id = 0; id < variables_number; ++id) {
        bdd_node* n = new bdd_node(this, id, -1, one, one, next_global_id++);
        node_by_id[id] = n;
        assoc[id] = n;
    }
}

bddpp_manager::~bddpp_manager() {
    release_operator_tables();
    if (map) {
        std::vector<bdd_node*> all;
        all.reserve(map->size());
        map->for_each([&](bdd_node* n) { all.push_back(n); });
        // Children may go first: nobody is left to care about their counts.
        for (bdd_node* n : all) n->then_node = n->else_node = nullptr;
        for (bdd_node* n : all) delete n;
        delete map;
    }
    delete one;
    registry[registry_slot] = nullptr;
}

const char* bddpp_manager::Bdd_version() { return ::Bdd_version(); }

// ------------------------------------------------------------ creation names

std::size_t creation_names::slot_of(std::string_view name, std::uint32_t hash) const {
    const std::size_t mask = slots.size - 1;
    for (std::size_t i = home(hash);; i = (i + 1) & mask) {
        const std::uint64_t slot = slots.data[i];
        if (slot == 0) return i;
        if (static_cast<std::uint32_t>(slot >> 32) == hash &&
            text_of(static_cast<std::uint32_t>(slot) - 1) == name)
            return i;
    }
}

long creation_names::find(const std::string& name) const {
    if (slots.size == 0) return -1;
    std::uint64_t held = slots.data[slot_of(name, hash32(name))];
    return held == 0 ? -1 : static_cast<long>(static_cast<std::uint32_t>(held)) - 1;
}

void current_names::give(std::size_t id, std::string_view name) {
    if (name.size() > UINT32_MAX) {
        std::cerr << "decision diagram variable name too long" << std::endl;
        std::exit(1);
    }
    if (id >= where.size()) where.resize(id + 1 + (id + 1) / 4, slot{});
    slot s{};
    if (name.size() <= kInline) {
        if (!name.empty()) std::memcpy(s.bytes, name.data(), name.size());
        s.bytes[kInline] = static_cast<char>(name.size() + 1);
        where[id] = s;
        return;
    }
    auto length = static_cast<std::uint32_t>(name.size());
    const std::uint64_t at = texts.size() + 1;
    std::memcpy(s.bytes, &at, sizeof at);
    where[id] = s;
    texts.append(reinterpret_cast<const char*>(&length), sizeof length);
    texts.append(name.data(), name.size());
}

std::pair<long, bool> creation_names::try_emplace(const std::string& name) {
    if (4 * (ends.size() + 1) > 3 * slots.size) grow();
    const std::uint32_t hash = hash32(name);
    std::size_t i = slot_of(name, hash);
    if (slots.data[i] != 0) return {static_cast<long>(static_cast<std::uint32_t>(slots.data[i])) - 1, false};
    if (ends.size() >= UINT32_MAX - 1) {
        std::cerr << "too many decision diagram variables" << std::endl;
        std::exit(1);
    }
    if (name.size() > UINT32_MAX - chars.size()) {
        std::cerr << "decision diagram variable names too long" << std::endl;
        std::exit(1);
    }
    chars.append(name.data(), name.size());
    ends.push_back(static_cast<std::uint32_t>(chars.size()));
    slots.data[i] = static_cast<std::uint64_t>(hash) << 32 | ends.size();
    return {static_cast<long>(ends.size()) - 1, true};
}

creation_names::slot_block::slot_block(std::size_t count)
    : data(static_cast<std::uint64_t*>(bdd_block_alloc(count * sizeof(std::uint64_t)))), size(count) {}

creation_names::slot_block::slot_block(const slot_block& other) : slot_block(other.size) {
    if (size != 0) std::memcpy(data, other.data, size * sizeof(std::uint64_t));
}

void creation_names::grow() {
    slot_block old(slots.size == 0 ? 64 : 2 * slots.size);
    std::swap(old.data, slots.data);
    std::swap(old.size, slots.size);
    bits = 0;
    while ((std::size_t(1) << bits) < slots.size) ++bits;
    const std::size_t bytes = slots.size * sizeof(std::uint64_t);
    if (bytes >= (std::size_t(2) << 20)) make_present_soon(slots.data, bytes);
    const std::size_t mask = slots.size - 1;
    for (std::size_t k = 0; k < old.size; ++k) {
        const std::uint64_t slot = old.data[k];
        if (slot == 0) continue;
        std::size_t i = home(static_cast<std::uint32_t>(slot >> 32));
        while (slots.data[i] != 0) i = (i + 1) & mask;
        slots.data[i] = slot;
    }
    // Its pages are present: the nodes made next take them.
    bdd_block_to_nodes(old.data);
    old.data = nullptr;
}

// ------------------------------------------------------------------ variables

// The tables double before the name is looked up, even for a known name.
bdd_node* bddpp_manager::new_variable(const std::string& name, long index, bool last) {
    if (variables_number >= variables_capacity) make_tables(variables_capacity * 2);
    auto entry = id_by_name.try_emplace(name);
    if (!entry.second) return node_by_id[entry.first];
    return add_variable(name, index, last);
}

// Index_var_by_name, then New_node_var_last when the name is unknown, with
// a single look-up of the name.
long bddpp_manager::Index_var_or_new_last(const std::string& name, bool& created) {
    auto entry = id_by_name.try_emplace(name);
    created = entry.second;
    if (!created) return index_by_id[entry.first];
    if (variables_number >= variables_capacity) make_tables(variables_capacity * 2);
    return Node_index(add_variable(name, variables_number, true));
}

void bddpp_manager::prefetch_new_variables(std::string_view first, std::string_view second) const {
    id_by_name.prefetch(first);
    id_by_name.prefetch(second);
    if (!map) return;
    for (long id = variables_number; id < variables_number + 2; ++id)
        __builtin_prefetch(&map->slots[map->home(bdd_unique_table::hash_of(id, -1, one, one))]);
}

// The variable of a name that id_by_name already holds under the next id.
bdd_node* bddpp_manager::add_variable(const std::string& name, long index, bool last) {
    long id = variables_number;
    if (names_from_creation) {
        // A creation name is found through id_by_name: only a name given
        // to the free slot before has to leave the index.
        if (!ids_by_current_name.empty()) unindex_name(std::string(var_name(id)), id);
        var_names.forget(static_cast<std::size_t>(id));
    } else {
        set_var_name(id, name);
    }
    bdd_node* node = new bdd_node(this, id, -1, one, one, next_global_id);
    node_by_id[id] = node;
    next_global_id++;
    if (last) {
        index_by_id[id] = id;
        id_by_index[id] = id;
    } else {
        if (index < variables_number) made_last_only = false;
        for (long i = index; i < variables_number; ++i) index_by_id[id_by_index[i]]++;
        index_by_id[id] = index;
        for (long i = variables_number; i > index; --i) id_by_index[i] = id_by_index[i - 1];
        id_by_index[index] = id;
    }
    // Written by id while its readers go by index: the two agree as long
    // as variables are only ever added last.
    assoc[id] = node_by_id[id];
    variables_number++;
    return node;
}

bdd_node* bddpp_manager::New_node_var_last(const std::string& name) {
    return new_variable(name, variables_number, true);
}

bdd_node* bddpp_manager::New_node_var_before(long index, const std::string& name) {
    if (index < 0 || index > variables_number) {
        std::cerr << "Error in bddpp_manager::New_node_var_before(): index " << index
                  << " out of range!" << std::endl;
        return nullptr;
    }
    return new_variable(name, index, false);
}

bdd_node* bddpp_manager::New_node_var_after(long index, const std::string& name) {
    if (index == variables_number - 1) return New_node_var_last(name);
    if (index >= variables_number || index < -1) {
        std::cerr << "Error in bddpp_manager::New_node_var_after(): index " << index
                  << " out of range!" << std::endl;
        return nullptr;
    }
    return New_node_var_before(index + 1, name);
}

namespace {
bdd literal_of(bddpp_manager* m, bdd_node* n) { return n ? bdd(m, 1, n) : bdd(); }
}  // namespace

bdd bddpp_manager::New_var_last(const std::string& name) {
    return literal_of(this, New_node_var_last(name));
}
bdd bddpp_manager::New_var_before(long index, const std::string& name) {
    return literal_of(this, New_node_var_before(index, name));
}
bdd bddpp_manager::New_var_before(const bdd& f, const std::string& name) {
    return New_var_before(Node_index(f.node()), name);
}
bdd bddpp_manager::New_var_after(long index, const std::string& name) {
    return literal_of(this, New_node_var_after(index, name));
}
bdd bddpp_manager::New_var_after(const bdd& f, const std::string& name) {
    return New_var_after(Node_index(f.node()), name);
}

bdd bddpp_manager::Bdd_var_by_id(long id) {
    if (id < 0 || id >= variables_number) {
        std::cerr << "calling bddpp_manager::Bdd_var_by_id() with id= " << id
                  << " :out of range!" << std::endl;
        return Bdd_zero();
    }
    return bdd(this, 1, node_by_id[id]);
}

bdd bddpp_manager::Bdd_var_by_index(long index) {
    if (index == -1) return Bdd_one();
    if (index < 0 || index >= variables_number) {
        std::cerr << "calling bddpp_manager::Bdd_var_by_index() with index= " << index
                  << " :out of range!" << std::endl;
        return bdd();
    }
    return bdd(this, 1, node_by_id[id_by_index[index]]);
}

bdd bddpp_manager::Bdd_var_by_name(const std::string& name) {
    long id = id_by_name.find(name);
    if (id < 0) return Bdd_zero();
    return Bdd_var_by_id(id);
}

long bddpp_manager::Id_var_by_name(const std::string& name) const {
    return id_by_name.find(name);
}

long bddpp_manager::Index_var_by_name(const std::string& name) const {
    long id = id_by_name.find(name);
    return id < 0 ? -1 : index_by_id[id];
}

// The name look-ups check nothing; out of the table they answer an empty
// name instead of reading beyond it.
std::string bddpp_manager::Name_var_by_id(long id) const {
    if (id < 0 || id >= variables_capacity) return "";
    return std::string(var_name(id));
}

std::string bddpp_manager::Name_var_by_index(long index) const {
    if (index < 0 || index >= variables_capacity) return "";
    return Name_var_by_id(id_by_index[index]);
}

std::string bddpp_manager::Name_var_by_bdd(const bdd& f) {
    bdd_node* n = f.node();
    if (f.manager_ref() == this && n == one) return f.link_type() == 1 ? "1" : "0";
    if (f.manager_ref() != this || !n || n->id < 0 || n->id >= variables_number) {
        std::cerr << "error in bddpp_manager::Name_var_by_bdd()" << std::endl
                  << "bdd defined by: " << f << ", is not correct ..." << std::endl
                  << "(typebdd = " << (n ? n->id : -3) << ")" << std::endl;
        std::exit(1);
    }
    return std::string(var_name(n->id));
}

long bddpp_manager::Bdd_if_id(const bdd& f) {
    if (f.manager_ref() != this || !f.node()) {
        std::cerr << "Error in bddpp_manager::Bdd_if_id(): bad Bdd manager or bdd not "
                     "initialized!"
                  << std::endl;
        return -3;
    }
    return f.node()->id < 0 ? -1 : f.node()->id;
}

long bddpp_manager::Id_var_by_bdd(const bdd& f) { return Bdd_if_id(f); }

long bddpp_manager::Bdd_if_index(const bdd& f) {
    if (f.manager_ref() != this || !f.node()) {
        std::cerr << "Error in bddpp_manager::Bdd_if_index(): bad Bdd manager or bdd "
                     "not initialized!"
                  << std::endl;
        return -3;
    }
    return Node_index(f.node());
}

long bddpp_manager::Index_var_by_bdd(const bdd& f) { return Bdd_if_index(f); }

// ------------------------------------------------------------------- renaming

// A name's holders: the lowest id, then the others from the highest down,
// so that the lowest moves out and in at the back of the vector.
void bddpp_manager::index_name(const std::string& name, long id) {
    auto entry = ids_by_current_name.try_emplace(name, name_holders{id, {}});
    if (entry.second) return;
    name_holders& h = entry.first->second;
    if (id == h.lowest) return;
    if (id < h.lowest) {
        h.others.push_back(h.lowest);
        h.lowest = id;
        return;
    }
    auto at = std::lower_bound(h.others.begin(), h.others.end(), id, std::greater<long>());
    if (at == h.others.end() || *at != id) h.others.insert(at, id);
}

void bddpp_manager::unindex_name(const std::string& name, long id) {
    auto entry = ids_by_current_name.find(name);
    if (entry == ids_by_current_name.end()) return;
    name_holders& h = entry->second;
    if (id == h.lowest) {
        if (h.others.empty()) {
            ids_by_current_name.erase(entry);
            return;
        }
        h.lowest = h.others.back();
        h.others.pop_back();
        return;
    }
    auto at = std::lower_bound(h.others.begin(), h.others.end(), id, std::greater<long>());
    if (at != h.others.end() && *at == id) h.others.erase(at);
}

void bddpp_manager::set_var_name(long id, const std::string& name) {
    if (names_indexed || names_from_creation) {
        unindex_name(std::string(var_name(id)), id);
        index_name(name, id);
    }
    // A variable's own creation name is no change (the variable being made
    // has its name entered already).
    if (id < id_by_name.size() && id_by_name.text_of(static_cast<std::size_t>(id)) == name)
        var_names.forget(static_cast<std::size_t>(id));
    else
        var_names.give(static_cast<std::size_t>(id), name);
}

void bddpp_manager::drop_names_index() {
    ids_by_current_name.clear();
    names_indexed = false;
    names_from_creation = false;
}

// The lowest id below variables_number whose current name is `name`, or -1:
// what a scan of the ids in ascending order finds first.
long bddpp_manager::lowest_id_named(const std::string& name) {
    if (names_from_creation) {
        // The creation holder counts if it still bears the name; a renamed
        // holder of the name is in the index.
        long best = -1;
        long created = id_by_name.find(name);
        if (created >= 0 && created < variables_number && var_name(created) == name) best = created;
        if (!ids_by_current_name.empty()) {
            auto renamed = ids_by_current_name.find(name);
            if (renamed != ids_by_current_name.end() && renamed->second.lowest < variables_number &&
                (best < 0 || renamed->second.lowest < best))
                best = renamed->second.lowest;
        }
        return best;
    }
    if (!names_indexed) {
        ids_by_current_name.reserve(static_cast<std::size_t>(variables_number) + 1);
        // Downward, each id comes below the ones of its name already there.
        for (long id = variables_capacity - 1; id >= 0; --id) index_name(std::string(var_name(id)), id);
        names_indexed = true;
    }
    auto found = ids_by_current_name.find(name);
    if (found == ids_by_current_name.end()) return -1;
    long id = found->second.lowest;
    return id < variables_number ? id : -1;
}

// The plain scan, for comparison with the index.
long bddpp_manager::lowest_id_named_literal(const std::string& name) const {
    for (long id = 0; id < variables_number; ++id)
        if (var_name(id) == name) return id;
    return -1;
}

void bddpp_manager::Rename_var(const std::string& new_name, const std::string& old_name) {
    if (lowest_id_named(new_name) >= 0) {
        std::cerr << "in bdd_manager::Rename_var(): " << "WARNING " << new_name
                  << " ALREADY DEFINED !" << std::endl
                  << "renaming process aborted ..." << std::endl;
        return;
    }
    long id = lowest_id_named(old_name);
    if (id >= 0) {
        set_var_name(id, new_name);
        return;
    }
    std::cerr << "in bdd_manager::Rename_var(): " << "WARNING " << old_name
              << " NOT FOUND !" << std::endl
              << "renaming process aborted ..." << std::endl;
}

void bddpp_manager::Change_name_by_index(long index, const std::string& name) {
    if (index < 0 || index >= variables_capacity) return;
    Change_name_by_id(id_by_index[index], name);
}

void bddpp_manager::Change_name_by_id(long id, const std::string& name) {
    if (id < 0 || id >= variables_capacity) return;
    set_var_name(id, name);
}

void bddpp_manager::Replace_char_in_all_names(char from, char to) {
    drop_names_index();
    for (long id = 0; id < variables_number; ++id)
        if (!var_name(id).empty()) set_var_name(id, substitute_char(std::string(var_name(id)), from, to));
}

void bddpp_manager::No_begin_underscore_name() {
    drop_names_index();
    for (long id = 0; id < variables_number; ++id)
        if (!var_name(id).empty() && var_name(id)[0] == '_') set_var_name(id, "v" + std::string(var_name(id)));
}

bdd bddpp_manager::Bdd_dup(const bdd& f) {
    std::cerr << "Warning: bddpp_manager::Bdd_dup() is became useless ..." << std::endl;
    return f;
}

void bddpp_manager::Bdd_free(const bdd& f) {
    std::cerr << "Warning: bddpp_manager::Bdd_free() is now became useless" << std::endl
              << f << std::endl;
}

// --------------------------------------------------------------- unique table

bdd_node* bddpp_manager::Find_or_create_bdd_node(long index, int then_link, int else_link,
                                                 bdd_node* then_node, bdd_node* else_node,
                                                 int& link) {
    link *= then_link;
    if (index == -1) return one;
    if (index < 0 || index >= variables_number || !then_node || !else_node) return nullptr;
    if (then_node == one && else_node == one) {
        if (then_link * else_link == 1) return one;
        return node_by_id[id_of_index(index)];
    }
    long then_index = Node_index(then_node);
    long else_index = Node_index(else_node);
    bool then_fault = then_node != one && index >= then_index;
    if (then_fault || (else_node != one && index >= else_index)) {
        std::cerr << "FATAL ERROR: Bad call of bddpp_manager::Find_or_create_bdd_node():"
                  << std::endl
                  << "  index " << index << " is not less than ";
        if (then_fault)
            std::cerr << " its then node index (" << then_index << ")";
        else
            std::cerr << " its else node index (" << else_index << ")";
        std::cerr << std::endl;
        return nullptr;
    }
    return find_or_make(id_of_index(index), then_link * else_link, then_node, else_node);
}

// A node taken out of the table, or put out of it by another one of its
// key, may stand in the computed table as a result: that table goes.
void bddpp_manager::Map_integrate(bdd_node* node) {
    if (map && map->insert(node)) computed_clear();
}

void bddpp_manager::Map_suppress(bdd_node* node) {
    if (!map) {
        std::cerr << "warning! map does not exist !!!" << std::endl;
        return;
    }
    if (map->erase(node)) computed_clear();
}

// ------------------------------------------------------------------------- gc

// A node is freed once nothing refers to it; freeing it lowers its
// children's counts, which may free them in turn. Working through that
// cascade with a list reaches the same fixpoint as repeated sweeps of the
// whole table. A node enters the list once: at the start if its count is
// not above zero, or when its count falls from 1 to 0. Variables' own
// nodes always stay.
void bddpp_manager::Bdd_gc() {
    if (!map) return;
    computed_clear();
    gc_list& work = gc_work;
    work.clear();
    auto collectable = [&](bdd_node* n) {
        return n && n->id >= 0 && n->id < variables_number && node_by_id[n->id] != n;
    };
    map->for_each([&](bdd_node* n) {
        if (n->references <= 0 && collectable(n)) work.push_back(n);
    });
    if (!plain_operators) {
        collect_in_one_sweep(work, collectable);
        return;
    }
    while (!work.empty()) {
        bdd_node* n = work.back();
        work.pop_back();
        bdd_node* kids[2] = {n->then_node, n->else_node};
        Map_suppress(n);
        delete n;
        // A node with its two links on one child let go of it twice.
        if (kids[1] == kids[0]) kids[1] = nullptr;
        for (bdd_node* k : kids)
            if (collectable(k) && k->references == 0) work.push_back(k);
    }
    gc_calls++;
}

// The same cascade, and the same entries out of the table, as one erase
// per freed node: the nodes to free are found first (their children's
// counts lowered as their deletion would, and their homes in the table
// worked out while they are at hand), their own entries are then buried,
// each home's slot fetched some nodes ahead, the buried places are freed
// in one pass over the slots that reads no node, and a freed node that
// was no longer in the table then erases the entry of its key, as erase()
// does, whatever node holds it. The nodes are deleted last, in the
// cascade's order.
template <class Collectable>
void bddpp_manager::collect_in_one_sweep(gc_list& work, Collectable collectable) {
    gc_list& freed = gc_freed;
    auto& homes = gc_homes;
    freed.clear();
    homes.clear();
    while (!work.empty()) {
        bdd_node* n = work.back();
        work.pop_back();
        freed.push_back(n);
        homes.push_back(map->home(bdd_unique_table::hash_of(n)));
        bdd_node* kids[2] = {n->then_node, n->else_node};
        for (bdd_node* k : kids)
            if (k) k->references--;
        if (kids[1] == kids[0]) kids[1] = nullptr;
        for (bdd_node* k : kids)
            if (collectable(k) && k->references == 0) work.push_back(k);
    }
    constexpr std::size_t ahead = 8;
    gc_list& outside = gc_outside; // freed, and not in the table
    outside.clear();
    std::size_t removed = 0;
    for (std::size_t k = 0; k < freed.size(); ++k) {
        if (k + ahead < freed.size()) __builtin_prefetch(map->slot_address(homes[k + ahead]));
        if (map->bury(freed[k], homes[k]))
            ++removed;
        else
            outside.push_back(freed[k]);
    }
    map->clear_buried();
    map->count_removals(removed);
    for (bdd_node* n : outside) map->erase(n);
    bdd_node::delete_released(freed.data(), freed.size());
    gc_calls++;
}

// ---------------------------------------------------------------------- marks

void bddpp_manager::Bdd_clear_marks(bdd_node* node) {
    if (!node) return;
    if (!node->manager_slot) {
        node->mark = 0;
        return;
    }
    std::vector<bdd_node*> stack{node};
    std::unordered_set<const bdd_node*> seen;
    while (!stack.empty()) {
        bdd_node* n = stack.back();
        stack.pop_back();
        if (!seen.insert(n).second) continue;
        n->mark = 0;
        if (n->id < 0) continue;
        if (n->then_node) stack.push_back(n->then_node);
        if (n->else_node) stack.push_back(n->else_node);
    }
}

void bddpp_manager::Bdd_clear_marks(const bdd& f) { Bdd_clear_marks(f.node()); }

void bddpp_manager::Bdd_global_clear_marks() {
    unsigned next = mark_value + 1;
    if (next <= 255) {
        mark_value = next;
        return;
    }
    one->mark = 0;
    if (map) map->for_each([](bdd_node* n) { n->mark = 0; });
    mark_value = 1;
}

// Numbers in depth-first order, node before its then cone before its else
// cone; the stack keeps that order.
long bddpp_manager::Bdd_incremental_id(bdd_node* node, long next) {
    if (!node) {
        std::cerr << "Warning: call bddpp_manager::Bdd_incremental_id() with null reference!"
                  << std::endl;
        return next;
    }
    if (incremental_ids.size() < static_cast<std::size_t>(next_global_id))
        incremental_ids.resize(static_cast<std::size_t>(next_global_id), 0);
    std::vector<bdd_node*> stack{node};
    while (!stack.empty()) {
        bdd_node* n = stack.back();
        stack.pop_back();
        if (n->mark == mark_value) continue;
        n->mark = mark_value;
        if (n->global_id >= 0 && static_cast<std::size_t>(n->global_id) < incremental_ids.size())
            incremental_ids[static_cast<std::size_t>(n->global_id)] = static_cast<std::int32_t>(next);
        next++;
        if (n->id < 0) continue;
        if (n->else_node) stack.push_back(n->else_node);
        if (n->then_node) stack.push_back(n->then_node);
    }
    return next;
}

long bddpp_manager::Bdd_node_size(bdd_node* node) {
    Bdd_clear_marks(node);
    return Bdd_incremental_id(node, 0);
}

long bddpp_manager::Bdd_size(const bdd& f) { return Bdd_node_size(f.node()); }

bool bddpp_manager::Bdd_is_correct(const bdd& f) {
    bdd_node* n = f.node();
    if (!n) {
        std::cerr << "Warning: call  bddpp_manager::Bdd_is_correct() with a null reference!"
                  << std::endl;
        return false;
    }
    Bdd_clear_marks(n);
    Bdd_incremental_id(n, 1);
    return n->is_correct();
}

// ------------------------------------------------------------------------ Tdd

// The tree is built, printed and destroyed with explicit stacks: its
// depth follows the number of variables.
Tdd::Tdd(bddpp_manager* m, bdd f)
    : manager(m), then_tdd(nullptr), else_tdd(nullptr), dont_care_tdd(nullptr) {
    if (!m) {
        std::cerr << "in Tdd::Tdd() : error: bdd manager not yet created !" << std::endl;
        return;
    }
    // A task either fills a tree node from its function, or, once both of
    // its branches are built, makes its don't-care branch.
    struct task {
        Tdd* tree;
        bdd f;
        bool dont_care;
    };
    std::vector<task> todo{{this, f, false}};
    while (!todo.empty()) {
        task t = std::move(todo.back());
        todo.pop_back();
        if (t.dont_care) {
            bdd e = m->Bdd_else(t.f);
            bdd th = m->Bdd_then(t.f);
            bdd both = m->Bdd_and(e, th);
            t.tree->dont_care_tdd = new Tdd(m);
            todo.push_back({t.tree->dont_care_tdd, both, false});
            continue;
        }
        if (t.f.node() == m->one) {
            t.tree->variable = t.f;
            continue;
        }
        t.tree->variable = m->Bdd_if(t.f);
        t.tree->then_tdd = new Tdd(m);
        t.tree->else_tdd = new Tdd(m);
        bdd th = m->Bdd_then(t.f);
        bdd e = m->Bdd_else(t.f);
        todo.push_back({t.tree, t.f, true});
        todo.push_back({t.tree->else_tdd, e, false});
        todo.push_back({t.tree->then_tdd, th, false});
    }
}

Tdd::Tdd(bddpp_manager* m)
    : manager(m), then_tdd(nullptr), else_tdd(nullptr), dont_care_tdd(nullptr) {}

Tdd::~Tdd() {
    std::vector<Tdd*> owned;
    auto take = [&](Tdd* t) {
        Tdd* kids[3] = {t->then_tdd, t->else_tdd, t->dont_care_tdd};
        t->then_tdd = t->else_tdd = t->dont_care_tdd = nullptr;
        for (Tdd* k : kids)
            if (k) owned.push_back(k);
    };
    take(this);
    while (!owned.empty()) {
        Tdd* t = owned.back();
        owned.pop_back();
        take(t);
        delete t;
    }
}

void Tdd::Print_bdd_structure(std::ostream& out, int indent) const {
    if (!manager) return;
    struct line {
        const Tdd* tree;
        int indent;
        const char* word; // null: print the tree itself
    };
    std::vector<line> todo{{this, indent, nullptr}};
    while (!todo.empty()) {
        line l = todo.back();
        todo.pop_back();
        std::string blanks(l.indent > 0 ? l.indent : 0, ' ');
        const Tdd* t = l.tree;
        if (l.word) {
            out << blanks << l.word << manager->Name_var_by_bdd(t->variable) << std::endl;
            continue;
        }
        if (t->variable.node() == manager->one || !t->then_tdd) {
            out << blanks << (t->variable.link_type() == 1 ? "1" : "0") << std::endl;
            continue;
        }
        todo.push_back({t->dont_care_tdd, l.indent + 2, nullptr});
        todo.push_back({t, l.indent, "dont care "});
        todo.push_back({t->else_tdd, l.indent + 2, nullptr});
        todo.push_back({t, l.indent, "else if !"});
        todo.push_back({t->then_tdd, l.indent + 2, nullptr});
        todo.push_back({t, l.indent, "if "});
    }
}
