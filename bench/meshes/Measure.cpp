#include "bench/meshes/Measure.h"

#include "bench/meshes/Floor.h"
#include "bench/meshes/Peer.h"
#include "bench/step/Timing.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <malloc.h>
#include <string>

using Eigen::Vector3d;
using vantor::solver::Body;
using vantor::solver::Options;
using vantor::solver::Solution;
using vantor::solver::Solver;

namespace {

/// Later solves: at least two, and more until they have taken so long.
constexpr int leastSteps = 2, mostSteps = 30;
constexpr double stepSeconds = 1;
/// What the load is compared with: the same solver at this error, or at so much less than the load's own estimate.
constexpr double convergedPercent = 0.01, convergedShare = 0.05;

/// A value of /proc/self/status, bytes.
double StatusBytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == name + ":") {
            double kilobytes = 0;
            status >> kilobytes;
            return 1024 * kilobytes;
        }
    }
    return 0;
}

/// How far memory in use grows above what it was at first, bytes.
class MemoryPeak {
public:
    MemoryPeak() {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts anew
        m_before = StatusBytes("VmRSS");
    }
    double Bytes() const { return StatusBytes("VmHWM") - m_before; }

private:
    double m_before = 0;
};

/// Force, and torque about the body's middle.
struct CentredLoad {
    Vector3d force, torque;
};

class Comparison {
public:
    Comparison(const std::vector<Body>& bodies, const Solution& converged) {
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            Eigen::AlignedBox3d box;
            for (const vantor::solver::Magnet& magnet : bodies[i].magnets) {
                for (const Vector3d& vertex : magnet.mesh->vertices) {
                    box.extend(magnet.pose * vertex);
                }
            }
            m_centres.push_back(box.center());
            m_expected.push_back(Centred(i, converged.loads[i]));
            m_force = std::max(m_force, m_expected[i].force.norm());
            m_torque = std::max({m_torque, m_expected[i].torque.norm(), box.diagonal().norm() / 40 * m_force});
        }
    }

    /// Largest deviation of a body's force, relative to the largest force of all, and of its torque, relative to the
    /// largest torque of all or a twentieth of force times radius.
    template <class Loads>
    double DeviationOf(const Loads& loads) const {
        double largest = 0;
        for (std::size_t i = 0; i < m_expected.size(); ++i) {
            const CentredLoad load = Centred(i, loads[i]);
            largest = std::max({largest, (load.force - m_expected[i].force).norm() / m_force,
                                (load.torque - m_expected[i].torque).norm() / m_torque});
        }
        return largest;
    }

private:
    template <class Load>
    CentredLoad Centred(std::size_t body, const Load& load) const {
        return {load.force, load.torque - m_centres[body].cross(load.force)};
    }

    std::vector<Vector3d> m_centres;
    std::vector<CentredLoad> m_expected;
    double m_force = 0, m_torque = 0;
};

/// The least of some later solves, each at another place.
double LaterSolve(Solver& solver, const std::vector<Body>& bodies) {
    double least = std::numeric_limits<double>::infinity(), spent = 0;
    for (int step = 1; step <= mostSteps && (step <= leastSteps || spent < stepSeconds); ++step) {
        const std::vector<Body> turned = AtStep(bodies, step);
        const double seconds = SecondsOf([&] { solver.Solve(turned); });
        least = std::min(least, seconds);
        spent += seconds;
    }
    return least;
}

/// Cells made smaller until the dipoles' loads are as good as the solver's; the time of these and what they reached.
nlohmann::json Peer(const std::vector<Body>& bodies, const Comparison& comparison, double wanted, double longest) {
    double edge = std::numeric_limits<double>::infinity();
    for (const Body& body : bodies) {
        for (const vantor::solver::Magnet& magnet : body.magnets) {
            edge = std::min(edge, std::cbrt(VolumeOf(*magnet.mesh) / 8));
        }
    }
    while (true) {
        std::vector<std::vector<Dipole>> cells;
        std::transform(bodies.begin(), bodies.end(), std::back_inserter(cells),
                       [edge](const Body& body) { return CellsOf(body, edge); });
        std::vector<references::Load> loads;
        const double seconds = SecondsOf([&] { loads = DipoleLoads(cells); });
        const double deviation = comparison.DeviationOf(loads);
        constexpr double finer = 1.25;
        if (deviation <= wanted || seconds * std::pow(finer, 6) > longest) {
            return {{"seconds", seconds},
                    {"cells", cells[0].size()},
                    {"deviation", deviation},
                    {"reached", deviation <= wanted}};
        }
        edge /= finer;
    }
}

double FloorSeconds(const Floor& floor) {
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 3; ++i) {
        volatile double sink = 0;
        least = std::min(least, SecondsOf([&] { sink = floor.Evaluate().norm(); }));
    }
    return least;
}

} // namespace

nlohmann::json Measured(const Scene& scene, double peerSeconds) {
    const std::vector<Body> bodies = scene.bodies();
    std::size_t triangles = 0, evaluations = 0;
    for (const Body& body : bodies) {
        for (const vantor::solver::Magnet& magnet : body.magnets) {
            triangles += magnet.mesh->triangles.size();
        }
    }
    Solver solver;
    Solution first;
    const MemoryPeak memory;
    const double firstSeconds = SecondsOf([&] { first = solver.Solve(bodies); });
    const double bytes = memory.Bytes();
    for (const vantor::solver::Pass& pass : first.passes) {
        evaluations += pass.evaluations;
    }
    nlohmann::json row = {{"name", scene.name},
                          {"order", scene.order},
                          {"gap", scene.gap},
                          {"growth", scene.growth},
                          {"triangles", triangles},
                          {"firstSeconds", firstSeconds},
                          {"stepSeconds", LaterSolve(solver, bodies)},
                          {"percentError", first.passes.back().percentError},
                          {"converged", first.converged},
                          {"evaluations", evaluations},
                          {"passes", first.passes.size()},
                          {"bytesPerTriangle", bytes / static_cast<double>(triangles)}};
    if (scene.growth) {
        return row;
    }
    const Floor floor(bodies);
    row["nearPairs"] = floor.Pairs();
    row["floorSeconds"] = FloorSeconds(floor);
    Options options;
    options.percentError = std::min(convergedPercent, convergedShare * first.passes.back().percentError);
    const Comparison comparison(bodies, solver.Solve(bodies, options));
    row["deviation"] = comparison.DeviationOf(first.loads);
    row["peer"] = Peer(bodies, comparison, row["deviation"], peerSeconds);
    return row;
}
