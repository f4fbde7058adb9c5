#include "report/core/Frames.h"

#include <algorithm>
#include <cmath>

namespace kinora::report {

std::array<double, 3> LoggedAngles(const scenario::Matrix& axes) {
    const auto rows = axes.transpose(); // a view, not a copy
    if (rows(0, 0) == 0.0 && rows(1, 0) == 0.0)
        return {0.0, 1.5707963267948966, std::atan2(rows(0, 1), rows(1, 1))};
    return {std::atan2(rows(1, 0), rows(0, 0)), std::asin(std::clamp(-rows(2, 0), -1.0, 1.0)),
            std::atan2(rows(2, 1), rows(2, 2))};
}

scenario::Matrix AxesFromAngles(double phi, double theta, double psi) {
    const scenario::Matrix rows = scenario::Rotation(scenario::Vector::UnitZ(), phi) *
                                  scenario::Rotation(scenario::Vector::UnitY(), theta) *
                                  scenario::Rotation(scenario::Vector::UnitX(), psi);
    return rows.transpose();
}

} // namespace kinora::report
