// mosk: runs a compiled module reaction by reaction. The module is read
// and finalised as tarn does it; each line of the reactions is one
// reaction, answered by one line of the outputs present.

#include "sim/mosk_run.h"

int main(int argc, char** argv) { return mosk_main(argc, argv); }
