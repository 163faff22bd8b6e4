// Node-by-node forms: the diagram as one assignment per node, the node
// lists of the compiled-module file, the structure dumps and statistics.
//
// The node printers leave their marks set: a caller that prints several
// functions in a row without clearing shares their common nodes, which are
// then printed once, at the first function that reaches them.

#include "bdd/bddpp.h"
#include "bdd/bdd_transform_walk.h"
#include "support/text_out.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <vector>

namespace {

// One assignment per node; the three shapes share their words. A node's
// slot is the base and its global id, as base[id] or as base_id.
// The words are views of the printer's arguments or of literals.
struct EvalForm {
    std::string_view or_word, and_word, not_open, not_close, var_prefix, var_suffix;
    std::string_view terminal_text[3]; // right member of the terminal's line, in three pieces
    std::string_view line_end;
    std::string_view terminal_lead, lead;
    std::string_view sign;
    std::string_view slot_base;
    bool indexed = false;
};

void put_slot(text_out& out, const EvalForm& form, const bdd_node* n)
{
    if (form.indexed)
        out << form.slot_base << '[' << n->global_id << ']';
    else
        out << form.slot_base << '_' << n->global_id;
}

void print_eval_lines(bddpp_manager* m, const EvalForm& form, std::ostream& stream, bdd_node* node)
{
    text_out out(stream);
    bdd_walk::marked_postorder(node, m->one, m->marked(), [&](bdd_node* n) {
        if (n == m->one) {
            out << form.terminal_lead;
            put_slot(out, form, n);
            out << form.sign << form.terminal_text[0] << form.terminal_text[1] << form.terminal_text[2] << form.line_end
                << '\n';
            return;
        }
        const std::string_view name = m->var_name(n->id);
        auto put_x = [&] { out << form.var_prefix << name << form.var_suffix; };
        out << form.lead;
        put_slot(out, form, n);
        out << form.sign;
        if (bdd_walk::is_own_node(n, m->one)) {
            put_x();
            out << form.line_end << '\n';
            return;
        }
        put_x();
        out << form.and_word;
        put_slot(out, form, n->then_node);
        out << form.or_word << form.not_open;
        put_x();
        out << form.not_close << form.and_word;
        if (n->else_link_type == 1) {
            put_slot(out, form, n->else_node);
        } else {
            out << form.not_open;
            put_slot(out, form, n->else_node);
            out << form.not_close;
        }
        out << form.line_end << '\n';
    }, [m](bdd_node* n) { m->prefetch_var_name(n->id); });
}

EvalForm eval_form(std::string_view or_word, std::string_view and_word, std::string_view not_open,
                   std::string_view not_close, std::string_view var_prefix, std::string_view var_suffix,
                   std::string_view one_word, std::string_view line_end)
{
    EvalForm form;
    form.or_word = or_word;
    form.and_word = and_word;
    form.not_open = not_open;
    form.not_close = not_close;
    form.var_prefix = var_prefix;
    form.var_suffix = var_suffix;
    form.terminal_text[0] = not_open;
    form.terminal_text[1] = one_word;
    form.terminal_text[2] = not_close;
    form.line_end = line_end;
    form.terminal_lead = "   ";
    form.lead = "  ";
    form.sign = "= ";
    return form;
}

void indexed_slot(EvalForm& form, std::string_view array_name)
{
    form.slot_base = array_name;
    form.indexed = true;
}

void named_slot(EvalForm& form, std::string_view base)
{
    form.slot_base = base;
    form.indexed = false;
}

} // namespace

// ------------------------------------------------------------ node by node

void bddpp_manager::Print_node_for_eval(const std::string& or_word, const std::string& and_word,
                                        const std::string& not_open, const std::string& not_close,
                                        const std::string& var_prefix, const std::string& var_suffix,
                                        const std::string& one_word, const std::string& line_end,
                                        const std::string& array_name, std::ostream& out, bdd_node* node)
{
    EvalForm form = eval_form(or_word, and_word, not_open, not_close, var_prefix, var_suffix, one_word, line_end);
    indexed_slot(form, array_name);
    print_eval_lines(this, form, out, node);
}

