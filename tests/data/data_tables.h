// The global data tables as a reader leaves them, for the data tests: types
// int (0) and bool (1), the methods "int f(int)" (0) and "bool g()" (1), the
// external constant k (0) and z (1) with a C value.
#ifndef TARN_TESTS_DATA_DATA_TABLES_H
#define TARN_TESTS_DATA_DATA_TABLES_H

#include "context/compilation.h"
#include "data/data.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

inline std::string* str(const char* s) { return new std::string(s); }

struct DataTables : ::testing::Test {
    void SetUp() override
    {
        Compilation::GDataTypeTable = new DataTypeTable;
        Compilation::GDataTypeTable->addType("int");
        Compilation::GDataTypeTable->addType("bool");
        Compilation::GDataMethodTable = new DataMethodTable;
        Compilation::GDataMethodTable->addMethod(new MethodDecl(str("int"), str("f"), new std::list<std::string>{"int"}));
        Compilation::GDataMethodTable->addMethod(new MethodDecl(str("bool"), str("g"), nullptr));
        Compilation::GDataConstantTable = new DataConstantTable;
        Compilation::GDataConstantTable->addConstant(new ConstantDecl("int", "k"));
        Compilation::GDataConstantTable->addConstant(
            new ConstantDecl("int", "z", new std::map<int, DataExpr*>{{TLanguage::C, new DataValue("0", "int")}}));
    }

    static DataExpr* k() { return new DataConstant(0); }
    static DataExpr* lit(const char* text, const char* type = "int") { return new DataValue(text, type); }
    static DataExpr* f(DataExpr* arg) { return new DataMethodCall(0, new std::list<DataExpr*>{arg}); }

    // The text of `e` in one target's form, for the module `m`.
    static std::string put(DataExpr* e, void (DataExpr::*form)(std::ostream&, Module*), Module* m = nullptr)
    {
        std::ostringstream os;
        (e->*form)(os, m);
        return os.str();
    }
};

#endif
