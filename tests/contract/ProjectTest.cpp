// Creating, opening, listing, saving and closing projects, and the desktop's messages.

#include "comutils/ComUtils.h"
#include "tests/support/CouplingSession.h"
#include "tests/support/Transcript.h"

#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <system_error>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::IsEmpty;
using Severity = IKinoraVeltrixInterface::MessageSeverity;

class Project : public testing::Test, protected CouplingSession {
protected:
    /// A project file in the test's folder that the fake desktop knows as `name`.
    std::string MakeFile(const std::wstring& name) {
        fake.projectName = name;
        WriteFileBytes(folder / (name + L".vtdk"), "");
        return ToAnsi(folder / (name + L".vtdk"));
    }
    /// The same file, open in the desktop already.
    std::string MakeOpenFile(const std::wstring& name) {
        fake.openProjects = {name};
        return MakeFile(name);
    }
    static std::string Quoted(const std::string& text) {
        VARIANT variant = CComUtils::CreateVariant(text);
        const std::string quoted = Print(Read(variant));
        VariantClear(&variant);
        return quoted;
    }
};

// The commands, one by one.

TEST_F(Project, CommandsSendWhatTheDesktopExpects) {
    Launch();
    World world;
    Object& object = world.MakeHeld("object");
    object.On("InsertDesign", Nothing()).On("SetDesignSettings", Nothing()).On("SaveAs", Nothing());
    EXPECT_TRUE(CComUtils::CallInsertDesign(&object, "Veltrix3DDesign1"));
    EXPECT_TRUE(CComUtils::CallSetDesignSetttings(&object));
    EXPECT_TRUE(CComUtils::CallSaveAs(&object, "C:\\work\\a.vtdk", false));
    EXPECT_TRUE(CComUtils::CallSaveAs(&object, "", true));
    EXPECT_TRANSCRIPT(world, R"(
        object.InsertDesign("Veltrix 3D", "Veltrix3DDesign1", "Magnetostatic", "")
        object.SetDesignSettings(
            ["NAME:Design Settings Data", "Allow Material Override:=", true],
            ["NAME:Model Validation Settings"])
        object.SaveAs("C:\\work\\a.vtdk", false)
        object.SaveAs("", true)
    )");
}

TEST_F(Project, CreateLaunchesSavesInsertsAndInitialisesTheGeometry) {
    fake.AddSolid(L"Magnet", L"\"N45\"");
    EXPECT_TRUE(coupling.CreateProject("C:\\work\\new.vtdk", "C:\\work\\magnets.obj", "mm"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        application.GetAppDesktop()
        desktop.NewProject()
        project.SaveAs("C:\\work\\new.vtdk", false)      # never over an existing file
        project.InsertDesign("Veltrix 3D", "Veltrix3DDesign1", "Magnetostatic", "")
        project.SetActiveDesign("Veltrix3DDesign1")
        design.SetDesignSettings(
            ["NAME:Design Settings Data", "Allow Material Override:=", true],
            ["NAME:Model Validation Settings"])
        # from here on the geometry
        design.SetActiveEditor("3D Modeler")
        editor.SetModelUnits(["NAME:Units Parameter", "Units:=", "mm", "Rescale:=", false])
        editor.Import(["NAME:NativeBodyParameters", "ImportMaterialNames:=", true,
                       "SourceFile:=", "C:\\work\\magnets.obj"])
        editor.GetChildNames()
        editor.GetChildObject("Magnet")
        Magnet.GetPropNames()
        Magnet.SetPropValue("Solve Inside", true)
        design.GetModule("AnalysisSetup")
        design.GetModule("AnalysisSetup")               # a design without setups gets one
        AnalysisSetup.GetSetups()
        AnalysisSetup.InsertSetup("Magnetostatic",
            ["NAME:Setup1", "Enabled:=", true, "MaximumPasses:=", 15.0, "PercentError:=", 0.5])
        editor.FitAll()
    )");
    EXPECT_EQ(fake.project.References(), 1);
    EXPECT_EQ(fake.design.References(), 1);
}

TEST_F(Project, CreateUsesALaunchedDesktop) {
    Launch();
    EXPECT_TRUE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_EQ(registration.Creations(), 1U);
    EXPECT_EQ(fake.world.Entries()[0].method, "NewProject");
}

TEST_F(Project, CreatePassesALaunchErrorOn) {
    registration.RefuseWith(E_FAIL);
    EXPECT_THROW(coupling.CreateProject("a", "b", "mm"), LaunchDesktopExeption);
    CoUninitialize();
}

TEST_F(Project, CreateFailsWhenTheLaunchGivesNoDesktop) {
    fake.application.On("GetAppDesktop", Fails());
    EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_TRANSCRIPT(fake.world, "application.GetAppDesktop() -> fails");
}

TEST_F(Project, CreateNeedsAProjectObject) {
    Launch();
    for (const Answer& answer : {Fails(), Nothing(), Text(L"project")}) {
        fake.desktop.On("NewProject", answer);
        EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    }
    EXPECT_EQ(fake.world.Count("SaveAs"), 0U);
    EXPECT_FALSE(coupling.SaveProject());
}

TEST_F(Project, RefusedSaveAsLeavesTheUnsavedProjectAndInsertsNothing) {
    Launch();
    fake.project.On("SaveAs", Fails());
    EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        desktop.NewProject()
        project.SaveAs("a", false) -> fails
    )");
    EXPECT_EQ(fake.project.References(), 1);
    EXPECT_TRUE(coupling.CloseProject());
}

