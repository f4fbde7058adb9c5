#pragma once
// What a magnet is wherever it stands: its charged faces, its moments, and the trees over both its charges and its
// surface. All in the magnet's own axes.
#include "simulator/solver/ChargeTree.h"
#include "simulator/solver/SurfaceTree.h"

#include <Eigen/Geometry>
#include <memory>
#include <mutex>

namespace vantor::solver {

class MagnetShape {
public:
    /// @pre the mesh has triangles and the magnetisation is not zero
    /// @param label  for messages: magnet and body by name
    /// @throws SolveError  values that are not finite, corner numbers out of range, a mesh that is open or inside out
    MagnetShape(std::shared_ptr<const TriangleMesh> mesh, const Eigen::Vector3d& magnetisation,
                const std::string& label);

    /// Of faces whose charges are given; there is no mesh and no magnetisation.
    explicit MagnetShape(std::vector<ChargedFace> faces);

    /// Whether this is the shape of that mesh with that magnetisation, but for rounding.
    bool Is(const TriangleMesh* mesh, const Eigen::Vector3d& magnetisation) const;

    const TriangleMesh& Mesh() const { return *m_mesh; }
    const std::vector<ChargedFace>& Faces() const { return m_faces; }
    /// Number of the faces' edges.
    std::size_t EdgeCount() const { return m_edgeCount; }
    /// A/m.
    const Eigen::Vector3d& Magnetisation() const { return m_magnetisation; }
    /// A m^2: magnetisation times volume.
    const Eigen::Vector3d& Moment() const { return m_moment; }
    /// Centroid of the volume.
    const Eigen::Vector3d& Centre() const { return m_centre; }
    /// Radius of the sphere about the centre that holds the mesh.
    double Radius() const { return m_radius; }
    /// A: sum of the faces' outlines times their charges' sizes.
    double OutlineCharge() const { return m_outlineCharge; }
    /// Six points of equal weight with the volume's centroid and second moments.
    const std::array<Eigen::Vector3d, 6>& MassPoints() const { return m_massPoints; }
    const Eigen::AlignedBox3d& Box() const { return m_box; }

    /// Made when they are asked for the first time; that may be done from several threads.
    const ChargeTree& Charges() const;
    const SurfaceTree& Surface() const;

private:
    void SetMoments(const std::string& label);
    void SetFaces();

    /// Kept, so that its address stands for it.
    std::shared_ptr<const TriangleMesh> m_mesh;
    std::vector<ChargedFace> m_faces;
    std::size_t m_edgeCount = 0;
    Eigen::Vector3d m_magnetisation, m_moment, m_centre;
    double m_radius = 0, m_outlineCharge = 0;
    std::array<Eigen::Vector3d, 6> m_massPoints;
    Eigen::AlignedBox3d m_box;
    mutable std::once_flag m_chargesMade, m_surfaceMade;
    mutable std::unique_ptr<const ChargeTree> m_charges;
    mutable std::unique_ptr<const SurfaceTree> m_surface;
};

} // namespace vantor::solver
