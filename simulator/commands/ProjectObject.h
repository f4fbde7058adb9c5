#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// A project.
Value::Object MakeProject(SessionPointer session, ProjectPointer project);

} // namespace vantor::commands
