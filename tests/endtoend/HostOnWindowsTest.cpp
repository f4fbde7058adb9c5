// What only Windows has: code pages, files that others hold, a search for DLLs, a desktop of several hosts.
#include "programs/Environment.h"
#include "tests/endtoend/CubeMagnets.h"
#include "tests/endtoend/Patiently.h"

#include <windows.h>

#include <objbase.h>

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::Not;

using HostOnWindows = CubeMagnets;

/// A file that somebody else has open.
class HeldFile {
public:
    HeldFile(const std::filesystem::path& file, DWORD share)
        : m_handle(CreateFileW(file.c_str(), GENERIC_WRITE, share, nullptr, OPEN_ALWAYS, 0, nullptr)) {
        EXPECT_NE(m_handle, INVALID_HANDLE_VALUE) << file.u8string();
    }
    ~HeldFile() { CloseHandle(m_handle); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

private:
    HANDLE m_handle;
};

TEST_F(HostOnWindows, FoldersOutsideTheCodePageAreBadInput) {
    const Outcome outcome = Run({"--out", (m_folder / "x").u8string() + "\u65e5\u672c"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("code page"));
}

TEST_F(HostOnWindows, PathsMayHaveTheMarkOfThoseThatAreNotLookedInto) {
    const std::filesystem::path folder = std::filesystem::absolute(m_folder.Path() / L"m\u00e4rked").make_preferred();
    const Outcome outcome = Run({"--out", "\\\\?\\" + folder.u8string(), "--steps", "1"});
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("\nproject       " + folder.u8string()));
    EXPECT_TRUE(std::filesystem::exists(folder / "cube-magnets.vantor"));
}

TEST_F(HostOnWindows, ResultsThatGoMissingWithoutAFailureAreNoticed) {
    // A file that may be written and not deleted keeps the reports folder from being emptied: the step is solved but
    // not recorded.
    std::filesystem::create_directories(m_folder / "output/cube-magnets.reports");
    const HeldFile held(m_folder / "output/cube-magnets.reports/held.csv", FILE_SHARE_READ | FILE_SHARE_WRITE);
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("step 0 at 0 s was solved, but only 0 of 2 bodies got a result"));
    EXPECT_THAT(outcome.output, HasSubstr("warning: Kinora-Veltrix Coupling log path is not valid: "));
    EXPECT_THAT(outcome.output, HasSubstr("is a file open elsewhere"));
}

TEST_F(HostOnWindows, NothingIsReplacedWhenAnOutputIsHeldOpen) {
    ASSERT_EQ(Run({"--steps", "1"}).exitCode, 1);
    const std::string project = Content(m_folder / "output/cube-magnets.vantor");
    const std::string state = Content(m_folder / "output/cube-magnets.state.json");
    for (const char* name : {"states.csv", "cube-magnets.reports/Force_upper.csv"}) {
        const HeldFile held(m_folder / ("output/" + std::string(name)), FILE_SHARE_READ);
        const Outcome outcome = Run({"--overwrite"});
        EXPECT_EQ(outcome.exitCode, 2) << name;
        EXPECT_THAT(outcome.output, HasSubstr("cannot be written; close it elsewhere")) << name;
    }
    EXPECT_EQ(Content(m_folder / "output/cube-magnets.vantor"), project);
    EXPECT_EQ(Content(m_folder / "output/cube-magnets.state.json"), state);
}

/// A current folder with a file that is no DLL for every DLL of the system and of the programs.
class TrapFolder {
public:
    TrapFolder() : m_before(std::filesystem::current_path()) {
        std::vector<wchar_t> system(MAX_PATH);
        GetSystemDirectoryW(system.data(), MAX_PATH);
        Trap("trap.dll");
        for (const std::filesystem::path& folder :
             {std::filesystem::path(system.data()), ProgramBeside("kinora-run").parent_path()}) {
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                if (entry.path().extension() == ".dll") {
                    Trap(entry.path().filename());
                }
            }
        }
        std::filesystem::current_path(m_folder.Path());
    }
    ~TrapFolder() { std::filesystem::current_path(m_before); }
    TrapFolder(const TrapFolder&) = delete;
    TrapFolder& operator=(const TrapFolder&) = delete;

    std::size_t Traps() const { return m_traps; }

