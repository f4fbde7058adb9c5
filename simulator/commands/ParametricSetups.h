#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The child "Paravant" of a design: the parametric setups.
Value::Object MakeParametricSetups(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
