#ifndef TARN_TESTS_BDD_BDD_TEST_UTIL_H
#define TARN_TESTS_BDD_BDD_TEST_UTIL_H

#include <string>
#include <vector>

#include "bdd/bddpp.h"

// Value of f under an assignment given by variable index.
inline bool eval_bdd(bddpp_manager& m, const bdd& f, const std::vector<bool>& by_index) {
    int link = f.link_type();
    bdd_node* n = f.node();
    while (n != m.one) {
        bool v = by_index[m.Node_index(n)];
        if (v) {
            n = n->then_node;
        } else {
            link *= n->else_link_type;
            n = n->else_node;
        }
    }
    return link == 1;
}

// A text as a death-test pattern that matches it literally.
inline std::string literal_pattern(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) out += '\\';
        out += c;
    }
    return out;
}

#endif
