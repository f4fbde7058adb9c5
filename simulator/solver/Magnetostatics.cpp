#include "simulator/solver/Magnetostatics.h"

#include "simulator/solver/ClusterSum.h"
#include "simulator/solver/FaceSum.h"
#include "simulator/solver/Parallel.h"
#include "simulator/solver/PermeableSum.h"
#include "simulator/solver/PointIntegral.h"
#include "simulator/solver/PreparedMagnet.h"
#include "simulator/solver/Saturation.h"
#include "simulator/solver/Separation.h"

#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

constexpr double solidAngleOfAll = 12.566370614359172954;

void CheckOptions(const Options& options) {
    if (!std::isfinite(options.percentError) || options.percentError <= 0) {
        throw SolveError("The percent error " + std::to_string(options.percentError) +
                         " is no goal to solve for; give a positive number.");
    }
    if (options.maximumPasses < 1) {
        throw SolveError("The maximum number of passes is " + std::to_string(options.maximumPasses) +
                         "; it must be at least 1.");
    }
    if (options.threads < 0) {
        throw SolveError("The number of threads is " + std::to_string(options.threads) +
                         "; give 0 for as many as the machine has.");
    }
}

/// The share of the whole sphere that a closed mesh fills, seen from a point: 1 inside, 0 outside, a half on a face.
double SolidAngleShare(const TriangleMesh& mesh, const Eigen::Vector3d& point) {
    constexpr double inThePlane = 1e-12;
    double halfAngle = 0;
    for (const auto& triangle : mesh.triangles) {
        const auto toCorner = [&](std::size_t i) -> Eigen::Vector3d {
            return mesh.vertices[static_cast<std::size_t>(triangle[i])] - point;
        };
        const Eigen::Vector3d a = toCorner(0), b = toCorner(1), c = toCorner(2);
        const double distances = a.norm() * b.norm() * c.norm();
        const double volume = a.dot(b.cross(c));
        // A triangle that the point lies on is seen from both sides, one that it is in line with from none.
        if (std::abs(volume) > inThePlane * distances) {
            halfAngle +=
                std::atan2(volume, distances + a.dot(b) * c.norm() + b.dot(c) * a.norm() + c.dot(a) * b.norm());
        }
    }
    return 2 * halfAngle / solidAngleOfAll;
}

/// Whether the magnets' faces are so few that no clusters are needed.
bool HaveFewFaces(const std::vector<PreparedMagnet>& magnets) {
    // The cost of integrals along edges is that of pairs of edges.
    constexpr std::size_t fewPairsOfEdges = 65536;
    std::size_t pairs = 0;
    for (std::size_t i = 0; i < magnets.size(); ++i) {
        for (std::size_t j = i + 1; j < magnets.size(); ++j) {
            const bool count = magnets[i].body != magnets[j].body;
            pairs += count ? magnets[i].shape->EdgeCount() * magnets[j].shape->EdgeCount() : 0;
        }
    }
    return pairs <= fewPairsOfEdges;
}

bool ArePermeable(const std::vector<Body>& bodies) {
    return std::any_of(bodies.begin(), bodies.end(), [](const Body& body) {
        return std::any_of(body.magnets.begin(), body.magnets.end(), IsPermeable);
    });
}

/// Passes until the wanted error is met, or nothing can be improved, or the maximum is reached.
template <class Sum>
Solution RunPasses(Sum&& sum, const Options& options) {
    Solution solution;
    bool more = true;
    while (more) {
        solution.passes.push_back(sum.Evaluate());
        if (options.passDone) {
            options.passDone(solution.passes.back());
        }
        solution.converged = solution.passes.back().percentError <= options.percentError;
        more = !solution.converged && solution.passes.back().number < options.maximumPasses && sum.Refine();
    }
    solution.loads = sum.Loads();
    return solution;
}

} // namespace

struct Solver::Implementation {
    ShapeStore shapes;
    PermeableStore permeable;

    Solution SolveFor(const std::vector<PreparedMagnet>& magnets, const std::vector<Body>& bodies,
                      const Eigen::Vector3d& origin, const Options& options);
};

Solver::Solver() : m_implementation(new Implementation) {}
Solver::~Solver() = default;
Solver::Solver(Solver&&) noexcept = default;
Solver& Solver::operator=(Solver&&) noexcept = default;

Solution Solver::Implementation::SolveFor(const std::vector<PreparedMagnet>& magnets, const std::vector<Body>& bodies,
                                          const Eigen::Vector3d& origin, const Options& options) {
    if (ArePermeable(bodies)) {
        std::vector<PermeableStore::Placed> placed = permeable.Prepare(bodies, origin);
        std::vector<std::string> warnings = Saturate(magnets, placed, options);
        Solution solution = RunPasses(PermeableSum(magnets, std::move(placed), options), options);
        solution.warnings = std::move(warnings);
        return solution;
    }
    return HaveFewFaces(magnets) ? RunPasses(FaceSum(magnets, bodies.size(), options), options)
                                 : RunPasses(ClusterSum(magnets, bodies.size(), options), options);
}

