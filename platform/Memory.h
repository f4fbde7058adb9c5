#pragma once

#include <cstddef>

/// The memory of automation values, which a spy may watch (CoRegisterMallocSpy).
namespace platform {

/// @return null when there is none left
void* Allocate(std::size_t bytes);

/// @param block  from Allocate; null does nothing
void Free(void* block);

} // namespace platform
