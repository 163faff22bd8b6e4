// The executable's allocator for small objects.
//
// A large module makes tens of millions of small objects (equations, names,
// reader sets, lists) that live until the end of the run. From the general
// heap they come scattered over 4 KiB pages, and the run then spends more
// time in address translation and page faults than in its own work. Here
// they come from regions aligned on 2 MiB and offered to the kernel as huge
// pages, carved into slabs of one size each, with a free list per size. The
// next region is mapped while the last one is in use, and its pages are
// made present by the support library's filler thread.
// Larger blocks go to malloc, with huge pages asked for the big ones. Memory
// is never handed back to the kernel: the run builds its wood once and
// writes it once. Before a class takes a fresh slab, a larger class with a
// slab's worth of idle cells lends them. Only the run's own thread takes or
// gives memory here: the support library's threads use none of it.

#include "support/mapped_block.h"

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kGrain = 16;                          // the default new alignment
constexpr std::size_t kLargest = 4096;                      // larger goes to malloc
constexpr std::size_t kClasses = kLargest / kGrain + 1;     // class c holds c * kGrain bytes
constexpr std::size_t kHugePage = std::size_t(1) << 21;
constexpr std::size_t kRegionBits = 24;                     // 16 MiB regions
constexpr std::size_t kRegion = std::size_t(1) << kRegionBits;
constexpr std::size_t kSlabBits = 16;                       // 64 KiB slabs
constexpr std::size_t kSlab = std::size_t(1) << kSlabBits;
constexpr std::size_t kSlabsPerRegion = kRegion / kSlab;
constexpr std::size_t kMaxRegions = 16384;                  // 256 GiB of small objects

struct Region {
    std::uintptr_t base;
    unsigned short size_class[kSlabsPerRegion];
};

struct FreeCell {
    FreeCell* next;
};

// Zero-initialised: the allocator may serve static constructors that run
// before any of this file's own.
//
// The region of an address is found in two steps: a directory by the
// address's top bits, then a page of 2048 regions. User addresses are
// below 2^47; a region the kernel places higher is not used.
constexpr std::size_t kAddressBits = 47;
constexpr std::size_t kPageBits = 11;
constexpr std::size_t kDirectoryBits = kAddressBits - kRegionBits - kPageBits;
Region** directory[std::size_t(1) << kDirectoryBits];
std::size_t region_count;
std::size_t slabs_used;        // in the last region made
FreeCell* free_cells[kClasses];
std::size_t free_count[kClasses]; // the length of each list
char* slab_next[kClasses];
char* slab_end[kClasses];

// A 16 MiB region aligned on its size, asked for huge pages; null when the
// kernel refuses.
std::uintptr_t map_region() {
    void* block = map_aligned(kRegion, kRegion);
    if (block == nullptr) return 0;
    std::uintptr_t base = reinterpret_cast<std::uintptr_t>(block);
    if ((base >> kAddressBits) != 0) {
        munmap(block, kRegion);
        return 0;
    }
    madvise(block, kRegion, MADV_HUGEPAGE);
    return base;
}

// The region the next new_region will take, mapped one region ahead so
// that its pages are made present on the other processor meanwhile; only
// for a run that has outgrown its first regions, a small one would pay a
// region it never uses.
constexpr std::size_t kRegionsBeforeAhead = 2;
std::uintptr_t region_ahead;

Region* new_region() {
    if (region_count == kMaxRegions) return nullptr;
    std::uintptr_t base = region_ahead != 0 ? region_ahead : map_region();
    if (base == 0) return nullptr;
    region_ahead = 0;
    if (region_count + 1 >= kRegionsBeforeAhead && region_count + 1 < kMaxRegions) {
        region_ahead = map_region();
        if (region_ahead != 0) make_present_soon(reinterpret_cast<void*>(region_ahead), kRegion);
    }
    Region**& page = directory[base >> (kRegionBits + kPageBits)];
    if (page == nullptr) {
        page = static_cast<Region**>(std::calloc(std::size_t(1) << kPageBits, sizeof(Region*)));
        if (page == nullptr) {
            munmap(reinterpret_cast<void*>(base), kRegion);
            return nullptr;
        }
    }
    // The region's table lives in its own first slab.
    Region* r = reinterpret_cast<Region*>(base);
    r->base = base;
    page[(base >> kRegionBits) & ((std::size_t(1) << kPageBits) - 1)] = r;
    ++region_count;
    static_assert(sizeof(Region) <= kSlab, "the region table fits in one slab");
    r->size_class[0] = 0;
    slabs_used = 1;
    return r;
}

Region* last_made;

bool new_slab(std::size_t c) {
    if (last_made == nullptr || slabs_used == kSlabsPerRegion) {
        last_made = new_region();
        if (last_made == nullptr) return false;
    }
    std::size_t s = slabs_used++;
    last_made->size_class[s] = static_cast<unsigned short>(c);
    slab_next[c] = reinterpret_cast<char*>(last_made->base + (s << kSlabBits));
    slab_end[c] = slab_next[c] + kSlab;
    return true;
}

