#pragma once

#include "capi/kinora_veltrix.h"

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace kinora::capi {

/// Why a call fails. All texts are UTF-8.
struct Error : std::exception {
    Error(kv_status errorCode, std::string whatFailed, std::string whatToDo)
        : code(errorCode), cause(std::move(whatFailed)), cure(std::move(whatToDo)) {}

    const char* what() const noexcept override { return cause.c_str(); }

    kv_status code;
    /// A sentence.
    std::string cause;
    /// What to do, a sentence.
    std::string cure;
    /// What the desktop said.
    std::vector<std::string> messages;
};

/// @param operation  name of the function that failed
/// @return operation, cause, messages and cure, a line each
std::string TextOf(const char* operation, const Error& error);

/// The error that is under way, whatever it was thrown as. Called in a handler of exceptions.
Error CurrentError();

/// What a code means, in a line; null for a code that is none.
const char* MeaningOf(kv_status code);

} // namespace kinora::capi
