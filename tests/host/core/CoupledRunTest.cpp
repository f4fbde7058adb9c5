#include "host/core/CoupledRun.h"

#include "host/core/StateFile.h"
#include "scenario/DesktopFrame.h"
#include "scenario/Text.h"
#include "tests/host/Joints.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::host {

using namespace scenario;

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

/// A coupling that writes down its calls, answers as told, and pulls every body back to z = 0 with 100 N/m.
class FakeCoupling : public IKinoraVeltrixInterface {
public:
    std::vector<std::string> calls;
    /// Name of the operation that fails.
    std::string failing;
    /// What the launches throw, one after the other, before one succeeds.
    std::vector<std::string> launchErrors;
    std::size_t missingResults = 0;
    /// The time of the step in which the desktop dies.
    double endsAtTime = std::numeric_limits<double>::infinity();
    std::map<MessageSeverity, std::vector<std::string>> messages;
    /// Added to the load of every body.
    Result load;
    /// What InitMagneticObjects and the last Analyze got.
    std::vector<Group> groups;
    std::map<std::string, Material> materials;
    std::vector<Transform> transforms;

    bool GetMessages(std::vector<std::string>& texts, MessageSeverity severity) override {
        texts = messages[severity];
        return !m_hasEnded;
    }
    bool GetVeltrixDesigns(const std::string&, std::vector<std::string>&) override { return false; }
    bool OpenProject(const std::string& path, const std::string& design) override {
        return Answer("OpenProject", PathFromUtf8(path).filename().u8string() + " " + design);
    }
    bool CreateProject(const std::string& path, const std::string& geometry, const std::string& units) override {
        if (!launchErrors.empty()) {
            const LaunchDesktopExeption error(launchErrors.front());
            launchErrors.erase(launchErrors.begin());
            throw error;
        }
        std::ofstream(PathFromUtf8(path)) << "project";
        return Answer("CreateProject", PathFromUtf8(path).filename().u8string() + " " +
                                           PathFromUtf8(geometry).filename().u8string() + " " + units);
    }
    bool InitGeometry(const std::string&, const std::string&) override { return Answer("InitGeometry", ""); }
    bool InitMagneticObjects(const std::vector<Group>& newGroups,
                             const std::map<std::string, Material>& newMaterials) override {
        groups = newGroups;
        materials = newMaterials;
        std::string text;
        for (const Group& group : groups) {
            text += fmt::format("{}@{:.3f} ", group.transform.name, group.transform.translation[2]);
        }
        for (const auto& [object, material] : materials) {
            text += object + "=" + material.name;
        }
        return Answer("InitMagneticObjects", text);
    }
    bool Analyze(double time, const std::vector<Transform>& newTransforms, std::vector<Result>& results,
                 int& status) override {
        transforms = newTransforms;
        m_hasEnded = m_hasEnded || time >= endsAtTime;
        if (failing == "Analyze" && time > 0.0) {
            status = 0x0202;
        }
        for (std::size_t i = 0; i + missingResults < transforms.size(); ++i) {
            results.push_back(load);
            results.back().force[2] += -100.0 * transforms[i].translation[2];
        }
        const std::string text = fmt::format("{:.2f} z={:.4f}", time, transforms.at(0).translation[2]);
        return time > 0.0 ? Answer("Analyze", text) : (calls.push_back("Analyze " + text), true);
    }
    bool SaveProject() override { return Answer("SaveProject", ""); }
    bool CloseProject() override { return Answer("CloseProject", ""); }
    bool QuitApplication() override { return Answer("QuitApplication", ""); }
    bool ReleaseApplication() override { return Answer("ReleaseApplication", ""); }

private:
    bool Answer(const std::string& operation, const std::string& text) {
        calls.push_back(text.empty() ? operation : operation + " " + text);
        return operation != failing && !m_hasEnded;
    }

    bool m_hasEnded = false;
};

class QuietListener : public RunListener {
public:
    void OnPhase(const std::string&) override {}
    void OnWarning(const std::string& text) override { warnings.push_back(text); }
    void OnSolve() override { ++solves; }
    void OnStep(const StepRecord& record) override { steps.push_back(record); }
    int solves = 0;
    std::vector<std::string> warnings;
    std::vector<StepRecord> steps;
};

class CoupledRunTest : public testing::Test {
protected:
    void SetUp() override {
        m_scenario.outputFolder = std::filesystem::temp_directory_path() / "kinora-coupled-run-test";
        std::filesystem::remove_all(m_scenario.outputFolder);
        m_scenario.projectFile = "run.vantor";
        std::filesystem::create_directories(m_scenario.outputFolder);
        m_scenario.geometryFile = m_scenario.outputFolder / "magnets.obj";
        std::ofstream(m_scenario.geometryFile, std::ios::binary) << "o magnet\n";
        m_scenario.units = "mm";
        m_scenario.csvFile = "states.csv";
        Body body;
        body.name = "bob";
        body.objects = {"magnet"};
        body.mass = 1.0;
        body.X_WB0.p_WB_W = {0.0, 0.0, 0.01};
        m_scenario.bodies = {body};
        m_scenario.materials["magnet"].name = "magnet_1T";
        m_scenario.joints = {OneCoordinateJoint("slide", JointType::Slider, Vector::UnitZ(), FreeMotion())};
        m_scenario.stepping = {0.05, 3};
    }

