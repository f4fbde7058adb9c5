// The factory, the coupling object as a value, launching the desktop and letting go of it.

#include "tests/support/CouplingSession.h"
#include "tests/support/Transcript.h"

#include <cstdlib>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <type_traits>

namespace {

using namespace fake;

const char* const notInstalled = "Please check your QUORIX Vantor Desktop installation.";
const char* const notStarted =
    "QUORIX Vantor Desktop failed to launch. Please check your license or other configuration.";

/// The text of the exception that a launch throws; empty when it throws none.
std::string LaunchError(CKinoraVeltrixCoupling& coupling) {
    try {
        coupling.LaunchDesktop();
    } catch (const LaunchDesktopExeption& exception) {
        return exception.what();
    }
    return {};
}

/// Runs on a thread of its own, on which COM has not been initialised.
void OnFreshThread(const std::function<void()>& work) {
    std::thread thread(work);
    thread.join();
}

/// The apartment of this thread as text.
std::string ApartmentOfThread() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (CoGetApartmentType(&type, &qualifier) == CO_E_NOTINITIALIZED || qualifier == APTTYPEQUALIFIER_IMPLICIT_MTA) {
        return "none";
    }
    return type == APTTYPE_MTA ? "multi-threaded" : "single-threaded";
}

TEST(Factory, GivesTheSameObjectEveryTime) {
    IKinoraVeltrixInterface* const coupling = GetKinoraVeltrixFactoryInterface();
    ASSERT_NE(coupling, nullptr);
    EXPECT_EQ(GetKinoraVeltrixFactoryInterface(), coupling);
    EXPECT_NE(dynamic_cast<CKinoraVeltrixCoupling*>(coupling), nullptr);
}

TEST(Coupling, IsACopyableValueBehindAnAbstractInterface) {
    static_assert(std::is_abstract_v<IKinoraVeltrixInterface>);
    static_assert(std::has_virtual_destructor_v<IKinoraVeltrixInterface>);
    static_assert(std::is_default_constructible_v<CKinoraVeltrixCoupling>);
    static_assert(std::is_copy_constructible_v<CKinoraVeltrixCoupling>);
    static_assert(std::is_copy_assignable_v<CKinoraVeltrixCoupling>);
    static_assert(std::is_base_of_v<std::runtime_error, LaunchDesktopExeption>);
    static_assert(sizeof(IKinoraVeltrixInterface::MessageSeverity) == 4);
    static_assert(sizeof(IKinoraVeltrixInterface) == sizeof(void*), "the interface has no data");
    EXPECT_STREQ(LaunchDesktopExeption("text").what(), "text");
}

TEST(Coupling, EveryOperationFailsBeforeALaunchExceptRelease) {
    const Apartment apartment;
    CoInitialize(nullptr); // what ReleaseApplication takes back, always
    CKinoraVeltrixCoupling coupling;
    std::vector<std::string> messages{"kept"};
    std::vector<IKinoraVeltrixInterface::Result> results;
    int status = 7;
    EXPECT_FALSE(coupling.GetMessages(messages, IKinoraVeltrixInterface::MessageSeverity::Info));
    EXPECT_EQ(messages.size(), 1U);
    EXPECT_FALSE(coupling.InitGeometry("a.obj", "mm"));
    EXPECT_FALSE(coupling.InitMagneticObjects({}, {}));
    EXPECT_FALSE(coupling.Analyze(0.0, {}, results, status));
    EXPECT_EQ(status, 7);
    EXPECT_FALSE(coupling.SaveProject());
    EXPECT_FALSE(coupling.CloseProject());
    EXPECT_FALSE(coupling.SetVariableValue("a", "1", true));
    EXPECT_FALSE(coupling.AddParametricSetup(true));
    EXPECT_TRUE(coupling.ReleaseApplication());
}

TEST(Coupling, CopySharesThePointersWithoutAReference) {
    CouplingSession session;
    session.Create();
    const CKinoraVeltrixCoupling copy(session.coupling);
    EXPECT_EQ(session.fake.design.References(), 1);
    EXPECT_EQ(session.fake.application.References(), 1);
    EXPECT_TRUE(copy.SetVariableValue("a", "1", true)); // on the same design
    EXPECT_EQ(session.fake.world.Count("ChangeProperty"), 1U);
}

