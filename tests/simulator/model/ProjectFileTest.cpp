#include "simulator/model/ProjectFile.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/Materials.h"
#include "simulator/model/ProjectListing.h"
#include "simulator/model/ReportData.h"
#include "tests/simulator/model/Shapes.h"
#include "tests/support/Complaint.h"

#include <cmath>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vantor::model;
using testing::HasSubstr;

namespace {

/// A project with one of everything.
Project FullProject() {
    Project project;
    project.name = "pump";
    project.activeDesign = "D";
    project.materials["N"] = {"N", 1.05, Coercivity{9e5, {0.0, 0.6, 0.8}}};
    project.materials["Fe"] = {"Fe", 1500.0, std::nullopt,
                               std::make_shared<BhCurve>(BhCurve{{{0.0, 0.0}, {500.0, 0.9}, {1e4, 1.7}}})};
    auto design = std::make_shared<Design>();
    design->name = "D";
    design->type = "Veltrix 3D";
    design->solutionType = "Magnetostatic";
    design->variables.Add({{"SimTime", "0s"}, {"B_X", "0.1Meter"}});
    design->modeler.SetUnits("mm", false);
    design->modeler.Import({{{"Rotor", "N", shapes::Cube(1, 2)}}, {}}, true);
    design->modeler.AddCoordinateSystem({"Obj_CS_B", "Global", {"B_X", "0", "0"}, {"1", "0", "0"}, {"0", "1", "0"}},
                                        design->variables);
    design->modeler.RequireObject("Rotor").coordinateSystem = "Obj_CS_B";
    design->modeler.SetRegion(
        {"OuterRegion", "vacuum", "(1 2 3)", 0.5, true, "Global", "Global", true, {"1", "2", "3", "4", "5", "6"}},
        design->variables);
    design->setups.push_back({"Setup1", "Magnetostatic", true, 15, 0.5, {{"t", "B_X/1mm", "Magnetostatic"}}});
    LoadParameter torque;
    torque.kind = LoadParameter::Kind::Torque;
    torque.name = "Torque_B_Y";
    torque.frame = "Obj_CS_B";
    torque.axis = 'Y';
    torque.objects = {"Rotor"};
    design->loads = {torque};
    design->outputVariables.push_back(
        {"T", "Torque_B_Y.Torque/1mNewtonMeter", "Setup1 : LastAdaptive", "Magnetostatic"});
    design->parametricSetups.push_back({"KinoraHistory",
                                        true,
                                        true,
                                        true,
                                        true,
                                        {},
                                        {"Setup1"},
                                        {{"SimTime", "0s", false, 0.0}},
                                        {{"0.1s"}, {"0.2s"}}});
    design->reports.push_back({"R",
                               "Magnetostatic",
                               "Rectangular Plot",
                               "Setup1 : LastAdaptive",
                               {{"SimTime", {"All"}}},
                               "SimTime",
                               {},
                               {{"F", "Newton", "SimTime", "s", {0, 1}, {2, 3}}}});
    design->fieldPlots.push_back({"H_VectorPlot", "Setup1 : LastAdaptive", "H_Vector", "H", {"Rotor"}});
    Solution solution;
    solution.setup = "Setup1";
    solution.current = true;
    solution.variables = {{"SimTime", "0s"}};
    solution.quantities["Torque_B_Y.Torque"] = {0.0123456789012345678, torqueDimension};
    design->solution = solution;
    project.designs.push_back(design);
    return project;
}

/// The project file's text with one part replaced.
std::string Changed(const std::string& from, const std::string& to) {
    std::string text = WriteProject(FullProject());
    const auto place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

std::string ReadComplaint(const std::string& text) {
    return fake::ComplaintOf<DesktopError>([&] { ReadProject(text, "pump.vtdk"); });
}

class TemporaryFolder {
public:
    TemporaryFolder() : path(std::filesystem::temp_directory_path() / "vantor-model-test") {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    const std::filesystem::path path;
};

} // namespace

TEST(ProjectFile, ReadsBackWhatItWrote) {
    const std::string text = WriteProject(FullProject());
    const auto project = ReadProject(text, "pump.vtdk");
    EXPECT_EQ(WriteProject(*project), text);
    const Design& design = *project->designs.at(0);
    EXPECT_EQ(OutputVariableValue(design, design.outputVariables[0]), 0.0123456789012345678 / 1e-3);
    EXPECT_EQ(design.modeler.RequireObject("Rotor").mesh->vertices,
              FullProject().designs[0]->modeler.RequireObject("Rotor").mesh->vertices);
    const Material& iron = project->materials.at("Fe");
    EXPECT_EQ(iron.relativePermeability, 1500.0);
    ASSERT_EQ(iron.bhCurve->points.size(), 3U);
    EXPECT_EQ(iron.bhCurve->points[1].h, 500.0);
    EXPECT_EQ(iron.bhCurve->points[2].b, 1.7);
}

TEST(ProjectFile, OpensProjectsOfEarlierVersions) {
    // Without curves, and with any permeability above 0.
    const auto project =
        ReadProject(Changed("\"relativePermeability\": 1.05", "\"relativePermeability\": 0.2"), "p.vtdk");
    EXPECT_EQ(project->materials.at("N").relativePermeability, 0.2);
    EXPECT_FALSE(project->materials.at("N").bhCurve);
}

TEST(ProjectFile, NamesFileAndPlaceOfWhatItCannotRead) {
    EXPECT_EQ(ReadComplaint("{\n \"format\": ,"), "pump.vtdk, line 2: not valid JSON");
    EXPECT_EQ(ReadComplaint("{}"), "pump.vtdk: this is not a project of the desktop simulator");
    EXPECT_EQ(ReadComplaint(Changed("\"version\": 1", "\"version\": 2")),
              "pump.vtdk: version: version 2 cannot be read; this program reads version 1");
    EXPECT_EQ(ReadComplaint(Changed("\"activeDesign\": \"D\"", "\"activeDesign\": \"E\"")),
              "pump.vtdk: activeDesign: there is no design \"E\"");
    EXPECT_EQ(ReadComplaint(Changed("\"maximumPasses\": 15", "\"maximumPasses\": \"many\"")),
              "pump.vtdk: designs[0].setups[0].maximumPasses: a number is needed");
    EXPECT_EQ(
        ReadComplaint(Changed("\"name\": \"Fe\"", "\"name\": \"Fe\", \"coercivityMagnitude\": 1")),
        "pump.vtdk: materials[0].bhCurve: a magnet has no B-H curve; leave out either this, or the coercivity and "
        "its components");
    EXPECT_THAT(ReadComplaint(Changed("10000.0", "400.0")),
                HasSubstr("pump.vtdk: materials[0].bhCurve[2]: H must grow"));
    EXPECT_EQ(ReadComplaint(Changed("\"axis\": \"Y\"", "\"axis\": \"W\"")),
              "pump.vtdk: designs[0].loads[0].axis: X, Y or Z is needed");
    EXPECT_EQ(ReadComplaint(Changed("\"units\": \"mm\"", "\"units\": \"mm\", \"scale\": 1")),
              "pump.vtdk: designs[0].modeler: unknown key \"scale\"");
    EXPECT_EQ(
        ReadComplaint(Changed("\"value\": \"0.1Meter\"", "\"value\": \"0.1Metre\"")),
        "pump.vtdk: designs[0].variables: variable \"B_X\": unknown unit \"Metre\" at position 4 of \"0.1Metre\"");
    EXPECT_THAT(ReadComplaint(Changed("\"coordinateSystem\": \"Obj_CS_B\"", "\"coordinateSystem\": \"Obj_CS_C\"")),
                HasSubstr("no coordinate system \"Obj_CS_C\""));
    EXPECT_THAT(ReadComplaint(std::string(100000, '[')), HasSubstr("nested deeper"));
}

TEST(ProjectFile, ABadSaveLeavesTheGoodFile) {
    const TemporaryFolder folder;
    Project project = FullProject();
    project.file = folder.path / "pump.vtdk";
    SaveProjectFile(project);
    const std::string saved = ReadWholeFile(project.file);
    // A folder in the place of the temporary file makes the next save fail before it touches the file.
    std::filesystem::create_directories(folder.path / "pump.vtdk.tmp" / "occupied");
    project.designs[0]->name = "Other";
    EXPECT_THAT(fake::ComplaintOf<DesktopError>([&] { SaveProjectFile(project); }), HasSubstr("cannot be written"));
    EXPECT_EQ(ReadWholeFile(project.file), saved);
}

TEST(ProjectFile, IsNamedAfterItsFile) {
    const TemporaryFolder folder;
    Project project = FullProject();
    project.file = folder.path / PathFromUtf8("Kr\xC3\xBCmmer.v2.vtdk");
    SaveProjectFile(project);
    EXPECT_EQ(OpenProjectFile(project.file)->name, "Kr\xC3\xBCmmer.v2");
    EXPECT_THAT(fake::ComplaintOf<DesktopError>([&] { OpenProjectFile(folder.path / "missing.vtdk"); }),
                HasSubstr("there is no file"));
}

TEST(ProjectListing, ShowsWhatAUserLooksFor) {
    const std::string text = ListProject(FullProject());
    for (const char* line :
         {"Design D: Veltrix 3D, Magnetostatic, active", "SimTime = 0s",
          "Fe: relative permeability 1500, B-H curve to 1.7 T\n",
          "N: relative permeability 1.05, coercivity 9e+05 A/m along (0, 0.6, 0.8)",
          "Torque_B_Y: torque about Y in Obj_CS_B on Rotor", "KinoraHistory: rows (3)", "0.2s", "F [Newton]: 2 points",
          "H/H_VectorPlot: H_Vector on Rotor", "T = Torque_B_Y.Torque/1mNewtonMeter: 12.345678901234567"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST(ProjectListing, ShortensALongHistoryUnlessItIsFull) {
    Project project = FullProject();
    auto& rows = project.designs[0]->parametricSetups[0].addedRows;
    rows.clear();
    for (int i = 1; i < 8; ++i) {
        rows.push_back({"row " + std::to_string(i)});
    }
    const std::string shortened = ListProject(project);
    EXPECT_THAT(shortened, HasSubstr("KinoraHistory: rows (8)\n"));
    EXPECT_THAT(shortened, HasSubstr("      row 1\n      row 2\n      .. 2 more rows, which --full shows\n"
                                     "      row 5\n      row 6\n      row 7\n"));
    EXPECT_THAT(ListProject(project, true), HasSubstr("      row 2\n      row 3\n      row 4\n      row 5\n"));
    rows.pop_back();
    EXPECT_THAT(ListProject(project), HasSubstr("      row 2\n      row 3\n      row 4\n"));
}

TEST(Materials, BuiltInMagnetHasARemanenceOfOneTesla) {
    const Material magnet = BuiltInMaterials().at("magnet_1T");
    EXPECT_NEAR(4e-7 * std::acos(-1.0) * magnet.relativePermeability * magnet.coercivity->magnitude, 1.0, 1e-9);
}

/// What any solver may expect of it: a permeability that falls from the greatest one to vacuum's, about the saturation
/// of iron, 2.16 T (R. M. Bozorth, Ferromagnetism, 1951).
TEST(Materials, BuiltInSteelSaturatesAsIronDoes) {
    const Material steel = BuiltInMaterials().at("steel_soft");
    EXPECT_FALSE(steel.coercivity);
    ASSERT_TRUE(steel.bhCurve);
    const auto& points = steel.bhCurve->points;
    EXPECT_EQ(points.front().h, 0.0);
    EXPECT_EQ(points.front().b, 0.0);
    const double mu0 = 4e-7 * std::acos(-1.0);
    EXPECT_NEAR(steel.relativePermeability, points[1].b / points[1].h / mu0, 1e-9 * steel.relativePermeability);
    double slope = steel.relativePermeability * mu0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const double next = (points[i].b - points[i - 1].b) / (points[i].h - points[i - 1].h);
        EXPECT_LE(next, slope * (1 + 1e-3)) << points[i].h;
        EXPECT_GE(next, mu0 * (1 - 1e-9)) << points[i].h;
        slope = next;
    }
    EXPECT_NEAR(slope, mu0, 1e-3 * mu0);
    EXPECT_NEAR(points.back().b - mu0 * points.back().h, 2.16, 0.02);
}

TEST(Materials, BuiltInOnesPassAsAUsersOwn) {
    Project project;
    project.materials = BuiltInMaterials();
    const auto read = ReadProject(WriteProject(project), "built-in.vtdk");
    EXPECT_EQ(WriteProject(*read), WriteProject(project));
    EXPECT_EQ(read->materials.at("steel_soft").bhCurve->points.size(),
              project.materials.at("steel_soft").bhCurve->points.size());
    for (const auto& [name, material] : read->materials) {
        EXPECT_GE(material.relativePermeability, leastRelativePermeability) << name;
    }
}

TEST(Materials, ReadUserFiles) {
    const auto materials = ReadMaterials(
        R"({"materials": [{"name": "M", "relativePermeability": 1.1, "coercivityMagnitude": 5e5, "components": [0,0,1]},
                          {"name": "Plastic", "relativePermeability": 1}]})",
        "m.json");
    ASSERT_EQ(materials.size(), 2U);
    EXPECT_EQ(materials[0].coercivity->components[2], 1.0);
    EXPECT_FALSE(materials[1].coercivity);
    EXPECT_FALSE(materials[1].bhCurve);
}

TEST(Materials, ReadCurvesOfBOverH) {
    const auto materials = ReadMaterials(
        R"({"materials": [{"name": "Shown", "relativePermeability": 5000, "bhCurve": [[0, 0], [100, 0.5], [1e4, 1.5]]},
                          {"name": "Sloped", "bhCurve": [[0, 0], [100, 0.5]]},
                          {"name": "AsVacuum", "bhCurve": [[0, 0], [1e6, 1.256637]]},
                          {"name": "Least", "relativePermeability": 0.9}]})",
        "m.json");
    EXPECT_EQ(materials[0].relativePermeability, 5000.0);
    ASSERT_EQ(materials[0].bhCurve->points.size(), 3U);
    EXPECT_EQ(materials[0].bhCurve->points[1].h, 100.0);
    EXPECT_EQ(materials[0].bhCurve->points[1].b, 0.5);
    EXPECT_NEAR(materials[1].relativePermeability, 0.005 / (4e-7 * std::acos(-1.0)), 1e-5);
    EXPECT_NEAR(materials[2].relativePermeability, 1.0, 1e-6);
    EXPECT_EQ(materials[3].relativePermeability, 0.9);
}

