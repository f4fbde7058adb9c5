#include "scenario/ScenarioReader.h"

#include "simulator/model/Units.h"
#include "tests/scenario/ScenarioFixture.h"

#include <cmath>
#include <gmock/gmock.h>

namespace kinora::scenario {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class ScenarioReader : public ScenarioFixture {};

TEST_F(ScenarioReader, TakesTheSmallestScenario) {
    const Scenario scenario = Read(Smallest());
    EXPECT_EQ(scenario.bodies.size(), 1u);
    EXPECT_EQ(scenario.bodies[0].objects, std::vector<std::string>{"magnet"});
    EXPECT_EQ(scenario.stepping.steps, 100);
    EXPECT_EQ(scenario.desktop.atEnd, AtEnd::Quit);
    EXPECT_TRUE(scenario.joints.empty());
    EXPECT_EQ(scenario.outputFolder, m_folder / "output");
    EXPECT_EQ(scenario.geometryFile, m_folder / "magnets.obj");
    EXPECT_FALSE(scenario.overwrite);
}

TEST_F(ScenarioReader, TakesCommentsAndAByteOrderMark) {
    EXPECT_EQ(ReadText("\xEF\xBB\xBF// first\n" + Smallest().dump() + "/* last */").bodies.size(), 1u);
}

TEST_F(ScenarioReader, NamesTheEncodingThatItDoesNotTake) {
    try {
        ReadText(std::string("\xFF\xFE{\0}\0", 6));
        FAIL();
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("scenario.json:1: /: the file is UTF-16; save it as UTF-8."));
    }
}

TEST_F(ScenarioReader, TakesQuantitiesAsNumbersAndAsFormulas) {
    json document = Smallest();
    document["bodies"][0]["position"] = {0.5, "12*mm", "-1e-3"};
    document["bodies"][0]["rotation"] = {{"axis", {3, 0, 0}}, {"angle", "90*deg"}};
    document["solver"] = {{"step", "1/200"}, {"end", "0.5"}};
    const Scenario scenario = Read(document);
    EXPECT_EQ(scenario.bodies[0].X_WB0.p_WB_W, Vector(0.5, 0.012, -0.001));
    EXPECT_LT((scenario.bodies[0].X_WB0.R_WB.col(1) - Vector::UnitZ()).norm(), 1e-15);
    EXPECT_EQ(scenario.stepping.steps, 100);
}

TEST_F(ScenarioReader, ReadsAFreeJointWhole) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0]["free"] = {{"start", "1*mm"},
                                     {"speed", -2},
                                     {"inertia", 0.5},
                                     {"damping", 3},
                                     {"friction", 4},
                                     {"load", "2*t+q"},
                                     {"spring", {{"stiffness", 5}, {"rest", 6}}},
                                     {"stops", {{"min", -7}, {"max", 8}, {"restitution", 0.9}}}};
    const Joint joint = Read(document).joints.at(0);
    EXPECT_EQ(joint.type, JointType::Slider);
    EXPECT_EQ(joint.axis_W, Vector::UnitZ());
    const auto& motion = std::get<FreeMotion>(joint.coordinates.at(0).motion);
    EXPECT_EQ(motion.start, 0.001);
    EXPECT_EQ(motion.speed, -2.0);
    EXPECT_EQ(motion.addedInertia, 0.5);
    EXPECT_EQ(motion.spring.stiffness, 5.0);
    EXPECT_EQ(motion.spring.rest, 6.0);
    EXPECT_EQ(motion.damping, 3.0);
    EXPECT_EQ(motion.friction, 4.0);
    EXPECT_EQ(motion.stops.min, -7.0);
    EXPECT_EQ(motion.stops.max, 8.0);
    EXPECT_EQ(motion.stops.restitution, 0.9);
    EXPECT_EQ(motion.load.Evaluate(1.0, 10.0), 12.0);
}

TEST_F(ScenarioReader, ReadsPrescribedTablesAndMaterials) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0]["prescribed"] = {{"table", {{0, 0}, {1, "10*mm"}}}};
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}, {"direction", {0, 0, 1}}}},
                             {"other", {{"name", "air"}}}};
    const Scenario scenario = Read(document);
    EXPECT_DOUBLE_EQ(std::get<PrescribedMotion>(scenario.joints[0].coordinates.at(0).motion).Evaluate(0.5), 0.005);
    EXPECT_EQ(scenario.materials.at("magnet").coercivityDirection[2], 1.0);
    EXPECT_EQ(scenario.materials.at("other").coercivityDirection[0], 1.0);
    EXPECT_THAT(scenario.undirected, ElementsAre("other"));
}

