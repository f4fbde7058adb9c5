#include "simulator/solver/SolidFaces.h"

#include "simulator/solver/ClosedMesh.h"
#include "simulator/solver/PreparedMagnet.h"

namespace vantor::solver {
namespace {

bool IsEmpty(const Solid& solid) {
    return !solid.mesh || solid.mesh->triangles.empty();
}

void Check(const Solid& solid) {
    CheckVertices(*solid.mesh, solid.label);
    if (!solid.pose.matrix().allFinite()) {
        throw SolveError("The pose of " + solid.label + " is not finite; check the placement of the body.");
    }
    Eigen::AlignedBox3d box;
    ForTriangles(*solid.mesh, [&](const auto& corners) {
        for (const Eigen::Vector3d& corner : corners) {
            box.extend(corner);
        }
    });
    CheckClosed(MomentsOf(*solid.mesh, box.center()), solid.label);
}

} // namespace

std::vector<SolidFace> FacesOf(const std::vector<Solid>& solids) {
    std::vector<SolidFace> faces;
    for (std::size_t i = 0; i < solids.size(); ++i) {
        if (IsEmpty(solids[i])) {
            continue;
        }
        Check(solids[i]);
        for (const Polygon& polygon : PolygonsOf(*solids[i].mesh)) {
            faces.push_back({Posed(solids[i].pose, polygon), i, std::nullopt});
        }
    }
    return faces;
}

} // namespace vantor::solver
