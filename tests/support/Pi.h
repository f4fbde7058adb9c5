#pragma once

namespace kinora {

inline constexpr double pi = 3.14159265358979323846;

} // namespace kinora
