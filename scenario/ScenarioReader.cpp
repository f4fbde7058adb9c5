#include "scenario/ScenarioReader.h"

#include "scenario/Node.h"
#include "scenario/SchemaCheck.h"
#include "scenario/Text.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

namespace kinora::scenario {
namespace {

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// Names that may stand once; the desktop and the file system do not tell upper from lower case.
class UniqueNames {
public:
    explicit UniqueNames(const char* kind) : m_kind(kind) {}
    void Add(const Node& node) {
        if (!m_names.emplace(LowerCase(node.Text()), node.Text()).second) {
            node.Report(fmt::format("another {} is called \"{}\" already (upper and lower case count as the same).",
                                    m_kind, m_names.at(LowerCase(node.Text()))));
        }
    }

private:
    const char* m_kind;
    std::map<std::string, std::string> m_names;
};

Body ReadBody(const Node& node) {
    Body body;
    body.name = node.At("name").Text();
    for (const Node& object : node.At("objects").Items()) {
        body.objects.push_back(object.Text());
    }
    body.X_WB0.p_WB_W = node.TripleOr("position", Vector::Zero());
    if (node.Has("rotation")) {
        const Node rotation = node.At("rotation");
        body.X_WB0.R_WB = Rotation(rotation.At("axis").Direction(), rotation.At("angle").Number());
    }
    body.mass = node.NotNegativeOr("mass", 0.0);
    body.p_BC_B = node.TripleOr("centreOfMass", Vector::Zero());
    body.principalInertia_B = node.TripleOr("inertia", Vector::Zero());
    if ((body.principalInertia_B.array() < 0.0).any()) {
        node.At("inertia").Report("moments of inertia must be 0 or more.");
    }
    return body;
}

std::vector<Body> ReadBodies(const Node& node) {
    std::vector<Body> bodies;
    UniqueNames names("body");
    std::map<std::string, std::string> owners;
    for (const Node& item : node.Items()) {
        names.Add(item.At("name"));
        bodies.push_back(ReadBody(item));
        for (const Node& object : item.At("objects").Items()) {
            const auto [owner, isNew] = owners.emplace(object.Text(), bodies.back().name);
            if (!isNew) {
                object.Report(fmt::format("the object belongs to body \"{}\" already.", owner->second));
            }
        }
    }
    return bodies;
}

MotionTable ReadTable(const Node& node) {
    MotionTable table;
    for (const Node& row : node.Items()) {
        const double time = row.At(0).Number();
        if (!table.rows.empty() && time <= table.rows.back().first) {
            row.Report(
                fmt::format("time {} s does not come after {} s; times must ascend.", time, table.rows.back().first));
        }
        table.rows.emplace_back(time, row.At(1).Number());
    }
    return table;
}

Stops ReadStops(const Node& node) {
    Stops stops;
    stops.min = node.NumberOr("min", stops.min);
    stops.max = node.NumberOr("max", stops.max);
    stops.restitution = node.NumberOr("restitution", 0.0);
    if (stops.min >= stops.max) {
        node.Report(fmt::format("min ({}) must be less than max ({}).", stops.min, stops.max));
    }
    return stops;
}

FreeMotion ReadFreeMotion(const Node& node) {
    FreeMotion motion;
    motion.start = node.NumberOr("start", 0.0);
    motion.speed = node.NumberOr("speed", 0.0);
    motion.addedInertia = node.NotNegativeOr("inertia", 0.0);
    if (node.Has("spring")) {
        motion.spring.stiffness = node.At("spring").NotNegativeOr("stiffness", 0.0);
        motion.spring.rest = node.At("spring").NumberOr("rest", 0.0);
    }
    motion.damping = node.NotNegativeOr("damping", 0.0);
    motion.friction = node.NotNegativeOr("friction", 0.0);
    if (node.Has("stops")) {
        motion.stops = ReadStops(node.At("stops"));
    }
    if (motion.start < motion.stops.min || motion.start > motion.stops.max) {
        node.At("stops").Report(fmt::format("the coordinate starts at {}, outside the stops.", motion.start));
    }
    if (node.Has("load")) {
        motion.load = node.At("load").Formula(Expression::Variables::TimeAndCoordinate).value_or(Expression());
    }
    return motion;
}

/// Reads the joints and sees to it that no body hangs on two of them.
class JointReader {
public:
    explicit JointReader(const std::vector<Body>& bodies) : m_bodies(bodies), m_jointOfBody(bodies.size()) {}

