#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The child "Results" of a design: the names of the reports.
Value::Object MakeResults(SessionPointer session, DesignReference design);

} // namespace vantor::commands
