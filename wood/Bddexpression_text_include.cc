// Integration of another wood into this one under a renaming of its
// variables: every variable the instance defines or reads gets a new
// variable here, at the end of the order, and every equation is carried
// over onto the new names.

#include "wood/Bddexpression.h"

#include <cstdlib>
#include <iostream>
#include <vector>

namespace {

// The renamed form of a name. With a renaming map a missing name reads as
// the empty string (and enters the map so, as operator[] does); a suffix
// renames every name.
struct Renamer {
    std::map<std::string, std::string>* renaming;
    const std::string* suffix;

    std::string operator()(const std::string& name) const
    {
        return renaming ? (*renaming)[name] : name + *suffix;
    }
    bool warns() const { return renaming != nullptr; }
};

void warn_no_renaming(const Renamer& rename, const std::string& name)
{
    if (rename.warns())
        std::cerr << "Warning: no renaming for : " << name << std::endl;
}

} // namespace

void Bddexpressionwood::include_shared(Bddexpressionwood& instance,
                                       std::map<std::string, std::string>* renaming,
                                       const std::string* suffix)
{
    const Renamer rename{renaming, suffix};
    bddpp_manager* m = bdd_manager;
    update_bdd_vars();
    std::cerr << "WOOD A INTEGRER avec meme Bdd_manager " << std::endl;
    long n0 = nb_bdd_vars;
    IndexSet used = instance.Set_of_index_used_variables();

    for (long v : used) {
        std::string name = m->Name_var_by_index(v);
        std::string r = rename(name);
        if (r.empty())
            warn_no_renaming(rename, name);
        bdd x = New_var_last(r);
        long index = m->Bdd_if_index(x);
        if (index >= 0 && index < nb_bdd_vars)
            late_dates[index] = (v < instance.nb_bdd_vars) ? instance.late_dates[v] : 0;
    }

    std::vector<long> index_map(m->variables_number);
    for (long k = 0; k < (long)index_map.size(); ++k)
        index_map[k] = k;
    for (long v : used)
        index_map[v] = m->Index_var_by_name(rename(m->Name_var_by_index(v)));

    for (long id : instance.exp_ids) {
        if (id >= n0)
            break;
        Bddexpression* e = (id < instance.nb_bdd_vars) ? instance.exp_table[id] : nullptr;
        if (e == nullptr)
            continue;
        std::string new_name = rename(e->name);
        if (new_name.empty())
            warn_no_renaming(rename, e->name);
        std::string bdd_name = e->my_bddname();
        std::string b = rename(bdd_name);
        if (b.empty()) {
            std::cerr << "Error: no renaming for : " << bdd_name << std::endl;
            std::exit(1);
        }
        bdd x = m->Bdd_var_by_name(b);
        if (e->abstraction != 0) {
            IndexSet deps;
            for (long d : e->dependances)
                deps.insert(index_map[d]);
            IndexSet readers;
            long xi = m->Bdd_if_index(x);
            for (long s : instance.amont_table[id]) {
                long r = index_map[s];
                readers.insert(r);
                if (xi >= 0 && xi < nb_bdd_vars)
                    amont_table[xi].insert(r);
            }
            new Bddexpression(m->Id_var_by_bdd(x), this, &readers, &deps, e->exp_def,
                              e->early_date, e->getLateDate());
        } else {
            bdd f = m->Bdd_replace_vars(e->bdd_exp, index_map.data());
            new Bddexpression(new_name, this, x, f, e->exp_def, e->early_date, e->getLateDate(),
                              e->user_type);
        }
    }

    instance.update_bdd_vars();
    if (instance.nb_level > nb_level)
        nb_level = instance.nb_level;
    m->Bdd_gc();
}

void Bddexpressionwood::include_other(Bddexpressionwood& instance,
                                      std::map<std::string, std::string>* renaming,
                                      const std::string* suffix)
{
    const Renamer rename{renaming, suffix};
    bddpp_manager* m = bdd_manager;
    bddpp_manager* src = instance.bdd_manager;
    update_bdd_vars();
    IndexSet used = instance.Set_of_index_used_variables();

    std::vector<long> index_map(src->variables_number);
    for (long k = 0; k < (long)index_map.size(); ++k)
        index_map[k] = k;
    for (long v : used) {
        std::string name = src->Name_var_by_index(v);
        std::string r = rename(name);
        if (r.empty())
            warn_no_renaming(rename, name);
        bdd x = New_var_last(r);
        long index = m->Bdd_if_index(x);
        if (index >= 0 && index < nb_bdd_vars)
            late_dates[index] = (v < instance.nb_bdd_vars) ? instance.late_dates[v] : 0;
        if (v < (long)index_map.size())
            index_map[v] = index;
    }

    for (long id : instance.exp_ids) {
        Bddexpression* e = (id < instance.nb_bdd_vars) ? instance.exp_table[id] : nullptr;
        if (e == nullptr)
            continue;
        std::string new_name = rename(e->name);
        if (new_name.empty())
            warn_no_renaming(rename, e->name);
        std::string bdd_name = e->my_bddname();
        std::string b = rename(bdd_name);
        if (b.empty())
            warn_no_renaming(rename, bdd_name);
        if (e->abstraction != 0) {
            IndexSet deps;
            for (long d : e->dependances)
                deps.insert(index_map[d]);
            Bddexpression* copy = new Bddexpression(m->Index_var_by_name(b), this, deps,
                                                    e->exp_def, e->early_date, e->getLateDate());
            copy->user_type = e->user_type;
        } else {
            bdd var = e->bdd_var;
            bdd exp = e->bdd_exp;
            bdd new_var = m->Bdd_isomorphe(m, src, var, index_map.data());
            bdd new_exp = m->Bdd_isomorphe(m, src, exp, index_map.data());
            new Bddexpression(new_name, this, new_var, new_exp, e->exp_def, e->early_date,
                              e->getLateDate(), e->user_type);
        }
    }

    instance.update_bdd_vars();
    if (instance.nb_level > nb_level)
        nb_level = instance.nb_level;
    m->Bdd_gc();
}

void Bddexpressionwood::Include_wood_instance(Bddexpressionwood& instance,
                                              std::map<std::string, std::string>& renaming)
{
    if (instance.bdd_manager == bdd_manager)
        include_shared(instance, &renaming, nullptr);
    else
        include_other(instance, &renaming, nullptr);
}

void Bddexpressionwood::Include_wood_instance(Bddexpressionwood& instance, std::string& suffix)
{
    if (instance.bdd_manager == bdd_manager)
        include_shared(instance, nullptr, &suffix);
    else
        include_other(instance, nullptr, &suffix);
}
