#ifndef TARN_TARGETS_C_FRAME_H
#define TARN_TARGETS_C_FRAME_H

// The pieces of the C unit that the SystemC unit writes alike: constants,
// register state and its reset and refresh, the parameter list of
// <m>_automaton, the locals and the node array. Defined in targets/c.cc.

#include "model/module.h"
#include "support/index_set.h"
#include "support/name_set.h"

#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace cframe {

// The method declarations of the header, when there is a method table.
void put_methods(std::ostream& h);

// External constants are the user's: declared in the header only; the others
// are defined in the code file. With `trace` each constant's name also goes
// to the error stream.
void put_constants(Module* m, std::ostream& c, std::ostream& h, bool trace);

// "/* global state variables */" and one declaration of every register's
// state, a name per line aligned under the first; nothing without registers.
void put_state(Module* m, std::ostream& c, const std::vector<regclass*>& regs);
// "  actual= init;" per register.
void put_register_resets(Module* m, std::ostream& c, const std::vector<regclass*>& regs);
// "  actual= next;" per register.
void put_register_refresh(Module* m, std::ostream& c, const std::vector<regclass*>& regs);

// Where the two units differ in their ports: C names an output by the
// first occurrence of the signal and skips a port without variable (-1);
// SystemC names it by its current occurrence and also skips the id -2.
enum class Dialect { c, systemc };

// The parameter list of <m>_automaton in the code file and in the header,
// and the variables reached through a pointer. A bound port is computed
// inside and is no parameter.
struct Parameters {
    std::string code, header;
    name_set outputNames;
};
Parameters parameters(Module* m, Dialect dialect);

// The wood's variables that no parameter, state variable or pre copy
// (those of `pres`) already declares, in rising order.
IndexSet local_variables(Module* m, const std::vector<regclass*>& regs, const std::vector<memorizedSignal*>& pres,
                         Dialect dialect);
// "  int name;" per variable.
void put_locals(Module* m, std::ostream& c, const IndexSet& variables);
// Valued locals whose value no binding computes.
std::vector<Signal*> unbound_valued_locals(Module* m);

// "  int <m>_node[<size>];"; the array's name is returned.
std::string put_node_array(Module* m, std::ostream& c);

} // namespace cframe

#endif
