#include "scenario/RotationReader.h"

#include <Eigen/SVD>
#include <cmath>
#include <fmt/format.h>
#include <string>

namespace kinora::scenario {
namespace {

/// How far products of axes may be from what they should be.
constexpr double axesTolerance = 1e-6;

/// Up to here a frame is taken for one that was rounded too much, and the nearest right one is what was meant.
constexpr double roundingOfPeople = 0.05;

constexpr double lengthTolerance = 1e-3;

/// Largest difference of the axes' products with each other from 1 and 0.
double OffFromOrthonormal(const Matrix& axes) {
    return (axes * axes.transpose() - Matrix::Identity()).cwiseAbs().maxCoeff();
}

/// In the sense of least squares, of axes that are right-handed.
Matrix NearestRotation(const Matrix& axes) {
    const Eigen::JacobiSVD<Matrix> svd(axes, Eigen::ComputeFullU | Eigen::ComputeFullV);
    return svd.matrixU() * svd.matrixV().transpose();
}

/// With nine decimals, to be pasted.
std::string AxesText(const Matrix& axes) {
    std::string text;
    for (int row = 0; row < 3; ++row) {
        text += row == 0 ? "[" : "], [";
        for (int column = 0; column < 3; ++column) {
            // The sum has no sign where it is 0.
            text += fmt::format("{}{}", column == 0 ? "" : ", ", std::round(axes(row, column) * 1e9) / 1e9 + 0.0);
        }
    }
    return "[" + text + "]]";
}

Matrix ReadAxes(const Node& node) {
    Matrix axes;
    for (int row = 0; row < 3; ++row) {
        axes.row(row) = node.At(static_cast<std::size_t>(row)).Triple();
    }
    // A number that is wrong has been told.
    if (!axes.allFinite()) {
        return axes;
    }
    const double off = OffFromOrthonormal(axes);
    if (off > roundingOfPeople) {
        node.Report(
            fmt::format("the axes are off by {:.3g} from being at right angles and 1 long; give three such axes, "
                        "or \"axis\" and \"angle\".",
                        off));
        return Matrix::Constant(std::nan(""));
    }
    if (axes.determinant() < 0.0) {
        node.Report("the axes are left-handed; reverse one of them, or swap two.");
        return Matrix::Constant(std::nan(""));
    }
    const Matrix nearest = NearestRotation(axes);
    if (off > axesTolerance) {
        node.Report(
            fmt::format("the axes are off by {:.3g} from being at right angles and 1 long; the nearest right ones "
                        "are {}.",
                        off, AxesText(nearest)));
    }
    return off == 0.0 ? axes : nearest;
}

} // namespace

Matrix ReadRotation(const Node& node) {
    const std::string source = node.OnlyOneOf({"angle", "axes"});
    if (source == "axes") {
        node.AllowOnly({"axes"}, "a rotation by axes");
        return ReadAxes(node.At("axes")).transpose();
    }
    if (source.empty()) {
        return Matrix::Identity();
    }
    const std::optional<Node> axis = node.Required("axis");
    if (!axis) {
        return Matrix::Identity();
    }
    return Rotation(axis->Direction(), node.At("angle").Number());
}

Quaternion ReadQuaternion(const Node& node, std::size_t first) {
    const Quaternion quaternion(node.At(first).Number(), node.At(first + 1).Number(), node.At(first + 2).Number(),
                                node.At(first + 3).Number());
    Quaternion unit = quaternion.normalized();
    const double length = quaternion.norm();
    if (length == 0.0) {
        node.Report("a quaternion must not be 0, 0, 0, 0; not turned is 1, 0, 0, 0.");
    } else if (std::fabs(length - 1.0) > lengthTolerance) {
        node.Report(
            fmt::format("the quaternion is {:.6g} long and must be 1 long; of that direction it is {:.9g}, {:.9g}, "
                        "{:.9g}, {:.9g} (w, x, y, z).",
                        length, unit.w(), unit.x(), unit.y(), unit.z()));
    }
    return unit;
}

} // namespace kinora::scenario
