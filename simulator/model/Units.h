#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace vantor::model {

/// Exponents of the base quantities length, mass, time, current and angle.
/// The angle is kept apart so that an angle in place of a length is noticed; in every other respect it is a number.
struct Dimension {
    std::array<double, 5> exponents{};

    bool IsNumber() const;
    bool IsAngle() const;
    bool IsLength() const;

    /// Equal, or apart only by the angle while the other quantities are present (an arc is a length), or a number
    /// and an angle (a number stands for radians).
    bool Matches(const Dimension& other) const;
};

Dimension operator*(const Dimension& left, const Dimension& right);
Dimension operator/(const Dimension& left, const Dimension& right);
Dimension Power(const Dimension& base, double exponent);

/// The dimension in words for messages: "a length", "a plain number", "an angle", "kg m s^-2".
std::string Describe(const Dimension& dimension);

constexpr Dimension numberDimension{};
constexpr Dimension lengthDimension{{1, 0, 0, 0, 0}};
constexpr Dimension timeDimension{{0, 0, 1, 0, 0}};
constexpr Dimension angleDimension{{0, 0, 0, 0, 1}};
constexpr Dimension forceDimension{{1, 1, -2, 0, 0}};
constexpr Dimension torqueDimension{{2, 1, -2, 0, 0}};

/// A value in SI units (radians for angles) with its dimension.
struct Quantity {
    double value = 0.0;
    Dimension dimension;
};

/// A unit suffix of expressions: its size in SI units and its dimension; nothing when the word is no unit.
std::optional<Quantity> FindUnit(std::string_view word);

/// The size in metres of a model unit by its usual names (um, mm, cm, dm, m, meter, km, in, ft, mil, ...).
/// Letter case does not matter. Nothing when the word is no length unit.
std::optional<double> FindModelUnit(const std::string& word);

} // namespace vantor::model
