#pragma once

#include <windows.h>

namespace kinora::trace {

/// ProgID that a client reaches by selecting the version "Trace".
inline constexpr const wchar_t* traceProgId = L"Pellux.VantorDesktop.Trace";

/// ProgID of the desktop itself; a version follows after a point.
inline constexpr const wchar_t* desktopProgId = L"Pellux.VantorDesktop";

/// Class of the trace server.
inline constexpr CLSID traceClassId = {0x2d6a9f14, 0x83c1, 0x4f5b, {0xa7, 0x0e, 0x61, 0xd8, 0x3c, 0x95, 0x27, 0xbe}};

} // namespace kinora::trace
