// The front panel driven in a virtual X server: its window and widgets on
// screen, what its buttons make the run do, its messages, and tarn's
// answer when there is no display at all.

#include "driver/wintarn_interface.h"
#include "tests/tarn_process.h"
#include "tests/virtual_display.h"
#include "tests/worked_module.h"

#include <FL/Fl_Check_Button.H>

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>

namespace {

const std::string tarn_binary = TARN_BINARY_DIR "/driver/tarn";

// A screenshot as 8-bit RGB, read back through ImageMagick.
struct picture {
    int width = 0, height = 0;
    std::string rgb;
    unsigned pixel(int x, int y) const
    {
        if (x < 0 || y < 0 || x >= width || y >= height)
            return 0xffffffffu;
        const unsigned char* p = reinterpret_cast<const unsigned char*>(rgb.data()) + 3 * (y * width + x);
        return p[0] << 16 | p[1] << 8 | p[2];
    }
};

picture screenshot(const virtual_display& display, const std::string& window, const std::string& png)
{
    picture shot;
    std::remove(png.c_str());
    display.run("import -window " + window + " '" + png + "'");
    std::istringstream ppm(display.run("convert '" + png + "' -depth 8 ppm:-"));
    std::string magic;
    int depth = 0;
    if (ppm >> magic >> shot.width >> shot.height >> depth && magic == "P6" && depth == 255) {
        ppm.get();
        shot.rgb.assign(std::istreambuf_iterator<char>(ppm), {});
        if (shot.rgb.size() != 3u * shot.width * shot.height)
            shot.width = shot.height = 0;
    }
    return shot;
}

const char* const panel_title = "wintarn";

// Clicks the centre of the button of that label.
void press(const virtual_display& display, const std::string& window, const std::string& label)
{
    static const std::map<std::string, std::pair<int, int>> centres = {
        {"c", {135, 165}}, {"altera (vhdl)", {135, 270}}, {"blif", {135, 305}}, {"no supress wires", {610, 130}},
        {"Load", {87, 57}}, {"Compile && Quit", {240, 360}}, {"Quit", {615, 360}},
    };
    auto at = centres.find(label);
    ASSERT_NE(at, centres.end()) << "no button " << label;
    display.click(window, at->second.first, at->second.second);
}

// The visible windows of FLTK other than the panel: its dialogs.
std::vector<std::string> dialogs(const virtual_display& display, const std::string& window)
{
    std::vector<std::string> ids = display.windows("--class FLTK");
    ids.erase(std::remove(ids.begin(), ids.end(), window), ids.end());
    return ids;
}

// Waits for one dialog, then closes it with its default button.
bool close_dialog(const virtual_display& display, const std::string& window)
{
    std::vector<std::string> open;
    if (!wait_until(5, [&] { return (open = dialogs(display, window)).size() == 1; }))
        return false;
    display.key(open[0], "Return");
    return wait_until(5, [&] { return dialogs(display, window).empty(); });
}

std::vector<std::string> generation_lines(const std::string& out)
{
    std::vector<std::string> lines;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);)
        if (line.rfind("generation of ", 0) == 0)
            lines.push_back(line);
    return lines;
}

