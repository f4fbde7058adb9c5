// What a caller is told: of errors, codes and script errors.

#include "tests/capi/HandleSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace capi {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(TextOfAnError, NamesOperationCauseMessagesAndCure) {
    HandleSession session;
    ASSERT_EQ(session.Create(), KV_OK);
    session.Desktop().messages = {L"[error] the disk is full", L"[error] gr\u00F6\u00DFer"};
    session.Desktop().project.On("Save", fake::Fails());
    ASSERT_EQ(kv_save_project(session.Handle()), KV_FAILED);
    EXPECT_EQ(ErrorText(session.Handle()), "kv_save_project: the desktop refused \"Save\" (0x80020009).\n"
                                           "The desktop's messages:\n"
                                           "  [error] the disk is full\n"
                                           "  [error] gr\xC3\xB6\xC3\x9F"
                                           "er\n"
                                           "Check that the project's file and folder can be written.");
}

TEST(TextOfAnError, StaysUntilTheNextFailure) {
    HandleSession session;
    EXPECT_EQ(ErrorText(session.Handle()), "");
    EXPECT_EQ(kv_save_project(session.Handle()), KV_FAILED);
    const std::string text = ErrorText(session.Handle());
    EXPECT_THAT(text, StartsWith("kv_save_project: no desktop has been launched.\n"));
    EXPECT_EQ(session.Create(), KV_OK);
    EXPECT_EQ(kv_save_project(session.Handle()), KV_OK);
    EXPECT_EQ(ErrorText(session.Handle()), text);
    session.Desktop().project.Forget("Save");
    EXPECT_EQ(kv_save_project(session.Handle()), KV_FAILED);
    EXPECT_THAT(ErrorText(session.Handle()),
                StartsWith("kv_save_project: an object of the desktop has no method \"Save\".\n"));
}

TEST(TextOfAnError, TellsOfADesktopThatIsGone) {
    HandleSession session;
    ASSERT_EQ(session.Create(), KV_OK);
    for (const HRESULT code :
         {RPC_E_DISCONNECTED, static_cast<HRESULT>(0x800706BAL), static_cast<HRESULT>(0x800706BEL)}) {
        session.Desktop().project.On("Save", fake::Fails(code));
        EXPECT_EQ(kv_save_project(session.Handle()), KV_FAILED);
        EXPECT_THAT(ErrorText(session.Handle()), HasSubstr("the desktop has ended"));
    }
}

TEST(TextOfAnError, LivesUntilTheThreadsNextQuestion) {
    const Handle handle;
    const Handle other;
    EXPECT_EQ(kv_save_project(handle), KV_FAILED);
    EXPECT_EQ(kv_close_project(other), KV_FAILED);
    const char* text = nullptr;
    ASSERT_EQ(kv_error_text(handle, &text), KV_OK);
    const std::string copy = text;
    // Neither another failure nor another thread's question touches it.
    EXPECT_EQ(kv_close_project(handle), KV_FAILED);
    std::thread([&] { EXPECT_THAT(ErrorText(other), StartsWith("kv_close_project: ")); }).join();
    EXPECT_EQ(text, copy);
    ASSERT_EQ(kv_error_text(handle, &text), KV_OK);
    EXPECT_THAT(text, StartsWith("kv_close_project: "));
}

TEST(TextOfAnError, OfNoHandleIsTheThreads) {
    std::thread([] {
        EXPECT_EQ(ErrorText(nullptr), "") << "nothing has failed on this thread";
        std::thread([] { EXPECT_EQ(kv_save_project(nullptr), KV_BAD_ARGUMENT); }).join();
        EXPECT_EQ(ErrorText(nullptr), "") << "that was another one's";
        kv_coupling* handle = nullptr;
        EXPECT_EQ(kv_new(KV_API_VERSION + 1, nullptr, &handle), KV_BAD_ARGUMENT);
        EXPECT_THAT(ErrorText(nullptr), StartsWith("kv_new: "));
        EXPECT_EQ(kv_save_project(nullptr), KV_BAD_ARGUMENT);
        EXPECT_EQ(ErrorText(nullptr), "kv_save_project: the handle is none, or it has been deleted.\n"
                                      "Hand over what kv_new gave, until kv_delete.");
    }).join();
}

TEST(TextOfAnError, SurvivesItsThread) {
    const Handle handle;
    std::thread([&] { EXPECT_EQ(kv_save_project(handle), KV_FAILED); }).join();
    EXPECT_THAT(ErrorText(handle), StartsWith("kv_save_project: "));
}

TEST(TextOfACode, IsALineOfItsOwnForEach) {
    std::set<std::string> texts;
    for (kv_status code = KV_OK; code <= KV_INTERNAL; ++code) {
        const char* text = nullptr;
        ASSERT_EQ(kv_code_text(code, &text), KV_OK) << code;
        EXPECT_STRNE(text, "");
        EXPECT_EQ(std::string(text).find('\n'), std::string::npos);
        EXPECT_TRUE(texts.insert(text).second) << text;
    }
    for (const kv_status code : {-1, KV_INTERNAL + 1, 1000}) {
        const char* text = "kept";
        EXPECT_EQ(kv_code_text(code, &text), KV_BAD_ARGUMENT);
        EXPECT_STREQ(text, "kept");
    }
}

TEST(TextOfAScriptError, IsTheDesktops) {
    const char* text = nullptr;
    ASSERT_EQ(kv_script_error_text(0x0202, &text), KV_OK);
    EXPECT_STREQ(text, "0x0202: Bad argument value");
    ASSERT_EQ(kv_script_error_text(0, &text), KV_OK);
    EXPECT_STREQ(text, "0x0000: Normal execution");
    for (const std::int32_t code : {-1, 0x000E, 0x01FF, 0x0230}) {
        text = "kept";
        EXPECT_EQ(kv_script_error_text(code, &text), KV_BAD_ARGUMENT);
        EXPECT_STREQ(text, "kept");
    }
}

} // namespace
} // namespace capi
