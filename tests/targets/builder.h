// Modules marked finalised by hand, so that the text of a generator can be
// derived from the equations as written, without the finalisation passes.
#ifndef TARN_TESTS_TARGETS_BUILDER_H
#define TARN_TESTS_TARGETS_BUILDER_H

#include "tests/module_builder.h"

struct TargetModule : ModuleBuilder {
    explicit TargetModule(const std::string& name = "m") : ModuleBuilder(name)
    {
        Compilation::GDataTypeTable = nullptr;
        Compilation::GDataMethodTable = nullptr;
        Compilation::GDataConstantTable = nullptr;
        m.setFinalised(1);
    }
};

#endif
