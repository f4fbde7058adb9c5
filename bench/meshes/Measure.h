#pragma once
// One row of the table: times, memory and accuracy of the solver for a scene, beside its peer and its floor.
#include "bench/meshes/Scenes.h"

#include <nlohmann/json.hpp>

/// @param peerSeconds  the peer is given up when its next refinement would take longer
nlohmann::json Measured(const Scene& scene, double peerSeconds);
