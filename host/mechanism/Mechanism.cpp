#include "host/mechanism/Mechanism.h"

#include "scenario/Errors.h"

#include <algorithm>
#include <fmt/format.h>

namespace kinora::host {

using namespace scenario;

namespace {

/// A joint's own damping of one degree of freedom, against the ground.
DamperRow OwnDamper(std::size_t joint, const Generalised& damping, Eigen::Index degree) {
    return {damping[degree], {{joint, Generalised::Unit(damping.size(), degree)}}};
}

/// The values of three formulas.
Vector Formulas(const std::array<Expression, 3>& formulas, double time, const Vector& place_W) {
    const auto value = [&](const Expression& formula) {
        return formula.Evaluate({time, 0.0, place_W.x(), place_W.y(), place_W.z()});
    };
    return {value(formulas[0]), value(formulas[1]), value(formulas[2])};
}

} // namespace

Mechanism::Mechanism(const Scenario& scenario) : m_scenario(scenario), m_elements(scenario) {
    for (const Joint& joint : scenario.joints) {
        m_motions.push_back(JointMotion::Of(scenario, joint));
    }
    for (const Body& body : scenario.bodies) {
        m_poses.push_back(body.X_WB0);
    }
    m_ways.resize(scenario.joints.size());
    m_screws.resize(scenario.joints.size());
}

/// Bodies and elements where the joints have them.
void Mechanism::Place() {
    for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
        const JointRecord& record = m_records.joints[joint];
        for (const std::size_t body : m_scenario.joints[joint].bodies) {
            m_poses[body] = m_motions[joint]->PoseOf(record, m_scenario.bodies[body].X_WB0);
        }
        m_screws[joint] = m_motions[joint]->ScrewsOf(record);
    }
    m_elements.Place(m_poses, m_screws);
}

void Mechanism::Start() {
    m_time = 0.0;
    m_records = MechanismRecord();
    m_records.joints.resize(m_motions.size());
    m_records.springs.resize(m_scenario.springs.size());
    m_records.bushings.resize(m_scenario.bushings.size());
    for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
        JointRecord& record = m_records.joints[joint];
        m_motions[joint]->Start(record);
        const Generalised none = Generalised::Zero(m_motions[joint]->VelocityOf(record).size());
        record.fieldForce = record.load = record.elementForce = m_ways[joint] = none;
        UpdateStoredEnergy(joint);
        record.energy.initial = record.energy.kinetic + record.energy.potential;
    }
    Place();
}

void Mechanism::Restore(double time, const MechanismRecord& records) {
    m_time = time;
    m_records = records;
    Place();
}

Generalised Mechanism::FieldForce(std::size_t joint, const std::vector<Load>& loads) const {
    Generalised force = Generalised::Zero(m_ways[joint].size());
    for (const std::size_t body : m_scenario.joints[joint].bodies) {
        force += m_screws[joint].ForceOf(loads[body].force_W, m_poses[body].p_WB_W, loads[body].torque_W);
    }
    if (!force.allFinite()) {
        throw RunError(fmt::format("The field's force on joint \"{}\" is not a finite number at {} s; look at the "
                                   "desktop's results.",
                                   m_scenario.joints[joint].name, m_time));
    }
    return force;
}

/// Of the joint's own load, and of those on its bodies.
Generalised Mechanism::AppliedForce(std::size_t joint) const {
    Generalised force = m_motions[joint]->LoadAt(m_records.joints[joint], m_time);
    if (!force.allFinite()) {
        throw RunError(fmt::format("The load on joint \"{}\" is not a finite number at {} s; check its expression.",
                                   m_scenario.joints[joint].name, m_time));
    }
    const std::vector<std::size_t>& bodies = m_scenario.joints[joint].bodies;
    for (const AppliedLoad& load : m_scenario.loads) {
        if (std::find(bodies.begin(), bodies.end(), load.body) == bodies.end()) {
            continue;
        }
        const auto& [p_WB_W, R_WB] = m_poses[load.body];
        const Matrix R_WA = load.isInBodyAxes ? R_WB : Matrix::Identity();
        force += m_screws[joint].ForceOf(R_WA * Formulas(load.force, m_time, p_WB_W), p_WB_W + R_WB * load.p_BP_B,
                                         R_WA * Formulas(load.torque, m_time, p_WB_W));
        if (!force.allFinite()) {
            throw RunError(fmt::format("The load on body \"{}\" is not a finite number at {} s; check its formulas.",
                                       m_scenario.bodies[load.body].name, m_time));
        }
    }
    return force;
}

Generalised Mechanism::DrivingForce(std::size_t joint) const {
    const JointMotion& motion = *m_motions[joint];
    const JointRecord& record = m_records.joints[joint];
    const MassProperties& bodies = motion.Bodies();
    const Vector p_WC_W = motion.PoseOf(record, {bodies.p_WC_W, Matrix::Identity()}).p_WB_W;
    return record.fieldForce + record.load + record.elementForce + motion.SpringForce(record) +
           m_screws[joint].ForceOf(bodies.mass * m_scenario.gravity_W, p_WC_W, Vector::Zero());
}

