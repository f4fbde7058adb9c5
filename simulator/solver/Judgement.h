#pragma once
// The sum of all interactions, and how good it is for every body.
#include "simulator/solver/Loads.h"
#include "simulator/solver/PreparedMagnet.h"

namespace vantor::solver {

class Judgement {
public:
    /// @param leastLever  a torque is judged by no less than this part of the force times the body's radius (below, it
    ///                    only says where exactly the force acts), and a force by the same part of torque over radius
    Judgement(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, double leastLever = 0);

    /// Centres of two bodies, given by a magnet of each.
    BodyCentres CentresFor(const PreparedMagnet& source, const PreparedMagnet& target) const {
        return {m_bodies[source.body].centre, m_bodies[target.body].centre};
    }

    /// Begins a new sum; the loads that errors are measured against stay those of the last one until Finish.
    void Clear();
    void Add(const PreparedMagnet& source, const PreparedMagnet& target, const Interaction& interaction);
    /// Ends a sum.
    void Finish();

    /// The part of the load that an error is, for the body for which it is largest.
    double Share(const PreparedMagnet& source, const PreparedMagnet& target, const Interaction& interaction) const;
    /// The largest error of all bodies, of force and torque.
    double PercentError() const;
    /// The largest difference from other loads on the same bodies, measured as errors are.
    double PercentChange(const std::vector<Load>& before) const;
    /// Torques are about the origin.
    const std::vector<Load>& Loads() const { return m_loads; }
    std::size_t BodyCount() const { return m_bodies.size(); }

private:
    struct Body {
        Eigen::Vector3d centre = Eigen::Vector3d::Zero();
        double radius = 0;
        /// What the load is judged by at least.
        double leastForce = 0, leastTorque = 0;
        /// The load's size, or the least one.
        double force = 0, torque = 0;
        /// Of the sum so far; the torque's about the centre.
        double forceError = 0, torqueError = 0;
    };

    void SetCentres(const std::vector<PreparedMagnet>& magnets);
    void SetScales(const std::vector<PreparedMagnet>& magnets);
    void AddTo(std::size_t body, double sign, const Interaction& interaction, double torqueError);

    double m_leastLever;
    std::vector<Body> m_bodies;
    std::vector<Load> m_loads;
};

/// The terms to refine next: all but those with the smallest errors, which stay as long as they add up to no more than
/// `kept` for any body.
/// @param shares  of each term; those that are not positive stay in any case
/// @param bodiesOf  the bodies of each term, source and target
/// @param kept  what the terms that stay may add up to
std::vector<bool> TermsToRefine(const std::vector<double>& shares,
                                const std::function<std::array<std::size_t, 2>(std::size_t)>& bodiesOf,
                                std::size_t bodyCount, double kept);

} // namespace vantor::solver
