// The module every reading test starts from: one input, one output, a
// register and its next value, as the source compiler writes it.
#ifndef TARN_TESTS_WORKED_MODULE_H
#define TARN_TESTS_WORKED_MODULE_H

inline const char* const worked_module_text =
    "module: m  0 0\n"
    "input: i ;\n"
    "output: o ;\n"
    "local: n r;\n"
    "register:\n"
    "n r 0;\n"
    "\n"
    "connexion: SETm RESETm RTLm;\n"
    "\n"
    "equation_def:\n"
    "3\n"
    "0: 6:1:1,-1\n"
    "1: -1:-3:-3,1\n"
    "2: 0:1:1,-1\n"
    "expressions:\n"
    "1 1 2:0,1,(6 )\n"
    "1 1 4:2,1,(0 )\n"
    "1 1 5:2,-1,(0 )\n"
    "end:\n";

#endif
