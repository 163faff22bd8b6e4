#include "sim/vcd_writer.h"

vcd_writer::vcd_writer(std::ostream& out, const reaction_engine& engine) : out(out), engine(engine)
{
    out << "$date mosk simulation $end\n"
        << "$version mosk $end\n"
        << "$timescale 1 ns $end\n"
        << "$scope module " << engine.module_name() << " $end\n";
    for (const auto* group : {&engine.inputs(), &engine.outputs(), &engine.locals()})
        for (const reaction_engine::signal_view& s : *group) {
            variables.push_back({&s, false, code(variables.size()), ""});
            out << "$var wire 1 " << variables.back().code << " " << s.name << " $end\n";
            if (s.valued) {
                variables.push_back({&s, true, code(variables.size()), ""});
                out << "$var string 1 " << variables.back().code << " " << s.name << "_val $end\n";
            }
        }
    out << "$upscope $end\n"
        << "$enddefinitions $end\n";
}

std::string vcd_writer::code(std::size_t n)
{
    std::string c;
    do {
        c += static_cast<char>('!' + n % 94);
        n /= 94;
    } while (n-- > 0);
    return c;
}

std::string vcd_writer::token(const std::string& value)
{
    std::size_t b = value.find_first_not_of(" \t");
    if (b == std::string::npos || value == unknown_value)
        return "?";
    std::size_t e = value.find_last_not_of(" \t");
    std::string t = value.substr(b, e - b + 1);
    for (char& c : t)
        if (static_cast<unsigned char>(c) <= ' ' || c == 0x7f)
            c = '_';
    return t;
}

void vcd_writer::sample(long time)
{
    out << "#" << time << "\n";
    if (first)
        out << "$dumpvars\n";
    for (variable& v : variables) {
        std::string now = v.value ? "s" + token(engine.value_of(*v.signal)) + " "
                                  : std::string(engine.is_present(v.signal->var) ? "1" : "0");
        if (first || now != v.last)
            out << now << v.code << "\n";
        v.last = now;
    }
    if (first)
        out << "$end\n";
    first = false;
}

void vcd_writer::finish(long time) { out << "#" << time << "\n"; }
