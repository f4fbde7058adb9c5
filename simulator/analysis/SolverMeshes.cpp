#include "simulator/analysis/SolverMeshes.h"

namespace vantor::analysis {

std::shared_ptr<const solver::TriangleMesh> SolverMeshes::Of(const std::shared_ptr<const model::Mesh>& mesh) {
    auto& known = m_meshes[mesh];
    if (!known) {
        known = std::make_shared<solver::TriangleMesh>(solver::TriangleMesh{mesh->vertices, mesh->triangles});
    }
    return known;
}

void SolverMeshes::DropExpired() {
    for (auto entry = m_meshes.begin(); entry != m_meshes.end();) {
        entry = entry->first.expired() ? m_meshes.erase(entry) : std::next(entry);
    }
}

} // namespace vantor::analysis
