#include "scenario/Rigid.h"

#include <Eigen/Geometry>
#include <cmath>

namespace kinora::scenario {

Matrix Rotation(const Vector& unitAxis, double angle) {
    return Eigen::AngleAxisd(angle, unitAxis).toRotationMatrix();
}

IKinoraVeltrixInterface::Transform ToTransform(const std::string& name, const Pose& pose) {
    IKinoraVeltrixInterface::Transform transform;
    transform.name = name;
    for (int row = 0; row < 3; ++row) {
        transform.translation[row] = pose.position[row];
        for (int column = 0; column < 3; ++column)
            transform.rotation[3 * row + column] = pose.axes(column, row);
    }
    return transform;
}

Matrix DesktopAxes(const Matrix& axes) {
    const auto rows = axes.transpose(); // a view, not a copy
    double phi = 0.0;
    double theta = 1.5707963267948966;
    double psi = 0.0;
    if (rows(0, 0) == 0.0 && rows(1, 0) == 0.0) {
        psi = std::atan2(rows(0, 1), rows(1, 1));
    } else {
        phi = std::atan2(rows(1, 0), rows(0, 0));
        // Rounding may carry the element past 1.
        theta = std::asin(std::fmax(-1.0, std::fmin(1.0, -rows(2, 0))));
        psi = std::atan2(rows(2, 1), rows(2, 2));
    }
    const Matrix frameRows =
        Rotation(Vector::UnitZ(), theta) * Rotation(Vector::UnitY(), phi) * Rotation(Vector::UnitX(), psi);
    return frameRows.transpose();
}

double FrameDeviation(const Matrix& axes) {
    return std::fabs(Eigen::AngleAxisd(Matrix(axes.transpose() * DesktopAxes(axes))).angle());
}

Load ToLoad(const IKinoraVeltrixInterface::Result& result, const Matrix& axes) {
    constexpr double newtonMetresPerMillinewtonMetre = 1e-3;
    const Matrix frame = DesktopAxes(axes);
    Load load;
    load.force = frame * Vector(result.force[0], result.force[1], result.force[2]);
    load.torque =
        newtonMetresPerMillinewtonMetre * (frame * Vector(result.torque[0], result.torque[1], result.torque[2]));
    return load;
}

} // namespace kinora::scenario
