#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The 3D modeler of a design.
Value::Object MakeEditor(SessionPointer session, DesignReference design);

} // namespace vantor::commands
