// Scratch directories, whole files and runs of the built tarn, for the
// tests that drive the command itself.
#ifndef TARN_TESTS_TARN_PROCESS_H
#define TARN_TESTS_TARN_PROCESS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

inline std::string read_file(const std::string& name)
{
    std::ifstream in(name);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// A file name under the test's temporary directory that no other test
// process uses: ctest runs several at once in the same directory.
inline std::string temp_path(const std::string& name)
{
    return testing::TempDir() + std::to_string(getpid()) + "_" + name;
}

inline bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

// A fresh directory under the test's temporary one, removed with its
// content at the end of the scope.
struct scratch_dir {
    std::string path;
    scratch_dir()
    {
        std::string pattern = testing::TempDir() + "tarn_test_XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr)
            path = pattern;
        EXPECT_FALSE(path.empty()) << "no scratch directory";
    }
    ~scratch_dir() { std::system(("rm -rf '" + path + "'").c_str()); }
    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path + "/" + name) << text;
        return path + "/" + name;
    }
};

// The names in `dir` that end in `suffix` (all with an empty one), the
// suffix cut off, in order.
inline std::vector<std::string> files_with_suffix(const std::string& dir, const std::string& suffix = "")
{
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n != "." && n != ".." && n.size() > suffix.size() &&
                n.compare(n.size() - suffix.size(), suffix.size(), suffix) == 0)
                names.push_back(n.substr(0, n.size() - suffix.size()));
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

struct tarn_output {
    int status;  // 128 plus the signal if the process was killed
    std::string out, err;
};

// A built program run in `dir` without a display and bounded in time, each
// argument one shell word, `input` on its standard input.
inline tarn_output run_in(const std::string& binary, const std::string& dir, const std::vector<std::string>& args,
                          const std::string& input = "")
{
    std::ofstream(dir + "/.in") << input;
    std::string command = "cd '" + dir + "' && env -u DISPLAY timeout 600 '" + binary + "'";
    for (const std::string& a : args)
        command += " '" + a + "'";
    command += " <.in >.out 2>.err";
    int raw = std::system(command.c_str());
    tarn_output r{WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw), read_file(dir + "/.out"),
                  read_file(dir + "/.err")};
    for (const char* f : {"/.in", "/.out", "/.err"})
        std::remove((dir + f).c_str());
    return r;
}

inline tarn_output run_tarn_in(const std::string& dir, const std::vector<std::string>& args)
{
    return run_in(TARN_BINARY_DIR "/driver/tarn", dir, args);
}

inline tarn_output run_mosk_in(const std::string& dir, const std::vector<std::string>& args,
                               const std::string& reactions = "")
{
    return run_in(TARN_BINARY_DIR "/sim/mosk", dir, args, reactions);
}

// A module of `equations` random equations written by zkcgen as
// `dir`/`name`.zkc (the name also names the module); its text, empty when
// zkcgen failed.
inline std::string generate_module(const std::string& dir, const std::string& name, long equations, long seed)
{
    std::string file = dir + "/" + name + ".zkc";
    std::string command = "'" TARN_BINARY_DIR "/tools/zkcgen' " + std::to_string(equations) + " " +
                          std::to_string(seed) + " " + name + " > '" + file + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return read_file(file);
}

// The example `name` of the source tree copied into `dir`; its text.
inline std::string copy_example(const std::string& dir, const std::string& name)
{
    std::string text = read_file(TARN_SOURCE_DIR "/examples/" + name + ".zkc");
    EXPECT_FALSE(text.empty()) << name;
    std::ofstream(dir + "/" + name + ".zkc") << text;
    return text;
}

#endif
