#include "host/app/AnsiText.h"

#include "scenario/Errors.h"

#include <gtest/gtest.h>

namespace kinora::host {
namespace {

TEST(AnsiText, GoesThereAndBack) {
    EXPECT_EQ(Utf8FromAnsi(AnsiFromUtf8("C:/Spule 5/rotor")), "C:/Spule 5/rotor");
    EXPECT_EQ(AnsiFromUtf8(""), "");
}

#ifdef _WIN32
TEST(AnsiText, RefusesWhatTheCodePageLacks) {
    // A character outside every ANSI code page.
    EXPECT_THROW(AnsiFromUtf8("\xf0\x9f\xa7\xb2"), scenario::InputError);
}
#else
TEST(AnsiText, KeepsEveryCharacter) {
    EXPECT_EQ(AnsiFromUtf8("\xf0\x9f\xa7\xb2"), "\xf0\x9f\xa7\xb2");
    EXPECT_EQ(Utf8FromAnsi("\xf0\x9f\xa7\xb2"), "\xf0\x9f\xa7\xb2");
}

TEST(AnsiText, RefusesWhatIsNoUtf8) {
    // A command line or a file of another encoding.
    EXPECT_THROW(AnsiFromUtf8("rotor \xe9"), scenario::InputError);
}
#endif

} // namespace
} // namespace kinora::host
