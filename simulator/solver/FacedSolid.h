#pragma once
// A solid with its faces, on the way to become those of a body of solids that touch.
#include "simulator/solver/SolidFaces.h"
#include "simulator/solver/SurfaceTree.h"

#include <memory>

namespace vantor::solver {

class FacedSolid {
public:
    /// A part of a face that lies on another solid.
    struct Contact {
        Polygon polygon;
        std::size_t other = 0;
    };
    /// A face, in the body's axes.
    struct Face {
        Polygon whole;
        Eigen::AlignedBox3d box;
        /// What is not in contact.
        std::vector<Polygon> air;
        std::vector<Contact> contacts;
    };

    /// All faces to air.
    /// @param solid  has triangles, and outlives this object
    /// @throws SolveError  values that are not finite, corner numbers out of range, a mesh that is open or inside out
    explicit FacedSolid(const Solid& solid);

    const std::string& Label() const { return m_solid->label; }
    const Eigen::Isometry3d& Pose() const { return m_solid->pose; }
    const Eigen::AlignedBox3d& Box() const { return m_box; }
    std::vector<Face>& Faces() { return m_faces; }
    const std::vector<Face>& Faces() const { return m_faces; }
    /// Made when it is asked for the first time, by one thread only.
    const SurfaceTree& Surface() const;

    /// Indices of the faces whose normals are almost a direction, in order.
    std::vector<std::size_t> FacesAlong(const Eigen::Vector3d& direction) const;

private:
    const Solid* m_solid;
    Eigen::AlignedBox3d m_box;
    std::vector<Face> m_faces;
    /// Indices of the faces with a component of their normals, ascending.
    std::vector<std::pair<double, std::size_t>> m_byNormal;
    mutable std::unique_ptr<const SurfaceTree> m_surface;
};

/// The distance, metres, below which points of two solids are one.
double ContactTolerance(const FacedSolid& a, const FacedSolid& b);

/// Whether two polygons lie in one plane but for the tolerance, as far as the smaller one reaches.
bool LieInOnePlane(const Polygon& a, const Polygon& b, double tolerance);

} // namespace vantor::solver
