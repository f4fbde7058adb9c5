#include "report/core/Orientation.h"

#include "report/core/ProjectFiles.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <nlohmann/json.hpp>

namespace kinora::report {

std::optional<Orientation> FindOrientation(const std::filesystem::path& log) {
    const std::filesystem::path file = ProjectFolder(log) / scenario::PathFromUtf8(ProjectOf(log) + ".state.json");
    try {
        const nlohmann::json state = nlohmann::json::parse(scenario::ReadFile(file));
        // Another program's file may have the name.
        if (!state.contains("step")) {
            return std::nullopt;
        }
        return state.value("format", 1) >= 2 ? Orientation::Exact : Orientation::Direct;
    } catch (const scenario::InputError&) {
        return std::nullopt;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

} // namespace kinora::report
