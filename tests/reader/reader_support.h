#ifndef TARN_TESTS_READER_SUPPORT_H
#define TARN_TESTS_READER_SUPPORT_H

#include <string>

class Module;
class class_zkc_parser;

// A text read in this process, as the driver reads a file: status 0 and
// the module on success. The parser stays alive for its tables.
struct read_result {
    int status = -1;
    Module* module = nullptr;
    class_zkc_parser* parser = nullptr;
    std::string errors;  // the error stream during the read
};
read_result read_zkc(const std::string& text, const std::string& suffix = "");

// The built tarn on a file holding `text`, with `options` behind the name.
struct run_result {
    int status = -1;
    std::string errors;
};
run_result run_tarn(const std::string& text, const std::string& options = "-no_suppress_wires");

#endif
