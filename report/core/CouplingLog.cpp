#include "report/core/CouplingLog.h"

#include "report/core/LogHeader.h"
#include "report/core/ToUtf8.h"
#include "scenario/Errors.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <system_error>
#include <utility>

namespace kinora::report {
namespace {

using Kind = ColumnTarget::Kind;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Occurrences of one kind of fault, told once.
struct Faults {
    std::size_t count = 0;
    std::string first;
    void Add(const std::string& location) {
        if (count++ == 0) {
            first = location;
        }
    }
};

std::vector<std::string_view> Cells(std::string_view line) {
    std::vector<std::string_view> cells;
    for (;;) {
        const std::size_t comma = line.find(',');
        cells.push_back(line.substr(0, comma));
        if (comma == std::string_view::npos) {
            return cells;
        }
        line.remove_prefix(comma + 1);
    }
}

/// Reads the lines below a header.
class RowReader {
public:
    RowReader(const LogHeader& header, CouplingLog& log) : m_header(header), m_log(log) {
        log.bodies.resize(header.bodies.size());
        for (std::size_t body = 0; body < header.bodies.size(); ++body) {
            log.bodies[body].name = header.bodies[body];
        }
        for (const ColumnTarget& target : header.targets) {
            if (target.kind == Kind::Step) {
                log.steps.emplace();
            }
            if (target.kind == Kind::Time) {
                log.times.emplace();
            }
            if (target.kind == Kind::Body) {
                log.bodies[target.body].columns[target.column].emplace();
            }
        }
    }

    void Take(std::string_view line, std::size_t number, bool hasEnd) {
        if (line.empty()) {
            return;
        }
        std::vector<std::string_view> cells = Cells(line);
        const std::size_t width = m_header.targets.size();
        if (!hasEnd) {
            Tell(Severity::Warning, "The last line (line {}) is cut off after {} of {} values and was left out.",
                 number, cells.size(), width);
            return;
        }
        if (cells.size() > width && !TakeLastStep(cells)) {
            m_long.Add(fmt::format("line {}", number));
        } else if (cells.size() < width) {
            m_short.Add(fmt::format("line {}", number));
        } else {
            Add(cells, number);
        }
    }

    void Finish() {
        TellCounted(m_short, "{} with too few values left out, the first: {}.", "line", "lines");
        TellCounted(m_long, "{} with too many values left out, the first: {}.", "line", "lines");
        TellCounted(m_badHead, "{} without a time or step number left out, the first: {}.", "line", "lines");
        TellCounted(m_mended,
                    "{} began with the rest of a failed step; the whole step behind it was kept. The first: {}.",
                    "line", "lines");
        TellCounted(m_notFinite, "{} not a finite number and shown as a gap, the first: {}.", "value is", "values are");
        if (m_log.times) {
            CheckTimes(*m_log.times);
        }
    }

private:
    template <class... Arguments>
    void Tell(Severity severity, const char* format, Arguments&&... arguments) {
        m_log.notices.push_back({severity, fmt::format(fmt::runtime(format), arguments...)});
    }

    void TellCounted(const Faults& faults, const char* format, const char* one, const char* several) {
        if (faults.count > 0) {
            Tell(Severity::Warning, format, fmt::format("{} {}", faults.count, faults.count == 1 ? one : several),
                 faults.first);
        }
    }

    /// A failed step's line has no end, and the next step's line continues it: its step number is glued to the failed
    /// one's last value. Leaves the cells of the last, whole step.
    bool TakeLastStep(std::vector<std::string_view>& cells) {
        const std::size_t width = m_header.targets.size();
        if (m_header.targets[0].kind != Kind::Step) {
            return false;
        }
        cells.erase(cells.begin(), cells.end() - static_cast<std::ptrdiff_t>(width));
        // Each failed step has counted too.
        const std::string_view glued = cells[0];
        constexpr int mostFailures = 1000;
        for (int ahead = 2; ahead <= mostFailures; ++ahead) {
            const std::string step = fmt::format("{:.0f}", m_lastStep + ahead);
            if (glued.size() > step.size() && glued.substr(glued.size() - step.size()) == step) {
                cells[0] = glued.substr(glued.size() - step.size());
                m_isMended = true;
                return true;
            }
        }
        return false;
    }

    void Add(const std::vector<std::string_view>& cells, std::size_t number) {
        const bool isMended = m_isMended;
        m_isMended = false;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const Kind kind = m_header.targets[i].kind;
            if ((kind == Kind::Step || kind == Kind::Time) && std::isnan(ParseNumber(cells[i]))) {
                m_badHead.Add(fmt::format("line {}", number));
                return;
            }
        }
        if (isMended) {
            m_mended.Add(fmt::format("line {}", number));
        }
        for (std::size_t i = 0; i < cells.size(); ++i) {
            Store(m_header.targets[i], ParseNumber(cells[i]), cells[i], number);
        }
        ++m_log.rows;
    }

    void Store(const ColumnTarget& target, double value, std::string_view text, std::size_t number) {
        switch (target.kind) {
        case Kind::Step:
            m_lastStep = value;
            m_log.steps->push_back(value);
            break;
        case Kind::Time:
            m_log.times->push_back(value);
            break;
        case Kind::Body:
            if (std::isnan(value)) {
                m_notFinite.Add(fmt::format("{} in line {}, \"{}\"",
                                            ColumnLabel(m_header.bodies[target.body], target.column), number, text));
            }
            m_log.bodies[target.body].columns[target.column]->push_back(value);
            break;
        case Kind::Unknown:
            break;
        }
    }

