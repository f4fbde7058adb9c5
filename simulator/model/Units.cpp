#include "simulator/model/Units.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <unordered_map>

namespace vantor::model {
namespace {

constexpr std::size_t angleIndex = 4;
constexpr double pi = 3.14159265358979323846;

bool Same(double left, double right) {
    return std::abs(left - right) < 1e-9;
}

bool SameWithoutAngle(const Dimension& left, const Dimension& right) {
    for (std::size_t i = 0; i < angleIndex; ++i) {
        if (!Same(left.exponents[i], right.exponents[i])) {
            return false;
        }
    }
    return true;
}

constexpr Dimension massDimension{{0, 1, 0, 0, 0}};
constexpr Dimension currentDimension{{0, 0, 0, 1, 0}};
constexpr Dimension frequencyDimension{{0, 0, -1, 0, 0}};
constexpr Dimension angularSpeedDimension{{0, 0, -1, 0, 1}};
constexpr Dimension speedDimension{{1, 0, -1, 0, 0}};
constexpr Dimension fieldStrengthDimension{{-1, 0, 0, 1, 0}};
constexpr Dimension fluxDensityDimension{{0, 1, -2, -1, 0}};

std::unordered_map<std::string_view, Quantity> MakeUnits() {
    return {
        // lengths
        {"nm", {1e-9, lengthDimension}},
        {"um", {1e-6, lengthDimension}},
        {"mm", {1e-3, lengthDimension}},
        {"cm", {1e-2, lengthDimension}},
        {"dm", {1e-1, lengthDimension}},
        {"m", {1.0, lengthDimension}},
        {"meter", {1.0, lengthDimension}},
        {"Meter", {1.0, lengthDimension}},
        {"km", {1e3, lengthDimension}},
        {"uin", {2.54e-8, lengthDimension}},
        {"mil", {2.54e-5, lengthDimension}},
        {"in", {2.54e-2, lengthDimension}},
        {"ft", {0.3048, lengthDimension}},
        {"yd", {0.9144, lengthDimension}},
        // angles
        {"rad", {1.0, angleDimension}},
        {"Rad", {1.0, angleDimension}},
        {"deg", {pi / 180.0, angleDimension}},
        {"Deg", {pi / 180.0, angleDimension}},
        // times and rates
        {"s", {1.0, timeDimension}},
        {"ms", {1e-3, timeDimension}},
        {"us", {1e-6, timeDimension}},
        {"ns", {1e-9, timeDimension}},
        {"min", {60.0, timeDimension}},
        {"Hz", {1.0, frequencyDimension}},
        {"kHz", {1e3, frequencyDimension}},
        {"rpm", {pi / 30.0, angularSpeedDimension}},
        {"rad_per_sec", {1.0, angularSpeedDimension}},
        {"m_per_sec", {1.0, speedDimension}},
        // masses, forces, torques
        {"kg", {1.0, massDimension}},
        {"g", {1e-3, massDimension}},
        {"Newton", {1.0, forceDimension}},
        {"mNewton", {1e-3, forceDimension}},
        {"uNewton", {1e-6, forceDimension}},
        {"kNewton", {1e3, forceDimension}},
        {"NewtonMeter", {1.0, torqueDimension}},
        {"mNewtonMeter", {1e-3, torqueDimension}},
        {"uNewtonMeter", {1e-6, torqueDimension}},
        {"kNewtonMeter", {1e3, torqueDimension}},
        // currents and fields
        {"A", {1.0, currentDimension}},
        {"mA", {1e-3, currentDimension}},
        {"kA", {1e3, currentDimension}},
        {"A_per_meter", {1.0, fieldStrengthDimension}},
        {"kA_per_meter", {1e3, fieldStrengthDimension}},
        {"tesla", {1.0, fluxDensityDimension}},
        {"mTesla", {1e-3, fluxDensityDimension}},
    };
}

} // namespace

bool Dimension::IsNumber() const {
    return SameWithoutAngle(*this, numberDimension) && Same(exponents[angleIndex], 0.0);
}

bool Dimension::IsAngle() const {
    return SameWithoutAngle(*this, numberDimension) && Same(exponents[angleIndex], 1.0);
}

bool Dimension::IsLength() const {
    return SameWithoutAngle(*this, lengthDimension);
}

bool Dimension::Matches(const Dimension& other) const {
    if (!SameWithoutAngle(*this, other)) {
        return false;
    }
    const bool onlyAngles = SameWithoutAngle(*this, numberDimension);
    return !onlyAngles || Same(exponents[angleIndex], other.exponents[angleIndex]) || IsNumber() || other.IsNumber();
}

Dimension operator*(const Dimension& left, const Dimension& right) {
    Dimension product;
    for (std::size_t i = 0; i < product.exponents.size(); ++i) {
        product.exponents[i] = left.exponents[i] + right.exponents[i];
    }
    return product;
}

Dimension operator/(const Dimension& left, const Dimension& right) {
    return left * Power(right, -1.0);
}

Dimension Power(const Dimension& base, double exponent) {
    Dimension power;
    for (std::size_t i = 0; i < power.exponents.size(); ++i) {
        power.exponents[i] = base.exponents[i] * exponent;
    }
    return power;
}

std::string Describe(const Dimension& dimension) {
    if (dimension.IsNumber()) {
        return "a plain number";
    }
    if (dimension.IsAngle()) {
        return "an angle";
    }
    if (dimension.IsLength()) {
        return "a length";
    }
    static constexpr std::array<const char*, 5> symbols = {"m", "kg", "s", "A", "rad"};
    std::string words;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        if (Same(dimension.exponents[i], 0.0)) {
            continue;
        }
        words += (words.empty() ? "" : " ") + std::string(symbols[i]);
        if (!Same(dimension.exponents[i], 1.0)) {
            words += "^" + FormatNumber(dimension.exponents[i]);
        }
    }
    return words;
}

std::optional<Quantity> FindUnit(std::string_view word) {
    static const std::unordered_map<std::string_view, Quantity> units = MakeUnits();
    const auto found = units.find(word);
    if (found == units.end()) {
        return std::nullopt;
    }
    return found->second;
}

std::optional<double> FindModelUnit(const std::string& word) {
    static const std::map<std::string, double> units = {
        {"nm", 1e-9},      {"um", 1e-6},         {"micron", 1e-6}, {"mm", 1e-3},     {"millimeter", 1e-3},
        {"cm", 1e-2},      {"centimeter", 1e-2}, {"dm", 1e-1},     {"m", 1.0},       {"meter", 1.0},
        {"km", 1e3},       {"kilometer", 1e3},   {"uin", 2.54e-8}, {"mil", 2.54e-5}, {"in", 2.54e-2},
        {"inch", 2.54e-2}, {"ft", 0.3048},       {"foot", 0.3048}, {"yd", 0.9144},
    };
    std::string lower = word;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto found = units.find(lower);
    if (found == units.end()) {
        return std::nullopt;
    }
    return found->second;
}

} // namespace vantor::model
