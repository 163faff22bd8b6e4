// The wood: tables, learning and forgetting, lookups, forwarding to the
// manager, new variables.

#include "wood/Bddexpression.h"

#include "bdd/bddpp_memory.h"
#include "support/mapped_block.h"

#include <cstdlib>
#include <iostream>
#include <new>

namespace {

const long max_arrays_length = 536870912; // 2^29

bool initialised(const bdd& f) { return f.manager_ref() != nullptr && f.node() != nullptr; }

} // namespace

void Bddexpressionwood::allocate_tables(long length, long live)
{
    // The equations' and the dates' tables come zeroed: a slot reads null
    // and 0 until it is written.
    arrays_length = length;
    auto bytes = [length](std::size_t each) { return each * static_cast<std::size_t>(length); };
    exp_table = static_cast<Bddexpression**>(bdd_block_alloc(bytes(sizeof(Bddexpression*))));
    amont_table = static_cast<IndexSet*>(bdd_block_alloc(bytes(sizeof(IndexSet)), false));
    for (long i = 0; i < live; i++) new (&amont_table[i]) IndexSet();
    late_dates = static_cast<long*>(bdd_block_alloc(bytes(sizeof(long))));
}

void Bddexpressionwood::release_tables(Bddexpression** exps, IndexSet* readers, long* dates, long live)
{
    if (readers != nullptr)
        for (long i = 0; i < live; i++) readers[i].~IndexSet();
    bdd_block_free(readers);
    bdd_block_free(dates);
    bdd_block_free(exps);
}

static void init_from_manager(Bddexpressionwood& wood)
{
    wood.common_bdd_manager = 0;
    wood.nb_level = 0;
    wood.nb_bdd_vars = wood.bdd_manager != nullptr ? wood.bdd_manager->variables_number : 0;
    long length = 1;
    while (length < wood.nb_bdd_vars) {
        if (length >= max_arrays_length) {
            std::cerr << "in Bddexpression: Nb bdd vars reached!" << std::endl
                      << "program aborted ..." << std::endl;
            std::exit(1);
        }
        length *= 2;
    }
    wood.allocate_tables(length, wood.nb_bdd_vars);
}

Bddexpressionwood::Bddexpressionwood()
    : common_bdd_manager(0), bdd_manager(new bddpp_manager()), nb_bdd_vars(0), arrays_length(0),
      exp_table(nullptr), amont_table(nullptr), late_dates(nullptr), nb_level(0)
{
    init_from_manager(*this);
}

Bddexpressionwood::Bddexpressionwood(bddpp_manager* manager)
    : common_bdd_manager(0), bdd_manager(manager), nb_bdd_vars(0), arrays_length(0),
      exp_table(nullptr), amont_table(nullptr), late_dates(nullptr), nb_level(0)
{
    init_from_manager(*this);
}

Bddexpressionwood::~Bddexpressionwood()
{
    if (exp_table != nullptr)
        for (long i = 0; i < nb_bdd_vars; i++) delete exp_table[i];
    release_tables(exp_table, amont_table, late_dates, nb_bdd_vars);
    // Equations hold handles of the manager: they go first.
    if (common_bdd_manager == 0) delete bdd_manager;
    exp_ids.clear();
}

void Bddexpressionwood::update_bdd_vars()
{
    if (bdd_manager == nullptr) return;
    long count = bdd_manager->variables_number;
    if (nb_bdd_vars >= count) return;
    if (count > arrays_length) {
        long length = arrays_length < 1 ? 1 : arrays_length;
        while (length < count) {
            if (length > 536870911) {
                std::cerr << "in Bddexpressionwood: Nb bdd vars reached!" << std::endl
                          << "program aborted ..." << std::endl;
                std::exit(1);
            }
            length *= 2;
        }
        Bddexpression** old_exps = exp_table;
        IndexSet* old_amont = amont_table;
        long* old_late = late_dates;
        allocate_tables(length, nb_bdd_vars);
        for (long i = 0; i < nb_bdd_vars; i++) {
            exp_table[i] = old_exps[i];
            amont_table[i].swap(old_amont[i]);
            late_dates[i] = old_late[i];
        }
        release_tables(old_exps, old_amont, old_late, nb_bdd_vars);
        for (long i = 0; i < nb_bdd_vars; i++)
            if (exp_table[i] != nullptr && exp_table[i]->abstraction == 0)
                exp_table[i]->internal_build_dependances();
        // The new slots of the fresh tables read as zero already; their
        // pages are made present on the other processor, the readers' sets
        // from the back while they are built from the front here, the
        // equations and dates before the equations come to them.
        auto fresh = [this, count](void* table, std::size_t each) {
            const std::size_t bytes = (count - nb_bdd_vars) * each;
            if (bytes >= (std::size_t(2) << 20))
                make_present_soon(static_cast<char*>(table) + nb_bdd_vars * each, bytes);
        };
        fresh(amont_table, sizeof(IndexSet));
        fresh(exp_table, sizeof(Bddexpression*));
        fresh(late_dates, sizeof(long));
        for (long i = nb_bdd_vars; i < count; i++) new (&amont_table[i]) IndexSet();
        nb_bdd_vars = count;
        return;
    }
    for (long i = nb_bdd_vars; i < count; i++) {
        exp_table[i] = nullptr;
        new (&amont_table[i]) IndexSet();
        late_dates[i] = 0;
    }
    nb_bdd_vars = count;
}

