#include "context/messages.h"

#include <FL/Fl.H>
#include <FL/fl_ask.H>
#include <FL/x.H>
#include <X11/Xlib.h>

#include <cstdlib>

bool tarn_display_available()
{
    static int known = -1;
    if (known < 0) {
        const char* name = std::getenv("DISPLAY");
        known = 0;
        if (name != nullptr && *name != '\0') {
            // Ask Xlib directly: FLTK ends the process when it cannot open
            // the display, which a batch run must never do.
            // The connection is handed to FLTK rather than closed: a server
            // whose last client leaves resets, and a second connection
            // made during the reset would fail.
            Display* d = XOpenDisplay(name);
            if (d != nullptr) {
                fl_open_display(d);
                known = 1;
            }
        }
    }
    return known == 1;
}

void fl_show_Smessages(const std::string& text)
{
    if (tarn_display_available())
        fl_message("%s", text.c_str());
}

void fl_show_Salert(const std::string& text)
{
    if (tarn_display_available())
        fl_alert("%s", text.c_str());
}
