#ifndef TARN_ZKC_ZKC_INPUT_H
#define TARN_ZKC_ZKC_INPUT_H

// What the readers of compiled modules share around the scanner: which
// paths count as files, and a log that survives an exit from anywhere.

#include <ostream>
#include <string>

// False for a path that names no file the scanner can read from start to
// end (a directory, for one): such a path is a missing file.
bool zkc_is_readable_file(const std::string& path);

// While one lives, `log` is flushed if the process ends by std::exit (a
// fatal error deep in the reader or later), so that the log keeps what
// was written before the error.
class zkc_log_keeper {
public:
    explicit zkc_log_keeper(std::ostream& log);
    ~zkc_log_keeper();
    zkc_log_keeper(const zkc_log_keeper&) = delete;
    zkc_log_keeper& operator=(const zkc_log_keeper&) = delete;

private:
    std::ostream* previous;
};

#endif
