#include "peak_sc.h"
#define false 0
#define true (!false)

const integer zero = 0;
const integer threshold = 50;
/* global state variables */
int v_s_peak_boot;

void peak_reset_automaton(){
  v_s_peak_boot= 1;
}

void peak_automaton(int sample, integer sample_val, int*alarm, int*peak, integer* peak_val)
{
  int v_v_sample;
  int v_v_alarm;
  int v_v_peak;
  int v_s_big;
  int v_v_big;
  int v_s_hot;
  int v_v_hot;
  int v_s_up;
  int v_v_up;
  int v_s_keep;
  int v_v_keep;
  int v_s_shout;
  int v_v_shout;
  int v_s_best;
  int pre_best;
  int v_v_pre_best;
  int v_s_SETpeak;
  int v_v_SETpeak;
  int v_s_peakbootplus;
  int v_v_peakbootplus;
  integer  v_s_best_val = zero_integer;
  int peak_node[36];
//Data Handling
//-------------
v_v_big =  sup_integer(sample_val,threshold);
v_v_hot =  sup_integer(sample_val,pre_best_val);
  /* outputs computing */
   peak_node[1]= !0;
   v_s_peakbootplus= !peak_node[1];
   v_v_peakbootplus= peak_node[1];
   v_s_SETpeak= v_s_peak_boot;
   peak_node[2]= sample;
   v_v_sample= !peak_node[2];
   v_s_best= peak_node[1];
   peak_node[20]= pre_best;
   v_v_pre_best= !peak_node[20];
   peak_node[22]= v_s_SETpeak;
   v_v_SETpeak= !peak_node[22];




   peak_node[8]= v_s_big;
   peak_node[28]= sample && peak_node[8] || !sample && !peak_node[1];
  *alarm= peak_node[28];
   v_v_alarm= !peak_node[28];
   peak_node[10]= v_s_hot;
   peak_node[29]= sample && peak_node[10] || !sample && !peak_node[1];
  *peak= peak_node[29];
   v_v_peak= !peak_node[29];
   v_s_up= peak_node[29];
   v_v_up= !peak_node[29];
   v_s_keep= !peak_node[29];
   v_v_keep= peak_node[29];
   v_s_shout= peak_node[29];
   v_v_shout= !peak_node[29];
if (v_s_best)  {
  if (v_s_keep) {v_s_best_val = pre_best_val;}
   else
  if (v_s_up) {v_s_best_val = sample_val;}
   else { v_s_best_val = zero_integer;}
}
if (*peak)  {
  if (v_s_shout) {*peak_val = bump(sample_val, offset);}
   else { *peak_val = zero_integer;}
}

  /* refresh registers */
  v_s_peak_boot= v_s_peakbootplus;
}
