#ifndef TARN_WOOD_BDDEXPRESSION_H
#define TARN_WOOD_BDDEXPRESSION_H

// The equation wood: boolean equations "variable = right member" over one
// BDD manager, their dependence graph in both directions and their dates.
//
// Every table of the wood is addressed by the BDD variable index of an
// equation's left member. Every walk over a set goes in ascending index
// order; that order decides dates on cycles and the order of generated
// text, so it is behaviour, not an accident of the container.

#include <list>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "bdd/bddpp.h"

class Bddexpressionwood;

// Ordered-set helpers; each returns a new set.
std::set<long> set_union(const std::set<long>& a, const std::set<long>& b);
std::set<long> set_inter(const std::set<long>& a, const std::set<long>& b);
// Members of a that are not in b.
std::set<long> set_priv(const std::set<long>& a, const std::set<long>& b);
// { table[x] for x in s }.
std::set<long> set_reencoding(const std::set<long>& s, const long* table);
// Set form of every report of the wood: "{", members joined by ",", "}".
std::ostream& put_set(std::ostream& out, const std::set<long>& s);

// One equation. The late date is not held here but in the wood, so that a
// variable without an equation has one as well.
class Bddexpression {
public:
    Bddexpressionwood* wood;   // owner; null for a free-standing equation
    std::string name;          // name given at construction (may drift from the manager's)
    bdd bdd_var;               // left member: one variable
    int abstraction;           // 1: right member known only by exp_def and dependances
    std::string exp_def;
    bdd bdd_exp;               // right member; uninitialised while abstract
    long w;                    // weight on a critical path
    std::set<long> dependances;  // indices read by the right member
    long early_date;
    int user_type;             // a Compilation status code, 0 until set

    // Free-standing, abstract, no wood.
    Bddexpression();
    // Abstract, with a wood but not entered in it.
    explicit Bddexpression(Bddexpressionwood* wood);
    Bddexpression(std::string name, Bddexpressionwood* wood, bdd var, bdd exp, long early, long late);
    Bddexpression(std::string name, Bddexpressionwood* wood, bdd var, bdd exp, long early, long late,
                  int user_type);
    // Name taken from the manager.
    Bddexpression(Bddexpressionwood* wood, bdd var, bdd exp, long early, long late);
    // A non-empty def makes an abstract equation without declared readers.
    Bddexpression(std::string name, Bddexpressionwood* wood, bdd var, bdd exp, std::string def,
                  long early, long late, int user_type);
    // Abstract equations on the variable of id `id`; `readers` are the
    // equations that read it although no BDD can show it.
    Bddexpression(long id, Bddexpressionwood* wood, std::set<long>* readers,
                  std::set<long>* deps, long early, long late);
    Bddexpression(long id, Bddexpressionwood* wood, std::set<long>* readers,
                  std::set<long>* deps, std::string def, long early, long late);
    Bddexpression(long id, Bddexpressionwood* wood, std::set<long>& deps, std::string def,
                  long early, long late);
    // Copy in the same wood, not entered in it.
    Bddexpression(const Bddexpression& other);
    // Copy into the manager of `wood` (not entered; the wood's copies place it).
    Bddexpression(Bddexpressionwood* wood, const Bddexpression& other);
    // Copy from `source` into `target`, entered in `target`.
    Bddexpression(Bddexpressionwood* source, Bddexpressionwood* target, const Bddexpression& other);
    virtual ~Bddexpression();

    // Takes over every field, the wood included.
    Bddexpression& operator=(const Bddexpression& other);
    // Equal only when everything matches and the exp_def texts DIFFER:
    // the last test is negated on purpose and must stay so.
    bool operator==(const Bddexpression& other) const;
    bool operator!=(const Bddexpression& other) const;

    bdd my_bdd_var() const { return bdd_var; }
    bdd my_bdd_exp() const { return bdd_exp; }
    // Name of the left member as the manager holds it now.
    std::string my_bddname() const;
    Bddexpressionwood* my_wood() const { return wood; }