    RunEnd Run() {
        CoupledRun run(m_scenario, m_options, m_coupling, m_listener);
        return run.Run();
    }

    std::string StatesFile() const { return ReadFile(m_scenario.outputFolder / "states.csv"); }

    OperationFailed FailureOf() {
        try {
            Run();
        } catch (const OperationFailed& failure) {
            return failure;
        }
        ADD_FAILURE() << "the run did not fail";
        return OperationFailed("", {});
    }

    std::string RefusalOf() {
        try {
            Run();
        } catch (const InputError& error) {
            return error.what();
        }
        ADD_FAILURE() << "the run was not refused";
        return {};
    }

    std::vector<std::string> FilesThere() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_scenario.outputFolder)) {
            names.push_back(entry.path().filename().u8string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    Scenario m_scenario;
    RunOptions m_options;
    FakeCoupling m_coupling;
    QuietListener m_listener;
};

TEST_F(CoupledRunTest, CallsInTheDocumentedOrder) {
    m_scenario.joints[0].coordinates[0].motion =
        PrescribedMotion(Expression::Parse("0.1*t", Expression::Variables::Time));
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_THAT(m_coupling.calls,
                ElementsAre("CreateProject run.vantor magnets.obj mm", "InitMagneticObjects bob@0.010 magnet=magnet_1T",
                            "SaveProject", "Analyze 0.00 z=0.0100", "Analyze 0.05 z=0.0150", "Analyze 0.10 z=0.0200",
                            "Analyze 0.15 z=0.0250", "SaveProject", "CloseProject", "QuitApplication"));
}

TEST_F(CoupledRunTest, TellsWhatLooksLikeASlipAndRuns) {
    m_scenario.stepping.stepSeconds = 0.005;
    m_scenario.warnings = {"scenario.json:7: /materials/magnt: no body has an object \"magnt\"."};
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_EQ(m_listener.warnings, m_scenario.warnings);
}

TEST_F(CoupledRunTest, ReleasesTheDesktopWhenAsked) {
    m_scenario.desktop.atEnd = AtEnd::Release;
    Run();
    EXPECT_EQ(m_coupling.calls.back(), "ReleaseApplication");
}

TEST_F(CoupledRunTest, LeavesADesktopAloneInWhichOthersWork) {
    m_options.isDesktopShared = [this] { return m_coupling.calls.back() == "CloseProject"; };
    Run();
    EXPECT_EQ(m_coupling.calls.back(), "ReleaseApplication");
    EXPECT_EQ(m_coupling.calls[m_coupling.calls.size() - 2], "CloseProject");
}

TEST_F(CoupledRunTest, SwingsInTheFieldLikeASpring) {
    m_scenario.stepping = {0.001, 628};
    Run();
    // k/m = 100: a full period within 0.628 s.
    EXPECT_NEAR(m_listener.steps.back().poses[0].p_WB_W.z(), 0.01, 1e-6);
    EXPECT_NEAR(m_listener.steps[314].poses[0].p_WB_W.z(), -0.01, 1e-6);
    EXPECT_NEAR(m_listener.steps.back().mechanism.joints[0].energy.Imbalance(), 0.0, 1e-8);
}

TEST_F(CoupledRunTest, KeepsAnEarlierProjectUnlessTold) {
    Run();
    m_coupling.calls.clear();
    try {
        Run();
        FAIL();
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("--overwrite replaces it"));
    }
    EXPECT_TRUE(m_coupling.calls.empty());
    m_scenario.overwrite = true;
    EXPECT_EQ(Run(), RunEnd::Complete);
}

TEST_F(CoupledRunTest, ResumedRunEqualsTheWholeOneToTheLastBit) {
    m_scenario.stepping = {0.01, 30};
    Run();
    const std::string whole = StatesFile();
    SetUp();
    m_scenario.stepping = {0.01, 30};
    m_options.stepLimit = 12;
    EXPECT_EQ(Run(), RunEnd::Interrupted);
    EXPECT_NE(StatesFile(), whole);
    m_options.stepLimit = -1;
    m_options.resume = true;
    m_coupling.calls.clear();
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_EQ(m_coupling.calls[0], "OpenProject run.vantor Veltrix3DDesign1");
    EXPECT_THAT(m_coupling.calls[3], HasSubstr("Analyze 0.12"));
    EXPECT_EQ(StatesFile(), whole);
}