TEST_F(Project, RefusedDesignLeavesTheProject) {
    Launch();
    fake.project.On("InsertDesign", Fails());
    EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_EQ(fake.world.Entries().back().method, "InsertDesign");
    EXPECT_EQ(fake.project.References(), 1);
}

TEST_F(Project, CreateNeedsAnActiveDesign) {
    Launch();
    fake.project.On("SetActiveDesign", Text(L"Veltrix3DDesign1"));
    EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_EQ(fake.world.Entries().back().method, "SetActiveDesign");
    EXPECT_EQ(fake.project.References(), 1);
}

TEST_F(Project, RefusedDesignSettingsKeepProjectAndDesign) {
    Launch();
    fake.design.On("SetDesignSettings", Fails());
    EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_EQ(fake.world.Entries().back().method, "SetDesignSettings");
    EXPECT_EQ(fake.design.References(), 1);
}

TEST_F(Project, CreateReturnsTheResultOfTheGeometry) {
    Launch();
    fake.editor.On("Import", Fails());
    EXPECT_FALSE(coupling.CreateProject("a", "b", "mm"));
    EXPECT_EQ(fake.design.References(), 1);
}

TEST_F(Project, CreateOverwritesAnOpenProjectWithoutReleasingIt) {
    Create();
    Object& secondProject = fake.world.Make("second project");
    Object& secondDesign = fake.world.Make("second design");
    fake.desktop.On("NewProject", Reference(secondProject));
    secondProject.On("SaveAs", Nothing()).On("InsertDesign", Nothing());
    secondProject.On("SetActiveDesign", Reference(secondDesign));
    EXPECT_FALSE(coupling.CreateProject("b", "b", "mm"));
    EXPECT_EQ(fake.project.References(), 1) << "hosts close an earlier project first";
    EXPECT_EQ(fake.design.References(), 1);
    EXPECT_EQ(fake.world.Count("Close"), 0U);
    fake.project.Release();
    fake.design.Release();
}

// Opening.