void window_and_widgets(const virtual_display& display, const std::string& dir)
{
    display_process tarn(dir, display.name, tarn_binary, {"m.zkc"});
    std::string window = display.window(panel_title);
    ASSERT_NE(window, "") << "no panel window; stderr: " << tarn.err();
    std::string geometry = display.run("xdotool getwindowgeometry " + window);
    EXPECT_NE(geometry.find("Geometry: 755x390"), std::string::npos) << geometry;

    const std::string png = TARN_BINARY_DIR "/tests/driver/panel.png";
    picture shot;
    unsigned background = 0;
    // Drawn once the Load button's edge stands out from the background.
    wait_until(5, [&] {
        shot = screenshot(display, window, png);
        background = shot.pixel(730, 250);
        return shot.pixel(15, 57) != background;
    });
    std::cout << "panel screenshot: " << png << std::endl;
    ASSERT_EQ(shot.width, 755);
    ASSERT_EQ(shot.height, 390);

    // Each box's four edges are drawn on its own outermost pixels and the
    // pixels just outside are the window's background.
    struct box {
        const char* what;
        int x, y, w, h;
    };
    const box boxes[] = {
        {"target frame", 15, 85, 480, 245}, {"parameters frame", 515, 85, 189, 80},
        {"Load", 15, 40, 145, 35},          {"file name", 170, 40, 400, 35},
        {"Compile", 175, 343, 130, 35},     {"Quit", 550, 343, 130, 35},
        {"mosk simulator", 25, 115, 221, 30}, {"c", 25, 150, 220, 30},
        {"blif", 25, 290, 220, 30},         {"encapsulated qsr", 260, 255, 220, 30},
        {"no supress wires", 525, 115, 170, 30},
    };
    for (const box& b : boxes) {
        int mx = b.x + b.w / 2 + 7, my = b.y + b.h / 2;  // off the centred labels
        EXPECT_NE(shot.pixel(b.x, my), background) << b.what << " left";
        EXPECT_NE(shot.pixel(b.x + b.w - 1, my), background) << b.what << " right";
        EXPECT_NE(shot.pixel(mx, b.y), background) << b.what << " top";
        EXPECT_NE(shot.pixel(mx, b.y + b.h - 1), background) << b.what << " bottom";
        EXPECT_EQ(shot.pixel(b.x - 1, my), background) << b.what << " left";
        EXPECT_EQ(shot.pixel(b.x + b.w, my), background) << b.what << " right";
        EXPECT_EQ(shot.pixel(mx, b.y - 1), background) << b.what << " top";
        EXPECT_EQ(shot.pixel(mx, b.y + b.h), background) << b.what << " bottom";
    }
    // The file name field has a colour of its own and shows the file; the
    // version field has no box, only its text.
    auto inked = [&](int x0, int x1, int y0, int y1) {
        int n = 0;
        for (int x = x0; x < x1; ++x)
            for (int y = y0; y < y1; ++y)
                n += shot.pixel(x, y) != background && shot.pixel(x, y) != shot.pixel(560, 57);
        return n;
    };
    EXPECT_NE(shot.pixel(560, 57), background);
    EXPECT_GT(inked(175, 230, 45, 70), 20) << "no file name shown";
    EXPECT_GT(inked(257, 330, 12, 33), 20) << "no version shown";
    EXPECT_EQ(shot.pixel(400, 22), background) << "the version field has no box";

    // Quit reads nothing: not even the log is written.
    press(display, window, "Quit");
    EXPECT_EQ(tarn.wait_exit(), 0);
    EXPECT_EQ(tarn.out(), "");
    EXPECT_EQ(tarn.err(), "");
    EXPECT_FALSE(std::ifstream(dir + "/m.zkc.log").good());
}

// What a set of pressed buttons makes the run do is what the matching
// options do in a batch run: the same lines, messages and files.
void buttons_choose_targets(const virtual_display& display, const std::string&)
{
    struct choice {
        std::vector<std::string> buttons;
        std::vector<std::string> options;
    };
    const choice choices[] = {
        {{"c", "blif"}, {"-blif", "-c"}},
        {{"blif", "no supress wires"}, {"-blif", "-no_suppress_wires"}},
        // alone, the button asks for the VHDL file with the Altera argument
        {{"altera (vhdl)"}, {"-altera"}},
        {{}, {"-no_suppress_wires"}},
    };
    for (const choice& ch : choices) {
        std::string what = ch.options[0] + " " + (ch.options.size() > 1 ? ch.options[1] : "");
        scratch_dir batch;
        batch.write("m.zkc", worked_module_text);
        tarn_output expected = run_tarn_in(batch.path, [&] {
            std::vector<std::string> args{"m.zkc"};
            args.insert(args.end(), ch.options.begin(), ch.options.end());
            return args;
        }());
        ASSERT_EQ(expected.status, 0) << what << expected.err;

        scratch_dir here;
        here.write("m.zkc", worked_module_text);
        display_process tarn(here.path, display.name, tarn_binary, {"m.zkc"});
        std::string window = display.window(panel_title);
        ASSERT_NE(window, "") << what << tarn.err();
        for (const std::string& b : ch.buttons)
            press(display, window, b);
        press(display, window, "Compile && Quit");
        ASSERT_EQ(tarn.wait_exit(), 0) << what << tarn.err();

        EXPECT_EQ(generation_lines(tarn.out()), generation_lines(expected.out)) << what;
        EXPECT_NE(tarn.out().find("compilation finished in "), std::string::npos) << what;
        EXPECT_EQ(tarn.err(), expected.err) << what;
        for (const char* suffix : {".blif", ".c", ".h", ".vhd", ".vhd_tmp", ".zkc.log"})
            EXPECT_EQ(read_file(here.path + "/m" + suffix), read_file(batch.path + "/m" + suffix))
                << what << suffix;
        if (ch.options[0] == "-altera") {
            bool generated = tarn.out().find("generation of ./m.vhd\n") != std::string::npos;
            bool unavailable =
                tarn.err().find("tarn: VHDL generation is not available in this build\n") != std::string::npos;
            EXPECT_TRUE(generated != unavailable) << tarn.out() << tarn.err();
        }
    }
}

