#pragma once

#include "scenario/FreeMotion.h"
#include "scenario/Node.h"
#include "scenario/PrescribedMotion.h"
#include "scenario/Scenario.h"

#include <string>
#include <vector>

namespace kinora::scenario {

/// Reads what a single coordinate does. Which other keys may stand beside is the caller's to check.
class MotionReader {
public:
    /// @param stepping  the times at which prescribed coordinates are looked at; no steps when they are not known. It
    ///                  must outlive this object
    explicit MotionReader(const Stepping& stepping) : m_stepping(stepping) {}

    static const std::vector<std::string>& PrescribedKeys();
    static const std::vector<std::string>& FreeKeys();

    /// Either an expression or a table.
    PrescribedMotion ReadPrescribed(const Node& node, Coordinate::Kind kind) const;
    static FreeMotion ReadFree(const Node& node, Coordinate::Kind kind);

private:
    PrescribedMotion ReadFormula(const Node& node, Coordinate::Kind kind) const;

    const Stepping& m_stepping;
};

/// Reports the time of a row that does not come after that of the row before.
void RequireAscending(const Node& row, double time, double timeBefore);

} // namespace kinora::scenario
