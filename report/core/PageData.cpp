#include "report/core/PageData.h"

#include "report/core/Base64.h"
#include "report/core/LogHeader.h"
#include "report/core/MaterialKind.h"
#include "report/core/ToUtf8.h"
#include "scenario/DesktopFrame.h"
#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kinora::report {
namespace {

using nlohmann::json;

constexpr int formatVersion = 1;

/// Smaller deviations vanish in the log's six digits, radians.
constexpr double tolerableDeviation = 1e-4;

/// The bytes of the values, the lowest first.
template <class Number, class Bits>
std::string BytesOf(const Column& values) {
    static_assert(sizeof(Number) == sizeof(Bits));
    std::string bytes;
    bytes.reserve(values.size() * sizeof(Number));
    for (const double value : values) {
        const auto number = static_cast<Number>(value);
        Bits bits = 0;
        std::memcpy(&bits, &number, sizeof(bits));
        for (unsigned int i = 0; i < sizeof(bits); ++i) {
            bytes += static_cast<char>(static_cast<unsigned char>((bits >> (8U * i)) & 0xFFU));
        }
    }
    return bytes;
}

/// Whether a single-precision number keeps the log's six digits.
bool FitsSingle(double value) {
    const double size = std::fabs(value);
    return std::isnan(value) || size == 0.0 || (size > 1.2e-38 && size < 3.4e38);
}

json Pack(const Column& values) {
    // So short a column is better readable as numbers.
    constexpr std::size_t shortColumn = 4;
    const bool isConstant = std::all_of(values.begin(), values.end(), [&](double v) { return v == values[0]; });
    if (values.size() > shortColumn && isConstant) {
        return {{"constant", values[0]}};
    }
    if (values.size() <= shortColumn) {
        return values;
    }
    if (std::all_of(values.begin(), values.end(), FitsSingle)) {
        return {{"float32", Base64(BytesOf<float, std::uint32_t>(values))}};
    }
    return {{"float64", Base64(BytesOf<double, std::uint64_t>(values))}};
}

/// Every bit is kept: a step of a microsecond late in a run is not lost.
json PackExact(const Column& values) {
    return {{"float64", Base64(BytesOf<double, std::uint64_t>(values))}};
}

json Numbers(const scenario::Vector& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

const scenario::Body* FindBody(const scenario::Scenario* scenario, const std::string& name) {
    if (!scenario) {
        return nullptr;
    }
    const auto found = std::find_if(scenario->bodies.begin(), scenario->bodies.end(),
                                    [&name](const scenario::Body& body) { return body.name == name; });
    return found == scenario->bodies.end() ? nullptr : &*found;
}

/// Where a body is drawn. A page of exact orientations has the axes themselves, for the angles of some are ambiguous;
/// one of direct orientations has the angles that the library made of them at the import, right or not.
json DrawnPose(const scenario::Pose& X_WB0, Orientation orientation) {
    json data = json::object();
    data["position"] = Numbers(X_WB0.p_WB_W);
    if (orientation == Orientation::Exact) {
        const scenario::Matrix& R_WB0 = X_WB0.R_WB;
        data["axes"] = {Numbers(R_WB0.col(0)), Numbers(R_WB0.col(1)), Numbers(R_WB0.col(2))};
    } else {
        const auto [phi, theta, psi] = scenario::AnglesOf(X_WB0.R_WB);
        data["angles"] = {phi, theta, psi};
    }
    return data;
}

json BodyData(const LogBody& body, const PageContext& context) {
    const auto group = [&body](BodyColumn first) {
        json columns = json::array();
        for (std::size_t i = 0; i < 3; ++i) {
            const auto& column = body.columns[static_cast<std::size_t>(first) + i];
            columns.push_back(column ? Pack(*column) : json());
        }
        return columns;
    };
    json data = {{"name", body.name},
                 {"position", group(X)},
                 {"angles", group(Phi)},
                 {"force", group(ForceX)},
                 {"torque", group(TorqueX)}};
    if (const scenario::Body* drawn = FindBody(context.scenario, body.name)) {
        data["drawn"] = DrawnPose(drawn->X_WB0, context.orientation);
    }
    return data;
}

bool HasExtension(const std::filesystem::path& file, const std::string& extension) {
    return scenario::LowerCase(scenario::Utf8FromPath(file.extension())) == extension;
}

json GeometryData(const PageContext& context) {
    const scenario::Scenario& scenario = *context.scenario;
    json data = {{"name", scenario::Utf8FromPath(scenario.geometryFile.filename())},
                 {"metresPerUnit", MetresPerUnit(scenario.units)}};
    if (HasExtension(scenario.geometryFile, ".stl")) {
        data["stl"] = Base64(context.geometry);
    } else {
        data["obj"] = ToUtf8(context.geometry);
    }
    return data;
}

json KindData(MaterialKind kind) {
    return kind == MaterialKind::Magnet ? "magnet" : kind == MaterialKind::Iron ? "iron" : "other";
}

/// The objects of the model, with the body that each belongs to.
json ObjectData(const CouplingLog& log, const scenario::Scenario& scenario) {
    json objects = json::array();
    const auto add = [&](const std::string& name, const json& body) {
        json object = {{"name", name}, {"body", body}};
        const auto material = scenario.materials.find(name);
        if (material != scenario.materials.end()) {
            const double* direction = material->second.coercivityDirection;
            const MaterialKind kind = KindOf(scenario, name);
            object["material"] = material->second.name;
            object["kind"] = KindData(kind);
            if (kind == MaterialKind::Magnet) {
                object["direction"] = {direction[0], direction[1], direction[2]};
            }
        }
        objects.push_back(object);
    };
    for (const scenario::Body& body : scenario.bodies) {
        const auto logged = std::find_if(log.bodies.begin(), log.bodies.end(),
                                         [&body](const LogBody& other) { return other.name == body.name; });
        for (const std::string& object : body.objects) {
            add(object, logged == log.bodies.end() ? json() : json(logged - log.bodies.begin()));
        }
    }
    return objects;
}

json NoticeData(const std::vector<Notice>& notices) {
    json data = json::array();
    for (const auto& [severity, text] : notices) {
        data.push_back({{"severity", severity == Severity::Error     ? "error"
                                     : severity == Severity::Warning ? "warning"
                                                                     : "info"},
                        {"text", ToUtf8(text)}});
    }
    return data;
}

/// JSON's own escapes for the characters that mean something in HTML.
std::string WithoutMarkup(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        if (character == '<' || character == '>' || character == '&') {
            result += fmt::format("\\u{:04x}", static_cast<unsigned int>(character));
        } else {
            result += character;
        }
    }
    return result;
}

/// A prescribed joint is driven by whatever it takes, which the host's account of energies leaves out; what the field,
/// springs and bushings do to it is known all the same.
bool IsMeaningful(const StateSeries& series, const scenario::Scenario* scenario) {
    const bool isAccount =
        (series.unit == "J" && series.name != "Field work" && series.name != "Element work") || series.name == "Load";
    if (!scenario || !isAccount) {
        return true;
    }
    const auto joint = std::find_if(scenario->joints.begin(), scenario->joints.end(),
                                    [&series](const scenario::Joint& other) { return other.name == series.group; });
    return joint == scenario->joints.end() || joint->IsFree();
}

/// The row at which the desktop's frame is farthest from the body's, and the angle.
std::pair<std::size_t, double> LargestDeviation(const LogBody& body, std::size_t rows) {
    std::size_t worst = 0;
    double largest = 0.0;
    if (!body.columns[Phi] || !body.columns[Theta] || !body.columns[Psi]) {
        return {worst, largest};
    }
    for (std::size_t row = 0; row < rows; ++row) {
        const double phi = (*body.columns[Phi])[row];
        const double theta = (*body.columns[Theta])[row];
        // Equal angles give equal frames; the usual case must be quick.
        if (phi == theta) {
            continue;
        }
        const scenario::Matrix R_WB = scenario::FromAngles({phi, theta, (*body.columns[Psi])[row]});
        const double deviation = scenario::FrameDeviation(R_WB);
        if (deviation > largest) {
            largest = deviation;
            worst = row;
        }
    }
    return {worst, largest};
}

Notice DeviationNotice(const std::string& body, const std::string& degrees, const std::string& when) {
    return {Severity::Warning,
            fmt::format("Body \"{}\": the desktop's frame is up to {} degrees away from the body's (at {}). Field, "
                        "force and torque are those of the desktop's frame, in which the replay shows the body too.",
                        body, degrees, when)};
}

Notice UnknownOriginNotice(const std::string& body, const std::string& degrees, const std::string& when) {
    return {
        Severity::Info,
        fmt::format("Body \"{}\" is shown in the desktop's frame, taken for the body's own. Nothing tells which host "
                    "wrote this log: of one that hands the body's own axes to the library, the body's frame would "
                    "be up to {} degrees away (at {}); write the page with --orientation direct for such a log.",
                    body, degrees, when)};
}

/// Tells of the bodies whose angles give two frames, the body's own and the desktop's.
std::vector<Notice> CheckFrames(const CouplingLog& log, std::optional<Orientation> orientation) {
    const auto makeNotice = orientation ? DeviationNotice : UnknownOriginNotice;
    std::vector<Notice> notices;
    for (const LogBody& body : log.bodies) {
        const auto [row, deviation] = LargestDeviation(body, log.rows);
        if (deviation > tolerableDeviation) {
            const std::string when =
                log.times ? fmt::format("{:g} s", (*log.times)[row]) : fmt::format("row {}", row + 1);
            notices.push_back(
                makeNotice(body.name, fmt::format("{:.3g}", deviation * scenario::degreesPerRadian), when));
        }
    }
    return notices;
}

} // namespace

