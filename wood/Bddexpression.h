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
#include <unordered_map>
#include <string>
#include <vector>

#include "bdd/bddpp.h"
#include "support/name_set.h"
#include "support/rare_text.h"

class Bddexpressionwood;

// ---- targets ----
// What a target gives to print one boolean equation: its words for a plain
// copy, for the nodes of a right member, and for the assignment of the
// root's slot. The rule that chooses between them is Bddexpression's.
class EquationForm {
public:
    virtual ~EquationForm() = default;
    // `var` takes the variable `x` as it stands.
    virtual void copy(std::ostream& out, const std::string& var, const std::string& x) const = 0;
    // The nodes of the cone of `root` that are not marked yet; they get marked.
    virtual void nodes(std::ostream& out, bddpp_manager* manager, bdd_node* root) const = 0;
    // `var` takes the slot of the node of global id `root`, negated or not.
    virtual void root(std::ostream& out, const std::string& var, long root, bool negated) const = 0;
};
// ---- end targets ----

// Ordered-set helpers; each returns a new set.
IndexSet set_union(const IndexSet& a, const IndexSet& b);
IndexSet set_inter(const IndexSet& a, const IndexSet& b);
// Members of a that are not in b.
IndexSet set_priv(const IndexSet& a, const IndexSet& b);
// { table[x] for x in s }.
IndexSet set_reencoding(const IndexSet& s, const long* table);
// Set form of every report of the wood: "{", members joined by ",", "}".
std::ostream& put_set(std::ostream& out, const IndexSet& s);

// One equation. The late date is not held here but in the wood, so that a
// variable without an equation has one as well.
class Bddexpression {
public:
    Bddexpressionwood* wood;   // owner; null for a free-standing equation
    std::string name;          // name given at construction (may drift from the manager's)
    bdd bdd_var;               // left member: one variable
    int abstraction;           // 1: right member known only by exp_def and dependances
    int user_type;             // a Compilation status code, 0 until set
    rare_text exp_def;
    bdd bdd_exp;               // right member; uninitialised while abstract
    long w;                    // weight on a critical path
    IndexSet dependances;  // indices read by the right member
    long early_date;

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
    Bddexpression(long id, Bddexpressionwood* wood, IndexSet* readers,
                  IndexSet* deps, long early, long late);
    Bddexpression(long id, Bddexpressionwood* wood, IndexSet* readers,
                  IndexSet* deps, std::string def, long early, long late);
    Bddexpression(long id, Bddexpressionwood* wood, IndexSet& deps, std::string def,
                  long early, long late);
    // Copy in the same wood, not entered in it.
    Bddexpression(const Bddexpression& other);
    // Copy into the manager of `wood` (not entered; the wood's copies place it).
    Bddexpression(Bddexpressionwood* wood, const Bddexpression& other);
    // Copy from `source` into `target`, entered in `target`.
    Bddexpression(Bddexpressionwood* source, Bddexpressionwood* target, const Bddexpression& other);
    ~Bddexpression();

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
    IndexSet set_of_var_dependances() const { return dependances; }
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
    IndexSet set_of_index_used_variables() const;

    // Index of the left member, or -1 if there is no wood, no manager or no
    // initialised left member.
    long own_index() const;

    // ---- elimination ----
    // Splits the equation on the variable of id `var`: two new variables
    // "<name>_<v>" and "<name>_not<v>" hold the cofactors, and the right
    // member becomes ite(var, first, second). The outputs get the indices
    // of the two new variables, or -3 and -3 when nothing was done.
    void Shannon_expand(long var, long& positive, long& negative);
    // ---- end elimination ----

    // ---- integration and text ----
    // "<name> " and the stream form without address and type.
    std::string debug_in_string() const;
    // One expression line of the compiled-module file; `table` renumbers.
    void put_zkc(std::ostream& out, long* table);
    void put_zkc_2_0_4(std::ostream& out, long* table);
    void put_zkc_0_3_0(std::ostream& out, long* table, int level);
    // "name = sum;" in Lustre words, quoted by the older layouts' comments.
    void put_lustre_compatibilite(std::ostream& out, int level);
    // "name = sum" in the words " or ", " and ", "not ".
    void put_basic_doc(std::ostream& out, int level);
    // The equation through the NuSMV node printer, nodes named
    // prefix "_" global_id; prints only unmarked nodes.
    void put_doc(std::ostream& out, std::string prefix);
    // ---- end integration and text ----

