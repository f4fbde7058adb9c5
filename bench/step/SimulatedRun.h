#pragma once

#include "coupling/KinoraVeltrixCoupling.h"

#include <filesystem>
#include <string>
#include <vector>

/// A run on the simulator: two cube magnets, "lower" and "upper", of which the upper one moves.
class SimulatedRun {
public:
    /// @param geometry  examples/cube-magnets/cube-magnets.obj
    /// @param version   of the desktop: "Simulator" for one in its own process, "SimulatorInProcess" for one in this
    explicit SimulatedRun(const std::string& geometry, const std::string& version = "Simulator");
    ~SimulatedRun();
    SimulatedRun(const SimulatedRun&) = delete;
    SimulatedRun& operator=(const SimulatedRun&) = delete;

    void Step();
    /// Saves the project, so that other clients of the simulator may open it.
    void Save();

    std::filesystem::path Project() const { return m_folder / "Bench.vantor"; }

private:
    std::filesystem::path m_folder;
    CKinoraVeltrixCoupling m_coupling;
    std::vector<IKinoraVeltrixInterface::Group> m_bodies{2};
    int m_step = 0;
};
