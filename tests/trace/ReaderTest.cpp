// The reading side: what a trace file says, in each of its presentations.
#include "trace/core/Diff.h"
#include "trace/core/ErrorText.h"
#include "trace/core/ObjectPath.h"
#include "trace/core/Script.h"
#include "trace/core/Show.h"
#include "trace/core/Stats.h"
#include "trace/core/TraceFiles.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace kinora::trace;
using testing::HasSubstr;
using testing::Not;

const std::string header = R"({"format":"vantor-trace","version":1,"part":1,"pid":7,"process":"host.exe"})"
                           "\n";
const std::string nothing = R"({"vt":"EMPTY"})";
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
    const Session session = Read(header + CallHead(5, "Outer", "") + ",\"open\":true}\n" +
                                 Call(6, "Inner", "", nothing) + Call(5, "Outer", "", R"({"vt":"R8","v":2.5})"));
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

TEST(TraceReader, LeavesOutWhatHoldsNoValues) {
    for (const std::string result :
         {"5", R"({"v":1})", R"({"vt":5})", R"({"vt":"R8"})", R"({"vt":"BSTR","v":7})", R"({"vt":"ARRAY|R8","v":7})",
          R"({"vt":"ARRAY|VARIANT","v":[{"vt":"R8","v":{}}]})", R"({"vt":"DISPATCH","v":"x","id":"y"})",
          R"({"vt":"ARRAY|R8","v":[],"count":-1})", R"({"vt":"BYREF|R8","v":5})"}) {
        const Session session = Read(header + Call(1, "A", "", result));
        EXPECT_TRUE(session.records.empty()) << result;
        EXPECT_EQ(session.warnings.size(), 1U) << result;
    }
    std::string deep = nothing;
    for (int i = 0; i < 300; ++i) {
        deep = R"({"vt":"ARRAY|VARIANT","v":[)" + deep + "]}";
    }
    EXPECT_EQ(Read(header + Call(1, "A", "", deep)).warnings.size(), 1U);
}

/// Every way to look at a session.
void Present(const Session& session) {
    ShowOptions full;
    full.isFull = true;
    full.isColoured = true;
    full.containing = "a";
    Shown(session, full);
    ScriptOf(session);
    std::ostringstream out;
    PrintStats(ComputeStats(session), out);
    static const Session other = Read(header + created + Call(5, "Set", R"({"vt":"ARRAY|I4","v":[]})", nothing));
    Diff(other, session, true, out);
}

TEST(TraceReader, SurvivesEveryDamagedByte) {
    const std::string values =
        R"({"vt":"BSTR","v":"\u00b0 x","length":9},{"vt":"R8","v":"nan"},{"vt":"ERROR","v":"0x80020004"},{"vt":"BYREF|VARIANT",)"
        R"("v":{"vt":"CY","v":5}},{"vt":"ARRAY|VARIANT","v":[{"vt":"NULL"},{"vt":"DISPATCH","v":"desktop","id":2}],"count":3})";
    const std::string good =
        header + created + desktopCall + Call(5, "Set", values, R"({"vt":"ARRAY|I4","v":[{"vt":"I4","v":1}]})") +
        FailedCall(6, "Bad") + CallHead(7, "Last", R"({"vt":"BOOL","v":true})") + R"(,"named":[-3])";
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const char damage : {'0', '"', '}', '[', '\xFF', '\n'}) {
            std::string bad = good;
            bad[i] = damage;
            try {
                Present(Read(bad));
            } catch (const std::runtime_error&) {
                // No trace any more: the first line is damaged.
            }
        }
    }
}

TEST(TraceReader, TellsWhichCallsAreMissing) {
    Session whole = Read(header + Call(1, "A", "", nothing) + Call(2, "A", "", nothing));
    WarnOfGaps(whole);
    EXPECT_TRUE(whole.warnings.empty());
    Session torn = Read(header + Call(2, "A", "", nothing) + Call(9, "A", "", nothing));
    WarnOfGaps(torn);
    ASSERT_EQ(torn.warnings.size(), 1U);
    EXPECT_EQ(torn.warnings[0], "calls are missing (1, 3 to 8): the parts that held them were deleted as the trace "
                                "grew, or are not here");
}

