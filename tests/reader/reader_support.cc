#include "tests/reader/reader_support.h"
#include "tests/worked_module.h"

#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

const char* const worked_module = worked_module_text;

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
    static int serial = 0;
    std::string base = testing::TempDir() + "reader_run_" + std::to_string(::getpid()) + "_" + std::to_string(serial++);
    {
        std::ofstream file(base + ".zkc");
        file << text;
    }
    std::string errors_name = base + ".err";
    std::string command = "env -u DISPLAY '" TARN_BINARY_DIR "/driver/tarn' '" + base + ".zkc' " + options +
                          " > /dev/null 2> '" + errors_name + "'";
    int raw = std::system(command.c_str());
    run_result r;
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    std::ifstream back(errors_name);
    std::stringstream content;
    content << back.rdbuf();
    r.errors = content.str();
    for (const char* suffix : {".zkc", ".err", ".zkc.log"})
        std::remove((base + suffix).c_str());
    return r;
}
