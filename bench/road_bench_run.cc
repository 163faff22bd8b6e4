#include "bench/road_bench_run.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>

namespace {

double wall_now()
{
    using clock = std::chrono::steady_clock;
    return std::chrono::duration<double>(clock::now().time_since_epoch()).count();
}

// Opens `path` (or /dev/null for "") onto descriptor `target` in a child.
bool redirect(const std::string& path, int flags, int target)
{
    int fd = open(path.empty() ? "/dev/null" : path.c_str(), flags, 0644);
    if (fd < 0)
        return false;
    if (fd != target) {
        if (dup2(fd, target) < 0)
            return false;
        close(fd);
    }
    return true;
}

// Forks `body` (which must end with _exit) and waits for it, at most
// `limit` seconds. SIGCHLD stays blocked in the parent while it waits, so
// that sigtimedwait wakes the moment the child ends: a polling sleep would
// add its period to every small run. The child gets the mask back before
// it runs anything.
child_figures spawn(const std::function<void()>& body, double limit)
{
    child_figures f;
    sigset_t chld, saved;
    sigemptyset(&chld);
    sigaddset(&chld, SIGCHLD);
    sigprocmask(SIG_BLOCK, &chld, &saved);

    double start = wall_now();
    pid_t pid = fork();
    if (pid < 0) {
        sigprocmask(SIG_SETMASK, &saved, nullptr);
        return f;
    }
    if (pid == 0) {
        sigprocmask(SIG_SETMASK, &saved, nullptr);
        body();
        _exit(127);
    }
    f.started = true;

    int status = 0;
    rusage usage{};
    double deadline = start + limit;
    for (;;) {
        pid_t done = wait4(pid, &status, WNOHANG, &usage);
        if (done == pid)
            break;
        if (done < 0 && errno != EINTR) {
            f.started = false;
            sigprocmask(SIG_SETMASK, &saved, nullptr);
            return f;
        }
        double left = deadline - wall_now();
        if (left <= 0) {
            kill(pid, SIGKILL);
            while (wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) {
            }
            f.timed_out = true;
            break;
        }
        timespec wait_for;
        wait_for.tv_sec = static_cast<time_t>(left);
        wait_for.tv_nsec = static_cast<long>((left - static_cast<double>(wait_for.tv_sec)) * 1e9);
        sigtimedwait(&chld, nullptr, &wait_for);
    }
    f.seconds = wall_now() - start;
    sigprocmask(SIG_SETMASK, &saved, nullptr);

    f.cpu_seconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                    static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    f.peak_kib = usage.ru_maxrss;
    if (WIFEXITED(status))
        f.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        f.signal = WTERMSIG(status);
    return f;
}

bool all_digits(const std::string& text)
{
    if (text.empty())
        return false;
    for (char c : text)
        if (c < '0' || c > '9')
            return false;
    return true;
}

} // namespace

child_figures road_bench_run(const std::vector<std::string>& argv, const std::string& out, const std::string& err,
                             double limit)
{
    if (argv.empty())
        return child_figures{};
    // The argument vector is built before the fork: the child only execs.
    std::vector<char*> args;
    for (const std::string& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    return spawn(
        [&]() {
            unsetenv("DISPLAY");
            if (!redirect("", O_RDONLY, 0) || !redirect(out, O_WRONLY | O_CREAT | O_TRUNC, 1) ||
                !redirect(err, O_WRONLY | O_CREAT | O_TRUNC, 2))
                _exit(126);
            execv(args[0], args.data());
            _exit(127);
        },
        limit);
}

child_figures road_bench_write_floor(const std::string& source, const std::string& target, long bytes,
                                     double limit)
{
    return spawn(
        [&]() {
            int in = open(source.c_str(), O_RDONLY);
            int out = open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (in < 0 || out < 0)
                _exit(1);
            static char block[128 * 1024];
            long left = bytes;
            bool read_any = false;
            while (left > 0) {
                ssize_t got = read(in, block, sizeof block);
                if (got < 0) {
                    if (errno == EINTR)
                        continue;
                    _exit(1);
                }
                if (got == 0) {
                    // End of the source: start it again, unless a whole
                    // pass gave nothing.
                    if (!read_any || lseek(in, 0, SEEK_SET) < 0)
                        _exit(1);
                    read_any = false;
                    continue;
                }
                read_any = true;
                long chunk = got < left ? static_cast<long>(got) : left;
                for (long done = 0; done < chunk;) {
                    ssize_t put = write(out, block + done, static_cast<std::size_t>(chunk - done));
                    if (put < 0 && errno == EINTR)
                        continue;
                    if (put <= 0)
                        _exit(1);
                    done += put;
                }
                left -= chunk;
            }
            _exit(close(out) == 0 ? 0 : 1);
        },
        limit);
}

bool road_bench_sizes(const std::string& text, std::vector<long>& sizes)
{
    std::vector<long> read;
    std::size_t from = 0;
    for (;;) {
        std::size_t comma = text.find(',', from);
        std::string item = text.substr(from, comma == std::string::npos ? std::string::npos : comma - from);
        if (!all_digits(item) || item.size() > 12)
            return false;
        long n = std::strtol(item.c_str(), nullptr, 10);
        if (n <= 0)
            return false;
        read.push_back(n);
        if (comma == std::string::npos)
            break;
        from = comma + 1;
    }
    sizes = read;
    return true;
}

bool road_bench_seconds(const std::string& text, double& seconds)
{
    if (text.empty())
        return false;
    char* end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    if (*end != '\0' || !std::isfinite(value) || value <= 0)
        return false;
    seconds = value;
    return true;
}

bool road_bench_seed(const std::string& text, std::string& seed)
{
    // zkcgen reads it as a 64-bit unsigned number.
    if (!all_digits(text) || text.size() > 19)
        return false;
    seed = text;
    return true;
}

double road_bench_exponent(long n1, double t1, long n2, double t2)
{
    return std::log(t2 / t1) / std::log(static_cast<double>(n2) / static_cast<double>(n1));
}

std::string road_bench_describe(const child_figures& f)
{
    if (!f.started)
        return "not started";
    if (f.timed_out)
        return "timeout";
    if (f.signal != 0)
        return "signal " + std::to_string(f.signal);
    return "status " + std::to_string(f.status);
}
