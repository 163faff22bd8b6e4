#ifndef TARN_TARGETS_FORMATS_H
#define TARN_TARGETS_FORMATS_H

// What the generators share beyond the equation rule of the wood
// (Bddexpression::put_equation, Bddexpressionwood::earliest_equations): the
// names a target reads off a module, the binding that follows an equation,
// the source of a memorised latch or copy, and the reports.

#include "model/module.h"

#include <ostream>
#include <string>
#include <vector>

class DataBinding;
class Bddexpression;

namespace formats {

// An over id that marks no variable: -1, and -2 for the targets that read
// the id as unsigned and skip the two highest values.
bool absentOver(long id);

// The manager's name of the variable `index` of the module's wood.
std::string varName(Module* m, long index);

// The binding that follows the equation of the variable `index`: the one
// entered under the name of the signal that owns the variable, whether it
// is the signal's over or its under wire, so that each equation the
// signal keeps carries the block, guarded by its own variable. Null when
// the module has no binding or the variable is no signal's.
DataBinding* clockedBinding(Module* m, long index);

// The text a memorised pair reads: the variable of the actual signal's
// first occurrence for a local, its declared name otherwise, led by
// `outputMark` for an output.
std::string memorisedSource(Module* m, memorizedSignal* pair, const std::string& outputMark);

// The registers and memorised pairs that a generator can print: a null
// entry, which the reader leaves for a register or pair of an undeclared
// signal, is passed over instead of dereferenced.
std::vector<regclass*> registers(Module* m);
std::vector<memorizedSignal*> memorised(Module* m);

// The data tables as far as they exist: "data type:" and the type names,
// the methods, and the constants that have no value table.
void putDataTables(Module* m, std::ostream& os);

// A warning through the message dialog and on the error stream; the run
// goes on.
void warn(const std::string& text);

// The message dialog and the error stream, then the end of the process
// with status 1.
[[noreturn]] void fail(const std::string& text);

} // namespace formats

#endif
