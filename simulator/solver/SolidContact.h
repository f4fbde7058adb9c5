#pragma once
// Where two solids of a body lie on one another.
#include "simulator/solver/SolidPair.h"

namespace vantor::solver {

/// Turns what the faces of two solids have in common from air into contact.
void FindContact(const SolidPair& pair);

} // namespace vantor::solver