TEST(TraceReader, TellsThatThereWasNoDesktopAndWhatToDo) {
    const std::string refused =
        R"({"seq":1,"kind":"create","method":"Pellux.VantorDesktop","us":5.0,"hr":"0x800401F3",)"
        R"("text":"CO_E_CLASSSTRING: the ProgID is not registered"})"
        "\n";
    Session without = Read(header + refused);
    WarnOfMissingDesktop(without);
    EXPECT_THAT(
        without.warnings,
        testing::ElementsAre("there was no desktop to trace: Pellux.VantorDesktop cannot be created (0x800401F3 "
                             "CO_E_CLASSSTRING: the ProgID is not registered). Register that desktop, or set "
                             "VANTOR_TRACE_TARGET to the version of another: the simulator's is "
                             "VANTOR_TRACE_TARGET=Simulator"));
    Session empty = Read(header);
    WarnOfMissingDesktop(empty);
    EXPECT_THAT(empty.warnings, testing::ElementsAre("the trace holds no calls: its program launched no desktop"));
    for (const std::string& rest : {created, desktopCall, CallHead(5, "Analyze", "")}) {
        Session traced = Read(header + rest);
        WarnOfMissingDesktop(traced);
        EXPECT_TRUE(traced.warnings.empty());
    }
}

class TraceFolder : public testing::Test {
protected:
    TraceFolder() : folder(std::filesystem::temp_directory_path() / ("trace-files-" + std::to_string(Number()))) {
        std::filesystem::create_directories(folder);
    }
    ~TraceFolder() override { std::filesystem::remove_all(folder); }

    static long long Number() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

    /// Makes a file that was written so many seconds ago.
    std::filesystem::path Make(const std::string& name, int secondsAgo) const {
        std::ofstream(folder / name) << header;
        const auto time = std::filesystem::last_write_time(folder / name);
        std::filesystem::last_write_time(folder / name, time - std::chrono::seconds(secondsAgo));
        return folder / name;
    }

    const std::filesystem::path folder;
};

TEST_F(TraceFolder, FindsThePartsOfATraceInOrder) {
    const auto first = Make("vantor-trace-a.jsonl", 9);
    const auto tenth = Make("vantor-trace-a.10.jsonl", 1);
    const auto ninth = Make("vantor-trace-a.9.jsonl", 2);
    Make("vantor-trace-a.x.jsonl", 0);
    Make("vantor-trace-a-2.jsonl", 0);
    Make("vantor-trace-a.9.jsonl.bak", 0);
    EXPECT_EQ(PartsOf(first), (std::vector<std::filesystem::path>{first, ninth, tenth}));
    EXPECT_EQ(PartsOf(ninth), std::vector<std::filesystem::path>{ninth});
    EXPECT_EQ(PartsOf(folder / "missing" / "x.jsonl").size(), 1U);
}

TEST_F(TraceFolder, FindsTheNewestTrace) {
    EXPECT_TRUE(NewestTrace(folder).empty());
    EXPECT_TRUE(NewestTrace(folder / "missing").empty());
    Make("vantor-trace-a.jsonl", 9);
    const auto newest = Make("vantor-trace-b.jsonl", 5);
    Make("vantor-trace-a.2.jsonl", 1);
    Make("other.jsonl", 0);
    EXPECT_EQ(NewestTrace(folder), newest);
}

TEST(Show, WritesPropertiesAndNamedArgumentsAsPeopleDo) {
    const auto shown = [](const std::string& method, int flags, const std::string& arguments,
                          const std::string& named) {
        return Shown(Read(header + R"({"seq":1,"kind":"call","id":2,"object":"desktop","method":")" + method +
                          R"(","dispid":1,"flags":)" + std::to_string(flags) + R"(,"args":[)" + arguments + "]" +
                          named + R"(,"us":1.0,"hr":"0x00000000","text":"S_OK"})" + "\n"));
    };
    const std::string two = R"({"vt":"I4","v":2})";
    EXPECT_THAT(shown("Visible", 4, R"({"vt":"BOOL","v":true})", R"(,"named":[-3])"), HasSubstr("   Visible = true\n"));
    EXPECT_THAT(shown("Item", 4, two + R"(,{"vt":"BOOL","v":true})", R"(,"named":[-3])"),
                HasSubstr("   Item(I4(2)) = true\n"));
    EXPECT_THAT(shown("Visible", 2, "", ""), HasSubstr("   Visible\n"));
    EXPECT_THAT(shown("Open", 1, R"({"vt":"BSTR","v":"a"},)" + two, R"(,"named":[7])"),
                HasSubstr("   Open(\"a\", #7:=I4(2))\n"));
}

TEST(Show, NamesObjectsByWhatIsNewInTheirPath) {
    const std::string project = R"x({"vt":"DISPATCH","v":"desktop.project(\"P\")","id":3})x";
    EXPECT_THAT(Shown(Read(header + Call(1, "Open", "", project))), HasSubstr("Open() = .project(\"P\")\n"));
    const std::string other = R"({"vt":"DISPATCH","v":"application","id":1})";
    EXPECT_THAT(Shown(Read(header + Call(1, "Up", "", other))), HasSubstr("Up() = application\n"));
}

