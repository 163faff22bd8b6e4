// Definition and use checks of the NuSMV and Lustre texts: every name read
// is defined, every name defined is defined once, registers have their
// init and next, the Lustre node has the module's ports in order. A name
// that the generated text leaves read and undefined on purpose is allowed
// only by one of the rules named below, each by what the name is.
#ifndef TARN_TESTS_TARGETS_SMV_LUSTRE_CHECK_H
#define TARN_TESTS_TARGETS_SMV_LUSTRE_CHECK_H

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// What the checks need of the compiled-module file.
struct zkc_facts {
    std::string module;
    struct port {
        std::string name, type; // type empty for a pure signal
    };
    std::vector<port> inputs, outputs;
    std::vector<std::string> data_signals;
    std::set<std::string> locals, pre_signals, types, methods, external_constants;
    std::set<std::string> abstract_signals; // signals with an abstract equation
    struct reg {
        std::string next, actual;
        bool initially_true;
    };
    std::vector<reg> registers;
};

// Rules of the generated text under which a name is read and not defined,
// or defined and not declared.
namespace smv_lustre_rule {
// NuSMV
inline const char* const memorised = "memorised pairs are not modelled: the pre variable is read, never defined";
inline const char* const abstract = "an abstract equation is left out: its variable is read, never defined";
// Lustre
inline const char* const data_signal = "a data signal's variable is a local that nothing defines";
inline const char* const input_clock = "the clock of a binding is assigned even when it is an input";
inline const char* const output_value = "a valued output that clocks no binding has no value equation";
inline const char* const output_under = "an output's under wire has its equation and no declaration";
inline const char* const last_node = "the last node id of the table is never declared";
inline const char* const method = "a method is the user's, called and never declared";
inline const char* const zero = "a type's zero value is the user's";
inline const char* const external = "a constant without value is the user's";
} // namespace smv_lustre_rule

struct check_result {
    std::vector<std::string> faults;
    std::set<std::string> rules; // the rules that had to be applied
};

namespace smv_lustre_check_detail {

inline bool word_char(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '@';
}

// The names of a right member, with for each whether "(" follows it.
inline std::vector<std::pair<std::string, bool>> words(const std::string& text)
{
    std::vector<std::pair<std::string, bool>> result;
    for (size_t i = 0; i < text.size();) {
        if (!word_char(text[i])) {
            i++;
            continue;
        }
        size_t j = i;
        while (j < text.size() && word_char(text[j]))
            j++;
        size_t k = j;
        while (k < text.size() && text[k] == ' ')
            k++;
        if (!std::isdigit(static_cast<unsigned char>(text[i])))
            result.push_back({text.substr(i, j - i), k < text.size() && text[k] == '('});
        i = j;
    }
    return result;
}

inline std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        result.push_back(line);
    return result;
}

inline bool starts(const std::string& s, const std::string& p) { return s.compare(0, p.size(), p) == 0; }
inline bool ends(const std::string& s, const std::string& p)
{
    return s.size() >= p.size() && s.compare(s.size() - p.size(), p.size(), p) == 0;
}

inline std::vector<std::string> split(const std::string& s, const std::string& sep)
{
    std::vector<std::string> result;
    if (s.empty())
        return result;
    size_t at = 0;
    for (size_t next; (next = s.find(sep, at)) != std::string::npos; at = next + sep.size())
        result.push_back(s.substr(at, next - at));
    result.push_back(s.substr(at));
    return result;
}

// The name that a finalised module gives the over and under wires of a
// declared signal: ports, data and pre signals keep theirs.
inline std::string over_name(const zkc_facts& f, const std::string& s)
{
    return f.locals.count(s) != 0 ? "v_s_" + s : s;
}

} // namespace smv_lustre_check_detail

// ---------------------------------------------------------------- zkc facts

