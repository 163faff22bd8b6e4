#ifndef TARN_SOURCE_DATA_VALUES_H
#define TARN_SOURCE_DATA_VALUES_H

// Literals in the value expressions of a module. A literal has no type of
// its own: it takes the type of what it meets (the other operand of an
// operator, the argument of a method, the signal it is emitted on). A
// compiled module holds no literal inline either: each one becomes a
// constant of the global table, named "lit_" and a number, with the
// literal as its value for every target.

#include <string>

class DataExpr;
class Module;

// The type of e as far as it is known without its untyped literals; ""
// when nothing in it gives one.
std::string known_type(DataExpr* e, Module* m);

// Gives every untyped literal of e its type, `type` where nothing nearer
// gives one, and makes each literal a constant.
void settle_literals(DataExpr* e, const std::string& type, Module* m);

#endif