void Mechanism::UpdateStoredEnergy(std::size_t joint) {
    const JointMotion& motion = *m_motions[joint];
    if (!motion.Description().IsFree()) {
        return;
    }
    JointRecord& record = m_records.joints[joint];
    Generalised velocity = motion.VelocityOf(record);
    for (Eigen::Index i = 0; i < velocity.size(); ++i) {
        velocity[i] *= motion.IsFree(static_cast<std::size_t>(i)) ? 1.0 : 0.0;
    }
    record.energy.kinetic = 0.5 * velocity.dot(motion.MassOf(record) * velocity);
    record.energy.potential =
        motion.SpringEnergy(record) - motion.Bodies().mass * m_scenario.gravity_W.dot(motion.CentreForEnergy(record));
}

/// The joints' own dampers of several degrees of freedom come after those of the elements.
std::vector<DamperRow> Mechanism::AllDampers() const {
    std::vector<DamperRow> rows = m_elements.Dampers();
    for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
        const Generalised damping = m_motions[joint]->DampingOf();
        for (Eigen::Index degree = 0; degree < damping.size(); ++degree) {
            if (damping[degree] > 0.0) {
                rows.push_back(OwnDamper(joint, damping, degree));
            }
        }
    }
    return rows;
}

void Mechanism::FlowAllDampers(double duration) {
    const std::vector<DamperRow> rows = AllDampers();
    const std::vector<DampingDone> done = FlowDampers(m_motions, m_records.joints, rows, duration);
    const std::size_t springs = m_records.springs.size();
    for (std::size_t row = 0; row < done.size(); ++row) {
        if (row >= m_elements.Dampers().size()) {
            m_records.joints[rows[row].ends[0].first].energy.dissipated += done[row].dissipated;
            continue;
        }
        const std::size_t owner = m_elements.OwnerOf(row);
        (owner < springs ? m_records.springs[owner].dissipated : m_records.bushings[owner - springs].dissipated) +=
            done[row].dissipated;
        for (std::size_t end = 0; end < rows[row].ends.size(); ++end) {
            m_records.joints[rows[row].ends[end].first].energy.elementWork += done[row].work[end];
        }
    }
}

void Mechanism::Move(double toTime) {
    const double from = m_time;
    m_stepSeconds = toTime - from;
    FlowAllDampers(0.5 * m_stepSeconds);
    m_time = toTime;
    for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
        const JointMotion& motion = *m_motions[joint];
        JointRecord& record = m_records.joints[joint];
        const Generalised force = DrivingForce(joint);
        motion.Kick(record, force, 0.5 * m_stepSeconds);
        m_ways[joint] = motion.Advance(record, force, from, toTime);
        if (motion.Description().IsFree()) {
            motion.RequireBounded(record, m_time, m_stepSeconds);
        }
    }
    Place();
}

/// Along what is free, or along everything where nothing is. (Trapezoidal rule.)
double Mechanism::WorkOver(std::size_t joint, const Generalised& before, const Generalised& after) const {
    const JointMotion& motion = *m_motions[joint];
    double work = 0.0;
    for (Eigen::Index i = 0; i < before.size(); ++i) {
        if (motion.IsFree(static_cast<std::size_t>(i)) || !motion.Description().IsFree()) {
            work += 0.5 * (before[i] + after[i]) * m_ways[joint][i];
        }
    }
    return work;
}

/// The forces at the present place, and their work since the last step.
void Mechanism::TakeForces(std::size_t joint, const std::vector<Load>& loads, bool isStart) {
    JointRecord& record = m_records.joints[joint];
    const auto take = [&](Generalised& kept, const Generalised& now, double& work) {
        if (!isStart) {
            work += WorkOver(joint, kept, now);
        }
        kept = now;
    };
    take(record.fieldForce, FieldForce(joint, loads), record.energy.fieldWork);
    take(record.elementForce, m_elements.ForceOn(joint), record.energy.elementWork);
    if (m_motions[joint]->Description().IsFree()) {
        take(record.load, AppliedForce(joint), record.energy.loadWork);
    }
}

void Mechanism::KeepBooks(JointRecord& record) const {
    const EnergyAccount& energy = record.energy;
    record.books.Add({m_time, energy.kinetic, energy.potential, energy.fieldWork, energy.loadWork, energy.elementWork,
                      energy.dissipated, energy.Imbalance()});
}

void Mechanism::ApplyLoads(const std::vector<Load>& loads) {
    const bool isStart = m_time == 0.0;
    for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
        TakeForces(joint, loads, isStart);
        if (!isStart) {
            m_motions[joint]->Kick(m_records.joints[joint], DrivingForce(joint), 0.5 * m_stepSeconds);
        }
    }
    if (!isStart) {
        FlowAllDampers(0.5 * m_stepSeconds);
    }
    for (std::size_t joint = 0; joint < m_motions.size(); ++joint) {
        if (m_motions[joint]->Description().IsFree()) {
            m_motions[joint]->RequireBounded(m_records.joints[joint], m_time, m_stepSeconds);
            UpdateStoredEnergy(joint);
            KeepBooks(m_records.joints[joint]);
        }
    }
    UpdateElements();
}

void Mechanism::UpdateElements() {
    std::vector<double> speeds;
    for (const DamperRow& damper : m_elements.Dampers()) {
        speeds.push_back(SpeedOf(damper, m_motions, m_records.joints));
    }
    auto [springs, bushings] = m_elements.Records(speeds);
    for (std::size_t i = 0; i < springs.size(); ++i) {
        springs[i].dissipated = m_records.springs[i].dissipated;
    }
    for (std::size_t i = 0; i < bushings.size(); ++i) {
        bushings[i].dissipated = m_records.bushings[i].dissipated;
    }
    m_records.springs = std::move(springs);
    m_records.bushings = std::move(bushings);
}

} // namespace kinora::host
