#pragma once

#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// What a client gets when it asks the system for the desktop, and starts from.
Value::Object MakeApplication(SessionPointer session);

} // namespace vantor::commands