/// A bob that flies and tumbles, and a shaft beside it, with everything between them that there is.
class SixDegrees : public CoupledRunTest {
protected:
    void SetUp() override {
        CoupledRunTest::SetUp();
        Body& bob = m_scenario.bodies[0];
        bob.principalInertia_B = {0.01, 0.02, 0.025};
        bob.p_BC_B = {0.001, 0.0, 0.002};
        Body shaft = bob;
        shaft.name = "shaft";
        shaft.objects = {};
        m_scenario.bodies.push_back(shaft);
        FreePlacement start;
        start.turn = TurnBy({0.3, -0.2, 0.1});
        start.angularVelocity_W = {1.0, 20.0, -3.0};
        start.damping = 0.1;
        start.angularDamping = 1e-3;
        m_scenario.joints = {PlacementJoint("flight", JointType::Free, start),
                             OneCoordinateJoint("spindle", JointType::Cylinder, Vector::UnitZ(), FreeMotion())};
        m_scenario.joints[1].bodies = {1};
        m_scenario.joints[1].coordinates.insert(m_scenario.joints[1].coordinates.begin(),
                                                {Coordinate::Kind::Turn, FreeMotion()});
        SpringElement spring;
        spring.name = "coil";
        spring.from.body = 1;
        spring.from.X_BF.p_WB_W = {0.05, 0.0, 0.0};
        spring.to.body = 0;
        spring.stiffness = 30.0;
        spring.damping = 0.2;
        m_scenario.springs = {spring};
        Bushing bushing;
        bushing.name = "mount";
        bushing.to.body = 0;
        bushing.angularStiffness = {0.1, 0.2, 0.3};
        bushing.damping = {0.1, 0.0, 0.3};
        m_scenario.bushings = {bushing};
        m_scenario.loads = {{0,
                             {Expression::Parse("0.1*x + t", Expression::Variables::TimeAndPlace), {}, {}},
                             {},
                             true,
                             Vector(0.0, 0.01, 0.0)}};
        m_scenario.stepping = {0.01, 20};
    }
};

TEST_F(SixDegrees, ResumedRunEqualsTheWholeOneToTheLastBit) {
    Run();
    const std::string whole = StatesFile();
    SetUp();
    m_options.stepLimit = 8;
    EXPECT_EQ(Run(), RunEnd::Interrupted);
    m_options.stepLimit = -1;
    m_options.resume = true;
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_EQ(StatesFile(), whole);
}

TEST_F(SixDegrees, TellsByKeyWhatHasChangedSinceTheRunThatIsResumed) {
    m_options.stepLimit = 2;
    Run();
    m_options.resume = true;
    std::get<FreePlacement>(m_scenario.joints[0].placement).angularVelocity_W.z() = 5.0;
    m_scenario.springs[0].damping = 0.3;
    m_scenario.bushings[0].stiffness.x() = 7.0;
    m_scenario.loads[0].isInBodyAxes = false;
    const std::string refusal = RefusalOf();
    EXPECT_THAT(refusal, HasSubstr("/bushings/mount/stiffness was 0, 0, 0, is 7, 0, 0.\n"));
    EXPECT_THAT(refusal, HasSubstr("/joints/flight/free/angularVelocity was 1, 20, -3, is 1, 20, 5.\n"));
    EXPECT_THAT(refusal, HasSubstr("/loads/0/axes was body, is global.\n"));
    EXPECT_THAT(refusal, HasSubstr("/springs/coil/damping was 0.2, is 0.3.\n"));
}

TEST_F(SixDegrees, AnotherTypeOfJointCannotBeForced) {
    m_options.stepLimit = 2;
    Run();
    m_options.resume = true;
    m_options.force = true;
    m_scenario.joints[0].type = JointType::Ball;
    EXPECT_THAT(RefusalOf(), HasSubstr("cannot resume: joint \"flight\" was of another type then."));
}

TEST_F(CoupledRunTest, RefusesToResumeTheStateOfAnEarlierVersion) {
    m_options.stepLimit = 2;
    Run();
    m_options.resume = true;
    m_options.force = true;
    const std::filesystem::path file = m_scenario.outputFolder / "run.state.json";
    std::string state = ReadFile(file);
    state.replace(state.find("\"format\": 2"), 11, "\"format\": 1");
    WriteWholeFile(file, state);
    EXPECT_THAT(RefusalOf(),
                HasSubstr("the run was made by another version of this program; start again without --resume."));
}

