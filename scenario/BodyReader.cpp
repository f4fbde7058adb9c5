#include "scenario/BodyReader.h"

#include "scenario/RotationReader.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <limits>
#include <map>
#include <string>

namespace kinora::scenario {
namespace {

Body ReadBody(const Node& node) {
    Body body;
    body.name = node.At("name").Text();
    for (const Node& object : node.At("objects").Items()) {
        body.objects.push_back(object.Text());
    }
    body.X_WB0.p_WB_W = node.PointAt("position");
    if (node.Has("rotation")) {
        body.X_WB0.R_WB = ReadRotation(node.At("rotation"));
    }
    body.mass = node.NotNegativeOr("mass", 0.0);
    body.p_BC_B = node.PointAt("centreOfMass");
    body.principalInertia_B = node.TripleOr("inertia", Vector::Zero());
    if ((body.principalInertia_B.array() < 0.0).any()) {
        node.At("inertia").Report("moments of inertia must be 0 or more.");
        body.principalInertia_B.setConstant(std::numeric_limits<double>::quiet_NaN());
    }
    return body;
}

} // namespace

std::vector<Body> ReadBodies(const Node& node, UniqueNames& names) {
    std::vector<Body> bodies;
    std::map<std::string, std::string> owners;
    for (const Node& item : node.Items()) {
        names.Add(item.At("name"), "body");
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

std::optional<std::size_t> FindBody(const Node& node, const std::vector<Body>& bodies) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        if (bodies[i].name == node.Text()) {
            return i;
        }
        names.push_back(bodies[i].name);
    }
    node.Report(fmt::format("there is no body \"{}\".{}", node.Text(), Suggestion(node.Text(), names)));
    return std::nullopt;
}

} // namespace kinora::scenario
