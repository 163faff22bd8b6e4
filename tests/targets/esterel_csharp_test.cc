// Whole Esterel and C# texts of the worked module and of bundled
// examples, as tarn writes them: registers (one starting true), memorised
// pairs, valued and clocked signals, constants, abstract equations.

#include "tests/tarn_process.h"
#include "tests/worked_module.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct texts {
    std::string esterel, csharp;
};

texts generate(const std::string& module, const std::string& zkc)
{
    scratch_dir s;
    s.write(module + ".zkc", zkc);
    tarn_output r = run_tarn_in(s.path, {module + ".zkc", "-csharp", "-esterel"});
    EXPECT_EQ(r.status, 0) << r.err;
    // The driver's order: Esterel before C#.
    EXPECT_NE(r.out.find("generation of ./" + module + ".strl\ngeneration of ./" + module + ".cs\n"),
              std::string::npos)
        << r.out;
    return {read_file(s.path + "/" + module + ".strl"), read_file(s.path + "/" + module + ".cs")};
}

std::string example(const std::string& name) { return read_file(TARN_SOURCE_DIR "/examples/" + name + ".zkc"); }

// Every variable of the wood is a signal; an output's under wire has its
// block but is declared nowhere; the loop's last line runs into the end of
// the signal block.
const char* const worked_esterel = R"gold(module m:

input i ;
output o ;

signal v_v_i,
       v_s_n,
       v_v_n,
       v_s_r,
       v_v_r,
       v_s_SETm,
       v_v_SETm,
       v_s_m_boot,
       v_s_mbootplus,
       v_v_mbootplus in

  [
    run my_pre [signal v_s_n / S, v_s_r / preS]
  ]
  ||
  [
    emit v_s_m_boot;
    run my_pre [signal v_s_mbootplus / S, v_s_m_boot / preS]
  ]
  ||
  loop  [
    present [not tick] then
      emit v_s_mbootplus
    end present

    ||
    present [tick] then
      emit v_v_mbootplus
    end present

    ||
    present [v_s_m_boot] then
      emit v_s_SETm
    end present

    ||
    present [not i] then
      emit v_v_i
    end present

    ||
    present [v_s_r] then
      emit o
    end present

    ||
    present [i] then
      emit v_s_n
    end present

    ||
    present [not i] then
      emit v_v_n
    end present

    ||
    present [not v_s_r] then
      emit v_v_r
    end present

    ||
    present [not v_s_SETm] then
      emit v_v_SETm
    end present

    ||
    present [not o] then
      emit v_v_o
    end present


  ]  each tickend signal 
end module

)gold";

// Inputs and registers start false, under wires uninitialised; the node
// lines are led by the indent on top of the first lead, the root line by
// nothing.
const char* const worked_csharp = R"gold( using System; 
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
)gold";

TEST(EsterelCSharpText, WorkedModule)
{
    texts t = generate("m", worked_module_text);
    EXPECT_EQ(t.esterel, worked_esterel);
    EXPECT_EQ(t.csharp, worked_csharp);
}

// Constants declared without their values; a valued memorised pair marked
// for the user; the bound signal's over and under equations both emit the
// clock with the value.
const char* const sum_esterel = R"gold(module sum:
constant  zero: integer;
constant  limit: integer;

input inc: integer ;
output total: integer ;

signal v_v_inc: integer,
       v_s_fire,
       v_v_fire,
       pre_total: integer,
       v_v_pre_total: integer,
       v_s_SETsum,
       v_v_SETsum,
       v_s_sum_boot,
       v_s_sumbootplus,
       v_v_sumbootplus in

  [
    emit v_s_sum_boot;
    run my_pre [signal v_s_sumbootplus / S, v_s_sum_boot / preS]
  ]
  ||
  [
    run my_pre [signal pre_total / S, total / preS]
valued signal TO HANDLE!
  ]
  ||

  loop  [
    present [not tick] then
      emit v_s_sumbootplus
    end present

    ||
    present [tick] then
      emit v_v_sumbootplus
    end present

    ||
    present [v_s_sum_boot] then
      emit v_s_SETsum
    end present




    ||
    present [inc] then
      emit total(add_sat(pre_total_val, inc_val, limit))
    end present

    ||
    present [not inc] then
      emit total(add_sat(pre_total_val, inc_val, limit))
    end present


    ||
    present [not v_s_SETsum] then
      emit v_v_SETsum
    end present


  ]  each tickend signal 
