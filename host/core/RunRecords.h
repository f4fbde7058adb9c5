#pragma once

#include "host/mechanism/Mechanism.h"
#include "interface/IKinoraVeltrixInterface.h"

#include <vector>

namespace kinora::host {

/// Everything known after a step.
struct StepRecord {
    int step = 0;
    /// Seconds.
    double time = 0.0;
    /// In the bodies' order.
    std::vector<scenario::Pose> poses;
    /// In the bodies' order, every body's in its own axes B, units as the desktop gave them.
    std::vector<IKinoraVeltrixInterface::Result> results;
    MechanismRecord mechanism;
};

} // namespace kinora::host
