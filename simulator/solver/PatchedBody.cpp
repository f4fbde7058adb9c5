#include "simulator/solver/PatchedBody.h"

#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantor::solver {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::Vector3d;
using Eigen::VectorXd;

constexpr double twoPi = 6.283185307179586477;
/// Widths of patches over the thickness of their solid, at scale 1: along sharp edges, and at most.
constexpr double layerOfThickness = 0.4;
constexpr double widthOfThickness = 1.2;
/// Width over the distance from others, at scale 1.
constexpr double widthOfDistance = 1;
constexpr double leastOfThickness = 0.04;
/// Where the contrast is weak patches may be this much larger at most.
constexpr double largestRelief = 4;
/// From this distance on, in radii, three points see what a polygon gets.
constexpr double farPolygon = 6;
/// Solids of a lower permeability do not care for the sum of fluxes.
constexpr double conservedFrom = 2;

Fineness FinenessOf(const Sheet& sheet, double scale) {
    // What a weak contrast adds to the field is small, and so may be known less well.
    const double relief = std::min(largestRelief, 1 / std::sqrt(std::abs(sheet.contrast)));
    return {layerOfThickness * scale * scale * sheet.thickness * relief,
            widthOfThickness * scale * sheet.thickness * relief, widthOfDistance * scale * relief,
            leastOfThickness * scale * sheet.thickness};
}

/// Known charge: its points only have to be close to each other compared with their distance from what they act on.
Fineness FinenessOfKnown(const Sheet& sheet, double scale) {
    constexpr double any = std::numeric_limits<double>::infinity();
    return {any, any, widthOfDistance * scale, leastOfThickness * scale * sheet.thickness};
}

void AddPatches(const Sheet& sheet, std::size_t number, const Division& division, PatchSet& set) {
    for (Patch& patch : Divided(sheet.surface, FinenessOf(sheet, division.scale), division.toCharged)) {
        for (std::size_t i = 0; i < patch.polygons.size(); ++i) {
            for (const PatchPoint& point : PointsOf(patch.polygons[i])) {
                set.points.push_back({point.at, set.patches.size(), i, point.weight * patch.FunctionsAt(point.at)});
            }
        }
        set.patches.push_back(std::move(patch));
        set.sheets.push_back(number);
    }
}

/// The polygons of a known sheet that have a charge.
Surface ChargedPart(const Sheet& sheet) {
    Surface charged = sheet.surface;
    charged.polygons.clear();
    std::copy_if(sheet.surface.polygons.begin(), sheet.surface.polygons.end(), std::back_inserter(charged.polygons),
                 [&](const Polygon& polygon) { return sheet.IsCharged(polygon); });
    return charged;
}

void AddKnown(const Sheet& sheet, const Division& division, PatchSet& set) {
    const Surface charged = ChargedPart(sheet);
    if (charged.polygons.empty()) {
        return;
    }
    for (const Patch& patch : Divided(charged, FinenessOfKnown(sheet, division.scale), division.toPermeable)) {
        for (const Polygon& polygon : patch.polygons) {
            for (const PatchPoint& point : PointsOf(polygon)) {
                set.known.push_back({point.at, point.weight * sheet.jump.dot(polygon.normal)});
            }
        }
    }
}

/// Calls visit(patch, point, moments) for all of both; the calls for one patch in one thread and in order.
/// @param moments  (patch, polygon, point) -> flux moments
template <class Moments, class Visit>
void ForFluxes(const PatchSet& target, std::size_t points, unsigned threads, const Moments& moments,
               const Visit& visit) {
    ForRanges(target.patches.size(), threads, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            for (std::size_t polygon = 0; polygon < target.patches[i].polygons.size(); ++polygon) {
                for (std::size_t k = 0; k < points; ++k) {
                    visit(static_cast<Index>(i), k, moments(i, polygon, k));
                }
            }
        }
    });
}

/// Flux moments of charges anywhere.
class SeenFrom {
public:
    SeenFrom(const PatchSet& target) : m_target(target) {
        for (const Patch& patch : target.patches) {
            m_points.emplace_back();
            for (const Polygon& polygon : patch.polygons) {
                m_points.back().push_back(PointsOf(polygon));
            }
        }
    }
    Vector3d operator()(std::size_t patch, std::size_t number, const Vector3d& charge) const {
        const Polygon& polygon = m_target.patches[patch].polygons[number];
        const double reach = farPolygon * polygon.radius;
        return (charge - polygon.centre).squaredNorm() > reach * reach
                   ? FarFluxMoments(m_target.patches[patch], polygon, m_points[patch][number], charge)
                   : FluxMoments(m_target.patches[patch], polygon, charge);
    }

private:
    const PatchSet& m_target;
    std::vector<std::vector<std::array<PatchPoint, 3>>> m_points;
};

