-- VHDL generation by TARN version 3.4.3-4 from toggle Zinc Kernel compiled code

-- no vhdl_libs.inc file found ...

entity toggle is
  port(
       t : in bit;
       reset : in bit;
       clk : in bit;
       q : out bit
     );
end toggle;

architecture toggle_a of toggle is

TYPE array_toggle_node IS ARRAY (23 downto 0) OF bit ;
signal v_s_n : bit;
signal v_s_r : bit;
signal v_s_toggle_boot : bit;
signal v_s_togglebootplus : bit;
signal toggle_node_starter : bit;
signal toggle_node : array_toggle_node;

begin
-- state and output computation
process (reset,clk)
begin
  if (reset = '0') then
      v_s_r <= '0';
      v_s_toggle_boot <= '1';
      toggle_node(2) <= '0';
      q <= '0';
      toggle_node_starter <= '1';
  elsif ( clk'event and clk='1') then
     if(toggle_node_starter = '1') then
        toggle_node(2) <= t;
        toggle_node_starter <= '0';
     else
        v_s_r <= v_s_n;
        v_s_toggle_boot <= v_s_togglebootplus;
        toggle_node(2) <= t;
     end if;
  elsif ( clk'event and clk='0') then
     if(toggle_node_starter = '0') then
         q <= toggle_node(8);
     end if;
  end if;
end process;

-- actualisation
      toggle_node(3) <= not toggle_node(2);
      -- final output evaluation of q in process
      toggle_node(5) <= not toggle_node(4);
      toggle_node(18) <= (toggle_node(2) and toggle_node(8)) or (not toggle_node(2) and not toggle_node(8));
      toggle_node(6) <= not toggle_node(18);
      toggle_node(7) <= toggle_node(18);
      toggle_node(9) <= not toggle_node(8);
      toggle_node(10) <= toggle_node(19);
      toggle_node(11) <= not toggle_node(10);
      toggle_node(1) <= '1';
      toggle_node(21) <= not toggle_node(1);
      toggle_node(22) <= toggle_node(1);
      v_s_n <= toggle_node(6);
      toggle_node(8) <= v_s_r;
      v_s_togglebootplus <= toggle_node(21);
      toggle_node(19) <= v_s_toggle_boot;
end toggle_a;

