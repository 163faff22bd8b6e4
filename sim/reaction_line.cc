#include "sim/reaction_line.h"

namespace {

bool blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// A character shown in a message: printable as it stands, else by code.
std::string shown(char c)
{
    unsigned char u = static_cast<unsigned char>(c);
    if (u >= 0x20 && u < 0x7f)
        return std::string("'") + c + "'";
    static const char digits[] = "0123456789abcdef";
    return std::string("byte 0x") + digits[u >> 4] + digits[u & 15];
}

// A name or a value as it goes into a message: a long or unprintable one
// is cut and escaped, so that the message stays one readable line.
std::string quoted(const std::string& text)
{
    std::string out = "'";
    std::size_t n = 0;
    for (char c : text) {
        if (++n > 40) {
            out += "...";
            break;
        }
        unsigned char u = static_cast<unsigned char>(c);
        if (u >= 0x20 && u < 0x7f)
            out += c;
        else
            out += "?";
    }
    return out + "'";
}

} // namespace

reaction_line_reader::reaction_line_reader(std::string module, const std::vector<std::pair<std::string, bool>>& inputs)
    : module(std::move(module))
{
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        index.emplace(inputs[i].first, i);
        valued.push_back(inputs[i].second);
    }
}

bool reaction_line_reader::read(const std::string& line, std::vector<bool>& present, std::vector<std::string>& values,
                                std::string& error) const
{
    present.assign(valued.size(), false);
    values.assign(valued.size(), std::string());
    std::size_t at = 0, end = line.size();
    while (at < end) {
        if (blank(line[at])) {
            ++at;
            continue;
        }
        if (line[at] == '(' || line[at] == ')') {
            error = "unexpected " + shown(line[at]) + " where an input's name should stand";
            return false;
        }
        std::size_t start = at;
        while (at < end && !blank(line[at]) && line[at] != '(' && line[at] != ')')
            ++at;
        std::string name = line.substr(start, at - start);
        auto it = index.find(name);
        if (it == index.end()) {
            error = quoted(name) + " is not an input of " + module;
            return false;
        }
        std::size_t i = it->second;
        if (present[i]) {
            error = "input " + quoted(name) + " is given twice";
            return false;
        }
        present[i] = true;
        bool has_value = at < end && line[at] == '(';
        if (at < end && line[at] == ')') {
            error = "unexpected ')' after " + quoted(name);
            return false;
        }
        if (!has_value) {
            if (valued[i]) {
                error = "valued input " + quoted(name) + " needs a value, as " + name.substr(0, 40) + "(12)";
                return false;
            }
            continue;
        }
        if (!valued[i]) {
            error = "input " + quoted(name) + " is pure and takes no value";
            return false;
        }
        std::size_t open = ++at;
        while (at < end && line[at] != ')') {
            char c = line[at];
            if (blank(c) || c == '(' || c == ',' || static_cast<unsigned char>(c) < 0x20) {
                error = shown(c) + " in the value of " + quoted(name);
                return false;
            }
            ++at;
        }
        if (at == end) {
            error = "no ')' closes the value of " + quoted(name);
            return false;
        }
        if (at == open) {
            error = "empty value for " + quoted(name);
            return false;
        }
        values[i] = line.substr(open, at - open);
        ++at;
        if (at < end && !blank(line[at])) {
            error = "no blank after the value of " + quoted(name);
            return false;
        }
    }
    return true;
}
