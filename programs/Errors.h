#pragma once

#include "programs/ExitStatus.h"

#include <stdexcept>
#include <string>

namespace kinora::programs {

/// Base of everything that ends a program early; the text is one line: what is wrong, then what to do.
class ProgramError : public std::runtime_error {
public:
    ProgramError(ExitStatus status, const std::string& text) : std::runtime_error(text), m_status(status) {}
    ExitStatus Status() const { return m_status; }

private:
    ExitStatus m_status;
};

/// The command line, or a file that was to be read, is wrong.
class InputError : public ProgramError {
public:
    explicit InputError(const std::string& text) : ProgramError(ExitStatus::BadInput, text) {}
};

/// The work itself failed.
class RunError : public ProgramError {
public:
    explicit RunError(const std::string& text) : ProgramError(ExitStatus::Failed, text) {}
};

} // namespace kinora::programs
