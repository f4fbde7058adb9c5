#pragma once

#include <functional>
#include <string>

namespace fake {

/// What an action that throws an `Error` says; "none" when it does not throw.
template <typename Error>
std::string ComplaintOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "none";
}

} // namespace fake
