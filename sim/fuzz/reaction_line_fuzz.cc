// Feeds arbitrary bytes to mosk as reactions: the reader of reaction
// lines, then, for the lines it takes, the engine of a small valued module
// (the sum example) and the value change dump. A line is taken or refused with a message;
// nothing may crash, hang or read out of bounds, and a refused line must
// name its number.

#include "context/compilation.h"
#include "model/module.h"
#include "sim/mosk_run.h"
#include "sim/reaction_line.h"
#include "zkc/zkc_input.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>

extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

namespace {

// The sum example: a valued input, a valued output through a clock, a
// method, a memorised value.
const char* module_text = R"zkc(module: sum  0 0
input: inc : integer ;
output: total : integer ;
local: fire ;
memorized:
pre_total total zero;

connexion: SETsum RESETsum RTLsum;

equation_def:
2
0: 0:1:1,-1
1: -1:-3:-3,1
expressions:
// expression 2:node total = inc
1 1 2:0,1,(0 )
1 1 3:0,-1,(0 )
// expression 4:node fire = inc
1 1 4:0,1,(0 )
1 1 5:0,-1,(0 )
end:

binding:
   (4, 5): value: 1 clock: (2, 3);
end:

evaltable:
   0: $0;
   1: %0(2, 3, 4);
   2: %%14(6, 7);
   3: %%14(0, 1);
   4: $1;
end:

data:
type:
integer;

method:
integer add_sat(integer, integer, integer);
constant:
integer zero :vhdl= "0" :c= "0" :csharp= "0" :nusmv= "0" :lustre= "0" :esterel= "0" :default= "0";
integer limit :c= "100" :default= "100";
end:
)zkc";

reaction_engine* engine()
{
    static reaction_engine* e = [] {
        std::string file = "/tmp/reaction_line_fuzz_" + std::to_string(::getpid()) + ".zkc";
        std::ofstream(file) << module_text;
        std::string suffix;
        bool ok = false;
        Module* m = parse(file, suffix, &ok);
        std::remove(file.c_str());
        std::remove((file + ".log").c_str());
        if (!ok || m == nullptr)
            std::abort();
        Module::finalize(m, 0);
        auto* made = new reaction_engine(m);
        // A server that knows every answer: values stay defined.
        made->set_data_source([](const std::string& request) { return std::to_string(request.size()); });
        return made;
    }();
    return e;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static bool quiet = [] {
        std::cerr.setstate(std::ios::failbit);
        return true;
    }();
    (void)quiet;
    std::string text(reinterpret_cast<const char*>(data), size);

    // The reader alone, on every line, with names that overlap.
    static const reaction_line_reader reader("m", {{"a", false}, {"ab", true}, {"x", true}, {"(", false}});
    std::istringstream lines(text);
    std::string line, error;
    std::vector<bool> present;
    std::vector<std::string> values;
    while (std::getline(lines, line))
        if (!reader.read(line, present, values, error) && error.empty())
            std::abort();

    // The whole run on the module: status 0, or 1 with one message that
    // names a line.
    reaction_engine* e = engine();
    e->reset();
    std::istringstream in(text);
    std::ostringstream out, err, vcd;
    int status = mosk_simulate(*e, in, "fuzz", out, err, &vcd, false);
    if (status != 0 && (status != 1 || err.str().rfind("mosk: fuzz:", 0) != 0))
        std::abort();
    return 0;
}