TEST(Coupling, ReleaseThroughACopyLeavesTheSourceDangling) {
    CouplingSession session;
    session.Create();
    CKinoraVeltrixCoupling copy;
    copy = session.coupling;
    EXPECT_TRUE(copy.ReleaseApplication());
    EXPECT_EQ(session.fake.world.OutstandingReferences(), 0);
    EXPECT_FALSE(copy.SaveProject());
    std::vector<std::string> wentAgain;
    session.fake.world.onLetGo = [&](const Object& object) { wentAgain.push_back(object.Path()); };
    EXPECT_TRUE(session.coupling.SaveProject()); // still believes in its project
    EXPECT_THAT(wentAgain, testing::Contains("project"))
        << "which only lives because this desktop keeps what is let go";
    EXPECT_EQ(session.fake.world.Count("Save"), 1U);
}

TEST(Coupling, AssignmentOverwritesThePointersItHeld) {
    CouplingSession session;
    session.Create();
    const CKinoraVeltrixCoupling empty;
    CKinoraVeltrixCoupling target(session.coupling);
    target = empty;
    EXPECT_FALSE(target.SaveProject());
    EXPECT_EQ(session.fake.project.References(), 1);
}

TEST(Coupling, CopiesItsHistoryDeeply) {
    CouplingSession session;
    session.Create();
    std::vector<IKinoraVeltrixInterface::Result> results;
    int status = 0;
    ASSERT_TRUE(session.coupling.Analyze(0.0, {}, results, status));
    CKinoraVeltrixCoupling copy(session.coupling);
    ASSERT_TRUE(session.coupling.Analyze(1.0, {}, results, status));
    session.fake.world.ClearJournal();
    ASSERT_TRUE(copy.AddParametricSetup(false));
    const Value& ofCopy = session.fake.world.Entries().back().arguments[1];
    EXPECT_EQ(Print(ofCopy.items[8]), R"(["NAME:Sweep Operations"])") << "the copy knows the first step only";
    ASSERT_TRUE(session.coupling.AddParametricSetup(false));
    const Value& ofSource = session.fake.world.Entries().back().arguments[1];
    EXPECT_EQ(Print(ofSource.items[8]), R"(["NAME:Sweep Operations", "add:=", ["1.000000s"]])");
}

TEST(Coupling, SelfAssignmentKeepsTheHistory) {
    CouplingSession session;
    session.Create();
    std::vector<IKinoraVeltrixInterface::Result> results;
    int status = 0;
    ASSERT_TRUE(session.coupling.Analyze(0.0, {}, results, status));
    const CKinoraVeltrixCoupling& same = session.coupling;
    session.coupling = same;
    session.fake.world.ClearJournal();
    ASSERT_TRUE(session.coupling.AddParametricSetup(false));
    const Value& setup = session.fake.world.Entries().back().arguments[1];
    EXPECT_EQ(Print(setup.items[7].items[1].items[4]), R"("0.000000s")");
}

TEST(Coupling, DestructorReleasesNothing) {
    CouplingSession session;
    auto coupling = std::make_unique<CKinoraVeltrixCoupling>();
    CoInitialize(nullptr);
    ASSERT_TRUE(coupling->LaunchDesktop());
    CoUninitialize(); // what the launch initialised
    coupling.reset();
    EXPECT_EQ(session.fake.application.References(), 1);
    EXPECT_EQ(session.fake.desktop.References(), 1);
    session.fake.desktop.Release();
    session.fake.application.Release();
    CoUninitialize();
}

TEST(Launch, CreatesTheApplicationAndAsksForItsDesktop) {
    CouplingSession session;
    EXPECT_TRUE(session.coupling.LaunchDesktop());
    EXPECT_EQ(session.registration.Creations(), 1U);
    EXPECT_TRUE(session.registration.AskedForDispatchOnly());
    EXPECT_TRANSCRIPT(session.fake.world, "application.GetAppDesktop()");
    EXPECT_EQ(session.fake.application.References(), 1);
    EXPECT_EQ(session.fake.desktop.References(), 1);
}

