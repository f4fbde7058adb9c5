// FMUs in the hands of an importing tool: what they give is what the host gives, in both versions of the standard.
#include "tests/fmu/PackedFmus.h"

#include <cmath>
#include <gtest/gtest.h>
#include <thread>

namespace importer {
namespace {

using endtoend::Column;

constexpr double tolerance = 1e-9;

std::filesystem::path Coupling() {
    return endtoend::Examples() / "axial-coupling" / "torque.json";
}

/// What the host gives for a scenario: the file of its states.
std::filesystem::path HostStates(const std::filesystem::path& scenario, const std::string& states) {
    const std::filesystem::path folder = Workshop() / ("host " + scenario.stem().u8string());
    if (!std::filesystem::exists(folder)) {
        const endtoend::Outcome outcome =
            endtoend::RunHost({scenario.u8string(), "--out", folder.u8string(), "--desktop", "Simulator", "--quiet"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    }
    return folder / states;
}

class Run : public testing::TestWithParam<int> {
protected:
    /// FMUs leave the machine's desktop running, which under Wine holds this program's streams open. A run of the host
    /// ends it.
    static void TearDownTestSuite() {
        const endtoend::ScratchFolder folder;
        const endtoend::Outcome outcome = endtoend::RunHost({Coupling().u8string(), "--out", folder.Path().u8string(),
                                                             "--desktop", "Simulator", "--steps", "1", "--quiet"});
        EXPECT_EQ(outcome.exitCode, 1) << outcome.output; // stopped before its end
    }

    std::unique_ptr<Instance> Make(const Fmu& fmu, const std::string& name = "run") const {
        return Instance::Of(fmu, name, m_output.Path());
    }

    /// Expects columns of the host beside the rows of vectors, or of single numbers, of an FMU.
    static void ExpectColumns(const std::filesystem::path& states, const std::vector<std::string>& columns,
                              const std::vector<std::vector<double>>& rows, double unit = 1.0) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            SCOPED_TRACE(columns[i]);
            const std::vector<double> expected = Column(states, columns[i]);
            ASSERT_EQ(rows.size(), expected.size());
            for (std::size_t row = 0; row < rows.size(); ++row) {
                EXPECT_NEAR(unit * rows[row][i], expected[row], tolerance * (1.0 + std::fabs(expected[row])));
            }
        }
    }

    endtoend::ScratchFolder m_output;
};

TEST_P(Run, OfAJointGivesWhatTheHostGives) {
    const std::filesystem::path states = HostStates(Coupling(), "torque.states.csv");
    const std::vector<double> angles = Column(states, "driven_hinge.Coordinate [rad]");
    const std::vector<double> speeds = Column(states, "driven_hinge.Speed [rad/s]");
    const auto instance = Make(Packed(Coupling(), GetParam()));
    instance->Start(0.0, 1.0);
    std::vector<std::vector<double>> torques = {instance->Vector("driven_hinge.torque", 1)};
    for (std::size_t step = 1; step < angles.size(); ++step) {
        ASSERT_EQ(instance->SetNumbers("driven_hinge.angle", {angles[step - 1]}), 0);
        ASSERT_EQ(instance->SetNumbers("driven_hinge.angularVelocity", {speeds[step - 1]}), 0);
        ASSERT_EQ(instance->DoStep(0.01 * static_cast<double>(step - 1), 0.01), 0) << instance->LogText();
        torques.push_back(instance->Vector("driven_hinge.torque", 1));
    }
    ExpectColumns(states, {"driven_hinge.Field force [N m]"}, torques);
    int solves = 0, status = -1;
    EXPECT_EQ(instance->GetInteger("solves", solves), 0);
    EXPECT_EQ(instance->GetInteger("solverStatus", status), 0);
    EXPECT_EQ(solves, static_cast<int>(angles.size()));
    EXPECT_EQ(status, 0);
    EXPECT_GT(instance->Number("solveMilliseconds"), 0.0);
    EXPECT_EQ(instance->Terminate(), 0);
    EXPECT_EQ(instance->LogText(), "");
    // The log of the run has every solve.
    const std::filesystem::path log = m_output / "run" / "torque.reports" / "torque.coupling.csv";
    EXPECT_GE(endtoend::Lines(endtoend::Content(log)).size(), angles.size());
}

INSTANTIATE_TEST_SUITE_P(Fmi, Run, testing::Values(2, 3));

TEST_P(Run, OfPosesGivesWhatTheHostGives) {
    const std::filesystem::path states = HostStates(Tilted().file, "tilted.csv");
    const std::size_t rows = Column(states, "Time [s]").size();
    const auto instance =
        Make(Packed(Tilted().file, GetParam(), {"--simulator", "--interface", "poses", "--axes", "body"}));
    ASSERT_TRUE(instance->Exists()) << instance->LogText();
    // The start values are where the scenario begins.
    std::vector<std::vector<double>> forces, torques;
    instance->Start(0.0, 1.0);
    for (std::size_t step = 0; step < rows; ++step) {
        const double time = 0.05 * static_cast<double>(step);
        if (step > 0) {
            // Without speeds the field is that of the poses given.
            ASSERT_EQ(instance->SetNumbers("mover.position", TiltedScenario::Position(time)), 0);
            ASSERT_EQ(instance->SetNumbers("mover.orientation", TiltedScenario::Orientation(time)), 0);
            ASSERT_EQ(instance->DoStep(0.05 * static_cast<double>(step - 1), 0.05), 0) << instance->LogText();
        }
        forces.push_back(instance->Vector("mover.force", 3));
        torques.push_back(instance->Vector("mover.torque", 3));
    }
    ExpectColumns(states, {"mover.Force_x [N]", "mover.Force_y [N]", "mover.Force_z [N]"}, forces);
    ExpectColumns(states, {"mover.Torque_x [mN m]", "mover.Torque_y [mN m]", "mover.Torque_z [mN m]"}, torques, 1e3);
}

TEST_P(Run, OfAFreeJointGivesWhatTheHostGives) {
    const std::filesystem::path states = HostStates(Tilted().file, "tilted.csv");
    const auto instance = Make(Packed(Tilted().file, GetParam()));
    instance->Start(0.0, 1.0);
    std::vector<std::vector<double>> forces = {instance->Vector("flight.force", 3)};
    std::vector<std::vector<double>> torques = {instance->Vector("flight.torque", 3)};
    for (int step = 0; step < 4; ++step) {
        const double time = 0.05 * step;
        ASSERT_EQ(instance->SetNumbers("flight.displacement", TiltedScenario::Displacement(time)), 0);
        ASSERT_EQ(instance->SetNumbers("flight.velocity", {0.0, 0.03, -0.02}), 0);
        ASSERT_EQ(instance->SetNumbers("flight.orientation", TiltedScenario::Turn(time)), 0);
        ASSERT_EQ(instance->SetNumbers("flight.angularVelocity", {2.0 / 3.0, 4.0 / 3.0, 4.0 / 3.0}), 0);
        ASSERT_EQ(instance->DoStep(time, 0.05), 0) << instance->LogText();
        forces.push_back(instance->Vector("flight.force", 3));
        torques.push_back(instance->Vector("flight.torque", 3));
    }
    ExpectColumns(states, {"flight.Field force x [N]", "flight.Field force y [N]", "flight.Field force z [N]"}, forces);
    ExpectColumns(states, {"flight.Field torque x [N m]", "flight.Field torque y [N m]", "flight.Field torque z [N m]"},
                  torques);
}

TEST_P(Run, TakesStepsOfAnyLengthAndLeadsBySpeeds) {
    const Fmu& fmu = Packed(Coupling(), GetParam());
    const auto leading = Make(fmu, "leading"), placed = Make(fmu, "placed");
    leading->Start(0.0, 1.0);
    placed->Start(0.0, 1.0);
    double time = 0.0;
    for (const double step : {0.01, 0.025, 0.003, 0.0007}) {
        ASSERT_EQ(leading->SetNumbers("driven_hinge.angle", {3.0 * time}), 0);
        ASSERT_EQ(leading->SetNumbers("driven_hinge.angularVelocity", {3.0}), 0);
        ASSERT_EQ(placed->SetNumbers("driven_hinge.angle", {3.0 * (time + step)}), 0);
        ASSERT_EQ(leading->DoStep(time, step), 0) << leading->LogText();
        ASSERT_EQ(placed->DoStep(time, step), 0) << placed->LogText();
        time += step;
        EXPECT_NEAR(leading->Number("driven_hinge.torque"), placed->Number("driven_hinge.torque"), tolerance);
        EXPECT_EQ(leading->Number("time"), time);
    }
    EXPECT_NE(leading->Number("driven_hinge.torque"), 0.0);
}

TEST_P(Run, OfTwoInstancesInTwoThreadsGivesWhatOneAloneGives) {
    const Fmu& fmu = Packed(Coupling(), GetParam());
    const auto run = [&](double angularVelocity, std::vector<double>& torques) {
        const auto instance = Make(fmu, "twin"); // both of one name
        instance->Start(0.0, 1.0);
        for (int step = 0; step < 5; ++step) {
            instance->SetNumbers("driven_hinge.angle", {angularVelocity * 0.01 * step});
            instance->SetNumbers("driven_hinge.angularVelocity", {angularVelocity});
            EXPECT_EQ(instance->DoStep(0.01 * step, 0.01), 0) << instance->LogText();
            torques.push_back(instance->Number("driven_hinge.torque"));
        }
        EXPECT_EQ(instance->Terminate(), 0);
    };
    std::vector<double> slow, fast, slowAlone, fastAlone;
    std::thread other([&] { run(2.0, slow); });
    run(5.0, fast);
    other.join();
    run(2.0, slowAlone);
    run(5.0, fastAlone);
    EXPECT_EQ(slow, slowAlone);
    EXPECT_EQ(fast, fastAlone);
    EXPECT_NE(slow, fast);
    for (const char* folder : {"twin", "twin-2", "twin-3", "twin-4"}) {
        EXPECT_TRUE(std::filesystem::exists(m_output / folder / "torque.vantor")) << folder;
    }
}

TEST(InputDerivatives, LeadFurtherThanSpeeds) {
    const Fmu& fmu = Packed(Coupling(), 2);
    const endtoend::ScratchFolder output;
    const auto placed = Instance::Of(fmu, "placed", output.Path());
    placed->Start(0.0, 1.0);
    // 1 + 2 t + 1.5 t^2 at the end of a step of 0.1
    ASSERT_EQ(placed->SetNumbers("driven_hinge.angle", {1.215}), 0);
    ASSERT_EQ(placed->DoStep(0.0, 0.1), 0);
    const auto instance = Instance::Of(fmu, "leading", output.Path());
    instance->Start(0.0, 1.0);
    ASSERT_EQ(instance->SetNumbers("driven_hinge.angle", {1.0}), 0);
    // Derivatives come before the speed that is given besides.
    ASSERT_EQ(instance->SetNumbers("driven_hinge.angularVelocity", {77.0}), 0);
    ASSERT_EQ(instance->SetDerivatives("driven_hinge.angle", {{1, 2.0}, {2, 3.0}}), 0);
    ASSERT_EQ(instance->DoStep(0.0, 0.1), 0) << instance->LogText();
    EXPECT_NEAR(instance->Number("driven_hinge.torque"), placed->Number("driven_hinge.torque"), tolerance);
    // They held for that step.
    ASSERT_EQ(instance->SetNumbers("driven_hinge.angle", {1.215}), 0);
    ASSERT_EQ(instance->SetNumbers("driven_hinge.angularVelocity", {0.0}), 0);
    ASSERT_EQ(instance->DoStep(0.1, 0.1), 0);
    EXPECT_NEAR(instance->Number("driven_hinge.torque"), placed->Number("driven_hinge.torque"), tolerance);
}

TEST_P(Run, UsesTheMachinesDesktopWhereItBringsNone) {
    std::vector<double> torques;
    for (const std::vector<std::string>& words : {std::vector<std::string>{}, {"--simulator"}}) {
        const auto instance = Make(Packed(Coupling(), GetParam(), words));
        instance->Start(0.0, 1.0);
        EXPECT_EQ(instance->SetNumbers("driven_hinge.angle", {0.3}), 0);
        EXPECT_EQ(instance->DoStep(0.0, 0.1), 0) << instance->LogText();
        torques.push_back(instance->Number("driven_hinge.torque"));
        EXPECT_EQ(instance->Terminate(), 0);
    }
    EXPECT_NE(torques[0], 0.0);
    EXPECT_NEAR(torques[0], torques[1], tolerance);
}

TEST_P(Run, BeginsAtAnyTime) {
    const auto instance = Make(Packed(Coupling(), GetParam()));
    instance->Start(7.0, 8.0);
    EXPECT_EQ(instance->Number("time"), 7.0);
    EXPECT_EQ(instance->DoStep(7.0, 0.5), 0) << instance->LogText();
    EXPECT_EQ(instance->Number("time"), 7.5);
    // To the stop time, not beyond.
    EXPECT_EQ(instance->DoStep(7.5, 0.6), 3);
    EXPECT_EQ(instance->DoStep(7.5, 0.5), 0) << instance->LogText();
}

} // namespace
} // namespace importer