void bddpp_manager::Print_node_for_eval(const std::string& or_word, const std::string& and_word,
                                        const std::string& not_open, const std::string& not_close,
                                        const std::string& var_prefix, const std::string& var_suffix,
                                        const std::string& one_word, const std::string& line_end,
                                        const std::string& indent, const std::string& array_name, std::ostream& out,
                                        bdd_node* node)
{
    EvalForm form = eval_form(or_word, and_word, not_open, not_close, var_prefix, var_suffix, one_word, line_end);
    form.terminal_lead = form.lead = indent;
    indexed_slot(form, array_name);
    print_eval_lines(this, form, out, node);
}

void bddpp_manager::Print_node_for_eval_arrayless(const std::string& or_word, const std::string& and_word,
                                                  const std::string& not_open, const std::string& not_close,
                                                  const std::string& var_prefix, const std::string& var_suffix,
                                                  const std::string& one_word, const std::string& line_end,
                                                  const std::string& array_name, std::ostream& out, bdd_node* node)
{
    EvalForm form = eval_form(or_word, and_word, not_open, not_close, var_prefix, var_suffix, one_word, line_end);
    named_slot(form, array_name);
    print_eval_lines(this, form, out, node);
}

void bddpp_manager::Print_node_for_eval_arrayless(const std::string& or_word, const std::string& and_word,
                                                  const std::string& not_open, const std::string& not_close,
                                                  const std::string& var_prefix, const std::string& var_suffix,
                                                  const std::string& one_word, const std::string& line_end,
                                                  const std::string& indent, const std::string& array_name,
                                                  std::ostream& out, bdd_node* node)
{
    EvalForm form = eval_form(or_word, and_word, not_open, not_close, var_prefix, var_suffix, one_word, line_end);
    form.terminal_lead = form.lead = indent;
    named_slot(form, array_name);
    print_eval_lines(this, form, out, node);
}

void bddpp_manager::Print_node_for_eval_NUSMV(const std::string& var_prefix, const std::string& var_suffix,
                                              const std::string& line_start, const std::string& base,
                                              std::ostream& out, bdd_node* node)
{
    EvalForm form = eval_form(" | ", " & ", "!", "", var_prefix, var_suffix, "", ";");
    form.terminal_text[0] = "";
    form.terminal_text[1] = "TRUE";
    form.terminal_text[2] = "";
    form.terminal_lead = form.lead = line_start;
    form.sign = ":= ";
    named_slot(form, base);
    print_eval_lines(this, form, out, node);
}

void bddpp_manager::Node_for_eval_used(bdd_node* node, long size, int* used)
{
    bdd_walk::marked_postorder(node, one, marked(), [&](bdd_node* n) {
        if (n->global_id >= 0 && n->global_id < size)
            used[n->global_id] = 1;
    });
}

// A variable's own node gets no line: its slot is filled by the input
// assignments of Print_node_for_eval_VHDL_input.
void bddpp_manager::Print_node_for_eval_VHDL(const std::string& name, std::ostream& stream, bdd_node* node)
{
    text_out out(stream);
    bdd_walk::marked_postorder(node, one, marked(), [&](bdd_node* n) {
        if (n == one) {
            out << "      " << name << "(" << n->global_id << ") <= '1';\n";
            return;
        }
        if (bdd_walk::is_own_node(n, one)) return;
        long gv = node_by_id[n->id]->global_id;
        out << "      " << name << "(" << n->global_id << ") <= "
            << "(" << name << "(" << gv << ") and " << name << "(" << n->then_node->global_id << "))"
            << " or "
            << "(not " << name << "(" << gv << ") and " << (n->else_link_type == 1 ? "" : "not ") << name << "("
            << n->else_node->global_id << "))"
            << ";\n";
    });
}

// Each table is followed by an empty line. The first argument is not used.
void bddpp_manager::Print_node_for_eval_BLIF(const std::string& spare, const std::string& suffix,
                                             const std::string& base, std::ostream& stream, bdd_node* node)
{
    text_out out(stream);
    bdd_walk::marked_postorder(node, one, marked(), [&](bdd_node* n) {
        if (n == one) {
            out << ".names " << base << '_' << n->global_id << "\n1\n\n";
            return;
        }
        const std::string_view v = var_name(n->id);
        if (bdd_walk::is_own_node(n, one)) {
            out << ".names " << v << suffix << ' ' << base << '_' << n->global_id << "\n1 1\n\n";
            return;
        }
        out << ".names " << v << suffix << ' ' << base << '_' << n->then_node->global_id << ' ' << base << '_'
            << n->else_node->global_id << ' ' << base << '_' << n->global_id << "\n"
            << "11- 1\n"
            << "0-" << (n->else_link_type == 1 ? "1" : "0") << " 1\n\n";
    }, [this](bdd_node* n) { prefetch_var_name(n->id); });
}

