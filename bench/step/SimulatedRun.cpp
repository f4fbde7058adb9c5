#include "bench/step/SimulatedRun.h"

#include "programs/Environment.h"

#include <stdexcept>

namespace {

void Require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("simulated run: ") + what + " failed");
    }
}

} // namespace

SimulatedRun::SimulatedRun(const std::string& geometry, const std::string& version)
    : m_folder(std::filesystem::current_path() / ("bench-" + version)) {
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directory(m_folder);
    kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", version);
    m_bodies[0].transform.name = "lower";
    m_bodies[0].objects = {"lower_magnet"};
    m_bodies[1].transform.name = "upper";
    m_bodies[1].objects = {"upper_magnet"};
    m_bodies[1].transform.translation[2] = 0.012;
    const IKinoraVeltrixInterface::Material magnet = {"magnet_1T", {0, 0, 1}};
    Require(m_coupling.CreateProject(Project().string(), geometry, "mm"), "CreateProject");
    Require(m_coupling.InitMagneticObjects(m_bodies, {{"lower_magnet", magnet}, {"upper_magnet", magnet}}),
            "InitMagneticObjects");
}

SimulatedRun::~SimulatedRun() {
    m_coupling.QuitApplication();
    // What cannot be removed is left for the next run.
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void SimulatedRun::Step() {
    std::vector<IKinoraVeltrixInterface::Result> loads;
    int status = 0;
    m_bodies[1].transform.translation[2] += 0.0001;
    Require(m_coupling.Analyze(0.01 * m_step++, {m_bodies[0].transform, m_bodies[1].transform}, loads, status) &&
                loads.size() == 2,
            "a step");
}

void SimulatedRun::Save() {
    Require(m_coupling.SaveProject(), "SaveProject");
}
