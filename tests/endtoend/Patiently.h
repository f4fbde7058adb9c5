#pragma once

#include "interface/IKinoraVeltrixInterface.h"

#include <chrono>
#include <functional>
#include <thread>

namespace endtoend {

/// An operation that launches. The desktop of the run before may still be on its way out, as a user's may: then the
/// launch is repeated, as every host should.
inline bool Patiently(const std::function<bool()>& operation) {
    for (int tries = 1;; ++tries) {
        try {
            return operation();
        } catch (const LaunchDesktopExeption&) {
            if (tries == 5) {
                throw;
            }
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
    }
}

} // namespace endtoend