double MetresPerUnit(const std::string& unit) {
    static const std::map<std::string, double> units = {
        {"nm", 1e-9},     {"um", 1e-6},    {"mm", 1e-3},   {"cm", 1e-2},  {"dm", 1e-1},
        {"m", 1.0},       {"meter", 1.0},  {"Meter", 1.0}, {"km", 1e3},   {"uin", 2.54e-8},
        {"mil", 2.54e-5}, {"in", 2.54e-2}, {"ft", 0.3048}, {"yd", 0.9144}};
    const auto found = units.find(unit);
    return found == units.end() ? 0.0 : found->second;
}

std::string MakePageData(const CouplingLog& log, const HostStates& states, const PageContext& context) {
    json data = {{"format", formatVersion},
                 {"generator", context.generator},
                 {"project", ToUtf8(context.project)},
                 {"log", ToUtf8(context.logName)},
                 {"rows", log.rows},
                 {"orientation", context.orientation == Orientation::Exact ? "exact" : "direct"},
                 {"bodies", json::array()},
                 {"notices", NoticeData(context.notices)}};
    if (log.steps) {
        data["step"] = Pack(*log.steps);
    }
    if (states.times) {
        data["time"] = PackExact(*states.times);
    } else if (log.times) {
        data["time"] = PackExact(*log.times);
    }
    for (const LogBody& body : log.bodies) {
        data["bodies"].push_back(BodyData(body, context));
    }
    for (const StateSeries& series : states.series) {
        if (IsMeaningful(series, context.scenario)) {
            data["series"].push_back({{"name", series.name},
                                      {"group", series.group},
                                      {"unit", series.unit},
                                      {"values", Pack(series.values)}});
        }
    }
    if (context.scenario) {
        data["title"] = ToUtf8(context.scenario->title);
        data["scenario"] = ToUtf8(context.scenarioName);
        if (!context.geometry.empty() && MetresPerUnit(context.scenario->units) > 0.0) {
            data["geometry"] = GeometryData(context);
            data["objects"] = ObjectData(log, *context.scenario);
        }
    }
    return WithoutMarkup(data.dump(-1, ' ', true));
}

