#include "host/core/RunText.h"

#include "programs/Paths.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kinora::host {

using namespace scenario;

namespace {

std::string LengthText(double metres) {
    return fmt::format("{:.4g} mm", 1000.0 * metres);
}

std::string AngleText(double radians) {
    return fmt::format("{:.4g} deg", radians * degreesPerRadian);
}

/// What rounding leaves of a way or turn is shown as zero.
std::string Triple(const Vector& vector, double factor) {
    const auto shown = [&](double value) { return std::fabs(value) < 1e-12 ? 0.0 : factor * value; };
    return fmt::format("({:.4g}, {:.4g}, {:.4g})", shown(vector.x()), shown(vector.y()), shown(vector.z()));
}

/// Where a joint is.
std::string StateText(const Joint& joint, const JointRecord& record) {
    std::string text;
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        const double coordinate = record.coordinates[i].coordinate;
        text += joint.coordinates[i].kind == Coordinate::Kind::Turn ? " " + AngleText(coordinate)
                                                                    : " " + LengthText(coordinate);
    }
    if (joint.type == JointType::Free) {
        text += fmt::format(" {} mm", Triple(record.placement.displacement_W, 1000.0));
    }
    if (!joint.HasAxis()) {
        text += fmt::format(" {} deg", Triple(record.placement.swept_W, degreesPerRadian));
    }
    return text;
}

/// What rounding leaves of a zero is shown as zero: nothing below a nanonewton, or a nanonewton metre, is a result.
double Shown(double value, double floor) {
    return std::fabs(value) < floor ? 0.0 : value;
}
double ShownNewtons(double value) {
    return Shown(value, 1e-9);
}
double ShownMillinewtonMetres(double value) {
    return Shown(value, 1e-6);
}

std::string Triple(const Vector& vector) {
    return fmt::format("({:g}, {:g}, {:g})", vector.x(), vector.y(), vector.z());
}

/// Bodies with their forces, joints with their coordinates.
std::string Present(const Scenario& scenario, const StepRecord& record) {
    std::string text;
    for (std::size_t i = 0; i < record.results.size(); ++i) {
        const double* force = record.results[i].force;
        text += fmt::format("  {} ({:.4g}, {:.4g}, {:.4g}) N", scenario.bodies[i].name, ShownNewtons(force[0]),
                            ShownNewtons(force[1]), ShownNewtons(force[2]));
    }
    for (std::size_t i = 0; i < scenario.joints.size(); ++i) {
        text +=
            fmt::format("  {}{}", scenario.joints[i].name, StateText(scenario.joints[i], record.mechanism.joints[i]));
    }
    return text;
}

std::string Duration(double seconds) {
    const auto whole = static_cast<long long>(std::ceil(std::fmax(0.0, seconds)));
    if (whole < 60) {
        return fmt::format("{} s", whole);
    }
    if (whole < 3600) {
        return fmt::format("{}:{:02} min", whole / 60, whole % 60);
    }
    return fmt::format("{}:{:02} h", whole / 3600, whole / 60 % 60);
}

std::string FreeMotionText(const FreeMotion& motion) {
    std::string text = fmt::format("free, starts at {:g} with speed {:g}", motion.start, motion.speed);
    if (motion.addedInertia > 0.0) {
        text += fmt::format(", added inertia {:g}", motion.addedInertia);
    }
    if (motion.spring.stiffness > 0.0) {
        text += fmt::format(", spring {:g} relaxed at {:g}", motion.spring.stiffness, motion.spring.rest);
    }
    if (motion.damping > 0.0) {
        text += fmt::format(", damping {:g}", motion.damping);
    }
    if (motion.friction > 0.0) {
        text += fmt::format(", friction {:g}", motion.friction);
    }
    if (std::isfinite(motion.stops.min) || std::isfinite(motion.stops.max)) {
        text += fmt::format(", stops {:g} to {:g}", motion.stops.min, motion.stops.max);
    }
    return text + fmt::format(", load {}", motion.load.Formula());
}

std::string CoordinateText(const Coordinate& coordinate) {
    return coordinate.IsFree() ? FreeMotionText(std::get<FreeMotion>(coordinate.motion))
                               : "prescribed: " + std::get<PrescribedMotion>(coordinate.motion).Description();
}

