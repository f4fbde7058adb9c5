#include "host/core/Comparison.h"

#include "host/core/RunFiles.h"
#include "host/core/StatesCsv.h"
#include "host/core/StatesTable.h"
#include "report/core/CouplingLog.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <sstream>

namespace kinora::host {

using namespace scenario;

namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// Reads the file line by line.
class ExpectedReader {
public:
    ExpectedReader(const std::filesystem::path& file, const std::vector<std::string>& stateHeads)
        : m_stateHeads(stateHeads), m_text(ReadFile(file)) {
        m_expected.file = file;
    }

    ExpectedStates Read() {
        ReadHeads();
        while (NextLine()) {
            if (!m_line.empty()) {
                ReadRow();
            }
        }
        if (m_expected.times.empty()) {
            Refuse("no line of values follows the heads.");
        }
        for (const ExpectedStates::Quantity& quantity : m_expected.quantities) {
            RequireSize(quantity);
        }
        return std::move(m_expected);
    }

private:
    [[noreturn]] void Refuse(const std::string& problem) const {
        throw InputError(fmt::format("{}:{}: {}", Utf8FromPath(m_expected.file), m_lineNumber, problem));
    }

    bool NextLine() {
        ++m_lineNumber;
        if (!std::getline(m_text, m_line)) {
            return false;
        }
        if (!m_line.empty() && m_line.back() == '\r') {
            m_line.pop_back();
        }
        return true;
    }

    void ReadHeads() {
        NextLine();
        constexpr std::string_view mark = "\xEF\xBB\xBF"; // of texts that are UTF-8, as spreadsheets write it
        const std::vector<std::string> cells =
            StateCells(m_line.compare(0, mark.size(), mark) == 0 ? m_line.substr(mark.size()) : m_line);
        if (cells.size() < 2 || TakeHeadApart(cells[0]).first != "Time") {
            Refuse("the first line must be \"Time [s]\" and then the states to compare, for example "
                   "\"Time [s],upper.Force_z [N]\".");
        }
        for (std::size_t i = 1; i < cells.size(); ++i) {
            m_expected.quantities.push_back({StateHead(cells[i]), {}});
        }
    }

    /// The head of the states that a cell means.
    std::string StateHead(const std::string& cell) const {
        const auto [name, unit] = TakeHeadApart(cell);
        const auto at = FindState(m_stateHeads, name);
        if (!at) {
            std::vector<std::string> names(m_stateHeads.size());
            std::transform(m_stateHeads.begin(), m_stateHeads.end(), names.begin(),
                           [](const std::string& head) { return TakeHeadApart(head).first; });
            Refuse(fmt::format("the states of this scenario have no column \"{}\".{}", name, Suggestion(name, names)));
        }
        const std::string itsUnit = TakeHeadApart(m_stateHeads[*at]).second;
        if (!unit.empty() && unit != itsUnit) {
            Refuse(fmt::format("\"{}\" is compared in {}, not in {}.", name, itsUnit, unit));
        }
        return m_stateHeads[*at];
    }

    double Number(const std::string& cell) const {
        const double number = report::ParseNumber(cell);
        if (!cell.empty() && !std::isfinite(number)) {
            Refuse(fmt::format("\"{}\" is no number.", cell));
        }
        return number;
    }

    void ReadRow() {
        const std::vector<std::string> cells = StateCells(m_line);
        if (cells.size() > m_expected.quantities.size() + 1) {
            Refuse(fmt::format("{} cells, but the first line has {}.", cells.size(), m_expected.quantities.size() + 1));
        }
        const double time = Number(cells[0]);
        if (std::isnan(time) || (!m_expected.times.empty() && time <= m_expected.times.back())) {
            Refuse("every line needs a time, later than that of the line before.");
        }
        m_expected.times.push_back(time);
        for (std::size_t i = 0; i < m_expected.quantities.size(); ++i) {
            m_expected.quantities[i].values.push_back(i + 1 < cells.size() ? Number(cells[i + 1]) : unknown);
        }
    }

