#pragma once

#include <memory>

namespace kinora::fmu {

/// While it lives, this thread and the threads that it starts find the simulator within this binary, whatever is
/// registered on the machine. (Elsewhere than on Windows it is found in any case.)
class SimulatorContext {
public:
    /// @param isWanted   false: the machine's own desktops are found, as without it
    /// @throws FmuError  Windows does not take the manifest that lies beside the binary
    explicit SimulatorContext(bool isWanted);
    ~SimulatorContext();
    SimulatorContext(const SimulatorContext&) = delete;
    SimulatorContext& operator=(const SimulatorContext&) = delete;

private:
    /// Undone when it goes.
    std::shared_ptr<void> m_activation;
};

} // namespace kinora::fmu
