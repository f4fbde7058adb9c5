#pragma once

namespace vantor::commands {

/// The one solution type, which is also the type of its reports and setups.
inline constexpr const char* magnetostatic = "Magnetostatic";

} // namespace vantor::commands