std::vector<Notice> CheckRun(const CouplingLog& log, const scenario::Scenario* scenario,
                             std::optional<Orientation> orientation) {
    std::vector<Notice> notices;
    if (scenario) {
        for (const scenario::Body& body : scenario->bodies) {
            if (std::none_of(log.bodies.begin(), log.bodies.end(),
                             [&](const LogBody& b) { return b.name == body.name; })) {
                notices.push_back(
                    {Severity::Warning, fmt::format("The log has no body \"{}\" of the scenario; does the "
                                                    "scenario belong to this log?",
                                                    body.name)});
            }
        }
        if (MetresPerUnit(scenario->units) <= 0.0) {
            notices.push_back({Severity::Warning, fmt::format("The length unit \"{}\" of the geometry is unknown: the "
                                                              "replay shows frames only.",
                                                              scenario->units)});
        }
    }
    for (const LogBody& body : log.bodies) {
        if (scenario && !FindBody(scenario, body.name)) {
            notices.push_back({Severity::Warning, fmt::format("The scenario has no body \"{}\" of the log; the replay "
                                                              "shows its frame only.",
                                                              body.name)});
        }
    }
    if (orientation != Orientation::Exact) {
        const std::vector<Notice> deviations = CheckFrames(log, orientation);
        notices.insert(notices.end(), deviations.begin(), deviations.end());
    }
    return notices;
}

} // namespace kinora::report
