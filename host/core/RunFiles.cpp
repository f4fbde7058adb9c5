#include "host/core/RunFiles.h"

#include "programs/Paths.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cctype>
#include <cwctype>
#include <fmt/format.h>
#include <fstream>
#include <system_error>

namespace kinora::host {

using namespace scenario;

namespace {

/// Where paths are UTF-8, only the letters of ASCII.
std::filesystem::path::string_type LowerCase(const std::filesystem::path& path) {
    std::filesystem::path::string_type text = path.native();
    std::transform(text.begin(), text.end(), text.begin(), [](auto letter) {
        if constexpr (sizeof(letter) == 1) {
            return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        } else {
            return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(letter)));
        }
    });
    return text;
}

bool IsInFolder(const std::filesystem::path& file, const std::filesystem::path& folder) {
    std::filesystem::path parent = programs::NormalPath(file).parent_path();
    for (; parent.has_relative_path(); parent = parent.parent_path()) {
        if (IsSameFile(parent, folder)) {
            return true;
        }
    }
    return false;
}

std::string ShownPath(const std::filesystem::path& file) {
    return Utf8FromPath(programs::NormalPath(file));
}

/// What a run writes besides the project.
std::vector<NamedFile> WrittenBeside(const RunFiles& files, const std::vector<NamedFile>& outputs) {
    std::vector<NamedFile> written = {{"the state file", files.state}};
    if (files.csv) {
        written.push_back({"the states (csv)", *files.csv});
    }
    if (files.result) {
        written.push_back({"the result file", *files.result});
    }
    written.insert(written.end(), outputs.begin(), outputs.end());
    return written;
}

void ThrowLines(const std::vector<std::string>& lines) {
    if (!lines.empty()) {
        throw InputError(fmt::format("{}", fmt::join(lines, "\n")));
    }
}

/// Opened for writing and left as it is; what is not there yet is made and removed.
bool IsWritable(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::exists(file, error)) {
        return std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).is_open();
    }
    const bool isMade = std::ofstream(file, std::ios::binary).is_open();
    std::filesystem::remove(file, error);
    return isMade;
}

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file(error)) {
            found.push_back(entry->path());
        }
    }
    return found;
}

/// What there is of a size, up to the end of the last line.
std::uintmax_t WholeLines(const std::filesystem::path& file, std::uintmax_t size) {
    std::ifstream stream(file, std::ios::binary);
    for (; size > 0; --size) {
        stream.seekg(static_cast<std::streamoff>(size - 1));
        if (stream.get() == '\n') {
            break;
        }
    }
    return size;
}

void Cut(const std::filesystem::path& file, std::uintmax_t wanted) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) {
        // Missing: it begins anew.
        return;
    }
    std::filesystem::resize_file(file, WholeLines(file, std::min(size, wanted)), error);
    if (error) {
        throw RunError(fmt::format("{}: cannot be cut to its last whole step ({}); is it open elsewhere?",
                                   Utf8FromPath(file), error.message()));
    }
}

void AddMissing(const std::filesystem::path& file, std::uintmax_t wanted, std::vector<std::string>& lines) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) {
        lines.push_back(fmt::format("{}: the file is missing", ShownPath(file)));
    } else if (size < wanted) {
        lines.push_back(fmt::format("{}: {} bytes, but the run had written {}", ShownPath(file), size, wanted));
    }
}

} // namespace

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
    std::error_code error;
    if (std::filesystem::equivalent(a, b, error) && !error) {
        return true;
    }
    const std::filesystem::path wholeA = programs::NormalPath(a);
    const std::filesystem::path wholeB = programs::NormalPath(b);
    if (LowerCase(wholeA) == LowerCase(wholeB)) {
        return true;
    }
    return LowerCase(wholeA.filename()) == LowerCase(wholeB.filename()) &&
           std::filesystem::equivalent(wholeA.parent_path(), wholeB.parent_path(), error) && !error;
}