    Joint Read(const Node& node) {
        m_names.Add(node.At("name"));
        Joint joint;
        joint.name = node.At("name").Text();
        joint.type = node.At("type").Text() == "slider" ? JointType::Slider : JointType::Hinge;
        joint.axis_W = node.At("axis").Direction();
        if (node.Has("point") && joint.type == JointType::Slider) {
            node.At("point").Report("only a hinge has a point on its axis; remove it.");
        }
        joint.p_WJ_W = node.TripleOr("point", Vector::Zero());
        ReadMembers(node.At("bodies"), joint);
        if (node.Has("prescribed")) {
            joint.motion = ReadPrescribed(node.At("prescribed"));
        } else {
            joint.motion = ReadFreeMotion(node.At("free"));
        }
        CheckInertia(node, joint);
        return joint;
    }

private:
    static PrescribedMotion ReadPrescribed(const Node& node) {
        if (node.Has("table")) {
            return PrescribedMotion(ReadTable(node.At("table")));
        }
        return PrescribedMotion(node.At("expression").Formula(Expression::Variables::Time).value_or(Expression()));
    }

    /// Leaves out the bodies that there are not.
    void ReadMembers(const Node& node, Joint& joint) {
        for (const Node& item : node.Items()) {
            const std::optional<std::size_t> body = BodyIndex(item);
            if (!body) {
                continue;
            }
            std::string& other = m_jointOfBody[*body];
            if (!other.empty()) {
                item.Report(fmt::format("body \"{}\" hangs on joint \"{}\" already.", m_bodies[*body].name, other));
            }
            other = joint.name;
            joint.bodies.push_back(*body);
        }
    }

    std::optional<std::size_t> BodyIndex(const Node& node) const {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < m_bodies.size(); ++i) {
            if (m_bodies[i].name == node.Text()) {
                return i;
            }
            names.push_back(m_bodies[i].name);
        }
        node.Report(fmt::format("there is no body \"{}\".{}", node.Text(), Suggestion(node.Text(), names)));
        return std::nullopt;
    }

    /// A free joint without inertia has no equation of motion.
    void CheckInertia(const Node& node, const Joint& joint) const {
        const auto* motion = std::get_if<FreeMotion>(&joint.motion);
        // What a body that there is not would have had is not known.
        if (!motion || joint.bodies.size() < node.At("bodies").Size()) {
            return;
        }
        double inertia = motion->addedInertia;
        for (const std::size_t body : joint.bodies) {
            inertia += joint.type == JointType::Slider ? m_bodies[body].mass : MomentOfInertia(m_bodies[body], joint);
        }
        if (inertia <= 0.0) {
            node.At("free").Report(
                fmt::format("nothing on this joint has {}; give it to the bodies, or give \"inertia\" here.",
                            joint.type == JointType::Slider ? "a mass" : "a moment of inertia"));
        }
    }

    /// About the axis of a hinge.
    static double MomentOfInertia(const Body& body, const Joint& hinge) {
        const auto& [p_WB_W, R_WB] = body.X_WB0;
        const Vector axis_B = R_WB.transpose() * hinge.axis_W;
        const Vector p_JC_W = p_WB_W + R_WB * body.p_BC_B - hinge.p_WJ_W;
        return axis_B.cwiseAbs2().dot(body.principalInertia_B) + body.mass * p_JC_W.cross(hinge.axis_W).squaredNorm();
    }

