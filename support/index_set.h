#ifndef TARN_SUPPORT_INDEX_SET_H
#define TARN_SUPPORT_INDEX_SET_H

// Sets of variable indices are the wood's commonest objects: one per
// equation for what it reads, one per variable for who reads it, and many
// short-lived ones in every pass. Nearly all of them hold a handful of
// members, a few (the filled slots, the work lists of the passes) hold one
// per equation.
//
// So the members are kept sorted in plain arrays: up to two inside the
// object itself, then in one heap array, and past kFlatMost in a chain of
// chunks of at most kChunk members each, found by a binary search over the
// chunks, so that an insertion or an erasure in a large set moves at most
// one chunk. A walk is a walk along arrays, always in ascending order: the
// order of std::set, on which every text written from these sets depends.
//
// Unlike std::set, an insertion or an erasure invalidates every iterator
// and reference into the set (erase(it) returns the next one), and so do
// swap and the moves. Building with TARN_INDEX_SET_CHECKED makes every
// iterator check that its set has not changed since it was taken.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <utility>

class IndexSet {
    struct Chunk;

public:
    using key_type = long;
    using value_type = long;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = const long&;
    using const_reference = const long&;
    using pointer = const long*;
    using const_pointer = const long*;

    static constexpr std::uint32_t kInline = 2;
    static constexpr std::uint32_t kFlatMost = 256;
    static constexpr std::uint32_t kChunk = 256;
    static_assert(kFlatMost <= kChunk, "a full flat array must fit one chunk");

    class const_iterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = long;
        using difference_type = std::ptrdiff_t;
        using pointer = const long*;
        using reference = const long&;

        const_iterator() = default;
        reference operator*() const { check(); return *p_; }
        pointer operator->() const { check(); return p_; }
        const_iterator& operator++()
        {
            check();
            ++p_;
            if (c_ != nullptr && p_ == c_->data + c_->n && c_->next != nullptr) {
                c_ = c_->next;
                p_ = c_->data;
            }
            return *this;
        }
        const_iterator operator++(int) { const_iterator t = *this; ++*this; return t; }
        const_iterator& operator--()
        {
            check();
            if (c_ != nullptr && p_ == c_->data) {
                c_ = c_->prev;
                p_ = c_->data + c_->n;
            }
            --p_;
            return *this;
        }
        const_iterator operator--(int) { const_iterator t = *this; --*this; return t; }
        // Only the position counts: the end of the last chunk is the end of
        // the set, and no member of another chunk can sit at that address.
        bool operator==(const const_iterator& o) const { check(); return p_ == o.p_; }
        bool operator!=(const const_iterator& o) const { return !(*this == o); }

    private:
        friend class IndexSet;
        const long* p_ = nullptr;
        const Chunk* c_ = nullptr; // chunked sets only
#ifdef TARN_INDEX_SET_CHECKED
        const IndexSet* owner_ = nullptr;
        std::uint64_t version_ = 0;
        void check() const;
#else
        void check() const {}
#endif
    };
    using iterator = const_iterator;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    using reverse_iterator = const_reverse_iterator;

    IndexSet() : size_(0), cap_(kInline) {}
    IndexSet(const IndexSet& other);
    IndexSet(IndexSet&& other) noexcept : size_(0), cap_(kInline) { steal(other); }
    template <class It>
    IndexSet(It first, It last) : size_(0), cap_(kInline) { insert(first, last); }
    IndexSet(std::initializer_list<long> members) : size_(0), cap_(kInline)
    {
        insert(members.begin(), members.end());
    }
    ~IndexSet() { release(); }

    IndexSet& operator=(const IndexSet& other);
    IndexSet& operator=(IndexSet&& other) noexcept
    {
        if (this != &other) {
            release();
            steal(other);
        }
        return *this;
    }
    IndexSet& operator=(std::initializer_list<long> members)
    {
        clear();
        insert(members.begin(), members.end());
        return *this;
    }

    // ---- reading ----
    bool empty() const { return size_ == 0; }
    size_type size() const { return size_; }
    const_iterator begin() const
    {
        if (cap_ != kChunked) return make(flat(), nullptr);
        const Chunk* c = chunks_.list[0];
        return make(c->data, c);
    }
    const_iterator end() const
    {
        if (cap_ != kChunked) return make(flat() + size_, nullptr);
        const Chunk* c = chunks_.list[chunks_.count - 1];
        return make(c->data + c->n, c);
    }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }

    const_iterator find(long x) const;
    size_type count(long x) const { return contains(x) ? 1 : 0; }
    bool contains(long x) const
    {
        if (cap_ != kChunked) {
            const long* a = flat();
            const long* at = lower(a, a + size_, x);
            return at != a + size_ && *at == x;
        }
        return chunked_contains(x);
    }
    // First member not below x, first member above x.
    const_iterator lower_bound(long x) const;
    const_iterator upper_bound(long x) const;

    // ---- writing ----
    std::pair<const_iterator, bool> insert(long x);
    // The hint is used only to recognise an append at the end, the way
    // ascending runs are mostly built.
    const_iterator insert(const_iterator hint, long x);
    template <class It>
    void insert(It first, It last)
    {
        for (; first != last; ++first) append_or_insert(*first);
    }
    void insert(std::initializer_list<long> members) { insert(members.begin(), members.end()); }
    // The members of an ascending range without repeats, in one merge: a
    // flat array moves each member once instead of once per insertion.
    void insert_ascending(const long* first, const long* last);
    // The members of the range instead of the set's own, in the room the
    // set already holds when it is enough.
    template <class It>
    void assign(It first, It last)
    {
        if (cap_ == kChunked) release();
        size_ = 0;
        bump();
        insert(first, last);
    }
    size_type erase(long x);
    // Returns the member after the erased one.
    const_iterator erase(const_iterator it);
    const_iterator erase(const_iterator first, const_iterator last);
    void clear() { release(); size_ = 0; cap_ = kInline; bump(); }
    void swap(IndexSet& other) noexcept;

    friend bool operator==(const IndexSet& a, const IndexSet& b);
    friend bool operator!=(const IndexSet& a, const IndexSet& b) { return !(a == b); }
    // Lexicographic, as std::set compares.
    friend bool operator<(const IndexSet& a, const IndexSet& b);
    friend bool operator>(const IndexSet& a, const IndexSet& b) { return b < a; }
    friend bool operator<=(const IndexSet& a, const IndexSet& b) { return !(b < a); }
    friend bool operator>=(const IndexSet& a, const IndexSet& b) { return !(a < b); }

