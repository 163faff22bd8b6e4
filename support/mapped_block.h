// Fresh anonymous mappings aligned for huge pages, for the blocks that
// the allocators and the growing tables take from the kernel directly.

#ifndef TARN_SUPPORT_MAPPED_BLOCK_H
#define TARN_SUPPORT_MAPPED_BLOCK_H

#include <cstddef>

// A read-write mapping of `bytes` aligned on `align` (a power of two): its
// pages read as zero and cost nothing until first touched. Null when the
// kernel refuses.
void* map_aligned(std::size_t bytes, std::size_t align);

// Asks a thread of the library's own to make the pages of the mapping
// [block, block + bytes) present, as the first writes would, without
// changing what they hold: a block mapped ahead of need has its faults and
// their clearing done on the other processor by the time it is used; one
// that its caller fills at once, from the front, has them done from the
// back meanwhile. The caller may write the block or unmap it meanwhile. A
// request that finds the queue full, or a kernel that cannot do it, is
// dropped.
void make_present_soon(void* block, std::size_t bytes);

// The same, done by the caller before it returns.
void make_present_now(void* block, std::size_t bytes);

#endif