    const std::vector<Body>& m_bodies;
    std::vector<std::string> m_jointOfBody;
    UniqueNames m_names{"joint"};
};

std::map<std::string, IKinoraVeltrixInterface::Material> ReadMaterials(const Node& node) {
    std::map<std::string, IKinoraVeltrixInterface::Material> materials;
    for (const std::string& object : node.Keys()) {
        const Node item = node.At(object);
        IKinoraVeltrixInterface::Material material;
        material.name = item.At("name").Text();
        const Vector direction = item.TripleOr("direction", Vector::UnitX());
        for (int i = 0; i < 3; ++i) {
            material.coercivityDirection[i] = direction[i];
        }
        materials.emplace(object, material);
    }
    return materials;
}

/// Tells objects of a body that have no material.
/// @param strangers  the materials' objects that no body has, one of which may be meant
void WarnOfBareObjects(const Node& objects, const Scenario& scenario, const std::vector<std::string>& strangers,
                       std::vector<std::string>& warnings) {
    for (const Node& item : objects.Items()) {
        const std::string object = item.Text();
        if (scenario.materials.count(object) == 0) {
            warnings.push_back(
                item.Line(fmt::format("the object \"{}\" has no material: \"materials\" does not name it.{}", object,
                                      Suggestion(object, strangers))));
        }
    }
}

/// Tells materials of objects that no body has, and objects of bodies that have no material.
std::vector<std::string> CompareMaterials(const Node& root, const Scenario& scenario) {
    std::vector<std::string> objects;
    for (const Body& body : scenario.bodies) {
        objects.insert(objects.end(), body.objects.begin(), body.objects.end());
    }
    std::vector<std::string> warnings;
    std::vector<std::string> strangers;
    for (const auto& [object, material] : scenario.materials) {
        if (std::find(objects.begin(), objects.end(), object) != objects.end()) {
            continue;
        }
        strangers.push_back(object);
        const std::string hint = Suggestion(object, objects);
        warnings.push_back(
            root.At("materials").At(object).Line(fmt::format("no body has an object \"{}\".{}", object, hint)));
    }
    for (std::size_t body = 0; body < scenario.bodies.size(); ++body) {
        WarnOfBareObjects(root.At("bodies").At(body).At("objects"), scenario, strangers, warnings);
    }
    return warnings;
}

Stepping ReadStepping(const Node& node) {
    Stepping stepping;
    stepping.stepSeconds = node.At("step").Number();
    const double end = node.At("end").Number();
    if (stepping.stepSeconds <= 0.0) {
        node.At("step").Report("the step must be more than 0 s.");
        return {};
    }
    if (end < 0.0) {
        node.At("end").Report("the end must be 0 s or later.");
        return {};
    }
    const double steps = end / stepping.stepSeconds;
    const double whole = std::round(steps);
    if (whole > 1e8) {
        node.At("step").Report("that is more than a hundred million steps.");
        return {};
    }
    if (std::fabs(steps - whole) > 1e-6) {
        node.At("end").Report(fmt::format("{} s is not a whole number of steps of {} s; the nearest is {} s.", end,
                                          stepping.stepSeconds, std::fmax(1.0, whole) * stepping.stepSeconds));
    }
    if (std::isfinite(whole)) {
        stepping.steps = static_cast<int>(whole);
    }
    return stepping;
}

DesktopSettings ReadDesktop(const Node& node) {
    DesktopSettings desktop;
    if (node.Has("version")) {
        desktop.version = node.At("version").Text();
    }
    if (node.Has("atEnd") && node.At("atEnd").Text() == "release") {
        desktop.atEnd = AtEnd::Release;
    }
    desktop.busyTimeoutSeconds = node.NumberOr("busyTimeout", desktop.busyTimeoutSeconds);
    return desktop;
}

void ReadFiles(const Node& node, const std::filesystem::path& folder, Scenario& scenario) {
    scenario.outputFolder = folder / "output";
    if (node.Has("output")) {
        const Node output = node.At("output");
        if (output.Has("folder")) {
            scenario.outputFolder = folder / PathFromUtf8(output.At("folder").Text());
        }
        if (output.Has("csv")) {
            scenario.csvFile = PathFromUtf8(output.At("csv").Text());
        }
    }
    scenario.projectFile = PathFromUtf8(node.At("project").At("file").Text());
    if (scenario.projectFile.stem().empty() || !scenario.projectFile.has_filename()) {
        node.At("project").At("file").Report("that is not the name of a file.");
    }
    scenario.overwrite = node.At("project").Has("overwrite") && node.At("project").At("overwrite").Flag();
    scenario.geometryFile = folder / PathFromUtf8(node.At("geometry").At("file").Text());
    scenario.units = node.At("geometry").At("units").Text();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(scenario.geometryFile, ignored)) {
        node.At("geometry").At("file").Report(fmt::format("there is no file {}.", Utf8FromPath(scenario.geometryFile)));
    }
}

Scenario BuildScenario(const Node& root, const std::filesystem::path& folder) {
    Scenario scenario;
    if (root.Has("title")) {
        scenario.title = root.At("title").Text();
    }
    if (root.Has("desktop")) {
        scenario.desktop = ReadDesktop(root.At("desktop"));
    }
    ReadFiles(root, folder, scenario);
    if (root.Has("materials")) {
        scenario.materials = ReadMaterials(root.At("materials"));
    }
    scenario.bodies = ReadBodies(root.At("bodies"));
    if (root.Has("joints")) {
        JointReader reader(scenario.bodies);
        for (const Node& joint : root.At("joints").Items()) {
            scenario.joints.push_back(reader.Read(joint));
        }
    }
    scenario.gravity_W = root.TripleOr("gravity", Vector::Zero());
    scenario.stepping = ReadStepping(root.At("solver"));
    scenario.warnings = CompareMaterials(root, scenario);
    return scenario;
}

} // namespace

Scenario ParseScenario(const std::string& text, const std::filesystem::path& file) {
    const std::string fileName = Utf8FromPath(file);
    // A byte order mark at the start is what some editors write.
    const std::string body = text.rfind("\xEF\xBB\xBF", 0) == 0 ? text.substr(3) : text;
    const JsonLocations locations = ReadJsonLocations(body, fileName);
    const auto document = nlohmann::json::parse(body, nullptr, true, true);
    CheckAgainstSchema(document, locations, fileName);
    Findings findings(locations, fileName);
    Scenario scenario = BuildScenario(Node(document, findings), file.parent_path());
    findings.ThrowIfAny();
    return scenario;
}

Scenario ReadScenario(const std::filesystem::path& file) {
    return ParseScenario(ReadFile(file), file);
}

} // namespace kinora::scenario
