#include "tests/reader/reader_support.h"
#include "tests/tarn_process.h"

#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

read_result read_zkc(const std::string& text, const std::string& suffix)
{
    read_result r;
    std::istringstream in(text);
    std::fstream log("/dev/null", std::ios::out);
    r.parser = new class_zkc_parser();
    zkcFlexLexer lexer(&in, &log);
    r.parser->scanner = &lexer;
    std::string s = suffix;
    testing::internal::CaptureStderr();
    r.status = r.parser->parse(log, 0, s);
    r.errors = testing::internal::GetCapturedStderr();
    r.parser->scanner = nullptr;
    if (r.status == 0)
        r.module = r.parser->module;
    return r;
}

run_result run_tarn(const std::string& text, const std::string& options)
{
    scratch_dir dir;
    tarn_output r = run_tarn_in(dir.path, {dir.write("m.zkc", text), options});
    return {r.status, r.err};
}
