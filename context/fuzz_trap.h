#ifndef TARN_CONTEXT_FUZZ_TRAP_H
#define TARN_CONTEXT_FUZZ_TRAP_H

// The fatal ends of a run, caught for a libFuzzer target: include this in
// one file of the target and link the target with -Wl,--wrap=exit.
// Compilation's fatal path throws through Compilation::FatalHook, and the
// few direct calls of exit in the lower layers jump back to
// fuzz_trap::run; exits made outside a run (libFuzzer's own) go through.
// Either way what the run made is left half done, as the program would
// have left it by ending.

#include "context/compilation.h"

#include <csetjmp>
#include <string>

namespace fuzz_trap {

struct fatal_end {};

inline bool running = false;
inline std::jmp_buf exit_jump;

// Runs body(), which returns, or ends by a fatal message or an exit.
// Other exceptions are the caller's: a command that catches some catches
// them in body.
template <class Body>
void run(Body body)
{
    Compilation::FatalHook = [](const std::string&) { throw fatal_end{}; };
    running = true;
    if (setjmp(exit_jump) == 0) {
        try {
            body();
        } catch (const fatal_end&) {
        }
    }
    running = false;
}

}  // namespace fuzz_trap

extern "C" void __real_exit(int status);

extern "C" void __wrap_exit(int status)
{
    if (fuzz_trap::running)
        std::longjmp(fuzz_trap::exit_jump, 1);
    __real_exit(status);
}

#endif