    void CheckTimes(const Column& times) {
        std::size_t repeated = 0;
        for (std::size_t row = 1; row < times.size(); ++row) {
            if (times[row] < times[row - 1]) {
                Tell(Severity::Warning,
                     "Time goes back from {:g} s to {:g} s: the log holds more than one run. The charts are drawn over "
                     "steps or rows.",
                     times[row - 1], times[row]);
                return;
            }
            repeated += times[row] == times[row - 1] ? 1 : 0;
        }
        if (repeated > 0) {
            Tell(Severity::Info,
                 "{} steps have the time of the step before: the log keeps six digits. Chart over the step to tell "
                 "them apart.",
                 repeated);
        }
    }

    const LogHeader& m_header;
    CouplingLog& m_log;
    double m_lastStep = -1.0;
    bool m_isMended = false;
    Faults m_short, m_long, m_badHead, m_mended, m_notFinite;
};

/// The columns that a body should have and has not.
void TellMissing(const LogHeader& header, CouplingLog& log) {
    for (const LogBody& body : log.bodies) {
        std::string missing;
        for (int column = 0; column < bodyColumnCount; ++column) {
            if (!body.columns[static_cast<std::size_t>(column)]) {
                missing += (missing.empty() ? "" : ", ") + ColumnLabel(body.name, static_cast<BodyColumn>(column));
            }
        }
        if (!missing.empty()) {
            log.notices.push_back(
                {Severity::Warning, fmt::format("Body \"{}\" lacks these columns: {}.", body.name, missing)});
        }
    }
    for (const std::string& label : header.unknown) {
        log.notices.push_back(
            {Severity::Warning, fmt::format("The column \"{}\" is unknown and was left out.", label)});
    }
    if (!log.steps) {
        log.notices.push_back({Severity::Warning, "The log has no column \"Step\": rows are counted instead."});
    }
    if (!log.times) {
        log.notices.push_back({Severity::Warning, "The log has no column \"SimTime\": there are no times to show."});
    }
}

/// Two columns for one quantity would mix in one.
void CheckDoubles(const LogHeader& header, const std::string& fileName) {
    std::vector<std::array<bool, bodyColumnCount>> seen(header.bodies.size());
    bool hasStep = false;
    bool hasTime = false;
    for (const ColumnTarget& target : header.targets) {
        bool fresh = true;
        if (target.kind == Kind::Step) {
            fresh = !std::exchange(hasStep, true);
        } else if (target.kind == Kind::Time) {
            fresh = !std::exchange(hasTime, true);
        } else if (target.kind == Kind::Body) {
            fresh = !std::exchange(seen[target.body][target.column], true);
        }
        if (!fresh) {
            throw scenario::InputError(
                fmt::format("{}: the header names a column twice; this is no coupling log.", fileName));
        }
    }
}

/// Other tables have neither of the first two columns, nor twelve that belong together.
bool IsLog(const LogHeader& header) {
    std::vector<int> columns(header.bodies.size());
    for (const ColumnTarget& target : header.targets) {
        const bool isHead = target.kind == Kind::Step || target.kind == Kind::Time;
        if (isHead || (target.kind == Kind::Body && ++columns[target.body] == bodyColumnCount)) {
            return true;
        }
    }
    return false;
}

std::string_view WithoutReturn(std::string_view line) {
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

} // namespace

double ParseNumber(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && !text.empty();
    return isNumber && std::isfinite(value) ? value : notANumber;
}

CouplingLog ParseCouplingLog(const std::string& text, const std::string& fileName) {
    CouplingLog log;
    if (text.empty()) {
        log.notices.push_back({Severity::Error, "The log is empty: the run ended before its first step was written."});
        return log;
    }
    const std::string source = ToUtf8(text.rfind("\xEF\xBB\xBF", 0) == 0 ? text.substr(3) : text);
    const std::size_t headerEnd = std::min(source.find('\n'), source.size());
    const LogHeader header = ParseLogHeader(WithoutReturn(std::string_view(source).substr(0, headerEnd)));
    if (!IsLog(header) || source.find('\0') != std::string::npos) {
        throw scenario::InputError(
            fmt::format("{}: this is no coupling log: its first line does not begin with \"Step,SimTime\".", fileName));
    }
    CheckDoubles(header, fileName);
    RowReader reader(header, log);
    if (headerEnd == source.size()) {
        log.notices.push_back({Severity::Warning, "The log ends in its first line, which may be incomplete."});
    }
    TellMissing(header, log);
    std::size_t number = 1;
    for (std::size_t begin = headerEnd + 1; begin < source.size();) {
        const std::size_t end = std::min(source.find('\n', begin), source.size());
        reader.Take(WithoutReturn(std::string_view(source).substr(begin, end - begin)), ++number, end < source.size());
        begin = end + 1;
    }
    reader.Finish();
    if (log.rows == 0) {
        log.notices.push_back({Severity::Error, "The log has no complete step."});
    }
    return log;
}

} // namespace kinora::report
