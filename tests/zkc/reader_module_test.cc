// The reader's module sections: signals and their variables, header flags,
// registers, memorised pairs, node tables, and inputs far larger than a
// recursive build could take.

#include "tests/zkc/reader_support.h"
#include "tests/worked_module.h"

#include "bdd/bddpp.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "wood/Bddexpression.h"
#include "zkc/parse_supl.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bddpp_manager* manager_of(Module* m) { return m->getBddWood()->my_bdd_manager(); }

// The right member of the equation of variable `index`.
bdd right_of(Module* m, long index)
{
    Bddexpression* e = m->getBddWood()->exp_by_index(index);
    return e != nullptr ? e->bdd_exp : bdd();
}

Signal* first(std::list<Signal*>* l) { return l != nullptr && !l->empty() ? l->front() : nullptr; }

// A module m of the given signal sections and no equation.
read_result read_signals(const std::string& sections, const std::string& suffix = "")
{
    return read_zkc("module: m 0 0 " + sections + " connexion: S R T; equation_def: 0 expressions: end:", suffix);
}

}  // namespace

// What the generators' golden texts of the worked module cannot show: the
// state the reader leaves before finalisation.
TEST(ReaderModule, WorkedExampleIsLeftUnfinalised)
{
    read_result r = read_zkc(worked_module_text);
    ASSERT_EQ(r.status, 0) << r.errors;
    Module* m = r.module;
    // Over before under, in file order, connexion signals last.
    EXPECT_EQ(manager_of(m)->variables_number, 14);
    EXPECT_EQ(manager_of(m)->Name_var_by_index(13), "_v_RTLm");
    // The output's under wire has no equation in the file, and that is no
    // error for the reader; registers are locals, typed as such.
    EXPECT_EQ(m->getBddWood()->exp_by_index(3), nullptr);
    EXPECT_EQ(m->getBddWood()->exp_by_index(2)->getUserType(), Compilation::SOUTPUT);
    EXPECT_EQ(m->getBddWood()->exp_by_index(4)->getUserType(), Compilation::SREG);
    EXPECT_EQ(m->getRegisterList()->size(), 1u);
    // Connexion signals are in no list of the module.
    EXPECT_EQ(m->getSignal("SETm"), nullptr);
    EXPECT_EQ(m->getSet()->getOriginalName(), "SETm");
}

TEST(ReaderModule, HeaderFlagsAreTruthValues)
{
    struct {
        const char* header;
        bool reincarnate;
        int finalised;
    } cases[] = {{"module: m 0 0", false, 0}, {"module: m 7 0", true, 0}, {"module: m 0 1", false, 1},
                 {"module: m -1 2", true, 1}};
    for (const auto& c : cases) {
        read_result r = read_zkc(std::string(c.header) + " connexion: S R T; equation_def: 0 expressions: end:");
        ASSERT_EQ(r.status, 0) << c.header << r.errors;
        EXPECT_EQ(r.module->getName(), "m");
        EXPECT_EQ(r.module->getReincarnate(), c.reincarnate) << c.header;
        EXPECT_EQ(r.module->getFinalised(), c.finalised) << c.header;
    }
}

TEST(ReaderModule, RegisterLinesFindAnySignalReadSoFar)
{
    struct {
        const char* what;
        std::string text;
        const char* actual;
        const char* next;
        int initial;
    } cases[] = {
        {"an output as actual", "output: o ; local: n ; register: n o 1;", "o", "n", 1},
        {"an input as next", "input: i ; local: r ; register: i r 0;", "r", "i", 0},
        {"initial above one is read as 0", "local: n r ; register: n r 5;", "r", "n", 0},
        {"negative initial passes", "local: n r ; register: n r -2;", "r", "n", -2},
        {"of two signals of a name, the later", "input: x ; output: x ; local: n ; register: n x 0;", "x", "n", 0},
    };
    for (const auto& c : cases) {
        read_result r = read_signals(c.text);
        ASSERT_EQ(r.status, 0) << c.what << r.errors;
        ASSERT_EQ(r.module->getRegisterList()->size(), 1u) << c.what;
        regclass* reg = r.module->getRegisterList()->front();
        ASSERT_NE(reg, nullptr) << c.what;
        EXPECT_EQ(reg->actual_var()->getOriginalName(), c.actual) << c.what;
        EXPECT_EQ(reg->next_var()->getOriginalName(), c.next) << c.what;
        EXPECT_EQ(reg->is_initialy_true(), c.initial) << c.what;
        EXPECT_TRUE(reg->actual_var()->isRegister()) << c.what;
        EXPECT_FALSE(reg->actual_var()->isInput()) << c.what;
    }
    read_result warned = read_signals("local: n r ; register: n r 2;");
    EXPECT_EQ(warned.errors, "Warning: Boolean value expected to initialize register value\n");
}

