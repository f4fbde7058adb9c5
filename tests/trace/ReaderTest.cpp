// The reading side: what a trace file says, in each of its presentations.
#include "trace/core/Diff.h"
#include "trace/core/ErrorText.h"
#include "trace/core/ObjectPath.h"
#include "trace/core/Script.h"
#include "trace/core/Show.h"
#include "trace/core/Stats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>

namespace {

using namespace kinora::trace;
using testing::HasSubstr;
using testing::Not;

const std::string header = R"({"format":"vantor-trace","version":1,"part":1,"pid":7,"process":"host.exe"})"
                           "\n";
const std::string created =
    R"({"seq":1,"kind":"create","method":"Pellux.VantorDesktop.Simulator","target":"Pellux.VantorDesktop.Simulator",)"
    R"("us":5.0,"hr":"0x00000000","text":"S_OK","result":{"vt":"DISPATCH","v":"application","id":1}})"
    "\n";
const std::string desktopCall =
    R"({"seq":3,"kind":"call","id":1,"object":"application","method":"GetAppDesktop","dispid":1,"flags":1,"args":[],)"
    R"("us":100.0,"hr":"0x00000000","text":"S_OK","result":{"vt":"DISPATCH","v":"desktop","id":2}})"
    "\n";

/// A call on the desktop, with its outcome left open.
std::string CallHead(int sequence, const std::string& method, const std::string& arguments) {
    return R"({"seq":)" + std::to_string(sequence) + R"(,"kind":"call","id":2,"object":"desktop","method":")" + method +
           R"(","dispid":1,"flags":1,"args":[)" + arguments + "]";
}

std::string Call(int sequence, const std::string& method, const std::string& arguments, const std::string& result,
                 double microseconds = 1.0) {
    return CallHead(sequence, method, arguments) + R"(,"us":)" + std::to_string(microseconds) +
           R"(,"hr":"0x00000000","text":"S_OK","result":)" + result + "}\n";
}

std::string FailedCall(int sequence, const std::string& method) {
    return CallHead(sequence, method, "") +
           R"(,"us":2.0,"hr":"0x80020009","text":"DISP_E_EXCEPTION: the object reported an error","exception":)"
           R"({"code":0,"scode":"0x80040202","source":"x","description":"too large","script":"0x0202: Bad argument value"}})"
           "\n";
}

Session Read(const std::string& text) {
    std::istringstream stream(text);
    Session session;
    ReadTrace(stream, "a.jsonl", session);
    return session;
}

std::string Shown(const Session& session, const ShowOptions& options = {}) {
    std::ostringstream out;
    Show(session, options, out);
    return out.str();
}

std::string ScriptOf(const Session& session) {
    std::ostringstream out;
    WriteScript(session, out);
    return out.str();
}

TEST(ObjectPath, ReadsLikeTheCallsThatLedThere) {
    const std::string project = ChildPath("desktop", "SetActiveProject", {"P"});
    const std::string design = ChildPath(project, "SetActiveDesign", {"D"});
    EXPECT_EQ(ChildPath("application", "GetAppDesktop", {}), "desktop");
    EXPECT_EQ(design, "desktop.project(\"P\").design(\"D\")");
    EXPECT_EQ(ChildPath(design, "SetActiveEditor", {"3D Modeler"}), design + ".editor");
    EXPECT_EQ(ChildPath(design, "GetModule", {"OutputVariable"}), design + ".module(\"OutputVariable\")");
    EXPECT_EQ(ChildPath("desktop", "OpenProject", {"C:\\a.b\\P.vantor"}), "desktop.project(\"P\")");
    EXPECT_EQ(ChildPath(project, "InsertDesign", {"Veltrix 3D", "D", "Magnetostatic", ""}), design);
    EXPECT_EQ(PathDepth("desktop.project(\"a.b\").design(\"D\")"), 2);
    EXPECT_EQ(LastStep("desktop.project(\"a.b\").child(\"c\")"), "child");
}

TEST(ErrorText, NamesPlatformAndScriptErrors) {
    EXPECT_EQ(HResultText(0x80020006), "DISP_E_UNKNOWNNAME: unknown name");
    EXPECT_EQ(HResultText(0x81234567), "");
    EXPECT_EQ(HResultNumber(0x8002000E), "0x8002000E");
    EXPECT_EQ(ScriptErrorText(0x80040222), "0x0222: The definition editor is nor found");
    EXPECT_EQ(ScriptErrorText(0x80020009), "");
    EXPECT_EQ(ScriptErrorText(0x80040999), "");
}