    int getAbstraction() const { return abstraction; }
    void setAbstraction(int a) { abstraction = a; }
    std::string getExpDef() const { return exp_def; }
    // A non-empty text also makes the equation abstract.
    void setExpDef(std::string def);
    long getW() const { return w; }
    void setW(long weight) { w = weight; }
    std::set<long> set_of_var_dependances() const { return dependances; }
    long getEarlyDate() const { return early_date; }
    void setEarlyDate(long date) { early_date = date; }
    // Read and written through the wood.
    long getLateDate() const;
    void setLateDate(long date);
    int getUserType() const { return user_type; }
    void setUserType(int type) { user_type = type; }

    // Only while the equation has no wood.
    void setBddVar(bddpp_manager* manager, bdd var);
    void setBddExp(bddpp_manager* manager, bdd exp);
    // In a wood: relinks the readers' table and runs the critical paths as
    // a cycle watch.
    void setBddExp(bdd exp);
    // Same, without the cycle watch, and stores both dates.
    void setBddExp(bdd exp, long early, long late);
    void append_or_exp(bdd exp);
    void append_and_exp(bdd exp);
    void append_not_exp();
    void add_specific_var_dependance(long index);
    void setBddexpressionwood(Bddexpressionwood* w);

    // Rebuild dependances from bdd_exp unless abstract.
    void internal_build_dependances();
    void internal_build_dependances(bddpp_manager* manager);
    void build_normal_dependances();
    void build_normal_dependances(bddpp_manager* manager);
    // dependances plus the own index (when there is a wood and a manager).
    std::set<long> set_of_index_used_variables() const;

    // Index of the left member, or -1 if there is no wood, no manager or no
    // initialised left member.
    long own_index() const;

    // ---- elimination ----
    // ---- end elimination ----

    // ---- integration and text ----
    // ---- end integration and text ----
};

// The wood: all equations of a module over one manager, with the readers
// table (amont_table), the late dates and the number of date levels.
class Bddexpressionwood {
public:
    int common_bdd_manager;        // 0: the wood owns its manager
    bddpp_manager* bdd_manager;
    std::set<long> exp_ids;        // indices that have an equation
    long nb_bdd_vars;              // valid length of the tables
    long arrays_length;            // allocated length, a power of two
    Bddexpression** exp_table;     // equation per variable, or null
    std::set<long>* amont_table;   // readers of each variable
    long* late_dates;
    long nb_level;                 // 0: dates not computed

    Bddexpressionwood();
    explicit Bddexpressionwood(bddpp_manager* manager);
    // Deep copies. A null pointer gives an empty shell.
    explicit Bddexpressionwood(Bddexpressionwood* source);
    Bddexpressionwood(const Bddexpressionwood& source);
    Bddexpressionwood(Bddexpressionwood& source);
    // Deep copy; what the target held is not released.
    Bddexpressionwood& operator=(const Bddexpressionwood& source);
    Bddexpressionwood& operator=(Bddexpressionwood& source);
    virtual ~Bddexpressionwood();

    void set_common_bdd_manager(int c) { common_bdd_manager = c; }
    int get_common_bdd_manager() const { return common_bdd_manager; }
    bddpp_manager* my_bdd_manager() const { return bdd_manager; }
    long exp_number() const { return (long)exp_ids.size(); }
    long Nb_bdd_vars() const { return nb_bdd_vars; }
    long Arrays_length() const { return arrays_length; }
    Bddexpression** Exp_table() const { return exp_table; }
    std::set<long>* Amont_table() const { return amont_table; }
    long* Late_dates() const { return late_dates; }
    long Nb_level() const { return nb_level; }
    // Sets the number of levels; 0 makes the next compute_dates() redate.
    void update_nb_level(long level) { nb_level = level; }

    // Bring the tables up to the manager's count of variables.
    void update_bdd_vars();
    // After one variable was inserted at new_index.
    void update_bdd_vars(long new_index);

    void learn_expression(Bddexpression* e);
    void learn_abstract_expression(Bddexpression* e, std::set<long>* readers);
    void forget_expression_by_bddid(long id);
    void absolute_forget_expression_by_bddid(long id);
    void append_not_expression(long index);