    // ---- targets ----
    // Nothing unless both members are initialised; a plain variable is
    // copied, anything else goes node by node and then through the root.
    void put_equation(std::ostream& out, const EquationForm& form);
    // The equation as BLIF covers: the nodes of the right member not yet
    // marked, each a multiplexer named prefix "_" global_id, then the cover
    // of the defined variable. Nothing for an uninitialised member.
    void put_blif(std::ostream& out, const std::string& prefix);
    // The equation as C statements over the node array `array`; a variable
    // in `outputs` is written through its pointer. No line end at the end.
    void put_c(std::ostream& out, const std::string& array, const name_set& outputs);
    // The equation as C# statements over the bool array `array`: `indent`
    // blanks, then the node lines each led by `indent` blanks, then the
    // assignment of the variable. No line end at the end.
    void put_csharp(std::ostream& out, const std::string& array, int indent);
    // The equation as NuSMV definitions: node lines "node_<id>:= ...;", then
    // "   var := node_<id>;". No line end at the end.
    void put_nusmv(std::ostream& out);
    // The equation as Lustre definitions over the locals "<n>_<id>", then
    // "   var= <n>_<id>;". No line end at the end.
    void put_lustre_arrayless(std::ostream& out, const std::string& n);
    // ---- end targets ----
};

// The equations of a writer's pass, in their order. Walking them starts
// ahead of time the reads that printing an equation begins with, each a
// miss in a large module: the equation, its members' nodes, the name of
// its variable.
class equation_walk {
public:
    explicit equation_walk(std::vector<Bddexpression*> list) : list_(std::move(list)) {}
    class iterator {
    public:
        iterator(Bddexpression* const* at, Bddexpression* const* end) : at_(at), end_(end) { fetch_ahead(); }
        Bddexpression* operator*() const { return *at_; }
        iterator& operator++()
        {
            ++at_;
            fetch_ahead();
            return *this;
        }
        bool operator!=(const iterator& other) const { return at_ != other.at_; }

    private:
        // Each stage reads what the stage before brought in; the first call
        // fills every stage. (It writes `primed_`: a call that only read
        // memory and started reads would count as free of effects, and the
        // compiler could drop it.)
        void fetch_ahead();
        Bddexpression* const* at_;
        Bddexpression* const* end_;
        bool primed_ = false;
    };
    iterator begin() const { return iterator(list_.data(), list_.data() + list_.size()); }
    iterator end() const { return iterator(list_.data() + list_.size(), list_.data() + list_.size()); }
    std::size_t size() const { return list_.size(); }

private:
    std::vector<Bddexpression*> list_;
};

// The wood: all equations of a module over one manager, with the readers
// table (amont_table), the late dates and the number of date levels.
class Bddexpressionwood {
public:
    int common_bdd_manager;        // 0: the wood owns its manager
    bddpp_manager* bdd_manager;
    IndexSet exp_ids;        // indices that have an equation
    long nb_bdd_vars;              // valid length of the tables
    long arrays_length;            // allocated length, a power of two
    Bddexpression** exp_table;     // equation per variable, or null
    IndexSet* amont_table;   // readers of each variable
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
    IndexSet* Amont_table() const { return amont_table; }
    long* Late_dates() const { return late_dates; }
    long Nb_level() const { return nb_level; }
    // Sets the number of levels; 0 makes the next compute_dates() redate.
    void update_nb_level(long level) { nb_level = level; }

    // The three tables by variable, arrays_length slots long. The slots
    // past nb_bdd_vars are never touched: the blocks come zeroed, their
    // untouched pages cost no memory, and a readers' set is constructed
    // when its variable enters the tables (the first `live` at once).
    void allocate_tables(long length, long live);
    // Destroys the first `live` readers' sets and frees the three blocks.
    static void release_tables(Bddexpression** exps, IndexSet* readers, long* dates, long live);

    // Bring the tables up to the manager's count of variables.
    void update_bdd_vars();
    // After one variable was inserted at new_index.
    void update_bdd_vars(long new_index);

