// The buffered text writer against the stream it stands in for: the same
// bytes in the same order, whatever the sizes of the pieces, around the
// buffer's boundary and past it, with the stream written directly between
// flushes, and with nested writers on one stream. The files written by the
// library's thread: the bytes as put, through failures and the exit.

#include "support/async_file.h"
#include "support/text_out.h"
#include "tests/tarn_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <optional>
#include <random>
#include <sstream>
#include <string>

TEST(TextOut, SameBytesAsTheStream)
{
    std::mt19937 rng(11);
    std::ostringstream direct, buffered;
    {
        text_out out(buffered);
        for (int round = 0; round < 3000; ++round) {
            switch (rng() % 6) {
            case 0: {
                // Up to twice the buffer: some pieces go past it whole.
                std::size_t n = rng() % 9 == 0 ? rng() % (std::size_t(1) << 17) : rng() % 40;
                std::string piece(n, static_cast<char>('a' + rng() % 26));
                direct << piece;
                out << piece;
                break;
            }
            case 1: {
                long values[] = {0, -1, LONG_MIN, LONG_MAX, static_cast<long>(rng()) - (1L << 31)};
                long v = values[rng() % 5];
                direct << v;
                out << v;
                int i = static_cast<int>(v);
                direct << i;
                out << i;
                break;
            }
            case 2:
                direct << '\n';
                out << '\n';
                break;
            case 3:
                direct << "lit";
                out << "lit";
                break;
            case 4:
                // The stream itself, after a flush.
                out.flush();
                buffered << "[direct]";
                direct << "[direct]";
                break;
            default: {
                text_out inner(buffered);
                out.flush();
                inner << "inner" << round;
                direct << "inner" << round;
                break;
            }
            }
        }
    }
    EXPECT_EQ(buffered.str(), direct.str());
}

// Three files open at once, written in turn with pieces from a byte to
// several buffers long (through text_out, put and write), and flushed
// between: each holds exactly its own bytes, in order.
TEST(AsyncFile, FilesHoldWhatWasPutInOrder)
{
    std::mt19937 rng(5);
    scratch_dir dir;
    std::string want[3];
    async_ofstream files[3];
    for (int f = 0; f < 3; ++f) {
        files[f].open(dir.path + "/" + std::to_string(f));
        ASSERT_TRUE(files[f].is_open());
    }
    for (int round = 0; round < 300; ++round) {
        int f = static_cast<int>(rng() % 3);
        std::size_t size = rng() % 4 == 0 ? rng() % (3 << 20) : rng() % 200;
        std::string piece(size, '\0');
        for (char& c : piece)
            c = static_cast<char>('a' + rng() % 26);
        if (round % 3 == 0) {
            text_out out(files[f]);
            out << piece;
        } else if (size == 1) {
            files[f].put(piece[0]);
        } else {
            files[f].write(piece.data(), static_cast<std::streamsize>(size));
        }
        if (round % 7 == 0)
            files[f] << std::endl, piece += '\n';
        want[f] += piece;
    }
    for (int f = 0; f < 3; ++f) {
        files[f].close();
        EXPECT_FALSE(files[f].fail());
        std::string got = read_file(dir.path + "/" + std::to_string(f));
        EXPECT_TRUE(got == want[f]) << "file " << f << ": " << got.size() << " bytes of " << want[f].size();
    }
}

// A device that refuses every write: the failure shows at the latest on
// the close, with its errno, and the stream stays failed. A file that
// cannot be created fails at once, and so do its writes.
TEST(AsyncFile, FailuresReachTheStream)
{
    async_ofstream full("/dev/full");
    ASSERT_TRUE(full.is_open());
    std::string block(3 << 20, 'x');
    full.write(block.data(), static_cast<std::streamsize>(block.size()));
    full << "tail";
    errno = 0;
    full.close();
    EXPECT_TRUE(full.fail());
    EXPECT_EQ(errno, ENOSPC);

    async_ofstream nowhere("/no/such/dir/file");
    EXPECT_FALSE(nowhere.is_open());
    EXPECT_TRUE(nowhere.fail());
    nowhere.clear();
    nowhere << "lost";
    EXPECT_TRUE(nowhere.bad());
}

// A process that exits with files open, written by the thread or by
// itself (a forked child has no thread), leaves in them what was put up to
// their last flush, whole buffers included, and not what came after; a
// file too small to have reached the thread is no exception.
TEST(AsyncFile, ExitWritesUpToTheLastFlush)
{
    std::string big(2500000, 'q');
    auto write_and_exit = [&big](const std::string& large, const std::string& small) {
        // Held by statics: open at the exit, and no leak to a checker.
        static async_ofstream* l = new async_ofstream(large);
        l->write(big.data(), static_cast<std::streamsize>(big.size()));
        *l << "end" << std::flush << "lost";
        static async_ofstream* s = new async_ofstream(small);
        *s << "small" << std::flush << "gone";
        std::exit(0);
    };
    // The death test runs in a fresh process of this program, where the
    // thread starts with its first file; it learns the folder from here.
    const char* given = std::getenv("ASYNC_FILE_EXIT_DIR");
    std::optional<scratch_dir> made;
    if (given == nullptr) {
        made.emplace();
        setenv("ASYNC_FILE_EXIT_DIR", made->path.c_str(), 1);
    }
    std::string dir = (given != nullptr ? std::string(given) : made->path) + "/";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(write_and_exit(dir + "thread_large", dir + "thread_small"), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(read_file(dir + "thread_large") == big + "end") << read_file(dir + "thread_large").size() << " bytes";
    EXPECT_EQ(read_file(dir + "thread_small"), "small");

    async_ofstream started(dir + "parent");
    started.write(big.data(), static_cast<std::streamsize>(big.size()));
    started.close();
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        write_and_exit(dir + "fork_large", dir + "fork_small");
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(read_file(dir + "fork_large") == big + "end") << read_file(dir + "fork_large").size() << " bytes";
    EXPECT_EQ(read_file(dir + "fork_small"), "small");
    unsetenv("ASYNC_FILE_EXIT_DIR");
}
