#pragma once

#include <string>
#include <vector>

namespace kinora::report {

/// The head line of a log with these bodies, without its end.
inline std::string HeadLine(const std::vector<std::string>& bodies) {
    std::string line = "Step,SimTime";
    for (const std::string& body : bodies) {
        for (const char* suffix : {"_X", "_Y", "_Z", "_Phi", "_Theta", "_Psi"}) {
            line += "," + body + suffix;
        }
        for (const char* load : {"Force_", "Torque_"}) {
            for (const char* suffix : {"_X", "_Y", "_Z"}) {
                line += "," + (load + body) + suffix;
            }
        }
    }
    return line;
}

/// A step's line for one body whose twelve values are 1 to 12 times a factor, without its end.
inline std::string StepLine(int step, const std::string& time, int factor = 1) {
    std::string line = std::to_string(step) + "," + time;
    for (int i = 1; i <= 12; ++i) {
        line += "," + std::to_string(i * factor);
    }
    return line;
}

} // namespace kinora::report
