#ifndef TARN_TESTS_SCALE_SCALE_SUPPORT_H
#define TARN_TESTS_SCALE_SCALE_SUPPORT_H

// The sections of a module as zkcgen lays it out, shared by the scale
// tests.

#include "tests/tarn_process.h"

#include <string>
#include <vector>

struct zkc_sections {
    std::string name;
    std::vector<std::string> inputs, outputs, locals, connexion;
    std::vector<std::vector<std::string>> registers;  // next, actual, initial
    std::vector<std::vector<std::string>> memorized;  // pre, actual
    long declared_nodes = -1;                         // the count after "equation_def:"
    struct node {
        long id, var, then_id, else_id;
        int link;
    };
    std::vector<node> nodes;
    long terminal = -1;  // id of the node with var -1
    struct expression {
        long var, root;
        int link;
    };
    std::vector<expression> expressions;
    bool ended = false;  // "end:" closes the expressions
};
// One section keyword a line (a signal list on its keyword's line), one
// register, memorised pair, node or expression a line. A line that fits
// none of these fails the read and is named in `error`.
bool read_sections(const std::string& text, zkc_sections& out, std::string& error);

#endif
