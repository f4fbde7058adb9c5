// Bodies described, drawn and turned in any way, through the C interface on the simulator: loads come back in the
// body's own axes, about its own origin.

#include "tests/capi/Handle.h"

#include <Eigen/Geometry>
#include <array>
#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace capi {
namespace {

using Vector = Eigen::Vector3d;
/// As the records have them, row by row: R_BW turns components in the global frame W into those in the body's axes B.
using Matrix = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

constexpr double pi = 3.14159265358979323846;

/// How a caller describes a cube magnet, and where it is.
struct Body {
    /// Of its axes and its origin as it is drawn; all cubes are drawn alike.
    Matrix drawnAxes = Matrix::Identity();
    Vector drawnOrigin;
    Matrix axes = Matrix::Identity();
    Vector origin;
};

struct Load {
    Vector force;
    Vector torque;
};

/// The two cubes of the example, each magnetised along z as it is drawn. The centre of the upper one is drawn here.
const Vector upperCentre(0.0, 0.0, 0.012);

/// The loads on lower and upper cube, in the axes and about the origins of their bodies.
std::array<Load, 2> Solve(const std::array<Body, 2>& bodies) {
    static int number = 0;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("kinora-capi-" + std::to_string(std::random_device()()) + std::to_string(++number));
    std::filesystem::create_directory(folder);
    const char* const names[2] = {"lower", "upper"};
    const char* const objects[2] = {"lower_magnet", "upper_magnet"};
    kv_group groups[2];
    kv_material materials[2];
    kv_pose poses[2];
    kv_load loads[2];
    for (std::size_t i = 0; i < 2; ++i) {
        groups[i] = Sized<kv_group>();
        poses[i] = Sized<kv_pose>();
        materials[i] = Sized<kv_material>();
        loads[i] = Sized<kv_load>();
        groups[i].body = poses[i].body = names[i];
        groups[i].objects = &objects[i];
        groups[i].object_count = 1;
        Eigen::Map<Vector>(groups[i].position) = bodies[i].drawnOrigin;
        Eigen::Map<Matrix>(groups[i].rotation) = bodies[i].drawnAxes;
        Eigen::Map<Vector>(poses[i].position) = bodies[i].origin;
        Eigen::Map<Matrix>(poses[i].rotation) = bodies[i].axes;
        materials[i].object = objects[i];
        materials[i].material = "magnet_1T";
        Eigen::Map<Vector>(materials[i].coercivity_direction) = bodies[i].drawnAxes * Vector::UnitZ();
    }
    const Handle handle;
    EXPECT_EQ(kv_launch(handle, "Simulator"), KV_OK) << ErrorText(handle);
    EXPECT_EQ(kv_create_project(handle, (folder / "cubes.vantor").u8string().c_str(), KINORA_CUBES, "mm"), KV_OK)
        << ErrorText(handle);
    EXPECT_EQ(kv_init_magnetic_objects(handle, groups, 2, materials, 2), KV_OK) << ErrorText(handle);
    std::size_t count = 0;
    std::int32_t solver = 0;
    EXPECT_EQ(kv_analyze(handle, 0.0, poses, 2, loads, &count, &solver), KV_OK) << ErrorText(handle);
    EXPECT_EQ(kv_quit(handle), KV_OK) << ErrorText(handle);
    std::filesystem::remove_all(folder);
    const auto loadOf = [&](std::size_t i) {
        return Load{Eigen::Map<Vector>(loads[i].force), Eigen::Map<Vector>(loads[i].torque)};
    };
    return {loadOf(0), loadOf(1)};
}

/// The lower cube as drawn, and the upper one with these axes at this place.
std::array<Body, 2> Cubes(const Matrix& upperAxes, const Vector& upperOrigin) {
    Body lower;
    lower.drawnOrigin = lower.origin = Vector::Zero();
    Body upper;
    upper.drawnOrigin = upperCentre;
    upper.axes = upperAxes;
    upper.origin = upperOrigin;
    return {lower, upper};
}

TEST(Orientation, RowsAreTheBodysAxesAndTorquesAreNewtonMetres) {
    // Two dipoles above one another, the upper one along global x: it is pulled along x and turned about -y.
    constexpr double moment = 1e-6 / (4e-7 * pi); // of a cubic centimetre of 1 T
    constexpr double distance = 0.1;
    const double force = 3e-7 * moment * moment / std::pow(distance, 4);
    const double torque = 2e-7 * moment * moment / std::pow(distance, 3);
    Matrix axes; // turned by 90 degrees about y: its z axis lies along global x, its x axis along -z
    axes << 0, 0, -1, 0, 1, 0, 1, 0, 0;
    const Load load = Solve(Cubes(axes, {0.0, 0.0, distance}))[1];
    EXPECT_LT((load.force - Vector(0.0, 0.0, force)).norm(), 0.01 * force) << load.force.transpose();
    EXPECT_LT((load.torque - Vector(0.0, -torque, 0.0)).norm(), 0.01 * torque) << load.torque.transpose();
}

TEST(Orientation, ABodysOwnAxesAndOriginOnlyDescribeIt) {
    std::mt19937_64 random(7);
    std::normal_distribution<double> normal;
    const auto turn = [&] {
        const double w = normal(random), x = normal(random), y = normal(random), z = normal(random);
        return Matrix(Eigen::Quaterniond(w, x, y, z).normalized().toRotationMatrix());
    };
    for (int round = 0; round < 12; ++round) {
        SCOPED_TRACE(round);
        const std::array<Body, 2> plain = Cubes(turn(), {0.004, -0.007, 0.021});
        std::array<Body, 2> described = plain;
        for (Body& body : described) {
            const Matrix R_BD = turn();
            body.drawnAxes = R_BD;
            body.axes = (R_BD * body.axes).eval();
        }
        const auto expected = Solve(plain);
        const auto loads = Solve(described);
        for (std::size_t i = 0; i < 2; ++i) {
            const Matrix& R_BD = described[i].drawnAxes;
            EXPECT_LT((loads[i].force - R_BD * expected[i].force).norm(), 2e-5 * expected[i].force.norm());
            EXPECT_LT((loads[i].torque - R_BD * expected[i].torque).norm(), 2e-5 * expected[i].torque.norm());
        }
    }
}

TEST(Orientation, TorquesAreAboutTheBodysOrigin) {
    const std::array<Body, 2> centred = Cubes(Matrix::Identity(), {0.003, 0.0, 0.015});
    std::array<Body, 2> shifted = centred;
    const Vector shift(0.0, 0.02, 0.0);
    shifted[1].drawnOrigin += shift;
    shifted[1].origin += shift;
    const Load expected = Solve(centred)[1];
    const Load load = Solve(shifted)[1];
    EXPECT_LT((load.force - expected.force).norm(), 1e-6 * expected.force.norm());
    const Vector torque = expected.torque - shift.cross(expected.force);
    EXPECT_LT((load.torque - torque).norm(), 1e-6 * torque.norm()) << load.torque.transpose();
}

} // namespace
} // namespace capi
