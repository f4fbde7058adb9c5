#pragma once

#include "simulator/commands/Value.h"

#include <oaidl.h>

#include <functional>

namespace vantor::automation {

/// Makes the dispatch face of an object; the caller owns one reference.
using MakeDispatch = std::function<IDispatch*(const commands::Value::Object&)>;

/// A command's view of a VARIANT. References (VT_BYREF) are followed; arrays are read in index order whatever their
/// lower bound. What no command takes becomes a Foreign value.
/// @throws model::DesktopError (WrongArrayRank, InvalidArrayAccess) for arrays of more than one dimension, arrays
///         nested too deep, and arrays that cannot be read.
commands::Value ValueFromVariant(const VARIANT& variant);

/// Writes a value into a VARIANT that holds nothing. Owned by the caller afterwards.
/// @throws std::bad_alloc; the VARIANT then holds nothing.
void VariantFromValue(const commands::Value& value, const MakeDispatch& makeDispatch, VARIANT& variant);

} // namespace vantor::automation
