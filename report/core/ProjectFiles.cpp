#include "report/core/ProjectFiles.h"

#include "programs/Paths.h"
#include "scenario/Text.h"

namespace kinora::report {
namespace {

constexpr const char* logEnd = ".coupling.csv";
constexpr const char* reportsEnd = ".reports";

bool HasNameBefore(const std::string& text, const std::string& end) {
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

std::string ProjectOf(const std::filesystem::path& log) {
    const std::string name = scenario::Utf8FromPath(log.filename());
    return HasNameBefore(name, logEnd) ? name.substr(0, name.size() - std::string(logEnd).size())
                                       : scenario::Utf8FromPath(log.stem());
}

std::filesystem::path ProjectFolder(const std::filesystem::path& log) {
    const std::filesystem::path folder = programs::AbsolutePath(log).parent_path();
    return scenario::Utf8FromPath(folder.filename()) == ProjectOf(log) + reportsEnd ? folder.parent_path() : folder;
}

} // namespace kinora::report
