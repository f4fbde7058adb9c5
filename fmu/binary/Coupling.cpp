#include "fmu/binary/Coupling.h"

#include "fmu/binary/Errors.h"
#include "fmu/binary/SimulatorContext.h"
#include "programs/Paths.h"
#include "scenario/Text.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <system_error>

namespace kinora::fmu {

using namespace scenario;

namespace {

using RowMajor = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

/// Rows are the body's axes.
void SetRotation(double (&rotation)[9], const Matrix& R_WB) {
    Eigen::Map<RowMajor> rows(&rotation[0]);
    rows = R_WB.transpose();
}

/// For names of folders.
std::string Plain(std::string name) {
    std::replace_if(
        name.begin(), name.end(),
        [](char letter) {
            return std::string("<>:\"/\\|?*.").find(letter) != std::string::npos ||
                   static_cast<unsigned char>(letter) < ' ';
        },
        '_');
    return name;
}

/// A folder that was not there: of two runs that begin at once each gets its own.
std::filesystem::path MakeNewFolder(const std::filesystem::path& parent, const std::string& name) {
    constexpr int mostRuns = 100000;
    std::error_code error;
    std::filesystem::create_directories(parent, error);
    for (int run = 1; !error && run < mostRuns; ++run) {
        std::filesystem::path folder =
            parent / PathFromUtf8(run == 1 ? Plain(name) : fmt::format("{}-{}", Plain(name), run));
        if (std::filesystem::create_directory(folder, error)) {
            return folder;
        }
        if (error == std::errc::file_exists) { // as a file
            error.clear();
        }
    }
    throw FmuError(fmt::format("No folder can be made in {} ({}): set the parameter outputFolder to one that can be "
                               "written.",
                               Utf8FromPath(parent), error.message()));
}

} // namespace

Coupling::Coupling(const Scenario& scenario, const CouplingSettings& settings)
    : m_scenario(scenario),
      m_folder(MakeNewFolder(programs::AbsolutePath(settings.outputFolder), settings.instanceName)) {
    try {
        Connect(settings);
        BuildModel();
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(m_folder, ignored); // with nothing in it
        throw;
    }
}

Coupling::~Coupling() = default;

void Coupling::Check(kv_status status) const {
    if (status == KV_OK) {
        return;
    }
    const char* text = "";
    kv_error_text(m_handle.get(), &text);
    throw FmuError(text);
}

void Coupling::Connect(const CouplingSettings& settings) {
    // The handle's thread takes the context over from the one that makes it.
    const SimulatorContext context(settings.bringsSimulator);
    const kv_options options = {sizeof(kv_options), settings.busyWaitMilliseconds, 0};
    kv_coupling* handle = nullptr;
    Check(kv_new(KV_API_VERSION, &options, &handle));
    m_handle.reset(handle);
    Check(kv_launch(handle, settings.desktopVersion.c_str()));
    const std::filesystem::path project = m_folder / m_scenario.projectFile.filename();
    Check(kv_create_project(handle, Utf8FromPath(project).c_str(), Utf8FromPath(m_scenario.geometryFile).c_str(),
                            m_scenario.units.c_str()));
}

void Coupling::BuildModel() {
    std::vector<std::vector<const char*>> objects;
    for (const Body& body : m_scenario.bodies) {
        objects.emplace_back();
        for (const std::string& object : body.objects) {
            objects.back().push_back(object.c_str());
        }
    }
    std::vector<kv_group> groups;
    for (std::size_t i = 0; i < m_scenario.bodies.size(); ++i) {
        const Body& body = m_scenario.bodies[i];
        kv_group group = {sizeof(kv_group), body.name.c_str(), {}, {}, objects[i].data(), objects[i].size()};
        Eigen::Map<Vector>(&group.position[0]) = body.X_WB0.p_WB_W;
        SetRotation(group.rotation, body.X_WB0.R_WB);
        groups.push_back(group);
        m_poses.push_back({sizeof(kv_pose), body.name.c_str(), {}, {}});
        m_loads.push_back({sizeof(kv_load), {}, {}});
    }
    std::vector<kv_material> materials;
    for (const auto& [object, material] : m_scenario.materials) {
        kv_material wanted = {sizeof(kv_material), object.c_str(), material.name.c_str(), {}};
        std::copy(std::begin(material.coercivityDirection), std::end(material.coercivityDirection),
                  std::begin(wanted.coercivity_direction));
        materials.push_back(wanted);
    }
    Check(kv_init_magnetic_objects(m_handle.get(), groups.data(), groups.size(), materials.data(), materials.size()));
}

Solution Coupling::Solve(double time, const std::vector<Pose>& poses, std::int32_t& status) {
    for (std::size_t i = 0; i < poses.size(); ++i) {
        Eigen::Map<Vector>(&m_poses[i].position[0]) = poses[i].p_WB_W;
        SetRotation(m_poses[i].rotation, poses[i].R_WB);
    }
    std::size_t count = 0;
    const auto begin = std::chrono::steady_clock::now();
    Check(kv_analyze(m_handle.get(), time, m_poses.data(), m_poses.size(), m_loads.data(), &count, &status));
    Solution solution;
    solution.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    for (std::size_t i = 0; i < poses.size(); ++i) {
        const Matrix& R_WB = poses[i].R_WB;
        solution.loads.push_back({R_WB * Eigen::Map<const Vector>(&m_loads[i].force[0]),
                                  R_WB * Eigen::Map<const Vector>(&m_loads[i].torque[0])});
    }
    return solution;
}

void Coupling::Finish() {
    try {
        Check(kv_save_project(m_handle.get()));
    } catch (const FmuError&) {
        // Left open, it would be in the way of a further run.
        kv_close_project(m_handle.get());
        throw;
    }
    Check(kv_close_project(m_handle.get()));
}

} // namespace kinora::fmu
