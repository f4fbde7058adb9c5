#include "simulator/solver/PatchedBody.h"

#include "simulator/solver/Loads.h"
#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

using Eigen::MatrixXd;
using Eigen::Vector3d;
using Eigen::VectorXd;

/// Widths of patches over the thickness of their solid, at scale 1: along sharp edges, and at most.
constexpr double layerOfThickness = 0.4;
constexpr double widthOfThickness = 1.2;
/// Width over the distance from others, at scale 1.
constexpr double widthOfDistance = 1;
constexpr double leastOfThickness = 0.04;
/// Where the contrast is weak patches may be this much larger at most.
constexpr double largestRelief = 4;
/// Solids of a lower permeability do not care for the sum of fluxes.
constexpr double conservedFrom = 2;

Fineness FinenessOf(const Sheet& sheet, double scale) {
    // What a weak contrast adds to the field is small, and so may be known less well.
    const double relief = std::min(largestRelief, 1 / std::sqrt(std::abs(sheet.contrast)));
    return {layerOfThickness * scale * scale * sheet.thickness * relief,
            widthOfThickness * scale * sheet.thickness * relief, widthOfDistance * scale * relief,
            leastOfThickness * scale * sheet.thickness};
}

void AddPatches(const Sheet& sheet, std::size_t number, const Division& division, PatchSet& set) {
    for (Patch& patch : Divided(sheet.surface, FinenessOf(sheet, division.scale), division.toCharged, division.most)) {
        set.patches.push_back(std::move(patch));
        set.sheets.push_back(number);
    }
}

Eigen::Index RowOf(std::size_t patch) {
    return patchFunctions * static_cast<Eigen::Index>(patch);
}

} // namespace

bool PatchSet::operator==(const PatchSet& other) const {
    const auto areSame = [](const Polygon& a, const Polygon& b) {
        return a.centre == b.centre && a.radius == b.radius;
    };
    return std::equal(patches.begin(), patches.end(), other.patches.begin(), other.patches.end(),
                      [&](const Patch& a, const Patch& b) {
                          return std::equal(a.polygons.begin(), a.polygons.end(), b.polygons.begin(), b.polygons.end(),
                                            areSame);
                      });
}

PatchSet PatchesOf(const SolidBody& body, const Division& division) {
    PatchSet set;
    for (std::size_t i = 0; i < body.Sheets().size() && set.patches.size() <= division.most; ++i) {
        if (!body.Sheets()[i].IsKnown()) {
            AddPatches(body.Sheets()[i], i, division, set);
        }
    }
    return set;
}

Fluxes FluxesBetween(const PatchedBody& source, const PatchedBody& target, const Eigen::Isometry3d& toTarget,
                     unsigned threads) {
    const std::vector<KnownPolygon>& known = source.Body().Known();
    Fluxes fluxes;
    fluxes.ofPatches = MatrixXd::Zero(target.Size(), source.Size());
    fluxes.ofKnown = VectorXd::Zero(target.Size());
    fluxes.evaluations = target.Polygons().size() * (source.Polygons().size() + known.size());
    ForRanges(target.Set().patches.size(), threads, [&](std::size_t begin, std::size_t end) {
        const auto isBefore = [](const PatchPolygon& polygon, std::size_t patch) { return polygon.patch < patch; };
        const std::vector<PatchPolygon>& polygons = target.Polygons();
        const auto first = std::lower_bound(polygons.begin(), polygons.end(), begin, isBefore);
        const auto last = std::lower_bound(first, polygons.end(), end, isBefore);
        std::for_each(first, last, [&](const PatchPolygon& polygon) {
            const Patch& patch = target.Set().patches[polygon.patch];
            for (const PatchPolygon& charged : source.Polygons()) {
                fluxes.ofPatches.block<3, 3>(RowOf(polygon.patch), RowOf(charged.patch)) +=
                    FluxMoments(patch, polygon, charged, toTarget);
            }
            for (const KnownPolygon& charged : known) {
                fluxes.ofKnown.segment<3>(RowOf(polygon.patch)) += FluxMoments(patch, polygon, charged, toTarget);
            }
        });
    });
    return fluxes;
}

PatchedBody::PatchedBody(const SolidBody& body, PatchSet set, unsigned threads)
    : m_body(body), m_set(std::move(set)), m_polygons(PolygonsOf(m_set.patches, threads)) {
    SetClosedSurfaces();
    Fluxes own = FluxesBetween(*this, *this, Eigen::Isometry3d::Identity(), threads);
    m_evaluations = own.evaluations;
    BalanceOwn(own.ofPatches, own.ofKnown);
    SetOwnRightHandSide(own.ofKnown);
    MatrixXd& matrix = own.ofPatches;
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        matrix.middleRows(RowOf(i), patchFunctions) *= -SheetOf(i).contrast / (2 * pi * m_set.patches[i].area);
    }
    matrix.diagonal().array() += 1;
    if (Size() > 0) {
        m_factored.compute(matrix);
    }
}

