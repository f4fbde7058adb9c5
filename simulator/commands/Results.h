#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The child "Results" of a design: the names of the reports.
Value::Object MakeResults(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