TEST(Materials, RefuseWhatIsNoCurveOfBOverH) {
    const auto complaint = [](const std::string& points) {
        return fake::ComplaintOf<DesktopError>(
            [&] { ReadMaterials(R"({"materials": [{"name": "a", "bhCurve": )" + points + "}]}", "m.json"); });
    };
    const std::string place = "m.json: materials[0].bhCurve";
    EXPECT_EQ(complaint("[[0, 0], [100, 0.5], [1e4, 1.5]]"), "none");
    EXPECT_EQ(complaint("4000"), place + ": a list in brackets is needed");
    EXPECT_EQ(complaint("[0, 0, 100, 0.5]"), place + "[0]: a list in brackets is needed");
    EXPECT_EQ(complaint("[[0, 0], [100, 0.5, 1]]"), place + "[1]: 2 numbers are needed");
    EXPECT_EQ(complaint("[[0, 0], [100, \"0.5\"]]"), place + "[1][1]: a number is needed");
    EXPECT_THAT(complaint("[[0, 0], [100, NaN]]"), HasSubstr("m.json, line 1: not valid JSON"));
    EXPECT_THAT(complaint("[[0, 0], [1e999, 1]]"), HasSubstr("m.json: a number is out of range"));
    for (const char* tooFew : {"[]", "[[0, 0]]"}) {
        EXPECT_EQ(complaint(tooFew),
                  place + ": a B-H curve needs two points [H in A/m, B in T] or more, the first one [0, 0]");
    }
    EXPECT_EQ(complaint("[[100, 0.5], [200, 0.8]]"),
              place + "[0]: a B-H curve begins with [0, 0], and not with [100, 0.5]; put that point before the others");
    EXPECT_THAT(complaint("[[0, 0.1], [200, 0.8]]"), HasSubstr("begins with [0, 0], and not with [0, 0.1]"));
    EXPECT_EQ(complaint("[[0, 0], [200, 0.8], [150, 0.9]]"),
              place +
                  "[2]: H must grow from point to point, and [150, 0.9] follows [200, 0.8]; sort the points by H and "
                  "leave out what stands there twice");
    EXPECT_THAT(complaint("[[0, 0], [200, 0.8], [200, 0.9]]"), HasSubstr("[2]: H must grow"));
    EXPECT_THAT(complaint("[[0, 0], [1e-320, 0.8]]"), HasSubstr("[1]: H must grow"));
    EXPECT_EQ(complaint("[[0, 0], [200, 0.8], [300, 0.7]]"),
              place + "[2]: B must grow from point to point by what it grows in vacuum or more, and [300, 0.7] follows "
                      "[200, 0.8]; correct H and B, or let the curve end before");
    EXPECT_THAT(complaint("[[0, 0], [200, 0.8], [300, 0.8]]"), HasSubstr("[2]: B must grow"));
    EXPECT_THAT(complaint("[[0, 0], [200, 0.8], [100200, 0.925]]"), HasSubstr("[2]: B must grow"));
    EXPECT_EQ(complaint("[[0, 0], [200, 0.8], [100200, 0.9257]]"), "none");
}

