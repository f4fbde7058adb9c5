#pragma once

#include <oaidl.h>

#include <cstddef>

/// What values and arrays share: single elements, by their type.
namespace platform {

/// True for what an array may hold.
bool IsElementType(int type);

/// @return bytes; 0 unless IsElementType
std::size_t ElementSize(VARTYPE type);

/// Frees what an element owns, and makes it zero.
void ClearElement(VARTYPE type, void* element);

/// Copies an element into memory that owns nothing: texts and values get memory of their own, objects a reference.
/// @return E_OUTOFMEMORY, or why a value cannot be copied; the target then owns nothing
HRESULT CopyElement(VARTYPE type, void* target, const void* source);

} // namespace platform
