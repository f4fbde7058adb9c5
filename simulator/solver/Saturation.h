#pragma once
// Iron whose permeability falls where it carries much flux.
//
// A solid of a B-H curve gets one permeability in all of it: the one with which the energy of its field, the integral
// of H.B, is that of the curve at the same B. So what saturates in places is as permeable as it is on the whole.
#include "simulator/solver/PermeableSum.h"

namespace vantor::solver {

/// Solves for the permeabilities, coarsely, until they stand still.
/// @param magnets  all solids as magnets
/// @param bodies  with the permeabilities of weak fields; those of which a solid saturates are replaced by new ones
/// @return a warning for each solid that saturates
std::vector<std::string> Saturate(const std::vector<PreparedMagnet>& magnets,
                                  std::vector<PermeableStore::Placed>& bodies, const Options& options);

} // namespace vantor::solver
