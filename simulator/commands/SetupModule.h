#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The module "AnalysisSetup": what can be solved, and how well.
Value::Object MakeSetupModule(SessionPointer session, DesignReference design);

} // namespace vantor::commands
