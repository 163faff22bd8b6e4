#ifndef TARN_DATA_DATA_INTERNAL_H
#define TARN_DATA_DATA_INTERNAL_H

// Shared by the data layer's own files; not part of its interface.

#include <string>

// Held by every recursive walk of an expression tree. Past MaxDepth
// levels the walk ends the process with a message instead of running out
// of stack; a cycle in a damaged tree ends the same way.
class DataNesting {
public:
    static const int MaxDepth = 4000;

    DataNesting();
    ~DataNesting() { --depth; }
    DataNesting(const DataNesting&) = delete;
    DataNesting& operator=(const DataNesting&) = delete;

    // "%%" code of a predefined operation in a compiled-module file:
    // op + NbPredefOp * (line of the result type among the type lines).
    static int predefCode(int op, const std::string& type);

private:
    static int depth;
};

#endif
