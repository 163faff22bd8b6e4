// One equation: construction, changes of the right member, dependances.

#include "wood/Bddexpression.h"

#include "wood/support_rows.h"

#include <algorithm>
#include <iostream>
#include <vector>

namespace {

bool initialised(const bdd& f) { return f.manager_ref() != nullptr && f.node() != nullptr; }

// Indices of the variables that f reads, ascending.
IndexSet index_support(bddpp_manager* manager, const bdd& f)
{
    if (manager == nullptr) return IndexSet();
    return manager->set_of_index_depend_on(f);
}

// deps becomes the index support of f. Most rebuilds find the set as it
// was, so it is compared first and rebuilt only when it differs.
void refresh_support(IndexSet& deps, bddpp_manager* manager, const bdd& f)
{
    if (f.manager_ref() != manager || f.node() == nullptr) {
        deps = index_support(manager, f);
        return;
    }
    static std::vector<long> indexes;
    wood_rows::support_indexes(manager, f, indexes);
    if (wood_rows::same_members(deps, indexes))
        return;
    deps.assign(indexes.begin(), indexes.end());
}

} // namespace

Bddexpression::Bddexpression()
    : wood(nullptr), abstraction(1), user_type(0), w(1), early_date(0) {}

Bddexpression::Bddexpression(Bddexpressionwood* wd)
    : wood(wd), abstraction(1), user_type(0), w(1), early_date(0) {}

Bddexpression::Bddexpression(std::string nm, Bddexpressionwood* wd, bdd var, bdd exp, long early,
                             long late)
    : Bddexpression(nm, wd, var, exp, early, late, 0) {}

Bddexpression::Bddexpression(std::string nm, Bddexpressionwood* wd, bdd var, bdd exp, long early,
                             long late, int type)
    : wood(wd), name(nm), abstraction(1), user_type(type), w(1), early_date(early)
{
    if (wood == nullptr) return;
    bdd_var = var;
    bdd_exp = exp;
    abstraction = 0;
    build_normal_dependances();
    wood->learn_expression(this);
    setLateDate(late);
}

Bddexpression::Bddexpression(Bddexpressionwood* wd, bdd var, bdd exp, long early, long late)
    : wood(wd), abstraction(1), user_type(0), w(1), early_date(early)
{
    if (wood == nullptr) return;
    if (wood->bdd_manager != nullptr && initialised(var))
        name = wood->bdd_manager->Name_var_by_bdd(var);
    bdd_var = var;
    bdd_exp = exp;
    abstraction = 0;
    build_normal_dependances();
    wood->learn_expression(this);
    setLateDate(late);
}

Bddexpression::Bddexpression(std::string nm, Bddexpressionwood* wd, bdd var, bdd exp,
                             std::string def, long early, long late, int type)
    : wood(wd), name(nm), abstraction(1), user_type(type), exp_def(def), w(1), early_date(early)
{
    if (wood == nullptr) return;
    bdd_var = var;
    if (!def.empty()) {
        build_normal_dependances();
        wood->learn_abstract_expression(this, nullptr);
    } else {
        bdd_exp = exp;
        abstraction = 0;
        build_normal_dependances();
        wood->learn_expression(this);
    }
    setLateDate(late);
}

Bddexpression::Bddexpression(long id, Bddexpressionwood* wd, IndexSet* readers,
                             IndexSet* deps, long early, long late)
    : Bddexpression(id, wd, readers, deps, std::string(), early, late) {}

Bddexpression::Bddexpression(long id, Bddexpressionwood* wd, IndexSet* readers,
                             IndexSet* deps, std::string def, long early, long late)
    : wood(wd), abstraction(1), user_type(0), exp_def(def), w(1), early_date(early)
{
    if (deps != nullptr) dependances = *deps;
    if (wood == nullptr || wood->bdd_manager == nullptr) return;
    bdd_var = wood->bdd_manager->Bdd_var_by_id(id);
    if (initialised(bdd_var)) name = wood->bdd_manager->Name_var_by_bdd(bdd_var);
    build_normal_dependances();
    wood->learn_abstract_expression(this, readers);
    setLateDate(late);
}

