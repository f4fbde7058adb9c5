// What a run shows on a terminal, and what it writes elsewhere.
#include "host/app/Console.h"

#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <string>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace kinora::host {
namespace {

using std::chrono::milliseconds;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// Puts something else in the place of the standard output as long as it lives.
class Output {
public:
    explicit Output(int replacement) : m_former(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        dup2(replacement, STDOUT_FILENO);
    }

    ~Output() {
        std::fflush(stdout);
        dup2(m_former, STDOUT_FILENO);
        close(m_former);
    }

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

private:
    int m_former;
};

/// A terminal of 100 columns, and what has been written to it.
class Screen {
public:
    Screen() {
        EXPECT_EQ(openpty(&m_master, &m_terminal, nullptr, nullptr, nullptr), 0);
        Resize(100);
    }

    ~Screen() {
        close(m_master);
        close(m_terminal);
    }

    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    int Terminal() const { return m_terminal; }

    void Resize(unsigned short columns) const {
        struct winsize size = {};
        size.ws_row = 24;
        size.ws_col = columns;
        EXPECT_EQ(ioctl(m_terminal, TIOCSWINSZ, &size), 0);
    }

    /// Reads on until this text has come; fails the test when it does not come.
    std::string ReadUntil(const std::string& text) {
        std::string read;
        while (read.find(text) == std::string::npos) {
            char bytes[256];
            const auto count = ::read(m_master, bytes, sizeof(bytes));
            if (count <= 0) {
                ADD_FAILURE() << "missing: " << text;
                return read;
            }
            read.append(bytes, static_cast<std::size_t>(count));
        }
        return read;
    }

private:
    int m_master = -1;
    int m_terminal = -1;
};

class ConsoleTest : public testing::Test {
protected:
    ConsoleTest() { m_scenario.stepping.steps = 3; }

    static StepRecord Record(int step) {
        StepRecord record;
        record.step = step;
        record.time = 0.25 * step;
        return record;
    }

    scenario::Scenario m_scenario;
};

TEST_F(ConsoleTest, ShowsTheSecondsOfWhatTakesLong) {
    Screen screen;
    const Output output(screen.Terminal());
    Console console(m_scenario, Talk::Normal, milliseconds(5));
    console.OnPhase("Building the field model");
    EXPECT_THAT(screen.ReadUntil("\rworking, 2 s"),
                HasSubstr("Building the field model\r\n\r" + std::string(99, ' ') + "\rworking, 1 s\r"));
    console.OnSolve();
    screen.ReadUntil("\rsolving, 1 s");
    console.OnStep(Record(0));
    screen.ReadUntil("\r[######..................]  25%  ");
    console.OnSolve();
    EXPECT_THAT(screen.ReadUntil("  solving, 2 s"), HasSubstr("\r[######..................]  25%  "));
    console.OnWarning("something");
    // The bar is left as it was, and the count goes on below it.
    EXPECT_THAT(screen.ReadUntil("\rsolving, "), Not(HasSubstr("working")));
    console.EndBar();
    Print("end");
    EXPECT_THAT(screen.ReadUntil("end"), EndsWith("\r" + std::string(99, ' ') + "\r\rend"));
}

TEST_F(ConsoleTest, ShowsThemBetweenTheLinesOfEveryStep) {
    Screen screen;
    const Output output(screen.Terminal());
    Console console(m_scenario, Talk::Verbose, milliseconds(5));
    console.OnSolve();
    screen.ReadUntil("\rsolving, 1 s");
    console.OnStep(Record(1));
    EXPECT_THAT(screen.ReadUntil("\n"), EndsWith(" \r\rstep 1/3  0.25 s\r\n"));
}

TEST_F(ConsoleTest, StaysWithinAWindowThatChangesItsSize) {
    Screen screen;
    const Output output(screen.Terminal());
    Console console(m_scenario, Talk::Normal);
    console.OnStep(Record(0));
    screen.ReadUntil("25%");
    screen.Resize(20);
    console.EndBar();
    EXPECT_THAT(screen.ReadUntil("\n"), EndsWith("\r" + std::string(19, ' ') + "\r[######............\r\n"));
}

/// Whoever reads a file, or a pipe, gets lines.
TEST_F(ConsoleTest, ShowsNoneOfItElsewhere) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    {
        const Output output(fileno(file));
        Console console(m_scenario, Talk::Normal, milliseconds(1));
        console.OnPhase("Building the field model");
        console.OnSolve();
        std::this_thread::sleep_for(milliseconds(20));
        console.OnStep(Record(0));
        console.EndBar();
    }
    char text[200] = {};
    std::rewind(file);
    EXPECT_GT(std::fread(text, 1, sizeof(text) - 1, file), 0U);
    std::fclose(file);
    EXPECT_STREQ(text, "Building the field model\nstep 0/3  0 s\n");
}

TEST_F(ConsoleTest, IsQuietWhenToldSo) {
    Screen screen;
    const Output output(screen.Terminal());
    Console console(m_scenario, Talk::Quiet, milliseconds(1));
    console.OnPhase("Building the field model");
    console.OnSolve();
    std::this_thread::sleep_for(milliseconds(20));
    console.OnStep(Record(0));
    console.EndBar();
    Print("end");
    EXPECT_EQ(screen.ReadUntil("end"), "end");
}

} // namespace
} // namespace kinora::host
