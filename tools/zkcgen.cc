// zkcgen: writes a large valid compiled module (.zkc) on the standard
// output, shaped as the source compiler writes them, for benchmarks and
// scale tests.
//
//   zkcgen <equations> [seed] [module name]
//   zkcgen --wide <locals> [module name]
//
// The module is pure (no valued signal). Its signals, in declaration order
// (which is the file's variable numbering): inputs, outputs, locals (wires,
// then the registers' next and actual signals, then the actual signals of
// memorised pairs), the pre signals of the memorised pairs, the three
// connexion signals. Every local wire, output, register next and memorised
// actual gets an over and an under equation; the right members read inputs,
// register states, pre signals and locals defined earlier, so the equations
// are acyclic. Some locals copy another wire (chains of wires), some are
// constant, the rest combine two or three earlier signals.
//
// With --wide, the module is one output that reads many locals, each the
// and of two inputs of its own: o = l0 or l1 or ..., lk = a_k and b_k. Its
// locals are eliminated one after the other into the output, so the nodes
// created grow with the square of the locals.
//
// Right members are built with the decision-diagram package over variables
// created in file order, and the node table is written as the writer does:
// ids in depth-first order from each equation's root, in equation order,
// then-branch first, each node once. The same size and seed give the same
// file.

#include "bdd/bddpp.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

// Small fixed generator: the file must not depend on the C++ library's
// distributions.
class rng {
public:
    explicit rng(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint64_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }
    long below(long n) { return n <= 0 ? 0 : static_cast<long>(next() % static_cast<std::uint64_t>(n)); }
    bool chance(int percent) { return below(100) < percent; }

private:
    std::uint64_t state_;
};

struct signal_decl {
    std::string name;
    long over;  // variable number of the over wire; under is over + 1
};

struct equation {
    long var;
    bdd right;
};

class generator {
public:
    generator(long equations, std::uint64_t seed, std::string name, bool wide = false)
        : random_(seed), name_(std::move(name)), wide_(wide) {
        if (wide_) {
            wires_ = equations;
            inputs_ = 2 * equations;
            outputs_ = 1;
            registers_ = memorised_ = 0;
            return;
        }
        long signals = equations / 2 < 4 ? 4 : equations / 2;
        inputs_ = signals / 16 + 1;
        outputs_ = signals / 16 + 1;
        registers_ = signals / 32 + 1;
        memorised_ = signals / 64;
        wires_ = signals - outputs_ - registers_ - memorised_;
        if (wires_ < 1) wires_ = 1;
    }

    void write(std::ostream& out) {
        declare();
        if (wide_)
            define_wide();
        else
            define();
        put(out);
    }

private:
    rng random_;
    std::string name_;
    bool wide_;
    long inputs_, outputs_, registers_, memorised_, wires_;
    bddpp_manager manager_;
    std::vector<signal_decl> inputs, outputs, locals, pres;
    std::vector<long> register_next, register_actual, memorised_actual;
    std::vector<int> register_init;
    std::vector<equation> equations;

    void add(std::vector<signal_decl>& list, const std::string& name) {
        long over = manager_.variables_number;
        manager_.New_var_last(name + "_over");
        manager_.New_var_last(name + "_under");
        list.push_back({name, over});
    }

    void declare() {
        for (long k = 0; k < inputs_; ++k) add(inputs, "i" + std::to_string(k));
        for (long k = 0; k < outputs_; ++k) add(outputs, "o" + std::to_string(k));
        for (long k = 0; k < wires_; ++k) add(locals, "l" + std::to_string(k));
        for (long k = 0; k < registers_; ++k) {
            register_next.push_back(static_cast<long>(locals.size()));
            add(locals, "n" + std::to_string(k));
        }
        for (long k = 0; k < registers_; ++k) {
            register_actual.push_back(static_cast<long>(locals.size()));
            add(locals, "r" + std::to_string(k));
            register_init.push_back(random_.chance(30) ? 1 : 0);
        }
        for (long k = 0; k < memorised_; ++k) {
            memorised_actual.push_back(static_cast<long>(locals.size()));
            add(locals, "m" + std::to_string(k));
        }
        for (long k = 0; k < memorised_; ++k) add(pres, "p" + std::to_string(k));
        std::vector<signal_decl> connexion;
        add(connexion, "SET" + name_);
        add(connexion, "RESET" + name_);
        add(connexion, "RTL" + name_);
    }

