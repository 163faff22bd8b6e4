/* Data of the example peak: the zero of integer, the constant without a C
   value and the method that marks a new maximum. */
#include "peak.h"

const integer zero_integer = 0;
const integer offset = 1000;

integer bump(integer a, integer b) { return a + b; }
