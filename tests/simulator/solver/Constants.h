#pragma once

namespace references {

constexpr double pi = 3.14159265358979323846;
/// V s/(A m).
constexpr double mu0 = 4e-7 * pi;

} // namespace references
