#include "simulator/solver/PermeableSum.h"

#include "simulator/solver/LeastResidual.h"
#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>

namespace vantor::solver {
namespace {

using Eigen::Isometry3d;
using Eigen::MatrixXd;
using Eigen::Vector3d;
using Eigen::VectorXd;

constexpr double infinite = std::numeric_limits<double>::infinity();
/// Scale of the patches that the first pass compares its own with, and by what each pass makes them finer.
constexpr double coarsestScale = 4;
constexpr double finer = 0.7;
/// By how much the number of patches grows at least, and how often they are made finer for that.
constexpr double leastGrowth = 1.5;
constexpr int mostFiner = 8;
/// As many as it takes to know how much changes from one to the next.
constexpr int scalesOfFirstPass = 3;
/// Part of the change from one scale to the next that is left as an error.
constexpr double errorOfChange = 0.6;
/// Part of the change before that counts at least, and how often the first one counts: two scales may agree by chance.
constexpr double lastingChange = 0.4, chanceOfChange = 2;
/// Torques are judged by the force times this part of the body's radius at least.
constexpr double leastLever = 0.1;
/// Of the flux that bodies send through each other.
constexpr double wantedResidual = 1e-6;
constexpr int mostSteps = 100;
/// Patches of a body, and of all: factors take 8 bytes for every pair of their functions, and fluxes as much.
constexpr std::size_t mostPatches = 2000, mostPatchesOfAll = 4000;
/// By how much the first division may be coarser to leave room for another two, at once and in all.
constexpr double coarser = 2, mostCoarser = 64;
/// Of a first division nothing is known but the loads themselves.
constexpr double unknownError = 100;
/// Divisions of a body's patches that are kept, and numbers in their factors beside those of the last one: 512 MB.
constexpr std::size_t mostKept = 6;
constexpr Eigen::Index mostKeptNumbers = 64'000'000;
/// A charge that is less than this part of the largest one anywhere on its patch is left out.
constexpr double noCharge = 1e-9;

/// Where a body stands: as the first of its solids.
Isometry3d PoseOf(const Body& body) {
    const auto first = std::find_if(body.magnets.begin(), body.magnets.end(), HasField);
    return first == body.magnets.end() ? Isometry3d::Identity() : first->pose;
}

std::vector<PermeableSolid> SolidsOf(const Body& body, const Isometry3d& pose) {
    std::vector<PermeableSolid> solids;
    for (const Magnet& magnet : body.magnets) {
        if (!HasField(magnet)) {
            continue;
        }
        PermeableSolid solid;
        solid.solid.label = LabelOf(body, magnet);
        solid.solid.mesh = magnet.mesh;
        // Solids of one frame have no rounding between them.
        solid.solid.pose =
            magnet.pose.matrix() == pose.matrix() ? Isometry3d::Identity() : pose.inverse() * magnet.pose;
        solid.permeability = PermeabilityOf(magnet);
        solid.curve = magnet.curve;
        solid.magnetisation = solid.solid.pose.linear() * magnet.magnetisation;
        solids.push_back(std::move(solid));
    }
    return solids;
}

/// Distance of a point from sheets.
double DistanceFrom(const SolidBody& body, const Vector3d& point) {
    double nearest = infinite;
    for (const Sheet& sheet : body.Sheets()) {
        for (const Polygon& polygon : sheet.surface.polygons) {
            if (sheet.IsCharged(polygon) && (point - polygon.centre).norm() - polygon.radius < nearest) {
                nearest = std::min(nearest, DistanceFrom(polygon, point));
            }
        }
    }
    return nearest;
}

void Forget(std::vector<std::shared_ptr<const PatchedBody>>& kept) {
    kept.resize(std::min(kept.size(), mostKept));
    Eigen::Index numbers = 0;
    const auto tooMany = std::find_if(std::next(kept.begin()), kept.end(), [&](const auto& patched) {
        numbers += patched->Size() * patched->Size();
        return numbers > mostKeptNumbers;
    });
    kept.erase(tooMany, kept.end());
}

std::vector<PatchSet>::const_iterator LargestOf(const std::vector<PatchSet>& sets) {
    return std::max_element(sets.begin(), sets.end(),
                            [](const PatchSet& a, const PatchSet& b) { return a.patches.size() < b.patches.size(); });
}

std::size_t CountOf(const std::vector<PatchSet>& sets) {
    return std::accumulate(sets.begin(), sets.end(), std::size_t{0},
                           [](std::size_t sum, const PatchSet& set) { return sum + set.patches.size(); });
}

} // namespace

std::vector<PermeableStore::Placed> PermeableStore::Prepare(const std::vector<Body>& bodies, const Vector3d& origin) {
    std::vector<Placed> placed;
    std::vector<std::shared_ptr<Entry>> used;
    for (const Body& body : bodies) {
        Isometry3d pose = PoseOf(body);
        std::vector<PermeableSolid> solids = SolidsOf(body, pose);
        pose.translation() -= origin;
        auto entry =
            std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& known) { return known->body.Is(solids); });
        used.push_back(entry != m_entries.end() ? *entry : std::make_shared<Entry>(std::move(solids)));
        placed.push_back({used.back(), pose});
    }
    m_entries = std::move(used);
    return placed;
}

