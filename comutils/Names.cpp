#include "comutils/Names.h"

#include <algorithm>

namespace Names {

std::string ObjectFrame(const std::string& body) {
    return "Obj_CS_" + body;
}

std::string MagnetFrame(const std::string& body) {
    return "Mag_CS_" + body;
}

std::string Force(const std::string& body) {
    return "Force_" + body;
}

std::string Torque(const std::string& body) {
    return "Torque_" + body;
}

std::string ForceQuantity(const std::string& body, int axis) {
    static constexpr const char* components[] = {".Force_x", ".Force_y", ".Force_z"};
    return Force(body) + components[axis];
}

std::string TorqueQuantity(const std::string& body, int axis) {
    return Torque(body) + axes[axis] + ".Torque";
}

std::map<std::string, std::string> OutputVariables(const std::string& body) {
    std::map<std::string, std::string> expressions;
    for (int axis = 0; axis < 3; ++axis) {
        expressions[Force(body) + axes[axis]] = ForceQuantity(body, axis) + "/1" + newtonUnit;
        expressions[Torque(body) + axes[axis]] = TorqueQuantity(body, axis) + "/1" + torqueUnit;
    }
    return expressions;
}

std::string Solution(const std::string& setup) {
    return setup + " : LastAdaptive";
}

std::string Block(std::string_view name) {
    return std::string("NAME:").append(name);
}

bool Contains(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace Names