TEST(Materials, NameFileAndPlaceOfABadEntry) {
    const auto complaint = [](const std::string& entry) {
        return fake::ComplaintOf<DesktopError>([&] { ReadMaterials("{\"materials\": [" + entry + "]}", "m.json"); });
    };
    EXPECT_EQ(complaint(R"({"relativePermeability": 1})"), "m.json: materials[0]: \"name\" is missing");
    EXPECT_EQ(complaint(R"({"name": "a", "relativePermeability": 0})"),
              "m.json: materials[0].relativePermeability: the relative permeability of \"a\" is 0 and must be 0.9 or "
              "more; write 1 for what is not magnetic");
    EXPECT_THAT(complaint(R"({"name": "a", "relativePermeability": 0.899})"),
                HasSubstr("of \"a\" is 0.899 and must be"));
    EXPECT_THAT(complaint(R"({"name": "a", "relativePermeability": 0.5, "bhCurve": [[0, 0], [1, 1]]})"),
                HasSubstr("of \"a\" is 0.5 and must be"));
    EXPECT_EQ(complaint(R"({"name": "a"})"), "m.json: materials[0]: \"relativePermeability\" is missing");
    EXPECT_THAT(complaint(R"({"name": "a", "bhCurve": [[0, 0], [1, 1]], "components": [1, 0, 0]})"),
                HasSubstr("materials[0].bhCurve: a magnet has no B-H curve; leave out"));
    EXPECT_EQ(complaint(R"({"name": "a", "relativePermeability": 1, "coercivityMagnitude": 1, "components": [0,0,0]})"),
              "m.json: materials[0].components: the components give no direction: all are 0");
    EXPECT_EQ(complaint(R"({"name": "a", "relativePermeability": 1, "coercivityMagnitude": 1, "components": [1,0]})"),
              "m.json: materials[0].components: 3 numbers are needed");
    EXPECT_EQ(complaint(R"({"name": "a", "relativePermeability": 1, "colour": "red"})"),
              "m.json: materials[0]: unknown key \"colour\"");
}

