// Signals and their wires: variable order, shared refs, kind codes,
// occurrences, registers and memorised pairs, and the refusals of misuse;
// and the signal tables' short cuts against their plain forms: the ref kept
// by a signal against the manager's look-up by name, the inline first
// entries against std::map, and the name index against std::unordered_map.

#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

struct Signals : ::testing::Test {
    Module m{"m"};
    Bddexpressionwood* wood = m.getBddWood();
};
using SignalsDeathTest = Signals;

std::vector<std::string> variableNames(Bddexpressionwood* wood)
{
    std::vector<std::string> names;
    for (long i = 0; i < wood->Nb_bdd_vars(); i++)
        names.push_back(wood->Name_var_by_index(i));
    return names;
}

TEST_F(Signals, KindCodesFollowFlagPriority)
{
    struct Case {
        const char* what;
        bool input, output, reg, clock, wire;
        int over, under;
    };
    const Case cases[] = {
        {"none", false, false, false, false, false, Compilation::STAT, Compilation::VAL},
        {"input", true, false, false, false, false, Compilation::SINPUT, Compilation::VINPUT},
        {"input and output", true, true, false, false, false, Compilation::SINPUT, Compilation::VINPUT},
        {"output and register", false, true, true, false, false, Compilation::SOUTPUT, Compilation::VOUTPUT},
        {"register (wire too)", false, false, true, true, false, Compilation::SREG, Compilation::VREG},
        {"clock and wire", false, false, false, true, true, Compilation::SCLOCK, Compilation::VCLOCK},
        {"wire", false, false, false, false, true, Compilation::SWIRE, Compilation::VWIRE},
    };
    int n = 0;
    for (const Case& c : cases) {
        Signal* s = new Signal("k" + std::to_string(n++), &m, wood);
        s->setInput(c.input);
        s->setOutput(c.output);
        if (c.reg)
            s->setRegister();
        s->setClock(c.clock);
        s->setWire(c.wire || c.reg);
        EXPECT_EQ(s->computeOverType(), c.over) << c.what;
        EXPECT_EQ(s->computeUnderType(), c.under) << c.what;
    }
    Signal* wired = new Signal("w", "w_i", &m, wood, true);
    EXPECT_TRUE(wired->isWire() && wired->isRegister() && wired->isWired());
}

// A variable of the name already there is reused; an "@" stays in names
// until replaced; an absent signal has no wire; only the valued actual of
// a memorised pair is used with its pre.
TEST_F(Signals, NamesWiresAndPairs)
{
    wood->New_var_last("_v_x");
    Signal* x = new Signal("x", &m, wood);
    EXPECT_EQ(variableNames(wood), (std::vector<std::string>{"_v_x", "_s_x"}));
    EXPECT_EQ(x->getOverBddId(&m, wood), 1);
    EXPECT_EQ(x->getUnderBddId(&m, wood), 0);

    Signal* at = new Signal("a@b", "a@b@1", &m, wood);
    EXPECT_EQ(at->getOverName(&m), "_s_a@b@1");
    at->ReplaceAtCharacterInAllNames("_");
    EXPECT_EQ(at->getOriginalName(), "a_b");
    EXPECT_EQ(at->getInternalName(), "a_b_1");

    Signal* s = new Signal("s", &m, wood);
    s->setLocal();
    s->setCurrentOccurrence(wood, -1);
    EXPECT_TRUE(s->getAllBddId(&m, wood).empty());

    Signal* actual = new Signal("a", &m, wood);
    Signal* pre = new Signal("pa", &m, wood);
    Signal* other = new Signal("o", &m, wood);
    other->setValueType("int", &m);
    m.addPreSignal(pre, actual, "0");
    EXPECT_FALSE(actual->usedwithPre(&m));
    actual->setValueType("int", &m);
    EXPECT_TRUE(actual->usedwithPre(&m));
    EXPECT_FALSE(pre->usedwithPre(&m));
    EXPECT_FALSE(other->usedwithPre(&m));
}

