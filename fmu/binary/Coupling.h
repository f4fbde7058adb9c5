#pragma once

#include "capi/kinora_veltrix.h"
#include "fmu/core/Model.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kinora::fmu {

/// What a coupling is begun with.
struct CouplingSettings {
    /// UTF-8; empty for the installed desktop.
    std::string desktopVersion;
    std::uint32_t busyWaitMilliseconds = 0;
    /// Where the run's own folder is made, named after the instance.
    std::filesystem::path outputFolder;
    std::string instanceName;
    bool bringsSimulator = false;
};

/// What a solve gave.
struct Solution {
    /// In the scenario's order.
    std::vector<scenario::Load> loads;
    double milliseconds = 0.0;
};

/// One coupled run through the C interface: project, field model, a solve per step.
///
/// What fails throws FmuError with the whole text of the C interface.
class Coupling {
public:
    /// Starts the desktop, makes the project in a new folder and builds the field model.
    Coupling(const scenario::Scenario& scenario, const CouplingSettings& settings);
    /// Lets go of the desktop; nothing is saved.
    ~Coupling();
    Coupling(const Coupling&) = delete;
    Coupling& operator=(const Coupling&) = delete;

    /// The folder of this run.
    const std::filesystem::path& Folder() const { return m_folder; }

    /// @param time    in seconds; 0 exactly for the first solve, and for the first of a run that starts anew
    /// @param poses   in the scenario's order
    /// @param status  the solver's, also of a solve that fails
    Solution Solve(double time, const std::vector<scenario::Pose>& poses, std::int32_t& status);

    /// Saves and closes the project; closes it also where it cannot be saved.
    void Finish();

private:
    struct Delete {
        void operator()(kv_coupling* handle) const { kv_delete(handle); }
    };

    void Check(kv_status status) const;
    void Connect(const CouplingSettings& settings);
    void BuildModel();

    const scenario::Scenario& m_scenario;
    std::filesystem::path m_folder;
    std::unique_ptr<kv_coupling, Delete> m_handle;
    std::vector<kv_pose> m_poses;
    std::vector<kv_load> m_loads;
};

} // namespace kinora::fmu
