#ifndef TARN_TESTS_ZKC_READER_SUPPORT_H
#define TARN_TESTS_ZKC_READER_SUPPORT_H

#include "tests/tarn_process.h"
#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <cstdio>
#include <sstream>
#include <string>

// A text read in this process, as the driver reads a file: status 0 and
// the module on success. The parser stays alive for its tables. At level 1
// the parser traces into the log, which comes back with the scanner's echo.
struct read_result {
    int status = -1;
    Module* module = nullptr;
    class_zkc_parser* parser = nullptr;
    std::string errors;  // the error stream during the read
    std::string log;
};

inline read_result read_zkc(const std::string& text, const std::string& suffix = "", int level = 0)
{
    read_result r;
    std::string log_name = temp_path("read_zkc.log");
    std::istringstream in(text);
    std::fstream log(log_name, std::ios::out | std::ios::trunc);
    r.parser = new class_zkc_parser();
    zkcFlexLexer lexer(&in, &log);
    r.parser->scanner = &lexer;
    std::string s = suffix;
    testing::internal::CaptureStderr();
    r.status = r.parser->parse(log, level, s);
    r.errors = testing::internal::GetCapturedStderr();
    r.parser->scanner = nullptr;
    if (r.status == 0)
        r.module = r.parser->module;
    log.close();
    r.log = read_file(log_name);
    std::remove(log_name.c_str());
    return r;
}

#endif