PermeableSum::PermeableSum(const std::vector<PreparedMagnet>& magnets, std::vector<PermeableStore::Placed> bodies,
                           const Options& options)
    : m_magnets(magnets), m_bodies(std::move(bodies)), m_threads(ThreadsFor(options.threads)), m_parts(m_bodies.size()),
      m_scale(coarsestScale), m_change(infinite) {}

Pass PermeableSum::Evaluate() {
    Pass pass;
    pass.number = ++m_pass;
    const int scales = pass.number == 1 ? scalesOfFirstPass : 1;
    for (int i = 0; i < scales && (i == 0 || Refine()); ++i) {
        pass.evaluations += SolveCharges();
        pass.evaluations += SumUp();
    }
    pass.percentError = m_percentError;
    return pass;
}

std::size_t PermeableSum::SolveCharges() {
    std::size_t evaluations = SetPatches();
    evaluations += SetCharges();
    return evaluations;
}

bool PermeableSum::Refine() {
    std::size_t all = 0, largest = 0;
    for (const Part& part : m_parts) {
        all += part.patched->Set().patches.size();
        largest = std::max(largest, part.patched->Set().patches.size());
    }
    return all <= mostPatchesOfAll / 2 && largest <= mostPatches / 2;
}

PatchSet PermeableSum::PatchesOfBody(std::size_t body, std::size_t most) const {
    Division division;
    division.scale = m_scale;
    division.most = most;
    division.toCharged = [&](const Vector3d& point) {
        const Vector3d inSpace = m_bodies[body].pose * point;
        double nearest = infinite;
        for (std::size_t i = 0; i < m_bodies.size(); ++i) {
            if (i != body) {
                nearest =
                    std::min(nearest, DistanceFrom(m_bodies[i].entry->body, m_bodies[i].pose.inverse() * inSpace));
            }
        }
        return nearest;
    };
    return PatchesOf(m_bodies[body].entry->body, division);
}

std::vector<PatchSet> PermeableSum::PatchesOfBodies(std::size_t most) {
    std::vector<PatchSet> sets(m_bodies.size());
    ForEach(m_bodies.size(), m_threads, [&](std::size_t i) { sets[i] = PatchesOfBody(i, most); });
    m_scale *= finer;
    return sets;
}

/// As coarse ones as it takes to have room for finer ones: thin solids have many. Those of many faces have as many
/// patches at least, and no more room than there is.
std::vector<PatchSet> PermeableSum::FirstPatches() {
    std::vector<PatchSet> sets;
    for (; m_scale <= coarsestScale * mostCoarser; m_scale *= coarser) {
        sets = PatchesOfBodies(mostPatches / 4);
        if (LargestOf(sets)->patches.size() <= mostPatches / 4 && CountOf(sets) <= mostPatchesOfAll / 4) {
            return sets;
        }
    }
    sets = PatchesOfBodies(mostPatches);
    const auto largest = LargestOf(sets);
    if (largest->patches.size() > mostPatches || CountOf(sets) > mostPatchesOfAll) {
        const SolidBody& body = m_bodies[static_cast<std::size_t>(largest - sets.begin())].entry->body;
        throw SolveError(body.Thinnest().label + " is too thin for its size, or its body has too many faces: they " +
                         "would take too many patches to solve for their charges; make it thicker, or of fewer " +
                         "and smaller parts.");
    }
    return sets;
}

