#include "sim/reaction_engine.h"

#include "bdd/bdd_transform_walk.h"
#include "bdd/bddpp.h"
#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "model/module_bindings.h"
#include "signals/signal.h"
#include "targets/formats.h"
#include "wood/Bddexpression.h"

#include <ostream>
#include <sstream>
#include <unordered_map>

const char* const unknown_value = "--";

// The equation rule of the wood, spoken as steps of the program instead of
// text: a plain copy, the nodes of a right member not met yet (a node
// shared with an earlier equation keeps the slot it got there), and the
// root's slot, negated or not.
class engine_form : public EquationForm {
public:
    engine_form(reaction_engine& engine, bddpp_manager* manager) : engine(engine), manager(manager) {}

    Bddexpression* current = nullptr;

    void copy(std::ostream&, const std::string&, const std::string&) const override
    {
        long x = manager->Index_var_by_bdd(current->bdd_exp);
        emit(static_cast<std::uint32_t>(current->own_index()), engine.zero_slot, engine.zero_slot, slot_of_var(x), 0);
    }
    void nodes(std::ostream&, bddpp_manager* m, bdd_node* root) const override
    {
        bdd_walk::marked_postorder(root, m->one, m->marked(), [&](bdd_node* n) {
            if (n == m->one) {
                slots[n->global_id] = engine.one_slot;
                return;
            }
            std::uint32_t x = slot_of_var(m->Node_index(n));
            if (bdd_walk::is_own_node(n, m->one)) {
                slots[n->global_id] = x;
                return;
            }
            std::uint32_t d = static_cast<std::uint32_t>(engine.memory.size());
            engine.memory.push_back(0);
            emit(d, x, slot_of_node(n->then_node->global_id), slot_of_node(n->else_node->global_id),
                 n->else_link_type == 1 ? 0 : 1);
            slots[n->global_id] = d;
        });
    }
    void root(std::ostream&, const std::string&, long root, bool negated) const override
    {
        emit(static_cast<std::uint32_t>(current->own_index()), engine.zero_slot, engine.zero_slot, slot_of_node(root),
             negated ? 1 : 0);
    }

private:
    reaction_engine& engine;
    bddpp_manager* manager;
    mutable std::unordered_map<long, std::uint32_t> slots; // node global id -> slot

    void emit(std::uint32_t d, std::uint32_t x, std::uint32_t hi, std::uint32_t lo, std::uint8_t neg) const
    {
        engine.steps.push_back({d, x, hi, lo, neg});
    }
    // A variable outside the table reads as the constant zero.
    std::uint32_t slot_of_var(long x) const
    {
        return x >= 0 && x < engine.variables ? static_cast<std::uint32_t>(x) : engine.zero_slot;
    }
    std::uint32_t slot_of_node(long global_id) const
    {
        auto it = slots.find(global_id);
        return it == slots.end() ? engine.zero_slot : it->second;
    }
};

reaction_engine::reaction_engine(Module* module) : module(module), name(module->getName())
{
    compile();
    reset();
}

void reaction_engine::set_data_source(data_source s) { source = std::move(s); }