TEST_F(Project, OpenAsksTheDesktopForTheFileAndActivatesTheDesign) {
    const std::string file = MakeFile(L"Magnets");
    EXPECT_TRUE(coupling.OpenProject(file, "Pump"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        application.GetAppDesktop()
        desktop.GetProjects()
        projects.Count()
        desktop.OpenProject()" + Quoted(file) +
                                      R"()
        project.SetActiveDesign("Pump")
    )");
    EXPECT_EQ(fake.project.References(), 1);
    EXPECT_EQ(fake.design.References(), 1);
}

TEST_F(Project, OpenTakesOverAProjectThatIsOpenAlready) {
    Launch();
    EXPECT_TRUE(coupling.OpenProject(MakeOpenFile(L"Magnets"), "Pump"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        desktop.GetProjects()
        projects.Count()
        projects.Item(int(0))
        project.GetName()
        project.GetPath()
        project.SetActiveDesign("Pump")
    )");
    EXPECT_EQ(fake.project.References(), 1);
    EXPECT_EQ(fake.projects.References(), 0);
}

TEST_F(Project, OpenComparesCanonicalFolders) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    const std::wstring slashed = folder.Path() + L"/./x/../";
    MakeFolder(folder / L"x");
    for (const std::wstring& place : {folder.Path(), folder.Path() + L"/", folder.Path() + L"/", slashed}) {
        fake.projectFolder = place;
        fake.world.ClearJournal();
        EXPECT_TRUE(coupling.OpenProject(file, ""));
        EXPECT_EQ(fake.world.Count("OpenProject"), 0U) << ToUtf8(place);
    }
}

TEST_F(Project, OpenComparesTheCanonicalFileOfTheCaller) {
    Launch();
    MakeOpenFile(L"Magnets");
    MakeFolder(folder / L"x");
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(folder / L"x/../Magnets.vtdk"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U);
}

TEST_F(Project, LinksToTheFolderLeadToTheSameProject) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    const TestFolder elsewhere;
    if (!MakeFolderLink(elsewhere / L"link", folder.Path())) {
        GTEST_SKIP() << "this user may not make links";
    }
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(elsewhere / L"link/Magnets.vtdk"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U) << "the file is reached through a link";
    fake.projectFolder = elsewhere / L"link/";
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U) << "the desktop has reached it through a link";
}

TEST_F(Project, NetworkPathsAreOpened) {
    const NetworkFolder share;
    if (share.Path().empty()) {
        GTEST_SKIP() << "there is no network folder here";
    }
    Launch();
    fake.openProjects = {L"Magnets"};
    WriteFileBytes(share / L"Magnets.vtdk", "");
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(share / L"Magnets.vtdk"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 1U) << "the desktop has another one of this name";
    fake.projectFolder = share.Path() + L"/";
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(share / L"../folder/magnets.vtdk"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 1U) << "and now this one";
    EXPECT_THROW(coupling.OpenProject(ToAnsi(share / L"missing.vtdk"), ""), std::filesystem::filesystem_error);
}

TEST_F(Project, SameFileNameInAnotherFolderIsOpened) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    MakeFolder(folder / L"elsewhere");
    fake.projectFolder = folder / L"elsewhere/";
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 1U);
    EXPECT_EQ(fake.project.References(), 1);
}

TEST_F(Project, NamesAreComparedWithTheirCase) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    fake.projectName = L"magnets";
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("GetPath"), 0U);
    EXPECT_EQ(fake.world.Count("OpenProject"), 1U);
}

TEST_F(Project, SearchGoesOnOverProjectsThatDoNotAnswer) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    Object& mute = fake.world.Make("mute");
    Object& numbered = fake.world.Make("numbered");
    numbered.On("GetName", Long(1));
    fake.projects.On("Count", Long(6)).OnCall("Item", 1, Fails()).OnCall("Item", 2, Text(L"Magnets"));
    fake.projects.OnCall("Item", 3, Reference(mute)).OnCall("Item", 4, Reference(numbered));
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_TRANSCRIPT(fake.world, R"(
        desktop.GetProjects()
        projects.Count()
        projects.Item(int(0)) -> fails
        projects.Item(int(1))             # gives a text
        projects.Item(int(2))
        mute.GetName -> unknown
        projects.Item(int(3))
        numbered.GetName()                # gives a number
        projects.Item(int(4))
        project.GetName()
        project.GetPath()                 # found: the sixth is not asked for
    )");
}

TEST_F(Project, FailedSearchOnlyOpensTheFile) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    for (const Answer& answer : {Fails(), Nothing(), Text(L"projects")}) {
        fake.desktop.On("GetProjects", answer);
        fake.world.ClearJournal();
        EXPECT_TRUE(coupling.OpenProject(file, ""));
        EXPECT_EQ(fake.world.Count("OpenProject"), 1U);
    }
    fake.desktop.On("GetProjects", Reference(fake.projects));
    fake.projects.On("Count", Fails());
    fake.world.ClearJournal();
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("Item"), 0U);
    EXPECT_EQ(fake.world.Count("OpenProject"), 1U);
}

