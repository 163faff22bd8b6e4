#include "source/bram.h"

#include "model/module.h"
#include "source/run.h"
#include "source/zk_parser.h"
#include "source/zk_scanner.h"

#include <algorithm>
#include <dirent.h>
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
    // Modules that a run names are found among the modules of the file,
    // then in the files of the "Run:" declarations, then in the compiled
    // modules beside the source.
    Run::FileModules = &parser->modules;
    std::string sourceDir = bram_directory_of(input);
    auto* compiled = new std::list<std::string>;
    for (Module* m : parser->modules)
        for (const RunDeclaration& d : Run::declarations(m))
            if (!d.file.empty())
                compiled->push_back(sourceDir + "/" + d.file + ".zkc");
    std::vector<std::string> beside;
    if (DIR* d = opendir(sourceDir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n.size() > 4 && n.compare(n.size() - 4, 4, ".zkc") == 0)
                beside.push_back(sourceDir + "/" + n);
        }
        closedir(d);
    }
    std::sort(beside.begin(), beside.end());
    for (const std::string& f : beside)
        if (std::find(compiled->begin(), compiled->end(), f) == compiled->end())
            compiled->push_back(f);
    Module::CompilationFileList = compiled;
    for (Module* m : parser->modules)
        compile_source_module(m);

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
