// vantor-meshes list | row | reference: the solver with meshes of CAD programs, beside the clock, the sum over dipoles
// and the fewest closed forms. scripts/bench meshes runs every row in a process of its own and writes the table of
// docs/performance.md.
#include "bench/meshes/Measure.h"
#include "tests/simulator/solver/Facets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <stdexcept>

namespace {

using references::Model;

/// Loads by charges, as MeshCases.cpp has them, and how far they are by surface currents: from the force, and from the
/// torque relative to force times 10 mm.
void PrintReferences() {
    for (const meshes::Case& one : meshes::Cases()) {
        const auto load = [&](Model model) {
            return references::FacetLoad(references::FacetsOf(one.bodies[0], model),
                                         references::FacetsOf(one.bodies[1], model), model);
        };
        const references::Load charges = load(Model::Charges), currents = load(Model::Currents);
        const auto braced = [](const Eigen::Vector3d& vector) {
            return fmt::format("{{{:.9g}, {:.9g}, {:.9g}}}", vector.x(), vector.y(), vector.z());
        };
        const double force = charges.force.norm();
        fmt::print("{}: {{{}, {}}}; by currents {:.1e} and {:.1e} more or less\n", one.name, braced(charges.force),
                   braced(charges.torque), (currents.force - charges.force).norm() / force,
                   (currents.torque - charges.torque).norm() / (0.01 * force));
        std::fflush(stdout);
    }
}

void PrintRow(const std::vector<Scene>& scenes, const std::string& title, double peerSeconds) {
    const auto scene = std::find_if(scenes.begin(), scenes.end(),
                                    [&title](const Scene& candidate) { return candidate.Title() == title; });
    if (scene == scenes.end()) {
        throw std::invalid_argument(fmt::format("no scene is called \"{}\"; \"vantor-meshes list\" names them", title));
    }
    fmt::print("{}\n", Measured(*scene, peerSeconds).dump());
}

/// @return the exit status
int Run(int count, char** arguments) {
    CLI::App app("Measures the field solver with meshes of CAD programs.", "vantor-meshes");
    app.require_subcommand(1);
    std::string folder = "build/meshes", title;
    double peerSeconds = 2;
    app.add_option("--meshes", folder, "Folder of the large meshes (scripts/make-meshes all)")->capture_default_str();
    const CLI::App* list = app.add_subcommand("list", "Print the scenes, one a line");
    CLI::App* row = app.add_subcommand("row", "Measure a scene and print the figures as JSON");
    row->add_option("TITLE", title, "The scene, as in the list")->required();
    row->add_option("--peer-seconds", peerSeconds, "Longest time of the sum over dipoles")->capture_default_str();
    const CLI::App* reference =
        app.add_subcommand("reference", "Print the reference loads of the tests; takes minutes");
    CLI11_PARSE(app, count, arguments);
    const std::vector<Scene> scenes = Scenes(folder);
    if (*list) {
        std::for_each(scenes.begin(), scenes.end(), [](const Scene& scene) { fmt::print("{}\n", scene.Title()); });
    } else if (*row) {
        PrintRow(scenes, title, peerSeconds);
    } else if (*reference) {
        PrintReferences();
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return Run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return dynamic_cast<const std::invalid_argument*>(&error) ? 2 : 1;
    }
}
