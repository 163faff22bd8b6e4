#ifndef TARN_TESTS_WOOD_FIXTURE_H
#define TARN_TESTS_WOOD_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "wood/Bddexpression.h"

// A wood with named variables; equations are made by name.
struct TestWood {
    Bddexpressionwood wood;

    bdd var(const std::string& n) { return wood.New_var_last(n); }
    long idx(const std::string& n) { return wood.Index_var_by_name(n); }
    bddpp_manager& m() { return *wood.bdd_manager; }
    Bddexpression* eq(const std::string& n, const bdd& exp, long early = 0, long late = 0)
    {
        bdd v = var(n);
        return new Bddexpression(n, &wood, v, exp, early, late);
    }
    Bddexpression* at(const std::string& n) { return wood.exp_table[idx(n)]; }
    IndexSet readers(const std::string& n) { return wood.amont_table[idx(n)]; }
    IndexSet ids(std::initializer_list<const char*> names)
    {
        IndexSet r;
        for (const char* n : names) r.insert(idx(n));
        return r;
    }
    std::vector<std::string> names(const std::list<long>& l)
    {
        std::vector<std::string> r;
        for (long i : l) r.push_back(wood.Name_var_by_index(i));
        return r;
    }
};

#endif
