#include "host/core/StatesCsv.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fmt/format.h>

namespace kinora::host {

using namespace scenario;

namespace {

std::string Header(const Scenario& scenario) {
    std::string header = "Step,Time [s]";
    for (const Body& body : scenario.bodies) {
        for (const char* column : {"X [m]", "Y [m]", "Z [m]", "Force_x [N]", "Force_y [N]", "Force_z [N]",
                                   "Torque_x [mN m]", "Torque_y [mN m]", "Torque_z [mN m]"}) {
            header += fmt::format(",{}.{}", body.name, column);
        }
    }
    for (const Joint& joint : scenario.joints) {
        const bool isSlider = joint.type == JointType::Slider;
        const char* force = isSlider ? "N" : "N m";
        header += fmt::format(",{0}.Coordinate [{1}],{0}.Speed [{1}/s],{0}.Field force [{2}],{0}.Load [{2}]",
                              joint.name, isSlider ? "m" : "rad", force);
        for (const char* column : {"Kinetic", "Potential", "Field work", "Load work", "Dissipated", "Imbalance"}) {
            header += fmt::format(",{}.{} [J]", joint.name, column);
        }
    }
    return header + "\n";
}

} // namespace

StatesCsv::StatesCsv(const std::filesystem::path& file, const Scenario& scenario, bool goesOn) : m_file(file) {
    for (const Joint& joint : scenario.joints) {
        m_isFree.push_back(joint.IsFree());
    }
    std::error_code error;
    const bool hasHeader = goesOn && std::filesystem::file_size(file, error) > 0 && !error;
    m_stream.open(file, std::ios::binary | (hasHeader ? std::ios::app : std::ios::trunc));
    m_stream << (hasHeader ? "" : Header(scenario)) << std::flush;
    if (!m_stream) {
        throw RunError(
            fmt::format("{}: cannot be written; close it elsewhere and check the folder.", Utf8FromPath(m_file)));
    }
}

void StatesCsv::Append(const StepRecord& record) {
    std::string line = fmt::format("{},{}", record.step, record.time);
    for (std::size_t body = 0; body < record.poses.size(); ++body) {
        const Vector& p_WB_W = record.poses[body].p_WB_W;
        const auto& result = record.results[body];
        line += fmt::format(",{},{},{}", p_WB_W.x(), p_WB_W.y(), p_WB_W.z());
        line += fmt::format(",{},{},{}", result.force[0], result.force[1], result.force[2]);
        line += fmt::format(",{},{},{}", result.torque[0], result.torque[1], result.torque[2]);
    }
    for (std::size_t i = 0; i < record.joints.size(); ++i) {
        const JointRecord& joint = record.joints[i];
        const EnergyAccount& energy = joint.energy;
        line += fmt::format(",{},{},{},{}", joint.state.coordinate, joint.state.speed, joint.fieldForce, joint.load);
        line += fmt::format(",{},{},{},{},{},", energy.kinetic, energy.potential, energy.fieldWork, energy.loadWork,
                            energy.dissipated);
        // What drives a prescribed joint is not in the books, so they cannot close.
        line += m_isFree[i] ? fmt::format("{}", energy.Imbalance()) : std::string();
    }
    m_stream << line << '\n' << std::flush;
    if (!m_stream) {
        throw RunError(fmt::format("{}: cannot be written; is the disk full?", Utf8FromPath(m_file)));
    }
}

} // namespace kinora::host
