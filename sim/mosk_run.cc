#include "sim/mosk_run.h"

#include "context/compilation.h"
#include "model/module.h"
#include "sim/data_client.h"
#include "sim/vcd_writer.h"
#include "zkc/zkc_input.h"

#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sys/stat.h>

namespace {

// How long the connexion to the data server may take.
constexpr int connect_wait_ms = 5000;

bool is_number(const std::string& s)
{
    return !s.empty() && s.size() <= 5 && s.find_first_not_of("0123456789") == std::string::npos;
}

} // namespace

std::string mosk_usage()
{
    return "usage: mosk <module>.zkc [<host> <port>] [-input <reactions>] [-vcd <dump>.vcd] [-server <host>:<port>]\n"
           "       mosk -h\n"
           "\n"
           "Reads and finalises the module as tarn does, then runs one reaction per line\n"
           "of the reactions (standard input by default): the inputs present, separated\n"
           "by blanks, a valued one with its value as x(12); an empty line is a reaction\n"
           "without input. Prints, per reaction, the outputs present, valued ones with\n"
           "their value (? when not known).\n"
           "\n"
           "  -input <file>          read the reactions from this file\n"
           "  -vcd <file>            write a value change dump, one time step per reaction\n"
           "  -server <host>:<port>  evaluate data through this data server\n"
           "  <host> <port>          the same, as the data server starts mosk\n";
}

bool mosk_read_options(int argc, char** argv, mosk_options& o, std::string& error)
{
    std::vector<std::string> plain;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](std::string& into) {
            if (i + 1 >= argc) {
                error = "option " + a + " needs a value";
                return false;
            }
            into = argv[++i];
            return true;
        };
        if (a == "-input" || a == "-i") {
            if (!value(o.reactions_file))
                return false;
        } else if (a == "-vcd") {
            if (!value(o.vcd_file))
                return false;
        } else if (a == "-server") {
            std::string where;
            if (!value(where))
                return false;
            std::size_t colon = where.rfind(':');
            if (colon == std::string::npos || colon == 0 || !is_number(where.substr(colon + 1))) {
                error = "-server wants <host>:<port>, not '" + where + "'";
                return false;
            }
            o.host = where.substr(0, colon);
            o.port = where.substr(colon + 1);
        } else if (a.size() > 1 && a[0] == '-' && !plain.empty()) {
            error = "unknown option '" + a + "'";
            return false;
        } else {
            plain.push_back(a);
        }
    }
    if (plain.empty()) {
        error = "no module given";
        return false;
    }
    if (plain.size() != 1 && plain.size() != 3) {
        error = "a module, then a host and a port or nothing: '" + plain.back() + "' is one word too many";
        return false;
    }
    o.module_file = plain[0];
    if (plain.size() == 3) {
        if (!is_number(plain[2])) {
            error = "the port '" + plain[2] + "' is not a number";
            return false;
        }
        o.host = plain[1];
        o.port = plain[2];
    }
    return true;
}

std::string mosk_output_line(const reaction_engine& engine)
{
    std::string line;
    for (const reaction_engine::signal_view& s : engine.outputs()) {
        if (!engine.is_present(s.var))
            continue;
        if (!line.empty())
            line += ' ';
        line += s.name;
        if (s.valued)
            line += "(" + vcd_writer::token(engine.value_of(s)) + ")";
    }
    return line;
}

int mosk_simulate(reaction_engine& engine, std::istream& in, const std::string& source, std::ostream& out,
                  std::ostream& err, std::ostream* vcd, bool flush_each_line)
{
    std::vector<std::pair<std::string, bool>> ports;
    for (const reaction_engine::signal_view& s : engine.inputs())
        ports.push_back({s.name, s.valued});
    reaction_line_reader reader(engine.module_name(), ports);
    std::unique_ptr<vcd_writer> dump;
    if (vcd != nullptr)
        dump = std::make_unique<vcd_writer>(*vcd, engine);

    std::vector<bool> present;
    std::vector<std::string> values;
    std::string line, error;
    long number = 0;
    while (std::getline(in, line)) {
        ++number;
        if (!reader.read(line, present, values, error)) {
            out.flush();
            err << "mosk: " << source << ":" << number << ": " << error << std::endl;
            return 1;
        }
        engine.react(present, values);
        out << mosk_output_line(engine) << '\n';
        if (flush_each_line)
            out.flush();
        if (dump)
            dump->sample(number - 1);
    }
    if (dump)
        dump->finish(number);
    out.flush();
    return 0;
}

int mosk_main(int argc, char** argv)
{
    if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::cout << mosk_usage();
        return 0;
    }
    mosk_options options;
    std::string error;
    if (!mosk_read_options(argc, argv, options, error)) {
        std::cerr << "mosk: " << error << "\n" << mosk_usage();
        return 1;
    }

    // Read and finalised as tarn does it: the same file names, the same
    // reader, the same closing of the module.
    Compilation::forget_data_tables();
    tarn_paths paths = tarn_split_input_name(options.module_file);
    std::string suffix;
    bool parsed_ok = false;
    Module* module = parse(paths.path("/", ".zkc"), suffix, &parsed_ok);
    if (!parsed_ok || module == nullptr)
        return 1;
    Module::finalize(module, 0);

    reaction_engine engine(module);
    data_client client;
    if (!options.host.empty()) {
        if (!client.connect(options.host, options.port, connect_wait_ms, error)) {
            std::cerr << "mosk: " << error << std::endl;
            return 1;
        }
        engine.set_data_source([&client](const std::string& request) { return client.ask(request); });
        engine.reset();
    }

    std::ifstream file;
    std::istream* in = &std::cin;
    std::string source = "<stdin>";
    if (!options.reactions_file.empty()) {
        file.open(options.reactions_file);
        if (!file.is_open()) {
            std::cerr << "mosk: cannot read the reactions " << options.reactions_file << std::endl;
            return 1;
        }
        in = &file;
        source = options.reactions_file;
    }
    std::ofstream vcd;
    if (!options.vcd_file.empty()) {
        vcd.open(options.vcd_file, std::ios::out | std::ios::trunc);
        if (!vcd.is_open()) {
            std::cerr << "mosk: cannot write the dump " << options.vcd_file << std::endl;
            return 1;
        }
    }
    // A reader on the other end of a pipe or a terminal sees each reaction
    // as it happens; a file of reactions is answered in one stream.
    struct stat st;
    bool batch = !options.reactions_file.empty() && ::stat(options.reactions_file.c_str(), &st) == 0 &&
                 S_ISREG(st.st_mode);
    int status = mosk_simulate(engine, *in, source, std::cout, std::cerr, vcd.is_open() ? &vcd : nullptr, !batch);
    if (vcd.is_open()) {
        vcd.close();
        if (!vcd) {
            std::cerr << "mosk: cannot write the dump " << options.vcd_file << std::endl;
            return 1;
        }
    }
    return status;
}