    void learn_expression(Bddexpression* e);
    void learn_abstract_expression(Bddexpression* e, IndexSet* readers);
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
    // Index_var_by_name, else Index_new_var_last, with one look-up.
    long Index_var_or_new_last(const std::string& name);
    bdd New_var_before_by_bdd(bdd neighbour, std::string name);
    bdd New_var_before_by_index(long index, std::string name);
    bdd New_var_after_by_bdd(bdd neighbour, std::string name);
    bdd New_var_after_by_index(long index, std::string name);
    void delete_prefixe_names(std::string prefix);

    // Dependences.
    void internal_global_build_dependances();
    IndexSet down_dependances(long index, long depth, IndexSet& acc);
    IndexSet up_dependances(long index, long depth, IndexSet& acc);
    // Reports on the error stream whatever stream is given.
    void coherence_dependances_check(std::ostream& out) const;
    IndexSet Set_of_index_used_variables() const;

    // Dates. compute_dates, the sorts and the critical paths take a fast
    // route where the graph allows it and give the results of the literal
    // passes below, which stay for differential checks.
    long compute_dates();
    long compute_dates(std::list<long>& ids);
    long compute_dates(const std::vector<long>& ids);
    void early_propagation(long var, long date);
    void late_propagation(long var, long date);
    std::list<long> earliest_sort() const;
    // earliest_sort() as a vector, for the passes that only walk it.
    std::vector<long> earliest_order() const;
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
    // Substitutes var into its readers and leaves it unread in its slot;
    // a variable that reads itself is reported and ends the process.
    void useless_local(long var);

    // Pushes constant equations into their readers until none is read;
    // equations of a user type in `keep` stay (unread). The result is that
    // of ascending sweeps repeated until one changes nothing; the _literal
    // form runs those sweeps and stays for differential checks.
    void constants_propagation(std::list<int>& keep);
    void constants_propagation();
    void constants_propagation_literal(std::list<int>& keep);
    // 1 when, after constants_propagation(), every equation is constant.
    int global_tautology();
    // Substitutes equations that read exactly one variable, then redates.
    void suppress_wires(std::list<int>& keep);
    void suppress_wires();
    void suppress_locals(std::list<int>& keep);
    void suppress_locals();
    // One local: substitution, then a whole-wood constants propagation and
    // reader rebuild. A variable that reads itself is reported and the wood
    // left as it was.
    void suppress_local(long var);
    // suppress_local of each variable in list order, with the same result,
    // nodes and texts, at a cost that follows what each elimination
    // touches instead of the size of the wood.
    void suppress_local(std::list<long>& vars);
    // Drops (without destroying) equations nobody reads that read nothing,
    // unless their index is kept.
    void clean(std::list<long>& keep);
    void clean(IndexSet& keep);
    void reduce_expressions(bdd cube, std::list<int>& keep);
    void reduce_expressions(bdd cube);
    // What a run of restrictions carries from one call to the next: once
    // the tables are exact, the constant equations that already have a
    // reader and the abstract equations that still hold a BDD.
    struct ReductionRun {
        bool exact = false;
        IndexSet leftover;
        IndexSet abstract_with_bdd;
    };
    // reduce_expressions(cube, keep) with the same result, nodes and texts,
    // at a cost that follows the readers of the cube's variables once the
    // first call of the run has made the tables exact.
    void reduce_expressions(bdd cube, std::list<int>& keep, ReductionRun& run);
    // suppress_wires(keep), after which `run` starts a run of restrictions:
    // exact at once when the pass left the tables exact.
    void suppress_wires(std::list<int>& keep, ReductionRun& run);
    // suppress_local(vars) at the end of a run of restrictions, which it
    // closes: the first elimination too is repaired where it touched when
    // the run's tables are exact.
    void suppress_local(std::list<long>& vars, ReductionRun& run);
    // The same over a vector: a million locals make no list cells that the
    // small-object heap would keep after the run.
    void suppress_local(const std::vector<long>& vars, ReductionRun& run);
    void reduce_expressions_when_var_forgotten_by_exist_op(long var);
    void reduce_expressions_when_var_forgotten_by_forall_op(long var);
    long reduce_proposition_by_variable();
    bdd reduce_proposition_by_assertion();
    IndexSet loop_breaking(IndexSet candidates, int& flag);

