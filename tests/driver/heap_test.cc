// The executable's allocator, linked into this test in place of the
// library's operator new: every allocation of the test framework goes
// through it too.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

struct Block {
    unsigned char* p;
    std::size_t n;
    unsigned char fill;
    // Odd sizes go through the sized operators (freed by class), even ones
    // through the array forms.
    void release() const
    {
        if (n % 2)
            ::operator delete(p, n);
        else
            delete[] p;
    }
};

// Random sizes across the small classes, the class boundary and the large
// path; blocks are filled, some freed and reused, and every live block must
// keep its bytes, its alignment and its own place.
TEST(TarnHeap, BlocksStayAlignedDisjointAndIntactThroughReuse) {
    std::mt19937 rng(7);
    std::vector<Block> live;
    const std::size_t sizes[] = {0, 1, 8, 15, 16, 17, 40, 48, 100, 512, 4095, 4096, 4097, 70000, 5u << 20};
    for (int round = 0; round < 20000; ++round) {
        if (!live.empty() && rng() % 3 == 0) {
            std::size_t at = rng() % live.size();
            Block b = live[at];
            for (std::size_t i = 0; i < b.n; ++i)
                ASSERT_EQ(b.p[i], b.fill) << "block of " << b.n << " bytes overwritten";
            b.release();
            live[at] = live.back();
            live.pop_back();
            continue;
        }
        std::size_t n = sizes[rng() % (sizeof sizes / sizeof sizes[0])];
        if (n == (5u << 20) && rng() % 50 != 0)
            n = 33;
        Block b{n % 2 ? static_cast<unsigned char*>(::operator new(n)) : new unsigned char[n], n,
                static_cast<unsigned char>(rng())};
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(b.p) % 16, 0u);
        std::memset(b.p, b.fill, n);
        live.push_back(b);
    }
    std::map<std::uintptr_t, std::size_t> by_address;
    for (const Block& b : live) {
        for (std::size_t i = 0; i < b.n; ++i)
            ASSERT_EQ(b.p[i], b.fill);
        by_address[reinterpret_cast<std::uintptr_t>(b.p)] = b.n;
    }
    std::uintptr_t end = 0;
    for (const auto& [at, n] : by_address) {
        EXPECT_GE(at, end) << "two live blocks overlap";
        end = at + (n == 0 ? 1 : n);
    }
    for (const Block& b : live)
        b.release();
}

TEST(TarnHeap, FreedCellsAreReusedBeforeNewOnes) {
    std::vector<std::string*> first;
    for (int i = 0; i < 1000; ++i)
        first.push_back(new std::string(40, 'x'));
    std::vector<std::uintptr_t> freed;
    for (std::string* s : first) {
        freed.push_back(reinterpret_cast<std::uintptr_t>(s));
        delete s;
    }
    std::string* again = new std::string(40, 'y');
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(again), freed.back());
    delete again;
}

// Idle cells of a larger class (here 144 bytes) serve a smaller class
// (128) before it takes a fresh slab, and stay cells of their own size:
// given back unsized, they serve the larger size again without touching
// the smaller blocks still held.
TEST(TarnHeap, IdleCellsOfALargerClassServeASmallerOne) {
    std::vector<void*> large;
    for (int i = 0; i < 2000; ++i)
        large.push_back(::operator new(144));
    std::set<std::uintptr_t> idle;
    for (void* p : large) {
        idle.insert(reinterpret_cast<std::uintptr_t>(p));
        ::operator delete(p, 144);
    }
    std::vector<unsigned char*> small;
    std::size_t borrowed = 0;
    for (int i = 0; i < 1100; ++i) {
        auto* p = static_cast<unsigned char*>(::operator new(120));
        std::memset(p, i & 0xff, 120);
        borrowed += idle.count(reinterpret_cast<std::uintptr_t>(p));
        small.push_back(p);
    }
    EXPECT_GE(borrowed, 455u) << "a slab's worth of idle 144-byte cells was not lent";
    // Every other borrowed block back unsized, to the 144-byte list.
    std::vector<unsigned char*> kept;
    for (std::size_t i = 0; i < small.size(); ++i) {
        if (i % 2 && idle.count(reinterpret_cast<std::uintptr_t>(small[i])))
            ::operator delete(small[i]);
        else
            kept.push_back(small[i]);
    }
    std::vector<unsigned char*> again;
    for (int i = 0; i < 600; ++i) {
        auto* p = static_cast<unsigned char*>(::operator new(144));
        std::memset(p, 0xee, 144);
        again.push_back(p);
    }
    for (unsigned char* p : kept) {
        std::size_t i = std::find(small.begin(), small.end(), p) - small.begin();
        for (int k = 0; k < 120; ++k)
            ASSERT_EQ(p[k], static_cast<unsigned char>(i & 0xff)) << "a 120-byte block overwritten";
    }
    for (unsigned char* p : again)
        ::operator delete(p, 144);
    for (unsigned char* p : kept)
        ::operator delete(p, 120);
}

// Enough small objects for many regions: every block must keep what it
// was given.
TEST(TarnHeap, ManyRegionsKeepTheirBytes) {
    constexpr std::size_t kBlocks = 3'000'000;  // 64 bytes each: about 190 MiB
    std::vector<std::uint64_t*> blocks;
    blocks.reserve(kBlocks);
    for (std::size_t i = 0; i < kBlocks; ++i) {
        auto* b = new std::uint64_t[8];
        for (int k = 0; k < 8; ++k)
            b[k] = i * 8 + k;
        blocks.push_back(b);
    }
    for (std::size_t i = 0; i < kBlocks; ++i)
        for (int k = 0; k < 8; ++k)
            ASSERT_EQ(blocks[i][k], i * 8 + k) << "block " << i;
    for (std::uint64_t* b : blocks)
        delete[] b;
}

}  // namespace
