#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// Makes and copies a project's definitions.
Value::Object MakeDefinitionManager(SessionPointer session, ProjectPointer project);

} // namespace vantor::commands
