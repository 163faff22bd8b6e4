// Diagrams read straight from their nodes, so that results are checked
// without the code under test, and functions of four variables given by
// their truth tables.
#ifndef TARN_TESTS_BDD_BDD_TEST_UTIL_H
#define TARN_TESTS_BDD_BDD_TEST_UTIL_H

#include <cstdint>
#include <string>
#include <vector>

#include "bdd/bddpp.h"

// Value of f where value(index) is the value of the variable at `index`.
template <class Value> bool eval_bdd(const bddpp_manager& m, const bdd& f, Value value)
{
    int link = f.link_type();
    const bdd_node* n = f.node();
    while (n != m.one) {
        if (value(m.index_by_id[n->id])) {
            n = n->then_node;
        } else {
            link *= n->else_link_type;
            n = n->else_node;
        }
    }
    return link == 1;
}

inline bool eval_bdd(const bddpp_manager& m, const bdd& f, const std::vector<bool>& by_index)
{
    return eval_bdd(m, f, [&](long i) { return bool(by_index[i]); });
}

// A text as a death-test pattern that matches it literally.
inline std::string literal_pattern(const std::string& text)
{
    std::string out;
    for (char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos)
            out += '\\';
        out += c;
    }
    return out;
}

// Variables a, b, c, d at indexes 0 to 3 (global ids 2 to 5).
struct FourVariables {
    bddpp_manager m;
    bdd v[4] = {m.New_var_last("a"), m.New_var_last("b"), m.New_var_last("c"), m.New_var_last("d")};
    bdd &a = v[0], &b = v[1], &c = v[2], &d = v[3];

    // Bit k of the table is the value where bit i of k is variable i.
    bdd from_table(uint16_t table)
    {
        bdd f = m.Bdd_zero();
        for (int k = 0; k < 16; ++k) {
            if (!((table >> k) & 1))
                continue;
            bdd minterm = m.Bdd_one();
            for (int i = 0; i < 4; ++i)
                minterm = m.Bdd_and(minterm, ((k >> i) & 1) ? v[i] : m.Bdd_not(v[i]));
            f = m.Bdd_or(f, minterm);
        }
        return f;
    }

    // Value of f where bit i of `point` is the variable at index i.
    bool eval(const bdd& f, unsigned point) const
    {
        return eval_bdd(m, f, [point](long i) { return ((point >> i) & 1) != 0; });
    }

    uint16_t table(const bdd& f) const
    {
        uint16_t t = 0;
        for (unsigned k = 0; k < 16; ++k)
            if (eval(f, k))
                t |= static_cast<uint16_t>(1u << k);
        return t;
    }

    // A cube: its points are exactly those between the meet and the join
    // of its points.
    bool is_cube(const bdd& f) const
    {
        unsigned lo = 15, hi = 0;
        for (unsigned k = 0; k < 16; ++k)
            if (eval(f, k)) {
                lo &= k;
                hi |= k;
            }
        for (unsigned z = 0; z < 16 && lo <= hi; ++z)
            if (((z & lo) == lo && (z | hi) == hi) != eval(f, z))
                return false;
        return true;
    }
};

// A spread of functions: constants, literals, a cube, xor, majority, a
// multiplexer, and a few without a name.
inline std::vector<uint16_t> sample_tables()
{
    return {0x0000, 0xFFFF, 0xAAAA, 0x5555, 0x8888, 0x6666, 0xE8E8, 0xCACA,
            0x6996, 0x1234, 0xBEEF, 0x0F0F, 0x8001, 0x7FFE, 0xF0E1, 0x0360};
}

#endif