// Slips that a run does not stop at.

TEST_F(ScenarioReader, HasNothingToWarnOfWhenMaterialsAndObjectsMeet) {
    json document = Smallest();
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}};
    EXPECT_THAT(Read(document).warnings, IsEmpty());
}

TEST_F(ScenarioReader, WarnsOfAMaterialAndAnObjectThatMissEachOther) {
    json document = Smallest();
    document["materials"] = {{"magnt", {{"name", "magnet_1T"}}}};
    const std::string file = Utf8FromPath(m_folder / "scenario.json");
    EXPECT_THAT(Read(document).warnings,
                ElementsAre(file + ":16: /materials/magnt: no body has an object \"magnt\". Did you mean \"magnet\"?",
                            file + ":7: /bodies/0/objects/0: the object \"magnet\" has no material and feels no "
                                   "force, unless the geometry file gives it one: \"materials\" does not name it. Did "
                                   "you mean \"magnt\"?"));
}

TEST_F(ScenarioReader, SuggestsNoMaterialThatAnotherObjectHas) {
    json document = Smallest();
    document["bodies"][0]["objects"] = {"magnet_1", "magnet_2"};
    document["materials"] = {{"magnet_1", {{"name", "magnet_1T"}}}};
    EXPECT_THAT(Read(document).warnings, ElementsAre(EndsWith("\"materials\" does not name it.")));
}

TEST_F(ScenarioReader, WarnsOfEveryObjectWithoutMaterials) {
    EXPECT_THAT(Read(Smallest()).warnings, ElementsAre(HasSubstr("/bodies/0/objects/0: the object \"magnet\" has no")));
}

// Names that the geometry or the desktop does not know.

TEST_F(ScenarioReader, RefusesAnObjectThatTheGeometryDoesNotHave) {
    WriteGeometry({"magnet", "yoke"});
    json document = Smallest();
    document["bodies"][0]["objects"] = {"magnet", "magnt", "shaft"};
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}};
    EXPECT_EQ(
        WithoutFile(ErrorOf(document)),
        "8: /bodies/0/objects/1: there is no object \"magnt\" in magnets.obj, which has \"magnet\", \"yoke\". Did "
        "you mean \"magnet\"?\n"
        "9: /bodies/0/objects/2: there is no object \"shaft\" in magnets.obj, which has \"magnet\", \"yoke\".");
}

TEST_F(ScenarioReader, OnlyWarnsOfAnotherGeometryForTheReportOfARunThatIsOver) {
    WriteGeometry({"other"});
    json document = Smallest();
    document["desktop"] = {{"version", "Simulator"}};
    document["geometry"]["units"] = "cubits";
    const std::filesystem::path file = m_folder / "scenario.json";
    EXPECT_THROW(ParseScenario(document.dump(1), file), InputError);
    const Scenario scenario = ParseScenario(document.dump(1), file, {}, Purpose::Report);
    EXPECT_THAT(scenario.warnings, testing::Contains(HasSubstr("there is no object \"magnet\" in magnets.obj")));
    EXPECT_THAT(scenario.warnings, testing::Contains(HasSubstr("\"cubits\" is not one of the length units")));
}

TEST_F(ScenarioReader, ListsADozenObjectsOfTheGeometry) {
    std::vector<std::string> names;
    for (char letter = 'a'; letter <= 'o'; ++letter) {
        names.emplace_back(1, letter);
    }
    WriteGeometry(names);
    EXPECT_THAT(ErrorOf(Smallest()),
                EndsWith("which has \"a\", \"b\", \"c\", \"d\", \"e\", \"f\", \"g\", \"h\", \"i\", "
                         "\"j\", \"k\", \"l\" and 3 more."));
}

