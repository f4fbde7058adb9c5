#include "simulator/model/Modeler.h"

#include "simulator/model/DesktopError.h"
#include "tests/simulator/model/Shapes.h"
#include "tests/support/Complaint.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vantor::model;
using testing::HasSubstr;

namespace {

/// A modeler in millimetres with one 10 mm cube named Rotor at x = 20 mm.
Modeler WithCube() {
    Modeler modeler;
    modeler.SetUnits("mm", false);
    modeler.Import({{{"Rotor", "NdFeB_N35", shapes::Cube(20, 10)}}, {}}, true);
    return modeler;
}

Variables BodyVariables(double x, double phi, double theta, double psi) {
    Variables variables;
    const auto meters = [](double value) { return std::to_string(value) + "Meter"; };
    const auto radians = [](double value) { return std::to_string(value) + "Rad"; };
    variables.Add({{"B_X", meters(x)}, {"B_Y", "0Meter"}, {"B_Z", "0Meter"}});
    variables.Add({{"B_Phi", radians(phi)}, {"B_Theta", radians(theta)}, {"B_Psi", radians(psi)}});
    return variables;
}

CoordinateSystem BodyFrame() {
    CoordinateSystem system;
    system.name = "Obj_CS_B";
    system.origin = {"B_X", "B_Y", "B_Z"};
    system.xAxis = {"cos(B_Phi)*cos(B_Theta)", "sin(B_Psi)*sin(B_Phi)*cos(B_Theta)-cos(B_Psi)*sin(B_Theta)",
                    "cos(B_Psi)*sin(B_Phi)*cos(B_Theta)+sin(B_Psi)*sin(B_Theta)"};
    system.yAxis = {"cos(B_Phi)*sin(B_Theta)", "sin(B_Psi)*sin(B_Phi)*sin(B_Theta)+cos(B_Psi)*cos(B_Theta)",
                    "cos(B_Psi)*sin(B_Phi)*sin(B_Theta)-sin(B_Psi)*cos(B_Theta)"};
    return system;
}

/// Where the corners of an object lie now, metres, global.
std::vector<Eigen::Vector3d> GlobalVertices(const Modeler& modeler, const std::string& name,
                                            const Variables& variables) {
    const GeometryObject& object = modeler.RequireObject(name);
    const Pose pose = modeler.FramePose(object.coordinateSystem, variables);
    std::vector<Eigen::Vector3d> vertices;
    for (const Eigen::Vector3d& vertex : object.mesh->vertices) {
        vertices.push_back(pose * vertex);
    }
    return vertices;
}

} // namespace

TEST(Modeler, TakesGeometryInModelUnits) {
    Modeler modeler;
    modeler.SetUnits("in", false);
    modeler.Import({{{"A", "", shapes::Cube(0, 1)}}, {}}, true);
    EXPECT_NEAR(SignedVolume(*modeler.RequireObject("A").mesh), std::pow(0.0254, 3), 1e-18);
    EXPECT_EQ(modeler.RequireObject("A").material, "vacuum");
    modeler.SetUnits("mm", false);
    EXPECT_NEAR(SignedVolume(*modeler.RequireObject("A").mesh), std::pow(0.0254, 3), 1e-18);
    modeler.SetUnits("m", true);
    EXPECT_NEAR(SignedVolume(*modeler.RequireObject("A").mesh), std::pow(25.4, 3), 1e-8);
}

TEST(Modeler, KnowsTheUsualNamesOfUnits) {
    Modeler modeler;
    for (const auto& [name, size] : std::map<std::string, double>{{"um", 1e-6},
                                                                  {"mm", 1e-3},
                                                                  {"cm", 1e-2},
                                                                  {"m", 1.0},
                                                                  {"meter", 1.0},
                                                                  {"Meter", 1.0},
                                                                  {"in", 0.0254},
                                                                  {"ft", 0.3048},
                                                                  {"mil", 2.54e-5}}) {
        modeler.SetUnits(name, false);
        EXPECT_DOUBLE_EQ(modeler.MetresPerUnit(), size) << name;
    }
    EXPECT_THAT(fake::ComplaintOf<std::runtime_error>([&] { modeler.SetUnits("", false); }),
                HasSubstr("unknown model unit \"\""));
    EXPECT_THAT(fake::ComplaintOf<std::runtime_error>([&] { modeler.SetUnits("furlong", false); }),
                HasSubstr("unknown model unit \"furlong\""));
}

TEST(Modeler, KeepsAnObjectThatIsImportedAgain) {
    Modeler modeler = WithCube();
    EXPECT_THAT(modeler.Import({{{"Rotor", "", shapes::Cube(20, 10)}}, {}}, true), testing::ElementsAre("Rotor"));
    EXPECT_EQ(modeler.Objects().size(), 1U);
    EXPECT_THAT(fake::ComplaintOf<std::runtime_error>([&] {
                    modeler.Import({{{"Rotor", "", shapes::Cube(20, 11)}}, {}}, true);
                }),
                HasSubstr("has another geometry"));
}

