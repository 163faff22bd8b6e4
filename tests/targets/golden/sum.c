#include "sum.h"
#define false 0
#define true (!false)

const integer zero = 0;
const integer limit = 100;
/* global state variables */
int v_s_sum_boot;

/* global pre variables */
int sum_pre_total;
integer sum_pre_total_val;

void sum_reset_automaton(){
  /* global state variables initialisation */
  v_s_sum_boot= 1;
  /* pre variables initialisation */
  sum_pre_total= 0;
  sum_pre_total_val = copy_integer(zero);

}

void sum_automaton(int inc, integer inc_val, int*total, integer* total_val)
{
  int v_v_inc;
  int v_v_total;
  int v_s_fire;
  int v_v_fire;
  int v_v_pre_total;
  int v_s_SETsum;
  int v_v_SETsum;
  int v_s_sumbootplus;
  int v_v_sumbootplus;
  int sum_node[20];
  *total_val = copy_integer(zero_integer);
  int pre_total= sum_pre_total;
  integer pre_total_val= copy_integer(sum_pre_total_val);

  if (inc == 0)
     {
          inc_val= copy_integer(zero_integer);
     }
   /* outputs computing */
   sum_node[1]= !0;
   v_s_sumbootplus= !sum_node[1];
   v_v_sumbootplus= sum_node[1];
   v_s_SETsum= v_s_sum_boot;
   sum_node[2]= inc;
   v_v_inc= !sum_node[2];
  *total= inc;
   v_v_total= !sum_node[2];
   v_s_fire= inc;
   if (v_s_fire) 
   {
         *total_val = copy_pure(add_sat(pre_total_val, inc_val, limit));
   }
   v_v_fire= !sum_node[2];
   if (v_v_fire) 
   {
         *total_val = copy_pure(add_sat(pre_total_val, inc_val, limit));
   }
   sum_node[8]= pre_total;
   v_v_pre_total= !sum_node[8];
   sum_node[10]= v_s_SETsum;
   v_v_SETsum= !sum_node[10];
   if (! *total)
   {
      *total_val = copy_integer(zero_integer);
   }

  /* refresh registers */
  v_s_sum_boot= v_s_sumbootplus;

  /* refresh global pre variables */
  sum_pre_total= *total;
  sum_pre_total_val= copy_integer(*total_val);

}

