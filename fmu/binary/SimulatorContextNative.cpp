// Where there is no registry, the class is in the process's table from the start.
#include "fmu/binary/SimulatorContext.h"

namespace kinora::fmu {

SimulatorContext::SimulatorContext(bool /*isWanted*/) {}

SimulatorContext::~SimulatorContext() = default;

} // namespace kinora::fmu
