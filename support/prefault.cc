#include "support/prefault.h"

#include <pthread.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdint>

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif

namespace tarn_prefault {
namespace {

struct Request {
    char* p;
    std::size_t n;
};

// Plain pthread objects, statically initialised: the first request may come
// from operator new before any constructor of this file has run.
constexpr std::size_t kQueue = 64;
constexpr std::size_t kStep = std::size_t(2) << 20;  // one huge page at a time
Request queue[kQueue];
std::size_t head, tail;  // tail - head requests waiting
std::size_t busy;        // requests being served
bool started, unsupported;
pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t wake = PTHREAD_COND_INITIALIZER;
pthread_cond_t idle = PTHREAD_COND_INITIALIZER;

void serve(const Request& r) {
    for (std::size_t at = 0; at < r.n; at += kStep) {
        std::size_t len = r.n - at < kStep ? r.n - at : kStep;
        if (madvise(r.p + at, len, MADV_POPULATE_WRITE) != 0) {
            // EINVAL: a kernel without populate; anything else (the block
            // is gone, memory is short): the rest of this request.
            if (errno == EINVAL) {
                pthread_mutex_lock(&lock);
                unsupported = true;
                pthread_mutex_unlock(&lock);
            }
            return;
        }
    }
}

void* worker(void*) {
    pthread_mutex_lock(&lock);
    for (;;) {
        while (head == tail)
            pthread_cond_wait(&wake, &lock);
        Request r = queue[head % kQueue];
        ++head;
        ++busy;
        pthread_mutex_unlock(&lock);
        serve(r);
        pthread_mutex_lock(&lock);
        --busy;
        if (head == tail && busy == 0)
            pthread_cond_broadcast(&idle);
    }
    return nullptr;
}

}  // namespace

void populate_in_background(void* p, std::size_t n) {
    if (p == nullptr || n == 0) return;
    // Only whole pages inside the block.
    constexpr std::uintptr_t page = 4096;
    std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(p) + page - 1) & ~(page - 1);
    std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(p) + n) & ~(page - 1);
    if (last <= first) return;
    pthread_mutex_lock(&lock);
    if (!unsupported && tail - head < kQueue) {
        if (!started) {
            pthread_t thread;
            pthread_attr_t attr;
            pthread_attr_init(&attr);
            pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
            // A small stack: the worker only loops over madvise.
            pthread_attr_setstacksize(&attr, 64 * 1024);
            started = pthread_create(&thread, &attr, worker, nullptr) == 0;
            pthread_attr_destroy(&attr);
            if (!started) unsupported = true;
        }
        if (started) {
            queue[tail % kQueue] = Request{reinterpret_cast<char*>(first), last - first};
            ++tail;
            pthread_cond_signal(&wake);
        }
    }
    pthread_mutex_unlock(&lock);
}

void drain() {
    pthread_mutex_lock(&lock);
    while (started && (head != tail || busy != 0))
        pthread_cond_wait(&idle, &lock);
    pthread_mutex_unlock(&lock);
}

}  // namespace tarn_prefault