TEST_F(SixDegrees, StatesNameEveryQuantityWithItsUnit) {
    m_scenario.stepping = {0.01, 0};
    Run();
    const std::string states = StatesFile();
    const std::string head = states.substr(0, states.find('\n'));
    EXPECT_THAT(head, HasSubstr(",flight.Displacement x [m],flight.Displacement y [m],flight.Displacement z [m],"
                                "flight.Velocity x [m/s],flight.Velocity y [m/s],flight.Velocity z [m/s],"
                                "flight.Turn x [rad],flight.Turn y [rad],flight.Turn z [rad],"
                                "flight.Angular velocity x [rad/s],"));
    EXPECT_THAT(head, HasSubstr(",flight.Field force x [N],flight.Field force y [N],flight.Field force z [N],"
                                "flight.Field torque x [N m],flight.Field torque y [N m],flight.Field torque z [N m],"
                                "flight.Load x [N],flight.Load y [N],flight.Load z [N],"
                                "flight.Load torque x [N m],flight.Load torque y [N m],flight.Load torque z [N m],"
                                "flight.Kinetic [J],flight.Potential [J],flight.Field work [J],flight.Load work [J],"
                                "flight.Element work [J],flight.Dissipated [J],flight.Imbalance [J],"));
    EXPECT_THAT(head, HasSubstr(",spindle.Turn [rad],spindle.Turn speed [rad/s],spindle.Turn field torque [N m],"
                                "spindle.Turn load [N m],spindle.Slide [m],spindle.Slide speed [m/s],"
                                "spindle.Slide field force [N],spindle.Slide load [N],spindle.Kinetic [J],"));
    EXPECT_THAT(head, EndsWith(",coil.Length [m],coil.Force [N],coil.Potential [J],coil.Dissipated [J],"
                               "mount.Way x [m],mount.Way y [m],mount.Way z [m],"
                               "mount.Turn x [rad],mount.Turn y [rad],mount.Turn z [rad],"
                               "mount.Bushing force x [N],mount.Bushing force y [N],mount.Bushing force z [N],"
                               "mount.Bushing torque x [N m],mount.Bushing torque y [N m],mount.Bushing torque z [N m],"
                               "mount.Potential [J],mount.Dissipated [J]"));
    EXPECT_EQ(std::count(head.begin(), head.end(), ','), std::count(states.begin(), states.end(), ',') / 2);
}

TEST_F(CoupledRunTest, ResumeDropsLinesBeyondTheSavedState) {
    m_scenario.stepping = {0.01, 5};
    Run();
    const std::string whole = StatesFile();
    const SavedState state = ReadState(FilesOf(m_scenario).state, m_scenario);
    std::ofstream(m_scenario.outputFolder / "states.csv", std::ios::app) << "6,half a li";
    m_options.resume = true;
    m_scenario.stepping.steps = 6;
    Run();
    EXPECT_EQ(state.step, 5);
    EXPECT_THAT(StatesFile(), testing::StartsWith(whole + "6,0.06,"));
}

TEST_F(CoupledRunTest, ResumeCutsWhatAKilledStepLeftInTheReports) {
    m_options.stepLimit = 2;
    Run();
    const std::filesystem::path reports = FilesOf(m_scenario).reportsFolder;
    std::filesystem::create_directories(reports);
    std::ofstream(reports / "run.coupling.csv", std::ios::binary) << "Step\r\n0\r\n1\r\n";
    m_options.resume = true;
    m_options.stepLimit = 1;
    Run();
    std::ofstream(reports / "run.coupling.csv", std::ios::binary | std::ios::app) << "2\r\n3,0.0";
    Run();
    EXPECT_EQ(ReadFile(reports / "run.coupling.csv"), "Step\r\n0\r\n1\r\n");
}

TEST_F(CoupledRunTest, RefusesToResumeWhatIsNotThere) {
    m_options.resume = true;
    EXPECT_THROW(Run(), InputError);
    EXPECT_TRUE(m_coupling.calls.empty());
}

TEST_F(CoupledRunTest, RefusesToResumeAnotherScenariosState) {
    Run();
    m_options.resume = true;
    m_scenario.stepping.stepSeconds = 0.04;
    EXPECT_THROW(Run(), InputError);
    m_scenario.stepping.stepSeconds = 0.05;
    m_scenario.joints[0].name = "other";
    EXPECT_THROW(Run(), InputError);
    std::ofstream(FilesOf(m_scenario).state) << "{ broken";
    EXPECT_THROW(Run(), InputError);
}

TEST_F(CoupledRunTest, TellsByKeyWhatHasChangedSinceTheRunThatIsResumed) {
    m_options.stepLimit = 2;
    Run();
    m_options.resume = true;
    m_coupling.calls.clear();
    FreeMotionOf(m_scenario.joints[0]).spring.stiffness = 2.5;
    m_scenario.materials["magnet"].coercivityDirection[1] = 1.0;
    std::ofstream(m_scenario.geometryFile, std::ios::binary) << "o other\n";
    const std::string refusal = RefusalOf();
    EXPECT_THAT(refusal,
                HasSubstr("the scenario has changed since: /joints/slide/free/spring/stiffness was 0, is 2.5.\n"));
    EXPECT_THAT(refusal, HasSubstr("/materials/magnet/direction was 0, 0, 0, is 0, 1, 0.\n"));
    EXPECT_THAT(refusal, HasSubstr("/geometry/file was 9 bytes with digest "));
    EXPECT_THAT(refusal, HasSubstr("--resume --force"));
    EXPECT_TRUE(m_coupling.calls.empty());
    m_options.force = true;
    EXPECT_EQ(Run(), RunEnd::Complete);
}

