#pragma once

#include <cstdint>
#include <string>

namespace kinora::trace {

/// Name and meaning of an HRESULT, for example "DISP_E_EXCEPTION: the object reported an error"; empty for a code that
/// is not among the ones that automation calls give.
std::string HResultText(std::uint32_t code);

/// An HRESULT as eight hexadecimal digits: "0x80020009".
std::string HResultNumber(std::uint32_t code);

/// The desktop's own text for a script error, for example "0x0202: Bad argument value".
/// @param code  the error as an HRESULT of the interface facility (0x8004....)
/// @return empty when it is no script error of the desktop
std::string ScriptErrorText(std::uint32_t code);

} // namespace kinora::trace
