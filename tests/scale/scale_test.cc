// Modules written by zkcgen (the same for a seed: the golden texts hold one)
// holding every kind of signal and equation the road has to handle, read by
// the reader into the module the file describes; and one through the whole
// road, every target, with the plain operators and the production ones: what
// the run says, the latches of the BLIF, and the same texts both ways. (The
// tools that read the outputs run in tests/consumers.)

#include "bdd/bddpp.h"
#include "driver/tarn_run.h"
#include "model/module.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// The sections of a module as zkcgen lays it out.
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

// One section keyword a line (a signal list on its keyword's line), one
// register, memorised pair, node or expression a line. A line that fits
// none of these fails the read and is named in `error`.
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

zkc_sections sections_of(const std::string& text)
{
    zkc_sections z;
    std::string error;
    EXPECT_TRUE(read_sections(text, z, error)) << error;
    return z;
}

std::vector<std::string> names(std::list<Signal*>* list, Module* m)
{
    std::vector<std::string> out;
    for (Signal* s : list ? *list : std::list<Signal*>())
        out.push_back(s->getName(m));
    return out;
}

// A right member that is a bare literal: a variable's own node.
bool literal(const zkc_sections& z, long root, long& var)
{
    const zkc_sections::node& n = z.nodes[root];
    var = n.var;
    return n.var >= 0 && n.then_id == z.terminal && n.else_id == z.terminal;
}

// The reader check of each module: the names, registers and memorised
// pairs of the file, two variables a signal, an equation a line, and the
// constants and literals as the file wrote them.
void expect_read_as_declared(const std::string& file, const zkc_sections& z, long& checked)
{
    std::string errors;
    Module* m = read_module(file, false, &errors);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(errors, "");

    EXPECT_EQ(m->getName(), z.name);
    EXPECT_EQ(names(m->getInputSignalList(), m), z.inputs);
    EXPECT_EQ(names(m->getOutputSignalList(), m), z.outputs);
    EXPECT_EQ(names(m->getLocalSignalList(), m), z.locals);
    std::vector<std::vector<std::string>> registers, memorized;
    for (regclass* r : *m->getRegisterList())
        registers.push_back({r->next_var()->getName(m), r->actual_var()->getName(m), std::to_string(r->is_initialy_true())});
    for (memorizedSignal* p : *m->getPreSignalList())
        memorized.push_back({p->getPre()->getName(m), p->getActual()->getName(m)});
    EXPECT_EQ(registers, z.registers);
    EXPECT_EQ(memorized, z.memorized);

    Bddexpressionwood* wood = m->getBddWood();
    bddpp_manager* manager = wood->my_bdd_manager();
    std::size_t signals = z.inputs.size() + z.outputs.size() + z.locals.size() + z.memorized.size() + 3;
    EXPECT_EQ(manager->variables_number, static_cast<long>(2 * signals));
    EXPECT_EQ(wood->exp_number(), static_cast<long>(z.expressions.size()));
    for (const zkc_sections::expression& e : z.expressions) {
        Bddexpression* equation = wood->exp_by_index(e.var);
        ASSERT_NE(equation, nullptr) << e.var;
        bdd right = equation->my_bdd_exp();
        long var;
        if (e.root == z.terminal) {
            EXPECT_TRUE(manager->Bdd_is_tautology(right, e.link == 1)) << e.var;
            ++checked;
        } else if (literal(z, e.root, var)) {
            EXPECT_EQ(manager->Bdd_if_index(right), var) << e.var;
            EXPECT_TRUE(e.link == 1 ? manager->Bdd_is_var(right) : manager->Bdd_is_negvar(right)) << e.var;
            ++checked;
        }
    }
}

long lines_starting(const std::string& text, const std::string& prefix)
{
    long n = 0;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        n += line.rfind(prefix, 0) == 0;
    return n;
}

} // namespace

