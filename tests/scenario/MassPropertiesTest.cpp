#include "scenario/MassProperties.h"

#include <gtest/gtest.h>

namespace kinora::scenario {
namespace {

Body At(const Vector& place_W, double mass, const Vector& moments) {
    Body body;
    body.X_WB0.p_WB_W = place_W;
    body.mass = mass;
    body.principalInertia_B = moments;
    return body;
}

TEST(MassProperties, TakesBodiesTogether) {
    // A quarter about z takes the second body's x axis to y; its centre of mass is 1 m along its x axis.
    Body turned = At({3.0, -1.0, 0.0}, 3.0, {1.0, 2.0, 3.0});
    turned.X_WB0.R_WB = Rotation(Vector::UnitZ(), 90.0 / degreesPerRadian);
    turned.p_BC_B = Vector::UnitX();
    const std::vector<Body> bodies = {At({100.0, 0.0, 0.0}, 7.0, {1.0, 1.0, 1.0}),
                                      At({-1.0, 0.0, 0.0}, 1.0, {10.0, 20.0, 30.0}), turned};
    const MassProperties together = Together(bodies, {1, 2});
    EXPECT_EQ(together.mass, 4.0);
    EXPECT_LT((together.p_WC_W - Vector(2.0, 0.0, 0.0)).norm(), 1e-15);
    // 1 kg at 3 m and 3 kg at 1 m from the common centre.
    EXPECT_LT((together.inertia_W - Matrix(Vector(12.0, 33.0, 45.0).asDiagonal())).norm(), 1e-13);
    EXPECT_LT((together.InertiaAbout({2.0, 2.0, 0.0}) - Matrix(Vector(28.0, 33.0, 61.0).asDiagonal())).norm(), 1e-13);
}

TEST(MassProperties, GivesAPointNoArmByRounding) {
    const MassProperties together = Together({At({0.1, 0.2, 0.3}, 0.1, Vector::Zero())}, {0});
    EXPECT_EQ(together.p_WC_W, Vector(0.1, 0.2, 0.3));
    EXPECT_EQ(together.inertia_W, Matrix::Zero());
}

} // namespace
} // namespace kinora::scenario
