// The compilation context: status codes, name builders and the fatal
// functions' text and status.

#include "context/compilation.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(CompilationDeathTest, StatusCodesNamesAndFatalFunctions)
{
    EXPECT_TRUE(Compilation::isStatusType(Compilation::SINPUT));
    EXPECT_FALSE(Compilation::isValueType(Compilation::SINPUT));
    EXPECT_TRUE(Compilation::isValueType(Compilation::VINPUT));
    EXPECT_FALSE(Compilation::isStatusType(Compilation::VINPUT));
    EXPECT_TRUE(Compilation::isStatusType(-3));  // odd negative: status
    EXPECT_EQ(Compilation::bddNameToSignalName("_s_"), "");
    EXPECT_EQ(Compilation::bddNameToSignalName("_v_abc"), "abc");
    EXPECT_THROW(Compilation::bddNameToSignalName("_s"), std::out_of_range);
    EXPECT_EQ(Compilation::createRTLName("m"), "RTLm");
    EXPECT_EQ(Compilation::createSETName("m"), "SETm");
    EXPECT_EQ(Compilation::createRESETName("m"), "RESETm");
    // The fatal functions write the error stream and exit with status 1.
    EXPECT_EXIT(Compilation::UndefinedTypeException("foo"), ::testing::ExitedWithCode(1),
                "Error: Undefined type: foo\n");
    EXPECT_EXIT(Compilation::HashTableAddException("", "m"), ::testing::ExitedWithCode(1),
                "Exception in Hash Table: add:m is already defined");
}
