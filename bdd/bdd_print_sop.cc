// Sum-of-products forms: covers of a function at four levels of effort,
// and the texts made from them with the caller's operator words.

#include "bdd/bddpp.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <vector>

// ------------------------------------------------------------------- covers

void bddpp_manager::Bdd_sop(const bdd& f, std::list<bdd>& cover, int level)
{
    if (f.manager_ref() != this || f.node() == nullptr) {
        std::cerr << "ERROR in bddpp_manager::Bdd_sop():" << std::endl
                  << "   bdd : " << f << ", is not allocated or associated with a bad BDD manager..." << std::endl;
        std::exit(1);
    }
    switch (level) {
    case 1: Bdd_sop_1(f, cover); break;
    case 2: Bdd_sop_2(f, cover); break;
    case 3: Bdd_sop_2plus(f, cover); break;
    default: Bdd_sop_0(f, cover); break;
    }
}

int bddpp_manager::Bdd_sop(const bdd& f, bdd* out, int level)
{
    std::cerr << "warning: calling obsolete version of bddpp_manager::Bdd_sop() ..." << std::endl;
    std::list<bdd> cover;
    Bdd_sop(f, cover, level);
    int k = 0;
    for (const bdd& c : cover) out[k++] = c;
    return k;
}

void bddpp_manager::Bdd_sop_0(const bdd& f, std::list<bdd>& cover)
{
    cover.clear();
    if (Bdd_is_one_tautologic(f)) {
        cover.push_back(f);
        return;
    }
    bdd rest = f;
    while (!Bdd_is_zero_tautologic(rest)) {
        bdd s = Bdd_satisfy(rest);
        bdd not_s = Bdd_not(s);
        rest = Bdd_and(rest, not_s);
        cover.push_back(s);
    }
}

void bddpp_manager::Bdd_sop_1(const bdd& f, std::list<bdd>& cover)
{
    cover.clear();
    // Unlike level 0, zero gives a cover of one zero cube.
    if (Bdd_is_tautology(f)) {
        cover.push_back(f);
        return;
    }
    std::list<bdd> first;
    Bdd_sop_0(f, first);

    std::vector<bdd> cubes;
    std::vector<int> present(plain_operators && variables_number > 0 ? variables_number : 1);
    std::vector<long> indices;
    for (bdd c : first) {
        // The indices the cube reads, increasing: from its support, or, in
        // the plain form, from the whole table.
        indices.clear();
        if (plain_operators) {
            Present_variables(c, present.data());
            for (long i = 0; i < variables_number; ++i)
                if (present[i]) indices.push_back(i);
        } else {
            for (long id : set_of_id_depend_on(c)) indices.push_back(index_by_id[id]);
            std::sort(indices.begin(), indices.end());
        }
        for (long i : indices) {
            bdd variable = Bdd_var_by_index(i);
            bdd e = Bdd_exist(c, variable);
            bdd reduced = Bdd_reduce(f, e);
            if (Bdd_is_one_tautologic(reduced)) c = e;
        }
        cubes.push_back(c);
    }

    for (std::size_t k = 0; k < cubes.size(); ++k) {
        bdd others = Bdd_zero();
        for (std::size_t j = 0; j < cubes.size(); ++j)
            if (j != k) others = Bdd_or(others, cubes[j]);
        if (Bdd_equiv(others, f)) cubes[k] = Bdd_zero();
    }
    for (const bdd& c : cubes)
        if (!Bdd_is_zero_tautologic(c)) cover.push_back(c);
}

void bddpp_manager::Bdd_sop_2(const bdd& f, std::list<bdd>& cover)
{
    cover.clear();
    std::list<bdd> essential, others;
    Bdd_essential_implicants(f, essential, others);
    bdd covered = Bdd_zero();
    for (const bdd& p : essential) {
        cover.push_back(p);
        covered = Bdd_or(covered, p);
    }

    // First round: primes that add only new minterms.
    bool stalled = false;
    while (!Bdd_equiv(f, covered)) {
        bdd before = covered;
        for (const bdd& p : others) {
            if (Bdds_excl(p, covered)) {
                cover.push_back(p);
                covered = Bdd_or(covered, p);
                break;
            }
        }
        if (covered == before) {
            stalled = true;
            break;
        }
    }
    // Second round: any prime that still adds something.
    if (stalled) {
        for (const bdd& p : others) {
            if (Bdd_equiv(f, covered)) break;
            bdd grown = Bdd_or(covered, p);
            if (grown != covered) {
                cover.push_back(p);
                covered = grown;
            }
        }
    }

    std::list<bdd> simple;
    Bdd_sop_1(f, simple);
    if (simple.size() < cover.size()) cover = simple;
}

