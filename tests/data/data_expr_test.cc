// Data expressions: types, type errors, every target form, operator
// texts, the simulator form and deep nesting.

#include "tests/data/data_tables.h"

#include <gtest/gtest.h>

namespace {

struct DataExprTest : DataTables {
    // k + f(3) < -k
    static DataExpr* small() { return new DataBinaryOp(DataExpr::Inf, new DataBinaryOp(DataExpr::Plus, k(), f(lit("3"))), new DataUnaryOp(DataExpr::Uminus, k())); }
    // p and q or not p
    static DataExpr* logic()
    {
        return new DataBinaryOp(DataExpr::Or, new DataBinaryOp(DataExpr::And, lit("p", "bool"), lit("q", "bool")),
                                new DataUnaryOp(DataExpr::Not, lit("p", "bool")));
    }
};

TEST_F(DataExprTest, TypeOfNestedExpressions)
{
    auto* sum = new DataBinaryOp(DataExpr::Plus, k(), f(lit("3")));
    DataBinaryOp comparison(DataExpr::Inf, sum, new DataUnaryOp(DataExpr::Uminus, k()));
    // A comparison takes its left operand's type.
    EXPECT_EQ(comparison.getType(nullptr), "int");
    EXPECT_EQ(sum->getType(), "int");
    DataBinaryOp both(DataExpr::And, new DataMethodCall(1, nullptr), lit("p", "bool"));
    EXPECT_EQ(both.getType(nullptr), "bool");
    DataMethodCall call(0, nullptr);
    EXPECT_EQ(call.getType(), "");
    EXPECT_EQ(call.getType(nullptr), "int");
}

TEST_F(DataExprTest, TypeErrorIsReportedOnceAndOnlyShowsInTheType)
{
    auto* mixed = new DataBinaryOp(DataExpr::Plus, k(), lit("true", "bool"));
    DataBinaryOp outer(DataExpr::Mult, mixed, k());
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(outer.getType(nullptr), "?type_error?");
    EXPECT_EQ(outer.getType(nullptr), "?type_error?");
    EXPECT_EQ(mixed->getType(nullptr), "?type_error?");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "*** Type check error in binary operator: type: \"int\" differs from type: \"bool\" --> return "
              "\"?type_error?\"\n"
              "*** Type check error in binary operator: type: \"?type_error?\" differs from type: \"int\" --> return "
              "\"?type_error?\"\n");
}

TEST_F(DataExprTest, TypeFailuresEndTheRun)
{
    EXPECT_EXIT(DataValue("3", "").getType(nullptr), ::testing::ExitedWithCode(1), "Error: Undefined type: 3\n");
    EXPECT_EXIT(DataConstant(7).getType(nullptr), ::testing::ExitedWithCode(1), "Error: Undefined constant: constant: \n");
    EXPECT_EXIT(DataMethodCall(7, nullptr).getType(nullptr), ::testing::ExitedWithCode(1),
                "Error: Undefined method: method\n");
    EXPECT_EXIT(DataConstant(7).setIndex(0), ::testing::ExitedWithCode(1), "Error: Undefined constant: : constant_table");
}

