#pragma once

#include "report/core/Notice.h"
#include "report/core/Orientation.h"
#include "scenario/Scenario.h"

#include <filesystem>
#include <optional>

namespace kinora::report {

/// What a report is made of.
struct ReportSources {
    std::filesystem::path log;
    /// Null without one. The geometry file that it names is read too.
    const scenario::Scenario* scenario = nullptr;
    std::filesystem::path scenarioFile;
    /// The host's own states; none when absent.
    std::optional<std::filesystem::path> states;
    /// What the log's angles mean. When absent: as the host's state file says (FindOrientation), without one exact.
    std::optional<Orientation> orientation;
    /// Warnings of the run itself, shown first. What the sources tell in the same words is not shown again.
    std::vector<Notice> notices;
    /// Name and version of the program that writes the page.
    std::string generator;
};

/// What was written.
struct WrittenReport {
    std::size_t bytes = 0;
    std::size_t rows = 0;
    std::size_t bodies = 0;
    /// Everything that the page tells at its head, the run's own warnings included.
    std::vector<Notice> notices;
};

/// Writes the page of a run: the template with the run's data put in. A page that exists is replaced; never is half a
/// page left in its place.
/// @param templateFile  as FindTemplate gives it
/// @throws scenario::InputError  a source or the template cannot be used
/// @throws scenario::RunError    the page cannot be written
WrittenReport WriteReport(const ReportSources& sources, const std::filesystem::path& templateFile,
                          const std::filesystem::path& pageFile);

/// Where the page of a log goes by itself: "<project>.report.html" beside the project. (The reports folder is emptied
/// by the next run.)
std::filesystem::path DefaultPageFile(const std::filesystem::path& log);

/// The state file of a scenario's run, when it lies where the log's project is.
std::optional<std::filesystem::path> FindStates(const std::filesystem::path& log, const scenario::Scenario& scenario);

/// The template that is installed with the running program: ../share/kinora/report.html from the program's folder.
/// @throws scenario::InputError  it is not there
std::filesystem::path FindTemplate();

/// The template with data in its place.
/// @param page  must hold the marker exactly once
/// @throws scenario::InputError  it does not
std::string FillTemplate(std::string page, const std::string& data, const std::string& templateName);

} // namespace kinora::report
