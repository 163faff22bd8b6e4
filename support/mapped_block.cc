#include "support/mapped_block.h"
#include "support/helper_thread.h"

#include <pthread.h>
#include <sys/mman.h>

#include <cerrno>
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

namespace {

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif

// The requests wait in a ring; the filler takes each one huge page at a
// time, on huge-page boundaries. Nothing here allocates through operator
// new, which may be the caller.
struct present_request {
    std::uintptr_t from, to;
};
constexpr std::size_t kQueue = 16;
constexpr std::size_t kStep = std::size_t(2) << 20;
pthread_mutex_t queue_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t queue_wake = PTHREAD_COND_INITIALIZER;
present_request queue[kQueue];
std::size_t queue_head, queue_size;
enum class filler_state { not_started, running, gone } filler = filler_state::not_started;

void* fill(void*)
{
    pthread_mutex_lock(&queue_lock);
    for (;;) {
        while (queue_size == 0)
            pthread_cond_wait(&queue_wake, &queue_lock);
        // From the end backwards: a block that its caller starts writing
        // at once, from the front, is met half-way instead of followed.
        present_request& r = queue[queue_head];
        std::uintptr_t to = r.to;
        std::uintptr_t from = (to - 1) & ~(kStep - 1);
        if (from < r.from)
            from = r.from;
        r.to = from;
        if (r.from == r.to) {
            queue_head = (queue_head + 1) % kQueue;
            --queue_size;
        }
        pthread_mutex_unlock(&queue_lock);
        // A range unmapped meanwhile is refused, which is harmless.
        int failed = madvise(reinterpret_cast<void*>(from), to - from, MADV_POPULATE_WRITE);
        int why = errno;
        pthread_mutex_lock(&queue_lock);
        if (failed != 0 && why == EINVAL) {
            // A kernel without the request: the run goes on without a filler.
            filler = filler_state::gone;
            queue_size = 0;
            break;
        }
    }
    pthread_mutex_unlock(&queue_lock);
    return nullptr;
}

}  // namespace

void make_present_soon(void* block, std::size_t bytes)
{
    if (bytes == 0)
        return;
    pthread_mutex_lock(&queue_lock);
    if (filler == filler_state::not_started)
        filler = start_helper_thread(fill) ? filler_state::running : filler_state::gone;
    if (filler == filler_state::running && queue_size < kQueue) {
        // Whole pages: the ones holding the first and the last byte are
        // the caller's.
        auto first = reinterpret_cast<std::uintptr_t>(block);
        queue[(queue_head + queue_size) % kQueue] = {first & ~std::uintptr_t(4095),
                                                     (first + bytes + 4095) & ~std::uintptr_t(4095)};
        ++queue_size;
        pthread_cond_signal(&queue_wake);
    }
    pthread_mutex_unlock(&queue_lock);
}

void make_present_now(void* block, std::size_t bytes)
{
    if (bytes == 0 || madvise(block, bytes, MADV_POPULATE_WRITE) == 0)
        return;
    // A kernel without the request: a write of what each page holds.
    auto* bytes_of = static_cast<volatile char*>(block);
    for (std::size_t at = 0; at < bytes; at += 4096)
        bytes_of[at] = bytes_of[at];
}
