// What a design keeps from one solve to the next changes no result, and goes with the design.
#include "simulator/analysis/KeptSolver.h"

#include "simulator/analysis/Analysis.h"
#include "tests/simulator/automation/Desk.h"
#include "tests/simulator/model/Shapes.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>

using namespace desk;

namespace {

using vantor::analysis::KeptSolver;
using vantor::model::Mesh;

/// Two 10 mm cubes along x as two bodies, solved or not.
void CreatePair(Desk& desk) {
    desk.Create(shapes::CubeObj("Stator", "magnet_1T", 0, 10) + shapes::CubeObj("Rotor", "magnet_1T", 30, 10));
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
}

double Solved(const Desk& desk) {
    EXPECT_EQ(desk.design->Call("Analyze", {"Setup1"}).AsInteger()->value, 0);
    return desk.Output("Force_Rotor_X");
}

vantor::model::Design& FirstDesign(const Desk& desk) {
    return *desk.world->projects.front()->designs.front();
}

List RotorSelection() {
    return {"NAME:Selections", "Selections:=", "Rotor", "NewPartsModelFlag:=", "Model"};
}

List Shift(const std::string& x) {
    return {
        "NAME:TranslateParameters", "TranslateVectorX:=", x, "TranslateVectorY:=", "0mm", "TranslateVectorZ:=", "0mm"};
}

} // namespace

TEST(KeptSolver, KnowsTheMeshesAgainWhenOnlyVariablesHaveChanged) {
    Desk desk;
    CreatePair(desk);
    EXPECT_EQ(FirstDesign(desk).keptSolver, nullptr);
    const double first = Solved(desk);
    const std::shared_ptr<KeptSolver> kept = FirstDesign(desk).keptSolver;
    ASSERT_NE(kept, nullptr);
    const auto mesh = FirstDesign(desk).modeler.RequireObject("Rotor").mesh;
    const auto solverMesh = kept->copies.Of(mesh);
    desk.ChangeVariable("Rotor_X", "0.050000Meter");
    EXPECT_LT(std::abs(Solved(desk)), 0.5 * std::abs(first));
    EXPECT_EQ(FirstDesign(desk).keptSolver, kept);
    EXPECT_EQ(FirstDesign(desk).modeler.RequireObject("Rotor").mesh, mesh);
    EXPECT_EQ(kept->copies.Of(mesh), solverMesh);
    EXPECT_EQ(solverMesh->vertices, mesh->vertices);
    EXPECT_EQ(solverMesh->triangles, mesh->triangles);
    desk.ChangeVariable("Rotor_X", "0.030000Meter");
    EXPECT_EQ(Solved(desk), first);
}

TEST(KeptSolver, SolvesWhatAnObjectHasBecome) {
    Desk desk;
    CreatePair(desk);
    const double first = Solved(desk);
    const std::weak_ptr<const Mesh> before = FirstDesign(desk).modeler.RequireObject("Rotor").mesh;
    const auto expectAsNew = [&](const char* change, double force) {
        SCOPED_TRACE(change);
        FirstDesign(desk).keptSolver.reset();
        EXPECT_EQ(Solved(desk), force);
    };
    desk.editor->Call("Move", {RotorSelection(), Shift("5mm")});
    EXPECT_TRUE(before.expired());
    const double moved = Solved(desk);
    EXPECT_LT(std::abs(moved), 0.9 * std::abs(first));
    expectAsNew("moved", moved);
    desk.editor->Call("Rotate",
                      {RotorSelection(), List{"NAME:RotateParameters", "RotateAxis:=", "Y", "RotateAngle:=", "90deg"}});
    const double turned = Solved(desk);
    EXPECT_NE(turned, moved);
    expectAsNew("turned", turned);
    // The numbers stay, and are thousandths of an inch.
    desk.editor->Call("SetModelUnits", {List{"NAME:Units Parameter", "Units:=", "mil", "Rescale:=", true}});
    const double smaller = Solved(desk);
    EXPECT_LT(std::abs(smaller), 1e-3 * std::abs(first));
    expectAsNew("smaller", smaller);
}

TEST(KeptSolver, FollowsTheMaterial) {
    Desk desk;
    CreatePair(desk);
    const double first = Solved(desk);
    const auto rotor = ObjectOf(desk.editor->Call("GetChildObject", {"Rotor"}));
    ObjectOf(desk.project->Call("GetDefinitionManager"))->Call("CloneMaterial", {"magnet_1T", "turned"});
    ObjectOf(ObjectOf(desk.project->Call("GetChildObject", {"Materials"}))->Call("GetChildObject", {"turned"}))
        ->Call("SetPropValue", {"Magnetic Coercivity Components/Component1", -1.0});
    rotor->Call("SetPropValue", {"Material", "\"turned\""});
    EXPECT_NEAR(Solved(desk), -first, 1e-9 * std::abs(first));
    rotor->Call("SetPropValue", {"Material", "\"magnet_1T\""});
    EXPECT_EQ(Solved(desk), first);
}

