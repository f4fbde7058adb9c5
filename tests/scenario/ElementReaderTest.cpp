#include "scenario/ElementReader.h"

#include "tests/scenario/ScenarioFixture.h"

#include <gmock/gmock.h>

namespace kinora::scenario {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

/// A rotor and a lid on a free joint, a puck on a slider that is prescribed, and a stator.
class ElementReaderCases : public ScenarioFixture {
protected:
    static json Body(const char* name, const json& position) {
        return {
            {"name", name}, {"objects", json::array()}, {"mass", 0.1}, {"position", position}, {"inertia", {1, 1, 1}}};
    }

    static json Document() {
        json document = Smallest();
        document["bodies"] = {Body("rotor", {0.1, 0.2, 0.3}), Body("lid", {0, 0, 1}), Body("puck", {1, 0, 0}),
                              Body("stator", {0, 0, 0})};
        document["bodies"][0]["rotation"] = {{"axis", {0, 0, 1}}, {"angle", "90*deg"}};
        document["joints"] = {
            {{"name", "loose"}, {"type", "free"}, {"bodies", {"rotor", "lid"}}, {"free", json::object()}},
            {{"name", "driven"},
             {"type", "slider"},
             {"axis", {1, 0, 0}},
             {"bodies", {"puck"}},
             {"prescribed", {{"expression", "t"}}}}};
        return document;
    }

    static json WithSpring(const json& from, const json& to) {
        json document = Document();
        document["springs"] = json::array({{{"name", "s"}, {"from", from}, {"to", to}, {"stiffness", 100}}});
        return document;
    }

    static json WithBushing(const json& from, const json& to) {
        json document = Document();
        document["bushings"] = json::array({{{"name", "b"}, {"from", from}, {"to", to}, {"stiffness", {1, 2, 3}}}});
        return document;
    }

