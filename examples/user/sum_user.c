/* Data of the example sum: the zero of integer and the saturating sum. */
#include "sum.h"

const integer zero_integer = 0;

integer add_sat(integer a, integer b, integer l) { return a + b > l ? l : a + b; }
