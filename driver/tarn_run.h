#ifndef TARN_DRIVER_TARN_RUN_H
#define TARN_DRIVER_TARN_RUN_H

// The run of tarn from a chosen input name and set of flags: file names,
// reading, finalisation and the generators in their fixed order.

#include <fstream>
#include <functional>
#include <ostream>
#include <string>

#include "zkc/zkc_input.h"

class Module;

// main's own flags, each at its own name. templateFlag is never set and
// reaches four generators as 0.
struct tarn_flags {
    int noSuppressWiresFlag = 0;
    int valuedSimulFlag = 0;
    int docFlag = 0;
    int lustreFlag = 0;
    int esterelFlag = 0;
    int nusmvFlag = 0;
    int blifFlag = 0;
    int cFlag = 0;
    int vhdlFlag = 0;
    int alteraFlag = 0;
    int systemcFlag = 0;
    int csharpFlag = 0;
    int qsrFlag = 0;
    int templateFlag = 0;
};

// The version, joined from its two parts at start-up: "3.4.3-4".
std::string tarn_version();

// The text of "tarn -h", byte for byte.
std::string tarn_help_banner(const std::string& version);

// Sets a flag for each of argv[2..argc-1]. Stops at the first argument that
// is none of the thirteen options, returns false and leaves it in `unknown`.
bool tarn_read_options(int argc, char** argv, tarn_flags& flags, std::string& unknown);

// tarn_paths and tarn_split_input_name, the naming of the input and of
// every output, are the reader's as well.

// parse(file, suffix, parsed_ok), the reading of one file, is the
// reader's own (zkc/zkc_input.h).

// The VHDL output goes through a temporary file, path + "_tmp", which is
// left on disk: `generate` writes it with "vhdl_libs.inc" of the working
// directory as second stream (passed even when it could not be opened),
// then each of its lines is copied to `vhdl_path` with every "__" made
// "_X_". On success "generation of <vhdl_path>" goes to `report` and the
// result is true; if the temporary file cannot be read back, nothing is
// written or reported. When writing fails (a full disk) the previous
// VHDL file is kept, the error stream says so and `write_failed` is set.
using tarn_vhdl_generator = std::function<void(std::ostream& tmp, std::ifstream& libs)>;
bool tarn_vhdl_post_pass(const std::string& vhdl_path, const tarn_vhdl_generator& generate,
                         std::ostream& report, bool* write_failed = nullptr);

// Every generator of the table in its order, all writing into `sink`, with
// an empty stream for "vhdl_libs.inc": the fuzz target's way through every
// target without touching the disk.
void tarn_generate_every_target(Module* module, const tarn_flags& flags, std::ostream& sink);

// From the stopwatch start to the closing line. Returns the exit status.
int tarn_run(const std::string& input_name, const tarn_flags& flags);

#endif