TEST_F(ScenarioReader, TellsAMaterialOfTheGeometryThatNoBodyHasFromAMisspeltOne) {
    WriteGeometry({"magnet", "magnet2"});
    json document = Smallest();
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}, {"magnet2", {{"name", "magnet_1T"}}}};
    EXPECT_THAT(Read(document).warnings,
                ElementsAre(EndsWith(
                    "/materials/magnet2: no body has an object \"magnet2\". The geometry has it: it stands still "
                    "there, and no loads on it are recorded.")));
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}, {"magnet3", {{"name", "magnet_1T"}}}};
    EXPECT_THAT(ErrorOf(document),
                EndsWith("/materials/magnet3: there is no object \"magnet3\" in magnets.obj, which has "
                         "\"magnet\", \"magnet2\". Did you mean \"magnet\"?"));
}

TEST_F(ScenarioReader, RefusesAUnitThatTheSimulatorDoesNotKnow) {
    json document = Smallest();
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}};
    document["desktop"] = {{"version", "Simulator"}};
    document["geometry"]["units"] = "mms";
    const std::string text =
        "/geometry/units: \"mms\" is not one of the length units nm, um, micron, mm, millimeter, cm, "
        "centimeter, dm, m, meter, km, kilometer, uin, mil, in, inch, ft, foot, yd. Did you mean "
        "\"mm\"?";
    EXPECT_THAT(ErrorOf(document), EndsWith(text));
    // Another desktop may know more.
    document.erase("desktop");
    EXPECT_THAT(Read(document).warnings, ElementsAre(EndsWith(text)));
}

TEST_F(ScenarioReader, KnowsTheUnitsThatTheSimulatorKnows) {
    for (const char* unit : {"nm", "um", "micron", "mm", "Millimeter", "cm", "centimeter", "dm", "m", "METER", "km",
                             "kilometer", "uin", "mil", "in", "inch", "ft", "foot", "yd"}) {
        json document = Smallest();
        document["desktop"] = {{"version", "Simulator"}};
        document["geometry"]["units"] = unit;
        EXPECT_EQ(ErrorOf(document), "no error");
        EXPECT_TRUE(vantor::model::FindModelUnit(unit)) << unit;
    }
}

TEST_F(ScenarioReader, LetsTheCallerChooseTheDesktop) {
    json document = Smallest();
    document["desktop"] = {{"version", "Simulator"}};
    document["geometry"]["units"] = "parsec";
    EXPECT_EQ(ParseScenario(document.dump(1), m_folder / "scenario.json", "Other").desktop.version, "Other");
    document["desktop"]["version"] = "Other";
    EXPECT_THROW((void)ParseScenario(document.dump(1), m_folder / "scenario.json", "Simulator"), InputError);
}

// Errors of the text.

TEST_F(ScenarioReader, NamesTheLineOfASyntaxError) {
    const std::string error = ErrorOfText("{\n \"project\": {,\n}");
    EXPECT_THAT(error, HasSubstr("scenario.json:2: not valid JSON:"));
}

TEST_F(ScenarioReader, RefusesAKeyThatStandsTwice) {
    EXPECT_THAT(ErrorOfText("{\n \"project\": {\n  \"file\": \"a\",\n  \"file\": \"b\" }\n}"),
                HasSubstr("scenario.json:4: /project: the key \"file\" stands twice; remove one."));
}

TEST_F(ScenarioReader, RefusesAnEmptyText) {
    EXPECT_THAT(ErrorOfText(""), HasSubstr("scenario.json:1: not valid JSON"));
}

// Errors against the schema: each kind once, with line and pointer.

TEST_F(ScenarioReader, NamesTheLineAndPointerOfAWrongType) {
    EXPECT_THAT(ErrorOfText("{\n\"project\": {\"file\": \"a\"},\n\"geometry\": {\"file\": \"magnets.obj\",\n"
                            "\"units\": 5},\n\"bodies\": [{\"name\": \"a\", \"objects\": []}],\n"
                            "\"solver\": {\"step\": 1, \"end\": 1}}"),
                testing::EndsWith("scenario.json:4: /geometry/units: number is given where \"string\" is wanted."));
}

TEST_F(ScenarioReader, NamesAMissingKey) {
    json document = Smallest();
    document.erase("solver");
    EXPECT_THAT(ErrorOf(document), HasSubstr("/: the key \"solver\" is missing."));
}

TEST_F(ScenarioReader, SuggestsTheKeyThatWasMeant) {
    json document = Smallest();
    document["bodies"][0]["masss"] = 1;
    EXPECT_THAT(ErrorOf(document),
                HasSubstr("/bodies/0/masss: the key \"masss\" is unknown here. Did you mean \"mass\"?"));
}

