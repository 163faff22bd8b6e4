// An array of plain values that grows one step at a time, for the tables
// by variable that follow the variables as they are made. A vector would
// copy itself into a fresh block at each growth and give the old one back;
// once large, this array asks the kernel to move its pages instead, so a
// growth neither copies nor touches again the pages it already has.

#ifndef TARN_SUPPORT_GROW_ARRAY_H
#define TARN_SUPPORT_GROW_ARRAY_H

#include "support/mapped_block.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

template <class T>
class grow_array {
    static_assert(std::is_trivially_copyable<T>::value, "values moved as bytes");

public:
    grow_array() = default;
    ~grow_array() { release(); }
    grow_array(const grow_array& other) { *this = other; }
    grow_array(grow_array&& other) noexcept { take(other); }
    grow_array& operator=(grow_array&& other) noexcept
    {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }
    grow_array& operator=(const grow_array& other)
    {
        if (this != &other) {
            reserve_exactly(other.count);
            if (other.count != 0)
                std::memcpy(values, other.values, other.count * sizeof(T));
            count = other.count;
        }
        return *this;
    }

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    T* data() { return values; }
    const T* data() const { return values; }
    T& operator[](std::size_t i) { return values[i]; }
    const T& operator[](std::size_t i) const { return values[i]; }
    const T* begin() const { return values; }
    const T* end() const { return values + count; }

    // New slots take `fill`.
    void resize(std::size_t n, const T& fill)
    {
        if (n > capacity)
            reserve_exactly(std::max(n, capacity + capacity / 8));
        for (std::size_t i = count; i < n; ++i)
            values[i] = fill;
        count = n;
    }
    void push_back(const T& value)
    {
        if (count == capacity)
            reserve_exactly(std::max<std::size_t>(16, 2 * capacity));
        values[count++] = value;
    }
    void append(const T* first, std::size_t n)
    {
        if (count + n > capacity)
            reserve_exactly(std::max(count + n, 2 * capacity));
        if (n != 0)
            std::memcpy(values + count, first, n * sizeof(T));
        count += n;
    }
    void assign(std::size_t n, const T& fill)
    {
        count = 0;
        resize(n, fill);
    }

private:
    // From this size on, the block is a mapping of its own, reserved ahead
    // in whole huge pages and offered to the kernel as such: a slot read at
    // random then costs no more than in the vector it replaces.
    static constexpr std::size_t mapped_bytes = std::size_t(1) << 20;
    static constexpr std::size_t huge = std::size_t(2) << 20;

    static std::size_t huge_rounded(std::size_t bytes) { return (bytes + huge - 1) / huge * huge; }
    void reserve_exactly(std::size_t n)
    {
        if (n <= capacity)
            return;
        const std::size_t bytes = n * sizeof(T);
        if (reserved == 0 && bytes < mapped_bytes) {
            void* block = std::realloc(values, bytes);
            if (block == nullptr)
                throw std::bad_alloc();
            values = static_cast<T*>(block);
            capacity = n;
            return;
        }
        const std::size_t span = huge_rounded(std::max(bytes, 2 * std::max(reserved, mapped_bytes)));
        void* block = map_aligned(span, huge);
        if (block == nullptr)
            throw std::bad_alloc();
        if (reserved != 0) {
            // The pages move with their contents; nothing is copied.
            block = mremap(values, reserved, reserved, MREMAP_MAYMOVE | MREMAP_FIXED, block);
            if (block == MAP_FAILED)
                throw std::bad_alloc();
        } else {
            if (count != 0)
                std::memcpy(block, values, count * sizeof(T));
            std::free(values);
        }
#ifdef MADV_HUGEPAGE
        madvise(block, span, MADV_HUGEPAGE);
#endif
        values = static_cast<T*>(block);
        reserved = span;
        capacity = span / sizeof(T);
    }
    void take(grow_array& other)
    {
        values = other.values;
        count = other.count;
        capacity = other.capacity;
        reserved = other.reserved;
        other.values = nullptr;
        other.count = other.capacity = other.reserved = 0;
    }
    void release()
    {
        if (reserved != 0)
            munmap(values, reserved);
        else
            std::free(values);
        values = nullptr;
        capacity = count = reserved = 0;
    }

    T* values = nullptr;
    std::size_t count = 0;
    std::size_t capacity = 0;
    std::size_t reserved = 0; // bytes mapped, 0 for a block of malloc's
};

#endif