inline zkc_facts read_zkc_facts(const std::string& text)
{
    using namespace smv_lustre_check_detail;
    std::vector<std::string> t;
    for (size_t i = 0; i < text.size();) {
        char c = text[i];
        if (starts(text.substr(i, 2), "//")) {
            i = text.find('\n', i);
            if (i == std::string::npos)
                break;
        } else if (std::isspace(static_cast<unsigned char>(c))) {
            i++;
        } else if (c == '"') {
            size_t j = text.find('"', i + 1);
            t.push_back(text.substr(i, j - i + 1));
            i = j + 1;
        } else if (word_char(c) || c == '-' || c == '%' || c == '$') {
            size_t j = i + 1;
            while (j < text.size() && (word_char(text[j]) || text[j] == '%'))
                j++;
            if (j < text.size() && text[j] == ':' && !std::isdigit(static_cast<unsigned char>(c)) && c != '-' &&
                (j + 1 >= text.size() || text[j + 1] != '=')) {
                // "input:" and kin; a declaration writes " : ".
                t.push_back(text.substr(i, j - i + 1));
                i = j + 1;
            } else {
                t.push_back(text.substr(i, j - i));
                i = j;
            }
        } else {
            t.push_back(std::string(1, c));
            i++;
        }
    }
    zkc_facts f;
    std::vector<std::string> numbering; // signal per pair of variables
    size_t i = 0;
    auto at = [&](size_t k) { return k < t.size() ? t[k] : std::string(); };
    auto keyword = [&](size_t k) { return !at(k).empty() && at(k).back() == ':' && at(k).size() > 1; };
    auto declarations = [&](std::vector<zkc_facts::port>* ports) {
        std::vector<zkc_facts::port> list;
        for (i++; i < t.size() && t[i] != ";"; i++) {
            zkc_facts::port p{t[i], ""};
            if (at(i + 1) == ":") {
                p.type = at(i + 2);
                i += 2;
            }
            list.push_back(p);
            numbering.push_back(p.name);
        }
        i++;
        if (ports != nullptr)
            *ports = list;
        return list;
    };
    while (i < t.size()) {
        const std::string& k = t[i];
        if (k == "module:") {
            f.module = at(i + 1);
            i += 4;
        } else if (k == "input:") {
            declarations(&f.inputs);
        } else if (k == "output:") {
            declarations(&f.outputs);
        } else if (k == "data_signal:") {
            for (const auto& p : declarations(nullptr))
                f.data_signals.push_back(p.name);
        } else if (k == "local:") {
            for (const auto& p : declarations(nullptr))
                f.locals.insert(p.name);
        } else if (k == "register:") {
            for (i++; !keyword(i) && i < t.size(); i += 4)
                f.registers.push_back({at(i), at(i + 1), at(i + 2) == "1"});
        } else if (k == "memorized:") {
            for (i++; !keyword(i) && i < t.size(); i++) {
                f.pre_signals.insert(t[i]);
                bool known = false;
                for (const auto& s : numbering)
                    known = known || s == t[i];
                if (!known)
                    numbering.push_back(t[i]);
                while (i < t.size() && t[i] != ";")
                    i++;
            }
        } else if (k == "expressions:") {
            // "early late var : root , link , ( ... )"
            for (i++; at(i) != "end:" && i < t.size();) {
                long var = std::stol(at(i + 2));
                if (at(i + 4) == "-3" && var / 2 < static_cast<long>(numbering.size()))
                    f.abstract_signals.insert(numbering[var / 2]);
                while (i < t.size() && t[i] != ")")
                    i++;
                i++;
            }
        } else if (k == "type:") {
            for (i++; !keyword(i) && i < t.size(); i += 2)
                f.types.insert(t[i]);
        } else if (k == "method:") {
            for (i++; !keyword(i) && i < t.size(); i++) {
                f.methods.insert(at(i + 1));
                while (i < t.size() && t[i] != ";")
                    i++;
            }
        } else if (k == "constant:") {
            for (i++; !keyword(i) && i < t.size(); i++) {
                std::string name = at(i + 1);
                bool valued = false;
                for (; i < t.size() && t[i] != ";"; i++)
                    valued = valued || t[i][0] == '"';
                if (!valued)
                    f.external_constants.insert(name);
            }
        } else {
            i++;
        }
    }
    return f;
}

