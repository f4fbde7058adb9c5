#include "scenario/Scenario.h"

#include <algorithm>

namespace kinora::scenario {

const char* NameOf(JointType type) {
    switch (type) {
    case JointType::Slider:
        return "slider";
    case JointType::Hinge:
        return "hinge";
    case JointType::Cylinder:
        return "cylinder";
    case JointType::Ball:
        return "ball";
    case JointType::Free:
        return "free";
    }
    return "joint";
}

const char* NameOf(Coordinate::Kind kind) {
    return kind == Coordinate::Kind::Turn ? "turn" : "slide";
}

const char* NameOf(Take take) {
    switch (take) {
    case Take::Last:
        return "last";
    case Take::Least:
        return "least";
    case Take::Greatest:
        return "greatest";
    case Take::Mean:
        return "mean";
    case Take::At:
        return "at";
    }
    return "last";
}

bool Joint::IsFree() const {
    return HasAxis() ? std::any_of(coordinates.begin(), coordinates.end(),
                                   [](const Coordinate& coordinate) { return coordinate.IsFree(); })
                     : std::holds_alternative<FreePlacement>(placement);
}

std::vector<std::optional<std::size_t>> Scenario::JointOfEachBody() const {
    std::vector<std::optional<std::size_t>> jointOfBody(bodies.size());
    for (std::size_t joint = 0; joint < joints.size(); ++joint) {
        for (const std::size_t body : joints[joint].bodies) {
            jointOfBody[body] = joint;
        }
    }
    return jointOfBody;
}

} // namespace kinora::scenario
