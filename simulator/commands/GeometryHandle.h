#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

#include <string>

namespace vantor::commands {

/// A solid or the region of a design, as a list of properties.
Value::Object MakeGeometryHandle(SessionPointer session, DesignReference design, std::string name);

} // namespace vantor::commands
