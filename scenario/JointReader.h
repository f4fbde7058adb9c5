#pragma once

#include "scenario/MotionReader.h"
#include "scenario/Node.h"
#include "scenario/PlacementReader.h"
#include "scenario/Scenario.h"
#include "scenario/UniqueNames.h"

#include <string>
#include <vector>

namespace kinora::scenario {

/// Reads the joints, one after the other, and sees to it that no body hangs on two of them.
class JointReader {
public:
    /// Bodies, stepping and names must outlive this object, which stays where it is.
    /// @param stepping  the times at which prescribed coordinates are looked at; no steps when they are not known
    JointReader(const std::vector<Body>& bodies, const Stepping& stepping, UniqueNames& names)
        : m_bodies(bodies), m_names(names), m_motions(stepping), m_jointOfBody(bodies.size()) {}
    JointReader(const JointReader&) = delete;
    JointReader& operator=(const JointReader&) = delete;

    Joint Read(const Node& node);

private:
    void ReadName(const Node& node, Joint& joint);
    void ReadPlace(const Node& node, Joint& joint) const;
    void ReadMembers(const Node& node, Joint& joint);
    void ReadMotion(const Node& node, Joint& joint) const;
    Coordinate ReadCoordinate(const Node& node, Coordinate::Kind kind, bool isFree, const std::string& owner) const;
    std::vector<Coordinate> ReadCylinder(const Node& node) const;
    Coordinate ReadOneOfCylinder(const Node& node, Coordinate::Kind kind) const;

    const std::vector<Body>& m_bodies;
    UniqueNames& m_names;
    MotionReader m_motions;
    PlacementReader m_placements{m_motions};
    /// Names, empty for a body that hangs on none.
    std::vector<std::string> m_jointOfBody;
};

} // namespace kinora::scenario
