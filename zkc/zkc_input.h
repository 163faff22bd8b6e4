#ifndef TARN_ZKC_ZKC_INPUT_H
#define TARN_ZKC_ZKC_INPUT_H

// What the readers of compiled modules share around the scanner: which
// paths count as files, a log that survives an exit from anywhere, the
// names derived from an input name, and the reading of one file.

#include <ostream>
#include <string>

class Module;

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

// Directory and base name of an input: cut at the first ".zkc" (with all
// that follows), then split at the last "/"; "." when there is none.
struct tarn_paths {
    std::string dir;
    std::string base;

    // dir, separator, base, suffix: path("/", ".c"), path("/mosk_", ".cc").
    std::string path(const char* separator, const char* suffix) const
    {
        return dir + separator + base + suffix;
    }
};
tarn_paths tarn_split_input_name(std::string name);

// Reads `file` with the scanner and parser; the log is file + ".log".
// Returns the module read, or null. `parsed_ok` tells a successful parse
// from a missing file or a syntax error, whose messages are written here.
Module* parse(const std::string& file, std::string& suffix, bool* parsed_ok = nullptr);

#endif