void bddpp_manager::Print_node_for_eval_VHDL_reset_input(const std::string& name, std::ostream& out,
                                                         const std::string& var_name)
{
    if (map == nullptr) return;
    for (bdd_node* n : map->nodes_in_key_order()) {
        if (n->id < 0 || node_by_id[n->id] != n || this->var_name(n->id) != var_name) continue;
        out << "      " << name << "(" << n->global_id << ") <= '0';\n";
    }
}

void bddpp_manager::Print_node_for_eval_VHDL_input(const std::string& prefix, const std::string& suffix,
                                                   const std::string& name, std::ostream& out,
                                                   const std::string& var_name)
{
    if (map == nullptr) return;
    for (bdd_node* n : map->nodes_in_key_order()) {
        if (n->id < 0 || node_by_id[n->id] != n || this->var_name(n->id) != var_name) continue;
        n->mark = marked();
        out << "      " << name << "(" << n->global_id << ") <= " << prefix << var_name << suffix << ";\n";
    }
}

std::string bdd::vhdl_node_name(const std::string& prefix) const
{
    std::string name = link_type_ == -1 ? "not " : "";
    return name + prefix + "(" + std::to_string(bdd_node_global_id(*this)) + ")";
}

// --------------------------------------------------------------- node lists

namespace {

long child_number(const bddpp_manager& m, const bdd_node* child)
{
    return child == nullptr ? -3 : m.incremental_id(child);
}

} // namespace

void bddpp_manager::Print_bdd_node(std::ostream& out, bdd_node* node)
{
    out << incremental_id(node) << ": " << Node_index(node) << ":" << child_number(*this, node->then_node) << ":"
        << child_number(*this, node->else_node) << "," << node->else_link_type;
}

void bddpp_manager::Print_bdd_node(std::ostream& out, bdd_node* node, long* index_map)
{
    long index = Node_index(node);
    if (index >= 0) index = index_map[index];
    out << incremental_id(node) << ": " << index << ":" << child_number(*this, node->then_node) << ":"
        << child_number(*this, node->else_node) << "," << node->else_link_type;
}

void bddpp_manager::Print_bdd_node_with_adress(std::ostream& out, bdd_node* node)
{
    out << incremental_id(node) << ": " << Node_index(node) << ":" << static_cast<const void*>(node->then_node) << ":"
        << static_cast<const void*>(node->else_node) << "," << node->else_link_type;
}

void bddpp_manager::Print_bdd_by_nodes_list_loc(std::ostream& out, bdd_node* node)
{
    bdd_walk::marked_preorder(node, marked(), [&](bdd_node* n) {
        Print_bdd_node(out, n);
        out << "\n";
    });
}

void bddpp_manager::Print_bdd_by_nodes_list_loc(std::ostream& out, bdd_node* node, long* index_map)
{
    bdd_walk::marked_preorder(node, marked(), [&](bdd_node* n) {
        Print_bdd_node(out, n, index_map);
        out << "\n";
    });
}

void bddpp_manager::Print_bdds_list_by_nodes_list(std::ostream& out, std::list<bdd>& functions)
{
    for (const bdd& f : functions) Bdd_clear_marks(f);
    long next = 0;
    for (const bdd& f : functions) next = Bdd_incremental_id(f.node(), next);
    out << "bdd_vars: \n";
    for (long id = 0; id < variables_number; ++id) out << (id > 0 ? "," : "") << var_name(id);
    out << ";\n"
        << "bdd_nodes: \n";
    for (const bdd& f : functions) Bdd_clear_marks(f);
    for (const bdd& f : functions) Print_bdd_by_nodes_list_loc(out, f.node());
}

void bddpp_manager::Print_bdds_list_by_nodes_list(std::ostream& out, std::list<bdd>& functions, long* index_map)
{
    for (const bdd& f : functions) Bdd_clear_marks(f);
    long next = 0;
    for (const bdd& f : functions) next = Bdd_incremental_id(f.node(), next);
    out << next << "\n";
    for (const bdd& f : functions) Bdd_clear_marks(f);
    for (const bdd& f : functions) Print_bdd_by_nodes_list_loc(out, f.node(), index_map);
}

