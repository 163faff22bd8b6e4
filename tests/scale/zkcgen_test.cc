// Modules written by zkcgen: the same for a seed and different across
// seeds, holding every kind of signal and equation the road has to handle,
// and read by the reader into the module the file describes.

#include "bdd/bddpp.h"
#include "driver/tarn_run.h"
#include "model/module.h"
#include "tests/scale/scale_support.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

zkc_sections sections_of(const std::string& path)
{
    zkc_sections s;
    std::string error;
    EXPECT_TRUE(read_sections(slurp(path), s, error)) << error;
    return s;
}

std::vector<std::string> names(std::list<Signal*>* list, Module* m)
{
    std::vector<std::string> out;
    if (list)
        for (Signal* s : *list)
            out.push_back(s->getName(m));
    return out;
}

} // namespace

TEST(Zkcgen, SameSeedSameFileOtherSeedOtherFile)
{
    scratch s;
    std::string a = slurp(generate(s, 500, 7));
    std::string b = slurp(generate(s, 500, 7));
    std::string c = slurp(generate(s, 500, 8));
    ASSERT_FALSE(a.empty());
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    // Another seed changes the equations, not the module's shape.
    zkc_sections sa, sc;
    std::string error;
    ASSERT_TRUE(read_sections(a, sa, error)) << error;
    ASSERT_TRUE(read_sections(c, sc, error)) << error;
    EXPECT_EQ(sa.inputs.size(), sc.inputs.size());
    EXPECT_EQ(sa.expressions.size(), sc.expressions.size());
}

TEST(Zkcgen, RejectsABadCount)
{
    for (const char* args : {"", "0", "-4", "12x", "1 2 3 4"})
        EXPECT_EQ(run_shell(zkcgen_path + " " + args + " > /dev/null 2>&1"), 1) << args;
}

// Every section a module of the source compiler has, for a small size and
// a larger one.
TEST(Zkcgen, ModulesHoldWhatTheRoadMustHandle)
{
    scratch s;
    for (long size : {40L, 3000L}) {
        SCOPED_TRACE(size);
        zkc_sections z = sections_of(generate(s, size, 3));
        EXPECT_FALSE(z.inputs.empty());
        EXPECT_FALSE(z.outputs.empty());
        EXPECT_FALSE(z.locals.empty());
        EXPECT_FALSE(z.registers.empty());
        EXPECT_EQ(z.connexion, (std::vector<std::string>{"SET" + z.name, "RESET" + z.name, "RTL" + z.name}));
        ASSERT_TRUE(z.ended);
        EXPECT_EQ(z.declared_nodes, static_cast<long>(z.nodes.size()));
        EXPECT_EQ(static_cast<long>(z.expressions.size()), size);

        // Registers and memorised pairs name locals; a pre is declared by
        // its line alone.
        std::set<std::string> locals(z.locals.begin(), z.locals.end());
        for (const std::vector<std::string>& r : z.registers) {
            EXPECT_EQ(locals.count(r[0]), 1u) << r[0];
            EXPECT_EQ(locals.count(r[1]), 1u) << r[1];
            EXPECT_TRUE(r[2] == "0" || r[2] == "1") << r[2];
        }
        for (const std::vector<std::string>& m : z.memorized) {
            EXPECT_EQ(locals.count(m[0]), 0u) << m[0];
            EXPECT_EQ(locals.count(m[1]), 1u) << m[1];
        }
        if (size >= 3000) {
            EXPECT_GT(z.registers.size(), 10u);
            EXPECT_GT(z.memorized.size(), 10u);
        }

        // Node ids run from 0 in file order, children already listed or
        // listed later, one terminal.
        long terminals = 0;
        for (std::size_t k = 0; k < z.nodes.size(); ++k) {
            const zkc_sections::node& n = z.nodes[k];
            ASSERT_EQ(n.id, static_cast<long>(k));
            if (n.var == -1) {
                ++terminals;
                continue;
            }
            EXPECT_TRUE(n.link == 1 || n.link == -1);
            EXPECT_LT(n.then_id, static_cast<long>(z.nodes.size()));
            EXPECT_LT(n.else_id, static_cast<long>(z.nodes.size()));
        }
        EXPECT_EQ(terminals, 1);
    }
}

