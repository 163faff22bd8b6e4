// The reader's data sections: global tables shared across files through
// each file's numbers, bindings, evaluation forms, module files; and the
// signal lists the reader is given to authorise, where an unknown pure
// signal ends the run with its message. (The refused texts are in the
// command's table of bad inputs.)

#include "tests/zkc/reader_support.h"

#include "data/data.h"
#include "context/compilation.h"
#include "model/module.h"
#include "signals/signal.h"
#include "wood/Bddexpression.h"
#include "zkc/parse_supl.h"

#include <gtest/gtest.h>

#include <list>
#include <string>

namespace {

const std::string empty_wood = " connexion: S R T; equation_def: 0 expressions: end: ";

std::string value_text(ConstantDecl* c, int language)
{
    auto* values = c->getValueTable();
    if (values == nullptr || values->count(language) == 0)
        return "<none>";
    auto* v = dynamic_cast<DataValue*>(values->at(language));
    return v != nullptr ? v->getText() : "<not a literal>";
}

}  // namespace

TEST(ReaderData, SecondFileReusesTheGlobalTablesThroughItsOwnNumbers)
{
    read_result a = read_zkc("module: a 0 0" + empty_wood +
                             "data: type: rd_t1; rd_t2; method: rd_t1 rd_f(rd_t2, rd_t1);"
                             " constant: rd_t1 rd_one \"1\"; end:");
    ASSERT_EQ(a.status, 0) << a.errors;
    read_result b = read_zkc("module: b 0 0 output: o : rd_t1 ;" + empty_wood +
                             "binding: (0, 1): value: 0; end: evaltable: 0: %1(1); 1: $0; end:"
                             " data: type: rd_t2; rd_t3; method: rd_t1 rd_g(); rd_t1 rd_f(rd_t2, rd_t1);"
                             " constant: rd_t1 rd_two :c= \"2\" :default= \"3\" :c= \"4\"; rd_t1 rd_one \"1\";"
                             " rd_t1 rd_ext; end:");
    ASSERT_EQ(b.status, 0) << b.errors;

    DataTypeTable* types = Compilation::GDataTypeTable;
    ASSERT_NE(types, nullptr);
    EXPECT_EQ(b.parser->corres_type[0], a.parser->corres_type[1]);
    EXPECT_EQ(b.parser->corres_type[1], types->getIndex("rd_t3"));
    EXPECT_NE(b.parser->corres_type[1], b.parser->corres_type[0]);
    EXPECT_EQ(b.parser->corres_method[1], a.parser->corres_method[0]);
    EXPECT_EQ(b.parser->corres_method[0], Compilation::GDataMethodTable->getMethodIndex("rd_g"));
    EXPECT_EQ(b.parser->corres_constant[1], a.parser->corres_constant[0]);
    EXPECT_EQ(b.parser->corres_constant[0], Compilation::GDataConstantTable->getConstantIndex("rd_two"));

    // The binding's expression indexes the global tables, not the file's.
    DataBinding* binding = b.module->getBinding("o");
    ASSERT_NE(binding, nullptr);
    auto* call = dynamic_cast<DataMethodCall*>(binding->getValue());
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call->getMethodIndex(), a.parser->corres_method[0]);
    ASSERT_EQ(call->getArguments()->size(), 1u);
    auto* constant = dynamic_cast<DataConstant*>(call->getArguments()->front());
    ASSERT_NE(constant, nullptr);
    EXPECT_EQ(constant->getConstantIndex(), b.parser->corres_constant[0]);

    MethodDecl* f = Compilation::GDataMethodTable->getMethod("rd_f");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->getReturnType(), "rd_t1");
    EXPECT_EQ(*f->getArgTypeList(), (std::list<std::string>{"rd_t2", "rd_t1"}));

    DataConstantTable* constants = Compilation::GDataConstantTable;
    ConstantDecl* two = constants->getConstant("rd_two");
    EXPECT_EQ(value_text(two, TLanguage::C), "4");
    EXPECT_EQ(value_text(two, TLanguage::DEFAULT), "3");
    EXPECT_EQ(value_text(two, TLanguage::VHDL), "<none>");
    EXPECT_EQ(value_text(constants->getConstant("rd_one"), TLanguage::DEFAULT), "1");
    EXPECT_EQ(constants->getConstant("rd_one")->getValueTable()->size(), 1u);
    EXPECT_EQ(constants->getConstant("rd_ext")->getValueTable(), nullptr);
}

