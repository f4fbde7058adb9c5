// Interrupts, by raising them in child processes: what they end is not the test program.
#include "host/app/Terminal.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <csignal>
#include <cstdlib>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace kinora::host {
namespace {

TEST(Terminal, IsNotInterruptedByItself) {
    CatchInterrupts();
    EXPECT_FALSE(IsInterrupted());
}

#ifndef _WIN32
/// Ends this process as one that was interrupted once, or not.
[[noreturn]] void EndAfter(int first, int second = 0) {
    CatchInterrupts();
    std::raise(first);
    if (second != 0) {
        std::raise(second);
    }
    std::exit(IsInterrupted() ? 5 : 6);
}

TEST(TerminalDeathTest, AsksForAStopFirst) {
    EXPECT_EXIT(EndAfter(SIGINT), testing::ExitedWithCode(5), "");
    EXPECT_EXIT(EndAfter(SIGTERM), testing::ExitedWithCode(5), "");
}

TEST(TerminalDeathTest, EndsTheProgramTheSecondTime) {
    EXPECT_EXIT(EndAfter(SIGINT, SIGINT), testing::KilledBySignal(SIGINT), "");
    EXPECT_EXIT(EndAfter(SIGINT, SIGTERM), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EXIT(EndAfter(SIGTERM, SIGINT), testing::KilledBySignal(SIGINT), "");
}

TEST(TerminalDeathTest, GoesOnIgnoringWhatItWasStartedToIgnore) {
    const auto ignoring = [] {
        std::signal(SIGINT, SIG_IGN);
        EndAfter(SIGINT, SIGINT);
    };
    EXPECT_EXIT(ignoring(), testing::ExitedWithCode(6), "");
}

/// Ends this process with the width that it finds when its output is a terminal of 97 columns.
[[noreturn]] void EndWithWidthOfTerminal() {
    int terminal = -1;
    int master = -1;
    struct winsize size = {};
    size.ws_row = 24;
    size.ws_col = 97;
    if (openpty(&master, &terminal, nullptr, nullptr, &size) != 0) {
        std::exit(1);
    }
    dup2(terminal, STDOUT_FILENO);
    std::exit(TerminalWidth());
}

TEST(TerminalDeathTest, KnowsHowWideItIs) {
    EXPECT_EXIT(EndWithWidthOfTerminal(), testing::ExitedWithCode(97), "");
}

TEST(TerminalDeathTest, HasNoWidthWhenItIsNone) {
    const auto toFile = [] { std::exit(std::freopen("/dev/null", "w", stdout) ? TerminalWidth() : -1); };
    EXPECT_EXIT(toFile(), testing::ExitedWithCode(0), "");
}
#endif

} // namespace
} // namespace kinora::host
