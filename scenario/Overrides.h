#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kinora::scenario {

/// A value that is put into a scenario from outside, in place of its own or where it has none.
struct Override {
    /// A JSON pointer ("/solver/end"); names with dots between them ("solver.end"), in lists the number or the name of
    /// an item ("bodies.rotor.mass"); or the name of a parameter ("gap").
    std::string path;
    /// JSON, or else a text that stands for itself: a formula, the name of a file.
    std::string value;
    /// Where it comes from, for messages: "--set gap=5*mm".
    std::string origin;
};

using Overrides = std::vector<Override>;

/// What a word of the command line asks for.
/// @param text  PATH=VALUE
/// @throws InputError  it is not of that form
Override ParseOverride(const std::string& text);

/// What a file asks for: a JSON object of paths and values, comments allowed; in its order.
/// @throws InputError  it cannot be read, or is no such object
Overrides ReadOverrides(const std::filesystem::path& file);

} // namespace kinora::scenario
