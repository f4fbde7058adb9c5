#include "tests/scenario/ScenarioFixture.h"

#include <cmath>
#include <gmock/gmock.h>

namespace kinora::scenario {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

/// A rotor on a hinge, and parameters.
class Parameters : public ScenarioFixture {
protected:
    static json With(const json& parameters) {
        json document = Smallest();
        document["parameters"] = parameters;
        return document;
    }

    Scenario ReadWith(const json& document, const Overrides& overrides) const {
        return ParseScenario(document.dump(1), m_folder / "scenario.json", {}, Purpose::Run, overrides);
    }

    /// Without the file that each line begins with.
    std::string RefusalOf(const json& document, const Overrides& overrides) const {
        try {
            ReadWith(document, overrides);
        } catch (const InputError& error) {
            const std::string file = Utf8FromPath(m_folder / "scenario.json");
            return std::regex_replace(error.what(), std::regex("(^|\n)" + file + "[,:] ?"), "$1");
        }
        return "no error";
    }

    std::string RefusalOfSet(const json& document, const std::string& text) const {
        return RefusalOf(document, {ParseOverride(text)});
    }
};

TEST_F(Parameters, AreNamesForEveryQuantity) {
    json document = With({{"gap", "4*mm"}, {"mass_kg", 0.5}, {"tau", {{"default", "1/10"}, {"unit", "s"}}}});
    document["bodies"][0]["position"] = {"gap/2", "-gap", 0};
    document["bodies"][0]["mass"] = "2*mass_kg";
    document["solver"] = {{"step", "tau/10"}, {"end", "tau"}};
    document["joints"] = json::array({Slider()});
    document["joints"][0].erase("free");
    document["joints"][0]["prescribed"] = {{"expression", "gap*sin(t/tau)"}};
    const Scenario scenario = Read(document);
    EXPECT_EQ(scenario.bodies[0].X_WB0.p_WB_W, Vector(0.002, -0.004, 0.0));
    EXPECT_EQ(scenario.bodies[0].mass, 1.0);
    EXPECT_EQ(scenario.stepping.steps, 10);
    const auto& motion = std::get<PrescribedMotion>(scenario.joints[0].coordinates[0].motion);
    EXPECT_DOUBLE_EQ(motion.Evaluate(0.05), 0.004 * std::sin(0.5));
    ASSERT_EQ(scenario.parameters.size(), 3u);
    EXPECT_EQ(scenario.parameters[0].name, "gap");
    EXPECT_EQ(scenario.parameters[0].value, 0.004);
    EXPECT_EQ(scenario.parameters[0].formula, "4*mm");
    EXPECT_EQ(scenario.parameters[2].unit, "s");
}

TEST_F(Parameters, MayUseOthersWhereverTheyStand) {
    const Scenario scenario = Read(With({{"a", "b + c"}, {"b", "2*c"}, {"c", "z_0"}, {"z_0", 3}}));
    EXPECT_EQ(scenario.parameters[0].value, 9.0);
    EXPECT_THAT(FindingsOf(With({{"a", "b"}, {"b", "2*c"}, {"c", "a"}, {"d", "a"}})),
                HasSubstr("/parameters/a: it depends on itself: a -> b -> c -> a."));
}

TEST_F(Parameters, MayNotDependOnOneAnotherForEver) {
    json parameters = {{"p0", 1}};
    for (int i = 1; i < 5000; ++i) {
        parameters["p" + std::to_string(i)] = "p" + std::to_string(i - 1);
    }
    EXPECT_THAT(FindingsOf(With(parameters)),
                HasSubstr("more than a hundred parameters depend on one another in a row."));
}

TEST_F(Parameters, AreToldWhatIsWrongOnce) {
    EXPECT_EQ(FindingsOf(With({{"gap", "4*m"}, {"half", "gap/2"}})),
              "/parameters/gap: formula \"4*m\", column 3: \"m\" is not known here");
    EXPECT_EQ(FindingsOf(With({{"gap", "1/0"}})), "/parameters/gap: the value is not a finite number.");
    EXPECT_EQ(FindingsOf(With({{"pi", 3}})),
              "/parameters/pi: \"pi\" means something in formulas; choose another name.");
    EXPECT_THAT(FindingsOf(With({{"air gap", 3}})), HasSubstr("/parameters/air gap: \"air gap\" is no name"));
    EXPECT_THAT(FindingsOf(With({{"gap", {{"unit", "m"}}}})), HasSubstr("\"default\""));
    json document = With({{"gap", 1}});
    document["solver"]["end"] = "gapp";
    EXPECT_THAT(FindingsOf(document), HasSubstr("\"gapp\" is not known here; did you mean the parameter \"gap\"?"));
}

TEST_F(Parameters, ANumberWithAnExponentNamesNothing) {
    EXPECT_EQ(Read(With({{"e3", 5}, {"x_2", "2e3 + 1.5E-3"}})).parameters[1].value, 2000.0015);
}

TEST_F(Parameters, AreGivenFromOutside) {
    json document = With({{"gap", {{"default", "4*mm"}, {"description", "Air"}}}, {"half", "gap/2"}});
    document["bodies"][0]["position"] = {"half", 0, 0};
    const Scenario scenario = ReadWith(document, {ParseOverride("gap=8*mm")});
    EXPECT_EQ(scenario.bodies[0].X_WB0.p_WB_W[0], 0.004);
    EXPECT_EQ(scenario.parameters[0].description, "Air");
    EXPECT_EQ(ReadWith(document, {ParseOverride("parameters.gap=6*mm")}).parameters[0].value, 0.006);
    EXPECT_EQ(ReadWith(document, {ParseOverride("gap=1"), ParseOverride("gap=2")}).parameters[0].value, 2.0);
}

TEST_F(Parameters, EveryPlaceCanBeSet) {
    json document = With({{"gap", 1}});
    document["joints"] = json::array({Slider()});
    const Scenario scenario =
        ReadWith(document, {ParseOverride("/solver/end=0.5"), ParseOverride("bodies.rotor.mass=3*gap"),
                            ParseOverride("bodies.0.name=stator"), ParseOverride("joints.slide.bodies=[\"stator\"]"),
                            ParseOverride("desktop.version=Simulator"), ParseOverride("gravity=[0, 0, \"-gn\"]"),
                            ParseOverride("title=a = b"), ParseOverride("joints.slide.free.damping=2")});
    EXPECT_EQ(scenario.stepping.steps, 50);
    EXPECT_EQ(scenario.bodies[0].mass, 3.0);
    EXPECT_EQ(scenario.bodies[0].name, "stator");
    EXPECT_EQ(scenario.desktop.version, "Simulator");
    EXPECT_EQ(scenario.gravity_W[2], -9.80665);
    EXPECT_EQ(scenario.title, "a = b");
    EXPECT_EQ(std::get<FreeMotion>(scenario.joints[0].coordinates[0].motion).damping, 2.0);
}

TEST_F(Parameters, WhatIsSetIsCheckedAndNamed) {
    const json document = With({{"gap", 1}});
    EXPECT_EQ(RefusalOfSet(document, "gapp=1"),
              "--set gapp=1: /parameters: the scenario has no parameter \"gapp\". Did you mean \"gap\"?");
    EXPECT_EQ(RefusalOfSet(document, "bodies.roter.mass=1"),
              "--set bodies.roter.mass=1: /bodies: the list has no \"roter\". Did you mean \"rotor\"?");
    EXPECT_EQ(RefusalOfSet(document, "bodies.1.mass=1"), "--set bodies.1.mass=1: /bodies: the list has no \"1\".");
    EXPECT_EQ(RefusalOfSet(document, "solver.step.now=1"),
              "--set solver.step.now=1: /solver/step: there is no \"now\" in a number.");
    EXPECT_EQ(RefusalOfSet(document, "solver.stop=1"),
              "--set solver.stop=1: /solver/stop: the key \"stop\" is unknown here. Did you mean \"step\"?");
    EXPECT_EQ(RefusalOfSet(document, "solver.end=soon"),
              "--set solver.end=soon: /solver/end: formula \"soon\", column 1: \"soon\" is not known here");
    EXPECT_THAT(RefusalOfSet(document, "project.file=5"), HasSubstr("--set project.file=5: /project/file: "));
    EXPECT_EQ(RefusalOf(document, {ParseOverride("gapp=1"), ParseOverride("bodies.x.mass=1")}),
              "--set gapp=1: /parameters: the scenario has no parameter \"gapp\". Did you mean \"gap\"?\n"
              "--set bodies.x.mass=1: /bodies: the list has no \"x\".");
    // What the value holds is named too, not the line of what stood there.
    EXPECT_THAT(RefusalOfSet(document, "bodies=[{\"name\": \"a\", \"objects\": [1]}]"),
                HasSubstr("/bodies/0/objects/0"));
    EXPECT_THROW(ParseOverride("gap"), InputError);
    EXPECT_THROW(ParseOverride("=1"), InputError);
    EXPECT_THROW(ParseOverride("title=\xFF"), InputError);
}

TEST_F(Parameters, PointersAreUnescaped) {
    json document = Smallest();
    document["bodies"][0]["objects"] = {"a/b~c"};
    document["materials"] = {{"a/b~c", {{"name", "iron"}}}};
    WriteGeometry({"a/b~c"});
    EXPECT_EQ(ReadWith(document, {ParseOverride("/materials/a~1b~0c/name=air")}).materials.at("a/b~c").name, "air");
}

TEST_F(Parameters, ComeFromAFileInItsOrder) {
    const auto write = [&](const std::string& text) {
        std::ofstream(m_folder / "inputs.json", std::ios::binary) << text;
        return m_folder / "inputs.json";
    };
    const Overrides overrides = ReadOverrides(
        write("{ // two\n \"solver\": {\"step\": 0.5, \"end\": 2},\n \"gap\": \"1 + 1\", \"solver.end\": 1 }"));
    const Scenario scenario = ReadWith(With({{"gap", 1}}), overrides);
    EXPECT_EQ(scenario.stepping.steps, 2);
    EXPECT_EQ(scenario.parameters[0].value, 2.0);
    EXPECT_THAT(overrides[2].origin, EndsWith("inputs.json:3"));
    EXPECT_THAT(RefusalOf(With({{"gip", 1}}), overrides), HasSubstr("inputs.json:3: /parameters: the scenario has no"));
    EXPECT_THROW(ReadOverrides(write("[1]")), InputError);
    EXPECT_THROW(ReadOverrides(write("{")), InputError);
    EXPECT_THROW(ReadOverrides(m_folder / "missing.json"), InputError);
}

TEST_F(Parameters, ResultsNameColumnAndNumber) {
    json document = With({{"when", 0.5}});
    document["results"] = {{"top", {{"column", "rotor.Z"}, {"take", "greatest"}, {"description", "How high"}}},
                           {"half", {{"column", "rotor_Z"}, {"take", "at"}, {"time", "when"}}}};
    const Scenario scenario = Read(document);
    ASSERT_EQ(scenario.results.size(), 2u);
    EXPECT_EQ(scenario.results[0].name, "half");
    EXPECT_EQ(scenario.results[0].take, Take::At);
    EXPECT_EQ(scenario.results[0].timeSeconds, 0.5);
    EXPECT_EQ(scenario.results[1].take, Take::Greatest);
    EXPECT_EQ(scenario.results[1].description, "How high");
    document["results"]["half"]["time"] = 2;
    document["results"]["top"]["time"] = 0;
    EXPECT_EQ(FindingsOf(document), "/results/half/time: 2 s is not in the run, which lasts from 0 to 1 s.\n"
                                    "/results/top/time: \"take\": \"greatest\" has no \"time\" here; it may have "
                                    "\"column\", \"take\" or \"description\".");
    document["results"] = {{"half", {{"column", "rotor_Z"}, {"take", "at"}}}};
    EXPECT_EQ(FindingsOf(document), "/results/half: the key \"time\" is missing.");
    document["results"] = {{"half", {{"column", "rotor_Z"}, {"take", "most"}}}};
    EXPECT_THAT(FindingsOf(document), HasSubstr("/results/half/take: \"most\" is not allowed; use \"last\""));
}

} // namespace
} // namespace kinora::scenario
