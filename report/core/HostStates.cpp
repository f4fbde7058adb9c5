#include "report/core/HostStates.h"

#include "report/core/ToUtf8.h"
#include "scenario/EnergyBooks.h"
#include "scenario/Errors.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <utility>

namespace kinora::report {
namespace {

constexpr std::array<std::string_view, 9> bodyQuantities = {"X",       "Y",        "Z",        "Force_x", "Force_y",
                                                            "Force_z", "Torque_x", "Torque_y", "Torque_z"};

/// Lines and cells of a table of numbers under one line of heads; NaN for a cell without a number.
struct Table {
    std::vector<std::string> heads;
    std::vector<Column> rows;
};

template <class Take>
void ForEachPart(std::string_view text, char separator, Take take) {
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        take(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

Table ReadTable(std::string_view text) {
    Table table;
    ForEachPart(text, '\n', [&table](std::string_view line) {
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (table.heads.empty()) {
            ForEachPart(line, ',', [&table](std::string_view cell) { table.heads.emplace_back(cell); });
            return;
        }
        Column row;
        ForEachPart(line, ',', [&row](std::string_view cell) { row.push_back(ParseNumber(cell)); });
        // A line that was cut off tells nothing reliable.
        if (row.size() == table.heads.size()) {
            table.rows.push_back(std::move(row));
        }
    });
    return table;
}

/// "joint.Quantity [unit]" taken apart.
bool ParseHead(const std::string& head, StateSeries& series) {
    const std::size_t bracket = head.rfind(" [");
    const std::size_t dot = head.rfind('.', bracket);
    if (bracket == std::string::npos || dot == std::string::npos || dot > bracket || head.back() != ']') {
        return false;
    }
    series.group = head.substr(0, dot);
    series.name = head.substr(dot + 1, bracket - dot - 1);
    series.unit = head.substr(bracket + 2, head.size() - bracket - 3);
    return std::find(bodyQuantities.begin(), bodyQuantities.end(), series.name) == bodyQuantities.end();
}

/// For every row of the log the row of the table with its time, or -1.
std::vector<std::ptrdiff_t> MatchTimes(const Column& times, const Table& table) {
    // Half a unit of the sixth digit, and the rounding of the comparison.
    constexpr double tolerance = 5.1e-6;
    std::vector<std::ptrdiff_t> matches(times.size(), -1);
    std::size_t next = 0;
    for (std::size_t row = 0; row < times.size(); ++row) {
        const double slack = tolerance * std::fabs(times[row]);
        while (next < table.rows.size() && table.rows[next][1] < times[row] - slack) {
            ++next;
        }
        if (next < table.rows.size() && std::fabs(table.rows[next][1] - times[row]) <= slack) {
            matches[row] = static_cast<std::ptrdiff_t>(next++);
        }
    }
    return matches;
}

/// Columns of the table and the accounts that stand in them.
using AccountColumns = std::vector<std::pair<std::size_t, double scenario::EnergyRow::*>>;

/// Where a joint's accounts stand; nowhere when the table lacks one of them.
AccountColumns FindAccounts(const Table& table, const std::string& joint) {
    const std::array<std::pair<const char*, double scenario::EnergyRow::*>, 7> accounts = {
        {{"Kinetic", &scenario::EnergyRow::kinetic},
         {"Potential", &scenario::EnergyRow::potential},
         {"Field work", &scenario::EnergyRow::fieldWork},
         {"Load work", &scenario::EnergyRow::loadWork},
         {"Element work", &scenario::EnergyRow::elementWork},
         {"Dissipated", &scenario::EnergyRow::dissipated},
         {"Imbalance", &scenario::EnergyRow::imbalance}}};
    AccountColumns columns;
    for (const auto& [account, member] : accounts) {
        const auto found = std::find(table.heads.begin(), table.heads.end(), fmt::format("{}.{} [J]", joint, account));
        if (found != table.heads.end()) {
            columns.emplace_back(static_cast<std::size_t>(found - table.heads.begin()), member);
        } else if (member != &scenario::EnergyRow::elementWork) { // which runs without springs may lack
            return {};
        }
    }
    return columns;
}

/// A joint's books over all rows that tell its accounts. A prescribed joint keeps none: its cells are empty.
scenario::EnergyBooks KeepBooks(const Table& table, const AccountColumns& columns) {
    scenario::EnergyBooks books;
    for (const Column& row : table.rows) {
        scenario::EnergyRow energies;
        energies.time = row[1];
        bool isTold = !columns.empty();
        for (const auto& [column, account] : columns) {
            energies.*account = row[column];
            isTold = isTold && !std::isnan(row[column]);
        }
        if (isTold) {
            books.Add(energies);
        }
    }
    return books;
}

/// The warnings of the joints whose energy books do not close.
std::vector<Notice> CheckEnergies(const Table& table) {
    std::vector<Notice> notices;
    for (const std::string& head : table.heads) {
        StateSeries series;
        if (!ParseHead(head, series) || series.name != "Imbalance") {
            continue;
        }
        const scenario::EnergyBooks books = KeepBooks(table, FindAccounts(table, series.group));
        if (!books.Close()) {
            notices.push_back({Severity::Warning, books.Warning(series.group)});
        }
    }
    return notices;
}

Column Pick(const Table& table, std::size_t column, const std::vector<std::ptrdiff_t>& matches) {
    Column values;
    for (const std::ptrdiff_t match : matches) {
        values.push_back(match < 0 ? std::numeric_limits<double>::quiet_NaN()
                                   : table.rows[static_cast<std::size_t>(match)][column]);
    }
    return values;
}

} // namespace

HostStates ParseHostStates(const std::string& text, const std::string& fileName, const CouplingLog& log) {
    const Table table = ReadTable(ToUtf8(text));
    if (table.heads.size() < 2 || table.heads[0] != "Step" || table.heads[1] != "Time [s]") {
        throw scenario::InputError(fmt::format(
            "{}: this is not the state file of a run: its first line does not begin with \"Step,Time [s]\".",
            fileName));
    }
    HostStates states;
    states.notices = CheckEnergies(table);
    if (!log.times) {
        states.notices.push_back(
            {Severity::Warning, "The host's states are left out: the log has no times to match them with."});
        return states;
    }
    const std::vector<std::ptrdiff_t> matches = MatchTimes(*log.times, table);
    const auto missing = std::count(matches.begin(), matches.end(), -1);
    if (missing == 0 && log.rows > 0) {
        states.times = Pick(table, 1, matches);
    } else if (log.rows > 0) {
        states.notices.push_back(
            {Severity::Warning,
             fmt::format("{} of {} steps of the log are not in the host's states, {}.", missing, log.rows, fileName)});
    }
    for (std::size_t column = 2; column < table.heads.size(); ++column) {
        StateSeries series;
        if (!ParseHead(table.heads[column], series)) {
            continue;
        }
        series.values = Pick(table, column, matches);
        // What means nothing for a joint has empty cells.
        if (!std::all_of(series.values.begin(), series.values.end(), [](double value) { return std::isnan(value); })) {
            states.series.push_back(std::move(series));
        }
    }
    return states;
}

} // namespace kinora::report