namespace {

// Hand-made covers of functions of the variables at index 0 to 3, one
// string per cube with '1', '0' or '-' for each of the four variables.
// The functions are the disjunctions of their covers, so every row is
// right by construction; they are tested in this order.
const std::vector<std::vector<const char*>>& hand_made_covers()
{
    static const std::vector<std::vector<const char*>> rows = {
        {"10--", "01--"}, {"11--", "00--"},                  // a xor b, a xnor b
        {"1-0-", "0-1-"}, {"1-1-", "0-0-"},                  // a, c
        {"1--0", "0--1"}, {"1--1", "0--0"},                  // a, d
        {"-10-", "-01-"}, {"-11-", "-00-"},                  // b, c
        {"-1-0", "-0-1"}, {"-1-1", "-0-0"},                  // b, d
        {"--10", "--01"}, {"--11", "--00"},                  // c, d
        {"11--", "1-1-", "-11-"}, {"11--", "1--1", "-1-1"}, // majorities of three
        {"1-1-", "1--1", "--11"}, {"-11-", "-1-1", "--11"},
        {"100-", "010-", "001-", "111-"}, {"000-", "110-", "101-", "011-"}, // parities of three
        {"10-0", "01-0", "00-1", "11-1"}, {"00-0", "11-0", "10-1", "01-1"},
        {"1-00", "0-10", "0-01", "1-11"}, {"0-00", "1-10", "1-01", "0-11"},
        {"-100", "-010", "-001", "-111"}, {"-000", "-110", "-101", "-011"},
        {"11--", "0-1-"}, {"1-1-", "01--"}, {"11--", "0--1"}, {"1--1", "01--"}, // multiplexers
        {"1-1-", "0--1"}, {"1--1", "0-1-"}, {"-11-", "-0-1"}, {"-1-1", "-01-"},
        {"1000", "0100", "0010", "0001", "1110", "1101", "1011", "0111"}, // parity of four
        {"0000", "1100", "1010", "1001", "0110", "0101", "0011", "1111"},
    };
    return rows;
}

} // namespace

// Every row is built before any is compared, so a manager with fewer than
// four variables meets the null handle of the fourth in Bdd_and.
void bddpp_manager::Bdd_sop_2plus(const bdd& f, std::list<bdd>& cover)
{
    bdd literals[4][2];
    for (int i = 0; i < 4; ++i) {
        literals[i][1] = Bdd_var_by_index(i);
        literals[i][0] = Bdd_not(literals[i][1]);
    }
    const auto& rows = hand_made_covers();
    std::vector<std::list<bdd>> covers(rows.size());
    std::vector<bdd> functions(rows.size());
    for (std::size_t r = 0; r < rows.size(); ++r) {
        bdd function = Bdd_zero();
        for (const char* text : rows[r]) {
            bdd cube = Bdd_one();
            for (int i = 0; i < 4; ++i)
                if (text[i] != '-') cube = Bdd_and(cube, literals[i][text[i] == '1' ? 1 : 0]);
            covers[r].push_back(cube);
            function = Bdd_or(function, cube);
        }
        functions[r] = function;
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
        if (Bdd_equiv(f, functions[r])) {
            cover = covers[r];
            return;
        }
    }
    Bdd_sop_2(f, cover);
}

// ------------------------------------------------------- products and sums

namespace {

// The product's text appended to `text`: "0" or "1" for a constant cube.
void append_product(bddpp_manager& m, std::string& text, const std::string& and_word, const std::string& not_open,
                    const std::string& not_close, const bdd& cube, const std::string& prefix,
                    const std::string& suffix)
{
    if (m.Bdd_is_zero_tautologic(cube)) {
        text += '0';
        return;
    }
    if (m.Bdd_is_one_tautologic(cube)) {
        text += '1';
        return;
    }
    bool first = true;
    auto put = [&](long i, int literal) {
        if (!first) text += and_word;
        first = false;
        if (literal == 0) text += not_open;
        text += prefix;
        text += m.var_name(m.id_by_index[i]);
        text += suffix;
        if (literal == 0) text += not_close;
    };
    if (m.plain_operators) {
        std::vector<int> literals(m.variables_number > 0 ? m.variables_number : 1);
        m.Bdd_to_literals(cube, literals.data());
        for (long i = 0; i < m.variables_number; ++i)
            if (literals[i] != 2) put(i, literals[i]);
        return;
    }
    // The cube's own path gives the same literals in the same order. The
    // list is reused from one product to the next.
    static std::vector<std::pair<long, int>> literals;
    m.Cube_literal_list(cube, literals);
    for (const auto& literal : literals) put(literal.first, literal.second);
}

}  // namespace

std::string bddpp_manager::Print_product_to_String_pref_suff(const std::string& and_word, const std::string& not_open,
                                                             const std::string& not_close, const bdd& cube,
                                                             const std::string& prefix, const std::string& suffix)
{
    std::string text;
    append_product(*this, text, and_word, not_open, not_close, cube, prefix, suffix);
    return text;
}

