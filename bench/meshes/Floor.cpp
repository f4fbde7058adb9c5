#include "bench/meshes/Floor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

using Eigen::Vector3d;

namespace {

constexpr double nearSizes = 2;

} // namespace

Floor::Floor(const std::vector<vantor::solver::Body>& bodies) {
    for (std::size_t body = 0; body < bodies.size(); ++body) {
        for (const references::Facet& facet : references::FacetsOf(bodies[body], references::Model::Charges)) {
            const auto& [a, b, c] = facet.corners;
            const double longest = std::max({(b - a).norm(), (c - b).norm(), (a - c).norm()});
            m_triangles.push_back({body, facet, (a + b + c) / 3, longest});
        }
    }
    FindPairs();
}

/// Triangles sorted into cubes as wide as the farthest near pair, so that only neighbouring cubes have to be looked at.
void Floor::FindPairs() {
    double reach = 0;
    for (const Triangle& triangle : m_triangles) {
        reach = std::max(reach, nearSizes * triangle.size);
    }
    std::map<std::array<int, 3>, std::vector<std::size_t>> cubes;
    const auto cubeOf = [reach](const Vector3d& point) {
        const auto number = [reach](double x) { return static_cast<int>(std::floor(x / reach)); };
        return std::array<int, 3>{number(point.x()), number(point.y()), number(point.z())};
    };
    for (std::size_t second = 0; second < m_triangles.size(); ++second) {
        const Triangle& to = m_triangles[second];
        const auto [x, y, z] = cubeOf(to.middle);
        for (int i = 0; i < 27; ++i) {
            const auto cube = cubes.find({x + i % 3 - 1, y + i / 3 % 3 - 1, z + i / 9 - 1});
            if (cube == cubes.end()) {
                continue;
            }
            for (const std::size_t first : cube->second) {
                const Triangle& from = m_triangles[first];
                if (from.body != to.body &&
                    (from.middle - to.middle).norm() <= nearSizes * std::max(from.size, to.size)) {
                    m_pairs.emplace_back(first, second);
                }
            }
        }
        cubes[{x, y, z}].push_back(second);
    }
}

Vector3d Floor::Evaluate() const {
    Vector3d sum = Vector3d::Zero();
    for (const auto& [first, second] : m_pairs) {
        sum += references::UnitFieldOf(m_triangles[first].facet, m_triangles[second].middle);
    }
    return sum;
}