TEST(ReaderModule, SuffixGoesToInternalNamesOnly)
{
    for (const std::string suffix : {"", "_2"}) {
        read_result r = read_signals("input: i ; local: n r ; register: n r 0; memorized: p i;", suffix);
        ASSERT_EQ(r.status, 0) << r.errors;
        Signal* i = first(r.module->getInputSignalList());
        EXPECT_EQ(i->getOriginalName(), "i");
        EXPECT_EQ(i->getInternalName(), "i" + suffix);
        EXPECT_EQ(manager_of(r.module)->Name_var_by_index(0), "_s_i" + suffix);
        // Registers are matched on the internal names.
        ASSERT_NE(r.module->getRegisterList()->front(), nullptr) << suffix;
        Signal* pre = r.module->getPreSignalList()->front()->getPre();
        EXPECT_EQ(pre->getInternalName(), "p" + suffix);
        // Connexion signals take no suffix.
        EXPECT_EQ(r.module->getSet()->getInternalName(), "S");
    }
}

// A new pre signal comes after the declared signals in the variable order;
// a declared signal as pre is that signal, flagged. (The pre's type and
// initial value show in the golden texts.)
TEST(ReaderModule, MemorisedLines)
{
    read_result r = read_signals("input: i ; output: o : int ; local: l ; memorized: p o zero; i l; q l;");
    ASSERT_EQ(r.status, 0) << r.errors;
    auto* pairs = r.module->getPreSignalList();
    ASSERT_EQ(pairs->size(), 3u);
    Signal* p = pairs->front()->getPre();
    EXPECT_TRUE(p->isPre() && p->isInput());
    EXPECT_EQ(manager_of(r.module)->Name_var_by_index(6), "_s_p");
    Signal* i = (*std::next(pairs->begin()))->getPre();
    EXPECT_EQ(i, first(r.module->getInputSignalList()));
    EXPECT_TRUE(i->isPre());
    EXPECT_EQ(r.module->getSignal("q"), pairs->back()->getPre());
}

TEST(ReaderModule, NodeTable)
{
    // i 0/1, j 2/3, o 4/5.
    const std::string head = "module: m 0 0 input: i j ; output: o ; connexion: S R T; ";
    using pick = bdd (*)(bddpp_manager*, const bdd& i, const bdd& j);
    struct {
        const char* what;
        std::string wood;
        pick expected;  // over wire of o
    } cases[] = {
        {"a repeated id replaces the first line",
         "equation_def: 2 0: 0:1:1,-1 1: -1:-3:-3,1 0: 2:1:1,-1 expressions: 1 1 4:0,1,() end:",
         [](bddpp_manager*, const bdd&, const bdd& j) { return j; }},
        {"children given after their parent",
         "equation_def: 3 0: 0:2:1,1 2: -1:-3:-3,1 1: 2:2:2,-1 expressions: 1 1 4:0,1,() end:",
         [](bddpp_manager* m, const bdd& i, const bdd& j) { return m->Bdd_or(i, j); }},
        {"a line beyond the count is skipped",
         "equation_def: 2 0: 0:1:1,-1 1: -1:-3:-3,1 2: 2:1:1,-1 expressions: 1 1 4:0,1,() end:",
         [](bddpp_manager*, const bdd& i, const bdd&) { return i; }},
    };
    for (const auto& c : cases) {
        read_result r = read_zkc(head + c.wood);
        ASSERT_EQ(r.status, 0) << c.what << r.errors;
        bddpp_manager* bm = manager_of(r.module);
        EXPECT_TRUE(right_of(r.module, 4) == c.expected(bm, bm->Bdd_var_by_index(0), bm->Bdd_var_by_index(2)))
            << c.what;
    }
    read_result skipped = read_zkc(head + cases[2].wood);
    EXPECT_EQ(skipped.errors, "detecting bad indice about parsed_nodes_table[]! skipping ...\n");
}

