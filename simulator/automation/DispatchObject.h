#pragma once

#include "simulator/automation/Server.h"

namespace vantor::automation {

/// The dispatch face of an object of the scripting interface, which keeps its server. The caller owns one reference.
IDispatch* MakeDispatchObject(std::shared_ptr<Server> server, commands::Value::Object object);

} // namespace vantor::automation