TEST_F(Project, CountThatIsNoNumberSkipsTheSearch) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    for (const Answer& answer : {Text(L"1"), Reference(fake.project), Texts({L"Magnets"}), Raw(VT_BYREF | VT_I4, 0)}) {
        fake.projects.On("Count", answer);
        fake.world.ClearJournal();
        EXPECT_TRUE(coupling.OpenProject(file, ""));
        EXPECT_EQ(fake.world.Count("Item"), 0U);
        EXPECT_EQ(fake.world.Count("OpenProject"), 1U);
    }
}

TEST_F(Project, OpenWithoutAFolderOfTheOpenProjectGoesOn) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    fake.project.On("GetPath", Long(1));
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 1U);
}

TEST_F(Project, MissingFileThrowsTheFileSystemsOwnError) {
    Launch();
    try {
        coupling.OpenProject(ToAnsi(folder / L"missing.vtdk"), "");
        FAIL() << "a missing file must throw";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code().default_error_condition(), std::errc::no_such_file_or_directory);
        EXPECT_THAT(error.what(), testing::HasSubstr("canonical"));
    }
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Project, MissingFileHasReleasedTheEarlierProjectWithoutClosingIt) {
    Create();
    EXPECT_THROW(coupling.OpenProject(ToAnsi(folder / L"missing.vtdk"), ""), std::filesystem::filesystem_error);
    EXPECT_EQ(fake.project.References(), 0);
    EXPECT_EQ(fake.design.References(), 0);
    EXPECT_FALSE(coupling.SaveProject());
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Project, MissingFolderOfAnOpenProjectThrowsAndLeaksNothing) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    fake.projectFolder = folder / L"gone/";
    EXPECT_THROW(coupling.OpenProject(file, ""), std::filesystem::filesystem_error);
    EXPECT_EQ(fake.project.References(), 0);
    EXPECT_EQ(fake.projects.References(), 0);
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U);
}

TEST_F(Project, OpenLaunchesAndPassesItsErrorsOn) {
    registration.RefuseWith(E_FAIL);
    EXPECT_THROW(coupling.OpenProject(MakeFile(L"Magnets"), ""), LaunchDesktopExeption);
    CoUninitialize();
    registration.RefuseWith(S_OK);
    fake.application.On("GetAppDesktop", Fails());
    EXPECT_FALSE(coupling.OpenProject(MakeFile(L"Magnets"), ""));
}

TEST_F(Project, OpenWithoutADesignNameActivatesNone) {
    Launch();
    EXPECT_TRUE(coupling.OpenProject(MakeFile(L"Magnets"), ""));
    EXPECT_EQ(fake.world.Count("SetActiveDesign"), 0U);
    EXPECT_EQ(fake.design.References(), 0);
    EXPECT_FALSE(coupling.InitGeometry("a.obj", "mm")) << "there is no active design";
}

TEST_F(Project, OpenRefusedByTheDesktopFails) {
    Launch();
    const std::string file = MakeFile(L"Magnets");
    for (const Answer& answer : {Fails(), Nothing(), Text(L"Magnets")}) {
        fake.desktop.On("OpenProject", answer);
        EXPECT_FALSE(coupling.OpenProject(file, "Pump"));
    }
    EXPECT_FALSE(coupling.SaveProject());
}

TEST_F(Project, RefusedDesignKeepsTheOpenedProject) {
    Launch();
    const std::string file = MakeFile(L"Magnets");
    for (const Answer& answer : {Fails(), Nothing(), Text(L"Pump")}) {
        fake.project.On("SetActiveDesign", answer);
        EXPECT_FALSE(coupling.OpenProject(file, "Pump"));
        EXPECT_EQ(fake.project.References(), 1);
    }
    EXPECT_TRUE(coupling.SaveProject());
}

