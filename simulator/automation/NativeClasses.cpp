// The classes of a process that has the simulator compiled in.
#include "platform/ClassTable.h"
#include "simulator/automation/ClassIds.h"
#include "simulator/automation/InProcess.h"

namespace vantor::automation {
namespace {

/// Under both names: there is no other process to run the simulator in.
const platform::RegisteredClass simulator(simulatorProgId, inProcessClassId, GetInProcessClassObject);
const platform::RegisteredClass inProcess(inProcessProgId, inProcessClassId, GetInProcessClassObject);

} // namespace
} // namespace vantor::automation
