#include "zkc/zkc_input.h"

#include <cstdlib>
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
