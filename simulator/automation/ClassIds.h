#pragma once

#include <unknwn.h>

namespace vantor::automation {

/// The class id of the simulator: {6E8C1B52-4B7D-4E0F-9C55-2D0A7F3B91C4}.
inline constexpr CLSID simulatorClassId = {
    0x6e8c1b52, 0x4b7d, 0x4e0f, {0x9c, 0x55, 0x2d, 0x0a, 0x7f, 0x3b, 0x91, 0xc4}};

/// The class id of the simulator in its client's own process: {CC02643D-559F-41EB-8F1F-ED5C1A35EF3C}.
inline constexpr CLSID inProcessClassId = {
    0xcc02643d, 0x559f, 0x41eb, {0x8f, 0x1f, 0xed, 0x5c, 0x1a, 0x35, 0xef, 0x3c}};

/// ProgID that a client reaches by selecting the version "Simulator".
inline constexpr const wchar_t* simulatorProgId = L"Pellux.VantorDesktop.Simulator";

/// ProgID of the simulator in its client's process: the version "SimulatorInProcess".
inline constexpr const wchar_t* inProcessProgId = L"Pellux.VantorDesktop.SimulatorInProcess";

} // namespace vantor::automation
