#pragma once

#include <oaidl.h>

#include <functional>

namespace vantor::automation {

/// The class object that hands every client an application object of its own on the one desktop; the caller owns one
/// reference.
/// @param newClient  makes a client's application object, whose reference goes to the client; null when the desktop is
///                   leaving. Called on any thread.
/// @param lock       keeps the server, or lets it go, as a client of the class object asks
IClassFactory* MakeClassFactory(std::function<IDispatch*()> newClient, std::function<void(bool)> lock);

} // namespace vantor::automation
