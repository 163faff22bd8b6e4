// What fresh memory costs the run: maps a block, asks for huge pages or
// forbids them, writes a byte a page, gives the block back, and again.
// The first round takes pages the machine has not handed to this process;
// the later ones take back the pages just given up.
//
//   page_bench                 512 MiB, three rounds each way
//   page_bench 1024 5          1 GiB, five rounds

#include "support/mapped_block.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <initializer_list>

namespace {

double now()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

// Seconds per GiB to make `bytes` present, or a negative value when the
// kernel refuses the mapping.
double touch(std::size_t bytes, bool huge)
{
    char* block = static_cast<char*>(map_aligned(bytes, std::size_t(2) << 20));
    if (block == nullptr) return -1;
    madvise(block, bytes, huge ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
    double t0 = now();
    for (std::size_t at = 0; at < bytes; at += 4096)
        static_cast<volatile char*>(block)[at] = 1;
    double seconds = now() - t0;
    munmap(block, bytes);
    return seconds * double(std::size_t(1) << 30) / double(bytes);
}

}  // namespace

int main(int argc, char** argv)
{
    long mib = argc > 1 ? std::atol(argv[1]) : 512;
    int rounds = argc > 2 ? std::atoi(argv[2]) : 3;
    if (mib <= 0 || rounds <= 0 || argc > 3) {
        std::fprintf(stderr, "usage: page_bench [MiB [rounds]]\n");
        return 2;
    }
    const std::size_t bytes = std::size_t(mib) << 20;
    std::printf("%-12s %5s %12s\n", "pages", "round", "s per GiB");
    for (bool huge : {true, false})
        for (int r = 1; r <= rounds; ++r) {
            double cost = touch(bytes, huge);
            if (cost < 0) {
                std::fprintf(stderr, "page_bench: no mapping of %ld MiB\n", mib);
                return 1;
            }
            std::printf("%-12s %5d %12.3f\n", huge ? "2 MiB" : "4 KiB", r, cost);
        }
    return 0;
}
