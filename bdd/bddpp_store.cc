// Nodes, their pool, signatures, the unique table and the handles.

#include "bdd/bddpp.h"
#include "bdd/bddpp_memory.h"
#include "bdd/bdd_stamped_table.h"
#include "support/mapped_block.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <cstdint>

const char* Bdd_version() { return "4.7"; }

// ------------------------------------------------------------------ signature

long bdd_node_signature(long id, int else_link_type, bdd_node* then_node,
                        bdd_node* else_node) {
    if (id < 0) return id;
    long then_gid = then_node ? then_node->global_id : 0;
    long else_gid = else_node ? else_node->global_id : 0;
    if (then_gid < 0) {
        std::cerr << "ERROR in bdd_node_signature(): then node have a bad global id!"
                  << std::endl;
        std::exit(1);
    }
    if (else_gid < 0) {
        std::cerr << "ERROR in bdd_node_signature(): else node have a bad global id!"
                  << std::endl;
        std::exit(1);
    }
    // Unmasked on purpose: the printed statistics read these fields back,
    // and past 2^20 they overlap (the table does not rely on them).
    unsigned long key = static_cast<unsigned long>(id) << 41;
    key |= static_cast<unsigned long>(then_gid) << 21;
    key |= static_cast<unsigned long>(else_gid) << 1;
    key |= static_cast<unsigned long>(((else_link_type + 1) >> 1) & 1);
    return static_cast<long>(key);
}

// ---------------------------------------------------------------- big blocks

namespace {

// Sizes of the blocks mapped from the kernel, by address, to unmap them.
// Left alive at exit: tables of static managers go after it.
std::unordered_map<void*, std::size_t>& mapped_blocks() {
    static auto* blocks = new std::unordered_map<void*, std::size_t>;
    return *blocks;
}

// Room a set-up made present ahead (bdd_reserve_nodes), handed out to the
// node pool and the tables alike: whole huge pages from its end, smaller
// blocks in whole pages from its start. What is handed out was never
// written, so it reads as zero.
struct clean_room {
    char* from = nullptr;
    char* to = nullptr;
    void* take(std::size_t bytes) {
        if (static_cast<std::size_t>(to - from) < bytes) return nullptr;
        to -= bytes;
        return to;
    }
    void* take_pages(std::size_t bytes) {
        if (static_cast<std::size_t>(to - from) < bytes) return nullptr;
        from += bytes;
        return from - bytes;
    }
};

clean_room& room() {
    static clean_room r;
    return r;
}

constexpr std::size_t huge = std::size_t(2) << 20;

// A fresh mapping of whole huge pages, offered to the kernel as such.
char* map_huge(std::size_t bytes) {
    void* p = map_aligned(bytes, huge);
    if (!p) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
    madvise(p, bytes, MADV_HUGEPAGE);
#endif
    return static_cast<char*>(p);
}

}  // namespace

void* bdd_block_alloc(std::size_t bytes, bool zeroed) {
    void* p = nullptr;
    if (bytes >= huge) {
        bytes = (bytes + huge - 1) / huge * huge;
        p = room().take(bytes);
        if (!p) p = map_huge(bytes);
        mapped_blocks().emplace(p, bytes);
        return p;
    }
    // A block that malloc would map afresh on its own.
    constexpr std::size_t page = 4096, mapped_by_malloc = std::size_t(128) << 10;
    if (bytes >= mapped_by_malloc) {
        const std::size_t pages = (bytes + page - 1) / page * page;
        if ((p = room().take_pages(pages))) {
            mapped_blocks().emplace(p, pages);
            return p;
        }
    }
    p = std::malloc(bytes);
    if (!p) throw std::bad_alloc();
    if (zeroed) std::memset(p, 0, bytes);
    return p;
}

void bdd_block_free(void* block) {
    if (!block) return;
    auto& blocks = mapped_blocks();
    auto it = blocks.find(block);
    if (it == blocks.end()) {
        std::free(block);
        return;
    }
    munmap(block, it->second);
    blocks.erase(it);
}

// ----------------------------------------------------------------- node pool

// Millions of nodes, packed in the pool's blocks.
static_assert(sizeof(bdd_node) == 40, "bdd_node is 40 bytes");

