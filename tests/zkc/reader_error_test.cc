// Signal lists the reader is given to authorise: an unknown pure signal
// ends the run with its message. (The refused texts are in the command's
// table of bad inputs.)

#include "tests/zkc/reader_support.h"

#include "context/compilation.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <list>
#include <string>

TEST(ReaderErrors, AuthorisedListsRejectUnknownPureSignals)
{
    std::string file = testing::TempDir() + "reader_authorised.zkc";
    {
        std::ofstream(file) << "module: top 0 0 input: a v : int b ; output: o ; connexion: S R T; "
                               "equation_def: 0 expressions: end: ";
    }
    std::list<std::string> inputs{"a", "c"};
    std::list<std::string> outputs{"o"};
    std::list<std::string> none;
    std::string hierarchy;
    // Valued signals need no authorisation; an empty list authorises all.
    EXPECT_EXIT(Compilation::zkc_parse(file, hierarchy, &inputs, &outputs), testing::ExitedWithCode(1),
                "^top:PARSING ERROR: input signal \"b\" is unknown in main module!\n  --> authorised signals:\na\nc\n$");
    std::list<std::string> other{"p"};
    EXPECT_EXIT(Compilation::zkc_parse(file, hierarchy, &none, &other), testing::ExitedWithCode(1),
                "PARSING ERROR: output signal \"o\" is unknown");
    testing::internal::CaptureStderr();
    EXPECT_NE(Compilation::zkc_parse(file, hierarchy, &none, nullptr), nullptr);
    std::string missing = file + ".none";
    EXPECT_EQ(Compilation::zkc_parse(missing, hierarchy, nullptr, nullptr), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "File: " + missing + " does not exist\n");
    std::remove(file.c_str());
    std::remove((file + ".log").c_str());
}
