// The life of an instance: the orders of calls that the standard allows, those that it forbids, and what fails.
#include "tests/fmu/PackedFmus.h"

#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace importer {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr int good = 0, error = 3;

const Fmu& Coupling(int version) {
    return Packed(endtoend::Examples() / "axial-coupling" / "torque.json", version);
}

class Life : public testing::TestWithParam<int> {
protected:
    std::unique_ptr<Instance> Make(const std::string& name = "life") const {
        return Instance::Of(Coupling(GetParam()), name, m_output.Path());
    }

    /// An order that is forbidden: an error, a line in the log, and nothing else.
    static void ExpectRefused(Instance& instance, const std::function<int()>& call) {
        const std::size_t told = instance.Log().size();
        EXPECT_EQ(call(), error);
        ASSERT_EQ(instance.Log().size(), told + 1) << instance.LogText();
        EXPECT_EQ(instance.Log().back().category, "logStatusError");
        EXPECT_EQ(instance.Log().back().status, error);
    }

    /// One run on from `instantiated`.
    static void ExpectRuns(Instance& instance) {
        ASSERT_EQ(instance.EnterInitialization(0.0, 1.0), good) << instance.LogText();
        ASSERT_EQ(instance.SetNumbers("driven_hinge.angle", {0.2}), good);
        ASSERT_EQ(instance.ExitInitialization(), good) << instance.LogText();
        EXPECT_NEAR(instance.Number("driven_hinge.torque"), torqueAt02, 1e-6);
        ASSERT_EQ(instance.DoStep(0.0, 0.1), good) << instance.LogText();
    }

    /// By an instance of its own.
    static double TorqueAt02() {
        const endtoend::ScratchFolder output;
        const auto instance = Instance::Of(Coupling(2), "reference", output.Path());
        instance->Start(0.0, 1.0);
        EXPECT_EQ(instance->SetNumbers("driven_hinge.angle", {0.2}), good);
        EXPECT_EQ(instance->DoStep(0.0, 0.1), good);
        return instance->Number("driven_hinge.torque");
    }

    inline static double torqueAt02 = 0.0;
    static void SetUpTestSuite() { torqueAt02 = TorqueAt02(); }

    endtoend::ScratchFolder m_output;
};

INSTANTIATE_TEST_SUITE_P(Fmi, Life, testing::Values(2, 3));

TEST_P(Life, BeginsAgainAfterAResetInEveryState) {
    const auto instance = Make();
    EXPECT_EQ(instance->Reset(), good);
    instance->SetText("outputFolder", m_output.Path().u8string());
    EXPECT_EQ(instance->EnterInitialization(0.0, 1.0), good);
    EXPECT_EQ(instance->Reset(), good);
    for (int run = 0; run < 2; ++run) {
        instance->SetText("outputFolder", m_output.Path().u8string());
        ExpectRuns(*instance);
        // Between the steps, and after the end.
        if (run == 1) {
            EXPECT_EQ(instance->Terminate(), good);
        }
        EXPECT_EQ(instance->Reset(), good);
    }
    EXPECT_EQ(instance->LogText(), "");
    EXPECT_TRUE(std::filesystem::exists(m_output / "life" / "torque.vantor"));
    EXPECT_TRUE(std::filesystem::exists(m_output / "life-2" / "torque.vantor"));
}

TEST_P(Life, IsFreedInEveryState) {
    Make();
    const auto initializing = Make();
    EXPECT_EQ(initializing->EnterInitialization(0.0, 1.0), good);
    initializing->Free();
    const auto stepping = Make();
    ExpectRuns(*stepping);
    stepping->Free();
    const auto failed = Make();
    EXPECT_EQ(failed->SetText("desktopVersion", "Nowhere"), good);
    EXPECT_EQ(failed->EnterInitialization(0.0, 1.0), good);
    EXPECT_EQ(failed->ExitInitialization(), error);
    failed->Free();
    failed->Free(); // of nothing
    ExpectRuns(*Make("after"));
}

