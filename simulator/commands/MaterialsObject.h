#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The project's own materials: the child "Materials".
Value::Object MakeMaterials(SessionPointer session, ProjectPointer project);

} // namespace vantor::commands
