#pragma once

#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The desktop itself.
Value::Object MakeDesktop(SessionPointer session);

} // namespace vantor::commands
