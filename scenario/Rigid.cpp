#include "scenario/Rigid.h"

#include <Eigen/Geometry>

namespace kinora::scenario {

Matrix Rotation(const Vector& unitAxis, double angle) {
    return Eigen::AngleAxisd(angle, unitAxis).toRotationMatrix();
}

} // namespace kinora::scenario
