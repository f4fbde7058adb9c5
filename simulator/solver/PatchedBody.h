#pragma once
// A body's surfaces in patches, and what the charges on them make of each other.
#include "simulator/solver/SolidBody.h"

#include <Eigen/LU>

namespace vantor::solver {

/// A point charge of a patch or of a known sheet.
struct ChargePoint {
    Eigen::Vector3d at;
    std::size_t patch = 0, polygon = 0;
    /// The patch's functions at the point times the point's area.
    Eigen::Vector3d weights;
};
struct KnownPoint {
    Eigen::Vector3d at;
    /// A m.
    double charge = 0;
};

/// The patches of a body and their points, in the body's axes.
struct PatchSet {
    std::vector<Patch> patches;
    /// For each patch the sheet that it is a part of.
    std::vector<std::size_t> sheets;
    std::vector<ChargePoint> points;
    std::vector<KnownPoint> known;

    bool operator==(const PatchSet& other) const;
};

/// How finely a body is divided.
struct Division {
    /// 1 for the coarsest that is of any use.
    double scale = 1;
    /// Distance of a point from the nearest surface of another body that has a charge, and from the nearest one whose
    /// charge is to be solved for; may be less than it is, infinite without others.
    std::function<double(const Eigen::Vector3d&)> toCharged, toPermeable;
};

PatchSet PatchesOf(const SolidBody& body, const Division& division);

/// The charges of one body, as answers to the flux that others send through it.
class PatchedBody {
public:
    /// @param body  must outlive this object
    PatchedBody(const SolidBody& body, PatchSet set, unsigned threads);

    const SolidBody& Body() const { return m_body; }
    const PatchSet& Set() const { return m_set; }
    /// Number of unknowns: the factors of each patch's functions, A/m.
    Eigen::Index Size() const { return static_cast<Eigen::Index>(patchFunctions * m_set.patches.size()); }

    /// Removes from fluxes what makes those through a closed surface differ from 0, which no field of others does.
    /// @param fluxes  one column for each source; 4 pi times the flux through patches, times their functions
    void MakeSourceFree(Eigen::Ref<Eigen::MatrixXd> fluxes) const;
    /// The right-hand side for fluxes of others, without the body's own magnetisation.
    Eigen::VectorXd RightHandSide(const Eigen::VectorXd& fluxes) const;
    /// That of the body's own magnetisation.
    const Eigen::VectorXd& OwnRightHandSide() const { return m_ownRightHandSide; }
    /// The charges for a right-hand side.
    Eigen::VectorXd Solved(const Eigen::VectorXd& rightHandSide) const { return m_factored.solve(rightHandSide); }
    /// The mean flux density of a solid, T.
    /// @param charges  factors of the patches' functions, A/m
    Eigen::Vector3d MeanFluxDensity(std::size_t solid, const Eigen::VectorXd& charges) const;
    /// Flux moments evaluated to make this.
    std::size_t Evaluations() const { return m_evaluations; }

private:
    double ContrastOf(std::size_t patch) const { return m_body.Sheets()[m_set.sheets[patch]].contrast; }
    void SetOwnRightHandSide();

    const SolidBody& m_body;
    PatchSet m_set;
    Eigen::PartialPivLU<Eigen::MatrixXd> m_factored;
    Eigen::VectorXd m_ownRightHandSide;
    std::size_t m_evaluations;
};

/// 4 pi times the fluxes that charges send through patches, times the patches' functions: rows by patch and function.
struct Fluxes {
    /// For each function of each patch of the source a column.
    Eigen::MatrixXd ofPatches;
    /// Of the known charges.
    Eigen::VectorXd ofKnown;
    /// Flux moments evaluated.
    std::size_t evaluations = 0;
};

/// @param toTarget  of the source's axes in the target's
Fluxes FluxesBetween(const PatchSet& source, const PatchSet& target, const Eigen::Isometry3d& toTarget,
                     unsigned threads);

} // namespace vantor::solver
