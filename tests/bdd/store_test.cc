// The manager and its store: variables, names, handles, the unique table,
// marks and garbage collection.

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "bdd/bddpp.h"
#include "bdd/bddpp_memory.h"
#include "tests/bdd/bdd_test_util.h"

using testing::ExitedWithCode;

namespace {

// The order, the names and the growth of the tables against a model:
// names_test. Here the shape of a variable's node and the refusals.
TEST(BddStore, VariableNodesAndLookupsOutOfRange) {
    bddpp_manager m;
    bdd a = m.New_var_last("a");
    EXPECT_EQ(a.node()->else_link_type, -1);
    EXPECT_TRUE(a.node()->then_node == m.one && a.node()->else_node == m.one);
    EXPECT_EQ(m.one->references, 1) << "variable nodes do not count on the terminal";
    EXPECT_EQ((std::vector<long>{m.Id_var_by_name("zz"), m.Index_var_by_name("zz")}), (std::vector<long>{-1, -1}));
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(m.Bdd_var_by_name("zz")));
    struct {
        std::function<bdd()> call;
        std::string message;
        int link;  // of the result; 0 for a null handle
        bool terminal;
    } cases[] = {
        {[&] { return m.Bdd_var_by_index(-1); }, "", 1, true},
        {[&] { return m.Bdd_var_by_index(-2); },
         "calling bddpp_manager::Bdd_var_by_index() with index= -2 :out of range!\n", 0, false},
        {[&] { return m.Bdd_var_by_index(1); },
         "calling bddpp_manager::Bdd_var_by_index() with index= 1 :out of range!\n", 0, false},
        {[&] { return m.Bdd_var_by_id(-1); },
         "calling bddpp_manager::Bdd_var_by_id() with id= -1 :out of range!\n", -1, true},
        {[&] { return m.Bdd_var_by_id(0); }, "", 1, false},
    };
    for (auto& c : cases) {
        bdd r;
        std::string err = captured([&] { r = c.call(); });
        EXPECT_EQ(err, c.message);
        EXPECT_EQ(r.link_type(), c.link);
        EXPECT_EQ(r.node() == m.one, c.terminal);
    }

    std::string err = captured([&] {
        EXPECT_EQ(m.Bdd_if_id(bdd()), -3);
        EXPECT_EQ(m.Bdd_if_index(bdd()), -3);
    });
    EXPECT_EQ(err,
              "Error in bddpp_manager::Bdd_if_id(): bad Bdd manager or bdd not initialized!\n"
              "Error in bddpp_manager::Bdd_if_index(): bad Bdd manager or bdd not "
              "initialized!\n");
    EXPECT_EQ(m.Bdd_if_index(m.Bdd_one()), -1);
    EXPECT_EQ(m.Id_var_by_bdd(m.Bdd_zero()), -1);
    EXPECT_EQ(m.Index_var_by_bdd(a), 0);

    EXPECT_EQ(m.Name_var_by_bdd(m.Bdd_one()), "1");
    EXPECT_EQ(m.Name_var_by_bdd(m.Bdd_zero()), "0");
    EXPECT_EQ(m.Name_var_by_bdd(m.Bdd_not(a)), "a");
    EXPECT_EXIT(m.Name_var_by_bdd(bdd()), ExitedWithCode(1),
                "error in bddpp_manager::Name_var_by_bdd\\(\\)\nbdd defined by: .*, is not "
                "correct \\.\\.\\.\n\\(typebdd = -3\\)");

    for (int i = 1; i < 17; ++i) m.New_var_last("v" + std::to_string(i));
    for (long id = 0; id < 17; ++id) EXPECT_EQ(m.assoc[id], m.node_by_id[id]);
    err = captured([&] { EXPECT_EQ(m.New_node_var_after(17, "q"), nullptr); });
    EXPECT_EQ(err, "Error in bddpp_manager::New_node_var_after(): index 17 out of range!\n");
    EXPECT_EQ(m.variables_number, 17);
}