// ------------------------------------------------------------------- NuSMV

inline check_result check_nusmv(const std::string& text, const zkc_facts& f)
{
    using namespace smv_lustre_check_detail;
    check_result r;
    std::vector<std::string> ls = lines(text);
    size_t i = 0;
    auto line = [&]() { return i < ls.size() ? ls[i] : std::string("<end>"); };
    auto expect = [&](const std::string& wanted) {
        if (line() != wanted)
            r.faults.push_back("line " + std::to_string(i + 1) + ": \"" + line() + "\" where \"" + wanted + "\"");
        i++;
    };
    // A line "<lead><name><sign><rest><end>"; the name and the rest out.
    auto shaped = [&](const std::string& lead, const std::string& sign, const std::string& end, std::string& name,
                      std::string& rest) {
        const std::string& s = line();
        size_t at = s.find(sign, lead.size());
        if (!starts(s, lead) || at == std::string::npos || !ends(s, end))
            return false;
        name = s.substr(lead.size(), at - lead.size());
        rest = s.substr(at + sign.size(), s.size() - at - sign.size() - end.size());
        std::string bare = ends(name, " ") ? name.substr(0, name.size() - 1) : name;
        return !bare.empty() && words(bare).size() == 1 && words(bare)[0].first == bare;
    };

    std::string params;
    {
        std::string head = "MODULE " + f.module + "(";
        if (!starts(line(), head) || !ends(line(), ")"))
            r.faults.push_back("module line: " + line());
        else
            params = line().substr(head.size(), line().size() - head.size() - 1);
        i++;
    }
    std::vector<std::string> wanted;
    for (const auto& p : f.inputs)
        wanted.push_back(p.name);
    for (const auto& d : f.data_signals)
        wanted.push_back(d);
    std::vector<std::string> items = split(params, ", ");
    if (items != wanted)
        r.faults.push_back("parameters (" + params + ") are not the inputs and data signals");

    std::map<std::string, int> defined;
    for (const auto& p : items)
        defined[p]++;
    std::map<std::string, std::string> init, next;
    std::vector<std::pair<std::string, std::string>> reads; // (name read, where)
    std::string name, rest;

    expect("VAR");
    std::vector<std::string> state;
    for (; shaped("", ": ", ";", name, rest) && rest == "boolean"; i++) {
        state.push_back(name);
        defined[name]++;
    }
    expect("ASSIGN");
    for (; shaped("init(", ") := ", ";", name, rest); i++) {
        if (rest != "FALSE" && rest != " TRUE")
            r.faults.push_back("init of " + name + ": " + rest);
        if (init.count(name) != 0)
            r.faults.push_back("second init of " + name);
        init[name] = rest;
    }
    expect("DEFINE");
    for (; shaped("   ", ":= ", ";", name, rest); i++) {
        // A node line has no blank before ":=", an equation line has one.
        bool node = starts(name, "node_");
        if (node == ends(name, " ")) {
            r.faults.push_back("definition line: " + line());
            continue;
        }
        if (!node)
            name.pop_back();
        defined[name]++;
        for (const auto& w : words(rest))
            if (w.first != "TRUE")
                reads.push_back({w.first, name});
    }
    expect("ASSIGN");
    for (; shaped("next(", ") := ", ";", name, rest); i++) {
        if (next.count(name) != 0)
            r.faults.push_back("second next of " + name);
        next[name] = rest;
        reads.push_back({rest, "next(" + name + ")"});
    }
    expect("");
    expect("");
    expect("MODULE  main");
    expect("VAR");
    for (const auto& p : items)
        expect(p + ": boolean;");
    expect("m" + f.module + ": " + f.module + "(" + params + ");");
    expect("ASSIGN");
    for (const auto& p : items)
        expect(p + ":= {FALSE, TRUE};");
    if (i != ls.size())
        r.faults.push_back("text after the main module: " + line());

    for (const auto& d : defined)
        if (d.second > 1)
            r.faults.push_back(d.first + " defined " + std::to_string(d.second) + " times");
    for (const auto& read : reads) {
        if (defined.count(read.first) != 0)
            continue;
        bool pre = f.pre_signals.count(read.first) != 0;
        bool abstract = false;
        for (const auto& s : f.abstract_signals)
            abstract = abstract || read.first == over_name(f, s) || read.first == "v_v_" + s;
        if (pre)
            r.rules.insert(smv_lustre_rule::memorised);
        else if (abstract)
            r.rules.insert(smv_lustre_rule::abstract);
        else
            r.faults.push_back(read.first + " read by " + read.second + " and never defined");
    }

    // Registers: those of the file that finalisation kept, and the boot
    // register; each with its init value and its next variable.
    std::map<std::string, std::pair<std::string, std::string>> registers; // actual: init, next
    for (const auto& reg : f.registers)
        registers[over_name(f, reg.actual)] = {reg.initially_true ? " TRUE" : "FALSE", over_name(f, reg.next)};
    registers["v_s_" + f.module + "_boot"] = {" TRUE", "v_s_" + f.module + "bootplus"};
    if (std::find(state.begin(), state.end(), "v_s_" + f.module + "_boot") == state.end())
        r.faults.push_back("no boot register");
    for (const auto& s : state) {
        auto reg = registers.find(s);
        if (reg == registers.end())
            r.faults.push_back(s + " is no register");
        else if (init[s] != reg->second.first || next[s] != reg->second.second)
            r.faults.push_back("register " + s + ": init" + init[s] + ", next " + next[s]);
    }
    if (init.size() != state.size() || next.size() != state.size())
        r.faults.push_back("init or next of a name that is no register");
    return r;
}