end module

)gold";

// Constants with their C# values; a user type read by its own To; the
// output clock in the C forms.
const char* const sum_csharp = R"gold( using System; 
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
)gold";

TEST(EsterelCSharpText, ValuedModuleWithOutputClock)
{
    texts t = generate("sum", example("sum"));
    EXPECT_EQ(t.esterel, sum_esterel);
    EXPECT_EQ(t.csharp, sum_csharp);
}

// A register that starts true emits its state first; a memorised pair
// runs my_pre on its declared names, followed by an empty line.
const char* const shift_esterel = R"gold(module shift:

input d ;
output q ;

signal v_v_d,
       v_s_n1,
       v_v_n1,
       v_s_r1,
       v_v_r1,
       v_s_n2,
       v_v_n2,
       v_s_r2,
       v_v_r2,
       pre_d,
       v_v_pre_d,
       v_s_SETshift,
       v_v_SETshift,
       v_s_shift_boot,
       v_s_shiftbootplus,
       v_v_shiftbootplus in

  [
    run my_pre [signal v_s_n1 / S, v_s_r1 / preS]
  ]
  ||
  [
    emit v_s_r2;
    run my_pre [signal v_s_n2 / S, v_s_r2 / preS]
  ]
  ||
  [
    emit v_s_shift_boot;
    run my_pre [signal v_s_shiftbootplus / S, v_s_shift_boot / preS]
  ]
  ||
  [
    run my_pre [signal pre_d / S, d / preS]
  ]
  ||

  loop  [
    present [not tick] then
      emit v_s_shiftbootplus
    end present

    ||
    present [tick] then
      emit v_v_shiftbootplus
    end present

    ||
    present [v_s_shift_boot] then
      emit v_s_SETshift
    end present

    ||
    present [not d] then
      emit v_v_d
    end present

    ||
    present [v_s_r2 and pre_d] then
      emit q
    end present

    ||
    present [v_s_r2 and not pre_d or not v_s_r2] then
      emit v_v_q
    end present

    ||
    present [d] then
      emit v_s_n1
    end present

    ||
    present [not d] then
      emit v_v_n1
    end present

    ||
    present [not v_s_r1] then
      emit v_v_r1
    end present

    ||
    present [v_s_r1] then
      emit v_s_n2
    end present

    ||
    present [not v_s_r1] then
      emit v_v_n2
    end present

    ||
    present [not v_s_r2] then
      emit v_v_r2
    end present

    ||
    present [not pre_d] then
      emit v_v_pre_d
    end present

    ||
    present [not v_s_SETshift] then
      emit v_v_SETshift
    end present


  ]  each tickend signal 
end module

)gold";

TEST(EsterelCSharpText, RegistersAndMemorisedPair)
{
    EXPECT_EQ(generate("shift", example("shift")).esterel, shift_esterel);
}

// Abstract equations: a line each in Esterel; in C# the assignments follow
// each other on the line of the next equation.
TEST(EsterelCSharpText, AbstractEquations)
{
    texts t = generate("peak", example("peak"));
    EXPECT_NE(t.esterel.find("    end present\n\n"
                             "  v_s_big = (sample_val > threshold);\n\n"
                             "  v_v_big = (sample_val > threshold);\n\n"
                             "  v_s_hot = (sample_val > pre_best_val);\n\n"),
              std::string::npos)
        << t.esterel;
    EXPECT_NE(t.csharp.find("\n            v_s_big = (sample_val > threshold);"
                            "            v_v_big = (sample_val > threshold);"
                            "            v_s_hot = (sample_val > pre_best_val);"
                            "            v_v_hot = (sample_val > pre_best_val);"
                            "                        peak_node[8]= v_s_big;\n"),
              std::string::npos)
        << t.csharp;
    // An external constant: "public" joined to the declaration.
    EXPECT_NE(t.csharp.find("\n        publicprivate const integer offset;\n"), std::string::npos);
    EXPECT_EQ(t.esterel.find("constant  offset"), std::string::npos);
    EXPECT_NE(t.esterel.find("constant  threshold: integer;\n"), std::string::npos);
}

} // namespace