void reaction_engine::compile()
{
    Bddexpressionwood* wood = module->getBddWood();
    if (wood == nullptr || wood->my_bdd_manager() == nullptr)
        return;
    bddpp_manager* manager = wood->my_bdd_manager();
    variables = manager->variables_number;
    memory.assign(static_cast<std::size_t>(variables) + 2, 0);
    zero_slot = static_cast<std::uint32_t>(variables);
    one_slot = zero_slot + 1;
    memory[one_slot] = 1;

    // The generated text reads state and copies by variable name.
    std::unordered_map<std::string, long> by_name;
    for (long i = variables - 1; i >= 0; --i)
        by_name[wood->Name_var_by_index(i)] = i;
    auto var_named = [&](const std::string& n) {
        auto it = by_name.find(n);
        return it == by_name.end() ? -1L : it->second;
    };

    auto view = [&](Signal* s, long var) {
        bool valued = s->isValued(module);
        if (valued)
            zero_types.push_back({s->getInternalName(), s->getValueType(module)});
        return signal_view{s->getOriginalName(), var, valued, valued ? s->getInternalName() : std::string()};
    };
    if (std::list<Signal*>* ins = module->getInputSignalList())
        for (Signal* s : *ins) {
            long over = s->getOverBddId(module, wood);
            if (over != -1 && module->getBinding(s->getOriginalName()) == nullptr)
                input_views.push_back(view(s, over));
        }
    if (std::list<Signal*>* outs = module->getOutputSignalList())
        for (Signal* s : *outs) {
            long over = s->getInitialOverBddId(module, wood);
            if (over != -1 && module->getBinding(s->getOriginalName()) == nullptr)
                output_views.push_back(view(s, over));
        }

    for (regclass* r : formats::registers(module)) {
        long actual = var_named(r->actual_var()->getOverName(module));
        long next = var_named(r->next_var()->getOverName(module));
        if (actual != -1 && next != -1) {
            registers.push_back({actual, next});
            register_initial.push_back(r->is_initialy_true() ? 1 : 0);
        }
    }
    for (memorizedSignal* pair : formats::memorised(module)) {
        Signal* pre = pair->getPre();
        memory_copy c{var_named(pre->getOriginalName()), var_named(formats::memorisedSource(module, pair, "")), "", "",
                      "", false, unknown_value};
        if (c.pre == -1 || c.source == -1)
            continue;
        if (pre->isValued(module)) {
            c.pre_key = pre->getInternalName();
            c.source_key = pair->getActual()->getInternalName();
            if (pre->getInitialOverBddId(module, wood) != -1)
                c.initial = pair->getInitialValue();
        }
        copies.push_back(c);
    }

    state_index.assign(static_cast<std::size_t>(variables), -1);
    for (std::size_t k = 0; k < registers.size(); ++k)
        state_index[static_cast<std::size_t>(registers[k].target)] = static_cast<int>(k);
    if (std::list<Signal*>* locs = module->getLocalSignalList())
        for (Signal* s : *locs) {
            long over = s->getInitialOverBddId(module, wood);
            if (over >= 0 && over < variables && (wood->Exp_table()[over] != nullptr || state_index[static_cast<std::size_t>(over)] >= 0))
                local_views.push_back(view(s, over));
            else if (s->isValued(module))
                zero_types.push_back({s->getInternalName(), s->getValueType(module)});
        }

    for (const auto& entry : outputClockBindings(module))
        if (!entry.second.empty()) {
            Signal* clock = entry.second.front()->getClock();
            output_clocks.push_back({clock->getInitialOverBddId(module, wood), clock->getInternalName()});
        }

    engine_form form(*this, manager);
    std::ostream nowhere(nullptr);
    for (Bddexpression* e : wood->earliest_equations()) {
        long index = e->own_index();
        if (index < 0 || index >= variables)
            continue;
        if (e->getAbstraction() != 0) {
            hooks.push_back({steps.size(), true, index, abstractEquationBinding(module, index, true), ""});
            continue;
        }
        form.current = e;
        e->put_equation(nowhere, form);
        DataBinding* binding = formats::clockedBinding(module, index);
        if (binding != nullptr && binding->getClock() != nullptr)
            hooks.push_back({steps.size(), false, index, binding, binding->getClock()->getInternalName()});
    }
}

void reaction_engine::reset()
{
    std::fill(memory.begin(), memory.begin() + variables, 0);
    for (std::size_t k = 0; k < registers.size(); ++k)
        memory[static_cast<std::size_t>(registers[k].target)] = register_initial[k];
    during = register_initial;
    values.clear();
    zeros.clear();
    for (const auto& z : zero_types) {
        std::string zero = type_zero(z.second);
        if (zero != unknown_value)
            zeros[z.first] = zero;
    }
    for (memory_copy& c : copies) {
        c.stored_present = false;
        c.stored_value = c.initial.empty() ? std::string(unknown_value) : initial_value(c.initial);
    }
}