// ------------------------------------------------------------------ Lustre

inline check_result check_lustre(const std::string& text, const zkc_facts& f)
{
    using namespace smv_lustre_check_detail;
    check_result r;
    std::vector<std::string> ls = lines(text);
    size_t i = 0;
    auto line = [&]() { return i < ls.size() ? ls[i] : std::string("<end>"); };

    std::map<std::string, int> declared;
    std::set<std::string> inputs, outputs, locals;
    for (; starts(line(), "const  "); i++) {
        std::string name = line().substr(7, line().find(" = ") - 7);
        declared[name]++;
    }
    if (i > 0 && line().empty())
        i++;

    // The ports, in the module's order.
    auto ports = [&](const std::vector<zkc_facts::port>& list, bool input) {
        std::vector<std::string> result;
        for (const auto& p : list) {
            result.push_back(p.name + ": bool");
            if (!p.type.empty())
                result.push_back(p.name + "_val: " + p.type);
        }
        if (input && list.empty())
            result.push_back("useless : bool");
        return result;
    };
    auto portList = [&](const std::string& lead, const std::string& end, bool input) {
        const std::string& s = line();
        std::vector<std::string> got;
        if (!starts(s, lead) || !ends(s, end))
            r.faults.push_back("line " + std::to_string(i + 1) + ": " + s);
        else
            got = split(s.substr(lead.size(), s.size() - lead.size() - end.size()), "; ");
        if (got != ports(input ? f.inputs : f.outputs, input))
            r.faults.push_back(std::string(input ? "inputs" : "outputs") + " of the node are not the module's: " + s);
        for (const auto& p : got) {
            std::string name = p.substr(0, p.find(':'));
            if (name == "useless ")
                continue;
            declared[name]++;
            (input ? inputs : outputs).insert(name);
        }
        i++;
    };
    portList("node " + f.module + "(", ")", true);
    portList("     returns (", ");", false);
    if (line() != "" || (i + 1 < ls.size() && ls[i + 1] != "var"))
        r.faults.push_back("no var section after the ports");
    i += 2;

    for (; i < ls.size() && ls[i] != "let"; i++) {
        std::string s = line();
        if (!starts(s, "  ") || (!ends(s, ",") && !ends(s, ";"))) {
            r.faults.push_back("declaration line: " + s);
            continue;
        }
        std::string name = s.substr(2, s.find_first_of(",:") - 2);
        declared[name]++;
        locals.insert(name);
    }

    // The body: statements up to each ";", the comment line left out.
    std::string body;
    for (i++; i < ls.size() && ls[i] != "tel"; i++)
        if (ls[i] != "  -- outputs computing")
            body += ls[i] + "\n";
    if (i + 1 != ls.size())
        r.faults.push_back("no \"tel\" closing the text");

    std::map<std::string, int> defined;
    std::vector<std::pair<std::string, bool>> reads;
    for (const std::string& statement : split(body, ";")) {
        size_t sign = statement.find('=');
        if (sign == std::string::npos) {
            if (statement.find_first_not_of(" \n") != std::string::npos)
                r.faults.push_back("statement: " + statement);
            continue;
        }
        std::vector<std::pair<std::string, bool>> lhs = words(statement.substr(0, sign));
        if (lhs.size() != 1) {
            r.faults.push_back("left member of: " + statement);
            continue;
        }
        defined[lhs[0].first]++;
        for (const auto& w : words(statement.substr(sign + 1)))
            reads.push_back(w);
    }

    std::string node = f.module + "_node_";
    long lastDeclared = -1;
    for (const auto& d : declared) {
        if (d.second > 1)
            r.faults.push_back(d.first + " declared " + std::to_string(d.second) + " times");
        if (starts(d.first, node))
            lastDeclared = std::max(lastDeclared, std::stol(d.first.substr(node.size())));
    }
    int undeclaredNodes = 0;
    for (const auto& d : defined) {
        const std::string& n = d.first;
        if (d.second > 1)
            r.faults.push_back(n + " defined " + std::to_string(d.second) + " times");
        if (inputs.count(n) != 0) {
            if (ends(n, "_val"))
                r.rules.insert(smv_lustre_rule::input_clock);
            else
                r.faults.push_back("input " + n + " defined");
        } else if (declared.count(n) == 0) {
            bool outputUnder = false;
            for (const auto& p : f.outputs)
                outputUnder = outputUnder || n == "v_v_" + p.name;
            if (outputUnder)
                r.rules.insert(smv_lustre_rule::output_under);
            else if (starts(n, node) && std::stol(n.substr(node.size())) > lastDeclared && ++undeclaredNodes == 1)
                r.rules.insert(smv_lustre_rule::last_node);
            else
                r.faults.push_back(n + " defined and not declared");
        }
    }
    for (const std::set<std::string>* side : {&outputs, &locals})
        for (const auto& n : *side) {
            if (defined.count(n) != 0)
                continue;
            bool dataSignal = std::find(f.data_signals.begin(), f.data_signals.end(), n) != f.data_signals.end();
            if (side == &outputs && ends(n, "_val"))
                r.rules.insert(smv_lustre_rule::output_value);
            else if (side == &locals && dataSignal)
                r.rules.insert(smv_lustre_rule::data_signal);
            else
                r.faults.push_back(n + " declared and never defined");
        }
    static const std::set<std::string> keywords = {"not", "and", "or", "if", "then", "else", "pre", "true", "false"};
    for (const auto& w : reads) {
        const std::string& n = w.first;
        if (keywords.count(n) != 0 || declared.count(n) != 0 || (starts(n, node) && defined.count(n) != 0))
            continue;
        if (w.second && f.methods.count(n) != 0)
            r.rules.insert(smv_lustre_rule::method);
        else if (starts(n, "zero_") && f.types.count(n.substr(5)) != 0)
            r.rules.insert(smv_lustre_rule::zero);
        else if (f.external_constants.count(n) != 0)
            r.rules.insert(smv_lustre_rule::external);
        else
            r.faults.push_back(n + " read and never declared");
    }
    return r;
}

#endif
