#include "scenario/MassProperties.h"

namespace kinora::scenario {
namespace {

/// Of a point mass about the origin.
Matrix InertiaOfPoint(double mass, const Vector& place) {
    return mass * (place.squaredNorm() * Matrix::Identity() - place * place.transpose());
}

} // namespace

Matrix MassProperties::InertiaAbout(const Vector& p_WO_W) const {
    return inertia_W + InertiaOfPoint(mass, p_WC_W - p_WO_W);
}

MassProperties Together(const std::vector<Body>& bodies, const std::vector<std::size_t>& members) {
    std::vector<Vector> centres_W;
    centres_W.reserve(members.size());
    for (const std::size_t member : members) {
        centres_W.push_back((bodies[member].X_WB0 * Pose{bodies[member].p_BC_B}).p_WB_W);
    }
    MassProperties together;
    // Measured from one of the centres: what is at one place gets no arm by rounding.
    Vector moment_W = Vector::Zero();
    for (std::size_t i = 0; i < members.size(); ++i) {
        together.mass += bodies[members[i]].mass;
        moment_W += bodies[members[i]].mass * (centres_W[i] - centres_W.front());
    }
    if (together.mass > 0.0) {
        together.p_WC_W = centres_W.front() + moment_W / together.mass;
    }
    for (std::size_t i = 0; i < members.size(); ++i) {
        const Body& body = bodies[members[i]];
        const Matrix& R_WB = body.X_WB0.R_WB;
        together.inertia_W += R_WB * body.principalInertia_B.asDiagonal() * R_WB.transpose() +
                              InertiaOfPoint(body.mass, centres_W[i] - together.p_WC_W);
    }
    return together;
}

} // namespace kinora::scenario