Bddexpression::Bddexpression(long id, Bddexpressionwood* wd, IndexSet& deps,
                             std::string def, long early, long late)
    : Bddexpression(id, wd, nullptr, &deps, def, early, late) {}

Bddexpression::Bddexpression(const Bddexpression& other)
    : wood(other.wood), name(other.name), bdd_var(other.bdd_var), abstraction(other.abstraction),
      user_type(other.user_type), exp_def(other.exp_def), w(other.w), dependances(other.dependances),
      early_date(other.early_date)
{
    if (other.abstraction == 0) bdd_exp = other.bdd_exp;
}

Bddexpression::~Bddexpression() {}

Bddexpression& Bddexpression::operator=(const Bddexpression& other)
{
    wood = other.wood;
    name = other.name;
    bdd_var = other.bdd_var;
    abstraction = other.abstraction;
    exp_def = other.exp_def;
    bdd_exp = other.bdd_exp;
    w = other.w;
    dependances = other.dependances;
    early_date = other.early_date;
    user_type = other.user_type;
    return *this;
}

bool Bddexpression::operator==(const Bddexpression& other) const
{
    return abstraction == other.abstraction && bdd_var == other.bdd_var &&
           bdd_exp == other.bdd_exp && user_type == other.user_type && w == other.w &&
           name == other.name && !(exp_def == other.exp_def);
}

bool Bddexpression::operator!=(const Bddexpression& other) const
{
    return !(abstraction == other.abstraction && bdd_var == other.bdd_var &&
             bdd_exp == other.bdd_exp && user_type == other.user_type && w == other.w &&
             name == other.name && exp_def == other.exp_def);
}

std::string Bddexpression::my_bddname() const
{
    if (!initialised(bdd_var)) return std::string();
    bddpp_manager* m = wood != nullptr && wood->bdd_manager != nullptr ? wood->bdd_manager
                                                                       : bdd_var.manager_ref();
    return m->Name_var_by_bdd(bdd_var);
}

void Bddexpression::setExpDef(std::string def)
{
    exp_def = def;
    if (!def.empty()) abstraction = 1;
}

long Bddexpression::own_index() const
{
    if (wood == nullptr || wood->bdd_manager == nullptr || !initialised(bdd_var)) return -1;
    return wood->bdd_manager->Index_var_by_bdd(bdd_var);
}

long Bddexpression::getLateDate() const
{
    if (wood == nullptr) return 0;
    return wood->getLateDate(bdd_var);
}

void Bddexpression::setLateDate(long date)
{
    if (wood == nullptr) {
        std::cerr << "internal error in Bddexpression::setLateDate(): no wood found!" << std::endl;
        return;
    }
    long i = own_index();
    if (i >= 0 && i < wood->nb_bdd_vars) wood->late_dates[i] = date;
}

void Bddexpression::setBddVar(bddpp_manager*, bdd var)
{
    if (wood != nullptr) {
        std::cerr << "In Bddexpression::setBddVar(bddpp_manager *, bdd): " << std::endl
                  << "   wood already defined! Aborted  ..." << std::endl;
        return;
    }
    bdd_var = var;
}

void Bddexpression::setBddExp(bddpp_manager* manager, bdd exp)
{
    if (wood != nullptr) {
        std::cerr << "In Bddexpression::setBddExp(bddpp_manager *, bdd): " << std::endl
                  << "   wood already defined! Aborted  ..." << std::endl
                  << "   use only Bddexpression::setBddExp(bdd) !!!" << std::endl;
        return;
    }
    bdd_exp = exp;
    abstraction = 0;
    internal_build_dependances(manager);
}