void messages_keep_panel_open(const virtual_display& display, const std::string& dir)
{
    display_process tarn(dir, display.name, tarn_binary, {});
    std::string window = display.window(panel_title);
    ASSERT_NE(window, "") << tarn.err();

    press(display, window, "Compile && Quit");
    EXPECT_TRUE(close_dialog(display, window)) << "no message for a missing file";
    EXPECT_EQ(tarn.err(), "FILE NOT SELECTED!\n");
    EXPECT_TRUE(tarn.running());
    EXPECT_EQ(display.window(panel_title, 1), window);

    // A cancelled file selection.
    press(display, window, "Load");
    std::string selector = display.window("file selection");
    ASSERT_NE(selector, "");
    display.key(selector, "Escape");
    EXPECT_TRUE(close_dialog(display, window)) << "no message for a cancelled selection";
    EXPECT_EQ(tarn.err(), "FILE NOT SELECTED!\nFILE NOT FOUND!\n");
    EXPECT_TRUE(tarn.running());

    // A file typed into the selector is the input of the run.
    press(display, window, "Load");
    selector = display.window("file selection");
    ASSERT_NE(selector, "");
    display.run("xdotool type --window " + selector + " '" + dir + "/m.zkc'");
    display.key(selector, "Return");
    EXPECT_TRUE(wait_until(5, [&] { return display.windows("--name '^file selection$'").empty(); }));
    press(display, window, "c");
    press(display, window, "Compile && Quit");
    ASSERT_EQ(tarn.wait_exit(), 0) << tarn.err();
    EXPECT_EQ(generation_lines(tarn.out()),
              (std::vector<std::string>{"generation of " + dir + "/m.log", "generation of " + dir + "/m.c",
                                        "generation of " + dir + "/m.h"}));
    EXPECT_NE(read_file(dir + "/m.c"), "");
}

void name_without_suffix(const virtual_display& display, const std::string& dir)
{
    display_process tarn(dir, display.name, tarn_binary, {"m"});
    std::string window = display.window(panel_title);
    ASSERT_NE(window, "") << tarn.err();
    EXPECT_TRUE(close_dialog(display, window)) << "no message for a name without .zkc";
    EXPECT_EQ(tarn.err(), "ERROR IN LOADING FILE:\nm\n");
    press(display, window, "Compile && Quit");
    ASSERT_EQ(tarn.wait_exit(), 0) << tarn.err();
    EXPECT_EQ(generation_lines(tarn.out()), std::vector<std::string>{"generation of ./m.log"});
    EXPECT_TRUE(std::ifstream(dir + "/m.zkc.log").good());
}

}  // namespace

// One virtual display for the panel's checks, in sequence, each in a
// fresh directory holding m.zkc.
TEST(Panel, OnScreenButtonsAndMessages)
{
    virtual_display display;
    ASSERT_FALSE(display.name.empty()) << "Xvfb did not start";
    for (auto check : {window_and_widgets, buttons_choose_targets, messages_keep_panel_open, name_without_suffix}) {
        scratch_dir scratch;
        scratch.write("m.zkc", worked_module_text);
        check(display, scratch.path);
    }
}

