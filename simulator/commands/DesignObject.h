#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// A design.
Value::Object MakeDesign(SessionPointer session, DesignReference design);

} // namespace vantor::commands