void bddpp_manager::Print_bdd_by_nodes_list(std::ostream& out, const bdd& f)
{
    Bdd_clear_marks(f);
    long count = Bdd_incremental_id(f.node(), 0);
    out << "nombre de noeud trouves: " << count << "\n";
    Bdd_clear_marks(f);
    Print_bdd_by_nodes_list_loc(out, f.node());
}

void bddpp_manager::Print_bdd_by_nodes_list(std::ostream& out, const bdd& f, long* index_map)
{
    Bdd_clear_marks(f);
    Bdd_incremental_id(f.node(), 0);
    Bdd_clear_marks(f);
    Print_bdd_by_nodes_list_loc(out, f.node(), index_map);
}

// ------------------------------------------------------------ structure dumps

// The nested if/else picture of a cone, one node per line. With `global`
// the nodes are named by global_id and repeated on every path; otherwise
// by incremental_id, and a node met again is only named.
void bddpp_manager::Print_structure_lines(std::ostream& out, int indent, bdd_node* node, bool global,
                                          const char* index_word)
{
    struct Task {
        bdd_node* node; // null for a plain line
        int indent;
        std::string text;
    };
    std::vector<Task> tasks{Task{node, indent, ""}};
    auto line = [&](int ind, const std::string& text) { out << std::string(ind > 0 ? ind : 0, ' ') << text << "\n"; };
    while (!tasks.empty()) {
        Task task = tasks.back();
        tasks.pop_back();
        bdd_node* n = task.node;
        if (n == nullptr) {
            if (!task.text.empty()) line(task.indent, task.text);
            continue;
        }
        long number = global ? n->global_id : incremental_id(n);
        std::string where = " (node: " + std::to_string(number) + index_word + std::to_string(Node_index(n)) + ")";
        if (!global && n->mark == marked()) {
            line(task.indent, "already found node: " + std::to_string(incremental_id(n)));
            continue;
        }
        if (n == one) {
            line(task.indent, "1" + where);
            continue;
        }
        std::string name(var_name(n->id));
        if (bdd_walk::is_own_node(n, one)) {
            line(task.indent, name + where);
            continue;
        }
        if (!global) n->mark = marked();
        line(task.indent, "if " + name + where);
        // Pushed in reverse: then cone, "else" line, else cone.
        if (n->else_link_type == -1) {
            tasks.push_back(Task{nullptr, task.indent + 2, "   )"});
            tasks.push_back(Task{n->else_node, task.indent + 6, ""});
            tasks.push_back(Task{nullptr, task.indent + 2, "not("});
        } else {
            tasks.push_back(Task{n->else_node, task.indent + 2, ""});
        }
        tasks.push_back(Task{nullptr, task.indent, "else (not " + name + ")"});
        tasks.push_back(Task{n->then_node, task.indent + 2, ""});
    }
}

void bddpp_manager::Print_bdd_structure_loc(std::ostream& out, int indent, bdd_node* node)
{
    Print_structure_lines(out, indent, node, false, ",index: ");
}

void bddpp_manager::Print_bdd_structure_loc(FILE* out, int indent, bdd_node* node)
{
    std::ostringstream text;
    Print_structure_lines(text, indent, node, false, ",index: ");
    std::fputs(text.str().c_str(), out);
}

void bddpp_manager::Print_bdd_global_structure_loc(std::ostream& out, int indent, bdd_node* node)
{
    Print_structure_lines(out, indent, node, true, ",index: ");
}

void bddpp_manager::Print_bdd_global_structure_loc(FILE* out, int indent, bdd_node* node)
{
    std::ostringstream text;
    Print_structure_lines(text, indent, node, true, ",global index: ");
    std::fputs(text.str().c_str(), out);
}

void bddpp_manager::Print_bdd_structure(std::ostream& out, const bdd& f)
{
    if (f.node() == nullptr) return;
    Bdd_clear_marks(f);
    Bdd_incremental_id(f.node(), 0);
    Bdd_clear_marks(f);
    if (f.link_type() == -1) {
        out << "not(\n";
        Print_bdd_structure_loc(out, 5, f.node());
        out << "   )\n";
    } else {
        Print_bdd_structure_loc(out, 0, f.node());
    }
}

