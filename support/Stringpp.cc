#include "support/Stringpp.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace {

int len(const std::string& s) { return static_cast<int>(s.size()); }

unsigned char byte(char c) { return static_cast<unsigned char>(c); }

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_ascii_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

int hex_value(char c)
{
    if (is_digit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Decimal reading shared by Stoi, Stol and Stoll: a first "-" negates, every
// other character adds its code minus that of "0". The arithmetic wraps
// around on the type's width, so a value too long for it is no fault.
template <typename T>
T decimal(const std::string& s)
{
    using U = std::make_unsigned_t<T>;
    U v = 0;
    bool negative = !s.empty() && s[0] == '-';
    for (std::size_t i = negative ? 1 : 0; i < s.size(); ++i)
        v = static_cast<U>(v * 10u + static_cast<U>(static_cast<T>(s[i] - '0')));
    return static_cast<T>(negative ? static_cast<U>(0u - v) : v);
}

std::string hex_digits(unsigned long v, int n)
{
    std::string out(n, '0');
    for (int i = n - 1; i >= 0; --i, v >>= 4)
        out[i] = "0123456789abcdef"[v & 0xf];
    return out;
}

// Letter, digit or accented (Latin-1) letter: what stops a token match.
bool word_char(char c)
{
    return is_digit(c) || check_ISO_8859_1_alphabetical_letter(c);
}

bool separator(char c) { return c == '/' || c == '\\'; }

std::string::size_type last_separator(const std::string& s)
{
    return s.find_last_of("/\\");
}

}  // namespace

// ---------------------------------------------------------------- from text

char* Stoa(const std::string& s)
{
    char* out = new char[s.size() + 1];
    std::memcpy(out, s.c_str(), s.size() + 1);
    return out;
}

int Stoi(const std::string& s) { return decimal<int>(s); }
long Stol(const std::string& s) { return decimal<long>(s); }
long long Stoll(const std::string& s) { return decimal<long long>(s); }

double Stod(const std::string& s, char decimal_sep)
{
    // Rewritten in the C locale's syntax, then read by strtod: the accepted
    // text is the one checkdouble describes.
    std::size_t i = 0;
    while (i < s.size() && s[i] == ' ')
        ++i;
    std::string text;
    if (i < s.size() && s[i] == '-')
        text += s[i++];
    while (i < s.size() && is_digit(s[i]))
        text += s[i++];
    if (i < s.size() && s[i] == decimal_sep) {
        text += '.';
        ++i;
        while (i < s.size() && is_digit(s[i]))
            text += s[i++];
    }
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        text += 'e';
        ++i;
        if (i < s.size() && (s[i] == '-' || s[i] == '+'))
            text += s[i++];
        while (i < s.size() && is_digit(s[i]))
            text += s[i++];
    }
    return std::strtod(text.c_str(), nullptr);
}

unsigned long Stouhex(const std::string& s)
{
    unsigned long v = 0;
    for (char c : s) {
        int d = hex_value(c);
        v = v * 16 + (d < 0 ? 0 : d);
    }
    return v;
}

int Stoshex(const std::string& s)
{
    // Arithmetic on 32 bits: with eight digits or more the power vanishes
    // and the wrap of the unsigned value does the sign.
    std::uint32_t v = static_cast<std::uint32_t>(Stouhex(s));
    if (!s.empty() && hex_value(s[0]) >= 8) {
        unsigned shift = 4u * s.size();
        std::uint32_t power = shift >= 32 ? 0 : (std::uint32_t(1) << shift);
        v -= power;
    }
    return static_cast<std::int32_t>(v);
}

unsigned long Stoubin(const std::string& s)
{
    unsigned long v = 0;
    for (char c : s)
        v = v * 2 + static_cast<unsigned long>(c - '0');
    return v;
}

