#ifndef TARN_BENCH_BENCH_FAMILIES_H
#define TARN_BENCH_BENCH_FAMILIES_H

/* The benchmark families, each built by one engine. Shared by the C++
   driver and the C side that runs the comparison library (whose header
   cannot meet the project's own in one translation unit). */

#ifdef __cplusplus
extern "C" {
#endif

struct bench_result {
    double seconds;       /* time of the build alone */
    double setup_seconds; /* time of the engine's set-up before it */
    long result_nodes;  /* nodes of the result(s), the engine's own count */
    long live_nodes;    /* nodes alive in the engine's table at the end */
    double solutions;   /* satisfying assignments of the result */
};

/* Set (before a build) to build the exclusive-or out of and, or and not,
   in the order tarn's package does, instead of with the library's own. */
extern int buddy_decomposed;

/* Parity of n variables, folded left to right with xor. */
void buddy_parity(int n, struct bench_result* r);
/* Sum bits and carry out of a + b on n bits, operands a0..an-1 before
   b0..bn-1 in the order; solutions counts those of the carry out. */
void buddy_adder(int n, struct bench_result* r);
/* One queen per row, none attacking another, on an n by n board. */
void buddy_queens(int n, struct bench_result* r);

#ifdef __cplusplus
}
#endif

#endif