    // Lookups; failures are reported on the error stream.
    Bddexpression* exp_by_index(long index) const;
    Bddexpression* exp_by_bdd(bdd var) const;
    Bddexpression* exp_by_bddname(std::string name) const;
    Bddexpression* exp_by_name(std::string name) const;
    long Index_exp_by_name(std::string name) const;
    std::string Name_exp_by_index(long index) const;
    std::string Name_exp_by_bdd(bdd var) const;
    std::string Bddname_exp_by_index(long index) const;
    std::string Bddname_exp_by_bdd(bdd var) const;
    // n-th equation from 0 in ascending index.
    Bddexpression* exp(int n) const;
    long getLateDate(bdd var) const;

    // Forwarded to the manager.
    bdd Bdd_one();
    bdd Bdd_zero();
    bdd Bdd_var_by_index(long index);
    long Index_var_by_name(std::string name);
    std::string Name_var_by_index(long index);
    std::string Name_var_by_bdd(bdd f);
    long Index_var_by_bdd(bdd f);
    long Bdd_if_index(bdd f);
    bool Bdd_is_tautology(bdd f);
    bdd Bdd_and(bdd f, bdd g);
    bdd Bdd_not(bdd f);
    bdd Bdd_reduce(bdd f, bdd c);
    bdd Bdd_simplify2(bdd f, bdd care);

    bdd New_var_last(std::string name);
    long Index_new_var_last(std::string name);
    bdd New_var_before_by_bdd(bdd neighbour, std::string name);
    bdd New_var_before_by_index(long index, std::string name);
    bdd New_var_after_by_bdd(bdd neighbour, std::string name);
    bdd New_var_after_by_index(long index, std::string name);
    void delete_prefixe_names(std::string prefix);

    // Dependences.
    void internal_global_build_dependances();
    std::set<long> down_dependances(long index, long depth, std::set<long>& acc);
    std::set<long> up_dependances(long index, long depth, std::set<long>& acc);
    // Reports on the error stream whatever stream is given.
    void coherence_dependances_check(std::ostream& out) const;
    std::set<long> Set_of_index_used_variables() const;

    // Dates. compute_dates, the sorts and the critical paths take a fast
    // route where the graph allows it and give the results of the literal
    // passes below, which stay for differential checks.
    long compute_dates();
    long compute_dates(std::list<long>& ids);
    void early_propagation(long var, long date);
    void late_propagation(long var, long date);
    std::list<long> earliest_sort() const;
    std::list<long> latest_sort() const;
    std::list<long> loop_detection();
    long up_critical_path(long var, long depth, long base);
    long down_critical_path(long var, long depth, long base) const;

    long compute_dates_literal();
    long compute_dates_literal(std::list<long>& ids);
    std::list<long> earliest_sort_literal() const;
    std::list<long> latest_sort_literal() const;
    long up_critical_path_literal(long var, long depth, long base);
    long down_critical_path_literal(long var, long depth, long base) const;

    // Both critical paths of every variable at once, for a wood whose graph
    // has no cycle. When it returns true, up_critical_path(i, depth, b) is
    // b + up[i] for every filled slot i and down_critical_path(i, depth, b)
    // is b + down[i] for every i, and those calls would have no side effect
    // (no warning, no elimination). It returns false, and the caller makes
    // the single calls, when the graph has a cycle or a path long enough
    // for the depth limits to act.
    bool memo_critical_paths(long depth, std::vector<long>& up, std::vector<long>& down) const;

    // ---- elimination ----
    // Called by up_critical_path on a depth that only a cycle reaches.
    void useless_local(long var);
    // ---- end elimination ----

    // ---- integration and text ----
    // ---- end integration and text ----

};

long PERT(Bddexpressionwood* wood);
// Fixed-point dating of the first version; -1 on a cycle.
long PERT_original_version(long n, Bddexpression** exps);
long PERT_original_version(long n, Bddexpression* exps);
long normalise_min_min(long n, long* a, long* b);
void affiche_level(long n, bddpp_manager* manager, long* dates);
// One relaxation step each; 1 if a date rose.
int learn_upstream_dependance(long nvars, long* dates, Bddexpression& e, int* overflow);
int learn_downstream_dependance(long nvars, long* dates, Bddexpression& e, int* overflow);

// ---- integration and text ----
std::ostream& operator<<(std::ostream& out, const Bddexpression& e);
std::ostream& operator<<(std::ostream& out, const Bddexpressionwood& wood);
// ---- end integration and text ----

#endif
