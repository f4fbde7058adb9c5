#include "scenario/DesktopFrame.h"

#include <Eigen/Geometry>
#include <cmath>

namespace kinora::scenario {

IKinoraVeltrixInterface::Transform ToTransform(const std::string& name, const Pose& X_WB) {
    IKinoraVeltrixInterface::Transform transform;
    transform.name = name;
    for (int row = 0; row < 3; ++row) {
        transform.translation[row] = X_WB.p_WB_W[row];
        for (int column = 0; column < 3; ++column) {
            transform.rotation[3 * row + column] = X_WB.R_WB(column, row);
        }
    }
    return transform;
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
    const Matrix R_BD = R_WB.transpose() * DesktopAxes(R_WB);
    return std::fabs(Eigen::AngleAxisd(R_BD).angle());
}

Load ToLoad(const IKinoraVeltrixInterface::Result& result, const Matrix& R_WB) {
    constexpr double newtonMetresPerMillinewtonMetre = 1e-3;
    const Matrix R_WD = DesktopAxes(R_WB);
    const Vector force_D(result.force[0], result.force[1], result.force[2]);
    const Vector torque_D(result.torque[0], result.torque[1], result.torque[2]);
    Load load;
    load.force_W = R_WD * force_D;
    load.torque_W = newtonMetresPerMillinewtonMetre * (R_WD * torque_D);
    return load;
}

} // namespace kinora::scenario
