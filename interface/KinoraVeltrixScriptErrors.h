#pragma once

/// @file
/// Texts of the desktop's script error codes.

#include "interface/KinoraVeltrixExport.h"

#include <cstdint>

/// Text of a script error code of the desktop, for hosts that show what went wrong.
/// @param code  for example 0x0202
/// @return a text such as "0x0202: Bad argument value", valid as long as the library is loaded; null for a code that
///         the desktop does not have
extern "C" KINORA_VELTRIX_API const char* GetKinoraVeltrixScriptErrorText(std::int32_t code);
