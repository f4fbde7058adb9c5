#include "trace/core/TraceFiles.h"

#include <algorithm>
#include <map>
#include <string>
#include <system_error>

namespace kinora::trace {
namespace {

namespace fs = std::filesystem;

constexpr const char* extension = ".jsonl";
constexpr const char* commonStart = "vantor-trace-";

/// The files of a folder; none when it cannot be read.
std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        files.push_back(entry->path());
    }
    return files;
}

/// 5 for NAME.5.jsonl, 0 for anything else.
unsigned long PartNumber(const fs::path& file, const fs::path& stem) {
    const std::string name = file.filename().u8string();
    const std::string start = stem.filename().u8string() + ".";
    const std::string end = extension;
    if (name.size() <= start.size() + end.size() || name.compare(0, start.size(), start) != 0 ||
        name.compare(name.size() - end.size(), end.size(), end) != 0) {
        return 0;
    }
    const std::string number = name.substr(start.size(), name.size() - start.size() - end.size());
    const bool isNumber = number.size() < 9 && number.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoul(number) : 0;
}

bool IsFirstPart(const fs::path& file) {
    const std::string name = file.filename().u8string();
    return name.rfind(commonStart, 0) == 0 && file.extension() == extension && !file.stem().has_extension();
}

} // namespace

std::vector<fs::path> PartsOf(const fs::path& file) {
    std::vector<fs::path> parts{file};
    if (file.extension() != extension || file.stem().has_extension()) {
        return parts;
    }
    std::map<unsigned long, fs::path> following;
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    for (const fs::path& other : FilesIn(folder)) {
        const unsigned long number = PartNumber(other, file.stem());
        if (number > 1) {
            following[number] = other;
        }
    }
    for (const auto& [number, part] : following) {
        parts.push_back(part);
    }
    return parts;
}

fs::path NewestTrace(const fs::path& folder) {
    fs::path newest;
    fs::file_time_type latest;
    for (const fs::path& file : FilesIn(folder)) {
        std::error_code error;
        const fs::file_time_type time = fs::last_write_time(file, error);
        if (!error && IsFirstPart(file) && (newest.empty() || time > latest)) {
            newest = file;
            latest = time;
        }
    }
    return newest;
}

} // namespace kinora::trace
