#include "trace/core/Session.h"

#include "programs/Errors.h"
#include "trace/core/ErrorText.h"
#include "trace/core/ValueCheck.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace kinora::trace {
namespace {

using nlohmann::json;

constexpr int knownVersion = 1;

/// A line as an object. A line that was cut off while its call ran holds everything but the outcome.
json ParseLine(const std::string& line) {
    json whole = json::parse(line, nullptr, false);
    if (whole.is_object()) {
        return whole;
    }
    json completed = json::parse(line + "}", nullptr, false);
    if (completed.is_object()) {
        completed["open"] = true;
        return completed;
    }
    return {};
}

Record::Kind KindOf(const std::string& text) {
    if (text == "create") {
        return Record::Kind::Create;
    }
    return text == "lookup" ? Record::Kind::Lookup : Record::Kind::Call;
}

void ReadException(const json& exception, Record& record) {
    record.description = exception.value("description", "");
    record.scriptError = exception.value("script", "");
}

/// @throws std::invalid_argument  something is no value
void CheckValues(const Record& record) {
    const bool isNamed =
        record.named.is_array() && record.named.size() <= record.arguments.size() &&
        std::all_of(record.named.begin(), record.named.end(), [](const json& id) { return id.is_number_integer(); });
    const bool hasAfter =
        record.after.is_null() ||
        (record.after.is_array() && std::all_of(record.after.begin(), record.after.end(),
                                                [](const json& value) { return value.is_null() || IsValue(value); }));
    if (!AreValues(record.arguments) || !isNamed || !hasAfter || !(record.result.is_null() || IsValue(record.result))) {
        throw std::invalid_argument("no value");
    }
}

Record RecordFrom(const json& line) {
    Record record;
    record.sequence = line.at("seq").get<std::uint64_t>();
    record.kind = KindOf(line.at("kind").get<std::string>());
    record.time = line.value("time", "");
    record.microseconds = line.value("us", 0.0);
    record.objectId = line.value("id", std::uint64_t{0});
    record.object = line.value("object", "");
    record.method = line.value("method", "");
    record.flags = line.value("flags", 0U);
    record.arguments = line.value("args", json::array());
    record.named = line.value("named", json::array());
    record.result = line.value("result", json());
    record.after = line.value("after", json());
    CheckValues(record);
    record.code = static_cast<std::uint32_t>(std::stoul(line.value("hr", "0x00000000"), nullptr, 16));
    record.codeText = line.value("text", "");
    record.argumentError = line.value("argerr", -1);
    record.isOpen = line.value("open", false);
    if (line.contains("exception")) {
        ReadException(line["exception"], record);
    }
    return record;
}

void ReadHeader(const json& header, const std::string& name, Session& session) {
    if (header.value("version", 0) != knownVersion) {
        throw programs::InputError(name + " is a trace of another version; use the vantor-trace that wrote it.");
    }
    session.process = header.value("process", "");
}

class Reader {
public:
    Reader(const std::string& name, Session& session) : m_name(name), m_session(session) {
        for (std::size_t i = 0; i < session.records.size(); ++i) {
            m_indices[session.records[i].sequence] = i;
        }
    }

    void Take(const std::string& text, std::size_t number) {
        const json line = ParseLine(text);
        if (number == 1 && !(line.is_object() && line.value("format", "") == "vantor-trace")) {
            throw programs::InputError(m_name + " is no trace: its first line does not say so.");
        }
        try {
            if (line.contains("format")) {
                ReadHeader(line, m_name, m_session);
            } else {
                Add(RecordFrom(line), line);
            }
        } catch (const std::logic_error&) {
            Warn(number);
        } catch (const json::exception&) {
            Warn(number);
        }
    }

private:
    /// A call during which others were recorded is in the file twice; the second time it is complete.
    void Add(Record record, const json& line) {
        if (record.kind == Record::Kind::Create && !record.HasFailed()) {
            m_session.target = line.value("target", m_session.target);
        }
        const auto [index, isNew] = m_indices.emplace(record.sequence, m_session.records.size());
        if (isNew) {
            m_session.records.push_back(std::move(record));
        } else {
            m_session.records[index->second] = std::move(record);
        }
    }

    void Warn(std::size_t number) {
        m_session.warnings.push_back(m_name + ", line " + std::to_string(number) + ": cannot be read, left out");
    }

    const std::string& m_name;
    Session& m_session;
    std::map<std::uint64_t, std::size_t> m_indices;
};

/// A range of numbers, for people.
std::string RangeText(std::uint64_t first, std::uint64_t last) {
    return std::to_string(first) + (first == last ? "" : " to " + std::to_string(last));
}

} // namespace

void WarnOfGaps(Session& session) {
    constexpr std::size_t mostNamed = 3;
    std::string gaps;
    std::size_t count = 0;
    std::uint64_t expected = 1;
    for (const Record& record : session.records) {
        if (record.sequence > expected && ++count <= mostNamed) {
            gaps += (gaps.empty() ? "" : ", ") + RangeText(expected, record.sequence - 1);
        }
        expected = record.sequence + 1;
    }
    if (count > 0) {
        session.warnings.push_back("calls are missing (" + gaps + (count > mostNamed ? ", .." : "") +
                                   "): the parts that held them were deleted as the trace grew, or are not here");
    }
}

void WarnOfMissingDesktop(Session& session) {
    const Record* failed = nullptr;
    for (const Record& record : session.records) {
        if (record.kind != Record::Kind::Create || !record.HasFailed()) {
            return;
        }
        failed = &record;
    }
    if (!failed) {
        session.warnings.push_back("the trace holds no calls: its program launched no desktop");
        return;
    }
    session.warnings.push_back(
        "there was no desktop to trace: " + failed->method + " cannot be created (" + HResultNumber(failed->code) +
        (failed->codeText.empty() ? "" : " " + failed->codeText) +
        "). Register that desktop, or set VANTOR_TRACE_TARGET to the version of another: the simulator's is "
        "VANTOR_TRACE_TARGET=Simulator");
}

void ReadTrace(std::istream& stream, const std::string& name, Session& session) {
    Reader reader(name, session);
    std::string line;
    std::size_t number = 0;
    while (std::getline(stream, line)) {
        reader.Take(line, ++number);
    }
    if (stream.bad()) {
        throw programs::InputError(name + " cannot be read.");
    }
    if (number == 0) {
        throw programs::InputError(name + " is empty: no trace.");
    }
    std::stable_sort(session.records.begin(), session.records.end(),
                     [](const Record& one, const Record& other) { return one.sequence < other.sequence; });
}

} // namespace kinora::trace
