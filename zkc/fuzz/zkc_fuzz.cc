// Feeds arbitrary bytes to the road of tarn: scanner, parser and every
// semantic action down to the dated module, then finalisation and every
// target's generation. A run may succeed or end cleanly (a syntax error,
// or a fatal message that ends the program with status 1); it must not
// crash, hang or blow the stack.
//
// A fatal message or a direct exit of the lower layers returns here
// through fuzz_trap, leaving the half-read module behind.

#include "context/compilation.h"
#include "context/fuzz_trap.h"
#include "driver/tarn_run.h"
#include "model/module.h"
#include "signals/signal.h"
#include "signals/signal_manager.h"
#include "wood/Bddexpression.h"
#include "zkc/parse_supl.h"
#include "zkc/zkc_scanner.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

// Semantic values and modules are never freed by design (the process ends
// first), so leak reports say nothing here.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static std::fstream log("/dev/null", std::ios::out);
    static bool ready = [] {
        std::cerr.setstate(std::ios::failbit);  // messages are expected
        return true;
    }();
    (void)ready;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    // Left alive on purpose: a jump out of the read skips destructors.
    auto* parser = new class_zkc_parser();
    auto* lexer = new zkcFlexLexer(&in, &log);
    parser->scanner = lexer;
    std::string suffix;
    static std::ofstream sink("/dev/null");
    static const tarn_flags every_target = [] {
        tarn_flags f;
        f.valuedSimulFlag = f.docFlag = f.lustreFlag = f.esterelFlag = f.nusmvFlag = f.blifFlag = f.cFlag =
            f.vhdlFlag = f.alteraFlag = f.systemcFlag = f.csharpFlag = f.qsrFlag = 1;
        return f;
    }();
    fuzz_trap::run([&] {
        if (parser->parse(log, 1, suffix) == 0 && parser->module != nullptr) {
            Module::finalize(parser->module, 0);
            tarn_generate_every_target(parser->module, every_target, sink);
        }
    });
    // The program never frees a module; over millions of inputs the target
    // must, or it runs out of memory: the wood with its manager, the
    // signals and their references, the node lines. Lists and data
    // expressions are small and left.
    if (Module* m = parser->module) {
        delete m->getBddWood();
        m->getSignalManager()->getSignalRefs().for_each([](SignalRef* ref) { delete ref; });
        delete m->getSignalManager();
    }
    for (Signal* s : parser->signals)
        delete s;
    for (auto& entry : parser->sparse_nodes)
        delete entry.second;
    delete parser->bindings;
    delete parser;
    delete lexer;
    return 0;
}