TEST_F(Signals, ManagerDuplicatesAndDeletesWoods)
{
    Signal* a = new Signal("a", &m, wood);
    Signal* b = new Signal("b", &m, wood);
    SignalManager* manager = m.getSignalManager();
    Bddexpressionwood copy;
    manager->duplicate(wood, &copy);
    EXPECT_EQ(b->getOverBddId(&m, &copy), 2);
    EXPECT_EQ(manager->getSignalRefById(3, &copy), manager->getSignalRefByName("b"));
    manager->deleteWood(wood);
    EXPECT_FALSE(manager->getSignalRefByName("a")->hasWood(wood));
    EXPECT_EQ(manager->getSignalRefById(0, wood), nullptr);
    EXPECT_EQ(a->getUnderBddId(&m, &copy), 1);
}

// Registers compare on all three fields (the other tests lean on it) and
// print in the file's layout, unknown signals as "?".
TEST_F(Signals, RegistersCompareOnAllFieldsAndPrintInTheFileLayout)
{
    Signal* r = new Signal("r", &m, wood);
    Signal* n = new Signal("n", &m, wood);
    regclass a(r, n, 1);
    EXPECT_TRUE(a == regclass(r, n, 1) && a != regclass(r, n, 0) && a != regclass(n, n, 1) && a != regclass(r, r, 1));
    std::ostringstream text;
    text << regclass(r, n, 1) << "|" << regclass(r, nullptr, 0) << "|" << memorizedSignal(n, r, "3") << "|"
         << memorizedSignal(n, nullptr, "");
    EXPECT_EQ(text.str(), "n r 1;|? r 0;|n r 3;|n ? ;");
}

TEST_F(SignalsDeathTest, MisuseEndsWithItsMessage)
{
    Signal* in = new Signal("in", &m, wood);
    in->setInput();
    EXPECT_EXIT(in->getAllBddId(&m, wood), ::testing::ExitedWithCode(1),
                "Error: Illegal operation!\nSignal::getAllBddIdin");
    Bddexpressionwood other;
    EXPECT_EXIT(in->getCurrentOccurrence(&other), ::testing::ExitedWithCode(1),
                "Signal:getCurrentOccurrence: no current occurrence for the considered wood:.*  for signal:in");
    EXPECT_EXIT(new SignalRef("in", "in", &m, wood), ::testing::ExitedWithCode(1),
                "Exception in Hash Table: SignalManager::addSignalRef: add:in is already defined");
    SignalRef* ref = m.getSignalManager()->getSignalRefByName("in");
    EXPECT_EXIT(ref->addBddIds(5, 6, wood), ::testing::ExitedWithCode(1),
                "SignalRef::addBddIds: wood already addedin");
    EXPECT_EXIT(ref->getOverBddId(&other), ::testing::ExitedWithCode(1), "SignalRef::getOverBddId:unknown woodin");
    EXPECT_EXIT(ref->setOverBddId(1, &other), ::testing::ExitedWithCode(1), "SignalRef::setOverBddId: wood not found");
    EXPECT_EXIT(m.getSignalManager()->addSignalRefIdTable(0, 9, ref, wood), ::testing::ExitedWithCode(1),
                "addSignalRef \\(excep1\\) in");
    EXPECT_EXIT(m.getSignalManager()->addSignalRefIdTable(9, 1, ref, wood), ::testing::ExitedWithCode(1),
                "addSignalRef \\(excep2\\)in");
    Expression root;
    EXPECT_EXIT(root.getOverBdd(&m, wood), ::testing::ExitedWithCode(1),
                "Error: calling Abstract method: Expression::getOverBdd\\(\\)");
    EXPECT_EXIT(root.duplicate(), ::testing::ExitedWithCode(1), "abnormal use of expression::duplicate\\(\\) ...");

    // A second occurrence's ref in the same wood.
    Signal* x = new Signal("x", &m, wood);
    x->setLocal();
    new Signal("x_1", &m, wood);  // takes the name of x's first occurrence
    EXPECT_EXIT(x->newOccurrence(wood, &m), ::testing::ExitedWithCode(1),
                "Signal::newOccurrence: signal ref already exits for the current woodx");
}