long Stosbin(const std::string& s)
{
    if (s.empty())
        return 0;
    long rest = static_cast<long>(Stoubin(s.substr(1)));
    if (s[0] == '0')
        return rest;
    int bits = len(s) - 1;
    long weight = bits >= 63 ? 0 : (1L << bits);
    return rest - weight;
}

long Stoloruhex(const std::string& s, const std::string& prefix)
{
    std::string::size_type p = s.find(prefix);
    if (p == std::string::npos)
        return Stol(s);
    return static_cast<long>(Stouhex(s.substr(p + prefix.size())));
}

long Stohex(const std::string& s, const std::string& prefix)
{
    if (s.find(prefix) == std::string::npos) {
        long v = Stol(s);
        std::cerr << "Decimal Conversion " << v << std::endl;
        return v;
    }
    return Stoloruhex(s, prefix);
}

// ------------------------------------------------------------------ to text

std::string hex1toS(int v) { return hex_digits(static_cast<unsigned long>(v), 1); }
std::string hex2toS(int v) { return hex_digits(static_cast<unsigned long>(v), 2); }
std::string hex4toS(int v) { return hex_digits(static_cast<unsigned long>(v), 4); }
std::string hex8toS(long v) { return hex_digits(static_cast<unsigned long>(v), 8); }

std::string bin8toS(int v)
{
    std::string out(8, '0');
    for (int i = 7; i >= 0; --i, v >>= 1)
        out[i] = (v & 1) ? '1' : '0';
    return out;
}

std::string ctoS(char c) { return std::string(1, c); }
std::string unslong2S(unsigned long v) { return std::to_string(v); }
std::string long2S(long v) { return std::to_string(v); }
std::string unslonglong2S(unsigned long long v) { return std::to_string(v); }
std::string longlong2S(long long v) { return std::to_string(v); }

std::string unslongbyS(unsigned long v)
{
    std::string out;
    do {
        out.insert(out.begin(), static_cast<char>('0' + (v & 7)));
        v >>= 3;
    } while (v != 0);
    return out;
}

std::string dtoS(double d, int decimals)
{
    std::ostringstream out;
    out << std::fixed << std::setprecision(decimals < 0 ? 0 : decimals) << d;
    return out.str();
}

// ---------------------------------------------------------- classes, checks

bool est_lc(char c)
{
    return is_ascii_letter(c) || is_digit(c) || c == '.' || c == '_' || c == ',' || c == '@';
}

bool check_ISO_8859_1_alphabetical_letter(char c)
{
    unsigned char b = byte(c);
    if (is_ascii_letter(c))
        return true;
    // 192..255 less the multiplication (215) and division (247) signs.
    return b >= 192 && b != 215 && b != 247;
}

bool checkuint(const std::string& s)
{
    if (s.empty())
        return false;
    for (char c : s)
        if (!is_digit(c))
            return false;
    return true;
}

bool checkint(const std::string& s)
{
    if (!s.empty() && s[0] == '-')
        return checkuint(s.substr(1));
    return checkuint(s);
}

bool beginbynumber(const std::string& s) { return !s.empty() && is_digit(s[0]); }

bool checkdouble(const std::string& s, char sep)
{
    std::size_t i = 0, n = s.size();
    while (i < n && s[i] == ' ')
        ++i;
    bool negative = i < n && s[i] == '-';
    if (negative)
        ++i;
    if (i >= n || !is_digit(s[i]))
        return false;
    bool zero = s[i] == '0';
    ++i;
    if (!zero)
        while (i < n && is_digit(s[i]))
            ++i;
    if (negative && zero && i == n)
        return false;
    if (i < n && s[i] == sep) {
        ++i;
        if (i >= n || !is_digit(s[i]))
            return false;
        while (i < n && is_digit(s[i]))
            ++i;
    }
    if (i < n && (s[i] == 'e' || s[i] == 'E')) {
        ++i;
        if (i < n && (s[i] == '-' || s[i] == '+'))
            ++i;
        if (i >= n || !is_digit(s[i]))
            return false;
        while (i < n && is_digit(s[i]))
            ++i;
    }
    return i == n;
}