void Bddexpressionwood::update_bdd_vars(long new_index)
{
    if (bdd_manager == nullptr) return;
    long count = bdd_manager->variables_number;
    if (nb_bdd_vars + 1 != count) {
        std::cerr << "Internal error in update_bdd_vars(nouv_index):" << std::endl
                  << "awaited " << nb_bdd_vars + 1 << " variables, found: " << count << std::endl;
        return;
    }
    long old_nb = nb_bdd_vars;
    update_bdd_vars(); // room for one more, cleared last slot
    if (new_index < 0 || new_index >= old_nb) return; // nothing to move
    for (long i = old_nb; i > new_index; i--) {
        exp_table[i] = exp_table[i - 1];
        amont_table[i].swap(amont_table[i - 1]);
        late_dates[i] = late_dates[i - 1];
    }
    exp_table[new_index] = nullptr;
    amont_table[new_index].clear();
    late_dates[new_index] = 0;
    auto shifted = [new_index](const IndexSet& s) {
        IndexSet r;
        for (long x : s) r.insert(x >= new_index ? x + 1 : x);
        return r;
    };
    for (long i = 0; i < nb_bdd_vars; i++) amont_table[i] = shifted(amont_table[i]);
    // The slots moved, so the set of filled slots moves with them.
    exp_ids = shifted(exp_ids);
    for (long i = 0; i < nb_bdd_vars; i++)
        if (exp_table[i] != nullptr && exp_table[i]->abstraction == 0)
            exp_table[i]->internal_build_dependances();
}

// learn_expression and learn_abstract_expression differ only by the readers
// that an abstract definition declares.
static void learn(Bddexpressionwood& wood, Bddexpression* e, IndexSet* readers)
{
    if (e == nullptr) {
        std::cerr << "INTERNAL ERROR in Bddexpressionwood::learn_expression():" << std::endl
                  << "no expression !!!" << std::endl;
        return;
    }
    long i = wood.bdd_manager->Bdd_if_index(e->bdd_var);
    if (i < 0) {
        std::cerr << "INTERNAL ERROR in Bddexpressionwood::learn_expression():" << std::endl
                  << "no left member in expression" << std::endl;
        return;
    }
    if (i >= wood.bdd_manager->variables_number) {
        std::cerr << "INTERNAL ERROR in Bddexpressionwood::learn_expression():" << std::endl
                  << "bdd variable doesn't exist in Bdd manager" << std::endl;
        return;
    }
    if (i >= wood.nb_bdd_vars) wood.update_bdd_vars();
    Bddexpression* old = wood.exp_table[i];
    if (old == e) return;
    if (old != nullptr) {
        // The old equation is left alone: neither destroyed nor reachable.
        for (long d : old->dependances)
            if (d >= 0 && d < wood.nb_bdd_vars) wood.amont_table[d].erase(i);
    } else {
        // Equations mostly come in ascending index: the end is the hint.
        wood.exp_ids.insert(wood.exp_ids.end(), i);
    }
    wood.exp_table[i] = e;
    // The readers' sets lie at random in a large table: their reads start
    // together.
    for (long d : e->dependances)
        if (d >= 0 && d < wood.nb_bdd_vars) __builtin_prefetch(&wood.amont_table[d]);
    for (long d : e->dependances)
        if (d >= 0 && d < wood.nb_bdd_vars) wood.amont_table[d].insert(wood.amont_table[d].end(), i);
    if (readers != nullptr)
        for (long r : *readers)
            if (r >= 0 && r < wood.nb_bdd_vars) wood.amont_table[i].insert(r);
    if (wood.nb_level < e->early_date) wood.nb_level = e->early_date;
    if (wood.nb_level < wood.late_dates[i]) wood.nb_level = wood.late_dates[i];
}