TEST_F(CoupledRunTest, MayGoOnForLonger) {
    Run();
    m_options.resume = true;
    m_scenario.stepping.steps = 5;
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_EQ(m_coupling.calls[m_coupling.calls.size() - 4].substr(0, 12), "Analyze 0.25");
}

/// A result file, whose presence means a complete run.
class WithResult : public CoupledRunTest {
protected:
    void SetUp() override {
        CoupledRunTest::SetUp();
        m_scenario.resultFile = m_scenario.outputFolder / "result.json";
        Run();
        std::ofstream(*m_scenario.resultFile) << "earlier";
    }

    bool IsThere() const { return std::filesystem::exists(*m_scenario.resultFile); }
};

TEST_F(WithResult, IsKeptByACompleteRun) {
    m_options.resume = true;
    Run();
    EXPECT_TRUE(IsThere());
}

TEST_F(WithResult, GoesBeforeTheRunIsReplaced) {
    m_scenario.overwrite = true;
    m_options.stepLimit = 1;
    Run();
    EXPECT_FALSE(IsThere());
    EXPECT_THAT(FilesThere(), testing::Not(testing::Contains(HasSubstr("earlier"))));
}

TEST_F(WithResult, GoesBeforeTheRunGoesOnForLonger) {
    m_scenario.stepping.steps = 5;
    m_options.resume = true;
    Run();
    EXPECT_FALSE(IsThere());
}

TEST_F(WithResult, ComesBackWithTheEarlierRun) {
    m_scenario.overwrite = true;
    m_coupling.failing = "InitMagneticObjects";
    FailureOf();
    EXPECT_EQ(ReadFile(*m_scenario.resultFile), "earlier");
}

TEST_F(WithResult, IsNoOtherFile) {
    m_scenario.resultFile = m_scenario.outputFolder / "states.csv";
    EXPECT_THROW(RequireDistinctFiles(FilesOf(m_scenario), {}, {}), InputError);
}

TEST_F(CoupledRunTest, ResumingACompleteRunStartsNothing) {
    Run();
    m_options.resume = true;
    m_coupling.calls.clear();
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_TRUE(m_coupling.calls.empty());
}

TEST_F(CoupledRunTest, ARunThatCameToNothingLeavesNoFolder) {
    m_scenario.projectFile = "deep/run.vantor";
    m_coupling.launchErrors = {"Please check your QUORIX Vantor Desktop installation."};
    FailureOf();
    EXPECT_FALSE(std::filesystem::exists(m_scenario.outputFolder / "deep"));
}

TEST_F(CoupledRunTest, RefusesToResumeWithoutItsFilesUnlessForced) {
    m_options.stepLimit = 2;
    Run();
    m_options.resume = true;
    std::filesystem::remove(m_scenario.outputFolder / "states.csv");
    EXPECT_THAT(RefusalOf(), HasSubstr("states.csv: the file is missing."));
    std::ofstream(m_scenario.outputFolder / "states.csv", std::ios::binary) << "Step\n0";
    EXPECT_THAT(RefusalOf(), HasSubstr("states.csv: 6 bytes, but the run had written "));
    m_options.force = true;
    Run();
    // The partial line is gone all the same.
    EXPECT_THAT(StatesFile(), testing::StartsWith("Step\n2,0.1,"));
}

TEST_F(CoupledRunTest, AProjectWithoutASolvedStepIsReplacedUnasked) {
    m_coupling.failing = "InitMagneticObjects";
    EXPECT_THAT(FailureOf().what(), testing::StartsWith("InitMagneticObjects"));
    EXPECT_TRUE(std::filesystem::exists(FilesOf(m_scenario).project));
    m_coupling.failing.clear();
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_THAT(RefusalOf(), HasSubstr("--overwrite replaces it"));
}

TEST_F(CoupledRunTest, ClosesTheProjectThatABrokenSetUpMayHaveLeftInTheDesktop) {
    m_options.closeLeftProject = [this](const std::filesystem::path& project) {
        m_coupling.calls.push_back("close " + project.filename().u8string());
    };
    m_coupling.failing = "InitMagneticObjects";
    FailureOf();
    EXPECT_THAT(m_coupling.calls, testing::Not(testing::Contains("close run.vantor")));
    m_coupling.failing.clear();
    m_coupling.calls.clear();
    Run();
    EXPECT_EQ(m_coupling.calls[0], "close run.vantor");
    EXPECT_THAT(m_coupling.calls[1], testing::StartsWith("CreateProject"));
}

