#include "host/mechanism/DamperFlow.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>

namespace kinora::host {
namespace {

using Array = Eigen::ArrayXd;

/// For matrices as small as these; Eigen's product of large ones takes long to compile.
Eigen::MatrixXd Times(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
    return a.lazyProduct(b);
}

/// The velocities of all joints in one vector, and where each degree of freedom stands in it.
class Velocities {
public:
    Velocities(const std::vector<std::unique_ptr<JointMotion>>& motions, const std::vector<JointRecord>& records)
        : m_motions(motions) {
        Eigen::Index size = 0;
        for (const std::unique_ptr<JointMotion>& motion : motions) {
            m_offsets.push_back(size);
            size += static_cast<Eigen::Index>(motion->Description().DegreesOfFreedom());
        }
        values.setZero(size);
        free.resize(size, 0);
        mass.setIdentity(size, size);
        for (std::size_t joint = 0; joint < motions.size(); ++joint) {
            Take(joint, records[joint]);
        }
    }

    /// A force on a joint, as one on all of them.
    Eigen::VectorXd Spread(std::size_t joint, const Generalised& force) const {
        Eigen::VectorXd spread = Eigen::VectorXd::Zero(values.size());
        spread.segment(m_offsets[joint], force.size()) = force;
        return spread;
    }

    Eigen::VectorXd Spread(const DamperRow& row) const {
        Eigen::VectorXd spread = Eigen::VectorXd::Zero(values.size());
        for (const auto& [joint, force] : row.ends) {
            spread += Spread(joint, force);
        }
        return spread;
    }

    void Put(std::vector<JointRecord>& records) const {
        for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
            if (m_motions[joint]->Description().IsFree()) {
                const auto size = static_cast<Eigen::Index>(m_motions[joint]->Description().DegreesOfFreedom());
                m_motions[joint]->SetVelocity(records[joint], values.segment(m_offsets[joint], size));
            }
        }
    }

    Eigen::VectorXd values;
    Eigen::MatrixXd mass;
    /// One column per free degree of freedom, with a 1 in its place: its transpose picks what is free.
    Eigen::MatrixXd free;

private:
    void Take(std::size_t joint, const JointRecord& record) {
        const Generalised velocity = m_motions[joint]->VelocityOf(record);
        values.segment(m_offsets[joint], velocity.size()) = velocity;
        for (Eigen::Index i = 0; i < velocity.size(); ++i) {
            if (m_motions[joint]->IsFree(static_cast<std::size_t>(i))) {
                free.conservativeResize(values.size(), free.cols() + 1);
                free.rightCols<1>() = Eigen::VectorXd::Unit(values.size(), m_offsets[joint] + i);
            }
        }
        if (m_motions[joint]->Description().IsFree()) {
            mass.block(m_offsets[joint], m_offsets[joint], velocity.size(), velocity.size()) =
                m_motions[joint]->MassOf(record);
        }
    }

    const std::vector<std::unique_ptr<JointMotion>>& m_motions;
    std::vector<Eigen::Index> m_offsets;
};

/// A function of time: a constant and a multiple of exp(-rate t) for each mode.
struct Decays {
    double constant = 0.0;
    Array amplitudes;
};

/// What is free, in the modes in which dampers brake it each by itself.
class Modes {
public:
    Modes(const Velocities& velocities, const std::vector<DamperRow>& rows) : m_velocities(velocities) {
        const Eigen::MatrixXd pick = velocities.free.transpose();
        Eigen::MatrixXd damping = Eigen::MatrixXd::Zero(Size(), Size());
        // What the dampers do where only the prescribed moves.
        Eigen::VectorXd push = Eigen::VectorXd::Zero(Size());
        for (const DamperRow& row : rows) {
            const Eigen::VectorXd all = velocities.Spread(row);
            const Eigen::VectorXd own = pick * all;
            damping += row.coefficient * own * own.transpose();
            push -= row.coefficient * (all.dot(velocities.values) - own.dot(pick * velocities.values)) * own;
        }
        const Eigen::MatrixXd mass = Times(Times(pick, velocities.mass), velocities.free);
        // Modes of unit kinetic energy: with W = M^(-1/2), those of the symmetric W D W.
        const Eigen::MatrixXd whitened = Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(mass).operatorInverseSqrt();
        const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(Times(Times(whitened, damping), whitened));
        m_shapes = Times(whitened, solver.eigenvectors());
        m_rates = solver.eigenvalues().array();
        // Rounding of modes that no damper brakes; nothing pushes them either.
        const double rounding = 1e-14 * std::max(0.0, m_rates.maxCoeff());
        m_limits = (m_rates > rounding).select((m_shapes.transpose() * push).array() / m_rates, 0.0);
        m_rates = (m_rates > rounding).select(m_rates, 0.0);
        m_starts = (m_shapes.transpose() * (mass * (pick * velocities.values))).array();
    }