TEST(ReaderModule, AbstractEquationKeepsItsDependencesAndDates)
{
    read_result r = read_zkc("module: m 0 0 input: i ; local: v ; connexion: S R T; "
                             "equation_def: 1 0: -1:-3:-3,1 expressions: 3 4 2:-3,-3,(0 1 99 ) end:");
    ASSERT_EQ(r.status, 0) << r.errors;
    Bddexpression* e = r.module->getBddWood()->exp_by_index(2);
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->getAbstraction(), 1);
    EXPECT_EQ(e->getExpDef(), "VALUE_SIGNAL");
    // 99 names no variable and cannot be read.
    EXPECT_EQ(e->dependances, (IndexSet{0, 1}));
    EXPECT_GE(e->getEarlyDate(), 3);
}

TEST(ReaderModule, DeepNodeTablesNeedNoDeepStack)
{
    // A chain of nodes over distinct variables, each line's then child the
    // next line: far deeper than a recursive build could go.
    const long n = 100000;
    std::string text = "module: deep 0 0 input:";
    for (long k = 0; k < n; k++)
        text += " i" + std::to_string(k);
    text += " ; output: o ; connexion: S R T; equation_def: " + std::to_string(n + 1) + "\n";
    // Listed from the bottom of the chain up and from the top down.
    for (bool reversed : {false, true}) {
        std::string lines;
        for (long step = 0; step < n; step++) {
            long k = reversed ? n - 1 - step : step;
            lines += std::to_string(k) + ": " + std::to_string(2 * k) + ":" + std::to_string(k + 1) + ":" +
                     std::to_string(n) + ",-1\n";
        }
        lines += std::to_string(n) + ": -1:-3:-3,1\nexpressions: 1 1 " + std::to_string(2 * n) + ":0,1,() end:";
        read_result r = read_zkc(text + lines);
        ASSERT_EQ(r.status, 0) << r.errors.substr(0, 200);
        bddpp_manager* bm = manager_of(r.module);
        // The conjunction of all the over wires: one node per variable.
        EXPECT_EQ(bm->Bdd_size(right_of(r.module, 2 * n)), n + 1) << reversed;
    }
}

TEST(ReaderModule, ManyNodesTypesMethodsAndConstants)
{
    const int n = 40000;  // beyond 32767
    std::string text = "module: m 0 0 input: i ; connexion: S R T; equation_def: " + std::to_string(n) + "\n";
    for (int k = 0; k < n - 1; k++)
        text += std::to_string(k) + ": 0:" + std::to_string(n - 1) + ":" + std::to_string(n - 1) + ",-1\n";
    // A dependence list far longer than the parser stack's 10000 entries.
    text += std::to_string(n - 1) + ": -1:-3:-3,1\nexpressions: 1 1 1:" + std::to_string(n - 2) + ",1,(";
    for (int k = 0; k < n; k++)
        text += std::to_string(k) + " ";
    text += ") end:\n";
    text += "data: type:";
    for (int k = 0; k < n; k++)
        text += " big_t" + std::to_string(k) + ";";
    text += " method:";
    for (int k = 0; k < n; k++)
        text += " big_t0 big_f" + std::to_string(k) + "();";
    text += " constant:";
    for (int k = 0; k < n; k++)
        text += " big_t0 big_c" + std::to_string(k) + ";";
    text += " end:";
    read_result r = read_zkc(text);
    ASSERT_EQ(r.status, 0) << r.errors.substr(0, 200);
    EXPECT_TRUE(right_of(r.module, 1) == manager_of(r.module)->Bdd_var_by_index(0));
    ASSERT_EQ(r.parser->corres_type.size(), static_cast<size_t>(n));
    ASSERT_EQ(r.parser->corres_method.size(), static_cast<size_t>(n));
    ASSERT_EQ(r.parser->corres_constant.size(), static_cast<size_t>(n));
    EXPECT_EQ(r.parser->type_count, n);
    // Each entry maps to its own, later one to later places.
    EXPECT_EQ(r.parser->corres_type[n - 1] - r.parser->corres_type[0], n - 1);
    EXPECT_EQ(r.parser->corres_method[n - 1] - r.parser->corres_method[0], n - 1);
    EXPECT_EQ(r.parser->corres_constant[n - 1] - r.parser->corres_constant[0], n - 1);
}
