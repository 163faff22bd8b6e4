// Feeds arbitrary bytes to the ZK source compiler: scanner, parser, the
// compile of every module read and the writing of its compiled form. A
// run may succeed or end cleanly (a syntax error, or a fatal message that
// ends the program with status 1); it must not crash, hang or blow the
// stack.
//
// Compilation's fatal path is turned into an exception through
// Compilation::FatalHook; the few direct calls of exit in the lower layers
// are caught by wrapping exit at link time (-Wl,--wrap=exit) and jumping
// back here. The exceptions of the source compiler are caught as the
// command catches them.

#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal_manager.h"
#include "source/zk_parser.h"
#include "source/zk_scanner.h"
#include "wood/Bddexpression.h"

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

// Modules and trees are never freed by design (the process ends first), so
// leak reports say nothing here.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

namespace {

struct fatal_end {};

bool running = false;
std::jmp_buf exit_jump;

void throw_on_fatal(const std::string&) { throw fatal_end{}; }

}  // namespace

extern "C" void __real_exit(int status);

extern "C" void __wrap_exit(int status)
{
    if (running)
        std::longjmp(exit_jump, 1);
    __real_exit(status);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static bool ready = [] {
        std::cerr.setstate(std::ios::failbit);  // messages are expected
        Compilation::FatalHook = throw_on_fatal;
        return true;
    }();
    (void)ready;
    // Each input starts with empty data tables, as the command does.
    Compilation::GDataTypeTable = nullptr;
    Compilation::GDataMethodTable = nullptr;
    Compilation::GDataConstantTable = nullptr;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    std::ostringstream echo;
    // Left alive on purpose: a jump out of the run skips destructors.
    auto* parser = new class_zk_parser();
    auto* lexer = new zkFlexLexer(&in, &echo);
    parser->scanner = lexer;
    running = true;
    if (setjmp(exit_jump) == 0) {
        try {
            if (parser->parse() == 0)
                for (Module* m : parser->modules) {
                    m->compile();
                    std::ostringstream out;
                    m->ZKC_put(out, 0, 0, 0);
                }
        } catch (const fatal_end&) {
        } catch (const std::runtime_error&) {
        }
    }
    running = false;
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