TEST(TraceReader, KeepsTheCallThatTheProgramDiedIn) {
    const Session session = Read(header + created + desktopCall + CallHead(5, "Analyze", R"({"vt":"BSTR","v":"S"})"));
    ASSERT_EQ(session.records.size(), 3U);
    EXPECT_TRUE(session.warnings.empty());
    EXPECT_TRUE(session.records[2].isOpen);
    EXPECT_THAT(Shown(session), HasSubstr("Analyze(\"S\")  never came back"));
}

TEST(TraceReader, LeavesOutALineThatWasCutInTheMiddle) {
    const Session session = Read(header + created + desktopCall + R"({"seq":5,"kind":"call","met)");
    EXPECT_EQ(session.records.size(), 2U);
    ASSERT_EQ(session.warnings.size(), 1U);
    EXPECT_EQ(session.warnings[0], "a.jsonl, line 4: cannot be read, left out");
}

TEST(TraceReader, PutsACallThatWasInterruptedTogether) {
    const Session session =
        Read(header + CallHead(5, "Outer", "") + ",\"open\":true}\n" + Call(6, "Inner", "", R"({"vt":"EMPTY"})") +
             Call(5, "Outer", "", R"({"vt":"R8","v":2.5})"));
    ASSERT_EQ(session.records.size(), 2U);
    EXPECT_EQ(session.records[0].method, "Outer");
    EXPECT_FALSE(session.records[0].isOpen);
}

TEST(TraceReader, RefusesWhatIsNoTrace) {
    EXPECT_THROW(Read(""), std::runtime_error);
    EXPECT_THROW(Read("{}\n"), std::runtime_error);
    EXPECT_THROW(Read("hello\n"), std::runtime_error);
    EXPECT_THROW(Read(R"({"format":"vantor-trace","version":9})"), std::runtime_error);
}

TEST(Show, FiltersByFailureDurationAndText) {
    const Session session = Read(header + created + desktopCall + Call(4, "Fast", "", R"({"vt":"R8","v":15.0})", 10) +
                                 Call(5, "Slow", "", R"({"vt":"I4","v":3})", 5000) + FailedCall(6, "Bad"));
    EXPECT_THAT(Shown(session), HasSubstr("Fast() = 15.0\n"));
    EXPECT_THAT(Shown(session), HasSubstr("Slow() = I4(3)\n"));
    ShowOptions failed;
    failed.onlyFailed = true;
    EXPECT_EQ(Shown(session, failed), "                   desktop\n"
                                      "      6       2 us   Bad()  failed, 0x80020009 DISP_E_EXCEPTION: the object "
                                      "reported an error; 0x0202: Bad argument value; too large\n");
    ShowOptions slow;
    slow.slowMilliseconds = 5.0;
    EXPECT_THAT(Shown(session, slow), testing::AllOf(HasSubstr("Slow"), Not(HasSubstr("Fast"))));
    ShowOptions grep;
    grep.containing = "TOO LARGE";
    EXPECT_THAT(Shown(session, grep), testing::AllOf(HasSubstr("Bad"), Not(HasSubstr("Slow"))));
}

TEST(Show, AbbreviatesLongListsAndCountsTheRest) {
    std::string elements;
    for (int i = 0; i < 20; ++i) {
        elements += (i == 0 ? "" : ",") + std::string(R"({"vt":"R8","v":0.5})");
    }
    const Session session =
        Read(header + Call(2, "Set", R"({"vt":"ARRAY|VARIANT","v":[)" + elements + "]}", R"({"vt":"EMPTY"})"));
    EXPECT_THAT(Shown(session), HasSubstr("Set([0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, .. 12 more])"));
    ShowOptions full;
    full.isFull = true;
    EXPECT_THAT(Shown(session, full), Not(HasSubstr("more")));
}

TEST(Stats, GivesMedianLargestAndShare) {
    const Session session =
        Read(header + Call(1, "A", "", "{}", 10) + Call(2, "A", "", "{}", 20) + Call(3, "A", "", "{}", 60) +
             Call(4, "A", "", "{}", 90) + FailedCall(5, "B") + CallHead(6, "A", ""));
    const std::vector<MethodStats> stats = ComputeStats(session);
    ASSERT_EQ(stats.size(), 2U);
    EXPECT_EQ(stats[0].method, "A");
    EXPECT_EQ(stats[0].count, 4U);
    EXPECT_DOUBLE_EQ(stats[0].total, 180.0);
    EXPECT_DOUBLE_EQ(stats[0].median, 40.0);
    EXPECT_DOUBLE_EQ(stats[0].largest, 90.0);
    EXPECT_DOUBLE_EQ(stats[0].share, 180.0 / 182.0);
    EXPECT_EQ(stats[1].failed, 1U);
}

