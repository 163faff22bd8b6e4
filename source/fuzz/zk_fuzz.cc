// Feeds arbitrary bytes to the ZK source compiler: scanner, parser, the
// compile of every module read and the writing of its compiled form. A
// run may succeed or end cleanly (a syntax error, or a fatal message that
// ends the program with status 1); it must not crash, hang or blow the
// stack.
//
// A fatal message or a direct exit of the lower layers returns here
// through fuzz_trap; the exceptions of the source compiler are caught as
// the command catches them.

#include "data/data.h"
#include "context/compilation.h"
#include "context/fuzz_trap.h"
#include "model/module.h"
#include "signals/signal_manager.h"
#include "source/run.h"
#include "source/zk_parser.h"
#include "source/zk_scanner.h"
#include "wood/Bddexpression.h"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <exception>
#include <string>

// Modules and trees are never freed by design (the process ends first), so
// leak reports say nothing here.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static bool ready = [] {
        std::cerr.setstate(std::ios::failbit);  // messages are expected
        return true;
    }();
    (void)ready;
    // Each input starts with empty data tables, as the command does.
    Compilation::forget_data_tables();
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    std::ostringstream echo;
    // Left alive on purpose: a jump out of the run skips destructors.
    auto* parser = new class_zk_parser();
    auto* lexer = new zkFlexLexer(&in, &echo);
    parser->scanner = lexer;
    fuzz_trap::run([&] {
        try {
            if (parser->parse() == 0)
                for (Module* m : parser->modules) {
                    m->compile();
                    std::ostringstream out;
                    m->ZKC_put(out, 0, 0, 0);
                }
        } catch (const std::exception&) {
        }
    });
    // No "Run:" declaration stays for the next input, whose modules may be
    // where these were.
    Run::forget();
    // Over millions of inputs the target must free the big parts: each
    // module's wood with its manager and its signal references.
    for (Module* m : parser->modules) {
        delete m->getBddWood();
        m->getSignalManager()->getSignalRefs().for_each([](SignalRef* ref) { delete ref; });
        delete m->getSignalManager();
    }
    delete parser;
    delete lexer;
    return 0;
}
