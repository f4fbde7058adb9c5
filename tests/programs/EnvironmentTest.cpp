#include "programs/Environment.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

TEST(Environment, GivesAValueAsUtf8AndNothingForAVariableThatIsNotSet) {
    constexpr const char* name = "KINORA_TEST_ENVIRONMENT";
#ifdef _WIN32
    SetEnvironmentVariableW(L"KINORA_TEST_ENVIRONMENT", L"C:\\M\u00fcller\\\u20ac.json");
    EXPECT_EQ(kinora::programs::EnvironmentValue(name), "C:\\M\xC3\xBCller\\\xE2\x82\xAC.json");
    SetEnvironmentVariableW(L"KINORA_TEST_ENVIRONMENT", nullptr);
#else
    setenv(name, "/M\xC3\xBCller/\xE2\x82\xAC.json", 1);
    EXPECT_EQ(kinora::programs::EnvironmentValue(name), "/M\xC3\xBCller/\xE2\x82\xAC.json");
    unsetenv(name);
#endif
    EXPECT_EQ(kinora::programs::EnvironmentValue(name), "");
}

TEST(Environment, TakesAValueForThisProcess) {
    constexpr const char* name = "KINORA_TEST_SET_ENVIRONMENT";
    kinora::programs::SetEnvironmentValue(name, "before");
    kinora::programs::SetEnvironmentValue(name, "Simulator");
    EXPECT_STREQ(std::getenv(name), "Simulator");
    EXPECT_EQ(kinora::programs::EnvironmentValue(name), "Simulator");
}

} // namespace
