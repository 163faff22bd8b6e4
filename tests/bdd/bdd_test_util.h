// Diagrams read straight from their nodes, so that results are checked
// without the code under test; four variables a, b, c, d; the error stream
// of a call.
#ifndef TARN_TESTS_BDD_BDD_TEST_UTIL_H
#define TARN_TESTS_BDD_BDD_TEST_UTIL_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "bdd/bddpp.h"

// What f wrote on the error stream.
template <class F> std::string captured(F f)
{
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

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
};

#endif
