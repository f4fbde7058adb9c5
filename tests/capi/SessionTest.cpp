// Whole sessions: what reaches the desktop, what comes back, and every code that a call can have.

#include "coupling/KinoraVeltrixCoupling.h"
#include "interface/KinoraVeltrixOrientation.h"
#include "tests/capi/HandleSession.h"
#include "tests/support/CouplingSession.h"
#include "tests/support/Texts.h"
#include "tests/support/Transcript.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace capi {
namespace {

using fake::Fails;
using fake::Long;
using fake::Nothing;
using testing::HasSubstr;
using testing::StartsWith;
using Coupling = IKinoraVeltrixInterface;

class Sessions : public testing::Test {
protected:
    fake::FakeDesktop& Desktop() { return m_session.Desktop(); }
    kv_coupling* Handle() { return m_session.Handle(); }
    void Begin() {
        ASSERT_EQ(m_session.Create(), KV_OK);
        ASSERT_EQ(m_session.Init(), KV_OK);
        Desktop().world.ClearJournal();
    }

    HandleSession m_session;
};

TEST_F(Sessions, SucceedAndLetGoOfEverything) {
    for (const Call& call : m_session.Calls()) {
        EXPECT_EQ(call.run(), KV_OK) << call.name << ": " << ErrorText(Handle());
        EXPECT_TRUE(m_session.HoldsNothingElse());
    }
    EXPECT_EQ(m_session.Owned(), "0000");
    EXPECT_EQ(ErrorText(Handle()), "");
    EXPECT_TRUE(m_session.Repair()) << "after a whole session";
}

// --- What reaches the desktop ----------------------------------------------------------------------------------------

/// A vector in a body's axes, whose rows these are, in those of the body as drawn. The orientations here only exchange
/// axes, so that every bit is right.
void TurnBack(const double (&axes)[9], double (&vector)[3]) {
    const double from[3] = {vector[0], vector[1], vector[2]};
    for (int i = 0; i < 3; ++i) {
        vector[i] = axes[i] * from[0] + axes[3 + i] * from[1] + axes[6 + i] * from[2];
    }
}

/// Relative paths are completed before they reach the desktop, whose current folder is another one.
std::string Absolute(const char* name) {
    return fake::ToAnsi(fake::OfPath(std::filesystem::absolute(name)));
}

/// The session of the C interface's records by the coupling object itself, as its documentation wants it of a host that
/// turns bodies any way.
class ObjectSession {
public:
    explicit ObjectSession(HandleSession& records) : m_records(records) {}
    ~ObjectSession() { m_coupling.ReleaseApplication(); }
    ObjectSession(const ObjectSession&) = delete;
    ObjectSession& operator=(const ObjectSession&) = delete;

    bool Run(const Call& call, int step) {
        if (call.name == "Launch") {
            return m_coupling.LaunchDesktop();
        }
        if (call.name == "Create") {
            return m_coupling.CreateProject(Absolute("Magnets.vtdk"), Absolute("magnets.obj"), "mm");
        }
        if (call.name == "Init") {
            return Init();
        }
        if (call.name == "Step") {
            return Step(step);
        }
        std::vector<std::string> messages;
        return call.name == "Messages" ? m_coupling.GetMessages(messages, Coupling::MessageSeverity::Info)
               : call.name == "Save"   ? m_coupling.SaveProject()
               : call.name == "Close"  ? m_coupling.CloseProject()
                                       : m_coupling.QuitApplication();
    }

private:
    bool Init() {
        std::vector<Coupling::Group> groups;
        std::map<std::string, Coupling::Material> materials;
        for (const kv_material& record : m_records.Materials()) {
            Coupling::Material& material = materials[record.object];
            material.name = record.material;
            std::copy_n(record.coercivity_direction, 3, material.coercivityDirection);
        }
        for (const kv_group& record : m_records.Groups()) {
            Coupling::Group group;
            group.transform.name = record.body;
            std::copy_n(record.position, 3, group.transform.translation);
            group.objects = {record.objects, record.objects + record.object_count};
            TurnBack(record.rotation, materials[record.objects[0]].coercivityDirection);
            groups.push_back(group);
        }
        return m_coupling.InitMagneticObjects(groups, materials);
    }

