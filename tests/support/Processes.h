#pragma once

#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <oaidl.h>
#include <objbase.h>

#include <set>
#include <string>

namespace fake {

/// A program that a test started. It is ended, if it still runs, when this goes.
class ChildProcess {
public:
    /// A command line that cannot be started is a test failure, and a child that has ended with the code ~0.
    explicit ChildProcess(std::wstring commandLine);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// False when it still runs after this time.
    bool EndsWithin(DWORD milliseconds) const;
    void Kill() const;
    /// Of a child that has ended.
    DWORD ExitCode() const;

private:
    HANDLE m_process = nullptr;
};

/// Starts a program and waits until it has ended, half a minute at most. Gives its exit code.
DWORD RunProgram(const std::wstring& commandLine);

/// The simulators that this program has brought up, by their ids. They are ended when this goes. Under Wine this wants
/// a prefix of its own: a killed server stays registered there until the service that knows it is restarted, which is
/// done here.
class SimulatorServer {
public:
    SimulatorServer() : m_others(Running()) {}
    ~SimulatorServer();
    SimulatorServer(const SimulatorServer&) = delete;
    SimulatorServer& operator=(const SimulatorServer&) = delete;

    static std::wstring Path() { return BesideThisProgram(L"vantor-sim.exe"); }

    /// The application object of a new simulator; null, with a complaint, when there is none.
    IDispatch* Connect();
    void Kill();

private:
    static std::set<DWORD> Running();
    void Restart(bool isAfterAFailure);

    std::set<DWORD> m_others;
};

} // namespace fake
