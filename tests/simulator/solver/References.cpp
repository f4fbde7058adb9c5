#include "tests/simulator/solver/References.h"

#include "tests/simulator/solver/Constants.h"

#include <Eigen/Geometry>
#include <array>
#include <cmath>

using Eigen::Vector3d;

namespace references {
namespace {

/// coefficient * ln(r - a), where a^2 + rest = r^2; 0 where the coefficient vanishes.
double LogTerm(double coefficient, double r, double a, double rest) {
    if (coefficient == 0) {
        return 0;
    }
    return coefficient * std::log(a > 0 ? rest / (r + a) : r - a);
}

double ArcTangent(double u, double v, double w, double r) {
    return w == 0 ? 0 : std::atan(u * v / (r * w));
}

Vector3d AkounYonnetTerm(double u, double v, double w) {
    const double r = std::sqrt(u * u + v * v + w * w);
    const double angle = ArcTangent(u, v, w, r);
    const auto logU = [&](double coefficient) { return LogTerm(coefficient, r, u, v * v + w * w); };
    const auto logV = [&](double coefficient) { return LogTerm(coefficient, r, v, u * u + w * w); };
    return {logU((v * v - w * w) / 2) + logV(u * v) + v * w * angle + r * u / 2,
            logV((u * u - w * w) / 2) + logU(u * v) + u * w * angle + r * v / 2,
            logU(-u * w) + logV(-v * w) + u * v * angle - r * w};
}

/// Points and weights of the 8-point Gauss rule on [-1, 1].
struct GaussPoint {
    double at, weight;
};
constexpr std::array<GaussPoint, 8> gauss{{{-0.96028985649753623168, 0.10122853629037625915},
                                           {-0.79666647741362673959, 0.22238103445337447054},
                                           {-0.52553240991632898582, 0.31370664587788728734},
                                           {-0.18343464249564980494, 0.36268378337836198297},
                                           {0.18343464249564980494, 0.36268378337836198297},
                                           {0.52553240991632898582, 0.31370664587788728734},
                                           {0.79666647741362673959, 0.22238103445337447054},
                                           {0.96028985649753623168, 0.10122853629037625915}}};

Load GaussOver(const std::vector<Sheet>& source, const Sheet& part) {
    Load sum;
    const double quarterArea = part.halfU.norm() * part.halfV.norm();
    for (const GaussPoint& u : gauss) {
        for (const GaussPoint& v : gauss) {
            const Vector3d point = part.centre + u.at * part.halfU + v.at * part.halfV;
            const Vector3d force = mu0 * part.charge * quarterArea * u.weight * v.weight * FieldOf(source, point);
            sum += {force, point.cross(force)};
        }
    }
    return sum;
}

Load AdaptiveOver(const std::vector<Sheet>& source, const Sheet& sheet, const Load& whole, double allowed, int depth) {
    std::array<Load, 4> parts;
    std::array<Sheet, 4> quarters;
    Load sum;
    for (std::size_t i = 0; i < 4; ++i) {
        quarters[i] = {sheet.centre + (i % 2 ? 0.5 : -0.5) * sheet.halfU + (i / 2 ? 0.5 : -0.5) * sheet.halfV,
                       sheet.halfU / 2, sheet.halfV / 2, sheet.charge};
        parts[i] = GaussOver(source, quarters[i]);
        sum += parts[i];
    }
    const double arm = sheet.centre.norm() + sheet.halfU.norm() + sheet.halfV.norm();
    const double change = (sum.force - whole.force).norm() + (sum.torque - whole.torque).norm() / arm;
    if (change <= allowed || depth == 0) {
        return sum;
    }
    sum = Load();
    for (std::size_t i = 0; i < 4; ++i) {
        sum += AdaptiveOver(source, quarters[i], parts[i], allowed / 2, depth - 1);
    }
    return sum;
}

/// A side of a prism as a current sheet: currents run from `from` to `to`, at all heights within half of `height`.
struct CurrentSheet {
    Vector3d from, to;
    double height, current;
};

std::vector<CurrentSheet> CurrentsOf(const shapes::Prism& prism) {
    std::vector<CurrentSheet> sheets;
    const auto corner = [&](double radius, int i) -> Vector3d {
        const double angle = 2 * pi * i / prism.sides;
        return prism.centre + radius * Vector3d(std::cos(angle), std::sin(angle), 0);
    };
    for (int i = 0; i < prism.sides; ++i) {
        sheets.push_back({corner(prism.radius, i), corner(prism.radius, i + 1), prism.height, prism.magnetisation.z()});
        if (prism.innerRadius > 0) {
            sheets.push_back({corner(prism.innerRadius, i + 1), corner(prism.innerRadius, i), prism.height,
                              prism.magnetisation.z()});
        }
    }
    return sheets;
}

/// H of a straight unit current from p to q.
Vector3d FilamentField(const Vector3d& p, const Vector3d& q, const Vector3d& point) {
    const Vector3d a = point - p, b = point - q;
    const double la = a.norm(), lb = b.norm();
    return a.cross(b) * (la + lb) / (4 * pi * la * lb * (la * lb + a.dot(b)));
}

Vector3d FieldOf(const std::vector<CurrentSheet>& sheets, const Vector3d& point) {
    Vector3d field = Vector3d::Zero();
    for (const CurrentSheet& sheet : sheets) {
        for (const GaussPoint& z : gauss) {
            const Vector3d lift(0, 0, z.at * sheet.height / 2);
            field +=
                sheet.current * z.weight * sheet.height / 2 * FilamentField(sheet.from + lift, sheet.to + lift, point);
        }
    }
    return field;
}

} // namespace

Load& Load::operator+=(const Load& other) {
    force += other.force;
    torque += other.torque;
    return *this;
}

Vector3d AkounYonnetForce(const shapes::Block& source, const shapes::Block& target) {
    const Vector3d offset = target.centre - source.centre;
    Vector3d sum = Vector3d::Zero();
    for (int bits = 0; bits < 64; ++bits) {
        const auto sign = [&](int bit) { return (bits >> bit & 1) ? -1.0 : 1.0; };
        Vector3d at;
        for (int axis = 0; axis < 3; ++axis) {
            at[axis] =
                offset[axis] + sign(2 * axis) * target.size[axis] / 2 - sign(2 * axis + 1) * source.size[axis] / 2;
        }
        sum += sign(0) * sign(1) * sign(2) * sign(3) * sign(4) * sign(5) * AkounYonnetTerm(at.x(), at.y(), at.z());
    }
    return mu0 / (4 * pi) * source.magnetisation.z() * target.magnetisation.z() * sum;
}

Vector3d FieldOf(const Sheet& sheet, const Vector3d& point) {
    const double halfU = sheet.halfU.norm(), halfV = sheet.halfV.norm();
    const Vector3d u = sheet.halfU / halfU, v = sheet.halfV / halfV, normal = u.cross(v);
    const Vector3d offset = point - sheet.centre;
    const double z = offset.dot(normal);
    Vector3d sum = Vector3d::Zero();
    for (const double i : {-1.0, 1.0}) {
        for (const double j : {-1.0, 1.0}) {
            const double x = offset.dot(u) - i * halfU, y = offset.dot(v) - j * halfV;
            const double r = std::sqrt(x * x + y * y + z * z);
            const double logX = std::log(x < 0 ? (y * y + z * z) / (r - x) : r + x);
            const double logY = std::log(y < 0 ? (x * x + z * z) / (r - y) : r + y);
            const double angle = z == 0 ? 0 : std::atan(x * y / (z * r));
            sum += i * j * (-logY * u - logX * v + angle * normal);
        }
    }
    return sheet.charge / (4 * pi) * sum;
}

Vector3d FieldOf(const std::vector<Sheet>& sheets, const Vector3d& point) {
    Vector3d sum = Vector3d::Zero();
    for (const Sheet& sheet : sheets) {
        sum += FieldOf(sheet, point);
    }
    return sum;
}

std::vector<Sheet> SheetsOf(const shapes::Block& block) {
    std::vector<Sheet> sheets;
    for (int axis = 0; axis < 3; ++axis) {
        for (const double side : {-1.0, 1.0}) {
            const auto half = [&](int i) -> Vector3d { return block.size[i % 3] / 2 * block.rotation.col(i % 3); };
            const double charge = side * block.magnetisation.dot(block.rotation.col(axis));
            if (std::abs(charge) > 1e-9 * block.magnetisation.norm()) {
                sheets.push_back({block.centre + side * half(axis), half(axis + 1), half(axis + 2), charge});
            }
        }
    }
    return sheets;
}

std::vector<Sheet> SheetsOf(const shapes::Prism& prism) {
    std::vector<Sheet> sheets;
    const auto addSide = [&](double radius, double side, int i) {
        const double angle = 2 * pi * (i + 0.5) / prism.sides;
        const Vector3d out(std::cos(angle), std::sin(angle), 0), along(-out.y(), out.x(), 0);
        sheets.push_back({prism.centre + radius * std::cos(pi / prism.sides) * out,
                          radius * std::sin(pi / prism.sides) * along, Vector3d(0, 0, prism.height / 2),
                          side * prism.magnetisation.dot(out)});
    };
    for (int i = 0; i < prism.sides; ++i) {
        addSide(prism.radius, 1, i);
        if (prism.innerRadius > 0) {
            addSide(prism.innerRadius, -1, i);
        }
    }
    return sheets;
}

std::vector<Sheet> SheetsOf(const std::vector<shapes::Block>& blocks) {
    std::vector<Sheet> sheets;
    for (const shapes::Block& block : blocks) {
        for (const Sheet& sheet : SheetsOf(block)) {
            sheets.push_back(sheet);
        }
    }
    return sheets;
}

Load SheetLoad(const std::vector<Sheet>& source, const std::vector<Sheet>& target, double accuracy) {
    std::vector<Load> first;
    double scale = 0;
    for (const Sheet& sheet : target) {
        first.push_back(GaussOver(source, sheet));
        scale += first.back().force.norm();
    }
    Load sum;
    for (std::size_t i = 0; i < target.size(); ++i) {
        sum += AdaptiveOver(source, target[i], first[i], accuracy * scale, 12);
    }
    return sum;
}

Load CurrentLoad(const shapes::Prism& source, const shapes::Prism& target) {
    const std::vector<CurrentSheet> currents = CurrentsOf(source);
    Load sum;
    for (const CurrentSheet& sheet : CurrentsOf(target)) {
        for (const GaussPoint& z : gauss) {
            for (const GaussPoint& t : gauss) {
                const Vector3d along = (sheet.to - sheet.from) / 2;
                const Vector3d point =
                    (sheet.from + sheet.to) / 2 + t.at * along + Vector3d(0, 0, z.at * sheet.height / 2);
                const Vector3d current = sheet.current * sheet.height / 2 * z.weight * t.weight * along;
                const Vector3d force = current.cross(mu0 * FieldOf(currents, point));
                sum += {force, point.cross(force)};
            }
        }
    }
    return sum;
}

Load DipoleLoad(const Vector3d& sourcePosition, const Vector3d& sourceMoment, const Vector3d& targetPosition,
                const Vector3d& targetMoment) {
    const Vector3d r = targetPosition - sourcePosition;
    const double d = r.norm();
    const double ms = sourceMoment.dot(r), mt = targetMoment.dot(r);
    Load load;
    load.force =
        3 * mu0 / (4 * pi * std::pow(d, 5)) *
        (ms * targetMoment + mt * sourceMoment + sourceMoment.dot(targetMoment) * r - 5 * ms * mt / (d * d) * r);
    const Vector3d fluxDensity = mu0 / (4 * pi) * (3 * ms / std::pow(d, 5) * r - sourceMoment / (d * d * d));
    load.torque = targetMoment.cross(fluxDensity) + targetPosition.cross(load.force);
    return load;
}

} // namespace references
