#include "tests/scale/scale_support.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

const std::string zkcgen_path = TARN_BINARY_DIR "/tools/zkcgen";
const std::string tarn_path = TARN_BINARY_DIR "/driver/tarn";

scratch::scratch()
{
    char name[] = "/tmp/tarn_scale_XXXXXX";
    const char* made = mkdtemp(name);
    dir = made ? made : "/tmp";
}

scratch::~scratch()
{
    if (dir != "/tmp")
        std::system(("rm -rf '" + dir + "'").c_str());
}

int run_shell(const std::string& command)
{
    int status = std::system(command.c_str());
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string slurp(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

bool tool_present(const char* tool)
{
    return run_shell(std::string("command -v ") + tool + " > /dev/null 2>&1") == 0;
}

std::string generate(const scratch& s, long equations, int seed)
{
    std::string name = "g" + std::to_string(equations) + "_" + std::to_string(seed);
    std::string file = s.dir + "/" + name + ".zkc";
    if (run_shell(zkcgen_path + " " + std::to_string(equations) + " " + std::to_string(seed) + " " + name + " > " +
                  file) != 0)
        return "";
    return file;
}

namespace {

// Words of a list, without the ";" that ends it (alone or glued on).
std::vector<std::string> words(const std::string& text)
{
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string w;
    while (in >> w) {
        if (!w.empty() && w.back() == ';')
            w.pop_back();
        if (!w.empty())
            out.push_back(w);
    }
    return out;
}

bool starts(const std::string& line, const char* keyword)
{
    return line.rfind(keyword, 0) == 0;
}

} // namespace

bool read_sections(const std::string& text, zkc_sections& out, std::string& error)
{
    enum { header, registers, memorized, count, nodes, expressions, after } state = header;
    std::istringstream in(text);
    std::string line;
    long number = 0;
    while (std::getline(in, line)) {
        ++number;
        if (line.empty())
            continue;
        int used = 0;
        if (starts(line, "module:")) {
            std::vector<std::string> w = words(line.substr(7));
            if (w.size() != 3)
                break;
            out.name = w[0];
            state = header;
        } else if (starts(line, "input:"))
            out.inputs = words(line.substr(6));
        else if (starts(line, "output:"))
            out.outputs = words(line.substr(7));
        else if (starts(line, "local:"))
            out.locals = words(line.substr(6));
        else if (starts(line, "register:"))
            state = registers;
        else if (starts(line, "memorized:"))
            state = memorized;
        else if (starts(line, "connexion:")) {
            out.connexion = words(line.substr(10));
            state = header;
        } else if (starts(line, "equation_def:"))
            state = count;
        else if (starts(line, "expressions:"))
            state = expressions;
        else if (starts(line, "end:")) {
            out.ended = state == expressions;
            state = after;
        } else if (state == registers && words(line).size() == 3)
            out.registers.push_back(words(line));
        else if (state == memorized && words(line).size() == 2)
            out.memorized.push_back(words(line));
        else if (state == count && std::sscanf(line.c_str(), "%ld%n", &out.declared_nodes, &used) == 1 &&
                 line[used] == '\0')
            state = nodes;
        else if (state == nodes) {
            zkc_sections::node n;
            if (std::sscanf(line.c_str(), "%ld: %ld:%ld:%ld,%d%n", &n.id, &n.var, &n.then_id, &n.else_id, &n.link,
                            &used) != 5 ||
                line[used] != '\0')
                break;
            out.nodes.push_back(n);
        } else if (state == expressions) {
            zkc_sections::expression e;
            if (std::sscanf(line.c_str(), "%ld %ld %ld:%ld,%d,(%n", &e.early, &e.late, &e.var, &e.root, &e.link,
                            &used) != 5 ||
                line.back() != ')')
                break;
            out.expressions.push_back(e);
        } else
            break;
        line.clear();
    }
    if (!line.empty()) {
        error = "line " + std::to_string(number) + ": " + line;
        return false;
    }
    return true;
}
