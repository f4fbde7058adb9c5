#pragma once

#include "comutils/Value.h"

#include <wrl/client.h>

#include <initializer_list>
#include <string>
#include <vector>

/// An automation object with one reference of its own.
using CObject = Microsoft::WRL::ComPtr<IDispatch>;

/// The one road to the desktop: every command goes through `Call`.
namespace Dispatch {

/// Invokes a method by its name.
/// @param arguments  in the desktop's order
/// @param result     receives the result; nothing (VT_EMPTY) when the call fails
/// @return false when the object is null, does not know the name, or the call fails
bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments, CValue& result);

/// The same for a method whose result is not looked at.
bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments);

/// Invokes a method without arguments that must give a text.
/// @return false when the call fails or its result is no text
bool QueryText(IDispatch* object, const wchar_t* methodName, std::string& text);

/// @return the object that the method gives; null when the call fails or gives none
CObject QueryObject(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments);

/// Takes over the reference of an object that a wrapper returned.
CObject Own(IDispatch* object);

/// Names of the design's local variables ("GetProperties").
/// @return false when the call fails; a result that is no array gives no names
bool QueryLocalVariables(IDispatch* design, std::vector<std::string>& names);

} // namespace Dispatch
