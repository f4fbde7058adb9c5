#pragma once

#include "scenario/Node.h"
#include "scenario/Scenario.h"
#include "scenario/UniqueNames.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kinora::scenario {

/// Reads the joints, one after the other, and sees to it that no body hangs on two of them.
class JointReader {
public:
    /// Bodies and stepping must outlive this object.
    /// @param stepping  the times at which prescribed coordinates are looked at; no steps when they are not known
    JointReader(const std::vector<Body>& bodies, const Stepping& stepping)
        : m_bodies(bodies), m_stepping(stepping), m_jointOfBody(bodies.size()) {}

    Joint Read(const Node& node);

private:
    PrescribedMotion ReadPrescribed(const Node& node, JointType type) const;
    PrescribedMotion ReadFormula(const Node& node, JointType type) const;
    void ReadMembers(const Node& node, Joint& joint);
    std::optional<std::size_t> BodyIndex(const Node& node) const;
    void CheckInertia(const Node& node, const Joint& joint) const;

    const std::vector<Body>& m_bodies;
    const Stepping& m_stepping;
    /// Names, empty for a body that hangs on none.
    std::vector<std::string> m_jointOfBody;
    UniqueNames m_names{"joint"};
};

} // namespace kinora::scenario
