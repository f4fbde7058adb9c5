#pragma once
// The load that one thing exerts on another, with what is known about its error.
#include <Eigen/Core>
#include <Eigen/Geometry>
#include <cmath>

namespace vantor::solver {

constexpr double pi = 3.14159265358979323846;
/// mu0 / (4 pi), V s/(A m).
constexpr double fieldConstant = 1e-7;

/// Force and torque on a target, the torque about the origin of coordinates.
struct Wrench {
    Eigen::Vector3d force = Eigen::Vector3d::Zero();
    Eigen::Vector3d torque = Eigen::Vector3d::Zero();

    /// The force alone acting in `point`.
    static Wrench At(const Eigen::Vector3d& point, const Eigen::Vector3d& force) { return {force, point.cross(force)}; }
    Eigen::Vector3d TorqueAbout(const Eigen::Vector3d& point) const { return torque - point.cross(force); }

    Wrench& operator+=(const Wrench& other) {
        force += other.force;
        torque += other.torque;
        return *this;
    }
    friend Wrench operator-(const Wrench& a, const Wrench& b) { return {a.force - b.force, a.torque - b.torque}; }
    friend Wrench operator*(double factor, const Wrench& a) { return {factor * a.force, factor * a.torque}; }
};

/// A wrench in a magnet's axes and about their origin, here and now.
inline Wrench InSpace(const Wrench& wrench, const Eigen::Isometry3d& pose) {
    Wrench inSpace{pose.linear() * wrench.force, pose.linear() * wrench.torque};
    inSpace.torque += pose.translation().cross(inSpace.force);
    return inSpace;
}

/// A wrench on a target from a source (which feels the opposite one), and estimates of its error's norms.
struct Interaction {
    Wrench wrench;
    double forceError = 0;
    /// About the source body's centre.
    double sourceTorqueError = 0;
    /// About the target body's centre.
    double targetTorqueError = 0;
    /// The error is rounding: more points won't help.
    bool exhausted = false;

    Interaction& operator+=(const Interaction& other) {
        wrench += other.wrench;
        forceError += other.forceError;
        sourceTorqueError += other.sourceTorqueError;
        targetTorqueError += other.targetTorqueError;
        return *this;
    }
    friend Interaction operator*(double factor, Interaction a) {
        const double size = std::abs(factor);
        a.wrench = factor * a.wrench;
        a.forceError *= size;
        a.sourceTorqueError *= size;
        a.targetTorqueError *= size;
        return a;
    }
};

/// Where torques are judged: the centres of the source body and of the target body.
struct BodyCentres {
    Eigen::Vector3d source, target;
};

/// Sets the error estimates from a difference of wrenches.
inline void SetErrors(Interaction& interaction, const Wrench& difference, const BodyCentres& centres) {
    interaction.forceError = difference.force.norm();
    interaction.sourceTorqueError = difference.TorqueAbout(centres.source).norm();
    interaction.targetTorqueError = difference.TorqueAbout(centres.target).norm();
}

} // namespace vantor::solver
