#ifndef TARN_TESTS_SCALE_SCALE_SUPPORT_H
#define TARN_TESTS_SCALE_SCALE_SUPPORT_H

// Scratch directories, the built programs and the sections of a generated
// module, shared by the scale tests.

#include <string>
#include <vector>

extern const std::string zkcgen_path;
extern const std::string tarn_path;

// A fresh directory under /tmp, removed with everything in it.
struct scratch {
    std::string dir;
    scratch();
    ~scratch();
    scratch(const scratch&) = delete;
    scratch& operator=(const scratch&) = delete;
};

// Exit status of a shell command; -1 if it did not exit.
int run_shell(const std::string& command);
std::string slurp(const std::string& path);
bool tool_present(const char* tool);

// zkcgen <equations> <seed> <name> into dir/name.zkc; returns the path
// (empty if zkcgen failed). The module is named after its file, as the C
// file includes its header by the module's name.
std::string generate(const scratch& s, long equations, int seed);

// A generated module's text cut into its sections.
struct zkc_sections {
    std::string name;
    std::vector<std::string> inputs, outputs, locals;
    std::vector<std::vector<std::string>> registers;  // next, actual, init
    std::vector<std::vector<std::string>> memorized;  // pre, actual
    std::vector<std::string> connexion;
    long declared_nodes = -1;  // the count after "equation_def:"
    struct node {
        long id, var, then_id, else_id;
        int link;
    };
    std::vector<node> nodes;
    struct expression {
        long early, late, var, root;
        int link;
    };
    std::vector<expression> expressions;
    bool ended = false;  // "end:" closes the expressions
};
// Reads the layout that zkcgen writes: one section keyword per line (a
// signal list on its keyword's line), one register, memorised, node or
// expression per line. A line that fits none of these fails the read.
bool read_sections(const std::string& text, zkc_sections& out, std::string& error);

#endif
