#ifndef peak_H
#define peak_H
#include "C_data_user_integer.h"
extern const integer zero_integer;extern integer bump(integer, integer);

extern const integer offset;
extern void peak_reset_automaton();
extern void peak_automaton(int sample, integer sample_val, int*alarm, int*peak, integer* peak_val);
#endif