RunFiles FilesOf(const Scenario& scenario) {
    RunFiles files;
    files.project = scenario.outputFolder / scenario.projectFile;
    const std::filesystem::path base = files.project.parent_path();
    const auto named = [&](const char* suffix) {
        std::filesystem::path name = files.project.stem();
        name += suffix;
        return name;
    };
    files.reportsFolder = base / named(".reports");
    files.couplingLog = files.reportsFolder / named(".coupling.csv");
    files.state = base / named(".state.json");
    files.lock = base / "kinora-run.lock";
    if (scenario.csvFile) {
        files.csv = programs::Joined(scenario.outputFolder, *scenario.csvFile);
    }
    files.result = scenario.resultFile;
    return files;
}

void RequireDistinctFiles(const RunFiles& files, const std::vector<NamedFile>& inputs,
                          const std::vector<NamedFile>& outputs) {
    std::vector<NamedFile> written = WrittenBeside(files, outputs);
    written.insert(written.begin(), {"the project", files.project});
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < written.size(); ++i) {
        std::vector<NamedFile> others = inputs;
        others.insert(others.end(), written.begin() + static_cast<std::ptrdiff_t>(i) + 1, written.end());
        others.push_back({"the lock", files.lock});
        for (const NamedFile& other : others) {
            if (IsSameFile(written[i].file, other.file)) {
                lines.push_back(fmt::format("{}: {} and {} would be the same file; give one of them another name.",
                                            ShownPath(written[i].file), written[i].what, other.what));
            }
        }
    }
    std::vector<NamedFile> outside = inputs;
    outside.insert(outside.end(), written.begin(), written.end());
    for (const NamedFile& file : outside) {
        if (IsInFolder(file.file, files.reportsFolder)) {
            lines.push_back(fmt::format("{}: {} lies in the reports folder, which a run empties; move it elsewhere.",
                                        ShownPath(file.file), file.what));
        }
    }
    ThrowLines(lines);
}

void RequireWritableFiles(const RunFiles& files, const std::vector<NamedFile>& outputs) {
    std::vector<NamedFile> replaced = WrittenBeside(files, outputs);
    for (const std::filesystem::path& report : FilesIn(files.reportsFolder)) {
        replaced.push_back({"a report file", report});
    }
    std::vector<std::string> lines;
    for (const NamedFile& file : replaced) {
        if (!IsWritable(file.file)) {
            lines.push_back(
                fmt::format("{}: {} cannot be written; close it elsewhere, and check that its folder exists "
                            "and your rights in it.",
                            ShownPath(file.file), file.what));
        }
    }
    ThrowLines(lines);
}

FileSizes SizesOf(const RunFiles& files) {
    FileSizes sizes;
    std::error_code error;
    for (const std::filesystem::path& report : FilesIn(files.reportsFolder)) {
        const std::uintmax_t size = std::filesystem::file_size(report, error);
        if (!error) {
            sizes.reports[Utf8FromPath(report.filename())] = size;
        }
    }
    if (files.csv) {
        sizes.csv = std::filesystem::file_size(*files.csv, error);
    }
    return sizes;
}

std::vector<std::string> MissingParts(const RunFiles& files, const FileSizes& wanted) {
    std::vector<std::string> lines;
    for (const auto& [name, size] : wanted.reports) {
        AddMissing(files.reportsFolder / PathFromUtf8(name), size, lines);
    }
    if (files.csv && wanted.csv) {
        AddMissing(*files.csv, *wanted.csv, lines);
    } else if (files.csv) {
        lines.push_back(
            fmt::format("{}: the run wrote no states; they would begin in its middle", ShownPath(*files.csv)));
    } else if (wanted.csv) {
        lines.push_back("the run wrote its states to a file (\"output.csv\" or --csv), and now none is given");
    }
    return lines;
}

void CutFiles(const RunFiles& files, const FileSizes& wanted) {
    for (const auto& [name, size] : wanted.reports) {
        Cut(files.reportsFolder / PathFromUtf8(name), size);
    }
    if (files.csv) {
        Cut(*files.csv, wanted.csv.value_or(0));
    }
}

} // namespace kinora::host
