 using System; 
 using Trellis.Beans; 
 using System.Collections.Generic; 
 using System.Threading; 
using Trellis.Util;

 namespace GenEntree
 
{
    [Bean(Category="peak")]
     public class peak
     
{
        private byte zero_byte = 0 ;
        private int zero_int = 0 ;
        private float zero_float = 0;
        private long zero_long = 0;
        private short zero_short = 0;
        private string zero_string ="";
        private bool zero_bool = false;
        // private constants:
        private const integer zero = 0;
        private const integer threshold = 7;
        publicprivate const integer offset;
        /* global state variables */
        bool  v_s_peak_boot = true;
        private void peak_reset_automaton()
        {
            v_s_peak_boot= true;
        }
        public void peak_automaton(string s)
        {
            bool sample  =  false;
            bool v_v_sample;
            bool alarm  =  false;
            bool v_v_alarm;
            bool peak  =  false;
            bool v_v_peak;
            bool v_s_big;
            bool v_v_big;
            bool v_s_hot;
            bool v_v_hot;
            bool v_s_up;
            bool v_v_up;
            bool v_s_keep;
            bool v_v_keep;
            bool v_s_shout;
            bool v_v_shout;
            bool v_s_best;
            bool pre_best  =  false;
            bool v_v_pre_best;
            bool v_s_SETpeak;
            bool v_v_SETpeak;
            bool v_s_peakbootplus  =  false;
            bool v_v_peakbootplus;
            integer sample_val  = zero_integer;
            integer peak_val  = zero_integer;
            integer  v_v_big_val = zero_integer;
            integer  v_s_big_val = zero_integer;
            integer  v_v_hot_val = zero_integer;
            integer  v_s_hot_val = zero_integer;
            integer  v_v_best_val = zero_integer;
            integer  v_s_best_val = zero_integer;
            bool[]  peak_node  =  new bool[36];
/*-----------------------partie evt/input_signals-----------------------------------------*/
            GrammaireA GA = new GrammaireA();
             List<MyEvent> evts =  new List<MyEvent>(255);
            evts= GA.deserialize(s);
            foreach (MyEvent evtL in evts)
                {
                    Logger.Info("alarmDeserialize: " + evtL.nameEvt + " " + evtL.valPresenceEvt + " " + evtL.evTypeValue + " " + evtL.evtValeur);
                }
            for(int i = 0; i<evts.Count;i++)
           {
                if(evts[i].nameEvt == "sample")
                {
                     sample= true;
                     sample_val = integer.To(evts[i].evtValeur);
                }
                else
                {
                   sample= false;
                }
            }
   /* outputs computing */
                        peak_node[1]= !false;
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

            v_s_big = (sample_val > threshold);            v_v_big = (sample_val > threshold);            v_s_hot = (sample_val > pre_best_val);            v_v_hot = (sample_val > pre_best_val);                        peak_node[8]= v_s_big;
            peak_node[28]= sample && peak_node[8] || !sample && !peak_node[1];
alarm= peak_node[28];

            v_v_alarm= !peak_node[28];

                        peak_node[10]= v_s_hot;
            peak_node[29]= sample && peak_node[10] || !sample && !peak_node[1];
peak= peak_node[29];

            v_v_peak= !peak_node[29];

            v_s_up= peak_node[29];

   if (v_s_best) 
      {
          if (v_s_up) 
            {
               v_s_best_val = sample_val;
            }
         else
            {
               v_s_best_val = zero_integer;
            }
         }
            v_v_up= !peak_node[29];

   if (v_s_best) 
      {
          if (v_v_up) 
            {
               v_s_best_val = sample_val;
            }
         else
            {
               v_s_best_val = zero_integer;
            }
         }
            v_s_keep= !peak_node[29];

   if (v_s_best) 
      {
          if (v_s_keep) 
            {
               v_s_best_val = pre_best_val;
            }
         else
            {
               v_s_best_val = zero_integer;
            }
         }
            v_v_keep= peak_node[29];

   if (v_s_best) 
      {
          if (v_v_keep) 
            {
               v_s_best_val = pre_best_val;
            }
         else
            {
               v_s_best_val = zero_integer;
            }
         }
            v_s_shout= peak_node[29];

            v_v_shout= !peak_node[29];

           if (*peak)
              {
                   if (v_s_shout) {*peak_val = bump(sample_val, offset);}
                else { *peak_val = zero_integer;}
              }

         /* refresh registers */
           v_s_peak_boot= v_s_peakbootplus;
            /*-----------------------partie evt/outputs_signals-----------------------------------------*/
           List<MyEvent> outputEvts = new List<MyEvent>(255);   
            MyEvent evt0 = new MyEvent( "alarm", Convert.ToString(alarm));
            outputEvts.Add(evt0);
           MyEvent evt1= new MyEvent( "peak","integer", Convert.ToString(peak_val),Convert.ToString(peak));
            outputEvts.Add(evt1);
            string format ="";
            format = GA.serialize(outputEvts);
            FiresendEvent(format);
        }
        /*-----------Delegate Methods & Events-------------------*/
        public delegate void StringValueEventHandler(string evt );
        public event StringValueEventHandler SendEventList;
       private void FiresendEvent(string evtFormat)
       {
            if(SendEventList != null)
            { 
                SendEventList(evtFormat);
           }
        }
    }
}