TEST_P(Life, RefusesTheWrongOrderAndGoesOn) {
    const auto instance = Make();
    const auto step = [&] { return instance->DoStep(0.0, 0.1); };
    const auto enter = [&] { return instance->EnterInitialization(0.0, 1.0); };
    const auto exit = [&] { return instance->ExitInitialization(); };
    const auto terminate = [&] { return instance->Terminate(); };
    const auto parameter = [&] { return instance->SetText("logLevel", "info"); };
    const auto input = [&] { return instance->SetNumbers("driven_hinge.angle", {0.2}); };
    ExpectRefused(*instance, step);
    ExpectRefused(*instance, exit);
    ExpectRefused(*instance, terminate);
    ASSERT_EQ(enter(), good);
    ExpectRefused(*instance, enter);
    ExpectRefused(*instance, step);
    ExpectRefused(*instance, terminate);
    EXPECT_EQ(input(), good);
    ASSERT_EQ(exit(), good) << instance->LogText();
    ExpectRefused(*instance, enter);
    ExpectRefused(*instance, exit);
    ExpectRefused(*instance, parameter);
    ExpectRefused(*instance, [&] { return instance->DoStep(0.1, 0.1); }); // out of turn
    ExpectRefused(*instance, [&] { return instance->DoStep(0.0, 0.0); });
    ExpectRefused(*instance, [&] { return instance->DoStep(0.0, -0.1); });
    ExpectRefused(*instance, [&] { return instance->DoStep(0.0, std::numeric_limits<double>::quiet_NaN()); });
    ExpectRefused(*instance, [&] { return instance->SetNumbers("driven_hinge.torque", {0.2}); });
    ASSERT_EQ(step(), good) << instance->LogText();
    EXPECT_NEAR(instance->Number("driven_hinge.torque"), torqueAt02, 1e-6);
    ASSERT_EQ(terminate(), good);
    ExpectRefused(*instance, terminate);
    ExpectRefused(*instance, step);
    ExpectRefused(*instance, input);
    // What was last solved is still there.
    EXPECT_NEAR(instance->Number("driven_hinge.torque"), torqueAt02, 1e-6);
}

TEST_P(Life, SolvesDuringTheInitializationWhenItIsAsked) {
    const auto instance = Make();
    int solves = -1;
    ASSERT_EQ(instance->EnterInitialization(0.0, 1.0), good);
    EXPECT_NEAR(instance->Number("driven_hinge.torque"), 0.0, 1e-6);
    ASSERT_EQ(instance->SetNumbers("driven_hinge.angle", {0.2}), good);
    EXPECT_NEAR(instance->Number("driven_hinge.torque"), torqueAt02, 1e-6);
    ExpectRefused(*instance, [&] { return instance->SetText("desktopVersion", "Other"); });
    ASSERT_EQ(instance->ExitInitialization(), good);
    EXPECT_EQ(instance->GetInteger("solves", solves), good);
    EXPECT_EQ(solves, 2);
    EXPECT_EQ(instance->DoStep(0.0, 0.1), good) << instance->LogText();
}

TEST_P(Life, TellsWhyTheDesktopDoesNotStart) {
    const auto instance = Make();
    ASSERT_EQ(instance->SetText("desktopVersion", "Nowhere"), good);
    ASSERT_EQ(instance->EnterInitialization(0.0, 1.0), good);
    EXPECT_EQ(instance->ExitInitialization(), error);
    EXPECT_THAT(instance->LogText(), AllOf(HasSubstr("Pellux.VantorDesktop.Nowhere"), HasSubstr("Install it")));
    // Nothing is left of it, and only a reset goes on.
    EXPECT_FALSE(std::filesystem::exists(m_output / "life"));
    ExpectRefused(*instance, [&] { return instance->DoStep(0.0, 0.1); });
    ExpectRefused(*instance, [&] { return instance->Terminate(); });
    EXPECT_EQ(instance->Reset(), good);
    instance->SetText("outputFolder", m_output.Path().u8string());
    ExpectRuns(*instance);
}

