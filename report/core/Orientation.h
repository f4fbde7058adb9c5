#pragma once

#include <filesystem>
#include <optional>

namespace kinora::report {

/// What the host of a run handed to the library as the orientation of its bodies, and so what the log's angles mean.
enum class Orientation {
    /// What makes the desktop's frame the body's: D, the global axes as drawn, which move with the body. Angles give D,
    /// loads are components in D.
    Exact,
    /// The body's own axes. The desktop's frame is another one wherever phi is not theta.
    Direct,
};

/// What the state file of the host says ("<project>.state.json" beside the project): files of format 2 are of runs with
/// exact orientations, files without a format of earlier ones. Nothing without a readable state file.
std::optional<Orientation> FindOrientation(const std::filesystem::path& log);

} // namespace kinora::report
