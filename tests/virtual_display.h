// A private X server for the tests that show windows: an Xvfb on the first
// free display, the X tools run on it, and bounded waits.
#ifndef TARN_TESTS_VIRTUAL_DISPLAY_H
#define TARN_TESTS_VIRTUAL_DISPLAY_H

#include "tests/tarn_process.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using clock_type = std::chrono::steady_clock;

// Polls `done` every 50 ms for at most `seconds`.
inline bool wait_until(double seconds, const std::function<bool()>& done)
{
    auto end = clock_type::now() + std::chrono::milliseconds(static_cast<int>(seconds * 1000));
    for (;;) {
        if (done())
            return true;
        if (clock_type::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

// An Xvfb of our own on the first free display, which it picks and tells
// us through -displayfd; stopped at the end of the scope. By default it
// does not reset when its last client leaves, so that the short-lived
// connections of the X tools cannot catch it in the middle of a reset.
struct virtual_display {
    pid_t pid = -1;
    std::string name;  // ":N"

    explicit virtual_display(bool resets = false, const char* screen = "1024x768x24")
    {
        int fds[2];
        if (pipe(fds) != 0)
            return;
        pid = fork();
        if (pid == 0) {
            close(fds[0]);
            int null = open("/dev/null", O_WRONLY);
            dup2(null, 1);
            dup2(null, 2);
            std::string fd = std::to_string(fds[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen, "-nolisten",
                   "tcp", resets ? static_cast<char*>(nullptr) : "-noreset", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(fds[1]);
        // The number and its line end may come in two writes; the server
        // gives up if the pipe is closed between them.
        std::string number;
        auto end = clock_type::now() + std::chrono::seconds(10);
        while (pid > 0 && number.find('\n') == std::string::npos && clock_type::now() < end) {
            pollfd p{fds[0], POLLIN, 0};
            char c;
            if (poll(&p, 1, 100) == 1 && read(fds[0], &c, 1) == 1)
                number += c;
            else if (p.revents & POLLHUP)
                break;
        }
        close(fds[0]);
        if (number.find('\n') != std::string::npos)
            name = ":" + std::to_string(std::atoi(number.c_str()));
    }
    ~virtual_display()
    {
        if (pid > 0) {
            kill(pid, SIGTERM);
            waitpid(pid, nullptr, 0);
        }
    }

    // A command of the X tools on this display, bounded to five seconds;
    // returns its standard output.
    std::string run(const std::string& command) const
    {
        std::string out;
        if (FILE* p = popen(("DISPLAY=" + name + " timeout 5 " + command + " 2>/dev/null").c_str(), "r")) {
            char buffer[512];
            while (size_t n = fread(buffer, 1, sizeof buffer, p))
                out.append(buffer, n);
            pclose(p);
        }
        return out;
    }

    std::vector<std::string> windows(const std::string& search) const
    {
        std::vector<std::string> ids;
        std::istringstream in(run("xdotool search --onlyvisible " + search));
        for (std::string id; in >> id;)
            ids.push_back(id);
        return ids;
    }
    std::string window(const std::string& title, double seconds = 10) const
    {
        std::vector<std::string> ids;
        wait_until(seconds, [&] { return !(ids = windows("--name '^" + title + "$'")).empty(); });
        return ids.empty() ? "" : ids[0];
    }
    void click(const std::string& window, int x, int y) const
    {
        run("xdotool mousemove --window " + window + " " + std::to_string(x) + " " + std::to_string(y) +
          " click 1");
    }
    void key(const std::string& window, const std::string& keys) const
    {
        run("xdotool key --window " + window + " " + keys);
    }
};

// A program started in `dir` on a display, its streams in .out and .err
// there; killed if still running at the end.
struct display_process {
    pid_t pid = -1;
    std::string dir;
    int status = -1;

    display_process(const std::string& dir, const std::string& display, const std::string& program,
                    const std::vector<std::string>& args)
        : dir(dir)
    {
        pid = fork();
        if (pid == 0) {
            if (chdir(dir.c_str()) != 0)
                _exit(127);
            setenv("DISPLAY", display.c_str(), 1);
            dup2(open(".out", O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
            dup2(open(".err", O_WRONLY | O_CREAT | O_TRUNC, 0644), 2);
            std::vector<char*> argv{const_cast<char*>(program.c_str())};
            for (const std::string& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execvp(argv[0], argv.data());
            _exit(127);
        }
    }
    ~display_process()
    {
        if (running()) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        std::remove((dir + "/.out").c_str());
        std::remove((dir + "/.err").c_str());
    }
    bool running()
    {
        int raw;
        if (status < 0 && pid > 0 && waitpid(pid, &raw, WNOHANG) == pid)
            status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
        return status < 0 && pid > 0;
    }
    // The exit status, or -1 when the process is still running after `seconds`.
    int wait_exit(double seconds = 15)
    {
        wait_until(seconds, [&] { return !running(); });
        return status;
    }
    std::string out() const { return read_file(dir + "/.out"); }
    std::string err() const { return read_file(dir + "/.err"); }
};

#endif
