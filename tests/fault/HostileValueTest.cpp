// Values that no reasonable host passes: the documented result, nothing written or deleted where it does not belong,
// and no crash.

#include "tests/support/CouplingSession.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <set>
#include <thread>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::IsEmpty;
using Group = IKinoraVeltrixInterface::Group;
using Result = IKinoraVeltrixInterface::Result;
using Transform = IKinoraVeltrixInterface::Transform;

Transform MakeBody(const std::string& name, double x = 0.0) {
    Transform body;
    body.name = name;
    body.translation[0] = x;
    return body;
}

Group MakeGroup(const std::string& name, const std::vector<std::string>& objects) {
    Group group;
    group.transform = MakeBody(name, 0.1);
    group.objects = objects;
    return group;
}

class HostileValues : public testing::Test, protected CouplingSession {
protected:
    void SetUp() override {
        // One level down, so that what reaches out of the project's folder is seen too.
        MakeFolder(folder / L"project");
        WriteFileBytes(folder / L"precious.csv", "precious");
        WriteFileBytes(folder / L"project/precious.csv", "precious");
        fake.projectFolder = folder / L"project/";
        fake.updateReports = L"";
        Create();
        fake.outputModule.On("GetOutputVariableValue", Real(1.0));
    }
    /// Everything in the test's folder but the reports folder and what is in it, with slashes.
    std::set<std::wstring> FilesOutside() const {
        std::set<std::wstring> files;
        const std::wstring reports = L"project/Magnets.reports";
        const std::filesystem::path whole = ToPath(folder.Path());
        for (const auto& entry : std::filesystem::recursive_directory_iterator(whole)) {
            const std::wstring path = Widen(entry.path().lexically_relative(whole).generic_u8string(), CP_UTF8);
            if (path.compare(0, reports.size(), reports) != 0) {
                files.insert(path);
            }
        }
        return files;
    }
    bool Analyze(double time, const std::vector<Transform>& transforms) {
        int status = 0;
        return coupling.Analyze(time, transforms, results, status);
    }
    void ExpectNothingTouchedOutside() const {
        EXPECT_THAT(FilesOutside(), ElementsAre(L"precious.csv", L"project", L"project/precious.csv"));
        EXPECT_EQ(ReadFileBytes(folder / L"precious.csv"), "precious");
        EXPECT_EQ(ReadFileBytes(folder / L"project/precious.csv"), "precious");
    }
    std::wstring ReportsFolder() const { return folder / L"project/Magnets.reports"; }
    std::wstring Log() const { return ReportsFolder() + L"/Magnets.coupling.csv"; }

    std::vector<Result> results;
};

struct HostileName {
    const char* label;
    std::string name;
    bool isFileName = true;
};

class HostileBodyName : public HostileValues, public testing::WithParamInterface<HostileName> {};

TEST_P(HostileBodyName, TravelsAsItIsAndStaysInTheReportsFolder) {
    const std::string& name = GetParam().name;
    fake.AddSolid(L"Magnet", L"\"N45\"");
    EXPECT_TRUE(coupling.InitMagneticObjects({MakeGroup(name, {"Magnet"})}, {}));
    bool hasVariable = false;
    for (const std::wstring& variable : fake.variables) {
        hasVariable = hasVariable || variable == FromAnsi(name + "_Theta");
    }
    EXPECT_TRUE(hasVariable);
    for (const double time : {0.0, 0.5, 1.0}) {
        EXPECT_TRUE(Analyze(time, {MakeBody(name, 0.1)}));
    }
    EXPECT_EQ(results.size(), 3U);
    EXPECT_TRUE(FileExists(Log()));
    // Names that no file can have cost the body's report files, each with its warning, and nothing else.
    const std::size_t filesPerStep = 2;
    EXPECT_EQ(fake.world.Count("AddMessage"), GetParam().isFileName ? 0 : 3 * filesPerStep);
    ExpectNothingTouchedOutside();
}

constexpr bool noFileName = false;
#ifdef _WIN32
constexpr bool notOnWindows = false;
#else
constexpr bool notOnWindows = true;
#endif

