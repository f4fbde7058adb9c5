#include "report/core/Base64.h"

#include <gtest/gtest.h>

namespace kinora::report {
namespace {

TEST(Base64, AgreesWithThePublishedExamples) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64("foob"), "Zm9vYg==");
    EXPECT_EQ(Base64("fooba"), "Zm9vYmE=");
    EXPECT_EQ(Base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64("\xFF\xFE\xFD"), "//79");
}

} // namespace
} // namespace kinora::report
