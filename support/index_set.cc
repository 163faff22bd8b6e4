// The storage of IndexSet: inline pair, flat heap array, chain of chunks.

#include "support/index_set.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef TARN_INDEX_SET_CHECKED
void IndexSet::const_iterator::check() const
{
    if (owner_ != nullptr && owner_->version_ != version_) {
        std::fprintf(stderr, "IndexSet: iterator used after its set changed\n");
        std::abort();
    }
}
#endif

IndexSet::IndexSet(const IndexSet& other) : size_(0), cap_(kInline)
{
    if (other.cap_ == kChunked) {
        ChunkList l;
        l.count = other.chunks_.count;
        l.room = other.chunks_.room;
        l.list = static_cast<Chunk**>(::operator new(sizeof(Chunk*) * l.room));
        Chunk* prev = nullptr;
        for (std::uint32_t k = 0; k < l.count; k++) {
            const Chunk* from = other.chunks_.list[k];
            Chunk* c = static_cast<Chunk*>(::operator new(sizeof(Chunk)));
            c->prev = prev;
            c->next = nullptr;
            c->n = from->n;
            std::memcpy(c->data, from->data, sizeof(long) * from->n);
            if (prev != nullptr) prev->next = c;
            l.list[k] = c;
            prev = c;
        }
        chunks_ = l;
        cap_ = kChunked;
        size_ = other.size_;
        return;
    }
    if (other.size_ > kInline) {
        heap_ = static_cast<long*>(::operator new(sizeof(long) * other.size_));
        cap_ = other.size_;
    }
    std::memcpy(flat(), other.flat(), sizeof(long) * other.size_);
    size_ = other.size_;
}

IndexSet& IndexSet::operator=(const IndexSet& other)
{
    if (this == &other) return *this;
    if (other.cap_ != kChunked && cap_ != kChunked && other.size_ <= cap_) {
        // The room in hand is enough: no allocation.
        std::memmove(flat(), other.flat(), sizeof(long) * other.size_);
        size_ = other.size_;
        bump();
        return *this;
    }
    IndexSet copy(other);
    release();
    steal(copy);
    return *this;
}

void IndexSet::release() noexcept
{
    if (cap_ == kChunked) {
        for (std::uint32_t k = 0; k < chunks_.count; k++) ::operator delete(chunks_.list[k]);
        ::operator delete(chunks_.list);
    } else if (cap_ != kInline) {
        ::operator delete(heap_);
    }
    cap_ = kInline;
    size_ = 0;
}

void IndexSet::steal(IndexSet& other) noexcept
{
    size_ = other.size_;
    cap_ = other.cap_;
    if (cap_ == kChunked)
        chunks_ = other.chunks_;
    else if (cap_ != kInline)
        heap_ = other.heap_;
    else
        std::memcpy(inline_, other.inline_, sizeof inline_);
    other.size_ = 0;
    other.cap_ = kInline;
    bump();
    other.bump();
}

void IndexSet::swap(IndexSet& other) noexcept
{
    if (this == &other) return;
    IndexSet t(std::move(other));
    other.steal(*this);
    steal(t);
}

bool operator==(const IndexSet& a, const IndexSet& b)
{
    if (a.size_ != b.size_) return false;
    if (a.cap_ != IndexSet::kChunked && b.cap_ != IndexSet::kChunked)
        return std::memcmp(a.flat(), b.flat(), sizeof(long) * a.size_) == 0;
    return std::equal(a.begin(), a.end(), b.begin());
}

