#pragma once
// What vantor-meshes measures: magnets as they come out of CAD programs, and many of them.
#include "tests/simulator/solver/MeshCases.h"

#include <functional>
#include <string>
#include <vector>

struct Scene {
    std::string name;
    /// "random" or "ordered" triangles; empty where there is no choice.
    std::string order;
    /// Between the bodies, mm.
    double gap = 0;
    /// Belongs into the plot of times over triangles, not into the table.
    bool growth = false;
    std::function<std::vector<vantor::solver::Body>()> bodies;

    /// In words, one for each scene.
    std::string Title() const;
};

/// @param folder  where the large meshes of `scripts/make-meshes all` are; rings that are not there are generated,
///                other scenes left out
std::vector<Scene> Scenes(const std::filesystem::path& folder);

/// The bodies after so many steps: all but the first have turned by a degree a step about the upright axis
/// through the middle of their magnets.
std::vector<vantor::solver::Body> AtStep(std::vector<vantor::solver::Body> bodies, int step);
