// A run in the place of one that was killed together with its desktop (the script "killed" does the killing).
#include "tests/endtoend/CubeMagnets.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using KilledRun = CubeMagnets;

TEST_F(KilledRun, IsNotWaitedForWhereItsDesktopWentWithItsProcess) {
#ifdef _WIN32
    const std::string version = "SimulatorInProcess";
#else
    const std::string version = "Simulator";
#endif
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int run = 0; run < 3; ++run) {
        const ScratchFolder folder;
        std::ofstream(folder / "cube-magnets.vantor") << "what the killed run had saved";
        std::ofstream(folder / "cube-magnets.state.json") << "{ \"step\": -1 }";
        const auto start = std::chrono::steady_clock::now();
        const Outcome outcome = Run({"--out", folder.Path().u8string(), "--desktop", version, "--steps", "1"});
        shortest = std::min(shortest, std::chrono::steady_clock::now() - start);
        EXPECT_THAT(outcome.output, testing::HasSubstr("Saving and closing the project\n"));
        EXPECT_THAT(outcome.output, testing::Not(testing::HasSubstr("stays open")));
    }
    // A desktop in another process is given a second to notice the death of its client.
    EXPECT_LT(shortest, std::chrono::seconds(1));
}

} // namespace
} // namespace endtoend
