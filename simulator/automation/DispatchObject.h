#pragma once

#include "simulator/automation/Server.h"

namespace vantor::automation {

/// The dispatch face of an object of the scripting interface, which the server must outlive. The caller owns one
/// reference.
IDispatch* MakeDispatchObject(Server& server, commands::Value::Object object);

} // namespace vantor::automation
