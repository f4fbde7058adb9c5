#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The module "VeltrixParameterSetup": forces and torques.
Value::Object MakeLoadModule(SessionPointer session, DesignReference design);

} // namespace vantor::commands