    /// Deviations are shares of it.
    void RequireSize(const ExpectedStates::Quantity& quantity) const {
        const auto hasSize = [](double value) { return !std::isnan(value) && value != 0.0; };
        if (std::none_of(quantity.values.begin(), quantity.values.end(), hasSize)) {
            throw InputError(fmt::format("{}: \"{}\" is zero or empty throughout, and deviations are shares of the "
                                         "largest value: leave the column out.",
                                         Utf8FromPath(m_expected.file), quantity.head));
        }
    }

    const std::vector<std::string>& m_stateHeads;
    std::istringstream m_text;
    std::string m_line;
    int m_lineNumber = 0;
    ExpectedStates m_expected;
};

/// Rounding of the times may leave the last one beyond the run's end by this share of a step.
constexpr double timeTolerance = 1e-6;

void RequireReached(const Scenario& scenario, const Series& series, const ExpectedStates& expected) {
    const double end = series.times.empty() ? 0.0 : series.times.back();
    if (series.times.empty() || expected.times.back() > end + timeTolerance * scenario.stepping.stepSeconds) {
        throw RunError(fmt::format("{} expects states up to {} s, the run ends at {} s: prolong \"solver.end\" or "
                                   "shorten the file.",
                                   Utf8FromPath(expected.file), expected.times.back(), end));
    }
}

ComparedQuantity CompareOne(const Series& series, const ExpectedStates& expected,
                            const ExpectedStates::Quantity& quantity) {
    double largest = 0.0;
    for (const double value : quantity.values) {
        largest = std::max(largest, std::isnan(value) ? 0.0 : std::fabs(value));
    }
    ComparedQuantity compared;
    compared.head = quantity.head;
    for (std::size_t i = 0; i < expected.times.size(); ++i) {
        if (std::isnan(quantity.values[i])) {
            continue;
        }
        const double actual = ValueAt(series, expected.times[i]);
        const double difference = actual - quantity.values[i];
        compared.times.push_back(expected.times[i]);
        compared.actual.push_back(actual);
        compared.expected.push_back(quantity.values[i]);
        compared.deviations.push_back(difference == 0.0 ? 0.0 : 100.0 * difference / largest);
    }
    return compared;
}

} // namespace

double ComparedQuantity::Worst() const {
    double worst = 0.0;
    for (const double deviation : deviations) {
        worst = std::max(worst, std::isnan(deviation) ? std::numeric_limits<double>::infinity() : std::fabs(deviation));
    }
    return worst;
}

ExpectedStates ReadExpected(const std::filesystem::path& file, Scenario& scenario) {
    const std::vector<std::string> heads = StateHeads(scenario);
    ExpectedStates expected = ExpectedReader(file, heads).Read();
    RequireStatesFile(scenario);
    return expected;
}

std::vector<ComparedQuantity> Compare(const Scenario& scenario, const ExpectedStates& expected) {
    std::vector<ComparedQuantity> compared;
    for (const ExpectedStates::Quantity& quantity : expected.quantities) {
        const Series series = ReadState(*FilesOf(scenario).csv, quantity.head);
        RequireReached(scenario, series, expected);
        compared.push_back(CompareOne(series, expected, quantity));
    }
    return compared;
}

std::string ComparisonTable(const std::vector<ComparedQuantity>& quantities, double tolerancePercent,
                            std::size_t maxRows) {
    std::string table;
    for (const ComparedQuantity& quantity : quantities) {
        const std::size_t rows = quantity.times.size();
        const std::size_t stride = std::max<std::size_t>(1, (rows + maxRows - 1) / maxRows);
        table += fmt::format("{}\n{:>10}  {:>14} {:>14}  {:>12}\n", quantity.head, "time s", "simulated", "expected",
                             "deviation %");
        for (std::size_t i = 0; i < rows; ++i) {
            if (i % stride == 0 || i + 1 == rows) {
                table += fmt::format("{:>10.6g}  {:>14.6g} {:>14.6g}  {:>12.2g}\n", quantity.times[i],
                                     quantity.actual[i], quantity.expected[i], quantity.deviations[i]);
            }
        }
        table += fmt::format("largest deviation {:.2g} % of the largest value, allowed {:g} %\n", quantity.Worst(),
                             tolerancePercent);
    }
    return table;
}

} // namespace kinora::host