// Every answer that goes through a signal's kept ref, against the look-ups
// by name in the manager.
void expectRefsFound(Signal* s, Module* m, Bddexpressionwood* wood, const std::string& where)
{
    SignalManager* manager = m->getSignalManager();
    SignalRef* initial = manager->getSignalRefByName(s->getInternalName());
    ASSERT_NE(initial, nullptr) << where;
    EXPECT_EQ(s->getInitialOverBddId(m, wood), initial->getOverBddId(wood)) << where;
    EXPECT_EQ(s->getInitialUnderBddId(m, wood), initial->getUnderBddId(wood)) << where;
    int occ = s->getCurrentOccurrence(wood);
    SignalRef* current = manager->getSignalRefByOccurrence(s, occ);
    ASSERT_NE(current, nullptr) << where;
    EXPECT_EQ(s->getSignalRef(manager, wood), current) << where;
    EXPECT_EQ(s->getOverBddId(m, wood), current->getOverBddId(wood)) << where;
    EXPECT_EQ(s->getUnderBddId(m, wood), current->getUnderBddId(wood)) << where;
    EXPECT_EQ(s->isValued(m, wood), current->isValued()) << where;
    std::string name = occ == 0 ? s->getInternalName() : s->getInternalName() + "_" + std::to_string(occ);
    EXPECT_EQ(current->getCurrentName(), name) << where;
    EXPECT_EQ(current->getType(), current->isValued() ? "int" : "pure") << where;
    EXPECT_EQ(current->isOccurrence(), occ != 0) << where;
    // Each ref has two variables of its own, named after it.
    EXPECT_EQ(wood->Name_var_by_index(current->getOverBddId(wood)), "_s_" + name) << where;
    EXPECT_EQ(wood->Name_var_by_index(current->getUnderBddId(wood)), "_v_" + name) << where;
    EXPECT_EQ(manager->getSignalRefById(current->getUnderBddId(wood), wood), current) << where;
    if (s->isLocal() || s->isOutput()) {
        std::vector<long> plain;
        for (int k = 0; k <= occ; k++) {
            SignalRef* ref = manager->getSignalRefByOccurrence(s, k);
            plain.push_back(ref->getOverBddId(wood));
            plain.push_back(ref->getUnderBddId(wood));
        }
        std::list<long> all = s->getAllBddId(m, wood);
        EXPECT_EQ(std::vector<long>(all.begin(), all.end()), plain) << where;
    }
}

TEST(SignalFast, KeptRefsAnswerLikeTheLookUpsByName)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 rng(seed);
        Module m("m");
        Module other("other");
        Bddexpressionwood* wood = m.getBddWood();
        std::vector<Signal*> signals;
        // One signal per internal name moves on to new occurrences.
        std::vector<Signal*> movers;
        // The original name of the signal that made each ref.
        std::map<std::string, std::string> originals;
        for (int step = 0; step < 60; ++step) {
            std::string name = "s" + std::to_string(rng() % 12);
            switch (rng() % 5) {
            case 0:
            case 1: {
                // Shared internal names share the ref.
                std::string internal = rng() % 2 ? name : "s" + std::to_string(rng() % 12);
                bool first = m.getSignalManager()->getSignalRefByName(internal) == nullptr;
                Signal* s = new Signal(name, internal, &m, wood);
                if (first) {
                    movers.push_back(s);
                    originals[internal] = name;
                }
                EXPECT_EQ(m.getSignalManager()->getSignalRefByName(internal)->getOriginalName(), originals[internal]);
                if (rng() % 2)
                    s->setLocal();
                if (rng() % 3 == 0)
                    s->setValueType("int", &m);
                signals.push_back(s);
                break;
            }
            case 2:
                if (!movers.empty()) {
                    // A local's occurrence takes the next two variables and
                    // the type of the one before; any other signal has none.
                    Signal* s = movers[rng() % movers.size()];
                    long end = wood->Nb_bdd_vars();
                    bool valued = s->isValued(&m, wood);
                    s->newOccurrence(wood, &m);
                    EXPECT_EQ(wood->Nb_bdd_vars(), s->isLocal() ? end + 2 : end);
                    EXPECT_EQ(s->getOverBddId(&m, wood), s->isLocal() ? end : s->getInitialOverBddId(&m, wood));
                    EXPECT_EQ(s->isValued(&m, wood), valued);
                }
                break;
            case 3: {
                // After the renaming the kept ref is the one of the new name.
                new Signal("r_" + std::to_string(step), &m, wood);
                Signal* s = new Signal("r@" + std::to_string(step), &m, wood);
                expectRefsFound(s, &m, wood, "before renaming");
                s->ReplaceAtCharacterInAllNames("_");
                EXPECT_EQ(s->getOriginalName(), s->getInternalName());
                signals.push_back(s);
                break;
            }
            default:
                if (!signals.empty()) {
                    // Asked for in another module, the signal goes by that
                    // module's refs, then back.
                    Signal* s = signals[rng() % signals.size()];
                    Signal* copy = s->copyInto(&m, wood, &other, other.getBddWood());
                    EXPECT_EQ(s->getInitialOverBddId(&other, other.getBddWood()),
                              copy->getInitialOverBddId(&other, other.getBddWood()));
                }
                break;
            }
            for (Signal* s : signals)
                expectRefsFound(s, &m, wood, "seed " + std::to_string(seed) + " step " + std::to_string(step));
        }
    }
}