void Bddexpressionwood::learn_expression(Bddexpression* e) { learn(*this, e, nullptr); }

void Bddexpressionwood::learn_abstract_expression(Bddexpression* e, IndexSet* readers)
{
    learn(*this, e, readers);
}

void Bddexpressionwood::forget_expression_by_bddid(long id)
{
    if (id < 0 || id >= nb_bdd_vars) {
        std::cerr << "Error in Bddexpressionwood::forget_expression_by_bddid(): " << std::endl
                  << id << " value not found ..." << std::endl;
        return;
    }
    Bddexpression* e = exp_table[id];
    if (e == nullptr || !amont_table[id].empty()) return;
    for (long d : e->dependances)
        if (d >= 0 && d < nb_bdd_vars) amont_table[d].erase(id);
    delete e;
    exp_table[id] = nullptr;
    exp_ids.erase(id);
    late_dates[id] = 0;
}

void Bddexpressionwood::absolute_forget_expression_by_bddid(long id)
{
    if (id < 0 || id >= nb_bdd_vars) {
        std::cerr << "Error in Bddexpressionwood::forget_expression_by_bddid(): " << std::endl
                  << id << " value not found ..." << std::endl;
        return;
    }
    Bddexpression* e = exp_table[id];
    if (e == nullptr || !amont_table[id].empty()) return;
    delete e;
    exp_table[id] = nullptr;
    exp_ids.erase(id);
}

void Bddexpressionwood::append_not_expression(long index)
{
    if (index < 0 || index >= nb_bdd_vars || exp_table[index] == nullptr) return;
    exp_table[index]->append_not_exp();
}

// ------------------------------------------------------------------ lookups

Bddexpression* Bddexpressionwood::exp_by_index(long index) const
{
    if (index < 0 || index >= nb_bdd_vars) {
        std::cerr << "ERROR in Bddexpressionwood::exp_by_index : id `" << index << "' not found!"
                  << std::endl;
        return nullptr;
    }
    return exp_table[index];
}

Bddexpression* Bddexpressionwood::exp_by_bdd(bdd var) const
{
    long i = bdd_manager->Index_var_by_bdd(var);
    if (i < 0 || i >= nb_bdd_vars) {
        std::cerr << "ERROR in Bddexpressionwood::exp_by_bdd : bdd not found!" << std::endl;
        return nullptr;
    }
    return exp_table[i];
}

Bddexpression* Bddexpressionwood::exp_by_bddname(std::string nm) const
{
    long i = bdd_manager->Index_var_by_name(nm);
    if (i < 0 || i >= nb_bdd_vars) {
        std::cerr << "ERROR in Bddexpressionwood::exp_by_bddname : `" << nm << "' not found!"
                  << std::endl;
        return nullptr;
    }
    return exp_table[i];
}

// The two scans by the name field raise their counter before the bound test
// and compare the slot behind it: the last slot is never compared, and the
// counter handed back is the match's index plus one. Callers live with it.
static long scan_by_name(const Bddexpressionwood& wood, const std::string& nm)
{
    long counter = 0;
    for (;;) {
        counter++;
        if (counter >= wood.nb_bdd_vars) return -1;
        Bddexpression* e = wood.exp_table[counter - 1];
        if (e != nullptr && e->name == nm) return counter;
    }
}

Bddexpression* Bddexpressionwood::exp_by_name(std::string nm) const
{
    long counter = scan_by_name(*this, nm);
    if (counter < 0) {
        std::cerr << "ERROR in Bddexpressionwood::exp_by_name : `" << nm << "' not found!"
                  << std::endl;
        return nullptr;
    }
    return exp_table[counter - 1];
}

long Bddexpressionwood::Index_exp_by_name(std::string nm) const
{
    long counter = scan_by_name(*this, nm);
    if (counter < 0) {
        std::cerr << "ERROR in Bddexpressionwood::Index_exp_by_name : `" << nm << "' not found!"
                  << std::endl;
        return -1;
    }
    return counter;
}

std::string Bddexpressionwood::Name_exp_by_index(long index) const
{
    if (index < 0 || index >= nb_bdd_vars || exp_table[index] == nullptr) {
        std::cerr << "ERROR: in Bddexpressionwood::Name_exp_by_index(): index " << index
                  << " not found!" << std::endl;
        return std::string();
    }
    return exp_table[index]->name;
}

std::string Bddexpressionwood::Name_exp_by_bdd(bdd var) const
{
    long i = bdd_manager->Index_var_by_bdd(var);
    if (i < 0 || i >= nb_bdd_vars || exp_table[i] == nullptr) {
        std::cerr << "ERROR: in Bddexpressionwood::Name_exp_by_bdd(): bdd not found!" << std::endl;
        return std::string();
    }
    return exp_table[i]->name;
}

