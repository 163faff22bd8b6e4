// The documentation and the encapsulated file: whole texts of the worked
// module and of two bundled examples as the command writes them, the forms
// of a module that is not finalised or has no wood, and the listing read
// back as definitions over every example and a few generated modules.

#include "builder.h"
#include "doc_check.h"
#include "tests/tarn_process.h"
#include "tests/worked_module.h"

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

struct written {
    tarn_output run;
    std::string doc, qsr;
};

written tarn_doc_qsr(const scratch_dir& s, const std::string& name, const std::string& zkc)
{
    s.write(name + ".zkc", zkc);
    written w;
    w.run = run_tarn_in(s.path, {name + ".zkc", "-qsr", "-doc"});
    w.doc = read_file(s.path + "/" + name + ".doc");
    w.qsr = read_file(s.path + "/" + name + "_encapsulated.qsr");
    return w;
}

TEST(DocQsr, WorkedModuleInTheDriversOrder)
{
    scratch_dir s;
    written w = tarn_doc_qsr(s, "m", worked_module_text);
    EXPECT_EQ(w.run.status, 0);
    EXPECT_EQ(w.run.out.rfind("generation of ./m.log\n"
                              "generation of ./m.doc\n"
                              "generation of ./m_encapsulated.qsr\n"
                              "compilation finished in ",
                              0),
              0u)
        << w.run.out;
    // Registers by the under wire of their actual signal, the boot register
    // starting true; every wire of the interface; "pres" with nothing
    // memorised; the definitions in earliest order, a shared node once.
    EXPECT_EQ(w.doc, "state v_v_r, v_v_m_boot;\n"
                     "inputs i, v_v_i;\n"
                     "outputs o, v_v_o;\n"
                     "locals v_s_n, v_v_n, v_s_r, v_v_r, v_s_m_boot, v_v_m_boot, v_s_mbootplus, v_v_mbootplus;\n"
                     "pres ;\n"
                     "initial not v_v_r and v_v_m_boot;\n"
                     "transition\n"
                     "v_v_r' = v_v_n;\n"
                     "v_v_m_boot' = v_v_mbootplus;\n"
                     "definitions\n"
                     "v_s_mbootplus   = false;\n"
                     "v_v_mbootplus   = true;\n"
                     "v_s_SETm   = v_s_m_boot;\n"
                     "   node_2:= i;\n"
                     "v_v_i   = !node_2;\n"
                     "o   = v_s_r;\n"
                     "v_s_n   = i;\n"
                     "v_v_n   = !node_2;\n"
                     "   node_8:= v_s_r;\n"
                     "v_v_r   = !node_8;\n"
                     "   node_10:= v_s_SETm;\n"
                     "v_v_SETm   = !node_10;\n"
                     "   node_4:= o;\n"
                     "v_v_o   = !node_4;\n");
    EXPECT_EQ(w.qsr, "Name: m: zinc_kernel_model:;\n"
                     "Type:\n;\n\n"
                     "Input:\ni: pure\n;\n\n"
                     "Sensor:\n;\n\n"
                     "Output:\no: pure\n;\n\n"
                     "Local:\n;\n\n"
                     "Variable:\n;\n\n"
                     "Run:\n;\n\n"
                     "Function:\n;\n\n"
                     "Constant:\n;\n\n"
                     "Action:\n;\n\n"
                     "Encapsulation:\n;\n\n");
}

// No input: no "inputs" line in the listing, an empty section in the
// encapsulated file. A memorised signal's line runs into the definitions'
// title; constant outputs take no node line.
TEST(DocQsr, BlinkWithRegisterAndMemorisedSignalAndNoInput)
{
    scratch_dir s;
    written w = tarn_doc_qsr(s, "blink", read_file(examples + "blink.zkc"));
    EXPECT_EQ(w.run.status, 0);
    EXPECT_EQ(w.doc, "state v_v_r, v_v_blink_boot;\n"
                     "outputs q, v_v_q, on, v_v_on, off, v_v_off, w, v_v_w;\n"
                     "locals v_s_n, v_v_n, v_s_r, v_v_r, v_s_blink_boot, v_v_blink_boot, v_s_blinkbootplus, "
                     "v_v_blinkbootplus;\n"
                     "pres pre_n, v_v_pre_n;\n"
                     "initial not v_v_r and v_v_blink_boot;\n"
                     "transition\n"
                     "v_v_r' = v_v_n;\n"
                     "v_v_blink_boot' = v_v_blinkbootplus;\n"
                     "memorisations\n"
                     "  pre_n= false ->pre(v_s_n);definitions\n"
                     "v_s_blinkbootplus   = false;\n"
                     "v_v_blinkbootplus   = true;\n"
                     "v_s_SETblink   = v_s_blink_boot;\n"
                     "q   = v_s_r;\n"
                     "   node_12:= v_s_r;\n"
                     "v_v_q   = !node_12;\n"
                     "on   = true;\n"
                     "off   = false;\n"
                     "w   = pre_n;\n"
                     "   node_14:= pre_n;\n"
                     "v_v_w   = !node_14;\n"
                     "v_s_n   = !node_12;\n"
                     "v_v_n   = v_s_r;\n"
                     "v_v_r   = !node_12;\n"
                     "v_v_pre_n   = !node_14;\n"
                     "   node_16:= v_s_SETblink;\n"
                     "v_v_SETblink   = !node_16;\n");
    EXPECT_EQ(w.qsr, qsr("blink", "", "q: pure,\non: pure,\noff: pure,\nw: pure\n"));
}

