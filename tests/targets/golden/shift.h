#ifndef shift_H
#define shift_H
extern void shift_reset_automaton();
extern void shift_automaton(int d, int*q);
#endif