    /// How the velocity of the free has changed after a time: by nothing at all where no damper brakes.
    Eigen::VectorXd ChangeAfter(double duration) const {
        return m_shapes * ((m_starts - m_limits) * (-duration * m_rates).expm1()).matrix();
    }

    /// The scalar product of a force with the velocity, as a function of time.
    Decays Along(const Eigen::VectorXd& force) const {
        const Eigen::VectorXd own = m_velocities.free.transpose() * force;
        const Array weights = (m_shapes.transpose() * own).array();
        const double prescribed =
            force.dot(m_velocities.values) - own.dot(m_velocities.free.transpose() * m_velocities.values);
        return {prescribed + (weights * m_limits).sum(), weights * (m_starts - m_limits)};
    }

    /// The integral of a product over a time.
    double Integral(const Decays& a, const Decays& b, double duration) const {
        double sum = duration * a.constant * b.constant;
        for (Eigen::Index i = 0; i < Size(); ++i) {
            const double decay = MeanDecay(m_rates[i] * duration);
            sum += duration * decay * (a.constant * b.amplitudes[i] + b.constant * a.amplitudes[i]);
            for (Eigen::Index j = 0; j < Size(); ++j) {
                sum += duration * MeanDecay((m_rates[i] + m_rates[j]) * duration) * a.amplitudes[i] * b.amplitudes[j];
            }
        }
        return sum;
    }

private:
    Eigen::Index Size() const { return m_velocities.free.cols(); }

    const Velocities& m_velocities;
    /// Columns, of unit kinetic energy.
    Eigen::MatrixXd m_shapes;
    /// 1/s.
    Array m_rates;
    Array m_starts;
    /// What the prescribed would carry each mode to.
    Array m_limits;
};

} // namespace

std::vector<DampingDone> FlowDampers(const std::vector<std::unique_ptr<JointMotion>>& motions,
                                     std::vector<JointRecord>& records, const std::vector<DamperRow>& rows,
                                     double duration) {
    if (rows.empty()) {
        return {};
    }
    Velocities velocities(motions, records);
    const Modes modes(velocities, rows);
    std::vector<DampingDone> done;
    for (const DamperRow& row : rows) {
        const Decays speed = modes.Along(velocities.Spread(row));
        DampingDone damping{row.coefficient * modes.Integral(speed, speed, duration), {}};
        for (const auto& [joint, force] : row.ends) {
            const Decays own = modes.Along(velocities.Spread(joint, force));
            damping.work.push_back(-row.coefficient * modes.Integral(speed, own, duration));
        }
        done.push_back(std::move(damping));
    }
    velocities.values += velocities.free * modes.ChangeAfter(duration);
    velocities.Put(records);
    return done;
}

double SpeedOf(const DamperRow& row, const std::vector<std::unique_ptr<JointMotion>>& motions,
               const std::vector<JointRecord>& records) {
    double speed = 0.0;
    for (const auto& [joint, force] : row.ends) {
        speed += force.dot(motions[joint]->VelocityOf(records[joint]));
    }
    return speed;
}

} // namespace kinora::host
