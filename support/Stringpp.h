#ifndef TARN_SUPPORT_STRINGPP_H
#define TARN_SUPPORT_STRINGPP_H

// Flat string helpers shared by every layer. All of them are pure: they take
// strings by value or constant reference and return new strings. Positions
// are int and count from 0. The names belong to the system's vocabulary,
// French ones included. Functions that hand back a "rest" take the source by
// value, so the rest may be the very string that was passed in.

#include <string>
#include <string_view>

// ---- conversions from text (no check: a bad character takes part in the
// arithmetic) ----
char* Stoa(const std::string& s);  // new[] copy with a final NUL; caller owns it
int Stoi(const std::string& s);
long Stol(const std::string& s);
long long Stoll(const std::string& s);
double Stod(const std::string& s, char decimal_sep = '.');
unsigned long Stouhex(const std::string& s);
int Stoshex(const std::string& s);
unsigned long Stoubin(const std::string& s);
long Stosbin(const std::string& s);
long Stoloruhex(const std::string& s, const std::string& prefix);
long Stohex(const std::string& s, const std::string& prefix);

// ---- conversions to text ----
std::string hex1toS(int v);
std::string hex2toS(int v);
std::string hex4toS(int v);
std::string hex8toS(long v);
std::string bin8toS(int v);
std::string ctoS(char c);
std::string unslong2S(unsigned long v);
std::string long2S(long v);
std::string unslonglong2S(unsigned long long v);
std::string longlong2S(long long v);
std::string unslongbyS(unsigned long v);  // octal
std::string dtoS(double d, int decimals);

// ---- character classes and syntax checks ----
bool est_lc(char c);
bool check_ISO_8859_1_alphabetical_letter(char c);
bool checkuint(const std::string& s);
bool checkint(const std::string& s);
bool beginbynumber(const std::string& s);
bool checkdouble(const std::string& s, char sep = '.');
bool checkhex(const std::string& s);
bool checkhexintel(const std::string& s);
bool checkbin(const std::string& s);
bool checkvarname(const std::string& s);
bool checkvarname_with_pre_underscore(const std::string& s);

// ---- case (bytes read as Latin-1) ----
std::string downcase(const std::string& s);
std::string upcase(const std::string& s);
std::string upcase_accent(const std::string& s);
std::string upcase_accent2(const std::string& s);

// ---- search and cutting ----
bool contains(const std::string& s, const std::string& t);
std::string::size_type find(const std::string& s, const std::string& t);
int char_occurences(const std::string& s, char c);
bool contains_token(const std::string& s, const std::string& t);
std::string my_before(const std::string& s, int n);
std::string my_after(const std::string& s, int n);
std::string my_at(const std::string& s, int from, int to);
std::string bdelete(const std::string& s);
std::string cancel_begin_end_spaces(const std::string& s);

// ---- tokens and records ----
std::string next_Stringtoken(std::string s, char separator, std::string* rest);
std::string next_record(std::string s, char c, std::string& rest);
std::string next_record(std::string s, const char* separators, std::string& rest, char& found);
std::string last_record(std::string s, char c, std::string& rest);

// ---- substitution ----
std::string substitute_char(const std::string& s, char from, char to);
std::string substitute_char(const std::string& s, char from, const std::string& to);
std::string substitute_string(const std::string& s, const std::string& from, const std::string& to);
// Hands put the pieces of s with each `from`, left to right, made `to`:
// substitute_string without the copy, for a writer that takes the pieces.
template <class Put>
void put_substituted(std::string_view s, std::string_view from, std::string_view to, Put put)
{
    if (!from.empty())
        for (std::size_t at; (at = s.find(from)) != std::string_view::npos; s.remove_prefix(at + from.size())) {
            put(s.substr(0, at));
            put(to);
        }
    put(s);
}
std::string substitute_token(const std::string& s, const std::string& from, const std::string& to);
std::string clever_substitute_space(const std::string& s, char c);

// ---- filters ----
std::string latex_String_filter(const std::string& s);
std::string rtf_String_filter(const std::string& s);  // UTF-8 in, RTF escapes out

// ---- file names ('/' and '\\' both separate) ----
std::string my_current_directory();
std::string extract_filename_path(const std::string& s);
std::string extract_filename_name(const std::string& s);
std::string supress_filename_extension(const std::string& s);
// Each directory of the result is followed by "/", so a file name can be put
// behind it; two equal paths give the empty string.
std::string relative_directory_path(const std::string& from, const std::string& to);

// ---- other ----
// Edit distance; strings of 1000 characters or more are refused with a
// message on the error stream and give -1.
int levenshtein(const std::string& a, const std::string& b);

// `char + string` is the standard library's own operator+.

#endif
