#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace kinora::scenario {

/// Where a value of a JSON text stands.
struct JsonLocation {
    /// Counted from 1; of a value with a key, the line of the key.
    int line = 1;
    /// How many values begin before it.
    std::size_t order = 0;
    /// What put it there from outside the text ("--set gap=5*mm"); empty for what stands in the text.
    std::string origin;
};

/// Where the values of a JSON text stand.
struct JsonLocations {
    /// By JSON pointer ("" is the whole document).
    std::map<std::string, JsonLocation> places;

    /// Location of a value, or of its closest parent that is known.
    JsonLocation Of(std::string pointer) const;
    /// Notes that a value, and all that it holds, comes from outside the text.
    void Replace(const std::string& pointer, const std::string& origin);
};

/// One more step of a JSON pointer, escaped as RFC 6901 asks.
std::string PointerTo(const std::string& parent, const std::string& key);

/// Reads the locations of all values. Comments are allowed.
/// @param fileName  named in errors
/// @throws InputError  the text is not JSON, or an object holds a key twice; with the line
JsonLocations ReadJsonLocations(const std::string& text, const std::string& fileName);

} // namespace kinora::scenario
