#pragma once

#include "simulator/automation/Server.h"

#include <unknwn.h>

namespace vantor::automation {

/// The class id of the simulator: {6E8C1B52-4B7D-4E0F-9C55-2D0A7F3B91C4}.
extern const CLSID simulatorClassId;

/// The class object that hands every client an application object of its own on the one desktop; the caller owns one
/// reference. The server must outlive it.
IClassFactory* MakeClassFactory(Server& server);

} // namespace vantor::automation