// The shapes of the wood: constants, chains of copies and shared nodes
// (reconvergent cones), all found in the file's tables.
TEST(Zkcgen, WoodHasConstantsChainsAndSharedCones)
{
    scratch s;
    zkc_sections z = sections_of(generate(s, 3000, 3));
    long terminal = -1;
    std::map<long, zkc_sections::node> nodes;
    for (const zkc_sections::node& n : z.nodes) {
        nodes[n.id] = n;
        if (n.var == -1)
            terminal = n.id;
    }
    ASSERT_GE(terminal, 0);

    std::map<long, int> parents;
    for (const auto& n : nodes)
        if (n.second.var >= 0)
            for (long child : {n.second.then_id, n.second.else_id})
                if (child != terminal)
                    ++parents[child];
    long shared = 0;
    for (const auto& p : parents)
        shared += p.second > 1 ? 1 : 0;
    EXPECT_GT(shared, 10);

    // A copy: the right member is a variable's own node (both children the
    // terminal) whose variable has an equation of its own defined earlier;
    // a chain: a copy of a copy.
    long constants = 0, copies = 0, chained = 0;
    std::set<long> defined, copy_vars;
    for (const zkc_sections::expression& e : z.expressions) {
        const zkc_sections::node& root = nodes[e.root];
        if (e.root == terminal)
            ++constants;
        else if (root.then_id == terminal && root.else_id == terminal && defined.count(root.var) != 0) {
            ++copies;
            if (copy_vars.count(root.var) != 0)
                ++chained;
            copy_vars.insert(e.var);
        }
        defined.insert(e.var);
    }
    EXPECT_GT(constants, 10);
    EXPECT_GT(copies, 100);
    EXPECT_GT(chained, 10);

    // Equations are acyclic: a right member reads no variable defined after
    // its own equation.
    std::map<long, std::size_t> position;
    for (std::size_t k = 0; k < z.expressions.size(); ++k)
        position[z.expressions[k].var] = k;
    for (std::size_t k = 0; k < z.expressions.size(); ++k) {
        std::vector<long> stack{z.expressions[k].root};
        std::set<long> seen;
        while (!stack.empty()) {
            long id = stack.back();
            stack.pop_back();
            if (id == terminal || !seen.insert(id).second)
                continue;
            auto p = position.find(nodes[id].var);
            if (p != position.end()) {
                ASSERT_LT(p->second, k) << "equation of " << z.expressions[k].var;
            }
            stack.push_back(nodes[id].then_id);
            stack.push_back(nodes[id].else_id);
        }
    }
}

// The reader takes the module as the file declares it.
TEST(Zkcgen, ReaderBuildsTheDeclaredModule)
{
    scratch s;
    std::string file = generate(s, 2000, 11);
    zkc_sections z = sections_of(file);
    std::string suffix;
    bool ok = false;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Module* m = parse(file, suffix, &ok);
    testing::internal::GetCapturedStdout();
    std::string errors = testing::internal::GetCapturedStderr();
    ASSERT_TRUE(ok) << errors;
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(errors, "");

    EXPECT_EQ(m->getName(), z.name);
    EXPECT_EQ(names(m->getInputSignalList(), m), z.inputs);
    EXPECT_EQ(names(m->getOutputSignalList(), m), z.outputs);
    EXPECT_EQ(names(m->getLocalSignalList(), m), z.locals);
    ASSERT_NE(m->getRegisterList(), nullptr);
    ASSERT_NE(m->getPreSignalList(), nullptr);
    std::vector<std::vector<std::string>> registers, memorized;
    for (regclass* r : *m->getRegisterList())
        registers.push_back({r->next_var()->getName(m), r->actual_var()->getName(m)});
    for (memorizedSignal* p : *m->getPreSignalList())
        memorized.push_back({p->getPre()->getName(m), p->getActual()->getName(m)});
    ASSERT_EQ(registers.size(), z.registers.size());
    for (std::size_t k = 0; k < registers.size(); ++k)
        EXPECT_EQ(registers[k], (std::vector<std::string>{z.registers[k][0], z.registers[k][1]}));
    ASSERT_EQ(memorized.size(), z.memorized.size());
    for (std::size_t k = 0; k < memorized.size(); ++k)
        EXPECT_EQ(memorized[k], z.memorized[k]);

    Bddexpressionwood* wood = m->getBddWood();
    ASSERT_NE(wood, nullptr);
    bddpp_manager* manager = wood->my_bdd_manager();
    long signals = static_cast<long>(z.inputs.size() + z.outputs.size() + z.locals.size() + z.memorized.size() +
                                     z.connexion.size());
    EXPECT_EQ(manager->variables_number, 2 * signals);
    EXPECT_EQ(wood->exp_number(), static_cast<long>(z.expressions.size()));

    // Constants and copies come back as the file wrote them.
    std::map<long, zkc_sections::node> nodes;
    long terminal = -1;
    for (const zkc_sections::node& n : z.nodes) {
        nodes[n.id] = n;
        if (n.var == -1)
            terminal = n.id;
    }
    long checked = 0;
    for (const zkc_sections::expression& e : z.expressions) {
        const zkc_sections::node& root = nodes[e.root];
        Bddexpression* equation = wood->exp_by_index(e.var);
        ASSERT_NE(equation, nullptr) << e.var;
        bdd right = equation->my_bdd_exp();
        if (root.var == -1) {
            EXPECT_TRUE(manager->Bdd_is_tautology(right, e.link == 1 ? 1 : 0)) << e.var;
            ++checked;
        } else if (root.then_id == terminal && root.else_id == terminal) {
            // A literal: the direct link is the variable, the complemented
            // one its negation.
            EXPECT_EQ(manager->Bdd_if_index(right), root.var) << e.var;
            EXPECT_TRUE(e.link == 1 ? manager->Bdd_is_var(right) : manager->Bdd_is_negvar(right)) << e.var;
            ++checked;
        }
    }
    EXPECT_GT(checked, 100);
}