TEST_F(CoupledRunTest, ResumingARunWithoutASolvedStepBeginsIt) {
    m_coupling.failing = "InitMagneticObjects";
    FailureOf();
    m_coupling.failing.clear();
    m_coupling.calls.clear();
    m_options.resume = true;
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_THAT(m_coupling.calls[0], testing::StartsWith("CreateProject"));
}

TEST_F(CoupledRunTest, AProjectOfSomebodyElseIsNotReplacedUnasked) {
    std::ofstream(FilesOf(m_scenario).project) << "mine";
    EXPECT_THAT(RefusalOf(), HasSubstr("--overwrite replaces it"));
    EXPECT_EQ(ReadFile(FilesOf(m_scenario).project), "mine");
}

TEST_F(CoupledRunTest, AFailedSetUpPutsTheEarlierRunBack) {
    m_options.stepLimit = 2;
    Run();
    const std::string state = ReadFile(FilesOf(m_scenario).state);
    std::ofstream(FilesOf(m_scenario).project) << "solved before";
    m_scenario.overwrite = true;
    for (const char* operation : {"CreateProject", "InitMagneticObjects", "SaveProject"}) {
        m_coupling.failing = operation;
        FailureOf();
        EXPECT_EQ(ReadFile(FilesOf(m_scenario).project), "solved before") << operation;
        EXPECT_EQ(ReadFile(FilesOf(m_scenario).state), state) << operation;
    }
    m_coupling.failing.clear();
    Run();
    EXPECT_EQ(ReadFile(FilesOf(m_scenario).project), "project");
    EXPECT_EQ(FilesThere(), (std::vector<std::string>{"magnets.obj", "run.state.json", "run.vantor", "states.csv"}));
}

TEST_F(CoupledRunTest, ARunThatWasKilledWhileItReplacedAnEarlierOneLosesNothing) {
    Run();
    std::ofstream(FilesOf(m_scenario).project) << "solved before";
    const RunFiles files = FilesOf(m_scenario);
    EarlierRun(files).SetAside();
    m_coupling.calls.clear();
    EXPECT_THAT(RefusalOf(), HasSubstr("--overwrite replaces it"));
    EXPECT_EQ(ReadFile(files.project), "solved before");
    EXPECT_EQ(ReadState(files.state, m_scenario).step, 3);
}

TEST_F(CoupledRunTest, WhatCannotBeWrittenIsFoundBeforeAnythingIsReplaced) {
    Run();
    std::ofstream(FilesOf(m_scenario).project) << "solved before";
    m_scenario.overwrite = true;
    m_coupling.calls.clear();
    m_options.furtherOutputs = {{"the report page", m_scenario.outputFolder / "none" / "page.html"}};
    EXPECT_THAT(RefusalOf(), HasSubstr("page.html: the report page cannot be written"));
    m_options.furtherOutputs.clear();
    m_scenario.csvFile = std::filesystem::absolute(m_scenario.outputFolder / "none" / "states.csv");
    EXPECT_THAT(RefusalOf(), HasSubstr("states.csv: the states (csv) cannot be written"));
    EXPECT_TRUE(m_coupling.calls.empty());
    EXPECT_EQ(ReadFile(FilesOf(m_scenario).project), "solved before");
}

TEST_F(CoupledRunTest, KeepsItsFolderForItself) {
    const programs::FolderLock other(FilesOf(m_scenario).lock);
    EXPECT_THAT(RefusalOf(), HasSubstr("another run works in this folder (process "));
    EXPECT_TRUE(m_coupling.calls.empty());
}

TEST_F(CoupledRunTest, InterruptFinishesTheStepSavesAndCloses) {
    m_options.isInterrupted = [this] { return m_listener.steps.size() == 2; };
    EXPECT_EQ(Run(), RunEnd::Interrupted);
    EXPECT_EQ(m_listener.steps.size(), 2u);
    EXPECT_EQ(m_listener.solves, 2);
    EXPECT_EQ(m_coupling.calls.back(), "QuitApplication");
    EXPECT_EQ(m_coupling.calls[m_coupling.calls.size() - 3], "SaveProject");
}

TEST_F(CoupledRunTest, InterruptAfterTheLastStepIsACompleteRun) {
    m_options.isInterrupted = [this] { return m_listener.steps.size() == 4; };
    EXPECT_EQ(Run(), RunEnd::Complete);
}

TEST_F(CoupledRunTest, FailedLaunchTouchesNothingElse) {
    m_coupling.launchErrors = {"Please check your QUORIX Vantor Desktop installation."};
    m_options.launchAdvice = {"Install it.", "Choose another version."};
    const OperationFailed failure = FailureOf();
    EXPECT_STREQ(failure.what(), "LaunchDesktop failed: Please check your QUORIX Vantor Desktop installation.");
    EXPECT_THAT(failure.Advice(), ElementsAre("Install it.", "Choose another version."));
    EXPECT_TRUE(m_coupling.calls.empty());
}

