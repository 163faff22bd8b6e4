// The buffered text writer against the stream it stands in for: the same
// bytes in the same order, whatever the sizes of the pieces, around the
// buffer's boundary and past it, with the stream written directly between
// flushes, and with nested writers on one stream.

#include "support/text_out.h"

#include <gtest/gtest.h>

#include <climits>
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
