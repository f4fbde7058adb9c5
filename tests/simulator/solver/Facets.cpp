#include "tests/simulator/solver/Facets.h"

#include <algorithm>
#include <cmath>
#include <queue>

using Eigen::Vector3d;

namespace references {
namespace {

constexpr double fieldConstant = 1e-7; // mu0 / (4 pi)

/// Radon's rule of degree 5: the centroid, and two groups of three points.
struct TrianglePoint {
    double a, b, c, weight;
};
const double root = std::sqrt(15.0);
const double near1 = (6 - root) / 21, near2 = (6 + root) / 21;
const double weight1 = (155 - root) / 1200, weight2 = (155 + root) / 1200;
const std::array<TrianglePoint, 7> radon{{{1.0 / 3, 1.0 / 3, 1.0 / 3, 9.0 / 40},
                                          {near1, near1, 1 - 2 * near1, weight1},
                                          {near1, 1 - 2 * near1, near1, weight1},
                                          {1 - 2 * near1, near1, near1, weight1},
                                          {near2, near2, 1 - 2 * near2, weight2},
                                          {near2, 1 - 2 * near2, near2, weight2},
                                          {1 - 2 * near2, near2, near2, weight2}}};

/// What is integrated over a target: the force density at its points, and torques about a point.
class Integrand {
public:
    Integrand(const std::vector<Facet>& source, Model model, Vector3d centre)
        : m_source(source), m_model(model), m_centre(std::move(centre)) {}

    Load Over(const Facet& facet) const {
        Load sum;
        for (const TrianglePoint& at : radon) {
            const Vector3d point = at.a * facet.corners[0] + at.b * facet.corners[1] + at.c * facet.corners[2];
            const Vector3d force = fieldConstant * at.weight * facet.area * Density(facet, point);
            sum += {force, (point - m_centre).cross(force)};
        }
        return sum;
    }

private:
    Vector3d Density(const Facet& facet, const Vector3d& point) const {
        Vector3d field = Vector3d::Zero();
        if (m_model == Model::Charges) {
            for (const Facet& source : m_source) {
                field += source.charge * UnitFieldOf(source, point);
            }
            return facet.charge * field;
        }
        for (const Facet& source : m_source) {
            field += source.current.cross(UnitFieldOf(source, point));
        }
        return facet.current.cross(field);
    }

    const std::vector<Facet>& m_source;
    Model m_model;
    Vector3d m_centre;
};

/// A piece of a target and its load, as the sum over its quarters.
struct Piece {
    std::array<Facet, 4> quarters;
    std::array<Load, 4> loads;
    Load load;
    /// Change by quartering, N; torques count by the target's size.
    double error = 0;
    bool operator<(const Piece& other) const { return error < other.error; }
};

Piece Quartered(const Facet& facet, const Load& whole, const Integrand& integrand, double size) {
    const auto& [a, b, c] = facet.corners;
    const Vector3d ab = (a + b) / 2, bc = (b + c) / 2, ca = (c + a) / 2;
    const std::array<std::array<Vector3d, 3>, 4> corners{{{a, ab, ca}, {ab, b, bc}, {ca, bc, c}, {ab, bc, ca}}};
    Piece piece;
    for (std::size_t i = 0; i < 4; ++i) {
        piece.quarters[i] = facet;
        piece.quarters[i].corners = corners[i];
        piece.quarters[i].area = facet.area / 4;
        piece.loads[i] = integrand.Over(piece.quarters[i]);
        piece.load += piece.loads[i];
    }
    piece.error = (piece.load.force - whole.force).norm() + (piece.load.torque - whole.torque).norm() / size;
    return piece;
}

Eigen::AlignedBox3d BoxOf(const std::vector<Facet>& facets) {
    Eigen::AlignedBox3d box;
    for (const Facet& facet : facets) {
        for (const Vector3d& corner : facet.corners) {
            box.extend(corner);
        }
    }
    return box;
}

} // namespace

std::vector<Facet> FacetsOf(const vantor::solver::Body& body, Model model) {
    std::vector<Facet> facets;
    for (const vantor::solver::Magnet& magnet : body.magnets) {
        const Vector3d magnetisation = magnet.pose.linear() * magnet.magnetisation;
        for (const auto& triangle : magnet.mesh->triangles) {
            Facet facet;
            std::transform(triangle.begin(), triangle.end(), facet.corners.begin(), [&magnet](int corner) {
                return Vector3d(magnet.pose * magnet.mesh->vertices[static_cast<std::size_t>(corner)]);
            });
            const Vector3d across =
                (facet.corners[1] - facet.corners[0]).cross(facet.corners[2] - facet.corners[0]) / 2;
            facet.area = across.norm();
            facet.normal = across.normalized();
            facet.charge = magnetisation.dot(facet.normal);
            facet.current = magnetisation.cross(facet.normal);
            const double strength = model == Model::Charges ? std::abs(facet.charge) : facet.current.norm();
            if (strength > 1e-9 * magnetisation.norm()) {
                facets.push_back(facet);
            }
        }
    }
    return facets;
}

Vector3d UnitFieldOf(const Facet& facet, const Vector3d& point) {
    const std::array<Vector3d, 3> to{facet.corners[0] - point, facet.corners[1] - point, facet.corners[2] - point};
    const std::array<double, 3> distance{to[0].norm(), to[1].norm(), to[2].norm()};
    Vector3d field = Vector3d::Zero();
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t next = (i + 1) % 3;
        const Vector3d edge = facet.corners[next] - facet.corners[i];
        const double length = edge.norm(), sum = distance[i] + distance[next];
        field += std::log((sum + length) / (sum - length)) / length * edge.cross(facet.normal);
    }
    // The solid angle, by the formula of A. Van Oosterom and J. Strackee, IEEE Trans. Biomed. Eng. 30 (1983) 125-126.
    const double volume = to[0].dot(to[1].cross(to[2]));
    const double angle =
        2 * std::atan2(volume, distance[0] * distance[1] * distance[2] + to[0].dot(to[1]) * distance[2] +
                                   to[1].dot(to[2]) * distance[0] + to[2].dot(to[0]) * distance[1]);
    return field - angle * facet.normal;
}

Load FacetLoad(const std::vector<Facet>& source, const std::vector<Facet>& target, Model model, double accuracy) {
    const Eigen::AlignedBox3d box = BoxOf(target);
    const double size = box.diagonal().norm() / 2;
    const Integrand integrand(source, model, box.center());
    std::priority_queue<Piece> pieces;
    Load sum;
    double error = 0;
    const auto add = [&](const Facet& facet, const Load& whole) {
        Piece piece = Quartered(facet, whole, integrand, size);
        sum += piece.load;
        error += piece.error;
        pieces.push(std::move(piece));
    };
    for (const Facet& facet : target) {
        add(facet, integrand.Over(facet));
    }
    while (error > accuracy * sum.force.norm()) {
        const Piece worst = pieces.top();
        pieces.pop();
        sum += {-worst.load.force, -worst.load.torque};
        error -= worst.error;
        for (std::size_t i = 0; i < 4; ++i) {
            add(worst.quarters[i], worst.loads[i]);
        }
    }
    return {sum.force, sum.torque + box.center().cross(sum.force)};
}

} // namespace references
