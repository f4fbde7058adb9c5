#pragma once

#include <unknwn.h>

namespace vantor::automation {

/// The class object of the desktop that this process has for itself: every client gets an application object of its own
/// on it, on any thread. The desktop begins with its first client; once a client has quit it, the next one begins
/// another. Clients that let go leave it as it is.
/// @return CLASS_E_CLASSNOTAVAILABLE for any class but inProcessClassId, E_NOINTERFACE
HRESULT GetInProcessClassObject(REFCLSID classId, REFIID iid, void** result);

/// True once a class object was handed out: the desktop may live from then on, and does so to the end of the process.
bool IsInProcessClassInUse();

} // namespace vantor::automation
