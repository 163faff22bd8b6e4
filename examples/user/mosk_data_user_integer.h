// The user's side of the type "integer" for the data server of the
// examples: a check and both conversions. A module's methods and
// constants follow it in the header a build puts together.
#include <cstdlib>
#include <string>
typedef long integer;
inline bool check_integer(const std::string& s)
{
    char* end = nullptr;
    std::strtol(s.c_str(), &end, 10);
    return !s.empty() && *end == '\0';
}
inline integer string_to_integer(const std::string& s) { return std::strtol(s.c_str(), nullptr, 10); }
inline std::string integer_to_string(integer v) { return std::to_string(v); }