TEST(ReportData, ReadsLabelledColumns) {
    const auto traces =
        ReadTraces("SimTime [s],Force_B.Force_x [Newton],Count\r\n0,1.5,2\r\n0.1,-2e-05,3\r\n", "f.csv");
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].name, "Force_B.Force_x");
    EXPECT_EQ(traces[0].unit, "Newton");
    EXPECT_EQ(traces[0].xName, "SimTime");
    EXPECT_THAT(traces[0].y, testing::ElementsAre(1.5, -2e-05));
    EXPECT_EQ(traces[1].unit, "");
}

TEST(ReportData, NamesFileLineAndReason) {
    const auto complaint = [](const std::string& text) {
        return fake::ComplaintOf<DesktopError>([&] { ReadTraces(text, "f.csv"); });
    };
    EXPECT_EQ(complaint(""), "f.csv, line 1: the column labels are missing");
    EXPECT_EQ(complaint("SimTime [s]\n"), "f.csv, line 1: at least two labelled columns are needed");
    EXPECT_EQ(complaint("t,a,a\n"), "f.csv, line 1: a second column labelled \"a\"");
    EXPECT_EQ(complaint("t,a [N\n"), "f.csv, line 1: the unit of the label \"a [N\" does not end in \"]\"");
    EXPECT_EQ(complaint("t,a\n0,1\n1\n"), "f.csv, line 3: 2 fields are needed, here are 1");
    EXPECT_EQ(complaint("t,a\n0,inf\n"), "f.csv, line 2: not a finite number: \"inf\"");
    EXPECT_THAT(fake::ComplaintOf<DesktopError>([] { ReadTraceFile("report.txt"); }), HasSubstr("is no .csv file"));
}

TEST(MessageList, FindsBySeverityAndPlace) {
    MessageList messages;
    messages.Add({"P", "D", Severity::Info, "i"});
    messages.Add({"P", "D", Severity::Error, "e"});
    messages.Add({"P", "E", Severity::Fatal, "other design"});
    messages.Add({"", "", Severity::Warning, "everybody's"});
    const auto texts = [&](const char* project, const char* design, int severity) {
        std::vector<std::string> found;
        for (const auto& message : messages.Find(project, design, severity)) {
            found.push_back(message.text);
        }
        return found;
    };
    EXPECT_THAT(texts("P", "D", 0), testing::ElementsAre("i", "e", "everybody's"));
    EXPECT_THAT(texts("P", "D", 2), testing::ElementsAre("e"));
    EXPECT_THAT(texts("", "", 3), testing::ElementsAre("other design"));
    messages.Clear("P", "D", 0);
    EXPECT_THAT(texts("", "", 0), testing::ElementsAre("other design"));
}
