#include "host/project/NewProject.h"

#include "host/project/SuggestedScenario.h"
#include "host/project/Templates.h"
#include "scenario/Errors.h"
#include "scenario/MassProperties.h"
#include "scenario/ScenarioReader.h"
#include "tests/host/project/ScratchFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::host {
namespace {

using scenario::InputError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> NamesOf(const std::vector<ProjectFile>& files) {
    std::vector<std::string> names;
    for (const ProjectFile& file : files) {
        names.push_back(file.name);
    }
    return names;
}

template <class Action>
std::string RefusalOf(Action action) {
    try {
        action();
    } catch (const InputError& error) {
        return error.what();
    }
    return "nothing";
}

class NewProject : public ScratchFiles {
protected:
    scenario::Scenario Read(const std::filesystem::path& file) const {
        return scenario::ReadScenario(file, "Simulator", scenario::Purpose::Run, {});
    }

    /// What the suggested scenario for an OBJ file says.
    scenario::Scenario Suggested(const std::string& content) const {
        const std::filesystem::path geometry = Write("the part.obj", content);
        return Read(Write("scenario.json", SuggestedScenario(geometry.filename(), SurveyGeometry(geometry))));
    }
};

TEST_F(NewProject, WritesTemplatesThatAreValidAndClosed) {
    for (const ProjectTemplate& entry : ProjectTemplates()) {
        SCOPED_TRACE(entry.name);
        const std::filesystem::path folder = m_folder / "further" / entry.name;
        WriteProject(folder, ProjectFromTemplate(entry.name));
        const scenario::Scenario scenario = Read(folder / "scenario.json");
        EXPECT_THAT(scenario.warnings, IsEmpty());
        EXPECT_FALSE(scenario.results.empty());
        EXPECT_FALSE(scenario.parameters.empty());
        const auto objects = SurveyGeometry(scenario.geometryFile);
        EXPECT_EQ(objects.size(), scenario.materials.size());
        for (const SurveyedObject& object : objects) {
            EXPECT_TRUE(object.IsClosed() && !object.isInsideOut) << object.name;
        }
        EXPECT_TRUE(std::filesystem::exists(folder / "scenario.schema.json"));
    }
}

TEST_F(NewProject, TakesTheFirstTemplateByItself) {
    EXPECT_THAT(NamesOf(ProjectFromTemplate("")),
                ElementsAre("scenario.json", "scenario.schema.json", "coupling.obj", testing::StartsWith("run.")));
    EXPECT_THAT(RefusalOf([] { ProjectFromTemplate("sprng"); }),
                HasSubstr("choose \"coupling\", \"spring\", \"bearing\" or \"free\". Did you mean \"spring\"?"));
}

TEST_F(NewProject, ReplacesNothing) {
    const std::filesystem::path mine = Write("spring.obj", "mine");
    EXPECT_THAT(RefusalOf([&] { WriteProject(m_folder, ProjectFromTemplate("spring")); }),
                HasSubstr("spring.obj: the file is there already and stays as it is"));
    EXPECT_EQ(scenario::ReadFile(mine), "mine");
    EXPECT_FALSE(std::filesystem::exists(m_folder / "scenario.json"));
}

TEST_F(NewProject, WritesAllOrNothing) {
    const std::vector<ProjectFile> files = {{"first.txt", "1"}, {"nowhere/second.txt", "2"}};
    EXPECT_THROW(WriteProject(m_folder / "a" / "b", files), scenario::RunError);
    EXPECT_THAT(std::filesystem::directory_iterator(m_folder), testing::Eq(std::filesystem::directory_iterator()));
}

TEST_F(NewProject, RefusesAFolderThatIsAFile) {
    Write("file", "");
    EXPECT_THAT(RefusalOf([&] {
                    WriteProject(m_folder / "file", {{"a", ""}});
                }),
                HasSubstr("file: the folder cannot be made"));
}

/// A tetrahedron, by the vertices just before it.
constexpr const char* solid = "v 0 0 0\nv 10 0 0\nv 0 20 0\nv 0 0 30\n"
                              "f -4 -2 -3\nf -4 -3 -1\nf -4 -1 -2\nf -3 -2 -1\n";

TEST_F(NewProject, SuggestsAValidScenarioWhateverTheNames) {
    const std::string part = solid;
    const scenario::Scenario scenario =
        Suggested("o Rotor \"A\"\n" + part + "o 3\n" + part + "o r\xC3\xB6hre\n" + part + "o r-hre\n" + part +
                  "o r_hre\n" + part + "o " + std::string(200, 'n') + "\n" + part);
    EXPECT_THAT(scenario.warnings, IsEmpty());
    ASSERT_EQ(scenario.bodies.size(), 6U);
    EXPECT_EQ(scenario.bodies[0].name, "Rotor__A_");
    EXPECT_THAT(scenario.bodies[0].objects, ElementsAre("Rotor \"A\""));
    EXPECT_EQ(scenario.bodies[1].name, "body_3");
    EXPECT_EQ(scenario.bodies[2].name, "r__hre");
    EXPECT_EQ(scenario.bodies[3].name, "r_hre");
    EXPECT_EQ(scenario.bodies[4].name, "r_hre_2");
    EXPECT_TRUE(scenario.bodies[0].X_WB0.p_WB_W.isApprox(scenario::Vector(0.005, 0.01, 0.015)));
    EXPECT_EQ(scenario.materials.size(), 6U);
}

TEST_F(NewProject, SuggestsAUnitInWhichTheGeometryIsOfThisWorld) {
    const auto metresAlongX = [&](const char* largest) {
        return 2.0 * Suggested(std::string("v 0 0 0\nv ") + largest + " 0 0\nv 0 0.01 0\nf 1 2 3\n")
                         .bodies[0]
                         .X_WB0.p_WB_W.x();
    };
    EXPECT_DOUBLE_EQ(metresAlongX("20"), 0.02);
    EXPECT_DOUBLE_EQ(metresAlongX("0.02"), 0.02);
    EXPECT_DOUBLE_EQ(metresAlongX("2e6"), 2.0);
    EXPECT_DOUBLE_EQ(metresAlongX("2e9"), 2.0);
    EXPECT_THAT(RefusalOf([&] { metresAlongX("1e30"); }), HasSubstr("coordinates as large as 1e+30 are no lengths"));
}

TEST_F(NewProject, TellsNamesApartAsAScenarioDoes) {
    const std::string part = solid;
    EXPECT_THAT(RefusalOf([&] { Suggested("o a\n" + part + "o r\xF6hre\n" + part); }),
                HasSubstr("the name of object 2 is no UTF-8"));
    // Of objects letter case counts, of bodies it does not.
    const scenario::Scenario scenario = Suggested("o Rotor\n" + part + "o rotor\n" + part);
    EXPECT_EQ(scenario.bodies[1].name, "rotor_2");
    EXPECT_THAT(scenario.bodies[1].objects, ElementsAre("rotor"));
}

TEST_F(NewProject, WarnsOfWhatIsNotClosed) {
    const std::vector<SurveyedObject> objects = SurveyGeometry(Write("p.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
    EXPECT_THAT(GeometryWarnings("p.obj", objects),
                ElementsAre(HasSubstr("p.obj: the object \"p\" is not closed (3 open edges)")));
    EXPECT_THAT(GeometryWarnings("p.obj", {SurveyedObject()}), IsEmpty());
}

TEST_F(NewProject, CopiesAGeometryUnlessItIsThere) {
    const std::filesystem::path geometry = Write("p\xC3\xA4rt.OBJ", solid);
    const auto objects = SurveyGeometry(geometry);
    const std::filesystem::path elsewhere = m_folder / "project";
    WriteProject(elsewhere, ProjectAround(geometry, objects, elsewhere));
    EXPECT_EQ(scenario::ReadFile(elsewhere / geometry.filename()), solid);
    EXPECT_THAT(Read(elsewhere / "scenario.json").warnings, IsEmpty());
    WriteProject(m_folder, ProjectAround(geometry, objects, m_folder));
    EXPECT_TRUE(std::filesystem::equivalent(Read(m_folder / "scenario.json").geometryFile, geometry));
}

TEST(RunScript, OfWindowsHasItsLineEndsAndNoOtherCharacters) {
    const ProjectFile script = RunCmd("C:\\K 100%\\kinora-run.exe", "--report");
    EXPECT_THAT(script.content, HasSubstr("set \"KINORA_RUN=C:\\K 100%%\\kinora-run.exe\"\r\n"));
    EXPECT_THAT(script.content, HasSubstr("\"%KINORA_RUN%\" scenario.json --report %ARGUMENTS%\r\n"));
    EXPECT_THAT(script.content, testing::Not(HasSubstr("chcp")));
    const auto returns = std::count(script.content.begin(), script.content.end(), '\r');
    EXPECT_EQ(returns, std::count(script.content.begin(), script.content.end(), '\n'));
}

TEST(RunScript, OfWindowsReadsUmlautsAsUtf8) {
    const std::string content = RunCmd(scenario::PathFromUtf8("C:\\J\xC3\xBCrg\\kinora-run.exe"), "").content;
    const std::size_t into = content.find("chcp 65001");
    const std::size_t program = content.find("J\xC3\xBCrg");
    const std::size_t back = content.find("chcp %CODE_PAGE%");
    EXPECT_TRUE(into < program && program < back && back != std::string::npos) << content;
}

TEST(RunScript, ElsewhereQuotesWhatTheShellWouldRead) {
    EXPECT_THAT(RunSh("/opt/it's here/kinora-run", "").content,
                HasSubstr("\nprogram='/opt/it'\\''s here/kinora-run'\n"));
    EXPECT_EQ(AdviceToRun("a b/run.sh"), "Run it:\n  'a b/run.sh'\n");
    EXPECT_EQ(AdviceToRun("a/run.sh"), "Run it:\n  a/run.sh\n");
}

} // namespace
} // namespace kinora::host