TEST_F(Project, OpenPassesThePathOnExactlyAsItWasGiven) {
    Launch();
    MakeFile(L"Magnets");
    MakeFolder(folder / L"x");
    const std::wstring roundabout = folder / L"x/..//Magnets.vtdk";
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(roundabout), ""));
    EXPECT_EQ(fake.world.Entries().back().arguments[0].text, roundabout);
}

// Text beyond ASCII. Paths are in the system's code page; the wanted name alone is UTF-8.

TEST_F(Project, PathsAreReadInTheCodePage) {
    Launch();
    const std::string file = MakeFile(L"caf\x00E9 \x20AC"); // bytes E9 and 80 in code page 1252
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Entries().back().arguments[0].text, folder / L"caf\x00E9 \x20AC.vtdk");
}

TEST_F(Project, NameBeyondAsciiMatchesWhereTheCodePageIsUtf8Only) {
    Launch();
    EXPECT_TRUE(coupling.OpenProject(MakeOpenFile(L"caf\x00E9"), ""));
    // "caf\xC3\xA9" is wanted, and in code page 1252 "caf\xE9" found.
    const bool isUtf8 = ToAnsi(L"caf\x00E9") == ToUtf8(L"caf\x00E9");
    EXPECT_EQ(fake.world.Count("GetPath"), isUtf8 ? 1U : 0U);
    EXPECT_EQ(fake.world.Count("OpenProject"), isUtf8 ? 0U : 1U);
}

TEST_F(Project, WantedNameIsUtf8) {
    Launch();
    const std::string file = MakeOpenFile(L"caf\x00E9");
    fake.projectName = FromAnsi(ToUtf8(L"caf\x00E9")); // whose code page bytes are the wanted name's UTF-8 bytes
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U);
}

TEST_F(Project, FoldersBeyondAsciiAreTheSameFolder) {
    Launch();
    MakeFolder(folder / L"\x00E9t\x00E9");
    WriteFileBytes(folder / L"\x00E9t\x00E9/Magnets.vtdk", "");
    fake.openProjects = {L"Magnets"};
    fake.projectFolder = folder / L"\x00E9t\x00E9/";
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(folder / L"\x00E9t\x00E9/Magnets.vtdk"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U);
}

TEST_F(Project, OnlyTheLastExtensionIsNotPartOfTheName) {
    Launch();
    fake.openProjects = {L"rev.2"};
    WriteFileBytes(folder / L"rev.2.vtdk", "");
    fake.projectName = L"rev.2";
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(folder / L"rev.2.vtdk"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U);
}

// Listing designs.

TEST_F(Project, DesignsAreAppendedAndTheWholeListSorted) {
    Launch();
    Object& other = fake.world.Make("thermal");
    other.On("GetDesignType", Text(L"Thermal 3D"));
    fake.project.On("GetChildNames", Items({Text(L"b"), Long(1), Text(L"thermal"), Text(L"Z")}));
    fake.project.On("GetDesign", [&](const Arguments& arguments) {
        return Reference(arguments[0].text == L"thermal" ? other : fake.design);
    });
    std::vector<std::string> designs{"a", "y"};
    EXPECT_TRUE(coupling.GetVeltrixDesigns(MakeOpenFile(L"Magnets"), designs));
    EXPECT_THAT(designs, ElementsAre("Z", "a", "b", "y"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        desktop.GetProjects()
        projects.Count()
        projects.Item(int(0))
        project.GetName()
        project.GetPath()
        project.GetChildNames()
        project.GetDesign("b")
        design.GetDesignType()
        project.GetDesign("thermal")
        thermal.GetDesignType()
        project.GetDesign("Z")
        design.GetDesignType()
    )");
    EXPECT_EQ(fake.project.References(), 1) << "listing makes it the coupling object's project";
    EXPECT_EQ(fake.design.References(), 0);
}

TEST_F(Project, DesignsOfOtherTypesOnlyLeaveTheListAsItIs) {
    Launch();
    for (const std::wstring& type : {std::wstring(L"Thermal 3D"), std::wstring(L"Veltrix 3D "),
                                     std::wstring(L"veltrix 3D"), std::wstring(L"Veltrix 3D\0", 11)}) {
        fake.designType = type;
        std::vector<std::string> designs;
        EXPECT_TRUE(coupling.GetVeltrixDesigns(MakeOpenFile(L"Magnets"), designs));
        EXPECT_THAT(designs, IsEmpty());
    }
}

TEST_F(Project, DesignWithoutATypeTextIsSkipped) {
    Launch();
    fake.design.On("GetDesignType", Long(3));
    std::vector<std::string> designs;
    EXPECT_TRUE(coupling.GetVeltrixDesigns(MakeOpenFile(L"Magnets"), designs));
    EXPECT_THAT(designs, IsEmpty());
}

TEST_F(Project, ListingEndsAtTheFirstFailureAndKeepsWhatItFoundUnsorted) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    fake.project.On("GetChildNames", Texts({L"b", L"a", L"c"}));
    for (const Answer& answer : {Fails(), NoObject(), Text(L"a")}) {
        fake.project.On("GetDesign", [&](const Arguments& arguments) {
            return arguments[0].text == L"c" ? answer : Reference(fake.design);
        });
        std::vector<std::string> designs{"z"};
        EXPECT_FALSE(coupling.GetVeltrixDesigns(file, designs));
        EXPECT_THAT(designs, ElementsAre("z", "b", "a"));
    }
    fake.project.On("GetDesign", Reference(fake.design));
    fake.design.On("GetDesignType", Fails());
    std::vector<std::string> designs;
    EXPECT_FALSE(coupling.GetVeltrixDesigns(file, designs));
}

