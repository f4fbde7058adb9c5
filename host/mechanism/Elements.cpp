#include "host/mechanism/Elements.h"

namespace kinora::host {

using namespace scenario;

Elements::Elements(const Scenario& scenario) : m_scenario(scenario), m_jointOfBody(scenario.JointOfEachBody()) {
    for (const SpringElement& spring : scenario.springs) {
        m_ends.push_back({&spring.from, &spring.to, {}, {}});
    }
    for (const Bushing& bushing : scenario.bushings) {
        m_ends.push_back({&bushing.from, &bushing.to, {}, {}});
    }
}

Pose Elements::FrameOf(const Attachment& attachment, const std::vector<Pose>& poses) {
    return attachment.body ? poses[*attachment.body] * attachment.X_BF : attachment.X_BF;
}

void Elements::Place(const std::vector<Pose>& poses, const std::vector<Screws>& screws) {
    m_screws = screws;
    m_effects.clear();
    m_dampers.clear();
    m_owners.clear();
    for (std::size_t i = 0; i < m_ends.size(); ++i) {
        Ends& ends = m_ends[i];
        ends.X_WF = FrameOf(*ends.from, poses);
        ends.X_WG = FrameOf(*ends.to, poses);
        const std::size_t springs = m_scenario.springs.size();
        m_effects.push_back(i < springs ? EffectOf(m_scenario.springs[i], ends.X_WF, ends.X_WG)
                                        : EffectOf(m_scenario.bushings[i - springs], ends.X_WF, ends.X_WG));
        for (const Damper& damper : m_effects.back().dampers) {
            m_dampers.push_back(RowOf(i, damper));
            m_owners.push_back(i);
        }
    }
}

std::vector<std::pair<std::size_t, double>> Elements::JointsOf(const Ends& ends) const {
    std::vector<std::pair<std::size_t, double>> joints;
    for (const auto& [attachment, sign] : {std::pair(ends.from, -1.0), std::pair(ends.to, 1.0)}) {
        if (attachment->body && m_jointOfBody[*attachment->body]) {
            joints.emplace_back(*m_jointOfBody[*attachment->body], sign);
        }
    }
    return joints;
}

DamperRow Elements::RowOf(std::size_t element, const Damper& damper) const {
    DamperRow row{damper.coefficient, {}};
    for (const auto& [joint, sign] : JointsOf(m_ends[element])) {
        row.ends.emplace_back(
            joint, sign * m_screws[joint].ForceOf(damper.linear_W, m_effects[element].p_WP_W, damper.angular_W));
    }
    return row;
}

Generalised Elements::ForceOn(std::size_t joint) const {
    Generalised force = Generalised::Zero(static_cast<Eigen::Index>(m_screws[joint].screws.size()));
    for (std::size_t i = 0; i < m_ends.size(); ++i) {
        for (const auto& [moved, sign] : JointsOf(m_ends[i])) {
            if (moved == joint) {
                const ElementEffect& effect = m_effects[i];
                force += sign * m_screws[joint].ForceOf(effect.force_W, effect.p_WP_W, effect.torque_W);
            }
        }
    }
    return force;
}

std::pair<std::vector<SpringRecord>, std::vector<BushingRecord>>
Elements::Records(const std::vector<double>& damperSpeeds) const {
    std::vector<ElementEffect> loads = m_effects;
    std::vector<std::size_t> next(loads.size(), 0);
    for (std::size_t i = 0; i < m_dampers.size(); ++i) {
        ElementEffect& load = loads[m_owners[i]];
        const Damper& damper = load.dampers[next[m_owners[i]]++];
        load.force_W -= damper.coefficient * damperSpeeds[i] * damper.linear_W;
        load.torque_W -= damper.coefficient * damperSpeeds[i] * damper.angular_W;
    }
    std::pair<std::vector<SpringRecord>, std::vector<BushingRecord>> records;
    for (std::size_t i = 0; i < loads.size(); ++i) {
        const auto& [from, to, X_WF, X_WG] = m_ends[i];
        if (i < m_scenario.springs.size()) {
            records.first.push_back(SpringRecordOf(loads[i], X_WF, X_WG));
        } else {
            records.second.push_back(BushingRecordOf(loads[i], X_WF, X_WG));
        }
    }
    return records;
}

} // namespace kinora::host
