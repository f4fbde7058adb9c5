#include "report/core/PageData.h"

#include "tests/report/LogText.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kinora::report {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

CouplingLog LogOf(const std::string& body, int rows) {
    std::string text = HeadLine({body}) + "\n";
    for (int row = 0; row < rows; ++row) {
        text += StepLine(row, std::to_string(row) + ".5", row + 1) + "\n";
    }
    return ParseCouplingLog(text, "run.coupling.csv");
}

/// The scenario of a body "a" with the object "magnet".
scenario::Scenario ScenarioOf(const scenario::Pose& pose) {
    scenario::Scenario scenario;
    scenario.title = "A title";
    scenario.geometryFile = "magnets.OBJ";
    scenario.units = "mm";
    scenario::Body body;
    body.name = "a";
    body.objects = {"magnet"};
    body.X_WB0 = pose;
    scenario.bodies.push_back(body);
    scenario.materials["magnet"].name = "magnet_1T";
    scenario.materials["magnet"].coercivityDirection[2] = 1.0;
    return scenario;
}

TEST(PageData, HoldsNoCharacterThatCouldLeaveItsElement) {
    const CouplingLog log = LogOf("</script><script>alert('&')//\xE2\x80\xA8\xE2\x80\xA9<!--", 1);
    PageContext context;
    context.project = "<b>&amp;";
    context.notices = {{Severity::Warning, "<img src=x onerror=alert(1)>"}};
    const std::string data = MakePageData(log, {}, context);
    for (const char character : data) {
        EXPECT_TRUE(character >= ' ' && character <= '~') << static_cast<int>(character);
    }
    EXPECT_EQ(data.find_first_of("<>&"), std::string::npos);
    const json read = json::parse(data);
    EXPECT_EQ(read["bodies"][0]["name"], log.bodies[0].name);
    EXPECT_EQ(read["project"], "<b>&amp;");
    EXPECT_EQ(read["notices"][0]["text"], "<img src=x onerror=alert(1)>");
}

TEST(PageData, PacksLongColumnsAsSinglePrecision) {
    const json data = json::parse(MakePageData(LogOf("a", 6), {}, {}));
    // 1, 2, 3, 4, 5, 6 as little-endian singles.
    EXPECT_EQ(data["bodies"][0]["position"][0]["float32"], "AACAPwAAAEAAAEBAAACAQAAAoEAAAMBA");
    EXPECT_EQ(data["time"]["float64"].get<std::string>().size(), 64u);
    EXPECT_EQ(data["rows"], 6);
}

TEST(PageData, KeepsWhatSinglePrecisionCannotHold) {
    CouplingLog log = LogOf("a", 6);
    (*log.bodies[0].columns[ForceX])[2] = 1e200;
    EXPECT_TRUE(json::parse(MakePageData(log, {}, {}))["bodies"][0]["force"][0].contains("float64"));
}

TEST(PageData, WritesAConstantOnceAndAMissingColumnAsNull) {
    CouplingLog log = LogOf("a", 6);
    log.bodies[0].columns[Y] = Column(6, 0.25);
    log.bodies[0].columns[Z].reset();
    const json position = json::parse(MakePageData(log, {}, {}))["bodies"][0]["position"];
    EXPECT_EQ(position[1]["constant"], 0.25);
    EXPECT_TRUE(position[2].is_null());
}

TEST(PageData, HoldsTheModel) {
    scenario::Pose pose;
    pose.p_WB_W = {0.0, 0.0, 0.012};
    pose.R_WB = scenario::Rotation(scenario::Vector::UnitX(), 0.5);
    const scenario::Scenario scenario = ScenarioOf(pose);
    PageContext context;
    context.scenario = &scenario;
    context.geometry = "o magnet\n";
    const json data = json::parse(MakePageData(LogOf("a", 2), {}, context));
    EXPECT_EQ(data["title"], "A title");
    EXPECT_EQ(data["geometry"]["obj"], "o magnet\n");
    EXPECT_EQ(data["geometry"]["metresPerUnit"], 1e-3);
    EXPECT_EQ(
        data["objects"][0],
        (json{
            {"name", "magnet"}, {"body", 0}, {"material", "magnet_1T"}, {"kind", "magnet"}, {"direction", {0, 0, 1}}}));
    EXPECT_EQ(data["bodies"][0]["drawn"]["position"], (json{0.0, 0.0, 0.012}));
}

