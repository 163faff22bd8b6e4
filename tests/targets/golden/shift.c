#include "shift.h"
#define false 0
#define true (!false)

/* global state variables */
int v_s_r1,
    v_s_r2,
    v_s_shift_boot;

/* global pre variables */
int shift_pre_d;

void shift_reset_automaton(){
  /* global state variables initialisation */
  v_s_r1= 0;
  v_s_r2= 1;
  v_s_shift_boot= 1;
  /* pre variables initialisation */
  shift_pre_d= 0;

}

void shift_automaton(int d, int*q)
{
  int v_v_d;
  int v_v_q;
  int v_s_n1;
  int v_v_n1;
  int v_v_r1;
  int v_s_n2;
  int v_v_n2;
  int v_v_r2;
  int v_v_pre_d;
  int v_s_SETshift;
  int v_v_SETshift;
  int v_s_shiftbootplus;
  int v_v_shiftbootplus;
  int shift_node[28];
  int pre_d= shift_pre_d;

   /* outputs computing */
   shift_node[1]= !0;
   v_s_shiftbootplus= !shift_node[1];
   v_v_shiftbootplus= shift_node[1];
   v_s_SETshift= v_s_shift_boot;
   shift_node[2]= d;
   v_v_d= !shift_node[2];
   shift_node[14]= pre_d;
   shift_node[22]= v_s_r2 && shift_node[14] || !v_s_r2 && !shift_node[1];
  *q= shift_node[22];
   v_v_q= !shift_node[22];
   v_s_n1= d;
   v_v_n1= !shift_node[2];
   shift_node[8]= v_s_r1;
   v_v_r1= !shift_node[8];
   v_s_n2= v_s_r1;
   v_v_n2= !shift_node[8];
   shift_node[12]= v_s_r2;
   v_v_r2= !shift_node[12];
   v_v_pre_d= !shift_node[14];
   shift_node[16]= v_s_SETshift;
   v_v_SETshift= !shift_node[16];

  /* refresh registers */
  v_s_r1= v_s_n1;
  v_s_r2= v_s_n2;
  v_s_shift_boot= v_s_shiftbootplus;

  /* refresh global pre variables */
  shift_pre_d= d;

}

