// The documentation and the encapsulated file beyond their golden texts:
// the forms of a module that is not finalised or has no wood, the binding
// table, and the listing read back as definitions over every example and a
// few generated modules.

#include "builder.h"
#include "doc_check.h"
#include "tests/tarn_process.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

const std::string examples = TARN_SOURCE_DIR "/examples/";

// The sections of the encapsulated file around the items of its inputs
// and outputs, each item block with its last line end.
std::string qsr(const std::string& name, const std::string& inputs, const std::string& outputs)
{
    std::string text = "Name: " + name + ": zinc_kernel_model:;\nType:\n;\n\nInput:\n" + inputs + ";\n\nSensor:\n;\n\n" +
                       "Output:\n" + outputs + ";\n\n";
    for (const char* title : {"Local:", "Variable:", "Run:", "Function:", "Constant:", "Action:", "Encapsulation:"})
        text += std::string(title) + "\n;\n\n";
    return text;
}

std::string doc(TargetModule& t)
{
    std::ostringstream os;
    t.m.DOC_put(os, 0);
    return os.str();
}

std::string encapsulated(TargetModule& t)
{
    std::ostringstream os;
    t.m.ENCAPSULATEDQSR_put(os);
    return os.str();
}

TEST(DocQsr, EmptyModuleKeepsEveryFixedLineAndNoWoodWritesNothing)
{
    TargetModule t;
    t.date();
    EXPECT_EQ(doc(t), "pres ;\ndefinitions\n");
    EXPECT_EQ(encapsulated(t), qsr("m", "", ""));

    t.input("i");
    t.m.setBddWood(nullptr);
    EXPECT_EQ(doc(t), "");
    EXPECT_EQ(encapsulated(t), "");
}

// The double-rail forms of a module that was not finalised: the control
// signals lead the interface and every wire is an item of its own.
TEST(DocQsr, ModuleNotFinalisedListsControlSignalsAndUnderWires)
{
    TargetModule t;
    t.m.setFinalised(0);
    Signal* i = t.valued(t.input("i"));
    Signal* o = t.output("o");
    t.local("l");
    t.eq(o, t.over(i));
    t.date();
    EXPECT_EQ(doc(t), "inputs _s_SETm, _s_RESETm, _s_i, _v_i;\n"
                      "outputs _s_RTLm, _s_o, _v_o;\n"
                      "locals _s_l, _v_l;\n"
                      "pres ;\n"
                      "definitions\n"
                      "_s_o   = _s_i;\n");
    EXPECT_EQ(encapsulated(t), qsr("m", " _s_SETm, _s_RESETm_s_i: integer,\n_v_i: pure\n", "_s_RTLm_s_o: pure,\n_v_o: pure\n"));
}

// A bound signal with two occurrences shows both; a binding without value
// still takes its evaluation number; the table hands its numbers to copies.
TEST(DocQsr, BindingTableShowsEveryOccurrenceAndLeavesTheValuesUnnumbered)
{
    TargetModule t;
    Signal* v = t.valued(t.input("v"));
    Signal* c = t.valued(t.local("c"));
    Signal* x = t.local("x");
    x->newOccurrence(t.wood, &t.m);
    Signal* y = t.local("y");
    t.date();
    DataExpr* value = new DataSignalValue(v);
    t.m.addSignalBinding(value, x, c);
    t.m.addBinding(new DataBinding(y, nullptr));
    std::string text = doc(t);
    std::string table = text.substr(text.find("Binding table"));
    EXPECT_EQ(table, "Binding table\n"
                     "presence du signal: \"x\" declenche l'emission de : \n"
                     "  - value support signal :  c: _s_c(2),_v_c(3)\n"
                     "  - signal data: x"
                     "      associated occurence: 0: x (4, 5): "
                     "      associated occurence: 1: x_1 (6, 7): "
                     "  - evaluation tree: 0"
                     "presence du signal: \"y\" declenche l'emission de : \n"
                     "  - no value support signal ...  - signal data: y      associated occurence: 0: y (8, 9): "
                     "  - evaluation tree: 1\n"
                     "evaltable: index: 0: _s_v_val;");
    EXPECT_FALSE(value->hasIndex());
}

// Over the examples and generated modules: every name that a definition,
// a transition or a memorisation reads is defined by one of them, or is
// an input, a register or a memorised copy by the rules of the listing.
void check_listing(const scratch_dir& s, const std::string& name, const std::string& zkc)
{
    SCOPED_TRACE(name);
    s.write(name + ".zkc", zkc);
    tarn_output r = run_tarn_in(s.path, {name + ".zkc", "-doc"});
    ASSERT_EQ(r.status, 0) << r.err;
    std::string text = read_file(s.path + "/" + name + ".doc");
    EXPECT_EQ(doc_check::faults(text, doc_check::data_signals(zkc)), std::vector<std::string>()) << text;
}

TEST(DocQsr, EveryNameReadIsDefinedInExamplesAndFiveGeneratedModules)
{
    scratch_dir s;
    for (const char* name : {"accu", "blink", "peak", "shift", "sum", "toggle", "watchdog"})
        check_listing(s, name, read_file(examples + name + ".zkc"));
    for (int seed = 1; seed <= 5; ++seed) {
        std::string name = "gen" + std::to_string(seed);
        check_listing(s, name, generate_module(s.path, name, 60 * seed, seed));
    }
}

// The check itself: a listing that reads a name nobody defines, or a node
// before its line, is caught.
TEST(DocQsr, CheckCatchesUndefinedNamesAndNodesReadEarly)
{
    std::string head = "state v_v_r;\ninputs a, v_v_a;\npres p, v_v_p;\ninitial v_v_r;\ntransition\nv_v_r' = v_v_n;\n"
                       "definitions\n";
    EXPECT_EQ(doc_check::faults(head + "v_v_n   = a;\n   node_3:= v_s_r;\nx   = !node_3;\ny   = p;\n", {}),
              std::vector<std::string>());
    EXPECT_EQ(doc_check::faults(head + "v_v_n   = a;\nx   = node_3;\n   node_3:= q;\n", {"q"}),
              std::vector<std::string>{"node_3 read by x before its line"});
    EXPECT_EQ(doc_check::faults(head + "v_v_n   = b;\nv_v_n   = a;\n", {}),
              (std::vector<std::string>{"defined twice: v_v_n", "b read by v_v_n (definitions) is never defined"}));
    EXPECT_EQ(doc_check::faults(head + "x   = a;\n", {}),
              std::vector<std::string>{"v_v_n read by v_v_r' (transition) is never defined"});
}

} // namespace
