// The source compiler's doors to the compiled-module reader: a module is
// found among the compilation files by the first line of each, then read
// with the lists of inputs and outputs it may declare.

#include "context/compilation.h"
#include "model/module.h"
#include "zkc/parse_supl.h"
#include "zkc/zkc_input.h"
#include "zkc/zkc_scanner.h"

#include "support/async_file.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

Module* Compilation::zkc_parse(std::string& file, std::string& hierarchy, std::list<std::string>* inputs,
                               std::list<std::string>* outputs)
{
    // Like the parser and the scanner, the module lives until the end.
    auto* parser = new class_zkc_parser();
    parser->authorised_inputs = inputs;
    parser->authorised_outputs = outputs;
    std::string log_name = file + ".log";
    std::ifstream input(file);
    async_ofstream log(log_name);
    Module* result = nullptr;
    if (input.good() && zkc_is_readable_file(file)) {
        zkc_log_keeper keeper(log);
        parser->scanner = new zkcFlexLexer(&input, &log);
        std::string suffix;
        if (parser->parse(log, 1, suffix, hierarchy) != 0)
            std::cerr << "ERROR during loading file : " << file << std::endl;
        else
            result = parser->module;
        input.close();
    } else {
        std::cerr << "File: " << file << " does not exist" << std::endl;
    }
    log.close();
    return result;
}

Module* Compilation::createModuleFromZkcCode(std::string name, std::list<std::string>* inputs,
                                             std::list<std::string>* outputs)
{
    std::string file = getZkcFileName(name);
    return zkc_parse(file, *EmptyString, inputs, outputs);
}

// The first line of the first compilation file that names `module`, and
// whether one did.
static bool first_line_naming(const std::string& module, std::string& file, std::string& line)
{
    if (Module::CompilationFileList == nullptr)
        return false;
    for (const std::string& candidate : *Module::CompilationFileList) {
        std::ifstream in(candidate);
        char buffer[256] = {0};
        in.getline(buffer, sizeof buffer);
        std::string first(buffer);
        if (first.find(module) != std::string::npos) {
            file = candidate;
            line = first;
            return true;
        }
    }
    return false;
}

std::string Compilation::getZkcFileName(std::string module)
{
    std::string file, line;
    return first_line_naming(module, file, line) ? file : std::string();
}

int Compilation::getReincarnateFromZkcFile(std::string module)
{
    std::string file, line;
    if (!first_line_naming(module, file, line))
        return -1;
    std::string rest = line.substr(line.find(module) + module.size());
    return static_cast<int>(std::strtol(rest.c_str(), nullptr, 10));
}
