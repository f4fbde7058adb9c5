#include "simulator/model/Expression.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

using namespace vantor::model;

namespace {

std::optional<Quantity> Names(const std::string& name) {
    static const std::map<std::string, Quantity> known = {
        {"Rotor_X", {0.02, lengthDimension}},
        {"Rotor_Psi", {0.5, angleDimension}},
        {"Force_Rotor.Force_x", {0.75, forceDimension}},
        {"Torque_Rotor_X.Torque", {0.002, torqueDimension}},
    };
    const auto found = known.find(name);
    return found == known.end() ? std::nullopt : std::optional<Quantity>(found->second);
}

double Number(const std::string& text) {
    const Quantity quantity = Evaluate(text, Names);
    EXPECT_TRUE(quantity.dimension.IsNumber()) << text << " is " << Describe(quantity.dimension);
    return quantity.value;
}

std::string Complaint(const std::string& text) {
    try {
        Evaluate(text, Names);
    } catch (const ExpressionError& error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(Expression, FollowsTheUsualPrecedence) {
    EXPECT_DOUBLE_EQ(Number("1+2*3"), 7.0);
    EXPECT_DOUBLE_EQ(Number("(1+2)*3"), 9.0);
    EXPECT_DOUBLE_EQ(Number("2^3^2"), 512.0);
    EXPECT_DOUBLE_EQ(Number("-2^2"), -4.0);
    EXPECT_DOUBLE_EQ(Number("2^-1"), 0.5);
    EXPECT_DOUBLE_EQ(Number("8/4/2"), 1.0);
    EXPECT_DOUBLE_EQ(Number("5-3-1"), 1.0);
    EXPECT_DOUBLE_EQ(Number("--3"), 3.0);
    EXPECT_DOUBLE_EQ(Number(" 1 + ( 2 ) "), 3.0);
}

TEST(Expression, KnowsItsFunctions) {
    EXPECT_DOUBLE_EQ(Number("sin(0.3)"), std::sin(0.3));
    EXPECT_DOUBLE_EQ(Number("cos(60deg)"), std::cos(std::acos(-1.0) / 3.0));
    EXPECT_DOUBLE_EQ(Number("tan(Rotor_Psi)"), std::tan(0.5));
    EXPECT_DOUBLE_EQ(Evaluate("atan2(-1mm, 2mm)", Names).value, std::atan2(-1.0, 2.0));
    EXPECT_DOUBLE_EQ(Evaluate("asin(0.2)+acos(0.2)", Names).value, std::acos(-1.0) / 2.0);
    EXPECT_DOUBLE_EQ(Number("exp(1)"), std::exp(1.0));
    EXPECT_DOUBLE_EQ(Number("ln(exp(2))"), 2.0);
    EXPECT_DOUBLE_EQ(Number("pow(2, 10)"), 1024.0);
    EXPECT_DOUBLE_EQ(Number("abs(-3)+sqrt(16)"), 7.0);
    EXPECT_DOUBLE_EQ(Number("min(1,2)+max(1,2)"), 3.0);
    EXPECT_DOUBLE_EQ(Number("pi"), std::acos(-1.0));
}

TEST(Expression, ReadsUnits) {
    EXPECT_DOUBLE_EQ(EvaluateLength("10mm", nullptr, 1.0), 0.01);
    EXPECT_DOUBLE_EQ(EvaluateLength("0.100000Meter", nullptr, 1e-3), 0.1);
    EXPECT_DOUBLE_EQ(EvaluateLength("1e-3mm", nullptr, 1.0), 1e-6);
    EXPECT_DOUBLE_EQ(EvaluateLength("1in+1ft", nullptr, 1.0), 0.0254 + 0.3048);
    EXPECT_DOUBLE_EQ(EvaluateAngle("-1.570796Rad", nullptr), -1.570796);
    EXPECT_DOUBLE_EQ(EvaluateAngle("180deg", nullptr), std::acos(-1.0));
    EXPECT_DOUBLE_EQ(Evaluate("0.010000s", nullptr).value, 0.01);
}

TEST(Expression, TakesAPlainNumberForTheUnitThatIsMeant) {
    EXPECT_DOUBLE_EQ(EvaluateLength("25", nullptr, 1e-3), 0.025);
    EXPECT_DOUBLE_EQ(EvaluateAngle("0.25", nullptr), 0.25);
}

TEST(Expression, GivesLoadsWithoutTheirUnit) {
    EXPECT_DOUBLE_EQ(Number("Force_Rotor.Force_x/1Newton"), 0.75);
    EXPECT_DOUBLE_EQ(Number("Torque_Rotor_X.Torque/1mNewtonMeter"), 2.0);
    EXPECT_DOUBLE_EQ(Number("Torque_Rotor_X.Torque/(Force_Rotor.Force_x*10mm)"), 0.002 / 0.0075);
}

TEST(Expression, RejectsDimensionsThatDoNotGoTogether) {
    EXPECT_EQ(Complaint("1mm+1s"), "cannot add s to a length at position 4 of \"1mm+1s\"");
    EXPECT_EQ(Complaint("Rotor_X - 1"),
              "cannot subtract a plain number from a length at position 9 of \"Rotor_X - 1\"");
    EXPECT_EQ(Complaint("sin(1mm)"), "an angle is needed, not a length at position 1 of \"sin(1mm)\"");
    EXPECT_EQ(Complaint("2^1mm"), "the exponent must be a plain number, not a length at position 2 of \"2^1mm\"");
    EXPECT_THROW(EvaluateLength("Rotor_Psi", Names, 1.0), ExpressionError);
    EXPECT_THROW(EvaluateAngle("Rotor_X", Names), ExpressionError);
}

TEST(Expression, SaysWhatIsWrongAndWhere) {
    EXPECT_EQ(Complaint(""), "a value is missing at position 1 of \"\"");
    EXPECT_EQ(Complaint("1+"), "a value is missing at position 3 of \"1+\"");
    EXPECT_EQ(Complaint("(1+2"), "\")\" is missing for the \"(\" at position 1 at position 5 of \"(1+2\"");
    EXPECT_EQ(Complaint("1 2"), "unexpected \"2\" at position 3 of \"1 2\"");
    EXPECT_EQ(Complaint("2parsec"), "unknown unit \"parsec\" at position 2 of \"2parsec\"");
    EXPECT_EQ(Complaint("Stator_X*2"), "unknown name \"Stator_X\" at position 1 of \"Stator_X*2\"");
    EXPECT_EQ(Complaint("sinh(1)"), "unknown function \"sinh\" at position 1 of \"sinh(1)\"");
    EXPECT_EQ(Complaint("sin(1,2)"), "sin takes 1 argument(s), not 2 at position 1 of \"sin(1,2)\"");
    EXPECT_EQ(Complaint("1/0"), "division by zero at position 2 of \"1/0\"");
    EXPECT_EQ(Complaint("sqrt(-1)"), "the result is not a finite number at position 1 of \"sqrt(-1)\"");
    EXPECT_EQ(Complaint("1.2.3"), "not a number: \"1.2.3\" at position 1 of \"1.2.3\"");
    EXPECT_EQ(Complaint("1e400"), "not a number: \"1e400\" at position 1 of \"1e400\"");
}

TEST(Expression, SurvivesDeepNestingAndLongChains) {
    EXPECT_THAT(Complaint(std::string(100000, '(')), testing::HasSubstr("nested"));
    std::string chain = "1";
    for (int i = 0; i < 20000; ++i) {
        chain += "+1";
    }
    EXPECT_DOUBLE_EQ(Number(chain), 20001.0);
    EXPECT_DOUBLE_EQ(Number(std::string(100000, '-') + "1"), 1.0);
}
