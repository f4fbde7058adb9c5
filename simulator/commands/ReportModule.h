#pragma once

#include "simulator/commands/DesignPlace.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

namespace vantor::commands {

/// The module "ReportSetup".
Value::Object MakeReportModule(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
