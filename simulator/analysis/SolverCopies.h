#pragma once

#include "simulator/model/Materials.h"
#include "simulator/model/Mesh.h"
#include "simulator/solver/Magnetostatics.h"

#include <map>
#include <memory>

namespace vantor::analysis {

/// The solver's copies of the model's meshes and B-H curves, each made once: a solver knows them again by their
/// address.
class SolverCopies {
public:
    /// @name The solver's copy of this one, which must not be null; the same one as long as the model's own is there.
    /// @{
    std::shared_ptr<const solver::TriangleMesh> Of(const std::shared_ptr<const model::Mesh>& mesh);
    std::shared_ptr<const solver::MagnetizationCurve> Of(const std::shared_ptr<const model::BhCurve>& curve);
    /// @}

    /// Lets go of the copies of what the model has no more.
    void DropExpired();

private:
    /// Ordered by ownership: what comes to lie where something earlier lay is another one.
    template <typename Original, typename Copy>
    using Copies = std::map<std::weak_ptr<const Original>, std::shared_ptr<const Copy>, std::owner_less<>>;

    Copies<model::Mesh, solver::TriangleMesh> m_meshes;
    Copies<model::BhCurve, solver::MagnetizationCurve> m_curves;
};

} // namespace vantor::analysis
