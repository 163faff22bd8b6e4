// A module file read and finalised as tarn reads it before it writes a
// target, for the tests that check a text against the module's own facts.
#ifndef TARN_TESTS_CONSUMERS_FINALISED_MODULE_H
#define TARN_TESTS_CONSUMERS_FINALISED_MODULE_H

#include "context/compilation.h"
#include "zkc/zkc_input.h"
#include "model/module.h"

#include <gtest/gtest.h>

#include <string>

// The module, its messages kept off the test's output; null, and a
// failure, when the file cannot be read.
inline Module* finalised_module(const std::string& file)
{
    std::string suffix;
    bool ok = false;
    Compilation::GDataMethodTable = nullptr;
    Compilation::GDataTypeTable = nullptr;
    Compilation::GDataConstantTable = nullptr;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Module* module = parse(file, suffix, &ok);
    if (ok && module != nullptr)
        Module::finalize(module, 0);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    if (!ok || module == nullptr) {
        ADD_FAILURE() << "not read: " << file;
        return nullptr;
    }
    return module;
}

#endif