void bddpp_manager::Print_bdd_structure(FILE* out, const bdd& f)
{
    std::ostringstream text;
    Print_bdd_structure(text, f);
    std::fputs(text.str().c_str(), out);
}

// ------------------------------------------------------------------ debugging

void bddpp_manager::debug_variables(std::ostream& out)
{
    for (long i = 0; i < variables_number; ++i) {
        bdd variable = Bdd_var_by_index(i);
        Print_sop(" or ", " and ", "not ", "", out, variable, 1);
        out << " --> ";
        if (assoc[i] == nullptr) {
            out << "NULL";
        } else {
            bdd definition(this, 1, assoc[i]);
            Print_sop(" or ", " and ", "not ", "", out, definition, 1);
        }
        out << "\n";
    }
}

// A feedback equation x = f: splits the followed function on x. Two
// stability points when x = 1 and x = 0 both hold themselves; otherwise the
// condition under which x flips from 1 to 0 and back, and the value that x
// settles on when that condition is false.
void bddpp_manager::Print_Fixes_Points(std::ostream& out, const bdd& f)
{
    int index = -1;
    bdd followed = Bdd_follow_assoc(f, &index);
    auto sum = [&](const bdd& g) { return Print_sop_to_String(" + ", ".", "'", "", g, 1); };
    if (index < 0) {
        out << Name_var_by_bdd(f) << " = " << sum(followed) << "\n";
        return;
    }
    std::string name = Name_var_by_index(index);
    bdd variable = Bdd_var_by_index(index);
    bdd when_true = Bdd_reduce(followed, variable);
    bdd not_variable = Bdd_not(variable);
    bdd when_false = Bdd_reduce(followed, not_variable);
    bdd not_true = Bdd_not(when_true);
    bdd oscillation = Bdd_and(not_true, when_false);
    if (Bdd_is_zero_tautologic(oscillation)) {
        out << "  ==> two stability points : " << name << "'= " << sum(when_true) << ", " << name
            << "''= " << sum(when_false) << "\n";
        return;
    }
    out << "  ==> oscillation on " << name << "  for " << sum(oscillation) << "\n";
    out << "  ==> stabilisation when " << name << " = " << sum(when_false) << "\n";
}

// ----------------------------------------------------------------- statistics

void bddpp_manager::Bdd_stats(std::ostream& out)
{
    out << "BDD MANAGER statistics:\n"
        << "memory adress: " << static_cast<const void*>(this) << " Version: " << Bdd_version() << "\n";
    out << "bdd constant number: 1\n"
        << "-: 1 --> " << one->signature() << "\n";
    out << "bdd variables number: " << variables_number << "\n";
    if (variables_number > 0) {
        out << "Index (Id): name --> signature\n";
        for (long index = 0; index < variables_number; ++index) {
            long id = id_by_index[index];
            out << index << "(" << id << "): " << var_name(id) << " --> " << node_by_id[id]->signature() << "\n";
        }
    }
    std::vector<bdd_node*> nodes;
    long useless = 0;
    long references_sum = 0;
    if (map == nullptr) {
        out << "internal map undefined ...\n";
    } else {
        out << "Map:\n"
            << "global id: sign = var_index then_node else_node else_link_type (refs number)\n";
        nodes = map->nodes_in_key_order();
        for (bdd_node* n : nodes) {
            unsigned long key = static_cast<unsigned long>(n->signature());
            out << n->global_id << ": " << n->signature() << " = " << (key >> 41) << " " << ((key >> 21) & 0xFFFFF)
                << " " << ((key >> 1) & 0xFFFFF) << " " << ((key & 1) ? "normal" : "inverse") << " ("
                << n->references << ")\n";
            Print_bdd_global_structure_loc(out, 0, n);
            out << "-------------------------------------------\n";
            if (n->references <= 0) ++useless;
            references_sum += n->references;
        }
    }
    out << "Finaly:\n"
        << "Map Nodes number: " << nodes.size() << " --> useless: " << useless << "\n"
        << "Global references number: " << references_sum << "\n"
        << "number of garbage collector calls: " << gc_calls << "\n";
    out << "----------------------------------------------\n";
}
