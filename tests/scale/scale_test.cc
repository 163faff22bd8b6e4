// Generated modules through the built programs: zkcgen writes modules the
// reader takes, the same for a seed, with everything the road has to
// handle; tarn closes a modest one and writes BLIF and C that real tools
// accept.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string zkcgen = TARN_BINARY_DIR "/tools/zkcgen";
const std::string tarn = TARN_BINARY_DIR "/driver/tarn";

struct scratch {
    std::string dir;
    scratch()
    {
        char name[] = "/tmp/tarn_scale_XXXXXX";
        dir = mkdtemp(name);
    }
    ~scratch() { std::system(("rm -rf '" + dir + "'").c_str()); }
};

int run(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }

std::string slurp(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The module is named after its file, as the C file includes its header
// by the module's name.
std::string generate(const scratch& s, long equations, int seed)
{
    std::string name = "g" + std::to_string(equations) + "_" + std::to_string(seed);
    std::string file = s.dir + "/" + name + ".zkc";
    EXPECT_EQ(run(zkcgen + " " + std::to_string(equations) + " " + std::to_string(seed) + " " + name + " > " + file),
              0);
    return file;
}

// Lines of a section, from its keyword to the next keyword line.
std::vector<std::string> section(const std::string& text, const std::string& keyword)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    bool inside = false;
    while (std::getline(in, line)) {
        bool is_keyword = !line.empty() && line.back() == ':' && line.find(' ') == std::string::npos;
        if (line.rfind(keyword, 0) == 0) {
            inside = true;
            continue;
        }
        if (inside && (is_keyword || line.rfind("end:", 0) == 0 || line.rfind("connexion:", 0) == 0))
            break;
        if (inside && !line.empty())
            lines.push_back(line);
    }
    return lines;
}

bool have(const char* tool) { return run(std::string("command -v ") + tool + " > /dev/null 2>&1") == 0; }

} // namespace

TEST(Zkcgen, SameSeedSameFileOtherSeedOtherFile)
{
    scratch s;
    std::string a = slurp(generate(s, 500, 7));
    std::string b = slurp(generate(s, 500, 7));
    std::string c = slurp(generate(s, 500, 8));
    EXPECT_FALSE(a.empty());
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
}

TEST(Zkcgen, ModulesHoldWhatTheRoadMustHandle)
{
    scratch s;
    std::string text = slurp(generate(s, 3000, 3));
    EXPECT_GT(section(text, "register:").size(), 10u);
    EXPECT_GT(section(text, "memorized:").size(), 10u);

    // Node table: "id: var:then:else,link"; shared nodes make the cones
    // reconvergent.
    struct node {
        long var, then_id, else_id;
    };
    std::map<long, node> nodes;
    long terminal = -1;
    for (const std::string& line : section(text, "equation_def:")) {
        long id, var, then_id, else_id;
        int link;
        if (std::sscanf(line.c_str(), "%ld: %ld:%ld:%ld,%d", &id, &var, &then_id, &else_id, &link) != 5)
            continue;
        nodes[id] = {var, then_id, else_id};
        if (var == -1)
            terminal = id;
    }
    ASSERT_GE(terminal, 0);
    std::map<long, int> parents;
    std::set<long> variable_nodes; // a variable's own node: both children the terminal
    for (const auto& n : nodes) {
        for (long child : {n.second.then_id, n.second.else_id})
            if (child != terminal)
                parents[child]++;
        if (n.second.var >= 0 && n.second.then_id == terminal && n.second.else_id == terminal)
            variable_nodes.insert(n.first);
    }
    long shared = 0;
    for (const auto& p : parents)
        shared += p.second > 1 ? 1 : 0;
    EXPECT_GT(shared, 10) << "reconvergent cones";

    // Expressions: "early late var:root,link,(deps )".
    long constants = 0, copies_of_locals = 0;
    std::set<long> defined;
    for (const std::string& line : section(text, "expressions:")) {
        long early, late, var, root;
        int link;
        if (std::sscanf(line.c_str(), "%ld %ld %ld:%ld,%d", &early, &late, &var, &root, &link) != 5)
            continue;
        if (root == terminal)
            ++constants;
        else if (variable_nodes.count(root) != 0 && defined.count(nodes[root].var) != 0)
            ++copies_of_locals; // a wire copying an equation defined before it: chains
        defined.insert(var);
    }
    EXPECT_GT(constants, 10);
    EXPECT_GT(copies_of_locals, 10);
}

TEST(Zkcgen, ModestModuleGoesThroughTheRoadAndItsOutputsAreAccepted)
{
    scratch s;
    std::string module = generate(s, 2000, 5);
    std::string base = module.substr(0, module.size() - 4);
    std::string err = s.dir + "/err.txt";
    ASSERT_EQ(run("cd '" + s.dir + "' && env -u DISPLAY " + tarn + " '" + module + "' -blif -c > /dev/null 2> " + err), 0)
        << slurp(err);
    EXPECT_EQ(slurp(err).find("syntax error"), std::string::npos);
    EXPECT_EQ(slurp(err).rfind("parsing terminated\n", 0), 0u) << slurp(err);
    for (const char* suffix : {".blif", ".c", ".h"})
        EXPECT_GT(slurp(base + suffix).size(), 1000u) << suffix;

    if (have("gcc")) {
        // Under-wire equations read output pointers as the generator writes them.
        EXPECT_EQ(run("cd '" + s.dir + "' && gcc -c -Wno-int-conversion -o g.o '" + base + ".c' 2> " + err), 0)
            << slurp(err);
    }
    if (have("yosys")) {
        EXPECT_EQ(run("yosys -q -p 'read_blif " + base + ".blif; hierarchy -auto-top; check -assert' > " + err + " 2>&1"), 0)
            << slurp(err);
    } else {
        GTEST_SKIP() << "yosys is not installed";
    }
}