namespace {

// Nodes are carved out of large blocks in address order, and freed ones
// are recycled through a free list; blocks go back to the system only at
// the end of the process. The blocks that a unique table leaves when it
// grows come first: their pages are already there, where a new block's
// would each cost a fault and a clearing.
struct node_pool {
    struct free_slot { free_slot* next; };
    free_slot* free_list = nullptr;
    char* fresh = nullptr;     // next never-used node of the current block
    char* fresh_end = nullptr;
    char* ahead = nullptr;     // the next fresh block, mapped early
    std::size_t blocks_taken = 0;
    static constexpr std::size_t blocks_before_ahead = 2;
    std::vector<std::pair<char*, std::size_t>> spare; // left by tables, not yet used
    static constexpr std::size_t block_bytes = std::size_t(4) << 20;

    void* take() {
        if (free_list) {
            free_slot* s = free_list;
            free_list = s->next;
            return s;
        }
        if (fresh == fresh_end) {
            std::size_t bytes = block_bytes;
            if (!spare.empty()) {
                fresh = spare.back().first;
                bytes = spare.back().second;
                spare.pop_back();
            } else if (void* clean = room().take(block_bytes)) {
                fresh = static_cast<char*>(clean);
            } else {
                // Once a manager has outgrown its first blocks, the next one
                // is mapped a block ahead, its pages made present on the
                // other processor meanwhile.
                fresh = ahead != nullptr ? ahead : static_cast<char*>(bdd_block_alloc(block_bytes, false));
                ahead = nullptr;
                if (++blocks_taken >= blocks_before_ahead) {
                    ahead = static_cast<char*>(bdd_block_alloc(block_bytes, false));
                    make_present_soon(ahead, block_bytes);
                }
            }
            fresh_end = fresh + bytes / sizeof(bdd_node) * sizeof(bdd_node);
        }
        void* p = fresh;
        fresh += sizeof(bdd_node);
        return p;
    }
    void give(void* p) {
        free_slot* s = static_cast<free_slot*>(p);
        s->next = free_list;
        free_list = s;
    }
};

node_pool& pool() {
    static node_pool* p = new node_pool;
    return *p;
}

// A table's block that the kernel mapped goes to the node pool instead of
// back to the kernel; any other block is freed.
void give_block_to_nodes(void* block) {
    auto& blocks = mapped_blocks();
    auto it = blocks.find(block);
    if (it == blocks.end()) {
        bdd_block_free(block);
        return;
    }
    pool().spare.emplace_back(static_cast<char*>(block), it->second);
    blocks.erase(it);
}

}  // namespace

void bdd_block_to_nodes(void* block) {
    if (block) give_block_to_nodes(block);
}

void bdd_reserve_nodes(std::size_t count) {
    const std::size_t bytes = (count * sizeof(bdd_node) + huge - 1) / huge * huge;
    if (bytes == 0) return;
    char* block = map_huge(bytes);
    make_present_now(block, bytes);
    clean_room& r = room();
    if (r.to != r.from) munmap(r.from, static_cast<std::size_t>(r.to - r.from));
    r.from = block;
    r.to = block + bytes;
}

void* bdd_node::operator new(std::size_t size) {
    if (size != sizeof(bdd_node)) return ::operator new(size);
    return pool().take();
}

void bdd_node::operator delete(void* p) noexcept {
    if (p) pool().give(p);
}

void bdd_node::delete_released(bdd_node* const* nodes, std::size_t count) {
    node_pool& nodes_pool = pool();
    for (std::size_t k = 0; k < count; ++k) {
        bdd_node* n = nodes[k];
        if (n->depends_place) n->release_depends();
        nodes_pool.give(n); // nothing else for the destructor to do
    }
}

// ---------------------------------------------------------------------- nodes

bdd_node::bdd_node()
    : then_node(nullptr), else_node(nullptr), global_id(0), id(-3), references(0),
      else_link_type(1), mark(0), manager_slot(0) {}

bdd_node::bdd_node(bddpp_manager* m, long id_, int else_link, bdd_node* then_n,
                   bdd_node* else_n, long gid)
    : then_node(then_n), else_node(else_n), global_id(static_cast<std::int32_t>(gid)), id(static_cast<int>(id_)),
      references(0), else_link_type(else_link), mark(0), manager_slot(slot_of(m)) {
    if (gid > max_global_id) too_many_nodes();
    // Checks the children's global ids: a negative one ends the process.
    bdd_node_signature(id, else_link_type, then_node, else_node);
    if (id >= 0 && m) m->Map_integrate(this);
}

void bdd_node::too_many_nodes() {
    std::cerr << "too many decision nodes in one manager (" << max_global_id << ")" << std::endl;
    std::exit(1);
}

bdd_node::~bdd_node() {
    if (id >= 0) {
        if (then_node) then_node->references--;
        if (else_node) else_node->references--;
    }
    if (depends_place) release_depends();
}