TEST_F(CoupledRunTest, TriesAgainWhenAnInstalledDesktopDoesNotStart) {
    const std::string refusal =
        "QUORIX Vantor Desktop failed to launch. Please check your license or other configuration.";
    m_options.launchPause = std::chrono::milliseconds(1);
    m_scenario.stepping.stepSeconds = 0.005;
    m_coupling.launchErrors = {refusal, refusal};
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_EQ(m_listener.warnings.size(), 2u);
    SetUp();
    m_coupling.launchErrors = {refusal, refusal, refusal};
    EXPECT_EQ("LaunchDesktop failed: " + refusal, FailureOf().what());
}

TEST_F(CoupledRunTest, EveryFailureNamesItsOperationAndClosesUp) {
    for (const char* operation : {"CreateProject", "InitMagneticObjects", "Analyze", "SaveProject", "CloseProject"}) {
        SetUp();
        m_coupling.calls.clear();
        m_coupling.failing = operation;
        EXPECT_THAT(FailureOf().what(), testing::StartsWith(operation));
        EXPECT_EQ(m_coupling.calls.back(), "QuitApplication") << operation;
    }
}

TEST_F(CoupledRunTest, LetsGoOfADesktopThatRefusesToQuit) {
    m_coupling.failing = "QuitApplication";
    EXPECT_EQ(Run(), RunEnd::Complete);
    EXPECT_EQ(m_coupling.calls.back(), "ReleaseApplication");
}

TEST_F(CoupledRunTest, FailureCarriesTheMessagesMostSevereFirstAndEachOnce) {
    m_coupling.failing = "Analyze";
    // A desktop that answers a severity with everything that is at least as severe.
    m_coupling.messages = {{Severity::Fatal, {}},
                           {Severity::Error, {"overlap"}},
                           {Severity::Warning, {"coarse", "overlap"}},
                           {Severity::Info, {"pass 1", "coarse", "overlap"}}};
    m_options.scriptErrorText = [](std::int32_t code) {
        return code == 0x0202 ? "0x0202: Bad argument value" : nullptr;
    };
    const OperationFailed failure = FailureOf();
    EXPECT_STREQ(failure.what(), "Analyze failed: step 1 at 0.05 s, 0x0202: Bad argument value.");
    EXPECT_THAT(failure.messages, ElementsAre(std::pair(Severity::Error, std::string("overlap")),
                                              std::pair(Severity::Warning, std::string("coarse")),
                                              std::pair(Severity::Info, std::string("pass 1"))));
}

TEST_F(CoupledRunTest, TellsThatTheDesktopHasEnded) {
    m_coupling.endsAtTime = 0.1;
    m_options.launchHint = "restart it";
    const OperationFailed failure = FailureOf();
    EXPECT_STREQ(failure.what(),
                 "Analyze failed: step 2 at 0.1 s. The desktop has ended: it was closed, killed, or has "
                 "crashed.");
    EXPECT_THAT(failure.Advice(),
                ElementsAre("What was solved up to step 1 is kept: --resume goes on with it.", "restart it"));
}

TEST_F(CoupledRunTest, EndsWhenTheNumbersRunAway) {
    // A spring that is a million times too stiff for the step.
    FreeMotionOf(m_scenario.joints[0]).spring.stiffness = 1e9;
    m_scenario.stepping = {0.05, 100};
    try {
        Run();
        FAIL();
    } catch (const RunError& error) {
        EXPECT_THAT(error.what(), HasSubstr("The numbers run away: joint \"slide\" is at "));
        EXPECT_THAT(error.what(), HasSubstr("halve \"solver.step\""));
    }
    EXPECT_EQ(m_coupling.calls.back(), "QuitApplication");
}

TEST_F(CoupledRunTest, WarnsOfEnergyBooksThatDoNotClose) {
    // k/m = 100: a period of 0.63 s in steps of 0.15 s.
    m_scenario.stepping = {0.15, 20};
    Run();
    ASSERT_EQ(m_listener.warnings.size(), 1u);
    EXPECT_THAT(m_listener.warnings[0], HasSubstr("energy books of joint \"slide\" do not close: "));
    m_listener.warnings.clear();
    m_scenario.overwrite = true;
    m_scenario.stepping = {0.01, 200};
    Run();
    EXPECT_TRUE(m_listener.warnings.empty());
}