TEST_F(ScenarioReader, ListsTheWordsThatAreAllowed) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0]["type"] = "hinged";
    EXPECT_THAT(ErrorOf(document),
                HasSubstr("/joints/0/type: \"hinged\" is not allowed; use \"slider\", \"hinge\", \"cylinder\", "
                          "\"ball\" or \"free\". Did you mean \"hinge\"?"));
}

TEST_F(ScenarioReader, ChecksTheLengthOfLists) {
    json document = Smallest();
    document["gravity"] = {0, 0};
    EXPECT_THAT(ErrorOf(document), HasSubstr("/gravity: Array should contain no fewer than 3 elements."));
    document = Smallest();
    document["bodies"] = json::array();
    EXPECT_THAT(ErrorOf(document), HasSubstr("/bodies: Array should contain no fewer than 1 elements."));
}

TEST_F(ScenarioReader, ChecksRanges) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0]["free"]["stops"] = {{"min", 0}, {"restitution", 2}};
    EXPECT_THAT(ErrorOf(document),
                HasSubstr("/joints/0/free/stops/restitution: Expected number less than or equal to 1"));
    document = Smallest();
    document["desktop"] = {{"busyTimeout", 0}};
    EXPECT_THAT(ErrorOf(document), HasSubstr("/desktop/busyTimeout: "));
}

TEST_F(ScenarioReader, WantsExactlyOneMotionPerJoint) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/0: one of \"prescribed\" or \"free\" is wanted."));
    document["joints"][0]["free"] = json::object();
    document["joints"][0]["prescribed"] = {{"expression", "t"}};
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/0: exactly one of \"prescribed\" or \"free\" is wanted."));
}

TEST_F(ScenarioReader, ReportsEveryFindingOnALineOfItsOwn) {
    json document = Smallest();
    document["geometry"].erase("units");
    document["solver"]["step"] = true;
    const std::string error = ErrorOf(document);
    EXPECT_THAT(error, HasSubstr("/geometry: the key \"units\" is missing.\n"));
    EXPECT_THAT(error, HasSubstr("/solver/step: boolean is given where \"number\" or \"string\" is wanted."));
}

TEST_F(ScenarioReader, KeepsATypoBesideTheKeysThatAreMissedForIt) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0].erase("name");
    document["joints"][0]["fre"] = json::object();
    const std::string error = ErrorOf(document);
    EXPECT_THAT(error, HasSubstr("/joints/0: one of \"prescribed\" or \"free\" is wanted."));
    EXPECT_THAT(error, HasSubstr("/joints/0: the key \"name\" is missing."));
    EXPECT_THAT(error, HasSubstr("/joints/0/fre: the key \"fre\" is unknown here. Did you mean \"free\"?"));
}

TEST_F(ScenarioReader, NamesTheLineOfTheKeyItself) {
    EXPECT_EQ(WithoutFile(ErrorOfText("{\n"
                                      "\"project\": {\n"
                                      "  \"file\": \"a\",\n"
                                      "  \"overwrite_\":\n"
                                      "    true\n"
                                      "},\n"
                                      "\"geometry\": {\"file\": \"magnets.obj\",\n"
                                      "  \"units\":\n"
                                      "\n"
                                      "    5},\n"
                                      "\"bodies\": [\n"
                                      "  {\n"
                                      "    \"objects\": []\n"
                                      "  }],\n"
                                      "\"solver\": {\"step\": 1, \"end\": 1}}")),
              "4: /project/overwrite_: the key \"overwrite_\" is unknown here. Did you mean \"overwrite\"?\n"
              "8: /geometry/units: number is given where \"string\" is wanted.\n"
              "12: /bodies/0: the key \"name\" is missing.");
}

TEST_F(ScenarioReader, RefusesNamesThatReachBeyondAName) {
    for (const char* name : {"", "..", "a/b", "a\\b", "a,b", "a\"b", "a\nb", "a b", "1a", "C:", "_a", "r\xC3\xB6tor"}) {
        json document = Smallest();
        document["bodies"][0]["name"] = name;
        EXPECT_THAT(ErrorOf(document), HasSubstr("/bodies/0/name: ")) << name;
        EXPECT_THAT(ErrorOf(document), HasSubstr("use letters, digits and underscores")) << name;
    }
}