TEST(Script, NamesObjectsAndKeepsTypes) {
    const std::string arguments =
        R"({"vt":"BSTR","v":"say \"°\""},{"vt":"BOOL","v":true},{"vt":"R8","v":15.0},{"vt":"I2","v":3},{"vt":"I4","v":-4},)"
        R"({"vt":"ARRAY|VARIANT","v":[{"vt":"BSTR","v":"NAME:X"},{"vt":"NULL"}]},{"vt":"DISPATCH","v":"application","id":1})";
    const std::string script =
        ScriptOf(Read(header + created + desktopCall + Call(5, "Set", arguments, R"({"vt":"EMPTY"})") +
                      Call(6, "Read", R"({"vt":"BSTR","v":"F"})", R"({"vt":"R8","v":0.5})")));
    EXPECT_THAT(script, HasSubstr("Set application1 = CreateObject(\"Pellux.VantorDesktop.Simulator\")\n"));
    EXPECT_THAT(script, HasSubstr("Set desktop1 = application1.GetAppDesktop\n"));
    EXPECT_THAT(script,
                HasSubstr("desktop1.Set \"say \"\"\" & ChrW(176) & \"\"\"\", True, CDbl(15), CInt(3), CLng(-4), "
                          "Array(\"NAME:X\", Null), application1\n"));
    EXPECT_THAT(script, HasSubstr("value = desktop1.Read(\"F\")\n"
                                  "If Err.Number = 0 Then WScript.Echo \"6 desktop.Read(F) \" & value\n"));
}

TEST(Script, LetsCallsFailThatMayFail) {
    const std::string script = ScriptOf(Read(header + created + desktopCall + FailedCall(5, "Bad") +
                                             Call(6, "Show", R"({"vt":"INT","v":2})", R"({"vt":"EMPTY"})")));
    EXPECT_THAT(script, HasSubstr("' 5 desktop.Bad: failed with 0x80020009 0x0202: Bad argument value\n"
                                  "desktop1.Bad\nIf Err.Number <> 0 Then Complain \"5 desktop.Bad() \"\n"));
    EXPECT_THAT(script, HasSubstr("' 6 desktop.Show: VBScript lacks the type of an argument"));
}

std::string Differences(const std::string& first, const std::string& second, std::size_t expected) {
    std::ostringstream out;
    EXPECT_EQ(Diff(Read(header + first), Read(header + second), out), expected);
    return out.str();
}

TEST(Diff, IgnoresTimesAndFindsWhatDiffers) {
    const std::string a = Call(1, "A", R"({"vt":"R8","v":1.0})", "{}", 5);
    EXPECT_EQ(Differences(a, Call(1, "A", R"({"vt":"R8","v":1.0})", "{}", 9), 0), "");
    EXPECT_EQ(Differences(a, Call(3, "A", R"({"vt":"R8","v":2.0})", "{}"), 1),
              "~ 1 / 3 desktop.A\n    - argument 1: 1.0\n    + argument 1: 2.0\n");
    EXPECT_THAT(Differences(a, CallHead(1, "A", R"({"vt":"R8","v":1.0})"), 1), HasSubstr("never came back"));
}

TEST(Diff, FindsInsertedAndMissingCalls) {
    const std::string a = Call(1, "A", "", R"({"vt":"EMPTY"})");
    const std::string b = Call(2, "B", "", R"({"vt":"EMPTY"})");
    const std::string c = Call(3, "C", "", R"({"vt":"EMPTY"})");
    const std::string d = Call(4, "D", "", R"({"vt":"EMPTY"})");
    EXPECT_EQ(Differences(a + b + c, a + c + d, 2), "- 2 desktop.B()\n+ 4 desktop.D()\n");
    EXPECT_EQ(Differences(a + b + c + d, d, 3), "- 1 desktop.A()\n- 2 desktop.B()\n- 3 desktop.C()\n");
    EXPECT_EQ(Differences("", a, 1), "+ 1 desktop.A()\n");
}

} // namespace
