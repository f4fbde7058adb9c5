// What a terminal gets, and what a file.
#include "programs/Print.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace {

using kinora::programs::Print;

/// A variable that is put back when this goes.
class Variable {
public:
    Variable(const char* name, const char* value) : m_name(name) {
        const char* before = std::getenv(name);
        m_isSet = before != nullptr;
        m_before = m_isSet ? before : "";
        setenv(name, value, 1);
    }
    ~Variable() {
        if (m_isSet) {
            setenv(m_name, m_before.c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
    std::string m_before;
    bool m_isSet = false;
};

/// What a terminal gets of a line.
std::string OnTerminal(const std::string& line) {
    int master = -1;
    int terminal = -1;
    EXPECT_EQ(openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
    std::FILE* const stream = fdopen(terminal, "w");
    EXPECT_TRUE(Print(stream, line + "\n"));
    std::string text;
    while (text.find('\n') == std::string::npos) {
        char bytes[256];
        const auto count = read(master, bytes, sizeof(bytes));
        if (count <= 0) {
            ADD_FAILURE() << "the line does not come";
            break;
        }
        text.append(bytes, static_cast<std::size_t>(count));
    }
    std::fclose(stream);
    close(master);
    return text.substr(0, text.find('\r'));
}

class PrintTest : public testing::Test {
protected:
    const Variable m_terminal{"TERM", "xterm"};
    const Variable m_colours{"NO_COLOR", ""};
};

TEST_F(PrintTest, ComplaintsBeginInColourOnATerminal) {
    EXPECT_EQ(OnTerminal("error: a file"), "\x1b[1;31merror:\x1b[0m a file");
    EXPECT_EQ(OnTerminal("warning: a file"), "\x1b[1;33mwarning:\x1b[0m a file");
    EXPECT_EQ(OnTerminal("an error: none"), "an error: none");
}

TEST_F(PrintTest, ColoursCanBeSwitchedOff) {
    const Variable colours("NO_COLOR", "1");
    EXPECT_EQ(OnTerminal("error: a file"), "error: a file");
}

TEST_F(PrintTest, ATerminalWithoutColoursGetsNone) {
    const Variable terminal("TERM", "dumb");
    EXPECT_EQ(OnTerminal("error: a file"), "error: a file");
}

TEST_F(PrintTest, AFileGetsWhatIsPrinted) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(Print(file, "error: Spulenk\u00f6rper\n"));
    char text[100] = {};
    std::rewind(file);
    EXPECT_GT(std::fread(text, 1, sizeof(text) - 1, file), 0U);
    std::fclose(file);
    EXPECT_STREQ(text, "error: Spulenk\u00f6rper\n");
}

TEST_F(PrintTest, AFullDiskIsTold) {
    std::FILE* const full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    EXPECT_FALSE(Print(full, "text"));
    std::fclose(full);
}

} // namespace
