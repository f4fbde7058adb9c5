#pragma once
// How two solids of a body may meet: face on face, but not one in the other.
#include "simulator/solver/FacedSolid.h"

namespace vantor::solver {

/// Two solids of a list, by their numbers there.
struct SolidPair {
    FacedSolid &first, &second;
    std::size_t firstIndex, secondIndex;
};

/// Turns what the faces of two solids have in common from air into contact.
void FindContact(const SolidPair& pair);

/// Whether solids whose contacts have been found have a part of their volumes in common.
bool Overlap(const SolidPair& pair);

} // namespace vantor::solver
