#ifndef TARN_DRIVER_TARN_OUTPUT_H
#define TARN_DRIVER_TARN_OUTPUT_H

// One output of a run, written beside its place and moved there only when
// it is complete, so that a failed or interrupted run never leaves a cut
// file where a good one was.

#include "support/async_file.h"

#include <ostream>
#include <string>

class tarn_output_file {
public:
    // Opens the companion file path + ".part" for a plain file or a new
    // one; what is no plain file of one name (a link, a pipe, a device, a
    // folder) is opened in place, and so is a file whose folder takes no
    // companion. An output that cannot be opened (an existing file without
    // write permission, a folder) gives a stream that fails every write,
    // as an unopened file does; nothing is reported.
    explicit tarn_output_file(const std::string& path);
    ~tarn_output_file();
    tarn_output_file(const tarn_output_file&) = delete;
    tarn_output_file& operator=(const tarn_output_file&) = delete;

    std::ostream& stream() { return out; }

    // Closes the companion and moves it onto the path, with the permissions
    // of the file it replaces. When the writing failed (a full disk), says
    // so on `errors` with the path, removes the companion, keeps whatever
    // was at the path and returns false. An output opened in place, or not
    // opened at all, is closed and returns true.
    bool commit(std::ostream& errors);

private:
    std::string path, part;
    async_ofstream out;
    bool opened = false;  // through the companion
    int mode = -1;        // of the file replaced, when there was one
};

#endif
