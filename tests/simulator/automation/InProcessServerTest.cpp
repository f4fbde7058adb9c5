// The simulator as a registered DLL in this process, and its registration. Changes the machine's classes: under Wine it
// runs in a prefix of its own.
#include "tests/simulator/automation/Programs.h"

#include <objbase.h>

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <thread>

using namespace calls;
using namespace std::chrono_literals;

namespace {

constexpr const wchar_t* progId = L"Pellux.VantorDesktop.SimulatorInProcess";
constexpr const wchar_t* programProgId = L"Pellux.VantorDesktop.Simulator";
constexpr const wchar_t* plainProgId = L"Pellux.VantorDesktop";
constexpr const wchar_t* dllName = L"vantor-sim-inprocess.dll";
const std::wstring classKey = L"CLSID\\{CC02643D-559F-41EB-8F1F-ED5C1A35EF3C}";

/// A text among the classes of the registry; "none" when it is not there.
std::wstring Read(const std::wstring& key, const wchar_t* name = nullptr) {
    wchar_t text[1024] = {};
    DWORD bytes = sizeof(text);
    const LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &bytes);
    return status == ERROR_SUCCESS ? text : L"none";
}

bool HasKey(const std::wstring& key) {
    HKEY opened = nullptr;
    const bool isThere = RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS;
    if (isThere) {
        RegCloseKey(opened);
    }
    return isThere;
}