TEST(PageData, GivesOnlyMagnetsADirection) {
    scenario::Scenario scenario = ScenarioOf({});
    scenario.bodies[0].objects = {"yoke", "sleeve", "bare"};
    scenario.materials["yoke"] = {"steel_soft", {1, 0, 0}};
    scenario.materials["sleeve"] = {"copper", {1, 0, 0}};
    scenario.undirected = {"yoke", "sleeve"};
    PageContext context;
    context.scenario = &scenario;
    context.geometry = "o yoke\n";
    const json objects = json::parse(MakePageData(LogOf("a", 2), {}, context))["objects"];
    EXPECT_EQ(objects, json::array({{{"name", "yoke"}, {"body", 0}, {"material", "steel_soft"}, {"kind", "iron"}},
                                    {{"name", "sleeve"}, {"body", 0}, {"material", "copper"}, {"kind", "other"}},
                                    {{"name", "bare"}, {"body", 0}}}));
}

/// The "drawn" entry of a body that is drawn turned.
json DrawnTurned(const scenario::Matrix& R_WB, Orientation orientation) {
    scenario::Pose pose;
    pose.R_WB = R_WB;
    const scenario::Scenario scenario = ScenarioOf(pose);
    PageContext context;
    context.scenario = &scenario;
    context.orientation = orientation;
    return json::parse(MakePageData(LogOf("a", 2), {}, context))["bodies"][0]["drawn"];
}

TEST(PageData, HoldsTheAxesOfABodyAsDrawn) {
    // A right-handed turn about Y by a quarter: the body's x axis points down, its z axis along the global x axis.
    scenario::Matrix R_WB;
    R_WB << 0, 0, 1, 0, 1, 0, -1, 0, 0;
    const json drawn = DrawnTurned(R_WB, Orientation::Exact);
    EXPECT_EQ(drawn["axes"], json::parse("[[0.0,0.0,-1.0],[0.0,1.0,0.0],[1.0,0.0,0.0]]"));
    EXPECT_FALSE(drawn.contains("angles"));
}

TEST(PageData, HoldsTheAnglesOfTheImportWhereTheHostHandedOverTheBodysAxes) {
    const json drawn = DrawnTurned(scenario::Rotation(scenario::Vector::UnitX(), 0.5), Orientation::Direct);
    // A right-handed turn about X is a negative psi.
    EXPECT_NEAR(drawn["angles"][2].get<double>(), -0.5, 1e-15);
    EXPECT_FALSE(drawn.contains("axes"));
}

TEST(PageData, SaysWhatTheAnglesMean) {
    PageContext context;
    EXPECT_EQ(json::parse(MakePageData(LogOf("a", 1), {}, context))["orientation"], "exact");
    context.orientation = Orientation::Direct;
    EXPECT_EQ(json::parse(MakePageData(LogOf("a", 1), {}, context))["orientation"], "direct");
}

TEST(PageData, TakesAnStlAsBytes) {
    scenario::Scenario scenario = ScenarioOf({});
    scenario.geometryFile = "magnets.Stl";
    PageContext context;
    context.scenario = &scenario;
    context.geometry = std::string("\0\xFF\x80", 3);
    EXPECT_EQ(json::parse(MakePageData(LogOf("a", 2), {}, context))["geometry"]["stl"], "AP+A");
}

