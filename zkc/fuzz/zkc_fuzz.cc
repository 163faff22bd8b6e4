// Feeds arbitrary bytes to the .zkc scanner and parser. A parse may only
// succeed or report; it must not crash or hang.

#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

// Semantic values are never freed by design (the process ends first), so
// leak reports say nothing here.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static std::fstream log("/dev/null", std::ios::out);
    static bool quiet = [] {
        std::cerr.setstate(std::ios::failbit);  // syntax errors are expected
        return true;
    }();
    (void)quiet;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    class_zkc_parser parser;
    zkcFlexLexer lexer(&in, &log);
    parser.scanner = &lexer;
    std::string suffix;
    parser.parse(log, 1, suffix);
    return 0;
}