/// Automation on a thread, as long as it lives.
class Apartment {
public:
    explicit Apartment(DWORD kind) { EXPECT_EQ(CoInitializeEx(nullptr, kind), S_OK); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

Object NewDesktop() {
    return calls::NewDesktop(progId);
}

void QuitDesktop() {
    Call(NewDesktop().Get(), L"QuitApplication", {});
}

/// What was registered before the tests is put back.
class Registered : public testing::Test {
protected:
    static void SetUpTestSuite() {
        wasRegistered = IsClassRegistered(programProgId);
        ASSERT_EQ(RunSimulator(L"/RegServer"), 0U);
    }
    static void TearDownTestSuite() {
        if (!wasRegistered) {
            RunSimulator(L"/UnregServer");
        }
    }

    inline static bool wasRegistered = false;
};

class InProcessServer : public Registered {};

class InProcessRegistration : public Registered {
protected:
    /// A simulator without its DLL.
    InProcessRegistration() {
        std::filesystem::create_directories(m_folder);
        std::filesystem::copy_file(SimulatorPath(), LonelySimulator(),
                                   std::filesystem::copy_options::overwrite_existing);
        // Where the DLLs of its C++ runtime are found.
        const std::wstring programs = std::filesystem::path(SimulatorPath()).parent_path().wstring();
        SetEnvironmentVariableW(L"PATH", (programs + L";" + m_path).c_str());
    }
    ~InProcessRegistration() override {
        SetEnvironmentVariableW(L"PATH", m_path.c_str());
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
        EXPECT_EQ(RunSimulator(L"/RegServer"), 0U);
    }

    std::filesystem::path LonelySimulator() const { return m_folder / L"vantor-sim.exe"; }
    std::filesystem::path MissingDll() const { return m_folder / dllName; }

private:
    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / (L"vantor-sim-alone-" + std::to_wstring(GetCurrentProcessId()));
    const std::wstring m_path = _wgetenv(L"PATH");
};

} // namespace

TEST_F(InProcessServer, IsLaunchedByItsNameInThisProcess) {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    const Object desktop = NewDesktop();
    ASSERT_NE(desktop.Get(), nullptr);
    EXPECT_NE(GetModuleHandleW(dllName), nullptr);
    CallObject(desktop.Get(), L"NewProject", {});
    EXPECT_EQ(ProjectCount(desktop), 1);
    Call(desktop.Get(), L"QuitApplication", {});
}

TEST_F(InProcessServer, RefusesToQuitWhileAnotherClientUsesIt) {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    Object first = NewDesktop();
    const Object second = NewDesktop();
    Object project = CallObject(first.Get(), L"NewProject", {});
    EXPECT_EQ(ProjectCount(second), 0) << "its unsaved changes are the first one's";
    Call(first.Get(), L"QuitApplication", {});
    EXPECT_THAT(Messages(second),
                testing::ElementsAre(L"QuitApplication: the desktop stays open, 1 other client uses it."));
    EXPECT_EQ(Try(project.Get(), L"GetName", {}).status, S_OK);
    first = Object();
    project = Object();
    Call(second.Get(), L"QuitApplication", {});
}

TEST_F(InProcessServer, BeginsAfreshAfterAQuitAndLeavesTheOldOnesObjectsHarmless) {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    const Object old = NewDesktop();
    const Object project = CallObject(old.Get(), L"NewProject", {});
    Try(old.Get(), L"GetProjects", {Int(1)});
    ASSERT_EQ(Messages(old).size(), 1U);
    Call(old.Get(), L"QuitApplication", {});

    const Object fresh = NewDesktop();
    EXPECT_EQ(ProjectCount(fresh), 0);
    EXPECT_THAT(Messages(fresh), testing::IsEmpty());
    EXPECT_EQ(ProjectCount(old), 0) << "closed without saving";
    const Outcome name = Try(project.Get(), L"GetName", {});
    EXPECT_EQ(name.status, DISP_E_EXCEPTION);
    EXPECT_EQ(name.scode, static_cast<SCODE>(0x8004000D));
    CallObject(old.Get(), L"NewProject", {});
    EXPECT_EQ(ProjectCount(fresh), 0);
    Call(fresh.Get(), L"QuitApplication", {});
}

TEST_F(InProcessServer, KeepsItsProjectsForTheNextClientOfTheProcess) {
    {
        const Apartment apartment(COINIT_APARTMENTTHREADED);
        CallObject(NewDesktop().Get(), L"NewProject", {});
    }
    // This process had let go of automation altogether.
    const Apartment apartment(COINIT_MULTITHREADED);
    EXPECT_EQ(ProjectCount(NewDesktop()), 1);
    QuitDesktop();
    EXPECT_EQ(ProjectCount(NewDesktop()), 0);
    QuitDesktop();
}

TEST_F(InProcessServer, ReadsTheEnvironmentWhenADesktopBegins) {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    SetEnvironmentVariableW(L"VANTOR_SIM_UPDATE_REPORTS", L"On Completion");
    SetEnvironmentVariableW(L"VANTOR_SIM_MATERIALS", L"C:\\no\\materials.json");
    const Object desktop = NewDesktop();
    SetEnvironmentVariableW(L"VANTOR_SIM_UPDATE_REPORTS", nullptr);
    SetEnvironmentVariableW(L"VANTOR_SIM_MATERIALS", nullptr);
    const Variant option = Call(desktop.Get(), L"GetRegistryString",
                                {Text(L"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve")});
    ASSERT_EQ(option.vt, VT_BSTR);
    EXPECT_STREQ(option.bstrVal, L"On Completion");
    EXPECT_THAT(Messages(desktop), testing::ElementsAre(testing::StartsWith(
                                       L"the materials file named by VANTOR_SIM_MATERIALS is not used: ")));
    Call(desktop.Get(), L"QuitApplication", {});
}

TEST_F(InProcessServer, ServesThreadsOfEitherKindAtOnce) {
    constexpr std::size_t rounds = 200;
    std::set<std::wstring> names[2];
    const auto work = [](DWORD kind, std::set<std::wstring>& made) {
        const Apartment apartment(kind);
        const Object desktop = NewDesktop();
        for (std::size_t round = 0; round < rounds; ++round) {
            const Object project = CallObject(desktop.Get(), L"NewProject", {});
            made.insert(Call(project.Get(), L"GetName", {}).bstrVal);
        }
    };
    std::thread single(work, COINIT_APARTMENTTHREADED, std::ref(names[0]));
    std::thread multiple(work, COINIT_MULTITHREADED, std::ref(names[1]));
    single.join();
    multiple.join();
    names[0].insert(names[1].begin(), names[1].end());
    EXPECT_EQ(names[0].size(), 2 * rounds) << "no two projects have one name: command came after command";
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    EXPECT_EQ(ProjectCount(NewDesktop()), static_cast<int>(2 * rounds));
    QuitDesktop();
}

TEST_F(InProcessRegistration, LeadsToTheDllBesideTheProgram) {
    EXPECT_EQ(Read(progId + std::wstring(L"\\CLSID")), L"{CC02643D-559F-41EB-8F1F-ED5C1A35EF3C}");
    EXPECT_EQ(Read(classKey + L"\\InprocServer32"), fake::BesideThisProgram(dllName));
    EXPECT_EQ(Read(classKey + L"\\InprocServer32", L"ThreadingModel"), L"Both");
}

TEST_F(InProcessRegistration, IsTakenBackWhole) {
    EXPECT_EQ(RunSimulator(L"/UnregServer"), 0U);
    for (const std::wstring& key : {std::wstring(progId), classKey, std::wstring(programProgId)}) {
        EXPECT_FALSE(HasKey(key)) << std::string(key.begin(), key.end());
    }
    EXPECT_EQ(RunSimulator(L"/UnregServer"), 0U) << "there is nothing to take back";
}

TEST_F(InProcessRegistration, LeavesTheDesktopsOwnNameToTheProgram) {
    if (IsClassRegistered(plainProgId)) {
        GTEST_SKIP() << "another program holds it";
    }
    EXPECT_EQ(RunSimulator(L"/RegServer /Default"), 0U);
    EXPECT_EQ(Read(plainProgId + std::wstring(L"\\CLSID")), Read(programProgId + std::wstring(L"\\CLSID")));
    EXPECT_EQ(RunSimulator(L"/UnregServer"), 0U);
}

TEST_F(InProcessRegistration, FailsWithoutTheDllAndWritesNothingForIt) {
    ASSERT_EQ(RunSimulator(L"/UnregServer"), 0U);
    OutputPipe pipe;
    const Process lonely(L"\"" + LonelySimulator().wstring() + L"\" /RegServer", pipe.WriteEnd());
    EXPECT_THAT(pipe.ReadToTheEnd(),
                testing::EndsWith("Pellux.VantorDesktop.SimulatorInProcess is not registered: " +
                                  MissingDll().u8string() + " is missing; it must lie beside this program.\n"));
    ASSERT_TRUE(lonely.EndsWithin(20s));
    EXPECT_EQ(lonely.ExitCode(), 1U);
    EXPECT_FALSE(HasKey(progId));
    EXPECT_FALSE(HasKey(classKey));
    EXPECT_TRUE(IsClassRegistered(programProgId)) << "the program itself can be had";
}
