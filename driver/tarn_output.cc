#include "driver/tarn_output.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Companions being written, removed by the signal handler. Few outputs are
// open at once (two for a target); the table is fixed so that the handler
// touches no allocator.
constexpr int max_parts = 8;
char parts[max_parts][4096];
volatile std::sig_atomic_t used[max_parts];

void remove_parts()
{
    for (int i = 0; i < max_parts; ++i)
        if (used[i]) {
            unlink(parts[i]);
            used[i] = 0;
        }
}

void remove_parts_and_die(int sig)
{
    remove_parts();
    std::signal(sig, SIG_DFL);
    raise(sig);
}

void install_handlers()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    for (int sig : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        std::signal(sig, remove_parts_and_die);
    // An error that ends the run in the middle of a target exits without
    // unwinding: its companions go too, and the previous outputs stay.
    std::atexit(remove_parts);
}

int enter_part(const std::string& name)
{
    if (name.size() >= sizeof parts[0])
        return -1;
    for (int i = 0; i < max_parts; ++i)
        if (!used[i]) {
            std::memcpy(parts[i], name.c_str(), name.size() + 1);
            used[i] = 1;
            return i;
        }
    return -1;
}

void leave_part(const std::string& name)
{
    for (int i = 0; i < max_parts; ++i)
        if (used[i] && name == parts[i])
            used[i] = 0;
}

} // namespace

tarn_output_file::tarn_output_file(const std::string& p) : path(p), part(p + ".part")
{
    struct stat st;
    bool present = lstat(path.c_str(), &st) == 0;
    // Only a plain file known by this one name is replaced by its
    // companion. Anything else (a symbolic link, a pipe, a device, a
    // folder, a file with other names) is opened where it stands and
    // written through, or not opened at all, like any output.
    if (present && (!S_ISREG(st.st_mode) || st.st_nlink > 1)) {
        out.open(path);
        return;
    }
    // An existing output that may not be written is one that cannot be
    // opened: the rename would otherwise replace it.
    if (present && access(path.c_str(), W_OK) != 0)
        return;
    install_handlers();
    enter_part(part);
    out.open(part);
    opened = out.is_open();
    if (opened) {
        // The file keeps its permissions, as when it is truncated.
        if (present)
            mode = static_cast<int>(st.st_mode & 07777);
        return;
    }
    // A folder that takes no new file may still let its files be written.
    leave_part(part);
    out.clear();
    out.open(path);
}

tarn_output_file::~tarn_output_file()
{
    if (opened) {
        out.close();
        std::remove(part.c_str());
        leave_part(part);
    }
}

bool tarn_output_file::commit(std::ostream& errors)
{
    if (!opened) {
        out.close();
        return true;
    }
    opened = false;
    out.flush();
    bool written = out.good();
    int cause = errno;
    // The close writes what is still buffered: a failure may show only now.
    out.close();
    if (written && out.fail()) {
        written = false;
        cause = errno;
    }
    if (written && mode >= 0)
        chmod(part.c_str(), static_cast<mode_t>(mode));
    if (written && std::rename(part.c_str(), path.c_str()) == 0) {
        leave_part(part);
        return true;
    }
    if (written)
        cause = errno;
    errors << "tarn: cannot write " << path << ": " << std::strerror(cause != 0 ? cause : EIO)
           << "; the previous file is kept" << std::endl;
    std::remove(part.c_str());
    leave_part(part);
    return false;
}
