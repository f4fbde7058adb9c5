#pragma once

#include <stdexcept>
#include <string>

namespace kinora::fmu {

/// What a function of an FMU fails with; the text goes to the tool's log.
class FmuError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A call that the standard does not allow now, or an argument that it does not. Nothing was done.
class CallError : public FmuError {
public:
    using FmuError::FmuError;
};

} // namespace kinora::fmu