TEST(BddStore, RenamingRewritesNamesButNotTheCreationNames) {
    bddpp_manager m;
    bdd x = m.New_var_last("x");
    bdd t = m.New_var_last("t");
    m.Rename_var("y", "x");
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(m.Bdd_var_by_name("y")));
    EXPECT_EQ(m.New_var_last("x"), x) << "the creation name still finds it";

    struct {
        const char* new_name;
        const char* old_name;
        const char* message;
    } refused[] = {
        {"t", "y", "in bdd_manager::Rename_var(): WARNING t ALREADY DEFINED !\n"
                   "renaming process aborted ...\n"},
        {"u", "nope", "in bdd_manager::Rename_var(): WARNING nope NOT FOUND !\n"
                      "renaming process aborted ...\n"},
    };
    for (auto& r : refused) {
        EXPECT_EQ(captured([&] { m.Rename_var(r.new_name, r.old_name); }), r.message);
        EXPECT_EQ(m.Name_var_by_id(0), "y");
        EXPECT_EQ(m.Name_var_by_id(1), "t");
    }
    bddpp_manager empty;
    EXPECT_EQ(captured([&] { empty.Rename_var("a", "b"); }),
              "in bdd_manager::Rename_var(): WARNING b NOT FOUND !\n"
              "renaming process aborted ...\n");

    m.Change_name_by_index(1, "_s_k.l");
    m.Change_name_by_id(0, "");
    m.Replace_char_in_all_names('.', '_');
    m.No_begin_underscore_name();
    EXPECT_EQ(m.Name_var_by_id(1), "v_s_k_l");
    EXPECT_EQ(m.Name_var_by_id(0), "");
    EXPECT_EQ(m.Id_var_by_name("t"), 1);
}

// The counts themselves are held by the differential tests (the same
// counts on both paths, none left once the handles are gone), the
// numbering of cones and the clearing of marks by the printers' texts
// (print_test). Here the handle helpers, the obsolete calls, sizes, the
// packing of small keys into signatures and the self check of nodes.
TEST(BddStore, HandlesSignaturesSizesAndSelfChecks) {
    bddpp_manager m;
    bdd a = m.New_var_last("a");
    bdd b = m.New_var_last("b");
    bdd f = m.Bdd_and(a, b);
    EXPECT_EQ(bdd_node_global_id(bdd()), -3);
    EXPECT_EQ(bdd_node_global_id(f), 4);
    EXPECT_EQ(bdd_link_type(m.Bdd_not(f)), -1);
    EXPECT_EQ(m.Bdd_size(f), 3);
    EXPECT_EQ(m.Bdd_size(f), 3) << "the terminal is cleared with the cone";
    EXPECT_EQ(captured([&] { EXPECT_EQ(m.Bdd_incremental_id(nullptr, 7), 7); }),
              "Warning: call bddpp_manager::Bdd_incremental_id() with null reference!\n");

    EXPECT_EQ(captured([&] { EXPECT_EQ(m.Bdd_dup(f), f); }),
              "Warning: bddpp_manager::Bdd_dup() is became useless ...\n");
    std::string freed = captured([&] { m.Bdd_free(f); });
    EXPECT_EQ(freed.rfind("Warning: bddpp_manager::Bdd_free() is now became useless\n", 0), 0u);
    EXPECT_NE(freed.find(", link type =1, adr node= "), std::string::npos);
    EXPECT_NE(freed.find("node signature: " + std::to_string(f.node()->signature())),
              std::string::npos);

    // A child without a global id is refused.
    EXPECT_EQ(bdd_node_signature(-1, 1, nullptr, nullptr), -1);
    EXPECT_EQ(bdd_node_signature(-3, 1, nullptr, nullptr), -3);
    bdd_node bad;
    bad.global_id = -1;
    EXPECT_EXIT(bdd_node_signature(0, 1, &bad, m.one), ExitedWithCode(1),
                "ERROR in bdd_node_signature\\(\\): then node have a bad global id!");
    EXPECT_EXIT(bdd_node_signature(0, 1, m.one, &bad), ExitedWithCode(1),
                "ERROR in bdd_node_signature\\(\\): else node have a bad global id!");

    bdd g = m.Bdd_or(a, b);
    EXPECT_TRUE(m.Bdd_is_correct(g));
    EXPECT_TRUE(m.Bdd_is_correct(m.Bdd_zero()));
    EXPECT_EQ(captured([&] { EXPECT_FALSE(m.Bdd_is_correct(bdd())); }),
              "Warning: call  bddpp_manager::Bdd_is_correct() with a null reference!\n");
    // A node made by hand against the order, above a correct one.
    bdd_node* wrong = new bdd_node(&m, 1, 1, a.node(), m.one, m.next_global_id++);
    bdd hold(&m, 1, wrong);
    EXPECT_FALSE(m.Bdd_is_correct(hold));
    bdd_node* above = new bdd_node(&m, 0, 1, wrong, m.one, m.next_global_id++);
    EXPECT_FALSE(above->is_correct());
    bdd_node orphan;
    EXPECT_FALSE(orphan.is_correct());
}

