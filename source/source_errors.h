#ifndef TARN_SOURCE_SOURCE_ERRORS_H
#define TARN_SOURCE_SOURCE_ERRORS_H

// The two exceptions of the source compiler. Nothing inside the compiler
// catches them; the command does, and ends with the text and status 1.

#include <stdexcept>
#include <string>

class IllegalOperationException : public std::runtime_error {
public:
    explicit IllegalOperationException(const std::string& text) : std::runtime_error(text) {}
};

// A statement's SET, RESET or RTL read before the statement made it; the
// text is "set", "reset" or "rtl".
class StatementWireException : public std::runtime_error {
public:
    explicit StatementWireException(const std::string& text) : std::runtime_error(text) {}
};

#endif