TEST(Zkcgen, ModulesHoldWhatTheRoadMustHandleAndReadAsDeclared)
{
    scratch_dir s;
    zkc_sections z;
    long checked = 0;
    for (long size : {40L, 3000L}) {
        SCOPED_TRACE(size);
        z = sections_of(generate_module(s.path, "g", size, 3));
        EXPECT_FALSE(z.inputs.empty() || z.outputs.empty() || z.locals.empty() || z.registers.empty());
        EXPECT_EQ(z.connexion, (std::vector<std::string>{"SET" + z.name, "RESET" + z.name, "RTL" + z.name}));
        ASSERT_TRUE(z.ended);
        ASSERT_GE(z.terminal, 0);
        EXPECT_EQ(z.declared_nodes, static_cast<long>(z.nodes.size()));
        EXPECT_EQ(static_cast<long>(z.expressions.size()), size);
        for (std::size_t k = 0; k < z.nodes.size(); ++k)
            ASSERT_EQ(z.nodes[k].id, static_cast<long>(k));

        // Registers and memorised pairs name locals; a pre is declared by
        // its line alone.
        std::set<std::string> locals(z.locals.begin(), z.locals.end());
        for (const std::vector<std::string>& r : z.registers)
            EXPECT_TRUE(locals.count(r[0]) && locals.count(r[1]) && (r[2] == "0" || r[2] == "1")) << r[0];
        for (const std::vector<std::string>& m : z.memorized)
            EXPECT_TRUE(!locals.count(m[0]) && locals.count(m[1])) << m[0];
        expect_read_as_declared(s.path + "/g.zkc", z, checked);
    }
    EXPECT_GT(checked, 100);

    // The larger module.
    EXPECT_GT(z.registers.size(), 10u);
    EXPECT_GT(z.memorized.size(), 10u);
    // Reconvergence: nodes below more than one parent.
    std::map<long, int> parents;
    for (const zkc_sections::node& n : z.nodes)
        if (n.var >= 0)
            for (long child : {n.then_id, n.else_id})
                parents[child] += child != z.terminal;
    long shared = 0;
    for (const auto& p : parents)
        shared += p.second > 1;
    EXPECT_GT(shared, 10);

    // Constants; copies of an earlier equation's variable; chains (copies
    // of copies). No right member reads a variable defined later.
    long constants = 0, copies = 0, chained = 0;
    std::map<long, std::size_t> position;
    for (std::size_t k = 0; k < z.expressions.size(); ++k)
        position[z.expressions[k].var] = k;
    IndexSet copy_vars;
    for (std::size_t k = 0; k < z.expressions.size(); ++k) {
        const zkc_sections::expression& e = z.expressions[k];
        long var;
        constants += e.root == z.terminal;
        if (literal(z, e.root, var) && position.count(var)) {
            ++copies;
            chained += copy_vars.count(var);
            copy_vars.insert(e.var);
        }
        std::vector<long> stack{e.root};
        IndexSet seen;
        while (!stack.empty()) {
            long id = stack.back();
            stack.pop_back();
            if (id == z.terminal || !seen.insert(id).second)
                continue;
            auto p = position.find(z.nodes[id].var);
            ASSERT_TRUE(p == position.end() || p->second < k) << "equation of " << e.var;
            stack.push_back(z.nodes[id].then_id);
            stack.push_back(z.nodes[id].else_id);
        }
    }
    EXPECT_GT(constants, 10);
    EXPECT_GT(copies, 100);
    EXPECT_GT(chained, 10);
}

// The whole road, every target, with the plain recursions of the
// decision-diagram operators and with the production ones (computed table,
// explicit stacks, remembered substitutions, joins made directly, covers
// walked along their cubes instead of tables of every variable): the same
// nodes in the same order, so the same texts and messages. Ten thousand
// equations are where the substitutions of the clean-up meet nodes that are
// not the ones their key finds in the unique table.
TEST(RoadDifferential, PlainAndProductionOperatorsWriteTheSameTexts)
{
    scratch_dir fast, plain;
    const std::string name = "g";
    std::string text = generate_module(fast.path, name, 10000, 3);
    ASSERT_FALSE(text.empty());
    plain.write(name + ".zkc", text);
    // Each run in a child of its own, as the program would make it, with
    // the managers' default chosen first.
    auto road = [&](const std::string& dir, bool plain_operators) {
        pid_t child = fork();
        if (child == 0) {
            bool moved = chdir(dir.c_str()) == 0;
            freopen("out.txt", "w", stdout);
            freopen("err.txt", "w", stderr);
            unsetenv("DISPLAY");
            bddpp_manager::plain_by_default() = plain_operators;
            tarn_flags flags;
            flags.docFlag = flags.lustreFlag = flags.esterelFlag = flags.nusmvFlag = flags.blifFlag = 1;
            flags.cFlag = flags.vhdlFlag = flags.systemcFlag = flags.csharpFlag = flags.qsrFlag = 1;
            flags.valuedSimulFlag = 1;
            _exit(moved ? tarn_run(name + ".zkc", flags) : 127);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    };
    ASSERT_EQ(road(fast.path, false), 0);
    ASSERT_EQ(road(plain.path, true), 0);
    for (std::string file : {".blif", ".c", ".h", ".strl", ".doc", ".lus", ".smv", ".vhd", ".cs", "_sc.cc",
                             "_encapsulated.qsr"}) {
        file = name + file;
        std::string a = read_file(fast.path + "/" + file);
        EXPECT_FALSE(a.empty()) << file;
        EXPECT_TRUE(a == read_file(plain.path + "/" + file)) << file << " differs";
    }
    EXPECT_TRUE(read_file(fast.path + "/mosk_" + name + ".cc") == read_file(plain.path + "/mosk_" + name + ".cc"));

    // The reader says nothing before its closing line; after it the
    // finalisation only names the registers it drops. Any other message
    // (a misuse reported by the engine, a refused signal) is a fault.
    const std::string errors = read_file(fast.path + "/err.txt"), output = read_file(fast.path + "/out.txt");
    EXPECT_EQ(read_file(plain.path + "/err.txt"), errors);
    ASSERT_EQ(errors.rfind("parsing terminated\n", 0), 0u) << errors;
    std::istringstream rest(errors.substr(19));
    for (std::string line; std::getline(rest, line);)
        EXPECT_EQ(line.rfind("detecting useless register ", 0), 0u) << line;
    EXPECT_NE(output.find("generation of ./g.blif\ngeneration of ./g.c\ngeneration of ./g.h\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("\ncompilation finished in "), std::string::npos) << output;

    // A latch for each register that the finalisation kept, one for each
    // memorised pair and one for the boot register. (Their behaviour is
    // the consumers' to check.)
    zkc_sections z = sections_of(text);
    std::string blif = read_file(fast.path + "/g.blif");
    EXPECT_EQ(lines_starting(blif, ".model"), 1);
    EXPECT_EQ(lines_starting(blif, ".end"), 1);
    long useless = lines_starting(errors, "detecting useless register ");
    EXPECT_EQ(lines_starting(blif, ".latch"), long(z.registers.size() + z.memorized.size() + 1) - useless);
}
