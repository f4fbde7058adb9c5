#pragma once
// Magnetostatics of rigid bodies of magnets and iron in empty space.
//
// Every magnet is a closed triangle mesh of one material: M = M0 + (mu - 1) H. Its field is that of the surface charge
// sigma = M.n on its faces; the load on a body is the integral of mu0 sigma H over its own charged faces, H being the
// field of all other bodies. Where mu is 1 the charge is known beforehand; elsewhere it is solved for, with what it
// makes of itself and of all others.
#include <Eigen/Geometry>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vantor::solver {

/// Vacuum permeability, V s/(A m): the value that was exact until 2019 and is within 1e-9 of the measured one.
constexpr double vacuumPermeability = 1.25663706143591729539e-6;

/// Of what a solve takes: superconductors are below, and everything that is called non-magnetic is close to 1.
constexpr double leastRelativePermeability = 0.9;

/// A closed surface: corners in metres, and three corner indices per triangle, counter-clockwise seen from outside.
/// Corners may be repeated (every triangle its own three). Triangles without area are ignored.
struct TriangleMesh {
    std::vector<Eigen::Vector3d> vertices;
    std::vector<std::array<int, 3>> triangles;
};

/// B over H of a soft-magnetic material in one direction, from zero field on.
struct MagnetizationCurve {
    struct Point {
        /// A/m.
        double h = 0;
        /// T.
        double b = 0;
    };
    /// The first one is (0, 0); both grow, B never by less than vacuum's share. Beyond the last one B grows as in
    /// vacuum.
    std::vector<Point> points;
};

/// One piece of one material: a magnet, or iron.
struct Magnet {
    std::string name;
    /// In the magnet's own axes; null is a mesh of nothing. It is never changed: what a Solver knows of a mesh it
    /// keeps as long as it gets the same one again.
    std::shared_ptr<const TriangleMesh> mesh;
    /// A/m, in the magnet's own axes: M where H is 0. Of a permeability mu and a coercivity Hc it is mu Hc.
    Eigen::Vector3d magnetisation = Eigen::Vector3d::Zero();
    /// Where the magnet is: global = pose * own, metres.
    Eigen::Isometry3d pose = Eigen::Isometry3d::Identity();
    /// Relative permeability mu, 0.9 or more: M = magnetisation + (mu - 1) H.
    double permeability = 1;
    /// Gives the permeability, by its second point, and where the solid saturates one that fits its field; null for a
    /// linear material. Only without magnetisation.
    std::shared_ptr<const MagnetizationCurve> curve = nullptr;
};

/// Magnets that move together. The forces between magnets of one body do not count, and these magnets may touch.
struct Body {
    std::string name;
    std::vector<Magnet> magnets;
};

/// What one refinement pass reached.
struct Pass {
    /// 1, 2, ...
    int number = 0;
    /// Largest error estimate over all bodies, force and torque.
    double percentError = 0;
    /// Field evaluations made in this pass.
    std::size_t evaluations = 0;
};

/// When to stop, and how many threads to use. The result does not depend on the number of threads, to the last bit.
struct Options {
    /// Wanted error of every body's force and torque, percent; > 0.
    double percentError = 0.5;
    /// Refinement passes after which to stop in any case; >= 1.
    int maximumPasses = 15;
    /// 0: as many as the machine has.
    int threads = 0;
    /// Told of every pass when it is done, in the calling thread; may be empty.
    std::function<void(const Pass&)> passDone;
};

/// Load on one body.
struct Load {
    /// N.
    Eigen::Vector3d force = Eigen::Vector3d::Zero();
    /// N m, about the GLOBAL origin.
    Eigen::Vector3d torque = Eigen::Vector3d::Zero();
    /// Estimate of |error of force|, N.
    double forceError = 0;
    /// Estimate of |error of torque|, N m.
    double torqueError = 0;
    /// What the load is the sum of, faces by faces, without regard to direction: N and N m. A component that is a
    /// trillionth of it is nothing but rounding.
    double forceScale = 0;
    double torqueScale = 0;
};

/// Loads (one per body, in the bodies' order) and how they came about. `converged` says whether the last pass met
/// Options::percentError; when it did not, the loads are the best found and their errors say how good they are.
struct Solution {
    std::vector<Load> loads;
    std::vector<Pass> passes;
    bool converged = false;
    /// By what the loads may be off, one line each, with the magnets' names: iron that saturates.
    std::vector<std::string> warnings;
};

/// The bodies cannot be solved. The message is one line: what is wrong, with the names of the magnets and bodies
/// concerned, and what to do.
class SolveError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Solves for the load on every body from all others.
///
/// The error in percent is measured against the larger of the body's own load and a hundredth of what dipoles of the
/// same moments would exert at most, so that a load that vanishes by symmetry counts as solved; torques are judged
/// about the body's own centre. Action and reaction cancel exactly.
///
/// @param bodies   a body without magnets, or a magnet without magnetisation, gets and gives no load
/// @throws SolveError  values that are not finite, a mesh that is not closed or that is turned inside out, bodies that
///                     touch, overlap or lie inside one another, options out of range
Solution Solve(const std::vector<Body>& bodies, const Options& options = {});

/// Solves for bodies that move from one solve to the next. What it finds out about a magnet's mesh and magnetisation it
/// keeps for the next solve; results are the same as without.
class Solver {
public:
    Solver();
    ~Solver();
    Solver(Solver&&) noexcept;
    Solver& operator=(Solver&&) noexcept;

    /// As the function of the same name.
    vantor::solver::Solution Solve(const std::vector<Body>& bodies, const Options& options = {});

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

/// The field of bodies that stand still, at many points.
class FieldEvaluator {
public:
    /// @throws SolveError  values that are not finite, a mesh that is not closed or that is turned inside out
    explicit FieldEvaluator(const std::vector<Body>& bodies);
    ~FieldEvaluator();
    FieldEvaluator(FieldEvaluator&&) noexcept;
    FieldEvaluator& operator=(FieldEvaluator&&) noexcept;

    /// H (A/m) at a point (metres), inside magnets too (there B = mu0 (H + M)). On a charged face it is the mean of
    /// both sides. On an edge of a charged face, where H grows beyond all bounds, it is a finite value of no meaning.
    Eigen::Vector3d H(const Eigen::Vector3d& point) const;

    /// Magnetisation (A/m) at a point (metres): 0 outside the magnets, and the mean of both sides on their surfaces.
    Eigen::Vector3d M(const Eigen::Vector3d& point) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

/// H (A/m) at one point; for more than a few points a FieldEvaluator is faster.
Eigen::Vector3d FieldH(const std::vector<Body>& bodies, const Eigen::Vector3d& point);

} // namespace vantor::solver
