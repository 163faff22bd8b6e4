#ifndef TARN_SIM_REACTION_LINE_H
#define TARN_SIM_REACTION_LINE_H

// The reactions a user types: one line per reaction, the names of the
// inputs present separated by blanks, a valued one with its value in
// parentheses, "x(12)"; an empty line is a reaction without input.
//
// A value is a run of characters other than blanks, parentheses and
// commas (the comma separates the fields of a data request). A name is a
// run of characters other than blanks and parentheses.

#include <map>
#include <string>
#include <vector>

class reaction_line_reader {
public:
    // The inputs a line may name, each with whether it takes a value, and
    // the module's name for the messages.
    reaction_line_reader(std::string module, const std::vector<std::pair<std::string, bool>>& inputs);

    // Reads one line. On success `present[i]` and `values[i]` describe the
    // i-th input of the constructor's list and the result is true; else
    // `error` says what is wrong (without the line number) and the result
    // is false.
    bool read(const std::string& line, std::vector<bool>& present, std::vector<std::string>& values,
              std::string& error) const;

private:
    std::string module;
    std::map<std::string, std::size_t> index;
    std::vector<bool> valued;
};

#endif
