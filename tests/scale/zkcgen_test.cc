// Modules written by zkcgen (the same for a seed: the golden texts hold one)
// holding every kind of signal and equation the road has to handle, and
// read by the reader into the module the file describes.

#include "bdd/bddpp.h"
#include "model/module.h"
#include "tests/consumers/finalised_module.h"
#include "tests/scale/scale_support.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

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
