#pragma once

#include <stdexcept>
#include <string>

namespace kinora::scenario {

/// What the program answers to the one who started it.
enum class ExitStatus { Done = 0, RunFailed = 1, BadInput = 2 };

/// Base of everything that ends the program early; the text is one line: what is wrong, then what to do.
class HostError : public std::runtime_error {
public:
    HostError(ExitStatus status, const std::string& text) : std::runtime_error(text), m_status(status) {}
    ExitStatus Status() const { return m_status; }

private:
    ExitStatus m_status;
};

/// The scenario, a file that it names or the command line is wrong. Nothing was run.
class InputError : public HostError {
public:
    explicit InputError(const std::string& text) : HostError(ExitStatus::BadInput, text) {}
};

/// The run itself failed.
class RunError : public HostError {
public:
    explicit RunError(const std::string& text) : HostError(ExitStatus::RunFailed, text) {}
};

} // namespace kinora::scenario
