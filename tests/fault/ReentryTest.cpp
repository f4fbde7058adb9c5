// While a call to the desktop is out, COM hands messages and incoming calls to the host: its handlers may ask the
// coupling object for something in the middle of an operation. They are answered false, and nothing changes.

#include "tests/fault/Interposer.h"
#include "tests/fault/WholeSession.h"

#include <objbase.h>

#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Result = IKinoraVeltrixInterface::Result;
using Severity = IKinoraVeltrixInterface::MessageSeverity;

/// Asks the object for everything that it has.
void ExpectOccupied(CKinoraVeltrixCoupling& coupling) {
    std::vector<std::string> texts{"kept"};
    std::vector<Result> results(1);
    int status = 77;
    EXPECT_FALSE(coupling.LaunchDesktop());
    EXPECT_FALSE(coupling.GetMessages(texts, Severity::Info));
    EXPECT_FALSE(coupling.GetVeltrixDesigns("missing.vtdk", texts));
    EXPECT_FALSE(coupling.OpenProject("missing.vtdk", "")) << "which would throw";
    EXPECT_FALSE(coupling.CreateProject("other.vtdk", "other.obj", "mm"));
    EXPECT_FALSE(coupling.InitGeometry("other.obj", "mm"));
    EXPECT_FALSE(coupling.InitMagneticObjects({}, {}));
    EXPECT_FALSE(coupling.Analyze(0.0, {}, results, status));
    EXPECT_FALSE(coupling.SetVariableValue("a", "1mm", true));
    EXPECT_FALSE(coupling.AddParametricSetup(true));
    EXPECT_FALSE(coupling.SaveProject());
    EXPECT_FALSE(coupling.CloseProject());
    EXPECT_FALSE(coupling.QuitApplication());
    EXPECT_FALSE(coupling.ReleaseApplication());
    EXPECT_THAT(texts, ElementsAre("kept"));
    EXPECT_EQ(results.size(), 1U);
    EXPECT_EQ(status, 77);
}

/// The session and the operations that it lacks.
std::vector<Operation> EveryOperation(WholeSession& session) {
    const std::wstring file = WholeSession::Folder() / L"Magnets.vtdk";
    fake::WriteFileBytes(file, "");
    const std::string path = fake::ToAnsi(file);
    CKinoraVeltrixCoupling& coupling = session.Coupling();
    std::vector<Operation> operations = session.Operations();
    const std::vector<Operation> more{
        {"Messages",
         [&coupling] {
             std::vector<std::string> messages;
             return coupling.GetMessages(messages, Severity::Info);
         }},
        {"Variable", [&coupling] { return coupling.SetVariableValue("gap", "1mm", true); }},
        {"History", [&coupling] { return coupling.AddParametricSetup(false); }},
        {"Designs",
         [&coupling, path] {
             std::vector<std::string> designs;
             return coupling.GetVeltrixDesigns(path, designs);
         }},
        {"Open", [&coupling, path] { return coupling.OpenProject(path, "Veltrix3DDesign1"); }},
    };
    operations.insert(operations.end() - 3, more.begin(), more.end()); // before the project is saved and closed
    return operations;
}

/// Runs everything. @return the journal
std::string RunThrough(WholeSession& session) {
    for (const Operation& operation : EveryOperation(session)) {
        EXPECT_TRUE(operation.run()) << operation.name;
    }
    return session.Desktop().world.Journal();
}

/// A session whose desktop hands the host its handlers' turn before every look-up and every invocation, and whenever an
/// object goes.
std::string RunDisturbed(std::size_t& turns) {
    WholeSession session({});
    const auto takeTurn = [&] {
        ++turns;
        ExpectOccupied(session.Coupling());
    };
    CallMeter meter;
    meter.beforeLookup = [&](std::size_t) { takeTurn(); };
    meter.beforeInvocation = meter.beforeLookup;
    session.Desktop().world.onLetGo = [&](const fake::Object&) { takeTurn(); };
    session.Desktop().application.AddRef();
    auto* const application = new Interposer(&session.Desktop().application, meter);
    session.Offer(application);
    std::string journal = RunThrough(session);
    session.Desktop().world.onLetGo = nullptr;
    application->Release();
    EXPECT_EQ(session.Desktop().world.OutstandingReferences(), 0);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE) << "COM is as the session has initialised it";
    CoUninitialize();
    return journal;
}

TEST(Reentry, IsRefusedAtEveryCallOfEveryOperation) {
    std::string undisturbed;
    {
        WholeSession session({});
        undisturbed = RunThrough(session);
    }
    std::size_t turns = 0;
    EXPECT_EQ(RunDisturbed(turns), undisturbed);
    EXPECT_GT(turns, 900U);
    std::printf("re-entry      : %zu moments, 14 operations asked for in each\n", turns);
}

} // namespace
