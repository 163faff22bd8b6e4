// An array of plain values that grows one step at a time, for the tables
// by variable that follow the variables as they are made. A vector would
// copy itself into a fresh block at each growth and give the old one back;
// once large, this array asks the kernel to move its pages instead, so a
// growth neither copies nor touches again the pages it already has.

#pragma once

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
    void assign(std::size_t n, const T& fill)
    {
        count = 0;
        resize(n, fill);
    }

private:
    // From this size on, the block is a mapping of its own.
    static constexpr std::size_t mapped_bytes = std::size_t(1) << 20;

    static std::size_t page_rounded(std::size_t bytes)
    {
        constexpr std::size_t page = 4096;
        return (bytes + page - 1) / page * page;
    }
    bool mapped() const { return capacity * sizeof(T) >= mapped_bytes; }

    void reserve_exactly(std::size_t n)
    {
        if (n <= capacity)
            return;
        const std::size_t bytes = n * sizeof(T);
        void* block = nullptr;
        if (bytes < mapped_bytes) {
            block = std::realloc(values, bytes);
        } else if (mapped()) {
            block = mremap(values, page_rounded(capacity * sizeof(T)), page_rounded(bytes), MREMAP_MAYMOVE);
            if (block == MAP_FAILED)
                block = nullptr;
        } else {
            block = mmap(nullptr, page_rounded(bytes), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (block == MAP_FAILED) {
                block = nullptr;
            } else {
                if (count != 0)
                    std::memcpy(block, values, count * sizeof(T));
                std::free(values);
            }
        }
        if (block == nullptr)
            throw std::bad_alloc();
        values = static_cast<T*>(block);
        capacity = n;
    }
    void release()
    {
        if (mapped())
            munmap(values, page_rounded(capacity * sizeof(T)));
        else
            std::free(values);
        values = nullptr;
        capacity = count = 0;
    }

    T* values = nullptr;
    std::size_t count = 0;
    std::size_t capacity = 0;
};
