#pragma once

#include <cstddef>

/// How many handles a process has open. (`GetProcessHandleCount` always says 0 under Wine.)
/// @param processId  as the system counts them
/// @return 0 when the system does not say
std::size_t OpenHandles(unsigned long processId);
