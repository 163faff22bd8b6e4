/* The benchmark families built with the comparison library, through its
   public C interface only. */

#include <bdd.h>
#include <stdlib.h>
#include <time.h>

#include "bench/bench_families.h"

/* Processor time, as on the other side. */
static double now(void) {
    struct timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

/* The table is made large enough up front; its set-up, which allocates
   and clears it, is timed apart from the build. */
static double start(int vars, struct bench_result* r) {
    double t0 = now();
    bdd_init(1000000, 100000);
    bdd_gbc_hook(NULL);
    bdd_setvarnum(vars);
    double t1 = now();
    r->setup_seconds = t1 - t0;
    return t1;
}

int buddy_decomposed = 0;

/* The exclusive-or, either the library's own or, when buddy_decomposed is
   set, composed as tarn's package composes it: or(and(f, not g),
   and(not f, g)), the two ands first, in that order. tarn's not is a
   complemented link and costs nothing, so each and with a negated operand
   is one apply here (diff and less), not a not and an and. The
   implication needs no such column: or(not f, g) is one apply on both
   sides. */
static BDD xor2(BDD f, BDD g) {
    if (!buddy_decomposed) return bdd_xor(f, g);
    BDD left = bdd_addref(bdd_apply(f, g, bddop_diff));
    BDD right = bdd_addref(bdd_apply(f, g, bddop_less));
    BDD result = bdd_or(left, right);
    bdd_delref(left);
    bdd_delref(right);
    return result;
}

/* Replaces the function held in *slot by v, moving the reference. */
static void hold(BDD* slot, BDD v) {
    bdd_addref(v);
    bdd_delref(*slot);
    *slot = v;
}

static void finish(struct bench_result* r, double t0, BDD root, long result_nodes) {
    r->seconds = now() - t0;
    r->result_nodes = result_nodes;
    r->live_nodes = bdd_getnodenum();
    r->solutions = bdd_satcount(root);
    bdd_done();
}

void buddy_parity(int n, struct bench_result* r) {
    double t0 = start(n, r);
    BDD f = bdd_addref(bdd_ithvar(0));
    for (int i = 1; i < n; ++i) hold(&f, xor2(f, bdd_ithvar(i)));
    finish(r, t0, f, bdd_nodecount(f));
}

void buddy_adder(int n, struct bench_result* r) {
    double t0 = start(2 * n, r);
    BDD carry = bdd_addref(bdd_false());
    BDD* sums = malloc(sizeof(BDD) * n);
    long nodes = 0;
    for (int i = 0; i < n; ++i) {
        BDD a = bdd_ithvar(i), b = bdd_ithvar(n + i);
        BDD half = bdd_addref(xor2(a, b));
        sums[i] = bdd_addref(xor2(half, carry));
        BDD both = bdd_addref(bdd_and(a, b));
        BDD pass = bdd_addref(bdd_and(carry, half));
        hold(&carry, bdd_or(both, pass));
        bdd_delref(half);
        bdd_delref(both);
        bdd_delref(pass);
        nodes += bdd_nodecount(sums[i]);
    }
    nodes += bdd_nodecount(carry);
    r->seconds = now() - t0;
    r->result_nodes = nodes;
    r->live_nodes = bdd_getnodenum();
    r->solutions = bdd_satcount(carry);
    free(sums);
    bdd_done();
}

void buddy_queens(int n, struct bench_result* r) {
    double t0 = start(n * n, r);
    BDD queen = bdd_addref(bdd_true());
    for (int i = 0; i < n; ++i) {
        BDD row = bdd_addref(bdd_false());
        for (int j = 0; j < n; ++j) hold(&row, bdd_or(row, bdd_ithvar(i * n + j)));
        hold(&queen, bdd_and(queen, row));
        bdd_delref(row);
    }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            BDD free_of = bdd_addref(bdd_true());
            for (int k = 0; k < n; ++k)
                for (int l = 0; l < n; ++l) {
                    if (k == i && l == j) continue;
                    if (k == i || l == j || k - l == i - j || k + l == i + j)
                        hold(&free_of, bdd_and(free_of, bdd_nithvar(k * n + l)));
                }
            BDD cell = bdd_addref(bdd_imp(bdd_ithvar(i * n + j), free_of));
            hold(&queen, bdd_and(queen, cell));
            bdd_delref(cell);
            bdd_delref(free_of);
        }
    finish(r, t0, queen, bdd_nodecount(queen));
}
