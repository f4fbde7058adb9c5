#include "simulator/solver/Judgement.h"

#include "simulator/solver/FarField.h"

#include <algorithm>
#include <numeric>

namespace vantor::solver {
namespace {

/// A load below this part of the dipole scale is judged as if it were this large.
constexpr double leastLoad = 0.01;

double Ratio(double error, double scale) {
    return error > 0 ? error / scale : 0;
}

} // namespace

Judgement::Judgement(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, double leastLever)
    : m_leastLever(leastLever), m_bodies(bodies), m_loads(bodies) {
    SetCentres(magnets);
    SetScales(magnets);
}

void Judgement::SetCentres(const std::vector<PreparedMagnet>& magnets) {
    std::vector<Eigen::AlignedBox3d> boxes(m_bodies.size());
    for (const PreparedMagnet& magnet : magnets) {
        boxes[magnet.body].extend(magnet.box);
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (!boxes[i].isEmpty()) {
            m_bodies[i].centre = boxes[i].center();
            m_bodies[i].radius = boxes[i].sizes().norm() / 2;
        }
    }
}

void Judgement::SetScales(const std::vector<PreparedMagnet>& magnets) {
    for (const PreparedMagnet& magnet : magnets) {
        Body& body = m_bodies[magnet.body];
        const double lever = (magnet.centre - body.centre).norm();
        for (const PreparedMagnet& other : magnets) {
            if (other.body == magnet.body) {
                continue;
            }
            const DipoleScale scale = ScaleOf(magnet, other);
            body.force += scale.force;
            body.torque += scale.torque + lever * scale.force;
        }
    }
    for (Body& body : m_bodies) {
        body.leastForce = leastLoad * body.force;
        body.leastTorque = leastLoad * body.torque;
    }
}

void Judgement::Clear() {
    m_loads.assign(m_loads.size(), Load());
    for (Body& body : m_bodies) {
        body.forceError = body.torqueError = 0;
    }
}

void Judgement::AddTo(std::size_t body, double sign, const Interaction& interaction, double torqueError) {
    m_loads[body].force += sign * interaction.wrench.force;
    m_loads[body].torque += sign * interaction.wrench.torque;
    m_loads[body].forceScale += interaction.wrench.force.norm();
    m_loads[body].torqueScale += interaction.wrench.torque.norm();
    m_bodies[body].forceError += interaction.forceError;
    m_bodies[body].torqueError += torqueError;
}

void Judgement::Add(const PreparedMagnet& source, const PreparedMagnet& target, const Interaction& interaction) {
    AddTo(source.body, -1, interaction, interaction.sourceTorqueError);
    AddTo(target.body, 1, interaction, interaction.targetTorqueError);
}

void Judgement::Finish() {
    for (std::size_t i = 0; i < m_bodies.size(); ++i) {
        Body& body = m_bodies[i];
        Load& load = m_loads[i];
        const Eigen::Vector3d torque = load.torque - body.centre.cross(load.force);
        const double lever = m_leastLever * body.radius;
        body.force =
            std::max({body.leastForce, load.force.norm(), lever > 0 ? m_leastLever * torque.norm() / body.radius : 0});
        body.torque = std::max({body.leastTorque, torque.norm(), lever * body.force});
        load.forceError = body.forceError;
        load.torqueError = body.torqueError + body.centre.norm() * body.forceError;
    }
}

double Judgement::Share(const PreparedMagnet& source, const PreparedMagnet& target,
                        const Interaction& interaction) const {
    const Body& from = m_bodies[source.body];
    const Body& to = m_bodies[target.body];
    return std::max({Ratio(interaction.forceError, std::min(from.force, to.force)),
                     Ratio(interaction.sourceTorqueError, from.torque),
                     Ratio(interaction.targetTorqueError, to.torque)});
}

double Judgement::PercentError() const {
    double largest = 0;
    for (const Body& body : m_bodies) {
        largest = std::max({largest, Ratio(body.forceError, body.force), Ratio(body.torqueError, body.torque)});
    }
    return 100 * largest;
}

double Judgement::PercentChange(const std::vector<Load>& before) const {
    double largest = 0;
    for (std::size_t i = 0; i < m_bodies.size(); ++i) {
        const Body& body = m_bodies[i];
        const Eigen::Vector3d force = m_loads[i].force - before[i].force;
        const Eigen::Vector3d torque = m_loads[i].torque - before[i].torque - body.centre.cross(force);
        largest = std::max({largest, Ratio(force.norm(), body.force), Ratio(torque.norm(), body.torque)});
    }
    return 100 * largest;
}

std::vector<bool> TermsToRefine(const std::vector<double>& shares,
                                const std::function<std::array<std::size_t, 2>(std::size_t)>& bodiesOf,
                                std::size_t bodyCount, double kept) {
    std::vector<std::size_t> order(shares.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return shares[a] < shares[b]; });
    std::vector<double> sums(bodyCount, 0);
    std::vector<bool> refined(shares.size(), false);
    for (const std::size_t i : order) {
        if (!(shares[i] > 0)) {
            continue;
        }
        const auto [source, target] = bodiesOf(i);
        refined[i] = std::max(sums[source], sums[target]) + shares[i] > kept;
        sums[source] += shares[i];
        sums[target] += shares[i];
    }
    return refined;
}

} // namespace vantor::solver