// Past 2^20 global ids, two keys share one packed signature; the table
// must still tell the nodes apart.
TEST(BddStore, NodesWithCollidingSignaturesStayDistinct) {
    bddpp_manager m;
    bdd a = m.New_var_last("a");  // global id 2
    bdd b = m.New_var_last("b");  // 3
    bdd c = m.New_var_last("c");  // 4
    bdd w = m.Bdd_or(b, c);       // 5
    m.next_global_id = (1L << 20) + 4;
    bdd z = m.Bdd_and(b, c);
    ASSERT_EQ(z.node()->global_id, (1L << 20) + 4);

    // The else field of (c, z) overflows into the then field: 4 | 1 = 5,
    // which is the then field of (w, c).
    int link = 1;
    bdd_node* p = m.Find_or_create_bdd_node(0, 1, -1, c.node(), z.node(), link);
    bdd hold_p(&m, link, p);
    link = 1;
    bdd_node* q = m.Find_or_create_bdd_node(0, 1, -1, w.node(), c.node(), link);
    bdd hold_q(&m, link, q);
    ASSERT_NE(p, q);
    EXPECT_EQ(p->signature(), q->signature());
    long next = m.next_global_id;
    link = 1;
    EXPECT_EQ(m.Find_or_create_bdd_node(0, 1, -1, c.node(), z.node(), link), p);
    link = 1;
    EXPECT_EQ(m.Find_or_create_bdd_node(0, 1, -1, w.node(), c.node(), link), q);
    EXPECT_EQ(m.next_global_id, next);
    m.Bdd_gc();
    EXPECT_EQ(m.map->size(), 7u);
    EXPECT_TRUE(m.Bdd_is_correct(hold_p));
    EXPECT_TRUE(m.Bdd_is_correct(hold_q));
    hold_q = bdd();
    m.Bdd_gc();
    EXPECT_EQ(m.map->find(0, -1, c.node(), z.node()), p);
    EXPECT_EQ(m.map->find(0, -1, w.node(), c.node()), nullptr);
}

TEST(BddStore, FindOrCreateCasesAndOrderFault) {
    bddpp_manager m;
    bdd a = m.New_var_last("a");
    bdd b = m.New_var_last("b");
    struct {
        long index;
        int then_link, else_link, link_in;
        bdd_node* then_node;
        bdd_node* else_node;
        bdd_node* expected;
        int link_out;
    } cases[] = {
        {-1, -1, 1, 1, m.one, m.one, m.one, -1},
        {-2, 1, 1, 1, m.one, m.one, nullptr, 1},
        {1, -1, -1, 1, m.one, m.one, m.one, -1},
        {1, 1, -1, 1, m.one, m.one, b.node(), 1},
        {1, -1, 1, 1, m.one, m.one, b.node(), -1},
    };
    for (auto& c : cases) {
        int link = c.link_in;
        EXPECT_EQ(m.Find_or_create_bdd_node(c.index, c.then_link, c.else_link, c.then_node,
                                            c.else_node, link),
                  c.expected);
        EXPECT_EQ(link, c.link_out);
    }
    EXPECT_EQ(m.next_global_id, 4);

    int link = 1;
    std::string err = captured([&] {
        EXPECT_EQ(m.Find_or_create_bdd_node(1, 1, -1, a.node(), m.one, link), nullptr);
    });
    EXPECT_EQ(err,
              "FATAL ERROR: Bad call of bddpp_manager::Find_or_create_bdd_node():\n"
              "  index 1 is not less than  its then node index (0)\n");
    err = captured([&] { m.Find_or_create_bdd_node(1, 1, -1, m.one, b.node(), link); });
    EXPECT_EQ(err,
              "FATAL ERROR: Bad call of bddpp_manager::Find_or_create_bdd_node():\n"
              "  index 1 is not less than  its else node index (1)\n");
    EXPECT_EQ(m.next_global_id, 4);
}

