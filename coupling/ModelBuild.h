#pragma once

#include "comutils/Dispatch.h"
#include "coupling/KinoraVeltrixCoupling.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/// What `InitMagneticObjects` knows while it builds the model.
struct CKinoraVeltrixCoupling::ModelBuild {
    CObject editor;
    CObject materials;
    CObject definitions;
    std::string setup;
    /// The design's local variables when the build began.
    std::set<std::string> existingVariables;
    /// Pose variables that the design has already, to be updated.
    std::map<std::string, std::string> updates;
    /// First row of the history.
    std::vector<std::string> initialRow;
    /// Becomes false when a variable cannot be created, which does not stop the build.
    bool allVariablesCreated = true;
};