std::string PlacementText(const Joint& joint) {
    if (const auto* motion = std::get_if<PrescribedPlacement>(&joint.placement)) {
        const std::string turn = "turn " + motion->turn.Description();
        return joint.type == JointType::Ball
                   ? "prescribed: " + turn
                   : fmt::format("prescribed: x {}, y {}, z {}, {}", motion->way[0].Description(),
                                 motion->way[1].Description(), motion->way[2].Description(), turn);
    }
    const auto& start = std::get<FreePlacement>(joint.placement);
    std::string text = "free, starts";
    if (joint.type == JointType::Free) {
        text += fmt::format(" displaced by {} m with {} m/s,", Triple(start.way_W), Triple(start.velocity_W));
    }
    text += fmt::format(" turned by {} rad with {} rad/s", Triple(RotationVector(start.turn)),
                        Triple(start.angularVelocity_W));
    if (start.damping > 0.0) {
        text += fmt::format(", damping {:g}", start.damping);
    }
    if (start.angularDamping > 0.0) {
        text += fmt::format(", angular damping {:g}", start.angularDamping);
    }
    return text;
}

std::string JointText(const Scenario& scenario, const Joint& joint) {
    std::string bodies;
    for (const std::size_t body : joint.bodies) {
        bodies += (bodies.empty() ? "" : ", ") + scenario.bodies[body].name;
    }
    std::string text = fmt::format("  {} \"{}\"", NameOf(joint.type), joint.name);
    if (joint.HasAxis()) {
        text += fmt::format(" along {}", Triple(joint.axis_W));
    }
    if (joint.type != JointType::Slider) {
        text += fmt::format(" {} {} m", joint.HasAxis() ? "through" : "about", Triple(joint.p_WJ_W));
    }
    text += fmt::format(", moves {}\n", bodies);
    for (const Coordinate& coordinate : joint.coordinates) {
        const std::string name =
            joint.coordinates.size() < 2 ? std::string() : fmt::format("{}: ", NameOf(coordinate.kind));
        text += fmt::format("    {}{}\n", name, CoordinateText(coordinate));
    }
    return joint.HasAxis() ? text : text + fmt::format("    {}\n", PlacementText(joint));
}

std::string AttachmentText(const Scenario& scenario, const Attachment& attachment) {
    return fmt::format("{} at {} m", attachment.body ? scenario.bodies[*attachment.body].name : "the ground",
                       Triple(attachment.X_BF.p_WB_W));
}

/// Springs, bushings and loads.
std::string ElementsText(const Scenario& scenario) {
    std::string text = scenario.springs.empty() && scenario.bushings.empty() ? "" : "springs and bushings\n";
    for (const SpringElement& spring : scenario.springs) {
        text += fmt::format("  spring \"{}\" from {} to {}: stiffness {:g}, damping {:g}, relaxed at {:g} m\n",
                            spring.name, AttachmentText(scenario, spring.from), AttachmentText(scenario, spring.to),
                            spring.stiffness, spring.damping, spring.length);
    }
    for (const Bushing& bushing : scenario.bushings) {
        text += fmt::format("  bushing \"{}\" from {} to {}: stiffness {}, {}, damping {}, {}\n", bushing.name,
                            AttachmentText(scenario, bushing.from), AttachmentText(scenario, bushing.to),
                            Triple(bushing.stiffness), Triple(bushing.angularStiffness), Triple(bushing.damping),
                            Triple(bushing.angularDamping));
    }
    text += scenario.loads.empty() ? "" : "loads\n";
    for (const AppliedLoad& load : scenario.loads) {
        const auto formulas = [](const std::array<Expression, 3>& three) {
            return fmt::format("({}, {}, {})", three[0].Formula(), three[1].Formula(), three[2].Formula());
        };
        text += fmt::format("  on {} in {} axes: force {} N, torque {} N m\n", scenario.bodies[load.body].name,
                            load.isInBodyAxes ? "its own" : "global", formulas(load.force), formulas(load.torque));
    }
    return text;
}

/// What all springs and bushings hold and have lost.
std::string ElementEnergies(const MechanismRecord& record) {
    double potential = 0.0;
    double dissipated = 0.0;
    for (const SpringRecord& spring : record.springs) {
        potential += spring.potential;
        dissipated += spring.dissipated;
    }
    for (const BushingRecord& bushing : record.bushings) {
        potential += bushing.potential;
        dissipated += bushing.dissipated;
    }
    return fmt::format("springs and bushings hold {:.5g} J and have dissipated {:.5g} J\n", potential, dissipated);
}

const char* SeverityName(Severity severity) {
    switch (severity) {
    case Severity::Fatal:
        return "fatal";
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Info:
        return "info";
    }
    return "message";
}

