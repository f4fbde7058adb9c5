#include "scenario/JointReader.h"

#include "scenario/Text.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kinora::scenario {
namespace {

/// A coordinate of a joint, if it is there.
double CoordinateOr(const Node& node, const char* key, JointType type, double fallback) {
    return type == JointType::Slider ? node.LengthOr(key, fallback) : node.NumberOr(key, fallback);
}

MotionTable ReadTable(const Node& node, JointType type) {
    MotionTable table;
    for (const Node& row : node.Items()) {
        const double time = row.At(0).Number();
        if (!table.rows.empty() && time <= table.rows.back().first) {
            row.Report(
                fmt::format("time {} s does not come after {} s; times must ascend.", time, table.rows.back().first));
        }
        table.rows.emplace_back(time, type == JointType::Slider ? row.At(1).Length() : row.At(1).Number());
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

/// @param start  the coordinate at time 0
Expression ReadLoad(const Node& node, double start) {
    const auto load = node.Formula(Expression::Variables::TimeAndCoordinate);
    if (!load) {
        return Expression();
    }
    // A start that is wrong has been told.
    if (!std::isnan(start) && !std::isfinite(load->Evaluate(0.0, start))) {
        node.Report(fmt::format("\"{}\" is not a finite number at 0 s with q = {}, where the joint starts.",
                                load->Formula(), start));
    }
    return *load;
}

FreeMotion ReadFreeMotion(const Node& node, JointType type) {
    FreeMotion motion;
    motion.start = CoordinateOr(node, "start", type, 0.0);
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
        motion.load = ReadLoad(node.At("load"), motion.start);
    }
    return motion;
}

/// About the axis of a hinge.
double MomentOfInertia(const Body& body, const Joint& hinge) {
    const auto& [p_WB_W, R_WB] = body.X_WB0;
    const Vector axis_B = R_WB.transpose() * hinge.axis_W;
    const Vector p_JC_W = p_WB_W + R_WB * body.p_BC_B - hinge.p_WJ_W;
    return axis_B.cwiseAbs2().dot(body.principalInertia_B) + body.mass * p_JC_W.cross(hinge.axis_W).squaredNorm();
}

} // namespace

Joint JointReader::Read(const Node& node) {
    m_names.Add(node.At("name"));
    Joint joint;
    joint.name = node.At("name").Text();
    joint.type = node.At("type").Text() == "slider" ? JointType::Slider : JointType::Hinge;
    joint.axis_W = node.At("axis").Direction();
    if (node.Has("point") && joint.type == JointType::Slider) {
        node.At("point").Report("only a hinge has a point on its axis; remove it.");
    } else {
        joint.p_WJ_W = node.PointAt("point");
    }
    ReadMembers(node.At("bodies"), joint);
    if (node.Has("prescribed")) {
        joint.motion = ReadPrescribed(node.At("prescribed"), joint.type);
    } else {
        joint.motion = ReadFreeMotion(node.At("free"), joint.type);
    }
    CheckInertia(node, joint);
    return joint;
}

PrescribedMotion JointReader::ReadPrescribed(const Node& node, JointType type) const {
    return node.Has("table") ? PrescribedMotion(ReadTable(node.At("table"), type))
                             : ReadFormula(node.At("expression"), type);
}

/// A formula that gives a coordinate at every step, as far as that can be looked at in no time.
PrescribedMotion JointReader::ReadFormula(const Node& node, JointType type) const {
    constexpr int mostSteps = 100000;
    const Expression formula = node.Formula(Expression::Variables::Time).value_or(Expression());
    for (int step = 0; step <= std::min(m_stepping.steps, mostSteps); ++step) {
        const double time = m_stepping.TimeOf(step);
        const double coordinate = formula.Evaluate(time);
        if (!std::isfinite(coordinate)) {
            node.Report(fmt::format("\"{}\" is not a finite number at {} s.", formula.Formula(), time));
            break;
        }
        if (type == JointType::Slider && std::fabs(coordinate) > farthestMetres) {
            node.Report(fmt::format("at {} s, {}", time, TooFarText(coordinate)));
            break;
        }
    }
    return PrescribedMotion(formula);
}

/// Leaves out the bodies that there are not.
void JointReader::ReadMembers(const Node& node, Joint& joint) {
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

std::optional<std::size_t> JointReader::BodyIndex(const Node& node) const {
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
void JointReader::CheckInertia(const Node& node, const Joint& joint) const {
    const auto* motion = std::get_if<FreeMotion>(&joint.motion);
    // What a body that there is not would have is not known.
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

} // namespace kinora::scenario
