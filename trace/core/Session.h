#pragma once

#include <cstdint>
#include <istream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kinora::trace {

/// @name What a call's flags ask for
/// @{
inline constexpr unsigned propertyGet = 2;
inline constexpr unsigned propertyPut = 4;
inline constexpr unsigned propertyPutReference = 8;
/// @}

/// One line of a trace (docs/trace.md describes the fields). Values stay as they stand in the file.
struct Record {
    enum class Kind { Create, Lookup, Call };

    std::uint64_t sequence = 0;
    Kind kind = Kind::Call;
    std::string time;
    double microseconds = 0.0;
    std::uint64_t objectId = 0;
    std::string object;
    std::string method;
    unsigned flags = 0;
    /// Arguments, first argument first. Reading makes sure that these and all other values have the form of values.
    nlohmann::json arguments = nlohmann::json::array();
    /// Identifiers of the named ones among the arguments; they name the last arguments of the list.
    nlohmann::json named = nlohmann::json::array();
    /// Null when the caller asked for no result or there is none.
    nlohmann::json result;
    /// What arguments passed by reference hold after the call.
    nlohmann::json after;
    std::uint32_t code = 0;
    std::string codeText;
    /// The desktop's words: a script error's text, and what the object said.
    std::string scriptError;
    std::string description;
    int argumentError = -1;
    /// The call never came back, as far as the trace knows.
    bool isOpen = false;

    bool HasFailed() const { return (code & 0x80000000U) != 0; }
};

/// A whole trace.
struct Session {
    /// ProgID of the desktop behind the trace; empty when the part with the start is missing.
    std::string target;
    std::string process;
    /// In the order in which the calls began.
    std::vector<Record> records;
    /// Lines that could not be read, for the user.
    std::vector<std::string> warnings;
};

/// Appends a trace, or one part of it, to a session. A last line that was cut off by the end of the traced program is
/// completed as far as it goes; other lines that cannot be read become warnings.
/// @param name  the file's name, for warnings
/// @throws programs::InputError  this is no trace, or it cannot be read
void ReadTrace(std::istream& stream, const std::string& name, Session& session);

/// Adds a warning when numbers are missing among the records: parts that were deleted as the trace grew, or that were
/// not read. Call it when all parts are read.
void WarnOfGaps(Session& session);

/// Adds a warning, with the cure, when no desktop was created in the whole session. Call it when all parts are read.
void WarnOfMissingDesktop(Session& session);

} // namespace kinora::trace