Solution Solver::Solve(const std::vector<Body>& bodies, const Options& options) {
    CheckOptions(options);
    Eigen::Vector3d origin;
    const std::vector<PreparedMagnet> magnets = m_implementation->shapes.Prepare(bodies, options.threads, origin);
    CheckSeparation(magnets);
    Solution solution = m_implementation->SolveFor(magnets, bodies, origin, options);
    for (Load& load : solution.loads) {
        load.torque += origin.cross(load.force);
        load.torqueError += origin.norm() * load.forceError;
        load.torqueScale += origin.norm() * load.forceScale;
        if (!load.force.allFinite() || !load.torque.allFinite()) {
            throw SolveError("The loads are beyond what numbers can hold; check the bodies' sizes and magnetisations.");
        }
    }
    return solution;
}

Solution Solve(const std::vector<Body>& bodies, const Options& options) {
    return Solver().Solve(bodies, options);
}

struct FieldEvaluator::Implementation {
    Eigen::Vector3d origin;
    /// All solids, and each one's permeability.
    std::vector<PreparedMagnet> magnets;
    std::vector<double> permeabilities;
    std::vector<ChargedFace> faces;
};

namespace {

/// The charges of all bodies. The field has no error of its own to be refined by, so the passes' number says how far to
/// go.
std::vector<PreparedMagnet> ChargesOf(const std::vector<PreparedMagnet>& magnets,
                                      const std::vector<PermeableStore::Placed>& bodies) {
    constexpr int passes = 5;
    const Options options;
    PermeableSum sum(magnets, bodies, options);
    for (int i = 0; i < passes && (i == 0 || sum.Refine()); ++i) {
        sum.SolveCharges();
    }
    return sum.Charged();
}

} // namespace

FieldEvaluator::FieldEvaluator(const std::vector<Body>& bodies) : m_implementation(new Implementation) {
    Implementation& all = *m_implementation;
    all.magnets = ShapeStore().Prepare(bodies, 0, all.origin);
    if (!ArePermeable(bodies)) {
        all.permeabilities.assign(all.magnets.size(), 1);
        all.faces = AllPosedFaces(all.magnets);
        return;
    }
    PermeableStore store;
    std::vector<PermeableStore::Placed> placed = store.Prepare(bodies, all.origin);
    Saturate(all.magnets, placed, Options());
    for (const PermeableStore::Placed& body : placed) {
        for (const PermeableSolid& solid : body.entry->body.Solids()) {
            all.permeabilities.push_back(solid.permeability);
        }
    }
    all.faces = AllPosedFaces(ChargesOf(all.magnets, placed));
}

FieldEvaluator::~FieldEvaluator() = default;
FieldEvaluator::FieldEvaluator(FieldEvaluator&&) noexcept = default;
FieldEvaluator& FieldEvaluator::operator=(FieldEvaluator&&) noexcept = default;

Eigen::Vector3d FieldEvaluator::H(const Eigen::Vector3d& point) const {
    const Eigen::Vector3d x = point - m_implementation->origin;
    Eigen::Vector3d field = Eigen::Vector3d::Zero();
    for (const ChargedFace& face : m_implementation->faces) {
        field += ChargeField(face, x) / solidAngleOfAll;
    }
    return field;
}

Eigen::Vector3d FieldEvaluator::M(const Eigen::Vector3d& point) const {
    // Rounding takes a point of the surface this far out of the box at most.
    constexpr double margin = 1e-9;
    const Implementation& all = *m_implementation;
    const Eigen::Vector3d x = point - all.origin;
    Eigen::Vector3d magnetisation = Eigen::Vector3d::Zero();
    for (std::size_t i = 0; i < all.magnets.size(); ++i) {
        const PreparedMagnet& magnet = all.magnets[i];
        if (magnet.box.exteriorDistance(x) > margin * magnet.Radius()) {
            continue;
        }
        const double share = SolidAngleShare(magnet.shape->Mesh(), magnet.pose.inverse() * x);
        magnetisation += share * magnet.magnetisation;
        if (share != 0 && all.permeabilities[i] != 1) {
            magnetisation += share * (all.permeabilities[i] - 1) * H(point);
        }
    }
    return magnetisation;
}

Eigen::Vector3d FieldH(const std::vector<Body>& bodies, const Eigen::Vector3d& point) {
    return FieldEvaluator(bodies).H(point);
}

} // namespace vantor::solver
