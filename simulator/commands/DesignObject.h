#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// A design.
Value::Object MakeDesign(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