TEST_F(Project, ListingNeedsTheNamesOfTheDesigns) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    std::vector<std::string> designs;
    fake.project.On("GetChildNames", Fails());
    EXPECT_FALSE(coupling.GetVeltrixDesigns(file, designs));
    fake.project.On("GetChildNames", TextArray({L"a"}));
    EXPECT_TRUE(coupling.GetVeltrixDesigns(file, designs)) << "any other result holds no names";
    EXPECT_THAT(designs, IsEmpty());
}

TEST_F(Project, ListingAMissingFileThrows) {
    Launch();
    std::vector<std::string> designs;
    EXPECT_THROW(coupling.GetVeltrixDesigns(ToAnsi(folder / L"missing.vtdk"), designs),
                 std::filesystem::filesystem_error);
}

// Saving and closing.

TEST_F(Project, SaveCallsSave) {
    Create();
    EXPECT_TRUE(coupling.SaveProject());
    fake.project.On("Save", Fails());
    EXPECT_FALSE(coupling.SaveProject());
    EXPECT_TRANSCRIPT(fake.world, R"(
        project.Save()
        project.Save() -> fails
    )");
}

TEST_F(Project, SaveWithoutAProjectFails) {
    Launch();
    EXPECT_FALSE(coupling.SaveProject());
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Project, SecondCloseFails) {
    Create();
    EXPECT_TRUE(coupling.CloseProject());
    EXPECT_EQ(fake.project.References(), 0);
    EXPECT_EQ(fake.design.References(), 0);
    EXPECT_FALSE(coupling.CloseProject());
    EXPECT_TRANSCRIPT(fake.world, "project.Close()");
}

TEST_F(Project, FailedCloseKeepsTheProjectButNotTheDesign) {
    Create();
    fake.world.observer = [&](const Entry&) { EXPECT_EQ(fake.design.References(), 0) << "released before anything"; };
    fake.project.On("Close", Fails());
    EXPECT_FALSE(coupling.CloseProject());
    fake.world.observer = nullptr;
    EXPECT_EQ(fake.project.References(), 1);
    EXPECT_FALSE(coupling.SetVariableValue("a", "1", true));
    EXPECT_TRUE(coupling.SaveProject());
}

// Messages.

TEST_F(Project, MessagesAreAskedForByProjectDesignAndSeverity) {
    Create();
    fake.messages = {L"solved", L"caf\x00E9"};
    std::vector<std::string> messages{"from before"};
    EXPECT_TRUE(coupling.GetMessages(messages, static_cast<Severity>(2)));
    EXPECT_THAT(messages, ElementsAre("solved", ToAnsi(L"caf\x00E9")));
    EXPECT_TRANSCRIPT(fake.world, R"(
        project.GetName()
        design.GetName()
        desktop.GetMessages("Magnets", "Veltrix3DDesign1", int(2))
    )");
}

