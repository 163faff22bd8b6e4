#include "zkc/zkc_input.h"

#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include "support/Stringpp.h"

#include "support/async_file.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sys/stat.h>

bool zkc_is_readable_file(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

namespace {

std::ostream* kept_log = nullptr;

void flush_kept_log()
{
    if (kept_log != nullptr)
        kept_log->flush();
}

} // namespace

zkc_log_keeper::zkc_log_keeper(std::ostream& log) : previous(kept_log)
{
    static const bool registered = std::atexit(flush_kept_log) == 0;
    (void)registered;
    kept_log = &log;
}

zkc_log_keeper::~zkc_log_keeper() { kept_log = previous; }

tarn_paths tarn_split_input_name(std::string name)
{
    tarn_paths paths;
    std::string::size_type p = name.find(".zkc");
    if (p != std::string::npos)
        name = my_before(name, static_cast<int>(p));
    if (name.find('/') != std::string::npos) {
        paths.base = last_record(name, '/', paths.dir);
    } else {
        paths.dir = ".";
        paths.base = name;
    }
    return paths;
}

Module* parse(const std::string& file, std::string& suffix, bool* parsed_ok)
{
    // The parser registers itself as the current one and stays alive, as
    // the module it makes does; so does the scanner.
    class_zkc_parser* parser = new class_zkc_parser();
    std::string log_name = file + ".log";
    std::ifstream input(file);
    async_ofstream log(log_name);
    Module* result = nullptr;
    bool ok = false;
    if (input.good() && zkc_is_readable_file(file)) {
        zkc_log_keeper keeper(log);
        // Everything the scanner echoes lands in the log.
        parser->scanner = new zkcFlexLexer(&input, &log);
        if (parser->parse(log, 1, suffix) != 0) {
            std::cerr << "ERROR about loading file : " << file << std::endl;
        } else {
            result = parser->module;
            ok = true;
        }
        input.close();
    } else {
        std::cerr << "FILE NOT FOUND !" << std::endl;
    }
    log.close();
    if (parsed_ok != nullptr)
        *parsed_ok = ok;
    return result;
}