// Errors that the schema cannot see.

TEST_F(ScenarioReader, SaysEverythingThatIsWrongInTheOrderOfTheText) {
    EXPECT_EQ(WithoutFile(ErrorOfText("{\n"
                                      "\"solver\": {\"step\": 0, \"end\": 1},\n"
                                      "\"gravity\": [0, \"1/0\",\n"
                                      "            \"-x\"],\n"
                                      "\"joints\": [{\n"
                                      "    \"name\": \"a\", \"type\": \"slider\", \"axis\": [0, 0, 0],\n"
                                      "    \"bodies\": [\"rotor\", \"rotr\"], \"free\": {}}],\n"
                                      "\"bodies\": [{\"name\": \"rotor\", \"objects\": [],\n"
                                      "    \"mass\":\n"
                                      "        -1,\n"
                                      "    \"inertia\": [-1, -1, -1]}],\n"
                                      "\"geometry\": {\"file\": \"magnets.obj\", \"units\": \"mm\"},\n"
                                      "\"project\": {\"file\": \"run.vantor\"}}")),
              "2: /solver/step: the step must be more than 0 s.\n"
              "3: /gravity/1: the value is not a finite number.\n"
              "4: /gravity/2: formula \"-x\", column 2: \"x\" is not known here; a constant is wanted\n"
              "6: /joints/0/axis: a direction must not be 0, 0, 0.\n"
              "7: /joints/0/bodies/1: there is no body \"rotr\". Did you mean \"rotor\"?\n"
              "9: /bodies/0/mass: -1 is negative; it must be 0 or more.\n"
              "11: /bodies/0/inertia: moments of inertia must be 0 or more.");
}

TEST_F(ScenarioReader, FindsNoSecondFaultWithANumberThatIsWrong) {
    for (const char* pointer :
         {"/bodies/0/mass", "/bodies/0/position/0", "/solver/step", "/solver/end", "/joints/0/axis/0",
          "/joints/0/free/start", "/joints/0/free/stops/min", "/joints/0/free/inertia"}) {
        json document = Smallest();
        document["joints"] = json::array({Slider()});
        document["joints"][0]["free"] = {{"start", 0}, {"inertia", 0}, {"stops", {{"min", -1}, {"max", 1}}}};
        document["bodies"][0]["position"] = {0, 0, 0};
        document[json::json_pointer(pointer)] = "oops";
        EXPECT_THAT(ErrorOf(document),
                    EndsWith(std::string(pointer) + ": formula \"oops\", column 1: \"oops\" is not known here"));
        EXPECT_EQ(ErrorOf(document).find('\n'), std::string::npos) << ErrorOf(document);
    }
}

TEST_F(ScenarioReader, FindsNoFaultWithAFormulaAtStepsThatAreWrong) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0]["prescribed"] = {{"expression", "t"}};
    document["solver"]["step"] = "oops";
    EXPECT_THAT(ErrorOf(document), EndsWith("/solver/step: formula \"oops\", column 1: \"oops\" is not known here"));
    EXPECT_EQ(ErrorOf(document).find('\n'), std::string::npos) << ErrorOf(document);
}

TEST_F(ScenarioReader, RefusesTwoBodiesOfOneName) {
    json document = Smallest();
    document["bodies"].push_back({{"name", "ROTOR"}, {"objects", {"x"}}});
    EXPECT_THAT(ErrorOf(document), HasSubstr("/bodies/1/name: another body is called \"rotor\" already"));
}

TEST_F(ScenarioReader, RefusesAnObjectOfTwoBodies) {
    json document = Smallest();
    document["bodies"].push_back({{"name", "stator"}, {"objects", {"magnet"}}});
    EXPECT_THAT(ErrorOf(document), HasSubstr("/bodies/1/objects/0: the object belongs to body \"rotor\" already."));
}

TEST_F(ScenarioReader, RefusesAJointOfAnUnknownBody) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0]["bodies"] = {"rotors"};
    EXPECT_THAT(ErrorOf(document),
                HasSubstr("/joints/0/bodies/0: there is no body \"rotors\". Did you mean \"rotor\"?"));
}

TEST_F(ScenarioReader, RefusesABodyOnTwoJoints) {
    json document = Smallest();
    document["joints"] = {Slider(), Slider()};
    document["joints"][1]["name"] = "other";
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/1/bodies/0: body \"rotor\" hangs on joint \"slide\" already."));
}