std::string reaction_engine::initial_value(const std::string& text)
{
    // A constant's name gives the constant's value; any other text is a
    // literal of the type.
    if (Compilation::GDataConstantTable != nullptr)
        if (ConstantDecl* decl = Compilation::GDataConstantTable->getConstant(text)) {
            DataConstant constant(decl->getConstantIndex());
            return evaluate(&constant);
        }
    return text;
}

std::string reaction_engine::type_zero(const std::string& type)
{
    std::string zero = zero_lustre(type);
    if (Compilation::GDataConstantTable != nullptr && Compilation::GDataConstantTable->getConstant(zero) != nullptr)
        return initial_value(zero);
    return zero == "zero_" + type ? std::string(unknown_value) : zero;
}

std::string reaction_engine::evaluate(DataExpr* expr)
{
    if (expr == nullptr)
        return unknown_value;
    return expr->MOSK_put(module, &values, [this](const std::string& request) -> std::string {
        // A request on an unknown operand is answered unknown without asking.
        std::stringstream fields(request);
        std::string field;
        while (std::getline(fields, field, ','))
            if (field == unknown_value)
                return unknown_value;
        if (!source)
            return unknown_value;
        std::string reply = source(request);
        return reply.empty() ? std::string(unknown_value) : reply;
    });
}

void reaction_engine::run_steps(std::size_t from, std::size_t to)
{
    std::uint8_t* m = memory.data();
    const step* s = steps.data() + from;
    const step* end = steps.data() + to;
    for (; s != end; ++s) {
        std::uint8_t t = m[s->x];
        m[s->d] = static_cast<std::uint8_t>((t & m[s->hi]) | ((t ^ 1) & (m[s->lo] ^ s->neg)));
    }
}

void reaction_engine::run_hook(const hook& h)
{
    if (h.binding == nullptr)
        return;
    if (h.abstract) {
        memory[static_cast<std::size_t>(h.var)] = evaluate(h.binding->getValue()) == "true" ? 1 : 0;
        return;
    }
    if (memory[static_cast<std::size_t>(h.var)] != 0)
        values[h.clock_key] = evaluate(h.binding->getValue());
}

void reaction_engine::react(const std::vector<bool>& present, const std::vector<std::string>& given)
{
    if (memory.empty())
        return;
    values = zeros;
    for (std::size_t i = 0; i < input_views.size(); ++i) {
        bool here = i < present.size() && present[i];
        memory[static_cast<std::size_t>(input_views[i].var)] = here ? 1 : 0;
        if (here && input_views[i].valued && i < given.size())
            values[input_views[i].value_key] = given[i];
    }
    for (const memory_copy& c : copies) {
        memory[static_cast<std::size_t>(c.pre)] = c.stored_present ? 1 : 0;
        if (!c.pre_key.empty() && c.stored_value != unknown_value)
            values[c.pre_key] = c.stored_value;
    }

    std::size_t at = 0;
    for (const hook& h : hooks) {
        run_steps(at, h.at);
        at = h.at;
        run_hook(h);
    }
    run_steps(at, steps.size());

    for (const auto& clock : output_clocks)
        if (!is_present(clock.first)) {
            auto z = zeros.find(clock.second);
            if (z == zeros.end())
                values.erase(clock.second);
            else
                values[clock.second] = z->second;
        }
    for (std::size_t k = 0; k < registers.size(); ++k)
        during[k] = memory[static_cast<std::size_t>(registers[k].target)];
    // In list order, each reading what the ones before have written.
    for (const latch& r : registers)
        memory[static_cast<std::size_t>(r.target)] = memory[static_cast<std::size_t>(r.source)];
    for (memory_copy& c : copies) {
        c.stored_present = memory[static_cast<std::size_t>(c.source)] != 0;
        if (!c.pre_key.empty()) {
            auto it = values.find(c.source_key);
            c.stored_value = it == values.end() ? std::string(unknown_value) : it->second;
        }
    }
}

std::string reaction_engine::value_of(const signal_view& s) const
{
    if (!s.valued)
        return unknown_value;
    auto it = values.find(s.value_key);
    return it == values.end() ? std::string(unknown_value) : it->second;
}