INSTANTIATE_TEST_SUITE_P(
    All, HostileBodyName,
    testing::Values(HostileName{"Empty", ""}, HostileName{"VeryLong", std::string(65536, 'x'), noFileName},
                    HostileName{"Quotes", "\"a'`\"", notOnWindows}, HostileName{"Commas", "a,b;c"},
                    HostileName{"LineEnds", "a\r\nb\nc\t", notOnWindows},
                    HostileName{"Separators", "a/b\\c", noFileName}, HostileName{"TwoPoints", ".."},
                    HostileName{"PointsAndSeparator", "../x", noFileName}, HostileName{"Drive", "C:\\x", notOnWindows},
                    HostileName{"Wildcards", "a*?<>|b", notOnWindows}, HostileName{"Device", "NUL"},
                    HostileName{"OutsideOfTheCodePage", "\x81\x8D\x8F\x90\x9D"}, HostileName{"Utf8", "\xCE\xA9"},
                    HostileName{"Zero", std::string("a\0b", 3)}, HostileName{"Percent", "%s%n%f"},
                    HostileName{"Key", "a:=\"NAME:b\"", notOnWindows}),
    [](const auto& name) { return std::string(name.param.label); });

TEST_F(HostileValues, BodyNameThatClimbsReachesOutOfTheReportsFolderAsDocumented) {
    // Names are not checked (docs/host-guide.md): the path of the report is made of the name as it stands.
    EXPECT_TRUE(Analyze(0.0, {MakeBody("x/../../climbed")}));
    std::set<std::wstring> files = FilesOutside();
    files.erase(L"project/climbed.csv");
    EXPECT_THAT(files, ElementsAre(L"precious.csv", L"project", L"project/precious.csv"));
}

TEST_F(HostileValues, ObjectNamesTravelAsTheyAre) {
    const std::vector<std::string> names{"",     std::string(65536, 'x'), "a\"b", "a,b", "a\r\nb", "..",
                                         "\x81", std::string("a\0b", 3)};
    for (const std::string& name : names) {
        fake.AddSolid(FromAnsi(name), L"\"N45\"");
    }
    EXPECT_TRUE(coupling.InitMagneticObjects({MakeGroup("Rotor", names)}, {}));
    const Value& plot = fake.world.Entries().back().arguments[0].items[22];
    ASSERT_EQ(plot.items.size(), 4 + names.size());
    for (std::size_t index = 0; index < names.size(); ++index) {
        EXPECT_EQ(plot.items[4 + index].text, FromAnsi(names[index]));
    }
}

TEST_F(HostileValues, GroupOfTenThousandObjects) {
    constexpr std::size_t count = 10000;
    Object& solid = fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.editor.On("GetChildObject", Reference(solid));
    fake.project.On("AddMaterial", Nothing());
    EXPECT_TRUE(coupling.InitMagneticObjects({MakeGroup("Rotor", std::vector<std::string>(count, "Magnet"))}, {}));
    EXPECT_EQ(fake.world.Count("AddMaterial"), 1U);
    EXPECT_EQ(fake.world.Entries().back().arguments[0].items[22].items.size(), 4 + count);
}

TEST_F(HostileValues, EmptyGroupsAndNoGroups) {
    EXPECT_TRUE(coupling.InitMagneticObjects({}, {}));
    EXPECT_TRUE(coupling.InitMagneticObjects({Group{}, Group{}}, {}));
    EXPECT_TRUE(Analyze(0.0, {}));
    EXPECT_TRUE(Analyze(0.0, {Transform{}, Transform{}}));
    EXPECT_EQ(results.size(), 2U);
}

TEST_F(HostileValues, PosesOfAnyNumbers) {
    const double numbers[] = {std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::denorm_min(),
                              -std::numeric_limits<double>::denorm_min(),
                              1e300,
                              -1e300,
                              std::numeric_limits<double>::max(),
                              -0.0};
    fake.AddSolid(L"Magnet", L"\"N45\"");
    int body = 0;
    for (const double number : numbers) {
        Group group = MakeGroup("Body" + std::to_string(++body), {"Magnet"});
        Transform& pose = group.transform;
        std::fill(std::begin(pose.translation), std::end(pose.translation), number);
        std::fill(std::begin(pose.rotation), std::end(pose.rotation), number);
        EXPECT_TRUE(coupling.InitMagneticObjects({group}, {})) << number;
        EXPECT_TRUE(Analyze(number, {pose})) << number;
    }
    EXPECT_EQ(results.size(), std::size(numbers));
    ExpectNothingTouchedOutside();
}

