#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vantor::model {

/// Script error codes of the desktop, as far as the simulator raises them.
enum class ErrorCode : std::uint16_t {
    InvalidArgument = 0x0001,
    MissingArgument = 0x0002,
    NonNumericArgument = 0x0005,
    UnsupportedArgumentType = 0x0006,
    WrongArrayRank = 0x0007,
    InvalidArrayAccess = 0x0008,
    InvalidConversion = 0x0009,
    IncompleteArray = 0x000A,
    DesignNameCollision = 0x000B,
    UnsupportedDesignType = 0x000C,
    ObjectDeleted = 0x000D,
    BadArgumentValue = 0x0202,
    ValidationFailed = 0x0203,
    OutOfMemory = 0x0204,
    FileAccess = 0x0205,
    WriteFile = 0x0206,
    ReadFile = 0x0207,
    InternalError = 0x0209,
    CannotOpenProject = 0x020B,
    NoActiveDesign = 0x020C,
    NotFound = 0x020D,
    ProjectExists = 0x020E,
    ModuleNotFound = 0x0218,
    SolverData = 0x0219,
    SolutionError = 0x021B,
    ProjectNotSaved = 0x0220,
    SaveFailed = 0x0221,
    InvalidDirectory = 0x0224,
    InvalidProjectName = 0x0226,
    UnsupportedOperation = 0x0227,
    InvalidToolObject = 0x0229,
    NotPermitted = 0x022A,
    InvalidDefinition = 0x022E,
};

/// The desktop's text of a code, beginning with the code itself: "0x0202: Bad argument value".
const char* ErrorText(ErrorCode code);

/// What went wrong in a command: a script error code and one line that says what, where and what to do.
class DesktopError : public std::runtime_error {
public:
    DesktopError(ErrorCode code, const std::string& detail) : std::runtime_error(detail), m_code(code) {}

    ErrorCode Code() const { return m_code; }

private:
    ErrorCode m_code;
};

/// @return the error of an argument that may not be
inline DesktopError BadValue(const std::string& detail) {
    return DesktopError(ErrorCode::BadArgumentValue, detail);
}

} // namespace vantor::model
