// The documentation read back as a set of definitions: which names each
// line defines and which it reads, and a check that every name read is
// defined, or is an input, a register or a memorised copy of the listing.
// The listing's own conventions that leave a name read and undefined are
// the rules below, each named by what it is.
#ifndef TARN_TESTS_TARGETS_DOC_CHECK_H
#define TARN_TESTS_TARGETS_DOC_CHECK_H

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace doc_check {

struct definition {
    std::string name;
    std::vector<std::string> reads;
    std::string section;  // "definitions", "transition" or "memorisations"
};

struct listing {
    std::map<std::string, std::vector<std::string>> heads;  // "state", "inputs", ... and their names
    std::vector<definition> lines;                          // in text order
    std::vector<std::string> unreadable;
};

inline std::vector<std::string> split(const std::string& text, const std::string& separator)
{
    std::vector<std::string> items;
    if (text.empty())
        return items;
    std::string::size_type from = 0, at;
    while ((at = text.find(separator, from)) != std::string::npos) {
        items.push_back(text.substr(from, at - from));
        from = at + separator.size();
    }
    items.push_back(text.substr(from));
    return items;
}

// The names of a right member: operators, constants and the mark of an
// undefined value are no names.
inline std::vector<std::string> names_in(std::string text)
{
    for (char& c : text)
        if (c == '&' || c == '|' || c == '!' || c == ';' || c == '(' || c == ')')
            c = ' ';
    std::istringstream in(text);
    std::vector<std::string> names;
    std::string word;
    while (in >> word)
        if (word != "TRUE" && word != "true" && word != "false" && word != "???")
            names.push_back(word);
    return names;
}

inline listing read(const std::string& doc)
{
    static const std::regex head("^(state|inputs|outputs|locals|pres|initial) (.*);$");
    static const std::regex transition("^(\\S+)' = (\\S+);$");
    static const std::regex memorisation("  (\\S+)= (false |[^ ]*)->pre\\((\\S+)\\);");
    static const std::regex memorisations("(  \\S+= (false |[^ ]*)->pre\\(\\S+\\);)+definitions");
    static const std::regex node("^   (node_\\d+):= (.*);$");
    static const std::regex equation("^(\\S+)   = (.*)$");
    listing l;
    std::istringstream in(doc);
    std::string line, section;
    std::smatch m;
    while (std::getline(in, line)) {
        if (section == "definitions" &&
            (line.rfind("Binding table", 0) == 0 || line.rfind("data type:", 0) == 0))
            break;
        if (section.empty() && std::regex_match(line, m, head)) {
            std::vector<std::string> items = split(m[2].str(), m[1] == "initial" ? " and " : ", ");
            for (std::string& item : items)
                if (item.rfind("not ", 0) == 0)
                    item = item.substr(4);
            l.heads[m[1].str()] = items;
        } else if (line == "transition" || line == "definitions") {
            section = line;
        } else if (line == "memorisations") {
            // Its items run on one line, which the definitions' title ends.
            section = "memorisations";
            std::getline(in, line);
            if (!std::regex_match(line, memorisations))
                l.unreadable.push_back(line);
            for (auto it = std::sregex_iterator(line.begin(), line.end(), memorisation); it != std::sregex_iterator();
                 ++it)
                l.lines.push_back({(*it)[1].str(), {(*it)[3].str()}, section});
            section = "definitions";
        } else if (section == "transition" && std::regex_match(line, m, transition)) {
            l.lines.push_back({m[1].str() + "'", {m[2].str()}, section});
        } else if (section == "definitions" &&
                   (std::regex_match(line, m, node) || std::regex_match(line, m, equation))) {
            l.lines.push_back({m[1].str(), names_in(m[2].str()), section});
        } else {
            l.unreadable.push_back(line);
        }
    }
    return l;
}

// A name that a line reads and that no definition gives. The rules are
// the listing's conventions, applied to any module.
inline std::string explained(const listing& l, const definition& d, const std::string& name,
                             const std::set<std::string>& dataSignals)
{
    auto listed = [&](const char* head, const std::string& n) {
        auto it = l.heads.find(head);
        return it != l.heads.end() && std::find(it->second.begin(), it->second.end(), n) != it->second.end();
    };
    if (listed("inputs", name))
        return "input";
    if (listed("pres", name))
        return "memorised copy";
    if (listed("state", name))
        return "register";
    // The state line names a register by the under wire of its actual
    // signal; the definitions read the over wire.
    if (name.rfind("v_s_", 0) == 0 && listed("state", "v_v_" + name.substr(4)))
        return "register by its over wire";
    // Data signals are read like inputs and no line of the listing names
    // them.
    if (dataSignals.count(name) != 0)
        return "data signal";
    // A valued memorisation reads the value of its actual signal; values
    // are not among the definitions.
    if (d.section == "memorisations" && name.size() > 4 && name.compare(name.size() - 4, 4, "_val") == 0)
        return "value of a memorised signal";
    return "";
}

// The faults, one per line of text; empty when the listing holds.
inline std::vector<std::string> faults(const std::string& doc, const std::set<std::string>& dataSignals)
{
    listing l = read(doc);
    std::vector<std::string> found;
    for (const std::string& line : l.unreadable)
        found.push_back("unreadable line: " + line);
    if (l.heads.count("pres") == 0)
        found.push_back("no pres line");
    std::map<std::string, std::size_t> definedAt;
    for (std::size_t i = 0; i < l.lines.size(); ++i)
        if (!definedAt.emplace(l.lines[i].name, i).second)
            found.push_back("defined twice: " + l.lines[i].name);
    for (std::size_t i = 0; i < l.lines.size(); ++i) {
        const definition& d = l.lines[i];
        for (const std::string& name : d.reads) {
            auto at = definedAt.find(name);
            if (at != definedAt.end()) {
                // A node's slot is written before any line reads it.
                if (name.rfind("node_", 0) == 0 && at->second >= i)
                    found.push_back(name + " read by " + d.name + " before its line");
                continue;
            }
            if (explained(l, d, name, dataSignals).empty())
                found.push_back(name + " read by " + d.name + " (" + d.section + ") is never defined");
        }
    }
    return found;
}

// The declared names of the data signals of a compiled-module text.
inline std::set<std::string> data_signals(const std::string& zkc)
{
    std::set<std::string> names;
    std::smatch m;
    if (!std::regex_search(zkc, m, std::regex("data_signal:([^;]*);")))
        return names;
    std::string list = m[1].str();
    for (std::string::size_type at = 0; (at = list.find(':', at)) != std::string::npos; at += 3)
        list.replace(at, 1, " : ");
    std::istringstream in(list);
    std::string word;
    bool type = false;
    while (in >> word) {
        if (word == ":") {
            type = true;
            continue;
        }
        if (!type)
            names.insert(word);
        type = false;
    }
    return names;
}

} // namespace doc_check

#endif
