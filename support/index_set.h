#ifndef TARN_SUPPORT_INDEX_SET_H
#define TARN_SUPPORT_INDEX_SET_H

// Sets of variable indices are the wood's commonest objects: one per
// equation for what it reads, one per variable for who reads it, and many
// short-lived ones in every pass. Their tree nodes come from a pool of
// fixed-size cells instead of the general heap: a million-equation module
// makes tens of millions of them, and the heap's own bookkeeping for each
// was a large share of the run. The order, and so every text written from
// these sets, is the one of std::set.

#include <cstddef>
#include <functional>
#include <new>
#include <set>
#include <vector>

namespace tarn_pool {

// One free list per cell size; cells are carved from blocks that live as
// long as the process (the wood is built once and written once).
template <std::size_t Size>
class cell_pool {
public:
    static void* take() {
        State& s = state();
        if (s.free_list) {
            Cell* c = s.free_list;
            s.free_list = c->next;
            return c;
        }
        if (s.left == 0) {
            s.block = static_cast<Cell*>(::operator new(sizeof(Cell) * kCellsPerBlock));
            s.left = kCellsPerBlock;
        }
        --s.left;
        return s.block++;
    }
    static void give(void* p) {
        State& s = state();
        Cell* c = static_cast<Cell*>(p);
        c->next = s.free_list;
        s.free_list = c;
    }

private:
    union Cell {
        Cell* next;
        alignas(std::max_align_t) unsigned char bytes[Size];
    };
    static constexpr std::size_t kCellsPerBlock = 64;
    struct State {
        Cell* free_list = nullptr;
        Cell* block = nullptr;
        std::size_t left = 0;
    };
    static State& state() {
        static State s;
        return s;
    }
};

template <class T>
struct allocator {
    using value_type = T;
    allocator() noexcept = default;
    template <class U>
    allocator(const allocator<U>&) noexcept {}

    T* allocate(std::size_t n) {
        if (n == 1) return static_cast<T*>(cell_pool<sizeof(T)>::take());
        return static_cast<T*>(::operator new(n * sizeof(T)));
    }
    void deallocate(T* p, std::size_t n) noexcept {
        if (n == 1)
            cell_pool<sizeof(T)>::give(p);
        else
            ::operator delete(p);
    }
    template <class U>
    bool operator==(const allocator<U>&) const noexcept { return true; }
    template <class U>
    bool operator!=(const allocator<U>&) const noexcept { return false; }
};

}  // namespace tarn_pool

using IndexSet = std::set<long, std::less<long>, tarn_pool::allocator<long>>;

#endif
