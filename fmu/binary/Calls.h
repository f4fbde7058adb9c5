#pragma once

#include "fmu/binary/Instance.h"

#include <cstddef>
#include <string>

namespace kinora::fmu {

/// Does what a function of the standard asks of an instance; nothing is thrown out of it.
/// @param instance  as the importing tool hands it over
/// @param function  its name, for the log
/// @param action    takes the instance; what it throws is told
/// @return Ok, or Error
template <class Action>
Status Do(void* instance, const char* function, const Action& action) noexcept {
    if (!instance) {
        return Status::Error;
    }
    try {
        auto& called = *static_cast<Instance*>(instance);
        try {
            action(called);
            return Status::Ok;
        } catch (const std::exception& error) {
            called.TellError(std::string(function) + ": " + error.what());
        } catch (...) {
            called.TellError(std::string(function) + ": failed unexpectedly; is the system out of memory?");
        }
    } catch (...) {
        // No memory for the text either: the status says it.
        return Status::Error;
    }
    return Status::Error;
}

/// @return an instance for the functions of the standard; null when there is none, after the log was told why
void* Make(const char* function, Instantiation instantiation) noexcept;

/// @param instance  may be null
void Free(void* instance) noexcept;

/// What an FMU does not have, in both versions.
constexpr const char* noVariables = "variables of this type";
constexpr const char* noStates = "states that can be saved: every solve is recorded";
constexpr const char* noModelExchange = "model exchange";

/// Throws what a function says that this kind of FMU does not have.
[[noreturn]] void Refuse(const std::string& what);

/// Throws CallError for a null pointer to what is needed.
void RequirePointer(const void* pointer, std::size_t count);

/// As `PathFromUtf8`, of a location that FMI 2.0 gives: "file:///C:/folder", with %20 and the like for some letters.
/// @throws CallError  it is no file's
std::filesystem::path PathFromLocation(const std::string& location);

} // namespace kinora::fmu