std::string Ordinal(std::size_t number) {
    const bool isTeen = number / 10 % 10 == 1;
    const char* endings[] = {"th", "st", "nd", "rd"};
    const std::size_t digit = number % 10;
    return fmt::format("{}{}", number, endings[isTeen || digit > 3 ? 0 : digit]);
}

std::size_t NameWidth(const Scenario& scenario) {
    std::size_t width = 4;
    for (const Body& body : scenario.bodies) {
        width = std::max(width, body.name.size());
    }
    return width;
}

/// Bytes of the character of UTF-8 that begins with this one.
std::size_t SizeOfCharacter(char first) {
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// Wide are characters of East Asia and pictures. Those begin at U+1100, and in between are signs and arrows, up to
/// U+22FF, that are not.
int MostColumns(const std::string& character) {
    const bool isSign = character >= "\u1160" && character < "\u2300";
    return character < "\u1100" || isSign ? 1 : 2;
}

} // namespace

std::string StepLine(const Scenario& scenario, const StepRecord& record) {
    return fmt::format("step {}/{}  {:.6g} s{}", record.step, scenario.stepping.steps, record.time,
                       Present(scenario, record));
}

std::string CutToColumns(const std::string& text, int columns) {
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t size = SizeOfCharacter(text[end]);
        columns -= MostColumns(text.substr(end, size));
        if (columns < 0) {
            break;
        }
        end += size;
    }
    return text.substr(0, end);
}

std::string WorkingLine(const std::string& bar, const std::string& work, int seconds, int width) {
    const std::string text = fmt::format("{}{}, {} s", bar.empty() ? "" : "  ", work, seconds);
    return CutToColumns(CutToColumns(bar, width - static_cast<int>(text.size())) + text, width);
}

std::string ProgressLine(const Scenario& scenario, const StepRecord& record, int firstStep, double elapsedSeconds,
                         int width) {
    constexpr int barWidth = 24;
    const int total = scenario.stepping.steps - firstStep + 1;
    const int done = record.step - firstStep + 1;
    const int filled = barWidth * done / total;
    const double left = elapsedSeconds / done * (total - done);
    const std::string line =
        fmt::format("[{:#<{}}{:.<{}}] {:3}%  {} left  {:.4g} s{}", "", filled, "", barWidth - filled,
                    100 * done / total, Duration(left), record.time, Present(scenario, record));
    return CutToColumns(line, width);
}

std::string LoadTable(const Scenario& scenario, const std::vector<StepRecord>& records, std::size_t maxRows) {
    const std::size_t nameWidth = NameWidth(scenario);
    std::string table =
        fmt::format("{:>6}  {:>10}  {:<{}}  {:>11} {:>11} {:>11}  {:>11} {:>11} {:>11}\n", "step", "time s", "body",
                    nameWidth, "Fx N", "Fy N", "Fz N", "Tx mN m", "Ty mN m", "Tz mN m");
    const std::size_t stride = std::max<std::size_t>(1, (records.size() + maxRows - 1) / maxRows);
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (i % stride != 0 && i + 1 != records.size()) {
            continue;
        }
        const StepRecord& record = records[i];
        for (std::size_t body = 0; body < record.results.size(); ++body) {
            const auto& [force, torque] = record.results[body];
            table +=
                fmt::format("{:>6}  {:>10.6g}  {:<{}}  {:>11.5g} {:>11.5g} {:>11.5g}  {:>11.5g} {:>11.5g} {:>11.5g}\n",
                            record.step, record.time, scenario.bodies[body].name, nameWidth, ShownNewtons(force[0]),
                            ShownNewtons(force[1]), ShownNewtons(force[2]), ShownMillinewtonMetres(torque[0]),
                            ShownMillinewtonMetres(torque[1]), ShownMillinewtonMetres(torque[2]));
        }
    }
    if (stride > 1) {
        table += fmt::format("(every {} of {} steps; all of them are in the coupling log)\n", Ordinal(stride),
                             records.size());
    }
    return table;
}