    static json WithLoad(const json& load) {
        json document = Document();
        document["loads"] = json::array({load});
        return document;
    }
};

TEST_F(ElementReaderCases, ReadsASpring) {
    json document = WithSpring({{"body", "rotor"}, {"point", {"10*mm", 0, 0}}}, {{"point", {0, 0, 1}}});
    document["springs"][0]["damping"] = 3;
    document["springs"][0]["length"] = "50*mm";
    const Scenario scenario = Read(document);
    ASSERT_EQ(scenario.springs.size(), 1u);
    const SpringElement& spring = scenario.springs[0];
    EXPECT_EQ(spring.name, "s");
    EXPECT_EQ(spring.from.body, 0u);
    EXPECT_EQ(spring.from.X_BF.p_WB_W, Vector(0.01, 0.0, 0.0));
    EXPECT_EQ(spring.to.body, std::nullopt);
    EXPECT_EQ(spring.to.X_BF.p_WB_W, Vector(0.0, 0.0, 1.0));
    EXPECT_EQ(spring.stiffness, 100.0);
    EXPECT_EQ(spring.damping, 3.0);
    EXPECT_EQ(spring.length, 0.05);
}

TEST_F(ElementReaderCases, RelaxesASpringAsItIsDrawn) {
    // The rotor's x axis is drawn along global y.
    const Scenario scenario = Read(WithSpring({{"body", "rotor"}, {"point", {0.5, 0, 0}}}, {{"point", {0.1, 0, 0.3}}}));
    EXPECT_NEAR(scenario.springs[0].length, 0.7, 1e-15);
    EXPECT_EQ(scenario.springs[0].damping, 0.0);
}

TEST_F(ElementReaderCases, ReadsABushing) {
    json document =
        WithBushing({{"body", "puck"}, {"point", {1, 2, 3}}, {"rotation", {{"axis", {1, 0, 0}}, {"angle", "90*deg"}}}},
                    {{"body", "lid"}, {"rotation", {{"axes", {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}}}});
    document["bushings"][0]["damping"] = {4, 5, 6};
    document["bushings"][0]["angularStiffness"] = {7, 8, 9};
    document["bushings"][0]["angularDamping"] = {10, 11, "12*mm"};
    const Bushing bushing = Read(document).bushings.at(0);
    EXPECT_EQ(bushing.name, "b");
    EXPECT_EQ(bushing.from.body, 2u);
    EXPECT_EQ(bushing.from.X_BF.p_WB_W, Vector(1.0, 2.0, 3.0));
    EXPECT_LT((bushing.from.X_BF.R_WB.col(1) - Vector::UnitZ()).norm(), 1e-15);
    EXPECT_EQ(bushing.to.body, 1u);
    EXPECT_EQ(bushing.to.X_BF.p_WB_W, Vector::Zero());
    EXPECT_EQ(bushing.to.X_BF.R_WB.col(0), Vector::UnitY());
    EXPECT_EQ(bushing.stiffness, Vector(1.0, 2.0, 3.0));
    EXPECT_EQ(bushing.damping, Vector(4.0, 5.0, 6.0));
    EXPECT_EQ(bushing.angularStiffness, Vector(7.0, 8.0, 9.0));
    EXPECT_EQ(bushing.angularDamping, Vector(10.0, 11.0, 0.012));
}

TEST_F(ElementReaderCases, RelaxesABushingAsItIsDrawn) {
    const json from = {{"point", {0.1, 0.5, 0.3}}, {"rotation", {{"axis", {0, 0, 1}}, {"angle", "30*deg"}}}};
    const Bushing bushing = Read(WithBushing(from, {{"body", "rotor"}})).bushings.at(0);
    EXPECT_LT((bushing.to.X_BF.p_WB_W - Vector(0.3, 0.0, 0.0)).norm(), 1e-15);
    EXPECT_LT((bushing.to.X_BF.R_WB - Rotation(Vector::UnitZ(), -60.0 / degreesPerRadian)).norm(), 1e-15);
    // To the ground as well.
    const Bushing back = Read(WithBushing({{"body", "rotor"}}, json::object())).bushings.at(0);
    EXPECT_EQ(back.to.X_BF.p_WB_W, Vector(0.1, 0.2, 0.3));
}

TEST_F(ElementReaderCases, ReadsALoad) {
    const Scenario scenario = Read(WithLoad({{"body", "lid"},
                                             {"force", {"t", "x+10*y", "z"}},
                                             {"torque", {1, 0, 0}},
                                             {"axes", "body"},
                                             {"point", {0, 0, "5*mm"}}}));
    ASSERT_EQ(scenario.loads.size(), 1u);
    const AppliedLoad& load = scenario.loads[0];
    EXPECT_EQ(load.body, 1u);
    EXPECT_EQ(load.force[0].Evaluate({2.0, 0.0, 3.0, 4.0, 5.0}), 2.0);
    EXPECT_EQ(load.force[1].Evaluate({2.0, 0.0, 3.0, 4.0, 5.0}), 43.0);
    EXPECT_EQ(load.force[2].Evaluate({2.0, 0.0, 3.0, 4.0, 5.0}), 5.0);
    EXPECT_EQ(load.torque[0].Evaluate(0.0), 1.0);
    EXPECT_TRUE(load.isInBodyAxes);
    EXPECT_EQ(load.p_BP_B, Vector(0.0, 0.0, 0.005));
    EXPECT_THAT(scenario.warnings, IsEmpty());
}

TEST_F(ElementReaderCases, TakesALoadToBeGlobal) {
    const AppliedLoad load = Read(WithLoad({{"body", "lid"}, {"torque", {0, 0, 1}}})).loads.at(0);
    EXPECT_FALSE(load.isInBodyAxes);
    EXPECT_EQ(load.force[2].Evaluate(0.0), 0.0);
    EXPECT_EQ(load.p_BP_B, Vector::Zero());
}

// What is missing or misspelt.

TEST_F(ElementReaderCases, NamesKeysThatAreMissingOrUnknown) {
    json document = WithSpring({{"body", "rotor"}}, {{"point", {0, 0, 1}}, {"rotation", json::object()}});
    document["springs"][0].erase("stiffness");
    EXPECT_EQ(FindingsOf(document), "/springs/0: the key \"stiffness\" is missing.\n"
                                    "/springs/0/to/rotation: the key \"rotation\" is unknown here.");
    document = WithBushing({{"body", "rotor"}}, json::object());
    document["bushings"][0].erase("stiffness");
    EXPECT_EQ(FindingsOf(document), "/bushings/0: one of \"stiffness\", \"damping\", \"angularStiffness\" or "
                                    "\"angularDamping\" is wanted.");
    EXPECT_EQ(FindingsOf(WithLoad({{"body", "lid"}})), "/loads/0: one of \"force\" or \"torque\" is wanted.");
    EXPECT_EQ(FindingsOf(WithLoad({{"body", "lid"}, {"force", {0, 0, 0}}, {"axes", "bodyy"}})),
              "/loads/0/axes: \"bodyy\" is not allowed; use \"global\" or \"body\". Did you mean \"body\"?");
}

TEST_F(ElementReaderCases, SuggestsTheBodyThatWasMeant) {
    EXPECT_EQ(FindingsOf(WithSpring({{"body", "rotr"}}, json::object())),
              "/springs/0/from/body: there is no body \"rotr\". Did you mean \"rotor\"?");
    EXPECT_EQ(FindingsOf(WithBushing(json::object(), {{"body", "rotr"}})),
              "/bushings/0/to/body: there is no body \"rotr\". Did you mean \"rotor\"?");
    EXPECT_EQ(FindingsOf(WithLoad({{"body", "lidd"}, {"force", {"1/x", 0, 0}}})),
              "/loads/0/body: there is no body \"lidd\". Did you mean \"lid\"?");
}

TEST_F(ElementReaderCases, RefusesNamesThatAreTaken) {
    json document = WithSpring({{"body", "rotor"}}, {{"point", {0, 0, 1}}});
    document["bushings"] = WithBushing({{"body", "rotor"}}, json::object())["bushings"];
    const auto findings = [&](const char* spring, const char* bushing) {
        document["springs"][0]["name"] = spring;
        document["bushings"][0]["name"] = bushing;
        return FindingsOf(document);
    };
    const std::string end = " already (upper and lower case count as the same).";
    EXPECT_EQ(findings("Rotor", "b"), "/springs/0/name: a body is called \"rotor\"" + end);
    EXPECT_EQ(findings("loose", "b"), "/springs/0/name: a joint is called \"loose\"" + end);
    EXPECT_EQ(findings("s", "driven"), "/bushings/0/name: a joint is called \"driven\"" + end);
    EXPECT_EQ(findings("s", "S"), "/bushings/0/name: a spring is called \"s\"" + end);
    document["springs"].push_back(document["springs"][0]);
    EXPECT_EQ(findings("s", "b"), "/springs/1/name: another spring is called \"s\"" + end);
}

// Values.

TEST_F(ElementReaderCases, RefusesNegativeStiffnessAndDamping) {
    json document = WithSpring({{"body", "rotor"}}, {{"point", {0, 0, 1}}});
    document["springs"][0]["stiffness"] = -1;
    document["springs"][0]["damping"] = -2;
    document["springs"][0]["length"] = -3;
    document["bushings"] = WithBushing({{"body", "rotor"}}, json::object())["bushings"];
    document["bushings"][0]["stiffness"] = {0, 0, -4};
    document["bushings"][0]["angularDamping"] = {-5, 0, 0};
    EXPECT_EQ(FindingsOf(document), "/bushings/0/angularDamping/0: -5 is negative; it must be 0 or more.\n"
                                    "/bushings/0/stiffness/2: -4 is negative; it must be 0 or more.\n"
                                    "/springs/0/damping: -2 is negative; it must be 0 or more.\n"
                                    "/springs/0/length: -3 is negative; it must be 0 or more.\n"
                                    "/springs/0/stiffness: -1 is negative; it must be 0 or more.");
}

TEST_F(ElementReaderCases, RefusesLengthsThatCanHardlyBeMetres) {
    const std::string text = "is farther than 1000 m; lengths are metres: write \"12*mm\" for 12 millimetres.";
    json document = WithSpring({{"body", "rotor"}}, {{"point", {0, 0, 2000}}});
    document["springs"][0]["length"] = 1001;
    EXPECT_EQ(FindingsOf(document), "/springs/0/length: 1001 m " + text + "\n/springs/0/to/point/2: 2000 m " + text);
    EXPECT_EQ(FindingsOf(WithLoad({{"body", "lid"}, {"force", {0, 0, 0}}, {"point", {0, 5000, 0}}})),
              "/loads/0/point/1: 5000 m " + text);
}

TEST_F(ElementReaderCases, RefusesASpringWithoutADirection) {
    const std::string text =
        "/springs/0: it has no direction: both ends are at one place as drawn; move one of them, or use a bushing.";
    EXPECT_EQ(FindingsOf(WithSpring({{"body", "rotor"}}, {{"point", {0.1, 0.2, 0.3}}})), text);
    // The rotor's x axis is drawn along global y.
    EXPECT_EQ(FindingsOf(WithSpring({{"body", "rotor"}, {"point", {0.1, 0, 0}}}, {{"point", {0.1, 0.3, 0.3}}})), text);
}

TEST_F(ElementReaderCases, RefusesWhatCanNeverDeflect) {
    const json rotor = {{"body", "rotor"}};
    const json stator = {{"body", "stator"}, {"point", {0, 0, 2}}};
    const std::string end = "; fix one of them elsewhere.";
    EXPECT_EQ(FindingsOf(WithSpring(rotor, {{"body", "rotor"}, {"point", {0, 0, 1}}})),
              "/springs/0: it can never deflect: both ends are on body \"rotor\"" + end);
    EXPECT_EQ(FindingsOf(WithSpring(rotor, {{"body", "lid"}})),
              "/springs/0: it can never deflect: both ends are on bodies that joint \"loose\" moves as one" + end);
    EXPECT_EQ(
        FindingsOf(WithSpring(json::object(), stator)),
        "/springs/0: it can never deflect: both ends are on what stands still, the ground and bodies on no joint" +
            end);
    EXPECT_EQ(FindingsOf(WithBushing(rotor, rotor)),
              "/bushings/0: it can never deflect: both ends are on body \"rotor\"" + end);
    EXPECT_EQ(FindingsOf(WithBushing({{"body", "lid"}}, rotor)),
              "/bushings/0: it can never deflect: both ends are on bodies that joint \"loose\" moves as one" + end);
    EXPECT_EQ(FindingsOf(WithBushing(stator, json::object())),
              "/bushings/0: it can never deflect: both ends are on what stands still, the ground and bodies on no "
              "joint" +
                  end);
    EXPECT_EQ(FindingsOf(WithBushing({{"body", "puck"}}, json::object())), "no error");
}

TEST_F(ElementReaderCases, RefusesFramesThatAreNone) {
    EXPECT_EQ(FindingsOf(WithBushing({{"body", "rotor"}, {"rotation", {{"axes", {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}}}}},
                                     json::object())),
              "/bushings/0/from/rotation/axes: the axes are left-handed; reverse one of them, or swap two.");
}

TEST_F(ElementReaderCases, RefusesALoadThatHasNoValueWhereTheBodyIsDrawn) {
    EXPECT_EQ(FindingsOf(WithLoad({{"body", "lid"}, {"force", {"1/x", "1/z", "log(t)"}}, {"torque", {0, "2*q", 0}}})),
              "/loads/0/force/0: \"1/x\" is not a finite number at 0 s with x = 0, y = 0, z = 1, where the body is "
              "drawn.\n"
              "/loads/0/force/2: \"log(t)\" is not a finite number at 0 s with x = 0, y = 0, z = 1, where the body is "
              "drawn.\n"
              "/loads/0/torque/1: formula \"2*q\", column 3: \"q\" is not known here; the variables are t, x, y and z");
}

TEST_F(ElementReaderCases, FindsNoSecondFaultWithANumberThatIsWrong) {
    const std::string text = ": formula \"oops\", column 1: \"oops\" is not known here";
    for (const char* pointer :
         {"/bodies/1/position/0", "/springs/0/from/point/0", "/springs/0/length", "/springs/0/stiffness",
          "/bushings/0/from/rotation/axes/0/0", "/bushings/0/stiffness/1", "/loads/0/force/0", "/loads/0/point/1"}) {
        json document = WithSpring({{"body", "lid"}, {"point", {0, 0, 0}}}, json::object());
        document["springs"][0]["length"] = 1;
        document["bushings"] = WithBushing(
            {{"body", "lid"}, {"rotation", {{"axes", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}}}}, json::object())["bushings"];
        document["loads"] = {{{"body", "lid"}, {"force", {"x", 0, 0}}, {"point", {0, 0, 0}}}};
        document[json::json_pointer(pointer)] = "oops";
        EXPECT_EQ(FindingsOf(document), pointer + text);
    }
}

TEST_F(ElementReaderCases, WarnsOfALoadThatMovesNothing) {
    EXPECT_THAT(Read(WithLoad({{"body", "stator"}, {"force", {1, 0, 0}}})).warnings,
                ElementsAre(EndsWith("/loads/0: the load has no effect: body \"stator\" is on no joint and stands "
                                     "still.")));
    EXPECT_THAT(Read(WithLoad({{"body", "puck"}, {"force", {1, 0, 0}}})).warnings,
                ElementsAre(EndsWith("/loads/0: the load has no effect: joint \"driven\" moves body \"puck\" as "
                                     "prescribed.")));
}

} // namespace
} // namespace kinora::scenario
