 using System; 
 using Trellis.Beans; 
 using System.Collections.Generic; 
 using System.Threading; 
using Trellis.Util;

 namespace GenEntree
 
{
    [Bean(Category="sum")]
     public class sum
     
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
        private const integer limit = 100;
        /* global state variables */
        bool  v_s_sum_boot = true;
        private void sum_reset_automaton()
        {
            v_s_sum_boot= true;
        }
        public void sum_automaton(string s)
        {
            bool inc  =  false;
            bool v_v_inc;
            bool total  =  false;
            bool v_v_total;
            bool v_s_fire;
            bool v_v_fire;
            bool pre_total  =  false;
            bool v_v_pre_total;
            bool v_s_SETsum;
            bool v_v_SETsum;
            bool v_s_sumbootplus  =  false;
            bool v_v_sumbootplus;
            integer inc_val  = zero_integer;
            integer total_val  = zero_integer;
            bool[]  sum_node  =  new bool[20];
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
                if(evts[i].nameEvt == "inc")
                {
                     inc= true;
                     inc_val = integer.To(evts[i].evtValeur);
                }
                else
                {
                   inc= false;
                }
            }
   /* outputs computing */
                        sum_node[1]= !false;
v_s_sumbootplus= !sum_node[1];

            v_v_sumbootplus= sum_node[1];

            v_s_SETsum= v_s_sum_boot;

                        sum_node[2]= inc;
v_v_inc= !sum_node[2];

            total= inc;

            v_v_total= !sum_node[2];

            v_s_fire= inc;

            v_v_fire= !sum_node[2];

                        sum_node[8]= pre_total;
v_v_pre_total= !sum_node[8];

                        sum_node[10]= v_s_SETsum;
v_v_SETsum= !sum_node[10];

           if (*total)
              {
                   if (v_s_fire) {*total_val = add_sat(pre_total_val, inc_val, limit);}
                else { *total_val = zero_integer;}
              }

         /* refresh registers */
           v_s_sum_boot= v_s_sumbootplus;
            /*-----------------------partie evt/outputs_signals-----------------------------------------*/
           List<MyEvent> outputEvts = new List<MyEvent>(255);   
           MyEvent evt0= new MyEvent( "total","integer", Convert.ToString(total_val),Convert.ToString(total));
            outputEvts.Add(evt0);
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
