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

/// Three rows.
std::string Numbers(const Matrix& matrix) {
    return fmt::format("{}; {}; {}", Numbers(Vector(matrix.row(0))), Numbers(Vector(matrix.row(1))),
                       Numbers(Vector(matrix.row(2))));
}

std::string Number(double value) {
    return fmt::format("{}", value);
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
        identity["/materials/" + object + "/direction"] = Numbers(Vector(direction[0], direction[1], direction[2]));
    }
}

void AddBodies(const Scenario& scenario, RunIdentity& identity) {
    std::vector<std::string> names;
    for (const Body& body : scenario.bodies) {
        const std::string key = "/bodies/" + body.name;
        names.push_back(body.name);
        identity[key + "/objects"] = fmt::format("{}", fmt::join(body.objects, ", "));
        identity[key + "/position"] = Numbers(body.X_WB0.p_WB_W);
        identity[key + "/rotation"] = Numbers(body.X_WB0.R_WB);
        identity[key + "/mass"] = Number(body.mass);
        identity[key + "/centreOfMass"] = Numbers(body.p_BC_B);
        identity[key + "/inertia"] = Numbers(body.principalInertia_B);
    }
    // Their order is that of the columns.
    identity["/bodies"] = fmt::format("{}", fmt::join(names, ", "));
}

/// A table may have thousands of rows, and this is written at every step.
std::string Shortened(const std::string& definition) {
    return definition.size() > 200 ? Digest(definition) : definition;
}

void AddFreeMotion(const FreeMotion& motion, const std::string& key, RunIdentity& identity) {
    identity[key + "/start"] = Number(motion.start);
    identity[key + "/speed"] = Number(motion.speed);
    identity[key + "/inertia"] = Number(motion.addedInertia);
    identity[key + "/spring/stiffness"] = Number(motion.spring.stiffness);
    identity[key + "/spring/rest"] = Number(motion.spring.rest);
    identity[key + "/damping"] = Number(motion.damping);
    identity[key + "/friction"] = Number(motion.friction);
    identity[key + "/stops/min"] = Number(motion.stops.min);
    identity[key + "/stops/max"] = Number(motion.stops.max);
    identity[key + "/stops/restitution"] = Number(motion.stops.restitution);
    identity[key + "/load"] = motion.load.Formula();
}

void AddCoordinates(const Joint& joint, const std::string& key, RunIdentity& identity) {
    for (const Coordinate& coordinate : joint.coordinates) {
        const std::string part =
            joint.type == JointType::Cylinder ? fmt::format("/{}", NameOf(coordinate.kind)) : std::string();
        if (const auto* motion = std::get_if<FreeMotion>(&coordinate.motion)) {
            AddFreeMotion(*motion, fmt::format("{}/free{}", key, part), identity);
        } else {
            identity[fmt::format("{}/prescribed{}", key, part)] =
                Shortened(std::get<PrescribedMotion>(coordinate.motion).Definition());
        }
    }
}

void AddStart(const Joint& joint, const std::string& key, RunIdentity& identity) {
    if (const auto* start = std::get_if<FreePlacement>(&joint.placement)) {
        identity[key + "/free/displacement"] = Numbers(start->way_W);
        identity[key + "/free/turn"] =
            fmt::format("{}, {}", Number(start->turn.w()), Numbers(Vector(start->turn.vec())));
        identity[key + "/free/velocity"] = Numbers(start->velocity_W);
        identity[key + "/free/angularVelocity"] = Numbers(start->angularVelocity_W);
        identity[key + "/free/damping"] = Number(start->damping);
        identity[key + "/free/angularDamping"] = Number(start->angularDamping);
        return;
    }
    const auto& motion = std::get<PrescribedPlacement>(joint.placement);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        identity[fmt::format("{}/prescribed/{}", key, "xyz"[axis])] = Shortened(motion.way[axis].Definition());
    }
    identity[key + "/prescribed/turn"] = Shortened(motion.turn.Definition());
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
        identity[key + "/type"] = NameOf(joint.type);
        identity[key + "/point"] = Numbers(joint.p_WJ_W);
        identity[key + "/bodies"] = fmt::format("{}", fmt::join(bodies, ", "));
        if (joint.HasAxis()) {
            identity[key + "/axis"] = Numbers(joint.axis_W);
            AddCoordinates(joint, key, identity);
        } else {
            AddStart(joint, key, identity);
        }
    }
    identity["/joints"] = fmt::format("{}", fmt::join(names, ", "));
}

void AddAttachment(const Scenario& scenario, const Attachment& attachment, const std::string& key,
                   RunIdentity& identity) {
    identity[key + "/body"] = attachment.body ? scenario.bodies[*attachment.body].name : "the ground";
    identity[key + "/point"] = Numbers(attachment.X_BF.p_WB_W);
    identity[key + "/rotation"] = Numbers(attachment.X_BF.R_WB);
}

void AddElements(const Scenario& scenario, RunIdentity& identity) {
    for (const SpringElement& spring : scenario.springs) {
        const std::string key = "/springs/" + spring.name;
        AddAttachment(scenario, spring.from, key + "/from", identity);
        AddAttachment(scenario, spring.to, key + "/to", identity);
        identity[key + "/stiffness"] = Number(spring.stiffness);
        identity[key + "/damping"] = Number(spring.damping);
        identity[key + "/length"] = Number(spring.length);
    }
    for (const Bushing& bushing : scenario.bushings) {
        const std::string key = "/bushings/" + bushing.name;
        AddAttachment(scenario, bushing.from, key + "/from", identity);
        AddAttachment(scenario, bushing.to, key + "/to", identity);
        identity[key + "/stiffness"] = Numbers(bushing.stiffness);
        identity[key + "/damping"] = Numbers(bushing.damping);
        identity[key + "/angularStiffness"] = Numbers(bushing.angularStiffness);
        identity[key + "/angularDamping"] = Numbers(bushing.angularDamping);
    }
}

std::string Formulas(const std::array<Expression, 3>& formulas) {
    return fmt::format("{}, {}, {}", formulas[0].Formula(), formulas[1].Formula(), formulas[2].Formula());
}

void AddLoads(const Scenario& scenario, RunIdentity& identity) {
    for (std::size_t i = 0; i < scenario.loads.size(); ++i) {
        const AppliedLoad& load = scenario.loads[i];
        const std::string key = fmt::format("/loads/{}", i);
        identity[key + "/body"] = scenario.bodies[load.body].name;
        identity[key + "/force"] = Formulas(load.force);
        identity[key + "/torque"] = Formulas(load.torque);
        identity[key + "/axes"] = load.isInBodyAxes ? "body" : "global";
        identity[key + "/point"] = Numbers(load.p_BP_B);
    }
}

} // namespace

RunIdentity IdentityOf(const Scenario& scenario) {
    RunIdentity identity;
    identity["/geometry/file"] = Digest(ReadFile(scenario.geometryFile));
    identity["/geometry/units"] = scenario.units;
    identity["/gravity"] = Numbers(scenario.gravity_W);
    identity["/solver/step"] = Number(scenario.stepping.stepSeconds);
    AddMaterials(scenario, identity);
    AddBodies(scenario, identity);
    AddJoints(scenario, identity);
    AddElements(scenario, identity);
    AddLoads(scenario, identity);
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
