#pragma once

#include <map>
#include <string>

namespace kinora::scenario {

/// Where the values of a JSON text stand.
struct JsonLocations {
    /// JSON pointer ("" is the whole document) to line, counted from 1.
    std::map<std::string, int> lines;

    /// Line of a value, or of its closest parent that is known.
    int LineOf(std::string pointer) const;
};

/// One more step of a JSON pointer, escaped as RFC 6901 asks.
std::string PointerTo(const std::string& parent, const std::string& key);

/// Reads the locations of all values. Comments are allowed.
/// @param fileName  named in errors
/// @throws InputError  the text is not JSON, or an object holds a key twice; with the line
JsonLocations ReadJsonLocations(const std::string& text, const std::string& fileName);

} // namespace kinora::scenario
