#include "report/core/ToUtf8.h"

#include <gtest/gtest.h>

namespace kinora::report {
namespace {

TEST(ToUtf8, KeepsUtf8AndDecodesTheRest) {
    EXPECT_EQ(ToUtf8("\xF0\x9F\xA7\xB2 \xC3\xA4"), "\xF0\x9F\xA7\xB2 \xC3\xA4");
    EXPECT_EQ(ToUtf8("\xE4"), "\xC3\xA4");
    // An overlong form and a surrogate are no UTF-8.
    EXPECT_EQ(ToUtf8("\xC0\xBC"), "\xC3\x80\xC2\xBC");
    EXPECT_EQ(ToUtf8("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xE2\x82\xAC");
}

} // namespace
} // namespace kinora::report
