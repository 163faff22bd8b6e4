// The Esterel module as a reader of its names sees it, for every example
// and for generated modules: each signal name the body emits, tests or
// hands to my_pre is declared exactly once (an interface signal or a
// local), and each local is used, except where a rule of the text itself
// says otherwise; those rules are listed once, by what they are.

#include "data/data.h"
#include "model/module.h"
#include "signals/signal.h"
#include "tests/consumers/finalised_module.h"
#include "tests/tarn_process.h"
#include "tests/worked_module.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#ifndef ESTEREL_SWEEP
#define ESTEREL_SWEEP 5
#endif

namespace {

// What the rules need to know of the module.
struct module_facts {
    std::set<std::string> output_unders;    // under wires of the outputs
    std::set<std::string> memorised_names;  // declared names of the memorised pairs
    std::set<std::string> clock_names;      // internal names of the clocks
    std::set<std::string> valued_unbound;   // wires of valued signals without binding
    std::set<std::string> clocked_wires;    // wires of signals bound with a clock
};

module_facts read_facts(const std::string& file)
{
    module_facts f;
    Module* m = finalised_module(file);
    if (m == nullptr)
        return f;
    Bddexpressionwood* wood = m->getBddWood();
    if (m->getOutputSignalList() != nullptr)
        for (Signal* s : *m->getOutputSignalList())
            f.output_unders.insert(wood->Name_var_by_index(s->getUnderBddId(m, wood)));
    if (m->getPreSignalList() != nullptr)
        for (memorizedSignal* p : *m->getPreSignalList()) {
            f.memorised_names.insert(p->getPre()->getOriginalName());
            f.memorised_names.insert(p->getActual()->getOriginalName());
        }
    if (m->getDataTable() != nullptr)
        for (const auto& entry : *m->getDataTable())
            if (entry.second->getClock() != nullptr)
                f.clock_names.insert(entry.second->getClock()->getInternalName());
    for (long index : wood->Set_of_index_used_variables()) {
        SignalRef* ref = m->getSignalManager()->getSignalRefById(index, wood);
        if (ref == nullptr)
            continue;
        DataBinding* b = m->getBinding(ref->getCurrentName());
        if (ref->isValued() && b == nullptr)
            f.valued_unbound.insert(wood->Name_var_by_index(index));
        if (b != nullptr && b->getClock() != nullptr)
            f.clocked_wires.insert(wood->Name_var_by_index(index));
    }
    return f;
}

// The rules by which the text leaves a name undeclared or a local unused.
enum class rule {
    output_under,     // an output's under wire has its present block but no declaration
    memorised_names,  // a memorised pair runs my_pre on its declared names, not its wires
    clock_name,       // a clock is emitted by its internal name, not its wire
    valued_unbound,   // a valued wire without binding gets no block: declared, maybe never used
    clocked_wire,     // the block of a clocked signal emits its clock: the signal is declared, never emitted
};

struct reading {
    std::map<std::string, int> declared;  // name -> number of declarations
    std::set<std::string> locals;
    std::vector<std::string> problems;
    std::set<rule> used_rules;
};

void declare(reading& r, const std::string& item, bool local)
{
    std::string name = item.substr(0, item.find(':'));
    name.erase(name.find_last_not_of(' ') + 1);
    name.erase(0, name.find_first_not_of(' '));
    if (name.empty())
        return;
    ++r.declared[name];
    if (local)
        r.locals.insert(name);
}

reading check_names(const std::string& text, const module_facts& facts)
{
    reading r;
    std::istringstream lines(text);
    std::string line;
    std::smatch m;
    // Interface and locals.
    std::string signals;
    bool in_signals = false, in_body = false;
    std::vector<std::pair<std::string, std::string>> uses;  // name, kind of use
    std::set<std::string> used;
    while (std::getline(lines, line)) {
        if (in_signals) {
            signals += line;
            if (line.size() >= 3 && line.compare(line.size() - 3, 3, " in") == 0) {
                signals.erase(signals.size() - 3);
                std::istringstream items(signals.substr(7));
                std::string item;
                while (std::getline(items, item, ','))
                    declare(r, item, true);
                in_signals = false;
                in_body = true;
            }
            continue;
        }
        if (!in_body) {
            if (std::regex_match(line, m, std::regex("(input|output) (.*) ;"))) {
                std::istringstream items(m[2].str());
                std::string item;
                while (std::getline(items, item, ','))
                    declare(r, item, false);
            } else if (line.rfind("signal ", 0) == 0) {
                in_signals = true;
                signals = line;
                if (line.size() >= 3 && line.compare(line.size() - 3, 3, " in") == 0) {
                    std::istringstream items(line.substr(7, line.size() - 10));
                    std::string item;
                    while (std::getline(items, item, ','))
                        declare(r, item, true);
                    in_signals = false;
                    in_body = true;
                }
            } else if (line == "  [" || line == "  loop  [") {
                in_body = true;
            }
            if (!in_body)
                continue;
        }
        if (line.empty() || line == "  [" || line == "  ]" || line == "  ||" || line == "    ||" ||
            line == "  loop  [" || line == "    end present" || line == "end module")
            continue;
        // The loop's closing words run into the next line's: the text of
        // the closing line is fixed.
        if (line == "  ]  each tickend signal " || line == "  ]  each tickend module")
            continue;
        if (line == "valued signal TO HANDLE!")
            continue;
        if (std::regex_match(line, m, std::regex("    emit (\\w+);")))
            uses.push_back({m[1], "emit"});
        else if (std::regex_match(line, m, std::regex("    run my_pre \\[signal (\\w+) / S, (\\w+) / preS\\]"))) {
            uses.push_back({m[1], "run"});
            uses.push_back({m[2], "run"});
        } else if (std::regex_match(line, m, std::regex("    present \\[(.*)\\] then"))) {
            std::istringstream words(m[1].str());
            std::string w;
            while (words >> w)
                if (w != "and" && w != "or" && w != "not" && w != "tick")
                    uses.push_back({w, "present"});
        } else if (std::regex_match(line, m, std::regex("      emit (\\w+)")))
            uses.push_back({m[1], "emit"});
        else if (std::regex_match(line, m, std::regex("      emit (\\w+)\\(.*\\)")))
            // The value is a data expression: its names are no signals.
            uses.push_back({m[1], "emit value"});
        else if (std::regex_match(line, m, std::regex("  (\\w+) = .*;")))
            uses.push_back({m[1], "assign"});
        else
            r.problems.push_back("unexpected line: \"" + line + "\"");
    }
    for (const auto& u : uses) {
        used.insert(u.first);
        int n = r.declared.count(u.first) ? r.declared[u.first] : 0;
        if (n == 1)
            continue;
        if (n == 0 && u.second == "emit" && facts.output_unders.count(u.first)) {
            r.used_rules.insert(rule::output_under);
            continue;
        }
        if (n == 0 && u.second == "run" && facts.memorised_names.count(u.first)) {
            r.used_rules.insert(rule::memorised_names);
            continue;
        }
        if (n == 0 && u.second == "emit value" && facts.clock_names.count(u.first)) {
            r.used_rules.insert(rule::clock_name);
            continue;
        }
        r.problems.push_back(u.second + " " + u.first + ": declared " + std::to_string(n) + " times");
    }
    for (const auto& d : r.declared)
        if (d.second != 1)
            r.problems.push_back(d.first + " declared " + std::to_string(d.second) + " times");
    for (const std::string& l : r.locals)
        if (used.count(l) == 0) {
            if (facts.valued_unbound.count(l))
                r.used_rules.insert(rule::valued_unbound);
            else if (facts.clocked_wires.count(l))
                r.used_rules.insert(rule::clocked_wire);
            else
                r.problems.push_back("local " + l + " never used");
        }
    return r;
}

std::string joined(const std::vector<std::string>& v)
{
    std::string s;
    for (const std::string& x : v)
        s += x + "\n";
    return s;
}

// Writes the module, runs tarn for Esterel, and checks the names.
std::set<rule> expect_names_declared_once(const std::string& module, const std::string& zkc)
{
    SCOPED_TRACE(module);
    scratch_dir s;
    std::string file = s.write(module + ".zkc", zkc);
    tarn_output out = run_tarn_in(s.path, {module + ".zkc", "-esterel"});
    EXPECT_EQ(out.status, 0) << out.err;
    std::string text = read_file(s.path + "/" + module + ".strl");
    EXPECT_EQ(text.rfind("module " + module + ":\n", 0), 0u) << text;
    reading r = check_names(text, read_facts(file));
    EXPECT_EQ(joined(r.problems), "") << text;
    return r.used_rules;
}

TEST(EsterelNames, EveryExampleDeclaresEachNameOnce)
{
    std::set<rule> seen = expect_names_declared_once("m", worked_module_text);
    for (const char* name : {"accu", "blink", "peak", "shift", "sum", "toggle", "watchdog"}) {
        std::string zkc = read_file(std::string(TARN_SOURCE_DIR "/examples/") + name + ".zkc");
        std::smatch m;
        ASSERT_TRUE(std::regex_search(zkc, m, std::regex("module:\\s*(\\w+)")));
        std::set<rule> more = expect_names_declared_once(m[1], zkc);
        seen.insert(more.begin(), more.end());
    }
    // Every rule stands in the examples: none is listed for nothing.
    EXPECT_EQ(seen, (std::set<rule>{rule::output_under, rule::memorised_names, rule::clock_name,
                                    rule::valued_unbound, rule::clocked_wire}));
}

TEST(EsterelNames, GeneratedModulesDeclareEachNameOnce)
{
    for (int k = 0; k < ESTEREL_SWEEP; ++k) {
        long equations = 8 + (k * 41) % 300;
        std::string name = "g" + std::to_string(k);
        scratch_dir s;
        expect_names_declared_once(name, generate_module(s.path, name, equations, 200 + k));
    }
}

// The check itself: a name read and declared nowhere, and one declared
// twice, are found.
TEST(EsterelNames, CheckFindsUndeclaredAndDoubleNames)
{
    module_facts none;
    reading r = check_names("module m:\n\ninput a ;\noutput o, o ;\n\n  loop  [\n    present [a and b] then\n"
                            "      emit o\n    end present\n\n  ]  each tickend module\n\n",
                            none);
    EXPECT_EQ(joined(r.problems), "present b: declared 0 times\nemit o: declared 2 times\no declared 2 times\n");
}

} // namespace
