#ifndef TARN_SIM_MOSK_RUN_H
#define TARN_SIM_MOSK_RUN_H

// The command mosk, as a library so that the tests can drive its parts.

#include "sim/reaction_engine.h"
#include "sim/reaction_line.h"

#include <istream>
#include <ostream>
#include <string>

struct mosk_options {
    std::string module_file;
    std::string reactions_file;  // empty: standard input
    std::string vcd_file;        // empty: no dump
    std::string host, port;      // empty: no data server
};

// Reads the command line. False with a message in `error` when it is not
// one mosk understands.
bool mosk_read_options(int argc, char** argv, mosk_options& options, std::string& error);

// The usage text of "mosk -h".
std::string mosk_usage();

// The outputs present after a reaction, as one line without its end:
// names separated by a blank, a valued one with its value, "total(30)",
// "?" for a value not known.
std::string mosk_output_line(const reaction_engine& engine);

// Runs the reactions of `in` (named `source` in messages) on the engine,
// one output line each on `out`, and a dump on `vcd` when it is not null.
// A line that is no reaction stops the run: one message on `err` naming
// the line, and the result is 1; at the end of the input it is 0.
int mosk_simulate(reaction_engine& engine, std::istream& in, const std::string& source, std::ostream& out,
                  std::ostream& err, std::ostream* vcd, bool flush_each_line);

// The whole command; returns the exit status.
int mosk_main(int argc, char** argv);

#endif
