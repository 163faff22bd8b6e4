#ifndef m_H
#define m_H
extern void m_reset_automaton();
extern void m_automaton(int i, int*o);
#endif
