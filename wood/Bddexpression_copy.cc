// Copies of equations and woods across managers, and the forwards to the
// manager's transformations.

#include "wood/Bddexpression.h"

namespace {

bool initialised(const bdd& f) { return f.manager_ref() != nullptr && f.node() != nullptr; }

// The function that f is in its own manager, rebuilt in `target`'s.
bdd carried_over(const Bddexpression& source, Bddexpressionwood* target, const bdd& f)
{
    if (!initialised(f) || target == nullptr || target->bdd_manager == nullptr) return bdd();
    bddpp_manager* from = source.wood != nullptr && source.wood->bdd_manager != nullptr
                              ? source.wood->bdd_manager
                              : f.manager_ref();
    return bddpp_manager::Bdd_isomorphe(target->bdd_manager, from, f);
}

} // namespace

Bddexpression::Bddexpression(Bddexpressionwood* wd, const Bddexpression& other)
    : wood(wd), name(other.name), abstraction(other.abstraction), user_type(other.user_type),
      exp_def(other.exp_def), w(other.w), dependances(other.dependances), early_date(other.early_date)
{
    bdd_var = carried_over(other, wd, other.bdd_var);
    bdd_exp = carried_over(other, wd, other.bdd_exp);
}

Bddexpression::Bddexpression(Bddexpressionwood*, Bddexpressionwood* target,
                             const Bddexpression& other)
    : Bddexpression(target, other)
{
    if (target != nullptr) target->learn_expression(this);
}

// ------------------------------------------------------------ deep copies

// Shared by the copy constructors and assignments; the target's previous
// contents are not released.
static void copy_wood(Bddexpressionwood& target, const Bddexpressionwood* source)
{
    target.common_bdd_manager = source->common_bdd_manager;
    target.bdd_manager = source->common_bdd_manager == 0 && source->bdd_manager != nullptr
                             ? new bddpp_manager(source->bdd_manager)
                             : source->bdd_manager;
    target.exp_ids = source->exp_ids;
    target.nb_level = source->nb_level;
    target.nb_bdd_vars = source->nb_bdd_vars;
    long length = source->arrays_length > 0 ? source->arrays_length : 1;
    target.allocate_tables(length, source->nb_bdd_vars);
    target.arrays_length = source->arrays_length;
    for (long i = 0; i < source->nb_bdd_vars; i++) {
        const Bddexpression* e = source->exp_table[i];
        target.exp_table[i] = e != nullptr ? new Bddexpression(&target, *e) : nullptr;
        target.amont_table[i] = source->amont_table[i];
        target.late_dates[i] = source->late_dates[i];
    }
}

Bddexpressionwood::Bddexpressionwood(Bddexpressionwood* source)
    : common_bdd_manager(0), bdd_manager(nullptr), nb_bdd_vars(0), arrays_length(0),
      exp_table(nullptr), amont_table(nullptr), late_dates(nullptr), nb_level(0)
{
    if (source != nullptr) copy_wood(*this, source);
}

Bddexpressionwood::Bddexpressionwood(const Bddexpressionwood& source)
    : Bddexpressionwood(const_cast<Bddexpressionwood*>(&source)) {}

Bddexpressionwood::Bddexpressionwood(Bddexpressionwood& source)
    : Bddexpressionwood(&source) {}

Bddexpressionwood& Bddexpressionwood::operator=(const Bddexpressionwood& source)
{
    if (this != &source) copy_wood(*this, &source);
    return *this;
}

Bddexpressionwood& Bddexpressionwood::operator=(Bddexpressionwood& source)
{
    return *this = static_cast<const Bddexpressionwood&>(source);
}

// ------------------------------------------------------------ forwarding

bdd Bddexpressionwood::Bdd_reduce(bdd f, bdd c) { return bdd_manager->Bdd_reduce(f, c); }

bdd Bddexpressionwood::Bdd_simplify2(bdd f, bdd care) { return bdd_manager->Bdd_simplify2(f, care); }
