// bram: the ZK source compiler's command.
#include "driver/tarn_run.h"
#include "context/compilation.h"
#include "source/bram.h"
#include "source/source_errors.h"

#include <cstring>
#include <iostream>
#include <string>

static std::string bram_help_banner(const std::string& version)
{
    return "\n   BRAM : ZK source compiler, version " + version +
           "\n\n"
           "   syntax:\n\n"
           "         bram [-o <directory>] <filename>.zk\n\n"
           "      compiles every module of <filename>.zk and writes each as\n"
           "      <module>.zkc beside the source, or in <directory> with -o\n\n"
           "      -h : this help\n\n"
           "      -v : version of compiler\n\n";
}

int main(int argc, char** argv)
{
    std::string version = tarn_version();
    Compilation::forget_data_tables();

    std::string input, outputDir;
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        if (a == "-h") {
            std::cout << bram_help_banner(version) << std::flush;
            return 0;
        }
        if (a == "-v") {
            std::cout << "BRAM : ZK source compiler version  " << version << std::endl;
            return 0;
        }
        if (a == "-o" && i + 1 < argc) {
            outputDir = argv[++i];
            continue;
        }
        if (a.empty() || a[0] == '-' || !input.empty()) {
            std::cerr << "`" << a << "' unknown option: try bram -h to know the list ...\n\n" << std::flush;
            return 1;
        }
        input = a;
    }
    if (input.empty()) {
        std::cerr << "bram: no input file: try bram -h ...\n\n" << std::flush;
        return 1;
    }
    try {
        return bram_compile(input, outputDir, std::cout);
    } catch (const std::exception& e) {
        std::cerr << "Error: " << e.what() << std::endl;
        return 1;
    }
}