TEST_F(HostileValues, WantedDirectionsOfAnyNumbers) {
    fake.AddMaterial(L"N45", {L"0", L"0", L"1e999"});
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(
        coupling.InitMagneticObjects({}, {{"a", {"N45", {0.0, 0.0, infinity}}},
                                          {"b", {"N45", {-infinity, 1e300, 5e-324}}},
                                          {"c", {"N45", {std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0}}}}));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 2U) << "the first wants what the material has";
}

TEST_F(HostileValues, ProjectNamesThatClimbOrAreNoFolder) {
    for (const wchar_t* const name : {L"", L"..", L"a/b", L"a\nb", L"a|b", L"nul"}) {
        fake.projectName = name;
        EXPECT_TRUE(Analyze(0.5, {MakeBody("Rotor")})) << ToUtf8(name);
    }
    fake.projectName = std::wstring(65536, L'x');
    EXPECT_TRUE(Analyze(0.5, {MakeBody("Rotor")}));
    EXPECT_EQ(ReadFileBytes(folder / L"precious.csv"), "precious");
    EXPECT_EQ(ReadFileBytes(folder / L"project/precious.csv"), "precious");
}

TEST_F(HostileValues, ProjectNameOrFolderWithAZeroTouchesNothing) {
    fake.projectName = std::wstring(L"precious.csv\0", 13);
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    fake.projectName = L"Magnets";
    fake.projectFolder = folder / std::wstring(L"project\0/", 9);
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    EXPECT_THAT(results, IsEmpty());
    EXPECT_THAT(fake.messages, testing::Each(L"Kinora-Veltrix Coupling log path is not valid: "));
    EXPECT_EQ(fake.messages.size(), 2U);
    ExpectNothingTouchedOutside();
}

// Files and folders as users leave them.

TEST_F(HostileValues, FolderIsEmptiedOfReadOnlyFilesAndFolders) {
    ASSERT_TRUE(Analyze(0.0, {}));
    MakeFolder(ReportsFolder() + L"/kept");
    WriteFileBytes(ReportsFolder() + L"/kept/notes.txt", "mine");
    for (const wchar_t* const name : {L"/kept/notes.txt", L"/kept", L"/Magnets.coupling.csv"}) {
        ASSERT_TRUE(SetFileAttributesW((ReportsFolder() + name).c_str(), FILE_ATTRIBUTE_READONLY));
    }
    EXPECT_TRUE(Analyze(0.0, {}));
    EXPECT_THAT(fake.messages, IsEmpty());
    EXPECT_FALSE(FileExists(ReportsFolder() + L"/kept"));
    EXPECT_EQ(ReadFileBytes(Log()), "Step,SimTime\r\n0,0\r\n");
}

TEST_F(HostileValues, FileInPlaceOfTheReportsFolderSurvivesALaterStep) {
    WriteFileBytes(folder / L"project/Magnets.reports", "a file");
    EXPECT_TRUE(Analyze(1.0, {MakeBody("Rotor")}));
    EXPECT_EQ(ReadFileBytes(folder / L"project/Magnets.reports"), "a file");
    EXPECT_EQ(results.size(), 1U);
}

TEST_F(HostileValues, VeryLongFolderIsAWarning) {
    fake.projectFolder = folder.Path() + L"/" + std::wstring(5000, L'x') + L"/";
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    EXPECT_THAT(results, IsEmpty());
    ASSERT_EQ(fake.messages.size(), 1U);
}