/// Clearly more than the last ones: else what changes would not tell what is missing.
std::vector<PatchSet> PermeableSum::MorePatches() {
    double before = 0;
    for (const Part& part : m_parts) {
        before += static_cast<double>(part.patched->Set().patches.size());
    }
    constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
    std::vector<PatchSet> sets = PatchesOfBodies(any);
    for (int i = 1; i < mostFiner && static_cast<double>(CountOf(sets)) < leastGrowth * before; ++i) {
        sets = PatchesOfBodies(any);
    }
    return sets;
}

std::size_t PermeableSum::SetPatches() {
    std::vector<PatchSet> sets = m_parts.front().patched ? MorePatches() : FirstPatches();
    std::vector<std::size_t> missing;
    for (std::size_t i = 0; i < m_bodies.size(); ++i) {
        auto& kept = m_bodies[i].entry->patched;
        const auto known =
            std::find_if(kept.begin(), kept.end(), [&](const auto& patched) { return patched->Set() == sets[i]; });
        if (known == kept.end()) {
            missing.push_back(i);
        } else {
            std::rotate(kept.begin(), known, known + 1);
            m_parts[i].patched = kept.front();
        }
    }
    ForEach(missing.size(), m_threads, [&](std::size_t k) {
        const std::size_t i = missing[k];
        m_parts[i].patched = std::make_shared<const PatchedBody>(m_bodies[i].entry->body, std::move(sets[i]),
                                                                 missing.size() > 1 ? 1 : m_threads);
    });
    std::size_t evaluations = 0;
    for (const std::size_t i : missing) {
        auto& kept = m_bodies[i].entry->patched;
        kept.insert(kept.begin(), m_parts[i].patched);
        Forget(kept);
        evaluations += m_parts[i].patched->Evaluations();
    }
    return evaluations;
}

/// What the bodies' charges send through a body, and the right-hand side that the known ones of all leave there.
/// @return flux moments evaluated
std::size_t PermeableSum::Couple(std::size_t target, std::vector<Coupling>& couplings, VectorXd& right) const {
    const PatchedBody& to = *m_parts[target].patched;
    right = to.OwnRightHandSide();
    std::size_t evaluations = 0;
    for (std::size_t source = 0; source < m_parts.size(); ++source) {
        if (source == target || to.Size() == 0) {
            continue;
        }
        const PatchedBody& from = *m_parts[source].patched;
        Fluxes fluxes = FluxesBetween(from, to, m_bodies[target].pose.inverse() * m_bodies[source].pose, m_threads);
        evaluations += fluxes.evaluations;
        to.MakeSourceFree(fluxes);
        right += to.RightHandSide(fluxes.ofKnown);
        if (from.Size() > 0) {
            couplings.push_back({source, target, std::move(fluxes.ofPatches)});
        }
    }
    return evaluations;
}

/// The charges that those of all bodies make on the others.
VectorXd PermeableSum::MadeByOthers(const std::vector<Coupling>& couplings, const std::vector<Eigen::Index>& starts,
                                    const VectorXd& charges) const {
    VectorXd result = VectorXd::Zero(charges.size());
    ForEach(m_parts.size(), m_threads, [&](std::size_t target) {
        const PatchedBody& to = *m_parts[target].patched;
        if (to.Size() == 0) {
            return;
        }
        VectorXd fluxes = VectorXd::Zero(to.Size());
        for (const Coupling& coupling : couplings) {
            if (coupling.target == target) {
                fluxes += coupling.matrix *
                          charges.segment(starts[coupling.source], m_parts[coupling.source].patched->Size());
            }
        }
        result.segment(starts[target], to.Size()) = to.Solved(to.RightHandSide(fluxes));
    });
    return result;
}

