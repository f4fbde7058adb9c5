// The desktop or the client ends in the middle of a call: the trace stays readable, and tells in which call.
//
// Needs the programs beside it, and under Wine a prefix of its own (tests/support/Processes.h).
#include "tests/support/Processes.h"
#include "tests/support/TestFolder.h"
#include "trace/core/Session.h"
#include "trace/core/Show.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <locale>
#include <sstream>
#include <thread>

namespace {

using namespace fake;
using namespace std::chrono_literals;
using kinora::trace::Record;
using kinora::trace::Session;
using testing::HasSubstr;

/// A closed sphere in millimetres with enough triangles to keep the solver busy.
std::string Sphere(const std::string& name, double height, int firstVertex) {
    constexpr int rings = 16;
    constexpr int columns = 32;
    constexpr double pi = 3.14159265358979323846;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "o " << name << "\nusemtl magnet_1T\n"
         << "v 0 0 " << height + 5 << "\nv 0 0 " << height - 5 << "\n";
    for (int ring = 1; ring < rings; ++ring) {
        for (int column = 0; column < columns; ++column) {
            const double polar = pi * ring / rings;
            const double around = 2.0 * pi * column / columns;
            text << "v " << 5 * std::sin(polar) * std::cos(around) << ' ' << 5 * std::sin(polar) * std::sin(around)
                 << ' ' << height + 5 * std::cos(polar) << "\n";
        }
    }
    const auto vertex = [&](int ring, int column) {
        const int inside = firstVertex + 2 + (ring - 1) * columns + column % columns;
        return ring == 0 ? firstVertex : ring == rings ? firstVertex + 1 : inside;
    };
    for (int ring = 0; ring < rings; ++ring) {
        for (int column = 0; column < columns; ++column) {
            if (ring > 0) {
                text << "f " << vertex(ring, column) << ' ' << vertex(ring + 1, column) << ' '
                     << vertex(ring, column + 1) << "\n";
            }
            if (ring < rings - 1) {
                text << "f " << vertex(ring, column + 1) << ' ' << vertex(ring + 1, column) << ' '
                     << vertex(ring + 1, column + 1) << "\n";
            }
        }
    }
    return text.str();
}

constexpr int verticesOfASphere = 2 + 15 * 32;

const char* const scenario = R"({
  "title": "Two spheres",
  "desktop": { "version": "Trace" },
  "project": { "file": "spheres.vantor", "overwrite": true },
  "geometry": { "file": "spheres.obj", "units": "mm" },
  "materials": { "lower": { "name": "magnet_1T", "direction": [0, 0, 1] },
                 "upper": { "name": "magnet_1T", "direction": [0, 0, 1] } },
  "bodies": [ { "name": "lower", "objects": ["lower"] },
              { "name": "upper", "objects": ["upper"], "position": [0, 0, "12*mm"] } ],
  "joints": [ { "name": "lift", "type": "slider", "axis": [0, 0, 1], "bodies": ["upper"],
                "prescribed": { "expression": "20*mm*t" } } ],
  "solver": { "step": 0.05, "end": 1.0 }
})";

class TracedRun : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(RunProgram(L"\"" + SimulatorServer::Path() + L"\" /RegServer"), 0UL);
        ASSERT_EQ(RunProgram(Quoted(L"vantor-trace.exe") + L" register"), 0UL);
    }
    static void TearDownTestSuite() {
        RunProgram(Quoted(L"vantor-trace.exe") + L" unregister");
        RunProgram(L"\"" + SimulatorServer::Path() + L"\" /UnregServer");
    }

    TracedRun() {
        CoInitialize(nullptr);
        SetEnvironmentVariableW(L"VANTOR_TRACE_TARGET", L"Simulator");
        SetEnvironmentVariableW(L"VANTOR_TRACE_DIR", (m_folder / L"trace").c_str());
        WriteFileBytes(m_folder / L"spheres.obj",
                       Sphere("lower", 0.0, 1) + Sphere("upper", 12.0, 1 + verticesOfASphere));
        WriteFileBytes(m_folder / L"scenario.json", scenario);
    }
    ~TracedRun() override {
        SetEnvironmentVariableW(L"VANTOR_TRACE_TARGET", nullptr);
        SetEnvironmentVariableW(L"VANTOR_TRACE_DIR", nullptr);
        CoUninitialize();
    }

    static std::wstring Quoted(const std::wstring& program) { return L"\"" + BesideThisProgram(program) + L"\""; }

    std::wstring HostCommand() const {
        return Quoted(L"kinora-run.exe") + L" \"" + (m_folder / L"scenario.json") + L"\" --quiet --out \"" +
               (m_folder / L"out") + L"\"";
    }

    /// Waits until the file ends in the head of a call of this method.
    bool IsInCall(const std::string& method) const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (std::chrono::steady_clock::now() < deadline) {
            const std::string last = LastLine();
            if (last.find("\"kind\":\"call\"") != std::string::npos && last.back() != '}' &&
                last.find("\"method\":\"" + method + "\"") != std::string::npos) {
                return true;
            }
            std::this_thread::sleep_for(5ms);
        }
        return false;
    }

    Session ReadTrace() const {
        Session session;
        std::ifstream stream(TraceFile(), std::ios::binary);
        kinora::trace::ReadTrace(stream, "trace", session);
        return session;
    }

    /// True when the program reads it too.
    bool IsShown() const {
        return RunProgram(Quoted(L"vantor-trace.exe") + L" show --failed \"" + TraceFile().wstring() + L"\"") == 0UL;
    }