TEST(BddStore, CollectionKeepsReferencedConesAndFreesChains) {
    bddpp_manager m;
    std::vector<bdd> x;
    for (int i = 0; i < 6; ++i) x.push_back(m.New_var_last("x" + std::to_string(i)));
    m.Bdd_gc();
    EXPECT_EQ(m.gc_calls, 1);
    EXPECT_EQ(m.map->size(), 6u);

    bdd kept;
    {
        bdd chain = x[5];
        for (int i = 4; i >= 0; --i) chain = m.Bdd_and(x[i], chain);
        bdd other = m.Bdd_or(x[0], x[3]);
        kept = m.Bdd_or(m.Bdd_and(x[1], x[2]), x[4]);
    }
    long size_of_kept = m.Bdd_size(kept);
    EXPECT_GT(m.map->size(), 6u + size_of_kept);
    long next = m.next_global_id;
    EXPECT_GT(m.Computed_table_load(), 0u);

    m.Bdd_gc();
    EXPECT_EQ(m.gc_calls, 2);
    // Only the variables and the kept cone are left: x1 ? (x2 ? 1 : x4) : x4
    // has two nodes of its own besides the variable x4's.
    EXPECT_EQ(size_of_kept, 4);
    EXPECT_EQ(m.map->size(), 8u);
    EXPECT_EQ(m.Computed_table_load(), 0u);
    EXPECT_TRUE(m.Bdd_is_correct(kept));
    bdd redo = m.Bdd_and(x[0], x[1]);
    EXPECT_EQ(redo.node()->global_id, next) << "global ids are never reused";

    kept = bdd();
    redo = bdd();
    m.Bdd_gc();
    EXPECT_EQ(m.map->size(), 6u);
    for (const bdd& v : x) EXPECT_TRUE(m.Bdd_is_var(v));

    long before = m.next_global_id;
    bdd made_again = m.Bdd_and(x[1], x[2]);
    EXPECT_EQ(made_again.node()->global_id, before) << "collected, so made anew";
    // Every freed node is handed out once: fresh functions get as many
    // distinct nodes.
    std::vector<bdd> fresh{made_again};
    for (int i = 0; i + 1 < 6; ++i) {
        fresh.push_back(m.Bdd_or(x[i], x[i + 1]));
        fresh.push_back(m.Bdd_and(m.Bdd_not(x[i]), x[i + 1]));
    }
    std::set<bdd_node*> nodes;
    for (const bdd& f : fresh) nodes.insert(f.node());
    EXPECT_EQ(nodes.size(), fresh.size());
    EXPECT_TRUE(m.Bdd_is_correct(made_again));
}

TEST(BddStore, TernaryTreeOfAFunction) {
    bddpp_manager m;
    bdd a = m.New_var_last("a");
    bdd b = m.New_var_last("b");
    bdd f = m.Bdd_or(a, b);
    Tdd t(&m, f);
    EXPECT_EQ(t.variable, a);
    ASSERT_NE(t.then_tdd, nullptr);
    EXPECT_TRUE(m.Bdd_is_one_tautologic(t.then_tdd->variable));
    EXPECT_EQ(t.else_tdd->variable, b);
    EXPECT_EQ(t.dont_care_tdd->variable, b) << "then and else: 1 and b";
    EXPECT_TRUE(m.Bdd_is_zero_tautologic(t.else_tdd->else_tdd->variable));

    std::ostringstream out;
    t.Print_bdd_structure(out);
    EXPECT_EQ(out.str(),
              "if a\n  1\nelse if !a\n  if b\n    1\n  else if !b\n    0\n  dont care b\n"
              "    0\ndont care a\n  if b\n    1\n  else if !b\n    0\n  dont care b\n    0\n");

    EXPECT_EQ(captured([&] { Tdd empty(nullptr, f); }),
              "in Tdd::Tdd() : error: bdd manager not yet created !\n");
}

}  // namespace