private:
    void Trap(const std::filesystem::path& name) {
        std::ofstream(m_folder.Path() / name) << "no DLL";
        ++m_traps;
    }
    ScratchFolder m_folder;
    std::filesystem::path m_before;
    std::size_t m_traps = 0;
};

TEST_F(HostOnWindows, NothingIsLoadedFromTheCurrentFolder) {
    const TrapFolder traps;
    EXPECT_GT(traps.Traps(), 100U);
    const std::unique_ptr<HINSTANCE__, decltype(&FreeLibrary)> trap(LoadLibraryW(L"trap.dll"), &FreeLibrary);
    const DWORD error = GetLastError();
    EXPECT_EQ(trap, nullptr);
    ASSERT_EQ(error, static_cast<DWORD>(ERROR_BAD_EXE_FORMAT)) << "the traps are where the loader looks last";
    EXPECT_THAT(Run({"--steps", "1"}).output, HasSubstr("Saving and closing the project\n"));
    for (const char* const program : {"kinora-run", "vantor-sim", "vantor-trace"}) {
        EXPECT_EQ(RunProgram(ProgramBeside(program), {"--help"}).exitCode, 0) << program;
    }
    EXPECT_EQ(RunProgram(ProgramBeside("minimal-host"), {}).exitCode, 2) << "which says how it is used";
}

TEST(RunCmd, RunsItsOwnFolderAndHandsOverArgumentsAndStatus) {
    const ScratchFolder folder;
    const std::filesystem::path project = folder / "my project";
    ASSERT_EQ(RunHost({"--new", project.u8string(), "--template", "spring"}).exitCode, 0);
    const std::filesystem::path script = project / "run.cmd";
    const Outcome stopped = RunProgram(script, {"--no-pause", "--steps", "1", "--quiet"});
    EXPECT_EQ(stopped.exitCode, 1) << stopped.output;
    EXPECT_EQ(Column(project / "output/spring.states.csv", "Step").size(), 1U) << stopped.output;
    EXPECT_THAT(stopped.output, Not(HasSubstr("ress any key")));
    const Outcome refused = RunProgram(script, {"--no-pause", "--nonsense"});
    EXPECT_EQ(refused.exitCode, 2) << refused.output;
    EXPECT_THAT(refused.output, HasSubstr("--nonsense"));
}

/// A project that this process has open in the simulator, beside the runs of kinora-run.
class SharedDesktop : public CubeMagnets {
protected:
    void SetUp() override {
        CubeMagnets::SetUp();
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", "Simulator");
        std::filesystem::create_directory(m_folder / "output");
        const std::string geometry = (m_folder / "cube-magnets.obj").u8string();
        ASSERT_TRUE(Patiently([&] { return m_coupling->CreateProject(m_project.u8string(), geometry, "mm"); }));
        EXPECT_TRUE(m_coupling->SaveProject()); // others do not see a project that somebody is changing
    }
    void TearDown() override { CoUninitialize(); }

    IKinoraVeltrixInterface* m_coupling = GetKinoraVeltrixFactoryInterface();
    /// Where a run would put its own.
    const std::filesystem::path m_project = m_folder / "output/cube-magnets.vantor";
};

TEST_F(SharedDesktop, StaysOpenWhenOtherProjectsAreOpenInIt) {
    const ScratchFolder other;
    const Outcome run = Run({"--out", other.Path().u8string(), "--steps", "1"});
    EXPECT_THAT(run.output, HasSubstr("The desktop stays open: other projects are open in it\n"));
    EXPECT_TRUE(m_coupling->CloseProject());
    EXPECT_TRUE(m_coupling->QuitApplication());
}

TEST_F(SharedDesktop, LosesAProjectThatAKilledRunHasLeftInIt) {
    EXPECT_TRUE(m_coupling->ReleaseApplication());
    std::ofstream(m_folder / "output/cube-magnets.state.json") << "{ \"step\": -1 }";
    const Outcome outcome = Run({"--steps", "1"});
    EXPECT_THAT(outcome.output, HasSubstr("Saving and closing the project\n"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("stays open")));
}

} // namespace
} // namespace endtoend
