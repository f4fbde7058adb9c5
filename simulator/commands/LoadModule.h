#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The module "VeltrixParameterSetup": forces and torques.
Value::Object MakeLoadModule(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