TEST(KeptSolver, BelongsToOneDesign) {
    Desk one, two;
    CreatePair(one);
    CreatePair(two);
    two.ChangeVariable("Rotor_X", "0.050000Meter");
    const double near = Solved(one);
    const double far = Solved(two);
    EXPECT_NE(FirstDesign(one).keptSolver, FirstDesign(two).keptSolver);
    one.ChangeVariable("Rotor_X", "0.050000Meter");
    two.ChangeVariable("Rotor_X", "0.030000Meter");
    EXPECT_EQ(Solved(one), far);
    EXPECT_EQ(Solved(two), near);
}

TEST(KeptSolver, IsTheSameForAllClients) {
    Desk desk;
    CreatePair(desk);
    const double first = Solved(desk);
    const std::shared_ptr<KeptSolver> kept = FirstDesign(desk).keptSolver;
    desk.project->Call("Save");
    const auto project = ObjectOf(desk.NewClient()->Call("OpenProject", {desk.File("pair.vtdk")}));
    ObjectOf(project->Call("GetDesign", {"Veltrix3DDesign1"}))->Call("Analyze", {"Setup1"});
    EXPECT_EQ(FirstDesign(desk).keptSolver, kept);
    EXPECT_EQ(desk.Output("Force_Rotor_X"), first);
}

TEST(KeptSolver, GoesWhenTheProjectIsClosed) {
    Desk desk;
    CreatePair(desk);
    Solved(desk);
    const std::weak_ptr<KeptSolver> kept = FirstDesign(desk).keptSolver;
    const std::weak_ptr<const Mesh> mesh = FirstDesign(desk).modeler.RequireObject("Rotor").mesh;
    const std::weak_ptr<const vantor::solver::TriangleMesh> solverMesh = kept.lock()->copies.Of(mesh.lock());
    desk.project->Call("Close");
    // The client has not let go of its objects yet.
    EXPECT_TRUE(kept.expired());
    EXPECT_TRUE(solverMesh.expired());
    desk.editor.reset();
    desk.design.reset();
    desk.project.reset();
    EXPECT_TRUE(mesh.expired());
}

TEST(KeptSolver, GoesWithTheDesktop) {
    Desk desk;
    CreatePair(desk);
    Solved(desk);
    const std::weak_ptr<KeptSolver> kept = FirstDesign(desk).keptSolver;
    desk.world->CloseProjects();
    EXPECT_TRUE(kept.expired());
}

TEST(KeptSolver, KeepsNoMeshThatTheModelHasNoMore) {
    Desk desk;
    CreatePair(desk);
    Solved(desk);
    const std::weak_ptr<const vantor::solver::TriangleMesh> solverMesh =
        FirstDesign(desk).keptSolver->copies.Of(FirstDesign(desk).modeler.RequireObject("Rotor").mesh);
    EXPECT_FALSE(solverMesh.expired());
    desk.editor->Call("Move", {RotorSelection(), Shift("1mm")});
    Solved(desk);
    EXPECT_TRUE(solverMesh.expired());
}

/// In the object's own frame the magnetisation is that of the material to the last bit, whatever the frame's pose.
TEST(KeptSolver, GivesTheSolverTheSameMagnetisationAtEveryStep) {
    Desk desk;
    CreatePair(desk);
    vantor::analysis::SolverCopies copies;
    const auto magnetisation = [&] {
        const vantor::model::Design& design = FirstDesign(desk);
        const auto found = vantor::analysis::BuildFieldModel(*desk.world->projects.front(), desk.world->library, design,
                                                             design.variables, copies, [](auto, const std::string&) {});
        return found.bodies.at(1).magnets.at(0).magnetisation;
    };
    const Eigen::Vector3d first = magnetisation();
    EXPECT_EQ(first, Eigen::Vector3d(795774.71545947669, 0.0, 0.0));
    for (const char* angle : {"0.1Rad", "0.7Rad", "2.123456789Rad"}) {
        desk.ChangeVariable("Rotor_Phi", angle);
        desk.ChangeVariable("Rotor_Psi", angle);
        EXPECT_EQ(magnetisation(), first) << angle;
    }
}

/// Passes are told of when they are done, not when all of them are: calculating goes on between them.
TEST(Analysis, TellsOfAPassWhenItIsDone) {
    using Clock = std::chrono::steady_clock;
    Desk desk;
    CreatePair(desk);
    desk.ChangeVariable("Rotor_X", "0.010010Meter");
    vantor::model::AnalysisSetup setup;
    setup.name = "Setup1";
    setup.maximumPasses = 4;
    setup.percentError = 1e-12;
    std::vector<std::pair<std::string, Clock::duration>> passes;
    const Clock::time_point start = Clock::now();
    const auto report = [&](vantor::model::Severity, const std::string& text) {
        passes.emplace_back(text, Clock::now() - start);
    };
    ASSERT_TRUE(vantor::analysis::SolveDesign(*desk.world->projects.front(), desk.world->library, FirstDesign(desk),
                                              setup, report));
    ASSERT_EQ(passes.size(), 5U);
    EXPECT_EQ(passes[0].first.substr(0, 22), "Setup1, pass 1: error ");
    EXPECT_EQ(passes[4].first, "Setup1 did not reach an error of 1e-12 % within 4 passes");
    EXPECT_GT(passes[3].second - passes[0].second, passes[0].second / 50);
}
