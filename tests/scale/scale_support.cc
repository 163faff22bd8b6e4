// zkcgen's layout of a module, for the scale tests.

#include "tests/scale/scale_support.h"

#include <cstdio>
#include <sstream>

namespace {

// Words of a list, without the ";" that ends it, alone or glued on.
std::vector<std::string> words(const std::string& text)
{
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string w;
    while (in >> w) {
        if (w.back() == ';')
            w.pop_back();
        if (!w.empty())
            out.push_back(w);
    }
    return out;
}

} // namespace

bool read_sections(const std::string& text, zkc_sections& z, std::string& error)
{
    enum { lists, registers, memorized, count, nodes, expressions, after } state = lists;
    std::istringstream in(text);
    std::string line;
    for (long number = 1; std::getline(in, line); ++number) {
        std::string keyword = line.substr(0, line.find(':') + 1);
        std::vector<std::string> rest = words(line.substr(keyword.size()));
        int used = 0;
        bool fits = true;
        if (line.empty())
            continue;
        else if (keyword == "module:" && rest.size() == 3)
            z.name = rest[0];
        else if (keyword == "input:")
            z.inputs = rest;
        else if (keyword == "output:")
            z.outputs = rest;
        else if (keyword == "local:")
            z.locals = rest;
        else if (keyword == "connexion:")
            z.connexion = rest;
        else if (line == "register:")
            state = registers;
        else if (line == "memorized:")
            state = memorized;
        else if (line == "equation_def:")
            state = count;
        else if (line == "expressions:")
            state = expressions;
        else if (line == "end:") {
            z.ended = state == expressions;
            state = after;
        } else if (state == registers || state == memorized) {
            fits = words(line).size() == (state == registers ? 3u : 2u);
            (state == registers ? z.registers : z.memorized).push_back(words(line));
        } else if (state == count) {
            fits = std::sscanf(line.c_str(), "%ld%n", &z.declared_nodes, &used) == 1 && line[used] == '\0';
            state = nodes;
        } else if (state == nodes) {
            zkc_sections::node n;
            fits = std::sscanf(line.c_str(), "%ld: %ld:%ld:%ld,%d%n", &n.id, &n.var, &n.then_id, &n.else_id,
                               &n.link, &used) == 5 &&
                   line[used] == '\0';
            z.nodes.push_back(n);
            if (n.var == -1)
                z.terminal = n.id;
        } else if (state == expressions) {
            zkc_sections::expression e;
            long early, late;
            fits = std::sscanf(line.c_str(), "%ld %ld %ld:%ld,%d,(", &early, &late, &e.var, &e.root, &e.link) == 5 &&
                   line.back() == ')';
            z.expressions.push_back(e);
        } else
            fits = false;
        if (!fits) {
            error = "line " + std::to_string(number) + ": " + line;
            return false;
        }
    }
    return true;
}