    bool Step(int number) {
        std::vector<Coupling::Transform> transforms;
        for (std::size_t body = 0; body < m_records.Groups().size(); ++body) {
            const kv_pose& pose = m_records.Poses(number)[body];
            Coupling::Transform transform;
            transform.name = pose.body;
            std::copy_n(pose.position, 3, transform.translation);
            for (int column = 0; column < 3; ++column) {
                double axis[3] = {pose.rotation[column], pose.rotation[3 + column], pose.rotation[6 + column]};
                TurnBack(m_records.Groups()[body].rotation, axis);
                for (int row = 0; row < 3; ++row) {
                    transform.rotation[3 * row + column] = axis[row];
                }
            }
            KinoraVeltrixRotationFor(transform.rotation, transform.rotation);
            transforms.push_back(transform);
        }
        std::vector<Coupling::Result> results;
        int status = 0;
        return m_coupling.Analyze(0.1 * number, transforms, results, status);
    }

    fake::Apartment m_apartment;
    CKinoraVeltrixCoupling m_coupling;
    HandleSession& m_records;
};

TEST_F(Sessions, ReachTheDesktopAsThoseOfTheCouplingObjectDo) {
    std::vector<std::string> journals;
    for (const Call& call : m_session.Calls()) {
        ASSERT_EQ(call.run(), KV_OK) << call.name;
        journals.push_back(Desktop().world.Journal());
        Desktop().world.ClearJournal();
    }
    m_session.RestartDesktop();
    ObjectSession object(m_session);
    int step = 0;
    std::size_t number = 0;
    for (const Call& call : m_session.Calls()) {
        const bool isStep = call.name == "Step";
        Desktop().updateReports = step < 2 ? L"" : L"Never";
        ASSERT_TRUE(object.Run(call, step)) << call.name;
        step += isStep ? 1 : 0;
        EXPECT_PRED_FORMAT2(fake::MatchesTranscript, Desktop().world, journals[number++]) << call.name;
        Desktop().world.ClearJournal();
    }
}

TEST_F(Sessions, BodiesAreDrawnInTheirPlacesAndTurnFromThere) {
    Begin();
    ASSERT_EQ(m_session.Step(0), KV_OK);
    const std::string journal = Desktop().world.Journal();
    // The rotor is as it was drawn, turned about x: nothing is turned in the desktop.
    EXPECT_THAT(journal, HasSubstr("\"Rotor_Psi"));
    EXPECT_THAT(journal, HasSubstr("0.100000Meter"));
    EXPECT_THAT(journal, testing::Not(HasSubstr("1.570796rad")));
}

// --- Loads -----------------------------------------------------------------------------------------------------------

/// A load of its own for each component: forces 1, 2, 3 N and torques 1000, 2000, 3000 mN m.
double LoadOf(const std::wstring& variable) {
    const double component = variable.back() == L'x' || variable.back() == L'X'   ? 1.0
                             : variable.back() == L'y' || variable.back() == L'Y' ? 2.0
                                                                                  : 3.0;
    return variable.find(L"Torque") == std::wstring::npos ? component : 1000.0 * component;
}

TEST_F(Sessions, LoadsAreNewtonsAndNewtonMetresInTheBodysAxes) {
    Begin();
    Desktop().loads = LoadOf;
    ASSERT_EQ(m_session.Step(0), KV_OK);
    ASSERT_EQ(m_session.LoadCount(), 3U);
    EXPECT_EQ(m_session.SolverStatus(), 0);
    // The rotor's axes as drawn are x, -z and y; the stator's are the global ones.
    const kv_load& rotor = m_session.Loads()[0];
    EXPECT_THAT(rotor.force, testing::ElementsAre(1.0, -3.0, 2.0));
    EXPECT_THAT(rotor.torque, testing::ElementsAre(1.0, -3.0, 2.0));
    const kv_load& stator = m_session.Loads()[1];
    EXPECT_THAT(stator.force, testing::ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(stator.torque, testing::ElementsAre(1.0, 2.0, 3.0));
}

TEST_F(Sessions, ABodyThatIsNotDeclaredHasTheGlobalAxesAsDrawn) {
    ASSERT_EQ(m_session.Create(), KV_OK);
    for (const wchar_t* const load : {L"Force_Rotor", L"Torque_Rotor"}) {
        for (const wchar_t* const axis : {L"_x", L"_y", L"_z"}) {
            Desktop().outputVariables.push_back(std::wstring(load) + axis);
        }
    }
    Desktop().outputModule.On("GetOutputVariableValue",
                              [](const fake::Arguments& arguments) { return fake::Real(LoadOf(arguments[0].text)); });
    auto load = Sized<kv_load>();
    std::size_t count = 0;
    std::int32_t solver = 0;
    Desktop().updateReports = L"Never";
    ASSERT_EQ(kv_analyze(Handle(), 0.0, m_session.Poses(0).data(), 1, &load, &count, &solver), KV_OK)
        << ErrorText(Handle());
    EXPECT_THAT(load.force, testing::ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(load.torque, testing::ElementsAre(1.0, 2.0, 3.0));
}

// --- Projects --------------------------------------------------------------------------------------------------------

TEST_F(Sessions, TwoProjectsOnOneHandleHaveTheirOwnClones) {
    for (int project = 0; project < 2; ++project) {
        ASSERT_EQ(m_session.Create(), KV_OK) << ErrorText(Handle());
        ASSERT_EQ(m_session.Init(), KV_OK) << ErrorText(Handle());
        ASSERT_EQ(m_session.Step(0), KV_OK) << ErrorText(Handle());
        EXPECT_EQ(Desktop().world.Count("CloneMaterial"), 1U) << "the magnet's material, turned";
        ASSERT_EQ(kv_save_project(Handle()), KV_OK);
        ASSERT_EQ(kv_close_project(Handle()), KV_OK);
        // The next project has no clones and no model yet.
        fake::FakeDesktop& desktop = Desktop();
        desktop.variables.clear();
        desktop.coordinateSystems.clear();
        desktop.setups.clear();
        desktop.outputVariables.clear();
        desktop.reports.clear();
        desktop.histories.clear();
        desktop.world.ClearJournal();
    }
    EXPECT_EQ(kv_quit(Handle()), KV_OK);
}

TEST_F(Sessions, ANewProjectReleasesTheOneBeforeWithoutClosingIt) {
    ASSERT_EQ(m_session.Create(), KV_OK);
    ASSERT_EQ(m_session.Create(), KV_OK);
    EXPECT_EQ(m_session.Owned(), "1111");
    EXPECT_EQ(Desktop().world.Count("Close"), 0U);
}

TEST_F(Sessions, DesignsAreListedInOrder) {
    Desktop().project.On("GetChildNames", fake::Texts({L"Zeta", L"Other", L"\u00C4pfel", L"Alpha"}));
    fake::Object& other = Desktop().world.Make("other design");
    other.On("GetDesignType", fake::Text(L"Thermal"));
    Desktop().project.On("GetDesign", [&](const fake::Arguments& arguments) {
        return Reference(arguments[0].text == L"Other" ? other : Desktop().design);
    });
    kv_texts* designs = nullptr;
    ASSERT_EQ(kv_get_designs(Handle(), "magnets.obj", &designs), KV_OK) << ErrorText(Handle());
    EXPECT_EQ(TakeTexts(designs), (std::vector<std::string>{"Alpha", "Zeta", "\xC3\x84pfel"}));
}

TEST_F(Sessions, MessagesAreUtf8AndTheirSeverityIsHandedOn) {
    ASSERT_EQ(m_session.Create(), KV_OK);
    Desktop().messages = {L"first", L"", L"gr\u00F6\u00DFer"};
    Desktop().world.ClearJournal();
    for (const std::int32_t severity : {0, 3, 17}) {
        kv_texts* messages = nullptr;
        ASSERT_EQ(kv_get_messages(Handle(), severity, &messages), KV_OK);
        EXPECT_EQ(TakeTexts(messages), (std::vector<std::string>{"first", "",
                                                                 "gr\xC3\xB6\xC3\x9F"
                                                                 "er"}));
        EXPECT_THAT(Desktop().world.Journal(), HasSubstr("int(" + std::to_string(severity) + ")"));
    }
}

TEST_F(Sessions, TextsOfManyLettersReachTheDesktop) {
    ASSERT_EQ(m_session.Create(), KV_OK);
    Desktop().world.ClearJournal();
    ASSERT_EQ(kv_init_geometry(Handle(), "magnets.obj", "\xC2\xB5m"), KV_OK) << ErrorText(Handle());
    EXPECT_THAT(Desktop().world.Journal(), HasSubstr("\xC2\xB5m"));
}

// --- Codes -----------------------------------------------------------------------------------------------------------

TEST_F(Sessions, ALaunchSaysWhatIsWrong) {
    EXPECT_EQ(kv_launch(Handle(), "NoSuchVersion"), KV_NOT_INSTALLED);
    EXPECT_THAT(ErrorText(Handle()),
                StartsWith("kv_launch: no desktop is installed as \"Pellux.VantorDesktop.NoSuchVersion\"."));
    EXPECT_EQ(kv_launch(Handle(), ""), KV_NOT_INSTALLED);
    EXPECT_THAT(ErrorText(Handle()), StartsWith("kv_launch: no desktop is installed as \"Pellux.VantorDesktop\"."));
    m_session.Offer(nullptr);
    EXPECT_EQ(kv_launch(Handle(), nullptr), KV_NOT_STARTED);
    EXPECT_THAT(ErrorText(Handle()), HasSubstr("is installed and does not start"));
    EXPECT_EQ(m_session.Create(), KV_NOT_STARTED);
    EXPECT_EQ(kv_open_project(Handle(), "magnets.obj", nullptr), KV_NOT_STARTED);
    kv_texts* designs = nullptr;
    EXPECT_EQ(kv_get_designs(Handle(), "magnets.obj", &designs), KV_NOT_STARTED);
    m_session.Offer(&Desktop().application);
    Desktop().application.On("GetAppDesktop", Fails());
    EXPECT_EQ(kv_launch(Handle(), nullptr), KV_FAILED);
    Desktop().application.On("GetAppDesktop", Reference(Desktop().desktop));
    EXPECT_EQ(kv_launch(Handle(), fake::Registration::UniqueVersion().c_str()), KV_OK);
    EXPECT_EQ(kv_launch(Handle(), "NoSuchVersion"), KV_OK) << "it has a desktop already";
}

TEST_F(Sessions, AFileThatIsNotThereIsTold) {
    EXPECT_EQ(kv_open_project(Handle(), "nowhere/absent.vtdk", nullptr), KV_NO_SUCH_FILE);
    EXPECT_THAT(ErrorText(Handle()), StartsWith("kv_open_project: there is no project file \""));
    kv_texts* designs = nullptr;
    EXPECT_EQ(kv_get_designs(Handle(), "absent.vtdk", &designs), KV_NO_SUCH_FILE);
    Desktop().editor.On("Import", Fails());
    EXPECT_EQ(kv_create_project(Handle(), "Magnets.vtdk", "absent.obj", "mm"), KV_NO_SUCH_FILE);
    EXPECT_THAT(ErrorText(Handle()), StartsWith("kv_create_project: there is no geometry file \""));
    EXPECT_EQ(m_session.Owned(), "1111") << "the new project stays open";
    EXPECT_EQ(kv_init_geometry(Handle(), "absent.obj", "mm"), KV_NO_SUCH_FILE);
    EXPECT_EQ(kv_init_geometry(Handle(), "magnets.obj", "mm"), KV_FAILED) << "it is there, and is refused";
}

/// Calls that hand over a text, by the text.
std::vector<Call> CallsWith(kv_coupling* handle, const char* text) {
    static const double none[3] = {};
    static const Coupling::Transform rotor{"Rotor", {}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}};
    const auto init = [=](const char* object, const char* material, const char* materialsObject) {
        const std::vector<const char*> objects{object};
        const kv_group group = GroupOf(rotor, objects);
        const kv_material record = MaterialOf(materialsObject, material, none);
        return kv_init_magnetic_objects(handle, &group, 1, &record, 1);
    };
    return {
        {"version", [=] { return kv_launch(handle, text); }},
        {"project", [=] { return kv_create_project(handle, text, "magnets.obj", "mm"); }},
        {"geometry", [=] { return kv_create_project(handle, "a.vtdk", text, "mm"); }},
        {"units", [=] { return kv_create_project(handle, "a.vtdk", "magnets.obj", text); }},
        {"opened project", [=] { return kv_open_project(handle, text, nullptr); }},
        {"design", [=] { return kv_open_project(handle, "magnets.obj", text); }},
        {"designs' project",
         [=] {
             kv_texts* designs = nullptr;
             return kv_get_designs(handle, text, &designs);
         }},
        {"added geometry", [=] { return kv_init_geometry(handle, text, "mm"); }},
        {"added units", [=] { return kv_init_geometry(handle, "magnets.obj", text); }},
        {"object", [=] { return init(text, "N45", "Magnet"); }},
        {"material", [=] { return init("Magnet", text, "Magnet"); }},
        {"material's object", [=] { return init("Magnet", "N45", text); }},
    };
}

TEST_F(Sessions, TextsThatAreNoneAreNotHandedOn) {
    std::vector<const char*> wrongs = {"a\xFFz", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "caf\xE9"};
#ifdef _WIN32
    wrongs.push_back("\xE4\xB8\xAD"); // U+4E2D, which code page 1252 lacks
#endif
    ASSERT_EQ(m_session.Create(), KV_OK);
    Desktop().world.ClearJournal();
    for (const char* const wrong : wrongs) {
        for (const Call& call : CallsWith(Handle(), wrong)) {
            EXPECT_EQ(call.run(), KV_BAD_TEXT) << call.name << ": " << ErrorText(Handle());
            EXPECT_TRUE(Desktop().world.Entries().empty()) << call.name << ": " << Desktop().world.Journal();
        }
    }
    EXPECT_EQ(kv_save_project(Handle()), KV_OK) << "the project is still open";
}

TEST_F(Sessions, ASolverThatFailsGivesItsStatus) {
    Begin();
    Desktop().design.On("Analyze", Long(-7));
    EXPECT_EQ(m_session.Step(0), KV_SOLVER);
    EXPECT_EQ(m_session.SolverStatus(), -7);
    EXPECT_EQ(m_session.LoadCount(), 0U);
    EXPECT_THAT(ErrorText(Handle()), StartsWith("kv_analyze: the solver failed with the status -7.\n"));
    Desktop().design.On("Analyze", Long(0));
    EXPECT_EQ(m_session.Step(1), KV_OK);
    EXPECT_EQ(m_session.SolverStatus(), 0);
}

TEST_F(Sessions, ARecordingThatEndsEarlyIsIncomplete) {
    Begin();
    Desktop().loads = [](const std::wstring& variable) {
        if (variable.find(L"Yoke") != std::wstring::npos) {
            throw std::runtime_error("a desktop of C++");
        }
        return LoadOf(variable);
    };
    EXPECT_EQ(m_session.Step(0), KV_INCOMPLETE);
    EXPECT_EQ(m_session.LoadCount(), 2U);
    EXPECT_EQ(m_session.SolverStatus(), 0);
    EXPECT_EQ(m_session.Loads()[1].force[2], 3.0);
    EXPECT_THAT(ErrorText(Handle()), StartsWith("kv_analyze: the step is solved, but there are only 2 loads of 3"));
}

TEST_F(Sessions, LoadsThatWereReadComeOutOfAFailedStepToo) {
    Begin();
    Desktop().loads = LoadOf;
    Desktop().outputModule.OnCall("GetOutputVariableValue", 9, Fails());
    EXPECT_EQ(m_session.Step(0), KV_FAILED);
    EXPECT_EQ(m_session.LoadCount(), 1U);
    EXPECT_EQ(m_session.Loads()[0].force[0], 1.0);
}

TEST_F(Sessions, ADesktopThatTurnsCallsAwayIsBusy) {
    Begin();
    for (const HRESULT code : {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER}) {
        Desktop().project.On("Save", Fails(code));
        EXPECT_EQ(kv_save_project(Handle()), KV_BUSY);
        EXPECT_THAT(ErrorText(Handle()), StartsWith("kv_save_project: the desktop is busy"));
        Desktop().design.OnCall("Analyze", 1, Fails(code));
        EXPECT_EQ(m_session.Step(0), KV_BUSY);
    }
    Desktop().project.On("Save", Nothing());
    EXPECT_EQ(kv_save_project(Handle()), KV_OK);
}

TEST_F(Sessions, CallsInTheWrongOrderFail) {
    const auto expectFailures = [&](const std::string& reason) {
        kv_texts* messages = nullptr;
        const std::vector<Call> calls{
            {"kv_init_geometry", [&] { return kv_init_geometry(Handle(), "magnets.obj", "mm"); }},
            {"kv_init_magnetic_objects", [&] { return m_session.Init(); }},
            {"kv_analyze", [&] { return m_session.Step(0); }},
            {"kv_get_messages", [&] { return kv_get_messages(Handle(), 0, &messages); }},
            {"kv_save_project", [&] { return kv_save_project(Handle()); }},
            {"kv_close_project", [&] { return kv_close_project(Handle()); }},
        };
        for (const Call& call : calls) {
            EXPECT_EQ(call.run(), KV_FAILED) << call.name;
            EXPECT_THAT(ErrorText(Handle()), StartsWith(call.name + ": " + reason + "\n"));
        }
    };
    expectFailures("no desktop has been launched.");
    EXPECT_EQ(kv_release(Handle()), KV_OK) << "also without a desktop";
    EXPECT_EQ(kv_quit(Handle()), KV_OK) << "also without a desktop";
    ASSERT_EQ(kv_launch(Handle(), nullptr), KV_OK);
    expectFailures("no project is open.");
    ASSERT_EQ(m_session.Create(), KV_OK);
    ASSERT_EQ(kv_close_project(Handle()), KV_OK);
    expectFailures("no project is open.");
    ASSERT_EQ(m_session.Create(), KV_OK);
    EXPECT_EQ(kv_quit(Handle()), KV_OK);
    EXPECT_EQ(m_session.Owned(), "0000");
    expectFailures("no desktop has been launched.");
    ASSERT_EQ(m_session.Create(), KV_OK) << "which launches again";
    EXPECT_EQ(kv_release(Handle()), KV_OK);
    EXPECT_EQ(m_session.Owned(), "0000");
    expectFailures("no desktop has been launched.");
}

TEST_F(Sessions, AQuitThatCannotSaveDoesNothingElse) {
    ASSERT_EQ(m_session.Create(), KV_OK);
    Desktop().project.On("Save", Fails());
    EXPECT_EQ(kv_quit(Handle()), KV_FAILED);
    EXPECT_EQ(m_session.Owned(), "1111");
    EXPECT_EQ(Desktop().world.Count("QuitApplication"), 0U);
    EXPECT_EQ(kv_release(Handle()), KV_OK);
    EXPECT_EQ(m_session.Owned(), "0000");
}

TEST_F(Sessions, DeletingLetsGoOfTheDesktop) {
    Begin();
    m_session.DeleteHandle();
    EXPECT_EQ(m_session.Owned(), "0000");
    EXPECT_TRUE(m_session.HoldsNothingElse());
    EXPECT_EQ(Desktop().world.Count("QuitApplication") + Desktop().world.Count("Close"), 0U);
}

TEST(Handles, AreIndependentOfEachOther) {
    HandleSession first;
    ASSERT_EQ(first.Create(), KV_OK);
    HandleSession second;
    ASSERT_EQ(second.Create(), KV_OK);
    EXPECT_EQ(kv_quit(first.Handle()), KV_OK);
    EXPECT_EQ(first.Owned(), "0000");
    EXPECT_EQ(second.Owned(), "1111");
    EXPECT_EQ(second.Init(), KV_OK);
    EXPECT_EQ(second.Step(0), KV_OK);
}

} // namespace
} // namespace capi
