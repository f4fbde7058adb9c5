// What vantor-trace makes of its arguments.
#include "trace/app/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace kinora::trace;
using testing::HasSubstr;
using Task = CommandLine::Task;

TEST(TraceCommandLine, ReadsTasksAndOptions) {
    const CommandLine show = ReadCommandLine(
        {"show", "/a/b.jsonl", "--failed", "--slow", "2.5", "--grep", "X", "--full", "--colour", "always"});
    EXPECT_EQ(show.task, Task::Show);
    EXPECT_EQ(show.files, std::vector<std::string>{"/a/b.jsonl"});
    EXPECT_TRUE(show.show.onlyFailed);
    EXPECT_TRUE(show.show.isFull);
    EXPECT_DOUBLE_EQ(show.show.slowMilliseconds, 2.5);
    EXPECT_EQ(show.show.containing, "X");
    EXPECT_EQ(show.colour, CommandLine::Colour::Always);
    EXPECT_TRUE(ReadCommandLine({"stats"}).files.empty());
    EXPECT_EQ(ReadCommandLine({"diff", "a", "b"}).files.size(), 2U);
    EXPECT_FALSE(ReadCommandLine({"diff", "a", "b"}).show.isFull);
    EXPECT_TRUE(ReadCommandLine({"diff", "a", "b", "--full"}).show.isFull);
    EXPECT_EQ(ReadCommandLine({"unregister"}).task, Task::Unregister);
}

TEST(TraceCommandLine, SaysWhatIsWrong) {
    const auto complaint = [](const std::vector<std::string>& words) {
        const CommandLine line = ReadCommandLine(words);
        EXPECT_EQ(line.task, Task::Bad);
        return line.text;
    };
    EXPECT_EQ(complaint({"shw", "x"}), "error: \"shw\" is no command (--help lists the commands)\n");
    EXPECT_THAT(complaint({"show", "--slow", "soon"}), HasSubstr("--slow: \"soon\" is no number of milliseconds ("));
    EXPECT_THAT(complaint({"show", "--slow", "-1"}), HasSubstr("\"-1\" is no number of milliseconds"));
    EXPECT_THAT(complaint({"show", "--colour", "blue"}), HasSubstr("\"blue\" is none of auto, always, never"));
    EXPECT_THAT(complaint({"diff", "a"}), HasSubstr("At least 2 required"));
    EXPECT_THAT(complaint({}), HasSubstr("--help lists the commands"));
    EXPECT_THAT(complaint({"show", "--wrong"}), HasSubstr("--wrong"));
}

TEST(TraceCommandLine, ExplainsItself) {
    const CommandLine all = ReadCommandLine({"--help"});
    EXPECT_EQ(all.task, Task::Help);
    for (const char* command : {"register", "unregister", "show", "stats", "script", "diff"}) {
        EXPECT_THAT(all.text, HasSubstr(command));
    }
    EXPECT_THAT(ReadCommandLine({"show", "--help"}).text, HasSubstr("vantor-trace show"));
}

} // namespace
