#include "simulator/solver/FacedSolid.h"

#include "simulator/solver/ClosedMesh.h"
#include "simulator/solver/PreparedMagnet.h"

#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// Of the larger solid's radius: well above the rounding of poses and of coordinates in single precision.
constexpr double contactTolerance = 1e-7;
/// Radians between the planes of faces that may lie on one another; with their distance small facets may be that far
/// askew.
constexpr double parallelTolerance = 1e-4;

/// A component of a normal that few faces of a machine part have in common unless they are parallel.
double KeyOf(const Vector3d& normal) {
    return normal.dot(Vector3d(0.7548776662466927, 0.5698402909980532, 0.3247179572447460));
}

Eigen::AlignedBox3d BoxOf(const Polygon& polygon) {
    Eigen::AlignedBox3d box;
    for (const Edge& edge : polygon.edges) {
        box.extend(edge.start);
    }
    return box;
}

void Check(const Solid& solid) {
    CheckVertices(*solid.mesh, solid.label);
    if (!solid.pose.matrix().allFinite()) {
        throw SolveError("The pose of " + solid.label + " is not finite; check the placement of the body.");
    }
    CheckClosed(MomentsOf(*solid.mesh, BoxOf(*solid.mesh).center()), solid.label);
}

} // namespace

FacedSolid::FacedSolid(const Solid& solid) : m_solid(&solid) {
    Check(solid);
    for (const Polygon& polygon : PolygonsOf(*solid.mesh)) {
        Polygon posed = Posed(solid.pose, polygon);
        const Eigen::AlignedBox3d box = BoxOf(posed);
        m_box.extend(box);
        m_byNormal.push_back({KeyOf(posed.normal), m_faces.size()});
        m_faces.push_back({posed, box, {posed}, {}});
    }
    std::sort(m_byNormal.begin(), m_byNormal.end());
}

const SurfaceTree& FacedSolid::Surface() const {
    if (!m_surface) {
        m_surface = std::make_unique<const SurfaceTree>(*m_solid->mesh);
    }
    return *m_surface;
}

std::vector<std::size_t> FacedSolid::FacesAlong(const Vector3d& direction) const {
    const double key = KeyOf(direction);
    std::vector<std::size_t> faces;
    auto face =
        std::lower_bound(m_byNormal.begin(), m_byNormal.end(), std::make_pair(key - parallelTolerance, std::size_t(0)));
    for (; face != m_byNormal.end() && face->first <= key + parallelTolerance; ++face) {
        if ((m_faces[face->second].whole.normal - direction).squaredNorm() <= parallelTolerance * parallelTolerance) {
            faces.push_back(face->second);
        }
    }
    std::sort(faces.begin(), faces.end());
    return faces;
}

double ContactTolerance(const FacedSolid& a, const FacedSolid& b) {
    return contactTolerance * std::max(a.Box().diagonal().norm(), b.Box().diagonal().norm()) / 2;
}

bool LieInOnePlane(const Polygon& a, const Polygon& b, double tolerance) {
    const Polygon &smaller = a.radius < b.radius ? a : b, &larger = a.radius < b.radius ? b : a;
    return std::all_of(smaller.edges.begin(), smaller.edges.end(), [&](const Edge& edge) {
        return std::abs((edge.start - larger.centre).dot(larger.normal)) <= tolerance;
    });
}

} // namespace vantor::solver