bool checkhex(const std::string& s)
{
    for (char c : s)
        if (hex_value(c) < 0)
            return false;
    return true;
}

bool checkhexintel(const std::string& s)
{
    if (s.empty() || s.back() != 'h')
        return false;
    return checkhex(s.substr(0, s.size() - 1));
}

bool checkbin(const std::string& s)
{
    for (char c : s)
        if (c != '0' && c != '1')
            return false;
    return true;
}

static bool varname_body(const std::string& s)
{
    for (std::size_t i = 1; i < s.size(); ++i)
        if (!is_ascii_letter(s[i]) && !is_digit(s[i]) && s[i] != '_')
            return false;
    char last = s.back();
    return is_ascii_letter(last) || is_digit(last);
}

bool checkvarname(const std::string& s)
{
    return !s.empty() && is_ascii_letter(s[0]) && varname_body(s);
}

bool checkvarname_with_pre_underscore(const std::string& s)
{
    return !s.empty() && (is_ascii_letter(s[0]) || s[0] == '_') && varname_body(s);
}

// --------------------------------------------------------------------- case

std::string downcase(const std::string& s)
{
    std::string out = s;
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::string upcase(const std::string& s)
{
    std::string out;
    for (char c : s) {
        if (byte(c) >= 128)
            continue;
        out += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return out;
}

std::string upcase_accent(const std::string& s)
{
    std::string out;
    for (char c : s) {
        switch (byte(c)) {
        case 232: case 233: case 234: out += 'E'; break;
        case 224: case 226: out += 'A'; break;
        case 244: out += 'O'; break;
        case 231: out += 'C'; break;
        case 140: out += c; break;  // the OE ligature is already a capital
        default: out += upcase(std::string(1, c));
        }
    }
    return out;
}

std::string upcase_accent2(const std::string& s)
{
    std::string out;
    for (char c : s) {
        unsigned char b = byte(c);
        if (b < 128) {
            out += upcase(std::string(1, c));
            continue;
        }
        // Capitals 192..221 and small letters 224..253 share the low five
        // bits, so one table serves both.
        static const char* const latin[32] = {
            "A", "A", "A", "A", "A", "A", "AE", "C", "E", "E", "E", "E", "I", "I", "I", "I",
            "D", "N", "O", "O", "O", "O", "O", "",  "O", "U", "U", "U", "U", "Y", "",  ""};
        if (b == 140 || b == 156)
            out += "OE";
        else if (b == 255 || b == 159)
            out += 'Y';
        else if (b == 223)
            out += "SS";
        else if (b >= 192)
            out += latin[b & 31];
    }
    return out;
}

// -------------------------------------------------------- search and cutting

bool contains(const std::string& s, const std::string& t) { return s.find(t) != std::string::npos; }

std::string::size_type find(const std::string& s, const std::string& t) { return s.find(t); }

int char_occurences(const std::string& s, char c)
{
    int n = 0;
    for (char x : s)
        n += x == c;
    return n;
}

bool contains_token(const std::string& s, const std::string& t)
{
    std::string::size_type p = s.find(t);
    if (p == std::string::npos)
        return false;
    std::string::size_type after = p + t.size();
    return after >= s.size() || !word_char(s[after]);
}

std::string my_before(const std::string& s, int n)
{
    if (n <= 0)
        return std::string();
    return s.substr(0, static_cast<std::size_t>(n));
}

std::string my_after(const std::string& s, int n)
{
    if (n < 0)
        n = 0;
    if (n >= len(s))
        return std::string();
    return s.substr(static_cast<std::size_t>(n));
}

std::string my_at(const std::string& s, int from, int to)
{
    if (from < 0)
        from = 0;
    if (to > len(s))
        to = len(s);
    if (from >= to)
        return std::string();
    return s.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from));
}

std::string bdelete(const std::string& s)
{
    if (s.size() < 3)
        return std::string();
    return s.substr(1, s.size() - 2);
}