TEST(Launch, SecondLaunchCreatesNothing) {
    CouplingSession session;
    session.Launch();
    EXPECT_TRUE(session.coupling.LaunchDesktop());
    EXPECT_EQ(session.registration.Creations(), 1U);
    EXPECT_TRANSCRIPT(session.fake.world, "");
}

TEST(Launch, UnknownVersionThrowsInItsOwnType) {
    const VersionVariable version("NoSuchVersion");
    CKinoraVeltrixCoupling coupling;
    EXPECT_EQ(LaunchError(coupling), notInstalled);
    EXPECT_THROW(coupling.LaunchDesktop(), std::runtime_error);
}

TEST(Launch, UnknownVersionLeavesComAlone) {
    OnFreshThread([] {
        const VersionVariable version("NoSuchVersion");
        CKinoraVeltrixCoupling coupling;
        EXPECT_EQ(LaunchError(coupling), notInstalled);
        EXPECT_EQ(ApartmentOfThread(), "none");
    });
}

TEST(Launch, InitialisesASingleThreadedApartmentAndReleaseEndsIt) {
    OnFreshThread([] {
        FakeDesktop fake;
        const VersionVariable version(Registration::UniqueVersion().c_str());
        Registration registration(Registration::UniqueProgId());
        registration.Create(&fake.application);
        CKinoraVeltrixCoupling coupling;
        ASSERT_EQ(ApartmentOfThread(), "none");
        EXPECT_TRUE(coupling.LaunchDesktop());
        EXPECT_EQ(ApartmentOfThread(), "single-threaded");
        EXPECT_TRUE(coupling.ReleaseApplication());
        EXPECT_EQ(ApartmentOfThread(), "none");
        EXPECT_TRUE(coupling.LaunchDesktop());
        EXPECT_TRUE(coupling.QuitApplication());
        EXPECT_EQ(ApartmentOfThread(), "none");
    });
}

TEST(Launch, DoesNotMindAThreadInAnotherApartment) {
    OnFreshThread([] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        FakeDesktop fake;
        const VersionVariable version(Registration::UniqueVersion().c_str());
        Registration registration(Registration::UniqueProgId());
        registration.Create(&fake.application);
        CKinoraVeltrixCoupling coupling;
        EXPECT_TRUE(coupling.LaunchDesktop());
        EXPECT_TRUE(coupling.ReleaseApplication());
    });
}

TEST(Launch, RefusedCreationThrowsAndMayBeTriedAgain) {
    CouplingSession session;
    session.registration.RefuseWith(CO_E_SERVER_EXEC_FAILURE);
    EXPECT_EQ(LaunchError(session.coupling), notStarted);
    CoUninitialize(); // the failed launch initialised COM and leaves it so
    session.registration.RefuseWith(S_OK);
    EXPECT_TRUE(session.coupling.LaunchDesktop());
}

TEST(Launch, CreationOfNothingThrows) {
    CouplingSession session;
    session.registration.Create(nullptr);
    EXPECT_EQ(LaunchError(session.coupling), notStarted);
    CoUninitialize();
}

TEST(Launch, FailedDesktopQueryKeepsTheApplication) {
    CouplingSession session;
    session.fake.application.On("GetAppDesktop", Fails());
    EXPECT_FALSE(session.coupling.LaunchDesktop());
    EXPECT_EQ(session.fake.application.References(), 1);
    session.fake.world.ClearJournal();
    EXPECT_TRUE(session.coupling.LaunchDesktop()) << "an application is all that a further launch looks for";
    EXPECT_TRANSCRIPT(session.fake.world, "");
    EXPECT_TRUE(session.coupling.ReleaseApplication());
    EXPECT_EQ(session.fake.application.References(), 0);
}

TEST(Launch, UnknownDesktopQueryKeepsTheApplication) {
    CouplingSession session;
    session.fake.application.Forget("GetAppDesktop");
    EXPECT_FALSE(session.coupling.LaunchDesktop());
    EXPECT_EQ(session.fake.application.References(), 1);
}

TEST(Launch, NullDesktopIsTaken) {
    CouplingSession session;
    session.fake.application.On("GetAppDesktop", NoObject());
    EXPECT_TRUE(session.coupling.LaunchDesktop()); // the value is taken as it is
    EXPECT_TRUE(session.coupling.QuitApplication());
    EXPECT_TRANSCRIPT(session.fake.world, "application.GetAppDesktop()");
}