TEST(Modeler, TurnsAboutTheAxisThroughTheOrigin) {
    Modeler modeler = WithCube();
    modeler.Rotate("Rotor", 2, std::acos(-1.0) / 2.0, Variables());
    Box box;
    for (const auto& vertex : modeler.RequireObject("Rotor").mesh->vertices) {
        box.Add(vertex);
    }
    EXPECT_NEAR(box.lower.x(), -0.01, 1e-15);
    EXPECT_NEAR(box.lower.y(), 0.02, 1e-15);
    EXPECT_NEAR(box.upper.y(), 0.03, 1e-15);
}

/// A body at x = 20 mm, turned by psi about X: its rows are (1 0 0), (0 c s), (0 -s c), so that psi of the angle rule
/// is atan2(m7, m8) = atan2(-s, c) = -psi. Moving by -20 mm and turning by that angle expresses it in its own axes; in
/// its frame it lies where it was imported.
TEST(Modeler, PutsABodyBackWhereItWasImported) {
    const double turn = 0.4, x = 0.02;
    const double psi = -turn;
    Modeler modeler = WithCube();
    const std::shared_ptr<const Mesh> imported = modeler.RequireObject("Rotor").mesh;
    const Variables variables = BodyVariables(x, 0.0, 0.0, psi);
    modeler.AddCoordinateSystem(BodyFrame(), variables);
    modeler.Move("Rotor", {-x, 0.0, 0.0}, variables);
    modeler.Rotate("Rotor", 0, psi, variables);
    // A corner at (30, 10, 0) mm has the own coordinates (10, 10 c, -10 s) mm.
    const Eigen::Vector3d own(0.01, 0.01 * std::cos(turn), -0.01 * std::sin(turn));
    EXPECT_NEAR((modeler.RequireObject("Rotor").mesh->vertices[3] - own).norm(), 0.0, 1e-15);
    modeler.RequireObject("Rotor").coordinateSystem = "Obj_CS_B";
    const std::vector<Eigen::Vector3d> now = GlobalVertices(modeler, "Rotor", variables);
    ASSERT_EQ(now.size(), imported->vertices.size());
    for (std::size_t i = 0; i < now.size(); ++i) {
        EXPECT_NEAR((now[i] - imported->vertices[i]).norm(), 0.0, 1e-15);
    }
}

TEST(Modeler, MovesABodyWithItsVariables) {
    Modeler modeler = WithCube();
    Variables variables = BodyVariables(0.0, 0.0, 0.0, 0.0);
    modeler.AddCoordinateSystem(BodyFrame(), variables);
    modeler.RequireObject("Rotor").coordinateSystem = "Obj_CS_B";
    variables.Change({{"B_X", "0.5Meter"}, {"B_Psi", "-1.5707963267948966Rad"}});
    // Psi turns the frame by -psi about X: the corner (20, 10, 0) mm goes to (520, 0, 10) mm.
    EXPECT_NEAR((GlobalVertices(modeler, "Rotor", variables)[2] - Eigen::Vector3d(0.52, 0.0, 0.01)).norm(), 0.0, 1e-15);
}

TEST(Modeler, FollowsTheAxisExpressionsToTheLetter) {
    Modeler modeler = WithCube();
    const double p = 0.3, t = 0.5, s = 0.7;
    const Variables variables = BodyVariables(0.0, p, t, s);
    modeler.AddCoordinateSystem(BodyFrame(), variables);
    const Eigen::Matrix3d expected =
        (Eigen::AngleAxisd(t, Eigen::Vector3d::UnitZ()) * Eigen::AngleAxisd(p, Eigen::Vector3d::UnitY()) *
         Eigen::AngleAxisd(s, Eigen::Vector3d::UnitX()))
            .toRotationMatrix()
            .transpose();
    EXPECT_NEAR((modeler.FramePose("Obj_CS_B", variables).linear() - expected).norm(), 0.0, 1e-15);
}

TEST(Modeler, NestsFramesAndStraightensTheirAxes) {
    Modeler modeler;
    Variables variables;
    modeler.AddCoordinateSystem({"Outer", "Global", {"1m", "0m", "0m"}, {"0", "1", "0"}, {"-1", "0.5", "0"}},
                                variables);
    modeler.AddCoordinateSystem({"Inner", "Outer", {"0m", "2m", "0m"}, {"1mm", "0mm", "0mm"}, {"0mm", "1mm", "0mm"}},
                                variables);
    const Pose pose = modeler.FramePose("Inner", variables);
    EXPECT_NEAR((pose.translation() - Eigen::Vector3d(-1.0, 0.0, 0.0)).norm(), 0.0, 1e-15);
    EXPECT_NEAR((pose.linear().col(1) - Eigen::Vector3d(-1.0, 0.0, 0.0)).norm(), 0.0, 1e-15);
    EXPECT_NEAR((pose.linear().col(2) - Eigen::Vector3d(0.0, 0.0, 1.0)).norm(), 0.0, 1e-15);
}

