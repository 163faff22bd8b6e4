#ifndef TARN_SOURCE_BRAM_H
#define TARN_SOURCE_BRAM_H

// The run of bram on one ZK source file: read it whole, compile every
// module in file order, then write each as "<dir>/<module>.zkc". Nothing
// is written unless every module compiles: an error ends the process with
// its message and status 1 before any file is opened.

#include <ostream>
#include <string>

// `outputDir` empty: beside the input. Each file written is reported as
// "generation of <path>" on `report`. Returns the exit status.
int bram_compile(const std::string& input, const std::string& outputDir, std::ostream& report);

// The directory of a path: what stands before its last "/", "." when
// there is none.
std::string bram_directory_of(const std::string& path);

#endif
