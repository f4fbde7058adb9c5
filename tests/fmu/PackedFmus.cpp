#include "tests/fmu/PackedFmus.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace importer {
namespace {

/// The scenario of `Tilted`.
constexpr double drawnAngle = 0.4;
constexpr double rate = 2.0; // of the turn about (1, 2, 2) / 3, rad/s
constexpr double axis[] = {1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0};
constexpr double point[] = {0.002, 0.0, 0.001};
constexpr double start[] = {0.0, 0.0, -0.006};
constexpr double speed[] = {0.0, 0.03, -0.02}; // m/s

const char* const tiltedScenario = R"({
  "title": "A cube that moves and turns beside another",
  "project": { "file": "tilted.vantor" },
  "geometry": { "file": "cube-magnets.obj", "units": "mm" },
  "materials": { "lower_magnet": { "name": "magnet_1T", "direction": [0, 0.6, 0.8] },
                 "upper_magnet": { "name": "magnet_1T", "direction": [1, 0, 1] } },
  "bodies": [
    { "name": "mover", "objects": ["lower_magnet"], "rotation": { "axis": [0, 0, 1], "angle": 0.4 } },
    { "name": "holder", "objects": ["upper_magnet"], "position": [0, 0, 0.012] } ],
  "joints": [ { "name": "flight", "type": "free", "bodies": ["mover"], "point": [0.002, 0, 0.001],
    "prescribed": { "y": { "expression": "0.03*t" }, "z": { "expression": "-0.006 - 0.02*t" },
                    "turn": { "axis": [1, 2, 2], "expression": "0.1 + 2*t" } } } ],
  "solver": { "step": 0.05, "end": 0.2 },
  "output": { "csv": "tilted.csv" }
})";

/// w, x, y, z of a turn about the axis.
std::vector<double> AboutAxis(double angle) {
    const double s = std::sin(0.5 * angle);
    return {std::cos(0.5 * angle), s * axis[0], s * axis[1], s * axis[2]};
}

std::vector<double> Product(const std::vector<double>& a, const std::vector<double>& b) {
    return {
        a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3], a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
        a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1], a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]};
}

} // namespace

const endtoend::ScratchFolder& Workshop() {
    static const endtoend::ScratchFolder folder;
    return folder;
}

const Fmu& Packed(const std::filesystem::path& scenario, int version, const std::vector<std::string>& words) {
    static std::map<std::string, std::unique_ptr<Fmu>> packed;
    std::string key = scenario.u8string() + " " + std::to_string(version);
    for (const std::string& word : words) {
        key += " " + word;
    }
    std::unique_ptr<Fmu>& fmu = packed[key];
    if (!fmu) {
        const std::string name = "fmu " + std::to_string(packed.size()); // a blank in its path
        const std::filesystem::path file = Workshop() / (name + ".fmu");
        std::vector<std::string> all = {scenario.u8string(), "-o", file.u8string(), "--fmi", std::to_string(version)};
        all.insert(all.end(), words.begin(), words.end());
        const endtoend::Outcome outcome = endtoend::RunProgram(endtoend::ProgramBeside("kinora-fmu"), all);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        fmu = std::make_unique<Fmu>(file, Workshop() / name);
    }
    return *fmu;
}

const TiltedScenario& Tilted() {
    static const TiltedScenario tilted = [] {
        const std::filesystem::path folder = Workshop() / "tilted";
        std::filesystem::create_directory(folder);
        std::filesystem::copy_file(endtoend::Examples() / "cube-magnets" / "cube-magnets.obj",
                                   folder / "cube-magnets.obj");
        std::ofstream(folder / "tilted.json") << tiltedScenario;
        return TiltedScenario{folder / "tilted.json"};
    }();
    return tilted;
}

std::vector<double> TiltedScenario::Turn(double time) {
    return AboutAxis(0.1 + rate * time);
}

std::vector<double> TiltedScenario::Displacement(double time) {
    return {start[0] + speed[0] * time, start[1] + speed[1] * time, start[2] + speed[2] * time};
}

std::vector<double> TiltedScenario::Orientation(double time) {
    return Product(Turn(time), {std::cos(0.5 * drawnAngle), 0.0, 0.0, std::sin(0.5 * drawnAngle)});
}

/// By the rotation formula of Rodrigues.
std::vector<double> TiltedScenario::Position(double time) {
    const double angle = 0.1 + rate * time, c = std::cos(angle), s = std::sin(angle);
    double arm[3], along = 0.0;
    for (int i = 0; i < 3; ++i) {
        arm[i] = -point[i]; // its origin is drawn at 0
        along += axis[i] * arm[i];
    }
    std::vector<double> position;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        const double across = axis[j] * arm[k] - axis[k] * arm[j];
        position.push_back(point[i] + start[i] + speed[i] * time + c * arm[i] + s * across +
                           (1.0 - c) * along * axis[i]);
    }
    return position;
}

} // namespace importer