// Valued signals: abstract equations without a value, the binding table
// with and without a value support signal, evaluation trees whose sub-trees
// join the table behind the bound ones, and the data tables.
TEST(DocQsr, PeakWithBindingsAndDataTables)
{
    scratch_dir s;
    written w = tarn_doc_qsr(s, "peak", read_file(examples + "peak.zkc"));
    EXPECT_EQ(w.run.status, 0);
    EXPECT_EQ(w.doc,
              "state v_v_peak_boot;\n"
              "inputs sample, v_v_sample;\n"
              "outputs alarm, v_v_alarm, peak, v_v_peak;\n"
              "locals v_s_big, v_v_big, v_s_hot, v_v_hot, v_s_best, v_v_best, v_s_peak_boot, v_v_peak_boot, "
              "v_s_peakbootplus, v_v_peakbootplus;\n"
              "pres pre_best, v_v_pre_best;\n"
              "initial v_v_peak_boot;\n"
              "transition\n"
              "v_v_peak_boot' = v_v_peakbootplus;\n"
              "memorisations\n"
              "  pre_best= false ->pre(v_s_best);  pre_best_val= zero->pre(v_s_best_val);definitions\n"
              "v_s_peakbootplus   = false;\n"
              "v_v_peakbootplus   = true;\n"
              "v_s_SETpeak   = v_s_peak_boot;\n"
              "   node_2:= sample;\n"
              "v_v_sample   = !node_2;\n"
              "v_s_best   = true;\n"
              "   node_20:= pre_best;\n"
              "v_v_pre_best   = !node_20;\n"
              "   node_22:= v_s_SETpeak;\n"
              "v_v_SETpeak   = !node_22;\n"
              "v_s_big   = ???\n"
              "v_v_big   = ???\n"
              "v_s_hot   = ???\n"
              "v_v_hot   = ???\n"
              "   node_8:= v_s_big;\n"
              "   node_1:= TRUE;\n"
              "   node_28:= sample & node_8 | !sample & !node_1;\n"
              "alarm   = node_28;\n"
              "v_v_alarm   = !node_28;\n"
              "   node_10:= v_s_hot;\n"
              "   node_29:= sample & node_10 | !sample & !node_1;\n"
              "peak   = node_29;\n"
              "v_v_peak   = !node_29;\n"
              "v_s_up   = node_29;\n"
              "v_v_up   = !node_29;\n"
              "v_s_keep   = !node_29;\n"
              "v_v_keep   = node_29;\n"
              "v_s_shout   = node_29;\n"
              "v_v_shout   = !node_29;\n"
              "Binding table\n"
              "presence du signal: \"big\" declenche l'emission de : \n"
              "  - no value support signal ...  - signal data: big      associated occurence: 0: big (6, 7): "
              "  - evaluation tree: 0"
              "presence du signal: \"hot\" declenche l'emission de : \n"
              "  - no value support signal ...  - signal data: hot      associated occurence: 0: hot (8, 9): "
              "  - evaluation tree: 1"
              "presence du signal: \"keep\" declenche l'emission de : \n"
              "  - value support signal :  best: v_s_best(16),v_v_best(17)\n"
              "  - signal data: keep      associated occurence: 0: keep (12, 13):   - evaluation tree: 2"
              "presence du signal: \"shout\" declenche l'emission de : \n"
              "  - value support signal :  peak: peak(4),v_v_peak(5)\n"
              "  - signal data: shout      associated occurence: 0: shout (14, 15):   - evaluation tree: 3"
              "presence du signal: \"up\" declenche l'emission de : \n"
              "  - value support signal :  best: v_s_best(16),v_v_best(17)\n"
              "  - signal data: up      associated occurence: 0: up (10, 11):   - evaluation tree: 4\n"
              "evaltable: index: 0:  > (5,6); index: 1:  > (7,8); index: 2: pre_best_val; index: 3: bump(9, 10);"
              " index: 4: sample_val; index: 5: sample_val; index: 6: CONSTANT $1(threshold); index: 7: sample_val;"
              " index: 8: pre_best_val; index: 9: sample_val; index: 10: CONSTANT $2(offset);"
              "data type: integer\n"
              "methods table:extern integer bump(integer, integer);\n"
              "\n"
              "\n"
              "constants table: extern const integer offset;\n");
    EXPECT_EQ(w.qsr, qsr("peak", "sample: integer\n", "alarm: pure,\npeak: integer\n"));
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
        std::string zkc = s.write(name + ".src", "");
        ASSERT_EQ(std::system(("'" TARN_BINARY_DIR "/tools/zkcgen' " + std::to_string(60 * seed) + " " +
                               std::to_string(seed) + " " + name + " > '" + zkc + "'")
                                  .c_str()),
                  0);
        check_listing(s, name, read_file(zkc));
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
