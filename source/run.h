#ifndef TARN_SOURCE_RUN_H
#define TARN_SOURCE_RUN_H

// `run M [a\x, ...]`: an instance of another module. The called module is
// a module of the same source file or a compiled module (.zkc) named by the
// caller's "Run:" declarations. Its equations, as its compiled-module text
// holds them, are taken into the caller's wood: its inputs read the
// caller's signals, its outputs are joined into the caller's signals, and
// everything else it has (locals, wires, registers) gets a name of its own
// per call, so that two calls share no state. Its SET, RESET and RTL are
// the run statement's own wires.

#include "bdd/bddpp.h"
#include "source/statement.h"

#include <list>
#include <string>
#include <utility>
#include <vector>

class class_zkc_parser;

// A "Run:" declaration: "instance" : module, or "instance" : file : module
// for a module of <file>.zkc. `file` is empty in the first form.
struct RunDeclaration {
    std::string instance;
    std::string file;
    std::string module;
};

class Run : public Statement {
public:
    // Each pair of `renaming` is (caller's signal, called module's signal),
    // as written "a\x".
    Run(Module* m, const std::string& callee, std::vector<std::pair<std::string, std::string>> renaming)
        : Statement("Run", m), callee(callee), renaming(std::move(renaming)) {}

    // The called module exists; every renamed signal is one of its inputs
    // or outputs and a signal of the caller; each input and output meets a
    // signal of the caller with the same type (pure or the same data type);
    // no output meets an input of the caller. Messages end with
    // "\n Aborting ...".
    void complementary_check_syntax() override;
    void createEquations(Module* m, EquationTable* t) override;
    // The instance as createEquations makes it, its emissions taken back in
    // the reactions where `preemption` holds (a strong transition leaving
    // the automaton state that runs it).
    void compile_with_preemption(Module* m, EquationTable* t, const bdd& preemption);
    // That of the called module's body, or the number of its .zkc file.
    bool reincarnate() override;
    Statement* duplicate(Module* m, EquationTable*) override { return new Run(m, callee, renaming); }

    const std::string& getCallee() const { return callee; }

    // The modules of the source file, in file order; set by the command.
    static std::list<Module*>* FileModules;
    // The "Run:" declarations of a module, in order.
    static void declare(Module* m, const RunDeclaration& d);
    static const std::vector<RunDeclaration>& declarations(Module* m);
    // Forgets every declaration, compiled module and module read back so
    // far, for a process that compiles one source after another (the link
    // fuzz target); the parsers that read compiled texts back are
    // returned with their modules, the caller's to free.
    static std::vector<class_zkc_parser*> forget();

private:
    std::string callee;
    std::vector<std::pair<std::string, std::string>> renaming;
};

// Compiles a module of the source file once: a module that a run reaches
// before its turn is compiled then. A module that runs itself, directly or
// through others, is an error.
void compile_source_module(Module* m);

#endif