    // Helpers of the passes above.
    static bool bdd_initialised(const bdd& f);
    // 1 or 0 for a constant, -1 otherwise (uninitialised included).
    static int bdd_constant_value(const bdd& f);
    // Reader -> variables whose reader entry for it may be wrong. The
    // passes note them in any order and with repeats, a few readers each
    // time, and the repair reads them once: each reader keeps a plain
    // list, sorted only then, and the lists keep their room from one use
    // to the next. A reader noted with an empty range is taken by the
    // repair all the same.
    class Touched {
    public:
        void add(long reader, long var) { list_of(reader).push_back(var); }
        template <class It>
        void add(long reader, It first, It last)
        {
            std::vector<long>& list = list_of(reader);
            list.insert(list.end(), first, last);
        }
        void clear();
        // The readers noted, ascending; each one's variables ascending,
        // each once.
        struct Entry {
            long reader;
            std::vector<long> vars;
        };
        const std::vector<Entry*>& sorted();

    private:
        std::vector<long>& list_of(long reader);
        std::vector<Entry> entries_;
        std::size_t used_ = 0;
        std::size_t last_ = 0;
        // Entries by reader, once there are more than a few: a variable
        // read by thousands of equations notes each of them per dependance.
        std::unordered_map<long, std::size_t> where_;
        std::vector<Entry*> order_;
    };
    bool constant_candidate(long i) const;
    void propagate_one_constant(long i, const std::list<int>& keep, IndexSet& removed,
                                std::vector<long>& found, Touched* touched);
    void propagate_constants(IndexSet current, const std::list<int>& keep,
                             IndexSet& removed, Touched* touched);
    void prune_readers();
    void redate_by_critical_paths();
    void report_self_dependance(long i);
    bool substitute_local(long i, Touched* touched);
    IndexSet repair_readers(Touched& touched);
    // ---- end elimination ----

    // ---- integration and text ----
    // Takes in the equations of `instance` under new names, shared manager
    // or not; every variable it uses gets a new variable at the end.
    void Include_wood_instance(Bddexpressionwood& instance,
                               std::map<std::string, std::string>& renaming);
    // Every new name is the old one followed by `suffix`.
    void Include_wood_instance(Bddexpressionwood& instance, std::string& suffix);
    void stat(std::ostream& out) const;
    // Tree of what var depends on.
    void stat_early_dep(std::ostream& out, long var);
    // The section of the compiled-module file between "equation_def:" and
    // "end:"; `table` renumbers, -1 leaves a variable out.
    void Put_zkc(std::ostream& out, long* table, int comments);
    void Put_zkc_2_0_4(std::ostream& out, long* table, int comments);
    void Put_zkc_0_3_0(std::ostream& out, long* table, int level, int comments);
    // Dependence summary, one line per numbered variable.
    void Put_zka(std::ostream& out, long* table, IndexSet& filter, int);
    void Put_zka(std::ostream& out, long* table, IndexSet& filter, int, std::string source);
    void Put_basic_doc(std::ostream& out, int level);
    void Put_doc(std::ostream& out, std::string prefix);

    void include_shared(Bddexpressionwood& instance, std::map<std::string, std::string>* renaming,
                        const std::string* suffix);
    void include_other(Bddexpressionwood& instance, std::map<std::string, std::string>* renaming,
                       const std::string* suffix);
    void put_zka_lines(std::ostream& out, long* table, IndexSet& filter,
                       const std::string* source);
    // ---- end integration and text ----

    // ---- targets ----
    // Clears the marks of the manager once and gives the equations of the
    // filled slots in earliest order. Printing them in a row without
    // clearing again writes a node shared by several equations once.
    equation_walk earliest_equations();
    // Every equation in earliest order as BLIF covers, marks cleared once,
    // so that a node shared by several equations is written once.
    void Put_blif(std::ostream& out, const std::string& prefix);
    // Clears the marks once and gives the equations of the filled slots by
    // variable index, for the targets whose text does not depend on order.
    std::vector<Bddexpression*> indexed_equations();
    // used[global_id] = 1 (ids below `size`) for every node that the node
    // printers write for the equations that are not abstract, that is the
    // cones of the right members that are not a plain variable. Marks are
    // cleared before and after.
    void Lustre_writing_node_used(long size, int* used);
    // ---- end targets ----
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