TEST(SignalFast, InlineFirstEntriesBehaveLikeMaps)
{
    std::mt19937 rng(3);
    // Null is a wood like any other.
    std::vector<Bddexpressionwood*> woods{nullptr};
    for (std::size_t k = 1; k < 4; ++k)
        woods.push_back(reinterpret_cast<Bddexpressionwood*>(k * 64));
    for (int round = 0; round < 50; ++round) {
        WoodMap<int> fast;
        std::map<Bddexpressionwood*, int> plain;
        for (int step = 0; step < 40; ++step) {
            Bddexpressionwood* w = woods[rng() % woods.size()];
            int v = static_cast<int>(rng() % 100);
            switch (rng() % 4) {
            case 0:
                fast[w] = v;
                plain[w] = v;
                break;
            case 1:
                // Reading through [] makes the entry, also after an erase.
                EXPECT_EQ(fast[w], plain[w]);
                break;
            case 2:
                EXPECT_EQ(fast.insert(w, v), plain.emplace(w, v).second);
                break;
            default:
                fast.erase(w);
                plain.erase(w);
                break;
            }
            EXPECT_EQ(fast.empty(), plain.empty());
            for (Bddexpressionwood* probe : woods) {
                auto o = plain.find(probe);
                const int* got = fast.find(probe);
                ASSERT_EQ(got != nullptr, o != plain.end());
                if (got != nullptr) {
                    EXPECT_EQ(*got, o->second);
                }
            }
        }
    }
}

struct Named {
    std::string name;
    const std::string& getName() const { return name; }
};

TEST(SignalFast, NameIndexAnswersLikeAHashMap)
{
    std::mt19937 rng(5);
    std::vector<std::unique_ptr<Named>> made;
    for (int round = 0; round < 20; ++round) {
        NameIndex<Named, &Named::getName> index;
        std::unordered_map<std::string, Named*> plain;
        // Few names at first so that they collide, then many so that the
        // table grows under them.
        unsigned spread = round % 2 ? 30 : 3000;
        for (int step = 0; step < 2000; ++step) {
            made.push_back(std::make_unique<Named>(Named{"n" + std::to_string(rng() % spread)}));
            Named* item = made.back().get();
            switch (rng() % 5) {
            case 0: {
                // First wins.
                auto entry = plain.emplace(item->name, item);
                EXPECT_EQ(index.insert(item), entry.second ? nullptr : entry.first->second);
                break;
            }
            case 1:
                // Last wins.
                plain[item->name] = item;
                index.assign(item);
                break;
            case 2:
                if (rng() % 50 == 0)
                    index.reserve(rng() % 4000);
                break;
            default: {
                auto it = plain.find(item->name);
                EXPECT_EQ(index.find(item->name), it == plain.end() ? nullptr : it->second) << item->name;
                break;
            }
            }
            ASSERT_EQ(index.size(), plain.size());
        }
        std::set<Named*> seen;
        index.for_each([&](Named* n) { seen.insert(n); });
        std::set<Named*> want;
        for (const auto& entry : plain)
            want.insert(entry.second);
        EXPECT_EQ(seen, want);
        index.release();
        EXPECT_EQ(index.find("n1"), nullptr);
        EXPECT_TRUE(index.empty());
    }
}

} // namespace
