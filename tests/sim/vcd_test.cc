// The value change dump: GTKWave's converter takes every dump written here,
// the dump read back through it says, reaction by reaction, what the
// printed trace says, and a person can look at one in GTKWave (a
// screenshot under a private X server, kept with the dump as artefacts).

#include "sim/vcd_writer.h"
#include "tests/consumers/c_reference.h"
#include "tests/tarn_process.h"
#include "tests/virtual_display.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace c_reference;

const std::string artefacts = TARN_BINARY_DIR "/tests/sim/artefacts";

// Per time step, the variables of the dump and their values ("0", "1", or
// a string's text), carried over from step to step.
struct dump {
    std::map<std::string, std::string> kind; // name -> "wire" or "string"
    std::vector<std::map<std::string, std::string>> steps;
};

dump read_vcd(const std::string& text)
{
    dump d;
    std::map<std::string, std::string> name_of; // code -> name
    std::map<std::string, std::string> now;
    std::istringstream in(text);
    std::string line;
    bool started = false;
    long time = -1;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string w;
        words >> w;
        if (w == "$var") {
            std::string kind, size, code, name;
            words >> kind >> size >> code >> name;
            name_of[code] = name;
            d.kind[name] = kind;
        } else if (w == "$enddefinitions") {
            started = true;
        } else if (started && !w.empty() && w[0] == '#') {
            if (time >= 0)
                d.steps.push_back(now);
            time = std::stol(w.substr(1));
        } else if (started && !w.empty() && (w[0] == '0' || w[0] == '1')) {
            now[name_of[w.substr(1)]] = w.substr(0, 1);
        } else if (started && !w.empty() && w[0] == 's') {
            std::string code;
            words >> code;
            // The converter writes strings back with C escapes ("\\?").
            std::string value;
            for (std::size_t i = 1; i < w.size(); ++i)
                value += w[i] == '\\' && i + 1 < w.size() ? w[++i] : w[i];
            now[name_of[code]] = value;
        }
    }
    // The last time stamp closes the dump; it holds no reaction.
    return d;
}

// Writes the dump of `reactions` on `module` (a file of `dir`), checks it
// with vcd2fst and returns it read back from the converted file, with the
// printed lines in `printed`.
dump dump_through_gtkwave(const scratch_dir& s, const std::string& module, const std::string& reactions,
                          std::string& printed)
{
    s.write("r.txt", reactions);
    tarn_output r = run_mosk_in(s.path, {module + ".zkc", "-input", "r.txt", "-vcd", "out.vcd"});
    EXPECT_EQ(r.status, 0) << r.err;
    printed = r.out;
    EXPECT_EQ(run("cd '" + s.path + "' && timeout 30 vcd2fst out.vcd out.fst > conv.txt 2>&1"), 0)
        << read_file(s.path + "/conv.txt");
    EXPECT_EQ(run("cd '" + s.path + "' && timeout 30 fst2vcd out.fst > back.vcd 2>> conv.txt"), 0)
        << read_file(s.path + "/conv.txt");
    return read_vcd(read_file(s.path + "/back.vcd"));
}

// Every printed line against the dump's step: an output is on the line
// exactly when its wire is 1, with its value as the string beside it.
void expect_same_trace(const dump& d, const std::string& printed, const std::vector<std::string>& outputs)
{
    std::istringstream lines(printed);
    std::string line;
    std::size_t step = 0;
    for (; std::getline(lines, line); ++step) {
        ASSERT_LT(step, d.steps.size());
        std::istringstream words(line);
        std::map<std::string, std::string> shown;
        std::string w;
        while (words >> w) {
            std::size_t open = w.find('(');
            shown[w.substr(0, open)] = open == std::string::npos ? "" : w.substr(open + 1, w.size() - open - 2);
        }
        const auto& at = d.steps[step];
        for (const std::string& o : outputs) {
            auto it = at.find(o);
            ASSERT_NE(it, at.end()) << o;
            EXPECT_EQ(it->second == "1", shown.count(o) == 1) << o << " at reaction " << step + 1;
            if (shown.count(o) && !shown[o].empty()) {
                EXPECT_EQ(at.at(o + "_val"), shown[o]) << o << " at reaction " << step + 1;
            }
        }
    }
    EXPECT_EQ(step, d.steps.size());
}

std::string random_reactions(const std::vector<c_port>& inputs, int count, unsigned seed)
{
    return reaction_lines(inputs, random_trace(inputs, seed, count));
}

