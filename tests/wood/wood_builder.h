// Small woods for the tests: variables and equations by name, and the text
// of everything a pass may change in the tables.
#ifndef TARN_TESTS_WOOD_WOOD_BUILDER_H
#define TARN_TESTS_WOOD_WOOD_BUILDER_H

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/bdd/bdd_test_util.h"
#include "wood/Bddexpression.h"

struct WoodBuilder {
    std::unique_ptr<Bddexpressionwood> wood{new Bddexpressionwood()};

    bddpp_manager* m() const { return wood->bdd_manager; }
    bdd var(const std::string& name) { return wood->New_var_last(name); }
    void vars(std::initializer_list<const char*> names)
    {
        for (const char* n : names)
            var(n);
    }
    long index(const std::string& name) const { return m()->Index_var_by_name(name); }
    bdd v(const std::string& name) { return m()->Bdd_var_by_name(name); }
    // The equation of `name`, whose variable is made last if it has none.
    Bddexpression* eq(const std::string& name, const bdd& exp, int type = 0, long early = 0, long late = 0)
    {
        bdd self = index(name) >= 0 ? v(name) : var(name);
        return new Bddexpression(name, wood.get(), self, exp, early, late, type);
    }
    Bddexpression* at(const std::string& name) const { return wood->exp_table[index(name)]; }
    IndexSet readers(const std::string& name) const { return wood->amont_table[index(name)]; }
    IndexSet ids(std::initializer_list<const char*> names) const
    {
        IndexSet r;
        for (const char* n : names)
            r.insert(index(n));
        return r;
    }
    std::vector<std::string> names(const std::list<long>& l) const
    {
        std::vector<std::string> r;
        for (long i : l)
            r.push_back(wood->Name_var_by_index(i));
        return r;
    }
};

// Stream forms carry addresses; the tests compare them without.
inline std::string without_addresses(const std::string& text)
{
    return std::regex_replace(text, std::regex("0x[0-9a-f]+"), "@");
}

// What f wrote on the error stream, addresses left out.
template <class F> std::string stderr_of(F f) { return without_addresses(captured(f)); }

// Everything a pass may change in the tables, in text: nodes by global id,
// slots, readers, dependances, dates.
inline std::string tables_state(WoodBuilder& b)
{
    Bddexpressionwood& w = *b.wood;
    std::ostringstream out;
    out << "nodes " << b.m()->Bdd_total_size() << " vars " << w.nb_bdd_vars << " level " << w.nb_level
        << " ids ";
    put_set(out, w.exp_ids) << "\n";
    for (long i = 0; i < w.nb_bdd_vars; ++i) {
        out << i << " late " << w.late_dates[i] << " readers ";
        put_set(out, w.amont_table[i]);
        if (const Bddexpression* e = w.exp_table[i]) {
            out << " eq " << e->name << " abs " << e->abstraction << " type " << e->user_type << " early "
                << e->early_date << " exp " << bdd_node_global_id(e->bdd_exp) << "/" << bdd_link_type(e->bdd_exp)
                << " deps ";
            put_set(out, e->dependances);
        }
        out << "\n";
    }
    return out.str();
}

#endif
