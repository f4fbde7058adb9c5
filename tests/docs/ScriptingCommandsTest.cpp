// docs/scripting-commands.md is what the library really sends: the page is written here from a session with the
// recording desktop, and the test fails when the page in the repository differs. KINORA_WRITE_DOCS=1 rewrites it.

#include "comutils/ComUtils.h"
#include "tests/support/CouplingSession.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

using Interface = IKinoraVeltrixInterface;

constexpr char page[] = KINORA_SOURCE_DIR "/docs/scripting-commands.md";

constexpr char introduction[] = R"(# Scripting commands

Every command that reaches the desktop, in the order in which it is sent: a session with one magnet body "Rotor" that is
turned by 0.6435 rad about X, recorded from the library (`tests/docs/ScriptingCommandsTest.cpp` writes this page and fails
when it is out of date). Each line is one look-up of the method's name and one invocation with DISPATCH_METHOD.

Reading: `object.Method(arguments)` in the desktop's order; text in quotes is VT_BSTR, `true` and `false` are VT_BOOL (-1
and 0), numbers with a decimal point VT_R8, `int(n)` is VT_INT, `empty` is VT_EMPTY, brackets are arrays of VARIANTs.
Objects are named after the road to them: `design` is what "SetActiveDesign" gave, `editor` what "SetActiveEditor" gave,
modules and children carry their own names.
)";

class ScriptingCommands : public testing::Test, protected fake::CouplingSession {
protected:
    ScriptingCommands() {
        fake.AddSolid(L"RotorMagnet", L"\"magnet_1T\"");
        fake.AddMaterial(L"magnet_1T", {L"1", L"0", L"0"});
        fake.updateReports = L"Automatically";
        fake.messages = {L"Adaptive pass 1"};
        rotor.transform.name = "Rotor";
        rotor.transform.translation[0] = 0.012;
        // Rows are the body's axes: turned about X with the cosine 0.8 and the sine 0.6.
        const double rows[9] = {1, 0, 0, 0, 0.8, 0.6, 0, -0.6, 0.8};
        std::copy(std::begin(rows), std::end(rows), rotor.transform.rotation);
        rotor.objects = {"RotorMagnet"};
    }

    void Section(const std::string& title, const std::string& remark, bool done) {
        EXPECT_TRUE(done) << title;
        text += "\n## " + title + "\n\n" + remark + "\n\n```\n" + fake.world.Journal() + "```\n";
        fake.world.ClearJournal();
    }
    bool Step(double time) {
        int status = 0;
        std::vector<Interface::Result> results;
        return coupling.Analyze(time, {rotor.transform}, results, status);
    }

    Interface::Group rotor;
    std::string text = introduction;
};

/// The session's own folder has another name in every run.
std::string WithoutFolder(std::string text, const std::wstring& folder) {
    const std::string shown = fake::ToUtf8(folder);
    std::string escaped;
    for (const char character : shown) {
        escaped += character == '\\' ? std::string("\\\\") : std::string(1, character);
    }
    for (const std::string& found : {escaped, shown}) {
        for (std::size_t at = text.find(found); at != std::string::npos; at = text.find(found)) {
            text.replace(at, found.size(), "C:\\\\runs");
        }
    }
    return text;
}

std::string ReadPage() {
    std::ifstream file(page, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST_F(ScriptingCommands, PageIsWhatTheLibrarySends) {
    Section("LaunchDesktop",
            "Implied by `CreateProject` and `OpenProject`; after the creation of the application object.",
            coupling.LaunchDesktop());
    Section("CreateProject", "With `InitGeometry` at its end, from \"SetActiveEditor\" on.",
            coupling.CreateProject("C:\\runs\\pair.project", "C:\\runs\\pair.obj", "mm"));
    Section(
        "InitMagneticObjects",
        "The magnet is wanted along z, and the stored material points along x: it is cloned, and the two components "
        "that differ are written.",
        coupling.InitMagneticObjects({rotor}, {{"RotorMagnet", {"magnet_1T", {0, 0, 1}}}}));
    Section("Analyze, the first step", "At time 0.0 the history setup is deleted and inserted anew.", Step(0.0));
    fake.traces[L"Force_Rotor"] = {L"Force_Rotor.Force_x"};
    Section("Analyze, a later step",
            "The history setup is edited, with all rows so far. A report that has traces has them deleted before the "
            "import. With the option at \"Never\" or \"On Completion\" the step ends after \"GetRegistryString\".",
            Step(0.01));
    std::vector<std::string> messages, designs;
    Section("GetMessages", "With the severity `Warning`.",
            coupling.GetMessages(messages, Interface::MessageSeverity::Warning));
    fake.reportModule.AddRef();
    Section("Not sent by any operation: CreateDataTable and InsertExpressionCaches", "For hosts that call `CComUtils`.",
            CComUtils::CreateDataTable(&fake.reportModule, "Rotor", "Setup1", {"SimTime", "Rotor_X"}) &&
                CComUtils::InsertExpressionCaches(&fake.design, rotor.transform));
    fake.reportModule.Release();
    Section("SaveProject", "", coupling.SaveProject());
    Section("CloseProject", "", coupling.CloseProject());
    const std::wstring file = folder / L"pair.project";
    std::ofstream(std::filesystem::path(file)) << "project";
    Section("GetVeltrixDesigns",
            "With `OpenProject` at its begin; the projects that are open already are looked at first.",
            coupling.GetVeltrixDesigns(fake::ToUtf8(file), designs));
    Section("QuitApplication", "With `SaveProject` and `CloseProject` at its begin.", coupling.QuitApplication());

    text = WithoutFolder(text, folder.Path());
    if (std::getenv("KINORA_WRITE_DOCS")) {
        std::ofstream(page, std::ios::binary) << text;
    }
    EXPECT_EQ(ReadPage(), text) << "run it with KINORA_WRITE_DOCS=1 to bring the page up to date";
}
