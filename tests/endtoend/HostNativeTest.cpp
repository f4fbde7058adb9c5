// What is the native host's own: every character in names, and the one desktop that there is.
#include "tests/endtoend/CubeMagnets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using testing::HasSubstr;

using HostNative = CubeMagnets;

TEST_F(HostNative, TakesEveryCharacterInNames) {
    Replace("\"file\": \"cube-magnets.obj\"", "\"file\": \"\u78c1\u77f3.obj\"");
    std::filesystem::rename(m_folder / "cube-magnets.obj", m_folder / "\u78c1\u77f3.obj");
    const std::filesystem::path out = m_folder / "Spulenk\u00f6rper \u65e5\u672c \U0001F9F2";
    const Outcome outcome = Run({"--out", out.u8string(), "--steps", "1"});
    EXPECT_THAT(outcome.output, HasSubstr("\nstep 0/20  0 s"));
    EXPECT_EQ(Column(out / "cube-magnets.reports/cube-magnets.coupling.csv", "Step").size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(out / "cube-magnets.vantor"));
}

TEST_F(HostNative, NamesTheOneDesktopThatThereIs) {
    const Outcome outcome = Run({"--desktop", "2024.1"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("The only desktop on this system is the simulator, a part of the library: "
                                          "choose the version \"Simulator\""));
}

} // namespace
} // namespace endtoend
