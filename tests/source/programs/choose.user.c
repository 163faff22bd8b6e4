#include "C_data_user_integer.h"
const integer zero_integer = 0;
integer twice(integer x) { return 2 * x; }
