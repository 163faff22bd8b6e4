#include "support/mapped_block.h"

#include <sys/mman.h>

#include <cstdint>

void* map_aligned(std::size_t bytes, std::size_t align)
{
    // Mapped with room to spare, then trimmed at both ends to the aligned
    // span.
    const std::size_t span = bytes + align;
    void* raw = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED)
        return nullptr;
    auto base = reinterpret_cast<std::uintptr_t>(raw);
    std::uintptr_t start = (base + align - 1) & ~(align - 1);
    if (start > base)
        munmap(raw, start - base);
    std::uintptr_t tail = start + bytes;
    std::uintptr_t end = base + span;
    if (end > tail)
        munmap(reinterpret_cast<void*>(tail), end - tail);
    return reinterpret_cast<void*>(start);
}