void bdd_node::release_depends() {
    bddpp_manager* m = manager();
    m->depends_store[depends_place - 1] = std::vector<int>();
    m->depends_free.push_back(depends_place);
    depends_place = 0;
}

bool bdd_node::operator==(const bdd_node& other) const {
    return id == other.id && else_link_type == other.else_link_type &&
           then_node == other.then_node && else_node == other.else_node;
}

namespace {

struct node_home {
    std::size_t operator()(const bdd_node* n) const {
        std::size_t h = (reinterpret_cast<std::uintptr_t>(n) >> 3) * 0x9E3779B97F4A7C15ull;
        return h ^ (h >> 29);
    }
};

struct nothing {};

// The nodes met by one walk of a cone.
using visited_nodes = stamped_table<const bdd_node*, nothing, node_home>;

}  // namespace

const std::vector<int>& bdd_node::depends() const {
    static const std::vector<int> none;
    bddpp_manager* m = manager();
    if (!m || id < 0) return none;
    if (const std::vector<int>* known = m->known_depends(this)) return *known;
    // One walk of the cone; a node below that already knows its set gives
    // it whole. Only the asked node keeps the result.
    std::vector<int> ids;
    static std::vector<const bdd_node*> stack;
    static visited_nodes seen;
    stack.assign(1, this);
    seen.start();
    while (!stack.empty()) {
        const bdd_node* n = stack.back();
        stack.pop_back();
        if (!seen.insert(n, nothing{}) || n->id < 0) continue;
        if (n != this && n->depends_place) {
            const std::vector<int>& below = *m->known_depends(n);
            ids.insert(ids.end(), below.begin(), below.end());
            continue;
        }
        ids.push_back(n->id);
        if (n->else_node) stack.push_back(n->else_node);
        if (n->then_node) stack.push_back(n->then_node);
    }
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    ids.shrink_to_fit(); // kept with the node for good
    if (m->depends_free.empty()) {
        m->depends_store.push_back(std::move(ids));
        depends_place = static_cast<std::uint32_t>(m->depends_store.size());
    } else {
        depends_place = m->depends_free.back();
        m->depends_free.pop_back();
        m->depends_store[depends_place - 1] = std::move(ids);
    }
    return m->depends_store[depends_place - 1];
}

bool bdd_node::depends_on_id(long v) const {
    const std::vector<int>& d = depends();
    return std::binary_search(d.begin(), d.end(), v);
}

// The whole cone is checked node by node: a node is correct when every
// node of its cone passes the local test, so one visit per node answers
// what a walk along every path would.
bool bdd_node::is_correct() const {
    bddpp_manager* m = manager();
    if (!m) return false;
    std::vector<const bdd_node*> stack{this};
    std::unordered_set<const bdd_node*> seen;
    while (!stack.empty()) {
        const bdd_node* n = stack.back();
        stack.pop_back();
        if (!seen.insert(n).second) continue;
        if (!n->manager_slot) return false;
        if (n->id >= 0 && n->id < m->variables_number) {
            const bdd_node* kids[2] = {n->then_node, n->else_node};
            long own = m->Node_index(n);
            for (const bdd_node* k : kids) {
                if (!k || k == n) return false;
                if (k->id == -1) continue;
                if (m->Node_index(k) <= own) return false;
                stack.push_back(k);
            }
        } else if (n->id != -1) {
            return false;
        }
        if (n->id != -1 && n->signature() < 0) return false;
    }
    return true;
}

// --------------------------------------------------------------- unique table

bdd_unique_table::bdd_unique_table() : capacity(1u << 13), count(0), shift(64 - 13) {
    slots = static_cast<entry*>(bdd_block_alloc(capacity * sizeof(entry)));
}

bdd_unique_table::~bdd_unique_table() { bdd_block_free(slots); }

bdd_node* bdd_unique_table::find(long id, int else_link_type, bdd_node* then_node,
                                 bdd_node* else_node) const {
    std::size_t h, free_slot;
    return find(id, else_link_type, then_node, else_node, h, free_slot);
}

void bdd_unique_table::unplaceable_node() {
    std::cerr << "decision node above the 48-bit address space" << std::endl;
    std::exit(1);
}

void bdd_unique_table::insert_absent(bdd_node* node, std::size_t hash) {
    if (4 * (count + 1) > 3 * capacity) grow();
    place(entry_of(node, hash), home(hash));
    ++count;
}