TEST(Show, ColoursNamesResultsFailuresAndSlowCalls) {
    ShowOptions colours;
    colours.isColoured = true;
    const Session session = Read(header + Call(4, "Fast", "", R"({"vt":"R8","v":15.0})", 10) +
                                 Call(5, "Slow", R"({"vt":"I4","v":3})", nothing, 200000) + FailedCall(6, "Bad"));
    EXPECT_EQ(Shown(session, colours),
              "                   \033[1;36mdesktop\033[0m\n"
              "\033[2m      4\033[0m\033[2m      10 us \033[0m  \033[1mFast\033[0m()\033[32m = 15.0\033[0m\n"
              "\033[2m      5\033[0m\033[33m  200.00 ms \033[0m  \033[1mSlow\033[0m(I4(3))\n"
              "\033[2m      6\033[0m\033[2m       2 us \033[0m  \033[1mBad\033[0m()\033[1;31m  failed, 0x80020009 "
              "DISP_E_EXCEPTION: the object reported an error; 0x0202: Bad argument value; too large\033[0m\n");
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
    const Session session = Read(header + Call(2, "Set", R"({"vt":"ARRAY|VARIANT","v":[)" + elements + "]}", nothing));
    EXPECT_THAT(Shown(session), HasSubstr("Set([0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, .. 12 more])"));
    ShowOptions full;
    full.isFull = true;
    EXPECT_THAT(Shown(session, full), Not(HasSubstr("more")));
}

TEST(Stats, GivesMedianLargestAndShare) {
    const Session session =
        Read(header + Call(1, "A", "", nothing, 10) + Call(2, "A", "", nothing, 20) + Call(3, "A", "", nothing, 60) +
             Call(4, "A", "", nothing, 90) + FailedCall(5, "B") + CallHead(6, "A", ""));
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
    const std::string script = ScriptOf(Read(header + created + desktopCall + Call(5, "Set", arguments, nothing) +
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
                                             Call(6, "Show", R"({"vt":"INT","v":2})", nothing)));
    EXPECT_THAT(script, HasSubstr("' 5 desktop.Bad: failed with 0x80020009 0x0202: Bad argument value\n"
                                  "desktop1.Bad\nIf Err.Number <> 0 Then Complain \"5 desktop.Bad() \"\n"));
    EXPECT_THAT(script, HasSubstr("' 6 desktop.Show: VBScript lacks the type of an argument"));
}

TEST(Script, TakesNoStatementFromNamesAndTexts) {
    const std::string evil = "Evil : WScript.Quit";
    const std::string script = ScriptOf(Read(header + created + desktopCall + Call(5, evil, "", nothing) +
                                             Call(6, R"(A\nB)", "", nothing) + FailedCall(7, "_NewEnum")));
    EXPECT_THAT(script, HasSubstr("' 5 desktop.Evil : WScript.Quit: left out, this is no name that VBScript knows\n"));
    EXPECT_THAT(script, HasSubstr("' 6 desktop.A?B: left out"));
    EXPECT_THAT(script, HasSubstr("' 7 desktop._NewEnum: left out"));
    EXPECT_THAT(script, Not(HasSubstr("\nB")));
}

std::string Differences(const std::string& first, const std::string& second, std::size_t expected,
                        bool isFull = false) {
    std::ostringstream out;
    EXPECT_EQ(Diff(Read(header + first), Read(header + second), isFull, out), expected);
    return out.str();
}

TEST(Diff, IgnoresTimesAndFindsWhatDiffers) {
    const std::string a = Call(1, "A", R"({"vt":"R8","v":1.0})", nothing, 5);
    EXPECT_EQ(Differences(a, Call(1, "A", R"({"vt":"R8","v":1.0})", nothing, 9), 0), "");
    EXPECT_EQ(Differences(a, Call(3, "A", R"({"vt":"R8","v":2.0})", nothing), 1),
              "~ 1 / 3 desktop.A(1.0)\n    argument 1: was 1.0, is 2.0\n");
    EXPECT_THAT(Differences(a, CallHead(1, "A", R"({"vt":"R8","v":1.0})"), 1), HasSubstr("never came back"));
}

TEST(Diff, ComparesObjectsByTheirPaths) {
    const auto call = [](int id, const std::string& path) {
        return Call(1, "Get",
                    R"({"vt":"ARRAY|VARIANT","v":[{"vt":"DISPATCH","v":"application","id":)" + std::to_string(id) +
                        "}]}",
                    R"({"vt":"DISPATCH","v":")" + path + R"(","id":)" + std::to_string(id) + "}");
    };
    EXPECT_EQ(Differences(call(5, "desktop.a"), call(6, "desktop.a"), 0), "");
    EXPECT_THAT(Differences(call(5, "desktop.a"), call(5, "desktop.b"), 1),
                HasSubstr("    result: was desktop.a, is desktop.b\n"));
}

