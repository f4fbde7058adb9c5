#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The child "Paravant" of a design: the parametric setups.
Value::Object MakeParametricSetups(SessionPointer session, DesignReference design);

} // namespace vantor::commands
