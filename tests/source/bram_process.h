// Runs of the built bram, beside those of tarn.
#ifndef TARN_TESTS_SOURCE_BRAM_PROCESS_H
#define TARN_TESTS_SOURCE_BRAM_PROCESS_H

#include "tests/tarn_process.h"

#include <string>
#include <vector>

// The built bram run in `dir` without a display, each argument one shell
// word.
inline tarn_output run_bram_in(const std::string& dir, const std::vector<std::string>& args)
{
    std::string command = "cd '" + dir + "' && env -u DISPLAY '" TARN_BINARY_DIR "/driver/bram'";
    for (const std::string& a : args)
        command += " '" + a + "'";
    command += " >'" + dir + "/.bout' 2>'" + dir + "/.berr'";
    int raw = std::system(command.c_str());
    tarn_output r{WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw), read_file(dir + "/.bout"),
                  read_file(dir + "/.berr")};
    std::remove((dir + "/.bout").c_str());
    std::remove((dir + "/.berr").c_str());
    return r;
}

#endif