TEST(Modeler, RejectsFramesThatCannotBe) {
    Modeler modeler;
    Variables variables;
    variables.Add({{"angle", "1Rad"}});
    const std::array<std::string, 3> zero = {"0", "0", "0"}, x = {"1", "0", "0"}, y = {"0", "1", "0"};
    const auto add = [&](const CoordinateSystem& system) {
        return fake::ComplaintOf<std::runtime_error>([&] { modeler.AddCoordinateSystem(system, variables); });
    };
    EXPECT_THAT(add({"A", "Global", zero, x, {"2", "0", "0"}}), HasSubstr("parallel"));
    EXPECT_THAT(add({"A", "Global", zero, zero, y}), HasSubstr("the x axis has no direction"));
    EXPECT_THAT(add({"A", "Global", {"angle", "0", "0"}, x, y}), HasSubstr("where a length is needed"));
    EXPECT_THAT(add({"A", "Global", {"Rotor_X", "0", "0"}, x, y}), HasSubstr("unknown name \"Rotor_X\""));
    EXPECT_THAT(add({"A", "Nowhere", zero, x, y}), HasSubstr("no coordinate system \"Nowhere\""));
    EXPECT_THAT(add({"Global", "Global", zero, x, y}), HasSubstr("exists already"));
    EXPECT_EQ(add({"A", "Global", zero, x, y}), "none");
    EXPECT_THAT(add({"A", "Global", zero, x, y}), HasSubstr("exists already"));
}

TEST(Modeler, RefusesARegionThatCannotBe) {
    Modeler modeler = WithCube();
    Variables variables = BodyVariables(0.0, 0.0, 0.0, 0.0);
    variables.Add({{"Pad", "500"}});
    Region region;
    region.name = "OuterRegion";
    region.padding = {"Pad", "Pad", "100", "0", "Pad", "Pad"};
    const auto set = [&](std::size_t side, const std::string& padding) {
        Region spoiled = region;
        spoiled.padding[side] = padding;
        return fake::ComplaintOf<std::runtime_error>([&] { modeler.SetRegion(spoiled, variables); });
    };
    EXPECT_FALSE(modeler.SetRegion(region, variables));
    EXPECT_TRUE(modeler.SetRegion(region, variables));
    EXPECT_EQ(set(0, "-1"), "region \"OuterRegion\": the padding \"-1\" must be a plain number of percent, 0 or more");
    EXPECT_THAT(set(5, "1mm"), HasSubstr("the padding \"1mm\" must be a plain number of percent, 0 or more"));
    EXPECT_THAT(set(3, "Pad_Y"), HasSubstr("unknown name \"Pad_Y\""));
    // What a region is around must be somewhere.
    modeler.AddCoordinateSystem(BodyFrame(), variables);
    modeler.RequireObject("Rotor").coordinateSystem = "Obj_CS_B";
    EXPECT_EQ(set(0, "1"), "none");
    modeler.CheckRegion(variables);
    EXPECT_THAT(fake::ComplaintOf<std::runtime_error>([&] { modeler.CheckRegion(Variables()); }),
                HasSubstr("unknown name \"B_X\""));
}

/// Whoever holds a mesh may keep what it has found out about it: another geometry is another mesh.
TEST(Modeler, ReplacesAMeshThatItChanges) {
    Modeler modeler = WithCube();
    const Variables variables = BodyVariables(0.0, 0.0, 0.0, 0.0);
    modeler.AddCoordinateSystem(BodyFrame(), variables);
    const auto held = modeler.RequireObject("Rotor").mesh;
    const std::vector<Eigen::Vector3d> imported = held->vertices;
    modeler.RequireObject("Rotor").coordinateSystem = "Obj_CS_B";
    modeler.SetUnits("cm", false);
    EXPECT_EQ(modeler.RequireObject("Rotor").mesh, held);
    std::vector<std::shared_ptr<const Mesh>> meshes = {held};
    const auto isAnother = [&] {
        const auto mesh = modeler.RequireObject("Rotor").mesh;
        EXPECT_EQ(mesh->triangles, held->triangles);
        const bool isNew = std::find(meshes.begin(), meshes.end(), mesh) == meshes.end();
        meshes.push_back(mesh);
        return isNew;
    };
    modeler.Move("Rotor", {0.001, 0.0, 0.0}, variables);
    EXPECT_TRUE(isAnother());
    modeler.Rotate("Rotor", 0, 0.1, variables);
    EXPECT_TRUE(isAnother());
    modeler.SetUnits("mm", true);
    EXPECT_TRUE(isAnother());
    EXPECT_EQ(held->vertices, imported);
}