// A server resets when its last client leaves: the panel must reach it
// through one connection, not a probe closed before FLTK connects. Seen
// from a fresh server each time, with no other client; the message of a
// name without ".zkc" comes once the window is up.
TEST(PanelDisplay, OneConnectionToAServerThatResets)
{
    scratch_dir scratch;
    for (int i = 0; i < 6; ++i) {
        virtual_display display(true);
        ASSERT_FALSE(display.name.empty()) << "Xvfb did not start";
        display_process tarn(scratch.path, display.name, tarn_binary, {"m"});
        const std::string expected = "ERROR IN LOADING FILE:\nm\n";
        wait_until(10, [&] { return tarn.err().size() >= expected.size() || !tarn.running(); });
        EXPECT_EQ(tarn.err(), expected) << i;
    }
}

// Without a display, one line and status 1, whatever the panel was given.
TEST(PanelWithoutDisplay, OneLineAndStatusOne)
{
    scratch_dir scratch;
    scratch.write("m.zkc", worked_module_text);
    for (const std::vector<std::string>& args : {std::vector<std::string>{}, {"m.zkc"}, {"-c"}}) {
        tarn_output r = run_tarn_in(scratch.path, args);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err.rfind("tarn: the front panel needs an X display, and DISPLAY is not set", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    }
    // A display that cannot be opened: FLTK is not reached.
    int raw = std::system(("cd '" + scratch.path + "' && DISPLAY=:999 '" TARN_BINARY_DIR
                           "/driver/tarn' m.zkc 2> err.txt > /dev/null").c_str());
    EXPECT_TRUE(WIFEXITED(raw) && WEXITSTATUS(raw) == 1) << raw;
    std::string err = read_file(scratch.path + "/err.txt");
    EXPECT_EQ(err.rfind("tarn: the front panel needs an X display, and display \":999\" cannot be opened", 0), 0u)
        << err;
    EXPECT_FALSE(std::ifstream(scratch.path + "/m.zkc.log").good());
}

// The flags come from the check buttons, each to its own flag; reading
// them leaves every button on. No display is needed to build the panel.
TEST(PanelFlags, EachButtonSetsItsFlag)
{
    wintarn_interface panel;
    panel.build();
    struct wire {
        Fl_Check_Button* wintarn_interface::*button;
        int tarn_flags::*flag;
    };
    const wire wires[] = {
        {&wintarn_interface::no_suppress, &tarn_flags::noSuppressWiresFlag},
        {&wintarn_interface::simulator, &tarn_flags::valuedSimulFlag},
        {&wintarn_interface::doc, &tarn_flags::docFlag},
        {&wintarn_interface::lustre, &tarn_flags::lustreFlag},
        {&wintarn_interface::esterel, &tarn_flags::esterelFlag},
        {&wintarn_interface::nusmv, &tarn_flags::nusmvFlag},
        {&wintarn_interface::blif, &tarn_flags::blifFlag},
        {&wintarn_interface::c, &tarn_flags::cFlag},
        {&wintarn_interface::vhdl, &tarn_flags::vhdlFlag},
        {&wintarn_interface::altera, &tarn_flags::alteraFlag},  // the VHDL flag stays off
        {&wintarn_interface::csharp, &tarn_flags::csharpFlag},
        {&wintarn_interface::encapsulated, &tarn_flags::qsrFlag},
    };
    std::vector<int tarn_flags::*> all{&tarn_flags::systemcFlag, &tarn_flags::templateFlag};  // no button
    for (const wire& w : wires)
        all.push_back(w.flag);
    for (const wire& w : wires) {
        for (const wire& other : wires)
            (panel.*other.button)->value(0);
        (panel.*w.button)->value(1);
        tarn_flags flags = wintarn_read_flags(panel);
        for (int tarn_flags::*f : all)
            EXPECT_EQ(flags.*f, f == w.flag ? 1 : 0) << (panel.*w.button)->label();
        for (const wire& other : wires)
            EXPECT_EQ((panel.*other.button)->value(), 1);
    }
}