namespace {

// The common steps of every change of a right member inside a wood: the
// readers' table follows the new dependances. With `watch`, the two critical
// paths run as a cycle watch; their results are dropped.
void replace_right_member(Bddexpression& e, const bdd& exp, bool watch)
{
    Bddexpressionwood* wood = e.wood;
    long i = wood->bdd_manager->Index_var_by_bdd(e.bdd_var);
    bool linked = i >= 0 && i < wood->nb_bdd_vars;
    if (linked)
        for (long d : e.dependances)
            if (d >= 0 && d < wood->nb_bdd_vars) wood->amont_table[d].erase(i);
    e.bdd_exp = exp;
    e.abstraction = 0;
    e.build_normal_dependances();
    linked = i >= 0 && i < wood->nb_bdd_vars;
    if (!linked) return;
    if (watch) wood->down_critical_path(i, 0, 0);
    // The up walk may dissolve variables and rewrite this very set.
    std::vector<long> deps(e.dependances.begin(), e.dependances.end());
    for (long d : deps) {
        if (d < 0 || d >= wood->nb_bdd_vars) continue;
        wood->amont_table[d].insert(i);
        if (watch) wood->up_critical_path(i, 0, 1);
    }
}

} // namespace

void Bddexpression::setBddExp(bdd exp)
{
    if (wood == nullptr) {
        std::cerr << "In Bddexpression::setBddExp(): " << std::endl
                  << "   no wood defined! Aborted  ..." << std::endl;
        return;
    }
    replace_right_member(*this, exp, true);
}

void Bddexpression::setBddExp(bdd exp, long early, long late)
{
    if (wood == nullptr) {
        std::cerr << "In Bddexpression::setBddExp(): " << std::endl
                  << "   no wood defined! Aborted  ..." << std::endl;
        return;
    }
    replace_right_member(*this, exp, false);
    early_date = early;
    setLateDate(late);
}

void Bddexpression::append_or_exp(bdd exp)
{
    if (wood == nullptr) {
        std::cerr << "In Bddexpression::append_or_exp(): " << std::endl
                  << "   no wood defined! Aborted  ..." << std::endl;
        return;
    }
    bdd joined = wood->bdd_manager->Bdd_or(exp, bdd_exp);
    replace_right_member(*this, joined, true);
}

void Bddexpression::append_and_exp(bdd exp)
{
    if (wood == nullptr) {
        // The or operation's text, as it has always been.
        std::cerr << "In Bddexpression::append_or_exp(): " << std::endl
                  << "   no wood defined! Aborted  ..." << std::endl;
        return;
    }
    bdd joined = wood->bdd_manager->Bdd_and(exp, bdd_exp);
    replace_right_member(*this, joined, true);
}

void Bddexpression::append_not_exp()
{
    if (wood == nullptr) {
        std::cerr << "In Bddexpression::append_not_exp(): " << std::endl
                  << "   no wood defined! Aborted  ..." << std::endl;
        return;
    }
    bdd_exp = wood->bdd_manager->Bdd_not(bdd_exp);
}

void Bddexpression::add_specific_var_dependance(long index) { dependances.insert(index); }

void Bddexpression::setBddexpressionwood(Bddexpressionwood* wd)
{
    wood = wd;
    if (wood != nullptr) wood->learn_expression(this);
}

void Bddexpression::internal_build_dependances()
{
    if (abstraction == 0 && wood != nullptr && wood->bdd_manager != nullptr)
        refresh_support(dependances, wood->bdd_manager, bdd_exp);
}

void Bddexpression::internal_build_dependances(bddpp_manager* manager)
{
    if (abstraction == 0 && manager != nullptr) refresh_support(dependances, manager, bdd_exp);
}

void Bddexpression::build_normal_dependances()
{
    if (wood != nullptr) wood->update_bdd_vars();
    internal_build_dependances();
}

void Bddexpression::build_normal_dependances(bddpp_manager* manager)
{
    internal_build_dependances(manager);
}

IndexSet Bddexpression::set_of_index_used_variables() const
{
    IndexSet result = dependances;
    if (wood != nullptr && wood->bdd_manager != nullptr && initialised(bdd_var))
        result.insert(own_index());
    return result;
}