bool bdd_unique_table::insert(bdd_node* node) {
    std::size_t h, free_slot;
    bdd_node* old = find(node->id, node->else_link_type, node->then_node,
                         node->else_node, h, free_slot);
    if (old == node) return false;
    if (old) erase(old);
    insert_absent(node, h);
    return old != nullptr;
}

bool bdd_unique_table::erase(bdd_node* node) {
    std::size_t hash = hash_of(node);
    const std::size_t mask = capacity - 1;
    const std::uint64_t tag = tag_of(hash);
    std::size_t i = home(hash);
    for (;; i = (i + 1) & mask) {
        const entry e = slots[i];
        if (!e.bits) return false;
        if ((e.bits & tag_bits) == tag) {
            bdd_node* n = e.node();
            if (n->then_node == node->then_node && n->else_node == node->else_node &&
                n->id == node->id && n->else_link_type == node->else_link_type)
                break;
        }
    }
    remove_at(i);
    --count;
    count_removals(1);
    return true;
}

bool bdd_unique_table::bury(const bdd_node* node, std::size_t home_slot) {
    const std::size_t mask = capacity - 1;
    const auto address = reinterpret_cast<std::uintptr_t>(node);
    for (std::size_t i = home_slot;; i = (i + 1) & mask) {
        const std::uint64_t bits = slots[i].bits;
        if (!bits) return false;
        if ((bits & address_bits) == address) {
            slots[i].bits = buried_bits;
            ++buried;
            return true;
        }
    }
}

// From a free slot on, run after run: a place holder is freed, and an
// entry goes to the first free slot from its home on, which is at most
// its own (the slots before it in its run were settled already). Where
// the entries land may differ from where erasing one by one would leave
// them, which nothing reads (walks that are behaviour sort).
void bdd_unique_table::clear_buried() {
    if (!buried) return;
    const std::size_t mask = capacity - 1;
    std::size_t start = 0;
    while (slots[start].bits) ++start;
    for (std::size_t step = 1; step <= capacity; ++step) {
        const std::size_t i = (start + step) & mask;
        const entry e = slots[i];
        if (!e.bits) continue;
        if (e.bits == buried_bits) {
            slots[i].bits = 0;
            continue;
        }
        const std::size_t d = e.distance_code();
        if (d == 0) continue;
        const std::size_t h = home_at(i, e);
        std::size_t at = h;
        while (at != i && slots[at].bits) at = (at + 1) & mask;
        if (at == i) continue;
        slots[at].bits = (e.bits & ~distance_bits) | distance_code((at - h) & mask);
        slots[i].bits = 0;
    }
    count -= buried;
    buried = 0;
}

// Linear probing without tombstones: after a removal, later entries of the
// run move back into the hole when their home allows it.
void bdd_unique_table::remove_at(std::size_t hole) {
    const std::size_t mask = capacity - 1;
    for (std::size_t j = (hole + 1) & mask; slots[j].bits; j = (j + 1) & mask) {
        const entry e = slots[j];
        std::size_t k = home_at(j, e);
        // The entry at j may fill the hole unless its home lies after the
        // hole, cyclically, up to j.
        bool stays = hole <= j ? (hole < k && k <= j) : (hole < k || k <= j);
        if (stays) continue;
        slots[hole].bits = (e.bits & ~distance_bits) | distance_code((hole - k) & mask);
        hole = j;
    }
    slots[hole].bits = 0;
}

// The rebuilt marks keep the count's low 30 bits: when those come round to
// zero again, every mark is forgotten.
void bdd_unique_table::count_removals(std::size_t k) {
    std::uint32_t before = removal_count & 0x3FFFFFFFu;
    removal_count += static_cast<std::uint32_t>(k);
    if (before + k > 0x3FFFFFFFu) for_each([](bdd_node* n) { n->rebuilt = 0; });
}

