#include "trace/core/Show.h"

#include "trace/core/ErrorText.h"
#include "trace/core/ObjectPath.h"
#include "trace/core/ValueText.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace kinora::trace {
namespace {

constexpr const char* plain = "\033[0m";
constexpr const char* heading = "\033[1;36m";
constexpr const char* dim = "\033[2m";
constexpr const char* red = "\033[31m";
constexpr const char* yellow = "\033[33m";
/// From here on a call stands out in colour.
constexpr double slowMicroseconds = 1e5;

std::string Lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return text;
}

std::string DurationText(double microseconds) {
    if (microseconds < 1e3) {
        return fmt::format("{:.0f} us", microseconds);
    }
    return microseconds < 1e6 ? fmt::format("{:.2f} ms", microseconds / 1e3)
                              : fmt::format("{:.3f} s", microseconds / 1e6);
}

std::string CallText(const Record& record, const TextLimits& limits) {
    switch (record.kind) {
    case Record::Kind::Create:
        return "create " + record.method;
    case Record::Kind::Lookup:
        return "look up " + record.method;
    default:
        return record.method + "(" + ArgumentsText(record.arguments, limits) + ")";
    }
}

class Printer {
public:
    Printer(const ShowOptions& options, std::ostream& out)
        : m_options(options), m_limits(options.isFull ? TextLimits::None() : TextLimits{}), m_out(out),
          m_wanted(Lowered(options.containing)) {}

    bool Print(const Record& record) {
        const std::string call = CallText(record, m_limits);
        const std::string outcome = OutcomeText(record, m_options.isFull);
        if (!IsWanted(record)) {
            return false;
        }
        PrintHeading(record);
        const std::string margin(static_cast<std::size_t>(2 * PathDepth(record.object) + 2), ' ');
        m_out << Coloured(dim, fmt::format("{:>7} {:>10} ", record.sequence, DurationOf(record))) << margin << call
              << Coloured(ColourOf(record), outcome) << '\n';
        return true;
    }

private:
    bool IsWanted(const Record& record) const {
        const bool isBad = record.HasFailed() || record.isOpen;
        if ((record.kind == Record::Kind::Lookup || m_options.onlyFailed) && !isBad) {
            return false;
        }
        if (m_options.slowMilliseconds >= 0.0 && !(record.microseconds >= 1e3 * m_options.slowMilliseconds)) {
            return false;
        }
        return m_wanted.empty() || Lowered(Everything(record)).find(m_wanted) != std::string::npos;
    }

    static std::string Everything(const Record& record) {
        return record.object + "." + CallText(record, TextLimits::None()) + OutcomeText(record, true);
    }

    void PrintHeading(const Record& record) {
        if (record.object == m_object && record.objectId == m_objectId) {
            return;
        }
        m_object = record.object;
        m_objectId = record.objectId;
        if (!m_object.empty()) {
            const std::string margin(static_cast<std::size_t>(19 + 2 * PathDepth(m_object)), ' ');
            m_out << margin << Coloured(heading, m_object) << '\n';
        }
    }

    static std::string DurationOf(const Record& record) {
        return record.isOpen ? "-" : DurationText(record.microseconds);
    }

    static const char* ColourOf(const Record& record) {
        if (record.HasFailed() || record.isOpen) {
            return red;
        }
        return record.microseconds >= slowMicroseconds ? yellow : nullptr;
    }

    std::string Coloured(const char* colour, const std::string& text) const {
        return m_options.isColoured && colour != nullptr && !text.empty() ? colour + text + plain : text;
    }

    const ShowOptions& m_options;
    const TextLimits m_limits;
    std::ostream& m_out;
    const std::string m_wanted;
    std::string m_object;
    std::uint64_t m_objectId = 0;
};

} // namespace

std::string OutcomeText(const Record& record, bool isFull) {
    if (record.isOpen) {
        return "  never came back";
    }
    const TextLimits limits = isFull ? TextLimits::None() : TextLimits{};
    std::string text;
    if (record.HasFailed()) {
        text = fmt::format("  failed, {} {}", HResultNumber(record.code), record.codeText);
        for (const std::string& words : {record.scriptError, record.description}) {
            text += words.empty() ? "" : "; " + words;
        }
        text += record.argumentError >= 0 ? fmt::format("; argument {}", record.argumentError + 1) : "";
    } else if (!record.result.is_null() && record.result.value("vt", "") != "EMPTY") {
        text = " = " + ValueText(record.result, limits);
    }
    return text + (record.after.is_null() ? "" : "; after the call: " + ArgumentsText(record.after, limits));
}

std::size_t Show(const Session& session, const ShowOptions& options, std::ostream& out) {
    Printer printer(options, out);
    return static_cast<std::size_t>(std::count_if(session.records.begin(), session.records.end(),
                                                  [&](const Record& record) { return printer.Print(record); }));
}

} // namespace kinora::trace
