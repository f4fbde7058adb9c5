// Iron, and magnets of a permeability other than 1, beside closed forms and another method's numbers.
#include "tests/simulator/solver/IronReferences.h"

#include <cmath>
#include <gtest/gtest.h>

using Eigen::Vector3d;

/// Two charges near one another are the dipole; the force is the energy's slope.
TEST(IronReferences, AttractionBySpheresIsTheSlopeOfTheEnergyOfTwoCharges) {
    constexpr double radius = 0.01, distance = 0.018, moment = 3, apart = 2e-5, step = 2e-5, permeability = 20;
    for (const auto direction : {references::DipoleDirection::Towards, references::DipoleDirection::Across}) {
        const Vector3d along =
            direction == references::DipoleDirection::Towards ? Vector3d::UnitZ() : Vector3d::UnitX();
        const auto energy = [&](double height) {
            const Vector3d middle(0, 0, height), half = apart / 2 * along;
            return references::SphereEnergy({{middle + half, moment / apart}, {middle - half, -moment / apart}}, radius,
                                            permeability);
        };
        const double slope = (energy(distance + step) - energy(distance - step)) / (2 * step);
        EXPECT_NEAR(references::SphereAttraction(direction, moment, radius, distance, permeability) / slope, 1, 1e-4);
    }
}

TEST(IronReferences, ImagesAttractAsTheClosedFormForBlocks) {
    constexpr double permeability = 3;
    shapes::Block magnet, image;
    magnet.centre = {0.1, 0.2, 0.8};
    image.centre = {0.1, 0.2, -0.8};
    image.magnetisation = magnet.magnetisation / 2;
    const std::vector<references::Sheet> sheets = references::SheetsOf(magnet);
    const Vector3d force = references::SheetLoad(references::ImagesOf(sheets, 0, permeability), sheets).force;
    const Vector3d expected = references::AkounYonnetForce(image, magnet);
    EXPECT_LE((force - expected).norm(), 1e-6 * expected.norm());
}

TEST(IronReferences, MomentsAreFoundFromTheFieldAroundThem) {
    shapes::Block block;
    block.centre = {0.2, -0.1, 0.3};
    block.size = {1, 2, 0.5};
    block.magnetisation = {300, -200, 700};
    const std::vector<references::Sheet> sheets = references::SheetsOf(block);
    const Vector3d moment = references::MomentWithin(
        [&](const Vector3d& point) { return references::FieldOf(sheets, point); }, block.centre, 12);
    EXPECT_LE((moment - block.magnetisation).norm(), 1e-4 * moment.norm());
}
