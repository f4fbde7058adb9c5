// What becomes of a backslash before a closing quote.
#include "programs/StrayQuotes.h"

#include "programs/Errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace kinora::programs;
using Words = std::vector<std::string>;

TEST(StrayQuotes, TheLastArgumentIsMended) {
    // --out "C:\my folder\"
    EXPECT_EQ(WithoutStrayQuotes({"--out", R"(C:\my folder")"}), (Words{"--out", R"(C:\my folder\)"}));
}

TEST(StrayQuotes, AnArgumentThatHasSwallowedOthersIsRefusedWithTheRemedy) {
    // --out "C:\my folder\" --steps 1
    try {
        WithoutStrayQuotes({"--out", R"(C:\my folder" --steps 1)"});
        FAIL() << "it is taken";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), testing::EndsWith(R"(leave it out, "C:\my folder".)"));
    }
}

TEST(StrayQuotes, WhatIsMeantStays) {
    const Words words = {R"(C:\my folder\)", R"(title="5 inch")", R"(title="5\" disk")", "", "--set"};
    EXPECT_EQ(WithoutStrayQuotes(words), words);
}

} // namespace
