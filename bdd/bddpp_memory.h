#ifndef TARN_BDD_BDDPP_MEMORY_H
#define TARN_BDD_BDDPP_MEMORY_H

// Large blocks for the node pool, the unique table and the computed
// table, zeroed on request. Blocks of 2 MiB and more are aligned for huge pages and offered to
// the kernel as such: a big build then takes a page fault per 2 MiB instead
// of one per 4 KiB.

#include <cstddef>

void* bdd_block_alloc(std::size_t bytes, bool zeroed = true);
void bdd_block_free(void* block);

#endif