// The old entries are entered again in slot order. From 2^16 slots on,
// the new home is the old one (from the slot and the distance) followed by
// the hash bit stored at 79 - log2(old capacity); only an entry 7 or more
// slots from its home has its node read.
void bdd_unique_table::grow() {
    entry* old = slots;
    const std::size_t old_capacity = capacity;
    const int old_bits = 64 - shift;
    capacity *= 2;
    shift--;
    slots = static_cast<entry*>(bdd_block_alloc(capacity * sizeof(entry)));
    // The entries go in roughly from the front; the pages of a big table
    // are made present from the back meanwhile, on the other processor.
    if (capacity * sizeof(entry) >= (std::size_t(2) << 20)) make_present_soon(slots, capacity * sizeof(entry));
    constexpr std::size_t ahead = 16;
    const std::size_t old_mask = old_capacity - 1;
    if (old_bits >= 16 && old_bits <= 31) {
        const int bit_at = 79 - old_bits;
        for (std::size_t k = 0; k < old_capacity; ++k) {
            if (k + ahead < old_capacity && old[k + ahead].distance_code() == 7)
                __builtin_prefetch(old[k + ahead].node());
            const entry e = old[k];
            if (!e.bits) continue;
            const std::size_t d = e.distance_code();
            std::size_t h;
            if (d < 7)
                h = (((k - d) & old_mask) << 1) | ((e.bits >> bit_at) & 1);
            else
                h = home(hash_of(e.node()));
            place(e, h);
        }
    } else {
        for (std::size_t k = 0; k < old_capacity; ++k) {
            if (k + ahead < old_capacity && old[k + ahead].bits) __builtin_prefetch(old[k + ahead].node());
            if (old[k].bits) place(old[k], home(hash_of(old[k].node())));
        }
    }
    give_block_to_nodes(old);
}

bool bdd_unique_table::well_formed() const {
    const std::size_t mask = capacity - 1;
    std::size_t entries = 0;
    for (std::size_t i = 0; i < capacity; ++i) {
        const entry e = slots[i];
        if (!e.bits) continue;
        ++entries;
        if (e.bits == buried_bits) return false;
        const std::size_t h = home(hash_of(e.node()));
        const std::size_t distance = (i - h) & mask;
        if (e.distance_code() != distance_code(distance)) return false;
        if ((e.bits & tag_bits) != tag_of(hash_of(e.node()))) return false;
        for (std::size_t k = h; k != i; k = (k + 1) & mask)
            if (!slots[k].bits) return false;
    }
    return entries == count;
}

std::vector<bdd_node*> bdd_unique_table::nodes_in_key_order() const {
    std::vector<bdd_node*> all;
    all.reserve(count);
    for_each([&](bdd_node* n) { all.push_back(n); });
    auto key = [](const bdd_node* n) {
        return std::make_tuple(n->id, n->then_node ? n->then_node->global_id : 0,
                               n->else_node ? n->else_node->global_id : 0,
                               n->else_link_type > 0 ? 1 : 0);
    };
    std::sort(all.begin(), all.end(),
              [&](const bdd_node* a, const bdd_node* b) { return key(a) < key(b); });
    return all;
}

// -------------------------------------------------------------------- handles

bdd::bdd() : manager_(nullptr), link_type_(0), node_(nullptr) {}

bdd::bdd(bddpp_manager* manager, int link_type, bdd_node* node)
    : manager_(manager), link_type_(link_type), node_(node) {
    if (node_) node_->references++;
}

bdd::bdd(const bdd& other)
    : manager_(other.manager_), link_type_(other.link_type_), node_(other.node_) {
    if (node_) node_->references++;
}

bdd::bdd(bdd&& other) noexcept
    : manager_(other.manager_), link_type_(other.link_type_), node_(other.node_) {
    other.manager_ = nullptr;
    other.link_type_ = 0;
    other.node_ = nullptr;
}

bdd::~bdd() {
    if (node_) node_->references--;
}

bdd& bdd::operator=(const bdd& other) {
    manager_ = other.manager_;
    link_type_ = other.link_type_;
    if (node_ != other.node_) {
        if (node_) node_->references--;
        node_ = other.node_;
        if (node_) node_->references++;
    }
    return *this;
}

bdd& bdd::operator=(bdd&& other) noexcept {
    if (this == &other) return *this;
    manager_ = other.manager_;
    link_type_ = other.link_type_;
    if (node_ != other.node_) {
        if (node_) node_->references--;
        node_ = other.node_;
    } else if (other.node_) {
        other.node_->references--;  // both held it: one reference too many
    }
    other.manager_ = nullptr;
    other.link_type_ = 0;
    other.node_ = nullptr;
    return *this;
}

bool bdd::operator==(const bdd& other) const {
    return manager_ == other.manager_ && link_type_ == other.link_type_ &&
           node_ == other.node_;
}

std::ostream& operator<<(std::ostream& out, const bdd& f) {
    out << "adr manager= " << static_cast<const void*>(f.manager_ref())
        << ", link type =" << f.link_type()
        << ", adr node= " << static_cast<const void*>(f.node()) << ", ";
    if (f.node()) out << "node signature: " << f.node()->signature();
    return out;
}

long bdd_node_global_id(const bdd& f) { return f.node() ? f.node()->global_id : -3; }

int bdd_link_type(const bdd& f) { return f.link_type(); }
