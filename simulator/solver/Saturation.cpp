#include "simulator/solver/Saturation.h"

#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <optional>
#include <sstream>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;
using PlacedBodies = std::vector<PermeableStore::Placed>;

/// Fields are looked at with no more than this permeability: that of more hardly changes the flux, and the flux density
/// within would be a difference of large numbers.
constexpr double mostForFields = 100;
/// Of what fits at least this part of the permeability of weak fields nothing is said: it hardly changes the loads, and
/// is not known better.
constexpr double stillWeak = 0.5;
/// Permeabilities go this part of the way, in their logarithm, to what fits, until they are as near to it.
constexpr double partOfWay = 0.35;
constexpr double standsStill = 0.015;
constexpr int mostFittingSteps = 20;

/// H of a curve, A/m.
double FieldAt(const MagnetizationCurve& curve, double fluxDensity) {
    const auto& points = curve.points;
    const auto next = std::find_if(points.begin() + 1, points.end(),
                                   [&](const MagnetizationCurve::Point& point) { return point.b >= fluxDensity; });
    if (next == points.end()) {
        return points.back().h + (fluxDensity - points.back().b) / vacuumPermeability;
    }
    const MagnetizationCurve::Point &upper = *next, &lower = *(next - 1);
    return lower.h + (fluxDensity - lower.b) / (upper.b - lower.b) * (upper.h - lower.h);
}

/// A solid of a curve.
struct Curved {
    std::size_t body = 0, solid = 0;
    double initial = 0, permeability = 0;
    /// Of the field that it is in: what fits, and the root of the mean square of B, T.
    double fitted = 0, fluxDensity = 0;

    bool Saturates() const { return permeability < initial; }
};

std::vector<Curved> CurvedSolids(const PlacedBodies& bodies) {
    std::vector<Curved> curved;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        const std::vector<PermeableSolid>& solids = bodies[i].entry->body.Solids();
        for (std::size_t k = 0; k < solids.size(); ++k) {
            if (solids[k].curve) {
                const double initial = solids[k].permeability;
                curved.push_back({i, k, initial, std::min(initial, mostForFields)});
            }
        }
    }
    return curved;
}

PlacedBodies WithPermeabilities(PlacedBodies bodies, const std::vector<Curved>& curved, double most) {
    std::vector<std::optional<SolidBody>> changed(bodies.size());
    for (const Curved& one : curved) {
        const double permeability = std::min(one.permeability, most);
        if (permeability == one.initial) {
            continue;
        }
        if (!changed[one.body]) {
            changed[one.body] = bodies[one.body].entry->body;
        }
        changed[one.body]->SetPermeability(one.solid, permeability);
    }
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        if (changed[i]) {
            bodies[i].entry = std::make_shared<PermeableStore::Entry>(std::move(*changed[i]));
        }
    }
    return bodies;
}

/// From the fields in points within each solid.
void Fit(const PermeableSum& sum, const PlacedBodies& bodies, std::vector<Curved>& curved, unsigned threads) {
    const std::vector<ChargedFace> faces = AllPosedFaces(sum.Charged());
    for (Curved& one : curved) {
        const PermeableSolid& solid = bodies[one.body].entry->body.Solids()[one.solid];
        const std::vector<InnerPoint> points = sum.PointsWithin(one.body, one.solid);
        std::vector<double> fluxDensities(points.size());
        ForEach(points.size(), threads, [&](std::size_t i) {
            Vector3d field = Vector3d::Zero();
            for (const ChargedFace& face : faces) {
                field += ChargeField(face, points[i].at);
            }
            fluxDensities[i] = solid.permeability * fieldConstant * field.norm();
        });
        double squares = 0, energy = 0, weights = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            weights += points[i].weight;
            squares += points[i].weight * fluxDensities[i] * fluxDensities[i];
            energy += points[i].weight * fluxDensities[i] * FieldAt(*solid.curve, fluxDensities[i]);
        }
        one.fluxDensity = weights > 0 ? std::sqrt(squares / weights) : 0;
        one.fitted = energy > 0 ? std::min(one.initial, squares / (vacuumPermeability * energy)) : one.initial;
    }
}

/// @return whether all stand still
bool TakeStep(std::vector<Curved>& curved) {
    bool stands = true;
    for (Curved& one : curved) {
        const double before = std::min(one.permeability, mostForFields);
        // Beyond that the field is no other one.
        const bool isKnown = before == mostForFields && one.fitted >= mostForFields;
        stands = stands && (isKnown || std::abs(one.fitted / before - 1) <= standsStill);
        one.permeability = isKnown ? one.fitted : before * std::pow(one.fitted / before, partOfWay);
        if (one.permeability >= stillWeak * one.initial) {
            one.permeability = one.initial;
        }
    }
    return stands;
}

std::string WarningOf(const Curved& one, const PermeableSolid& solid) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << solid.solid.label << " carries " << one.fluxDensity
         << " T on average and more in places; its B-H curve bends at " << solid.curve->points[1].b << " T and ends at "
         << solid.curve->points.back().b << " T. It is solved with a permeability of " << std::setprecision(0)
         << one.permeability
         << " in all of it, by which loads may be some percent off; make it thicker where that matters.";
    return text.str();
}

} // namespace

std::vector<std::string> Saturate(const std::vector<PreparedMagnet>& magnets,
                                  std::vector<PermeableStore::Placed>& bodies, const Options& options) {
    std::vector<Curved> curved = CurvedSolids(bodies);
    bool stands = curved.empty();
    for (int i = 0; i < mostFittingSteps && !stands; ++i) {
        const PlacedBodies tried = WithPermeabilities(bodies, curved, mostForFields);
        PermeableSum sum(magnets, tried, options);
        sum.SolveCharges();
        Fit(sum, tried, curved, ThreadsFor(options.threads));
        stands = TakeStep(curved);
    }
    bodies = WithPermeabilities(bodies, curved, std::numeric_limits<double>::infinity());
    std::vector<std::string> warnings;
    for (const Curved& one : curved) {
        if (one.Saturates()) {
            warnings.push_back(WarningOf(one, bodies[one.body].entry->body.Solids()[one.solid]));
        }
    }
    return warnings;
}

} // namespace vantor::solver
