#pragma once
// A magnet where it stands in a solve.
#include "simulator/solver/MagnetShape.h"

#include <unordered_map>

namespace vantor::solver {

struct PreparedMagnet {
    std::size_t body = 0;
    /// For messages: magnet and body by name.
    std::string label;
    std::shared_ptr<const MagnetShape> shape;
    /// Of the shape's axes.
    Eigen::Isometry3d pose;
    /// What the shape has in its own axes (MagnetShape tells what it is), here and now.
    Eigen::Vector3d magnetisation, moment, centre;
    std::array<Eigen::Vector3d, 6> massPoints;
    /// Holds the mesh, not always tightly.
    Eigen::AlignedBox3d box;

    double Radius() const { return shape->Radius(); }
};

/// A shape where a pose puts it.
PreparedMagnet Placed(std::size_t body, std::string label, std::shared_ptr<const MagnetShape> shape,
                      const Eigen::Isometry3d& pose);

/// Whether a field changes the magnetisation.
bool IsPermeable(const Magnet& magnet);
/// The relative permeability; of a curve that of weak fields.
double PermeabilityOf(const Magnet& magnet);
/// Whether it has a mesh and may have a field.
bool HasField(const Magnet& magnet);

/// For messages: a magnet and its body by name.
std::string LabelOf(const Body& body, const Magnet& magnet);

/// The faces of a magnet where they are.
std::vector<ChargedFace> PosedFaces(const PreparedMagnet& magnet);
std::vector<ChargedFace> AllPosedFaces(const std::vector<PreparedMagnet>& magnets);

/// The polygon where a pose puts it.
Polygon Posed(const Eigen::Isometry3d& pose, const Polygon& polygon);

/// Shapes that are kept from one solve to the next.
class ShapeStore {
public:
    /// Checks and prepares every magnet that has a mesh and a magnetisation; forgets the shapes of others.
    /// @param origin  gets the middle of the bodies, which becomes the origin of coordinates: near the bodies no digits
    ///                are lost
    /// @param threads  to make new shapes with; 0 for as many as the machine has
    /// @throws SolveError  values that are not finite, corner numbers out of range, a mesh that is open or inside out
    std::vector<PreparedMagnet> Prepare(const std::vector<Body>& bodies, int threads, Eigen::Vector3d& origin);

private:
    using Shapes = std::unordered_multimap<const TriangleMesh*, std::shared_ptr<const MagnetShape>>;

    std::shared_ptr<const MagnetShape> Find(const Magnet& magnet) const;
    void MakeMissing(const std::vector<Body>& bodies, int threads);

    Shapes m_shapes;
};

} // namespace vantor::solver
