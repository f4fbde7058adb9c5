#include "simulator/model/ReportData.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/Text.h"

#include <algorithm>

namespace vantor::model {
namespace {

struct Label {
    std::string name;
    std::string unit;
};

[[noreturn]] void Refuse(const std::string& fileName, std::size_t line, const std::string& reason) {
    throw DesktopError(ErrorCode::ReadFile, fileName + ", line " + std::to_string(line) + ": " + reason);
}

/// "Force_Rotor.Force_x [Newton]" as name and unit; a label may go without a unit.
Label ParseLabel(const std::string& field, const std::string& fileName) {
    const std::string text(Trim(field));
    const auto bracket = text.find(" [");
    Label label{text.substr(0, bracket), ""};
    if (bracket != std::string::npos) {
        if (text.back() != ']') {
            Refuse(fileName, 1, "the unit of the label " + Quoted(text) + " does not end in \"]\"");
        }
        label.unit = text.substr(bracket + 2, text.size() - bracket - 3);
    }
    if (label.name.empty()) {
        Refuse(fileName, 1, "a column has no label");
    }
    return label;
}

std::vector<Trace> TracesOfLabels(std::string_view line, const std::string& fileName) {
    const auto fields = Split(line, ',');
    if (fields.size() < 2) {
        Refuse(fileName, 1, "at least two labelled columns are needed");
    }
    const Label x = ParseLabel(fields[0], fileName);
    std::vector<Trace> traces;
    for (std::size_t i = 1; i < fields.size(); ++i) {
        const Label label = ParseLabel(fields[i], fileName);
        if (FindByName(traces, label.name)) {
            Refuse(fileName, 1, "a second column labelled " + Quoted(label.name));
        }
        traces.push_back({label.name, label.unit, x.name, x.unit, {}, {}});
    }
    return traces;
}

/// Takes the text up to a separator off its front, with the separator; all of it when there is none.
std::string_view TakeField(std::string_view& text, char separator) {
    const auto end = text.find(separator);
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return field;
}

/// @param values  room for the line's numbers, used again for every line
void AddPoints(std::vector<Trace>& traces, std::string_view line, std::vector<double>& values,
               const std::string& fileName, std::size_t number) {
    const auto fields = static_cast<std::size_t>(std::count(line.begin(), line.end(), ',')) + 1;
    if (fields != traces.size() + 1) {
        Refuse(fileName, number,
               std::to_string(traces.size() + 1) + " fields are needed, here are " + std::to_string(fields));
    }
    values.resize(fields);
    for (double& value : values) {
        const std::string_view field = TakeField(line, ',');
        if (!ParseNumber(Trim(field), value)) {
            Refuse(fileName, number, "not a finite number: " + Quoted(field));
        }
    }
    for (std::size_t i = 0; i < traces.size(); ++i) {
        traces[i].x.push_back(values[0]);
        traces[i].y.push_back(values[i + 1]);
    }
}

} // namespace

std::vector<Trace> ReadTraces(const std::string& text, const std::string& fileName) {
    std::string_view rest = text;
    const std::string_view labels = TakeField(rest, '\n');
    if (Trim(labels).empty()) {
        Refuse(fileName, 1, "the column labels are missing");
    }
    std::vector<Trace> traces = TracesOfLabels(labels, fileName);
    std::vector<double> values;
    for (std::size_t number = 2; !rest.empty(); ++number) {
        const std::string_view line = TakeField(rest, '\n');
        if (!Trim(line).empty()) {
            AddPoints(traces, line, values, fileName, number);
        }
    }
    return traces;
}

std::vector<Trace> ReadTraceFile(const std::filesystem::path& path) {
    if (path.extension() != ".csv") {
        throw DesktopError(ErrorCode::ReadFile, "the file " + Quoted(Utf8(path)) + " is no .csv file");
    }
    return ReadTraces(ReadWholeFile(path), Utf8(path));
}

} // namespace vantor::model
