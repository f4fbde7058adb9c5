#include "scenario/Text.h"

#include <gtest/gtest.h>

namespace kinora::scenario {
namespace {

TEST(NearestName, FindsWhatWasMeantAndNothingElse) {
    const std::vector<std::string> names = {"rotor_2", "stator", "shaft"};
    EXPECT_EQ(NearestName("rotor2", names), "rotor_2");
    EXPECT_EQ(NearestName("Stator", names), "stator");
    EXPECT_EQ(NearestName("completely different", names), "");
}

} // namespace
} // namespace kinora::scenario