TEST(Launch, WithoutAVersionThePlainIdentifierIsUsed) {
    const std::wstring plain = L"Pellux.VantorDesktop";
    CLSID installed{};
    if (CLSIDFromProgID(plain.c_str(), &installed) == S_OK) {
        GTEST_SKIP() << "a desktop is installed here";
    }
    const Apartment apartment;
    FakeDesktop fake;
    const VersionVariable version(nullptr);
    CKinoraVeltrixCoupling coupling;
    EXPECT_EQ(LaunchError(coupling), notInstalled);
    Registration registration(plain);
    registration.Create(&fake.application);
    EXPECT_TRUE(coupling.LaunchDesktop());
    EXPECT_TRUE(coupling.ReleaseApplication());
}

/// Makes the variable exist with no text. On Windows no function of the C library can: it cuts off the value in place.
void EmptyTheVersion() {
#ifdef _WIN32
    constexpr std::size_t nameLength = sizeof("KINORA_VELTRIX_VTDK_VERSION=") - 1;
    for (char** entry = _environ; *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, "KINORA_VELTRIX_VTDK_VERSION=", nameLength) == 0) {
            (*entry)[nameLength] = '\0';
        }
    }
#else
    SetEnvironment("KINORA_VELTRIX_VTDK_VERSION", "");
#endif
}

TEST(Launch, EmptyVersionGivesTheBaseAndALonePoint) {
    const Apartment apartment;
    FakeDesktop fake;
    const VersionVariable version("x");
    EmptyTheVersion();
    ASSERT_STREQ(std::getenv("KINORA_VELTRIX_VTDK_VERSION"), "");
    CKinoraVeltrixCoupling coupling;
    EXPECT_EQ(LaunchError(coupling), notInstalled);
    Registration registration(L"Pellux.VantorDesktop.");
    registration.Create(&fake.application);
    EXPECT_TRUE(coupling.LaunchDesktop());
    EXPECT_TRUE(coupling.ReleaseApplication());
}

TEST(Quit, SavesAndClosesTheProjectThenEndsTheDesktop) {
    CouplingSession session;
    session.Create();
    EXPECT_TRUE(session.coupling.QuitApplication());
    EXPECT_TRANSCRIPT(session.fake.world, R"(
        project.Save()
        project.Close()
        desktop.QuitApplication()
    )");
    EXPECT_EQ(session.fake.world.OutstandingReferences(), 0);
}

TEST(Quit, WithoutAProjectOnlyEndsTheDesktop) {
    CouplingSession session;
    session.Launch();
    EXPECT_TRUE(session.coupling.QuitApplication());
    EXPECT_TRANSCRIPT(session.fake.world, "desktop.QuitApplication()");
    EXPECT_EQ(session.fake.world.OutstandingReferences(), 0);
}

TEST(Quit, FailedSaveEndsItAndReleasesNothing) {
    CouplingSession session;
    session.Create();
    session.fake.project.On("Save", Fails());
    EXPECT_FALSE(session.coupling.QuitApplication());
    EXPECT_TRANSCRIPT(session.fake.world, "project.Save() -> fails");
    for (const Object* const object :
         {&session.fake.application, &session.fake.desktop, &session.fake.project, &session.fake.design}) {
        EXPECT_EQ(object->References(), 1) << object->Path();
    }
}

TEST(Quit, FailedCloseEndsIt) {
    CouplingSession session;
    session.Create();
    session.fake.project.On("Close", Fails());
    EXPECT_FALSE(session.coupling.QuitApplication());
    EXPECT_TRANSCRIPT(session.fake.world, R"(
        project.Save()
        project.Close() -> fails
    )");
    EXPECT_EQ(session.fake.project.References(), 1);
    EXPECT_EQ(session.fake.design.References(), 0) << "closing lets go of the design first";
    EXPECT_EQ(session.fake.desktop.References(), 1);
}

TEST(Quit, FailureOfTheDesktopToQuitIsIgnored) {
    for (const bool isUnknown : {false, true}) {
        CouplingSession session;
        session.Launch();
        session.fake.desktop.On("QuitApplication", Fails());
        if (isUnknown) {
            session.fake.desktop.Forget("QuitApplication");
        }
        EXPECT_TRUE(session.coupling.QuitApplication());
        EXPECT_EQ(session.fake.world.OutstandingReferences(), 0);
    }
}

