#pragma once

#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The open projects that the client may take at this moment, numbered from 0.
Value::Object MakeProjects(SessionPointer session);

} // namespace vantor::commands