    // The wires of the module come in clusters, as the wires of one
    // statement of a source program: each cluster reads a few primary
    // variables (inputs, register states, pre signals) and its own earlier
    // wires, recent ones more often, which gives deep reconvergent cones
    // whose support stays small once the wires are eliminated.
    static constexpr long cluster_wires = 16;
    static constexpr long cluster_primaries = 6;
    std::vector<long> primaries;  // inputs, register states, pre signals
    std::vector<long> cluster;    // over wires readable in the cluster

    void open_cluster() {
        cluster.clear();
        for (long k = 0; k < cluster_primaries; ++k)
            cluster.push_back(primaries[random_.below(static_cast<long>(primaries.size()))]);
    }

    long pick() {
        long n = static_cast<long>(cluster.size());
        if (random_.chance(60) && n > cluster_primaries + 4) return cluster[n - 1 - random_.below(4)];
        return cluster[random_.below(n)];
    }

    bdd literal(long over) {
        bdd v = manager_.Bdd_var_by_id(over);
        return random_.chance(25) ? manager_.Bdd_not(v) : v;
    }

    bdd combination() {
        bdd a = literal(pick());
        bdd b = literal(pick());
        switch (random_.below(4)) {
        case 0: return manager_.Bdd_and(a, b);
        case 1: return manager_.Bdd_or(a, b);
        case 2: {
            bdd c = literal(pick());
            return manager_.Bdd_ite(a, b, c);
        }
        default: {
            bdd c = literal(pick());
            bdd ab = manager_.Bdd_and(a, b);
            return manager_.Bdd_or(ab, c);
        }
        }
    }

    // Over and under of one signal. Most unders are the complement of the
    // over; a few only cover part of it, as a partially known signal.
    void define_signal(long over, bdd right) {
        bdd under = manager_.Bdd_not(right);
        if (random_.chance(10)) {
            bdd guard = literal(pick());
            under = manager_.Bdd_and(under, guard);
        }
        equations.push_back({over, std::move(right)});
        equations.push_back({over + 1, std::move(under)});
    }

    void define() {
        for (const signal_decl& s : inputs) primaries.push_back(s.over);
        for (long r : register_actual) primaries.push_back(locals[r].over);
        for (const signal_decl& s : pres) primaries.push_back(s.over);
        // Clusters of wires; a cluster may open with a chain of plain
        // copies, as the compiler leaves behind for each control point.
        std::vector<std::vector<long>> clusters;
        for (long k = 0; k < wires_; ++k) {
            if (k % cluster_wires == 0) {
                if (!clusters.empty()) clusters.back() = cluster;
                open_cluster();
                clusters.emplace_back();
            }
            long over = locals[k].over;
            bdd right;
            long roll = random_.below(100);
            if (roll < 4)
                right = random_.chance(50) ? manager_.Bdd_one() : manager_.Bdd_zero();
            else if (roll < 30)
                right = manager_.Bdd_var_by_id(cluster.back());  // chain of wires
            else
                right = combination();
            define_signal(over, std::move(right));
            cluster.push_back(over);
        }
        clusters.back() = cluster;
        // Registers, memorised actuals and outputs each read one cluster.
        auto from_cluster = [&]() {
            cluster = clusters[random_.below(static_cast<long>(clusters.size()))];
            return combination();
        };
        for (long r : register_next) define_signal(locals[r].over, from_cluster());
        for (long m : memorised_actual) define_signal(locals[m].over, from_cluster());
        for (const signal_decl& s : outputs) define_signal(s.over, from_cluster());
    }

