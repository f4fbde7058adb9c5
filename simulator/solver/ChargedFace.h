#pragma once
#include "simulator/solver/Polygon.h"

#include <cmath>
#include <utility>

namespace vantor::solver {

/// A face with a charge per area that is constant or linear.
struct ChargedFace {
    Polygon polygon;
    /// A/m, in the polygon's centre; of a magnet the magnetisation along the outward normal.
    double charge = 0;
    /// A/m^2, in the polygon's plane: by how much the charge grows.
    Eigen::Vector3d gradient = Eigen::Vector3d::Zero();

    bool IsUniform() const { return gradient.isZero(0); }
    double ChargeAt(const Eigen::Vector3d& point) const { return charge + gradient.dot(point - polygon.centre); }
    /// A/m, no less than anywhere on the face.
    double Density() const { return std::abs(charge) + polygon.radius * gradient.norm(); }
};

/// A part of a face, with the charge that it has there.
inline ChargedFace PartOf(const ChargedFace& face, Polygon part) {
    const double charge = face.ChargeAt(part.centre);
    return {std::move(part), charge, face.gradient};
}

} // namespace vantor::solver
