/* Data of the example accu: the zero of integer, the limit and the
   saturating sum. */
#include "accu.h"

const integer zero_integer = 0;
const integer limit = 100;

integer add_sat(integer a, integer b, integer l) { return a + b > l ? l : a + b; }
