#ifndef TARN_SIM_REACTION_ENGINE_H
#define TARN_SIM_REACTION_ENGINE_H

// One reaction of a finalised module at a time, as its C computes it: the
// inputs given, the equations in earliest order, then the registers and
// the memorised copies refreshed, the boot register true in the first
// reaction only.
//
// The equations are compiled once into a flat program over one byte array
// (variables, two constants, then one slot per decision node), each step
// the same multiplexer, so that a reaction is a straight loop. What the
// boolean program cannot do, an abstract equation (a data test) and a
// clock taking a value, runs between the steps as a hook, through the data
// expressions and whatever answers their requests.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

class Module;
class DataBinding;
class DataExpr;

// The text of a value nobody knows.
extern const char* const unknown_value;

class reaction_engine {
public:
    // A signal as the simulator shows it: its declared name, the variable
    // of its presence (-1: none), and for a valued one the key of its
    // value (the internal name).
    struct signal_view {
        std::string name;
        long var;
        bool valued;
        std::string value_key;
    };

    // Answers a data request ("MC,...", "BOP,...", "UOP,...", "CONST,...")
    // with a value's text, or unknown_value.
    using data_source = std::function<std::string(const std::string& request)>;

    // The module must be finalised. Ends the process as the generators do
    // on an abstract equation without binding.
    explicit reaction_engine(Module* module);

    const std::string& module_name() const { return name; }
    // The inputs a reaction can give (a bound input is computed inside),
    // the outputs, and the locals that keep a variable, in list order.
    const std::vector<signal_view>& inputs() const { return input_views; }
    const std::vector<signal_view>& outputs() const { return output_views; }
    const std::vector<signal_view>& locals() const { return local_views; }

    // Without a source every request is unknown.
    void set_data_source(data_source source);

    // Back to the state before the first reaction. The memorised values
    // start at their initial value, which may take a request.
    void reset();

    // One reaction. `present[i]` and `values[i]` are those of inputs()[i].
    // An absent valued input, an output or local before its clock gives it
    // a value, and an output clock that did not fire hold their type's
    // zero: a constant named as the data layer spells that zero
    // ("zero_<T>", or a predefined literal), unknown when there is none.
    void react(const std::vector<bool>& present, const std::vector<std::string>& values);

    // After a reaction: presence of a variable in that reaction (a
    // register's as it was before its refresh), value of a valued signal
    // (unknown_value when not known).
    bool is_present(long var) const
    {
        if (var < 0 || var >= variables)
            return false;
        int k = state_index[static_cast<std::size_t>(var)];
        return (k < 0 ? memory[static_cast<std::size_t>(var)] : during[static_cast<std::size_t>(k)]) != 0;
    }
    std::string value_of(const signal_view& s) const;

    // Sizes of the compiled program.
    std::size_t step_count() const { return steps.size(); }
    std::size_t hook_count() const { return hooks.size(); }

private:
    // memory[d] = memory[x] ? memory[hi] : memory[lo] ^ neg.
    struct step {
        std::uint32_t d, x, hi, lo;
        std::uint8_t neg;
    };
    // Runs before the step at `at`: an abstract equation gives `var` the
    // truth of `binding`'s value; a clock takes the value when `var` holds.
    struct hook {
        std::size_t at;
        bool abstract;
        long var;
        DataBinding* binding;
        std::string clock_key;
    };
    struct latch {
        long target, source;
    };
    struct memory_copy {
        long pre, source;
        std::string pre_key, source_key; // empty: a pure pair
        std::string initial;             // text of the initial value
        bool stored_present;
        std::string stored_value;
    };

    Module* module;
    std::string name;
    long variables = 0;
    std::uint32_t zero_slot = 0, one_slot = 0;
    std::vector<std::uint8_t> memory;
    std::vector<step> steps;
    std::vector<hook> hooks;
    std::vector<latch> registers;
    std::vector<std::uint8_t> register_initial;
    std::vector<std::uint8_t> during;     // each register in the last reaction
    std::vector<int> state_index;         // by variable: its register, or -1
    std::vector<memory_copy> copies;
    std::vector<signal_view> input_views, output_views, local_views;
    std::vector<std::pair<long, std::string>> output_clocks; // unset when the clock is absent
    std::map<std::string, std::string> values;
    // The type of each valued signal that the C sets to its type's zero,
    // and those zeros as far as they are known.
    std::vector<std::pair<std::string, std::string>> zero_types;
    std::map<std::string, std::string> zeros;
    data_source source;

    void compile();
    void run_steps(std::size_t from, std::size_t to);
    void run_hook(const hook& h);
    std::string evaluate(DataExpr* expr);
    std::string initial_value(const std::string& text);
    std::string type_zero(const std::string& type);

    friend class engine_form;
};

#endif
