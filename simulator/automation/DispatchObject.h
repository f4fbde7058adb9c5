#pragma once

#include "simulator/automation/Server.h"

namespace vantor::automation {

/// The dispatch face of an object of the scripting interface; the caller owns one reference. The server must outlive
/// it.
IDispatch* MakeDispatchObject(Server& server, commands::Value::Object object);

} // namespace vantor::automation
