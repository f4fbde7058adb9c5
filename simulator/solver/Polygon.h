#pragma once
// Flat faces of a mesh. Neighbouring triangles in one plane become one polygon, however finely they were meshed: the
// closed forms need a face's outline only.
#include "simulator/solver/Magnetostatics.h"

#include <cstddef>
#include <vector>

namespace vantor::solver {

/// A directed piece of a polygon's outline; the polygon lies to its left, seen from where the normal points to.
struct Edge {
    Eigen::Vector3d start;
    /// Unit vector.
    Eigen::Vector3d direction;
    /// Unit vector in the polygon's plane, away from the polygon.
    Eigen::Vector3d outward;
    double length = 0;

    Eigen::Vector3d At(double t) const { return start + t * direction; }
};

/// An edge in the polygon's own plane coordinates (origin in its centre): all that the closed forms read.
struct PlaneEdge {
    /// Start of the edge.
    double x, y;
    /// Unit direction; (ty, -tx) points outward.
    double tx, ty;
    double length;
};

/// A flat polygon, of any number of outlines, given by its edges in no special order.
struct Polygon {
    /// Centroid of the area.
    Eigen::Vector3d centre;
    Eigen::Vector3d xAxis, yAxis, normal;
    double area = 0;
    /// Radius of the circle about the centre that holds all corners.
    double radius = 0;
    std::vector<Edge> edges;
    /// The same edges in the same order.
    std::vector<PlaneEdge> planeEdges;
};

/// A directed piece of an outline in the plane coordinates of a polygon.
struct PlaneSegment {
    Eigen::Vector2d start, end;
};

/// Of vectors in a plane; positive where the second one points to the left of the first one.
inline double Cross(const Eigen::Vector2d& a, const Eigen::Vector2d& b) {
    return a.x() * b.y() - a.y() * b.x();
}

/// Sets the edges and the radius of a polygon that has its centre and axes. Pieces without length are left out.
void SetOutline(Polygon& polygon, const std::vector<PlaneSegment>& outline);

/// The faces of a mesh.
/// @param mesh  indices in range, coordinates finite
std::vector<Polygon> PolygonsOf(const TriangleMesh& mesh);

/// Distance of a point from a polygon.
double DistanceFrom(const Polygon& polygon, const Eigen::Vector3d& point);

/// The faces of a mesh on which `magnetisation` leaves a charge; those along it are left out.
/// @param mesh  indices in range, coordinates finite
std::vector<Polygon> ChargedPolygons(const TriangleMesh& mesh, const Eigen::Vector3d& magnetisation);

} // namespace vantor::solver
