// What the host says and answers when something is wrong.
#include "tests/endtoend/Programs.h"
#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <chrono>
#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The cube magnets with parts of the scenario's text replaced, in a folder of its own.
class HostFailure : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::copy_file(Examples() / "cube-magnets" / "cube-magnets.obj", m_folder / "cube-magnets.obj");
        m_text = Content(Examples() / "cube-magnets" / "scenario.json");
    }

    void Replace(const std::string& old, const std::string& text) {
        const std::size_t at = m_text.find(old);
        ASSERT_NE(at, std::string::npos) << old;
        m_text.replace(at, old.size(), text);
    }

    Outcome Run(std::vector<std::wstring> arguments = {}) {
        std::ofstream(m_folder / "scenario.json", std::ios::binary) << m_text;
        arguments.insert(arguments.begin(), (m_folder / "scenario.json").wstring());
        return RunHost(arguments);
    }

    ScratchFolder m_folder;
    std::string m_text;
};

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

TEST_F(HostFailure, BadCommandLinesAreBadInput) {
    EXPECT_EQ(RunHost({}).exitCode, 2);
    EXPECT_EQ(RunHost({L"scenario.json", L"--unknown"}).exitCode, 2);
    EXPECT_EQ(RunHost({L"scenario.json", L"--resume", L"--overwrite"}).exitCode, 2);
    EXPECT_EQ(RunHost({L"scenario.json", L"--steps", L"0"}).exitCode, 2);
    const Outcome missing = RunHost({(m_folder / "none.json").wstring()});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.output, HasSubstr("none.json: cannot be read"));
    EXPECT_EQ(RunHost({L"--help"}).exitCode, 0);
}

TEST_F(HostFailure, BadScenariosAreBadInputAndStartNothing) {
    Replace("\"name\": \"lower\"", "\"name\": \"../lower\"");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("scenario.json:14: /bodies/0/name: \"../lower\" holds a character"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "output"));
}

TEST_F(HostFailure, DryRunStartsNothing) {
    const Outcome outcome = Run({L"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("slider \"lift\" along (0, 0, 1), moves upper"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "output"));
}

TEST_F(HostFailure, DryRunRefusesMaterialsThatMissTheirObject) {
    Replace("\"lower_magnet\":", "\"lower_magnt\":");
    const Outcome outcome = Run({L"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("/materials/lower_magnt: there is no object \"lower_magnt\" in "
                                          "cube-magnets.obj, which has \"lower_magnet\", \"upper_magnet\". Did you "
                                          "mean \"lower_magnet\"?"));
}