// A host's own class between the library and itself.
class OverridingCoupling : public CKinoraVeltrixCoupling {
public:
    bool SaveProject() override {
        calls += "save ";
        return saveResult;
    }
    bool CloseProject() override {
        calls += "close ";
        return CKinoraVeltrixCoupling::CloseProject();
    }
    bool OpenProject(const std::string& projectPath, const std::string& designName) override {
        calls += "open(" + projectPath + "," + designName + ") ";
        return CKinoraVeltrixCoupling::OpenProject(projectPath, designName);
    }
    bool InitGeometry(const std::string& geometryFile, const std::string& units) override {
        calls += "geometry(" + geometryFile + "," + units + ") ";
        return false;
    }
    std::string calls;
    bool saveResult = true;
};

TEST(Overriding, OperationsUseOneAnotherThroughTheInterface) {
    CouplingSession session;
    OverridingCoupling coupling;
    std::vector<std::string> designs;
    EXPECT_FALSE(coupling.CreateProject("a.vtdk", "a.obj", "mm"));
    EXPECT_THROW(coupling.GetVeltrixDesigns("missing.vtdk", designs), std::exception);
    EXPECT_EQ(coupling.calls, "geometry(a.obj,mm) open(missing.vtdk,) ");
    coupling.calls.clear();
    EXPECT_FALSE(coupling.CreateProject("a.vtdk", "a.obj", "mm"));
    EXPECT_TRUE(coupling.QuitApplication());
    EXPECT_EQ(coupling.calls, "geometry(a.obj,mm) save close ");
    EXPECT_EQ(session.fake.world.Count("Save"), 0U) << "the overriding class did not pass it on";
}

// A host's own class that asks for something while one of its operations is used by another.
class AskingCoupling : public CKinoraVeltrixCoupling {
public:
    bool InitGeometry(const std::string& geometryFile, const std::string& units) override {
        std::vector<std::string> messages;
        return GetMessages(messages, MessageSeverity::Info) && SetVariableValue("gap", "1mm", true) &&
               CKinoraVeltrixCoupling::InitGeometry(geometryFile, units) && SaveProject();
    }
};

TEST(Overriding, OperationsAreFreeInsideOfAnOverridingOne) {
    CouplingSession session;
    AskingCoupling coupling;
    EXPECT_TRUE(coupling.CreateProject("a.vtdk", "a.obj", "mm"));
    EXPECT_EQ(session.fake.world.Count("Import"), 1U);
    EXPECT_TRUE(coupling.QuitApplication());
}

TEST(Quit, LetsGoOfTheDesktopBeforeTheApplication) {
    CouplingSession session;
    session.Create();
    std::string letGo;
    session.fake.world.onLetGo = [&](const Object& object) { letGo += object.Path() + " "; };
    EXPECT_TRUE(session.coupling.QuitApplication());
    session.fake.world.onLetGo = nullptr;
    EXPECT_EQ(letGo, "design project desktop application ");
}

TEST(Release, LetsGoOfEverythingFromTheInsideOutAndCallsNothing) {
    CouplingSession session;
    session.Create();
    std::string letGo;
    session.fake.world.onLetGo = [&](const Object& object) { letGo += object.Path() + " "; };
    EXPECT_TRUE(session.coupling.ReleaseApplication());
    session.fake.world.onLetGo = nullptr;
    EXPECT_EQ(letGo, "design project desktop application ");
    EXPECT_TRANSCRIPT(session.fake.world, "");
    EXPECT_EQ(session.fake.world.OutstandingReferences(), 0);
}

TEST(Release, AllowsAnotherLaunch) {
    CouplingSession session;
    session.Launch();
    EXPECT_TRUE(session.coupling.ReleaseApplication());
    EXPECT_TRUE(session.coupling.LaunchDesktop());
    EXPECT_EQ(session.registration.Creations(), 2U);
}

TEST(Release, OfANeverLaunchedObjectReturnsTrue) {
    const Apartment apartment;
    CoInitialize(nullptr);
    CKinoraVeltrixCoupling coupling;
    EXPECT_TRUE(coupling.ReleaseApplication());
}

} // namespace
