#include "host/core/RunResults.h"

#include "host/core/RunFiles.h"
#include "host/core/StatesCsv.h"
#include "host/core/StatesTable.h"
#include "report/core/LogHeader.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <limits>

namespace kinora::host {

using namespace scenario;

namespace {

using Column = report::Column;

/// A column of the coupling log.
struct LogColumn {
    std::string label;
    std::string unit;
    /// Index of the body and its column; without a body the step or the time.
    std::optional<std::size_t> body;
    report::BodyColumn column = report::X;
};

const char* UnitOf(report::BodyColumn column) {
    return column < report::Phi ? "m" : column < report::ForceX ? "rad" : column < report::TorqueX ? "N" : "mN m";
}

std::vector<LogColumn> LogColumnsOf(const Scenario& scenario) {
    std::vector<LogColumn> columns = {{"Step", {}, {}}, {"SimTime", "s", {}}};
    for (std::size_t body = 0; body < scenario.bodies.size(); ++body) {
        for (int i = 0; i < report::bodyColumnCount; ++i) {
            const auto column = static_cast<report::BodyColumn>(i);
            columns.push_back({report::ColumnLabel(scenario.bodies[body].name, column), UnitOf(column), body, column});
        }
    }
    return columns;
}

/// One that is no column of the states.
std::optional<LogColumn> FindInLog(const Scenario& scenario, const std::string& label) {
    const std::vector<LogColumn> columns = LogColumnsOf(scenario);
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const LogColumn& column) { return column.label == label; });
    return found == columns.end() ? std::nullopt : std::optional(*found);
}

std::string MissingText(const Scenario& scenario, const std::vector<std::string>& heads, const WantedResult& result) {
    std::vector<std::string> names(heads.size());
    std::transform(heads.begin(), heads.end(), names.begin(),
                   [](const std::string& head) { return TakeHeadApart(head).first; });
    for (const LogColumn& column : LogColumnsOf(scenario)) {
        names.push_back(column.label);
    }
    return fmt::format("results: \"{}\": neither the states nor the coupling log have a column \"{}\".{}", result.name,
                       result.column, Suggestion(result.column, names));
}

/// Null when the log has no such column.
const Column* ColumnOf(const report::CouplingLog& log, const LogColumn& column, const Scenario& scenario) {
    const auto pointer = [](const std::optional<Column>& values) { return values ? &*values : nullptr; };
    if (!column.body) {
        return pointer(column.label == "Step" ? log.steps : log.times);
    }
    const std::string& name = scenario.bodies[*column.body].name;
    const auto body = std::find_if(log.bodies.begin(), log.bodies.end(),
                                   [&](const report::LogBody& candidate) { return candidate.name == name; });
    return body == log.bodies.end() ? nullptr : pointer(body->columns[column.column]);
}

Series ReadLog(const Scenario& scenario, const LogColumn& column) {
    const std::filesystem::path file = FilesOf(scenario).couplingLog;
    const report::CouplingLog log = report::ParseCouplingLog(ReadFile(file), Utf8FromPath(file));
    const Column* values = ColumnOf(log, column, scenario);
    if (!values || !log.times) {
        throw RunError(
            fmt::format("{}: the column \"{}\" is gone; was the file changed?", Utf8FromPath(file), column.label));
    }
    return {*log.times, *values};
}

/// NaN where there is no number.
double ValueOf(const Series& series, const WantedResult& result) {
    Column numbers;
    std::copy_if(series.values.begin(), series.values.end(), std::back_inserter(numbers),
                 [](double value) { return std::isfinite(value); });
    if (numbers.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    switch (result.take) {
    case Take::Last:
        return series.values.back();
    case Take::Least:
        return *std::min_element(numbers.begin(), numbers.end());
    case Take::Greatest:
        return *std::max_element(numbers.begin(), numbers.end());
    case Take::Mean: {
        double sum = 0.0;
        for (const double number : numbers) {
            sum += number;
        }
        return sum / static_cast<double>(numbers.size());
    }
    case Take::At:
        return ValueAt(series, result.timeSeconds);
    }
    return std::numeric_limits<double>::quiet_NaN();
}

} // namespace

void PrepareResults(Scenario& scenario) {
    const std::vector<std::string> heads = StateHeads(scenario);
    std::vector<std::string> lines;
    bool needsStates = false;
    for (const WantedResult& result : scenario.results) {
        if (FindState(heads, result.column)) {
            needsStates = true;
        } else if (!FindInLog(scenario, result.column)) {
            lines.push_back(MissingText(scenario, heads, result));
        }
    }
    if (!lines.empty()) {
        throw InputError(fmt::format("{}", fmt::join(lines, "\n")));
    }
    if (needsStates) {
        RequireStatesFile(scenario);
    }
}

std::vector<RunResult> ResultsToCome(const Scenario& scenario) {
    const std::vector<std::string> heads = StateHeads(scenario);
    std::vector<RunResult> results;
    for (const WantedResult& wanted : scenario.results) {
        const auto state = FindState(heads, wanted.column);
        const auto log = FindInLog(scenario, wanted.column);
        results.push_back({wanted.name,
                           {},
                           state ? TakeHeadApart(heads[*state]).second
                           : log ? log->unit
                                 : std::string()});
    }
    return results;
}

std::vector<RunResult> TakeResults(const Scenario& scenario) {
    const std::vector<std::string> heads = StateHeads(scenario);
    std::vector<RunResult> results = ResultsToCome(scenario);
    for (std::size_t i = 0; i < results.size(); ++i) {
        const WantedResult& wanted = scenario.results[i];
        const Series series = FindState(heads, wanted.column)
                                  ? ReadState(*FilesOf(scenario).csv, wanted.column)
                                  : ReadLog(scenario, FindInLog(scenario, wanted.column).value());
        const double value = ValueOf(series, wanted);
        if (std::isfinite(value)) {
            results[i].value = value;
        }
    }
    return results;
}

} // namespace kinora::host
