 using System; 
 using Trellis.Beans; 
 using System.Collections.Generic; 
 using System.Threading; 
using Trellis.Util;

 namespace GenEntree
 
{
    [Bean(Category="m")]
     public class m
     
{
        private byte zero_byte = 0 ;
        private int zero_int = 0 ;
        private float zero_float = 0;
        private long zero_long = 0;
        private short zero_short = 0;
        private string zero_string ="";
        private bool zero_bool = false;
        // private constants:
        /* global state variables */
        bool  v_s_r = false;
        bool  v_s_m_boot = true;
        private void m_reset_automaton()
        {
            v_s_r= false;
            v_s_m_boot= true;
        }
        public void m_automaton(string s)
        {
            bool i  =  false;
            bool v_v_i;
            bool o  =  false;
            bool v_v_o;
            bool v_s_n  =  false;
            bool v_v_n;
            bool v_v_r;
            bool v_s_SETm;
            bool v_v_SETm;
            bool v_s_mbootplus  =  false;
            bool v_v_mbootplus;
            bool[]  m_node  =  new bool[20];
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
                if(evts[i].nameEvt == "i")
                {
                     i= true;
                }
                else
                {
                   i= false;
                }
            }
   /* outputs computing */
                        m_node[1]= !false;
v_s_mbootplus= !m_node[1];

            v_v_mbootplus= m_node[1];

            v_s_SETm= v_s_m_boot;

                        m_node[2]= i;
v_v_i= !m_node[2];

            o= v_s_r;

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
            /*-----------------------partie evt/outputs_signals-----------------------------------------*/
           List<MyEvent> outputEvts = new List<MyEvent>(255);   
            MyEvent evt0 = new MyEvent( "o", Convert.ToString(o));
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
