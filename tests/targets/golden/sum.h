#ifndef sum_H
#define sum_H
#include "C_data_user_integer.h"
extern const integer zero_integer;extern integer add_sat(integer, integer, integer);

extern void sum_reset_automaton();
extern void sum_automaton(int inc, integer inc_val, int*total, integer* total_val);
#endif