std::string cancel_begin_end_spaces(const std::string& s)
{
    std::string::size_type b = s.find_first_not_of(' ');
    if (b == std::string::npos)
        return std::string();
    std::string::size_type e = s.find_last_not_of(' ');
    return s.substr(b, e - b + 1);
}

// ------------------------------------------------------- tokens and records

std::string next_Stringtoken(std::string s, char sep, std::string* rest)
{
    std::size_t i = 0, n = s.size();
    while (i < n && s[i] == sep)
        ++i;
    if (i == n) {
        if (rest)
            rest->clear();
        return std::string();
    }
    std::size_t start = i++;
    if (s[start] == '-') {
        while (i < n && (is_digit(s[i]) || s[i] == '.'))
            ++i;
    } else if (est_lc(s[start])) {
        while (i < n && est_lc(s[i]))
            ++i;
    }
    std::string word = s.substr(start, i - start);
    if (rest)
        *rest = s.substr(i);
    return word;
}

std::string next_record(std::string s, char c, std::string& rest)
{
    std::string::size_type p = s.find(c);
    if (p == std::string::npos) {
        rest.clear();
        return s;
    }
    rest = s.substr(p + 1);
    return s.substr(0, p);
}

std::string next_record(std::string s, const char* separators, std::string& rest, char& found)
{
    std::string::size_type p = s.find_first_of(separators);
    if (p == std::string::npos) {
        rest.clear();
        found = '\0';
        return s;
    }
    found = s[p];
    rest = s.substr(p + 1);
    return s.substr(0, p);
}

std::string last_record(std::string s, char c, std::string& rest)
{
    std::string::size_type p = s.rfind(c);
    if (p == std::string::npos) {
        rest.clear();
        return s;
    }
    rest = s.substr(0, p);
    return s.substr(p + 1);
}

// ------------------------------------------------------------- substitution

std::string substitute_char(const std::string& s, char from, char to)
{
    std::string out = s;
    for (char& c : out)
        if (c == from)
            c = to;
    return out;
}

std::string substitute_char(const std::string& s, char from, const std::string& to)
{
    std::string out;
    for (char c : s) {
        if (c == from)
            out += to;
        else
            out += c;
    }
    return out;
}

std::string substitute_string(const std::string& s, const std::string& from, const std::string& to)
{
    std::string out;
    put_substituted(s, from, to, [&out](std::string_view piece) { out.append(piece); });
    return out;
}

std::string substitute_token(const std::string& s, const std::string& from, const std::string& to)
{
    if (from.empty())
        return s;
    auto glued = [](char c) { return is_ascii_letter(c) || is_digit(c) || c == '_'; };
    std::string out;
    std::string::size_type i = 0, p, scan = 0;
    while ((p = s.find(from, scan)) != std::string::npos) {
        std::string::size_type end = p + from.size();
        bool whole = (p == 0 || !glued(s[p - 1])) && (end >= s.size() || !glued(s[end]));
        if (!whole) {
            scan = p + 1;
            continue;
        }
        out.append(s, i, p - i);
        out += to;
        i = scan = end;
    }
    out.append(s, i, std::string::npos);
    return out;
}

std::string clever_substitute_space(const std::string& s, char c)
{
    std::string trimmed = cancel_begin_end_spaces(s), out;
    bool in_run = false;
    for (char x : trimmed) {
        if (x == ' ') {
            if (!in_run)
                out += c;
            in_run = true;
        } else {
            out += x;
            in_run = false;
        }
    }
    return out;
}

// ------------------------------------------------------------------ filters

std::string latex_String_filter(const std::string& s) { return substitute_string(s, "_", "\\_"); }

