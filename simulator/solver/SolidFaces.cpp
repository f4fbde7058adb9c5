#include "simulator/solver/SolidFaces.h"

#include "simulator/solver/SolidContact.h"
#include "simulator/solver/SolidOverlap.h"

namespace vantor::solver {
namespace {

/// A solid that has triangles, and its number.
struct NumberedSolid {
    FacedSolid solid;
    std::size_t number;
};

std::vector<NumberedSolid> NumberedSolids(const std::vector<Solid>& solids) {
    std::vector<NumberedSolid> numbered;
    for (std::size_t i = 0; i < solids.size(); ++i) {
        if (solids[i].mesh && !solids[i].mesh->triangles.empty()) {
            numbered.push_back({FacedSolid(solids[i]), i});
        }
    }
    return numbered;
}

/// Calls visit(pair) for solids that may touch.
template <class Visit>
void ForNeighbours(std::vector<NumberedSolid>& solids, const Visit& visit) {
    for (std::size_t i = 0; i < solids.size(); ++i) {
        for (std::size_t j = i + 1; j < solids.size(); ++j) {
            FacedSolid &a = solids[i].solid, &b = solids[j].solid;
            if (a.Box().exteriorDistance(b.Box()) <= ContactTolerance(a, b)) {
                visit(SolidPair{a, b, solids[i].number, solids[j].number});
            }
        }
    }
}

void Append(std::vector<SolidFace>& faces, NumberedSolid& solid) {
    for (FacedSolid::Face& face : solid.solid.Faces()) {
        for (FacedSolid::Contact& contact : face.contacts) {
            if (contact.other > solid.number) {
                faces.push_back({std::move(contact.polygon), solid.number, contact.other});
            }
        }
        for (Polygon& polygon : face.air) {
            faces.push_back({std::move(polygon), solid.number, std::nullopt});
        }
    }
}

} // namespace

std::vector<SolidFace> FacesOf(const std::vector<Solid>& solids) {
    std::vector<NumberedSolid> numbered = NumberedSolids(solids);
    ForNeighbours(numbered, FindContact);
    ForNeighbours(numbered, [](const SolidPair& pair) {
        if (Overlap(pair)) {
            throw SolveError(pair.first.Label() + " and " + pair.second.Label() +
                             " overlap; move one of them, or cut the room it takes out of the other.");
        }
    });
    std::vector<SolidFace> faces;
    for (NumberedSolid& solid : numbered) {
        Append(faces, solid);
    }
    return faces;
}

} // namespace vantor::solver
