#include "tests/simulator/solver/IronReferences.h"

#include "tests/simulator/solver/Constants.h"

#include <Eigen/Geometry>
#include <cmath>

using Eigen::Vector3d;

namespace references {
namespace {
/// Of multipoles; the last ones count for nothing where the distance is 1.2 radii or more.
constexpr int orders = 200;

/// What a sphere of iron makes of a multipole field of order n, relative to one of infinite permeability.
double Response(int n, double permeability) {
    return n * (permeability - 1) / (n * (permeability + 1) + 1);
}

} // namespace

double SphereMagnetisation(double permeability) {
    return 3 * (permeability - 1) / (permeability + 2);
}

double ShellField(double permeability, double innerOverOuterRadius) {
    const double mu = permeability;
    return 9 * mu / ((2 * mu + 1) * (mu + 2) - 2 * std::pow(innerOverOuterRadius, 3) * (mu - 1) * (mu - 1));
}

double MagnetSphereMagnetisation(double permeability) {
    return 3 / (permeability + 2);
}

std::vector<Sheet> ImagesOf(std::vector<Sheet> sheets, double top, double permeability) {
    for (Sheet& sheet : sheets) {
        sheet.centre.z() = 2 * top - sheet.centre.z();
        sheet.halfU.z() = -sheet.halfU.z();
        sheet.halfV.z() = -sheet.halfV.z();
        sheet.charge *= -(permeability - 1) / (permeability + 1);
    }
    return sheets;
}

double SphereAttraction(DipoleDirection direction, double moment, double radius, double distance, double permeability) {
    double sum = 0;
    for (int n = 1; n <= orders; ++n) {
        const double factor =
            direction == DipoleDirection::Towards ? (n + 1.0) * (n + 1.0) * (n + 2.0) : n * (n + 1.0) * (n + 2.0) / 2;
        sum += Response(n, permeability) * factor * std::pow(radius / distance, 2 * n + 1);
    }
    return mu0 * moment * moment / (4 * pi * std::pow(distance, 4)) * sum;
}

double SphereEnergy(const std::vector<PointCharge>& charges, double radius, double permeability) {
    double sum = 0;
    for (const PointCharge& one : charges) {
        for (const PointCharge& other : charges) {
            const double product = one.place.norm() * other.place.norm();
            const double cosine = one.place.dot(other.place) / product;
            // Legendre's polynomials of orders n and n - 1.
            double current = cosine, before = 1;
            for (int n = 1; n <= orders; ++n) {
                sum -= one.charge * other.charge * Response(n, permeability) * radius / product *
                       std::pow(radius * radius / product, n) * current;
                const double next = ((2 * n + 1) * cosine * current - n * before) / (n + 1);
                before = current;
                current = next;
            }
        }
    }
    return mu0 / (8 * pi) * sum;
}

Vector3d MomentWithin(const std::function<Vector3d(const Vector3d&)>& field, const Vector3d& centre, double radius) {
    const double golden = (1 + std::sqrt(5.0)) / 2;
    Vector3d sum = Vector3d::Zero();
    for (int axis = 0; axis < 3; ++axis) {
        for (const double one : {-1.0, 1.0}) {
            for (const double other : {-golden, golden}) {
                Vector3d corner;
                corner[axis] = 0;
                corner[(axis + 1) % 3] = one;
                corner[(axis + 2) % 3] = other;
                corner.normalize();
                sum += field(centre + radius * corner).dot(corner) * corner;
            }
        }
    }
    // The mean of (H.r) r of a dipole m is 2/3 of m / (4 pi radius^3).
    return 6 * pi * radius * radius * radius * sum / 12;
}

} // namespace references