TEST_F(HostFailure, DryRunWarnsOfObjectsWithoutAMaterial) {
    Replace("\"lower_magnet\": {", "// {");
    const Outcome outcome = Run({L"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("warning: "));
    EXPECT_THAT(outcome.output, HasSubstr("the object \"lower_magnet\" has no material and feels no force"));
}

TEST_F(HostFailure, FoldersOutsideTheCodePageAreBadInput) {
    const Outcome outcome = Run({L"--out", (m_folder / "x").wstring() + L"\u65e5\u672c"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("code page"));
}

TEST_F(HostFailure, AMissingDesktopIsNamedWithWhatToTry) {
    const Outcome outcome = Run({L"--desktop", L"NoSuchVersion"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output,
                HasSubstr("LaunchDesktop failed: Please check your QUORIX Vantor Desktop installation."));
    EXPECT_THAT(outcome.output, HasSubstr("KINORA_VELTRIX_VTDK_VERSION"));
}

TEST_F(HostFailure, AnObjectThatTheGeometryDoesNotHaveIsBadInput) {
    Replace("\"objects\": [\"upper_magnet\"]", "\"objects\": [\"uper_magnet\"]");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("there is no object \"uper_magnet\" in cube-magnets.obj, which has "
                                          "\"lower_magnet\", \"upper_magnet\". Did you mean \"upper_magnet\"?"));
}

TEST_F(HostFailure, AnUnknownMaterialFailsTheModel) {
    Replace("\"name\": \"magnet_1T\"", "\"name\": \"unobtainium\"");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: InitMagneticObjects failed"));
    EXPECT_THAT(outcome.output, HasSubstr("The desktop says:"));
    EXPECT_THAT(outcome.output, HasSubstr("unobtainium"));
    EXPECT_THAT(outcome.output, HasSubstr("Check that the desktop knows the materials"));
}

TEST_F(HostFailure, AnUnreadableGeometryFailsTheProject) {
    std::ofstream(m_folder / "cube-magnets.obj") << "o broken\nv 0 0\n";
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: CreateProject failed"));
    EXPECT_THAT(outcome.output, HasSubstr("cube-magnets.obj"));
}

TEST_F(HostFailure, OverlappingBodiesFailTheStepWithTheDesktopsWords) {
    Replace("\"expression\": \"20*mm*t\"", "\"expression\": \"-100*mm*t\"");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: Analyze failed: step 1 at 0.05 s"));
    EXPECT_THAT(outcome.output, HasSubstr("The desktop says:\n  error: "));
    EXPECT_THAT(outcome.output, HasSubstr("do bodies touch or overlap?"));
    // What was computed before is kept, and another run can follow.
    EXPECT_EQ(Column(m_folder / "output/states.csv", "Step").size(), 1u);
}

TEST_F(HostFailure, ResultsThatGoMissingWithoutAFailureAreNoticed) {
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

TEST_F(HostFailure, NoInputIsWrittenOver) {
    const std::string geometry = Content(m_folder / "cube-magnets.obj");
    for (const char* name : {"cube-magnets.obj", "scenario.json"}) {
        const std::filesystem::path file = m_folder / name;
        const Outcome outcome = Run({L"--csv", file.wstring()});
        EXPECT_EQ(outcome.exitCode, 2) << name;
        EXPECT_THAT(outcome.output, HasSubstr("would be the same file; give one of them another name.")) << name;
        EXPECT_FALSE(std::filesystem::exists(m_folder / "output")) << name;
    }
    EXPECT_EQ(Content(m_folder / "cube-magnets.obj"), geometry);
    EXPECT_EQ(Content(m_folder / "scenario.json"), m_text);
}

TEST_F(HostFailure, ADryRunFindsFilesThatWouldBeTheSame) {
    Replace("\"csv\": \"states.csv\"", "\"csv\": \"cube-magnets.vantor\"");
    const Outcome outcome = Run({L"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("the project and the states (csv) would be the same file"));
}

TEST_F(HostFailure, NothingIsReplacedWhenAnOutputIsHeldOpen) {
    ASSERT_EQ(Run({L"--steps", L"1"}).exitCode, 1);
    const std::string project = Content(m_folder / "output/cube-magnets.vantor");
    const std::string state = Content(m_folder / "output/cube-magnets.state.json");
    for (const char* name : {"states.csv", "cube-magnets.reports/Force_upper.csv"}) {
        const HeldFile held(m_folder / ("output/" + std::string(name)), FILE_SHARE_READ);
        const Outcome outcome = Run({L"--overwrite"});
        EXPECT_EQ(outcome.exitCode, 2) << name;
        EXPECT_THAT(outcome.output, HasSubstr("cannot be written; close it elsewhere")) << name;
    }
    EXPECT_EQ(Content(m_folder / "output/cube-magnets.vantor"), project);
    EXPECT_EQ(Content(m_folder / "output/cube-magnets.state.json"), state);
}

TEST_F(HostFailure, OneRunNeitherEndsNorDisturbsAnother) {
    const std::wstring spring = (Examples() / "magnetic-spring/scenario.json").wstring();
    const std::filesystem::path folder = m_folder / "spring";
    std::future<Outcome> first = std::async(std::launch::async, [&] {
        return RunHost({spring, L"--out", folder.wstring(), L"--steps", L"40"});
    });
    while (!std::filesystem::exists(folder / "states.csv") &&
           first.wait_for(std::chrono::milliseconds(10)) == std::future_status::timeout) {
    }
    const Outcome intruder = RunHost({spring, L"--out", folder.wstring(), L"--resume"});
    EXPECT_EQ(intruder.exitCode, 2);
    EXPECT_THAT(intruder.output, HasSubstr("spring: another run works in this folder (process "));
    const Outcome second = Run({L"--steps", L"1"});
    EXPECT_THAT(second.output, HasSubstr("Saving and closing the project\n"));
    const Outcome outcome = first.get();
    EXPECT_THAT(outcome.output, HasSubstr("The run stopped before its end; --resume goes on with it.\n"));
    EXPECT_EQ(Column(folder / "states.csv", "Step").size(), 40u);
}

/// A current folder with a file that is no DLL for every DLL of the system and of the programs.
class TrapFolder {
public:
    TrapFolder() : m_before(std::filesystem::current_path()) {
        std::vector<wchar_t> system(MAX_PATH);
        GetSystemDirectoryW(system.data(), MAX_PATH);
        Trap("trap.dll");
        for (const std::wstring& folder : {std::wstring(system.data()), fake::BesideThisProgram(L"")}) {
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

TEST_F(HostFailure, NothingIsLoadedFromTheCurrentFolder) {
    const TrapFolder traps;
    EXPECT_GT(traps.Traps(), 100U);
    const std::unique_ptr<HINSTANCE__, decltype(&FreeLibrary)> trap(LoadLibraryW(L"trap.dll"), &FreeLibrary);
    const DWORD error = GetLastError();
    EXPECT_EQ(trap, nullptr);
    ASSERT_EQ(error, static_cast<DWORD>(ERROR_BAD_EXE_FORMAT)) << "the traps are where the loader looks last";
    EXPECT_THAT(Run({L"--steps", L"1"}).output, HasSubstr("Saving and closing the project\n"));
    for (const wchar_t* const program : {L"kinora-run.exe", L"vantor-sim.exe", L"vantor-trace.exe"}) {
        EXPECT_EQ(RunProgram(fake::BesideThisProgram(program), {L"--help"}).exitCode, 0)
            << std::filesystem::path(program);
    }
    EXPECT_EQ(RunProgram(fake::BesideThisProgram(L"minimal-host.exe"), {}).exitCode, 2) << "which says how it is used";
}

TEST_F(HostFailure, ALibraryOfAnotherBuildIsFoundOut) {
    const ScratchFolder folder;
    for (const auto& file : std::filesystem::directory_iterator(fake::BesideThisProgram(L""))) {
        const std::filesystem::path name = file.path().filename();
        if (name == "kinora-run.exe" || name == "minimal-host.exe" || name.extension() == ".dll") {
            std::filesystem::copy_file(file, folder / name.string());
        }
    }
    std::filesystem::copy_file(std::filesystem::u8path(KINORA_OTHER_BUILD), folder / "KinoraVeltrixCoupling.dll",
                               std::filesystem::copy_options::overwrite_existing);
    const std::wstring scenario = (Examples() / "cube-magnets/scenario.json").wstring();
    const Outcome host = RunProgram(folder / "kinora-run.exe", {scenario, L"--out", (folder / "output").wstring()});
    EXPECT_EQ(host.exitCode, 1);
    EXPECT_THAT(host.output,
                HasSubstr("KinoraVeltrixCoupling.dll is of another build than this program: another build"));
    EXPECT_FALSE(std::filesystem::exists(folder / "output"));
    const Outcome minimal = RunProgram(folder / "minimal-host.exe", {L"project.vtdk", L"geometry.obj"});
    EXPECT_EQ(minimal.exitCode, 1);
    EXPECT_THAT(minimal.output, HasSubstr("The DLL (another build) and this program ("));
}

TEST_F(HostFailure, QuietSaysOnlyWhereTheFilesAre) {
    const Outcome outcome = Run({L"--quiet", L"--steps", L"1"});
    EXPECT_THAT(outcome.output, Not(HasSubstr("step 0")));
    EXPECT_THAT(outcome.output, HasSubstr("coupling log"));
}

} // namespace
} // namespace endtoend
