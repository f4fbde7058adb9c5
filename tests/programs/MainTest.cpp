// What a program makes of its arguments, and of what ends it.
#include "programs/Main.h"

#include "programs/Errors.h"

#include <gtest/gtest.h>
#include <new>

namespace {

using namespace kinora::programs;

/// The program's name and one argument that is no ASCII.
std::vector<MainArgument> Arguments() {
#ifdef _WIN32
    static wchar_t name[] = L"program";
    static wchar_t word[] = L"\u00e9";
#else
    static char name[] = "program";
    static char word[] = "\xC3\xA9";
#endif
    return {name, word};
}

struct Outcome {
    int status = -1;
    std::string errors;
};

Outcome RunBody(const std::function<ExitStatus(std::vector<std::string>)>& body) {
    testing::internal::CaptureStderr();
    Outcome outcome;
    outcome.status = RunMain(2, Arguments().data(), "the work", body);
    outcome.errors = testing::internal::GetCapturedStderr();
    return outcome;
}

template <class Error>
Outcome RunThrowing(const Error& error) {
    return RunBody([&](const std::vector<std::string>&) -> ExitStatus { throw error; });
}

TEST(Main, HandsArgumentsOnAsUtf8) {
    std::vector<std::string> seen;
    const Outcome outcome = RunBody([&](std::vector<std::string> words) {
        seen = std::move(words);
        return ExitStatus::Done;
    });
    EXPECT_EQ(seen, std::vector<std::string>{"\xC3\xA9"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
}

TEST(Main, AnswersWhatTheBodyAnswers) {
    EXPECT_EQ(RunBody([](const std::vector<std::string>&) { return ExitStatus::Failed; }).status, 1);
    EXPECT_EQ(RunBody([](const std::vector<std::string>&) { return ExitStatus::BadInput; }).status, 2);
}

TEST(Main, TellsBadInputFromFailure) {
    const Outcome input = RunThrowing(InputError("the file is wrong."));
    EXPECT_EQ(input.status, 2);
    EXPECT_EQ(input.errors, "error: the file is wrong.\n");
    const Outcome failure = RunThrowing(RunError("the disk is full."));
    EXPECT_EQ(failure.status, 1);
    EXPECT_EQ(failure.errors, "error: the disk is full.\n");
}

TEST(Main, FailsForWhatNobodyForesaw) {
    const Outcome known = RunThrowing(std::logic_error("oops"));
    EXPECT_EQ(known.status, 1);
    EXPECT_EQ(known.errors, "error: the work failed unexpectedly: oops\n");
    const Outcome unknown = RunThrowing(5);
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.errors, "error: the work failed unexpectedly; is the system out of memory?\n");
}

} // namespace
