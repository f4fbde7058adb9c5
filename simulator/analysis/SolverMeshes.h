#pragma once

#include "simulator/model/Mesh.h"
#include "simulator/solver/Magnetostatics.h"

#include <map>
#include <memory>

namespace vantor::analysis {

/// The solver's meshes of the model's meshes, each made once: a solver knows a mesh again by its address.
class SolverMeshes {
public:
    /// The solver's mesh of this one, which must not be null; the same one as long as the model's mesh is there.
    std::shared_ptr<const solver::TriangleMesh> Of(const std::shared_ptr<const model::Mesh>& mesh);

    /// Lets go of the meshes that the model has no more.
    void DropExpired();

private:
    /// Ordered by ownership: a mesh that comes to lie where an earlier one lay is another one.
    std::map<std::weak_ptr<const model::Mesh>, std::shared_ptr<const solver::TriangleMesh>, std::owner_less<>> m_meshes;
};

} // namespace vantor::analysis