TEST_F(Project, SeverityIsPassedOnUnchanged) {
    Create();
    std::vector<std::string> messages;
    for (const std::int32_t severity : {-1, 0, 77, 0x7FFFFFFF}) {
        EXPECT_TRUE(coupling.GetMessages(messages, static_cast<Severity>(severity)));
        EXPECT_EQ(fake.world.Entries().back().arguments[2].integer, severity);
    }
}

TEST_F(Project, NoMessagesEmptyTheList) {
    Create();
    std::vector<std::string> messages{"from before"};
    EXPECT_TRUE(coupling.GetMessages(messages, Severity::Info));
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(Project, MessageElementsThatAreNoTextAreSkipped) {
    Create();
    fake.desktop.On("GetMessages", Items({Text(L"a"), Long(1), Text(L"b")}));
    std::vector<std::string> messages;
    EXPECT_TRUE(coupling.GetMessages(messages, Severity::Info));
    EXPECT_THAT(messages, ElementsAre("a", "b"));
    fake.desktop.On("GetMessages", Text(L"a"));
    EXPECT_TRUE(coupling.GetMessages(messages, Severity::Info));
    EXPECT_THAT(messages, IsEmpty()) << "a result that is no array gives an empty list";
}

TEST_F(Project, MessagesNeedAnActiveDesign) {
    Launch();
    EXPECT_TRUE(coupling.OpenProject(MakeOpenFile(L"Magnets"), ""));
    fake.world.ClearJournal();
    std::vector<std::string> messages{"kept"};
    EXPECT_FALSE(coupling.GetMessages(messages, Severity::Info));
    EXPECT_THAT(messages, ElementsAre("kept"));
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Project, FailedMessageQueriesLeaveTheListAlone) {
    Create();
    std::vector<std::string> messages{"kept"};
    const auto failsWith = [&](Object& object, const char* method, const Answer& answer) {
        object.OnCall(method, 1, answer);
        const bool failed = !coupling.GetMessages(messages, Severity::Info);
        return failed && messages == std::vector<std::string>{"kept"};
    };
    EXPECT_TRUE(failsWith(fake.project, "GetName", Fails()));
    EXPECT_TRUE(failsWith(fake.project, "GetName", Long(1)));
    EXPECT_TRUE(failsWith(fake.design, "GetName", Fails()));
    EXPECT_TRUE(failsWith(fake.design, "GetName", Long(1)));
    EXPECT_TRUE(failsWith(fake.desktop, "GetMessages", FailsWith(Texts({L"new"}))));
    fake.desktop.Forget("GetMessages");
    EXPECT_FALSE(coupling.GetMessages(messages, Severity::Info));
    EXPECT_THAT(messages, ElementsAre("kept"));
}

#ifdef _WIN32
// Only there have files further names, and can somebody keep others from them.

TEST_F(Project, FilesNamesAreThoseOnTheDisk) {
    Launch();
    MakeOpenFile(L"Magnets of the pump");
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(folder / L"MAGNETS OF THE PUMP.VTDK"), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U) << "letter case";

    std::array<wchar_t, MAX_PATH> shortPath{};
    ASSERT_NE(GetShortPathNameW((folder / L"Magnets of the pump.vtdk").c_str(), shortPath.data(), MAX_PATH), 0U);
    EXPECT_TRUE(coupling.OpenProject(ToAnsi(shortPath.data()), ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U) << "short name";
}

TEST_F(Project, FileThatSomebodyHoldsAloneIsOpened) {
    Launch();
    const std::string file = MakeOpenFile(L"Magnets");
    const HANDLE held = CreateFileW((folder / L"Magnets.vtdk").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(coupling.OpenProject(file, ""));
    EXPECT_EQ(fake.world.Count("OpenProject"), 0U);
    CloseHandle(held);
}
#endif

} // namespace