    void define_wide() {
        bdd any = manager_.Bdd_zero();
        for (long k = 0; k < wires_; ++k) {
            bdd a = manager_.Bdd_var_by_id(inputs[2 * k].over);
            bdd b = manager_.Bdd_var_by_id(inputs[2 * k + 1].over);
            bdd both = manager_.Bdd_and(a, b);
            equations.push_back({locals[k].over, both});
            equations.push_back({locals[k].over + 1, manager_.Bdd_not(both)});
            bdd local = manager_.Bdd_var_by_id(locals[k].over);
            any = manager_.Bdd_or(any, local);
        }
        equations.push_back({outputs[0].over, any});
        equations.push_back({outputs[0].over + 1, manager_.Bdd_not(any)});
    }

    static void put_list(std::ostream& out, const char* keyword, const std::vector<signal_decl>& list) {
        if (list.empty()) return;
        out << keyword;
        for (const signal_decl& s : list) out << ' ' << s.name;
        out << " ;\n";
    }

    void put(std::ostream& out) {
        out << "module: " << name_ << "  0 0\n";
        put_list(out, "input:", inputs);
        put_list(out, "output:", outputs);
        out << "local:";
        for (const signal_decl& s : locals) out << ' ' << s.name;
        out << ";\n";
        if (registers_ > 0) {
            out << "register:\n";
            for (long k = 0; k < registers_; ++k)
                out << locals[register_next[k]].name << ' ' << locals[register_actual[k]].name << ' '
                    << register_init[k] << ";\n";
            out << '\n';
        }
        if (memorised_ > 0) {
            out << "memorized:\n";
            for (long k = 0; k < memorised_; ++k)
                out << pres[k].name << ' ' << locals[memorised_actual[k]].name << " ;\n";
            out << '\n';
        }
        out << "connexion: SET" << name_ << " RESET" << name_ << " RTL" << name_ << ";\n\n";
        put_wood(out);
    }

    // Node ids: preorder from each root, then-branch first, each node once.
    // The walk keeps its own stack; diagrams here are shallow but the
    // tool must not depend on that.
    void put_wood(std::ostream& out) {
        std::unordered_map<const bdd_node*, long> ids;
        ids.reserve(equations.size() * 2);
        std::vector<const bdd_node*> order;
        std::vector<const bdd_node*> stack;
        for (const equation& e : equations) {
            stack.push_back(e.right.node());
            while (!stack.empty()) {
                const bdd_node* n = stack.back();
                stack.pop_back();
                if (!ids.emplace(n, static_cast<long>(order.size())).second) continue;
                order.push_back(n);
                if (n->id < 0) continue;
                stack.push_back(n->else_node);
                stack.push_back(n->then_node);
            }
        }
        out << "equation_def:\n" << order.size() << '\n';
        std::string line;
        for (const bdd_node* n : order) {
            if (n->id < 0)
                out << ids[n] << ": -1:-3:-3,1\n";
            else
                out << ids[n] << ": " << n->id << ':' << ids[n->then_node] << ':' << ids[n->else_node]
                    << ',' << n->else_link_type << '\n';
        }
        out << "expressions:\n";
        for (const equation& e : equations) {
            out << "1 1 " << e.var << ':' << ids[e.right.node()] << ',' << e.right.link_type() << ",(";
            for (long v : e.right.node()->depends()) out << v << ' ';
            out << ")\n";
        }
        out << "end:\n\n";
    }
};

}  // namespace

int main(int argc, char** argv)
{
    bool wide = argc > 1 && std::string(argv[1]) == "--wide";
    if (wide) {
        --argc;
        ++argv;
    }
    if (argc < 2 || argc > (wide ? 3 : 4)) {
        std::cerr << "usage: zkcgen <equations> [seed] [module name]\n"
                     "       zkcgen --wide <locals> [module name]\n";
        return 1;
    }
    char* end = nullptr;
    long equations = std::strtol(argv[1], &end, 10);
    if (*end != '\0' || equations < 1) {
        std::cerr << "zkcgen: the number of equations must be a positive integer\n";
        return 1;
    }
    std::uint64_t seed = !wide && argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
    std::string name = wide ? (argc > 2 ? argv[2] : "wide") : (argc > 3 ? argv[3] : "gen");
    std::ios::sync_with_stdio(false);
    generator(equations, seed, name, wide).write(std::cout);
    std::cout.flush();
    return std::cout ? 0 : 1;
}
