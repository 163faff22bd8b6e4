#include "m_sc.h"
#define false 0
#define true (!false)

/* global state variables */
int v_s_r,
    v_s_m_boot;

void m_reset_automaton(){
  v_s_r= 0;
  v_s_m_boot= 1;
}

void m_automaton(int i, int*o)
{
  int v_v_i;
  int v_v_o;
  int v_s_n;
  int v_v_n;
  int v_v_r;
  int v_s_SETm;
  int v_v_SETm;
  int v_s_mbootplus;
  int v_v_mbootplus;
  int m_node[20];
   m_node[1]= !0;
   v_s_mbootplus= !m_node[1];
   v_v_mbootplus= m_node[1];
   v_s_SETm= v_s_m_boot;
   m_node[2]= i;
   v_v_i= !m_node[2];
  *o= v_s_r;
   v_s_n= i;
   v_v_n= !m_node[2];
   m_node[8]= v_s_r;
   v_v_r= !m_node[8];
   m_node[10]= v_s_SETm;
   v_v_SETm= !m_node[10];
   m_node[4]= o;
   v_v_o= !m_node[4];

  /* refresh registers */
  v_s_r= v_s_n;
  v_s_m_boot= v_s_mbootplus;
}
