#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kinora::host {

/// A project to start from.
struct ProjectTemplate {
    std::string name;
    /// What it shows, one line.
    std::string summary;
    /// A text of host/templates/.
    std::string_view scenario;
    /// Makes the geometry NAME.obj.
    std::string (*geometry)();
};

/// The first one is taken unless another is asked for.
const std::vector<ProjectTemplate>& ProjectTemplates();

} // namespace kinora::host