TEST(PageData, LeavesOutTheEnergiesOfAPrescribedJoint) {
    scenario::Scenario scenario = ScenarioOf({});
    scenario::Joint driven;
    driven.name = "driven";
    driven.coordinates = {{scenario::Coordinate::Kind::Turn, scenario::PrescribedMotion(scenario::Expression(0.0))}};
    scenario::Joint loose;
    loose.name = "loose";
    loose.coordinates.resize(1);
    scenario.joints = {driven, loose};
    HostStates states;
    for (const char* joint : {"driven", "loose"}) {
        for (const auto& [name, unit] :
             {std::pair("Coordinate", "m"), std::pair("Load", "N"), std::pair("Kinetic", "J"),
              std::pair("Field work", "J"), std::pair("Element work", "J")}) {
            states.series.push_back({joint, name, unit, {0.0, 1.0}});
        }
    }
    PageContext context;
    context.scenario = &scenario;
    const json data = json::parse(MakePageData(LogOf("a", 2), states, context));
    ASSERT_EQ(data["series"].size(), 8u);
    EXPECT_EQ(data["series"][0]["name"], "Coordinate");
    EXPECT_EQ(data["series"][1]["name"], "Field work");
    EXPECT_EQ(data["series"][2]["name"], "Element work");
    EXPECT_EQ(data["series"][3]["group"], "loose");
}

/// Turned by 0.1 in its second row, about Z or Y: the two frames of these angles are 2 acos(cos^2 0.05) = 8.1 degrees
/// apart.
CouplingLog TurnedAboutZ() {
    CouplingLog log = LogOf("a", 3);
    log.bodies[0].columns[Phi] = Column{0.0, 0.1, 0.0};
    log.bodies[0].columns[Theta] = Column{0.0, 0.0, 0.0};
    log.bodies[0].columns[Psi] = Column{1.0, 0.0, 3.0};
    return log;
}

TEST(CheckRun, TellsBodiesThatOnlyOneSideHas) {
    const scenario::Scenario scenario = ScenarioOf({});
    const std::vector<Notice> notices = CheckRun(LogOf("b", 1), &scenario, Orientation::Exact);
    ASSERT_GE(notices.size(), 2u);
    EXPECT_THAT(notices[0].text, HasSubstr("The log has no body \"a\" of the scenario"));
    EXPECT_THAT(notices[1].text, HasSubstr("The scenario has no body \"b\" of the log"));
}

TEST(CheckRun, TellsAFrameThatIsNotTheBodys) {
    const std::vector<Notice> notices = CheckRun(TurnedAboutZ(), nullptr, Orientation::Direct);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_EQ(notices[0].severity, Severity::Warning);
    EXPECT_THAT(notices[0].text, HasSubstr("up to 8.1 degrees away from the body's (at 1.5 s)"));
}

TEST(CheckRun, SaysWhichFrameIsShownOfALogOfUnknownOrigin) {
    const std::vector<Notice> notices = CheckRun(TurnedAboutZ(), nullptr, std::nullopt);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_EQ(notices[0].severity, Severity::Info);
    EXPECT_EQ(
        notices[0].text,
        "Body \"a\" is shown in the desktop's frame, taken for the body's own. Nothing tells which host wrote this "
        "log: of one that hands the body's own axes to the library, the body's frame would be up to 8.1 degrees "
        "away (at 1.5 s); write the page with --orientation direct for such a log.");
}

TEST(CheckRun, FindsNothingToSayAboutExactOrientations) {
    EXPECT_THAT(CheckRun(TurnedAboutZ(), nullptr, Orientation::Exact), IsEmpty());
}

TEST(CheckRun, FindsNothingToSayAboutTurnsAboutX) {
    CouplingLog log = LogOf("a", 2);
    log.bodies[0].columns[Phi] = log.bodies[0].columns[Theta] = Column{0.0, 0.0};
    EXPECT_THAT(CheckRun(log, nullptr, Orientation::Direct), IsEmpty());
    EXPECT_THAT(CheckRun(log, nullptr, std::nullopt), IsEmpty());
}

TEST(CheckRun, TellsAnUnknownLengthUnit) {
    scenario::Scenario scenario = ScenarioOf({});
    scenario.units = "cubit";
    CouplingLog log = LogOf("a", 1);
    log.bodies[0].columns[Phi] = log.bodies[0].columns[Theta] = Column{0.0};
    const std::vector<Notice> notices = CheckRun(log, &scenario, Orientation::Exact);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_THAT(notices[0].text, HasSubstr("The length unit \"cubit\""));
}

} // namespace
} // namespace kinora::report
