#ifndef TARN_SUPPORT_TEXT_OUT_H
#define TARN_SUPPORT_TEXT_OUT_H

// Text gathered in memory and handed to a stream in large pieces. A
// generator that writes a node per line makes a dozen insertions per line;
// each one through the stream costs a sentry and a virtual call, here it is
// an append. Numbers are written in decimal as a stream with its default
// flags writes them. Whatever is gathered goes to the stream at flush() and
// when the writer ends: nothing else may write to that stream meanwhile.

#include <charconv>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

class text_out {
public:
    explicit text_out(std::ostream& out) : out(out)
    {
        std::vector<std::unique_ptr<char[]>>& spare = spares();
        if (spare.empty()) {
            buffer.reset(new char[capacity]);
        } else {
            buffer = std::move(spare.back());
            spare.pop_back();
        }
    }
    ~text_out()
    {
        flush();
        spares().push_back(std::move(buffer));
    }
    text_out(const text_out&) = delete;
    text_out& operator=(const text_out&) = delete;

    text_out& operator<<(std::string_view s)
    {
        if (s.size() > capacity - used) {
            flush();
            if (s.size() > capacity) {
                out.write(s.data(), static_cast<std::streamsize>(s.size()));
                return *this;
            }
        }
        std::memcpy(buffer.get() + used, s.data(), s.size());
        used += s.size();
        return *this;
    }
    text_out& operator<<(const std::string& s) { return *this << std::string_view(s); }
    text_out& operator<<(const char* s) { return *this << std::string_view(s); }
    text_out& operator<<(char c)
    {
        if (used == capacity)
            flush();
        buffer[used++] = c;
        return *this;
    }
    template <typename Int, typename = std::enable_if_t<std::is_integral_v<Int> && !std::is_same_v<Int, char> &&
                                                         !std::is_same_v<Int, bool>>>
    text_out& operator<<(Int value)
    {
        char digits[24];
        auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
    }

    void flush()
    {
        if (used != 0)
            out.write(buffer.get(), static_cast<std::streamsize>(used));
        used = 0;
    }

private:
    // Buffers of the writers that ended, for the next ones: a writer per
    // equation would otherwise take a fresh buffer each time.
    static std::vector<std::unique_ptr<char[]>>& spares()
    {
        thread_local std::vector<std::unique_ptr<char[]>> kept;
        return kept;
    }
    static constexpr std::size_t capacity = std::size_t(1) << 16;
    std::ostream& out;
    std::unique_ptr<char[]> buffer;
    std::size_t used = 0;
};

#endif