std::size_t PolygonCount(const PatchSet& set) {
    std::size_t count = 0;
    for (const Patch& patch : set.patches) {
        count += patch.polygons.size();
    }
    return count;
}

template <class Points>
std::vector<Vector3d> Moved(const Points& points, const Eigen::Isometry3d& pose) {
    std::vector<Vector3d> moved;
    moved.reserve(points.size());
    for (const auto& point : points) {
        moved.push_back(pose * point.at);
    }
    return moved;
}

/// What the charges on a body's patches send through its patches.
MatrixXd OwnFluxes(const PatchSet& set, unsigned threads) {
    const auto size = static_cast<Index>(patchFunctions * set.patches.size());
    MatrixXd fluxes = MatrixXd::Zero(size, size);
    ForFluxes(
        set, set.points.size(), threads,
        [&](std::size_t patch, std::size_t polygon, std::size_t k) -> Vector3d {
            const ChargePoint& point = set.points[k];
            // A flat face sends nothing through itself, and the point is on it but for rounding.
            return point.patch == patch && point.polygon == polygon
                       ? Vector3d(Vector3d::Zero())
                       : FluxMoments(set.patches[patch], set.patches[patch].polygons[polygon], point.at);
        },
        [&](Index patch, std::size_t k, const Vector3d& moments) {
            fluxes.block<3, 3>(3 * patch, 3 * static_cast<Index>(set.points[k].patch)) +=
                moments * set.points[k].weights.transpose();
        });
    return fluxes;
}

} // namespace

bool PatchSet::operator==(const PatchSet& other) const {
    return known.size() == other.known.size() &&
           std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(),
                      [](const ChargePoint& a, const ChargePoint& b) { return a.at == b.at && a.patch == b.patch; }) &&
           std::equal(known.begin(), known.end(), other.known.begin(),
                      [](const KnownPoint& a, const KnownPoint& b) { return a.at == b.at; });
}

PatchSet PatchesOf(const SolidBody& body, const Division& division) {
    PatchSet set;
    for (std::size_t i = 0; i < body.Sheets().size(); ++i) {
        const Sheet& sheet = body.Sheets()[i];
        if (!sheet.IsKnown()) {
            AddPatches(sheet, i, division, set);
        } else {
            AddKnown(sheet, division, set);
        }
    }
    return set;
}

Fluxes FluxesBetween(const PatchSet& source, const PatchSet& target, const Eigen::Isometry3d& toTarget,
                     unsigned threads) {
    const auto rows = static_cast<Index>(patchFunctions * target.patches.size());
    Fluxes fluxes;
    fluxes.ofPatches = MatrixXd::Zero(rows, static_cast<Index>(patchFunctions * source.patches.size()));
    fluxes.ofKnown = VectorXd::Zero(rows);
    fluxes.evaluations = PolygonCount(target) * (source.points.size() + source.known.size());
    const SeenFrom seen(target);
    const std::vector<Vector3d> points = Moved(source.points, toTarget), known = Moved(source.known, toTarget);
    ForFluxes(
        target, points.size(), threads,
        [&](std::size_t patch, std::size_t polygon, std::size_t k) { return seen(patch, polygon, points[k]); },
        [&](Index patch, std::size_t k, const Vector3d& moments) {
            fluxes.ofPatches.block<3, 3>(3 * patch, 3 * static_cast<Index>(source.points[k].patch)) +=
                moments * source.points[k].weights.transpose();
        });
    ForFluxes(
        target, known.size(), threads,
        [&](std::size_t patch, std::size_t polygon, std::size_t k) { return seen(patch, polygon, known[k]); },
        [&](Index patch, std::size_t k, const Vector3d& moments) {
            fluxes.ofKnown.segment<3>(3 * patch) += source.known[k].charge * moments;
        });
    return fluxes;
}

