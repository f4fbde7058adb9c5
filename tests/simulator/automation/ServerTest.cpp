#include "tests/simulator/automation/Programs.h"

#include <windows.h>

#include <objbase.h>

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <tlhelp32.h>

using namespace calls;
using namespace std::chrono_literals;

namespace {

Object NewDesktop() {
    return calls::NewDesktop(L"Pellux.VantorDesktop.Simulator");
}

/// The command line of a client, which is one of the tests at the end.
std::wstring ClientProgram(const std::wstring& test) {
    return L"\"" + fake::ThisProgram() + L"\" --gtest_also_run_disabled_tests --gtest_filter=Client.DISABLED_" + test;
}

bool SimulatorRuns() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    bool runs = false;
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
        runs = runs || std::wstring(entry.szExeFile) == L"vantor-sim.exe";
    }
    CloseHandle(snapshot);
    return runs;
}

/// A simulator that an earlier test has left lingering would take this test's clients.
void WaitForOtherSimulators() {
    for (int tries = 0; tries < 100 && SimulatorRuns(); ++tries) {
        std::this_thread::sleep_for(100ms);
    }
}

/// The registered simulator, started by hand so that the test can watch it end.
class Server : public testing::Test {
protected:
    static void SetUpTestSuite() {
        CoInitialize(nullptr);
        WaitForOtherSimulators();
        wasRegistered = IsRegistered();
        ASSERT_EQ(RunSimulator(L"/RegServer"), 0U);
    }
    static void TearDownTestSuite() {
        EXPECT_EQ(RunSimulator(L"/UnregServer"), 0U);
        EXPECT_FALSE(IsRegistered());
        if (wasRegistered) {
            RunSimulator(L"/RegServer");
        }
        CoUninitialize();
    }

    static bool IsRegistered() { return IsClassRegistered(L"Pellux.VantorDesktop.Simulator"); }

    /// Other tests rely on it then.
    inline static bool wasRegistered = false;

    void SetUp() override {
        // The class object appears a moment after the process.
        std::this_thread::sleep_for(500ms);
    }

    Process simulator{L"\"" + SimulatorPath() + L"\" -Embedding /Idle 2"};
};

} // namespace

TEST_F(Server, ServesSeveralClientsAndLeavesWhenTheyAreGone) {
    {
        const Object first = NewDesktop();
        const Object second = NewDesktop();
        ASSERT_NE(first.Get(), nullptr);
        ASSERT_NE(second.Get(), nullptr);
        const Object project = CallObject(first.Get(), L"NewProject", {});
        EXPECT_EQ(ProjectCount(first), 1);
        EXPECT_EQ(ProjectCount(second), 0);
        const Outcome outcome = Try(second.Get(), L"GetProjects", {Int(1)});
        EXPECT_EQ(outcome.status, DISP_E_EXCEPTION);
        EXPECT_NE(outcome.description.find(L"GetProjects: 0x0001"), std::wstring::npos);
    }
    EXPECT_FALSE(simulator.EndsWithin(1500ms));
    EXPECT_TRUE(simulator.EndsWithin(5s));
    EXPECT_EQ(simulator.ExitCode(), 0U);
}

TEST_F(Server, KeepsAProjectForTheNextClient) {
    {
        const Object first = NewDesktop();
        CallObject(first.Get(), L"NewProject", {});
    }
    const Object second = NewDesktop();
    EXPECT_EQ(ProjectCount(second), 1);
}

TEST_F(Server, LeavesWhenAClientAsksItTo) {
    {
        const Object desktop = NewDesktop();
        Call(desktop.Get(), L"QuitApplication", {});
    }
    EXPECT_TRUE(simulator.EndsWithin(5s));
}

TEST_F(Server, OutlivesTheQuitOfAClientWhileAnotherOneWorks) {
    const Process other(ClientProgram(L"QuitTheDesktop"));
    const Object worker = NewDesktop();
    EXPECT_TRUE(other.EndsWithin(15s));
    EXPECT_EQ(other.ExitCode(), 0U);
    // More than the ten seconds after which a desktop that is asked to leave does so in any case.
    EXPECT_FALSE(simulator.EndsWithin(11s));
    EXPECT_THAT(Messages(worker),
                testing::ElementsAre(L"QuitApplication: the desktop stays open, 1 other client uses it."));
    EXPECT_NE(NewDesktop().Get(), nullptr);
    Call(worker.Get(), L"QuitApplication", {});
    EXPECT_TRUE(simulator.EndsWithin(13s)) << "by the worker's own quit";
}

TEST_F(Server, LeavesAtAQuitAlthoughADeadClientHeldObjects) {
    const Process client(ClientProgram(L"HoldAProjectForEver"));
    const Object desktop = NewDesktop();
    std::this_thread::sleep_for(2s);
    client.Kill();
    EXPECT_TRUE(client.EndsWithin(5s));
    Call(desktop.Get(), L"QuitApplication", {});
    EXPECT_TRUE(simulator.EndsWithin(13s));
}

TEST_F(Server, LetsGoOfTheStreamsOfTheProgramThatStartsIt) {
    OutputPipe pipe;
    const Process started(L"\"" + SimulatorPath() + L"\" -Embedding /Idle 5", pipe.WriteEnd());
    EXPECT_EQ(pipe.ReadToTheEnd(), "");
    EXPECT_FALSE(started.EndsWithin(0ms)) << "the pipe's end had to wait for the simulator";
}

TEST_F(Server, SurvivesAClientThatDies) {
    const Process client(ClientProgram(L"HoldAProjectForEver"));
    const Object watcher = NewDesktop();
    // The dying client changes its project, so nobody else sees it while it lives.
    std::this_thread::sleep_for(2s);
    EXPECT_EQ(ProjectCount(watcher), 0);
    client.Kill();
    int count = 0;
    for (int tries = 0; tries < 50 && count == 0; ++tries) {
        std::this_thread::sleep_for(100ms);
        count = ProjectCount(watcher);
    }
    EXPECT_EQ(count, 1);
}

/// A client that leaves while the one above works.
TEST(Client, DISABLED_QuitTheDesktop) {
    CoInitialize(nullptr);
    const Object desktop = NewDesktop();
    // Until the other one is there.
    std::this_thread::sleep_for(3s);
    Call(desktop.Get(), L"QuitApplication", {});
}

/// The client that is killed above.
TEST(Client, DISABLED_HoldAProjectForEver) {
    CoInitialize(nullptr);
    const Object desktop = NewDesktop();
    const Object project = CallObject(desktop.Get(), L"NewProject", {});
    std::this_thread::sleep_for(60s);
}
