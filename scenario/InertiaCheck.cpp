#include "scenario/InertiaCheck.h"

#include "scenario/MassProperties.h"

#include <Eigen/Eigenvalues>
#include <cmath>
#include <fmt/format.h>

namespace kinora::scenario {
namespace {

/// A free coordinate without inertia has no equation of motion.
/// @param node  of the free motion
void CheckCoordinate(const Node& node, const Joint& joint, const Coordinate& coordinate,
                     const std::vector<Body>& bodies) {
    const bool isSlide = coordinate.kind == Coordinate::Kind::Slide;
    const MassProperties together = Together(bodies, joint.bodies);
    const double ofBodies =
        isSlide ? together.mass : joint.axis_W.dot(together.InertiaAbout(joint.p_WJ_W) * joint.axis_W);
    if (std::get<FreeMotion>(coordinate.motion).addedInertia + ofBodies <= 0.0) {
        node.Report(fmt::format("nothing on this joint has {}; give it to the bodies, or give \"inertia\" here.",
                                isSlide ? "a mass" : "a moment of inertia"));
    }
}

void CheckCoordinates(const Node& free, const Joint& joint, const std::vector<Body>& bodies) {
    for (const Coordinate& coordinate : joint.coordinates) {
        if (!coordinate.IsFree()) {
            continue;
        }
        if (joint.type != JointType::Cylinder) {
            CheckCoordinate(free, joint, coordinate, bodies);
        } else if (free.Has(NameOf(coordinate.kind))) {
            CheckCoordinate(free.At(NameOf(coordinate.kind)), joint, coordinate, bodies);
        }
    }
}

/// Of a ball or free joint: its principal moments, about the point or the centre of mass.
void CheckPrincipalMoments(const Node& free, const Joint& joint, const std::vector<Body>& bodies) {
    const MassProperties together = Together(bodies, joint.bodies);
    if (joint.type == JointType::Free && together.mass <= 0.0) {
        free.Report("nothing on this joint has a mass; give it to the bodies.");
    }
    const Matrix inertia_W = joint.type == JointType::Ball ? together.InertiaAbout(joint.p_WJ_W) : together.inertia_W;
    // A number that is wrong has been told.
    if (!inertia_W.allFinite()) {
        return;
    }
    const Eigen::SelfAdjointEigenSolver<Matrix> principal(inertia_W);
    const double smallest = principal.eigenvalues()[0];
    const double largest = principal.eigenvalues()[2];
    // What is left of 0 by rounding.
    constexpr double nothing = 1e-12;
    if (largest <= 0.0) {
        free.Report("nothing on this joint has a moment of inertia; give it to the bodies.");
    } else if (smallest <= nothing * largest) {
        Vector axis_W = principal.eigenvectors().col(0);
        // Of an axis and its opposite, the one whose largest component is positive; and no rounding, nor a minus of 0.
        Eigen::Index longest = 0;
        axis_W.cwiseAbs().maxCoeff(&longest);
        axis_W *= std::copysign(1.0, axis_W[longest]);
        const auto shown = [&axis_W](int i) { return std::round(axis_W[i] * 1e3) / 1e3 + 0.0; };
        free.Report(fmt::format("nothing on this joint has a moment of inertia about {}, {}, {} (in global axes); give "
                                "it to the bodies.",
                                shown(0), shown(1), shown(2)));
    }
}

/// Bodies that turn about every axis need moments of inertia that a rigid body can have.
/// @param node  of the body
void CheckTriangle(const Node& node, const Body& body, const Joint& joint) {
    const Vector& moments = body.principalInertia_B;
    if (!moments.allFinite()) {
        return;
    }
    constexpr double slack = 1e-9;
    const double largest = moments.maxCoeff();
    const double others = moments.sum() - largest;
    if (largest > others * (1.0 + slack)) {
        node.At("inertia").Report(fmt::format(
            "the largest moment of inertia, {:.6g}, is more than the sum of the two others, {:.6g}: no rigid "
            "body is like that, and joint \"{}\" turns this one about every axis; correct them.",
            largest, others, joint.name));
    }
}

void CheckJoint(const Node& root, const Node& node, const Joint& joint, const std::vector<Body>& bodies) {
    if (!joint.HasAxis()) {
        for (const std::size_t body : joint.bodies) {
            CheckTriangle(root.At("bodies").At(body), bodies[body], joint);
        }
    }
    // What a body that there is not would have is not known.
    if (!node.Has("free") || joint.bodies.size() < node.At("bodies").Size()) {
        return;
    }
    if (joint.HasAxis()) {
        CheckCoordinates(node.At("free"), joint, bodies);
    } else {
        CheckPrincipalMoments(node.At("free"), joint, bodies);
    }
}

} // namespace

void CheckInertia(const Node& root, const Scenario& scenario) {
    for (std::size_t i = 0; i < scenario.joints.size(); ++i) {
        CheckJoint(root, root.At("joints").At(i), scenario.joints[i], scenario.bodies);
    }
}

} // namespace kinora::scenario