TEST_F(DataExprTest, EveryTargetFormOfASmallExpression)
{
    struct Case {
        void (DataExpr::*form)(std::ostream&, Module*);
        const char* name;
        const char* comparison;
        const char* logical;
    };
    const Case cases[] = {
        {&DataExpr::C_put, "C", " less_int( add_int(k,f(3)), neg_int(k))", "p && q ||  !(p)"},
        {&DataExpr::CSharp_put, "C#", "((k + f(3)) <  -k)", "((p && q) |  !p)"},
        {&DataExpr::LUSTRE_put, "Lustre", "((k + f(3)) <  -k)", "((p and q) or  notp)"},
        {&DataExpr::ESTEREL_put, "Esterel", "((k + f(3)) <  -k)", "((p and q) or  notp)"},
        {&DataExpr::VHDL_put, "VHDL", "'1' when ((k + f(3)) <  -k) else '0'", "((p and q) or  notp)"},
        {&DataExpr::DEBUG_put, "debug", " < ( + (CONSTANT $0(k),f(number:-1 (value=\"3\"))), -(CONSTANT $0(k)))",
         "number:-1 (value=\"p\") and number:-1 (value=\"q\") or  not(number:-1 (value=\"p\"))"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(put(small(), c.form), c.comparison) << c.name;
        EXPECT_EQ(put(logic(), c.form), c.logical) << c.name;
    }
    // Arithmetic stays parenthesised in VHDL; only comparisons become bits.
    DataBinaryOp sum(DataExpr::Minus, k(), lit("1"));
    EXPECT_EQ(put(&sum, &DataExpr::VHDL_put), "(k - 1)");
    EXPECT_EQ(put(&sum, &DataExpr::C_put), " sub_int(k,1)");
    // A deep copy prints the same and shares no node.
    DataExpr* original = small();
    DataExpr* copy = original->duplicate();
    EXPECT_EQ(put(copy, &DataExpr::C_put), put(original, &DataExpr::C_put));
    EXPECT_NE(static_cast<DataBinaryOp*>(copy)->getLeft(), static_cast<DataBinaryOp*>(original)->getLeft());
}

TEST_F(DataExprTest, OperatorTextsPerFamily)
{
    struct Case {
        int op;
        const char *c, *symbolic, *worded, *debug;
    };
    const Case cases[] = {
        {DataExpr::Plus, " add_T", " + ", " + ", " + "},       {DataExpr::Minus, " sub_T", " - ", " - ", " - "},
        {DataExpr::Mult, " mult_T", " * ", " * ", " * "},      {DataExpr::Div, " div_T", " / ", " / ", " / "},
        {DataExpr::Uminus, " neg_T", " -", " -", " -"},        {DataExpr::And, " && ", " && ", " and ", " and "},
        {DataExpr::Or, " || ", " | ", " or ", " or "},         {DataExpr::Not, " !", " !", " not", " not"},
        {DataExpr::Eq, " eq_T", " == ", " = ", " == "},        {DataExpr::Neq, " neq_T", " != ", " <> ", " <> "},
        {DataExpr::Inf, " less_T", " < ", " < ", " < "},       {DataExpr::Infe, " lesseq_T", " <= ", " <= ", " <= "},
        {DataExpr::Sup, " sup_T", " > ", " > ", " > "},        {DataExpr::Supe, " supeq_T", " >= ", " >= ", " >= "},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(DataExpr::C_opname(c.op, "T"), c.c) << c.op;
        EXPECT_EQ(DataExpr::CSharp_opname(c.op), c.symbolic) << c.op;
        EXPECT_EQ(DataExpr::MOSK_opname(c.op), c.symbolic) << c.op;
        EXPECT_EQ(DataExpr::LUSTRE_opname(c.op), c.worded) << c.op;
        EXPECT_EQ(DataExpr::ESTEREL_opname(c.op), c.worded) << c.op;
        EXPECT_EQ(DataExpr::VHDL_opname(c.op), c.worded) << c.op;
        EXPECT_EQ(DataExpr::DEBUG_opname(c.op), c.debug) << c.op;
    }
    const int bad = DataExpr::SignalVal;
    EXPECT_EXIT(DataExpr::C_opname(bad, "T"), ::testing::ExitedWithCode(1), "DataExpr::C_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::CSharp_opname(bad), ::testing::ExitedWithCode(1), "DataExpr::CShap_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::MOSK_opname(-1), ::testing::ExitedWithCode(1), "DataExpr::MOSK_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::VHDL_opname(bad), ::testing::ExitedWithCode(1), "DataExpr::VHDL_opname: invalid_operator");
    EXPECT_EXIT(DataExpr::DEBUG_opname(bad), ::testing::ExitedWithCode(1),
                "in DataExpr::_opname\\(\\):14 is an invalid_operator");
}

// The simulator form asks the data server for each node, operands first;
// a constant with a value needs no request.
TEST_F(DataExprTest, SimulatorFormAsksOperandsFirst)
{
    std::vector<std::string> asked;
    std::map<std::string, std::string> answers = {
        {"CONST,k,", "2"}, {"MC,f,3,", "5"}, {"BOP,2,int, + ,5,int,", "7"}, {"UOP, -,0,int,", "-0"}};
    auto ask = [&](const std::string& request) {
        asked.push_back(request);
        return answers.count(request) ? answers[request] : std::string("--");
    };
    DataBinaryOp sum(DataExpr::Plus, k(), f(lit("3")));
    EXPECT_EQ(sum.MOSK_put(nullptr, nullptr, ask), "7");
    EXPECT_EQ(asked, (std::vector<std::string>{"CONST,k,", "MC,f,3,", "BOP,2,int, + ,5,int,"}));
    asked.clear();
    DataUnaryOp negated(DataExpr::Uminus, new DataConstant(1));
    EXPECT_EQ(negated.MOSK_put(nullptr, nullptr, ask), "-0");
    EXPECT_EQ(asked, (std::vector<std::string>{"UOP, -,0,int,"}));
}

TEST_F(DataExprTest, DeepNestingEndsCleanly)
{
    auto chain = [](int depth) {
        DataExpr* e = lit("1");
        for (int i = 0; i < depth; i++)
            e = new DataUnaryOp(DataExpr::Uminus, e);
        return e;
    };
    std::string shallow = put(chain(1000), &DataExpr::CSharp_put);
    EXPECT_EQ(shallow.size(), 2 * 1000 + 1);
    EXPECT_EXIT(put(chain(100000), &DataExpr::C_put), ::testing::ExitedWithCode(1), "nested too deeply");
}

} // namespace
