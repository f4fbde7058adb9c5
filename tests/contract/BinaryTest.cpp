// The DLL as a file: what it exports, what it needs, how it is protected, and that it stands without its import
// library.

#include "interface/IKinoraVeltrixInterface.h"
#include "interface/KinoraVeltrixScriptErrors.h"
#include "tests/support/PortableExecutable.h"
#include "tests/support/TestFolder.h"
#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

/// @name Hosts that are built in another way, as the interface's headers see it
/// @{
bool IsCompatibleWithOlderTexts();
bool IsCompatibleWithCheckedIterators();
/// @}

namespace {

using fake::PortableExecutable;
using testing::Contains;
using testing::HasSubstr;

const PortableExecutable& Library() {
    static const PortableExecutable library(fake::ReadFileBytes(fake::BesideThisProgram(L"KinoraVeltrixCoupling.dll")));
    return library;
}

TEST(Library, ExportsTheFactoryUnderItsPlainName) {
    EXPECT_THAT(Library().Exports(), Contains("GetKinoraVeltrixFactoryInterface"));
}

const char* const membersOfTheCoupling[] = {
    "GetMessages",         "GetVeltrixDesigns", "OpenProject",      "CreateProject",     "InitGeometry",
    "InitMagneticObjects", "Analyze",           "SaveProject",      "CloseProject",      "QuitApplication",
    "ReleaseApplication",  "LaunchDesktop",     "SetVariableValue", "AddParametricSetup"};

const char* const membersOfTheUtilities[] = {"SupportComFunction",
                                             "CallComFunction",
                                             "CreateVariant",
                                             "CreateStringArray",
                                             "ReadStringArray",
                                             "CreateVariantArray",
                                             "CallGetChildNames",
                                             "CallGetChildObject",
                                             "CallGetPropNames",
                                             "CallGetPropValue",
                                             "CallSetPropValue",
                                             "CallGetModule",
                                             "CallSetActive",
                                             "CallAndGetStringSet",
                                             "CallInsertDesign",
                                             "CallSetDesignSetttings",
                                             "CallSaveAs",
                                             "CallCreateRelativeCS",
                                             "CallSetWorkingCS",
                                             "RecurseSetCoordinateSystem",
                                             "CallMove",
                                             "CallRotate",
                                             "CallAssignMaterial",
                                             "CallCloneMaterial",
                                             "SetSolveInside",
                                             "GetNonVacuumObjects",
                                             "CallAssignForce",
                                             "CallAssignTorque",
                                             "CallSetModelUnits",
                                             "CallImport",
                                             "CallAssignRegion",
                                             "GetFirstSetup",
                                             "CallInsertSetup",
                                             "CheckAndInsertSetup",
                                             "CallAnalyze",
                                             "InsertExpressionCaches",
                                             "CreateOutputVariables",
                                             "CallGetOutputVariableValue",
                                             "ExtractOutputData",
                                             "GetChangePropertyArgument",
                                             "UpdateVariables",
                                             "GetParavantArgument",
                                             "GetReportNames",
                                             "CreateEmptyReport",
                                             "ClearAndImportReport",
                                             "CreateDataTable",
                                             "CallGetRegistryString",
                                             "CreateFieldPlot"};

TEST(Library, ExportsEveryMemberOfItsTwoClasses) {
    const std::vector<std::string> exports = Library().Exports();
    for (const char* const member : membersOfTheCoupling) {
        EXPECT_THAT(exports, Contains(testing::AllOf(HasSubstr("CKinoraVeltrixCoupling"), HasSubstr(member))));
    }
    for (const char* const member : membersOfTheUtilities) {
        EXPECT_THAT(exports, Contains(testing::AllOf(HasSubstr("CComUtils"), HasSubstr(member))));
    }
}

TEST(Library, ExportsNothingElse) {
    for (const std::string& name : Library().Exports()) {
        const bool isOurs = name == "GetKinoraVeltrixFactoryInterface" || name == "GetKinoraVeltrixBinaryInterface" ||
                            name == "GetKinoraVeltrixScriptErrorText" ||
                            name.find("CKinoraVeltrixCoupling") != std::string::npos ||
                            name.find("CComUtils") != std::string::npos;
        EXPECT_TRUE(isOurs) << name;
    }
}

TEST(Library, NeedsThePlatformAndTheLanguageOnly) {
    for (std::string dll : Library().Imports()) {
        std::transform(dll.begin(), dll.end(), dll.begin(), [](char letter) {
            return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
        });
        const std::vector<std::string> allowed{"kernel32.dll", "ole32.dll",      "oleaut32.dll",  "msvcrt.dll",
                                               "libstdc++",    "libgcc_s",       "libwinpthread", "vcruntime",
                                               "msvcp",        "api-ms-win-crt", "libssp"};
        EXPECT_TRUE(std::any_of(allowed.begin(), allowed.end(), [&](const std::string& prefix) {
            return dll.compare(0, prefix.size(), prefix) == 0;
        })) << dll;
        EXPECT_EQ(dll.find_first_of("/\\:"), std::string::npos) << "loaded by a path: " << dll;
    }
    EXPECT_TRUE(Library().DelayedImports().empty());
}

TEST(Library, LoadsNothingByItself) {
    // Without these, the only DLLs are those that the system's loader finds by its own rules.
    for (const char* const function : {"LoadLibraryA", "LoadLibraryW", "LoadLibraryExA", "LoadLibraryExW"}) {
        EXPECT_THAT(Library().ImportedFunctions(), testing::Not(Contains(function)));
    }
}

TEST(Library, IsProtectedAgainstOverwrittenAddresses) {
    EXPECT_TRUE(Library().Is64Bit());
    EXPECT_TRUE(Library().HasDynamicBase());
    EXPECT_TRUE(Library().HasHighEntropy());
    EXPECT_TRUE(Library().HasNoExecute());
    EXPECT_TRUE(Library().HasRelocations());
}

/// Every error of the desktop's scripting, as the desktop's makers word it.
const char* const scriptErrors[] = {
    "0x0000: Normal execution",
    "0x0001: Invalid script argument",
    "0x0002: Missing script argument",
    "0x0003: Argument memory allocation error",
    "0x0004: Argument memory access error",
    "0x0005: Non numeric argument",
    "0x0006: Unsupported argument type",
    "0x0007: The dimension of COM array does not equal to one",
    "0x0008: Invalid COM array access",
    "0x0009: Invalid argument conversion",
    "0x000A: Incomplete array argument",
    "0x000B: Design name collision, please choose a new name",
    "0x000C: Unsupported design type",
    "0x000D: The referenced object has been deleted",
    "0x0200: The execution of script is terminated by the user",
    "0x0201: The command is not yet implemented",
    "0x0202: Bad argument value",
    "0x0203: Argument validation failed",
    "0x0204: Memory allocation failed",
    "0x0205: Failed to get file access",
    "0x0206: Failed to write file",
    "0x0207: Failed to read file",
    "0x0208: No active project is opened",
    "0x0209: Internal program error",
    "0x020A: Cannot create the new project",
    "0x020B: Cannot open the project",
    "0x020C: No active design is opened",
    "0x020D: The project or design is not found",
    "0x020E: The project already exists",
    "0x020F: Output data type error",
    "0x0210: Document initialization failed",
    "0x0211: Cannot insert the design",
    "0x0212: Cannot locate the project",
    "0x0213: Script execution error",
    "0x0214: Unsupported script type",
    "0x0215: Cannot pause or resume the script",
    "0x0216: Cannot pause the script",
    "0x0217: Cannot delete the design",
    "0x0218: The module is not found",
    "0x0219: Error building solver data",
    "0x021A: The engine manager is missing",
    "0x021B: Solution error",
    "0x021C: The design is already simulating",
    "0x021D: The design has unsaved changes",
    "0x021E: Unable to start the simulation",
    "0x021F: Port error",
    "0x0220: The project is not saved",
    "0x0221: The project failed to save",
    "0x0222: The definition editor is nor found",
    "0x0223: Simulation terminated with error",
    "0x0224: The directory is invalid",
    "0x0225: The simulation is still running",
    "0x0226: Invalid project name",
    "0x0227: Unsupported operation",
    "0x0228: Unspecified error",
    "0x0229: Invalid tool object name",
    "0x022A: The access is not permitted",
    "0x022B: The simulation is aborted by the user",
    "0x022C: The simulation is clean stopped by the user",
    "0x022D: Failed to remove definition",
    "0x022E: Invalid definition",
    "0x022F: The project path is too long",
};

TEST(Library, HoldsTheScriptErrorTable) {
    for (const std::string text : scriptErrors) {
        const auto code = static_cast<std::int32_t>(std::stol(text.substr(2, 4), nullptr, 16));
        const char* const found = GetKinoraVeltrixScriptErrorText(code);
        EXPECT_EQ(text, found == nullptr ? "" : found);
    }
    std::size_t rows = 0;
    for (std::int32_t code = -1; code <= 0x10000; ++code) {
        rows += GetKinoraVeltrixScriptErrorText(code) == nullptr ? 0 : 1;
    }
    EXPECT_EQ(rows, 62U) << "codes 0x0000 to 0x000D and 0x0200 to 0x022F, and no others";
}

TEST(Library, WorksWithoutItsImportLibrary) {
    const std::unique_ptr<HINSTANCE__, decltype(&FreeLibrary)> library(
        LoadLibraryW(fake::BesideThisProgram(L"KinoraVeltrixCoupling.dll").c_str()), &FreeLibrary);
    ASSERT_NE(library, nullptr);
    using Factory = IKinoraVeltrixInterface* (*)();
    const FARPROC found = GetProcAddress(library.get(), "GetKinoraVeltrixFactoryInterface");
    ASSERT_NE(found, nullptr);
    const auto factory = reinterpret_cast<Factory>(reinterpret_cast<void*>(found));
    IKinoraVeltrixInterface* const coupling = factory();
    ASSERT_NE(coupling, nullptr);
    EXPECT_EQ(factory(), coupling);
    EXPECT_FALSE(coupling->SaveProject()) << "a virtual call through the abstract class alone";
}

TEST(Library, SaysWhichBuildItIs) {
    EXPECT_TRUE(IsKinoraVeltrixCompatible());
    const std::string text = GetKinoraVeltrixBinaryInterface();
    EXPECT_EQ(text, KINORA_VELTRIX_BINARY_INTERFACE);
    for (const char* const part : {"; standard library ", "; iterator level ", "; C runtime ", "; interface 1"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
}

#if defined(__GLIBCXX__)
TEST(Library, IsFoundOutByAHostOfAnotherBuild) {
    EXPECT_FALSE(IsCompatibleWithOlderTexts());
    EXPECT_FALSE(IsCompatibleWithCheckedIterators());
}
#endif

/// This program and what the library comes with.
std::vector<std::wstring> Programs() {
    std::vector<std::wstring> programs{fake::ThisProgram()};
    for (const wchar_t* const program : {L"kinora-run.exe", L"vantor-sim.exe", L"vantor-trace.exe"}) {
        const std::wstring file = fake::BesideThisProgram(program);
        if (fake::FileExists(file)) {
            programs.push_back(file);
        }
    }
    return programs;
}

TEST(Programs, NeedOnlyWhatLiesBesideThemOrInTheSystem) {
    std::vector<wchar_t> system(MAX_PATH);
    GetSystemDirectoryW(system.data(), MAX_PATH);
    std::vector<std::wstring> files = Programs();
    files.push_back(fake::BesideThisProgram(L"KinoraVeltrixCoupling.dll"));
    for (const std::wstring& file : files) {
        const PortableExecutable executable(fake::ReadFileBytes(file));
        EXPECT_TRUE(executable.DelayedImports().empty());
        for (const std::string& dll : executable.Imports()) {
            EXPECT_EQ(dll.find_first_of("/\\:"), std::string::npos) << "loaded by a path: " << dll;
            const std::wstring name(dll.begin(), dll.end());
            EXPECT_TRUE(fake::FileExists(fake::BesideThisProgram(name)) ||
                        fake::FileExists(system.data() + (L"\\" + name)))
                << dll << " would be looked for in the current folder";
        }
    }
}

TEST(Programs, AreProtectedAgainstOverwrittenAddresses) {
    for (const std::wstring& program : Programs()) {
        const PortableExecutable executable(fake::ReadFileBytes(program));
        EXPECT_TRUE(executable.HasDynamicBase() && executable.HasHighEntropy() && executable.HasNoExecute() &&
                    executable.HasRelocations());
    }
}

} // namespace