TEST(Vcd, ValueTokens)
{
    // The codes are read back through GTKWave's converter below.
    EXPECT_EQ(vcd_writer::token(" -5"), "-5");
    EXPECT_EQ(vcd_writer::token("a b\tc"), "a_b_c");
    EXPECT_EQ(vcd_writer::token("--"), "?");
    EXPECT_EQ(vcd_writer::token("  "), "?");
}

TEST(Vcd, GtkwaveReadsTheDumpAsThePrintedTrace)
{
    if (!have("vcd2fst") || !have("fst2vcd"))
        GTEST_SKIP() << "GTKWave's converters are not installed";
    {
        scratch_dir s;
        copy_example(s.path, "watchdog");
        std::string printed;
        dump d = dump_through_gtkwave(s, "watchdog", random_reactions({{"kick"}, {"tick"}}, 40, 5), printed);
        expect_same_trace(d, printed, {"alarm"});
        // Inputs and locals are there too; the boot register is high in the
        // first reaction only.
        ASSERT_EQ(d.steps.size(), 40u);
        EXPECT_EQ(d.kind.count("kick"), 1u);
        EXPECT_EQ(d.kind.count("armed"), 1u);
        EXPECT_EQ(d.steps[0].at("watchdog_boot"), "1");
        EXPECT_EQ(d.steps[1].at("watchdog_boot"), "0");
    }
    {
        // A valued module without a data server: its values are unknown.
        scratch_dir s;
        copy_example(s.path, "sum");
        std::string printed;
        dump d = dump_through_gtkwave(s, "sum", "inc(3)\n\ninc(4)\n", printed);
        EXPECT_EQ(printed, "total(?)\n\ntotal(?)\n");
        EXPECT_EQ(d.kind["total_val"], "string");
        expect_same_trace(d, printed, {"total"});
        EXPECT_EQ(d.steps[0].at("inc_val"), "3");
    }
    {
        // A generated module with many locals.
        scratch_dir s;
        generate_module(s.path, "big", 300, 4);
        std::vector<c_port> inputs, outputs;
        ASSERT_EQ(run_tarn_in(s.path, {"big.zkc", "-c"}).status, 0);
        ASSERT_TRUE(read_ports(read_file(s.path + "/big.h"), "big", inputs, outputs));
        ASSERT_FALSE(inputs.empty());
        std::string printed;
        dump d = dump_through_gtkwave(s, "big", random_reactions(inputs, 30, 9), printed);
        EXPECT_GT(d.kind.size(), inputs.size() + outputs.size());
        expect_same_trace(d, printed, names(outputs));
    }
}

// Shows the dump in GTKWave on a private X server and takes the screen;
// every wait is bounded, and GTKWave is stopped at the end.
TEST(Vcd, ScreenshotOfTheDumpInGtkwave)
{
    if (!have("Xvfb") || !have("gtkwave") || !have("import") || !have("xdotool"))
        GTEST_SKIP() << "Xvfb, gtkwave, ImageMagick or xdotool is missing";
    run("mkdir -p '" + artefacts + "'");
    scratch_dir s;
    copy_example(s.path, "watchdog");
    s.write("r.txt", random_reactions({{"kick"}, {"tick"}}, 16, 3));
    tarn_output r = run_mosk_in(s.path, {"watchdog.zkc", "-input", "r.txt", "-vcd", "watchdog.vcd"});
    ASSERT_EQ(r.status, 0) << r.err;
    s.write("watchdog.gtkw", "[timestart] 0\n[size] 1000 420\n[pos] 0 0\n*-2.2 16 -1\n[treeopen] watchdog.\n"
                             "[signals_width] 180\n[sst_expanded] 0\n@28\nwatchdog.kick\nwatchdog.tick\n"
                             "watchdog.alarm\nwatchdog.armed\nwatchdog.watchdog_boot\n");
    virtual_display display(false, "1000x420x24");
    ASSERT_FALSE(display.name.empty()) << "Xvfb did not start";
    display_process gtkwave(s.path, display.name, "gtkwave", {"-a", "watchdog.gtkw", "watchdog.vcd"});
    bool shown = wait_until(20, [&] { return !display.windows("--name GTKWave").empty(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    if (shown)
        display.run("import -window root '" + s.path + "/screenshot.png'");
    ASSERT_TRUE(shown) << gtkwave.err();
    ASSERT_EQ(run("cp '" + s.path + "/screenshot.png' '" + s.path + "/watchdog.vcd' '" + artefacts + "/'"), 0);
    // A real picture: PNG of the screen's size, wider than a blank frame.
    std::string png = read_file(artefacts + "/screenshot.png");
    ASSERT_GT(png.size(), 5000u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(run("identify '" + artefacts + "/screenshot.png' | grep -q ' 1000x420 '"), 0);
}

} // namespace
