#include "simulator/solver/SolidContact.h"

#include "simulator/solver/PolygonOverlay.h"

#include <optional>
#include <utility>

namespace vantor::solver {
namespace {

using Face = FacedSolid::Face;

/// Calls visit(face of the first solid, face of the second) for those in one plane that look at each other and whose
/// boxes meet.
template <class Visit>
void ForFacingFaces(const SolidPair& pair, const Visit& visit) {
    const double tolerance = ContactTolerance(pair.first, pair.second);
    for (Face& first : pair.first.Faces()) {
        if (first.box.exteriorDistance(pair.second.Box()) > tolerance) {
            continue;
        }
        for (const std::size_t i : pair.second.FacesAlong(-first.whole.normal)) {
            Face& second = pair.second.Faces()[i];
            if (first.box.exteriorDistance(second.box) <= tolerance &&
                LieInOnePlane(first.whole, second.whole, tolerance)) {
                visit(first, second);
            }
        }
    }
}

/// Takes what a polygon of the first solid has in common with the second solid's face away from both.
/// @return what is left of the polygon; nothing when it has nothing in common with the face
std::optional<std::vector<Polygon>> TakeCommon(const SolidPair& pair, Face& first, const Polygon& polygon,
                                               Face& second) {
    for (auto other = second.air.begin(); other != second.air.end(); ++other) {
        std::optional<PolygonOverlay> overlay = Overlay(polygon, *other, ContactTolerance(pair.first, pair.second));
        if (!overlay) {
            continue;
        }
        for (Polygon& common : overlay->common) {
            second.contacts.push_back({common, pair.firstIndex});
            first.contacts.push_back({std::move(common), pair.secondIndex});
        }
        second.air.erase(other);
        second.air.insert(second.air.end(), overlay->onlySecond.begin(), overlay->onlySecond.end());
        return std::move(overlay->onlyFirst);
    }
    return std::nullopt;
}

void Join(const SolidPair& pair, Face& first, Face& second) {
    std::vector<Polygon> pending = std::move(first.air);
    first.air.clear();
    while (!pending.empty()) {
        Polygon polygon = std::move(pending.back());
        pending.pop_back();
        if (const auto rest = TakeCommon(pair, first, polygon, second)) {
            pending.insert(pending.end(), rest->begin(), rest->end());
        } else {
            first.air.push_back(std::move(polygon));
        }
    }
}

} // namespace

void FindContact(const SolidPair& pair) {
    ForFacingFaces(pair, [&](Face& first, Face& second) { Join(pair, first, second); });
}

} // namespace vantor::solver