/// A text, and what is told of it.
TEST_P(Life, ChecksItsParameters) {
    const std::vector<std::array<const char*, 3>> rows = {
        {"busyWait", "soon", "busyWait"}, {"busyWait", "-1", "busyWait"}, {"logLevel", "loud", "logLevel"}};
    for (const auto& [name, text, told] : rows) {
        SCOPED_TRACE(text);
        const auto instance = Make();
        EXPECT_EQ(instance->SetText(name, text), good);
        EXPECT_EQ(instance->EnterInitialization(0.0, 1.0), good);
        EXPECT_EQ(instance->ExitInitialization(), error);
        EXPECT_THAT(instance->LogText(), HasSubstr(told));
    }
    const auto instance = Make();
    EXPECT_EQ(instance->SetText("busyWait", "forever"), good);
    ExpectRuns(*instance);
}

TEST_P(Life, NeedsAFolderThatCanBeWritten) {
    std::ofstream(m_output / "file") << "in the way";
    const auto instance = Make();
    EXPECT_EQ(instance->SetText("outputFolder", (m_output / "file").u8string()), good);
    EXPECT_EQ(instance->EnterInitialization(0.0, 1.0), good);
    EXPECT_EQ(instance->ExitInitialization(), error);
    EXPECT_THAT(instance->LogText(), HasSubstr("outputFolder"));
}

TEST_P(Life, FailsInAStepAndKeepsWhatWasSolved) {
    const auto instance = Make();
    ExpectRuns(*instance);
    std::filesystem::rename(m_output / "life", m_output / "moved");
    std::ofstream(m_output / "life") << "a file in the folder's place";
    EXPECT_EQ(instance->DoStep(0.1, 0.1), error);
    EXPECT_THAT(instance->LogText(), AllOf(HasSubstr("DoStep"), HasSubstr("folder of the project")));
    EXPECT_EQ(instance->Number("time"), 0.1);
    ExpectRefused(*instance, [&] { return instance->DoStep(0.1, 0.1); });
    EXPECT_TRUE(std::filesystem::exists(m_output / "moved" / "torque.vantor"));
    EXPECT_EQ(instance->Reset(), good);
    instance->SetText("outputFolder", m_output.Path().u8string());
    ExpectRuns(*instance);
}

TEST_P(Life, RefusesPosesThatAreNone) {
    const Fmu& fmu = Packed(Tilted().file, GetParam());
    for (const std::vector<double>& orientation :
         {std::vector<double>{0.0, 0.0, 0.0, 0.0}, {2.0, 0.0, 0.0, 0.0}, {std::nan(""), 0.0, 0.0, 1.0}}) {
        const auto instance = Instance::Of(fmu, "turned", m_output.Path());
        instance->Start(0.0, 1.0);
        EXPECT_EQ(instance->SetNumbers("flight.orientation", orientation), good);
        EXPECT_EQ(instance->DoStep(0.0, 0.1), error);
        EXPECT_THAT(instance->LogText(), HasSubstr("flight"));
    }
    // A drift is mended.
    const auto instance = Instance::Of(fmu, "drifted", m_output.Path());
    instance->Start(0.0, 1.0);
    EXPECT_EQ(instance->SetNumbers("flight.orientation", {1.001, 0.0, 0.0, 0.0}), good);
    EXPECT_EQ(instance->DoStep(0.0, 0.1), good) << instance->LogText();
}

TEST_P(Life, TellsWhereTheRunIsWhenAsked) {
    const auto instance = Make();
    EXPECT_EQ(instance->SetText("logLevel", "info"), good);
    ExpectRuns(*instance);
    EXPECT_THAT(instance->LogText(), AllOf(HasSubstr("logEvents"), HasSubstr("life")));
}

