#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The module "FieldsReporter".
Value::Object MakeFieldsModule(SessionPointer session, DesignReference design);

} // namespace vantor::commands
