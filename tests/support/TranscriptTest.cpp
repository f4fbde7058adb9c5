// What a comparison with a transcript tells of a difference, word for word.

#include "tests/support/Transcript.h"

#include "tests/support/Number.h"
#include "tests/support/Object.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace fake;

/// Calls a method as the rules ask for, with arguments last-first.
void Call(Object& object, std::wstring name, std::vector<VARIANT> arguments = {}) {
    constexpr LCID locale = 0x0800;
    LPOLESTR names = name.data();
    DISPID id = 0;
    if (FAILED(object.GetIDsOfNames(IID_NULL, &names, 1, locale, &id))) {
        return;
    }
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    VARIANT result{};
    object.Invoke(id, IID_NULL, locale, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
}

/// What is told when this text is the journal.
std::string Told(const std::string& journal, const std::string& transcript) {
    return MatchesTranscript("", "", journal, transcript).message();
}

const std::string eightCalls = R"(
    a.First()
    a.Second()
    a.Third(1.0, "x, y")
    a.Fourth -> known
    a.Fifth() -> fails
    a.Sixth -> unknown
    a.Seventh(
        ["NAME:Seventh", "Key:=", true])
    a.Eighth()
)";

std::string Without(const std::string& call) {
    std::string text = eightCalls;
    return text.erase(text.find(call), call.size());
}

TEST(Transcript, SetsArgumentsInScriptOrderAndShowsFailures) {
    World world;
    Object& object = world.MakeHeld("editor");
    object.On("Move", Nothing()).On("Rotate", Fails()).On("Known", Nothing());
    Call(object, L"Move", {Number(2.0), Number(1.0)});
    Call(object, L"Rotate");
    Call(object, L"FitAll");
    EXPECT_TRANSCRIPT(world, R"(
        editor.Move(1.0, 2.0)     # the block holds them last-first
        editor.Rotate() -> fails
        editor.FitAll -> unknown
    )");
    EXPECT_FALSE(MatchesTranscript("", "", world, "editor.Move(1.0, 2.5)"));
}

TEST(Transcript, KeepsBlanksAndNumberSignsInsideOfQuotes) {
    VARIANT text{};
    text.bstrVal = SysAllocString(L"a # b");
    text.vt = VT_BSTR;
    EXPECT_TREE(text, "\"a # b\"  # remark");
    EXPECT_FALSE(MatchesTree("", "", text, "\"a #b\""));
    VariantClear(&text);
}

TEST(Transcript, MatchesWhateverTheBlanksAre) {
    EXPECT_TRUE(MatchesTranscript("", "", eightCalls, eightCalls));
    EXPECT_TRUE(
        MatchesTranscript("", "", std::string("a.B( 1.0,\n2.0 ) ->fails a.C()"), "a.B(1.0, 2.0) -> fails\na.C()"));
    EXPECT_TRUE(MatchesTranscript("", "", std::string(), "  # nothing is called\n"));
}

TEST(Transcript, ShowsTheCallThatDiffersAndTheCallsAround) {
    std::string expected = eightCalls;
    expected.replace(expected.find("a.Fifth() -> fails"), 18, "a.Fifth()");
    EXPECT_EQ(Told(eightCalls, expected), R"(call 5: expected a.Fifth(), was a.Fifth() -> fails
around it:
    2  a.Second()
    3  a.Third(1.0, "x, y")
    4  a.Fourth -> known
  > 5  a.Fifth() -> fails
    6  a.Sixth -> unknown
    7  a.Seventh(["NAME:Seventh", "Key:=", true])
    8  a.Eighth())");
}

TEST(Transcript, ShowsWhereACallIsMissing) {
    EXPECT_EQ(Told(Without("a.Second()"), eightCalls), R"(call 2: expected a.Second(), was a.Third(1.0, "x, y")
7 calls, expected 8
around it:
    1  a.First()
  > 2  a.Third(1.0, "x, y")
    3  a.Fourth -> known
    4  a.Fifth() -> fails
    5  a.Sixth -> unknown)");
}

TEST(Transcript, ShowsWhatIsMissingAtTheEnd) {
    EXPECT_EQ(Told(Without("a.Eighth()"), eightCalls), R"(call 8: expected a.Eighth(), was nothing
7 calls, expected 8
expected around it:
    5  a.Fifth() -> fails
    6  a.Sixth -> unknown
    7  a.Seventh(["NAME:Seventh", "Key:=", true])
  > 8  a.Eighth())");
    EXPECT_EQ(Told("", "a.First()"), "call 1: expected a.First(), was nothing\n"
                                     "0 calls, expected 1\nexpected around it:\n  > 1  a.First()");
}

TEST(Transcript, ShowsACallTooMany) {
    EXPECT_EQ(Told(eightCalls + "a.Ninth()\na.Tenth()\n", eightCalls), R"(call 9: expected nothing, was a.Ninth()
10 calls, expected 8
around it:
     6  a.Sixth -> unknown
     7  a.Seventh(["NAME:Seventh", "Key:=", true])
     8  a.Eighth()
  >  9  a.Ninth()
    10  a.Tenth())");
}

TEST(Transcript, ShowsOfALongCallThePlaceThatDiffers) {
    const std::string start = "editor.Move([\"NAME:Selections\", \"Selections:=\", \"" + std::string(60, 'o') + "\", ";
    const std::string shown(46, 'o');
    EXPECT_EQ(Told(start + "1.5, " + std::string(90, '7') + "])", start + "12.5, 1.0])"),
              "call 1: differs at character 114\n"
              "  expected ..." +
                  shown +
                  "\", 12.5, 1.0])\n"
                  "  was      ..." +
                  shown + "\", 1.5, " + std::string(46, '7') +
                  "...\n"
                  "              " +
                  std::string(50, ' ') +
                  "^\n"
                  "around it:\n"
                  "  > 1  " +
                  start.substr(0, 100) + "...");
}

TEST(Transcript, ShowsTheWholeOfATreeThatDiffers) {
    VARIANT flag{};
    flag.vt = VT_BOOL;
    flag.boolVal = 1;
    EXPECT_STREQ(MatchesTree("", "", flag, "true").message(), "expected true, was bool(1)\nthe whole is bool(1)");
}

} // namespace