TEST(Instantiation2, NeedsWhatBelongsTogether) {
    const Fmu& fmu = Coupling(2);
    const auto make = fmu.Binary().Find<decltype(fmi2Instantiate)>("fmi2Instantiate");
    const auto free = fmu.Binary().Find<decltype(fmi2FreeInstance)>("fmi2FreeInstance");
    const fmi2CallbackFunctions silent = {};
    const auto attempt = [&](const char* name, fmi2Type type, const std::string& token, const std::string& place) {
        const fmi2Component made = make(name, type, token.c_str(), place.c_str(), &silent, fmi2False, fmi2False);
        free(made);
        return made != nullptr;
    };
    const std::string token = fmu.Token(), place = fmu.ResourceLocation();
    EXPECT_TRUE(attempt("one", fmi2CoSimulation, token, place));
    EXPECT_FALSE(attempt("", fmi2CoSimulation, token, place));
    EXPECT_FALSE(attempt(nullptr, fmi2CoSimulation, token, place));
    EXPECT_FALSE(attempt("one", fmi2ModelExchange, token, place));
    EXPECT_FALSE(attempt("one", fmi2CoSimulation, "{of another}", place));
    EXPECT_FALSE(attempt("one", fmi2CoSimulation, token, place + "-elsewhere"));
    EXPECT_FALSE(attempt("one", fmi2CoSimulation, token, "https://example.org/resources"));
    EXPECT_EQ(make("one", fmi2CoSimulation, token.c_str(), place.c_str(), nullptr, fmi2False, fmi2False), nullptr);
    EXPECT_EQ(make("one", fmi2CoSimulation, nullptr, place.c_str(), &silent, fmi2False, fmi2False), nullptr);
    EXPECT_EQ(make("one", fmi2CoSimulation, token.c_str(), nullptr, &silent, fmi2False, fmi2False), nullptr);
}

/// An instance without a log; the caller frees it.
fmi2Component MakeSilent(const Fmu& fmu) {
    static const fmi2CallbackFunctions silent = {};
    return fmu.Binary().Find<decltype(fmi2Instantiate)>("fmi2Instantiate")(
        "one", fmi2CoSimulation, fmu.Token().c_str(), fmu.ResourceLocation().c_str(), &silent, fmi2False, fmi2False);
}

TEST(Functions2, RefuseWhatTheFmuDoesNotHave) {
    const Fmu& fmu = Coupling(2);
    const fmi2Component c = MakeSilent(fmu);
    ASSERT_NE(c, nullptr);
    EXPECT_STREQ(fmu.Binary().Find<decltype(fmi2GetVersion)>("fmi2GetVersion")(), "2.0");
    EXPECT_STREQ(fmu.Binary().Find<decltype(fmi2GetTypesPlatform)>("fmi2GetTypesPlatform")(), "default");
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2GetFMUstate)>("fmi2GetFMUstate")(c, nullptr), fmi2Error);
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2CancelStep)>("fmi2CancelStep")(c), fmi2Error);
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2SetTime)>("fmi2SetTime")(c, 1.0), fmi2Error);
    // Initialization comes after the experiment is set up; values come after that.
    const auto enter = fmu.Binary().Find<decltype(fmi2EnterInitializationMode)>("fmi2EnterInitializationMode");
    EXPECT_EQ(enter(c), fmi2Error);
    const fmi2ValueReference angle = fmu.Reference("driven_hinge.angle"), none = 4711;
    fmi2Real value = 0.0;
    fmi2Integer whole = 0;
    const auto get = fmu.Binary().Find<decltype(fmi2GetReal)>("fmi2GetReal");
    EXPECT_EQ(get(c, &angle, 1, &value), fmi2Error);
    const auto setUp = fmu.Binary().Find<decltype(fmi2SetupExperiment)>("fmi2SetupExperiment");
    EXPECT_EQ(setUp(c, fmi2False, 0.0, 1.0, fmi2True, 0.5), fmi2Error);
    EXPECT_EQ(setUp(c, fmi2False, 0.0, 0.0, fmi2False, 0.0), fmi2OK);
    EXPECT_EQ(enter(c), fmi2OK);
    EXPECT_EQ(get(c, &angle, 1, &value), fmi2OK);
    EXPECT_EQ(get(c, &none, 1, &value), fmi2Error);
    EXPECT_EQ(get(c, nullptr, 1, &value), fmi2Error);
    EXPECT_EQ(get(c, &angle, 1, nullptr), fmi2Error);
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2GetInteger)>("fmi2GetInteger")(c, &angle, 1, &whole), fmi2Error);
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2GetBoolean)>("fmi2GetBoolean")(c, nullptr, 0, nullptr), fmi2OK);
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2GetBoolean)>("fmi2GetBoolean")(c, &angle, 1, &whole), fmi2Error);
    EXPECT_EQ(get(nullptr, &angle, 1, &value), fmi2Error);
    fmu.Binary().Find<decltype(fmi2FreeInstance)>("fmi2FreeInstance")(c);
}

