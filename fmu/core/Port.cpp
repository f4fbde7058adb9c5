#include "fmu/core/Port.h"

namespace kinora::fmu {

using namespace scenario;

namespace {

Port PortOf(const Joint& joint) {
    Port port;
    port.name = joint.name;
    port.type = joint.type;
    port.axis_W = joint.axis_W;
    port.p_WJ_W = joint.p_WJ_W;
    port.bodies = joint.bodies;
    return port;
}

} // namespace

Pose MovedBy(const Port& port, const Movement& movement, const Pose& drawn) {
    const Matrix turn_W = movement.turn.toRotationMatrix();
    return {port.p_WJ_W + movement.displacement_W + turn_W * (drawn.p_WB_W - port.p_WJ_W), turn_W * drawn.R_WB};
}

double StartOf(const Joint& joint, Coordinate::Kind kind) {
    for (const Coordinate& coordinate : joint.coordinates) {
        if (coordinate.kind == kind) {
            const auto* free = std::get_if<FreeMotion>(&coordinate.motion);
            return free ? free->start : std::get<PrescribedMotion>(coordinate.motion).Evaluate(0.0);
        }
    }
    return 0.0;
}

Movement StartOf(const Joint& joint) {
    if (joint.HasAxis()) {
        return {StartOf(joint, Coordinate::Kind::Slide) * joint.axis_W,
                TurnBy(StartOf(joint, Coordinate::Kind::Turn) * joint.axis_W)};
    }
    if (const auto* free = std::get_if<FreePlacement>(&joint.placement)) {
        return {free->way_W, free->turn};
    }
    const auto& prescribed = std::get<PrescribedPlacement>(joint.placement);
    const auto way = [&](std::size_t axis) { return prescribed.way[axis].Evaluate(0.0); };
    return {{way(0), way(1), way(2)}, prescribed.turn.Evaluate(0.0)};
}

std::vector<Pose> StartPoses(const Scenario& scenario) {
    std::vector<Pose> poses;
    for (const Body& body : scenario.bodies) {
        poses.push_back(body.X_WB0);
    }
    for (const Joint& joint : scenario.joints) {
        for (const std::size_t body : joint.bodies) {
            poses[body] = MovedBy(PortOf(joint), StartOf(joint), poses[body]);
        }
    }
    return poses;
}

std::vector<Port> JointPorts(const Scenario& scenario) {
    std::vector<Port> ports;
    for (const Joint& joint : scenario.joints) {
        ports.push_back(PortOf(joint));
    }
    return ports;
}

std::vector<Port> BodyPorts(const Scenario& scenario) {
    std::vector<Port> ports;
    for (std::size_t i = 0; i < scenario.bodies.size(); ++i) {
        const Body& body = scenario.bodies[i];
        Port port;
        port.name = body.name;
        port.isBody = true;
        port.p_WJ_W = body.X_WB0.p_WB_W;
        port.R_WJ0 = body.X_WB0.R_WB;
        port.bodies = {i};
        ports.push_back(port);
    }
    return ports;
}

} // namespace kinora::fmu