TEST(ReaderData, EvaluationForms)
{
    read_result r = read_zkc("module: m 0 0 input: a : t ; output: b : t ;" + empty_wood +
                             "binding: (2, 3): value: 7; end:"
                             " evaltable: 7: %%8(1, 2); 1: %%19(3); 2: 4; 3: %%14(0, 1); 4: %0(5, $6); 5: $0;"
                             " 6: $1; 6: $0; end:"
                             " data: type: t; method: t ev_f(t, t); constant: t ev_zero \"0\"; t ev_one \"1\"; end:");
    ASSERT_EQ(r.status, 0) << r.errors;
    auto* eq = dynamic_cast<DataBinaryOp*>(r.module->getBinding("b")->getValue());
    ASSERT_NE(eq, nullptr);
    EXPECT_EQ(eq->getOperator(), DataExpr::Eq);
    // "%%" 19 is operator 4 on type 1.
    auto* minus = dynamic_cast<DataUnaryOp*>(eq->getLeft());
    ASSERT_NE(minus, nullptr);
    EXPECT_EQ(minus->getOperator(), DataExpr::Uminus);
    EXPECT_NE(dynamic_cast<DataSignalValue*>(minus->getOperand()), nullptr);
    // A link is the linked line itself.
    auto* call = dynamic_cast<DataMethodCall*>(eq->getRight());
    ASSERT_NE(call, nullptr);
    ASSERT_EQ(call->getArguments()->size(), 2u);
    auto* first = dynamic_cast<DataConstant*>(call->getArguments()->front());
    auto* second = dynamic_cast<DataConstant*>(call->getArguments()->back());
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_EQ(first->getConstantIndex(), r.parser->corres_constant[0]);
    // "$6" names line 6; of two lines 6 the first counts.
    EXPECT_EQ(second->getConstantIndex(), r.parser->corres_constant[1]);
}

TEST(ReaderData, ModuleFilesAreFoundByTheirFirstLine)
{
    scratch_dir s;
    std::string one = s.write("one.zkc", "module: alpha  1 0\n" + empty_wood);
    std::string two = s.write("two.zkc", "module: beta  0 1\n" + empty_wood);
    std::list<std::string> files{one, two};
    Module::CompilationFileList = &files;
    EXPECT_EQ(Compilation::getZkcFileName("beta"), two);
    EXPECT_EQ(Compilation::getZkcFileName("gamma"), "");
    EXPECT_EQ(Compilation::getReincarnateFromZkcFile("alpha"), 1);
    EXPECT_EQ(Compilation::getReincarnateFromZkcFile("beta"), 0);
    EXPECT_EQ(Compilation::getReincarnateFromZkcFile("gamma"), -1);

    testing::internal::CaptureStderr();
    Module* beta = Compilation::createModuleFromZkcCode("beta");
    Module* none = Compilation::createModuleFromZkcCode("gamma");
    std::string errors = testing::internal::GetCapturedStderr();
    ASSERT_NE(beta, nullptr);
    EXPECT_EQ(beta->getFinalised(), 1);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(errors, "File:  does not exist\n");
    Module::CompilationFileList = nullptr;
}

TEST(ReaderErrors, AuthorisedListsRejectUnknownPureSignals)
{
    scratch_dir s;
    std::string file = s.write("authorised.zkc", "module: top 0 0 input: a v : int b ; output: o ;" + empty_wood);
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
}
