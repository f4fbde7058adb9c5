#pragma once

#include "simulator/automation/Clients.h"

namespace vantor::automation {

/// Watches the process that is calling now, as far as the system tells which one it is.
/// @return empty when it does not
Clients::HasEnded WatchCallingProcess();

/// Takes back what dead clients held.
void ReclaimDead(Clients& clients);

} // namespace vantor::automation
