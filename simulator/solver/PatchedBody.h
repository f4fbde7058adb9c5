#pragma once
// A body's surfaces in patches, and what the charges on them make of each other.
#include "simulator/solver/PatchFlux.h"
#include "simulator/solver/SolidBody.h"

#include <Eigen/LU>

namespace vantor::solver {

/// The patches of a body, in the body's axes.
struct PatchSet {
    std::vector<Patch> patches;
    /// For each patch the sheet that it is a part of.
    std::vector<std::size_t> sheets;

    bool operator==(const PatchSet& other) const;
};

/// How finely a body is divided.
struct Division {
    /// 1 for the coarsest that is of any use.
    double scale = 1;
    /// Distance of a point from the nearest surface of another body that has a charge; may be less than it is, infinite
    /// without others.
    std::function<double(const Eigen::Vector3d&)> toCharged;
    /// After how many patches to stop.
    std::size_t most = 0;
};

/// @return more than division.most, and not all, where there would be more
PatchSet PatchesOf(const SolidBody& body, const Division& division);

/// 4 pi times the fluxes that charges send through patches, times the patches' functions: rows by patch and function.
struct Fluxes {
    /// For each function of each patch of the source a column.
    Eigen::MatrixXd ofPatches;
    /// Of the known charges.
    Eigen::VectorXd ofKnown;
    /// Flux moments evaluated.
    std::size_t evaluations = 0;
};

/// The charges of one body, as answers to the flux that others send through it.
class PatchedBody {
public:
    /// @param body  must outlive this object
    PatchedBody(const SolidBody& body, PatchSet set, unsigned threads);

    const SolidBody& Body() const { return m_body; }
    const PatchSet& Set() const { return m_set; }
    const Sheet& SheetOf(std::size_t patch) const { return m_body.Sheets()[m_set.sheets[patch]]; }
    /// Number of unknowns: the factors of each patch's functions, A/m.
    Eigen::Index Size() const { return static_cast<Eigen::Index>(patchFunctions * m_set.patches.size()); }

    const std::vector<PatchPolygon>& Polygons() const { return m_polygons; }
    /// Removes from fluxes of others what makes those through closed surfaces differ from 0.
    void MakeSourceFree(Fluxes& fluxes) const;
    /// The right-hand side for fluxes of others, without the body's own magnetisation.
    Eigen::VectorXd RightHandSide(const Eigen::VectorXd& fluxes) const;
    /// That of the body's own magnetisation.
    const Eigen::VectorXd& OwnRightHandSide() const { return m_ownRightHandSide; }
    /// The charges for a right-hand side.
    Eigen::VectorXd Solved(const Eigen::VectorXd& rightHandSide) const { return m_factored.solve(rightHandSide); }
    /// Flux moments evaluated to make this.
    std::size_t Evaluations() const { return m_evaluations; }

private:
    /// All patches around solids of one permeability that touch.
    struct ClosedSurface {
        std::size_t region = 0;
        /// For each patch 1 where its normal points to the outside, -1 where it points to the inside, or 0.
        Eigen::VectorXd sides;
        /// For each patch its area if it is between a solid and air, else 0; without such patches all areas, with the
        /// signs of the sides.
        Eigen::VectorXd areas;
    };

    void SetClosedSurfaces();
    void SetAllAreas(ClosedSurface& closed) const;
    void Balance(Eigen::Ref<Eigen::MatrixXd> fluxes, const Eigen::MatrixXd& enclosed) const;
    void BalanceOwn(Eigen::MatrixXd& ofPatches, Eigen::VectorXd& ofKnown) const;
    void SetOwnRightHandSide(const Eigen::VectorXd& fluxesOfKnown);

    const SolidBody& m_body;
    PatchSet m_set;
    std::vector<PatchPolygon> m_polygons;
    std::vector<ClosedSurface> m_closed;
    Eigen::PartialPivLU<Eigen::MatrixXd> m_factored;
    Eigen::VectorXd m_ownRightHandSide;
    std::size_t m_evaluations;
};

/// @param toTarget  of the source's axes in the target's
Fluxes FluxesBetween(const PatchedBody& source, const PatchedBody& target, const Eigen::Isometry3d& toTarget,
                     unsigned threads);

} // namespace vantor::solver
