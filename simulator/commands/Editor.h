#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The 3D modeler of a design.
Value::Object MakeEditor(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