// The region holding p, or null for a block of malloc's.
Region* region_of(const void* p) {
    std::uintptr_t a = reinterpret_cast<std::uintptr_t>(p);
    if ((a >> kAddressBits) != 0) return nullptr;
    Region** page = directory[a >> (kRegionBits + kPageBits)];
    if (page == nullptr) return nullptr;
    return page[(a >> kRegionBits) & ((std::size_t(1) << kPageBits) - 1)];
}

// A large block (a table by variable, a hash table's buckets) is read at
// random as much as the small objects: the huge pages are asked for its
// aligned inside, and made present on the other processor while the caller
// fills it.
void* take_large(std::size_t n) {
    void* p = std::malloc(n);
    if (p != nullptr && n >= 2 * kHugePage) {
        std::uintptr_t a = reinterpret_cast<std::uintptr_t>(p);
        std::uintptr_t first = (a + kHugePage - 1) & ~(kHugePage - 1);
        std::uintptr_t last = (a + n) & ~(kHugePage - 1);
        if (last > first) {
            madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
            make_present_soon(reinterpret_cast<void*>(first), last - first);
        }
    }
    return p;
}

// Before a fresh slab for class c: a larger class with at least a slab's
// worth of idle cells lends them, the whole run of them at the head of its
// list. A pass that frees a million equations and then makes small objects
// reuses their pages instead of touching new ones. A lent cell is still a
// cell of its slab's class: a sized delete puts it back in the list of the
// size asked, an unsized one in the list of its slab, and either size fits
// in the cell.
// The lists' lengths spare the walk down a list too short to lend: its
// cells are cold, a miss each.
bool borrow_idle(std::size_t c) {
    for (std::size_t d = c + 1; d < kClasses; ++d) {
        std::size_t want = kSlab / (d * kGrain);
        if (free_count[d] < want) continue;
        FreeCell* head = free_cells[d];
        FreeCell* last = head;
        std::size_t n = 1;
        while (n < want && last->next != nullptr) {
            last = last->next;
            ++n;
        }
        if (n < want) continue;
        free_cells[d] = last->next;
        last->next = free_cells[c];
        free_cells[c] = head;
        free_count[d] -= want;
        free_count[c] += want;
        return true;
    }
    return false;
}

void* take(std::size_t n) {
    if (n > kLargest) return take_large(n);
    std::size_t c = n == 0 ? 1 : (n + kGrain - 1) / kGrain;
    if (FreeCell* cell = free_cells[c]) {
        free_cells[c] = cell->next;
        --free_count[c];
        return cell;
    }
    std::size_t bytes = c * kGrain;
    if (slab_next[c] == nullptr || slab_end[c] - slab_next[c] < static_cast<std::ptrdiff_t>(bytes)) {
        if (borrow_idle(c)) {
            FreeCell* cell = free_cells[c];
            free_cells[c] = cell->next;
            --free_count[c];
            return cell;
        }
        // No fall-back to malloc: a small block always lies in a region, so
        // a delete that is told its size finds its class without a search.
        if (!new_slab(c)) return nullptr;
    }
    void* p = slab_next[c];
    slab_next[c] += bytes;
    return p;
}

void give(void* p) {
    if (p == nullptr) return;
    Region* r = region_of(p);
    if (r == nullptr) {
        std::free(p);
        return;
    }
    std::size_t s = (reinterpret_cast<std::uintptr_t>(p) - r->base) >> kSlabBits;
    FreeCell* cell = static_cast<FreeCell*>(p);
    std::size_t c = r->size_class[s];
    cell->next = free_cells[c];
    free_cells[c] = cell;
    ++free_count[c];
}

// A delete told the size: small blocks all come from the slabs, so the
// class follows from the size alone.
void give_sized(void* p, std::size_t n) {
    if (p == nullptr) return;
    if (n > kLargest) {
        std::free(p);
        return;
    }
    std::size_t c = n == 0 ? 1 : (n + kGrain - 1) / kGrain;
    FreeCell* cell = static_cast<FreeCell*>(p);
    cell->next = free_cells[c];
    free_cells[c] = cell;
    ++free_count[c];
}

void* take_or_throw(std::size_t n) {
    void* p = take(n);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}

}  // namespace

void* operator new(std::size_t n) { return take_or_throw(n); }
void* operator new[](std::size_t n) { return take_or_throw(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return take(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return take(n); }
void operator delete(void* p) noexcept { give(p); }
void operator delete[](void* p) noexcept { give(p); }
void operator delete(void* p, std::size_t n) noexcept { give_sized(p, n); }
void operator delete[](void* p, std::size_t n) noexcept { give_sized(p, n); }
void operator delete(void* p, const std::nothrow_t&) noexcept { give(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { give(p); }
