#ifndef TARN_BDD_BDDPP_MEMORY_H
#define TARN_BDD_BDDPP_MEMORY_H

// Large blocks for the node pool, the unique table and the computed
// table, zeroed on request. Blocks of 2 MiB and more are aligned for huge
// pages and offered to the kernel as such: a big build then takes a page
// fault per 2 MiB instead of one per 4 KiB.

#include <cstddef>

void* bdd_block_alloc(std::size_t bytes, bool zeroed = true);
void bdd_block_free(void* block);
// Hands a block of bdd_block_alloc's, no longer used, to the node pool:
// its pages, already present, hold the nodes made after it.
void bdd_block_to_nodes(void* block);
// Room for `count` nodes made now, its pages present, as a program's
// set-up does before a build it times: the nodes made after take it
// before any fresh block.
void bdd_reserve_nodes(std::size_t count);

// An allocator on those blocks, for a large table that lives while nodes
// are few and dies before most of them are made.
template <class T>
struct bdd_block_allocator {
    using value_type = T;
    bdd_block_allocator() = default;
    template <class U>
    bdd_block_allocator(const bdd_block_allocator<U>&) {}
    T* allocate(std::size_t n) { return static_cast<T*>(bdd_block_alloc(n * sizeof(T), false)); }
    void deallocate(T* p, std::size_t) { bdd_block_to_nodes(p); }
    template <class U>
    bool operator==(const bdd_block_allocator<U>&) const { return true; }
    template <class U>
    bool operator!=(const bdd_block_allocator<U>&) const { return false; }
};

#endif
