#ifndef TARN_CONTEXT_MESSAGES_H
#define TARN_CONTEXT_MESSAGES_H

#include <string>

// Modal message dialogs. A dialog is opened only when an X display can be
// opened; callers make their own error-stream writes, so a run without a
// display loses no text.
void fl_show_Smessages(const std::string& text);
void fl_show_Salert(const std::string& text);

// True when an X display can be opened (checked once per process).
bool tarn_display_available();

#endif
