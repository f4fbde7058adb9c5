#include "simulator/analysis/SolverCopies.h"

namespace vantor::analysis {
namespace {

static_assert(model::vacuumPermeability == solver::vacuumPermeability, "curves are checked as they are solved");
static_assert(model::leastRelativePermeability == solver::leastRelativePermeability, "and so are permeabilities");

template <typename Copies>
void DropExpiredOf(Copies& copies) {
    for (auto entry = copies.begin(); entry != copies.end();) {
        entry = entry->first.expired() ? copies.erase(entry) : std::next(entry);
    }
}

} // namespace

std::shared_ptr<const solver::TriangleMesh> SolverCopies::Of(const std::shared_ptr<const model::Mesh>& mesh) {
    auto& known = m_meshes[mesh];
    if (!known) {
        known = std::make_shared<solver::TriangleMesh>(solver::TriangleMesh{mesh->vertices, mesh->triangles});
    }
    return known;
}

std::shared_ptr<const solver::MagnetizationCurve> SolverCopies::Of(const std::shared_ptr<const model::BhCurve>& curve) {
    auto& known = m_curves[curve];
    if (!known) {
        solver::MagnetizationCurve copy;
        for (const auto& point : curve->points) {
            copy.points.push_back({point.h, point.b});
        }
        known = std::make_shared<solver::MagnetizationCurve>(std::move(copy));
    }
    return known;
}

void SolverCopies::DropExpired() {
    DropExpiredOf(m_meshes);
    DropExpiredOf(m_curves);
}

} // namespace vantor::analysis