TEST(Functions2, SetAllOrNothing) {
    const Fmu& fmu = Coupling(2);
    const fmi2Component c = MakeSilent(fmu);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(
        fmu.Binary().Find<decltype(fmi2SetupExperiment)>("fmi2SetupExperiment")(c, fmi2False, 0.0, 0.0, fmi2False, 0.0),
        fmi2OK);
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2EnterInitializationMode)>("fmi2EnterInitializationMode")(c), fmi2OK);
    const fmi2ValueReference both[] = {fmu.Reference("driven_hinge.angle"), fmu.Reference("driven_hinge.torque")};
    const fmi2Real values[] = {0.5, 0.5};
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2SetReal)>("fmi2SetReal")(c, both, 2, values), fmi2Error);
    fmi2Real angle = -1.0;
    EXPECT_EQ(fmu.Binary().Find<decltype(fmi2GetReal)>("fmi2GetReal")(c, both, 1, &angle), fmi2OK);
    EXPECT_EQ(angle, 0.0);
    fmu.Binary().Find<decltype(fmi2FreeInstance)>("fmi2FreeInstance")(c);
}

TEST(Functions3, RefuseWhatTheFmuDoesNotHave) {
    const Fmu& fmu = Coupling(3);
    const Library& binary = fmu.Binary();
    EXPECT_STREQ(binary.Find<decltype(fmi3GetVersion)>("fmi3GetVersion")(), "3.0");
    const auto make = binary.Find<decltype(fmi3InstantiateCoSimulation)>("fmi3InstantiateCoSimulation");
    const std::string token = fmu.Token(), place = fmu.ResourcePath();
    const auto attempt = [&](const char* name, const char* itsToken, bool usesEvents) {
        return make(name, itsToken, place.c_str(), false, false, usesEvents, false, nullptr, 0, nullptr, nullptr,
                    nullptr);
    };
    EXPECT_EQ(attempt("one", "{of another}", false), nullptr);
    EXPECT_EQ(attempt("one", nullptr, false), nullptr);
    EXPECT_EQ(attempt(nullptr, token.c_str(), false), nullptr);
    EXPECT_EQ(attempt("one", token.c_str(), true), nullptr);
    EXPECT_EQ(binary.Find<decltype(fmi3InstantiateModelExchange)>("fmi3InstantiateModelExchange")(
                  "one", token.c_str(), place.c_str(), false, false, nullptr, nullptr),
              nullptr);
    const fmi3Instance instance = attempt("one", token.c_str(), false);
    ASSERT_NE(instance, nullptr);
    const auto set = binary.Find<decltype(fmi3SetFloat64)>("fmi3SetFloat64");
    const fmi3ValueReference angle = fmu.Reference("driven_hinge.angle");
    const fmi3Float64 values[2] = {0.1, 0.2};
    EXPECT_EQ(set(instance, &angle, 1, values, 1), fmi3OK);
    EXPECT_EQ(set(instance, &angle, 1, values, 2), fmi3Error);
    fmi3FMUState state = nullptr;
    EXPECT_EQ(binary.Find<decltype(fmi3GetFMUState)>("fmi3GetFMUState")(instance, &state), fmi3Error);
    EXPECT_EQ(binary.Find<decltype(fmi3EnterEventMode)>("fmi3EnterEventMode")(instance), fmi3Error);
    EXPECT_EQ(binary.Find<decltype(fmi3EnterConfigurationMode)>("fmi3EnterConfigurationMode")(instance), fmi3Error);
    fmi3Boolean flag = false;
    const auto getFlags = binary.Find<decltype(fmi3GetBoolean)>("fmi3GetBoolean");
    EXPECT_EQ(getFlags(instance, nullptr, 0, nullptr, 0), fmi3OK);
    EXPECT_EQ(getFlags(instance, &angle, 1, &flag, 1), fmi3Error);
    EXPECT_EQ(getFlags(nullptr, nullptr, 0, nullptr, 0), fmi3Error);
    binary.Find<decltype(fmi3FreeInstance)>("fmi3FreeInstance")(instance);
}

} // namespace
} // namespace importer
