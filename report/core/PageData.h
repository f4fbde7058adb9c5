#pragma once

#include "report/core/HostStates.h"
#include "report/core/Orientation.h"
#include "scenario/Scenario.h"

#include <string>

namespace kinora::report {

/// What the page shows beside the log's numbers. Texts are UTF-8.
struct PageContext {
    std::string generator;
    std::string project;
    std::string logName;
    std::string scenarioName;
    /// Null without one.
    const scenario::Scenario* scenario = nullptr;
    Orientation orientation = Orientation::Exact;
    /// The bytes of the scenario's geometry file; empty without one.
    std::string geometry;
    /// First the run's, then the log's.
    std::vector<Notice> notices;
};

/// The data block of the page as JSON in ASCII in which no "<", ">" or "&" stands, so that no text can leave the
/// block. docs/report.md describes it.
std::string MakePageData(const CouplingLog& log, const HostStates& states, const PageContext& context);

/// What the log and the scenario tell that the reader must know: bodies of one that the other lacks, and poses at which
/// the desktop's frame is not the body's, or may not be.
/// @param orientation  absent when it is not known; the page then takes it for exact
std::vector<Notice> CheckRun(const CouplingLog& log, const scenario::Scenario* scenario,
                             std::optional<Orientation> orientation);

/// Metres in a length unit of the desktop; 0 for an unknown one.
double MetresPerUnit(const std::string& unit);

} // namespace kinora::report
