#include "scenario/JointReader.h"

#include "scenario/BodyReader.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace kinora::scenario {
namespace {

/// @param name  one that the schema allows
JointType TypeCalled(const std::string& name) {
    const std::array types = {JointType::Slider, JointType::Hinge, JointType::Cylinder, JointType::Ball,
                              JointType::Free};
    return *std::find_if(types.begin(), types.end(), [&name](JointType type) { return name == NameOf(type); });
}

} // namespace

Joint JointReader::Read(const Node& node) {
    Joint joint;
    ReadName(node, joint);
    ReadMembers(node.At("bodies"), joint);
    ReadPlace(node, joint);
    ReadMotion(node, joint);
    return joint;
}

void JointReader::ReadName(const Node& node, Joint& joint) {
    joint.name = node.At("name").Text();
    joint.type = TypeCalled(node.At("type").Text());
    if (joint.type == JointType::Slider || joint.type == JointType::Hinge) {
        m_names.Add(node.At("name"), "joint");
    } else {
        m_names.Add(node.At("name"), "joint", {"body"});
    }
}

/// Leaves out the bodies that there are not.
void JointReader::ReadMembers(const Node& node, Joint& joint) {
    for (const Node& item : node.Items()) {
        const std::optional<std::size_t> body = FindBody(item, m_bodies);
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

void JointReader::ReadPlace(const Node& node, Joint& joint) const {
    if (!joint.HasAxis()) {
        if (node.Has("axis")) {
            node.At("axis").Report("a ball and a free joint turn about every axis and have none; remove it.");
        }
    } else if (const std::optional<Node> axis = node.Required("axis")) {
        joint.axis_W = axis->Direction();
    }
    if (node.Has("point") && joint.type == JointType::Slider) {
        node.At("point").Report("a slider moves the same wherever its axis is and has no point; remove it.");
    } else if (joint.type == JointType::Free && !node.Has("point") && !joint.bodies.empty()) {
        joint.p_WJ_W = m_bodies[joint.bodies.front()].X_WB0.p_WB_W;
    } else {
        joint.p_WJ_W = node.PointAt("point");
    }
}

void JointReader::ReadMotion(const Node& node, Joint& joint) const {
    if (joint.type == JointType::Cylinder) {
        joint.coordinates = ReadCylinder(node);
        return;
    }
    const std::string motion = node.OnlyOneOf({"prescribed", "free"});
    if (motion.empty()) {
        return;
    }
    const Node inner = node.At(motion);
    if (joint.type == JointType::Slider) {
        joint.coordinates = {ReadCoordinate(inner, Coordinate::Kind::Slide, motion == "free", "a slider")};
    } else if (joint.type == JointType::Hinge) {
        joint.coordinates = {ReadCoordinate(inner, Coordinate::Kind::Turn, motion == "free", "a hinge")};
    } else if (motion == "free") {
        joint.placement = PlacementReader::ReadFree(inner, joint.type);
    } else {
        joint.placement = m_placements.ReadPrescribed(inner, joint.type);
    }
}

/// @param node  what stands under "prescribed" or "free"
Coordinate JointReader::ReadCoordinate(const Node& node, Coordinate::Kind kind, bool isFree,
                                       const std::string& owner) const {
    node.AllowOnly(isFree ? MotionReader::FreeKeys() : MotionReader::PrescribedKeys(), owner);
    Coordinate coordinate;
    coordinate.kind = kind;
    if (isFree) {
        coordinate.motion = MotionReader::ReadFree(node, kind);
    } else {
        coordinate.motion = m_motions.ReadPrescribed(node, kind);
    }
    return coordinate;
}

std::vector<Coordinate> JointReader::ReadCylinder(const Node& node) const {
    for (const char* motion : {"prescribed", "free"}) {
        if (node.Has(motion)) {
            node.At(motion).AllowOnly({"turn", "slide"}, "a cylinder");
        }
    }
    return {ReadOneOfCylinder(node, Coordinate::Kind::Turn), ReadOneOfCylinder(node, Coordinate::Kind::Slide)};
}

Coordinate JointReader::ReadOneOfCylinder(const Node& node, Coordinate::Kind kind) const {
    const char* const key = NameOf(kind);
    const auto stands = [&](const char* motion) { return node.Has(motion) && node.At(motion).Has(key); };
    const bool isFree = stands("free");
    const bool isPrescribed = stands("prescribed");
    const std::string owner = fmt::format("the {} of a cylinder", key);
    if (isFree && isPrescribed) {
        node.At("free").At(key).Report(fmt::format("{} stands in \"prescribed\" too; remove one of them.", owner));
    }
    if (!isFree && !isPrescribed) {
        node.Report(fmt::format("{} is missing; give \"{}\" in \"prescribed\" or in \"free\".", owner, key));
        return {kind, FreeMotion()};
    }
    return ReadCoordinate(node.At(isFree ? "free" : "prescribed").At(key), kind, isFree, owner);
}

} // namespace kinora::scenario
