#include "peak.h"
#define false 0
#define true (!false)

const integer zero = 0;
const integer threshold = 50;
/* global state variables */
int v_s_peak_boot;

/* global pre variables */
int peak_pre_best;
integer peak_pre_best_val;

void peak_reset_automaton(){
  /* global state variables initialisation */
  v_s_peak_boot= 1;
  /* pre variables initialisation */
  peak_pre_best= 0;
  peak_pre_best_val = copy_integer(zero);

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
  int v_v_pre_best;
  int v_s_SETpeak;
  int v_v_SETpeak;
  int v_s_peakbootplus;
  int v_v_peakbootplus;
  integer v_s_best_val = copy_integer(zero_integer);
  int peak_node[36];
  *peak_val = copy_integer(zero_integer);
  int pre_best= peak_pre_best;
  integer pre_best_val= copy_integer(peak_pre_best_val);

  if (sample == 0)
     {
          sample_val= copy_integer(zero_integer);
     }
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
  v_s_big =  sup_integer(sample_val,threshold);
  v_v_big =  sup_integer(sample_val,threshold);
  v_s_hot =  sup_integer(sample_val,pre_best_val);
  v_v_hot =  sup_integer(sample_val,pre_best_val);
   peak_node[8]= v_s_big;
   peak_node[28]= sample && peak_node[8] || !sample && !peak_node[1];
  *alarm= peak_node[28];
   v_v_alarm= !peak_node[28];
   peak_node[10]= v_s_hot;
   peak_node[29]= sample && peak_node[10] || !sample && !peak_node[1];
  *peak= peak_node[29];
   v_v_peak= !peak_node[29];
   v_s_up= peak_node[29];
   if (v_s_up) 
   {
         v_s_best_val = copy_pure(sample_val);
   }
   v_v_up= !peak_node[29];
   if (v_v_up) 
   {
         v_s_best_val = copy_pure(sample_val);
   }
   v_s_keep= !peak_node[29];
   if (v_s_keep) 
   {
         v_s_best_val = copy_pure(pre_best_val);
   }
   v_v_keep= peak_node[29];
   if (v_v_keep) 
   {
         v_s_best_val = copy_pure(pre_best_val);
   }
   v_s_shout= peak_node[29];
   if (v_s_shout) 
   {
         *peak_val = copy_pure(bump(sample_val, offset));
   }
   v_v_shout= !peak_node[29];
   if (v_v_shout) 
   {
         *peak_val = copy_pure(bump(sample_val, offset));
   }
   if (! *peak)
   {
      *peak_val = copy_integer(zero_integer);
   }

  /* refresh registers */
  v_s_peak_boot= v_s_peakbootplus;

  /* refresh global pre variables */
  peak_pre_best= v_s_best;
  peak_pre_best_val= copy_integer(v_s_best_val);

}