TEST_F(CoupledRunTest, LeavesTheImbalanceOfAPrescribedJointEmpty) {
    m_scenario.joints[0].coordinates[0].motion =
        PrescribedMotion(Expression::Parse("0.1*t", Expression::Variables::Time));
    Run();
    EXPECT_THAT(StatesFile(), HasSubstr(",slide.Imbalance [J]\n0,0,"));
    for (std::size_t at = StatesFile().find('\n'); at + 1 < StatesFile().size(); at = StatesFile().find('\n', at + 1)) {
        const std::size_t end = StatesFile().find('\n', at + 1);
        EXPECT_EQ(StatesFile()[end - 1], ',');
    }
}

TEST_F(CoupledRunTest, NoticesMissingResults) {
    m_coupling.missingResults = 1;
    const OperationFailed failure = FailureOf();
    EXPECT_THAT(failure.what(), HasSubstr("only 0 of 1 bodies got a result"));
    EXPECT_THAT(failure.Advice().at(0), HasSubstr("run.reports"));
}

/// A bob that is drawn a quarter turn about z: its x axis points along global y, its y axis along -x.
class DrawnAtAnAngle : public CoupledRunTest {
protected:
    void SetUp() override {
        CoupledRunTest::SetUp();
        m_scenario.bodies[0].X_WB0.R_WB << 0, -1, 0, 1, 0, 0, 0, 0, 1;
        m_scenario.bodies[0].principalInertia_B = {1.0, 1.0, 1.0};
    }

    /// The desktop's frame of the bob in the last step, from the angles that the library reads: R_WF.
    Matrix Frame() const { return DesktopAxes(Eigen::Map<const Matrix>(m_coupling.transforms.at(0).rotation)); }
};

TEST_F(DrawnAtAnAngle, ReachesTheDesktopUnturnedWithDirectionsInGlobalAxes) {
    m_scenario.materials["magnet"] = {"magnet_1T", {0.5, 0.0, 2.0}};
    m_scenario.materials["loose"] = {"magnet_1T", {0.1, -0.0, 0.7}}; // of no body
    m_scenario.stepping = {0.05, 0};
    Run();
    const auto& transform = m_coupling.groups.at(0).transform;
    EXPECT_EQ(transform.translation[2], 0.01);
    EXPECT_EQ(Matrix(Eigen::Map<const Matrix>(transform.rotation)), Matrix::Identity());
    EXPECT_THAT(m_coupling.materials.at("magnet").coercivityDirection, ElementsAre(0.0, 0.5, 2.0));
    EXPECT_THAT(m_coupling.materials.at("loose").coercivityDirection, ElementsAre(0.1, -0.0, 0.7));
    EXPECT_EQ(Frame(), Matrix::Identity());
}

TEST_F(DrawnAtAnAngle, TurnsFromThereAboutAnyAxisWithoutAWarning) {
    m_scenario.joints = {OneCoordinateJoint("turn", JointType::Hinge, Vector(2, -6, 3) / 7.0,
                                            PrescribedMotion(Expression::Parse("20*t", Expression::Variables::Time)))};
    m_scenario.stepping = {0.05, 4};
    Run();
    EXPECT_LT((Frame() - Rotation(Vector(2, -6, 3) / 7.0, 4.0)).norm(), 1e-14);
    EXPECT_TRUE(m_listener.warnings.empty());
}

TEST_F(DrawnAtAnAngle, HasItsLoadsInItsOwnAxesAndMovesByThemInGlobalOnes) {
    m_coupling.load = {{3.0, 0.0, 0.0}, {0.0, 700.0, 0.0}};
    m_scenario.joints = {OneCoordinateJoint("turn", JointType::Hinge, Vector::UnitY(), FreeMotion())};
    m_scenario.joints[0].p_WJ_W = m_scenario.bodies[0].X_WB0.p_WB_W;
    m_scenario.stepping = {0.05, 0};
    Run();
    const StepRecord& step = m_listener.steps.at(0);
    // Global x is the body's -y, global y its x.
    EXPECT_THAT(step.results[0].force, ElementsAre(0.0, -3.0, -1.0));
    EXPECT_THAT(step.results[0].torque, ElementsAre(700.0, 0.0, 0.0));
    EXPECT_DOUBLE_EQ(step.mechanism.joints[0].fieldForce[0], 0.7);
    EXPECT_THAT(StatesFile(), HasSubstr("\n0,0,0,0,0.01,0,-3,-1,700,0,0,0,"));
}

TEST_F(CoupledRunTest, HandsLoadsOfABodyDrawnUnturnedOnAsTheyAre) {
    m_coupling.load = {{0.1, -0.0, 0.0}, {1e-310, 0.3, -0.7}};
    m_scenario.stepping = {0.05, 0};
    Run();
    const auto& result = m_listener.steps.at(0).results[0];
    EXPECT_EQ(result.force[0], 0.1);
    EXPECT_TRUE(std::signbit(result.force[1]));
    EXPECT_THAT(result.torque, ElementsAre(1e-310, 0.3, -0.7));
}

} // namespace
} // namespace kinora::host
