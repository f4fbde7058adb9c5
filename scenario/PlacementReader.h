#pragma once

#include "scenario/MotionReader.h"
#include "scenario/Node.h"
#include "scenario/Scenario.h"

namespace kinora::scenario {

/// Reads what ball joints and free joints do.
class PlacementReader {
public:
    /// @param motions  must outlive this object
    explicit PlacementReader(const MotionReader& motions) : m_motions(motions) {}

    PrescribedPlacement ReadPrescribed(const Node& node, JointType type) const;
    static FreePlacement ReadFree(const Node& node, JointType type);

private:
    PrescribedTurn ReadTurn(const Node& node) const;

    const MotionReader& m_motions;
};

} // namespace kinora::scenario