private:
    std::filesystem::path TraceFile() const {
        std::error_code notThere;
        std::filesystem::directory_iterator entry(m_folder / L"trace", notThere);
        return notThere || entry == std::filesystem::directory_iterator() ? std::filesystem::path() : entry->path();
    }

    std::string LastLine() const {
        std::ifstream stream(TraceFile(), std::ios::binary | std::ios::ate);
        const std::streamoff size = stream ? static_cast<std::streamoff>(stream.tellg()) : 0;
        if (size <= 0) {
            return " ";
        }
        constexpr std::streamoff longest = 2000;
        std::string end(static_cast<std::size_t>(std::min(size, longest)), ' ');
        stream.seekg(size - static_cast<std::streamoff>(end.size()));
        stream.read(end.data(), static_cast<std::streamsize>(end.size()));
        const std::size_t lineEnd = end.find_last_of('\n');
        return lineEnd == std::string::npos || lineEnd + 1 == end.size() ? " " : end.substr(lineEnd + 1);
    }

    TestFolder m_folder;
};

std::string FailuresOf(const Session& session) {
    kinora::trace::ShowOptions options;
    options.onlyFailed = true;
    std::ostringstream out;
    kinora::trace::Show(session, options, out);
    return out.str();
}

TEST_F(TracedRun, TellsTheCallInWhichTheDesktopEnded) {
    SimulatorServer server;
    IDispatch* const holder = server.Connect();
    ASSERT_NE(holder, nullptr);
    const ChildProcess host(HostCommand());
    ASSERT_TRUE(IsInCall("Analyze"));
    server.Kill();
    ASSERT_TRUE(host.EndsWithin(60000));
    holder->Release();
    EXPECT_EQ(host.ExitCode(), 1UL);

    const Session session = ReadTrace();
    EXPECT_TRUE(session.warnings.empty());
    const auto failed = std::find_if(session.records.begin(), session.records.end(),
                                     [](const Record& record) { return record.HasFailed(); });
    ASSERT_NE(failed, session.records.end());
    EXPECT_EQ(failed->method, "Analyze");
    EXPECT_FALSE(failed->isOpen);
    EXPECT_THAT(FailuresOf(session), HasSubstr("Analyze(\"Setup1\")  failed, 0x800706BE RPC_S_CALL_FAILED: the other "
                                               "program ended during the call\n"));
    EXPECT_TRUE(IsShown());
}

TEST_F(TracedRun, TellsTheCallInWhichTheClientEnded) {
    SimulatorServer server;
    IDispatch* const holder = server.Connect();
    ASSERT_NE(holder, nullptr);
    const ChildProcess host(HostCommand());
    ASSERT_TRUE(IsInCall("Analyze"));
    host.Kill();
    server.Kill(); // or the solver, which knows nothing of it, would keep the release waiting
    holder->Release();

    const Session session = ReadTrace();
    EXPECT_TRUE(session.warnings.empty());
    ASSERT_FALSE(session.records.empty());
    const Record& last = session.records.back();
    EXPECT_EQ(last.method, "Analyze");
    EXPECT_TRUE(last.isOpen);
    EXPECT_EQ(std::count_if(session.records.begin(), session.records.end(),
                            [](const Record& record) { return record.isOpen || record.HasFailed(); }),
              1);
    EXPECT_THAT(FailuresOf(session), HasSubstr("Analyze(\"Setup1\")  never came back\n"));
    EXPECT_TRUE(IsShown());
}

} // namespace
