#include "host/core/StatesTable.h"

#include "report/core/CouplingLog.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <sstream>

namespace kinora::host {

using namespace scenario;

std::pair<std::string, std::string> TakeHeadApart(const std::string& head) {
    const std::size_t at = head.rfind(" [");
    if (at == std::string::npos || head.back() != ']') {
        return {head, {}};
    }
    return {head.substr(0, at), head.substr(at + 2, head.size() - at - 3)};
}

std::optional<std::size_t> FindState(const std::vector<std::string>& heads, const std::string& column) {
    const auto found = std::find_if(heads.begin(), heads.end(), [&](const std::string& head) {
        return head == column || TakeHeadApart(head).first == column;
    });
    return found == heads.end() ? std::nullopt : std::optional<std::size_t>(found - heads.begin());
}

std::vector<std::string> StateCells(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ',');) {
        cells.push_back(cell);
    }
    return cells;
}

Series ReadState(const std::filesystem::path& file, const std::string& column) {
    std::istringstream text(ReadFile(file));
    std::string line;
    std::getline(text, line);
    const auto at = FindState(StateCells(line), column);
    if (!at) {
        throw RunError(fmt::format("{}: the column \"{}\" is gone; was the file changed?", Utf8FromPath(file), column));
    }
    Series series;
    while (std::getline(text, line)) {
        const std::vector<std::string> cells = StateCells(line);
        // The last cells of a line may be empty.
        series.times.push_back(cells.size() > 1 ? report::ParseNumber(cells[1]) : std::nan(""));
        series.values.push_back(cells.size() > *at ? report::ParseNumber(cells[*at]) : std::nan(""));
    }
    return series;
}

double ValueAt(const Series& series, double time) {
    const auto after = std::lower_bound(series.times.begin(), series.times.end(), time);
    if (after == series.times.end()) {
        return series.values.back();
    }
    const auto i = static_cast<std::size_t>(after - series.times.begin());
    if (i == 0 || series.times[i] == time) {
        return series.values[i];
    }
    const double share = (time - series.times[i - 1]) / (series.times[i] - series.times[i - 1]);
    return series.values[i - 1] + share * (series.values[i] - series.values[i - 1]);
}

void RequireStatesFile(Scenario& scenario) {
    if (!scenario.csvFile) {
        std::filesystem::path file = scenario.projectFile;
        scenario.csvFile = file.replace_extension(".states.csv");
    }
}

} // namespace kinora::host
