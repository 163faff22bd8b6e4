#include "driver/wintarn_interface.h"

#include "context/messages.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Output.H>
#include <FL/forms.H>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <unistd.h>

namespace {

Fl_Check_Button* check_button(int x, int y, int w, int h, const char* label)
{
    Fl_Check_Button* b = new Fl_Check_Button(x, y, w, h, label);
    b->box(FL_UP_BOX);
    b->down_box(FL_DOWN_BOX);
    return b;
}

Fl_Button* button(int x, int y, int w, int h, const char* label)
{
    Fl_Button* b = new Fl_Button(x, y, w, h, label);
    b->labelfont(FL_HELVETICA_BOLD);
    return b;
}

void heading(int x, int y, int w, int h, const char* label)
{
    Fl_Box* b = new Fl_Box(x, y, w, h, label);
    b->labelfont(FL_HELVETICA_BOLD);
}

// The panel's messages go to the error stream as well as to the dialog, so
// that a session driven from a script keeps them. Empty lines are only
// written in the dialog.
void panel_message(const char* line1, const char* line2, const char* line3)
{
    for (const char* line : {line1, line2, line3})
        if (*line != '\0')
            std::cerr << line << '\n';
    std::cerr << std::flush;
    fl_show_message(line1, line2, line3);
}

// FLTK's own fatal errors (a display lost on the way, a window that cannot
// be made) end the process with one line and status 1, never an abort.
void panel_fatal(const char* format, ...)
{
    std::fflush(stdout);
    std::fputs("tarn: ", stderr);
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
    std::exit(1);
}

}  // namespace

void wintarn_interface::build()
{
    window = new Fl_Double_Window(755, 390, "wintarn");
    window->user_data(this);

    // The frames first, so that every other widget is drawn over them.
    new Fl_Box(FL_THIN_DOWN_FRAME, 15, 85, 480, 245, nullptr);
    new Fl_Box(FL_THIN_DOWN_FRAME, 515, 85, 189, 80, nullptr);
    heading(25, 90, 455, 20, "Target");
    heading(525, 90, 170, 25, "Others parameters");

    blif = check_button(25, 290, 220, 30, "blif");
    c = check_button(25, 150, 220, 30, "c");
    vhdl = check_button(25, 220, 220, 30, "vhdl");
    altera = check_button(25, 255, 220, 30, "altera (vhdl)");
    esterel = check_button(260, 115, 220, 30, "esterel");
    lustre = check_button(260, 150, 220, 30, "lustre");
    doc = check_button(260, 220, 220, 30, "documentation");
    load = button(15, 40, 145, 35, "Load");
    compile = button(175, 343, 130, 35, "Compile && Quit");
    file_name = new Fl_Output(170, 40, 400, 35);
    file_name->color(50);
    version = new Fl_Output(255, 10, 160, 25, "tarn version");
    version->box(FL_NO_BOX);
    version->color(50);
    version->textfont(FL_HELVETICA_BOLD);
    quit = button(550, 343, 130, 35, "Quit");
    nusmv = check_button(260, 185, 220, 30, "nusmv");
    csharp = check_button(25, 185, 220, 30, "CSharp");
    no_suppress = check_button(525, 115, 170, 30, "no supress wires");
    encapsulated = check_button(260, 255, 220, 30, "encapsulated qsr");
    simulator = check_button(25, 115, 221, 30, "mosk simulator");

    window->end();
}

void load_file(const char* path, wintarn_interface panel)
{
    panel.file_name->value(path);
    if (std::strstr(path, ".zkc") == nullptr)
        panel_message("ERROR IN LOADING FILE:", path, "");
}

tarn_flags wintarn_read_flags(const wintarn_interface& panel)
{
    // set() reports a change of value: 0 means the button was on already.
    auto on = [](Fl_Check_Button* b) { return b->set() == 0 ? 1 : 0; };
    tarn_flags flags;
    flags.noSuppressWiresFlag = on(panel.no_suppress);
    flags.valuedSimulFlag = on(panel.simulator);
    flags.docFlag = on(panel.doc);
    flags.lustreFlag = on(panel.lustre);
    flags.esterelFlag = on(panel.esterel);
    flags.nusmvFlag = on(panel.nusmv);
    flags.blifFlag = on(panel.blif);
    flags.cFlag = on(panel.c);
    flags.vhdlFlag = on(panel.vhdl);
    flags.alteraFlag = on(panel.altera);
    flags.csharpFlag = on(panel.csharp);
    flags.qsrFlag = on(panel.encapsulated);
    return flags;
}

wintarn_choice wintarn_event_loop(wintarn_interface& panel, std::string& input_name, tarn_flags& flags)
{
    for (;;) {
        Fl::check();
        Fl_Widget* w = Fl::readqueue();
        if (w == panel.load) {
            const char* path = fl_show_file_selector("file selection", "", "*.zkc", "");
            if (path == nullptr) {
                panel_message("FILE NOT FOUND!", "", "");
            } else {
                // The selector's answer lives in a buffer of its own that the
                // next selection overwrites.
                input_name = path;
                load_file(input_name.c_str(), panel);
            }
        } else if (w == panel.compile) {
            if (input_name.empty()) {
                panel_message("FILE NOT SELECTED!", "", "");
            } else {
                flags = wintarn_read_flags(panel);
                return wintarn_choice::compile;
            }
        } else if (w == panel.quit) {
            return wintarn_choice::quit;
        }
        // The window manager's close button hides the window: nothing is
        // left to press, so it is taken as "Quit".
        if (!panel.window->shown())
            return wintarn_choice::quit;
        usleep(1000);
    }
}

int tarn_front_panel(int argc, char** argv, const std::string& version, std::string& input_name,
                     tarn_flags& flags)
{
    // FLTK ends the process when it cannot open the display; ask first.
    if (!tarn_display_available()) {
        const char* display = std::getenv("DISPLAY");
        std::cerr << "tarn: the front panel needs an X display, and ";
        if (display == nullptr || *display == '\0')
            std::cerr << "DISPLAY is not set";
        else
            std::cerr << "display \"" << display << "\" cannot be opened";
        std::cerr << " (a batch run is: tarn <file>.zkc <option>...)" << std::endl;
        return 1;
    }
    Fl::fatal = panel_fatal;

    // Left alive, as everything else is, until the process ends.
    wintarn_interface* panel = new wintarn_interface;
    panel->build();
    input_name.clear();
    fl_initialize(&argc, argv, "tarn", nullptr, 0);
    panel->version->value(version.c_str());
    panel->window->show(argc, argv);
    if (argc == 2) {
        input_name = argv[1];
        load_file(argv[1], *panel);
    }

    if (wintarn_event_loop(*panel, input_name, flags) == wintarn_choice::quit)
        return 0;
    panel->window->hide();
    Fl::check();
    return -1;
}