std::string bddpp_manager::Print_product_to_String(const std::string& and_word, const std::string& not_open,
                                                   const std::string& not_close, const bdd& cube)
{
    return Print_product_to_String_pref_suff(and_word, not_open, not_close, cube, "", "");
}

void bddpp_manager::Print_product(const std::string& and_word, const std::string& not_open,
                                  const std::string& not_close, std::ostream& out, const bdd& cube)
{
    out << Print_product_to_String_pref_suff(and_word, not_open, not_close, cube, "", "");
}

void bddpp_manager::Print_product_pref_suff(const std::string& and_word, const std::string& not_open,
                                            const std::string& not_close, std::ostream& out, const bdd& cube,
                                            const std::string& prefix, const std::string& suffix)
{
    out << Print_product_to_String_pref_suff(and_word, not_open, not_close, cube, prefix, suffix);
}

std::string bddpp_manager::Print_sop_to_String_pref_suff(const std::string& or_word, const std::string& and_word,
                                                         const std::string& not_open, const std::string& not_close,
                                                         const bdd& f, const std::string& prefix,
                                                         const std::string& suffix, int level)
{
    std::list<bdd> cover;
    Bdd_sop(f, cover, level);
    if (cover.empty()) return "0";
    std::string text;
    bool first = true;
    for (const bdd& cube : cover) {
        if (!first) text += or_word;
        first = false;
        append_product(*this, text, and_word, not_open, not_close, cube, prefix, suffix);
    }
    return text;
}

std::string bddpp_manager::Print_sop_to_String(const std::string& or_word, const std::string& and_word,
                                               const std::string& not_open, const std::string& not_close,
                                               const bdd& f, int level)
{
    return Print_sop_to_String_pref_suff(or_word, and_word, not_open, not_close, f, "", "", level);
}

void bddpp_manager::Print_sop(const std::string& or_word, const std::string& and_word, const std::string& not_open,
                              const std::string& not_close, std::ostream& out, const bdd& f, int level)
{
    out << Print_sop_to_String_pref_suff(or_word, and_word, not_open, not_close, f, "", "", level);
}

void bddpp_manager::Print_sop_pref_suff(const std::string& or_word, const std::string& and_word,
                                        const std::string& not_open, const std::string& not_close,
                                        std::ostream& out, const bdd& f, const std::string& prefix,
                                        const std::string& suffix, int level)
{
    out << Print_sop_to_String_pref_suff(or_word, and_word, not_open, not_close, f, prefix, suffix, level);
}

void bddpp_manager::Print_debug_bdd(std::ostream& out, const bdd& f)
{
    Print_sop(" + ", " . ", "!", "", out, f, 1);
}

std::string bddpp_manager::Print_sop_to_ESTEREL_String(const bdd& f, int level)
{
    if (Bdd_is_zero_tautologic(f)) return "not tick";
    if (Bdd_is_one_tautologic(f)) return "tick";
    return Print_sop_to_String_pref_suff(" or ", " and ", "not ", "", f, "", "", level);
}

// Each product stands in parentheses and the sum is balanced: the words
// put ") or (" between products, and a sum of several gets the outer pair.
std::string bddpp_manager::Print_sop_to_VHDL_String(const bdd& f, int level)
{
    if (Bdd_is_zero_tautologic(f)) return "'0'";
    if (Bdd_is_one_tautologic(f)) return "'1'";
    std::string text = Print_sop_to_String_pref_suff(") or (", " and ", "not ", "", f, "", "", level);
    if (text.find(") or (") != std::string::npos) text = "(" + text + ")";
    return text;
}

// -------------------------------------------------------- array-indexed forms

void bddpp_manager::Print_cat_product(const std::string& and_word, const std::string& not_open,
                                      const std::string& not_close, std::ostream& out, const bdd& cube,
                                      const std::string& array_name)
{
    if (Bdd_is_zero_tautologic(cube)) {
        out << "0";
        return;
    }
    if (Bdd_is_one_tautologic(cube)) {
        out << "1";
        return;
    }
    std::vector<int> literals(variables_number > 0 ? variables_number : 1);
    Bdd_to_literals(cube, literals.data());
    bool first = true;
    for (long i = 0; i < variables_number; ++i) {
        if (literals[i] == 2) continue;
        if (!first) out << and_word;
        first = false;
        if (literals[i] == 0) out << not_open;
        out << array_name << "[" << i << "]";
        if (literals[i] == 0) out << not_close;
    }
}