std::string TextValue(const std::string& text) {
    return R"({"vt":"BSTR","v":")" + text + R"("})";
}

std::string ListOf(const std::vector<std::string>& values) {
    std::string elements;
    for (const std::string& value : values) {
        elements += (elements.empty() ? "" : ",") + value;
    }
    return R"({"vt":"ARRAY|VARIANT","v":[)" + elements + "]}";
}

TEST(Diff, ShowsTheElementsOfALongArgumentThatDiffer) {
    const auto call = [](const std::string& gap) {
        const std::string changed = ListOf(
            {TextValue("NAME:gap"), TextValue("PropType:="), TextValue("V"), TextValue("Value:="), TextValue(gap)});
        const std::vector<std::string> many(20, R"({"vt":"R8","v":0.5})");
        return Call(4, "ChangeProperty", TextValue("x") + "," + ListOf({ListOf(many), ListOf(many), changed}), nothing);
    };
    EXPECT_THAT(Differences(call("1mm"), call("2mm"), 1),
                testing::EndsWith("])\n    argument 2 [2][4] (NAME:gap, Value:=): was \"1mm\", is \"2mm\"\n"));
    const std::string same(130, 'a');
    EXPECT_THAT(Differences(call(same + "b"), call(same + "c"), 1), HasSubstr("was \"" + same + "b\", is \"" + same));
}

TEST(Diff, ComparesListsOfDifferentLengthsElementByElement) {
    const std::string shorter = Call(1, "A", ListOf({TextValue("a")}), nothing);
    const std::string longer = Call(1, "A", ListOf({TextValue("a"), TextValue("b")}), nothing);
    EXPECT_EQ(Differences(shorter, longer, 1), "~ 1 / 1 desktop.A([\"a\"])\n"
                                               "    argument 1: was a list of 1, is a list of 2\n"
                                               "    argument 1 [1]: was nothing, is \"b\"\n");
    const std::string based = R"({"vt":"ARRAY|VARIANT","lower":1,"v":[)" + TextValue("a") + "]}";
    EXPECT_THAT(Differences(shorter, Call(1, "A", based, nothing), 1), HasSubstr("\"lower\":1"));
}

TEST(Diff, TellsWhichVariableAQueryRead) {
    const auto query = [](const std::string& value) {
        return Call(7, "GetOutputVariableValue", TextValue("Force_upper_Z") + "," + TextValue(""),
                    R"({"vt":"R8","v":)" + value + "}");
    };
    EXPECT_EQ(Differences(query("0.5"), query("0.25"), 1),
              "~ 7 / 7 desktop.GetOutputVariableValue(\"Force_upper_Z\", \"\")\n    result: was 0.5, is 0.25\n");
}

TEST(Diff, CountsFurtherDifferencesUnlessItIsFull) {
    const auto call = [](const std::string& value) {
        return Call(1, "Set", ListOf(std::vector<std::string>(20, R"({"vt":"R8","v":)" + value + "}")), nothing);
    };
    const std::string shortened = Differences(call("0.5"), call("0.25"), 1);
    EXPECT_THAT(shortened, HasSubstr("desktop.Set([0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, .. 12 more])\n"));
    EXPECT_THAT(shortened, testing::EndsWith("    argument 1 [7]: was 0.5, is 0.25\n"
                                             "    argument 1: 12 more differences, which --full shows\n"));
    const std::string full = Differences(call("0.5"), call("0.25"), 1, true);
    EXPECT_THAT(full, testing::EndsWith("    argument 1 [19]: was 0.5, is 0.25\n"));
    EXPECT_THAT(full, Not(HasSubstr("more")));
}

TEST(Diff, FindsInsertedAndMissingCalls) {
    const std::string a = Call(1, "A", "", nothing);
    const std::string b = Call(2, "B", "", nothing);
    const std::string c = Call(3, "C", "", nothing);
    const std::string d = Call(4, "D", "", nothing);
    EXPECT_EQ(Differences(a + b + c, a + c + d, 2), "- 2 desktop.B()\n+ 4 desktop.D()\n");
    EXPECT_EQ(Differences(a + b + c + d, d, 3), "- 1 desktop.A()\n- 2 desktop.B()\n- 3 desktop.C()\n");
    EXPECT_EQ(Differences("", a, 1), "+ 1 desktop.A()\n");
}

} // namespace
