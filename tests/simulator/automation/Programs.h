#pragma once

#include "tests/simulator/automation/Automation.h"
#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <chrono>
#include <string>

/// The simulator as a program and a registered class, for tests.
namespace calls {

/// A pipe for a program's output.
class OutputPipe {
public:
    OutputPipe();
    ~OutputPipe();
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    HANDLE WriteEnd() const { return m_write; }

    /// Everything that is written until nobody has the pipe's other end any more.
    std::string ReadToTheEnd();

private:
    void CloseWriteEnd();

    HANDLE m_read = nullptr;
    HANDLE m_write = nullptr;
};

/// A process of the simulator or of this test program.
class Process {
public:
    /// @param output the process's standard output and error stream, an inheritable handle; null for those of this one
    explicit Process(std::wstring commandLine, HANDLE output = nullptr);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool EndsWithin(std::chrono::milliseconds time) const;
    DWORD ExitCode() const;
    void Kill() const;

private:
    PROCESS_INFORMATION m_information = {};
};

/// The simulator's program, which lies beside this one.
std::wstring SimulatorPath();

/// Runs the simulator to its end.
/// @return its exit code
DWORD RunSimulator(const std::wstring& arguments);

bool IsClassRegistered(const wchar_t* progId);

/// The desktop object of a new client of a registered class; none, with a complaint, when it cannot be had.
Object NewDesktop(const wchar_t* progId);

int ProjectCount(const Object& desktop);

/// The desktop's messages; none when they cannot be had.
std::vector<std::wstring> Messages(const Object& desktop);

} // namespace calls