/// @return flux moments evaluated
std::size_t PermeableSum::SetCharges() {
    std::vector<Eigen::Index> starts(1, 0);
    for (const Part& part : m_parts) {
        starts.push_back(starts.back() + part.patched->Size());
    }
    std::vector<Coupling> couplings;
    std::size_t evaluations = 0;
    VectorXd right(starts.back());
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        const PatchedBody& patched = *m_parts[i].patched;
        VectorXd part;
        evaluations += Couple(i, couplings, part);
        if (patched.Size() > 0) {
            right.segment(starts[i], patched.Size()) = patched.Solved(part);
        }
    }
    const auto madeByOthers = [&](const VectorXd& charges) { return MadeByOthers(couplings, starts, charges); };
    const VectorXd charges =
        couplings.empty() ? right : SolvedByLeastResidual(madeByOthers, right, wantedResidual, mostSteps).x;
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        m_parts[i].charges = charges.segment(starts[i], m_parts[i].patched->Size());
    }
    return evaluations;
}

std::vector<ChargedFace> PermeableSum::FacesOf(const Part& part) {
    std::vector<ChargedFace> faces;
    const PatchedBody& patched = *part.patched;
    const double least = noCharge * (part.charges.size() > 0 ? part.charges.cwiseAbs().maxCoeff() : 0);
    for (std::size_t i = 0; i < patched.Set().patches.size(); ++i) {
        const Patch& patch = patched.Set().patches[i];
        const Vector3d charges = part.charges.segment<3>(patchFunctions * static_cast<Eigen::Index>(i));
        const Vector3d gradient = charges[1] * patch.u + charges[2] * patch.v;
        for (const Polygon& polygon : patch.polygons) {
            const ChargedFace face{polygon, charges.dot(patch.FunctionsAt(polygon.centre)),
                                   gradient - gradient.dot(polygon.normal) * polygon.normal};
            if (face.Density() > least) {
                faces.push_back(face);
            }
        }
    }
    for (const KnownPolygon& known : patched.Body().Known()) {
        faces.push_back({known.polygon, known.charge});
    }
    return faces;
}

std::vector<InnerPoint> PermeableSum::PointsWithin(std::size_t body, std::size_t solid) const {
    std::vector<InnerPoint> points;
    const PatchedBody& patched = *m_parts[body].patched;
    for (const PatchPolygon& charged : patched.Polygons()) {
        const Surface& surface = patched.SheetOf(charged.patch).surface;
        const double side = surface.inside == solid ? 1 : surface.outside == solid ? -1 : 0;
        if (side != 0) {
            const Polygon& polygon = patched.Set().patches[charged.patch].polygons[charged.polygon];
            const double depth = patched.Body().ThicknessOf(solid) / 2;
            points.push_back({m_bodies[body].pose * (polygon.centre - side * depth * polygon.normal), polygon.area});
        }
    }
    return points;
}

std::vector<PreparedMagnet> PermeableSum::Charged() const {
    std::vector<PreparedMagnet> charged;
    for (std::size_t i = 0; i < m_bodies.size(); ++i) {
        // Where there is no field iron has no charge.
        std::vector<ChargedFace> faces =
            m_bodies[i].entry->body.IsPermeable() ? FacesOf(m_parts[i]) : std::vector<ChargedFace>();
        if (!faces.empty()) {
            charged.push_back(
                Placed(i, std::string(), std::make_shared<const MagnetShape>(std::move(faces)), m_bodies[i].pose));
        }
    }
    std::copy_if(m_magnets.begin(), m_magnets.end(), std::back_inserter(charged),
                 [&](const PreparedMagnet& magnet) { return !m_bodies[magnet.body].entry->body.IsPermeable(); });
    return charged;
}

std::size_t PermeableSum::SumUp() {
    const std::vector<PreparedMagnet> charged = Charged();
    const PatchSum sum(charged, m_bodies.size(), m_threads, leastLever);
    const double change = m_loads.empty() ? infinite : sum.Judged().PercentChange(m_loads);
    const double lasting = std::isfinite(m_change) ? lastingChange * m_change : chanceOfChange * change;
    m_percentError = std::isfinite(change) ? errorOfChange * std::max(change, lasting) : unknownError;
    m_change = change;
    m_loads = sum.Judged().Loads();
    return sum.Evaluations();
}

} // namespace vantor::solver