void PatchedBody::SetOwnRightHandSide(const VectorXd& fluxesOfKnown) {
    m_ownRightHandSide = RightHandSide(fluxesOfKnown);
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        const Patch& patch = m_set.patches[i];
        const Vector3d& jump = SheetOf(i).jump;
        for (const Polygon& polygon : patch.polygons) {
            m_ownRightHandSide.segment<3>(RowOf(i)) +=
                polygon.area / patch.area * jump.dot(polygon.normal) * patch.FunctionsAt(polygon.centre);
        }
    }
}

void PatchedBody::SetClosedSurfaces() {
    const auto count = static_cast<Eigen::Index>(m_set.patches.size());
    for (const std::size_t region : m_body.RegionsFrom(conservedFrom)) {
        ClosedSurface closed{region, VectorXd::Zero(count), VectorXd::Zero(count)};
        for (Eigen::Index i = 0; i < count; ++i) {
            const auto patch = static_cast<std::size_t>(i);
            const Surface& surface = SheetOf(patch).surface;
            const bool isInside = m_body.RegionOf(surface.inside) == region;
            const bool isOutside = surface.outside && m_body.RegionOf(*surface.outside) == region;
            closed.sides[i] = isInside ? 1 : isOutside ? -1 : 0;
            closed.areas[i] = isInside && !surface.outside ? m_set.patches[patch].area : 0;
        }
        if (closed.areas.isZero(0)) {
            SetAllAreas(closed);
            // First, so that what it changes of others' faces is balanced with theirs.
            m_closed.insert(m_closed.begin(), std::move(closed));
        } else {
            m_closed.push_back(std::move(closed));
        }
    }
}

/// For what no air touches.
void PatchedBody::SetAllAreas(ClosedSurface& closed) const {
    for (Eigen::Index i = 0; i < closed.sides.size(); ++i) {
        closed.areas[i] = closed.sides[i] * m_set.patches[static_cast<std::size_t>(i)].area;
    }
}

/// Makes what goes out of each closed surface what it has to be, by way of its faces to air, or of all.
/// @param enclosed  4 pi times it; one row for each closed surface, one column for each source
void PatchedBody::Balance(Eigen::Ref<MatrixXd> fluxes, const MatrixXd& enclosed) const {
    for (std::size_t k = 0; k < m_closed.size() && fluxes.cols() > 0; ++k) {
        const ClosedSurface& closed = m_closed[k];
        const double area = closed.areas.dot(closed.sides);
        Eigen::RowVectorXd excess = -enclosed.row(static_cast<Eigen::Index>(k));
        for (Eigen::Index i = 0; i < closed.sides.size(); ++i) {
            excess += closed.sides[i] * fluxes.row(patchFunctions * i);
        }
        for (Eigen::Index i = 0; i < closed.sides.size() && area > 0; ++i) {
            fluxes.row(patchFunctions * i) -= closed.areas[i] / area * excess;
        }
    }
}

void PatchedBody::MakeSourceFree(Fluxes& fluxes) const {
    const auto count = static_cast<Eigen::Index>(m_closed.size());
    Balance(fluxes.ofPatches, MatrixXd::Zero(count, fluxes.ofPatches.cols()));
    Balance(fluxes.ofKnown, MatrixXd::Zero(count, 1));
}

/// Half of what a charge on the surface sends goes to the inside; all of what one within does, to the outside.
void PatchedBody::BalanceOwn(MatrixXd& ofPatches, VectorXd& ofKnown) const {
    const auto count = static_cast<Eigen::Index>(m_closed.size());
    MatrixXd enclosed = MatrixXd::Zero(count, ofPatches.cols());
    VectorXd enclosedKnown = VectorXd::Zero(count);
    for (Eigen::Index k = 0; k < count; ++k) {
        const ClosedSurface& closed = m_closed[static_cast<std::size_t>(k)];
        for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
            enclosed(k, RowOf(i)) =
                closed.sides[static_cast<Eigen::Index>(i)] != 0 ? 2 * pi * m_set.patches[i].area : 0;
        }
        for (const KnownPolygon& known : m_body.Known()) {
            const bool isWithin = m_body.RegionOf(m_body.Sheets()[known.sheet].surface.inside) == closed.region;
            enclosedKnown[k] += isWithin ? 4 * pi * known.charge * known.polygon.area : 0;
        }
    }
    Balance(ofPatches, enclosed);
    Balance(ofKnown, enclosedKnown);
}

VectorXd PatchedBody::RightHandSide(const VectorXd& fluxes) const {
    VectorXd result = fluxes;
    for (std::size_t i = 0; i < m_set.patches.size(); ++i) {
        result.segment<3>(RowOf(i)) *= SheetOf(i).contrast / (2 * pi * m_set.patches[i].area);
    }
    return result;
}

} // namespace vantor::solver
