#include "simulator/model/Variables.h"

#include "simulator/model/DesktopError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vantor::model;

namespace {

std::string BadValue(const std::function<void()>& action) {
    try {
        action();
    } catch (const DesktopError& error) {
        EXPECT_EQ(error.Code(), ErrorCode::BadArgumentValue);
        return error.what();
    }
    return "none";
}

} // namespace

TEST(Variables, KeepTheOrderOfTheirCreation) {
    Variables variables;
    variables.Add({{"b", "1mm"}});
    variables.Add({{"a", "2*b"}});
    ASSERT_EQ(variables.All().size(), 2U);
    EXPECT_EQ(variables.All()[0].name, "b");
    EXPECT_DOUBLE_EQ(variables.Evaluate("a")->value, 2e-3);
    variables.Change({{"b", "3mm"}});
    EXPECT_DOUBLE_EQ(variables.Evaluate("a")->value, 6e-3);
}

TEST(Variables, ChangeAllOrNothing) {
    Variables variables;
    variables.Add({{"a", "1"}, {"b", "2"}});
    EXPECT_EQ(BadValue([&] { variables.Change({{"a", "5"}, {"c", "6"}}); }), "there is no variable \"c\" to change");
    EXPECT_EQ(variables.RequireValue("a"), "1");
    EXPECT_EQ(BadValue([&] {
                  variables.Change({{"a", "5"}, {"b", "6*"}});
              }),
              "variable \"b\": a value is missing at position 3 of \"6*\"");
    EXPECT_EQ(variables.RequireValue("a"), "1");
}

TEST(Variables, RejectNamesThatExpressionsCannotReferTo) {
    Variables variables;
    for (const char* name : {"", "1st", "Rotor-1_X", "a b", "a.b"}) {
        EXPECT_THAT(BadValue([&] { variables.Add({{name, "1"}}); }), testing::HasSubstr("cannot be named")) << name;
    }
    variables.Add({{"Rotor_1", "1"}});
    EXPECT_EQ(BadValue([&] { variables.Add({{"Rotor_1", "2"}}); }), "the variable \"Rotor_1\" exists already");
}

TEST(Variables, NoticeCircles) {
    Variables variables;
    variables.Add({{"a", "1"}, {"b", "a+1"}});
    EXPECT_THAT(BadValue([&] { variables.Change({{"a", "b+1"}}); }), testing::HasSubstr("refers to itself"));
    EXPECT_THAT(BadValue([&] { variables.Change({{"a", "a"}}); }), testing::HasSubstr("refers to itself"));
    EXPECT_DOUBLE_EQ(variables.Evaluate("b")->value, 2.0);
}

TEST(Variables, EvaluateWhatManyReferToOnce) {
    Variables variables;
    variables.Add({{"v0", "1"}});
    for (int i = 1; i < 60; ++i) {
        const std::string before = "v" + std::to_string(i - 1);
        variables.Add({{"v" + std::to_string(i), before + "+" + before}});
    }
    EXPECT_DOUBLE_EQ(variables.Evaluate("v59")->value, 576460752303423488.0);
}
