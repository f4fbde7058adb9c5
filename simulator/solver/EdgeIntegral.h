#pragma once
// Force and torque between two uniformly charged polygons as integrals along their edges.
//
// The double surface integral of (r - r')/|r - r'|^3 over a polygon A (source, r') and a polygon B (target, r) is
// brought down to line integrals whose integrands are closed forms (docs/simulator-accuracy.md has the derivation):
//  - parts along A's plane: the divergence theorem moves the derivative to A's edges and leaves B's potential there;
//  - part across A's plane: B's integral of the solid angle of A. It is homogeneous when both polygons are scaled about
//    a point of A's plane, so Euler's theorem gives it by what it gains along the edges of A and B.
// The line integrands are analytic except near corners and edges of the other polygon. Where these singularities lie is
// known, so the edges are cut into pieces that Gauss-Kronrod rules integrate well, and the rules' estimates are sound.
#include "simulator/solver/Loads.h"
#include "simulator/solver/Polygon.h"

#include <functional>

namespace vantor::solver {

/// A piece of an edge of one of two polygons, and the quadrature rule for it.
struct EdgePiece {
    enum class Owner : unsigned char { Source, Target };
    Owner owner = Owner::Source;
    /// 0: 3 points, 1: 7 points, 2: 15 points.
    unsigned char rule = 0;
    std::size_t edge = 0;
    /// Along the edge, metres.
    double from = 0, to = 0;
};

/// The highest rule; a piece that needs more is halved.
constexpr unsigned char highestRule = 2;
/// Number of points of a rule.
int RulePoints(unsigned char rule);

/// What replaces a piece that is not good enough: itself with a longer rule, or its halves.
std::vector<EdgePiece> Finer(const EdgePiece& piece);

/// Whether an error that was this large before has met rounding: the rules converge far faster than that.
bool Stagnates(double error, double before);

/// Cuts the edges of both polygons into pieces that suit the other polygon's corners and edges.
std::vector<EdgePiece> CutEdges(const Polygon& source, const Polygon& target);

/// The share that one piece has in the load on `target` from `source`, both with unit charge (A/m).
Interaction IntegratePiece(const Polygon& source, const Polygon& target, const EdgePiece& piece,
                           const BodyCentres& centres);

/// The load on `target` from `source`, both with unit charge (A/m), refined until its error is good enough or only
/// rounding is left.
struct FaceIntegral {
    Interaction interaction;
    std::size_t evaluations = 0;
};
/// @param share   judges an interaction's error
/// @param wanted  what the sum of all shares may be at most
FaceIntegral IntegrateFaces(const Polygon& source, const Polygon& target, const BodyCentres& centres,
                            const std::function<double(const Interaction&)>& share, double wanted);

} // namespace vantor::solver
