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
constexpr const char* bold = "\033[1m";
constexpr const char* green = "\033[32m";
constexpr const char* red = "\033[1;31m";
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

constexpr unsigned propertyPuts = propertyPut | propertyPutReference;

/// Arguments in brackets, named ones with their numbers. The last ones may be left out.
std::string ArgumentList(const Record& record, std::size_t leftOut, const TextLimits& limits) {
    const std::size_t unnamed = record.arguments.size() - record.named.size();
    std::string text;
    for (std::size_t i = 0; i + leftOut < record.arguments.size(); ++i) {
        text += i == 0 ? "" : ", ";
        text += i < unnamed ? "" : fmt::format("#{}:=", record.named[i - unnamed].dump());
        text += ValueText(record.arguments[i], limits);
    }
    return "(" + text + ")";
}

/// An object that a call gave, by what is new in its path.
std::string ResultText(const Record& record, const TextLimits& limits) {
    const std::string text = ValueText(record.result, limits);
    const bool isBelow =
        record.result.contains("id") && !record.object.empty() && text.rfind(record.object + ".", 0) == 0;
    return isBelow ? text.substr(record.object.size()) : text;
}

class Printer {
public:
    Printer(const ShowOptions& options, std::ostream& out)
        : m_options(options), m_out(out), m_wanted(Lowered(options.containing)) {}

    bool Print(const Record& record) {
        if (!IsWanted(record)) {
            return false;
        }
        PrintHeading(record);
        const std::string call = CallText(record, m_options.isFull);
        const std::size_t name = record.kind == Record::Kind::Call ? record.method.size() : call.size();
        const bool isSlow = record.microseconds >= slowMicroseconds;
        const bool isBad = record.HasFailed() || record.isOpen;
        m_out << Coloured(dim, fmt::format("{:>7}", record.sequence))
              << Coloured(isSlow ? yellow : dim, fmt::format(" {:>10} ", DurationOf(record)))
              << std::string(static_cast<std::size_t>(2 * PathDepth(record.object) + 2), ' ')
              << Coloured(bold, call.substr(0, name)) << call.substr(name)
              << Coloured(isBad ? red : green, OutcomeText(record, m_options.isFull)) << '\n';
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
        return record.object + "." + CallText(record, true) + OutcomeText(record, true);
    }

    void PrintHeading(const Record& record) {
        if (record.object == m_object) {
            return;
        }
        m_object = record.object;
        if (!m_object.empty()) {
            const std::string margin(static_cast<std::size_t>(19 + 2 * PathDepth(m_object)), ' ');
            m_out << margin << Coloured(heading, m_object) << '\n';
        }
    }

    static std::string DurationOf(const Record& record) {
        return record.isOpen ? "-" : DurationText(record.microseconds);
    }

    std::string Coloured(const char* colour, const std::string& text) const {
        return m_options.isColoured && !text.empty() ? colour + text + plain : text;
    }

    const ShowOptions& m_options;
    std::ostream& m_out;
    const std::string m_wanted;
    std::string m_object;
};

} // namespace

std::string CallText(const Record& record, bool isFull) {
    const TextLimits limits = isFull ? TextLimits::None() : TextLimits{};
    if (record.kind != Record::Kind::Call) {
        return (record.kind == Record::Kind::Create ? "create " : "look up ") + record.method;
    }
    if ((record.flags & propertyPuts) != 0 && !record.arguments.empty()) {
        const std::string index = record.arguments.size() > 1 ? ArgumentList(record, 1, limits) : "";
        return record.method + index + " = " + ValueText(record.arguments.back(), limits);
    }
    const bool isPlainGet = record.flags == propertyGet && record.arguments.empty();
    return record.method + (isPlainGet ? "" : ArgumentList(record, 0, limits));
}

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
        text = " = " + ResultText(record, limits);
    }
    return text + (record.after.is_null() ? "" : "; after the call: " + ArgumentsText(record.after, limits));
}

std::size_t Show(const Session& session, const ShowOptions& options, std::ostream& out) {
    Printer printer(options, out);
    return static_cast<std::size_t>(std::count_if(session.records.begin(), session.records.end(),
                                                  [&](const Record& record) { return printer.Print(record); }));
}

} // namespace kinora::trace