private:
    static constexpr std::uint32_t kChunked = 0xffffffffu;

    struct Chunk {
        Chunk* prev;
        Chunk* next;
        std::uint32_t n;
        // Last, so that the end of a full chunk's members is the end of
        // the chunk: no other chunk's member can sit at that address, and
        // the end of the last chunk is the set's end.
        long data[kChunk];
    };
    struct ChunkList {
        Chunk** list;
        std::uint32_t count;
        std::uint32_t room;
    };

    union {
        long inline_[kInline];
        long* heap_;
        ChunkList chunks_;
    };
    std::uint32_t size_;
    // kInline: members in inline_; above: heap_ holds cap_ slots;
    // kChunked: chunks_.
    std::uint32_t cap_;
#ifdef TARN_INDEX_SET_CHECKED
    std::uint64_t version_ = 0;
    void bump() { ++version_; }
#else
    void bump() {}
#endif

    long* flat() { return cap_ == kInline ? inline_ : heap_; }
    const long* flat() const { return cap_ == kInline ? inline_ : heap_; }
    static const long* lower(const long* first, const long* last, long x)
    {
        // Small sets dominate: a linear scan beats the binary search there.
        if (last - first <= 8) {
            while (first != last && *first < x) ++first;
            return first;
        }
        std::size_t n = last - first;
        while (n > 0) {
            std::size_t half = n / 2;
            if (first[half] < x) {
                first += half + 1;
                n -= half + 1;
            } else {
                n = half;
            }
        }
        return first;
    }
    const_iterator make(const long* p, const Chunk* c) const
    {
        const_iterator it;
        it.p_ = p;
        it.c_ = c;
#ifdef TARN_INDEX_SET_CHECKED
        it.owner_ = this;
        it.version_ = version_;
#endif
        return it;
    }
    void append_or_insert(long x)
    {
        if (cap_ != kChunked) {
            if (size_ < cap_ && (size_ == 0 || flat()[size_ - 1] < x)) {
                flat()[size_++] = x;
                bump();
                return;
            }
        } else {
            Chunk* c = chunks_.list[chunks_.count - 1];
            if (c->n < kChunk && c->data[c->n - 1] < x) {
                c->data[c->n++] = x;
                ++size_;
                bump();
                return;
            }
        }
        insert(x);
    }
    void release() noexcept;
    void steal(IndexSet& other) noexcept;
    bool chunked_contains(long x) const;
    // Index of the chunk where x belongs: the first whose last member is
    // not below x, or the last chunk.
    std::uint32_t chunk_for(long x) const;
    void to_chunks();
    void grow_flat();
    std::pair<const_iterator, bool> insert_chunked(long x);
    const_iterator erase_chunked(Chunk* c, std::uint32_t k, std::uint32_t at);
    void drop_chunk(std::uint32_t k);
};

inline void swap(IndexSet& a, IndexSet& b) noexcept { a.swap(b); }

#endif
