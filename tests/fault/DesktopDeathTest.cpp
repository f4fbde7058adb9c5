// The desktop's process ends before and during every call of a session. The operation returns without hanging, letting
// go works, a new launch gets a new desktop, and the saved project opens again.
//
// Needs vantor-sim.exe beside it, and under Wine a prefix of its own (tests/support/Processes.h).

#include "coupling/KinoraVeltrixCoupling.h"
#include "tests/fault/Interposer.h"
#include "tests/fault/Sweep.h"
#include "tests/support/CouplingSession.h"
#include "tests/support/Processes.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace fake;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Result = IKinoraVeltrixInterface::Result;
using Transform = IKinoraVeltrixInterface::Transform;

constexpr auto longestOperation = 20s; // far more than any takes on a slow machine

/// A cube of 10 mm, its lower face at this height.
std::string Cube(const std::string& name, int height, int firstVertex) {
    static const int faces[][3] = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                                   {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    std::string text = "o " + name + "\nusemtl magnet_1T\n";
    for (int corner = 0; corner < 8; ++corner) {
        text += "v " + std::to_string((corner & 1) * 10) + " " + std::to_string((corner >> 1 & 1) * 10) + " " +
                std::to_string(height + (corner >> 2) * 10) + "\n";
    }
    for (const auto& face : faces) {
        text += "f";
        for (const int corner : face) {
            text += " " + std::to_string(firstVertex + corner);
        }
        text += "\n";
    }
    return text;
}

struct Operation {
    const char* name;
    std::function<bool()> run;
};

/// A short coupled run: two magnets, two steps.
class ShortRun {
public:
    ShortRun() {
        WriteFileBytes(m_folder / L"cubes.obj", Cube("lower", 0, 1) + Cube("upper", 20, 9));
        m_poses.resize(2);
        m_poses[0].name = "Lower";
        m_poses[1].name = "Upper";
    }

    std::vector<Operation> Operations() {
        return {
            {"LaunchDesktop", [this] { return coupling.LaunchDesktop(); }},
            {"CreateProject",
             [this] { return coupling.CreateProject(ProjectFile(), ToAnsi(m_folder / L"cubes.obj"), "mm"); }},
            {"InitMagneticObjects",
             [this] {
                 return coupling.InitMagneticObjects(
                     {{m_poses[0], {"lower"}}, {m_poses[1], {"upper"}}},
                     {{"lower", {"magnet_1T", {0.0, 0.0, 1.0}}}, {"upper", {"magnet_1T", {1.0, 0.0, 0.0}}}});
             }},
            {"Analyze at 0", [this] { return Step(0.0); }},
            {"Analyze", [this] { return Step(0.1); }},
            {"GetMessages",
             [this] {
                 std::vector<std::string> messages;
                 return coupling.GetMessages(messages, IKinoraVeltrixInterface::MessageSeverity::Info);
             }},
            {"SaveProject", [this] { return coupling.SaveProject(); }},
            {"CloseProject", [this] { return coupling.CloseProject(); }},
            {"QuitApplication", [this] { return coupling.QuitApplication(); }},
        };
    }
    std::string ProjectFile() const { return ToAnsi(m_folder / L"cubes.vantor"); }

    CKinoraVeltrixCoupling coupling;

private:
    bool Step(double time) {
        std::vector<Result> results;
        int status = 0;
        m_poses[1].translation[2] = time;
        return coupling.Analyze(time, m_poses, results, status);
    }

    TestFolder m_folder;
    std::vector<Transform> m_poses;
};

/// Runs an operation and complains when it takes long.
bool Timed(const Operation& operation) {
    const auto start = Clock::now();
    const bool succeeded = operation.run();
    EXPECT_LT(Clock::now() - start, longestOperation) << operation.name << " hangs";
    return succeeded;
}

enum class Moment { BeforeTheCall, DuringTheCall };

class Death : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(RunProgram(L"\"" + SimulatorServer::Path() + L"\" /RegServer"), 0UL); }
    static void TearDownTestSuite() { RunProgram(L"\"" + SimulatorServer::Path() + L"\" /UnregServer"); }

    Death() : m_version(Registration::UniqueVersion().c_str()), m_registration(Registration::UniqueProgId()) {}

    /// The last call of every operation of an undisturbed run.
    std::vector<std::size_t> CallsOfOperations() {
        std::vector<std::size_t> calls;
        SimulatorServer server;
        CallMeter meter;
        auto* const application = new Interposer(server.Connect(), meter);
        m_registration.Create(application);
        ShortRun run;
        for (const Operation& operation : run.Operations()) {
            EXPECT_TRUE(Timed(operation)) << operation.name;
            calls.push_back(meter.calls);
        }
        application->Release();
        EXPECT_EQ(Interposer::Live(), 0);
        return calls;
    }

    /// One run whose desktop dies at this call, in the operation of this index.
    void DieAt(std::size_t call, std::size_t operationOfDeath, Moment moment) {
        SimulatorServer server;
        CallMeter meter;
        std::thread killer;
        const auto kill = [&](std::size_t number) {
            if (number == call && moment == Moment::BeforeTheCall) {
                server.Kill();
            } else if (number == call) {
                killer = std::thread([&server] { server.Kill(); });
            }
        };
        (moment == Moment::BeforeTheCall ? meter.beforeLookup : meter.beforeInvocation) = kill;
        IDispatch* const target = server.Connect();
        ASSERT_NE(target, nullptr);
        auto* const application = new Interposer(target, meter);
        m_registration.Create(application);
        ShortRun run;
        const std::vector<Operation> operations = run.Operations();
        for (std::size_t operation = 0; operation <= operationOfDeath; ++operation) {
            const bool succeeded = Timed(operations[operation]);
            EXPECT_TRUE(succeeded || operation == operationOfDeath) << operations[operation].name;
        }
        if (killer.joinable()) {
            killer.join();
        }
        CheckTheEnd(run);
        application->Release();
        EXPECT_EQ(Interposer::Live(), 0);
    }

    void CheckTheEnd(ShortRun& run) {
        EXPECT_FALSE(run.coupling.SaveProject());
        const auto start = Clock::now();
        EXPECT_TRUE(run.coupling.ReleaseApplication());
        EXPECT_LT(Clock::now() - start, longestOperation) << "letting go hangs";
        EXPECT_FALSE(run.coupling.SaveProject());
    }

    Apartment m_apartment;
    VersionVariable m_version;
    Registration m_registration;
};

