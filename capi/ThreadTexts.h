#pragma once

#include "capi/ErrorText.h"

#include <string>

namespace kinora::capi {

/// What is kept for a thread of a caller.
struct ThreadTexts {
    /// Of its last call that failed and belonged to no handle.
    ErrorText error;
    /// The text that it was last given.
    std::string copy;
};

/// @return this thread's, freed at its end; null when there is no memory
ThreadTexts* TextsOfThread() noexcept;

} // namespace kinora::capi
