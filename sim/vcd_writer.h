#ifndef TARN_SIM_VCD_WRITER_H
#define TARN_SIM_VCD_WRITER_H

// A value change dump of a simulation: one time step per reaction, a
// one-bit wire per input, output and local signal for its presence, and a
// string variable "<name>_val" beside each valued one for its value ("?"
// when not known). The first reaction dumps every variable, later ones
// only what changed.

#include "sim/reaction_engine.h"

#include <ostream>
#include <string>
#include <vector>

class vcd_writer {
public:
    // Writes the header: the module as one scope, inputs, outputs, then
    // locals, each group in list order.
    vcd_writer(std::ostream& out, const reaction_engine& engine);

    // The state after reaction `time` (0 for the first).
    void sample(long time);
    // The closing time stamp, one past the last reaction.
    void finish(long time);

    // The identifier code of the n-th variable: printable characters from
    // '!' to '~', the shortest first.
    static std::string code(std::size_t n);
    // A value as one token: outer blanks dropped, inner ones made '_', an
    // empty or unknown value "?".
    static std::string token(const std::string& value);

private:
    struct variable {
        const reaction_engine::signal_view* signal;
        bool value;  // the value string rather than the presence bit
        std::string code;
        std::string last;
    };
    std::ostream& out;
    const reaction_engine& engine;
    std::vector<variable> variables;
    bool first = true;
};

#endif