PatchedBody::PatchedBody(const SolidBody& body, PatchSet set, unsigned threads)
    : m_body(body), m_set(std::move(set)),
      m_evaluations(PolygonCount(m_set) * (m_set.points.size() + m_set.known.size())) {
    MatrixXd matrix = OwnFluxes(m_set, threads);
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        const double factor = -ContrastOf(i) / (twoPi * m_set.patches[i].area);
        matrix.middleRows(patchFunctions * static_cast<Index>(i), patchFunctions) *= factor;
    }
    matrix.diagonal().array() += 1;
    SetOwnRightHandSide();
    if (Size() > 0) {
        m_factored.compute(matrix);
    }
}

void PatchedBody::SetOwnRightHandSide() {
    VectorXd fluxes = VectorXd::Zero(Size());
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        const Patch& patch = m_set.patches[i];
        for (const Polygon& polygon : patch.polygons) {
            for (const KnownPoint& point : m_set.known) {
                fluxes.segment<3>(patchFunctions * static_cast<Index>(i)) +=
                    point.charge * FluxMoments(patch, polygon, point.at);
            }
        }
    }
    m_ownRightHandSide = RightHandSide(fluxes);
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        const Patch& patch = m_set.patches[i];
        const Vector3d& jump = m_body.Sheets()[m_set.sheets[i]].jump;
        for (const Polygon& polygon : patch.polygons) {
            m_ownRightHandSide.segment<3>(patchFunctions * static_cast<Index>(i)) +=
                polygon.area / patch.area * jump.dot(polygon.normal) * patch.FunctionsAt(polygon.centre);
        }
    }
}

void PatchedBody::MakeSourceFree(Eigen::Ref<MatrixXd> fluxes) const {
    const std::vector<PermeableSolid>& solids = m_body.Solids();
    for (std::size_t solid = 0; solid < solids.size(); ++solid) {
        if (solids[solid].permeability < conservedFrom) {
            continue;
        }
        Eigen::RowVectorXd sum = Eigen::RowVectorXd::Zero(fluxes.cols());
        double area = 0;
        for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
            const Surface& surface = m_body.Sheets()[m_set.sheets[i]].surface;
            const auto row = patchFunctions * static_cast<Index>(i);
            if (surface.inside == solid) {
                sum += fluxes.row(row);
                area += surface.outside ? 0 : m_set.patches[i].area;
            } else if (surface.outside == solid) {
                sum -= fluxes.row(row);
            }
        }
        for (std::size_t i = 0; i < m_set.patches.size() && area > 0; ++i) {
            const Surface& surface = m_body.Sheets()[m_set.sheets[i]].surface;
            if (surface.inside == solid && !surface.outside) {
                fluxes.row(patchFunctions * static_cast<Index>(i)) -= m_set.patches[i].area / area * sum;
            }
        }
    }
}

/// M averages to the integral of r (M.n) over the surface, over the volume, for M is without sources inside.
Vector3d PatchedBody::MeanFluxDensity(std::size_t solid, const VectorXd& charges) const {
    const PermeableSolid& material = m_body.Solids()[solid];
    const double susceptibility = material.permeability - 1;
    Vector3d moment = Vector3d::Zero();
    double volume = 0;
    for (const ChargePoint& point : m_set.points) {
        const Sheet& sheet = m_body.Sheets()[m_set.sheets[point.patch]];
        const double side = sheet.surface.inside == solid ? 1 : sheet.surface.outside == solid ? -1 : 0;
        if (side == 0) {
            continue;
        }
        const Vector3d& normal = m_set.patches[point.patch].polygons[point.polygon].normal;
        const double area = point.weights[0];
        const double charge =
            charges.segment<3>(patchFunctions * static_cast<Index>(point.patch)).dot(point.weights) / area;
        const double mean = (charge - sheet.jump.dot(normal)) / (2 * sheet.contrast);
        const double inside = mean - side * charge / 2;
        moment += side * area * (material.magnetisation.dot(normal) + susceptibility * inside) * point.at;
        volume += side * area * normal.dot(point.at) / 3;
    }
    const Vector3d magnetisation = moment / volume;
    return vacuumPermeability * (magnetisation + (magnetisation - material.magnetisation) / susceptibility);
}

VectorXd PatchedBody::RightHandSide(const VectorXd& fluxes) const {
    VectorXd result = fluxes;
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        result.segment<3>(patchFunctions * static_cast<Index>(i)) *= ContrastOf(i) / (twoPi * m_set.patches[i].area);
    }
    return result;
}

} // namespace vantor::solver
