#include "scenario/DesktopFrame.h"

#include "interface/KinoraVeltrixOrientation.h"

#include <Eigen/Geometry>
#include <cmath>

namespace kinora::scenario {

namespace {

/// Writes R * v over v. Without a turn every bit stays, that of a negative zero included.
void Turn(const Matrix& R, double (&components)[3]) {
    if (R == Matrix::Identity()) {
        return;
    }
    Eigen::Map<Vector> vector(components);
    vector = R * vector; // through a copy
}

} // namespace

IKinoraVeltrixInterface::Transform DrawnTransform(const std::string& name, const Pose& X_WB0) {
    IKinoraVeltrixInterface::Transform transform;
    transform.name = name;
    Eigen::Map<Vector>(transform.translation) = X_WB0.p_WB_W;
    return transform;
}

IKinoraVeltrixInterface::Transform ToTransform(const std::string& name, const Pose& X_WB, const Matrix& R_WB0) {
    IKinoraVeltrixInterface::Transform transform = DrawnTransform(name, X_WB);
    Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>> rotation(transform.rotation);
    rotation = R_WB0 * X_WB.R_WB.transpose(); // R_DW
    KinoraVeltrixRotationFor(transform.rotation, transform.rotation);
    return transform;
}

IKinoraVeltrixInterface::Material ToDesktopAxes(const IKinoraVeltrixInterface::Material& material_B,
                                                const Matrix& R_WB0) {
    IKinoraVeltrixInterface::Material material_D = material_B;
    Turn(R_WB0, material_D.coercivityDirection);
    return material_D;
}

IKinoraVeltrixInterface::Result ToBodyAxes(const IKinoraVeltrixInterface::Result& result_D, const Matrix& R_WB0) {
    IKinoraVeltrixInterface::Result result_B = result_D;
    const Matrix R_BD = R_WB0.transpose();
    Turn(R_BD, result_B.force);
    Turn(R_BD, result_B.torque);
    return result_B;
}

Angles AnglesOf(const Matrix& R_WB) {
    const auto R_BW = R_WB.transpose(); // a view, not a copy
    if (R_BW(0, 0) == 0.0 && R_BW(1, 0) == 0.0) {
        return {0.0, 1.5707963267948966, std::atan2(R_BW(0, 1), R_BW(1, 1))};
    }
    // Rounding may carry the element past 1.
    return {std::atan2(R_BW(1, 0), R_BW(0, 0)), std::asin(std::fmax(-1.0, std::fmin(1.0, -R_BW(2, 0)))),
            std::atan2(R_BW(2, 1), R_BW(2, 2))};
}

Matrix FromAngles(const Angles& angles) {
    const Matrix R_BW = Rotation(Vector::UnitZ(), angles.phi) * Rotation(Vector::UnitY(), angles.theta) *
                        Rotation(Vector::UnitX(), angles.psi);
    return R_BW.transpose();
}

Matrix DesktopAxes(const Matrix& R_WB) {
    const Angles angles = AnglesOf(R_WB);
    return FromAngles({angles.theta, angles.phi, angles.psi});
}

double FrameDeviation(const Matrix& R_WB) {
    const Matrix R_BF = R_WB.transpose() * DesktopAxes(R_WB);
    return std::fabs(Eigen::AngleAxisd(R_BF).angle());
}

Load ToLoad(const IKinoraVeltrixInterface::Result& result_B, const Matrix& R_WB) {
    constexpr double newtonMetresPerMillinewtonMetre = 1e-3;
    Load load;
    load.force_W = R_WB * Eigen::Map<const Vector>(result_B.force);
    load.torque_W = newtonMetresPerMillinewtonMetre * (R_WB * Eigen::Map<const Vector>(result_B.torque));
    return load;
}

} // namespace kinora::scenario
