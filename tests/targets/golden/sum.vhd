-- VHDL generation by TARN version 3.4.3-4 from sum Zinc Kernel compiled code

-- no vhdl_libs.inc file found ...

entity sum is
  port(
       inc : in bit;
       inc_val : in integer;
       reset : in bit;
       clk : in bit;
       total : out bit;
       total_val : out integer
     );
end sum;

architecture sum_a of sum is

TYPE array_sum_node IS ARRAY (20 downto 0) OF bit ;
constant zero : integer := 0;
constant limit : integer := 100;

signal inc_locval : integer;
signal v_s_sum_boot : bit;
signal v_s_sumbootplus : bit;
signal total_locval : integer;
signal pre_total : bit;
signal pre_total_locval : integer;
signal sum_node_starter : bit;
signal sum_node : array_sum_node;

begin
-- state and output computation
process (reset,clk)
begin
  if (reset = '0') then
      v_s_sum_boot <= '1';
      pre_total <= '0';
      pre_total_locval <= zero;
      sum_node(2) <= '0';
      inc_locval <= zero_integer;
      total <= '0';
      total_val <= zero_integer;
      sum_node_starter <= '1';
  elsif ( clk'event and clk='1') then
     if(sum_node_starter = '1') then
        sum_node(2) <= inc;
        inc_locval <= inc_val;
        sum_node_starter <= '0';
     else
        v_s_sum_boot <= v_s_sumbootplus;
        pre_total <= sum_node(2);
        pre_total_locval <= total_locval;
        sum_node(2) <= inc;
        inc_locval <= inc_val;
     end if;
  elsif ( clk'event and clk='0') then
     if(sum_node_starter = '0') then
         total <= sum_node(2);
         total_val <= total_locval;
     end if;
  end if;
end process;

-- actualisation
      sum_node(3) <= not sum_node(2);
      -- final output evaluation of total in process
      sum_node(5) <= not sum_node(2);
      sum_node(6) <= sum_node(2);
      sum_node(7) <= not sum_node(2);
      sum_node(9) <= not sum_node(8);
      sum_node(10) <= sum_node(16);
      sum_node(11) <= not sum_node(10);
      sum_node(1) <= '1';
      sum_node(18) <= not sum_node(1);
      sum_node(19) <= sum_node(1);
      v_s_sumbootplus <= sum_node(18);
      sum_node(16) <= v_s_sum_boot;
      total_locval <=
         add_sat(pre_total_locval, inc_locval, limit) when (sum_node(6) = '1') else
           zero_integer;
end sum_a;

