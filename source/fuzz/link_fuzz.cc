// Feeds arbitrary bytes to bram as the compiled file of a module that a
// source runs: the bytes are written as ./sub.zkc, and a fixed source whose
// module runs "sub" is compiled as the command compiles it, so that the
// link reads the file back, checks its interface and takes its equations,
// registers, memorised signals and bindings into the caller. A run may
// succeed or end cleanly (a message and status 1); it must not crash, hang
// or blow the stack.
//
// The run looks the module up by the first line of the files beside the
// source and reads its number of reincarnation there, so the text goes
// through a file, sub.zkc in a directory of the target's own (the working
// directory stays, libFuzzer's corpus paths may be relative). An input that starts with a digit
// from 0 to 3 chooses the source by it (the digit is not part of the
// text); any other input is the text whole, compiled with source 0.
//
// A fatal message or a direct exit of the lower layers returns here
// through fuzz_trap; the exceptions of the source compiler are caught as
// the command catches them.

#include "context/compilation.h"
#include "context/fuzz_trap.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "source/run.h"
#include "source/zk_parser.h"
#include "source/zk_scanner.h"
#include "wood/Bddexpression.h"
#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <list>
#include <string>
#include <unistd.h>

// Modules and trees are never freed by design (the process ends first), so
// leak reports say nothing here.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

namespace {

std::string private_dir;

// Every source declares what the seeds of link_corpus/ use: a data part
// and the signals i, r, o, p, v and w.
const char* const data_part = "data:\n  Type: integer;\n  Method: integer plus(integer, integer);\n"
                              "  Constant: integer one := 1;\nend data\n";
const char* const sources[] = {
    // One call.
    "module top: Input: i, r, v : integer; Output: o, p, w : integer; run sub end\n",
    // Two calls, the second renamed: two instances of one module read once.
    "module top: Input: i, r, j, v : integer; Output: o, p, q, w : integer;\n"
    " run sub || run sub [j\\i, q\\o]\nend\n",
    // A call in an automaton state that a strong transition preempts.
    "module top: Input: i, r, k, v : integer; Output: o, p, d, w : integer;\n"
    " automaton state: A run sub; state: B / d; transition: initial-> A; A [k] strong-> B; B [k] -> A;\nend\n",
    // A call in sequence inside a loop: its number of reincarnation counts.
    "module top: Input: i, r, k, v : integer; Output: o, p, d, w : integer;\n"
    " loop { weak abort { run sub >> emit d } when k >> pause }\nend\n",
};

// Frees the big parts of a module: its wood with its manager and its
// signal references. Over millions of inputs the target must, or it runs
// out of memory.
void release(Module* m)
{
    delete m->getBddWood();
    m->getSignalManager()->getSignalRefs().for_each([](SignalRef* ref) { delete ref; });
    delete m->getSignalManager();
}

// Frees what a parser of a compiled text made: its module as above, its
// signals, node lines and bindings, and its scanner.
void release(class_zkc_parser* parser)
{
    if (parser->module != nullptr)
        release(parser->module);
    for (Signal* s : parser->signals)
        delete s;
    for (auto& entry : parser->sparse_nodes)
        delete entry.second;
    delete parser->bindings;
    delete parser->scanner;
    delete parser;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static bool ready = [] {
        std::cerr.setstate(std::ios::failbit);  // messages are expected
        return true;
    }();
    (void)ready;
    // The source's directory, and the one compilation file beside it; both
    // go when the process ends.
    static std::list<std::string> beside = [] {
        const char* tmp = std::getenv("TMPDIR");
        std::string dir = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/link_fuzz.XXXXXX";
        if (mkdtemp(dir.data()) == nullptr) {
            std::perror("link_fuzz: private directory");
            __real_exit(2);
        }
        private_dir = dir;
        std::atexit([] {
            std::remove((private_dir + "/sub.zkc").c_str());
            rmdir(private_dir.c_str());
        });
        return std::list<std::string>{dir + "/sub.zkc"};
    }();
    std::string text(reinterpret_cast<const char*>(data), size);
    std::size_t choice = 0;
    if (!text.empty() && text[0] >= '0' && text[0] <= '3') {
        choice = static_cast<std::size_t>(text[0] - '0');
        text.erase(0, 1);
    }
    {
        std::ofstream file(beside.front(), std::ios::binary | std::ios::trunc);
        file << text;
    }
    // Each input starts as the command does: empty data tables, the file
    // beside the source as the one compilation file, nothing linked yet.
    Compilation::forget_data_tables();
    Module::CompilationFileList = &beside;
    std::istringstream in(std::string(data_part) + sources[choice]);
    std::ostringstream echo;
    // Left alive on purpose: a jump out of the run skips destructors.
    auto* parser = new class_zk_parser();
    auto* lexer = new zkFlexLexer(&in, &echo);
    parser->scanner = lexer;
    fuzz_trap::run([&] {
        try {
            if (parser->parse() == 0) {
                Run::FileModules = &parser->modules;
                for (Module* m : parser->modules)
                    compile_source_module(m);
                for (Module* m : parser->modules) {
                    std::ostringstream out;
                    m->ZKC_put(out, 0, 0, 0);
                }
            }
        } catch (const std::exception&) {
        }
    });
    for (class_zkc_parser* reader : Run::forget())
        release(reader);
    for (Module* m : parser->modules)
        release(m);
    delete parser;
    delete lexer;
    return 0;
}
