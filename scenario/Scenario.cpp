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

bool Joint::IsFree() const {
    return HasAxis() ? std::any_of(coordinates.begin(), coordinates.end(),
                                   [](const Coordinate& coordinate) { return coordinate.IsFree(); })
                     : std::holds_alternative<FreePlacement>(placement);
}

} // namespace kinora::scenario