std::string Bddexpressionwood::Bddname_exp_by_index(long index) const
{
    if (index < 0 || index >= nb_bdd_vars || exp_table[index] == nullptr) {
        std::cerr << "ERROR: in Bddexpressionwood::Bddname_exp_by_index(): id " << index
                  << " not found!" << std::endl;
        return std::string();
    }
    return exp_table[index]->my_bddname();
}

std::string Bddexpressionwood::Bddname_exp_by_bdd(bdd var) const
{
    return bdd_manager->Name_var_by_bdd(var);
}

Bddexpression* Bddexpressionwood::exp(int n) const
{
    if (n < 0 || n >= exp_number()) {
        std::cerr << "ERROR in Bddexpressionwood::exp(): " << n << " bad number ..." << std::endl
                  << "possible: ";
        put_set(std::cerr, exp_ids) << std::endl;
        return nullptr;
    }
    auto it = exp_ids.begin();
    for (int k = 0; k < n; k++) ++it;
    long i = *it;
    return i >= 0 && i < nb_bdd_vars ? exp_table[i] : nullptr;
}

long Bddexpressionwood::getLateDate(bdd var) const
{
    if (!initialised(var) || bdd_manager == nullptr) return 0;
    long i = bdd_manager->Index_var_by_bdd(var);
    if (i < 0 || i >= nb_bdd_vars) return 0;
    return late_dates[i];
}

// ------------------------------------------------------------ forwarding

bdd Bddexpressionwood::Bdd_one() { return bdd_manager->Bdd_one(); }
bdd Bddexpressionwood::Bdd_zero() { return bdd_manager->Bdd_zero(); }
bdd Bddexpressionwood::Bdd_var_by_index(long index) { return bdd_manager->Bdd_var_by_index(index); }
long Bddexpressionwood::Index_var_by_name(std::string nm) { return bdd_manager->Index_var_by_name(nm); }
std::string Bddexpressionwood::Name_var_by_index(long index)
{
    return bdd_manager->Name_var_by_index(index);
}
std::string Bddexpressionwood::Name_var_by_bdd(bdd f) { return bdd_manager->Name_var_by_bdd(f); }
long Bddexpressionwood::Index_var_by_bdd(bdd f) { return bdd_manager->Index_var_by_bdd(f); }
long Bddexpressionwood::Bdd_if_index(bdd f) { return bdd_manager->Bdd_if_index(f); }
bool Bddexpressionwood::Bdd_is_tautology(bdd f) { return bdd_manager->Bdd_is_tautology(f); }
bdd Bddexpressionwood::Bdd_and(bdd f, bdd g) { return bdd_manager->Bdd_and(f, g); }
bdd Bddexpressionwood::Bdd_not(bdd f) { return bdd_manager->Bdd_not(f); }

// ---------------------------------------------------------- new variables

bdd Bddexpressionwood::New_var_last(std::string nm)
{
    bdd f = bdd_manager->New_var_last(nm);
    update_bdd_vars();
    return f;
}

long Bddexpressionwood::Index_new_var_last(std::string nm)
{
    bdd f = New_var_last(nm);
    return bdd_manager->Bdd_if_index(f);
}

long Bddexpressionwood::Index_var_or_new_last(const std::string& nm)
{
    bool created = false;
    long index = bdd_manager->Index_var_or_new_last(nm, created);
    if (created) update_bdd_vars();
    return index;
}

bdd Bddexpressionwood::New_var_before_by_bdd(bdd neighbour, std::string nm)
{
    long index = bdd_manager->Bdd_if_index(neighbour);
    bdd f = bdd_manager->New_var_before(neighbour, nm);
    update_bdd_vars(index);
    return f;
}

bdd Bddexpressionwood::New_var_before_by_index(long index, std::string nm)
{
    bdd f = bdd_manager->New_var_before(index, nm);
    update_bdd_vars(index);
    return f;
}

bdd Bddexpressionwood::New_var_after_by_bdd(bdd neighbour, std::string nm)
{
    long index = bdd_manager->Bdd_if_index(neighbour);
    bdd f = bdd_manager->New_var_after(neighbour, nm);
    update_bdd_vars(index + 1);
    return f;
}

bdd Bddexpressionwood::New_var_after_by_index(long index, std::string nm)
{
    bdd f = bdd_manager->New_var_after(index, nm);
    update_bdd_vars(index + 1);
    return f;
}

void Bddexpressionwood::delete_prefixe_names(std::string) { std::cerr << "a faire" << std::endl; }