TEST_F(ScenarioReader, RefusesAFreeJointWithoutInertia) {
    json document = Smallest();
    document["bodies"][0].erase("mass");
    document["joints"] = json::array({Slider()});
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/0/free: nothing on this joint has a mass"));
    document["bodies"][0]["mass"] = 1;
    document["joints"][0]["type"] = "hinge";
    EXPECT_THAT(ErrorOf(document), HasSubstr("nothing on this joint has a moment of inertia"));
    document["joints"][0]["point"] = {1, 0, 0};
    EXPECT_EQ(ErrorOf(document), "no error");
}

TEST_F(ScenarioReader, RefusesWrongFormulasWithTheirColumn) {
    json document = Smallest();
    document["solver"]["step"] = "1/x";
    EXPECT_THAT(ErrorOf(document), HasSubstr("/solver/step: formula \"1/x\", column 3: \"x\" is not known here"));
    document["solver"]["step"] = "1/0";
    EXPECT_THAT(ErrorOf(document), HasSubstr("/solver/step: the value is not a finite number."));
}

TEST_F(ScenarioReader, RefusesValuesThatMakeNoSense) {
    const auto with = [](const char* pointer, const json& value) {
        json document = Smallest();
        document["joints"] = json::array({Slider()});
        document[json::json_pointer(pointer)] = value;
        return document;
    };
    EXPECT_THAT(ErrorOf(with("/joints/0/axis", {0, 0, 0})), HasSubstr("a direction must not be 0, 0, 0."));
    EXPECT_THAT(ErrorOf(with("/joints/0/point", {0, 0, 0})),
                EndsWith("/joints/0/point: a slider moves the same wherever its axis is and has no point; remove it."));
    EXPECT_THAT(ErrorOf(with("/bodies/0/mass", -1)),
                HasSubstr("/bodies/0/mass: -1 is negative; it must be 0 or more."));
    EXPECT_THAT(ErrorOf(with("/bodies/0/inertia", {1, -1, 1})), HasSubstr("moments of inertia must be 0 or more."));
    EXPECT_THAT(ErrorOf(with("/joints/0/free/stops", {{"min", 1}, {"max", 1}})),
                HasSubstr("min (1) must be less than"));
    EXPECT_THAT(ErrorOf(with("/joints/0/free/stops", {{"min", 1}})), HasSubstr("starts at 0, outside the stops."));
    EXPECT_THAT(ErrorOf(with("/solver/step", 0)), HasSubstr("the step must be more than 0 s."));
    EXPECT_THAT(ErrorOf(with("/solver/end", -1)), HasSubstr("the end must be 0 s or later."));
    EXPECT_THAT(ErrorOf(with("/solver/end", 0.014)), HasSubstr("0.014 s is not a whole number of steps of 0.01 s; the "
                                                               "nearest is 0.01 s."));
    EXPECT_THAT(ErrorOf(with("/geometry/file", "none.obj")), HasSubstr("/geometry/file: there is no file "));
}

TEST_F(ScenarioReader, RefusesAProjectThatIsAFolder) {
    for (const char* file : {"folder/", ".", "a/.."}) {
        json document = Smallest();
        document["project"]["file"] = file;
        EXPECT_THAT(ErrorOf(document), EndsWith("/project/file: that is not the name of a file.")) << file;
    }
}

TEST_F(ScenarioReader, RefusesAMaterialWithoutADirection) {
    json document = Smallest();
    document["materials"] = {{"magnet", {{"name", "magnet_1T"}, {"direction", {0, "0*mm", 0}}}}};
    EXPECT_THAT(ErrorOf(document), EndsWith("/materials/magnet/direction: a direction must not be 0, 0, 0."));
}

TEST_F(ScenarioReader, RefusesAPrescribedFormulaThatHasNoValueAtAStep) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0]["prescribed"] = {{"expression", "mm/t"}};
    EXPECT_THAT(ErrorOf(document),
                EndsWith("/joints/0/prescribed/expression: \"mm/t\" is not a finite number at 0 s."));
    document["joints"][0]["prescribed"] = {{"expression", "sqrt(0.25-t)"}};
    EXPECT_THAT(ErrorOf(document),
                EndsWith("/joints/0/prescribed/expression: \"sqrt(0.25-t)\" is not a finite number at 0.26 s."));
    document["joints"][0]["prescribed"] = {{"expression", "mm/(t-0.005)"}};
    EXPECT_EQ(ErrorOf(document), "no error");
}

