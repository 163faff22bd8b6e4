// The NuSMV and Lustre files beyond their golden texts: definitions against
// uses over every example and a sample of generated modules, and the forms
// that finalised modules do not reach.
#include "builder.h"
#include "smv_lustre_check.h"
#include "smv_lustre_run.h"
#include "tests/worked_module.h"

#include <sstream>

namespace {

const std::string golden = TARN_SOURCE_DIR "/tests/targets/golden/";

// Each rule that leaves a name undefined is met where the example says.
TEST(NusmvLustre, EveryExampleDefinesWhatItReads)
{
    namespace rule = smv_lustre_rule;
    const std::map<std::string, std::set<std::string>> expected = {
        {"accu", {rule::memorised, rule::output_under, rule::input_clock, rule::output_value, rule::method,
                         rule::zero, rule::external}},
        {"blink", {rule::memorised, rule::output_under}},
        {"peak", {rule::memorised, rule::output_under, rule::abstract, rule::method, rule::zero, rule::external}},
        {"shift", {rule::memorised, rule::output_under}},
        {"sum", {rule::memorised, rule::output_under, rule::method, rule::zero}},
        {"toggle", {rule::output_under}},
        {"watchdog", {rule::memorised, rule::output_under, rule::data_signal}},
    };
    for (const auto& e : expected) {
        SCOPED_TRACE(e.first);
        std::string zkc = read_file(smv_lustre_examples + e.first + ".zkc");
        ASSERT_FALSE(zkc.empty());
        std::set<std::string> rules = check_both(e.first, zkc);
        EXPECT_EQ(rules, e.second);
    }
}

TEST(NusmvLustre, GeneratedModulesDefineWhatTheyRead)
{
    for (int seed = 1; seed <= 5; ++seed)
        check_generated(seed, 60 + 30 * seed);
}

// The checks fail on texts where a definition or a port went wrong.
TEST(NusmvLustreCheck, BrokenTextsAreReported)
{
    zkc_facts m = read_zkc_facts(worked_module_text);
    std::string smv = read_file(golden + "m.smv"), lus = read_file(golden + "m.lus");
    ASSERT_TRUE(check_nusmv(smv, m).faults.empty());
    ASSERT_TRUE(check_lustre(lus, m).faults.empty());
    auto edited = [](std::string text, const std::string& from, const std::string& to) {
        size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return at == std::string::npos ? text : text.replace(at, from.size(), to);
    };
    const struct {
        std::string smv_from, smv_to;
    } smv_cases[] = {
        {"   node_2:= i;\n", ""},                                    // read, never defined
        {"   v_s_n := i;\n", "   v_s_n := i;\n   v_s_n := i;\n"},    // defined twice
        {"init(v_s_r) := FALSE;", "init(v_s_r) :=  TRUE;"},           // not the file's reset value
        {"next(v_s_r) := v_s_n;\n", ""},                             // a register without next
        {"MODULE m(i)", "MODULE m()"},                               // an input lost
        {"i:= {FALSE, TRUE};\n", ""},                                // an input left undriven
    };
    for (const auto& c : smv_cases)
        EXPECT_FALSE(check_nusmv(edited(smv, c.smv_from, c.smv_to), m).faults.empty()) << c.smv_from;
    const struct {
        std::string from, to;
    } lus_cases[] = {
        {"   m_node_2= i;\n", ""},                    // read, never defined
        {"  m_node_2: bool;\n", ""},                  // defined, not declared
        {"  v_s_r= false->pre(v_s_n);\n", ""},        // a register never defined
        {"   o= v_s_r;", "   o= v_s_r;\n   i= o;"},   // an input defined
        {"   o= v_s_r;", "   o= v_s_q;"},             // a name nothing declares
        {"returns (o: bool)", "returns (o: bool; p: bool)"},
    };
    for (const auto& c : lus_cases)
        EXPECT_FALSE(check_lustre(edited(lus, c.from, c.to), m).faults.empty()) << c.from;
}

// Modules built by hand: the double-rail headers that finalisation never
// leaves, a module without registers, a data test, the table's last node.
TEST(NusmvLustreForms, DoubleRailModuleWithoutRegistersAndWithADataTest)
{
    TargetModule t;
    t.m.setFinalised(0);
    Signal* a = t.input("a");
    Signal* o = t.output("o");
    Signal* v = t.valued(t.local("v"));
    t.eq(o, t.over(a));
    IndexSet deps{t.overId(a)};
    new Bddexpression(t.overId(v), t.wood, deps, "VALUE", 0, 0);
    t.endOfReading(false);
    std::ostringstream smv, lus;
    t.m.NUSMV_put(smv, 0, 1);
    EXPECT_EQ(smv.str(), "MODULE m(_v_SETm, _v_RESETm, _s_a, _v_a)\nVAR\nASSIGN\nDEFINE\n   _s_o := _s_a;\nASSIGN\n\n\n"
                         "MODULE  main\nVAR\n"
                         "_v_SETm: boolean;\n_v_RESETm: boolean;\n_s_a: boolean;\n_v_a: boolean;\n"
                         "mm: m(_v_SETm, _v_RESETm, _s_a, _v_a);\n"
                         "ASSIGN\n"
                         "_v_SETm:= {FALSE, TRUE};\n_v_RESETm:= {FALSE, TRUE};\n_s_a:= {FALSE, TRUE};\n"
                         "_v_a:= {FALSE, TRUE};\n");
    // The data test has no binding: Lustre, which prints its value, stops.
    EXPECT_EXIT(t.m.LUSTRE_put(lus, 0), testing::ExitedWithCode(1), "abstract equation without bindind for:");
}

TEST(NusmvLustreForms, LustreHeadersEmptyVariableSetAndTheLastNode)
{
    TargetModule t;
    Signal* o = t.output("o");
    Signal* p = t.output("p");
    Signal* a = t.input("a");
    Signal* b = t.input("b");
    t.eq(o, t.mgr->Bdd_one());
    t.eq(p, t.mgr->Bdd_and(t.over(a), t.over(b)));
    t.date();
    std::ostringstream lus;
    t.m.LUSTRE_put(lus, 0);
    std::string T = t.one(), B = std::to_string(t.id(t.over(b)));
    std::string last = std::to_string(t.mgr->Bdd_total_size() - 1);
    ASSERT_EQ(t.id(t.mgr->Bdd_and(t.over(a), t.over(b))), t.mgr->Bdd_total_size() - 1);
    // Every wire is a port: "var" stands alone; the last node is written
    // and not declared.
    EXPECT_EQ(lus.str(), "node m(_s_a: bool; _s_b: bool)\n     returns (_s_o: bool; _s_p: bool);\n\nvar\n"
                         "  m_node_" + T + ": bool;\n  m_node_" + B + ": bool;\nlet\n\n\n  -- outputs computing\n"
                         "   m_node_" + T + "= not false;\n   _s_o= m_node_" + T + ";\n   m_node_" + B + "= _s_b;\n"
                         "   m_node_" + last + "= _s_a and m_node_" + B + " or not _s_a and not m_node_" + T + ";\n"
                         "   _s_p= m_node_" + last + ";\n\ntel\n");

    TargetModule d;
    d.m.setFinalised(0);
    d.eq(d.output("o"), d.over(d.input("a")));
    d.endOfReading(false);
    std::ostringstream rails;
    d.m.LUSTRE_put(rails, 0);
    EXPECT_EQ(rails.str().substr(0, rails.str().find("\nvar\n")),
              "node m( _s_SETm, _s_RESETm; _s_a: bool; _v_a: bool)\n"
              "     returns (_s_RTL:boolm; _s_o: bool; _v_o: bool);\n");
}

} // namespace
