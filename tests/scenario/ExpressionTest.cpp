#include "scenario/Expression.h"

#include "scenario/PrescribedMotion.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

namespace kinora::scenario {
namespace {

using Variables = Expression::Variables;

double Value(const char* formula, double time = 0.0, double coordinate = 0.0) {
    return Expression::Parse(formula, Variables::TimeAndCoordinate).Evaluate(time, coordinate);
}

double Slope(const char* formula, double time, double coordinate = 0.0) {
    return Expression::Parse(formula, Variables::TimeAndCoordinate).Slope(time, coordinate);
}

std::string ErrorOf(const std::string& formula, Variables variables = Variables::Time) {
    try {
        (void)Expression::Parse(formula, variables);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "no error";
}

TEST(Expression, FollowsPrecedence) {
    EXPECT_DOUBLE_EQ(Value("1+2*3"), 7.0);
    EXPECT_DOUBLE_EQ(Value("(1+2)*3"), 9.0);
    EXPECT_DOUBLE_EQ(Value("8-4-2"), 2.0);
    EXPECT_DOUBLE_EQ(Value("16/4/2"), 2.0);
    EXPECT_DOUBLE_EQ(Value("2^3^2"), 512.0);
    EXPECT_DOUBLE_EQ(Value("-2^2"), -4.0);
    EXPECT_DOUBLE_EQ(Value("2^-1"), 0.5);
    EXPECT_DOUBLE_EQ(Value("--3"), 3.0);
    EXPECT_DOUBLE_EQ(Value(" 1.5e-3 * 2E2 "), 0.3);
}

TEST(Expression, KnowsConstantsAndFunctions) {
    EXPECT_DOUBLE_EQ(Value("30*deg"), 0.52359877559829882);
    EXPECT_DOUBLE_EQ(Value("12*mm"), 0.012);
    EXPECT_DOUBLE_EQ(Value("-gn"), -9.80665);
    EXPECT_DOUBLE_EQ(Value("20*gram"), 0.02);
    EXPECT_DOUBLE_EQ(Value("sin(pi/2) + cos(0) + sqrt(9) + abs(-2) + exp(0) + log(1)"), 8.0);
    EXPECT_DOUBLE_EQ(Value("atan2(1, 1)*4"), 3.14159265358979312);
    EXPECT_DOUBLE_EQ(Value("min(2, 3) + max(2, 3)"), 5.0);
    EXPECT_DOUBLE_EQ(Value("step(t-1)", 0.999), 0.0);
    EXPECT_DOUBLE_EQ(Value("step(t-1)", 1.0), 1.0);
    EXPECT_DOUBLE_EQ(Value("asin(1)+acos(1)+atan(0)+tan(0)"), std::acos(0.0));
}

TEST(Expression, TakesTimeAndCoordinate) {
    EXPECT_DOUBLE_EQ(Value("2*t - 3*q", 5.0, 2.0), 4.0);
}

TEST(Expression, GivesWhatMathematicsGives) {
    EXPECT_TRUE(std::isinf(Value("1/0")));
    EXPECT_TRUE(std::isnan(Value("sqrt(-1)")));
}

TEST(Expression, SaysWhatIsWrongAndWhere) {
    EXPECT_EQ(ErrorOf("2*w"), "formula \"2*w\", column 3: \"w\" is not known here");
    EXPECT_EQ(ErrorOf("2*"), "formula \"2*\", column 3: it ends too early");
    EXPECT_EQ(ErrorOf(""), "formula \"\", column 1: it ends too early");
    EXPECT_EQ(ErrorOf("(1"), "formula \"(1\", column 3: \")\" is missing");
    EXPECT_EQ(ErrorOf("1 2"), "formula \"1 2\", column 3: \"2\" is not expected");
    EXPECT_EQ(ErrorOf("sin 1"), "formula \"sin 1\", column 5: \"(\" is missing");
    EXPECT_EQ(ErrorOf("max(1)"), "formula \"max(1)\", column 6: \",\" is missing");
    EXPECT_EQ(ErrorOf("1e"), "formula \"1e\", column 3: the exponent needs digits");
    EXPECT_EQ(ErrorOf("."), "formula \".\", column 2: a number needs digits");
    EXPECT_EQ(ErrorOf("1e999"), "formula \"1e999\", column 6: the number is too large or too small");
}

TEST(Expression, TakesTimeAndPlace) {
    const Expression formula = Expression::Parse("t + 10*x + 100*y + 1000*z", Variables::TimeAndPlace);
    EXPECT_DOUBLE_EQ(formula.Evaluate({1.0, 7.0, 2.0, 3.0, 4.0}), 4321.0);
    EXPECT_DOUBLE_EQ(formula.Evaluate(1.0), 1.0);
    EXPECT_DOUBLE_EQ(Expression::Parse("2*t", Variables::TimeAndPlace).Slope(5.0), 2.0);
    EXPECT_DOUBLE_EQ(Expression::Parse("exp(max(x, y))", Variables::TimeAndPlace).Evaluate({0.0, 0.0, -1.0, 0.0, 0.0}),
                     1.0);
}

TEST(Expression, SaysWhichVariablesAFormulaMayName) {
    const auto error = [](const char* name, Variables variables) {
        const std::string text = ErrorOf(name, variables);
        return text.substr(text.find("column"));
    };
    EXPECT_EQ(error("t", Variables::None), "column 1: \"t\" is not known here; a constant is wanted");
    EXPECT_EQ(error("q", Variables::Time), "column 1: \"q\" is not known here; the only variable is t");
    EXPECT_EQ(error("x", Variables::TimeAndCoordinate), "column 1: \"x\" is not known here; the variables are t and q");
    EXPECT_EQ(error("2*q", Variables::TimeAndPlace),
              "column 3: \"q\" is not known here; the variables are t, x, y and z");
    EXPECT_EQ(error("xy", Variables::TimeAndPlace), "column 1: \"xy\" is not known here");
}

TEST(Expression, RefusesAUnitThatCouldMeanTwoThings) {
    EXPECT_EQ(ErrorOf("20*g"), "formula \"20*g\", column 4: \"g\" could mean grams or the acceleration of free fall; "
                               "write gram or gn");
}

TEST(Expression, DifferentiatesOperators) {
    EXPECT_DOUBLE_EQ(Slope("3", 2.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("t", 2.0), 1.0);
    EXPECT_DOUBLE_EQ(Slope("5 - t + 3*t", 2.0), 2.0);
    EXPECT_DOUBLE_EQ(Slope("-t*t", 2.0), -4.0);
    EXPECT_DOUBLE_EQ(Slope("1/t", 2.0), -0.25);
    EXPECT_DOUBLE_EQ(Slope("t/(1+t)", 1.0), 0.25);
    EXPECT_DOUBLE_EQ(Slope("q*t", 2.0, 7.0), 7.0);
}

TEST(Expression, DifferentiatesPowers) {
    EXPECT_DOUBLE_EQ(Slope("t^3", 2.0), 12.0);
    EXPECT_DOUBLE_EQ(Slope("t^3", -2.0), 12.0);
    EXPECT_DOUBLE_EQ(Slope("t^2", 0.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("t^1", 0.0), 1.0);
    EXPECT_DOUBLE_EQ(Slope("t^0", 0.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("2^t", 3.0), 8.0 * std::log(2.0));
    EXPECT_DOUBLE_EQ(Slope("t^t", 2.0), 4.0 * (std::log(2.0) + 1.0));
    EXPECT_DOUBLE_EQ(Slope("t^(2+t)", 0.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("(t-1)^2", 1.0), 0.0);
}

TEST(Expression, DifferentiatesFunctions) {
    EXPECT_DOUBLE_EQ(Slope("sin(2*t)", 0.3), 2.0 * std::cos(0.6));
    EXPECT_DOUBLE_EQ(Slope("cos(2*t)", 0.3), -2.0 * std::sin(0.6));
    EXPECT_DOUBLE_EQ(Slope("tan(t)", 0.3), 1.0 + std::tan(0.3) * std::tan(0.3));
    EXPECT_DOUBLE_EQ(Slope("asin(t/2)", 1.2), 0.5 / 0.8);
    EXPECT_DOUBLE_EQ(Slope("acos(t/2)", 1.2), -0.5 / 0.8);
    EXPECT_DOUBLE_EQ(Slope("atan(3*t)", 1.0), 0.3);
    EXPECT_DOUBLE_EQ(Slope("sqrt(t)", 4.0), 0.25);
    EXPECT_DOUBLE_EQ(Slope("exp(-t)", 2.0), -std::exp(-2.0));
    EXPECT_DOUBLE_EQ(Slope("log(5*t)", 4.0), 0.25);
    EXPECT_DOUBLE_EQ(Slope("atan2(sin(t), cos(t))", 2.0), 1.0);
    EXPECT_DOUBLE_EQ(Slope("5*mm*sin(2*pi*t)", 0.0), 0.01 * std::acos(-1.0));
}

TEST(Expression, DifferentiatesAtCornersForTheTimeThatFollows) {
    EXPECT_DOUBLE_EQ(Slope("abs(t)", -1.0), -1.0);
    EXPECT_DOUBLE_EQ(Slope("abs(t)", 0.0), 1.0);
    EXPECT_DOUBLE_EQ(Slope("min(t, 1)", 0.5), 1.0);
    EXPECT_DOUBLE_EQ(Slope("min(t, 1)", 1.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("min(1, t)", 2.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("max(t, 1)", 1.0), 1.0);
    EXPECT_DOUBLE_EQ(Slope("max(0, t-1)*2", 0.5), 0.0);
    EXPECT_DOUBLE_EQ(Slope("step(t-1)", 1.0), 0.0);
    EXPECT_DOUBLE_EQ(Slope("step(t-1)*(t-1)", 1.5), 1.0);
}

TEST(Expression, HasNoSlopeWhereMathematicsHasNone) {
    EXPECT_TRUE(std::isinf(Slope("sqrt(t)", 0.0)));
    EXPECT_FALSE(std::isfinite(Slope("log(t)", 0.0)));
    EXPECT_TRUE(std::isnan(Slope("sqrt(t)", -1.0)));
    EXPECT_DOUBLE_EQ(Slope("t + sqrt(0) + 0^0.5", 0.0), 1.0);
}

TEST(Expression, RefusesEndlessNesting) {
    EXPECT_THAT(ErrorOf(std::string(100000, '(')), testing::HasSubstr("too deeply nested"));
    std::string tower = "2";
    for (int i = 0; i < 100000; ++i) {
        tower += "^2";
    }
    EXPECT_THAT(ErrorOf(tower), testing::HasSubstr("too deeply nested"));
    EXPECT_DOUBLE_EQ(Value((std::string(99999, '-') + "1").c_str()), -1.0);
}

TEST(MotionTable, RunsStraightBetweenRowsAndStandsOutside) {
    const MotionTable table{{{1.0, 10.0}, {2.0, 20.0}, {4.0, 0.0}}};
    EXPECT_DOUBLE_EQ(table.Evaluate(0.0), 10.0);
    EXPECT_DOUBLE_EQ(table.Evaluate(1.0), 10.0);
    EXPECT_DOUBLE_EQ(table.Evaluate(1.25), 12.5);
    EXPECT_DOUBLE_EQ(table.Evaluate(2.0), 20.0);
    EXPECT_DOUBLE_EQ(table.Evaluate(3.0), 10.0);
    EXPECT_DOUBLE_EQ(table.Evaluate(9.0), 0.0);
}

TEST(MotionTable, OneRowStandsStill) {
    EXPECT_DOUBLE_EQ((MotionTable{{{1.0, 7.0}}}.Evaluate(3.0)), 7.0);
}

TEST(PrescribedMotion, HasTheSpeedOfItsFormula) {
    const PrescribedMotion motion(Expression::Parse("20*mm*t^2", Variables::Time));
    EXPECT_DOUBLE_EQ(motion.Speed(0.0), 0.0);
    EXPECT_DOUBLE_EQ(motion.Speed(0.5), 0.02);
}

TEST(PrescribedMotion, HasTheSpeedOfThePieceThatBegins) {
    const PrescribedMotion motion(MotionTable{{{1.0, 10.0}, {2.0, 20.0}, {4.0, 0.0}}});
    EXPECT_DOUBLE_EQ(motion.Speed(0.5), 0.0);
    EXPECT_DOUBLE_EQ(motion.Speed(1.0), 10.0);
    EXPECT_DOUBLE_EQ(motion.Speed(1.5), 10.0);
    EXPECT_DOUBLE_EQ(motion.Speed(2.0), -10.0);
    EXPECT_DOUBLE_EQ(motion.Speed(4.0), 0.0);
    EXPECT_DOUBLE_EQ(motion.Speed(9.0), 0.0);
    EXPECT_DOUBLE_EQ(PrescribedMotion(MotionTable{{{1.0, 7.0}}}).Speed(1.0), 0.0);
}

TEST(PrescribedMotion, HasNoSpeedWhereTheFormulaHasNone) {
    const PrescribedMotion motion(Expression::Parse("sqrt(t)", Variables::Time));
    EXPECT_DOUBLE_EQ(motion.Speed(0.0), 0.0);
    EXPECT_DOUBLE_EQ(motion.Speed(0.25), 1.0);
}

} // namespace
} // namespace kinora::scenario