class DeathAtEveryCall : public Death, public testing::WithParamInterface<Moment> {};

/// Every how many-th call is tried; all of them unless the variable says otherwise.
TEST_P(DeathAtEveryCall, NeverHangsAnOperationAndLetsGo) {
    const std::vector<std::size_t> calls = CallsOfOperations();
    std::size_t injected = 0;
    std::size_t held = 0;
    std::size_t operation = 0;
    for (std::size_t call = 1; call <= calls.back() && injected - held < 5; call += sweep::Stride()) {
        while (calls[operation] < call) {
            ++operation;
        }
        SCOPED_TRACE(testing::Message() << "call " << call << " of " << calls.back());
        const int before = sweep::Complaints();
        DieAt(call, operation, GetParam());
        ++injected;
        held += sweep::Complaints() == before ? 1U : 0U;
    }
    std::printf("%s: %zu deaths, %zu held\n", GetParam() == Moment::BeforeTheCall ? "before a call" : "during a call",
                injected, held);
}

INSTANTIATE_TEST_SUITE_P(All, DeathAtEveryCall, testing::Values(Moment::BeforeTheCall, Moment::DuringTheCall));

/// Without anything in between: the library itself launches the simulator, twice.
TEST_F(Death, IsFollowedByANewDesktopThatOpensTheSavedProject) {
    const VersionVariable version("Simulator");
    for (std::size_t operationsBefore = 2; operationsBefore <= 7; ++operationsBefore) {
        SCOPED_TRACE(operationsBefore);
        ShortRun run;
        const std::vector<Operation> operations = run.Operations();
        {
            SimulatorServer first;
            for (std::size_t operation = 0; operation < operationsBefore; ++operation) {
                ASSERT_TRUE(Timed(operations[operation])) << operations[operation].name;
            }
            first.Kill();
            EXPECT_FALSE(Timed(operations[operationsBefore])) << operations[operationsBefore].name;
            EXPECT_TRUE(run.coupling.ReleaseApplication());
        }
        SimulatorServer second;
        EXPECT_TRUE(run.coupling.LaunchDesktop());
        // Creating a project saves it while it is empty; its design is in the file after "SaveProject" only.
        const bool isSaved = operationsBefore > 6;
        EXPECT_TRUE(run.coupling.OpenProject(run.ProjectFile(), isSaved ? "Veltrix3DDesign1" : ""));
        EXPECT_TRUE(run.coupling.QuitApplication());
    }
}

} // namespace