// Big blocks, from the kernel and from the heap: zeroed blocks read zero
// even where an earlier block was written and given back, huge ones are
// aligned, and live blocks keep their bytes.
TEST(BlockAlloc, ZeroedAlignedAndReusable)
{
    constexpr std::size_t huge = std::size_t(2) << 20;
    const std::size_t sizes[] = {64, 4096, huge - 8, huge, huge + 1, 3 * huge + 123};
    for (int round = 0; round < 3; ++round) {
        std::vector<unsigned char*> live;
        for (std::size_t bytes : sizes) {
            auto* p = static_cast<unsigned char*>(bdd_block_alloc(bytes));
            ASSERT_NE(p, nullptr);
            if (bytes >= huge) {
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % huge, 0u) << bytes;
            }
            std::size_t nonzero = 0;
            for (std::size_t i = 0; i < bytes; i += 61)
                nonzero += p[i] != 0;
            nonzero += p[bytes - 1] != 0;
            EXPECT_EQ(nonzero, 0u) << "round " << round << " bytes " << bytes;
            std::memset(p, 0xA5 + int(bytes % 7), bytes);
            live.push_back(p);
        }
        for (std::size_t k = 0; k < live.size(); ++k) {
            unsigned char want = static_cast<unsigned char>(0xA5 + int(sizes[k] % 7));
            EXPECT_EQ(live[k][0], want);
            EXPECT_EQ(live[k][sizes[k] - 1], want);
            bdd_block_free(live[k]);
        }
    }
    bdd_block_free(nullptr);
}

// A block handed to the node pool holds nodes made after it, once the
// pool's free cells and current block are used up.
TEST(BlockAlloc, BlockHandedToTheNodesHoldsNewNodes)
{
    constexpr std::size_t bytes = std::size_t(4) << 20;
    auto* block = static_cast<char*>(bdd_block_alloc(bytes, false));
    std::memset(block, 1, bytes);
    bdd_block_to_nodes(block);
    // Still mapped: not given back to the kernel.
    std::vector<unsigned char> present(bytes / 4096);
    ASSERT_EQ(mincore(block, bytes, present.data()), 0);

    bddpp_manager m;
    constexpr int vars = 48;
    for (int i = 0; i < vars; ++i)
        m.New_var_last("x" + std::to_string(i));
    // Cubes built from the bottom, the lowest levels spelling k: each one
    // makes new nodes all the way up.
    std::vector<bdd> kept;
    bool inside = false;
    for (long k = 0; !inside && m.next_global_id < 4000000; ++k) {
        bdd f = m.Bdd_one();
        for (int i = vars - 1; i >= 0; --i) {
            bool positive = ((k >> (vars - 1 - i)) & 1) != 0;
            f = positive ? m.Bdd_ite(1, i, f, m.Bdd_zero()) : m.Bdd_ite(1, i, m.Bdd_zero(), f);
            const char* at = reinterpret_cast<const char*>(f.node());
            inside = inside || (at >= block && at < block + bytes);
        }
        kept.push_back(f);
    }
    EXPECT_TRUE(inside);
}

// Room made present by a set-up: blocks from it are there before their
// first write and read zero, huge ones aligned; once it is used up, blocks
// are mapped afresh. In a child, as the room lasts for the process.
TEST(BlockAlloc, ReservedRoomServesBlocksPresent)
{
    auto body = [] {
        constexpr std::size_t huge = std::size_t(2) << 20, page = 4096, small_bytes = 300000;
        auto present_pages = [](void* p, std::size_t bytes) {
            std::vector<unsigned char> in((bytes + page - 1) / page);
            if (mincore(p, bytes, in.data()) != 0) return std::size_t(0);
            std::size_t n = 0;
            for (unsigned char c : in) n += c & 1;
            return n;
        };
        bdd_reserve_nodes(4 * huge / sizeof(bdd_node)); // 8 MiB
        auto* table = static_cast<unsigned char*>(bdd_block_alloc(3 * huge));
        auto* small = static_cast<unsigned char*>(bdd_block_alloc(small_bytes));
        bool ok = reinterpret_cast<std::uintptr_t>(table) % huge == 0 &&
                  present_pages(table, 3 * huge) == 3 * huge / page &&
                  present_pages(small, small_bytes) == (small_bytes + page - 1) / page;
        for (std::size_t i = 0; i < 3 * huge; i += 509) ok = ok && table[i] == 0;
        for (std::size_t i = 0; i < small_bytes; i += 509) ok = ok && small[i] == 0;
        std::memset(small, 7, small_bytes);
        bdd_block_free(small);
        // Less than 2 MiB left: the next table is a fresh mapping.
        auto* fresh = static_cast<unsigned char*>(bdd_block_alloc(huge));
        ok = ok && present_pages(fresh, huge) == 0 && fresh[huge / 2] == 0;
        bdd_block_free(fresh);
        bdd_block_free(table);
        std::exit(ok ? 0 : 3);
    };
    EXPECT_EXIT(body(), ExitedWithCode(0), "");
}
