#ifndef TARN_TESTS_BDD_FUNCTIONS_H
#define TARN_TESTS_BDD_FUNCTIONS_H

// Functions of four variables a, b, c, d (indexes 0 to 3) given by their
// truth tables, and an evaluator that reads a diagram straight from its
// nodes, so that results are checked without the code under test.

#include "bdd/bddpp.h"

#include <cstdint>
#include <vector>

class FourVariables {
public:
    bddpp_manager m;
    bdd v[4];

    FourVariables()
    {
        const char* names[4] = {"a", "b", "c", "d"};
        for (int i = 0; i < 4; ++i) v[i] = m.New_var_last(names[i]);
    }

    // Bit k of the table is the value where bit i of k is variable i.
    bdd from_table(uint16_t table)
    {
        bdd f = m.Bdd_zero();
        for (int k = 0; k < 16; ++k) {
            if (!((table >> k) & 1)) continue;
            bdd minterm = m.Bdd_one();
            for (int i = 0; i < 4; ++i) {
                bdd literal = ((k >> i) & 1) ? v[i] : m.Bdd_not(v[i]);
                minterm = m.Bdd_and(minterm, literal);
            }
            f = m.Bdd_or(f, minterm);
        }
        return f;
    }

    // Value of f where bit i of `point` is the variable at index i.
    bool eval(const bdd& f, unsigned point) const
    {
        int link = f.link_type();
        const bdd_node* n = f.node();
        while (n != m.one) {
            long index = m.index_by_id[n->id];
            if ((point >> index) & 1) {
                n = n->then_node;
            } else {
                link *= n->else_link_type;
                n = n->else_node;
            }
        }
        return link == 1;
    }

    uint16_t table(const bdd& f) const
    {
        uint16_t t = 0;
        for (unsigned k = 0; k < 16; ++k)
            if (eval(f, k)) t |= static_cast<uint16_t>(1u << k);
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
        if (lo > hi) return true; // no point at all
        for (unsigned z = 0; z < 16; ++z) {
            bool between = (z & lo) == lo && (z | hi) == hi;
            if (between != eval(f, z)) return false;
        }
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