TEST_F(ScenarioReader, RefusesALoadThatHasNoValueAtTheStart) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0]["free"]["load"] = "1/q";
    EXPECT_THAT(ErrorOf(document), EndsWith("/joints/0/free/load: \"1/q\" is not a finite number at 0 s with q = 0, "
                                            "where the joint starts."));
    document["joints"][0]["free"]["start"] = "2*mm";
    EXPECT_EQ(ErrorOf(document), "no error");
    document["joints"][0]["free"]["load"] = "log(t)";
    EXPECT_THAT(ErrorOf(document), EndsWith("\"log(t)\" is not a finite number at 0 s with q = 0.002, where the joint "
                                            "starts."));
}

TEST_F(ScenarioReader, RefusesLengthsThatCanHardlyBeMetres) {
    const std::string text = "1e+30 m is farther than 1000 m; lengths are metres: write \"12*mm\" for 12 millimetres.";
    for (const char* pointer : {"/bodies/0/position/0", "/bodies/0/centreOfMass/1", "/joints/0/free/start"}) {
        json document = Smallest();
        document["joints"] = json::array({Slider()});
        document["bodies"][0]["position"] = {-1000, 0, 0};
        document["bodies"][0]["centreOfMass"] = {0, 1000, 0};
        document[json::json_pointer(pointer)] = 1e30;
        EXPECT_THAT(ErrorOf(document), EndsWith(std::string(pointer) + ": " + text));
    }
}

TEST_F(ScenarioReader, RefusesWaysAlongASliderThatCanHardlyBeMetres) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0]["prescribed"] = {{"table", {{0, 0}, {1, -1001}}}};
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/0/prescribed/table/1/1: -1001 m is farther than 1000 m;"));
    document["joints"][0]["prescribed"] = {{"expression", "2000*t"}};
    EXPECT_THAT(ErrorOf(document),
                HasSubstr("/joints/0/prescribed/expression: at 0.51 s, 1020 m is farther than 1000 m;"));
    // A hinge may well turn by more than a thousand radians.
    document["joints"][0]["type"] = "hinge";
    EXPECT_EQ(ErrorOf(document), "no error");
    document["joints"][0]["point"] = {0, 0, "2000*mm*1000"};
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/0/point/2: 2000 m is farther than 1000 m;"));
}

TEST_F(ScenarioReader, KeepsWhatARunWritesInTheOutputFolder) {
    for (const char* file : {"../x.vantor", "..", "a/../../x.vantor", "..\\..\\x.vantor", "/tmp/x.vantor", "\\x.vantor",
                             "C:\\x.vantor", "c:x.vantor", "//server/share/x.vantor"}) {
        json document = Smallest();
        document["project"]["file"] = file;
        EXPECT_THAT(ErrorOf(document),
                    HasSubstr("/project/file: \"" + std::string(file) + "\" is not in the output folder"));
        document = Smallest();
        document["output"]["csv"] = file;
        EXPECT_THAT(ErrorOf(document),
                    HasSubstr("/output/csv: \"" + std::string(file) + "\" is not in the output folder"));
    }
    json document = Smallest();
    document["project"]["file"] = "a/../b/x..vantor";
    document["output"] = {{"csv", "tables/states.csv"}, {"folder", "../results"}};
    EXPECT_EQ(Read(document).projectFile, "a/../b/x..vantor");
    EXPECT_EQ(Read(document).outputFolder, m_folder / "../results");
}

TEST_F(ScenarioReader, RefusesATableThatRunsBack) {
    json document = Smallest();
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0]["prescribed"] = {{"table", {{0, 0}, {0, 1}}}};
    EXPECT_THAT(ErrorOf(document), HasSubstr("/joints/0/prescribed/table/1: time 0 s does not come after 0 s"));
}

TEST_F(ScenarioReader, SaysWhenThereIsNoSuchFile) {
    try {
        ReadScenario(m_folder / "missing.json");
        FAIL();
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("missing.json: cannot be read"));
        EXPECT_EQ(error.Status(), ExitStatus::BadInput);
    }
}

} // namespace
} // namespace kinora::scenario