void bddpp_manager::Print_cat_sop(const std::string& or_word, const std::string& and_word,
                                  const std::string& not_open, const std::string& not_close, std::ostream& out,
                                  const bdd& f, const std::string& array_name, int level)
{
    std::list<bdd> cover;
    Bdd_sop(f, cover, level);
    if (cover.empty()) {
        out << "0";
        return;
    }
    bool first = true;
    for (const bdd& cube : cover) {
        if (!first) out << or_word;
        first = false;
        Print_cat_product(and_word, not_open, not_close, out, cube, array_name);
    }
}

void bddpp_manager::Print_cat_product(std::ostream& out, const bdd& cube, std::map<long, int>& numbers, int offset,
                                      bool doubled)
{
    if (Bdd_is_zero_tautologic(cube)) {
        out << "0";
        return;
    }
    if (Bdd_is_one_tautologic(cube)) {
        out << "1";
        return;
    }
    std::vector<int> literals(variables_number > 0 ? variables_number : 1);
    Bdd_to_literals(cube, literals.data());
    bool first = true;
    for (long i = 0; i < variables_number; ++i) {
        if (literals[i] == 2) continue;
        if (!first) out << ",";
        first = false;
        if (literals[i] == 1) {
            int number = numbers[i];
            out << (doubled ? number + 2 * offset : number);
            continue;
        }
        auto it = numbers.find(i);
        if (it == numbers.end()) {
            out.flush();
            std::cerr << "****error:print_cat_product:" << i << " is not a valid index \n";
            std::exit(1);
        }
        int number = it->second;
        out << (number <= offset ? number + offset : number - offset);
    }
}

// ------------------------------------------------------------ two-level tables

void bddpp_manager::PLA_print_pref_suff(std::ostream& out, const bdd& out_var, const bdd& f,
                                        const std::string& var_prefix, const std::string& var_suffix,
                                        const std::string& header_open, const std::string& header_close,
                                        const std::string& row_separator, const std::string& end_word,
                                        const std::string& literal_separator, int level)
{
    PLA_print(out, nullptr, out_var, f, var_prefix, var_suffix, header_open, header_close, row_separator, end_word,
              literal_separator, level);
}

void bddpp_manager::PLA_print_pref_suff_with_renaming(std::ostream& out, long* index_map, const bdd& out_var,
                                                      const bdd& f, const std::string& var_prefix,
                                                      const std::string& var_suffix, const std::string& header_open,
                                                      const std::string& header_close,
                                                      const std::string& row_separator, const std::string& end_word,
                                                      const std::string& literal_separator, int level)
{
    PLA_print(out, index_map, out_var, f, var_prefix, var_suffix, header_open, header_close, row_separator, end_word,
              literal_separator, level);
}

// With an index map, a variable is written as its number in the map
// instead of its name.
void bddpp_manager::PLA_print(std::ostream& out, long* index_map, const bdd& out_var, const bdd& f,
                              const std::string& var_prefix, const std::string& var_suffix,
                              const std::string& header_open, const std::string& header_close,
                              const std::string& row_separator, const std::string& end_word,
                              const std::string& literal_separator, int level)
{
    auto name = [&](long index) {
        if (index_map != nullptr) return std::to_string(index_map[index]);
        return std::string(var_name(id_by_index[index]));
    };
    std::vector<int> present(variables_number > 0 ? variables_number : 1, 0);
    Present_variables(f, present.data());
    bool any = false;
    out << header_open;
    for (long i = 0; i < variables_number; ++i) {
        if (!present[i]) continue;
        any = true;
        out << var_prefix << name(i) << var_suffix << " ";
    }
    if (index_map != nullptr)
        out << var_prefix << index_map[Bdd_if_index(out_var)] << var_suffix;
    else
        out << var_prefix << Name_var_by_bdd(out_var) << var_suffix;
    out << header_close;
    if (!any) {
        out << (Bdd_is_zero_tautologic(f) ? "0" : "1") << end_word;
        return;
    }
    std::list<bdd> cover;
    Bdd_sop(f, cover, level);
    std::vector<int> literals(variables_number > 0 ? variables_number : 1);
    bool first = true;
    for (const bdd& cube : cover) {
        if (!first) out << row_separator;
        first = false;
        Bdd_to_literals(cube, literals.data());
        for (long i = 0; i < variables_number; ++i) {
            if (!present[i]) continue;
            out << (literals[i] == 1 ? "1" : literals[i] == 0 ? "0" : "-") << literal_separator;
        }
        out << " 1";
    }
    out << end_word;
}

void bddpp_manager::BLIF_print(std::ostream& out, const bdd& out_var, const bdd& f, int level)
{
    PLA_print_pref_suff(out, out_var, f, "", "", ".names  ", "", "", "", "", level);
}

// The table of the old layout of the compiled-module file.
void bddpp_manager::ZKC_print(std::ostream& out, long* index_map, const bdd& out_var, const bdd& f, int level)
{
    PLA_print_pref_suff_with_renaming(out, index_map, out_var, f, "", "", "", ";\n", ",\n", ";\n", "", level);
}
