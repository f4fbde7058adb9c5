#pragma once

#include "capi/Handle.h"

#include <memory>

namespace kinora::capi::Handles {

/// All handles of the process. What a caller gets is a number that is never given twice, not an address: whatever comes
/// in as a handle is found here, or is none. Safe to use from any thread.

/// @throws std::bad_alloc
kv_coupling* Add(std::shared_ptr<Handle> handle);

/// @return null for what is no handle (any more)
std::shared_ptr<Handle> Find(const kv_coupling* handle) noexcept;

/// Finds a handle, and it is none from then on.
std::shared_ptr<Handle> Remove(const kv_coupling* handle) noexcept;

} // namespace kinora::capi::Handles
