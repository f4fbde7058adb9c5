#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

#include <string>

namespace vantor::commands {

/// One material of a project.
Value::Object MakeMaterial(SessionPointer session, ProjectPointer project, std::string name);

} // namespace vantor::commands