std::string rtf_String_filter(const std::string& s)
{
    // The rows run in this order over the result of the previous ones; the
    // last row rewrites what an earlier row may have produced.
    static const char* const rows[][2] = {
        {"'", "\\'91"},
        {"\xE2\x80\x99", "\\'27"},  // right single quotation mark
        {"\xC2\xAB", "\\'ab"},
        {"\xC2\xBB", "\\'bb"},
        {"\xE2\x80\x93", "-"},      // en dash
        {"\xC3\x89", "\\'c9"},
        {"\xC3\x88", "\\'c8"},
        {"\xC3\x8A", "\\'ca"},
        {"\xC3\x8B", "\\'cb"},
        {"\xC3\x87", "\\'c7"},
        {"\xC3\xA9", "\\'e9"},
        {"\xC3\xA8", "\\'e8"},
        {"\xC3\xAA", "\\'ea"},
        {"\xC3\xAB", "\\'eb"},
        {"\xC3\xA7", "\\'e7"},
        {"\xC3\xA0", "\\'eO"},      // the letter O, as the output has always had it
        {"\xC3\xB6", "\\'f6"},
        {"\xC3\xB4", "\\'f4"},
        {"\xC3\xAE", "\\'ee"},
        {"\xC3\xAF", "\\'ef"},
        {"\xC3\x97", "x"},          // multiplication sign
        {"\xC3\xB9", "\\'f9"},      // u with grave
        {"\\'24", "'23"},
    };
    std::string out = s;
    for (const auto& row : rows)
        out = substitute_string(out, row[0], row[1]);
    return out;
}

// --------------------------------------------------------------- file names

std::string my_current_directory()
{
    std::vector<char> buffer(4096);
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (buffer.size() > (1u << 20))
            return std::string();
        buffer.resize(buffer.size() * 2);
    }
    return std::string(buffer.data());
}

std::string extract_filename_path(const std::string& s)
{
    std::string::size_type p = last_separator(s);
    return p == std::string::npos ? std::string() : s.substr(0, p);
}

std::string extract_filename_name(const std::string& s)
{
    std::string::size_type p = last_separator(s);
    return p == std::string::npos ? s : s.substr(p + 1);
}

std::string supress_filename_extension(const std::string& s)
{
    std::string::size_type dot = s.rfind('.');
    if (dot == std::string::npos)
        return s;
    std::string::size_type sep = last_separator(s);
    if (sep != std::string::npos && dot < sep)
        return s;
    return s.substr(0, dot);
}

static std::vector<std::string> path_parts(const std::string& path)
{
    std::vector<std::string> parts;
    std::string part;
    for (char c : path + "/") {
        if (!separator(c)) {
            part += c;
            continue;
        }
        if (part == "..") {
            if (!parts.empty() && parts.back() != "..")
                parts.pop_back();
            else
                parts.push_back(part);
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        part.clear();
    }
    return parts;
}

std::string relative_directory_path(const std::string& from, const std::string& to)
{
    std::vector<std::string> a = path_parts(from), b = path_parts(to);
    std::size_t common = 0;
    while (common < a.size() && common < b.size() && a[common] == b[common])
        ++common;
    std::string out;
    for (std::size_t i = common; i < a.size(); ++i)
        out += "../";
    for (std::size_t i = common; i < b.size(); ++i)
        out += b[i] + "/";
    return out;
}

// -------------------------------------------------------------------- other

int levenshtein(const std::string& a, const std::string& b)
{
    // The historical table holds 1000 by 1000 entries, rows 0..length.
    const std::size_t limit = 1000;
    if (a.size() >= limit || b.size() >= limit) {
        std::cerr << "chaines trop grandes!" << std::endl;
        return -1;
    }
    std::vector<int> previous(b.size() + 1), current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        previous[j] = static_cast<int>(j);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            int cost = a[i - 1] == b[j - 1] ? 0 : 1;
            int best = previous[j - 1] + cost;
            if (previous[j] + 1 < best)
                best = previous[j] + 1;
            if (current[j - 1] + 1 < best)
                best = current[j - 1] + 1;
            current[j] = best;
        }
        previous.swap(current);
    }
    return previous[b.size()];
}
