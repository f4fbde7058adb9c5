#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The module "FieldsReporter".
Value::Object MakeFieldsModule(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