std::string EnergyTable(const Scenario& scenario, const StepRecord& last) {
    const bool hasElements = !scenario.springs.empty() || !scenario.bushings.empty();
    const auto element = [&](const std::string& text) { return hasElements ? text : std::string(); };
    std::string rows;
    for (std::size_t i = 0; i < scenario.joints.size(); ++i) {
        if (!scenario.joints[i].IsFree()) {
            continue;
        }
        const EnergyAccount& energy = last.mechanism.joints[i].energy;
        rows +=
            fmt::format("{:<12} {:>12.5g} {:>12.5g} {:>12.5g}{} {:>12.5g} {:>12.3g}\n", scenario.joints[i].name,
                        energy.kinetic + energy.potential - energy.initial, energy.fieldWork, energy.loadWork,
                        element(fmt::format(" {:>12.5g}", energy.elementWork)), energy.dissipated, energy.Imbalance());
    }
    if (rows.empty()) {
        return {};
    }
    return fmt::format(
        "Energy, J: gain of kinetic and potential energy + dissipated = field work + load work{} + imbalance\n"
        "{:<12} {:>12} {:>12} {:>12}{} {:>12} {:>12}\n{}",
        element(" + work of springs and bushings"), "joint", "gain", "field work", "load work",
        element(fmt::format(" {:>12}", "springs")), "dissipated", "imbalance",
        rows + element(ElementEnergies(last.mechanism)));
}

std::string ResultTable(const std::vector<RunResult>& results) {
    std::size_t width = 0;
    for (const RunResult& result : results) {
        width = std::max(width, result.name.size());
    }
    std::string table = results.empty() ? "" : "Results\n";
    for (const RunResult& result : results) {
        table += fmt::format("  {:<{}}  {} {}\n", result.name, width,
                             result.value ? fmt::format("{:.6g}", *result.value) : "none", result.unit);
    }
    return table;
}

std::string FileList(const Scenario& scenario) {
    const RunFiles files = FilesOf(scenario);
    std::string list;
    const auto add = [&list](const char* what, const std::filesystem::path& path) {
        std::error_code ignored;
        if (std::filesystem::exists(path, ignored)) {
            list += fmt::format("{:<13} {}\n", what, Utf8FromPath(programs::NormalPath(path)));
        }
    };
    add("project", files.project);
    add("coupling log", files.couplingLog);
    add("reports", files.reportsFolder);
    if (files.csv) {
        add("states", *files.csv);
    }
    if (files.result) {
        add("result", *files.result);
    }
    return list;
}

std::string ModelText(const Scenario& scenario) {
    std::string text = scenario.title.empty() ? "" : scenario.title + "\n";
    text += fmt::format("project {}, desktop version {}\ngeometry {} in {}\n",
                        Utf8FromPath(FilesOf(scenario).project.lexically_normal()),
                        scenario.desktop.version.empty() ? "(plain)" : scenario.desktop.version,
                        Utf8FromPath(scenario.geometryFile.lexically_normal()), scenario.units);
    text += scenario.parameters.empty() ? "" : "parameters\n";
    for (const Parameter& parameter : scenario.parameters) {
        text += fmt::format("  {} = {:g}{}{}\n", parameter.name, parameter.value, parameter.unit.empty() ? "" : " ",
                            parameter.unit);
    }
    text += "bodies\n";
    for (const Body& body : scenario.bodies) {
        text +=
            fmt::format("  \"{}\" at {} m, mass {:g} kg, objects:", body.name, Triple(body.X_WB0.p_WB_W), body.mass);
        for (const std::string& object : body.objects) {
            text += " " + object;
        }
        text += "\n";
    }
    text += "materials\n";
    for (const auto& [object, material] : scenario.materials) {
        const double* direction = material.coercivityDirection;
        text += fmt::format("  {}: {} along {}{}\n", object, material.name,
                            Triple({direction[0], direction[1], direction[2]}),
                            scenario.undirected.count(object) == 0 ? "" : " if it is a magnet");
    }
    text += scenario.joints.empty() ? "" : "joints\n";
    for (const Joint& joint : scenario.joints) {
        text += JointText(scenario, joint);
    }
    text += ElementsText(scenario);
    if (!scenario.gravity_W.isZero()) {
        text += fmt::format("gravity {} m/s^2\n", Triple(scenario.gravity_W));
    }
    for (const WantedResult& result : scenario.results) {
        text += fmt::format("result \"{}\": {} {}\n", result.name, NameOf(result.take), result.column);
    }
    return text + fmt::format("{} steps of {:g} s, 0 to {:g} s\n", scenario.stepping.steps,
                              scenario.stepping.stepSeconds, scenario.stepping.TimeOf(scenario.stepping.steps));
}

std::string FailureText(const OperationFailed& failure) {
    std::string text = fmt::format("error: {}\n", failure.what());
    if (!failure.messages.empty()) {
        text += "The desktop says:\n";
    }
    for (const auto& [severity, message] : failure.messages) {
        text += fmt::format("  {}: {}\n", SeverityName(severity), message);
    }
    text += "What to try:\n";
    for (const std::string& advice : failure.Advice()) {
        text += fmt::format("  - {}\n", advice);
    }
    return text;
}

} // namespace kinora::host
