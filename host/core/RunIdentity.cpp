#include "host/core/RunIdentity.h"

#include "scenario/Text.h"

#include <cstdint>
#include <fmt/format.h>
#include <set>

namespace kinora::host {

using namespace scenario;

namespace {

std::string Numbers(const Vector& vector) {
    return fmt::format("{}, {}, {}", vector.x(), vector.y(), vector.z());
}

/// Size and 64-bit FNV-1a hash: tells a changed file from the same one, not a forged one.
std::string Digest(const std::string& content) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : content) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
    return fmt::format("{} bytes with digest {:016x}", content.size(), hash);
}

void AddMaterials(const Scenario& scenario, RunIdentity& identity) {
    for (const auto& [object, material] : scenario.materials) {
        const double* direction = material.coercivityDirection;
        identity["/materials/" + object + "/name"] = material.name;
        identity["/materials/" + object + "/direction"] = Numbers({direction[0], direction[1], direction[2]});
    }
}

void AddBodies(const Scenario& scenario, RunIdentity& identity) {
    std::vector<std::string> names;
    for (const Body& body : scenario.bodies) {
        const std::string key = "/bodies/" + body.name;
        names.push_back(body.name);
        identity[key + "/objects"] = fmt::format("{}", fmt::join(body.objects, ", "));
        identity[key + "/position"] = Numbers(body.X_WB0.p_WB_W);
        // Rows of R_WB.
        const Matrix& axes = body.X_WB0.R_WB;
        identity[key + "/rotation"] =
            fmt::format("{}; {}; {}", Numbers(axes.row(0)), Numbers(axes.row(1)), Numbers(axes.row(2)));
        identity[key + "/mass"] = fmt::format("{}", body.mass);
        identity[key + "/centreOfMass"] = Numbers(body.p_BC_B);
        identity[key + "/inertia"] = Numbers(body.principalInertia_B);
    }
    // Their order is that of the columns.
    identity["/bodies"] = fmt::format("{}", fmt::join(names, ", "));
}

void AddFreeMotion(const FreeMotion& motion, const std::string& key, RunIdentity& identity) {
    const auto add = [&](const char* name, double value) { identity[key + name] = fmt::format("{}", value); };
    add("/start", motion.start);
    add("/speed", motion.speed);
    add("/inertia", motion.addedInertia);
    add("/spring/stiffness", motion.spring.stiffness);
    add("/spring/rest", motion.spring.rest);
    add("/damping", motion.damping);
    add("/friction", motion.friction);
    add("/stops/min", motion.stops.min);
    add("/stops/max", motion.stops.max);
    add("/stops/restitution", motion.stops.restitution);
    identity[key + "/load"] = motion.load.Formula();
}

void AddJoints(const Scenario& scenario, RunIdentity& identity) {
    std::vector<std::string> names;
    for (const Joint& joint : scenario.joints) {
        const std::string key = "/joints/" + joint.name;
        std::vector<std::string> bodies;
        for (const std::size_t body : joint.bodies) {
            bodies.push_back(scenario.bodies[body].name);
        }
        names.push_back(joint.name);
        identity[key + "/type"] = joint.type == JointType::Slider ? "slider" : "hinge";
        identity[key + "/axis"] = Numbers(joint.axis_W);
        identity[key + "/point"] = Numbers(joint.p_WJ_W);
        identity[key + "/bodies"] = fmt::format("{}", fmt::join(bodies, ", "));
        if (const auto* motion = std::get_if<FreeMotion>(&joint.motion)) {
            AddFreeMotion(*motion, key + "/free", identity);
        } else {
            const std::string definition = std::get<PrescribedMotion>(joint.motion).Definition();
            // A table may have thousands of rows, and this is written at every step.
            identity[key + "/prescribed"] = definition.size() > 200 ? Digest(definition) : definition;
        }
    }
    identity["/joints"] = fmt::format("{}", fmt::join(names, ", "));
}

} // namespace

RunIdentity IdentityOf(const Scenario& scenario) {
    RunIdentity identity;
    identity["/geometry/file"] = Digest(ReadFile(scenario.geometryFile));
    identity["/geometry/units"] = scenario.units;
    identity["/gravity"] = Numbers(scenario.gravity_W);
    identity["/solver/step"] = fmt::format("{}", scenario.stepping.stepSeconds);
    AddMaterials(scenario, identity);
    AddBodies(scenario, identity);
    AddJoints(scenario, identity);
    return identity;
}

std::vector<std::string> Differences(const RunIdentity& before, const RunIdentity& now) {
    std::set<std::string> keys;
    for (const RunIdentity* side : {&before, &now}) {
        for (const auto& entry : *side) {
            keys.insert(entry.first);
        }
    }
    const auto value = [](const RunIdentity& side, const std::string& key) {
        const auto found = side.find(key);
        return found == side.end() ? std::string("nothing") : found->second;
    };
    std::vector<std::string> lines;
    for (const std::string& key : keys) {
        if (value(before, key) != value(now, key)) {
            lines.push_back(fmt::format("{} was {}, is {}", key, value(before, key), value(now, key)));
        }
    }
    return lines;
}

} // namespace kinora::host
