// Fresh anonymous mappings aligned for huge pages, for the blocks that
// the allocators and the growing tables take from the kernel directly.

#ifndef TARN_SUPPORT_MAPPED_BLOCK_H
#define TARN_SUPPORT_MAPPED_BLOCK_H

#include <cstddef>

// A read-write mapping of `bytes` aligned on `align` (a power of two): its
// pages read as zero and cost nothing until first touched. Null when the
// kernel refuses.
void* map_aligned(std::size_t bytes, std::size_t align);

#endif
