#include "source/bram.h"

#include "model/module.h"
#include "source/zk_parser.h"
#include "source/zk_scanner.h"

#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

std::string bram_directory_of(const std::string& path)
{
    std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

int bram_compile(const std::string& input, const std::string& outputDir, std::ostream& report)
{
    std::ifstream in(input);
    if (!in) {
        std::cerr << "bram: " << input << ": file not found" << std::endl;
        return 1;
    }
    auto* parser = new class_zk_parser();
    auto* lexer = new zkFlexLexer(&in, &std::cerr);
    parser->scanner = lexer;
    if (parser->parse() != 0)
        return 1;
    for (Module* m : parser->modules)
        m->compile();

    // Every text first, then the files.
    std::vector<std::pair<std::string, std::string>> files;
    std::string dir = outputDir.empty() ? bram_directory_of(input) : outputDir;
    for (Module* m : parser->modules) {
        std::ostringstream text;
        m->ZKC_put(text, 0, 0, 0);
        files.emplace_back((dir == "/" ? "" : dir) + "/" + m->getName() + ".zkc", text.str());
    }
    for (auto& [path, text] : files) {
        std::ofstream out(path);
        out << text;
        out.close();
        if (!out) {
            std::cerr << "bram: cannot write " << path << std::endl;
            return 1;
        }
        report << "generation of " << path << std::endl;
    }
    return 0;
}