bool operator<(const IndexSet& a, const IndexSet& b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

// ---------------------------------------------------------------- lookups

std::uint32_t IndexSet::chunk_for(long x) const
{
    std::uint32_t lo = 0, hi = chunks_.count - 1;
    while (lo < hi) {
        std::uint32_t mid = lo + (hi - lo) / 2;
        const Chunk* c = chunks_.list[mid];
        if (c->data[c->n - 1] < x)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

bool IndexSet::chunked_contains(long x) const
{
    const Chunk* c = chunks_.list[chunk_for(x)];
    const long* at = lower(c->data, c->data + c->n, x);
    return at != c->data + c->n && *at == x;
}

IndexSet::const_iterator IndexSet::lower_bound(long x) const
{
    if (cap_ != kChunked) return make(lower(flat(), flat() + size_, x), nullptr);
    const Chunk* c = chunks_.list[chunk_for(x)];
    const long* at = lower(c->data, c->data + c->n, x);
    // Past the last chunk's members only when x is above them all: end().
    return make(at, c);
}

IndexSet::const_iterator IndexSet::upper_bound(long x) const
{
    const_iterator it = lower_bound(x);
    if (it != end() && *it == x) ++it;
    return it;
}

IndexSet::const_iterator IndexSet::find(long x) const
{
    const_iterator it = lower_bound(x);
    if (it != end() && *it == x) return it;
    return end();
}

// --------------------------------------------------------------- insertion

void IndexSet::grow_flat()
{
    // A flat array never outgrows one chunk: to_chunks moves it whole.
    std::uint32_t room = cap_ * 2 < kFlatMost ? cap_ * 2 : kFlatMost;
    long* bigger = static_cast<long*>(::operator new(sizeof(long) * room));
    std::memcpy(bigger, flat(), sizeof(long) * size_);
    if (cap_ != kInline) ::operator delete(heap_);
    heap_ = bigger;
    cap_ = room;
}

void IndexSet::to_chunks()
{
    Chunk* c = static_cast<Chunk*>(::operator new(sizeof(Chunk)));
    c->prev = c->next = nullptr;
    c->n = size_;
    std::memcpy(c->data, flat(), sizeof(long) * size_);
    if (cap_ != kInline) ::operator delete(heap_);
    ChunkList l;
    l.room = 8;
    l.list = static_cast<Chunk**>(::operator new(sizeof(Chunk*) * l.room));
    l.list[0] = c;
    l.count = 1;
    chunks_ = l;
    cap_ = kChunked;
}

std::pair<IndexSet::const_iterator, bool> IndexSet::insert(long x)
{
    if (cap_ == kChunked) return insert_chunked(x);
    long* a = flat();
    long* at = const_cast<long*>(lower(a, a + size_, x));
    if (at != a + size_ && *at == x) return {make(at, nullptr), false};
    if (size_ == cap_) {
        if (size_ >= kFlatMost) {
            to_chunks();
            return insert_chunked(x);
        }
        std::size_t k = at - a;
        grow_flat();
        a = flat();
        at = a + k;
    }
    std::memmove(at + 1, at, sizeof(long) * (a + size_ - at));
    *at = x;
    ++size_;
    bump();
    return {make(at, nullptr), true};
}

void IndexSet::insert_ascending(const long* first, const long* last)
{
    if (first == last)
        return;
    if (cap_ == kChunked) {
        for (; first != last; ++first)
            insert(*first);
        return;
    }
    // The members of the range not in the set yet, in one walk of both.
    std::size_t absent = 0;
    {
        const long* a = flat();
        const long* a_end = a + size_;
        for (const long* p = first; p != last; ++p) {
            while (a != a_end && *a < *p)
                ++a;
            if (a == a_end || *a != *p)
                ++absent;
        }
    }
    if (absent == 0)
        return;
    std::size_t total = size_ + absent;
    if (total > kFlatMost) {
        for (; first != last; ++first)
            insert(*first);
        return;
    }
    while (cap_ < total)
        grow_flat();
    // From the top down, each member moves once: the room left below the
    // write position is always that of the range's absent members not yet
    // placed.
    long* a = flat();
    long* out = a + total;
    std::size_t i = size_;
    const long* p = last;
    while (p != first) {
        long x = p[-1];
        if (i > 0 && a[i - 1] >= x) {
            if (a[i - 1] == x)
                --p;
            *--out = a[--i];
        } else {
            *--out = x;
            --p;
        }
    }
    size_ = static_cast<std::uint32_t>(total);
    bump();
}

IndexSet::const_iterator IndexSet::insert(const_iterator hint, long x)
{
    if (hint == end() && cap_ != kChunked && size_ < cap_ && (size_ == 0 || flat()[size_ - 1] < x)) {
        long* at = flat() + size_;
        *at = x;
        ++size_;
        bump();
        return make(at, nullptr);
    }
    return insert(x).first;
}

std::pair<IndexSet::const_iterator, bool> IndexSet::insert_chunked(long x)
{
    // Appends, the commonest insertion into a large set, skip both searches.
    std::uint32_t k = chunks_.count - 1;
    Chunk* c = chunks_.list[k];
    long* at;
    if (c->data[c->n - 1] < x) {
        at = c->data + c->n;
    } else {
        k = chunk_for(x);
        c = chunks_.list[k];
        at = const_cast<long*>(lower(c->data, c->data + c->n, x));
    }
    if (at != c->data + c->n && *at == x) return {make(at, c), false};
    if (c->n == kChunk) {
        // Split: the upper half moves to a new chunk after c. An append at
        // the very end starts an empty chunk instead, so that sets built in
        // ascending order fill their chunks.
        Chunk* d = static_cast<Chunk*>(::operator new(sizeof(Chunk)));
        std::uint32_t keep = (at == c->data + c->n && c->next == nullptr) ? kChunk : kChunk / 2;
        d->n = kChunk - keep;
        std::memcpy(d->data, c->data + keep, sizeof(long) * d->n);
        c->n = keep;
        d->prev = c;
        d->next = c->next;
        if (c->next != nullptr) c->next->prev = d;
        c->next = d;
        if (chunks_.count == chunks_.room) {
            std::uint32_t room = chunks_.room * 2;
            Chunk** bigger = static_cast<Chunk**>(::operator new(sizeof(Chunk*) * room));
            std::memcpy(bigger, chunks_.list, sizeof(Chunk*) * chunks_.count);
            ::operator delete(chunks_.list);
            chunks_.list = bigger;
            chunks_.room = room;
        }
        std::memmove(chunks_.list + k + 2, chunks_.list + k + 1, sizeof(Chunk*) * (chunks_.count - k - 1));
        chunks_.list[k + 1] = d;
        ++chunks_.count;
        std::size_t pos = at - c->data;
        if (pos > keep || (pos == keep && d->n == 0)) {
            c = d;
            at = d->data + (pos - keep);
        } else {
            at = c->data + pos;
        }
    }
    std::memmove(at + 1, at, sizeof(long) * (c->data + c->n - at));
    *at = x;
    ++c->n;
    ++size_;
    bump();
    return {make(at, c), true};
}

// ----------------------------------------------------------------- erasure

IndexSet::size_type IndexSet::erase(long x)
{
    if (cap_ != kChunked) {
        long* a = flat();
        long* at = const_cast<long*>(lower(a, a + size_, x));
        if (at == a + size_ || *at != x) return 0;
        std::memmove(at, at + 1, sizeof(long) * (a + size_ - at - 1));
        --size_;
        bump();
        return 1;
    }
    std::uint32_t k = chunk_for(x);
    Chunk* c = chunks_.list[k];
    const long* at = lower(c->data, c->data + c->n, x);
    if (at == c->data + c->n || *at != x) return 0;
    erase_chunked(c, k, static_cast<std::uint32_t>(at - c->data));
    return 1;
}

IndexSet::const_iterator IndexSet::erase(const_iterator it)
{
    it.check();
    if (cap_ != kChunked) {
        long* a = flat();
        long* at = a + (it.p_ - a);
        std::memmove(at, at + 1, sizeof(long) * (a + size_ - at - 1));
        --size_;
        bump();
        return make(at, nullptr);
    }
    Chunk* c = const_cast<Chunk*>(it.c_);
    std::uint32_t k = chunk_for(*it.p_);
    return erase_chunked(c, k, static_cast<std::uint32_t>(it.p_ - c->data));
}

IndexSet::const_iterator IndexSet::erase(const_iterator first, const_iterator last)
{
    if (first == last) return first;
    // Members at and past `last` stay: erase up to the value it holds.
    if (last == end()) {
        long from = *first;
        while (!empty()) {
            const_iterator back = end();
            --back;
            if (*back < from) break;
            erase(back);
        }
        return end();
    }
    long stop = *last;
    const_iterator it = first;
    while (*it != stop) it = erase(it);
    return it;
}

IndexSet::const_iterator IndexSet::erase_chunked(Chunk* c, std::uint32_t k, std::uint32_t at)
{
    std::memmove(c->data + at, c->data + at + 1, sizeof(long) * (c->n - at - 1));
    --c->n;
    --size_;
    bump();
    if (c->n == 0) {
        if (size_ == 0) {
            release();
            return end();
        }
        Chunk* next = c->next;
        drop_chunk(k);
        return next != nullptr ? make(next->data, next) : end();
    }
    if (at == c->n) {
        if (c->next != nullptr) return make(c->next->data, c->next);
        return make(c->data + at, c);
    }
    return make(c->data + at, c);
}

void IndexSet::drop_chunk(std::uint32_t k)
{
    Chunk* c = chunks_.list[k];
    if (c->prev != nullptr) c->prev->next = c->next;
    if (c->next != nullptr) c->next->prev = c->prev;
    std::memmove(chunks_.list + k, chunks_.list + k + 1, sizeof(Chunk*) * (chunks_.count - k - 1));
    --chunks_.count;
    ::operator delete(c);
}