TEST_F(HostileValues, NamesAndPathsOfOperationsTravelAsTheyAre) {
    ASSERT_TRUE(coupling.CloseProject());
    for (const std::string& name : {std::string(), std::string(65536, 'x'), std::string("a\0b", 3),
                                    std::string("\r\n,\""), std::string("\xFF\x81")}) {
        fake.world.ClearJournal();
        EXPECT_TRUE(coupling.CreateProject(name, name, name));
        const auto& entries = fake.world.Entries();
        EXPECT_EQ(entries[1].arguments[0].text, FromAnsi(name));
        EXPECT_EQ(FindKey(entries[6].arguments[0], L"Units:=")->text, FromAnsi(name));
        EXPECT_TRUE(coupling.SetVariableValue(name, name, true));
        EXPECT_TRUE(coupling.CloseProject());
        EXPECT_THROW(coupling.OpenProject(name + "?", name), std::filesystem::filesystem_error);
    }
}

#ifdef _WIN32
// Files that others hold: only there can somebody keep others from them.

TEST_F(HostileValues, LogThatSomebodyHoldsAloneIsLeftOut) {
    ASSERT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    const std::string before = ReadFileBytes(Log());
    const HANDLE held = CreateFileW(Log().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Analyze(1.0, {MakeBody("Rotor")})) << "the solve counts, the line is lost";
    EXPECT_EQ(results.size(), 2U);
    CloseHandle(held);
    EXPECT_EQ(ReadFileBytes(Log()), before);
    EXPECT_THAT(fake.messages, ElementsAre(L"Kinora-Veltrix Coupling log path is not valid: " +
                                           (folder / L"project/Magnets.reports/Magnets.coupling.csv")));
    EXPECT_TRUE(Analyze(2.0, {MakeBody("Rotor")}));
    EXPECT_GT(ReadFileBytes(Log()).size(), before.size());
}

TEST_F(HostileValues, LogThatSomebodyReadsIsWrittenAllTheSame) {
    ASSERT_TRUE(Analyze(0.0, {}));
    const HANDLE held = CreateFileW(Log().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Analyze(1.0, {}));
    CloseHandle(held);
    EXPECT_EQ(ReadFileBytes(Log()), "Step,SimTime\r\n0,0\r\n1,1\r\n");
}

TEST_F(HostileValues, FolderThatCannotBeEmptiedIsAWarning) {
    ASSERT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    const HANDLE held = CreateFileW(Log().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    CloseHandle(held);
    EXPECT_EQ(results.size(), 1U) << "no result of the second step";
    EXPECT_THAT(fake.messages, ElementsAre(L"Kinora-Veltrix Coupling log path is not valid: "));
    ExpectNothingTouchedOutside();
}

TEST_F(HostileValues, FilesThatAScannerHoldsForAMomentAreWaitedFor) {
    for (const DWORD sharing : {0UL, static_cast<DWORD>(FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE)}) {
        ASSERT_TRUE(Analyze(0.0, {}));
        const HANDLE held = CreateFileW(Log().c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        std::thread scanner([held] {
            Sleep(200);
            CloseHandle(held);
        });
        EXPECT_TRUE(Analyze(0.0, {}));
        scanner.join();
        EXPECT_THAT(fake.messages, IsEmpty()) << (sharing ? "deleted while it was open" : "held alone");
        EXPECT_EQ(ReadFileBytes(Log()), "Step,SimTime\r\n0,0\r\n");
    }
}

TEST_F(HostileValues, LogThatMayNotBeWrittenIsLeftOut) {
    ASSERT_TRUE(Analyze(0.0, {}));
    SetFileAttributesW(Log().c_str(), FILE_ATTRIBUTE_READONLY);
    const HANDLE probe = CreateFileW(Log().c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (probe != INVALID_HANDLE_VALUE) {
        CloseHandle(probe);
        SetFileAttributesW(Log().c_str(), FILE_ATTRIBUTE_NORMAL);
        GTEST_SKIP() << "this user may write read-only files (the superuser under Wine)";
    }
    EXPECT_TRUE(Analyze(1.0, {MakeBody("Rotor")}));
    EXPECT_EQ(results.size(), 1U);
    EXPECT_EQ(ReadFileBytes(Log()), "Step,SimTime\r\n0,0\r\n");
    SetFileAttributesW(Log().c_str(), FILE_ATTRIBUTE_NORMAL);
}
#endif

} // namespace
