#pragma once
// Loads on bodies of which some have solids of permeabilities other than 1: for finer and finer patches the charges are
// solved for, and the loads summed up as those of magnets whose charges are known.
#include "simulator/solver/PatchSum.h"
#include "simulator/solver/PatchedBody.h"

namespace vantor::solver {

/// What is known of bodies from one solve to the next.
class PermeableStore {
public:
    struct Entry {
        explicit Entry(std::vector<PermeableSolid> solids) : body(std::move(solids)) {}
        explicit Entry(SolidBody solids) : body(std::move(solids)) {}

        SolidBody body;
        /// The last ones, newest first.
        std::vector<std::shared_ptr<const PatchedBody>> patched;
    };

    /// The bodies, each with where it stands; forgets those of earlier solves that are not among them.
    struct Placed {
        std::shared_ptr<Entry> entry;
        Eigen::Isometry3d pose;
    };
    /// @param origin  of coordinates in the solve
    /// @throws SolveError  as SolidBody
    std::vector<Placed> Prepare(const std::vector<Body>& bodies, const Eigen::Vector3d& origin);

private:
    std::vector<std::shared_ptr<Entry>> m_entries;
};

/// A point within a solid that stands for a part of it.
struct InnerPoint {
    Eigen::Vector3d at;
    double weight = 0;
};

class PermeableSum {
public:
    /// @param magnets  all solids as magnets, by the same origin; must outlive this object as the others must
    PermeableSum(const std::vector<PreparedMagnet>& magnets, std::vector<PermeableStore::Placed> bodies,
                 const Options& options);

    Pass Evaluate();
    /// Solves for the charges alone, with patches finer than the last ones.
    /// @return flux moments evaluated
    std::size_t SolveCharges();
    /// @return false when finer patches would be too many
    bool Refine();
    const std::vector<Load>& Loads() const { return m_loads; }
    /// Points below a solid's patches, here and now.
    std::vector<InnerPoint> PointsWithin(std::size_t body, std::size_t solid) const;
    /// The bodies' charges at the last pass, as magnets of given charges.
    std::vector<PreparedMagnet> Charged() const;

private:
    /// A body with its patches.
    struct Part {
        std::shared_ptr<const PatchedBody> patched;
        /// Factors of the patches' functions, A/m.
        Eigen::VectorXd charges;
    };

    /// What a body's charges send through another one's patches.
    struct Coupling {
        std::size_t source, target;
        Eigen::MatrixXd matrix;
    };

    std::vector<PatchSet> PatchesOfBodies(std::size_t most);
    std::vector<PatchSet> FirstPatches();
    std::vector<PatchSet> MorePatches();
    std::size_t SetPatches();
    PatchSet PatchesOfBody(std::size_t body, std::size_t most) const;
    std::size_t SetCharges();
    std::size_t Couple(std::size_t target, std::vector<Coupling>& couplings, Eigen::VectorXd& right) const;
    Eigen::VectorXd MadeByOthers(const std::vector<Coupling>& couplings, const std::vector<Eigen::Index>& starts,
                                 const Eigen::VectorXd& charges) const;
    static std::vector<ChargedFace> FacesOf(const Part& part);
    std::size_t SumUp();

    const std::vector<PreparedMagnet>& m_magnets;
    std::vector<PermeableStore::Placed> m_bodies;
    unsigned m_threads;
    std::vector<Part> m_parts;
    std::vector<Load> m_loads;
    /// Of the next patches.
    double m_scale;
    /// Percent by which the loads were others at the scale before.
    double m_change;
    double m_percentError = 0;
    int m_pass = 0;
};

} // namespace vantor::solver
