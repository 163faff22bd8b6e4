#ifndef TARN_MODEL_MODULE_BINDINGS_H
#define TARN_MODEL_MODULE_BINDINGS_H

// Bindings as the generators read them. Defined with this file as well:
// Module::printBinding and Module::debugPrintBinding (declared in
// model/module.h), and the installation of what the data layer reads of a
// Module (DataExpr::moduleName, DataExpr::moduleSignal).

#include "data/data.h"

#include <list>
#include <map>
#include <ostream>
#include <string>

class Module;

// The binding that gives an abstract equation its value: the one entered
// under the name of the variable `index` (Module::getSignalNameById). With
// none, "***error: abstract equation without bindind for:" and the name go
// to the error stream; then the process ends with status 1 if `fatal`, and
// null is returned otherwise.
DataBinding* abstractEquationBinding(Module* module, long index, bool fatal);

// Bindings whose clock is an output, by the clock's internal name, in the
// order of the binding table. Empty when the module has no binding.
std::map<std::string, std::list<DataBinding*>> outputClockBindings(Module* module);

#endif
