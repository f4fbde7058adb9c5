// The exported field of a cube magnet: numbers, symmetry, and where its points lie.
#include "simulator/analysis/FieldExport.h"

#include "simulator/model/Text.h"
#include "tests/simulator/automation/Desk.h"
#include "tests/simulator/model/Shapes.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Eigen::Vector3d;
using vantor::analysis::FieldGrid;

/// What a viewer reads from the exported file.
struct Exported {
    std::vector<Vector3d> points, h, b;
};

/// The vectors of the data array that these attributes begin.
std::vector<Vector3d> ReadVectors(const std::string& vtu, const std::string& attributes) {
    std::size_t at = vtu.find(attributes);
    EXPECT_NE(at, std::string::npos) << attributes;
    at = vtu.find('>', at) + 2;
    std::vector<Vector3d> vectors;
    for (const std::string& line : vantor::model::Split(vtu.substr(at, vtu.find("</DataArray>", at) - at), '\n')) {
        const std::vector<std::string> parts = vantor::model::Split(line, ' ');
        if (parts.size() >= 3) {
            Vector3d& vector = vectors.emplace_back();
            for (std::size_t axis = 0; axis < 3; ++axis) {
                EXPECT_TRUE(vantor::model::ParseNumber(parts[axis], vector[static_cast<Eigen::Index>(axis)]));
            }
        }
    }
    return vectors;
}

/// A cube of 10 mm with its middle at (5, 5, 5) mm, magnetised along x with a remanence of 1 T.
class FieldExport : public testing::Test {
protected:
    static constexpr double edge = 0.01;
    static constexpr double remanence = 1.0;
    const Vector3d middle = Vector3d::Constant(0.005);

    void SetUp() override {
        m_desk.Create(shapes::CubeObj("Magnet", "magnet_1T", 0, 10));
        m_desk.AddBody("Magnet", "Magnet", "magnet_1T", 0.0);
        m_desk.design->Call("Analyze", {"Setup1"});
    }

    Exported Export(const FieldGrid& grid = {}) const {
        const auto& project = *m_desk.world->projects[0];
        const std::string vtu =
            vantor::analysis::ExportFields(project, m_desk.world->library, *project.designs[0], grid);
        return {ReadVectors(vtu, "type=\"Float64\" NumberOfComponents"), ReadVectors(vtu, "Name=\"H\""),
                ReadVectors(vtu, "Name=\"B\"")};
    }

    /// B on the axis (J. M. D. Coey, Magnetism and Magnetic Materials, 2010: two charged squares), tesla.
    static double AxialFlux(double x) {
        const auto charged = [](double distance) {
            return std::atan(edge * edge / (2 * distance * std::sqrt(4 * distance * distance + 2 * edge * edge)));
        };
        const double fromCharges = remanence / std::acos(-1.0) * (charged(x - edge / 2) - charged(x + edge / 2));
        return fromCharges + (std::abs(x) < edge / 2 ? remanence : 0.0);
    }

private:
    desk::Desk m_desk;
};

TEST_F(FieldExport, IsSymmetricAboutTheMiddleOfTheModel) {
    const Exported field = Export();
    ASSERT_EQ(field.points.size(), 31U * 31U * 31U);
    ASSERT_EQ(field.h.size(), field.points.size());
    ASSERT_EQ(field.b.size(), field.points.size());
    const std::size_t last = field.points.size() - 1;
    EXPECT_LE((field.points[last / 2] - middle).norm(), 1e-15) << "the middle is a point";
    EXPECT_LE((field.points[0] - Vector3d::Constant(-0.005)).norm(), 1e-15);
    EXPECT_LE((field.points[last] - Vector3d::Constant(0.015)).norm(), 1e-15);
    for (std::size_t i = 0; i < last / 2; ++i) {
        EXPECT_LE((field.points[i] + field.points[last - i] - 2 * middle).norm(), 1e-15);
        EXPECT_NEAR(field.h[i].norm(), field.h[last - i].norm(), 1e-9 * field.h[i].norm()) << field.points[i];
        EXPECT_NEAR(field.b[i].norm(), field.b[last - i].norm(), 1e-9 * field.b[i].norm()) << field.points[i];
    }
}

TEST_F(FieldExport, GivesTheFluxOnTheAxisInsideAndOutside) {
    const Exported field = Export();
    int inside = 0;
    int outside = 0;
    for (std::size_t i = 0; i < field.points.size(); ++i) {
        const Vector3d place = field.points[i] - middle;
        if (std::hypot(place.y(), place.z()) < 1e-12) {
            EXPECT_NEAR(field.b[i].x(), AxialFlux(place.x()), 1e-9) << place.x();
            EXPECT_NEAR(std::hypot(field.b[i].y(), field.b[i].z()), 0, 1e-9);
            ++(std::abs(place.x()) < edge / 2 ? inside : outside);
        }
    }
    EXPECT_EQ(inside, 15);
    EXPECT_EQ(outside, 16);
    EXPECT_NEAR(field.b[field.b.size() / 2].x(), 2.0 / 3.0, 1e-9) << "a cube demagnetises itself by a third";
}

TEST_F(FieldExport, LiesWhereItIsWanted) {
    FieldGrid grid;
    grid.points = std::array<int, 3>{2, 3, 5};
    grid.box = vantor::model::Box{{0, 0, 0}, {0.02, 0.02, 0.04}};
    const Exported field = Export(grid);
    ASSERT_EQ(field.points.size(), 30U);
    EXPECT_EQ(field.points.front(), Vector3d(0, 0, 0));
    EXPECT_EQ(field.points[1], Vector3d(0.02, 0, 0));
    EXPECT_LE((field.points[2] - Vector3d(0, 0.01, 0)).norm(), 1e-15);
    EXPECT_LE((field.points.back() - Vector3d(0.02, 0.02, 0.04)).norm(), 1e-15);
    grid.points.reset();
    EXPECT_EQ(Export(grid).points.size(), 17U * 17U * 31U) << "odd numbers, cells of about equal edge";
}

/// The exported field of solids of this material, 10 mm at the origin and at 30 mm.
std::string ExportOf(const std::string& material) {
    desk::Desk desk;
    desk.Create(shapes::CubeObj("One", material, 0, 10) + shapes::CubeObj("Other", material, 30, 10));
    desk.design->Call("Analyze", {"Setup1"});
    const auto& project = *desk.world->projects[0];
    FieldGrid grid;
    grid.points = std::array<int, 3>{2, 2, 2};
    return vantor::analysis::ExportFields(project, desk.world->library, *project.designs[0], grid);
}

TEST(FieldExportBox, SurroundsIronAndNeedsSomethingMagnetic) {
    const std::vector<Vector3d> corners = ReadVectors(ExportOf("steel_soft"), "type=\"Float64\" NumberOfComponents");
    ASSERT_EQ(corners.size(), 8U);
    EXPECT_LE((corners.front() - Vector3d(-0.02, -0.02, -0.02)).norm(), 1e-15);
    EXPECT_LE((corners.back() - Vector3d(0.06, 0.03, 0.03)).norm(), 1e-15);
    EXPECT_EQ(desk::Complaint([] { ExportOf("copper"); }), "the design has neither magnets nor iron");
}

} // namespace
