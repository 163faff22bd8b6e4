#ifndef TARN_DRIVER_WINTARN_INTERFACE_H
#define TARN_DRIVER_WINTARN_INTERFACE_H

// The front panel of tarn: a small FLTK form in which the input file and
// the targets are chosen instead of on the command line. It is polled by
// tarn_front_panel; no widget has a callback of its own, so every event
// arrives in FLTK's read queue.

#include "driver/tarn_run.h"

#include <string>

class Fl_Double_Window;
class Fl_Check_Button;
class Fl_Button;
class Fl_Output;

// The panel's widget pointers, in this order. It is copied by value where a
// helper only needs to reach the widgets.
struct wintarn_interface {
    Fl_Double_Window* window = nullptr;
    Fl_Check_Button* blif = nullptr;
    Fl_Check_Button* c = nullptr;
    Fl_Check_Button* vhdl = nullptr;
    Fl_Check_Button* altera = nullptr;
    Fl_Check_Button* esterel = nullptr;
    Fl_Check_Button* lustre = nullptr;
    Fl_Check_Button* doc = nullptr;
    Fl_Button* load = nullptr;
    Fl_Button* compile = nullptr;
    Fl_Output* file_name = nullptr;
    Fl_Output* version = nullptr;
    Fl_Button* quit = nullptr;
    Fl_Check_Button* nusmv = nullptr;
    Fl_Check_Button* csharp = nullptr;
    Fl_Check_Button* no_suppress = nullptr;
    Fl_Check_Button* encapsulated = nullptr;
    Fl_Check_Button* simulator = nullptr;

    // Builds the window and its widgets; nothing is shown, so no display is
    // needed yet.
    void build();
};

// Writes `path` into the file name field. A path without ".zkc" is
// reported as "ERROR IN LOADING FILE:" but the caller keeps it all the same;
// the file itself is not opened here.
void load_file(const char* path, wintarn_interface panel);

// main's flags from the check buttons. Each button is read through
// Fl_Button::set(), which answers 0 when the button was already on; as a
// side effect every check button is on afterwards. The "altera (vhdl)"
// button sets alteraFlag alone.
tarn_flags wintarn_read_flags(const wintarn_interface& panel);

enum class wintarn_choice { quit, compile };

// The polled event loop: Fl::check, Fl::readqueue, a pause of one
// millisecond, until "Quit" or "Compile && Quit" with a file chosen. On
// compile, `input_name` is the file and `flags` come from the buttons.
// A panel closed by the window manager counts as "Quit".
wintarn_choice wintarn_event_loop(wintarn_interface& panel, std::string& input_name, tarn_flags& flags);

// The front-panel road of main: needs an X display (one line on the error
// stream and status 1 without one). Builds and shows the panel, loads the
// file of a lone argument, and runs the loop. Returns -1 when the run is to
// go on with `input_name` and `flags` (the panel is hidden by then), or the
// exit status otherwise.
int tarn_front_panel(int argc, char** argv, const std::string& version, std::string& input_name,
                     tarn_flags& flags);

#endif
